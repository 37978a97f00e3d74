#ifndef VELSCORE_CLI_OUTPUTGUARD_H
#define VELSCORE_CLI_OUTPUTGUARD_H

#include <string>

namespace MCVelscore_850 {

// The output must not be an input, which would be emptied or spoilt. "-" is standard output or
// input.

/// True when the output would go into the file of an open descriptor.
bool IsOutput(const std::string& output, int input);
/// Throws UsageError; `input` is for the message.
[[noreturn]] void RefuseOutputOnto(const std::string& input);
/// Throws UsageError when the output is the document itself, however both are named.
void RefuseOutputOntoDocument(const std::string& output, const std::string& document);

}  // namespace MCVelscore_850

#endif
