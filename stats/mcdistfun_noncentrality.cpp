#include <algorithm>
#include <cmath>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "stats/mcpower.h"
#include "stats/numerics.h"
#include "stats/poissonsum.h"

// Searches for the non-centrality v with F(v) = p, F being a non-central distribution function at a
// fixed point. F falls as v grows. A missing F at any point of a search makes its answer missing.

namespace MCMath_850 {

using MCCommon_850::MCMV;

namespace {

constexpr double kClosestUlps = 8.0;  // a bracket this narrow is the answer, whatever the tolerance

bool IsProbability(double p) { return p >= 0.0 && p <= 1.0; }

// A bracket: F(lo) > p >= F(hi), unless `found`, when lo is the answer (also the missing value).
struct Bracket {
    double lo;
    double hi;
    bool found = false;
};

Bracket Answer(double v) { return {v, v, true}; }

// Widens from `from` by `next` until F - p changes its sign. Each step's predecessor is the other
// end. Missing where the sign stands after all rounds: from a t of some 1e8 on t^2 / (df + t^2)
// rounds to 1, and F stays 1 far beyond t.
template <class F, class Next>
Bracket Widen(const F& difference, double from, bool upwards, Next next)
{
    double last = from;
    for (int round = 0; round < kMostRounds; ++round) {
        const double v = next(last);
        if (v == last) return Answer(MCMV::Missing());  // an infinite v: there is no next one
        const double d = difference(v);
        if (MCMV::IsMissing(d)) return Answer(d);
        if (d == 0.0) return Answer(v);
        if ((d > 0.0) != upwards) return upwards ? Bracket{last, v} : Bracket{v, last};
        last = v;
    }
    return Answer(MCMV::Missing());
}

// Halves the bracket. The ends differ in sign of F - p, so it narrows to one point.
template <class F, class Narrow>
double Bisect(const F& difference, Bracket bracket, double tolerance, Narrow narrow)
{
    for (;;) {
        const double mid = (bracket.lo + bracket.hi) / 2.0;
        const double d = difference(mid);
        if (MCMV::IsMissing(d)) return d;
        if (std::fabs(d) <= tolerance && narrow(bracket)) return mid;
        if (MCPower::AlmostEqual(bracket.lo, bracket.hi, kClosestUlps)) return mid;
        // An end at 0 is almost equal to none.
        if (mid == bracket.lo || mid == bracket.hi) return mid;
        (d > 0.0 ? bracket.lo : bracket.hi) = mid;
    }
}

// The search over v >= 0 that starts at `start` and doubles or halves.
template <class F, class Narrow>
double SearchPositive(const F& distribution, double p, double start, double tolerance,
                      Narrow narrow)
{
    const auto difference = [&](double v) {
        const double f = distribution(v);
        return MCMV::IsMissing(f) ? f : f - p;
    };
    const double atZero = difference(0.0);
    if (MCMV::IsMissing(atZero)) return atZero;
    if (atZero <= 0.0) return 0.0;
    const double d = difference(start);
    if (MCMV::IsMissing(d)) return d;
    if (d == 0.0) return start;
    const Bracket bracket = d > 0.0
                                ? Widen(difference, start, true, [](double v) { return v * 2.0; })
                                : Widen(difference, start, false, [](double v) { return v / 2.0; });
    return bracket.found ? bracket.lo : Bisect(difference, bracket, tolerance, narrow);
}

}  // namespace

double MCDistFun::FindNCParamChi(double x, double df, double p, double tolerance)
{
    if (!(df > 0.0) || !IsProbability(p) || !(tolerance >= 0.0)) return MCMV::Missing();
    return SearchPositive([=](double v) { return NonCentralCdfChi(x, df, v); }, p, x, tolerance,
                          [=](const Bracket& b) { return std::fabs(b.hi - b.lo) <= tolerance; });
}

double MCDistFun::FindNCParamF(double f, double df1, double df2, double p, double tolerance)
{
    if (!(df1 > 0.0) || !(df2 > 0.0) || !IsProbability(p) || !(tolerance >= 0.0))
        return MCMV::Missing();
    return SearchPositive([=](double v) { return NonCentralCdfF(f, df1, df2, v, tolerance); }, p,
                          f * df1, tolerance,
                          [=](const Bracket& b) {
                              const double size = std::max({1.0, std::fabs(b.hi), std::fabs(b.lo)});
                              return std::fabs(b.hi - b.lo) / size <= tolerance;
                          });
}

// Method  additive steps of max(1, t) away from 0, then bisection.
double MCDistFun::FindNCParamT(double t, double df, double p, double tolerance)
{
    if (!(t >= 0.0) || !(df > 0.0) || !IsProbability(p) || !(tolerance >= 0.0))
        return MCMV::Missing();
    const auto difference = [=](double v) {
        const double f = NonCentralCdfT(t, df, v);
        return MCMV::IsMissing(f) ? f : f - p;
    };
    const double atZero = difference(0.0);
    if (MCMV::IsMissing(atZero)) return atZero;
    if (atZero == 0.0) return 0.0;
    const double step = std::max(1.0, t);
    const double atStep = difference(step);
    if (MCMV::IsMissing(atStep)) return atStep;
    if (atStep == 0.0) return step;
    const Bracket bracket = atZero < 0.0
                                ? Widen(difference, 0.0, false, [=](double v) { return v - step; })
                                : Widen(difference, 0.0, true, [=](double v) { return v + step; });
    if (bracket.found) return bracket.lo;
    return Bisect(difference, bracket, tolerance,
                  [=](const Bracket& b) { return std::fabs(b.hi - b.lo) <= tolerance; });
}

}  // namespace MCMath_850
