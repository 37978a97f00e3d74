// Built-in functions that count from a date or from midnight.

#include <cmath>

#include "host/expressions/functions.h"

namespace MCVelscore_850 {

namespace {

using Args = const FunctionArguments&;
using Value = ExpressionValue;

// The moment as seconds since 1970; a time of day alone is none.
bool TakeMoment(const Value& value, double& seconds)
{
    DateTimeShape shape = DateTimeShape::Date;
    return AsDateTime(value, shape, seconds) &&
           ChangeShape(shape, DateTimeShape::DateTime, seconds);
}

// The seconds of the first moment of a year, which is a whole number from 0 to 9999.
bool TakeYear(const Value& value, double& seconds)
{
    double year = 0.0;
    if (!AsNumber(value, year) || !(year >= 0.0 && year <= 9999.0) || std::floor(year) != year) {
        return false;
    }
    seconds = DaysToYear(static_cast<int>(year)) * kSecondsPerDay;
    return true;
}

void DaysSinceYear(Args a, Value& out)
{
    double moment = 0.0;
    double origin = 0.0;
    if (!TakeMoment(a[0], moment) || !TakeYear(a[1], origin)) return out.SetInvalid();
    out.SetNumber(std::floor((moment - origin) / kSecondsPerDay));
}

void SecondsSinceYear(Args a, Value& out)
{
    double moment = 0.0;
    double origin = 0.0;
    if (!TakeMoment(a[0], moment) || !TakeYear(a[1], origin)) return out.SetInvalid();
    out.SetNumber(moment - origin);
}

// Of a date the midnight that it begins with.
void SecondsSinceMidnight(Args a, Value& out)
{
    DateTimeShape shape = DateTimeShape::Date;
    double plain = 0.0;
    if (!AsDateTime(a[0], shape, plain)) return out.SetInvalid();
    if (shape == DateTimeShape::Date) plain = 0.0;
    if (shape == DateTimeShape::DateTime) ChangeShape(shape, DateTimeShape::Time, plain);
    out.SetNumber(plain);
}

constexpr Function Of(const char* name, int arguments, void (*compute)(Args, Value&))
{
    return {name, arguments, arguments, MissingRule::Propagate, Function::Number, nullptr, compute};
}

constexpr Function kFunctions[] = {
    Of("dateDaysSinceYear", 2, DaysSinceYear),
    Of("dateSecondsSinceYear", 2, SecondsSinceYear),
    Of("dateSecondsSinceMidnight", 1, SecondsSinceMidnight),
};

}  // namespace

std::span<const Function> DateFunctions() { return kFunctions; }

}  // namespace MCVelscore_850
