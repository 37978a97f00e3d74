#ifndef VELSCORE_ENGINE_SCORING_SCORINGSESSION_H
#define VELSCORE_ENGINE_SCORING_SCORINGSESSION_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/documents/loadedmodel.h"
#include "engine/scoring/outputevaluator.h"
#include "engine/scoring/outputshaper.h"
#include "engine/scoring/tablescorer.h"
#include "engine/tables/bytesource.h"
#include "engine/tables/columnblock.h"
#include "engine/tables/csvreader.h"
#include "engine/tables/csvwriter.h"

namespace MCVelscore_850 {

/// How the input and the output tables are written: both alike.
struct TableDialect {
    char delimiter = ',';
    char decimal = '.';
};

struct ScoringOptions {
    TableDialect dialect;
    std::vector<std::string> missingTexts;
    OutputOptions output;
    ResultOptions results;
    /// Survival curves in place of scores, of a model that has them (CurveShaper::Suits); nothing
    /// of `output` and `results` is heeded then, and the table needs no end time.
    bool curves = false;
};

/// The cases of one status code: how many, and the first of them.
struct NotScored {
    int64_t count = 0;
    int64_t row = 0;    ///< the first one's number, from 1 after the header
    std::string field;  ///< empty when no single one is at fault
    /// What stood in that field; none of a derived field.
    std::optional<std::string> text;
};

/// What became of a table.
struct ScoringReport {
    int64_t scored = 0;
    std::map<long, NotScored> notScored;  ///< by status code
    std::vector<UnlistedValues> unlisted;
    int64_t rowsWritten = 0;    ///< whole rows in the output
    bool interrupted = false;   ///< the stop flag ended the run
    bool outputClosed = false;  ///< the reader of the output pipe went away

    int64_t NotScoredCount() const;
};

/// Scores a table through a model, block by block in constant memory, on one thread. A block has
/// the rows that can be had without waiting, so that a slow pipe delays none.
///
/// Order   the constructor reads the header and binds the columns, so what can't be scored at all
///         is refused before any output file is touched; Run() once. It writes everything out, but
///         leaves the end to the writer's owner: Close() of a whole table, or EndEarly().
/// Errors  Failure: what CsvReader, CasePreparer, OutputShaper and CsvWriter refuse. A fault in
///         mid-table leaves the whole rows before it written; Report() tells how many.
/// Owner   model, source and stop flag outlive the session.
class ScoringSession {
public:
    /// Called now and then with the bytes read so far.
    using Progress = std::function<void(uint64_t)>;

    ScoringSession(const LoadedModel& model, ByteSource& source, const ScoringOptions& options,
                   const StopFlag* stop = nullptr);
    ~ScoringSession();

    void Run(CsvWriter& writer, const Progress& progress = nullptr);
    const ScoringReport& Report() const { return report_; }

private:
    bool IsStopped() const { return stop_ != nullptr && stop_->load(std::memory_order_relaxed); }
    void ScoreTable(CsvWriter& writer, const Progress& progress);
    void ScoreBlock(const ColumnBlock& block, CsvWriter& writer, const Progress& progress);
    /// Ends a row; false when it was the last one that is wanted.
    bool EndRow(size_t row, const CaseStatus& status, const CsvWriter& writer,
                const Progress& progress);
    std::span<const std::string_view> Fields(size_t row) const;
    int64_t RowNumber(size_t row) const;
    void Note(size_t row, const CaseStatus& status);

    CsvReader reader_;
    TableScorer scorer_;
    std::unique_ptr<OutputEvaluator> fields_;  ///< of the document's Output section, when asked for
    OutputShaper shaper_;
    TextRows rows_;
    std::span<const std::string_view> texts_;  ///< of the block at hand
    ResultBlock results_;
    const StopFlag* stop_;
    bool curves_;
    ScoringReport report_;
};

}  // namespace MCVelscore_850

#endif
