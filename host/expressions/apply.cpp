// Apply: calls of built-in and of defined functions.

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "host/expressions/expression.h"
#include "host/expressions/functions.h"

namespace MCVelscore_850 {

namespace {

// So many combinations of arguments at most are tried to tell what a function can yield.
constexpr size_t kMostCombinations = 1000;

// What both kinds of calls share: arguments and their values, rules.
class Call : public Expression {
public:
    void CollectInputs(std::vector<const ScoreDictVar*>& inputs) const override
    {
        for (const auto& argument : arguments_) argument->CollectInputs(inputs);
    }
    int Height() const override { return height_; }
    double Steps() const override { return steps_; }

protected:
    Call(Arguments arguments, ApplyRules rules)
        : arguments_(std::move(arguments)), rules_(std::move(rules))
    {
        for (const auto& argument : arguments_) {
            height_ = std::max(height_, 1 + argument->Height());
            steps_ += argument->Steps();
        }
    }
    /// The arguments of a call under way, and what its function keeps.
    struct Frame final : ExpressionScratch::Part {
        std::vector<ExpressionValue> values;
        std::vector<double> numbers;
        std::unique_ptr<FunctionState> state;
    };
    Frame& FrameIn(ExpressionScratch& scratch) const
    {
        auto& frame = scratch.Of<Frame>(this);
        frame.values.resize(arguments_.size());
        return frame;
    }
    void EvaluateArguments(const ExpressionCase& c, Frame& frame) const
    {
        for (size_t i = 0; i < arguments_.size(); ++i) {
            arguments_[i]->Evaluate(c, frame.values[i]);
        }
    }
    static bool Any(const Frame& frame, ExpressionValue::Kind kind)
    {
        return std::any_of(frame.values.begin(), frame.values.end(),
                           [&](const ExpressionValue& value) { return value.kind == kind; });
    }
    // What mapMissingTo says, where it applies.
    bool MapMissing(const Frame& frame, ExpressionValue& value) const
    {
        if (!rules_.mapMissingTo.given || !Any(frame, ExpressionValue::Missing)) return false;
        value = rules_.mapMissingTo.value;
        return true;
    }
    bool AddReplacements(Outcomes& outcomes) const
    {
        for (const Replacement* replacement : {&rules_.mapMissingTo, &rules_.defaultValue}) {
            if (replacement->given && !outcomes.Add(replacement->value)) return false;
        }
        return true;
    }

    Arguments arguments_;
    ApplyRules rules_;
    int height_ = 1;
    double steps_ = 1.0;
};

class BuiltInCall final : public Call {
public:
    BuiltInCall(const Function& function, Arguments arguments, ApplyRules rules)
        : Call(std::move(arguments), std::move(rules)), function_(function)
    {}
    void Evaluate(const ExpressionCase& c, ExpressionValue& value) const override
    {
        Frame& frame = FrameIn(c.scratch);
        EvaluateArguments(c, frame);
        Compute(frame, value);
    }
    bool CollectOutcomes(Outcomes& outcomes) const override
    {
        switch (function_.result) {
            case Function::Boolean:
                outcomes.mayLackValue = true;
                return AddTruths(outcomes) && AddReplacements(outcomes);
            case Function::ArgumentsOwn:
                outcomes.mayLackValue = true;
                for (size_t i = 1; i < arguments_.size(); ++i) {
                    if (!arguments_[i]->CollectOutcomes(outcomes)) return false;
                }
                return AddReplacements(outcomes);
            case Function::Number:
            case Function::Text: break;
        }
        return TryCombinations(outcomes) && AddReplacements(outcomes);
    }

private:
    // The outcome for the arguments in the frame.
    void Compute(Frame& frame, ExpressionValue& value) const
    {
        if (MapMissing(frame, value)) return;
        if (function_.missing == MissingRule::Propagate && Any(frame, ExpressionValue::Missing)) {
            value.SetMissing();
        } else if (function_.missing != MissingRule::Own && Any(frame, ExpressionValue::Invalid)) {
            value.SetInvalid();
        } else if (function_.number != nullptr) {
            ComputeNumber(frame, value);
        } else {
            if (function_.makeState != nullptr && frame.state == nullptr) {
                frame.state = function_.makeState();
            }
            function_.value({frame.values, frame.state.get()}, value);
        }
        rules_.Finish(value);
    }

    void ComputeNumber(Frame& frame, ExpressionValue& value) const
    {
        frame.numbers.resize(frame.values.size());
        size_t count = 0;
        for (const ExpressionValue& argument : frame.values) {
            if (argument.kind == ExpressionValue::Missing) continue;
            double& number = frame.numbers[count++];
            if (!AsNumber(argument, number)) return value.SetInvalid();
            if (std::isnan(number)) return value.SetNumber(number);
        }
        if (count == 0) return value.SetMissing();
        value.SetNumber(function_.number({frame.numbers.data(), count}));
    }

    static bool AddTruths(Outcomes& outcomes)
    {
        ExpressionValue truth;
        for (const bool word : {false, true}) {
            truth.SetBoolean(word);
            if (!outcomes.Add(truth)) return false;
        }
        return true;
    }

    // What tells an outcome from others: its text. A number without one, an infinite one, is no
    // outcome of a field, but what another function may take.
    static std::string KeyOf(const ExpressionValue& outcome)
    {
        ExpressionValue text = outcome;
        MakeText(text);
        return text.HasValue() ? text.text : '\0' + std::to_string(outcome.number);
    }

    // Where every argument's outcomes can be told and their combinations are few, those of the
    // function are what it makes of each.
    bool TryCombinations(Outcomes& outcomes) const
    {
        std::vector<Outcomes> each;
        size_t combinations = 1;
        for (const auto& argument : arguments_) {
            each.push_back({{}, outcomes.left});
            if (!argument->CollectOutcomes(each.back())) return false;
            if (each.back().mayLackValue) {
                outcomes.mayLackValue = true;
                // A missing one is left out, and the others make an outcome of their own.
                if (function_.missing == MissingRule::Ignore) each.back().values.emplace_back();
            }
            combinations *= each.back().values.size();
            if (combinations > std::min(kMostCombinations, outcomes.left)) return false;
        }
        outcomes.left -= combinations;
        Frame frame;
        frame.values.resize(arguments_.size());
        std::unordered_set<std::string> seen;
        ExpressionValue outcome;
        for (size_t combination = 0; combination < combinations; ++combination) {
            size_t rest = combination;
            // the last argument changes fastest
            for (size_t i = arguments_.size(); i-- > 0;) {
                frame.values[i] = each[i].values[rest % each[i].values.size()];
                rest /= each[i].values.size();
            }
            Compute(frame, outcome);
            if (!outcome.HasValue()) {
                outcomes.mayLackValue = true;
            } else if (seen.insert(KeyOf(outcome)).second && !outcomes.Add(outcome)) {
                return false;
            }
        }
        return true;
    }

    const Function& function_;
};

class DefinedCall final : public Call {
public:
    DefinedCall(std::shared_ptr<const DefinedFunction> function, Arguments arguments,
                ApplyRules rules)
        : Call(std::move(arguments), std::move(rules)), function_(std::move(function))
    {
        height_ = std::max(height_, 1 + function_->body->Height());
        steps_ += function_->body->Steps();
    }
    void Evaluate(const ExpressionCase& c, ExpressionValue& value) const override
    {
        Frame& frame = FrameIn(c.scratch);
        EvaluateArguments(c, frame);
        if (MapMissing(frame, value)) return;
        for (size_t i = 0; i < frame.values.size(); ++i) {
            if (const DataType* type = function_->parameterTypes[i]) CastTo(*type, frame.values[i]);
        }
        // The body sees its arguments and nothing else; it can't come back here, since a function
        // that calls itself was refused.
        ExpressionCase body = c;
        body.parameters = frame.values.data();
        function_->body->Evaluate(body, value);
        if (function_->type != nullptr) CastTo(*function_->type, value);
        rules_.Finish(value);
    }
    bool CollectOutcomes(Outcomes& outcomes) const override
    {
        const size_t first = outcomes.values.size();
        if (!function_->body->CollectOutcomes(outcomes)) return false;
        for (size_t i = first; function_->type != nullptr && i < outcomes.values.size(); ++i) {
            CastTo(*function_->type, outcomes.values[i]);
            outcomes.mayLackValue = outcomes.mayLackValue || !outcomes.values[i].HasValue();
        }
        return AddReplacements(outcomes);
    }

private:
    std::shared_ptr<const DefinedFunction> function_;
};

}  // namespace

void ApplyRules::Finish(ExpressionValue& value) const
{
    const bool notFinite = value.kind == ExpressionValue::Number && !std::isfinite(value.number);
    if (notFinite || value.kind == ExpressionValue::Invalid) {
        switch (invalid) {
            case InvalidTreatment::ReturnInvalid: value.SetInvalid(); break;
            case InvalidTreatment::AsMissing: value.SetMissing(); break;
            case InvalidTreatment::AsIs: break;
        }
    }
    defaultValue.Apply(value);
}

std::unique_ptr<Expression> MakeApply(const Function& function, Arguments arguments,
                                      ApplyRules rules)
{
    return std::make_unique<BuiltInCall>(function, std::move(arguments), std::move(rules));
}

std::unique_ptr<Expression> MakeCall(std::shared_ptr<const DefinedFunction> function,
                                     Arguments arguments, ApplyRules rules)
{
    return std::make_unique<DefinedCall>(std::move(function), std::move(arguments),
                                         std::move(rules));
}

}  // namespace MCVelscore_850
