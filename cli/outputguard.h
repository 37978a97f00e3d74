#ifndef VELSCORE_CLI_OUTPUTGUARD_H
#define VELSCORE_CLI_OUTPUTGUARD_H

#include <string>

namespace MCVelscore_850 {

// The output must not be an input, however both are named: a document or a table would be lost, and
// a table that grows as it is read never ends. "-" is standard output or input. Both throw
// UsageError.

/// For two outputs of one run.
void RefuseSameOutput(const std::string& output, const std::string& other);

void RefuseOutputOntoDocument(const std::string& output, const std::string& document);
void RefuseOutputOntoTable(const std::string& output, const std::string& cases);

}  // namespace MCVelscore_850

#endif
