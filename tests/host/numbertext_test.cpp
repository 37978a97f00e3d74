#include "host/values/numbertext.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace MCVelscore_850 {
namespace {

TEST(ReadNumber, TakesDecimalTexts)
{
    const struct {
        const char* text;
        double number;
    } kRows[] = {
        {"0", 0.0},
        {"7", 7.0},
        {"-7", -7.0},
        {"+7", 7.0},
        {"2.5", 2.5},
        {".5", 0.5},
        {"-.5", -0.5},
        {"+.5", 0.5},
        {"5.", 5.0},
        {"1e3", 1000.0},
        {"1E3", 1000.0},
        {"1e+3", 1000.0},
        {"1e-3", 0.001},
        {"  4", 4.0},
        {"4\t\r\n", 4.0},
        {"000012", 12.0},
        {"0.1", 0.1},
        {"1.7976931348623157e+308", 1.7976931348623157e+308},
        {"4.9406564584124654e-324", 4.9406564584124654e-324},
        {"2.2250738585072011e-308", 2.2250738585072011e-308},  // the largest denormal
    };
    for (const auto& row : kRows) {
        double number = -1.0;
        EXPECT_EQ(ReadNumber(row.text, number), NumberText::Number) << row.text;
        EXPECT_EQ(number, row.number) << row.text;
    }
}

TEST(ReadNumber, RefusesWhatIsNoDecimalNumber)
{
    for (const char* text : {"",
                             " ",
                             "+",
                             "-",
                             ".",
                             "-.",
                             "e5",
                             "1e",
                             "1e+",
                             "+-1",
                             "-+1",
                             "++1",
                             "--1",
                             "1 2",
                             "1,5",
                             "1_000",
                             "0x10",
                             "0x1p3",
                             "1p3",
                             "INF",
                             "inf",
                             "-inf",
                             "+inf",
                             "infinity",
                             "NaN",
                             "nan",
                             "-nan",
                             "nan(1)",
                             "1.2.3",
                             "1f",
                             "\xE2\x88\x92"
                             "1",
                             "ten"}) {
        double number = -1.0;
        EXPECT_EQ(ReadNumber(text, number), NumberText::NotANumber) << text;
        EXPECT_EQ(number, -1.0) << text << " changed the number";
    }
}

TEST(ReadNumber, RefusesAnEmbeddedNul)
{
    double number = -1.0;
    EXPECT_EQ(ReadNumber(std::string_view("1\0", 2), number), NumberText::NotANumber);
}

TEST(ReadNumber, OverflowIsTooLargeAndLeavesTheNumber)
{
    const std::string longWhole(400, '9');
    const std::string smallWithLargeExponent = "0." + std::string(400, '0') + "1e800";
    for (const std::string& text :
         {std::string("1e309"), std::string("-1e309"), std::string("1.8e308"),
          std::string("1e99999999999999999999"), std::string("0.001e312"), longWhole,
          smallWithLargeExponent, std::string("1000e9223372036854775807")}) {
        double number = -1.0;
        EXPECT_EQ(ReadNumber(text, number), NumberText::TooLarge) << text;
        EXPECT_EQ(number, -1.0) << text;
    }
}

TEST(ReadNumber, UnderflowIsZero)
{
    const std::string longFraction = "0." + std::string(400, '0') + "1";
    const std::string largeWithSmallExponent = std::string(400, '9') + "e-800";
    for (const std::string& text :
         {std::string("1e-400"), std::string("-1e-400"), std::string("1e-99999999999999999999"),
          std::string("123456e-400"), longFraction, largeWithSmallExponent,
          std::string("0.0001e-9223372036854775807")}) {
        double number = -1.0;
        EXPECT_EQ(ReadNumber(text, number), NumberText::Number) << text;
        EXPECT_EQ(number, 0.0) << text;
    }
}

TEST(ReadNumber, ZeroWithAnyExponentIsZero)
{
    double number = -1.0;
    EXPECT_EQ(ReadNumber("0e999999999999999999999", number), NumberText::Number);
    EXPECT_EQ(number, 0.0);
}

TEST(ReadInteger, TakesWholeNumbersOfAnInt)
{
    const struct {
        const char* text;
        int number;
    } kRows[] = {{"0", 0},     {"12", 12},
                 {"-12", -12}, {"+12", 12},
                 {" 12 ", 12}, {"2147483647", 2147483647},
                 {"007", 7},   {"-2147483648", std::numeric_limits<int>::min()}};
    for (const auto& row : kRows) {
        int number = -99;
        EXPECT_EQ(ReadInteger(row.text, number), NumberText::Number) << row.text;
        EXPECT_EQ(number, row.number) << row.text;
    }
}

TEST(ReadInteger, RefusesFractionsExponentsAndWords)
{
    for (const char* text : {"", " ", "+", "-", "1.0", "1.", "1e2", "0x1", "1 2", "+-1", "one"}) {
        int number = -99;
        EXPECT_EQ(ReadInteger(text, number), NumberText::NotANumber) << text;
        EXPECT_EQ(number, -99) << text;
    }
}

TEST(ReadInteger, BeyondAnIntIsTooLarge)
{
    for (const char* text : {"2147483648", "-2147483649", "99999999999999999999"}) {
        int number = -99;
        EXPECT_EQ(ReadInteger(text, number), NumberText::TooLarge) << text;
        EXPECT_EQ(number, -99) << text;
    }
}

TEST(AppendNumber, AppendsAfterWhatIsThere)
{
    std::string text = "x=";
    AppendNumber(1.5, text);
    AppendNumber(-0.0, text);
    EXPECT_EQ(text, "x=1.50");
}

TEST(AppendNumber, EveryFiniteDoubleReadsBackToItself)
{
    std::mt19937_64 bits(20240229);
    int finite = 0;
    for (int i = 0; i < 100000; ++i) {
        const auto number = std::bit_cast<double>(static_cast<std::uint64_t>(bits()));
        if (!std::isfinite(number)) continue;
        ++finite;
        std::string text;
        AppendNumber(number, text);
        double back = 0.0;
        ASSERT_EQ(ReadNumber(text, back), NumberText::Number) << text;
        ASSERT_EQ(std::bit_cast<std::uint64_t>(back), std::bit_cast<std::uint64_t>(number)) << text;
    }
    EXPECT_GT(finite, 99000);  // 1 in 2048 has the exponent of infinities and NaN
}

// The standard library's shortest text is the judge, but for whole numbers below 1e15, which have
// no exponent.
std::string StandardText(double number)
{
    char text[64];
    const bool whole = std::fabs(number) < 1e15 && number == std::trunc(number);
    const auto written = whole ? std::to_chars(text, std::end(text), static_cast<long long>(number))
                               : std::to_chars(text, std::end(text), number);
    return {text, written.ptr};
}

// How many of them are written otherwise; the first few are told.
class Differences {
public:
    void Compare(double number)
    {
        char text[kNumberRoom];
        const std::string_view written(text, WriteNumber(number, text));
        const std::string expected = StandardText(number);
        ++compared_;
        if (written == expected) return;
        if (++different_ <= 5) ADD_FAILURE() << written << " for " << expected;
    }
    // A number, its neighbours, and all of them negative.
    void CompareAround(double number)
    {
        for (const double sign : {1.0, -1.0}) {
            const double inf = std::numeric_limits<double>::infinity();
            Compare(sign * number);
            Compare(sign * std::nextafter(number, inf));
            Compare(sign * std::nextafter(number, 0.0));
        }
    }
    ~Differences() { EXPECT_EQ(different_, 0) << "of " << compared_; }

private:
    int compared_ = 0;
    int different_ = 0;
};

TEST(WriteNumber, WritesEveryBitPatternAsTheStandardLibraryDoes)
{
    Differences differences;
    std::mt19937_64 bits(20261122);
    for (int i = 0; i < 1000000; ++i) differences.Compare(std::bit_cast<double>(bits()));
}

TEST(WriteNumber, WritesPowersAndTheirNeighboursAsTheStandardLibraryDoes)
{
    Differences differences;
    for (int power = -1074; power <= 1023; ++power) {
        differences.CompareAround(std::ldexp(1.0, power));
    }
    for (int power = -323; power <= 308; ++power) {
        for (int digits : {1, 2, 5, 9, 12, 99, 123, 12345, 999999}) {
            const std::string text = std::to_string(digits) + "e" + std::to_string(power);
            differences.CompareAround(std::strtod(text.c_str(), nullptr));
        }
    }
}

TEST(WriteNumber, WritesDenormalsAsTheStandardLibraryDoes)
{
    Differences differences;
    std::mt19937_64 bits(20261123);
    for (uint64_t pattern = 0; pattern < 2000; ++pattern) {
        differences.Compare(std::bit_cast<double>(pattern));
    }
    for (int i = 0; i < 50000; ++i) {
        differences.Compare(std::bit_cast<double>((bits() >> 12) >> bits() % 52));
    }
}

TEST(WriteNumber, WritesTypicalScoresAsTheStandardLibraryDoes)
{
    Differences differences;
    std::mt19937_64 random(20261124);
    std::uniform_real_distribution<> uniform(0.0, 1.0);
    for (int i = 0; i < 100000; ++i) {
        const double probability = uniform(random);
        differences.Compare(probability);
        differences.Compare(1.0 - std::pow(probability, 20));
        differences.Compare(std::exp(-60.0 * probability));
        differences.Compare(1000.0 * (probability - 0.5));
        differences.Compare(std::floor(1e6 * probability) / 1000.0);
        differences.Compare(std::floor(1e6 * probability) * 1e-9);
    }
}

TEST(WriteNumber, WritesWholeNumbersAsTheStandardLibraryDoes)
{
    Differences differences;
    std::mt19937_64 bits(20261125);
    for (int i = 0; i < 200000; ++i) {
        // Of every size up to 2^64, and around 10^15 to 10^22, where the exponent begins to be
        // shorter.
        differences.Compare(static_cast<double>(bits() >> bits() % 64));
        differences.Compare(-static_cast<double>(bits() >> bits() % 64));
        differences.Compare(1e15 * std::pow(10.0, static_cast<double>(bits() % 8000) / 1000.0));
        differences.Compare(static_cast<double>(bits() % 1000) * std::pow(10.0, bits() % 23));
    }
    for (double power = 1.0; power <= 1e23; power *= 10.0) differences.CompareAround(power);
}

TEST(WriteNumber, WritesZeroInfinitiesAndNaN)
{
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const struct {
        double number;
        std::string_view text;
    } kRows[] = {{0.0, "0"}, {-0.0, "0"}, {inf, "inf"}, {-inf, "-inf"}, {nan, "nan"}};
    for (const auto& row : kRows) {
        char text[kNumberRoom];
        EXPECT_EQ(std::string_view(text, WriteNumber(row.number, text)), row.text);
    }
}

TEST(WriteNumber, StaysWithinItsRoom)
{
    std::mt19937_64 bits(20261126);
    for (int i = 0; i < 200000; ++i) {
        char text[kNumberRoom + 8];
        std::fill(std::begin(text), std::end(text), '#');
        const uint64_t pattern = bits();
        const double number = i % 2 == 0 ? std::bit_cast<double>(pattern)
                                         : -std::ldexp(static_cast<double>(pattern), -(i % 90));
        ASSERT_LE(WriteNumber(number, text), size_t{24});
        ASSERT_EQ(std::count(text + kNumberRoom, std::end(text), '#'), 8) << number;
    }
}

TEST(IsTextOfNumber, IsTrueForTheTextThatIsWrittenAlone)
{
    EXPECT_TRUE(IsTextOfNumber("1", 1.0));
    EXPECT_TRUE(IsTextOfNumber("0", -0.0));
    EXPECT_TRUE(IsTextOfNumber("0.30000000000000004", 0.30000000000000004));
    EXPECT_TRUE(IsTextOfNumber("-1.7976931348623157e+308", -1.7976931348623157e308));
    for (const char* text : {"1.0", "01", "+1", "1 ", "1e0", "", "2"}) {
        EXPECT_FALSE(IsTextOfNumber(text, 1.0)) << text;
    }
}

TEST(AreOneNumber, ComparesNumbersHoweverTheyAreWritten)
{
    for (const char* text : {"1", "1.0", "+1", " 1 ", "1e0", "10e-1", "01"}) {
        EXPECT_TRUE(AreOneNumber("1", text)) << text;
        EXPECT_TRUE(AreOneNumber(text, "1")) << text;
    }
    EXPECT_TRUE(AreOneNumber("0", "-0.0"));
    for (const char* text : {"-1", "2", "1.0000000000000002", "", "one", "1e999"}) {
        EXPECT_FALSE(AreOneNumber("1", text)) << text;
        EXPECT_FALSE(AreOneNumber(text, "1")) << text;
    }
    // What is no number isn't the number of a like text either.
    for (const char* text : {"", "one", "1e999"}) EXPECT_FALSE(AreOneNumber(text, text)) << text;
}

TEST(TrimBlanks, TakesBlanksOffBothEndsAlone)
{
    EXPECT_EQ(TrimBlanks(" \t a b \r\n"), "a b");
    EXPECT_EQ(TrimBlanks(" \t\r\n"), "");
    EXPECT_EQ(TrimBlanks(""), "");
    EXPECT_EQ(TrimBlanks("\xC2\xA0x"), "\xC2\xA0x");  // a no-break space is text
}

}  // namespace
}  // namespace MCVelscore_850
