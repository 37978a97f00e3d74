// Built-in functions of numbers.

#include <algorithm>
#include <cmath>
#include <numeric>

#include "host/expressions/functions.h"

namespace MCVelscore_850 {

namespace {

using Numbers = std::span<double>;

double Sum(Numbers x) { return std::accumulate(x.begin(), x.end(), 0.0); }

double Product(Numbers x)
{
    return std::accumulate(x.begin(), x.end(), 1.0, [](double a, double b) { return a * b; });
}

// The middle one in order of size, or the mean of the two in the middle.
double Median(Numbers x)
{
    const auto middle = x.begin() + static_cast<std::ptrdiff_t>(x.size() / 2);
    std::nth_element(x.begin(), middle, x.end());
    if (x.size() % 2 == 1) return *middle;
    return (*std::max_element(x.begin(), middle) + *middle) / 2.0;
}

// To the nearest whole number, a half upwards: -2.5 is -2.
double Round(double x)
{
    const double below = std::floor(x);
    return x - below >= 0.5 ? below + 1.0 : below;
}

// x - y floor(x / y), by the exact remainder: it has the divisor's sign.
double Modulo(double x, double y)
{
    const double remainder = std::fmod(x, y);
    return remainder != 0.0 && std::signbit(remainder) != std::signbit(y) ? remainder + y
                                                                          : remainder;
}

using Compute = double (*)(Numbers);

constexpr Function Two(const char* name, Compute compute)
{
    return {name, 2, 2, MissingRule::Propagate, Function::Number, compute, nullptr};
}

constexpr Function One(const char* name, Compute compute)
{
    return {name, 1, 1, MissingRule::Propagate, Function::Number, compute, nullptr};
}

// Over any number of arguments, those that are missing left out.
constexpr Function Aggregate(const char* name, Compute compute)
{
    return {name, 1, Function::kAny, MissingRule::Ignore, Function::Number, compute, nullptr};
}

constexpr Function kFunctions[] = {
    Two("+", [](Numbers x) { return x[0] + x[1]; }),
    Two("-", [](Numbers x) { return x[0] - x[1]; }),
    Two("*", [](Numbers x) { return x[0] * x[1]; }),
    Two("/", [](Numbers x) { return x[0] / x[1]; }),

    Aggregate("min", [](Numbers x) { return *std::min_element(x.begin(), x.end()); }),
    Aggregate("max", [](Numbers x) { return *std::max_element(x.begin(), x.end()); }),
    Aggregate("sum", Sum),
    Aggregate("avg", [](Numbers x) { return Sum(x) / static_cast<double>(x.size()); }),
    Aggregate("median", Median),
    Aggregate("product", Product),

    One("log10", [](Numbers x) { return std::log10(x[0]); }),
    One("ln", [](Numbers x) { return std::log(x[0]); }),
    One("ln1p", [](Numbers x) { return std::log1p(x[0]); }),
    One("sqrt", [](Numbers x) { return std::sqrt(x[0]); }),
    One("abs", [](Numbers x) { return std::fabs(x[0]); }),
    One("exp", [](Numbers x) { return std::exp(x[0]); }),
    One("expm1", [](Numbers x) { return std::expm1(x[0]); }),
    Two("pow", [](Numbers x) { return std::pow(x[0], x[1]); }),
    Two("hypot", [](Numbers x) { return std::hypot(x[0], x[1]); }),
    Two("threshold", [](Numbers x) { return x[0] > x[1] ? 1.0 : 0.0; }),
    One("floor", [](Numbers x) { return std::floor(x[0]); }),
    One("ceil", [](Numbers x) { return std::ceil(x[0]); }),
    One("round", [](Numbers x) { return Round(x[0]); }),
    // a half to the even neighbour
    One("rint", [](Numbers x) { return std::nearbyint(x[0]); }),
    Two("modulo", [](Numbers x) { return Modulo(x[0], x[1]); }),

    One("sin", [](Numbers x) { return std::sin(x[0]); }),
    One("asin", [](Numbers x) { return std::asin(x[0]); }),
    One("sinh", [](Numbers x) { return std::sinh(x[0]); }),
    One("cos", [](Numbers x) { return std::cos(x[0]); }),
    One("acos", [](Numbers x) { return std::acos(x[0]); }),
    One("cosh", [](Numbers x) { return std::cosh(x[0]); }),
    One("tan", [](Numbers x) { return std::tan(x[0]); }),
    One("atan", [](Numbers x) { return std::atan(x[0]); }),
    One("tanh", [](Numbers x) { return std::tanh(x[0]); }),
};

}  // namespace

std::span<const Function> ArithmeticFunctions() { return kFunctions; }

}  // namespace MCVelscore_850
