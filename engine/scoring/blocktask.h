#ifndef VELSCORE_ENGINE_SCORING_BLOCKTASK_H
#define VELSCORE_ENGINE_SCORING_BLOCKTASK_H

#include <chrono>
#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/scoring/outputevaluator.h"
#include "engine/scoring/outputshaper.h"
#include "engine/scoring/rejects.h"
#include "engine/scoring/scoringreport.h"
#include "engine/scoring/tablescorer.h"
#include "engine/scoring/turn.h"
#include "engine/tables/blocksplitter.h"
#include "engine/tables/columnblock.h"
#include "engine/tables/compression.h"
#include "engine/tables/recordblock.h"
#include "engine/tables/rowtext.h"
#include "engine/tables/tablereader.h"

namespace MCVelscore_850 {

class CurveShaper;
class LoadedModel;

/// What all blocks of a run share.
struct BlockPlan {
    const std::vector<std::string>& OutputColumns() const;
    /// The positions in the input of the columns that the output repeats.
    std::span<const size_t> Kept() const;

    const LoadedModel& model;
    const TableReader& reader;
    const OutputShaper& shaper;
    const CurveShaper& curves;  ///< in the place of the other one where table.curves says so
    TableOptions table;
    RowForm form;
    Compression compression = Compression::None;  ///< of the rows of text
    char delimiter = ',';
    bool rejects = false;  ///< rows that can't be read are rejected; else the table ends there
    int64_t mostRejects = std::numeric_limits<int64_t>::max();
    const StopFlag* stop = nullptr;
};

/// The middle of a run: takes one block of records at a time from bytes to rows of text, and counts
/// what became of its rows.
///
/// Errors  what ends the table is kept, for the rows before it to be written first.
/// Threads one at a time; other tasks of the plan go on beside it.
/// Memory  kept from block to block.
class BlockTask {
public:
    explicit BlockTask(const BlockPlan& plan);
    ~BlockTask();

    /// Held by whoever fills, runs or writes the block.
    Turn& OwnTurn() { return turn_; }
    /// To be filled before Run().
    RecordBlock& Records() { return records_; }
    /// Ends the run where this block would be.
    void Fail(std::exception_ptr failure);
    std::exception_ptr ReadFailure() const { return readFailure_; }
    /// `mostRejects` ends the table before the row that would be one too many.
    void Run(int64_t mostRejects);

    bool IsSettled() const { return scorer_.IsSettled(); }
    void SettleAs(const BlockTask& other) { scorer_.SettleAs(other.scorer_); }

    const RowText& Rows() const { return rows_; }
    /// The same, compressed if that is wanted.
    const std::string& PackedRows() const { return packedRows_; }
    const RowText& Rejects() const { return rejects_; }
    int64_t RejectCount() const { return rejectCount_; }
    const ScoringReport& Report() const { return report_; }
    /// The block's unlisted values, in the order of its rows.
    struct Unlisted {
        size_t field;
        std::string text;
    };
    std::span<const Unlisted> UnlistedTexts() const { return unlisted_; }
    std::span<const CaseField> Fields() const { return scorer_.Preparer().Fields(); }
    /// What ended the table in this block; null where nothing did.
    std::exception_ptr WhyEnded() const { return failure_; }
    /// The stop flag was raised before all of the block's rows were scored.
    bool IsStopped() const { return stopped_; }
    std::chrono::nanoseconds Time() const { return time_; }

private:
    void MakeSplitter();
    void SplitAndScore();
    void ScoreRows(std::span<const std::string_view> fields);
    /// Before the row is written: it may be the one reject too many.
    void EndRow(size_t row, const CaseStatus& status)
    {
        if (status.IsOK()) {
            ++report_.scored;
        } else {
            EndUnscored(row, status);
        }
    }
    void EndUnscored(size_t row, const CaseStatus& status);
    void Reject(const TornRow& torn);
    void CountReject(const RawRow& row);
    InputRow Input(size_t row) const
    {
        InputRow input{fields_.subspan(row * columns_, columns_), TableName()};
        if (!jsonValues_.empty()) {
            input.jsonValues = jsonValues_.subspan(row * columns_, columns_);
        }
        return input;
    }
    std::string_view TableName() const { return plan_.reader.NameOf(records_.table); }

    const BlockPlan& plan_;
    const size_t columns_;  ///< of the table
    Turn turn_;
    TableScorer scorer_;
    std::unique_ptr<OutputEvaluator> evaluator_;  ///< of the document's Output section, if wanted
    std::unique_ptr<BlockSplitter> splitter_;     ///< made with the first block
    TextRows textRows_;
    ResultBlock results_;
    size_t mostRows_;

    RecordBlock records_;
    std::span<const std::string_view> fields_;      ///< of the rows at hand
    std::span<const std::string_view> jsonValues_;  ///< of the same
    RowText rows_;
    Compressor compressor_;
    std::string packedRows_;
    RowText rejects_;
    int64_t rejectCount_ = 0;
    int64_t mostRejects_ = 0;
    ScoringReport report_;
    std::vector<Unlisted> unlisted_;
    std::exception_ptr readFailure_;
    std::exception_ptr failure_;
    bool stopped_ = false;
    std::chrono::nanoseconds time_{0};
};

}  // namespace MCVelscore_850

#endif
