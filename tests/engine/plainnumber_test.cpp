#include "engine/tables/plainnumber.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "host/values/numbertext.h"

namespace MCVelscore_850 {
namespace {

std::string RandomDigits(std::mt19937_64& random, size_t count)
{
    std::string digits;
    for (size_t i = 0; i < count; ++i) digits += static_cast<char>('0' + random() % 10);
    return digits;
}

// The C library's reading is the judge.
void ExpectRead(const std::string& text)
{
    double number = 0.0;
    ASSERT_TRUE(ReadPlainNumber(text, '.', number)) << text;
    ASSERT_EQ(number, std::strtod(text.c_str(), nullptr)) << text;
    ASSERT_EQ(std::signbit(number), text.front() == '-') << text;
}

// Bytes at the very end, or begin, of what may be read at all.
class LonelyText {
public:
    LonelyText()
        : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
          pages_(static_cast<char*>(
              mmap(nullptr, 3 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)))
    {
        if (mprotect(pages_ + page_, page_, PROT_READ | PROT_WRITE) != 0) std::abort();
    }
    LonelyText(const LonelyText&) = delete;
    LonelyText& operator=(const LonelyText&) = delete;
    ~LonelyText() { munmap(pages_, 3 * page_); }

    std::string_view AtEnd(std::string_view text)
    {
        return Put(text, pages_ + 2 * page_ - text.size());
    }
    std::string_view AtBegin(std::string_view text) { return Put(text, pages_ + page_); }

private:
    std::string_view Put(std::string_view text, char* place)
    {
        std::copy(text.begin(), text.end(), place);
        return {place, text.size()};
    }

    size_t page_;
    char* pages_;
};

TEST(PlainNumber, ReadsToTheNearestDouble)
{
    std::mt19937_64 random(20261121);
    for (int round = 0; round < 200000; ++round) {
        const size_t digits = 1 + random() % 15;
        std::string text = RandomDigits(random, digits);
        if (random() % 4 != 0) text.insert(random() % (digits + 1), 1, '.');
        if (random() % 2 == 0) text.insert(0, 1, '-');
        ExpectRead(text);
    }
}

TEST(PlainNumber, ReadsWholeNumbersOfUpTo19Digits)
{
    std::mt19937_64 random(20261122);
    for (int round = 0; round < 50000; ++round) ExpectRead(RandomDigits(random, 1 + random() % 19));
    // 2^53 + 1 is the middle of two doubles and goes to the even one; the largest of 19 digits.
    for (const char* text : {"9007199254740993", "-9007199254740995", "9999999999999999999"}) {
        ExpectRead(text);
    }
}

TEST(PlainNumber, ReadsNearlyAllLongNumbersToTheNearestDouble)
{
    std::mt19937_64 random(20261123);
    int left = 0;
    constexpr int kRounds = 300000;
    for (int round = 0; round < kRounds; ++round) {
        // Zeros in front as of probabilities; all digits 9 are near a power of two's border at
        // times.
        const size_t zeros = random() % 3 == 0 ? random() % 5 : 0;
        std::string text = std::string(zeros, '0') + RandomDigits(random, 19 - zeros);
        if (random() % 8 == 0) text.erase(16);
        text.insert(random() % (text.size() + 1), 1, '.');
        double number = 0.0;
        if (ReadPlainNumber(text, '.', number)) {
            ASSERT_EQ(number, std::strtod(text.c_str(), nullptr)) << text;
        } else {
            ++left;
        }
    }
    EXPECT_LT(left, kRounds / 500);
}

TEST(PlainNumber, ReadsZerosOfAnyLength)
{
    for (size_t size = 1; size <= 19; ++size) {
        ExpectRead(std::string(size, '0'));
        ExpectRead("-." + std::string(size, '0'));
    }
}

// From 2^52 to 2^53 doubles are whole, so halves are the middles of two of them.
TEST(PlainNumber, RoundsMiddlesAndTheirNeighboursRightOrLeavesThem)
{
    std::mt19937_64 random(20261124);
    int read = 0;
    for (int round = 0; round < 100000; ++round) {
        const uint64_t whole = (uint64_t{1} << 52) + (random() >> 12) % (uint64_t{1} << 52);
        for (const char* decimals : {".5", ".50", ".499", ".501", ".49", ".51", ".0", ".9"}) {
            const std::string text = std::to_string(whole) + decimals;
            double number = 0.0;
            if (!ReadPlainNumber(text, '.', number)) continue;
            ++read;
            ASSERT_EQ(number, std::strtod(text.c_str(), nullptr)) << text;
        }
    }
    EXPECT_GT(read, 100000);
}

TEST(PlainNumber, ReadsWhatEveryDoubleIsWrittenAs)
{
    std::mt19937_64 random(20261125);
    std::uniform_real_distribution<> uniform(0.0, 1.0);
    for (int round = 0; round < 200000; ++round) {
        const double written = round % 2 == 0 ? uniform(random) : 2000.0 * uniform(random) - 1000.0;
        char text[kNumberRoom];
        double number = 0.0;
        if (ReadPlainNumber({text, WriteNumber(written, text)}, '.', number)) {
            ASSERT_EQ(number, written);
        }
    }
}

TEST(PlainNumber, LeavesEverythingElseToTheFullReading)
{
    for (const char* text : {"",
                             "-",
                             ".",
                             "-.",
                             "1e5",
                             "+1",
                             " 1",
                             "1 ",
                             "1.2.3",
                             "--1",
                             "1-",
                             "nan",
                             "inf",
                             "0x1",
                             "1,5",
                             "12345678901234567890",
                             "0.1234567890123456789",
                             "-0.1234567890123456789",
                             "00000000000000000000000001",
                             "1.000000000000000000000000"}) {
        double number = 7.0;
        EXPECT_FALSE(ReadPlainNumber(text, '.', number)) << text;
        EXPECT_EQ(number, 7.0) << text;
    }
}

TEST(PlainNumber, FindsWhatIsNoDigitAtEveryPlace)
{
    for (size_t size = 1; size <= 19; ++size) {
        for (size_t place = 0; place < size; ++place) {
            for (int byte = 0; byte < 256; ++byte) {
                const char c = static_cast<char>(byte);
                if ((c >= '0' && c <= '9') || (c == '-' && place == 0)) continue;
                std::string text(size, '1');
                text[place] = c;
                double number = 7.0;
                const bool isNumber = c == '.' && size > 1;
                ASSERT_EQ(ReadPlainNumber(text, '.', number), isNumber) << text;
                if (isNumber) ExpectRead(text);
            }
            for (size_t other = 0; other < place; ++other) {
                std::string text(size, '1');
                text[place] = text[other] = '.';
                double number = 7.0;
                ASSERT_FALSE(ReadPlainNumber(text, '.', number)) << text;
            }
        }
    }
}

TEST(PlainNumber, ReadsNoByteBesideTheText)
{
    LonelyText lonely;
    const std::string digits = "1234567890.123456789";
    for (size_t size = 0; size <= digits.size(); ++size) {
        for (const std::string& text : {digits.substr(0, size), "-" + digits.substr(0, size)}) {
            double number = 0.0;
            ASSERT_EQ(ReadPlainNumber(lonely.AtEnd(text), '.', number), size > 0) << text;
            ASSERT_EQ(ReadPlainNumber(lonely.AtBegin(text), '.', number), size > 0) << text;
        }
    }
}

TEST(PlainNumberInRoom, ReadsTheSameWhateverFollowsWithinItsRoom)
{
    LonelyText lonely;
    std::mt19937_64 random(20261126);
    const std::string characters = "0123456789.-,e\n";
    for (int round = 0; round < 200000; ++round) {
        std::string text;
        for (size_t i = random() % (kPlainNumberRoom + 1); i > 0; --i) {
            text += characters[random() % (random() % 4 == 0 ? characters.size() : 10)];
        }
        double number = 7.0;
        const bool isNumber = ReadPlainNumber(text, '.', number);
        std::string room = text;
        while (room.size() < kPlainNumberRoom) room += characters[random() % characters.size()];
        double numberInRoom = 7.0;
        ASSERT_EQ(
            ReadPlainNumberInRoom(lonely.AtEnd(room).substr(0, text.size()), '.', numberInRoom),
            isNumber)
            << room;
        ASSERT_EQ(numberInRoom, number) << room;
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
