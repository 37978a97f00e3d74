#include "engine/scoring/resultreader.h"

#include <memory>
#include <unordered_map>

#include "engine/scoring/outputevaluator.h"
#include "host/model/scoreresult.h"
#include "host/model/scoringstate.h"
#include "host/values/stringvalue.h"
#include "host/variables/scoredictvar.h"
#include "host/variables/targetdeclaration.h"
#include "models/coxregresult.h"
#include "models/lrresult.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kNoPercent = static_cast<size_t>(-1);

bool IsCategory(const ScoreValue& value, const std::string& category)
{
    return value.Kind() == ScoreValue::STRING
               ? static_cast<const StringValue&>(value).Text() == category
               : value.GetString() == category;
}

ResultCategory CategoryOf(const ScoreValue& value)
{
    if (value.Kind() == ScoreValue::STRING) return {static_cast<const StringValue&>(value).Text()};
    return {value.GetString(), value.GetDouble()};
}

}  // namespace

ResultReader::ResultReader(const ResultSchema& schema, const ScoreDictVar* target)
    : schema_(schema),
      declaration_(schema.ResultType() == ScoreResult::LR_RESULT ? TargetOf(target) : nullptr)
{
    for (const std::string& category : schema.Categories()) {
        const bool number = target != nullptr && target->GetValueType() != ScoreDictVar::STRING;
        categories_.push_back(
            number ? CategoryOf(*std::unique_ptr<ScoreValue>(target->MakeValue(category)))
                   : ResultCategory{category});
    }
}

double ResultReader::Predicted(double number) const
{
    return declaration_ == nullptr ? number : declaration_->Apply(number);
}

void ResultReader::Read(const ScoreResult& result, const ScoringState& state, size_t row,
                        ResultBlock& results)
{
    if (schema_.ResultType() == ScoreResult::MLR_RESULT) {
        FindPercents(static_cast<const ScoreClsResult&>(result));
    }
    for (size_t i = 0; i < results.columns.size(); ++i) {
        const ResultColumn& column = schema_.Columns()[i];
        if (column.lacksCovariances) continue;
        switch (column.quantity) {
            case ResultQuantity::Prediction:
                SetPrediction(result.GetPrediction(), row, results);
                break;
            case ResultQuantity::StdDev:
                SetNumber(i, static_cast<const LRResult&>(result).GetStdDev(), row, results);
                break;
            case ResultQuantity::CILower:
                SetNumber(i, static_cast<const LRResult&>(result).GetCIBottom(), row, results);
                break;
            case ResultQuantity::CIUpper:
                SetNumber(i, static_cast<const LRResult&>(result).GetCITop(), row, results);
                break;
            case ResultQuantity::Probability: {
                const size_t place = percentOfCategory_[column.category];
                if (place == kNoPercent) break;
                const auto& percents =
                    static_cast<const ScoreClsResult&>(result).GetAllValuePercent();
                SetNumber(i, percents[place].second, row, results);
                break;
            }
            case ResultQuantity::CumHazard:
                SetNumber(i, static_cast<const CoxRegResult&>(result).GetCumHazardValue(), row,
                          results);
                break;
            case ResultQuantity::LinearPredictor:
                SetNumber(i, state.linearPredictor, row, results);
                break;
            case ResultQuantity::LinearPredictorError:
                SetNumber(i, state.linearPredictorError, row, results);
                break;
            case ResultQuantity::Risk: SetNumber(i, state.survival.risk, row, results); break;
            case ResultQuantity::MedianSurvival:
                SetNumber(i, state.survival.median, row, results);
                break;
            case ResultQuantity::SurvivalAt:
                SetNumber(i, state.survival.survivals[column.time], row, results);
                break;
            case ResultQuantity::ProbabilityError:
                if (column.category >= state.probabilityErrors.size()) break;
                SetNumber(i, state.probabilityErrors[column.category], row, results);
                break;
            case ResultQuantity::Status:
            case ResultQuantity::StatusField: break;
        }
    }
}

void ResultReader::SetNumber(size_t column, double number, size_t row, ResultBlock& results) const
{
    if (!ResultSchema::Exists(schema_.Columns()[column].quantity, number)) return;
    results.columns[column].numbers[row] = number;
    AddRow(results.columns[column].present, row);
}

void ResultReader::SetPrediction(const ScoreValue* value, size_t row, ResultBlock& results)
{
    constexpr size_t kPrediction = 0;
    if (value == nullptr) return;
    if (schema_.Columns()[kPrediction].kind == ResultKind::Number) {
        const double number = value->GetDouble();
        if (ResultSchema::Exists(ResultQuantity::Prediction, number)) {
            SetNumber(kPrediction, Predicted(number), row, results);
        }
        return;
    }
    const bool isText = value->Kind() == ScoreValue::STRING;
    if (!isText && !ResultSchema::Exists(ResultQuantity::Prediction, value->GetDouble())) return;
    results.columns[kPrediction].codes[row] = CodeOf(*value);
    AddRow(results.columns[kPrediction].present, row);
}

int32_t ResultReader::CodeOf(const ScoreValue& value)
{
    const bool isText = value.Kind() == ScoreValue::STRING;
    const auto is = [&](const ResultCategory& category) {
        // A result that a row without a mean made a text stays one, also of a target of dates.
        return isText ? category.text == static_cast<const StringValue&>(value).Text()
                      : category.number == value.GetDouble();
    };
    if (lastCode_ >= categories_.size() || !is(categories_[lastCode_])) {
        lastCode_ = 0;
        while (lastCode_ < categories_.size() && !is(categories_[lastCode_])) ++lastCode_;
        if (lastCode_ == categories_.size()) categories_.push_back(CategoryOf(value));
    }
    return static_cast<int32_t>(lastCode_);
}

// Results keep the order of their entries from case to case, so where the categories stand is
// looked up again only when the entry at a place isn't the category.
void ResultReader::FindPercents(const ScoreClsResult& result)
{
    const ScoreClsResult::ValuePercents& percents = result.GetAllValuePercent();
    const std::vector<std::string>& categories = schema_.Categories();
    bool inPlace = percentOfCategory_.size() == categories.size();
    for (size_t i = 0; inPlace && i < categories.size(); ++i) {
        const size_t place = percentOfCategory_[i];
        inPlace = place < percents.size() && IsCategory(*percents[place].first, categories[i]);
    }
    if (inPlace) return;
    std::unordered_map<std::string, size_t> places;
    for (size_t i = 0; i < percents.size(); ++i) {
        places.emplace(percents[i].first->GetString(), i);
    }
    percentOfCategory_.assign(categories.size(), kNoPercent);
    for (size_t i = 0; i < categories.size(); ++i) {
        const auto found = places.find(categories[i]);
        if (found != places.end()) percentOfCategory_[i] = found->second;
    }
}

}  // namespace MCVelscore_850
