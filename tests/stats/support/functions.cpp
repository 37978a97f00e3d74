#include "tests/stats/support/functions.h"

#include <stdexcept>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "stats/mcpower.h"
#include "tests/stats/support/lift.h"
#include "tests/stats/support/tolerances.h"

namespace reference {

namespace {

using MCCommon_850::MCMV;
using MCMath_850::MCPower;
using D = MCMath_850::MCDistFun;

#define VELSTATS_ROW(CLASS, NAME, ...)         \
    {                                          \
#NAME, Lift(&CLASS::NAME), __VA_ARGS__ \
    }

const std::vector<Function>& Table()
{
    using namespace limits;
    static const std::vector<Function> table = {
        VELSTATS_ROW(MCMV, IsMissing, Exact, Exact),
        VELSTATS_ROW(MCPower, Exponent, LastPlaces, LastPlaces),
        VELSTATS_ROW(MCPower, Power, ThroughLogs, ThroughLogs),
        VELSTATS_ROW(MCPower, Multiply, ThroughLogs, ThroughLogs),
        VELSTATS_ROW(MCPower, AlmostEqual, Exact, Exact),
        VELSTATS_ROW(MCPower, IsOneOverOddInteger, Exact, Exact),
        VELSTATS_ROW(MCPower, IsOneOverEvenInteger, Exact, Exact),

        VELSTATS_ROW(D, probit, Probit, Probit),
        VELSTATS_ROW(D, derf, LastPlaces, LastPlaces),
        VELSTATS_ROW(D, derfc, Erfc, Erfc),
        VELSTATS_ROW(D, prbnrm, Phi, Phi),
        VELSTATS_ROW(D, CdfStdNorm, Phi, Phi),
        VELSTATS_ROW(D, CdfNorm, PhiScaled, PhiScaled),
        VELSTATS_ROW(D, IdfStdNorm, Probit, Probit),
        VELSTATS_ROW(D, IdfNorm, NormalQuantile, NormalQuantile),
        VELSTATS_ROW(D, PdfNormalStandard, StandardDensity, StandardDensity),
        VELSTATS_ROW(D, PdfNormal, Density, Density),

        VELSTATS_ROW(D, dnlgam, LogGamma, LogGamma),
        VELSTATS_ROW(D, zeltdnlgam, LogGamma, LogGamma),
        VELSTATS_ROW(D, gammad, Gamma, Gamma),
        VELSTATS_ROW(D, cdfexp, Exponential, Exponential),
        VELSTATS_ROW(D, PdfGamma, GammaScaled, GammaScaled),
        VELSTATS_ROW(D, CdfGam, GammaScaled, GammaScaled),
        VELSTATS_ROW(D, IdfGam, GammaQuantileTruth, GammaQuantileAlgorithm),
        VELSTATS_ROW(D, CdfChi, ChiSquare, ChiSquare),
        VELSTATS_ROW(D, SigChi, ChiSquare, ChiSquare),
        VELSTATS_ROW(D, zeltidfchi, ChiQuantileTruth, ChiQuantileAlgorithm),
        VELSTATS_ROW(D, idfchb, BisectionTruth, BisectionAlgorithm),
        VELSTATS_ROW(D, IdfChi, ChiQuantileTruth, ChiQuantileAlgorithm),

        VELSTATS_ROW(D, cbtaux, Auxiliary, Auxiliary),
        VELSTATS_ROW(D, cdfbet, Beta, Beta),
        VELSTATS_ROW(D, CdfBeta, Beta, Beta),
        VELSTATS_ROW(D, betinv, BetaQuantile, BetaQuantile),
        VELSTATS_ROW(D, IdfBeta, BetaQuantile, BetaQuantile),
        VELSTATS_ROW(D, PdfT, StudentDensity, StudentDensity),
        VELSTATS_ROW(D, zeltcdft, Student, Student),
        VELSTATS_ROW(D, CdfT, Student, Student),
        VELSTATS_ROW(D, SigT, Student, Student),
        VELSTATS_ROW(D, zeltidft, StudentQuantile, StudentQuantile),
        VELSTATS_ROW(D, IdfT, StudentQuantile, StudentQuantile),
        VELSTATS_ROW(D, zeltcdff, Fisher, Fisher),
        VELSTATS_ROW(D, CdfF, Fisher, Fisher),
        VELSTATS_ROW(D, SigF, Fisher, Fisher),
        VELSTATS_ROW(D, zeltidff, FisherQuantile, FisherQuantile),
        VELSTATS_ROW(D, IdfF, FisherQuantile, FisherQuantile),

        VELSTATS_ROW(D, dnlbnc, LogBinomial, LogBinomial),
        VELSTATS_ROW(D, CdfBin, Binomial, Binomial),
        VELSTATS_ROW(D, PdfBin, Binomial, Binomial),
        VELSTATS_ROW(D, IdfBin, Exact, Exact),
        VELSTATS_ROW(D, PdfHyper, HyperDensity, HyperDensity),
        VELSTATS_ROW(D, CDFHyper, Hyper, Hyper),

        VELSTATS_ROW(D, ncdbet, NonCentral, NonCentral),
        VELSTATS_ROW(D, NonCentralCdfF, NonCentral, NonCentral),
        VELSTATS_ROW(D, NonCentralCdfChi, NonCentralChi, NonCentralChi),
        VELSTATS_ROW(D, NonCentralCdfT, NonCentralT, NonCentralT),
        VELSTATS_ROW(D, NonCentralPdfT, NonCentralTDensity, NonCentralTDensity),
        VELSTATS_ROW(D, FindNCParamChi, SearchTruth, SearchAlgorithm),
        VELSTATS_ROW(D, FindNCParamF, SearchFTruth, SearchAlgorithm),
        VELSTATS_ROW(D, FindNCParamT, SearchTruth, SearchAlgorithm),

        VELSTATS_ROW(D, GPTile, Percentile, Percentile),
        VELSTATS_ROW(D, Mednci, MedianLimits, MedianLimits),
    };
    return table;
}

#undef VELSTATS_ROW

}  // namespace

std::span<const Function> Functions() { return Table(); }

const Function& Find(const std::string& name)
{
    for (const Function& function : Functions())
        if (function.name == name) return function;
    throw std::runtime_error("no such function: " + name);
}

}  // namespace reference
