#include "host/expression.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>

#include "host/numbertext.h"
#include "host/scorecaserecord.h"
#include "host/scoredictvar.h"
#include "host/stringvalue.h"
#include "host/transformvar.h"
#include "host/valueset.h"

namespace MCVelscore_850 {

Expression::~Expression() = default;
bool Expression::CollectTexts(std::vector<std::string>&) const { return false; }

unsigned long ExpressionCase::NextEvaluation()
{
    static std::atomic<unsigned long> last{0};
    return last.fetch_add(1, std::memory_order_relaxed) + 1;
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

void ReadField(const ScoreDictVar& var, const ExpressionCase& c, ExpressionValue& out)
{
    const ScoreValue* value = CaseValue(var, c);
    if (!var.Accepts(value)) {
        out.SetMissing();
    } else if (value->GetValueType() == ScoreValue::STRING) {
        out.SetText(static_cast<const StringValue*>(value)->Text());
    } else {
        out.SetNumber(value->GetDouble());
    }
}

// A value as a number: a text that spells one counts.
bool AsNumber(const ExpressionValue& value, double& number)
{
    switch (value.kind) {
        case ExpressionValue::Number: number = value.number; return true;
        case ExpressionValue::Text: return ReadNumber(value.text, number) == NumberText::Number;
        case ExpressionValue::Missing: break;
    }
    return false;
}

// The levels of expressions that stand below a reference to a variable.
int HeightOf(const ScoreDictVar& var)
{
    return var.IsDerived() ? static_cast<const TransformVar&>(var).Height() : 0;
}

// An outcome as text, in the spelling that a derived text gets; nothing for Missing.
void AppendText(const ExpressionValue& value, std::vector<std::string>& texts)
{
    if (value.kind == ExpressionValue::Text) texts.push_back(value.text);
    if (value.kind == ExpressionValue::Number) AppendNumber(value.number, texts.emplace_back());
}

class FieldRef final : public Expression {
public:
    FieldRef(const ScoreDictVar* var, Replacement mapMissingTo)
        : var_(var), mapMissingTo_(std::move(mapMissingTo))
    {}
    void Evaluate(const ExpressionCase& c, ExpressionValue& value) const override
    {
        ReadField(*var_, c, value);
        mapMissingTo_.Apply(value);
    }
    void CollectInputs(std::vector<const ScoreDictVar*>& inputs) const override
    {
        inputs.push_back(var_);
    }
    bool CollectTexts(std::vector<std::string>& texts) const override
    {
        const ValueSet* set = var_->GetValueSet();
        if (set == nullptr) return false;
        for (const ValueSetEntry& entry : set->GetEntries()) {
            texts.push_back(entry.GetEntryValue()->GetString());
        }
        if (mapMissingTo_.given) AppendText(mapMissingTo_.value, texts);
        return true;
    }
    int Height() const override { return 1 + HeightOf(*var_); }

private:
    const ScoreDictVar* var_;
    Replacement mapMissingTo_;
};

class Constant final : public Expression {
public:
    explicit Constant(ExpressionValue value) : value_(std::move(value)) {}
    void Evaluate(const ExpressionCase&, ExpressionValue& value) const override { value = value_; }
    void CollectInputs(std::vector<const ScoreDictVar*>&) const override {}
    bool CollectTexts(std::vector<std::string>& texts) const override
    {
        AppendText(value_, texts);
        return true;
    }
    int Height() const override { return 1; }

private:
    ExpressionValue value_;
};

class NormContinuous final : public Expression {
public:
    NormContinuous(const ScoreDictVar* var, std::vector<NormPoint> points, int outliers,
                   Replacement mapMissingTo)
        : var_(var),
          points_(std::move(points)),
          outliers_(outliers),
          mapMissingTo_(std::move(mapMissingTo))
    {}
    void Evaluate(const ExpressionCase& c, ExpressionValue& value) const override
    {
        ReadField(*var_, c, value);
        double x = 0.0;
        if (!AsNumber(value, x)) {
            value.SetMissing();
            mapMissingTo_.Apply(value);
            return;
        }
        const NormPoint& first = points_.front();
        const NormPoint& last = points_.back();
        if (x < first.orig || x > last.orig) {
            if (outliers_ == ScoreDictVar::AS_MISSING) return value.SetMissing();
            if (outliers_ == ScoreDictVar::AS_EXTREME) {
                return value.SetNumber(x < first.orig ? first.norm : last.norm);
            }
        }
        // The segment that holds x; beyond the ends the outer one goes on.
        const auto above =
            std::upper_bound(points_.begin() + 1, points_.end() - 1, x,
                             [](double v, const NormPoint& p) { return v < p.orig; });
        const NormPoint& right = *above;
        const NormPoint& left = *(above - 1);
        value.SetNumber(left.norm +
                        (x - left.orig) / (right.orig - left.orig) * (right.norm - left.norm));
    }
    void CollectInputs(std::vector<const ScoreDictVar*>& inputs) const override
    {
        inputs.push_back(var_);
    }
    int Height() const override { return 1 + HeightOf(*var_); }

private:
    const ScoreDictVar* var_;
    std::vector<NormPoint> points_;
    int outliers_;
    Replacement mapMissingTo_;
};

constexpr ArithmeticFunction kArithmetic[] = {
    {"+", 2, [](const double* a) { return a[0] + a[1]; }},
    {"-", 2, [](const double* a) { return a[0] - a[1]; }},
    {"*", 2, [](const double* a) { return a[0] * a[1]; }},
    {"/", 2, [](const double* a) { return a[0] / a[1]; }},
};

constexpr size_t kMostArguments = 2;

class Apply final : public Expression {
public:
    Apply(const ArithmeticFunction& function, std::vector<std::unique_ptr<Expression>> arguments,
          Replacement mapMissingTo, Replacement defaultValue)
        : function_(function),
          arguments_(std::move(arguments)),
          mapMissingTo_(std::move(mapMissingTo)),
          defaultValue_(std::move(defaultValue))
    {
        for (const auto& argument : arguments_) height_ = std::max(height_, 1 + argument->Height());
    }
    void Evaluate(const ExpressionCase& c, ExpressionValue& value) const override
    {
        std::array<double, kMostArguments> numbers{};
        for (size_t i = 0; i < arguments_.size(); ++i) {
            arguments_[i]->Evaluate(c, value);
            if (value.kind == ExpressionValue::Missing) {
                mapMissingTo_.Apply(value);
                return defaultValue_.Apply(value);
            }
            if (!AsNumber(value, numbers[i])) {
                value.SetMissing();
                return defaultValue_.Apply(value);
            }
        }
        const double outcome = function_.compute(numbers.data());
        if (std::isfinite(outcome)) return value.SetNumber(outcome);
        value.SetMissing();
        defaultValue_.Apply(value);
    }
    void CollectInputs(std::vector<const ScoreDictVar*>& inputs) const override
    {
        for (const auto& argument : arguments_) argument->CollectInputs(inputs);
    }
    int Height() const override { return height_; }

private:
    const ArithmeticFunction& function_;
    std::vector<std::unique_ptr<Expression>> arguments_;
    Replacement mapMissingTo_;
    Replacement defaultValue_;
    int height_ = 1;
};

}  // namespace

std::unique_ptr<Expression> MakeFieldRef(const ScoreDictVar* var, Replacement mapMissingTo)
{
    return std::make_unique<FieldRef>(var, std::move(mapMissingTo));
}

std::unique_ptr<Expression> MakeConstant(ExpressionValue value)
{
    return std::make_unique<Constant>(std::move(value));
}

std::unique_ptr<Expression> MakeNormContinuous(const ScoreDictVar* var,
                                               std::vector<NormPoint> points, int outliers,
                                               Replacement mapMissingTo)
{
    return std::make_unique<NormContinuous>(var, std::move(points), outliers,
                                            std::move(mapMissingTo));
}

const ArithmeticFunction* FindArithmeticFunction(const std::string& name)
{
    for (const ArithmeticFunction& function : kArithmetic) {
        if (name == function.name) return &function;
    }
    return nullptr;
}

std::unique_ptr<Expression> MakeApply(const ArithmeticFunction& function,
                                      std::vector<std::unique_ptr<Expression>> arguments,
                                      Replacement mapMissingTo, Replacement defaultValue)
{
    return std::make_unique<Apply>(function, std::move(arguments), std::move(mapMissingTo),
                                   std::move(defaultValue));
}

}  // namespace MCVelscore_850
