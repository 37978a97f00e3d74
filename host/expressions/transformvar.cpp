#include "host/expressions/transformvar.h"

#include <limits>
#include <unordered_set>

#include "host/values/datetimetext.h"
#include "host/values/datetimevalue.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"

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

// The number that the value objects hold for an outcome.
double NumberOf(const ExpressionValue& outcome)
{
    switch (outcome.kind) {
        case ExpressionValue::Missing: return NumericValue::GetSysmisValue();
        case ExpressionValue::Number: return outcome.number - OriginShift(outcome.dateTime);
        default: return std::numeric_limits<double>::quiet_NaN();
    }
}

}  // namespace

TransformVar::TransformVar(DictVarType type, std::shared_ptr<const Expression> expression)
    : DictVar(std::move(type)),
      expression_(std::move(expression)),
      cast_(DataTypeOf(Type())),
      height_(expression_->Height()),
      scratch_(std::make_unique<ExpressionScratch>())
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
      cast_(other.cast_),
      inputs_(other.inputs_),
      height_(other.height_),
      scratch_(std::make_unique<ExpressionScratch>())
{}

TransformVar::~TransformVar() = default;

ScoreDictVar* TransformVar::Clone() const { return new TransformVar(*this); }

ScoreValue* TransformVar::GetTransformedValue(const ScoreCaseRecord* record,
                                              const ScoreDictionary* dictionary,
                                              const ScoreDictionary* transformations) const
{
    return ValueIn({record, dictionary, transformations, *scratch_});
}

// Of one variable and one scratch.
struct TransformVar::Value final : ExpressionScratch::Part {
    std::unique_ptr<ScoreValue> value;
    ExpressionValue outcome;       // for its buffer
    unsigned long evaluation = 0;  // the one that the value comes from
};

ScoreValue* TransformVar::ValueIn(const ExpressionCase& c) const
{
    auto& mine = c.scratch.Of<Value>(this);
    if (mine.evaluation == c.evaluation) return mine.value.get();
    mine.evaluation = c.evaluation;
    if (mine.value == nullptr) mine.value = MakeMissing(GetValueType());
    ExpressionValue& outcome = mine.outcome;
    expression_->Evaluate(c, outcome);
    CastTo(cast_, outcome);
    switch (mine.value->GetValueType()) {
        case ScoreValue::STRING: {
            auto& value = static_cast<StringValue&>(*mine.value);
            MakeText(outcome);
            if (outcome.HasValue()) {
                value.Assign(Spelling(outcome.text));
            } else {
                value.SetMissing();
            }
            break;
        }
        case ScoreValue::DATETIME:
            static_cast<DateTimeValue&>(*mine.value).SetNumber(NumberOf(outcome));
            break;
        default: static_cast<NumericValue&>(*mine.value).SetDoubleValue(NumberOf(outcome)); break;
    }
    return mine.value.get();
}

}  // namespace MCVelscore_850
