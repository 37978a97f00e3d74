#include "engine/tables/plainnumber.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

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

// The ways in which a column is read.
struct Way {
    const char* name;
    void (*read)(const std::string_view*, size_t, size_t, char, double*, uint64_t*);
    bool isThere;
};

const Way kWays[] = {
    {"portably", plainnumber::ReadTextsPortably, true},
#if defined(__x86_64__)
    {"by SSE4.1", plainnumber::ReadTextsBySse41, plainnumber::HasSse41()},
#endif
};

// What ReadPlainNumber() takes is the judge of which, the C++ library's reading of what.
void ExpectColumnRead(const Way& way, const std::vector<std::string_view>& texts, char decimal)
{
    std::vector<double> numbers(texts.size());
    std::vector<uint64_t> unread((texts.size() + 63) / 64);
    way.read(texts.data(), 1, texts.size(), decimal, numbers.data(), unread.data());
    for (size_t i = 0; i < texts.size(); ++i) {
        std::string text(texts[i]);
        double number = 0.0;
        const bool isRead = ((unread[i / 64] >> (i % 64)) & 1U) == 0;
        ASSERT_EQ(isRead, ReadPlainNumber(text, decimal, number)) << way.name << ": " << text;
        if (!isRead) continue;
        std::replace(text.begin(), text.end(), decimal, '.');
        double expected = 0.0;
        std::from_chars(text.data(), text.data() + text.size(), expected);
        ASSERT_EQ(std::bit_cast<uint64_t>(numbers[i]), std::bit_cast<uint64_t>(expected))
            << way.name << ": " << text;
    }
}

// One text after the other of a column, each followed by what its room may hold.
class ColumnText {
public:
    // `behind` is repeated as far as the room goes.
    void Add(std::string_view text, std::string_view behind)
    {
        places_.push_back({bytes_.size(), text.size()});
        bytes_ += text;
        for (size_t i = 0; i < kPlainNumberRoom; ++i) bytes_ += behind[i % behind.size()];
    }
    std::vector<std::string_view> Texts() const
    {
        std::vector<std::string_view> texts;
        for (const auto& [begin, size] : places_) texts.emplace_back(bytes_.data() + begin, size);
        return texts;
    }

private:
    std::string bytes_;
    std::vector<std::pair<size_t, size_t>> places_;
};

TEST(PlainNumbersInRoom, EveryWayReadsRandomTextsAsTheLibraryDoes)
{
    std::mt19937_64 random(20261127);
    const std::string characters = "0123456789.-,e\n/:";
    for (const char decimal : {'.', ','}) {
        ColumnText column;
        for (int round = 0; round < 200000; ++round) {
            std::string text = RandomDigits(random, random() % 21);
            if (random() % 4 != 0) text.insert(random() % (text.size() + 1), 1, decimal);
            if (random() % 2 == 0) text.insert(0, 1, '-');
            if (random() % 8 == 0 && !text.empty()) {
                text[random() % text.size()] = characters[random() % characters.size()];
            }
            std::string behind;
            for (size_t i = 0; i < kPlainNumberRoom; ++i) {
                behind += characters[random() % characters.size()];
            }
            column.Add(text, behind);
        }
        for (const Way& way : kWays) {
            if (!way.isThere) continue;
            std::vector<std::string_view> texts = column.Texts();
            ExpectColumnRead(way, texts, decimal);
            texts.pop_back();  // an odd number of them
            ExpectColumnRead(way, texts, decimal);
        }
    }
}

TEST(PlainNumbersInRoom, EveryWayFindsWhatIsNoDigitAtEveryPlace)
{
    ColumnText column;
    for (const std::string sign : {"", "-"}) {
        for (size_t size = 0; size <= 40; ++size) {
            for (const std::string_view behind : {"0", ".", "-", ",", "\n"}) {
                column.Add(sign + std::string(size, '7'), behind);
            }
            for (size_t place = 0; place < size; ++place) {
                for (int byte = 0; byte < 256; ++byte) {
                    std::string text(size, '7');
                    text[place] = static_cast<char>(byte);
                    column.Add(sign + text, ".");
                }
                for (size_t other = 0; other < place; ++other) {
                    std::string text(size, '7');
                    text[place] = text[other] = '.';
                    column.Add(sign + text, "7");
                }
            }
        }
    }
    for (const Way& way : kWays) {
        if (way.isThere) ExpectColumnRead(way, column.Texts(), '.');
    }
}

TEST(PlainNumbersInRoom, EveryWayReadsNoByteBehindTheRoom)
{
    LonelyText lonely;
    for (const std::string text : {"", "1", "-1", "-", "-12345678.12345", "123456789012345"}) {
        const std::string room = text + std::string(kPlainNumberRoom - text.size(), '-');
        for (const Way& way : kWays) {
            if (!way.isThere) continue;
            const std::string_view atEnd = lonely.AtEnd(room).substr(0, text.size());
            ExpectColumnRead(way, {atEnd, atEnd}, '.');
        }
    }
}

TEST(PlainNumbersInRoom, EveryWayTakesTextsThatLieApart)
{
    const std::string bytes = "1.5,x,-2,y," + std::string(kPlainNumberRoom, ',');
    const std::string_view all = bytes;
    const std::string_view texts[] = {all.substr(0, 3), all.substr(4, 1), all.substr(6, 2),
                                      all.substr(9, 1)};
    for (const Way& way : kWays) {
        if (!way.isThere) continue;
        double numbers[2] = {};
        uint64_t unread = 0;
        way.read(texts, 2, 2, '.', numbers, &unread);
        EXPECT_EQ(unread, 0U) << way.name;
        EXPECT_EQ(numbers[0], 1.5) << way.name;
        EXPECT_EQ(numbers[1], -2.0) << way.name;
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
