#include <vector>

#include "stats/mcdistfun.h"
#include "tests/stats/support/expect.h"

namespace {

using expect::kInf;
using expect::kNaN;
using expect::Missing;
using D = MCMath_850::MCDistFun;
using Values = std::vector<double>;

struct Tile {
    double result = 0.0;
    long status = 99;
};

Tile Percentile(double percent, const Values& x, const Values& freq, const Values& y, long method)
{
    Tile tile;
    D::GPTile(static_cast<long>(x.size()), percent, x, freq, y, method, tile.result, tile.status);
    return tile;
}

#define EXPECT_TILE(call, wantedResult, wantedStatus) \
    do {                                              \
        const Tile tile = call;                       \
        EXPECT_EQ(tile.result, wantedResult);         \
        EXPECT_EQ(tile.status, wantedStatus);         \
    } while (false)

TEST(Percentile, NeedsTwoValuesAndWholeTables)
{
    EXPECT_TILE(Percentile(50.0, {1.0}, {3.0}, {1.0}, 0), Missing(), -1);
    EXPECT_TILE(Percentile(50.0, {}, {}, {1.0}, 1), Missing(), -1);
    EXPECT_TILE(Percentile(50.0, {1.0, 2.0}, {3.0}, {1.0}, 0), Missing(), -1);
    EXPECT_TILE(Percentile(50.0, {1.0, 2.0}, {3.0, 1.0}, {}, 1), Missing(), -1);
    EXPECT_TILE(Percentile(50.0, {1.0, 2.0}, {3.0, 1.0}, {0.0, 1.0}, 3), Missing(), -1);
    Tile tile;
    D::GPTile(3, 50.0, {1.0, 2.0}, {1.0, 1.0}, {1.0}, 0, tile.result, tile.status);
    EXPECT_EQ(tile.status, -1);
}

// Midpoints of the cumulative frequencies 2, 3, 5 of ten: 1, 3.5 and 7.5.
const Values kX{1.0, 2.0, 4.0};
const Values kFreq{2.0, 3.0, 5.0};

TEST(PercentileByMidpoints, OutsideTheMidpointsHasAStatus)
{
    EXPECT_TILE(Percentile(9.0, kX, kFreq, {}, 0), Missing(), 1);
    EXPECT_TILE(Percentile(76.0, kX, kFreq, {}, 0), Missing(), 2);
}

TEST(PercentileByMidpoints, OnAMidpointIsItsValueAndBetweenThemAnInterpolation)
{
    EXPECT_TILE(Percentile(10.0, kX, kFreq, {}, 0), 1.0, 0);
    EXPECT_TILE(Percentile(35.0, kX, kFreq, {}, -3), 2.0, 0);
    EXPECT_TILE(Percentile(75.0, kX, kFreq, {}, 0), 4.0, 0);
    EXPECT_TILE(Percentile(55.0, kX, kFreq, {}, 0), 3.0, 0);
}

TEST(PercentileByMidpoints, EmptyStretchAtTheTargetIsMissing)
{
    EXPECT_TILE(Percentile(0.0, kX, {0.0, 3.0, 5.0}, {}, 0), Missing(),
                0);  // nothing before the first
    EXPECT_TILE(Percentile(50.0, kX, {0.0, 0.0, 0.0}, {}, 0), Missing(), 0);
    // 5, 0, 0: the midpoints are 2.5, 5, 5; the target of 5 meets the second as its upper end.
    EXPECT_TILE(Percentile(100.0, kX, {5.0, 0.0, 0.0}, {}, 0), Missing(), 0);
}

TEST(PercentileByMidpoints, NaNPercentageFindsNothing)
{
    EXPECT_TILE(Percentile(kNaN, kX, kFreq, {}, 0), Missing(), 0);
    EXPECT_TILE(Percentile(kInf, kX, kFreq, {}, 0), Missing(), 2);
    EXPECT_TILE(Percentile(-kInf, kX, kFreq, {}, 0), Missing(), 1);
}

TEST(PercentileByWidth, HundredPercentIsTheUpperEndOfTheLastClass)
{
    EXPECT_TILE(Percentile(100.0, kX, kFreq, {1.0}, 1), 4.5, 0);
    EXPECT_TILE(Percentile(0.0, kX, kFreq, {1.0}, 1), 0.5, 0);
    EXPECT_TILE(Percentile(75.0, kX, kFreq, {1.0}, 1), 4.0, 0);
    EXPECT_TILE(Percentile(110.0, kX, kFreq, {1.0}, 1), Missing(), 0);
    EXPECT_TILE(Percentile(-5.0, kX, kFreq, {1.0}, 1), Missing(), 0);
    EXPECT_TILE(Percentile(kNaN, kX, kFreq, {1.0}, 1), Missing(), 0);
}

TEST(PercentileByWidth, EmptyClassAtTheTargetCountsFromTheStart)
{
    EXPECT_TILE(Percentile(100.0, kX, {4.0, 0.0, 0.0}, {1.0}, 1), 2.5,
                0);  // the empty class's upper end
    EXPECT_TILE(Percentile(0.0, kX, {0.0, 4.0, 1.0}, {1.0}, 1), Missing(), 0);
}

// Classes [0, 1.5), [1.5, 3) and from 3, whose end 5 is the reflection of 3 over the first value
// above it, 4. Cumulative frequencies 2, 5, 10.
const Values kBoundaries{0.0, 1.5, 3.0};

TEST(PercentileByBoundaries, InterpolatesWithinTheClass)
{
    EXPECT_TILE(Percentile(10.0, kX, kFreq, kBoundaries, 3), 0.75, 0);
    EXPECT_TILE(Percentile(20.0, kX, kFreq, kBoundaries, 3), 1.5, 0);
    EXPECT_TILE(Percentile(35.0, kX, kFreq, kBoundaries, 3), 2.25, 0);
    EXPECT_TILE(Percentile(75.0, kX, kFreq, kBoundaries, 3), 4.0, 0);
}

TEST(PercentileByBoundaries, HundredPercentIsTheReflectedEnd)
{
    EXPECT_TILE(Percentile(100.0, kX, kFreq, kBoundaries, 3), 5.0, 0);
    EXPECT_TILE(Percentile(110.0, kX, kFreq, kBoundaries, 3), Missing(), 0);
    EXPECT_TILE(Percentile(-10.0, kX, kFreq, kBoundaries, 3), Missing(), 0);
    EXPECT_TILE(Percentile(kNaN, kX, kFreq, kBoundaries, 3), Missing(), 0);
}

TEST(PercentileByBoundaries, LastClassWithoutAValueAboveItHasNoEnd)
{
    EXPECT_TILE(Percentile(90.0, kX, kFreq, {0.0, 9.0}, 2), 8.1,
                0);  // all ten lie in the first class
    EXPECT_TILE(Percentile(120.0, kX, kFreq, {0.0, 9.0}, 2), Missing(), 0);
}

TEST(PercentileByBoundaries, NothingBelowTheFirstEndIsTheFirstBoundary)
{
    EXPECT_TILE(Percentile(0.0, kX, kFreq, {-3.0, 0.0}, 2), -3.0, 0);
}

// Only negative frequencies bring an empty class to the target: -2 of 8 is -25 per cent.
TEST(PercentileByBoundaries, EmptyClassAtTheTargetGoesBackOneClass)
{
    EXPECT_TILE(Percentile(-25.0, {1.0, 4.0}, {-2.0, 10.0}, {0.0, 2.0, 3.0}, 3), 2.0, 0);
}

struct Limits {
    double lower = 0.0;
    double upper = 0.0;
    double achieved = 0.0;
};

Limits Median(const Values& x, const Values& freq, double n, double level, bool wantLevel = true)
{
    Limits l;
    D::Mednci(static_cast<long>(x.size()), x, freq, n, level, wantLevel, l.lower, l.upper,
              l.achieved);
    return l;
}

#define EXPECT_LIMITS(call, wantedLower, wantedUpper, wantedAchieved) \
    do {                                                              \
        const Limits l = call;                                        \
        EXPECT_EQ(l.lower, wantedLower);                              \
        EXPECT_EQ(l.upper, wantedUpper);                              \
        EXPECT_EQ(l.achieved, wantedAchieved);                        \
    } while (false)

TEST(MedianLimits, TwoCasesHaveTheExtremesAndFewerNone)
{
    EXPECT_LIMITS(Median({1.0, 2.0, 3.0}, {1.0, 0.0, 1.0}, 2.0, 95.0), 1.0, 3.0, 100.0);
    EXPECT_LIMITS(Median({1.0, 3.0}, {1.0, 0.0}, 1.0, 95.0), Missing(), Missing(), Missing());
    EXPECT_LIMITS(Median({}, {}, 2.0, 95.0), Missing(), Missing(), Missing());
    EXPECT_LIMITS(Median({1.0, 2.0}, {1.0}, 2.0, 95.0), Missing(), Missing(), Missing());
    Limits l;
    D::Mednci(3, {1.0, 2.0}, {1.0, 1.0, 1.0}, 3.0, 95.0, true, l.lower, l.upper, l.achieved);
    EXPECT_EQ(l.lower, Missing());
}

TEST(MedianLimits, RefusedQuantileGivesNone)
{
    EXPECT_LIMITS(Median({1.0, 3.0}, {1.5, 1.0}, 2.5, 95.0), Missing(), Missing(), Missing());
    EXPECT_LIMITS(Median({1.0, 3.0}, {5.0, 5.0}, 10.0, 110.0), Missing(), Missing(), Missing());
    EXPECT_LIMITS(Median({1.0, 3.0}, {5.0, 5.0}, 10.0, kNaN), Missing(), Missing(), Missing());
    EXPECT_LIMITS(Median({1.0, 3.0}, {5.0, 5.0}, kNaN, 95.0), Missing(), Missing(), Missing());
}

TEST(MedianLimits, LevelThatNoRankReachesHasTheExtremes)
{
    EXPECT_LIMITS(Median({1.0, 2.0, 3.0}, {1.0, 1.0, 1.0}, 3.0, 95.0), 1.0, 3.0, 100.0);
}

// 6 cases at 96 per cent: ranks 1 and 6, reached with 1 - 2 / 64.
TEST(MedianLimits, OrderStatisticsBoundTheMedian)
{
    const Limits l =
        Median({1.0, 2.0, 3.0, 4.0, 5.0, 7.0}, {1.0, 1.0, 1.0, 1.0, 1.0, 1.0}, 6.0, 96.0);
    EXPECT_EQ(l.lower, 1.0);
    EXPECT_EQ(l.upper, 7.0);
    EXPECT_NEAR(l.achieved, 96.875, 1e-9);
    EXPECT_EQ(Median({1.0, 7.0}, {3.0, 3.0}, 6.0, 96.0, false).achieved, Missing());
}

TEST(MedianLimits, NegativeLevelAnswersNoCoverage)
{
    const Limits l = Median({1.0, 2.0, 3.0, 4.0, 6.0}, {2.0, 2.0, 2.0, 2.0, 2.0}, 10.0, -95.0);
    EXPECT_EQ(l.achieved, 0.0);
    EXPECT_GT(l.lower, l.upper);
}

TEST(MedianLimits, RankBeyondTheTableAnswersItsEnds)
{
    // Ten cases are claimed, the table holds three: no cumulative frequency reaches rank 5, and the
    // rest never falls below 6.
    EXPECT_EQ(Median({1.0, 2.0, 3.0}, {1.0, 1.0, 1.0}, 10.0, 0.0).lower, 3.0);
    EXPECT_EQ(Median({1.0, 2.0, 3.0}, {1.0, 1.0, 1.0}, 10.0, 0.0).upper, 1.0);
}

TEST(MedianLimits, QuantileAtTheTopTakesTheLastRank)
{
    // A level of -100 asks for the quantile of 1, which is n.
    const Limits l = Median({1.0, 2.0, 4.0}, {3.0, 3.0, 3.0}, 9.0, -100.0);
    EXPECT_EQ(l.lower, 4.0);
    EXPECT_EQ(l.upper, 1.0);
    EXPECT_EQ(l.achieved, 0.0);
}

}  // namespace
