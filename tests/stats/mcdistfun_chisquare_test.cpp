#include <cmath>

#include "stats/mcdistfun.h"
#include "tests/stats/support/expect.h"

namespace {

using expect::kInf;
using expect::kNaN;
using expect::kTiniest;
using expect::Missing;
using D = MCMath_850::MCDistFun;

double Quantile(double p, double df, long wantedCode = 0)
{
    return expect::Coded(D::zeltidfchi, wantedCode, p, df);
}

double Bisect(double p, double df, double start, long wantedCode = 0)
{
    return expect::Coded(D::idfchb, wantedCode, p, df, start);
}

TEST(ChiQuantile, EndsAreZeroAndRefused)
{
    EXPECT_EQ(Quantile(0.0, 3.0), 0.0);
    EXPECT_EQ(Quantile(1.0, 3.0, 1), Missing());
    EXPECT_EQ(Quantile(-0.1, 3.0, 1), Missing());
    EXPECT_EQ(Quantile(kNaN, 3.0, 1), Missing());
    EXPECT_EQ(Quantile(0.5, 0.0, 1), Missing());
    EXPECT_EQ(Quantile(0.5, -1.0, 1), Missing());
    EXPECT_EQ(D::IdfChi(1.0, 3.0), Missing());
}

TEST(ChiQuantile, NaNAndInfiniteDfEnd)
{
    EXPECT_TRUE(std::isnan(Quantile(0.5, kNaN)));
    EXPECT_EQ(Quantile(0.5, kInf, 2), Missing());  // its cube root start overflows
}

TEST(ChiQuantile, TinyDfPutsEveryQuantileAtZero)
{
    EXPECT_EQ(Quantile(0.5, 1e-4), 0.0);  // exp of less than -708
    EXPECT_EQ(Quantile(0.5, kTiniest), 0.0);
}

TEST(ChiQuantile, BisectionThatFindsNoBracketLeavesItsCodeTwo)
{
    EXPECT_EQ(Quantile(0.99999999999999656, 1e-16, 2), Missing());
}

TEST(ChiQuantile, StartValuesThatOverflowFailWithCodeTwo)
{
    EXPECT_EQ(Quantile(0.5, 1e62, 2), Missing());  // the log of the cube root start is 142.8
    EXPECT_EQ(D::IdfChi(0.5, 1e62), Missing());
    EXPECT_EQ(D::IdfGam(0.5, 1e62, 1.0), Missing());
}

// The residual's factor exp(L) overflows its limit for so small a p, so the bisection answers; what
// it answers has the probability it was asked for.
TEST(ChiQuantile, FarLowerTailComesFromTheBisection)
{
    const double x = Quantile(1e-290, 2000.0);
    EXPECT_TRUE(expect::Near(D::CdfChi(x, 2000.0), 1e-290, 1e-4));
}

TEST(ChiQuantile, TwentyRoundsWithoutAnEndGoOnAsTheBisection)
{
    const double x = Quantile(4.8300589577983733e-28, 266.18723199406224);
    EXPECT_TRUE(expect::Near(D::CdfChi(x, 266.18723199406224), 4.8300589577983733e-28, 1e-5));
}

// The start is ((df/2) p gamma(df/2))^(2/df) 2, here from its logarithm.
TEST(ChiQuantile, SmallChiStartBelowFiveTenMillionthsIsTheAnswer)
{
    const double x = Quantile(1e-3, 0.2);  // chi-square of about 1e-30
    const double xx = 0.1;
    const double wanted =
        std::exp((std::log(xx) + std::log(1e-3) + D::dnlgam(xx) + xx * 0.6931471805599453) / xx);
    EXPECT_LT(x, 5e-07);
    EXPECT_EQ(x, wanted);
}

TEST(ChiBisection, StartMustBePositive)
{
    EXPECT_EQ(Bisect(0.5, 3.0, 0.0, 1), Missing());
    EXPECT_EQ(Bisect(0.5, 3.0, -1.0, 1), Missing());
    EXPECT_EQ(Bisect(0.5, 0.0, 1.0, 2), Missing());  // the gamma function refuses the df
}

// The median for 3 df is 2.3659738843753383 (mpmath). The bracket reaches from half of the start to
// twice it, doubled once if need be.
TEST(ChiBisection, StartMayBeTwiceTooHighOrFourTimesTooLow)
{
    const double median = 2.3659738843753383;
    for (const double factor : {1.99, 1.0, 0.51, 0.26})
        EXPECT_TRUE(expect::Near(Bisect(0.5, 3.0, median * factor), median, 2e-8));
    EXPECT_EQ(Bisect(0.5, 3.0, median * 2.01, 2), Missing());
    EXPECT_EQ(Bisect(0.5, 3.0, median * 0.24, 2), Missing());
}

TEST(ChiBisection, NaNsEndWithinItsRounds)
{
    EXPECT_TRUE(std::isnan(Bisect(0.5, 3.0, kNaN)));
    EXPECT_TRUE(expect::Near(Bisect(0.5, kNaN, 4.0), 2.0, 2e-8));  // walks to the lower end
}

TEST(GammaQuantile, ShapeZeroPassesTheFirstTestOnly)
{
    EXPECT_EQ(D::IdfGam(0.0, 0.0, 1.0), 0.0);
    EXPECT_EQ(D::IdfGam(0.5, 0.0, 1.0), Missing());
    EXPECT_EQ(D::IdfGam(0.0, 2.0, 1.0), 0.0);
    EXPECT_EQ(D::IdfGam(1.0, 2.0, 1.0), Missing());
    EXPECT_EQ(D::IdfGam(0.5, -1.0, 1.0), Missing());
    EXPECT_EQ(D::IdfGam(0.5, 2.0, 0.0), Missing());
}

}  // namespace
