#include <algorithm>
#include <cmath>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "stats/mcpower.h"
#include "stats/numerics.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

namespace {

constexpr double kTermTolerance = 1e-14;     // of the series and of the continued fraction
constexpr double kRescaleAt = 1.34e+154;     // about the root of the largest double
constexpr double kMostTerms = 2147483647.0;  // more than this and the normal approximation serves
constexpr long kMostRounds = 2147483647L;    // of the fraction, the same bound

// log(s) with s the sum of the series 1 + x/(a+1) + x^2/((a+1)(a+2)) + ... (Shea, AS 239).
double LogSeries(double x, double a)
{
    double term = 1.0;
    double sum = 1.0;
    double n = a;
    do {
        n += 1.0;
        term = term * x / n;
        sum += term;
    } while (term >= kTermTolerance);
    return std::log(sum);
}

// log(f) with f the continued fraction of the upper tail (Shea, AS 239).
double LogFraction(double x, double a)
{
    double A = 1.0 - a;
    double B = A + x + 1.0;
    double term = 0.0;
    double pn1 = 1.0;
    double pn2 = x;
    double pn3 = x + 1.0;
    double pn4 = x * B;
    double result = pn3 / pn4;
    for (long round = 0; round < kMostRounds; ++round) {
        A += 1.0;
        B += 2.0;
        term += 1.0;
        const double an = A * term;
        const double pn5 = B * pn3 - an * pn1;
        const double pn6 = B * pn4 - an * pn2;
        if (pn6 != 0.0) {
            const double rn = pn5 / pn6;
            if (std::fabs(result - rn) <= std::min(kTermTolerance, kTermTolerance * rn)) break;
            result = rn;
        }
        pn1 = pn3;
        pn2 = pn4;
        pn3 = pn5;
        pn4 = pn6;
        if (std::fabs(pn5) >= kRescaleAt) {
            pn1 /= kRescaleAt;
            pn2 /= kRescaleAt;
            pn3 /= kRescaleAt;
            pn4 /= kRescaleAt;
        }
    }
    return std::log(result);
}

// Whether the series for x below a would need more terms than can be waited for.
bool SeriesIsTooLong(double x, double a)
{
    const double u = std::log10(x / (a + 1.0));
    if (u == 0.0) return true;
    const double v = -14.0 / u;
    if (!(v > 0.0)) return false;
    const double root = 2.0 * std::sqrt(v) + 10.0;
    return root * root >= kMostTerms;
}

// Normal approximations of the incomplete gamma function, for what the exact roads cannot do:
// Peizer and Pratt (1968) for the upper tail with a >= 0.5, else Wilson and Hilferty (1931).
double NormalApproximation(double x, double a, bool lower)
{
    if (!lower && a >= 0.5) {
        const double d = (a - 0.5) / x;
        double s = 0.0;
        if (d == 0.0)
            s = std::sqrt(2.0 / x);
        else if (d == 1.0)
            s = std::sqrt(1.0 / x);
        else
            s = std::sqrt(2.0 * (d * std::log(d) + 1.0 - d) / x) / std::fabs(1.0 - d);
        return MCDistFun::prbnrm((a + 0.022 / a - x - 0.3333333333333333) * s);
    }
    const double t = 3.0 * std::sqrt(a);
    double z = 0.0;
    if (x == a) {
        z = 1.0 / t;
    } else {
        const double c = ExpOrZero(std::log(x / a) / 3.0);
        z = (1.0 / (9.0 * a) + c - 1.0) * t;
    }
    return MCDistFun::prbnrm(lower ? z : -z);
}

}  // namespace

// Method  Shea (1988), Algorithm AS 239, Applied Statistics 37, 466-473: the continued fraction for
//         x > 1 and x > a, else the series. The factor x^a exp(-x) / gamma is formed as a
//         logarithm; where that cannot be done the normal approximations above serve.
// Departs from the paper by the tail switch, the guards and the fall-backs; the fraction is bound
//         to 2147483647 rounds.
double MCDistFun::gammad(const double& x, const double& a, const bool& lower, long& code)
{
    code = kOk;
    if (a <= 0.0) {
        code = kBadArgument;
        return MCMV::Missing();
    }
    if (x <= 0.0) return lower ? 0.0 : 1.0;
    if (a == 1.0) {
        const double q = ExpOrZero(-x);
        return lower ? 1.0 - q : q;
    }
    const bool fraction = x > 1.0 && x > a;
    if (!fraction && SeriesIsTooLong(x, a)) return NormalApproximation(x, a, lower);
    const double g = fraction ? dnlgam(a) : dnlgam(a + 1.0);
    if (MCMV::IsMissing(g)) return NormalApproximation(x, a, lower);
    if (fraction && 4.0 * std::log(x) >= kLogCeiling) return NormalApproximation(x, a, lower);

    const double arg = a * std::log(x) - (g + x);
    const double L = (fraction ? LogFraction(x, a) : LogSeries(x, a)) + arg;
    if (L > 0.0) return NormalApproximation(x, a, lower);
    const double tail = ExpOrZero(L);  // the series gives the lower one, the fraction the upper one
    return lower != fraction ? tail : 1.0 - tail;
}

double MCDistFun::cdfexp(const double& x, const double& rate, long& code)
{
    code = kOk;
    if (rate <= 0.0) {
        code = kBadArgument;
        return MCMV::Missing();
    }
    if (x <= 0.0) return 0.0;
    double e = 0.0;
    MCPower::Exponent(x * -rate, e);
    return 1.0 - e;
}

double MCDistFun::PdfGamma(double x, double shape, double rate)
{
    if (!(shape > 0.0) || !(rate > 0.0)) return MCMV::Missing();
    if (x < 0.0) return 0.0;
    if (x == 0.0) {
        if (shape > 1.0) return 0.0;
        return shape == 1.0 ? rate : MCMV::Missing();
    }
    const double z = x * rate;
    const double L = shape == 1.0
                         ? std::log(rate) - z
                         : ((shape - 1.0) * std::log(z) + std::log(rate)) - z - dnlgam(shape);
    if (L < MCPower::gMachineMinExp) return 0.0;
    return L <= MCPower::gMachineMaxExp ? std::exp(L) : MCMV::Missing();
}

double MCDistFun::CdfGam(double x, double shape, double rate)
{
    if (shape <= 0.0 || rate <= 0.0) return MCMV::Missing();
    if (x <= 0.0) return 0.0;
    long code = kOk;
    const double result =
        shape == 1.0 ? cdfexp(x, rate, code) : gammad(x * rate, shape, true, code);
    return MissingOnCode(result, code);
}

double MCDistFun::CdfChi(double x, double df)
{
    if (!(df > 0.0)) return MCMV::Missing();
    if (x <= 0.0) return 0.0;
    long code = kOk;
    const double result = gammad(x / 2.0, df / 2.0, true, code);
    return MissingOnCode(result, code);  // a df whose half is 0 comes back with a code
}

double MCDistFun::SigChi(double x, double df)
{
    if (!(df > 0.0)) return MCMV::Missing();
    if (x <= 0.0) return 1.0;
    long code = kOk;
    const double result = gammad(x / 2.0, df / 2.0, false, code);
    return MissingOnCode(result, code);
}

}  // namespace MCMath_850
