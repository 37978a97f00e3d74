#include <algorithm>
#include <stdexcept>

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/confinement.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/outputguard.h"
#include "engine/documents/documentfix.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/loadedmodel.h"
#include "engine/tables/outputfile.h"

namespace MCVelscore_850 {

namespace {

void RefuseUsage(const CheckArguments& arguments)
{
    if (arguments.models.size() > 1) throw UsageError("--fix writes one document; name one");
    if (arguments.json) throw UsageError("--fix writes a document, not a report as JSON");
    if (arguments.document.asIs) throw UsageError("--fix and --as-is don't go together");
    RefuseOutputOntoDocument(arguments.output, arguments.models.front());
}

// What was put right must not be found in what is written.
void RefuseLeftovers(const FixedDocument& fixed, const LoadedModel& written)
{
    for (const std::string_view rule : fixed.rules) {
        if (written.DocumentFindings().CountOf(rule) == 0) continue;
        throw std::logic_error(fmt::format("what was put right is found again [{}]", rule));
    }
}

}  // namespace

int RunFix(const CheckArguments& arguments, Console& console)
{
    RefuseUsage(arguments);
    const LoadOptions options = LoadOptionsOf(arguments.document);
    const auto plugin = ConfinedPlugin(arguments.document, {arguments.models, {arguments.output}});
    Document document = LoadDocument(arguments.models.front(), {}, {.comments = true});
    const FixedDocument fixed = FixDocument(document);
    // The tree still knows the places of what stands in the file: a fault is told there.
    const LoadedModel asFound(document, plugin, options);
    const std::string name = arguments.output == "-" ? "standard output" : arguments.output;
    Document reread = LoadDocumentText(fixed.text, name);
    const LoadedModel written(reread, plugin, options);
    RefuseLeftovers(fixed, written);

    WriteWholeFile(arguments.output, fixed.text);
    for (const std::string& change : fixed.changes) {
        console.Say(fmt::format("{}: {}", document.File(), change));
    }
    console.Say(fixed.changes.empty()
                    ? fmt::format("{}: there was nothing to put right", document.File())
                    : fmt::format("{} {} written to {}", fixed.changes.size(),
                                  fixed.changes.size() == 1 ? "change" : "changes", name));
    console.SayFindings(written);
    const bool doubtful = arguments.strict && written.DocumentFindings().StrictCount() > 0;
    return doubtful ? kExitStrict : kExitDone;
}

}  // namespace MCVelscore_850
