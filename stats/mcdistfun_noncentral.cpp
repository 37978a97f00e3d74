#include <cmath>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "stats/mcpower.h"
#include "stats/numerics.h"
#include "stats/poissonsum.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

// Method  Lenth (1987), Algorithm AS 226, Applied Statistics 36, 241-244, started as Frick's AS R84
//         has it. The beta ratio is computed once and carried on by its recurrence.
double MCDistFun::ncdbet(const double& x, const double& a, const double& b, const double& lambda,
                         long& code, double tolerance)
{
    code = kOk;
    if (!(a > 0.0 && b > 0.0 && lambda >= 0.0)) {
        code = kBadArgument;
        return MCMV::Missing();
    }
    if (x <= 0.0) return 0.0;
    if (x >= 1.0) return 1.0;
    if (lambda == 0.0) {
        const double central = cdfbet(x, a, b, code);
        if (code != kOk) code = kFailed;
        return central;
    }
    const double c = lambda / 2.0;
    double j = FirstTerm(c);
    const double a0 = j + a;
    long inner = kOk;
    const double beta = cdfbet(x, a0, b, inner);
    if (inner != kOk) {
        code = kFailed;
        return MCMV::Missing();
    }
    const double L = b * std::log(1.0 - x) + a0 * std::log(x) - dnlgam(a0) - dnlgam(b) +
                     dnlgam(a0 + b) - std::log(a0);
    if (L > MCPower::gMachineMaxExp) return 0.0;
    double g = 0.0;  // the recurrence's step: ratio(a0 + 1) = ratio(a0) - g
    if (L < MCPower::gMachineMinExp) {
        if (beta == 0.0) return 0.0;
    } else {
        g = std::exp(L);
    }
    const double qL = a0 > a ? std::log(c) * j - dnlgam(j + 1.0) - c : -c;
    if (qL < MCPower::gMachineMinExp || qL > MCPower::gMachineMaxExp) return 0.0;
    double q = std::exp(qL);
    double sum = beta * q;
    if (tolerance < 1.0) {
        double sumq = 1.0 - q;
        double temp = beta - g;
        double err = 0.0;
        for (int round = 0; round < kMostRounds; ++round) {
            j += 1.0;
            g = (((a + b + j) - 1.0) * x / (a + j)) * g;
            q = (c / j) * q;
            sumq -= q;
            sum += q * temp;
            err = (temp - g) * sumq;
            if (err <= tolerance) break;
            temp -= g;
        }
        if (err > tolerance) {
            code = kFailed;
            return MCMV::Missing();
        }
    }
    return ClampProbability(sum);
}

double MCDistFun::NonCentralCdfF(double f, double df1, double df2, double lambda, double tolerance)
{
    if (!(df1 > 0.0 && df2 > 0.0 && lambda >= 0.0)) return MCMV::Missing();
    if (f <= 0.0) return 0.0;
    long code = kOk;
    const double result =
        ncdbet(df1 * f / (df2 + df1 * f), df1 / 2.0, df2 / 2.0, lambda, code, tolerance);
    return MissingOnCode(result, code);
}

double MCDistFun::NonCentralCdfChi(double x, double df, double lambda)
{
    if (!(df > 0.0 && lambda >= 0.0)) return MCMV::Missing();
    if (x <= 0.0) return 0.0;
    const double h = x / 2.0;
    const double a = df / 2.0;
    const double c = lambda / 2.0;
    double j = FirstTerm(c);
    const double a0 = j + a;
    long inner = kOk;
    const double P = gammad(h, a0, true, inner);
    if (inner != kOk) return MCMV::Missing();
    if (P == 0.0) return 0.0;
    const double L = std::log(h) * a0 - dnlgam(a0 + 1.0) - h;
    if (L > MCPower::gMachineMaxExp) return MCMV::Missing();
    double g = L < MCPower::gMachineMinExp ? 0.0 : std::exp(L);
    const double qL = j > 0.0 ? std::log(c) * j - dnlgam(j + 1.0) - c : -c;
    if (qL > MCPower::gMachineMaxExp) return MCMV::Missing();
    if (qL < MCPower::gMachineMinExp) return 0.0;
    double q = std::exp(qL);
    double sum = P * q;
    double sumq = 1.0 - q;
    double temp = P - g;
    for (int round = 0; round < kMostRounds; ++round) {
        j += 1.0;
        g = (h / (a + j)) * g;
        q = (c / j) * q;
        sumq -= q;
        sum += q * temp;
        temp -= g;
        if (temp * sumq <= kSumTolerance) return ClampProbability(sum);
    }
    return MCMV::Missing();
}

}  // namespace MCMath_850
