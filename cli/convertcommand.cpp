#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/confinement.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/outputguard.h"
#include "engine/documents/documentconverter.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/loadedmodel.h"
#include "engine/tables/outputfile.h"

namespace MCVelscore_850 {

int RunConvert(const ConvertArguments& arguments, Console& console)
{
    RefuseOutputOntoDocument(arguments.output, arguments.model);
    const LoadOptions options = LoadOptionsOf(arguments.document);
    const auto plugin = ConfinedPlugin(arguments.document, {{arguments.model}, {arguments.output}});
    Document document = LoadDocument(arguments.model);
    const PublishedForm published = ConvertDocument(document, *plugin);
    // Neither the document nor what becomes of it may have a fault.
    const LoadedModel before(document, plugin, options);
    Document converted =
        LoadDocumentText(published.text, fmt::format("the PMML form of {}", published.file));
    const LoadedModel after(converted, plugin, options);
    for (const std::string& note : published.notes) {
        console.Say(fmt::format("{}: {}", published.file, note));
    }
    WriteWholeFile(arguments.output, published.text);
    return kExitDone;
}

}  // namespace MCVelscore_850
