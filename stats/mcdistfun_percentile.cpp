#include <algorithm>
#include <cmath>
#include <cstddef>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "stats/numerics.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

namespace {

using Values = std::vector<double>;

constexpr long kTooFewValues = -1;
constexpr long kBelowFirstMidpoint = 1;
constexpr long kAboveLastMidpoint = 2;

bool Holds(const Values& v, long count) { return static_cast<std::size_t>(count) <= v.size(); }

std::size_t Index(long i) { return static_cast<std::size_t>(i); }

// A class of the table: its lower and upper value with the cumulative frequencies there.
struct Class {
    double L;
    double U;
    double cLo;
    double cHi;
};

double Interpolate(const Class& c, double target)
{
    if (c.cHi == c.cLo) return MCMV::Missing();
    const double f = (target - c.cLo) / (c.cHi - c.cLo);
    return f == 0.0 ? c.L : (1.0 - f) * c.L + f * c.U;
}

// Between the midpoints of the cumulative frequencies.
double ByMidpoints(long count, const Values& x, const Values& freq, double target, long& status)
{
    double cLo = 0.0;
    double run = 0.0;
    double mid = 0.0;
    for (long i = 1; i <= count; ++i) {
        mid = freq[Index(i - 1)] / 2.0 + run;
        run += freq[Index(i - 1)];
        if (i == 1 && target < mid) {
            status = kBelowFirstMidpoint;
            return MCMV::Missing();
        }
        if (i == count && mid < target) {
            status = kAboveLastMidpoint;
            return MCMV::Missing();
        }
        if (cLo == target && target == mid) return MCMV::Missing();  // an empty stretch
        if (cLo <= target && target < mid)  // i is above 1 here: the first midpoint answered above
            return Interpolate({x[Index(i - 2)], x[Index(i - 1)], cLo, mid}, target);
        cLo = mid;
    }
    return target == mid ? x[Index(count - 1)] : MCMV::Missing();
}

// Within classes of one width around each value.
double ByWidth(long count, const Values& x, const Values& freq, double width, double target)
{
    const double half = width / 2.0;
    Class c{0.0, 0.0, 0.0, 0.0};
    for (long i = 1; i <= count; ++i) {
        c.cHi = c.cLo + freq[Index(i - 1)];
        c.L = x[Index(i - 1)] - half;
        c.U = x[Index(i - 1)] + half;
        if (c.cLo == target && target == c.cHi) {
            c.cLo = 0.0;
            return Interpolate(c, target);
        }
        if (c.cLo <= target && target < c.cHi) return Interpolate(c, target);
        c.cLo = c.cHi;
    }
    return target == c.cHi ? c.U : MCMV::Missing();
}

// The upper end of the last class: its lower end b reflected over the first value above it.
double LastBoundary(long count, const Values& x, double b)
{
    for (long k = 0; k < count; ++k)
        if (x[Index(k)] > b) return 2.0 * x[Index(k)] - b;
    return MCMV::Missing();
}

double FrequencyBelow(long count, const Values& x, const Values& freq, double U)
{
    double sum = 0.0;
    for (long k = 0; k < count && x[Index(k)] < U; ++k) sum += freq[Index(k)];
    return sum;
}

// Within the classes between the given boundaries.
double ByBoundaries(long count, const Values& x, const Values& freq, const Values& y, long classes,
                    double target)
{
    Class c{y[0], y[0], 0.0, 0.0};
    Class before = c;
    for (long i = 1; i <= classes; ++i) {
        const double b = y[Index(i - 1)];
        c.U = i < classes ? y[Index(i)] : LastBoundary(count, x, b);
        c.cHi = FrequencyBelow(count, x, freq, c.U);
        if (c.cHi == 0.0 && target == 0.0) return y[0];
        if (c.cHi == target) {
            // An empty class at the target: the class before ends there.
            if (c.cLo == target)
                return Interpolate({before.L, before.U, before.cLo, c.cLo}, target);
            if (i == classes) return c.U;
        }
        c.L = b;
        if (c.cLo <= target && target <= c.cHi) return Interpolate(c, target);
        before = c;
        c.cLo = c.cHi;
    }
    return MCMV::Missing();  // the last class met no target: its two counts are equal now
}

}  // namespace

void MCDistFun::GPTile(long count, double percent, const Values& x, const Values& freq,
                       const Values& y, long method, double& result, long& status)
{
    result = MCMV::Missing();
    status = kTooFewValues;
    if (count < 2 || !Holds(x, count) || !Holds(freq, count)) return;
    if (method > 0 && !Holds(y, method)) return;
    status = 0;
    double total = 0.0;
    for (long i = 0; i < count; ++i) total += freq[Index(i)];
    const double target = total * percent / 100.0;
    if (method <= 0)
        result = ByMidpoints(count, x, freq, target, status);
    else if (method == 1)
        result = ByWidth(count, x, freq, y[0], target);
    else
        result = ByBoundaries(count, x, freq, y, method, target);
}

void MCDistFun::Mednci(long count, const Values& x, const Values& freq, double n, double level,
                       bool wantLevel, double& lower, double& upper, double& achieved)
{
    lower = upper = achieved = MCMV::Missing();
    if (count < 1 || !Holds(x, count) || !Holds(freq, count)) return;
    const auto extremes = [&] {
        lower = x[0];
        upper = x[Index(count - 1)];
        achieved = 100.0;
    };
    if (n == 2.0) return extremes();
    if (n < 2.0) return;
    long code = kOk;
    const double r = IdfBin(0.5 - level / 200.0, n, 0.5, code);
    if (code != kOk) return;
    if (r < 0.0) return extremes();

    double a = r + 1.0;
    lower = x[Index(count - 1)];
    if (a >= n) {
        a = n;
    } else {
        double cumulative = 0.0;
        for (long i = 0; i < count - 1; ++i) {
            cumulative += freq[Index(i)];
            if (cumulative >= a) {
                lower = x[Index(i)];
                break;
            }
        }
    }
    double b = n - r;
    upper = x[0];
    if (b <= 1.0) {
        b = 1.0;
    } else {
        double rest = n;
        for (long i = count - 1; i >= 0; --i) {
            rest -= freq[Index(i)];
            if (rest < b) {
                upper = x[Index(i)];
                break;
            }
        }
    }
    if (!wantLevel) return;
    const double tail = cdfbet(0.5, a, b, code);
    if (code != kOk) return;
    achieved = (tail - 0.5) * 200.0;
    if (achieved < 0.0) achieved = 0.0;
}

}  // namespace MCMath_850
