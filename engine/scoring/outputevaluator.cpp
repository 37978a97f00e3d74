#include "engine/scoring/outputevaluator.h"

#include <cmath>
#include <unordered_map>

#include "engine/scoring/resultschema.h"
#include "host/expressions/transformvar.h"
#include "host/model/modeldescription.h"
#include "host/model/scoremodel.h"
#include "host/model/scoreresult.h"
#include "host/values/datetimetext.h"
#include "host/values/datetimevalue.h"
#include "host/values/numbertext.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/dictvar.h"
#include "host/variables/scorecaserecord.h"
#include "host/variables/targetdeclaration.h"
#include "models/coxregresult.h"
#include "models/lrresult.h"

namespace MCVelscore_850 {

using Feature = OutputField::Feature;

namespace {

void SetValue(OutputCell& cell, const ScoreValue* value)
{
    if (value == nullptr) {
        cell.SetMissing();
    } else if (value->Kind() == ScoreValue::STRING) {
        const auto& text = static_cast<const StringValue&>(*value);
        if (text.IsMissingText()) {
            cell.SetMissing();
        } else {
            cell.SetText(text.Text());
        }
    } else {
        cell.SetNumber(value->GetDouble());
    }
}

// A date or time as the cases have it: a number where its type counts from an origin of its own,
// else a text, and nothing beyond the years that texts have.
void SetDateTime(OutputCell& cell, double plain, ScoreDictVar::DateTimeType type)
{
    if (CountsFromOrigin(type)) {
        cell.SetNumber(plain + OriginShift(type));
        return;
    }
    cell.text.clear();
    AppendDateTime(plain, type, cell.text);
    cell.kind = cell.text.empty() ? OutputCell::Missing : OutputCell::Text;
}

// A number may be written in several ways.
bool AreOneCategory(const std::string& one, const std::string& other, bool areNumbers)
{
    return one == other || (areNumbers && AreOneNumber(one, other));
}

bool IsCalled(const ScoreValue& value, const std::string& category)
{
    return AreOneCategory(value.GetString(), category, value.Kind() == ScoreValue::NUMERIC);
}

// The probability of a category; missing for one that the model doesn't know.
void SetProbability(OutputCell& cell, const ScoreResult& result, const std::string& category)
{
    cell.SetMissing();
    if (result.GetScoreResultType() != ScoreResult::MLR_RESULT) return;
    const auto& percents = static_cast<const ScoreClsResult&>(result).GetAllValuePercent();
    const ScoreValue* predicted = result.GetPrediction();
    for (const auto& [value, percent] : percents) {
        const bool wanted = category.empty() ? predicted != nullptr && value->Equals(predicted)
                                             : IsCalled(*value, category);
        if (wanted) {
            cell.SetNumber(percent);
            return;
        }
    }
}

bool PredictsCategory(const ModelDescription& description)
{
    const ResultSchema schema(description);
    const auto& columns = schema.Columns();
    return std::any_of(columns.begin(), columns.end(), [](const ResultColumn& column) {
        return column.kind == ResultKind::Category;
    });
}

double ExistingNumber(ResultQuantity quantity, bool lacks, double number)
{
    return !lacks && ResultSchema::Exists(quantity, number) ? number
                                                            : NumericValue::GetSysmisValue();
}

}  // namespace

ErrorAndLimits::ErrorAndLimits(const ModelDescription& description)
    : lacksStdDev_(description.Lacks("std_dev")),
      lacksLower_(description.Lacks("ci_lower")),
      lacksUpper_(description.Lacks("ci_upper"))
{}

double ErrorAndLimits::StdDev(const LRResult& result) const
{
    return ExistingNumber(ResultQuantity::StdDev, lacksStdDev_, result.GetStdDev());
}

double ErrorAndLimits::Lower(const LRResult& result) const
{
    return ExistingNumber(ResultQuantity::CILower, lacksLower_, result.GetCIBottom());
}

double ErrorAndLimits::Upper(const LRResult& result) const
{
    return ExistingNumber(ResultQuantity::CIUpper, lacksUpper_, result.GetCITop());
}

void OutputCell::SetNumber(double value)
{
    if (NumericValue::IsSystemMissingValue(value) || std::isnan(value)) {
        kind = Missing;
        return;
    }
    kind = Number;
    number = value;
}

const TargetDeclaration* TargetOf(const ScoreDictVar* var)
{
    const auto* declared = dynamic_cast<const DictVar*>(var);
    return declared == nullptr ? nullptr : declared->GetTargetDeclaration();
}

OutputCell PredictedValue(const ScoreResult& result, const TargetDeclaration* target)
{
    OutputCell cell;
    if (result.GetScoreResultType() == ScoreResult::COXREG_RESULT) {
        cell.SetNumber(static_cast<const CoxRegResult&>(result).GetCumHazardValue());
        return cell;
    }
    SetValue(cell, result.GetPrediction());
    if (cell.kind == OutputCell::Number && target != nullptr &&
        result.GetScoreResultType() == ScoreResult::LR_RESULT) {
        cell.SetNumber(target->Apply(cell.number));
    }
    return cell;
}

// The values of the section's fields by name, before those of the case.
class OutputEvaluator::FieldsRecord final : public ScoreCaseRecord {
public:
    explicit FieldsRecord(const OutputSection& section)
    {
        for (size_t i = 0; i < section.fields.size(); ++i) {
            places_.emplace(section.fields[i].name, i);
        }
        numbers_.assign(section.fields.size(), NumericValue(NumericValue::GetSysmisValue()));
        texts_.assign(section.fields.size(), StringValue(""));
        dateTimes_.assign(section.fields.size(), DateTimeValue(0.0));
        values_.assign(section.fields.size(), nullptr);
    }

    void Begin(const ScoreCaseRecord& record)
    {
        case_ = &record;
        std::fill(values_.begin(), values_.end(), nullptr);
    }
    void Set(size_t field, const OutputCell& cell)
    {
        switch (cell.kind) {
            case OutputCell::Number:
                numbers_[field].SetDoubleValue(cell.number);
                values_[field] = &numbers_[field];
                break;
            case OutputCell::Text:
                texts_[field].Assign(cell.text);
                values_[field] = &texts_[field];
                break;
            case OutputCell::Missing: values_[field] = nullptr; break;
        }
    }
    void SetDateTime(size_t field, double plain)
    {
        dateTimes_[field].SetNumber(plain);
        values_[field] = &dateTimes_[field];
    }

    ScoreValue* GetValue(const std::string& name) const override
    {
        const auto found = places_.find(name);
        return found == places_.end() ? case_->GetValue(name) : values_[found->second];
    }
    ScoreValue* GetValue(int) const override { return nullptr; }
    bool HasIndexedAccess() const override { return false; }
    int GetVarIndex(const std::string&) const override { return -1; }
    const std::vector<ScoreValue*>* GetValues() const override { return nullptr; }

private:
    const ScoreCaseRecord* case_ = nullptr;
    std::unordered_map<std::string, size_t> places_;
    std::vector<NumericValue> numbers_;
    std::vector<StringValue> texts_;
    std::vector<DateTimeValue> dateTimes_;
    std::vector<ScoreValue*> values_;
};

OutputEvaluator::OutputEvaluator(const OutputSection& section, const ScoreModel& model,
                                 const ModelDescription& description)
    : section_(section),
      target_(model.GetTargetVar()),
      declaration_(TargetOf(target_)),
      errorAndLimits_(description),
      predictsCategory_(PredictsCategory(description)),
      cells_(section.fields.size()),
      fields_(std::make_unique<FieldsRecord>(section))
{}

OutputEvaluator::~OutputEvaluator() = default;

std::span<const OutputCell> OutputEvaluator::Evaluate(const ScoreCaseRecord& record,
                                                      const ScoreResult& result)
{
    fields_->Begin(record);
    for (size_t i = 0; i < section_.fields.size(); ++i) {
        const OutputField& field = section_.fields[i];
        OutputCell& cell = cells_[i];
        switch (field.feature) {
            case Feature::PredictedValue:
                cell = PredictedValue(result, declaration_);
                cell.isLabel = predictsCategory_;
                break;
            case Feature::PredictedDisplayValue:
                FillDisplay(PredictedValue(result, declaration_), cell);
                break;
            case Feature::Probability: SetProbability(cell, result, field.category); break;
            case Feature::StandardError: FillLinear(result, &ErrorAndLimits::StdDev, cell); break;
            case Feature::ConfidenceIntervalLower:
                FillLinear(result, &ErrorAndLimits::Lower, cell);
                break;
            case Feature::ConfidenceIntervalUpper:
                FillLinear(result, &ErrorAndLimits::Upper, cell);
                break;
            case Feature::Residual: FillResidual(field, record, result, cell); break;
            case Feature::Expression: {
                const ScoreValue* value =
                    field.expression->ValueIn({fields_.get(), section_.dictionary.get(),
                                               section_.expressions.get(), expressions_});
                if (field.expression->IsMissing(value)) value = nullptr;
                if (value != nullptr && value->Kind() == ScoreValue::DATETIME) {
                    // Expressions that follow see the date or time, not how it is written.
                    fields_->SetDateTime(i, value->GetDouble());
                    SetDateTime(cell, value->GetDouble(), field.expression->GetDateTimeType());
                    continue;
                }
                SetValue(cell, value);
                break;
            }
        }
        fields_->Set(i, cell);
    }
    return cells_;
}

std::span<const OutputCell> OutputEvaluator::EvaluateDefaults()
{
    for (size_t i = 0; i < section_.fields.size(); ++i) {
        const OutputField& field = section_.fields[i];
        OutputCell& cell = cells_[i];
        cell.SetMissing();
        if (declaration_ == nullptr) continue;
        const std::string* category = declaration_->DefaultCategory();
        const bool hasNumbers = target_->GetValueType() == ScoreDictVar::NUMERIC;
        switch (field.feature) {
            case Feature::PredictedValue:
            case Feature::PredictedDisplayValue:
                if (category != nullptr) {
                    cell.SetText(*category);
                    if (field.feature == Feature::PredictedDisplayValue) {
                        const OutputCell predicted = cell;
                        FillDisplay(predicted, cell);
                    }
                } else if (declaration_->hasDefault) {
                    cell.SetNumber(declaration_->defaultValue);
                }
                break;
            case Feature::Probability:
                for (const auto& [value, prior] : declaration_->priors) {
                    const std::string& wanted = field.category.empty() ? *category : field.category;
                    if (AreOneCategory(value, wanted, hasNumbers)) {
                        cell.SetNumber(prior);
                    }
                }
                break;
            default: break;
        }
    }
    return cells_;
}

void OutputEvaluator::FillLinear(const ScoreResult& result,
                                 double (ErrorAndLimits::*get)(const LRResult&) const,
                                 OutputCell& cell) const
{
    cell.SetMissing();
    if (result.GetScoreResultType() != ScoreResult::LR_RESULT) return;
    cell.SetNumber((errorAndLimits_.*get)(static_cast<const LRResult&>(result)));
}

void OutputEvaluator::FillDisplay(const OutputCell& predicted, OutputCell& cell) const
{
    cell = predicted;
    if (predicted.kind == OutputCell::Missing) return;
    const std::string value = predicted.kind == OutputCell::Text
                                  ? predicted.text
                                  : NumericValue(predicted.number).GetString();
    const auto found = section_.displayValues.find(value);
    if (found != section_.displayValues.end()) cell.SetText(found->second);
}

void OutputEvaluator::FillResidual(const OutputField& field, const ScoreCaseRecord& record,
                                   const ScoreResult& result, OutputCell& cell) const
{
    cell.SetMissing();
    const ScoreValue* observed = target_ == nullptr ? nullptr : record.GetValue(target_->GetName());
    if (observed == nullptr || target_->IsMissing(observed)) return;
    if (result.GetScoreResultType() == ScoreResult::MLR_RESULT) {
        SetProbability(cell, result, field.category);
        if (cell.kind != OutputCell::Number) return;
        const ScoreValue* predicted = result.GetPrediction();
        const bool met = field.category.empty()
                             ? predicted != nullptr && observed->Equals(predicted)
                             : IsCalled(*observed, field.category);
        cell.SetNumber((met ? 1.0 : 0.0) - cell.number);
        return;
    }
    const OutputCell predicted = PredictedValue(result, declaration_);
    if (predicted.kind == OutputCell::Number) {
        cell.SetNumber(observed->GetDouble() - predicted.number);
    }
}

}  // namespace MCVelscore_850
