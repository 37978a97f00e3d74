#include <algorithm>
#include <chrono>
#include <optional>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "cli/commands.h"
#include "cli/confinement.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/outputguard.h"
#include "cli/resumenote.h"
#include "cli/scoringarguments.h"
#include "cli/scoringsummary.h"
#include "cli/stopsignals.h"
#include "cli/tablerun.h"
#include "engine/scoring/scoringsession.h"
#include "engine/tables/bytesource.h"
#include "engine/tables/compression.h"
#include "engine/tables/outputfile.h"

namespace MCVelscore_850 {

namespace {

constexpr std::string_view kInterrupted = "interrupted; whole rows written";
constexpr std::string_view kBeforeThat = "whole rows written before that";

int ExitCodeOf(const ScoringReport& report, const Findings& found, bool strict)
{
    if (report.interrupted) return kExitSignal + StopSignal();
    if (report.outputClosed) return kExitDone;
    const bool leavesDoubt =
        report.NotScoredCount() > 0 || !report.unlisted.empty() || found.StrictCount() > 0;
    return strict && leavesDoubt ? kExitStrict : kExitDone;
}

// One run of RunTable(): its outputs, and what is said of it.
class TableRun {
public:
    TableRun(const ScoreArguments& arguments, ScoringOptions options, Console& console)
        : arguments_(arguments), options_(std::move(options)), console_(console)
    {}
    int Run(const CompleteOptions& complete);

private:
    void RefuseOutputs(const std::vector<std::string>& tables) const;
    bool CanResume(const std::vector<std::string>& tables) const;
    void Score();
    void OpenOutputs();
    void EndEarly(std::string_view why);
    int WriteSummary(int exitCode, const Failure* failure = nullptr);

    const ScoreArguments& arguments_;
    ScoringOptions options_;
    Console& console_;
    std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
    std::optional<LoadedModel> model_;
    std::optional<ScoringSession> session_;
    std::optional<ResumeNote> note_;
    std::optional<RowWriter> writer_;
    std::optional<RowWriter> rejects_;
    std::optional<OutputFile> summary_;
};

int TableRun::Run(const CompleteOptions& complete)
{
    const std::vector<std::string> tables = TablesOf(arguments_);
    RefuseModelBeside(arguments_, tables);
    LoadOptions load = LoadOptionsOf(arguments_.document);
    if (arguments_.outputColumns == "document") load.output = OutputColumns::Document;
    const bool canResume = CanResume(tables);
    load.digest = canResume || !arguments_.summary.empty();
    const auto plugin = ConfinedPlugin(arguments_.document, FilesOf(arguments_));
    model_.emplace(arguments_.model, plugin, load);
    PrepareModel(arguments_, *model_, options_);
    if (complete) complete(*model_, options_);

    CatchStopSignals();
    RefuseOutputs(tables);
    if (canResume) note_.emplace(arguments_, tables, options_, *model_);
    try {
        session_.emplace(*model_, tables, options_, &StopRequested());
        Score();
    } catch (const Failure& failure) {
        // The header was still being read, or a pipe that is the output had no reader yet.
        if (StopSignal() != 0 && !writer_) {
            console_.Say(fmt::format("{}: 0", kInterrupted));
            return kExitSignal + StopSignal();
        }
        console_.SayFailure(failure);
        if (writer_) EndEarly(kBeforeThat);
        return WriteSummary(static_cast<int>(failure.Kind()), &failure);
    } catch (...) {
        if (writer_) EndEarly(kBeforeThat);
        throw;
    }
    const ScoringReport& report = session_->Report();
    if (report.interrupted) {
        EndEarly(kInterrupted);
    } else if (!arguments_.quiet && !report.outputClosed) {
        console_.Say(ClosingLine(*session_, *model_));
        console_.SayFindings(*model_);
    }
    return WriteSummary(ExitCodeOf(report, model_->DocumentFindings(), arguments_.strict));
}

// No output may be an input, nor another output.
void TableRun::RefuseOutputs(const std::vector<std::string>& tables) const
{
    std::vector<std::string> outputs{arguments_.output};
    for (const std::string& file : {arguments_.rejects, arguments_.summary}) {
        if (file.empty()) continue;
        for (const std::string& other : outputs) RefuseSameOutput(file, other);
        outputs.push_back(file);
    }
    for (const std::string& output : outputs) {
        RefuseOutputOntoDocument(output, arguments_.model);
        for (const std::string& table : tables) RefuseOutputOntoTable(output, table);
    }
}

// An output that gets its name when it is whole, from tables that can be read again.
bool TableRun::CanResume(const std::vector<std::string>& tables) const
{
    // A table that isn't there is told as that.
    if (arguments_.resume) std::for_each(tables.begin(), tables.end(), RefuseUnreadable);
    const auto isFile = [](const std::string& table) {
        uint64_t size = 0;
        return table != "-" && IsRegularFile(table, size);
    };
    const std::string& baseline = arguments_.baselineTable;
    const bool areFiles =
        std::all_of(tables.begin(), tables.end(), isFile) && (baseline.empty() || isFile(baseline));
    const bool can = areFiles && arguments_.output != "-" && arguments_.rejects != "-";
    if (arguments_.resume && !can) {
        throw UsageError(
            "--resume goes on with a file, -o FILE, from tables that are files; a stream can't be "
            "read or written again");
    }
    return can;
}

void TableRun::OpenOutputs()
{
    const Compression ofRejects = CompressionOf(arguments_.rejects);
    RunPosition position;
    if (arguments_.resume && note_->Load(position)) {
        writer_.emplace(arguments_.output, options_.compression, position.output);
        if (options_.rejects) rejects_.emplace(arguments_.rejects, ofRejects, position.rejects);
        session_->StartAt(std::move(position));
        return;
    }
    if (arguments_.resume && !arguments_.quiet) {
        console_.Say("there is no run to go on with; beginning with the first row");
    }
    writer_.emplace(arguments_.output, options_.compression);
    if (options_.rejects) rejects_.emplace(arguments_.rejects, ofRejects);
}

void TableRun::Score()
{
    OpenOutputs();
    if (!arguments_.summary.empty()) summary_.emplace(arguments_.summary);
    if (!arguments_.quiet) {
        session_->OnProgress([&](uint64_t bytes, int64_t rows) {
            console_.ShowProgress({bytes, session_->Tables().TotalBytes(), rows});
        });
    }
    const bool areFiles = !writer_->IsStream() && !(rejects_ && rejects_->IsStream());
    if (note_ && areFiles) {
        session_->OnCheckpoint([&](const RunPosition& position) { note_->Save(position); });
    }
    session_->Run(*writer_, rejects_ ? &*rejects_ : nullptr);
    if (session_->Report().interrupted) return;
    if (rejects_) rejects_->Close();
    writer_->Close();
    if (note_) note_->Remove();
}

// Ends the output of a run that came to no end of its own, and says what there is of it.
void TableRun::EndEarly(std::string_view why)
{
    const std::string place = writer_->EndEarly(arguments_.partial);
    std::string line = fmt::format("{}: {}", why, writer_->RowsWritten());
    if (place == arguments_.output) {
        line += fmt::format(", in {}", place);
    } else if (!place.empty()) {
        line += fmt::format(", in {}; {} is as it was (--partial would give it these rows)", place,
                            arguments_.output);
        if (note_ && note_->IsSaved()) line += "; --resume would go on with them";
    }
    if (note_ && (place.empty() || place == arguments_.output)) note_->TakeBack();
    if (rejects_) {
        const std::string rejects = rejects_->EndEarly(arguments_.partial);
        if (!rejects.empty()) line += fmt::format("; the rejects among them in {}", rejects);
    }
    console_.Say(line);
}

// Answers the exit code.
int TableRun::WriteSummary(int exitCode, const Failure* failure)
{
    if (!summary_) return exitCode;
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin_;
    const nlohmann::ordered_json summary =
        SummaryJson(*session_, *model_, {exitCode, failure, time.count()});
    // A table's texts, and its name, may be in another encoding.
    const std::string text =
        summary.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
    if (const int error = summary_->Write(text); error != 0) {
        RefuseOutput(summary_->Name(), error);
    }
    summary_->Finish();
    return exitCode;
}

}  // namespace

int RunTable(const ScoreArguments& arguments, ScoringOptions options, Console& console,
             const CompleteOptions& complete)
{
    if (arguments.progress) console.WantProgress();
    return TableRun(arguments, std::move(options), console).Run(complete);
}

int RunScore(const ScoreArguments& arguments, Console& console)
{
    return RunTable(arguments, OptionsOf(arguments), console);
}

int RunCurve(const ScoreArguments& arguments, Console& console)
{
    ScoringOptions options = OptionsOf(arguments);
    options.curves = true;
    options.wideCurves = arguments.wide;
    return RunTable(arguments, std::move(options), console);
}

}  // namespace MCVelscore_850
