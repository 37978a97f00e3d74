#include "cli/documentarguments.h"

#include <fmt/format.h>

#include "cli/commands.h"
#include "engine/documents/documentrules.h"
#include "engine/documents/loadedmodel.h"

namespace MCVelscore_850 {

LoadOptions LoadOptionsOf(const DocumentArguments& arguments)
{
    for (const std::string& name : arguments.allowed) {
        if (const std::string why = WhyNotAllowed(name); !why.empty()) {
            throw UsageError(fmt::format("--allow {}: {}", name, why));
        }
    }
    if (arguments.asIs && !arguments.allowed.empty()) {
        throw UsageError("--allow has no meaning with --as-is, which looks for no faults");
    }
    LoadOptions options;
    options.asIs = arguments.asIs;
    options.allowed = arguments.allowed;
    return options;
}

}  // namespace MCVelscore_850
