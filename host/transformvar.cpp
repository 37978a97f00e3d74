#include "host/transformvar.h"

#include <unordered_set>

#include "host/datetimevalue.h"
#include "host/expression.h"
#include "host/numbertext.h"
#include "host/numericvalue.h"
#include "host/stringvalue.h"

namespace MCVelscore_850 {

namespace {

std::unique_ptr<ScoreValue> MakeMissing(int valueType)
{
    switch (valueType) {
        case ScoreDictVar::STRING: {
            auto value = std::make_unique<StringValue>("");
            value->SetMissing();
            return value;
        }
        case ScoreDictVar::DATETIME:
            return std::make_unique<DateTimeValue>(NumericValue::GetSysmisValue());
        default: return std::make_unique<NumericValue>(NumericValue::GetSysmisValue());
    }
}

double NumberOf(const ExpressionValue& value)
{
    double number = NumericValue::GetSysmisValue();
    if (value.kind == ExpressionValue::Number) return value.number;
    if (value.kind == ExpressionValue::Text) ReadNumber(value.text, number);
    return number;
}

}  // namespace

TransformVar::TransformVar(DictVarType type, std::shared_ptr<const Expression> expression)
    : DictVar(std::move(type)),
      expression_(std::move(expression)),
      height_(expression_->Height()),
      value_(MakeMissing(GetValueType()))
{
    std::vector<const ScoreDictVar*> named;
    expression_->CollectInputs(named);
    std::unordered_set<const ScoreDictVar*> seen;
    for (const ScoreDictVar* var : named) {
        if (seen.insert(var).second) inputs_.push_back(var);
    }
}

TransformVar::TransformVar(const TransformVar& other)
    : DictVar(other),
      expression_(other.expression_),
      inputs_(other.inputs_),
      height_(other.height_),
      value_(MakeMissing(GetValueType()))
{}

TransformVar::~TransformVar() = default;

ScoreDictVar* TransformVar::Clone() const { return new TransformVar(*this); }

ScoreValue* TransformVar::GetTransformedValue(const ScoreCaseRecord* record,
                                              const ScoreDictionary* dictionary,
                                              const ScoreDictionary* transformations) const
{
    return ValueIn({record, dictionary, transformations});
}

ScoreValue* TransformVar::ValueIn(const ExpressionCase& c) const
{
    if (evaluation_ == c.evaluation) return value_.get();
    evaluation_ = c.evaluation;
    ExpressionValue outcome;
    expression_->Evaluate(c, outcome);
    switch (value_->GetValueType()) {
        case ScoreValue::STRING: {
            auto& value = static_cast<StringValue&>(*value_);
            if (outcome.kind == ExpressionValue::Missing) {
                value.SetMissing();
            } else if (outcome.kind == ExpressionValue::Text) {
                value.Assign(Spelling(outcome.text));
            } else {
                outcome.text.clear();
                AppendNumber(outcome.number, outcome.text);
                value.Assign(Spelling(outcome.text));
            }
            break;
        }
        case ScoreValue::DATETIME:
            static_cast<DateTimeValue&>(*value_).SetNumber(NumberOf(outcome));
            break;
        default: static_cast<NumericValue&>(*value_).SetDoubleValue(NumberOf(outcome)); break;
    }
    return value_.get();
}

}  // namespace MCVelscore_850
