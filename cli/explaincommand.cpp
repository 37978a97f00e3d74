#include <charconv>
#include <memory>
#include <string_view>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "cli/commands.h"
#include "cli/confinement.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/explanationtext.h"
#include "cli/outputguard.h"
#include "cli/scoringarguments.h"
#include "cli/tablerun.h"
#include "engine/documents/loadedmodel.h"
#include "engine/reports/explanationjson.h"
#include "engine/scoring/baselinebuilder.h"
#include "engine/scoring/explainedtables.h"
#include "engine/scoring/explanationshaper.h"
#include "engine/tables/outputfile.h"

namespace MCVelscore_850 {

namespace {

constexpr int64_t kCasesAsText = 10;
constexpr int kDigitsOfText = 6;

// What --baseline asks for: the mean case or a row, of the cases or of another table.
struct BaselineChoice {
    int64_t row = 0;  // 0: the mean of all
    std::string table;

    std::string Text() const
    {
        const std::string of = table.empty() ? "" : " of " + table;
        return row == 0 ? fmt::format("the mean case{}", of) : fmt::format("row {}{}", row, of);
    }
};

BaselineChoice ChoiceOf(const std::string& text)
{
    const size_t at = text.find('@');
    const std::string_view which = std::string_view(text).substr(0, at);
    BaselineChoice choice;
    if (at != std::string::npos) choice.table = text.substr(at + 1);
    bool isKnown = which == "mean";
    if (!isKnown) {
        const auto read = std::from_chars(which.data(), which.data() + which.size(), choice.row);
        isKnown =
            read.ec == std::errc() && read.ptr == which.data() + which.size() && choice.row > 0;
    }
    if (!isKnown || (at != std::string::npos && choice.table.empty())) {
        throw UsageError(fmt::format(
            "--baseline is '{}'; expected is mean or the number of a row, from 1, and behind it "
            "@TABLE where it isn't one of the cases",
            text));
    }
    return choice;
}

std::shared_ptr<const ExplanationBaseline> BaselineOf(const LoadedModel& model,
                                                      const BaselineChoice& choice,
                                                      const std::vector<std::string>& cases,
                                                      const ScoringOptions& options)
{
    const std::vector<std::string> tables =
        choice.table.empty() ? cases : std::vector{choice.table};
    BaselineBuilder builder(choice.row);
    ExplainTables(model, tables, options, [&](const ExplainedCase& each) {
        return builder.Take(each.row, each.status, each.explanation);
    });
    if (auto baseline = builder.Make()) return baseline;
    if (builder.Status() != 0) {
        throw UsageError(fmt::format("--baseline: {} has no score (status {}); name another row",
                                     choice.Text(), builder.Status()));
    }
    throw UsageError(fmt::format("--baseline: there is no {}",
                                 choice.row == 0 ? "case that has a score" : choice.Text()));
}

// What has a meaning for the rows of --long alone, by its name.
void RefuseLongAlone(const ScoreArguments& table)
{
    const std::pair<const char*, bool> given[] = {{"--format", !table.format.empty()},
                                                  {"--compress", !table.compress.empty()},
                                                  {"--out-delimiter", !table.outDelimiter.empty()},
                                                  {"--rejects", !table.rejects.empty()},
                                                  {"--max-rejects", table.mostRejects.has_value()},
                                                  {"--summary", !table.summary.empty()},
                                                  {"--threads", table.threads != 0},
                                                  {"--resume", table.resume},
                                                  {"--partial", table.partial},
                                                  {"--progress", table.progress}};
    for (const auto& [name, isGiven] : given) {
        if (isGiven) throw UsageError(fmt::format("{} has a meaning with --long alone", name));
    }
}

void RefuseTogether(const ExplainArguments& arguments)
{
    if (arguments.isLong && arguments.json) {
        throw UsageError("--long and --json don't go together");
    }
    if (arguments.mostCases && (arguments.isLong || arguments.json)) {
        throw UsageError(fmt::format("--limit has no meaning with {}, which writes all cases",
                                     arguments.isLong ? "--long" : "--json"));
    }
    if (arguments.json && arguments.table.digits != 0) {
        throw UsageError("--digits has no meaning with --json, whose numbers have all of theirs");
    }
    if (!arguments.isLong) RefuseLongAlone(arguments.table);
}

// One run of `explain`.
class ExplainRun {
public:
    ExplainRun(const ExplainArguments& arguments, Console& console)
        : arguments_(arguments), table_(arguments.table), console_(console)
    {}

    int Run()
    {
        RefuseTogether(arguments_);
        if (!arguments_.baseline.empty()) {
            choice_ = ChoiceOf(arguments_.baseline);
            table_.baselineTable = choice_->table;
        }
        if (table_.cases.empty()) RefuseWithoutCases();
        RefuseSecondReading();
        return arguments_.isLong ? RunLong() : RunOneByOne();
    }

private:
    [[noreturn]] void RefuseWithoutCases() const
    {
        const LoadedModel model = Loaded();
        throw UsageError(
            fmt::format("explain needs cases: a table with the columns {}; - is standard input",
                        fmt::join(model.Columns(), ", ")));
    }
    // Of a baseline among the cases.
    void RefuseSecondReading() const
    {
        if (!choice_ || !choice_->table.empty()) return;
        for (const std::string& name : table_.cases) {
            if (name != "-") continue;
            throw UsageError(
                "--baseline reads the cases twice, which standard input can't be; name a file, or "
                "another table behind @");
        }
    }
    LoadedModel Loaded() const
    {
        return {table_.model, ConfinedPlugin(table_.document, FilesOf(table_)),
                LoadOptionsOf(table_.document)};
    }
    ExplanationOptions OptionsFor(const LoadedModel& model, const ScoringOptions& options) const
    {
        ExplanationOptions explanations;
        if (arguments_.top) explanations.top = static_cast<size_t>(*arguments_.top);
        if (choice_) explanations.baseline = BaselineOf(model, *choice_, table_.cases, options);
        return explanations;
    }

    int RunLong()
    {
        table_.explains =
            fmt::format("top {}, baseline {}", arguments_.top.value_or(-1), arguments_.baseline);
        ScoringOptions options = OptionsOf(table_);
        return RunTable(table_, std::move(options), console_,
                        [this](const LoadedModel& model, ScoringOptions& completed) {
                            completed.explanations = OptionsFor(model, completed);
                        });
    }

    int RunOneByOne()
    {
        const std::vector<std::string> tables = TablesOf(table_);
        RefuseModelBeside(table_, tables);
        RefuseOutputOntoDocument(table_.output, table_.model);
        for (const std::string& each : tables) RefuseOutputOntoTable(table_.output, each);
        ScoringOptions options = OptionsOf(table_);
        LoadedModel model = Loaded();
        PrepareModel(table_, model, options);
        const ExplanationOutline outline = OutlineOf(model.Model());
        ExplanationLines lines(outline, OptionsFor(model, options));
        OutputFile file(table_.output);
        const auto write = [&](const std::string& text) {
            if (const int error = file.Write(text); error != 0) RefuseOutput(file.Name(), error);
        };
        const std::string baseline = choice_ ? choice_->Text() : "";
        write(arguments_.json ? ExplanationBegin(model, baseline)
                              : ExplanationHead(model, baseline));
        ExplainTables(model, tables, options, [&](const ExplainedCase& each) {
            if (!arguments_.json && cases_ == arguments_.mostCases.value_or(kCasesAsText)) {
                hasMore_ = true;
                return false;
            }
            if (!each.status.IsOK()) ++notScored_;
            write(arguments_.json ? ExplanationJson(each, lines, cases_ == 0)
                                  : ExplanationText(each, lines, Digits()));
            ++cases_;
            return !file.IsClosed();
        });
        if (arguments_.json) write(ExplanationEnd(cases_ > 0));
        file.Finish();
        return Conclude(model);
    }
    int Conclude(const LoadedModel& model)
    {
        if (!table_.quiet) {
            std::string line = fmt::format("{} of {} cases explained", cases_ - notScored_, cases_);
            if (hasMore_) {
                line += "; more follow: --limit N shows more, --long and --json write all";
            }
            console_.Say(line);
            console_.SayFindings(model);
        }
        const bool leavesDoubt = notScored_ > 0 || model.DocumentFindings().StrictCount() > 0;
        return table_.strict && leavesDoubt ? kExitStrict : kExitDone;
    }
    int Digits() const { return table_.digits == 0 ? kDigitsOfText : table_.digits; }

    const ExplainArguments& arguments_;
    ScoreArguments table_;
    Console& console_;
    std::optional<BaselineChoice> choice_;
    int64_t cases_ = 0;
    int64_t notScored_ = 0;
    bool hasMore_ = false;
};

}  // namespace

int RunExplain(const ExplainArguments& arguments, Console& console)
{
    return ExplainRun(arguments, console).Run();
}

}  // namespace MCVelscore_850
