#include <memory>
#include <optional>

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/outputguard.h"
#include "cli/stopsignals.h"
#include "engine/messages/explanation.h"
#include "engine/messages/shorttext.h"
#include "engine/messages/suggestions.h"
#include "engine/scoring/curveshaper.h"
#include "engine/scoring/scoringsession.h"
#include "engine/tables/tablesource.h"

namespace MCVelscore_850 {

namespace {

constexpr std::string_view kInterrupted = "interrupted; whole rows written";
constexpr std::string_view kBeforeThat = "whole rows written before that";

char SingleCharacter(std::string_view option, const std::string& text)
{
    if (text == "\\t" || text == "tab") return '\t';
    if (text.size() != 1) {
        throw UsageError(
            fmt::format("{} is '{}'; expected is one character of one byte, or tab", option, text));
    }
    return text.front();
}

TableDialect DialectOf(const ScoreArguments& arguments)
{
    TableDialect dialect;
    dialect.delimiter = SingleCharacter("--delimiter", arguments.delimiter);
    dialect.decimal = SingleCharacter("--decimal", arguments.decimal);
    constexpr std::string_view kNoDelimiters("\"\r\n\0", 4);
    constexpr std::string_view kNoDecimals("\"\r\n\t +-0123456789eE", 19);
    if (kNoDelimiters.find(dialect.delimiter) != std::string_view::npos) {
        throw UsageError("--delimiter can't be a quote or a line end");
    }
    if (kNoDecimals.find(dialect.decimal) != std::string_view::npos) {
        throw UsageError(fmt::format("--decimal can't be '{}'", arguments.decimal));
    }
    if (dialect.delimiter == dialect.decimal) {
        throw UsageError(fmt::format(
            "--delimiter and --decimal are both '{}'; give the fields another delimiter: {}",
            dialect.decimal, dialect.decimal == ',' ? "--delimiter ';'" : "--delimiter ,"));
    }
    return dialect;
}

// The names of a list such as  a,"b, c",d : quotes as in a table.
std::vector<std::string> SplitNames(const std::string& option, const std::string& list)
{
    std::vector<std::string> names(1);
    bool quoted = false;
    for (size_t i = 0; i < list.size(); ++i) {
        const char c = list[i];
        if (quoted && c == '"' && i + 1 < list.size() && list[i + 1] == '"') {
            names.back() += '"';
            ++i;
        } else if (c == '"' && (quoted || names.back().empty())) {
            quoted = !quoted;
        } else if (c == ',' && !quoted) {
            names.emplace_back();
        } else {
            names.back() += c;
        }
    }
    if (quoted)
        throw UsageError(fmt::format("{} {} has a quote that is never closed", option, list));
    return names;
}

OutputOptions OutputOf(const ScoreArguments& arguments)
{
    OutputOptions output;
    for (const std::string& list : arguments.keep) {
        if (list == "all") {
            output.keepAll = true;
            continue;
        }
        for (std::string& name : SplitNames("--keep", list)) output.keep.push_back(std::move(name));
    }
    for (const std::string& list : arguments.columns) {
        for (std::string& name : SplitNames("--columns", list)) {
            output.columns.push_back(std::move(name));
        }
    }
    return output;
}

void SetPolicy(LoadedModel& model, const std::string& policy)
{
    if (policy.empty()) return;
    if (policy == "substitute") {
        model.SetPolicy(MissingPolicy::Substitute);
    } else if (policy == "sysmis") {
        model.SetPolicy(MissingPolicy::SysmisResult);
    } else {
        if (!model.Description().takesStatusOnly) {
            throw UsageError(fmt::format(
                "--policy status has no meaning for {}: that model ignores it; use sysmis",
                model.Description().family));
        }
        model.SetPolicy(MissingPolicy::StatusOnly);
    }
}

std::string FirstCaseText(long code, const NotScored& cases, const ScoreModel& model)
{
    std::string text;
    if (cases.text && TellsTheCase(static_cast<int>(code))) {
        text = MessageText(static_cast<int>(code),
                           {ShortText(*cases.text), cases.field, std::to_string(cases.row)});
    } else {
        const std::string fault = FaultText(cases.field, cases.text);
        text = fmt::format("row {}{}{}", cases.row, fault.empty() ? "" : ", ", fault);
    }
    const std::string meant =
        cases.text ? SuggestCategory(model, cases.field, *cases.text) : std::string();
    return meant.empty() ? text : text + "; " + meant;
}

std::string UnlistedText(const UnlistedValues& unlisted, const ScoreModel& model)
{
    std::string line =
        fmt::format("column {} has {} {} that the model's dictionary doesn't list (",
                    unlisted.column, unlisted.count, unlisted.count == 1 ? "value" : "values");
    std::string meant;
    for (size_t i = 0; i < unlisted.first.size(); ++i) {
        line += fmt::format("{}'{}'", i == 0 ? "" : ", ", ShortText(unlisted.first[i]));
        if (meant.empty()) meant = SuggestCategory(model, unlisted.column, unlisted.first[i]);
    }
    line += unlisted.oneMayBeReference ? "; one of these may be the reference)" : ")";
    return meant.empty() ? line : line + ". " + meant;
}

// One line: cases scored, cases not scored by code, values that the dictionary doesn't list.
std::string ClosingLine(const ScoringReport& report, const ScoreModel& model)
{
    const int64_t notScored = report.NotScoredCount();
    std::string line =
        fmt::format("{} of {} cases scored", report.scored, report.scored + notScored);
    if (notScored > 0) line += fmt::format("; {} not scored:", notScored);
    const char* between = " ";
    for (const auto& [code, cases] : report.notScored) {
        line += fmt::format("{}{} with status {} (first: {})", between, cases.count, code,
                            FirstCaseText(code, cases, model));
        between = ", ";
    }
    for (const UnlistedValues& unlisted : report.unlisted) {
        line += "; " + UnlistedText(unlisted, model);
    }
    return line;
}

int ExitCodeOf(const ScoringReport& report, bool strict)
{
    if (report.interrupted) return kExitSignal + StopSignal();
    if (report.outputClosed) return kExitDone;
    if (strict && (report.NotScoredCount() > 0 || !report.unlisted.empty())) return kExitStrict;
    return kExitDone;
}

// Ends the output of a run that came to no end of its own, and says what there is of it.
void EndEarly(std::string_view why, CsvWriter& writer, const ScoreArguments& arguments,
              Console& console)
{
    const std::string place = writer.EndEarly(arguments.partial);
    std::string line = fmt::format("{}: {}", why, writer.RowsWritten());
    if (place == arguments.output) {
        line += fmt::format(", in {}", place);
    } else if (!place.empty()) {
        line += fmt::format(", in {}; {} is as it was (--partial would give it these rows)", place,
                            arguments.output);
    }
    console.Say(line);
}

// Both commands: reads the model, then the table, and writes what the options ask for.
int RunTable(const ScoreArguments& arguments, ScoringOptions options, Console& console)
{
    if (arguments.model == "-" && arguments.cases == "-") {
        throw UsageError(
            "the model and the cases can't both come from standard input; name a file "
            "for one of them");
    }
    const bool documentColumns = arguments.outputColumns == "document";
    if (documentColumns && arguments.predictionOnly) {
        throw UsageError("--prediction-only has no meaning with --output document");
    }
    if (!arguments.columns.empty() && (documentColumns || arguments.predictionOnly)) {
        throw UsageError(fmt::format("--columns has no meaning with {}",
                                     documentColumns ? "--output document" : "--prediction-only"));
    }
    options.dialect = DialectOf(arguments);
    options.missingTexts = arguments.missingTexts;

    LoadedModel model(arguments.model, std::make_shared<Plugin>(arguments.plugin),
                      LoadOptions{arguments.asIs,
                                  documentColumns ? OutputColumns::Document : OutputColumns::Own});
    if (options.curves && !CurveShaper::Suits(model.Description())) {
        throw UsageError(fmt::format(
            "{} has no survival curves: its family is {}, and Cox models alone have them",
            model.File(), model.Description().family));
    }
    SetPolicy(model, arguments.policy);
    if (arguments.predictionOnly) model.WantPredictionOnly();

    CatchStopSignals();
    const std::unique_ptr<ByteSource> cases = OpenTable(arguments.cases, &StopRequested());
    RefuseOutputOntoDocument(arguments.output, arguments.model);
    RefuseOutputOntoTable(arguments.output, *cases);

    std::optional<ScoringSession> session;
    std::optional<CsvWriter> writer;
    try {
        session.emplace(model, *cases, options, &StopRequested());
        writer.emplace(arguments.output, options.dialect.delimiter, options.dialect.decimal);
        ScoringSession::Progress progress;
        if (!arguments.quiet) {
            progress = [&](uint64_t) { console.ShowProgress(cases->Consumed(), cases->Size()); };
        }
        session->Run(*writer, progress);
        if (!session->Report().interrupted) writer->Close();
    } catch (const Failure& failure) {
        // The header was still being read, or a pipe that is the output had no reader yet.
        if (StopSignal() != 0 && !writer) {
            console.Say(fmt::format("{}: 0", kInterrupted));
            return kExitSignal + StopSignal();
        }
        console.SayFailure(failure);
        if (writer) EndEarly(kBeforeThat, *writer, arguments, console);
        return static_cast<int>(failure.Kind());
    } catch (...) {
        if (writer) EndEarly(kBeforeThat, *writer, arguments, console);
        throw;
    }

    const ScoringReport& report = session->Report();
    if (report.interrupted) {
        EndEarly(kInterrupted, *writer, arguments, console);
    } else if (!arguments.quiet && !report.outputClosed) {
        console.Say(ClosingLine(report, model.Model()));
    }
    return ExitCodeOf(report, arguments.strict);
}

}  // namespace

int RunScore(const ScoreArguments& arguments, Console& console)
{
    ScoringOptions options;
    options.output = OutputOf(arguments);
    options.results.predictionOnly = arguments.predictionOnly;
    options.results.linearPredictor = !options.output.columns.empty();
    return RunTable(arguments, std::move(options), console);
}

int RunCurve(const ScoreArguments& arguments, Console& console)
{
    ScoringOptions options;
    options.curves = true;
    return RunTable(arguments, std::move(options), console);
}

}  // namespace MCVelscore_850
