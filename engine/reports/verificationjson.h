#ifndef VELSCORE_ENGINE_REPORTS_VERIFICATIONJSON_H
#define VELSCORE_ENGINE_REPORTS_VERIFICATIONJSON_H

#include <string>

namespace MCVelscore_850 {

struct VerificationReport;

/// What a verification found, for programs: how much was compared, and every difference.
std::string VerificationJson(const std::string& file, const VerificationReport& report);

}  // namespace MCVelscore_850

#endif
