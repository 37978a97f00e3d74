#include <cmath>
#include <limits>

#include "stats/mcdistfun.h"
#include "tests/stats/support/expect.h"

namespace {

using expect::kInf;
using expect::kNaN;
using expect::Missing;
using D = MCMath_850::MCDistFun;

double Cdf(double x, double population, double successes, double draws, int wantedCode = 0)
{
    int code = 99;
    const double result = D::CDFHyper(x, population, successes, draws, code);
    EXPECT_EQ(code, wantedCode) << x << ", " << population << ", " << successes << ", " << draws;
    return result;
}

TEST(HyperPdf, IsMissingAndNotZeroOutsideTheSupport)
{
    EXPECT_EQ(D::PdfHyper(-1, 20, 7, 3), Missing());
    EXPECT_EQ(D::PdfHyper(4, 20, 7, 3), Missing());
    EXPECT_EQ(D::PdfHyper(0, 10, 8, 5), Missing());  // at least 3 must come
}

TEST(HyperPdf, RefusesCountsOutOfOrder)
{
    EXPECT_EQ(D::PdfHyper(0, 20, 0, 3), Missing());
    EXPECT_EQ(D::PdfHyper(0, 20, 21, 3), Missing());
    EXPECT_EQ(D::PdfHyper(0, 20, 7, 0), Missing());
    EXPECT_EQ(D::PdfHyper(0, 20, 7, 21), Missing());
}

TEST(HyperPdf, ExtremeCountsDoNotOverflow)
{
    constexpr long most = std::numeric_limits<long>::max();
    constexpr long least = std::numeric_limits<long>::min();
    for (const long x : {least, 0L, most})
        for (const long n : {least, 0L, 1L, most}) {
            const double p = D::PdfHyper(x, most, n, most);
            EXPECT_TRUE(p == Missing() || (p >= 0.0)) << x << ", " << n;
        }
}

// (7 over 2)(13 over 1) / (20 over 3) = 21 * 13 / 1140.
TEST(HyperPdf, IsTheRatioOfCoefficients)
{
    EXPECT_TRUE(expect::Near(D::PdfHyper(2, 20, 7, 3), 273.0 / 1140.0, 1e-12));
    EXPECT_EQ(D::PdfHyper(0, 10000, 5000, 5000), 0.0);  // 2^-10000
}

TEST(HyperCdf, RefusesFractionsAndCountsOutOfOrder)
{
    EXPECT_EQ(Cdf(1.0, 20.0, 7.5, 3.0, 1), Missing());
    EXPECT_EQ(Cdf(1.0, 20.5, 7.0, 3.0, 1), Missing());
    EXPECT_EQ(Cdf(1.0, 20.0, 7.0, 3.5, 1), Missing());
    EXPECT_EQ(Cdf(1.0, 20.0, 0.0, 3.0, 1), Missing());
    EXPECT_EQ(Cdf(1.0, 20.0, 7.0, 21.0, 1), Missing());
    EXPECT_EQ(Cdf(1.0, 1e19, 7.0, 3.0, 1), Missing());
    EXPECT_EQ(Cdf(1.0, kInf, 7.0, 3.0, 1), Missing());
    for (const double bad : {kNaN, -kInf}) {
        EXPECT_EQ(Cdf(1.0, bad, 7.0, 3.0, 1), Missing());
        EXPECT_EQ(Cdf(1.0, 20.0, bad, 3.0, 1), Missing());
        EXPECT_EQ(Cdf(1.0, 20.0, 7.0, bad, 1), Missing());
    }
}

TEST(HyperCdf, IsZeroBelowTheSupportAndOneFromItsTopOn)
{
    EXPECT_EQ(Cdf(-1.0, 20.0, 7.0, 3.0), 0.0);
    EXPECT_EQ(Cdf(2.0, 10.0, 8.0, 5.0), 0.0);
    EXPECT_EQ(Cdf(3.0, 20.0, 7.0, 3.0), 1.0);
    EXPECT_EQ(Cdf(kInf, 20.0, 7.0, 3.0), 1.0);
    EXPECT_TRUE(std::isnan(Cdf(kNaN, 20.0, 7.0, 3.0)));
}

// x is cut towards 0, so -0.5 counts as 0: (13 over 3) / (20 over 3) = 286 / 1140.
TEST(HyperCdf, CutsXTowardsZero)
{
    EXPECT_TRUE(expect::Near(Cdf(-0.5, 20.0, 7.0, 3.0), 286.0 / 1140.0, 1e-12));
}

// The sum over the support is 1: each point once from below and once as a complement.
TEST(HyperCdf, AgreesWithTheSumOfItsPoints)
{
    for (const long successes : {3L, 10L, 17L})
        for (const long draws : {2L, 10L, 18L}) {
            double sum = 0.0;
            for (long x = std::max(0L, successes + draws - 20); x <= std::min(successes, draws);
                 ++x) {
                sum += D::PdfHyper(x, 20, successes, draws);
                EXPECT_NEAR(Cdf(double(x), 20.0, double(successes), double(draws)), sum, 1e-12);
            }
        }
}

// On purpose. The smooth value for the first is 0.539 (branches.py).
TEST(HyperCdf, PopulationsAboveAThousandAnswerAStepAtTheMean)
{
    EXPECT_EQ(Cdf(2.0, 2000.0, 100.0, 50.0), 0.0);
    EXPECT_EQ(Cdf(3.0, 2000.0, 100.0, 50.0), 1.0);
    EXPECT_EQ(Cdf(8.0, 5000.0, 300.0, 150.0), 0.0);
    EXPECT_EQ(Cdf(9.0, 5000.0, 300.0, 150.0), 0.0);  // mean 9: 301 + 150 + 45000 against 9 * 5002
    EXPECT_EQ(Cdf(10.0, 5000.0, 300.0, 150.0), 1.0);
}

// Beyond 1e15 the log probability is rounding and can be anything; each way through it ends.
TEST(HyperCdf, PopulationsBeyondAllAccuracyStillEnd)
{
    for (const double x : {0.0, 23.0, 54.0})
        Cdf(x, 1.531742643562754e+18, 55.0, 42273557752287728.0);
    for (const double x : {6.0, 30.0}) Cdf(x, 1.2755908594473485e+17, 38.0, 28528516643811492.0);
    Cdf(55.0, 1.835188042016345e+17, 221.0, 991014200671943.0);
}

TEST(HyperCdf, LargePopulationsTakeTheNormalShortcutOnlyWithEnoughOfBothGroups)
{
    // mean 5000, deviation sqrt(0.5 * 5000 * 10000 / 19999)
    const double deviation = std::sqrt(0.5 * 5000.0 * (10000.0 / 19999.0));
    EXPECT_TRUE(
        expect::Near(Cdf(5000.0, 20000.0, 10000.0, 10000.0), D::prbnrm(0.5 / deviation), 1e-12));
    EXPECT_EQ(Cdf(1.0, 20000.0, 10.0, 10000.0), 0.0);  // 10 successes are too few: a step
}

// The mean of 100 draws, half of the population successes, is 50. Up to a population of 10,000 the
// answer there is the step, 0.0; one more and it is the normal distribution half a count above its
// mean.
TEST(HyperCdf, NormalShortcutBeginsAboveTenThousand)
{
    EXPECT_EQ(Cdf(50.0, 10000.0, 5000.0, 100.0), 0.0);
    const double mean = 100.0 * 5000.0 / 10001.0;
    const double deviation = std::sqrt(mean * (5001.0 / 10001.0) * (9901.0 / 10000.0));
    const double z = (50.0 + 0.5 - mean) / deviation;
    EXPECT_NEAR(Cdf(50.0, 10001.0, 5000.0, 100.0), std::erfc(-z / std::sqrt(2.0)) / 2.0, 1e-12);
}

}  // namespace
