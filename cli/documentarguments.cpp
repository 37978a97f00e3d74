#include "cli/documentarguments.h"

#include <fmt/format.h>

#include "cli/commands.h"
#include "engine/documents/documentrules.h"
#include "engine/documents/loadedmodel.h"
#include "engine/messages/suggestions.h"

namespace MCVelscore_850 {

namespace {

void RefuseUnlessFault(const std::string& name)
{
    std::vector<std::string> faults;
    for (const Rule* rule : AllRules()) {
        if (rule->answer == Answer::Fault) {
            if (rule->name == name) return;
            faults.emplace_back(rule->name);
        } else if (rule->name == name) {
            throw UsageError(fmt::format(
                "--allow {}: that rule refuses no document, so there is nothing to allow", name));
        }
    }
    const std::string meant = SuggestWord(name, faults);
    throw UsageError(fmt::format(
        "--allow {}: no rule has that name; velscore check tells it behind each fault{}{}", name,
        meant.empty() ? "" : ". ", meant));
}

}  // namespace

LoadOptions LoadOptionsOf(const DocumentArguments& arguments)
{
    for (const std::string& name : arguments.allowed) RefuseUnlessFault(name);
    if (arguments.asIs && !arguments.allowed.empty()) {
        throw UsageError("--allow has no meaning with --as-is, which looks for no faults");
    }
    LoadOptions options;
    options.asIs = arguments.asIs;
    options.allowed = arguments.allowed;
    return options;
}

}  // namespace MCVelscore_850
