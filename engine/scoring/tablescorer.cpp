#include "engine/scoring/tablescorer.h"

#include <algorithm>
#include <bit>
#include <stdexcept>
#include <unordered_map>

#include "engine/documents/loadedmodel.h"
#include "engine/documents/outputfield.h"
#include "engine/scoring/curveshaper.h"
#include "host/model/scoremodel.h"
#include "host/model/scoreresult.h"

namespace MCVelscore_850 {

namespace {

// Without those of fields that aren't read.
std::map<std::string, std::string> ColumnsOfRead(const LoadedModel& model,
                                                 const TableOptions& options)
{
    std::map<std::string, std::string> columnOf = options.columnOf;
    if (options.ReadsEndTime()) return columnOf;
    const std::vector<std::string> read = model.ColumnsOf(CurveShaper::Needs(model.Description()));
    for (const std::string& name : model.Columns()) {
        if (std::find(read.begin(), read.end(), name) == read.end()) columnOf.erase(name);
    }
    return columnOf;
}

CaseOptions CaseOptionsOf(const LoadedModel& model, const TableOptions& options)
{
    return {options.decimal,
            model.Substitutes(),
            options.missingTexts,
            model.Output() == nullptr ? std::vector<std::string>() : model.Output()->inputs,
            model.ListedByCells(),
            ColumnsOfRead(model, options),
            options.headerRemedy};
}

}  // namespace

TableScorer::TableScorer(const LoadedModel& model, std::span<const std::string> header,
                         const std::string& tableName, const TableOptions& options)
    : TableScorer(
          model.Model(),
          options.ReadsEndTime() ? model.Description() : CurveShaper::Needs(model.Description()),
          model.Treatments(), header, tableName, CaseOptionsOf(model, options), options.results)
{}

TableScorer::TableScorer(const ScoreModel& model, const ModelDescription& description,
                         const std::vector<MiningFieldTreatment>& treatments,
                         std::span<const std::string> header, const std::string& tableName,
                         CaseOptions options, const ResultOptions& results)
    : schema_(description, results),
      one_(model, description, treatments, header, tableName, std::move(options)),
      reader_(schema_, model.GetTargetVar()),
      road_(BlockRoad::Make(
          model, description.variables,
          results.survival.endTime ? std::string_view() : description.endTimeVariable,
          one_.Preparer())),
      survivalAsked_(results.survival),
      survivals_(results.survivalColumns.size())
{
    one_.Ask(survivalAsked_);
    if (road_ != nullptr && !BindCategories(road_->Scorer().Categories())) road_.reset();
    for (const ResultColumn& column : schema_.Columns()) {
        if (column.quantity == ResultQuantity::LinearPredictorError) {
            one_.WantLinearPredictorError();
        }
        if (column.quantity == ResultQuantity::ProbabilityError) {
            one_.WantProbabilityErrors();
            road_.reset();  // blocks have none
        }
    }
}

TableScorer::~TableScorer() = default;

// False where the block scorer's categories aren't those of the results.
bool TableScorer::BindCategories(std::span<const std::string> categories)
{
    const bool classifies = schema_.ResultType() == ScoreResult::MLR_RESULT;
    if (categories.size() != schema_.Categories().size()) return false;
    if (classifies == categories.empty()) return false;
    std::unordered_map<std::string_view, size_t> places;
    for (size_t i = 0; i < schema_.Categories().size(); ++i) {
        places.emplace(schema_.Categories()[i], i);
    }
    for (const std::string& category : categories) {
        const auto found = places.find(category);
        if (found == places.end()) return false;
        categoryOfScorer_.push_back(static_cast<int32_t>(found->second));
    }
    probabilities_.resize(categories.size());
    return true;
}

void TableScorer::Score(const ColumnBlock& block, ResultBlock& results)
{
    one_.Preparer().BeginBlock();
    results.Begin(block.rows);
    size_t row = 0;
    while (row < block.rows && !(road_ != nullptr && settled_)) ScoreInto(block, row++, results);
    if (row < block.rows) ScoreTogether(block, row, results);
    std::vector<UnlistedValue>& unlisted = one_.Preparer().Unlisted();
    std::stable_sort(unlisted.begin(), unlisted.end(),
                     [](const auto& one, const auto& other) { return one.row < other.row; });
    results.categories = reader_.Categories();
}

void TableScorer::SettleAs(const TableScorer& other)
{
    one_.SettleAs(other.one_);
    settled_ = other.settled_;
}

void TableScorer::BeginTable()
{
    one_.Unsettle();
    settled_ = false;
}

void TableScorer::VisitCases(const ColumnBlock& block, const CaseVisitor& visitor)
{
    one_.Preparer().BeginBlock();
    for (size_t row = 0; row < block.rows; ++row) {
        const CaseStatus status = ScoreAlone(block, row);
        const ScoreResult* result = status.IsOK() ? &one_.Result() : nullptr;
        if (!visitor(row, status, one_.Record(), result)) return;
    }
}

void TableScorer::VisitCurves(const ColumnBlock& block, const CurveVisitor& visitor)
{
    one_.Preparer().BeginBlock();
    for (size_t row = 0; row < block.rows; ++row) {
        const CaseStatus status = one_.DrawCurve(block, row);
        settled_ = settled_ || status.IsOK();
        if (!visitor(row, status, status.IsOK() ? one_.Curve() : noCurve_)) return;
    }
}

void TableScorer::VisitExplanations(const ColumnBlock& block, ResultBlock* results,
                                    const ExplanationVisitor& visitor)
{
    one_.Preparer().BeginBlock();
    if (results != nullptr) results->Begin(block.rows);
    for (size_t row = 0; row < block.rows; ++row) {
        const CaseStatus status = Settle(one_.Explain(block, row));
        if (results != nullptr && status.IsOK()) {
            ReadResult(row, *results);
            results->categories = reader_.Categories();
        } else if (results != nullptr) {
            results->SetFault(row, status);
        }
        if (!visitor(row, status, one_.Explained())) return;
    }
}

CaseStatus TableScorer::ScoreAlone(const ColumnBlock& block, size_t row)
{
    return Settle(one_.Score(block, row));
}

CaseStatus TableScorer::Settle(const CaseStatus& status)
{
    if (!status.IsOK()) return status;
    if (one_.Result().GetScoreResultType() != schema_.ResultType()) {
        throw std::logic_error("the model's result isn't of the kind that its description tells");
    }
    settled_ = true;
    return status;
}

void TableScorer::ScoreInto(const ColumnBlock& block, size_t row, ResultBlock& results)
{
    const CaseStatus status = ScoreAlone(block, row);
    if (status.IsOK()) {
        ReadResult(row, results);
    } else {
        results.SetFault(row, status);
    }
}

void TableScorer::ReadResult(size_t row, ResultBlock& results)
{
    reader_.Read(one_.Result(), one_.State(), row, results);
}

// The rows from `first` on; those before it were scored alone, the last of them well.
void TableScorer::ScoreTogether(const ColumnBlock& block, size_t first, ResultBlock& results)
{
    RowBits unsure = FirstRows(first);
    road_->Score(block, PlacesIn(results), unsure);
    RowBits scored = FirstRows(block.rows);
    for (size_t i = 0; i < scored.size(); ++i) scored[i] &= ~unsure[i];
    const bool isWhole = scored == FirstRows(block.rows);
    for (size_t i = 0; i < results.columns.size(); ++i) {
        FinishColumn(schema_.Columns()[i], scored, isWhole ? block.rows : 0, results.columns[i]);
    }
    // The block was written over the row that the model was settled by.
    if (first > 0) ReadResult(first - 1, results);
    for (size_t word = 0; word < unsure.size(); ++word) {
        for (uint64_t left = unsure[word]; left != 0; left &= left - 1) {
            const size_t row = word * 64 + static_cast<size_t>(std::countr_zero(left));
            if (row >= first && row < block.rows) ScoreInto(block, row, results);
        }
    }
}

BatchResults TableScorer::PlacesIn(ResultBlock& results)
{
    BatchResults places;
    for (size_t i = 0; i < results.columns.size(); ++i) {
        const ResultColumn& column = schema_.Columns()[i];
        if (column.lacksCovariances) continue;
        double* const numbers = results.columns[i].numbers.data();
        switch (column.quantity) {
            case ResultQuantity::Prediction:
                if (column.kind == ResultKind::Category) {
                    places.category = results.columns[i].codes.data();
                } else {
                    places.prediction = numbers;
                }
                break;
            case ResultQuantity::StdDev: places.stdDev = numbers; break;
            case ResultQuantity::CILower: places.ciLower = numbers; break;
            case ResultQuantity::CIUpper: places.ciUpper = numbers; break;
            case ResultQuantity::CumHazard: places.cumHazard = numbers; break;
            case ResultQuantity::LinearPredictor: places.linearPredictor = numbers; break;
            case ResultQuantity::LinearPredictorError: places.linearPredictorError = numbers; break;
            case ResultQuantity::Risk: places.risk = numbers; break;
            case ResultQuantity::MedianSurvival: places.medianSurvival = numbers; break;
            case ResultQuantity::SurvivalAt:
                survivals_[column.time] = numbers;
                places.survivals = survivals_.data();
                places.survivalTimes = survivalAsked_.times;
                break;
            case ResultQuantity::Probability: {
                if (column.category > 0) break;
                // The columns of the others follow.
                for (size_t c = 0; c < probabilities_.size(); ++c) {
                    const auto category = static_cast<size_t>(categoryOfScorer_[c]);
                    probabilities_[c] = results.columns[i + category].numbers.data();
                }
                places.probabilities = probabilities_.data();
                break;
            }
            case ResultQuantity::ProbabilityError:
            case ResultQuantity::Status:
            case ResultQuantity::StatusField: break;
        }
    }
    return places;
}

// Of the rows that a block scored: which have a value, and what the document makes of it. `whole`
// is their number where they are all that there are, else 0.
void TableScorer::FinishColumn(const ResultColumn& column, const RowBits& scored, size_t whole,
                               ResultBlock::Column& values) const
{
    if (column.lacksCovariances) return;
    if (column.kind == ResultKind::Category) {
        for (size_t row = 0; row < ResultBlock::kRows; ++row) {
            if (!HasRow(scored, row)) continue;
            values.codes[row] = categoryOfScorer_[static_cast<size_t>(values.codes[row])];
        }
        values.present = scored;
        return;
    }
    const bool changes =
        column.quantity == ResultQuantity::Prediction && reader_.ChangesPredictions();
    if (whole > 0 && !changes) {
        const auto [low, high] = ResultSchema::SureRange(column.quantity);
        if (road_->Scorer().SurelyWithin(values.numbers.data(), whole, low, high)) {
            values.present = scored;
            return;
        }
    }
    const auto existing = [&](size_t word) {
        return ResultSchema::ExistingBits(column.quantity, &values.numbers[word * 64], 64);
    };
    for (size_t word = 0; word < scored.size(); ++word) {
        if (scored[word] == 0) continue;
        uint64_t present = scored[word] & existing(word);
        if (changes) {
            for (size_t row = word * 64; row < word * 64 + 64; ++row) {
                if ((present >> (row % 64) & 1U) == 0) continue;
                values.numbers[row] = reader_.Predicted(values.numbers[row]);
            }
            present &= existing(word);
        }
        values.present[word] = present;
    }
}

}  // namespace MCVelscore_850
