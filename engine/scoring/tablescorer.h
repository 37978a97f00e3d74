#ifndef VELSCORE_ENGINE_SCORING_TABLESCORER_H
#define VELSCORE_ENGINE_SCORING_TABLESCORER_H

#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "engine/scoring/blockroad.h"
#include "engine/scoring/casescorer.h"
#include "engine/scoring/resultblock.h"
#include "engine/scoring/resultreader.h"
#include "engine/scoring/resultschema.h"
#include "engine/tables/columnblock.h"

namespace MCVelscore_850 {

class LoadedModel;

/// How a table is written, and what is wanted of its rows.
struct TableOptions {
    char decimal = '.';
    std::vector<std::string> missingTexts{};
    ResultOptions results{};
    /// Only curves are asked for, at the times of results.survival or those of the baseline; the
    /// table needs no end time then.
    bool curves = false;
    bool ReadsEndTime() const { return !curves && results.survival.endTime; }
    /// As CaseOptions::columnOf. What it tells of an end time that isn't read isn't heeded: a table
    /// for scores serves curves too.
    std::map<std::string, std::string> columnOf{};
    std::string headerRemedy{};  ///< as CaseOptions::headerRemedy
};

/// Takes the rows of one table through a model: blocks of columns in, blocks of results out.
/// Whatever scores, verifies or draws curves does it here.
///
/// Roads   Rows that need no judgement go through the model's block scorer together, where it has
///         one; any other goes alone, as a case, through ScoreModel::ScoreRow. Both give the same
///         bits and land in the same columns. The first row that the model scores goes alone before
///         any block, since a model may settle things by it.
/// Errors  Failure: what CasePreparer refuses of the header, from the constructor. A row that can't
///         be scored has a status other than 0, the field at fault and what stood in it, as far as
///         a single field is.
/// Owner   the model outlives the scorer.
/// Threads one. All that scoring writes lies in the scorer and in its state of the model.
/// Memory  scoring a block allocates nothing that the blocks before it didn't.
class TableScorer {
public:
    /// The most rows of a block.
    static constexpr size_t kRows = BatchScorer::kRows;

    /// What the rows are treated by beside the options follows from the model and its policy.
    TableScorer(const LoadedModel& model, std::span<const std::string> header,
                const std::string& tableName, const TableOptions& options = {});
    TableScorer(const ScoreModel& model, const ModelDescription& description,
                const std::vector<MiningFieldTreatment>& treatments,
                std::span<const std::string> header, const std::string& tableName,
                CaseOptions options = {}, const ResultOptions& results = {});
    ~TableScorer();

    const ResultSchema& Schema() const { return schema_; }
    const CasePreparer& Preparer() const { return one_.Preparer(); }

    /// True once a row was scored: what a model settles by its first case is settled.
    bool IsSettled() const { return settled_; }
    /// Goes on as the other does, a scorer of the same model and table: on another thread, say.
    void SettleAs(const TableScorer& other);
    /// Begins another table of the same columns: its first row settles the model anew. Throws
    /// nothing.
    void BeginTable();

    /// Scores a block of at most kRows rows. `results` is made with Schema(); its texts of faults
    /// view the block's.
    void Score(const ColumnBlock& block, ResultBlock& results);

    /// The unlisted values of the block that was scored last, in the order of its rows. They view
    /// the block's texts.
    std::span<const UnlistedValue> Unlisted() { return one_.Preparer().Unlisted(); }

    /// One case after the other, alone: the visitor is told the row, its status, its record and,
    /// when it is scored, its result, which stand until it returns. Once it answers false no
    /// further row is scored.
    using CaseVisitor = std::function<bool(size_t row, const CaseStatus& status,
                                           const CaseRecord& record, const ScoreResult* result)>;
    void VisitCases(const ColumnBlock& block, const CaseVisitor& visitor);
    /// The same with each case's survival curve, empty where it has none.
    using CurveVisitor = std::function<bool(size_t row, const CaseStatus& status,
                                            const std::vector<SurvivalPoint>& curve)>;
    void VisitCurves(const ColumnBlock& block, const CurveVisitor& visitor);

    /// The same with how each case's linear predictors came about: nothing of one that isn't
    /// scored. `results`, made with Schema(), gets the rows' results before the visitor is told;
    /// null where nobody reads them.
    using ExplanationVisitor = std::function<bool(size_t row, const CaseStatus& status,
                                                  const CaseExplanation& explanation)>;
    void VisitExplanations(const ColumnBlock& block, ResultBlock* results,
                           const ExplanationVisitor& visitor);

private:
    /// What `status` says of a row that went alone.
    CaseStatus Settle(const CaseStatus& status);
    CaseStatus ScoreAlone(const ColumnBlock& block, size_t row);
    void ScoreInto(const ColumnBlock& block, size_t row, ResultBlock& results);
    void ReadResult(size_t row, ResultBlock& results);
    bool BindCategories(std::span<const std::string> categories);
    void ScoreTogether(const ColumnBlock& block, size_t first, ResultBlock& results);
    BatchResults PlacesIn(ResultBlock& results);
    void FinishColumn(const ResultColumn& column, const RowBits& scored, size_t whole,
                      ResultBlock::Column& values) const;

    ResultSchema schema_;
    CaseScorer one_;
    ResultReader reader_;
    std::unique_ptr<BlockRoad> road_;
    bool settled_ = false;  ///< a row was scored alone
    SurvivalQuestions survivalAsked_;
    std::vector<double*> survivals_;         ///< by time
    std::vector<double*> probabilities_;     ///< by the block scorer's categories
    std::vector<int32_t> categoryOfScorer_;  ///< the schema's category of the block scorer's one
    const std::vector<SurvivalPoint> noCurve_;
};

}  // namespace MCVelscore_850

#endif
