#include <sstream>

#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/modeltext.h"
#include "engine/documents/loadedmodel.h"

namespace MCVelscore_850 {

int RunInspect(const InspectArguments& arguments)
{
    if (arguments.dump && arguments.json) throw UsageError("--dump and --json don't go together");
    const LoadedModel model(arguments.model, std::make_shared<Plugin>(arguments.document.plugin),
                            LoadOptionsOf(arguments.document));
    if (arguments.dump) {
        std::ostringstream text;
        model.Display(text);
        PrintOut(text.str());
    } else if (arguments.json) {
        using Handler = nlohmann::ordered_json::error_handler_t;
        PrintOut(ModelJson(model).dump(2, ' ', false, Handler::replace) + "\n");
    } else {
        PrintOut(ModelText(model));
    }
    return kExitDone;
}

}  // namespace MCVelscore_850
