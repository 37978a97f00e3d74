#ifndef VELSCORE_TESTS_STATS_SUPPORT_EXPECT_H
#define VELSCORE_TESTS_STATS_SUPPORT_EXPECT_H

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <tuple>

#include "stats/mcmissingvalue.h"

/// Words that the tests of the statistics library share.
namespace expect {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();
inline constexpr double kMax = std::numeric_limits<double>::max();
// Half of it is 0, so a routine that halves its df hands a 0 on.
inline constexpr double kTiniest = std::numeric_limits<double>::denorm_min();

inline double Missing() { return MCCommon_850::MCMV::Missing(); }

/// Whether x is within `rel` of `wanted`, relatively.
inline testing::AssertionResult Near(double x, double wanted, double rel)
{
    if (std::fabs(x - wanted) <= rel * std::fabs(wanted)) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << x << " for " << wanted << ", relatively off by " << std::fabs(x / wanted - 1.0);
}

/// Calls a function whose code stands behind its arguments, and expects that code.
template <class... P, class... A>
double Coded(double (*function)(P...), long wantedCode, const A&... arguments)
{
    long code = 99;
    const double result = function(arguments..., code);
    EXPECT_EQ(code, wantedCode) << testing::PrintToString(std::make_tuple(arguments...));
    return result;
}

}  // namespace expect

#endif
