// Decimals, dates and times of the C data interface as numbers and texts. What is expected is
// counted by hand: powers of ten and of two, days of the calendar.

#include "engine/tables/arrowtexts.h"

#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace MCVelscore_850 {
namespace {

// The bytes of a whole number in two's complement, `width` of them, the lowest first.
std::vector<uint8_t> Bytes(__int128 number, size_t width)
{
    std::vector<uint8_t> bytes(width, number < 0 ? 0xff : 0);
    std::memcpy(bytes.data(), &number, sizeof number);
    return bytes;
}

constexpr __int128 PowerOf10(int exponent)
{
    return exponent == 0 ? 1 : 10 * PowerOf10(exponent - 1);
}

struct DecimalRow {
    const char* name;
    __int128 whole;
    int scale;
    std::string text;
    std::optional<double> number;  // nothing where it takes the text to read it
};

void PrintTo(const DecimalRow& row, std::ostream* out) { *out << row.name; }

const __int128 k2To53 = __int128{1} << 53;
const __int128 k2To64 = __int128{1} << 64;

const DecimalRow kDecimals[] = {
    {"Zero", 0, 0, "0", 0.0},
    {"ZeroWithAFraction", 0, 5, "0", 0.0},
    {"Whole", 120, 0, "120", 120.0},
    {"Negative", -120, 0, "-120", -120.0},
    {"Fraction", 12345, 2, "123.45", 123.45},
    {"NegativeFraction", -12345, 2, "-123.45", -123.45},
    {"FractionEndsInZeros", 12300, 4, "1.23", 1.23},
    {"FractionOfZeros", 12300, 2, "123", 123.0},
    {"NothingBeforeThePoint", 5, 1, "0.5", 0.5},
    {"ZerosBehindThePoint", -5, 3, "-0.005", -0.005},
    {"ScaleBelow0", 12, -3, "12000", 12000.0},
    {"NineDigits", 999999999, 0, "999999999", 999999999.0},
    {"TenDigits", 1000000000, 0, "1000000000", 1e9},
    {"ZerosBetweenDigits", PowerOf10(18) + 7, 0, "1000000000000000007", std::nullopt},
    {"LastExactWhole", k2To53, 0, "9007199254740992", 9007199254740992.0},
    {"FirstInexactWhole", k2To53 + 1, 0, "9007199254740993", std::nullopt},
    {"ThreeWords", k2To64, 0, "18446744073709551616", std::nullopt},
    {"NegativeOfThreeWords", -k2To64, 0, "-18446744073709551616", std::nullopt},
    {"LastExactScale", 3, 22, "0.0000000000000000000003", 3e-22},
    {"FirstInexactScale", 3, 23, "0.00000000000000000000003", std::nullopt},
    {"LastExactScaleBelow0", 3, -22, "30000000000000000000000", 3e22},
    {"FirstInexactScaleBelow0", 3, -23, "300000000000000000000000", std::nullopt},
    {"DigitsOf128Bits", PowerOf10(38) - 1, 38, "0." + std::string(38, '9'), std::nullopt},
};

class ArrowDecimals : public testing::TestWithParam<DecimalRow> {};

TEST_P(ArrowDecimals, HaveTheirTextAndNumber)
{
    const DecimalRow& row = GetParam();
    for (const size_t width : {size_t{16}, size_t{32}}) {
        const ArrowDecimal decimal(Bytes(row.whole, width), row.scale);
        std::string text = "x=";
        decimal.AppendTo(text);
        EXPECT_EQ(text, "x=" + row.text) << width;
        double number = -7.0;
        EXPECT_EQ(decimal.ReadNumber(number), row.number.has_value()) << width;
        EXPECT_EQ(number, row.number.value_or(-7.0)) << width;
    }
}

INSTANTIATE_TEST_SUITE_P(All, ArrowDecimals, testing::ValuesIn(kDecimals),
                         [](const auto& each) { return each.param.name; });

TEST(ArrowDecimal, HasTheDigitsOf256Bits)
{
    std::vector<uint8_t> bytes(32, 0);
    bytes[31] = 0x80;  // -2^255
    std::string text;
    ArrowDecimal(bytes, 0).AppendTo(text);
    EXPECT_EQ(text,
              "-578960446186580977117854925043439539266"
              "34992332820282019728792003956564819968");
}

constexpr ArrowType kDays{.kind = ArrowKind::Date, .bytes = 4};
constexpr ArrowType kMillisecondsOfDates{.kind = ArrowKind::Date, .bytes = 8, .perSecond = 1000};
constexpr ArrowType kSeconds{.kind = ArrowKind::TimeOfDay, .bytes = 4, .perSecond = 1};
constexpr ArrowType kMilliseconds{.kind = ArrowKind::TimeOfDay, .bytes = 4, .perSecond = 1000};
constexpr ArrowType kMoments{.kind = ArrowKind::Timestamp, .bytes = 8, .perSecond = 1000000};
constexpr ArrowType kUtc{
    .kind = ArrowKind::Timestamp, .bytes = 8, .perSecond = 1, .hasTimeZone = true};

struct TimeRow {
    const char* name;
    ArrowType type;
    std::optional<DateTimeShape> wanted;
    int64_t number;
    const char* text;
};

void PrintTo(const TimeRow& row, std::ostream* out) { *out << row.name; }

constexpr int64_t kDay = 86400;

const TimeRow kTimes[] = {
    {"Day0", kDays, std::nullopt, 0, "1970-01-01"},
    {"DayBefore", kDays, std::nullopt, -1, "1969-12-31"},
    {"LeapDay", kDays, DateTimeShape::Date, 31 + 28 + 2 * 365, "1972-02-29"},
    {"DateAsAMidnight", kDays, DateTimeShape::DateTime, 1, "1970-01-02T00:00:00"},
    {"FirstDay", kDays, std::nullopt, -719528, "0000-01-01"},
    {"DayBeforeTheFirst", kDays, std::nullopt, -719529, "day -719529 from 1970"},
    {"LastDay", kDays, std::nullopt, 2932896, "9999-12-31"},
    {"DayBehindTheLast", kDays, std::nullopt, 2932897, "day 2932897 from 1970"},
    {"DateInMilliseconds", kMillisecondsOfDates, std::nullopt, 2 * kDay * 1000, "1970-01-03"},
    {"WithinADate", kMillisecondsOfDates, std::nullopt, -1, "1969-12-31"},
    {"Midnight", kSeconds, std::nullopt, 0, "00:00:00"},
    {"LastSecond", kSeconds, std::nullopt, kDay - 1, "23:59:59"},
    {"SecondBehindTheLast", kSeconds, std::nullopt, kDay, "second 86400 of a day"},
    {"SecondBeforeTheFirst", kSeconds, std::nullopt, -1, "second -1 of a day"},
    {"PartOfASecond", kMilliseconds, std::nullopt, 3661050, "01:01:01.05"},
    {"Moment", kMoments, std::nullopt, (kDay + 3600) * 1000000 + 500000, "1970-01-02T01:00:00.5"},
    {"MomentBefore1970", kMoments, std::nullopt, -1, "1969-12-31T23:59:59.999999"},
    {"MidnightAsADate", kMoments, DateTimeShape::Date, kDay * 1000000, "1970-01-02"},
    {"SecondIsNoDate", kMoments, DateTimeShape::Date, 1000000, "1970-01-01T00:00:01"},
    {"PartOfASecondIsNoDate", kMoments, DateTimeShape::Date, 1, "1970-01-01T00:00:00.000001"},
    {"MidnightAsItIs", kMoments, DateTimeShape::DateTime, 0, "1970-01-01T00:00:00"},
    {"WithATimeZone", kUtc, std::nullopt, 59, "1970-01-01T00:00:59Z"},
};

class ArrowTimes : public testing::TestWithParam<TimeRow> {};

TEST_P(ArrowTimes, HaveTheTextsOfTables)
{
    const TimeRow& row = GetParam();
    std::string text = "x=";
    AppendArrowTime(row.type, row.wanted, row.number, text);
    EXPECT_EQ(text, std::string("x=") + row.text);
}

INSTANTIATE_TEST_SUITE_P(All, ArrowTimes, testing::ValuesIn(kTimes),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace MCVelscore_850
