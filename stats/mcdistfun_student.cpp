#include <cmath>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "stats/numerics.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

namespace {

// From here on the t distribution counts as normal; SigT on purpose has no such limit.
constexpr double kNormalDf = 100000000.0;

}  // namespace

double MCDistFun::PdfT(double t, double df, long& code)
{
    code = kOk;
    if (df <= 0.0) {
        code = kBadArgument;
        return MCMV::Missing();
    }
    double L = -0.5 * std::log(df) + dnlgam((df + 1.0) / 2.0) - dnlgam(df / 2.0) - kHalfLogPi;
    if (t != 0.0) L += (df + 1.0) * -0.5 * std::log(t * t / df + 1.0);
    return ExpOrZero(L);
}

// Method  cdfbet of t^2 / (df + t^2) within one of 0, of df / (df + t^2) further out, so that the
//         small tail is the one that is computed.
double MCDistFun::zeltcdft(const double& t, const double& df, long& code)
{
    const double half = 0.5;
    code = kOk;
    if (df <= 0.0) {
        code = kBadArgument;
        return MCMV::Missing();
    }
    if (df > kNormalDf) {
        const double normal = CdfNorm(t, 0.0, 1.0);
        if (MCMV::IsMissing(normal)) code = kFailed;
        return normal;
    }
    if (t == 0.0) return 0.5;
    if (df == 1.0) return std::atan(t) / kPi + 0.5;
    const double size = std::fabs(t);
    if (size <= 1.0) {
        const double r = cdfbet(size / (df / size + size), half, df / 2.0, code);
        return MCMV::IsMissing(r) ? r : (t < 0.0 ? -r : r) * 0.5 + 0.5;
    }
    const double r = cdfbet((df / size) / (size + df / size), df / 2.0, half, code);
    if (MCMV::IsMissing(r)) return r;
    return t > 1.0 ? 1.0 - r * 0.5 : r * 0.5;
}

double MCDistFun::CdfT(double t, double df)
{
    long code = kOk;
    const double result = zeltcdft(t, df, code);
    return MissingOnCode(result, code);
}

double MCDistFun::SigT(double t, double df)
{
    const double half = 0.5;
    if (df <= 0.0) return MCMV::Missing();
    if (t == 0.0) return 0.5;
    if (df == 1.0) return std::atan(t) / -kPi + 0.5;
    long code = kOk;  // seen only through a missing result
    const double size = std::fabs(t);
    if (size <= 1.0) {
        const double r = cdfbet(size / (df / size + size), half, df / 2.0, code);
        return MCMV::IsMissing(r) ? r : (t > 0.0 ? -r : r) * 0.5 + 0.5;
    }
    double r = cdfbet((df / size) / (size + df / size), df / 2.0, half, code);
    if (MCMV::IsMissing(r)) return r;
    r *= 0.5;
    return t < -1.0 ? (0.5 - r) + 0.5 : r;
}

double MCDistFun::zeltidft(const double& p, const double& df, long& code)
{
    const double half = 0.5;
    code = kOk;
    if (!(p > 0.0 && p < 1.0) || !(df > 0.0)) {
        code = kBadArgument;
        return MCMV::Missing();
    }
    if (p == 0.5) return 0.0;
    if (!(df < kNormalDf)) return IdfStdNorm(p);
    const double tails = p >= 0.5 ? 2.0 - p - p : 2.0 * p;
    const double b = betinv(tails, df / 2.0, half);
    if (b == -1.0) {  // exact: the mark of a failure
        code = kFailed;
        return MCMV::Missing();
    }
    const double v = (1.0 / b - 1.0) * df;
    if (v < 0.0) {
        code = kFailed;
        return MCMV::Missing();
    }
    return p < 0.5 ? -std::sqrt(v) : std::sqrt(v);
}

double MCDistFun::IdfT(double p, double df)
{
    long code = kOk;
    const double result = zeltidft(p, df, code);
    return MissingOnCode(result, code);
}

}  // namespace MCMath_850
