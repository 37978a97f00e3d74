#include <cmath>

#include "stats/mcdistfun.h"
#include "tests/stats/support/expect.h"

namespace {

using expect::kInf;
using expect::kNaN;
using expect::kTiniest;
using expect::Missing;
using D = MCMath_850::MCDistFun;

TEST(LogGamma, IsExactAtOneTwoAndOneHalf)
{
    EXPECT_EQ(D::dnlgam(1.0), 0.0);
    EXPECT_EQ(D::dnlgam(2.0), 0.0);
    EXPECT_EQ(D::dnlgam(0.5), 0.5723649429247001);
    EXPECT_EQ(D::zeltdnlgam(0.5), 0.5723649429247001);
}

TEST(LogGamma, IsMissingAtOnceForZeroAndBelow)
{
    // At -1.5 the polynomial for small arguments is positive: it alone would not refuse it.
    for (const double x : {0.0, -0.0, -kTiniest, -0.5, -1.0, -1.5, -100.0, -kInf})
        EXPECT_EQ(D::dnlgam(x), Missing()) << x;
}

TEST(LogGamma, NaNAndInfinityGiveNaN)
{
    EXPECT_TRUE(std::isnan(D::dnlgam(kNaN)));
    EXPECT_TRUE(std::isnan(D::dnlgam(kInf)));
}

// gamma(n) = (n - 1)!, through the ranges of the approximation: 6, 24, 720, 5040, 40320.
TEST(LogGamma, IsTheLogOfTheFactorial)
{
    EXPECT_TRUE(expect::Near(D::dnlgam(4.0), std::log(6.0), 2e-15));
    EXPECT_TRUE(expect::Near(D::dnlgam(7.0), std::log(720.0), 2e-15));
    EXPECT_TRUE(expect::Near(D::dnlgam(8.0), std::log(5040.0), 2e-15));
    EXPECT_TRUE(expect::Near(D::dnlgam(9.0), std::log(40320.0), 2e-15));
}

double Gamma(double x, double a, bool lower, long wantedCode = 0)
{
    long code = 99;
    const double result = D::gammad(x, a, lower, code);
    EXPECT_EQ(code, wantedCode);
    return result;
}

TEST(IncompleteGamma, StartsAtZeroAndItsComplementAtOne)
{
    for (const double x : {0.0, -1.0, -kInf}) {
        EXPECT_EQ(Gamma(x, 2.5, true), 0.0);
        EXPECT_EQ(Gamma(x, 2.5, false), 1.0);
    }
}

TEST(IncompleteGamma, RefusesAParameterThatIsNotPositive)
{
    EXPECT_EQ(Gamma(1.0, 0.0, true, 1), Missing());
    EXPECT_EQ(Gamma(1.0, -1.0, false, 1), Missing());
    EXPECT_EQ(Gamma(0.0, 0.0, true, 1), Missing());  // before x is looked at
}

TEST(IncompleteGamma, WithParameterOneIsTheExponential)
{
    EXPECT_EQ(Gamma(2.0, 1.0, false), std::exp(-2.0));
    EXPECT_EQ(Gamma(2.0, 1.0, true), 1.0 - std::exp(-2.0));
    EXPECT_EQ(Gamma(708.5, 1.0, false), 0.0);  // exp(-708.5) itself is 2e-308
    EXPECT_EQ(Gamma(708.5, 1.0, true), 1.0);
}

TEST(IncompleteGamma, TailsBelowTheGuardAreZeroAndOne)
{
    EXPECT_EQ(Gamma(800.0, 2.0, false), 0.0);
    EXPECT_EQ(Gamma(800.0, 2.0, true), 1.0);
    EXPECT_EQ(Gamma(1e-200, 2.0, true), 0.0);  // 5e-401
    EXPECT_EQ(Gamma(1e-200, 2.0, false), 1.0);
}

TEST(IncompleteGamma, StaysAProbabilityWhereOnlyTheNormalApproximationsServe)
{
    // Argument pairs: too many terms; a logarithm of 0; an x whose fourth power overflows.
    struct Pair {
        double x, a;
    };
    for (const Pair w : {Pair{1e16, 1e16}, Pair{1.0, 1e-20}, Pair{1e-300, 1e-310}, Pair{1e80, 2.0},
                         Pair{1e80, 0.25}, Pair{1e6, 1e6 + 5}}) {
        const double lower = Gamma(w.x, w.a, true);
        const double upper = Gamma(w.x, w.a, false);
        EXPECT_GE(lower, 0.0);
        EXPECT_LE(lower, 1.0);
        EXPECT_NEAR(lower + upper, 1.0, 0.01) << w.x << ", " << w.a;
    }
}

// The series would be too long for these, the fraction is not: Q(3, 4) = (1 + 4 + 8) exp(-4).
TEST(IncompleteGamma, LengthOfTheSeriesCountsOnlyWhereItIsTheSeries)
{
    EXPECT_TRUE(expect::Near(Gamma(4.0, 3.0, false), 13.0 * std::exp(-4.0), 1e-14));
    EXPECT_TRUE(expect::Near(Gamma(4.0, 3.0, true), 1.0 - 13.0 * std::exp(-4.0), 1e-14));
}

// At 1 it is still the series, and for the smallest parameters the normal approximation instead of
// it, whose tail is 0; the fraction would have 2.2e-18.
TEST(IncompleteGamma, FractionBeginsAboveOne)
{
    EXPECT_EQ(Gamma(1.0, 1e-17, false), 0.0);
    EXPECT_GT(Gamma(1.0 + 1e-15, 1e-17, false), 2e-18);
}

// The convergents are about 1 / x here: they have to agree relatively. Value by
// tests/data/stats/branches.py.
TEST(IncompleteGamma, FractionEndsOnARelativeDifference)
{
    EXPECT_TRUE(expect::Near(Gamma(100.0, 0.125, false), 8.7052780108565328e-47, 1e-13));
}

// a log x is rounded to units here, so that the tail seems to be exp(3.6).
TEST(IncompleteGamma, TailAboveOneIsReplacedByTheNormalApproximation)
{
    EXPECT_NEAR(Gamma(280510346140001.0, 280510346140000.03125, false), 0.5, 1e-6);
}

// d = (a - 0.5) / x is exactly 0 for a = 0.5 and exactly 1 for x = a - 0.5: no logarithm is taken.
TEST(IncompleteGamma, UpperApproximationHasItsTwoSpecialPoints)
{
    EXPECT_EQ(Gamma(1e80, 0.5, false), 0.0);
    EXPECT_NEAR(Gamma(1e80, 1e80, false), 0.5, 1e-6);
}

TEST(IncompleteGamma, LowerApproximationAtTheMeanTakesNoCubeRoot)
{
    EXPECT_NEAR(Gamma(1e20, 1e20, true), 0.5, 1e-6);
}

TEST(IncompleteGamma, NaNAndInfinityEnd)
{
    EXPECT_TRUE(std::isnan(Gamma(kNaN, 2.0, true)));
    EXPECT_TRUE(std::isnan(Gamma(kNaN, 1.0, true)));
    EXPECT_TRUE(std::isnan(Gamma(2.0, kNaN, true)));
    EXPECT_TRUE(std::isnan(Gamma(kInf, 2.0, false)));
    EXPECT_EQ(Gamma(kInf, 2.0, true), 1.0);
    EXPECT_TRUE(std::isnan(Gamma(2.0, kInf, true)));
}

TEST(Exponential, RefusesARateThatIsNotPositive)
{
    long code = 99;
    EXPECT_EQ(D::cdfexp(1.0, 0.0, code), Missing());
    EXPECT_EQ(code, 1);
    EXPECT_EQ(D::cdfexp(1.0, -1.0, code), Missing());
    EXPECT_EQ(D::cdfexp(-1.0, 1.0, code), 0.0);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(D::cdfexp(1e6, 1.0, code), 1.0);  // its exponential underflows to 0
}

TEST(PdfGamma, AtZeroDependsOnTheShape)
{
    EXPECT_EQ(D::PdfGamma(0.0, 2.0, 1.0), 0.0);
    EXPECT_EQ(D::PdfGamma(0.0, 1.0, 3.0), 3.0);
    EXPECT_EQ(D::PdfGamma(0.0, 0.5, 1.0), Missing());
    EXPECT_EQ(D::PdfGamma(-1.0, 0.5, 1.0), 0.0);
}

TEST(PdfGamma, IsMissingOutsideItsDomainOnOverflowAndForNaN)
{
    EXPECT_EQ(D::PdfGamma(1.0, 0.0, 1.0), Missing());
    EXPECT_EQ(D::PdfGamma(1.0, 1.0, 0.0), Missing());
    EXPECT_EQ(D::PdfGamma(1.0, kNaN, 1.0), Missing());
    EXPECT_EQ(D::PdfGamma(1.0, 1.0, kNaN), Missing());
    EXPECT_EQ(D::PdfGamma(1e-312, 0.5, 1e308), Missing());  // about e^713
    EXPECT_EQ(D::PdfGamma(kNaN, 2.0, 1.0), Missing());
    EXPECT_EQ(D::PdfGamma(1000.0, 2.0, 1.0), 0.0);
}

TEST(CdfGam, OfShapeOneIsTheExponential)
{
    long code = 99;
    EXPECT_EQ(D::CdfGam(0.7, 1.0, 1.3), D::cdfexp(0.7, 1.3, code));
    EXPECT_EQ(D::CdfGam(-1.0, 2.0, 1.0), 0.0);
    EXPECT_EQ(D::CdfGam(1.0, 0.0, 1.0), Missing());
    EXPECT_EQ(D::CdfGam(1.0, 1.0, -1.0), Missing());
    EXPECT_TRUE(std::isnan(D::CdfGam(1.0, kNaN, 1.0)));
}

TEST(ChiSquare, RefusesADfWhoseHalfVanishes)
{
    EXPECT_EQ(D::CdfChi(1.0, kTiniest), Missing());
    EXPECT_EQ(D::SigChi(1.0, kTiniest), Missing());
    for (const double df : {0.0, -1.0, kNaN}) {
        EXPECT_EQ(D::CdfChi(1.0, df), Missing());
        EXPECT_EQ(D::SigChi(1.0, df), Missing());
    }
    EXPECT_EQ(D::CdfChi(-1.0, 3.0), 0.0);
    EXPECT_EQ(D::SigChi(-1.0, 3.0), 1.0);
}

}  // namespace
