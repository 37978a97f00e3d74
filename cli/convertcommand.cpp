#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/outputguard.h"
#include "engine/documents/documentconverter.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/plugin.h"
#include "engine/tables/outputfile.h"

namespace MCVelscore_850 {

int RunConvert(const ConvertArguments& arguments, Console& console)
{
    RefuseOutputOntoDocument(arguments.output, arguments.model);
    const Plugin plugin(arguments.plugin);
    const PublishedForm published = ConvertDocument(LoadDocument(arguments.model), plugin);
    for (const std::string& note : published.notes) {
        console.Say(fmt::format("{}: {}", published.file, note));
    }
    WriteWholeFile(arguments.output, published.text);
    return kExitDone;
}

}  // namespace MCVelscore_850
