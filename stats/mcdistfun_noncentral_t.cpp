#include <algorithm>
#include <cmath>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "stats/mcpower.h"
#include "stats/numerics.h"
#include "stats/poissonsum.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

namespace {

constexpr double kHugeT = 1.3407807929942596e+154;  // its square overflows
constexpr double kHalfLn2 = 0.34657359027997264;
constexpr double kLogPi = 1.1447298858494002;
constexpr double kSqrt2 = 1.4142135623730951;

constexpr double kReach = 10000.0;          // terms of the density's series, each way
constexpr double kSeriesTolerance = 1e-10;  // relative
constexpr double kLargestIndex = 2147483647.0;

double ExpAboveMinimum(double L) { return L < MCPower::gMachineMinExp ? 0.0 : std::exp(L); }

// The terms |T(i)| of the density's series, walked in one direction: the factorial and the power
// are carried along, the gamma factor is taken anew for each.
struct Walk {
    double base;  // what all terms share, logarithm
    double A;     // log of the power's base
    double df;
    double i;
    double carry;  // i A - log(i!)
    bool overflow = false;

    double Term()
    {
        const double L = base + carry + MCDistFun::dnlgam((df + i + 1.0) / 2.0);
        if (L > MCPower::gMachineMaxExp) overflow = true;
        return L > MCPower::gMachineMinExp && !overflow ? std::exp(L) : 0.0;
    }
    void Up()
    {
        i += 1.0;
        carry += A - std::log(i);
    }
    void Down()
    {
        carry += std::log(i) - A;
        i -= 1.0;
    }
};

}  // namespace

// Method  Lenth (1989), Algorithm AS 243, Applied Statistics 38, 185-189, started as Frick's AS R84
//         has it: normal tail plus Poisson-like sums of the incomplete beta ratio.
double MCDistFun::NonCentralCdfT(double t, double df, double delta)
{
    if (df <= 0.0) return MCMV::Missing();
    if (delta == 0.0) return CdfT(t, df);
    if (t == 0.0) return prbnrm(-delta);
    const double tt = delta < 0.0 ? -t : t;
    if (std::fabs(t) >= kHugeT) return delta <= t ? 1.0 : 0.0;
    const double x = t * t / (df + t * t);
    if (x <= 0.0) return MCMV::Missing();

    const double lam = delta * delta / 2.0;
    double j = FirstTerm(lam);
    const double L = -kLn2 - lam + std::log(lam) * j;
    double p = ExpAboveMinimum(L - dnlgam(j + 1.0));
    double q = ExpAboveMinimum(L - kHalfLn2 + std::log(std::fabs(delta)) - dnlgam(j + 1.5));
    if (tt < 0.0) q = -q;

    double a = j + 0.5;
    const double b = df / 2.0;
    long code = kOk;
    double xodd = cdfbet(x, a, b, code);
    if (code != kOk) return MCMV::Missing();
    double xeven = cdfbet(x, a + 0.5, b, code);  // b was accepted just now, so no code
    const double lb = std::log(1.0 - x) * b - dnlgam(b);
    const double oddL = lb + dnlgam(a + b) - dnlgam(a + 1.0) + a * std::log(x);
    const double evenL = lb + dnlgam(a + 0.5 + b) - dnlgam(a + 1.5) + (a + 0.5) * std::log(x);
    if (oddL > MCPower::gMachineMaxExp || evenL > MCPower::gMachineMaxExp) return MCMV::Missing();
    double godd = ExpAboveMinimum(oddL);
    double geven = ExpAboveMinimum(evenL);

    double s = 0.5 - p;
    double tnc = xodd * p + xeven * q;
    xodd -= godd;
    xeven -= geven;
    for (int round = 0; round < kMostRounds; ++round) {
        j += 1.0;
        a += 1.0;
        godd = ((a + b - 1.0) * x / a) * godd;
        geven = geven * ((a + b - 0.5) * x / (a + 0.5));
        p = p * (lam / j);
        q = (lam / (j + 0.5)) * q;
        s -= p;
        tnc += xodd * p + q * xeven;
        xodd -= godd;
        xeven -= geven;
        if (2.0 * s * xodd <= kSumTolerance) {
            double r = prbnrm(-std::fabs(delta));
            r = tt >= 0.0 ? r + tnc : r - tnc;
            return ClampProbability(delta < 0.0 ? 1.0 - r : r);
        }
    }
    return MCMV::Missing();
}

// Method  the series in (t delta sqrt 2 / sqrt(df + t^2))^i / i! gamma((df + i + 1) / 2), summed
//         outwards from its largest term (Johnson, Kotz and Balakrishnan 1995, chapter 31).
double MCDistFun::NonCentralPdfT(double t, double df, double delta, long& code)
{
    code = kOk;
    if (df <= 0.0) {
        code = kBadArgument;
        return MCMV::Missing();
    }
    if (delta == 0.0) return PdfT(t, df, code);
    const auto overflow = [&code] {
        code = kFailed;
        return MCMV::Missing();
    };
    if (t == 0.0) {
        const double L = -delta * delta / 2.0 + dnlgam(df / 2.0 + 0.5) - dnlgam(df / 2.0) -
                         kHalfLogPi - 0.5 * std::log(df);
        if (L > MCPower::gMachineMaxExp) return overflow();
        return L > MCPower::gMachineMinExp ? std::exp(L) : 0.0;
    }
    const double w = df + t * t;
    const double A =
        std::log(std::fabs(t)) + std::log(std::fabs(delta * kSqrt2)) - 0.5 * std::log(w);
    const double base =
        -0.5 * (kLogPi - df * std::log(df) + (df + 1.0) * std::log(w) + delta * delta) -
        dnlgam(df / 2.0);
    const double r = t * t * delta * delta / w;
    const double m = ((r - 3.0) + std::sqrt(((r - 2.0) + 4.0 * df) * r + 1.0)) / 2.0;
    if (!(m + kReach < kLargestIndex)) return overflow();

    const double k = std::max(0.0, std::floor(m) + 1.0);  // m is -1 at least, less its rounding
    const bool alternating = (t < 0.0) != (delta < 0.0);
    const auto sign = [alternating](double i) {
        return alternating && std::fmod(i, 2.0) != 0.0 ? -1.0 : 1.0;
    };
    const double lowest = std::max(0.0, k - kReach);
    Walk down{base, A, df, k, k * A - dnlgam(k + 1.0)};
    Walk up = down;
    up.Up();
    double sum = 0.0;
    for (double round = 0.0; round < kReach; round += 1.0) {  // so up.i ends at k + 10000
        const double above = sign(up.i) * up.Term();
        const double below = down.i >= lowest ? sign(down.i) * down.Term() : 0.0;
        if (up.overflow || down.overflow) return overflow();
        sum += below + above;
        if ((std::fabs(above) + std::fabs(below)) / std::fabs(sum) <= kSeriesTolerance) break;
        up.Up();
        if (down.i >= lowest) down.Down();
    }
    return sum < 0.0 ? 0.0 : sum;
}

}  // namespace MCMath_850
