#include <cmath>

#include "stats/mcdistfun.h"
#include "stats/precise.h"
#include "tests/stats/support/expect.h"

namespace {

using expect::kInf;
using expect::kNaN;
using expect::kTiniest;
using expect::Missing;
using D = MCMath_850::MCDistFun;

TEST(FindNonCentralityChi, IsZeroForAProbabilityNotBelowTheCentralOne)
{
    EXPECT_EQ(D::FindNCParamChi(4.0, 3.0, 0.9, 1e-6), 0.0);
    EXPECT_EQ(D::FindNCParamChi(4.0, 3.0, 1.0, 1e-6), 0.0);
    EXPECT_EQ(D::FindNCParamChi(0.0, 3.0, 0.5, 1e-6), 0.0);
    EXPECT_EQ(D::FindNCParamChi(4.0, 3.0, D::NonCentralCdfChi(4.0, 3.0, 0.0), 1e-6), 0.0);
}

TEST(FindNonCentrality, RefusesWhatIsOutsideTheDomain)
{
    for (const double bad : {-0.1, 1.1, kNaN}) {
        EXPECT_EQ(D::FindNCParamChi(4.0, 3.0, bad, 1e-6), Missing());
        EXPECT_EQ(D::FindNCParamF(2.0, 3.0, 10.0, bad, 1e-6), Missing());
        EXPECT_EQ(D::FindNCParamT(1.0, 5.0, bad, 1e-6), Missing());
    }
    for (const double bad : {-1e-6, kNaN}) {
        EXPECT_EQ(D::FindNCParamChi(4.0, 3.0, 0.5, bad), Missing());
        EXPECT_EQ(D::FindNCParamF(2.0, 3.0, 10.0, 0.5, bad), Missing());
        EXPECT_EQ(D::FindNCParamT(1.0, 5.0, 0.5, bad), Missing());
    }
    for (const double bad : {0.0, -1.0, kNaN}) {
        EXPECT_EQ(D::FindNCParamChi(4.0, bad, 0.5, 1e-6), Missing());
        EXPECT_EQ(D::FindNCParamF(2.0, bad, 10.0, 0.5, 1e-6), Missing());
        EXPECT_EQ(D::FindNCParamF(2.0, 3.0, bad, 0.5, 1e-6), Missing());
        EXPECT_EQ(D::FindNCParamT(1.0, bad, 0.5, 1e-6), Missing());
    }
    EXPECT_EQ(D::FindNCParamT(-1.0, 5.0, 0.5, 1e-6), Missing());
    EXPECT_EQ(D::FindNCParamT(kNaN, 5.0, 0.5, 1e-6), Missing());
}

TEST(FindNonCentralityChi, StartThatHitsIsTheAnswer)
{
    EXPECT_EQ(D::FindNCParamChi(4.0, 3.0, D::NonCentralCdfChi(4.0, 3.0, 4.0), 1e-6), 4.0);
}

TEST(FindNonCentralityChi, BracketEndThatHitsIsTheAnswer)
{
    EXPECT_EQ(D::FindNCParamChi(4.0, 3.0, D::NonCentralCdfChi(4.0, 3.0, 8.0), 1e-6), 8.0);
    EXPECT_EQ(D::FindNCParamChi(4.0, 3.0, D::NonCentralCdfChi(4.0, 3.0, 2.0), 1e-6), 2.0);
}

bool IsOdd(double x) { return std::fmod(x, 2.0) == 1.0; }

// From 4 the search doubles to the bracket [4, 8] and halves that: the middle of a bracket of the
// width w is an odd multiple of w / 2. A difference of probabilities is never above 0.5.
TEST(FindNonCentrality, EndsAtTheFirstBracketNoWiderThanTheTolerance)
{
    const double chi = D::FindNCParamChi(4.0, 3.0, 0.2, 0.5);
    EXPECT_TRUE(IsOdd(chi / 0.25)) << chi;  // width 0.5
    EXPECT_NEAR(chi, MCMath_850::Precise::FindNCParamChi(4.0, 3.0, 0.2), 0.25);
    const double t = D::FindNCParamT(4.0, 20.0, 0.1, 0.5);
    EXPECT_TRUE(IsOdd(t / 0.25)) << t;
    EXPECT_NEAR(t, MCMath_850::Precise::FindNCParamT(4.0, 20.0, 0.1), 0.25);
}

// [8, 16] down to the width 1/8, the first that is at most 0.01 of the upper end.
TEST(FindNonCentralityF, WidthCountsRelativeToTheEnds)
{
    const double v = D::FindNCParamF(2.0, 4.0, 200.0, 0.1, 0.01);
    ASSERT_GT(v, 12.5);
    ASSERT_LT(v, 16.0);
    EXPECT_TRUE(IsOdd(v / 0.0625)) << v;
}

// Far out the bracket is narrow enough, relatively, long before the probability is.
TEST(FindNonCentralityF, EndsOnlyWhereTheProbabilityIsWithinTheTolerance)
{
    for (const double p : {0.2, 0.4, 0.6}) {
        const double v = D::FindNCParamF(300.0, 5.0, 1e6, p, 1e-4);
        EXPECT_NEAR(D::NonCentralCdfF(300.0, 5.0, 1e6, v, 1e-4), p, 1e-4) << v;
    }
}

// Without a tolerance the bracket [4, 8] is halved until its ends agree within 8 units of 2^-52 of
// the upper one, which are 32 to 64 of them here: the width is 2^-47.
TEST(FindNonCentrality, WithoutAToleranceItEndsAtEightUnitsInTheLastPlace)
{
    const double units = std::ldexp(1.0, 48);
    EXPECT_TRUE(IsOdd(D::FindNCParamChi(4.0, 3.0, 0.2, 0.0) * units));
    EXPECT_TRUE(IsOdd(D::FindNCParamT(4.0, 20.0, 0.1, 0.0) * units));
}

// 6 is the first middle of [4, 8], and its difference is exactly 0, but the bracket is still wide.
// A difference that is not above 0 makes the middle the upper end: the answer comes from below.
TEST(FindNonCentrality, MiddleThatHitsBecomesTheUpperEnd)
{
    const double v = D::FindNCParamChi(4.0, 3.0, D::NonCentralCdfChi(4.0, 3.0, 6.0), 0.0);
    EXPECT_LT(v, 6.0);
    EXPECT_NEAR(v, 6.0, 1e-12);
}

TEST(FindNonCentrality, ToleranceOfZeroNarrowsToTheLastPlaces)
{
    const double chi = D::FindNCParamChi(4.0, 3.0, 0.25, 0.0);
    EXPECT_NEAR(D::NonCentralCdfChi(4.0, 3.0, chi), 0.25, 1e-12);
    const double t = D::FindNCParamT(1.0, 5.0, 0.25, 0.0);
    EXPECT_NEAR(D::NonCentralCdfT(1.0, 5.0, t), 0.25, 1e-11);
}

TEST(FindNonCentrality, ProbabilityOfZeroWalksUntilTheDistributionVanishes)
{
    EXPECT_EQ(D::NonCentralCdfChi(4.0, 3.0, D::FindNCParamChi(4.0, 3.0, 0.0, 1e-6)), 0.0);
}

TEST(FindNonCentrality, MissingDistributionMakesItMissing)
{
    EXPECT_EQ(D::FindNCParamChi(4.0, kTiniest, 0.5, 1e-6), Missing());
    EXPECT_EQ(D::FindNCParamT(1.0, kInf, 0.25, 1e-6), Missing());
    EXPECT_EQ(D::FindNCParamT(1.0, kTiniest, 0.25, 1e-6), Missing());
}

TEST(FindNonCentrality, DistributionThatGoesMissingOnTheWayMakesItMissing)
{
    EXPECT_EQ(D::FindNCParamChi(4.4607063920990214e+17, 3.0, 0.474007, 1e-6), Missing());
    EXPECT_EQ(D::FindNCParamT(77193777.401561156, 13564.5, 0.768674, 1e-6), Missing());
    EXPECT_EQ(D::FindNCParamT(63546946.366177164, 85311.9, 0.164873, 1e-6), Missing());
    EXPECT_EQ(D::FindNCParamChi(9864745928953290.0, 3.0, 0.5, 1e-6), Missing());
}

TEST(FindNonCentrality, NaNAndInfinitePointsEnd)
{
    EXPECT_EQ(D::FindNCParamChi(kNaN, 3.0, 0.5, 1e-6), Missing());
    EXPECT_EQ(D::FindNCParamF(kNaN, 3.0, 10.0, 0.5, 1e-6), Missing());
    EXPECT_EQ(D::FindNCParamT(kInf, 5.0, 0.5, 1e-6), Missing());  // no step beyond infinity
    EXPECT_EQ(D::FindNCParamT(kInf, 5.0, 1.0, 1e-6), 0.0);
}

// For such a t the distribution function is 1 at every multiple that a step reaches.
TEST(FindNonCentralityT, GivesUpWhereTheDistributionDoesNotFall)
{
    for (const double t : {1e20, 1e69, 1e120}) {
        EXPECT_EQ(D::NonCentralCdfT(t, 100.0, 1e6 * t), 1.0);
        EXPECT_EQ(D::FindNCParamT(t, 100.0, 1e-307, 1e-6), Missing()) << t;
    }
}

TEST(FindNonCentralityT, WalksThousandsOfStepsWhereTheAnswerIsFar)
{
    const double p = D::NonCentralCdfT(1.0, 1e-6, 2000.0);
    EXPECT_EQ(D::FindNCParamT(1.0, 1e-6, p, 0.0), 2000.0);  // the end of a step hits
}

TEST(FindNonCentralityT, RunsOverBothSigns)
{
    EXPECT_LT(D::FindNCParamT(1.0, 5.0, 0.99, 1e-9), 0.0);
    EXPECT_GT(D::FindNCParamT(1.0, 5.0, 0.01, 1e-9), 0.0);
    EXPECT_EQ(D::FindNCParamT(1.0, 5.0, D::NonCentralCdfT(1.0, 5.0, 0.0), 1e-6), 0.0);
    EXPECT_EQ(D::FindNCParamT(2.0, 5.0, D::NonCentralCdfT(2.0, 5.0, 2.0), 1e-6),
              2.0);  // the step itself
}

// At 0 the distribution is Student's own, beside it a sum that is exact to 1e-12 only. A
// probability between the two has no point to narrow to: the search ends where no double is left
// between its ends.
TEST(FindNonCentralityT, ProbabilityInTheGapAtZeroEnds)
{
    const double atZero = D::NonCentralCdfT(1.0, 5.0, 0.0);
    for (const double shift : {-1e-14, -1e-13, 1e-14, 1e-13})
        EXPECT_NEAR(D::FindNCParamT(1.0, 5.0, atZero + shift, 0.0), 0.0, 1e-9) << shift;
}

}  // namespace
