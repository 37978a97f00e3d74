#include "host/values/datetimevalue.h"

#include <memory>

#include <gtest/gtest.h>

#include "host/values/datetimetext.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"

namespace MCVelscore_850 {
namespace {

using Var = ScoreDictVar;

// 2000-01-01 lies 10957 days after 1970-01-01, 14610 after 1960-01-01, 7305 after 1980-01-01 and
// 730485 after 0000-01-01 of the proleptic Gregorian calendar (20 or 40 years of 365 days and
// their leap days; 2000 years of 365 days and 485 leap days, year 0 among them).
constexpr double kDays2000 = 10957.0;
constexpr double kDay = 86400.0;

TEST(DateTimeValue, EveryTypeCountsFromItsOwnOrigin)
{
    const struct {
        Var::DateTimeType type;
        double plain;
        double counted;
    } kRows[] = {
        {Var::DATE, kDays2000, 10957.0},
        {Var::DATE_DAYS_SINCE_0, kDays2000, 730485.0},
        {Var::DATE_DAYS_SINCE_1960, kDays2000, 14610.0},
        {Var::DATE_DAYS_SINCE_1970, kDays2000, 10957.0},
        {Var::DATE_DAYS_SINCE_1980, kDays2000, 7305.0},
        {Var::DATE_TIME, kDays2000 * kDay + 1.0, 10957.0 * kDay + 1.0},
        {Var::DATE_TIME_SECONDS_SINCE_0, kDays2000 * kDay + 1.0, 730485.0 * kDay + 1.0},
        {Var::DATE_TIME_SECONDS_SINCE_1960, kDays2000 * kDay + 1.0, 14610.0 * kDay + 1.0},
        {Var::DATE_TIME_SECONDS_SINCE_1970, kDays2000 * kDay + 1.0, 10957.0 * kDay + 1.0},
        {Var::DATE_TIME_SECONDS_SINCE_1980, kDays2000 * kDay + 1.0, 7305.0 * kDay + 1.0},
        {Var::TIME, 3661.0, 3661.0},
        {Var::TIME_SECONDS, 3661.0, 3661.0},
        {Var::NOT_DATETIME, 5.0, 5.0},
    };
    for (const auto& row : kRows) {
        const DateTimeValue value(row.plain);
        EXPECT_EQ(value.GetDoubleValue(row.type), row.counted) << row.type;
        EXPECT_EQ(value.GetDouble(), row.plain) << row.type;
    }
}

TEST(DateTimeValue, MissingStaysMissingFromEveryOrigin)
{
    const DateTimeValue missing(NumericValue::GetSysmisValue());
    EXPECT_TRUE(missing.IsMissingValue());
    EXPECT_EQ(missing.GetDoubleValue(Var::DATE_TIME_SECONDS_SINCE_0),
              NumericValue::GetSysmisValue());
    EXPECT_FALSE(DateTimeValue(0.0).IsMissingValue());
}

TEST(DateTimeValue, EqualsAnotherOfTheSameNumberAlone)
{
    const DateTimeValue one(1.0);
    const DateTimeValue same(1.0);
    const DateTimeValue two(2.0);
    const NumericValue number(1.0);
    const StringValue text("1");
    EXPECT_TRUE(one.Equals(&same));
    EXPECT_FALSE(one.Equals(&two));
    EXPECT_FALSE(one.Equals(&number));
    EXPECT_FALSE(one.Equals(&text));
    EXPECT_FALSE(one.Equals(nullptr));
}

TEST(DateTimeValue, TextIsThePlainNumber)
{
    EXPECT_EQ(DateTimeValue(10957.0).GetString(), "10957");
    EXPECT_EQ(DateTimeValue(0.5).GetString(), "0.5");
    EXPECT_EQ(DateTimeValue(1.0).GetValueType(), 5);  // a variable of dates answers 4
}

TEST(DateTimeValue, CloneIsAnObjectOfItsOwn)
{
    DateTimeValue date(1.0);
    const std::unique_ptr<ScoreValue> copy(date.Clone());
    date.SetNumber(2.0);
    EXPECT_EQ(copy->GetDouble(), 1.0);
    EXPECT_EQ(date.GetDouble(), 2.0);
}

TEST(ReadDateTime, ReadsEveryTypeAsThePlainNumber)
{
    const struct {
        const char* text;
        Var::DateTimeType type;
        double plain;
    } kRows[] = {
        {"1970-01-01", Var::DATE, 0.0},
        {"1969-12-31", Var::DATE, -1.0},
        {"2000-01-01", Var::DATE, kDays2000},
        {" 2000-01-01 ", Var::DATE, kDays2000},
        {"0000-01-01", Var::DATE, -719528.0},  // 10957 - 730485
        {"00:00", Var::TIME, 0.0},
        {"23:59", Var::TIME, 86340.0},
        {"01:01:01", Var::TIME, 3661.0},
        {"01:01:01.25", Var::TIME, 3661.25},
        {"2000-01-01T00:00:01", Var::DATE_TIME, kDays2000 * kDay + 1.0},
        {"2000-01-01 12:00", Var::DATE_TIME, kDays2000 * kDay + 43200.0},
        {"2000-01-01T01:00:01Z", Var::DATE_TIME, kDays2000 * kDay + 3601.0},
        {"2000-01-01T01:00:01.5+01:00", Var::DATE_TIME, kDays2000 * kDay + 1.5},
        {"1999-12-31T19:00:00-05:30", Var::DATE_TIME, kDays2000 * kDay + 1800.0},
        {"01:01:01Z", Var::TIME, 3661.0},
        // A date in text is the same day whatever its type counts from.
        {"2000-01-01", Var::DATE_DAYS_SINCE_1960, kDays2000},
        {"2000-01-01T00:00:01", Var::DATE_TIME_SECONDS_SINCE_1980, kDays2000 * kDay + 1.0},
        {"01:01:01", Var::TIME_SECONDS, 3661.0},
        // A plain number counts from the type's own origin.
        {"14610", Var::DATE_DAYS_SINCE_1960, kDays2000},
        {"10957", Var::DATE_DAYS_SINCE_1970, kDays2000},
        {"7305", Var::DATE_DAYS_SINCE_1980, kDays2000},
        {"730485", Var::DATE_DAYS_SINCE_0, kDays2000},
        {"-1", Var::DATE_DAYS_SINCE_1980, 3651.0},  // 1979-12-31, 3652 days lie between
        {"3661.5", Var::TIME_SECONDS, 3661.5},
        {"631152000", Var::DATE_TIME_SECONDS_SINCE_1980, kDays2000 * kDay},   // 7305 * 86400
        {"1262304000", Var::DATE_TIME_SECONDS_SINCE_1960, kDays2000 * kDay},  // 14610 * 86400
    };
    for (const auto& row : kRows) {
        double plain = -99.0;
        EXPECT_TRUE(ReadDateTime(row.text, row.type, plain)) << row.text;
        EXPECT_EQ(plain, row.plain) << row.text << " as " << row.type;
    }
}

TEST(ReadDateTime, LeapYearsAreThoseOfTheGregorianCalendar)
{
    double plain = 0.0;
    for (const char* text : {"2024-02-29", "2000-02-29", "1600-02-29"}) {
        EXPECT_TRUE(ReadDateTime(text, Var::DATE, plain)) << text;
    }
    for (const char* text : {"2023-02-29", "1900-02-29", "2100-02-29", "2024-02-30"}) {
        EXPECT_FALSE(ReadDateTime(text, Var::DATE, plain)) << text;
    }
}

TEST(ReadDateTime, RefusesWhatIsNoDateOrTimeOfTheType)
{
    const struct {
        const char* text;
        Var::DateTimeType type;
    } kRows[] = {
        {"", Var::DATE},
        {"2026-13-01", Var::DATE},
        {"2026-00-10", Var::DATE},
        {"2026-04-31", Var::DATE},
        {"2026-01-00", Var::DATE},
        {"2026-1-01", Var::DATE},
        {"26-01-01", Var::DATE},
        {"20260101", Var::DATE},
        {"2026-01-01x", Var::DATE},
        {"-026-01-01", Var::DATE},
        {"2026--1-01", Var::DATE},
        {"01/02/2026", Var::DATE},
        {"10957", Var::DATE},  // a plain date has no origin to count from
        {"12:00", Var::DATE},
        {"2026-01-01T12:00", Var::DATE},
        {"24:00", Var::TIME},
        {"23:60", Var::TIME},
        {"23:59:60", Var::TIME},
        {"1:00", Var::TIME},
        {"12", Var::TIME},
        {"12:00:5", Var::TIME},
        {"12:00:00.5x", Var::TIME},
        {"-1:00", Var::TIME},
        {"2026-01-01", Var::TIME},
        {"2026-01-01", Var::DATE_TIME},
        {"2026-01-01_12:00", Var::DATE_TIME},
        {"2026-01-01T25:00", Var::DATE_TIME},
        {"abc", Var::DATE_DAYS_SINCE_1960},
        {"2026-01-01", Var::NOT_DATETIME},
    };
    for (const auto& row : kRows) {
        double plain = -99.0;
        EXPECT_FALSE(ReadDateTime(row.text, row.type, plain)) << row.text << " as " << row.type;
        EXPECT_EQ(plain, -99.0) << row.text;
    }
}

}  // namespace
}  // namespace MCVelscore_850
