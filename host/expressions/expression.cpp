#include "host/expressions/expression.h"

#include "host/expressions/transformvar.h"
#include "host/values/datetimevalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/scorecaserecord.h"
#include "host/variables/scoredictvar.h"
#include "host/variables/valueset.h"

namespace MCVelscore_850 {

Expression::~Expression() = default;
double Expression::Steps() const { return 1.0; }
bool Expression::CollectOutcomes(Outcomes&) const { return false; }

ExpressionScratch::Part::~Part() = default;
ExpressionScratch::ExpressionScratch() = default;
ExpressionScratch::ExpressionScratch(ExpressionScratch&&) noexcept = default;
ExpressionScratch& ExpressionScratch::operator=(ExpressionScratch&&) noexcept = default;
ExpressionScratch::~ExpressionScratch() = default;

bool Outcomes::Add(const ExpressionValue& value)
{
    if (left == 0) return false;
    --left;
    values.push_back(value);
    mayLackValue = mayLackValue || !value.HasValue();
    return true;
}

namespace {

// The value of a variable in the case: from the record when it is there, which for a derived
// variable means that it was computed already; otherwise a derived variable computes it.
const ScoreValue* CaseValue(const ScoreDictVar& var, const ExpressionCase& c)
{
    const ScoreValue* value = nullptr;
    if (c.record->HasIndexedAccess() && var.GetDictIndex() >= 0) {
        value = c.record->GetValue(var.GetDictIndex());
    }
    if (value == nullptr) value = c.record->GetValue(var.GetName());
    if (value == nullptr && var.IsDerived()) {
        value = static_cast<const TransformVar&>(var).ValueIn(c);
    }
    return value;
}

class FieldRef final : public FieldExpression {
public:
    FieldRef(FieldSource source, Replacement mapMissingTo)
        : FieldExpression(source, std::move(mapMissingTo))
    {}
    void Evaluate(const ExpressionCase& c, ExpressionValue& value) const override
    {
        ReadSource(c, value);
    }
    bool CollectOutcomes(Outcomes& outcomes) const override
    {
        return source_.CollectOutcomes(outcomes) &&
               (!mapMissingTo_.given || outcomes.Add(mapMissingTo_.value));
    }
};

class Constant final : public Expression {
public:
    explicit Constant(ExpressionValue value) : value_(std::move(value)) {}
    void Evaluate(const ExpressionCase&, ExpressionValue& value) const override { value = value_; }
    void CollectInputs(std::vector<const ScoreDictVar*>&) const override {}
    bool CollectOutcomes(Outcomes& outcomes) const override { return outcomes.Add(value_); }
    int Height() const override { return 1; }

private:
    ExpressionValue value_;
};

}  // namespace

FieldSource::FieldSource(const ScoreDictVar* var) : var_(var)
{
    // Every variable of this host is a DictVar.
    const auto* declared = dynamic_cast<const DictVar*>(var);
    if (declared == nullptr) return;
    type_ = &DataTypeOf(declared->Type());
    if (var->GetMeasureLevel() == ScoreDictVar::ORDINAL) order_ = declared;
}

void FieldSource::Read(const ExpressionCase& c, ExpressionValue& value) const
{
    if (var_ != nullptr) return ReadVar(c, value);
    value = c.parameters[parameter_];
}

void FieldSource::ReadVar(const ExpressionCase& c, ExpressionValue& value) const
{
    const ScoreValue* from = CaseValue(*var_, c);
    if (var_->Accepts(from)) return SetFrom(*from, value);
    if (var_->IsMissing(from)) return value.SetMissing();
    value.SetInvalid();
}

void FieldSource::SetFrom(const ScoreValue& from, ExpressionValue& value) const
{
    switch (from.GetValueType()) {
        case ScoreValue::STRING: {
            value.SetText(static_cast<const StringValue&>(from).Text());
            value.order = order_;
            const std::optional<bool> truth =
                type_ != nullptr && type_->boolean ? TruthOf(value.text) : std::nullopt;
            if (!truth) return;
            // Beside its truth it keeps its declared spelling.
            value.kind = ExpressionValue::Boolean;
            value.number = *truth ? 1.0 : 0.0;
            return;
        }
        case ScoreValue::DATETIME: {
            const ScoreDictVar::DateTimeType type = var_->GetDateTimeType();
            return value.SetNumber(static_cast<const DateTimeValue&>(from).GetDoubleValue(type),
                                   type);
        }
        default: return value.SetNumber(from.GetDouble());
    }
}

void FieldSource::CollectInputs(std::vector<const ScoreDictVar*>& inputs) const
{
    if (var_ != nullptr) inputs.push_back(var_);
}

bool FieldSource::CollectOutcomes(Outcomes& outcomes) const
{
    const ValueSet* set = var_ == nullptr ? nullptr : var_->GetValueSet();
    if (set == nullptr || var_->AcceptsUnlisted()) return false;
    outcomes.mayLackValue = true;
    for (const ValueSetEntry& entry : set->GetEntries()) {
        ExpressionValue value;
        SetFrom(*entry.GetEntryValue(), value);
        if (!outcomes.Add(value)) return false;
    }
    return true;
}

int FieldSource::Height() const
{
    return var_ != nullptr && var_->IsDerived() ? static_cast<const TransformVar&>(*var_).Height()
                                                : 0;
}

std::unique_ptr<Expression> MakeFieldRef(FieldSource source, Replacement mapMissingTo)
{
    return std::make_unique<FieldRef>(source, std::move(mapMissingTo));
}

std::unique_ptr<Expression> MakeConstant(ExpressionValue value)
{
    return std::make_unique<Constant>(std::move(value));
}

}  // namespace MCVelscore_850
