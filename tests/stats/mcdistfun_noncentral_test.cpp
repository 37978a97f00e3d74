#include <cmath>

#include "stats/mcdistfun.h"
#include "tests/stats/support/expect.h"

namespace {

using expect::kInf;
using expect::kNaN;
using expect::kTiniest;
using expect::Missing;
using D = MCMath_850::MCDistFun;

double Beta(double x, double a, double b, double lambda, double tolerance, long wantedCode = 0)
{
    long code = 99;
    const double result = D::ncdbet(x, a, b, lambda, code, tolerance);
    EXPECT_EQ(code, wantedCode) << x << ", " << a << ", " << b << ", " << lambda << ", "
                                << tolerance;
    return result;
}

double DensityT(double t, double df, double delta, long wantedCode = 0)
{
    return expect::Coded(D::NonCentralPdfT, wantedCode, t, df, delta);
}

TEST(NonCentralBeta, RefusesBadParameters)
{
    EXPECT_EQ(Beta(0.5, 0.0, 3.0, 1.0, 1e-6, 1), Missing());
    EXPECT_EQ(Beta(0.5, 2.0, 0.0, 1.0, 1e-6, 1), Missing());
    EXPECT_EQ(Beta(0.5, 2.0, 3.0, -1.0, 1e-6, 1), Missing());
    EXPECT_EQ(Beta(0.5, 2.0, 3.0, kNaN, 1e-6, 1), Missing());
}

TEST(NonCentralBeta, OfNoNonCentralityIsTheBetaRatio)
{
    long code = 0;
    EXPECT_EQ(Beta(0.5, 2.5, 3.5, 0.0, 1e-6), D::cdfbet(0.5, 2.5, 3.5, code));
    EXPECT_EQ(Beta(-1.0, 2.0, 3.0, 1.0, 1e-6), 0.0);
    EXPECT_EQ(Beta(1.0, 2.0, 3.0, 1.0, 1e-6), 1.0);
}

TEST(NonCentralBeta, ToleranceOfOneAsksForTheFirstTermAlone)
{
    // lambda 2 starts at 0: exp(-1) times the central ratio.
    long code = 0;
    const double central = D::cdfbet(0.5, 2.5, 3.5, code);
    EXPECT_TRUE(expect::Near(Beta(0.5, 2.5, 3.5, 2.0, 1.0), central * std::exp(-1.0), 1e-14));
    EXPECT_TRUE(expect::Near(Beta(0.5, 2.5, 3.5, 2.0, kInf), central * std::exp(-1.0), 1e-14));
}

TEST(NonCentralBeta, NegativeToleranceIsNeverReached)
{
    EXPECT_EQ(Beta(0.5, 2.5, 3.5, 2.0, -1.0, 2), Missing());
    EXPECT_EQ(D::NonCentralCdfF(1.0, 5.0, 7.0, 2.0, -1.0), Missing());
}

TEST(NonCentralBeta, FactorsOutOfRangeGiveZeroWithoutACode)
{
    EXPECT_EQ(Beta(1e-200, 8.0, 3.0, 1.0, 1e-6), 0.0);  // both the ratio and its step vanish
    EXPECT_EQ(Beta(0.5, 2.0, 3.0, kInf, 1e-6), 0.0);    // the first weight is exp(-infinity)
}

TEST(NonCentralBeta, StepThatVanishesLeavesTheFirstRatio)
{
    // (1 - x)^50 is 1e-800, but the ratio at x is 1, and so is the sum.
    EXPECT_NEAR(Beta(1.0 - 1e-16, 2.0, 50.0, 1.0, 1e-9), 1.0, 2e-9);
}

// Parameters beyond any accuracy, where the log gammas leave logarithms far above 0.
TEST(NonCentral, LogarithmsAboveTheLimitAnswerTheirFailure)
{
    EXPECT_EQ(Beta(0.99999999999999978, 0.4826022777966012, 89.698166051111002,
                   1.2599527995820874e+18, 1e-6),
              0.0);
    EXPECT_EQ(Beta(0.99999999999999978, 2.0, 3.0, 4.8555905692323558e+17, 1e-6), 0.0);
    EXPECT_EQ(D::NonCentralCdfChi(2.0 * 3.3496277225521472e+17, 2.0 * 0.88723867281072877,
                                  6.699255524465545e+17),
              Missing());
    EXPECT_EQ(D::NonCentralCdfChi(1e18, 3.0, 4.8555905692323558e+17), Missing());
    EXPECT_EQ(D::NonCentralCdfT(1934.9734372030998, 6.5092201167029936e+19, 1848.5671532210915),
              Missing());
    EXPECT_EQ(DensityT(5.1502195125890875, 7.1469463919735224e+18, 4.3803329031081075, 2),
              Missing());
}

TEST(NonCentralBeta, StartsAboveZeroForALargeNonCentrality)
{
    // 700 / 2 - 7.03 sqrt(350) is above 0; the mean of the beta is far above x.
    EXPECT_GE(Beta(0.99, 2.0, 3.0, 700.0, 1e-12), 0.0);
    EXPECT_LE(Beta(0.99, 2.0, 3.0, 700.0, 1e-12), 1.0);
}

TEST(NonCentralBeta, NaNEnds)
{
    EXPECT_TRUE(std::isnan(Beta(kNaN, 2.0, 3.0, 1.0, 1e-6)));
    EXPECT_EQ(D::NonCentralCdfF(1.0, kNaN, 3.0, 1.0, 1e-8), Missing());
    EXPECT_EQ(D::NonCentralCdfF(1.0, 2.0, kNaN, 1.0, 1e-8), Missing());
    EXPECT_EQ(D::NonCentralCdfF(1.0, 2.0, 3.0, kNaN, 1e-8), Missing());
}

TEST(NonCentralF, IsZeroUpToZeroAndMissingOutsideItsDomain)
{
    EXPECT_EQ(D::NonCentralCdfF(0.0, 2.0, 3.0, 1.0, 1e-8), 0.0);
    EXPECT_EQ(D::NonCentralCdfF(1.0, 0.0, 3.0, 1.0, 1e-8), Missing());
    EXPECT_EQ(D::NonCentralCdfF(1.0, 2.0, 0.0, 1.0, 1e-8), Missing());
    EXPECT_EQ(D::NonCentralCdfF(1.0, 2.0, 3.0, -1.0, 1e-8), Missing());
    EXPECT_EQ(D::NonCentralCdfF(1.0, kTiniest, 3.0, 1.0, 1e-8), Missing());  // its half is 0
}

TEST(NonCentralChi, IsZeroUpToZeroAndMissingOutsideItsDomain)
{
    EXPECT_EQ(D::NonCentralCdfChi(0.0, 3.0, 1.0), 0.0);
    EXPECT_EQ(D::NonCentralCdfChi(1.0, 0.0, 1.0), Missing());
    EXPECT_EQ(D::NonCentralCdfChi(1.0, 3.0, -1.0), Missing());
    EXPECT_EQ(D::NonCentralCdfChi(1.0, kNaN, 1.0), Missing());
    EXPECT_EQ(D::NonCentralCdfChi(1.0, 3.0, kNaN), Missing());
    EXPECT_EQ(D::NonCentralCdfChi(kNaN, 3.0, 1.0), Missing());  // the sum never settles
    EXPECT_EQ(D::NonCentralCdfChi(1.0, kTiniest, 1.0),
              Missing());  // the gamma function refuses its half
    EXPECT_EQ(D::NonCentralCdfChi(1e-200, 8.0, 1.0), 0.0);
    EXPECT_EQ(D::NonCentralCdfChi(1.0, 3.0, kInf), 0.0);
}

TEST(NonCentralT, HasItsShortRoads)
{
    EXPECT_EQ(D::NonCentralCdfT(0.0, 10.0, 2.0), D::prbnrm(-2.0));
    EXPECT_EQ(D::NonCentralCdfT(1.5, 10.0, 0.0), D::CdfT(1.5, 10.0));
    EXPECT_EQ(D::NonCentralCdfT(1e200, 5.0, 3.0), 1.0);
    EXPECT_EQ(D::NonCentralCdfT(-1e200, 5.0, 3.0), 0.0);
    EXPECT_EQ(D::NonCentralCdfT(kInf, 5.0, 3.0), 1.0);
    EXPECT_EQ(D::NonCentralCdfT(1.0, 0.0, 3.0), Missing());
}

TEST(NonCentralT, VanishingSquareIsMissing)
{
    EXPECT_EQ(D::NonCentralCdfT(1e-170, 5.0, 3.0), Missing());
    EXPECT_EQ(D::NonCentralCdfT(1.0, kInf, 3.0), Missing());
}

TEST(NonCentralT, RefusedHalfAndNaNsAreMissing)
{
    EXPECT_EQ(D::NonCentralCdfT(1.0, kTiniest, 3.0), Missing());
    EXPECT_EQ(D::NonCentralCdfT(kNaN, 5.0, 3.0), Missing());
    EXPECT_EQ(D::NonCentralCdfT(1.0, kNaN, 3.0), Missing());
    EXPECT_EQ(D::NonCentralCdfT(1.0, 5.0, kNaN), Missing());
    EXPECT_TRUE(std::isnan(D::NonCentralCdfT(0.0, 5.0, kNaN)));
}

TEST(NonCentral, SumsOutsideTheirRangeAreCutToIt)
{
    EXPECT_EQ(D::NonCentralCdfT(-0.36654830816937648, 33.768526760823775, -36.653991240494513),
              1.0);
    EXPECT_EQ(D::NonCentralCdfT(-47.496958007873907, 9.7605098468222273, 37.510327605396), 0.0);
    EXPECT_EQ(D::NonCentralCdfT(-27.392369492980105, 18.926371329972035, 32.6793000365086), 0.0);
}

TEST(NonCentralT, DeltaWhoseSquareVanishesIsMissing)
{
    EXPECT_EQ(D::NonCentralCdfT(1.0, 5.0, 1e-170), Missing());
}

// t' with -delta is the mirror image.
TEST(NonCentralT, MirrorsItsSigns)
{
    for (const double t : {-2.0, 0.5, 3.0})
        EXPECT_NEAR(D::NonCentralCdfT(t, 7.0, 1.2) + D::NonCentralCdfT(-t, 7.0, -1.2), 1.0, 1e-11);
}

TEST(NonCentralTDensity, OfNoNonCentralityIsStudents)
{
    long code = 0;
    EXPECT_EQ(DensityT(1.0, 5.0, 0.0), D::PdfT(1.0, 5.0, code));
    EXPECT_EQ(DensityT(1.0, 0.0, 0.0, 1), Missing());
    EXPECT_EQ(DensityT(1.0, -1.0, 2.0, 1), Missing());
}

TEST(NonCentralTDensity, AtZeroIsAClosedForm)
{
    // exp(-delta^2 / 2) times Student's density at 0.
    long code = 0;
    EXPECT_TRUE(
        expect::Near(DensityT(0.0, 5.0, 2.0), std::exp(-2.0) * D::PdfT(0.0, 5.0, code), 1e-12));
    EXPECT_EQ(DensityT(0.0, 5.0, 40.0), 0.0);
    EXPECT_EQ(DensityT(0.0, 5.0, kInf), 0.0);
    EXPECT_EQ(DensityT(0.0, 5.0, kNaN), 0.0);  // not above the smallest exponent
}

TEST(NonCentralTDensity, OverflowIsCodeTwo)
{
    EXPECT_EQ(DensityT(1e200, 5.0, 3.0, 2), Missing());
    EXPECT_EQ(DensityT(1.0, 1e20, 1e20, 2),
              Missing());  // the largest term lies beyond the last index
    EXPECT_EQ(DensityT(kNaN, 5.0, 3.0, 2), Missing());
    EXPECT_EQ(DensityT(1.0, kNaN, 3.0, 2), Missing());
    EXPECT_EQ(DensityT(1.0, 5.0, kNaN, 2), Missing());
    EXPECT_EQ(DensityT(kInf, 5.0, 3.0, 2), Missing());
}

// With next to no df the index of the largest term comes out as -1 by rounding; the series begins
// at 0 all the same. Wanted: the series to 40 digits with mpmath.
TEST(NonCentralTDensity, SeriesBeginsAtZeroWhereRoundingPutsItsStartBelow)
{
    EXPECT_TRUE(expect::Near(DensityT(1.0, 1e-17, 0.82), 7.938919464141868e-18, 2e-9));
    EXPECT_TRUE(expect::Near(DensityT(-1.0, 1e-17, 0.82), 2.0610805358581307e-18, 2e-9));
}

// t and delta of 1e4 at 1e8 df: about 5e4 terms count, so 10,000 each way leave some out. The
// density of the normal limit there is 0.3989 / sqrt(1.5) = 0.3257.
TEST(NonCentralTDensity, RunningOutOfRoundsIsNoFailure)
{
    const double density = DensityT(1e4, 1e8, 1e4);
    EXPECT_GT(density, 0.1);
    EXPECT_LT(density, 0.3257);
}

TEST(NonCentralTDensity, IsNeverNegativeWhereItsTermsCancel)
{
    for (const double delta : {5.0, 10.0, 15.0}) EXPECT_GE(DensityT(-5.0, 20.0, delta), 0.0);
    // The terms reach 1e5 times the density, which is below their rounding.
    EXPECT_GE(DensityT(-1.8057903109623912, 48.573589481353103, 10.77928486446981), 0.0);
    EXPECT_GE(DensityT(-5.7676783176061477, 11.179019218697755, 10.152537686204777), 0.0);
    EXPECT_GE(DensityT(-12.643533738918407, 79.442102568589291, 2.3754633092949766), 0.0);
}

}  // namespace
