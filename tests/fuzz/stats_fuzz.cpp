// The statistics functions over raw bit patterns: they come back, and what is a probability lies
// within 0 and 1 or is missing. Where a method's sums are as long as its arguments are large (up to
// seconds for one answer), finite arguments are folded into a range in which they are short.

#include <cmath>
#include <limits>
#include <tuple>
#include <utility>
#include <vector>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "tests/fuzz/fuzztarget.h"

namespace MCVelscore_850::fuzz {

namespace {

using D = MCMath_850::MCDistFun;

constexpr double kAnySize = std::numeric_limits<double>::infinity();

// Folds a finite number to a size below `reach`.
double Within(double reach, double x) { return std::isfinite(x) ? std::fmod(x, reach) : x; }

// An argument: mostly near what is usual, now and then any pattern at all.
template <class T>
T Argument(Choices& choices, double reach)
{
    static constexpr double kUsual[] = {0.0,   1.0,  -1.0,  0.5, 2.0, 1e-8,
                                        0.999, 10.0, 100.0, 1e6, -5.5};
    if constexpr (std::is_same_v<T, double>) {
        const double usual = Within(reach, choices.OneOf(kUsual));
        switch (choices.Below(3)) {
            case 0: return usual;
            case 1: return usual + static_cast<double>(choices.Raw<int16_t>()) / 4096.0;
            default: return Within(reach, choices.Raw<double>());
        }
    } else if constexpr (std::is_same_v<T, bool>) {
        return choices.IsTrue();
    } else {
        return static_cast<T>(choices.Raw<int32_t>());
    }
}

template <class R, class... P>
double Answer(R (*function)(P...), Choices& choices, double reach)
{
    // Drawn from left to right, as braces promise.
    std::tuple<std::remove_cvref_t<P>...> arguments{
        Argument<std::remove_cvref_t<P>>(choices, reach)...};
    return std::apply([&](auto&... x) { return static_cast<double>(function(x...)); }, arguments);
}

template <auto function>
double Call(Choices& choices, double reach)
{
    return Answer(function, choices, reach);
}

// The searches take all their 60,000 steps, and each step all terms of a sum, for a probability
// that F only comes near to and for a tolerance that rounding doesn't let them reach: seconds for
// one answer. What is a probability or a tolerance is drawn from where that doesn't happen.
double Reached(double p)
{
    constexpr double kNearest = 1e-6;
    return p >= 0.0 && p <= 1.0 ? kNearest + p * (1.0 - 2.0 * kNearest) : p;
}
double Kept(double tolerance) { return tolerance >= 0.0 ? tolerance + 1e-9 : tolerance; }

double FindNCParamF(double f, double df1, double df2, double p, double tolerance)
{
    return D::FindNCParamF(f, df1, df2, Reached(p), Kept(tolerance));
}
double FindNCParamT(double t, double df, double p, double tolerance)
{
    return D::FindNCParamT(t, df, Reached(p), Kept(tolerance));
}

// Beta ratios, binomial and hypergeometric probabilities are exponentials of sums of log gammas,
// and nothing cuts off what rounding puts beyond 0 and 1: the more the larger the parameters are.
constexpr double kRounding = 1e-9;
constexpr double kRoundingOfLarge = 1e-3;

struct Row {
    const char* name;
    double (*call)(Choices&, double reach);
    bool isProbability;
    double reach = kAnySize;  ///< of finite arguments
    bool isShort = false;     ///< beyond it too: now and then its arguments have any size
    bool isRounded = false;   ///< a probability as it comes, with its rounding
    uint32_t share = 1;       ///< of how many of its inputs one is worth the time
};
// clang-format takes the brackets for comparisons.
// clang-format off
#define NAMED(NAME) #NAME, Call<&D::NAME>
// clang-format on
constexpr Row kRows[] = {
    // What is drawn once an input is used up, so in no share.
    {NAMED(prbnrm), true},
    {NAMED(CdfStdNorm), true},
    {NAMED(CdfNorm), true},
    {NAMED(gammad), true, 1e6},
    {NAMED(cdfexp), true},
    {NAMED(CdfGam), true, 1e6},
    {NAMED(CdfChi), true, 1e6},
    {NAMED(SigChi), true, 1e6},
    {NAMED(cdfbet), true, 1e3, true, true},
    {NAMED(CdfBeta), true, 1e3, true, true, 2},
    {NAMED(zeltcdft), true, 1e3, true, true},
    {NAMED(CdfT), true, 1e3, true, true, 2},
    {NAMED(SigT), true, 1e3, true, true, 2},
    {NAMED(zeltcdff), true, 1e3, true, true},
    {NAMED(CdfF), true, 1e3, true, true},
    {NAMED(SigF), true, 1e3, true, true},
    {NAMED(CdfBin), true, 1e9, false, true},
    {NAMED(PdfBin), true, kAnySize, false, true},
    {NAMED(PdfHyper), true, kAnySize, false, true},
    {NAMED(CDFHyper), true, 1e9, false, true},
    {NAMED(ncdbet), true, 1e2, false, true, 2},
    {NAMED(NonCentralCdfF), true, 1e2, false, true, 8},
    {NAMED(NonCentralCdfChi), true, 1e3},
    {NAMED(NonCentralCdfT), true, 1e2, true, false, 8},
    {NAMED(probit), false},
    {NAMED(derf), false},
    {NAMED(derfc), false},
    {NAMED(IdfStdNorm), false},
    {NAMED(IdfNorm), false},
    {NAMED(PdfNormalStandard), false},
    {NAMED(PdfNormal), false},
    {NAMED(dnlgam), false},
    {NAMED(zeltdnlgam), false},
    {NAMED(PdfGamma), false},
    {NAMED(IdfGam), false, 1e4},
    {NAMED(zeltidfchi), false, 1e4},
    {NAMED(idfchb), false, 1e4},
    {NAMED(IdfChi), false, 1e4},
    {NAMED(cbtaux), false, 1e3, true},
    {NAMED(betinv), false, 1e3, true, false, 2},
    {NAMED(IdfBeta), false, 1e3, true, false, 4},
    {NAMED(PdfT), false},
    {NAMED(zeltidft), false, 1e3, true, false, 2},
    {NAMED(IdfT), false, 1e3, true, false, 4},
    {NAMED(zeltidff), false, 1e3, true, false, 2},
    {NAMED(IdfF), false, 1e3, true, false, 2},
    {NAMED(dnlbnc), false},
    {NAMED(IdfBin), false, 1e9},
    {NAMED(NonCentralPdfT), false, 1e2, true, false, 4},
    {NAMED(FindNCParamChi), false, 1e2, false, false, 4},
    {"FindNCParamF", Call<FindNCParamF>, false, 10.0, false, false, 128},
    {"FindNCParamT", Call<FindNCParamT>, false, 10.0, false, false, 128},
};
#undef NAMED

// A costly function is answered for its share of the inputs; the others draw another one.
const Row& DrawnRow(Choices& choices, std::string_view bytes)
{
    const Row* row = &choices.OneOf(kRows);
    while (!IsInShare(bytes, row->share)) row = &choices.OneOf(kRows);
    return *row;
}

}  // namespace

void CheckStatistics(std::string_view bytes)
{
    Choices choices(bytes);
    const Row& row = DrawnRow(choices, bytes);
    const bool anySize = row.reach == kAnySize || (row.isShort && choices.Below(32) == 0);
    const double answer = row.call(choices, anySize ? kAnySize : row.reach);
    // NaN is what a NaN among the arguments gives.
    if (!row.isProbability || std::isnan(answer) || MCCommon_850::MCMV::IsMissing(answer)) return;
    // An incomplete beta ratio ends its fraction at a difference that grows with its parameters: of
    // some 1e13 and more nothing is promised but that it comes back.
    if (row.isRounded && row.isShort && anySize) return;
    double rounding = 0.0;
    if (row.isRounded) rounding = row.reach > 1e3 ? kRoundingOfLarge : kRounding;
    char told[32];
    std::snprintf(told, sizeof told, "%.17g", answer);
    Require(answer >= -rounding && answer <= 1.0 + rounding,
            std::string(row.name) + " within 0 and 1 or missing, not " + told);
}

}  // namespace MCVelscore_850::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    MCVelscore_850::fuzz::CheckStatistics(MCVelscore_850::fuzz::TextOf(bytes, size));
    return 0;
}
