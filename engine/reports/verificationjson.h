#ifndef VELSCORE_ENGINE_REPORTS_VERIFICATIONJSON_H
#define VELSCORE_ENGINE_REPORTS_VERIFICATIONJSON_H

#include <string>

namespace MCVelscore_850 {

class LoadedModel;
struct VerificationReport;

/// What a verification of a model found, for programs: what was adapted and noticed in the
/// document, how much was compared, and every difference.
std::string VerificationJson(const LoadedModel& model, const VerificationReport& report);

}  // namespace MCVelscore_850

#endif
