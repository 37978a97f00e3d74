#ifndef VELSCORE_CLI_DOCUMENTARGUMENTS_H
#define VELSCORE_CLI_DOCUMENTARGUMENTS_H

#include <string>
#include <vector>

namespace MCVelscore_850 {

struct LoadOptions;

/// How a document is to be read: what all commands that read one take.
struct DocumentArguments {
    std::string plugin;  ///< empty: the one beside the program
    bool asIs = false;
    std::vector<std::string> allowed;  ///< names of rules
};

/// The same, understood. Throws UsageError for the name of a rule that isn't one, or that refuses
/// nothing.
LoadOptions LoadOptionsOf(const DocumentArguments& arguments);

}  // namespace MCVelscore_850

#endif
