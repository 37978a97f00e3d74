#ifndef VELSCORE_TESTS_STATS_SUPPORT_TOLERANCES_H
#define VELSCORE_TESTS_STATS_SUPPORT_TOLERANCES_H

#include <algorithm>
#include <cmath>

#include "tests/stats/support/functions.h"

// The thresholds of tests/data/stats/TOLERANCES.md, one function a row of its table. Arguments are
// in the order of the reference file. They follow from the algorithms: s is the size that makes
// rounding grow, and the quantiles add what their stopping rule leaves.
namespace reference::limits {

inline Tolerance Exact(const Args&, double) { return {0.0, 0.0}; }
inline Tolerance LastPlaces(const Args&, double) { return {1e-15, 0.0}; }
inline Tolerance ThroughLogs(const Args&, double) { return {5e-13, 0.0}; }

inline Tolerance Probit(const Args&, double) { return {3e-15, 0.0}; }
inline Tolerance NormalQuantile(const Args& a, double) { return {3e-15, 3e-15 * std::fabs(a[1])}; }
inline Tolerance Erfc(const Args& a, double) { return {a[0] < 6.0 ? 1e-14 : 5e-13, 0.0}; }
inline Tolerance Phi(const Args& a, double) { return {a[0] > -8.0 ? 3e-14 : 1e-12, 0.0}; }
inline Tolerance PhiScaled(const Args& a, double)
{
    return {(a[0] - a[1]) / a[2] > -8.0 ? 3e-14 : 1e-12, 0.0};
}
inline Tolerance StandardDensity(const Args&, double) { return {3e-13, 0.0}; }
inline Tolerance Density(const Args&, double) { return {1e-12, 0.0}; }

inline Tolerance LogGamma(const Args&, double) { return {2e-15, 2e-15}; }
inline Tolerance GammaOfSize(double s) { return {1e-12 + 3e-14 * s, 3e-15}; }
inline Tolerance Gamma(const Args& a, double) { return GammaOfSize(std::max(a[0], a[1])); }
inline Tolerance GammaScaled(const Args& a, double)
{
    return GammaOfSize(std::max(a[0] * a[2], a[1]));
}
inline Tolerance ChiSquare(const Args& a, double)
{
    return GammaOfSize(std::max(a[0], a[1]) / 2.0);
}
inline Tolerance Exponential(const Args&, double) { return {1e-15, 3e-16}; }

// x on the chi-square scale: what the upper tail's rounding in p does to it.
inline double FarQuantile(double p, double x)
{
    return p > 0.5 ? 3e-15 / ((1.0 - p) * std::max(x, 1.0)) : 0.0;
}
// x on the chi-square scale. The series settles a middling p to 1e-12; a start value that is the
// answer, a far lower tail and a bisection (idfchb) keep the wider limit.
inline Tolerance ChiQuantile(double p, double x, double wide)
{
    return {(p >= 1e-3 && x > 5e-7 ? 1e-12 : wide) + FarQuantile(p, x), 0.0};
}
inline Tolerance ChiQuantileTruth(const Args& a, double x) { return ChiQuantile(a[0], x, 3e-7); }
inline Tolerance ChiQuantileAlgorithm(const Args& a, double x)
{
    return ChiQuantile(a[0], x, 3e-8);
}
inline Tolerance GammaQuantileTruth(const Args& a, double w)
{
    return ChiQuantile(a[0], 2.0 * w * a[2], 3e-7);
}
inline Tolerance GammaQuantileAlgorithm(const Args& a, double w)
{
    return ChiQuantile(a[0], 2.0 * w * a[2], 3e-8);
}
inline Tolerance BisectionTruth(const Args& a, double x)
{
    return {3e-7 + FarQuantile(a[0], x), 0.0};
}
inline Tolerance BisectionAlgorithm(const Args& a, double x)
{
    return {3e-8 + FarQuantile(a[0], x), 0.0};
}

inline Tolerance Auxiliary(const Args& a, double)
{
    const double gap = 1.0 - a[0];
    return {1e-13, gap == 0.0 ? 0.0 : 1e-14 + 1e-15 / (gap * gap)};
}
inline Tolerance Beta(const Args& a, double)
{
    const double s = a[1] + a[2];
    return {1e-12 + 3e-14 * s, 5e-13 + 3e-15 * s};
}
inline Tolerance BetaQuantile(const Args&, double) { return {1e-12, 2e-10}; }
inline Tolerance StudentDensity(const Args& a, double) { return {1e-12 + 1e-14 * a[1], 0.0}; }
inline Tolerance Student(const Args& a, double) { return {1e-12 + 3e-14 * a[1], 1e-13}; }
// What an error in the beta quantile b does to t = sqrt((1/b - 1) df).
inline double StudentQuantileError(double t, double df)
{
    if (df == 1.0 || df == 2.0 || df >= 1e8 || t == 0.0) return 0.0;
    const double b = df / (df + t * t);
    return df * 1e-10 / (b * b * std::fabs(t));
}
inline Tolerance StudentQuantile(const Args& a, double t)
{
    return {1e-10, 1e-12 + StudentQuantileError(t, a[1])};
}
inline Tolerance Fisher(const Args& a, double) { return {1e-12 + 3e-14 * (a[1] + a[2]), 5e-13}; }
inline Tolerance FisherQuantile(const Args& a, double f)
{
    const double df1 = a[1];
    const double df2 = a[2];
    if (df1 == 1.0) {  // the square of Student's quantile: 2 t times its error
        const double t = std::sqrt(f);
        return {1e-10, 1e-12 + 2.0 * t * (1e-10 * t + 1e-12 + StudentQuantileError(t, df2))};
    }
    if (df1 == 2.0 || df2 == 2.0) return {1e-10, 1e-12};
    const double b = df2 / (df2 + df1 * f);
    return {1e-10, 1e-12 + (df2 / df1) * 2e-10 / (b * b)};
}

inline Tolerance LogBinomial(const Args& a, double)
{
    const double n = a[0];
    return {1e-12, 1e-14 + (n > 1.0 ? 2e-15 * n * std::log(n) : 0.0)};
}
inline Tolerance Binomial(const Args& a, double) { return {1e-12 + 2e-14 * a[1], 1e-15}; }
inline Tolerance HyperDensity(const Args& a, double) { return {1e-12 + 4e-14 * a[1], 0.0}; }
inline Tolerance Hyper(const Args& a, double)
{
    return a[1] > 10000.0 ? Tolerance{1e-10, 0.0} : Tolerance{1e-12, 2e-14};
}

// A tolerance argument of 1 and more asks for the first term alone: no error of the sum to allow
// for.
inline Tolerance NonCentral(const Args& a, double)
{
    return {1e-11, (a[4] < 1.0 ? 1.2 * a[4] : 0.0) + 5e-12};
}
inline Tolerance NonCentralChi(const Args& a, double) { return {1e-11, 5e-12 + 2e-14 * a[0]}; }
inline Tolerance NonCentralT(const Args& a, double) { return {1e-11, 5e-12 + 3e-15 * a[1]}; }
inline Tolerance NonCentralTDensity(const Args& a, double) { return {2e-9 + 1e-14 * a[1], 5e-12}; }
inline Tolerance SearchTolerance(const Args& a, double factor)
{
    const double limit = factor * a[a.Count() - 1] + 1e-9;
    return {limit, limit};
}
inline Tolerance SearchTruth(const Args& a, double) { return SearchTolerance(a, 2.0); }
inline Tolerance SearchFTruth(const Args& a, double) { return SearchTolerance(a, 100.0); }
inline Tolerance SearchAlgorithm(const Args& a, double) { return SearchTolerance(a, 3.0); }

inline Tolerance Percentile(const Args&, double) { return {1e-13, 1e-13}; }
inline Tolerance MedianLimits(const Args&, double) { return {1e-11, 1e-11}; }

}  // namespace reference::limits

#endif
