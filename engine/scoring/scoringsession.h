#ifndef VELSCORE_ENGINE_SCORING_SCORINGSESSION_H
#define VELSCORE_ENGINE_SCORING_SCORINGSESSION_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/documents/loadedmodel.h"
#include "engine/scoring/blocktask.h"
#include "engine/scoring/curveshaper.h"
#include "engine/scoring/outputshaper.h"
#include "engine/scoring/scoringreport.h"
#include "engine/scoring/tablescorer.h"
#include "engine/tables/bytesource.h"
#include "engine/tables/rowtext.h"
#include "engine/tables/rowwriter.h"
#include "engine/tables/tablereader.h"

namespace MCVelscore_850 {

/// How the input tables are written.
struct TableDialect {
    char delimiter = ',';
    char decimal = '.';
    /// Without a header columns are called by their numbers, from 1; unless
    /// ScoringOptions::columnOf says otherwise they are the model's, in its order.
    bool hasHeader = true;
    bool tellsDelimiter = false;  ///< as RecordForm's
};

struct ScoringOptions {
    TableDialect dialect;
    RowForm form;                                 ///< of the output
    Compression compression = Compression::None;  ///< of the output
    std::vector<std::string> missingTexts;
    std::map<std::string, std::string> columnOf;  ///< as CaseOptions::columnOf
    OutputOptions output;
    ResultOptions results;
    /// Survival curves in place of scores, of a model that has them (CurveShaper::Suits), at the
    /// times of results.survival, if any; nothing else of `results` is heeded then, no
    /// output.columns, and the table needs no end time.
    bool curves = false;
    bool wideCurves = false;  ///< CurveForm::wide, which is of such times
    bool ReadsEndTime() const { return !curves && results.survival.endTime; }
    /// Rows that can't be read, or have no score, go to a table of their own (RejectTable); without
    /// it a row that can't be read ends the run.
    bool rejects = false;
    /// One more ends the run.
    int64_t mostRejects = std::numeric_limits<int64_t>::max();
    size_t threads = 1;
    size_t blockBytes = BlockReader::kBlockSize;
};

/// How long the parts of a run took.
struct ScoringTimes {
    std::chrono::nanoseconds reading{0};
    std::chrono::nanoseconds scoring{0};  ///< of all threads together
    std::chrono::nanoseconds writing{0};
};

/// How far a run is: where it can go on, in another process too.
struct RunPosition {
    TableReader::Place tables;
    RowWriter::Position output;
    RowWriter::Position rejects;             ///< of no use without them
    ScoringReport report;                    ///< of the rows before
    std::vector<UnlistedValues> unlisted{};  ///< by the field's place
};

/// The columns of a table without a header, unless they are told: the model's in their order, with
/// an end time that isn't read or without it. Throws Failure (kColumnsWithoutHeader) where it has
/// another number of them.
std::map<std::string, std::string> ColumnsInOrder(const TableReader& reader,
                                                  const LoadedModel& model, bool readsEndTime);

/// The processors that this process may use.
size_t ProcessorCount();

/// Scores tables through a model, block by block in constant memory: one thread at a time reads
/// and cuts off records, any number split, score and shape blocks, and one at a time writes them in
/// their order. What is written doesn't depend on the threads, nor on the size of blocks.
///
/// Order   the constructor reads the first header and binds the columns, so what can't be scored at
///         all is refused before any output file is touched; Run() once. It writes everything out,
///         but leaves the end to the writers' owner: Close() of a whole table, or EndEarly().
///         Blocks go one by one until a row was scored, since a model may settle things by it.
/// Errors  Failure: what TableReader, CasePreparer, OutputShaper and RowWriter refuse,
///         kColumnsWithoutHeader, kOutputKeyTwice and kTooManyRejects. A fault in mid-table leaves
///         the whole rows before it written; Report() tells how many.
/// Owner   model and stop flag outlive the session.
class ScoringSession {
public:
    /// Called now and then, by one thread at a time, with the bytes read and the rows written so
    /// far.
    using Progress = std::function<void(uint64_t bytes, int64_t rows)>;
    /// Called now and then, by one thread at a time, once the rows before a position are in the
    /// files; and at last when a run is interrupted or fails.
    using Checkpoint = std::function<void(const RunPosition&)>;

    ScoringSession(const LoadedModel& model, std::vector<std::string> tables,
                   const ScoringOptions& options, const StopFlag* stop = nullptr);
    ~ScoringSession();

    void OnProgress(Progress progress) { progress_ = std::move(progress); }
    void OnCheckpoint(Checkpoint checkpoint) { checkpoint_ = std::move(checkpoint); }
    /// Run() then goes on from there, where a run of the same model, tables and options was. The
    /// writers are to stand there too.
    void StartAt(RunPosition position) { start_ = std::move(position); }

    /// `rejects` is null unless the options want them.
    void Run(RowWriter& writer, RowWriter* rejects = nullptr);

    const ScoringReport& Report() const { return report_; }
    const ScoringTimes& Times() const { return times_; }
    const TableReader& Tables() const { return reader_; }
    size_t ThreadCount() const { return threads_; }

private:
    bool IsStopped() const { return stop_ != nullptr && stop_->load(std::memory_order_relaxed); }
    void WriteHeaders();
    void ScoreTables();
    void ScoreInParallel();
    bool Read(BlockTask& task);
    void Write(BlockTask& task);
    void WriteBlock(BlockTask& task);
    void SettleReport();
    void GoToStart();
    void FlushWriters();
    void MayCheckpoint();
    void LastCheckpoint();
    RunPosition Position() const;

    TableReader reader_;
    BlockPlan plan_;
    std::deque<BlockTask> tasks_;
    ResultSchema schema_;
    OutputShaper shaper_;
    CurveShaper curves_;
    const StopFlag* stop_;
    size_t threads_;

    RowWriter* writer_ = nullptr;
    RowWriter* rejectWriter_ = nullptr;
    Progress progress_;
    Checkpoint checkpoint_;
    std::optional<RunPosition> start_;
    TableReader::Place place_;  ///< behind the last whole block that was written
    /// Behind which a part of a block was written.
    std::optional<RunPosition> lastWhole_;
    std::chrono::steady_clock::time_point checkpointed_{};
    bool readEnded_ = false;          ///< no further block is read
    std::atomic<bool> ended_{false};  ///< nothing more is read or written
    std::exception_ptr failure_;
    ScoringReport report_;
    std::vector<UnlistedValues> unlisted_;  ///< by the preparer's field
    ScoringTimes times_;
};

}  // namespace MCVelscore_850

#endif
