#include "engine/tables/plainnumber.h"

#include <cmath>
#include <cstdlib>
#include <random>
#include <string>

#include <gtest/gtest.h>

namespace MCVelscore_850 {
namespace {

// The C library's reading is the judge.
TEST(PlainNumber, ReadsToTheNearestDouble)
{
    std::mt19937_64 random(20261121);
    for (int round = 0; round < 200000; ++round) {
        const size_t digits = 1 + random() % 15;
        std::string text;
        for (size_t i = 0; i < digits; ++i) text += static_cast<char>('0' + random() % 10);
        if (random() % 4 != 0) text.insert(random() % (digits + 1), 1, '.');
        if (random() % 2 == 0) text.insert(0, 1, '-');
        double number = 0.0;
        ASSERT_TRUE(ReadPlainNumber(text, '.', number)) << text;
        ASSERT_EQ(number, std::strtod(text.c_str(), nullptr)) << text;
        ASSERT_EQ(std::signbit(number), text.front() == '-') << text;
    }
}

TEST(PlainNumber, LeavesEverythingElseToTheFullReading)
{
    for (const char* text : {"", "-", ".", "-.", "1e5", "+1", " 1", "1 ", "1.2.3", "--1", "1-",
                             "nan", "inf", "0x1", "1,5", "1234567890123456", "0.123456789012345"}) {
        double number = 7.0;
        EXPECT_FALSE(ReadPlainNumber(text, '.', number)) << text;
        EXPECT_EQ(number, 7.0) << text;
    }
}

TEST(PlainNumber, TakesAnotherDecimalMark)
{
    double number = 0.0;
    ASSERT_TRUE(ReadPlainNumber("-1,25", ',', number));
    EXPECT_EQ(number, -1.25);
    EXPECT_FALSE(ReadPlainNumber("1.25", ',', number));
}

}  // namespace
}  // namespace MCVelscore_850
