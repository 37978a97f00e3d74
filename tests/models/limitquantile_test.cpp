#include "models/limitquantile.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "host/values/numericvalue.h"
#include "models/studentquantile.h"
#include "stats/mcdistfun.h"

namespace MCVelscore_850 {
namespace {

constexpr double kSysmis = NumericValue::GetSysmisValue();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Two-sided quantiles by mpmath with 40 digits, of the double that each level is: the inverse error
// function, and the regularized incomplete beta function by bisection.
struct StudentRow {
    double level;
    double df;
    double quantile;
};
const StudentRow kStudent[] = {
    {0.5, 1.0, 1.0},
    {0.5, 8.0, 0.7063866126448386},
    {0.5, 57.0, 0.67881830786219823},
    {0.9, 1.0, 6.3137515146750445},
    {0.9, 2.0, 2.9199855803537261},
    {0.9, 8.0, 1.8595480375308985},
    {0.9, 12.5, 1.7763662212470308},
    {0.9, 0.4, 113.63588164259998},
    {0.99, 5.0, 4.0321429835552272},
    {0.99, 57.0, 2.6648704822419714},
    {0.999, 8.0, 5.0413054333733667},
    {0.999, 12.5, 4.2669367662921211},
    {0.9999999999, 5.0, 180.14909786675683},
    {0.9999999999, 57.0, 7.9019704023260464},
    {1.0 - 0x1p-53, 5.0, 2796.2668064971161},
};

TEST(LimitQuantile, OfStudentsTIsTheTrueOneAtOtherLevels)
{
    for (const auto& [level, df, quantile] : kStudent) {
        EXPECT_NEAR(StudentLimitQuantile(level, df), quantile, 2e-14 * quantile)
            << level << " " << df;
    }
}

TEST(LimitQuantile, OfTheNormalDistributionIsTheTrueOneAtOtherLevels)
{
    constexpr struct {
        double level;
        double quantile;
    } kRows[] = {
        {1e-5, 1.253314137348312e-5},        {0.1, 0.12566134685507404},
        {0.5, 0.67448975019608174},          {0.8, 1.2815515655446006},
        {0.9, 1.6448536269514728},           {0.99, 2.5758293035489005},
        {0.999, 3.2905267314918945},         {0.9999999999, 6.466951074732419},
        {1.0 - 0x1p-53, 8.2923610758135955},
    };
    for (const auto& [level, quantile] : kRows) {
        EXPECT_NEAR(NormalLimitQuantile(level), quantile, 4e-16 + 1e-15 * quantile) << level;
    }
}

TEST(LimitQuantile, OfTheDefaultLevelAreTheOnesThatModelsComeWith)
{
    for (const double df : {0.4, 1.0, 5.0, 10.0, 12.5, 57.0, 1e9}) {
        EXPECT_EQ(StudentLimitQuantile(0.95, df), StudentQuantile95(df)) << df;
    }
    EXPECT_EQ(NormalLimitQuantile(0.95), MCMath_850::MCDistFun::IdfNorm(0.975, 0.0, 1.0));
    // A level beside it is another one: here the polynomial of the default is off by half.
    EXPECT_GT(std::fabs(StudentLimitQuantile(0.950001, 0.5) / StudentQuantile95(0.5) - 1.0), 0.4);
}

TEST(LimitQuantile, DoesNotExistForDegreesOfFreedomOrLevelsThatAreNone)
{
    for (const double level : {0.9, 0.95}) {
        for (const double df : {0.0, -1.0, kNaN, kSysmis}) {
            EXPECT_EQ(StudentLimitQuantile(level, df), kSysmis) << level << " " << df;
        }
    }
    for (const double level : {0.0, 1.0, -0.5, 95.0, kNaN, kSysmis}) {
        EXPECT_EQ(StudentLimitQuantile(level, 5.0), kSysmis) << level;
        EXPECT_EQ(NormalLimitQuantile(level), kSysmis) << level;
    }
}

}  // namespace
}  // namespace MCVelscore_850
