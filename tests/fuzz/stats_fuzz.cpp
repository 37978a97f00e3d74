// The statistics functions over raw bit patterns: they come back, and what is a probability lies
// within 0 and 1 or is missing.

#include <cmath>
#include <tuple>
#include <utility>
#include <vector>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "tests/fuzz/fuzztarget.h"

namespace MCVelscore_850::fuzz {

namespace {

using D = MCMath_850::MCDistFun;

// An argument: mostly near what is usual, now and then any pattern at all.
template <class T>
T Argument(Choices& choices)
{
    static constexpr double kUsual[] = {0.0,   1.0,  -1.0,  0.5, 2.0, 1e-8,
                                        0.999, 10.0, 100.0, 1e6, -5.5};
    if constexpr (std::is_same_v<T, double>) {
        const double usual = choices.OneOf(kUsual);
        switch (choices.Below(3)) {
            case 0: return usual;
            case 1: return usual + static_cast<double>(choices.Raw<int16_t>()) / 4096.0;
            default: return choices.Raw<double>();
        }
    } else if constexpr (std::is_same_v<T, bool>) {
        return choices.IsTrue();
    } else {
        return static_cast<T>(choices.Raw<int32_t>());
    }
}

template <class R, class... P>
double Call(R (*function)(P...), Choices& choices)
{
    // Drawn from left to right, as braces promise.
    std::tuple<std::remove_cvref_t<P>...> arguments{Argument<std::remove_cvref_t<P>>(choices)...};
    return std::apply([&](auto&... x) { return static_cast<double>(function(x...)); }, arguments);
}

struct Row {
    const char* name;
    double (*call)(Choices&);
    bool isProbability;
};
#define PROBABILITY(NAME)                                          \
    {                                                              \
#NAME, [](Choices & c) { return Call(&D::NAME, c); }, true \
    }
#define NUMBER(NAME)                                                \
    {                                                               \
#NAME, [](Choices & c) { return Call(&D::NAME, c); }, false \
    }
constexpr Row kRows[] = {
    PROBABILITY(prbnrm),
    PROBABILITY(CdfStdNorm),
    PROBABILITY(CdfNorm),
    PROBABILITY(gammad),
    PROBABILITY(cdfexp),
    PROBABILITY(CdfGam),
    PROBABILITY(CdfChi),
    PROBABILITY(SigChi),
    PROBABILITY(cdfbet),
    PROBABILITY(CdfBeta),
    PROBABILITY(zeltcdft),
    PROBABILITY(CdfT),
    PROBABILITY(SigT),
    PROBABILITY(zeltcdff),
    PROBABILITY(CdfF),
    PROBABILITY(SigF),
    PROBABILITY(CdfBin),
    PROBABILITY(PdfBin),
    PROBABILITY(PdfHyper),
    PROBABILITY(CDFHyper),
    PROBABILITY(ncdbet),
    PROBABILITY(NonCentralCdfF),
    PROBABILITY(NonCentralCdfChi),
    PROBABILITY(NonCentralCdfT),
    NUMBER(probit),
    NUMBER(derf),
    NUMBER(derfc),
    NUMBER(IdfStdNorm),
    NUMBER(IdfNorm),
    NUMBER(PdfNormalStandard),
    NUMBER(PdfNormal),
    NUMBER(dnlgam),
    NUMBER(zeltdnlgam),
    NUMBER(PdfGamma),
    NUMBER(IdfGam),
    NUMBER(zeltidfchi),
    NUMBER(idfchb),
    NUMBER(IdfChi),
    NUMBER(cbtaux),
    NUMBER(betinv),
    NUMBER(IdfBeta),
    NUMBER(PdfT),
    NUMBER(zeltidft),
    NUMBER(IdfT),
    NUMBER(zeltidff),
    NUMBER(IdfF),
    NUMBER(dnlbnc),
    NUMBER(IdfBin),
    NUMBER(NonCentralPdfT),
    NUMBER(FindNCParamChi),
    NUMBER(FindNCParamF),
    NUMBER(FindNCParamT),
};
#undef PROBABILITY
#undef NUMBER

}  // namespace

void CheckStatistics(Choices& choices)
{
    const Row& row = choices.OneOf(kRows);
    const double answer = row.call(choices);
    // NaN is what a NaN among the arguments gives.
    if (!row.isProbability || std::isnan(answer) || MCCommon_850::MCMV::IsMissing(answer)) return;
    Require(answer >= 0.0 && answer <= 1.0,
            std::string(row.name) + " within 0 and 1 or missing, not " + std::to_string(answer));
}

}  // namespace MCVelscore_850::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    using namespace MCVelscore_850::fuzz;
    Choices choices(TextOf(bytes, size));
    CheckStatistics(choices);
    return 0;
}
