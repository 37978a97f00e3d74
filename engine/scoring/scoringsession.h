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
#include "engine/scoring/casescorer.h"
#include "engine/scoring/outputevaluator.h"
#include "engine/scoring/outputshaper.h"
#include "engine/tables/bytesource.h"
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
    /// Survival curves in place of scores, of a model that has them (CurveShaper::Suits); nothing
    /// of `output` is heeded then, and the table needs no end time.
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

/// Scores a table through a model, row by row in constant memory, on one thread.
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

    ScoringSession(LoadedModel& model, ByteSource& source, const ScoringOptions& options,
                   const StopFlag* stop = nullptr);
    ~ScoringSession();

    void Run(CsvWriter& writer, const Progress& progress = nullptr);
    const ScoringReport& Report() const { return report_; }

private:
    bool IsStopped() const { return stop_ != nullptr && stop_->load(std::memory_order_relaxed); }
    void ScoreRows(CsvWriter& writer, const Progress& progress);
    void ScoreRow(CsvWriter& writer, std::span<const std::string_view> fields);
    void WriteNotScored(CsvWriter& writer, std::span<const std::string_view> fields,
                        const CaseStatus& status);
    void Note(const CaseStatus& status);

    CsvReader reader_;
    CaseScorer scorer_;
    std::unique_ptr<OutputEvaluator> fields_;  ///< of the document's Output section, when asked for
    OutputShaper shaper_;
    const StopFlag* stop_;
    bool curves_;
    ScoringReport report_;
};

}  // namespace MCVelscore_850

#endif
