#include <cmath>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "stats/numerics.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

namespace {

constexpr double kFailure = -1.0;  // on purpose: not the missing value, which all others give
constexpr int kNewtonRounds = 50;  // on purpose the last counts as the answer, settled or not
// Cuts of one step. The largest finite step, exp(709), comes below 1e-12 in 671 of them, and a
// smaller one isn't asked for: only a NaN step, which no cut brings inside, is still too large
// after 700.
constexpr int kDampings = 700;
constexpr double kSettled = 1e-20;  // square of a step that ends the iteration
constexpr double kMargin = 1e-12;   // distance kept from 0 and 1, and the step that ends

// The quantile as solved: lower tail alpha of A, B, with the original a, b behind it.
struct BetaProblem {
    double alpha;  // at most 0.5
    double A;
    double B;
    double z;      // normal deviate of the upper tail alpha
    double lbeta;  // log of B(A, B)
    double a;
    double b;

    // The mean, the answer where a start or a step overflows.
    double Mean() const { return a / (a + b); }
};

double Square(double v) { return v * v; }

// The value of x, or the end of the whole search with a result.
struct Found {
    double x;
    bool ends = false;
};

// Start when A or B is at most 1 (AS 64, Majumder and Bhattacharjee 1973).
Found StartNearAnEnd(const BetaProblem& w)
{
    const double r = 2.0 * w.B;
    const double t = 1.0 / (9.0 * w.B);
    const double root = (1.0 - t) + std::sqrt(t) * w.z;
    const double chi = r * (root * root * root);
    if (chi <= 0.0) {
        const double L = (std::log((1.0 - w.alpha) * w.B) + w.lbeta) / w.B;
        if (L > kLogCeiling) return {w.Mean(), true};
        return {1.0 - ExpOrZero(L)};
    }
    const double ratio = (4.0 * w.A + r - 2.0) / chi;
    if (ratio > 1.0) return {1.0 - 2.0 / (ratio + 1.0)};
    // On purpose divided by alpha, where AS 64 divides by A: the iteration makes up for it.
    const double L = (std::log(w.alpha * w.A) + w.lbeta) / w.alpha;
    if (L > kLogCeiling) return {w.Mean(), true};
    return {ExpOrZero(L)};
}

// Start when both exceed 1 (Carter's approximation, as in AS 109).
double StartInside(const BetaProblem& w)
{
    const double r = (w.z * w.z - 3.0) / 6.0;
    const double s = 1.0 / (2.0 * w.A - 1.0);
    const double t = 1.0 / (2.0 * w.B - 1.0);
    const double h = 2.0 / (s + t);
    const double e =
        w.z * std::sqrt(h + r) / h - (t - s) * (r + 0.8333333333333334 + 2.0 / (-3.0 * h));
    return w.A / (w.A + w.B * std::exp(2.0 * e));
}

// Newton's iteration, each step cut to a third until it shrinks and stays inside (0, 1).
// Answers x, the mean, or the failure.
Found Solve(const BetaProblem& w, double x)
{
    double prevY = 0.0;
    double sq = 1.0;
    double prev = 1.0;
    for (int round = 0; round < kNewtonRounds; ++round) {
        long code = kOk;
        const double F = MCDistFun::cdfbet(x, w.A, w.B, code);
        if (code > kOk) return {kFailure, true};
        const double L = std::log(1.0 - x) * (1.0 - w.B) + std::log(x) * (1.0 - w.A) + w.lbeta;
        if (L > kLogCeiling) return {w.Mean(), true};
        const double y = (F - w.alpha) * ExpOrZero(L);
        if (y * prevY <= 0.0) prev = sq;

        double g = 1.0;
        double nx = 0.0;
        int dampings = 0;
        for (;; g /= 3.0) {
            if (++dampings > kDampings) return {kFailure, true};
            const double adj = g * y;
            sq = adj * adj;
            if (prev <= sq) continue;
            nx = x - adj;
            if (std::fabs(nx) < kMargin)
                nx = kMargin;
            else if (std::fabs(nx - 1.0) < kMargin)
                nx = 0.999999999999;
            if (nx > 0.0 && nx < 1.0) break;
        }
        if (prev <= kSettled || y * y <= kSettled || std::fabs(nx - x) < kMargin) break;
        prevY = y;
        x = nx;
    }
    return {x};
}

}  // namespace

// Method  Cran, Martin and Thomas (1977), Algorithm AS 109, Applied Statistics 26, 111-114, with
//         the start values of Algorithm AS 64 (1973), Applied Statistics 22, 409-411.
// Departs from the papers by the closed forms, the limits, the count of rounds and one start value
//         (see above).
double MCDistFun::betinv(const double& p, const double& a, const double& b)
{
    if (p == 0.0 || p == 1.0) return p;  // exact, and before the parameters are looked at
    if (!(a > 0.0 && b > 0.0 && p >= 0.0 && p <= 1.0)) return kFailure;
    if (a == b && p == 0.5) return 0.5;
    if (a == b && a == 0.5) return Square(std::sin(p * 0.5 * kPi));
    if (a == 1.0) return 1.0 - ExpOrZero(std::log(1.0 - p) / b);  // p < 1, so the log is finite
    if (b == 1.0) return ExpOrZero(std::log(p) / a);
    if (b <= a * 1e-20) return 1.0;

    const double z = probit(p);
    if (MCMV::IsMissing(z)) return kFailure;
    const bool upper = p > 0.5;
    const double A = upper ? b : a;
    const double B = upper ? a : b;
    const BetaProblem w{
        upper ? 1.0 - p : p, A, B, upper ? z : -z, dnlgam(A) + dnlgam(B) - dnlgam(A + B), a, b};

    Found start = A <= 1.0 || B <= 1.0 ? StartNearAnEnd(w) : Found{StartInside(w)};
    if (start.ends) return start.x;
    if (start.x < 1e-08) start.x = 1e-08;
    if (start.x > 0.9999999) start.x = 0.9999999;
    const Found found = Solve(w, start.x);
    if (found.ends) return found.x;
    return upper ? 1.0 - found.x : found.x;
}

double MCDistFun::IdfBeta(const double& p, const double& a, const double& b)
{
    return betinv(p, a, b);
}

}  // namespace MCMath_850
