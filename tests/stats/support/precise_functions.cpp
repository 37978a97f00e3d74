#include "tests/stats/support/precise_functions.h"

#include <cmath>
#include <map>

#include "stats/precise.h"
#include "tests/stats/support/lift.h"

namespace reference {

namespace {

namespace P = MCMath_850::Precise;

bool Always(const Args&) { return true; }
bool PositiveSigma(const Args& a) { return a[2] > 0.0; }
bool PositiveShape(const Args& a) { return a[1] > 0.0; }
bool PositiveParameters(const Args& a) { return a[1] > 0.0 && a[2] > 0.0; }
bool WholeX(const Args& a) { return a[0] == std::floor(a[0]); }
bool FullSum(const Args& a) { return a[4] < 1.0; }
bool HalfIsNotZero(const Args& a) { return !(a[0] > 0.0 && a[0] < 1e-307); }
bool Never(const Args&) { return false; }

#define VELSTATS_PRECISE(NAME, COMPARED) \
    {                                    \
#NAME, Lift(&P::NAME), COMPARED  \
    }

const std::map<std::string, PreciseFunction>& Table()
{
    static const std::map<std::string, PreciseFunction> table = {
        {"probit", VELSTATS_PRECISE(IdfStdNorm, Always)},
        {"derf", VELSTATS_PRECISE(Erf, Always)},
        {"derfc", VELSTATS_PRECISE(Erfc, Always)},
        {"prbnrm", VELSTATS_PRECISE(CdfStdNorm, Always)},
        {"CdfStdNorm", VELSTATS_PRECISE(CdfStdNorm, Always)},
        {"CdfNorm", VELSTATS_PRECISE(CdfNorm, Always)},
        {"IdfStdNorm", VELSTATS_PRECISE(IdfStdNorm, Always)},
        {"IdfNorm", VELSTATS_PRECISE(IdfNorm, Always)},
        {"PdfNormalStandard", VELSTATS_PRECISE(PdfNormalStandard, Always)},
        {"PdfNormal", VELSTATS_PRECISE(PdfNormal, PositiveSigma)},
        {"dnlgam", VELSTATS_PRECISE(LogGamma, Always)},
        {"zeltdnlgam", VELSTATS_PRECISE(LogGamma, Always)},
        {"gammad", VELSTATS_PRECISE(GammaRatio, Always)},
        {"cdfexp", VELSTATS_PRECISE(CdfExp, Always)},
        {"PdfGamma", VELSTATS_PRECISE(PdfGamma, Always)},
        {"CdfGam", VELSTATS_PRECISE(CdfGam, Always)},
        {"IdfGam", VELSTATS_PRECISE(IdfGam, PositiveShape)},
        {"CdfChi", VELSTATS_PRECISE(CdfChi, HalfIsNotZero)},
        {"SigChi", VELSTATS_PRECISE(SigChi, Always)},
        {"zeltidfchi", VELSTATS_PRECISE(IdfChi, Always)},
        {"idfchb", VELSTATS_PRECISE(IdfChi, Always)},
        {"IdfChi", VELSTATS_PRECISE(IdfChi, Always)},
        {"cdfbet", VELSTATS_PRECISE(CdfBeta, Always)},
        {"CdfBeta", VELSTATS_PRECISE(CdfBeta, Always)},
        {"betinv", VELSTATS_PRECISE(IdfBeta, PositiveParameters)},
        {"IdfBeta", VELSTATS_PRECISE(IdfBeta, PositiveParameters)},
        {"PdfT", VELSTATS_PRECISE(PdfT, Always)},
        {"zeltcdft", VELSTATS_PRECISE(CdfT, Always)},
        {"CdfT", VELSTATS_PRECISE(CdfT, Always)},
        {"SigT", VELSTATS_PRECISE(SigT, Always)},
        {"zeltidft", VELSTATS_PRECISE(IdfT, Always)},
        {"IdfT", VELSTATS_PRECISE(IdfT, Always)},
        {"zeltcdff", VELSTATS_PRECISE(CdfF, Always)},
        {"CdfF", VELSTATS_PRECISE(CdfF, Always)},
        {"SigF", VELSTATS_PRECISE(SigF, Always)},
        {"zeltidff", VELSTATS_PRECISE(IdfF, Always)},
        {"IdfF", VELSTATS_PRECISE(IdfF, Always)},
        {"dnlbnc", VELSTATS_PRECISE(LogBinomial, Always)},
        {"CdfBin", VELSTATS_PRECISE(CdfBin, Always)},
        {"PdfBin", VELSTATS_PRECISE(PdfBin, Always)},
        {"IdfBin", VELSTATS_PRECISE(IdfBin, Never)},  // the usual quantile: another definition
        {"PdfHyper", VELSTATS_PRECISE(PdfHyper, Always)},
        {"CDFHyper",
         VELSTATS_PRECISE(CDFHyper, WholeX)},  // a fraction below 0 is cut the other way
        {"ncdbet", VELSTATS_PRECISE(NonCentralCdfBeta, FullSum)},
        {"NonCentralCdfF", VELSTATS_PRECISE(NonCentralCdfF, FullSum)},
        {"NonCentralCdfChi", VELSTATS_PRECISE(NonCentralCdfChi, Always)},
        {"NonCentralCdfT", VELSTATS_PRECISE(NonCentralCdfT, Always)},
        {"NonCentralPdfT", VELSTATS_PRECISE(NonCentralPdfT, Always)},
        {"FindNCParamChi", VELSTATS_PRECISE(FindNCParamChi, Always)},
        {"FindNCParamF", VELSTATS_PRECISE(FindNCParamF, Always)},
        {"FindNCParamT", VELSTATS_PRECISE(FindNCParamT, Always)},
    };
    return table;
}

#undef VELSTATS_PRECISE

}  // namespace

const PreciseFunction& PreciseFor(const std::string& function)
{
    static const PreciseFunction none{nullptr, {}, Never};
    const auto found = Table().find(function);
    return found == Table().end() ? none : found->second;
}

}  // namespace reference
