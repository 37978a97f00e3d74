#ifndef VELSCORE_STATS_NUMERICS_H
#define VELSCORE_STATS_NUMERICS_H

// Small arithmetic that the files of the statistics library share. Nothing here is exported.

#include <cmath>
#include <cstddef>
#include <utility>

#include "stats/mcmissingvalue.h"
#include "stats/mcpower.h"

namespace MCMath_850 {

// Codes of the functions with a status. What the binomial functions mean by theirs is told there.
inline constexpr long kOk = 0;
inline constexpr long kBadArgument = 1;
inline constexpr long kFailed = 2;

// Logarithms below this are taken for the log of 0: exp is not called.
inline constexpr double kLogFloor = -708.0;
// Logarithms above this overflow; same value as MCPower::gMachineMaxExp.
inline constexpr double kLogCeiling = 709.0;

inline constexpr double kLn2 = 0.6931471805599453;
inline constexpr double kPi = 3.141592653589793;
inline constexpr double kHalfLogPi = 0.5723649429247001;  // log(sqrt(pi)), the log gamma of 0.5

// exp(logValue), or 0.0 below the floor. A NaN stays one.
inline double ExpOrZero(double logValue) { return logValue < kLogFloor ? 0.0 : std::exp(logValue); }

inline bool IsWhole(double x) { return x == std::floor(x); }  // false for a NaN, true for infinity

template <std::size_t... I>
inline double HornerSteps(const double* c, double t, std::index_sequence<I...>)
{
    double y = c[0];
    ((y = y * t + c[I + 1]), ...);
    return y;
}

// c[0] t^Degree + ... + c[Degree], highest power first, unrolled.
template <std::size_t Degree>
inline double Horner(const double* c, double t)
{
    return HornerSteps(c, t, std::make_index_sequence<Degree>{});
}

// A capitalised wrapper's answer: the missing value for every failure of the routine below it.
inline double MissingOnCode(double value, long code)
{
    return code == kOk ? value : MCCommon_850::MCMV::Missing();
}

}  // namespace MCMath_850

#endif
