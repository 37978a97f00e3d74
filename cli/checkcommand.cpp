#include <algorithm>

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "engine/documents/loadedmodel.h"
#include "engine/reports/checkjson.h"
#include "engine/reports/jsontext.h"

namespace MCVelscore_850 {

namespace {

std::string AcceptedText(const LoadedModel& model)
{
    std::string text = fmt::format("{}: OK, {}", model.File(), model.Description().family);
    if (!model.Description().target.empty()) text += ", target " + model.Description().target;
    text += '\n';
    for (const std::string& adaptation : model.Adaptations()) {
        text += fmt::format("  adapted: {}\n", adaptation);
    }
    return text;
}

std::string RefusedText(const Failure& failure)
{
    std::string text = fmt::format("refused: {}\n", FailureText(failure));
    if (!failure.Remedy().empty()) text += fmt::format("  what to do: {}\n", failure.Remedy());
    return text;
}

}  // namespace

int RunCheck(const CheckArguments& arguments, Console& console)
{
    if (std::count(arguments.models.begin(), arguments.models.end(), "-") > 1) {
        throw UsageError("standard input (-) can be read once only");
    }
    const auto plugin = std::make_shared<const Plugin>(arguments.plugin);
    nlohmann::ordered_json report = nlohmann::ordered_json::array();
    size_t refused = 0;
    for (const std::string& file : arguments.models) {
        try {
            const LoadedModel model(file, plugin, LoadOptions{arguments.asIs});
            if (arguments.json) {
                report.push_back(AcceptedJson(file, model));
            } else {
                PrintOut(AcceptedText(model));
            }
        } catch (const Failure& failure) {
            if (failure.Kind() != FailureKind::Document) throw;
            ++refused;
            if (arguments.json) {
                report.push_back(RefusedJson(file, failure));
            } else {
                PrintOut(RefusedText(failure));
            }
        }
    }
    if (arguments.json) PrintOut(JsonText(report));
    if (refused == 0) return kExitDone;
    console.Say(fmt::format("refused {} of {} documents", refused, arguments.models.size()));
    return kExitDocument;
}

}  // namespace MCVelscore_850
