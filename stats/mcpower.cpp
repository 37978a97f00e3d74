#include "stats/mcpower.h"

#include <cmath>
#include <limits>

#include "stats/mcmissingvalue.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

constinit std::int32_t MCPower::gMachineMaxInt = std::numeric_limits<std::int32_t>::max();
constinit double MCPower::gMachineEpsilon = std::numeric_limits<double>::epsilon();
constinit const double MCPower::gMachineMaxExp = 709.0;
constinit const double MCPower::gMachineMinExp = -708.39;

namespace {

// How far a reciprocal may lie from an odd integer and still be taken for a root.
constexpr double kRootUlps = 32.0;

// Answers of Power; Exponent's own 0, 1 and 2 pass through.
constexpr int kOddOverflow = 3;
constexpr int kNoRealPower = 4;
constexpr int kNegativeToZero = 5;
constexpr int kZeroToNegative = 6;
constexpr int kZeroToZero = 7;

bool IsWhole(double x) { return x == std::floor(x); }

// A negative base under an odd power or root: the power of -base, negated.
int OddPower(double base, double exponent, double& result)
{
    const int code = MCPower::Exponent(std::log(-base) * exponent, result);
    if (!MCMV::IsMissing(result)) {
        result = -result;  // an underflow becomes -0.0, still with code 1
        return code;
    }
    return exponent > 0.0 ? kOddOverflow : code;
}

int PowerOfNegative(double base, double exponent, double& result)
{
    if (exponent == 0.0) {
        result = 1.0;
        return kNegativeToZero;
    }
    if (IsWhole(exponent) && exponent <= MCPower::gMachineMaxInt) {
        const double half = exponent * 0.5;
        if (IsWhole(half)) return MCPower::Exponent(std::log(-base) * exponent, result);
        if (IsWhole(half + 0.5)) return OddPower(base, exponent, result);
    }
    if (MCPower::IsOneOverOddInteger(exponent, kRootUlps)) return OddPower(base, exponent, result);
    return kNoRealPower;
}

}  // namespace

int MCPower::Exponent(double x, double& result)
{
    if (x < gMachineMinExp) {
        result = 0.0;
        return 1;
    }
    if (x > gMachineMaxExp) {
        result = MCMV::Missing();
        return 2;
    }
    result = std::exp(x);
    return 0;
}

int MCPower::Power(double base, double exponent, double& result)
{
    result = MCMV::Missing();
    if (base == 0.0) {
        if (exponent == 0.0) {
            result = 1.0;
            return kZeroToZero;
        }
        if (!(exponent > 0.0)) return kZeroToNegative;  // written so that a NaN comes here
        result = 0.0;
        return 0;
    }
    if (!(base > 0.0)) return PowerOfNegative(base, exponent, result);  // a NaN goes along
    if (exponent == 0.0) {
        result = 1.0;
        return 0;
    }
    return Exponent(std::log(base) * exponent, result);
}

double MCPower::Multiply(double a, double b)
{
    if (a == 0.0 || b == 0.0) return 0.0;
    double result = MCMV::Missing();
    Exponent(std::log(std::fabs(a)) + std::log(std::fabs(b)), result);
    const bool signsDiffer = (a < 0.0) != (b < 0.0);
    return signsDiffer && !MCMV::IsMissing(result) ? -result : result;
}

bool MCPower::AlmostEqual(double a, double b, double ulps)
{
    if (a == 0.0) return b == 0.0;
    if (b == 0.0 || (a < 0.0) != (b < 0.0)) return false;
    double difference = std::fabs(a) - std::fabs(b);
    double magnitude = std::fabs(a);
    if (difference < 0.0) {
        difference = -difference;
        magnitude = std::fabs(b);
    }
    return difference / magnitude <= ulps * gMachineEpsilon;
}

bool MCPower::IsOneOverOddInteger(double x, double ulps)
{
    if (x == 0.0 || 1.0 / x > gMachineMaxInt) return false;
    const double v = (1.0 / x) * 0.5 + 0.5;
    return AlmostEqual(v, std::floor(v + 0.5), ulps);
}

bool MCPower::IsOneOverEvenInteger(double x, double ulps)
{
    if (x == 0.0 || 1.0 / x > gMachineMaxInt) return false;
    const double v = (1.0 / x) * 0.5;
    return AlmostEqual(v, std::floor(v + 0.5), ulps);
}

}  // namespace MCMath_850
