#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <utility>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "stats/mcpower.h"
#include "stats/numerics.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

namespace {

constexpr int kLastTerm = 10000;
constexpr double kSeriesTolerance = 1e-15;

// The tail that is summed: the ratio of p, q at t with u = 1 - t, or one minus it.
struct Tail {
    double p;
    double q;
    double t;
    double u;
    double sum;   // p + q
    bool direct;  // false: the sum is the other tail

    void TurnOver()
    {
        std::swap(p, q);
        std::swap(t, u);
        direct = !direct;
    }
    double Answer(double r) const { return direct ? r : 1.0 - r; }
};

// S of I = t^p u^q / (p B(p, q)) * S by the series of the hypergeometric function.
bool Series(const Tail& w, double& S)
{
    double term = 1.0;
    S = 1.0;
    for (int i = 0; i <= kLastTerm; ++i) {
        term = term * ((w.sum + i) / (i + w.p + 1.0)) * w.t;
        S += term;
        if (std::fabs(term) < kSeriesTolerance) return true;
    }
    return false;
}

// The same S by the continued fraction, each convergent divided through by its denominator. It ends
// when two convergents agree within 10 max(1, p + q) units in the last place.
bool Fraction(const Tail& w, double& S)
{
    const double ulps = 10.0 * std::max(1.0, w.sum);
    double d = 1.0 - (w.sum / (w.p + 1.0)) * w.t;
    double prev = 1.0 / d;
    double A = 1.0;
    double C = 1.0;
    double E = 1.0;
    for (int i = 1; i <= kLastTerm; ++i) {
        const double c8 = w.p + i;
        const double c9 = c8 + i;
        double f = (i / c9) * w.t * ((w.q - i) / (c9 - 1.0));
        C = f * C + A;
        E = f * E + d;
        f = -w.t * (c8 / c9) * ((c8 + w.q) / (c9 + 1.0));
        A = C + A * f;
        d = d * f + E;
        if (d == 0.0) continue;
        A /= d;
        if (MCPower::AlmostEqual(A, prev, ulps)) {
            S = A;
            return true;
        }
        C /= d;
        E /= d;
        d = 1.0;
        prev = A;
    }
    return false;
}

// S with the factor before it, formed as a logarithm.
double Ratio(const Tail& w, double S)
{
    if (S <= 0.0) return w.Answer(0.0);
    const double L = MCDistFun::dnlgam(w.sum) - MCDistFun::dnlgam(w.p + 1.0) -
                     MCDistFun::dnlgam(w.q) + std::log(w.t) * w.p + std::log(w.u) * w.q +
                     std::log(S);
    return w.Answer(ExpOrZero(L));
}

// Normal approximation in the manner of Peizer and Pratt (1968). On purpose the terms of z stand as
// they do: the published form differs, and no parameters below some 1e11 come here.
double NormalApproximation(const Tail& w)
{
    const double N = w.sum - 1.0;
    const double c1 = MCDistFun::cbtaux((w.p - 0.5) / N);
    const double c2 = MCDistFun::cbtaux((w.q - 0.5) / N);
    const double v = (c2 * w.u + c1 * w.t + 1.0) / ((N + 0.16666666666666666) * w.t * w.u);
    double z = 0.0;
    if (!(v <= 0.0)) {
        const double correction = ((w.t / w.q) - (w.u / w.p)) + (w.t - 0.5) / w.sum;
        z = std::sqrt(v) * ((w.t + 1.0) / 3.0 + (w.t - w.p / N) * N + correction / 50.0);
    }
    return MCDistFun::prbnrm(w.direct ? z : -z);
}

}  // namespace

// Source  Peizer and Pratt (1968), Journal of the American Statistical Association 63, 1416-1456.
double MCDistFun::cbtaux(const double& x)
{
    // 1.34e154
    static const double oflo = std::bit_cast<double>(std::uint64_t{0x5FEFFFFFFFFFFFFF});
    if (x < 0.0) return MCMV::Missing();
    if (x == 0.0) return 1.0;
    if (x > oflo) return -1.0;
    if (x == 1.0) return 0.0;
    return ((1.0 - x * x) + 2.0 * x * std::log(x)) / ((1.0 - x) * (1.0 - x));
}

// Method  closed forms for a or b of 1; the hypergeometric series if one of them is below 1; else,
//         or where 10,001 terms do not suffice, the continued fraction; after 10,000 rounds of that
//         a normal approximation (parameters of about 1e11 and more).
// Source  series and fraction: Abramowitz and Stegun (1964), 26.5.4 and 26.5.8.
double MCDistFun::cdfbet(const double& x, const double& a, const double& b, long& code)
{
    code = kOk;
    if (a <= 0.0 || b <= 0.0) {
        code = kBadArgument;
        return MCMV::Missing();
    }
    if (x <= 0.0) return 0.0;
    const double y = 1.0 - x;
    if (y <= 0.0) return 1.0;
    if (a == 1.0) return b == 1.0 ? x : 1.0 - ExpOrZero(std::log(y) * b);
    if (b == 1.0) return ExpOrZero(std::log(x) * a);

    Tail w{a, b, x, y, a + b, true};
    if (a <= 1.0) w.TurnOver();
    double S = 0.0;
    if (w.q <= 1.0 && Series(w, S)) return Ratio(w, S);
    if ((w.p + 1.0) / (w.sum + 2.0) <= w.t) w.TurnOver();
    return Fraction(w, S) ? Ratio(w, S) : NormalApproximation(w);
}

double MCDistFun::CdfBeta(double x, double a, double b)
{
    long code = kOk;
    const double result = cdfbet(x, a, b, code);
    return MissingOnCode(result, code);
}

}  // namespace MCMath_850
