#include <cmath>

#include "stats/mcdistfun.h"
#include "tests/stats/support/expect.h"

namespace {

using expect::kInf;
using expect::kNaN;
using expect::kTiniest;
using expect::Missing;
using D = MCMath_850::MCDistFun;

double Beta(double x, double a, double b, long wantedCode = 0)
{
    return expect::Coded(D::cdfbet, wantedCode, x, a, b);
}

TEST(BetaAuxiliary, HasItsFixedPoints)
{
    EXPECT_EQ(D::cbtaux(-1e-300), Missing());
    EXPECT_EQ(D::cbtaux(0.0), 1.0);
    EXPECT_EQ(D::cbtaux(1.0), 0.0);
    EXPECT_EQ(D::cbtaux(1.3407807929942598e+154), -1.0);  // one above the limit
    EXPECT_EQ(D::cbtaux(kInf), -1.0);
    EXPECT_TRUE(expect::Near(D::cbtaux(1e100), -1.0, 1e-15));  // what it comes down to for large x
    EXPECT_TRUE(std::isnan(D::cbtaux(kNaN)));
}

TEST(IncompleteBeta, RefusesParametersThatAreNotPositive)
{
    EXPECT_EQ(Beta(0.5, 0.0, 1.0, 1), Missing());
    EXPECT_EQ(Beta(0.5, 1.0, -1.0, 1), Missing());
    EXPECT_EQ(Beta(-1.0, 0.0, 1.0, 1), Missing());  // before x is looked at
    EXPECT_EQ(D::CdfBeta(0.5, 0.0, 1.0), Missing());
}

TEST(IncompleteBeta, IsZeroAndOneAtTheEnds)
{
    EXPECT_EQ(Beta(0.0, 2.0, 3.0), 0.0);
    EXPECT_EQ(Beta(-kInf, 2.0, 3.0), 0.0);
    EXPECT_EQ(Beta(1.0, 2.0, 3.0), 1.0);
    EXPECT_EQ(Beta(kInf, 2.0, 3.0), 1.0);
}

TEST(IncompleteBeta, HasClosedFormsForParametersOfOne)
{
    EXPECT_EQ(Beta(0.3, 1.0, 1.0), 0.3);
    EXPECT_TRUE(expect::Near(Beta(0.25, 1.0, 2.0), 1.0 - 0.5625, 1e-15));
    EXPECT_TRUE(expect::Near(Beta(0.25, 2.0, 1.0), 0.0625, 1e-15));
    EXPECT_EQ(Beta(0.5, 1.0, 2000.0), 1.0);  // 0.5^2000 is below exp(-708)
    EXPECT_EQ(Beta(0.5, 2000.0, 1.0), 0.0);
}

// Values by tests/data/stats/branches.py: the series has not settled after 10,001 terms.
TEST(IncompleteBeta, SlowSeriesGoesOnAsTheFraction)
{
    EXPECT_TRUE(expect::Near(Beta(1.0 - 1e-8, 2.0, 0.5), 0.99985000000012314, 1e-12));
    EXPECT_TRUE(
        expect::Near(Beta(1e-8, 0.5, 2.0), 0.0001499999995, 1e-8));  // one minus the other tail
}

// Values by tests/data/stats/branches.py, from the same formula at 50 digits. t - p/N cancels to
// 1e-16 before it is multiplied by N = 1e13 and some 2e-6.
TEST(IncompleteBeta, HugeParametersFallBackToTheNormalApproximation)
{
    EXPECT_NEAR(Beta(0.029126214116201043, 3e11, 1e13), 0.50405698818558861, 2e-9);
    EXPECT_NEAR(Beta(0.76923076553550418, 1e12, 3e11), 0.49568026234783431, 2e-9);
}

TEST(IncompleteBeta, FarTailIsZeroThroughItsGuard)
{
    EXPECT_EQ(Beta(1e-100, 8.0, 3.0), 0.0);  // 1e-800
    EXPECT_EQ(Beta(1e-300, 8.0, 0.5), 0.0);
}

TEST(IncompleteBeta, NaNGoesThroughAllRoadsAndComesOut)
{
    EXPECT_TRUE(std::isnan(Beta(kNaN, 2.0, 3.0)));
    EXPECT_TRUE(std::isnan(Beta(kNaN, 0.5, 3.0)));
    EXPECT_TRUE(std::isnan(Beta(kNaN, 1.0, 3.0)));
    EXPECT_TRUE(std::isnan(Beta(0.5, kNaN, 3.0)));
    EXPECT_TRUE(std::isnan(Beta(0.5, 3.0, kNaN)));
}

TEST(BetaQuantile, EndsComeBeforeAnyTestOfTheParameters)
{
    EXPECT_EQ(D::betinv(0.0, -1.0, 5.0), 0.0);
    EXPECT_EQ(D::betinv(1.0, -1.0, 5.0), 1.0);
    EXPECT_EQ(D::betinv(0.0, kNaN, kNaN), 0.0);
}

TEST(BetaQuantile, FailureIsMinusOneAndNotTheMissingValue)
{
    EXPECT_EQ(D::betinv(0.5, -1.0, 5.0), -1.0);
    EXPECT_EQ(D::betinv(0.5, 1.0, 0.0), -1.0);
    EXPECT_EQ(D::IdfBeta(1.1, 2.0, 3.0), -1.0);
    EXPECT_EQ(D::IdfBeta(-0.1, 2.0, 3.0), -1.0);
    EXPECT_EQ(D::IdfBeta(kNaN, 2.0, 3.0), -1.0);
    EXPECT_EQ(D::IdfBeta(0.5, 2.0, kNaN), -1.0);
}

TEST(BetaQuantile, SymmetricParametersHaveClosedForms)
{
    EXPECT_EQ(D::betinv(0.5, 7.3, 7.3), 0.5);
    const double s = std::sin(0.3 * 0.5 * 3.141592653589793);
    EXPECT_EQ(D::betinv(0.3, 0.5, 0.5), s * s);
}

TEST(BetaQuantile, BothParametersOneTakeTheFormOfTheFirst)
{
    EXPECT_EQ(D::betinv(0.3, 1.0, 1.0), 1.0 - std::exp(std::log(0.7)));
    EXPECT_EQ(D::betinv(0.5, 1.0, 1.0), 0.5);
}

TEST(BetaQuantile, ClosedFormsHaveTheirGuards)
{
    EXPECT_TRUE(expect::Near(D::betinv(0.19, 1.0, 2.0), 0.1, 1e-15));
    EXPECT_TRUE(expect::Near(D::betinv(0.01, 2.0, 1.0), 0.1, 1e-15));
    EXPECT_EQ(D::betinv(0.5, 1.0, 1e-4), 1.0);  // log(0.5) / 1e-4 is below -708
    EXPECT_EQ(D::betinv(0.5, 1e-4, 1.0), 0.0);
}

TEST(BetaQuantile, SecondParameterThatVanishesBesideTheFirstGivesOne)
{
    EXPECT_EQ(D::betinv(0.5, 2.0, 2e-20), 1.0);
    EXPECT_EQ(D::betinv(0.5, 1e20, 0.5), 1.0);
}

TEST(BetaQuantile, OverflowAnswersTheMean)
{
    EXPECT_EQ(D::betinv(0.46, 1e-300, 0.05), 1e-300 / (1e-300 + 0.05));
}

// On purpose the start divides by alpha and not by A; 0.5 is below 1, so the road is taken, and the
// iteration makes up for it: the quantile of 0.3 for 0.7 and 0.5 has the probability 0.3.
TEST(BetaQuantile, OddStartValueIsMadeUpForByTheIteration)
{
    EXPECT_NEAR(Beta(D::betinv(0.3, 0.7, 0.5), 0.7, 0.5), 0.3, 1e-9);
}

// Values by tests/data/stats/branches.py. Each first step is above 3^200, and has to be cut below
// 1.
TEST(BetaQuantile, StepOfAnySizeIsCutUntilItStaysInside)
{
    EXPECT_NEAR(D::betinv(1e-20, 20.0, 0.5), 0.11063208709344213, 2e-10);
    EXPECT_NEAR(D::betinv(0.5, 3000.0, 0.05), 0.99999999981417463, 2e-10);
    EXPECT_NEAR(D::betinv(1e-11, 15.0, 0.5), 0.20870273591956823, 2e-10);
}

// On purpose the 50th round is the last, settled or not, and a factor that overflows ends it with
// the mean: so far out the answer is not the quantile (0.00257 and 0.108 by
// tests/data/stats/branches.py, which has the answers of the same steps at 50 digits as well).
TEST(BetaQuantile, SearchThatHasNotSettledEndsWhereItIs)
{
    EXPECT_NEAR(D::betinv(2e-40, 15.0, 0.5), 0.029941565745381748, 1e-12);
    EXPECT_EQ(D::betinv(2e-40, 40.0, 0.5), 40.0 / 40.5);
}

TEST(BetaQuantile, DampingIsBound)
{
    // An infinite parameter makes every step NaN, which no cut brings inside.
    EXPECT_EQ(D::betinv(0.3, kInf, 2.5), 1.0);  // the second vanishes beside it
    EXPECT_EQ(D::betinv(0.3, 2.5, kInf), -1.0);
}

// Quantiles of such parameters lie within 1e-12 of 1: the step is held off from it, and the
// iteration ends there or where its steps have shrunk to nothing.
TEST(BetaQuantile, StepsAreHeldOffFromOne)
{
    const double first = D::betinv(0.26153703757343177, 558.07868062553121, 0.011104165147031062);
    EXPECT_GE(first, 1.0 - 1e-10);
    EXPECT_LT(first, 1.0);
    const double second = D::betinv(0.22318561696829725, 32.344132957654438, 0.010980991419876986);
    EXPECT_GE(second, 1.0 - 1e-10);
    EXPECT_LT(second, 1.0);
}

TEST(BetaQuantile, NothingBelowItsMarginComesOut)
{
    // The quantile itself is 1e-30^(1/0.05) = 0 in double.
    EXPECT_GE(D::betinv(1e-30, 0.05, 2.0), 0.0);
    EXPECT_LE(D::betinv(1e-30, 0.05, 2.0), 1e-8);
}

TEST(BetaQuantile, TiniestParametersEnd)
{
    for (const double p : {1e-300, 0.25, 0.75})
        for (const double a : {kTiniest, 0.3, 1e300}) {
            const double x = D::betinv(p, a, 0.3);
            EXPECT_TRUE(x == -1.0 || (x >= 0.0 && x <= 1.0)) << p << ", " << a << ": " << x;
        }
}

}  // namespace
