// Built-in functions of truth: comparisons, and and or, tests for missing and invalid values, if.

#include "host/expressions/functions.h"

namespace MCVelscore_850 {

namespace {

using Args = const FunctionArguments&;
using Value = ExpressionValue;

template <bool (*Holds)(const Value&)>
void Test(Args a, Value& out)
{
    out.SetBoolean(Holds(a[0]));
}

bool IsMissing(const Value& v) { return v.kind == Value::Missing; }
bool IsNotMissing(const Value& v) { return v.kind != Value::Missing; }
bool IsValid(const Value& v) { return v.HasValue(); }
bool IsNotValid(const Value& v) { return !v.HasValue(); }

// Values that can't be compared are not equal.
template <bool Wanted>
void Equality(Args a, Value& out)
{
    out.SetBoolean((Compare(a[0], a[1]) == Ordering::Equal) == Wanted);
}

bool Less(Ordering o) { return o == Ordering::Less; }
bool LessOrEqual(Ordering o) { return o != Ordering::Greater; }
bool Greater(Ordering o) { return o == Ordering::Greater; }
bool GreaterOrEqual(Ordering o) { return o != Ordering::Less; }

template <bool (*Holds)(Ordering)>
void Order(Args a, Value& out)
{
    const Ordering order = Compare(a[0], a[1]);
    if (order == Ordering::None) return out.SetInvalid();
    out.SetBoolean(Holds(order));
}

// and is Decided by a false argument, or by a true one, whatever the others are; without one that
// decides, a missing argument makes the outcome missing.
template <bool Decided>
void Junction(Args a, Value& out)
{
    bool missing = false;
    bool invalid = false;
    for (const Value& argument : a.values) {
        bool truth = false;
        if (argument.kind == Value::Missing) {
            missing = true;
        } else if (!AsTruth(argument, truth)) {
            invalid = true;
        } else if (truth == Decided) {
            return out.SetBoolean(Decided);
        }
    }
    if (invalid) return out.SetInvalid();
    if (missing) return out.SetMissing();
    out.SetBoolean(!Decided);
}

void Not(Args a, Value& out)
{
    bool truth = false;
    if (!AsTruth(a[0], truth)) return out.SetInvalid();
    out.SetBoolean(!truth);
}

template <bool Wanted>
void Among(Args a, Value& out)
{
    bool found = false;
    for (const Value& member : a.values.subspan(1)) {
        found = found || Compare(a[0], member) == Ordering::Equal;
    }
    out.SetBoolean(found == Wanted);
}

// The branch that isn't taken may be missing or not valid. Without a third argument there is no
// value where the first is false.
void If(Args a, Value& out)
{
    bool truth = false;
    if (a[0].kind == Value::Missing) return out.SetMissing();
    if (!AsTruth(a[0], truth)) return out.SetInvalid();
    const size_t branch = truth ? 1 : 2;
    if (branch < a.Count()) {
        out = a[branch];
    } else {
        out.SetMissing();
    }
}

using Compute = void (*)(Args, Value&);

constexpr Function Of(const char* name, int least, int most, MissingRule missing, Compute compute,
                      Function::Result result = Function::Boolean)
{
    return {name, least, most, missing, result, nullptr, compute};
}

constexpr int kAny = Function::kAny;

constexpr Function kFunctions[] = {
    Of("isMissing", 1, 1, MissingRule::Own, Test<IsMissing>),
    Of("isNotMissing", 1, 1, MissingRule::Own, Test<IsNotMissing>),
    Of("isValid", 1, 1, MissingRule::Own, Test<IsValid>),
    Of("isNotValid", 1, 1, MissingRule::Own, Test<IsNotValid>),

    Of("equal", 2, 2, MissingRule::Propagate, Equality<true>),
    Of("notEqual", 2, 2, MissingRule::Propagate, Equality<false>),
    Of("lessThan", 2, 2, MissingRule::Propagate, Order<Less>),
    Of("lessOrEqual", 2, 2, MissingRule::Propagate, Order<LessOrEqual>),
    Of("greaterThan", 2, 2, MissingRule::Propagate, Order<Greater>),
    Of("greaterOrEqual", 2, 2, MissingRule::Propagate, Order<GreaterOrEqual>),

    Of("and", 2, kAny, MissingRule::Own, Junction<false>),
    Of("or", 2, kAny, MissingRule::Own, Junction<true>),
    Of("not", 1, 1, MissingRule::Propagate, Not),

    Of("isIn", 2, kAny, MissingRule::Propagate, Among<true>),
    Of("isNotIn", 2, kAny, MissingRule::Propagate, Among<false>),

    Of("if", 2, 3, MissingRule::Own, If, Function::ArgumentsOwn),
};

}  // namespace

std::span<const Function> LogicFunctions() { return kFunctions; }

}  // namespace MCVelscore_850
