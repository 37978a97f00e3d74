#include <algorithm>
#include <cmath>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "stats/mcpower.h"
#include "stats/numerics.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

namespace {

constexpr double kLargestPopulation = 9.223372036854776e+18;
constexpr double kExactPopulation = 1000.0;    // up to here the point probability is multiplied out
constexpr double kNormalPopulation = 10000.0;  // above it the normal shortcut may serve
constexpr double kScale = 1e+35;               // of the terms, so that small ones survive
constexpr double kLogScale = 80.5904782547916;

struct Hypergeometric {
    double N;  // population
    double K;  // successes in it
    double n;  // draws
    double i;  // successes drawn
};

double LogPoint(double x, double population, double successes, double draws)
{
    long code = kOk;
    return MCDistFun::dnlbnc(draws, x, code) +
           MCDistFun::dnlbnc(population - draws, successes - x, code) -
           MCDistFun::dnlbnc(population, successes, code);
}

// The parameters as AS 152 arranges them, each one above its count: `a` is kept, `b` reflected if
// that makes it smaller.
struct Arranged {
    double a;
    double b;
    double j;
    double M;     // N + 1
    bool direct;  // false: the sum is the other tail
};

Arranged Arrange(const Hypergeometric& w)
{
    Arranged r{w.K + 1.0, w.n + 1.0, w.i + 1.0, w.N + 1.0, true};
    if (std::min(w.K, w.N - w.K) <= std::min(w.n, w.N - w.n)) std::swap(r.a, r.b);
    const double h = r.M - r.b;
    if (h < r.b - 1.0) {
        r.j = r.a - r.j + 1.0;
        r.b = h + 1.0;
        r.direct = false;
    }
    return r;
}

// P(X = i) as a product of the counts.
double PointByProduct(const Arranged& r, double N)
{
    double P = 1.0;
    double w = N;
    for (double t = 1.0; t <= r.j - 1.0; t += 1.0, w -= 1.0)
        P = P * (r.a - t) * (r.b - t) / (w * (r.j - t));
    double u = r.M - r.a;
    double v = r.M - r.j;
    for (double t = r.j; t <= r.b - 1.0; t += 1.0, u -= 1.0, v -= 1.0) P = P * (u / v);
    return P;
}

// P(X <= i) (direct) or its complement from the scaled point T = 1e35 P, by the shorter side.
double SumShorterSide(const Arranged& r, double N, double P, double T)
{
    const double c = r.b - r.j;
    const double g = (N + 2.0 - r.a) - c;
    const double s = r.j - 1.0;
    bool direct = r.direct;
    double sum = 0.0;
    if (s < (r.a - 1.0) * (r.b - 1.0) / N) {
        for (double t = 1.0; t <= s; t += 1.0) {
            T = (g - t) * (r.j - t) * T / ((t + c) * (t + (r.a - r.j)));
            if (T <= 0.0) break;
            sum += T;
        }
    } else {
        direct = !direct;
        for (double t = 0.0; t <= c - 1.0; t += 1.0) {
            T = T * (c - t) * ((r.a - r.j) - t) / ((t + g) * (t + r.j));
            if (T <= 0.0) break;
            sum += T;
        }
    }
    return direct ? sum / kScale + P : 1.0 - sum / kScale;
}

}  // namespace

// Method  exp of three log binomial coefficients. Outside of the support on purpose missing, not
//         0.0.
double MCDistFun::PdfHyper(long x, long population, long successes, long draws)
{
    if (!(0 < successes && successes <= population && 0 < draws && draws <= population))
        return MCMV::Missing();
    const long least = std::max(0L, successes - population + draws);
    if (x < least || x > std::min(successes, draws)) return MCMV::Missing();
    const double L = LogPoint(static_cast<double>(x), static_cast<double>(population),
                              static_cast<double>(successes), static_cast<double>(draws));
    return L < MCPower::gMachineMinExp ? 0.0 : std::exp(L);
}

// Source  Lund (1980), Algorithm AS 152, Applied Statistics 29, 221-223.
double MCDistFun::CDFHyper(double x, double population, double successes, double draws, int& code)
{
    code = 0;
    const Hypergeometric w{population, successes, draws, std::trunc(x)};
    if (w.N > kLargestPopulation || !IsWhole(w.N) || !IsWhole(w.K) || !IsWhole(w.n) ||
        std::min(w.K, w.n) < 1.0 || std::max(w.K, w.n) > w.N) {
        code = 1;
        return MCMV::Missing();
    }
    if (std::isnan(x)) return x;
    if (w.i < std::max(0.0, w.n + w.K - w.N)) return 0.0;
    if (w.i >= std::min(w.K, w.n)) return 1.0;

    const double r = w.n / (w.N - w.n);
    if (w.N > kNormalPopulation && 16.0 * std::max(r, 1.0 / r) < std::min(w.K, w.N - w.K)) {
        const double mean = w.K / w.N * w.n;
        const double deviation =
            std::sqrt(((w.N - w.n) / w.N) * mean * ((w.N - w.K) / (w.N - 1.0)));
        return prbnrm((w.i - mean + 0.5) / deviation);
    }

    const Arranged arranged = Arrange(w);
    double P = 0.0;
    double logP = 0.0;
    if (w.N > kExactPopulation) {
        logP = LogPoint(w.i, w.N, w.K, w.n);
        if (logP >= kLogCeiling) P = std::exp(logP);
    } else {
        P = PointByProduct(arranged, w.N);
        if (P == 0.0) logP = LogPoint(w.i, w.N, w.K, w.n);
    }
    if (P != 0.0) return SumShorterSide(arranged, w.N, P, P * kScale);

    // On purpose: a scaled probability is formed from the log only where it is huge, which a
    // probability never is. So every population above 1,000 that gets here answers a step.
    const double L = logP + kLogScale;
    if (L >= kLogCeiling) {
        double T = 0.0;
        MCPower::Exponent(L, T);
        return SumShorterSide(arranged, w.N, P, T);
    }
    return w.K + 1.0 + w.n + w.K * w.n < w.i * (w.N + 2.0) ? 1.0 : 0.0;
}

}  // namespace MCMath_850
