#include "host/values/numericvalue.h"

#include <cmath>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "host/values/datetimevalue.h"
#include "host/values/stringvalue.h"

namespace MCVelscore_850 {
namespace {

constexpr double kMissing = -1.7976931348623157e+308;
constexpr double kMax = std::numeric_limits<double>::max();
constexpr double kLeast = std::numeric_limits<double>::denorm_min();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(NumericValue, SystemMissingNumberIsTheLowestDouble)
{
    EXPECT_EQ(NumericValue::GetSysmisValue(), kMissing);
    EXPECT_EQ(NumericValue::GetSysmisValue(), std::numeric_limits<double>::lowest());
    EXPECT_TRUE(NumericValue::IsSystemMissingValue(kMissing));
    EXPECT_FALSE(NumericValue::IsSystemMissingValue(kMax));
    EXPECT_FALSE(NumericValue::IsSystemMissingValue(-kInfinity));
    EXPECT_FALSE(NumericValue::IsSystemMissingValue(kNaN));
    EXPECT_EQ(NumericValue::GetInfinity(), kInfinity);
}

TEST(NumericValue, OnlyTheSystemMissingNumberIsMissing)
{
    EXPECT_TRUE(NumericValue(kMissing).IsMissingValue());
    for (const double number : {0.0, kNaN, kInfinity, -kInfinity, kMax}) {
        EXPECT_FALSE(NumericValue(number).IsMissingValue()) << number;
    }
}

TEST(NumericValue, TextIsTheShortestThatReadsBack)
{
    const struct {
        double number;
        const char* text;
    } kRows[] = {
        {1.0, "1"},
        {0.0, "0"},
        {-0.0, "0"},  // a minus zero would look like a number of its own
        {-17.0, "-17"},
        {100000000.0, "100000000"},
        {999999999999999.0, "999999999999999"},
        {-999999999999999.0, "-999999999999999"},
        {1e15, "1e+15"},  // no longer below the limit of whole numbers
        {-1e15, "-1e+15"},
        {0.5, "0.5"},
        {0.1, "0.1"},
        {-2.25, "-2.25"},
        {1.0 / 3.0, "0.3333333333333333"},
        {0.1 + 0.2, "0.30000000000000004"},
        {1e-7, "1e-07"},
        {kMax, "1.7976931348623157e+308"},
        {kLeast, "5e-324"},
    };
    for (const auto& row : kRows) EXPECT_EQ(NumericValue(row.number).GetString(), row.text);
}

TEST(NumericValue, TextIsReadWholeOrIsMissing)
{
    const struct {
        const char* text;
        double number;
    } kRows[] = {
        {"2.5", 2.5},         {"-3", -3.0},      {" \t7\r\n", 7.0},
        {"1e3", 1000.0},      {".5", 0.5},       {"1e-400", 0.0},  // below every double
        {"", kMissing},       {"   ", kMissing}, {"1x", kMissing},
        {"x1", kMissing},     {"1 2", kMissing}, {"1,5", kMissing},
        {"0x10", kMissing},   {"+5", 5.0},       {"1e400", kMissing},  // beyond every double
        {"-1e400", kMissing}, {"+-5", kMissing}, {"+", kMissing},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(NumericValue(std::string(row.text)).GetDouble(), row.number) << row.text;
    }
}

TEST(NumericValue, EqualsComparesTheDoublesExactly)
{
    const NumericValue one(1.0);
    const NumericValue next(std::nextafter(1.0, 2.0));
    EXPECT_TRUE(one.Equals(&one));
    EXPECT_FALSE(one.Equals(&next));
    const NumericValue zero(0.0);
    const NumericValue minusZero(-0.0);
    EXPECT_TRUE(zero.Equals(&minusZero));
    const NumericValue nan(kNaN);
    EXPECT_FALSE(nan.Equals(&nan));
}

TEST(NumericValue, EqualsNothingOfAnotherKind)
{
    const NumericValue number(1.0);
    const StringValue text("1");
    const DateTimeValue date(1.0);
    EXPECT_FALSE(number.Equals(&text));
    EXPECT_FALSE(number.Equals(&date));
    EXPECT_FALSE(number.Equals(nullptr));
}

TEST(NumericValue, CloneIsAnObjectOfItsOwn)
{
    NumericValue number(4.0);
    const std::unique_ptr<ScoreValue> copy(number.Clone());
    number.SetDoubleValue(5.0);
    EXPECT_EQ(copy->GetDouble(), 4.0);
    EXPECT_EQ(number.GetDouble(), 5.0);
    EXPECT_EQ(copy->GetValueType(), 0);
}

TEST(NumericValueIsEqual, ToleratesRelativeRoundingAlone)
{
    const struct {
        double a;
        double b;
        bool equal;
    } kRows[] = {
        {1.0, 1.0, true},
        {0.0, -0.0, true},
        {1.0, 1.0 + 5e-13, true},
        {1.0, 1.0 + 2e-12, false},
        {-1.0, -1.0 - 5e-13, true},
        {1.0, -1.0, false},
        {1e300, 1e300 * (1.0 + 5e-13), true},
        {1e-300, 1e-300 * (1.0 + 5e-13), true},
        {1e-300, 1e-300 * (1.0 + 2e-12), false},
        {0.0, kLeast, false},  // no absolute tolerance: only 0 equals 0
        {0.0, 1e-300, false},
        {kLeast, 2.0 * kLeast, false},
        {kLeast, kLeast, true},
        {1e-310, 1e-310 + 10.0 * kLeast, true},  // 5e-323 apart, 1e-322 is tolerated
        {kMax, -kMax, false},                    // their difference overflows
        {kInfinity, kInfinity, true},
        {kInfinity, -kInfinity, false},
        {kInfinity, kMax, false},
        {kNaN, kNaN, false},
        {kNaN, 1.0, false},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(NumericValue::IsEqual(row.a, row.b), row.equal) << row.a << " and " << row.b;
        EXPECT_EQ(NumericValue::IsEqual(row.b, row.a), row.equal) << row.b << " and " << row.a;
    }
}

}  // namespace
}  // namespace MCVelscore_850
