#include <algorithm>
#include <memory>

#include <fmt/format.h>
#include <unistd.h>

#include "cli/commands.h"
#include "cli/confinement.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/findingtext.h"
#include "cli/sourcelines.h"
#include "engine/documents/loadedmodel.h"
#include "engine/reports/checkjson.h"
#include "engine/reports/jsontext.h"
#include "engine/tables/bytesource.h"

namespace MCVelscore_850 {

namespace {

// What became of one document: a model, or why there is none.
struct Checked {
    std::string file;
    SourceLines lines;
    std::unique_ptr<const LoadedModel> model;
    std::unique_ptr<const Failure> failure;

    const DocumentFailure* Refusal() const
    {
        return dynamic_cast<const DocumentFailure*>(failure.get());
    }
    bool IsFaulty() const { return dynamic_cast<const DocumentFaults*>(failure.get()) != nullptr; }
    const Findings& Found() const
    {
        static const Findings kNone;
        if (model) return model->DocumentFindings();
        return Refusal() == nullptr ? kNone : Refusal()->Found();
    }
};

// A refusal outlives the handler that caught it.
std::unique_ptr<const Failure> KeptFailure(const Failure& failure)
{
    if (const auto* faults = dynamic_cast<const DocumentFaults*>(&failure)) {
        return std::make_unique<DocumentFaults>(*faults);
    }
    if (const auto* refusal = dynamic_cast<const DocumentFailure*>(&failure)) {
        return std::make_unique<DocumentFailure>(*refusal);
    }
    return std::make_unique<Failure>(failure);
}

Checked CheckDocument(const std::string& file, const std::shared_ptr<const Plugin>& plugin,
                      LoadOptions options)
{
    std::string text;
    options.text = &text;
    std::unique_ptr<const LoadedModel> model;
    std::unique_ptr<const Failure> failure;
    try {
        model = std::make_unique<const LoadedModel>(file, plugin, options);
    } catch (const Failure& refusal) {
        if (refusal.Kind() != FailureKind::Document) throw;
        failure = KeptFailure(refusal);
    }
    return {file, SourceLines(std::move(text)), std::move(model), std::move(failure)};
}

std::string LastLine(const Checked& checked)
{
    std::string counts = CountsText(checked.Found());
    if (const size_t fixable = checked.Found().FixableCount(); fixable > 0) {
        counts += fmt::format("; --fix puts {} of them right", fixable);
    }
    const std::string more = counts.empty() ? "" : (checked.model ? "; " : ": ") + counts;
    const std::string name = InputFile::NameOf(checked.file);
    if (!checked.model) return fmt::format("{}: refused{}\n", name, more);
    const ModelDescription& about = checked.model->Description();
    const std::string target = about.target.empty() ? "" : ", target " + about.target;
    return fmt::format("{}: OK, {}{}{}\n", name, about.family, target, more);
}

std::string ReportText(const Checked& checked)
{
    const FindingText writer(checked.lines, Console::IsColourful(STDOUT_FILENO));
    std::string text;
    if (checked.model) {
        text = writer.TextOf(checked.Found(), checked.model->File());
    } else if (const DocumentFailure* refusal = checked.Refusal()) {
        text = writer.TextOf(refusal->Found(), refusal->File());
        if (!checked.IsFaulty()) text += writer.TextOf(*refusal);
    } else {  // no document at all: the text tells the file
        text = fmt::format("fault: {}\n", FailureText(*checked.failure));
        if (const std::string remedy = checked.failure->Remedy(); !remedy.empty()) {
            text += fmt::format("  what to do: {}\n", remedy);
        }
    }
    return text + LastLine(checked);
}

JsonValue ReportJson(const Checked& checked)
{
    return checked.model ? AcceptedJson(checked.file, *checked.model)
                         : RefusedJson(checked.file, *checked.failure);
}

}  // namespace

int RunCheck(const CheckArguments& arguments, Console& console)
{
    if (arguments.fix) return RunFix(arguments, console);
    if (arguments.output != "-") throw UsageError("-o has a meaning with --fix alone");
    if (std::count(arguments.models.begin(), arguments.models.end(), "-") > 1) {
        throw UsageError("standard input (-) can be read once only");
    }
    const LoadOptions options = LoadOptionsOf(arguments.document);
    const auto plugin = ConfinedPlugin(arguments.document, {arguments.models, {}});
    JsonValue report = JsonValue::Array();
    size_t refused = 0;
    size_t doubtful = 0;
    for (const std::string& file : arguments.models) {
        const Checked checked = CheckDocument(file, plugin, options);
        refused += checked.model ? 0 : 1;
        doubtful += checked.model && checked.Found().StrictCount() > 0 ? 1 : 0;
        if (arguments.json) {
            report.Add(ReportJson(checked));
        } else {
            PrintOut(ReportText(checked));
        }
    }
    if (arguments.json) PrintOut(JsonText(report));
    const size_t all = arguments.models.size();
    if (refused > 0) console.Say(fmt::format("refused {} of {} documents", refused, all));
    if (arguments.strict && doubtful > 0) {
        console.Say(fmt::format("{} of {} documents leave a doubt (--strict)", doubtful, all));
    }
    if (refused > 0) return kExitDocument;
    return arguments.strict && doubtful > 0 ? kExitStrict : kExitDone;
}

}  // namespace MCVelscore_850
