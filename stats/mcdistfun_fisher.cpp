#include <cmath>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "stats/numerics.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

// Method  cdfbet of the smaller of df1 f / (df2 + df1 f) and its complement; with df1 = 1 by
//         Student's t.
double MCDistFun::zeltcdff(const double& f, const double& df1, const double& df2, long& code)
{
    code = kOk;
    if (df1 <= 0.0 || df2 <= 0.0) {
        code = kBadArgument;
        return MCMV::Missing();
    }
    if (f <= 0.0) return 0.0;
    double r = 0.0;
    if (df1 == 1.0) {
        r = zeltcdft(std::sqrt(f), df2, code);
        if (!MCMV::IsMissing(r)) r = 2.0 * r - 1.0;
    } else if (f < 1.0) {
        r = cdfbet(f / (df2 / df1 + f), df1 / 2.0, df2 / 2.0, code);
    } else {
        r = cdfbet((df2 / df1) / (df2 / df1 + f), df2 / 2.0, df1 / 2.0, code);
        if (!MCMV::IsMissing(r)) r = 1.0 - r;
    }
    if (MCMV::IsMissing(r)) code = kFailed;
    return MissingOnCode(r, code);
}

double MCDistFun::CdfF(double f, double df1, double df2)
{
    long code = kOk;
    const double result = zeltcdff(f, df1, df2, code);
    return MissingOnCode(result, code);
}

double MCDistFun::SigF(double f, double df1, double df2)
{
    if (df1 <= 0.0 || df2 <= 0.0) return MCMV::Missing();
    if (f <= 0.0) return 1.0;
    long code = kOk;
    const double r = f < 1.0 ? 1.0 - cdfbet(f / (df2 / df1 + f), df1 / 2.0, df2 / 2.0, code)
                             : cdfbet((df2 / df1) / (f + df2 / df1), df2 / 2.0, df1 / 2.0, code);
    return MissingOnCode(r, code);
}

double MCDistFun::zeltidff(const double& p, const double& df1, const double& df2, long& code)
{
    code = kOk;
    if (!(p >= 0.0 && p < 1.0) || !(df1 > 0.0) || !(df2 > 0.0)) {
        code = kBadArgument;
        return MCMV::Missing();
    }
    if (p == 0.0) return 0.0;
    if (df1 == 1.0) {
        const double r = zeltidft(p * 0.5 + 0.5, df2, code);
        if (!MCMV::IsMissing(r)) return r * r;
        code = kFailed;
        return r;
    }
    const double b = betinv(p, df1 / 2.0, df2 / 2.0);
    if (b < 0.0 || !(b < 1.0)) {  // the missing value is below 0, and so is betinv's -1.0
        code = kFailed;
        return MCMV::Missing();
    }
    return (df2 / df1) * (b / (1.0 - b));
}

double MCDistFun::IdfF(double p, double df1, double df2)
{
    long code = kOk;
    const double result = zeltidff(p, df1, df2, code);
    return MissingOnCode(result, code);
}

}  // namespace MCMath_850
