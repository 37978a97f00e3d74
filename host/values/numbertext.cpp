#include "host/values/numbertext.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>

#include <dragonbox/dragonbox.h>

#include "host/values/eightbytes.h"

namespace MCVelscore_850 {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Whether a decimal text that has no double is too large rather than too small: the place of its
// first significant digit, counted from the decimal point, plus its exponent.
bool IsLarge(std::string_view text)
{
    long place = 0;
    bool significant = false;
    bool afterPoint = false;
    size_t i = 0;
    for (; i < text.size() && text[i] != 'e' && text[i] != 'E'; ++i) {
        if (text[i] == '.') {
            afterPoint = true;
        } else if (IsDigit(text[i])) {
            if (text[i] != '0') significant = true;
            if (significant && !afterPoint) ++place;
            if (!significant && afterPoint) --place;
        }
    }
    if (i == text.size()) return place > 0;
    const bool negative = i + 1 < text.size() && text[i + 1] == '-';
    const size_t digits = text.find_first_of("0123456789", i);
    long exponent = 0;
    const auto read = std::from_chars(text.data() + digits, text.data() + text.size(), exponent);
    // Cut where no text can be long enough to outweigh it, so that the sum can't overflow.
    constexpr long kLargestExponent = 1L << 60;
    if (read.ec == std::errc::result_out_of_range) exponent = kLargestExponent;
    exponent = std::min(exponent, kLargestExponent);
    return place + (negative ? -exponent : exponent) > 0;
}

}  // namespace

NumberText ReadNumber(std::string_view text, double& number)
{
    text = TrimBlanks(text);
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') return NumberText::NotANumber;
    }
    const size_t first = !text.empty() && text.front() == '-' ? 1 : 0;
    if (first == text.size() || !(IsDigit(text[first]) || text[first] == '.')) {
        return NumberText::NotANumber;  // "inf" and "nan" end here too
    }
    double value = 0.0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value);
    if (read.ptr != end) return NumberText::NotANumber;
    if (read.ec == std::errc::invalid_argument) return NumberText::NotANumber;
    if (read.ec == std::errc::result_out_of_range) {
        if (IsLarge(text)) return NumberText::TooLarge;
        value = 0.0;
    }
    number = value;
    return NumberText::Number;
}

NumberText ReadInteger(std::string_view text, int& number)
{
    text = TrimBlanks(text);
    if (!text.empty() && text.front() == '+') {
        text.remove_prefix(1);
        if (!text.empty() && text.front() == '-') return NumberText::NotANumber;
    }
    const char* end = text.data() + text.size();
    int value = 0;
    const auto read = std::from_chars(text.data(), end, value);
    if (read.ptr != end || read.ec == std::errc::invalid_argument) return NumberText::NotANumber;
    if (read.ec == std::errc::result_out_of_range) return NumberText::TooLarge;
    number = value;
    return NumberText::Number;
}

namespace {

constexpr uint64_t kTenTo8 = 100000000;
constexpr size_t kMostDigits = 17;  // that the shortest text of a double needs
constexpr auto kPowersOfTen = [] {
    std::array<uint64_t, kMostDigits + 1> powers{1};
    for (size_t i = 1; i < powers.size(); ++i) powers[i] = 10 * powers[i - 1];
    return powers;
}();
constexpr uint64_t kZeros = EightTimes('0');

// The eight digits of a number below 10^8, leading zeros too, as a word of values 0 to 9, the first
// digit lowest. Halves are split side by side in one word: into 4 digits, 2 and 1. The quotients
// by 100 and 10 are products with 2^20/100 and 2^10/10, exact for so few digits.
inline uint64_t EightDigits(uint64_t number)
{
    const uint64_t fours = number / 10000 + (number % 10000 << 32);
    const uint64_t hundreds = (fours * 10486 >> 20) & 0x0000007F0000007FU;
    const uint64_t twos = hundreds + ((fours - 100 * hundreds) << 16);
    const uint64_t tens = (twos * 103 >> 10) & 0x000F000F000F000FU;
    return tens + ((twos - 10 * tens) << 8);
}

// The sixteen digits of two numbers below 10^8 as text, and how many they are up to the last one
// that isn't 0.
struct SixteenDigits {
    uint64_t high;
    uint64_t low;
    int count;
};

inline SixteenDigits MakeSixteenDigits(uint64_t high, uint64_t low)
{
    const uint64_t first = EightDigits(high);
    const uint64_t second = EightDigits(low);
    const int zeros = second != 0 ? std::countl_zero(second) / 8 : 8 + std::countl_zero(first) / 8;
    return {first | kZeros, second | kZeros, 16 - zeros};
}

// A whole number below 10^16.
size_t WriteWhole(uint64_t number, char* out)
{
    if (number < kTenTo8) {
        if (number < 10) {
            *out = static_cast<char>('0' + number);
            return 1;
        }
        const uint64_t digits = EightDigits(number);
        const int zeros = std::countr_zero(digits) / 8 % 8;  // never all of them
        StoreEightBytes((digits | kZeros) >> 8 * zeros, out);
        return static_cast<size_t>(8 - zeros);
    }
    const size_t before = WriteWhole(number / kTenTo8, out);
    StoreEightBytes(EightDigits(number % kTenTo8) | kZeros, out + before);
    return before + 8;
}

// The shortest digits that read back: d.ddd times 10^exponent.
struct ShortestDigits {
    char first;
    SixteenDigits rest;
    int exponent;
};

inline ShortestDigits FindShortestDigits(double positive)
{
    const auto decimal = jkj::dragonbox::to_decimal(positive, jkj::dragonbox::policy::sign::ignore,
                                                    jkj::dragonbox::policy::trailing_zero::ignore);
    // 1233 / 2^12 is log10(2): the number of digits, or one less.
    auto length = static_cast<size_t>(std::bit_width(decimal.significand)) * 1233 >> 12;
    length += decimal.significand >= kPowersOfTen[length] ? 1 : 0;
    const uint64_t all = decimal.significand * kPowersOfTen[kMostDigits - length];
    const uint64_t high = all / kTenTo8;
    return {static_cast<char>('0' + high / kTenTo8),
            MakeSixteenDigits(high % kTenTo8, all % kTenTo8),
            decimal.exponent + static_cast<int>(length) - 1};
}

inline void StoreDigits(const ShortestDigits& digits, char* out)
{
    *out = digits.first;
    StoreEightBytes(digits.rest.high, out + 1);
    StoreEightBytes(digits.rest.low, out + 9);
}

// 0.000ddd: at most three zeros behind the point.
inline char* WriteBelowOne(const ShortestDigits& digits, char* out)
{
    StoreEightBytes(kZeros, out);
    out[1] = '.';
    char* const first = out + 1 - digits.exponent;
    StoreDigits(digits, first);
    return first + 1 + digits.rest.count;
}

// ddd.ddd
inline char* WriteWithPoint(const ShortestDigits& digits, char* out)
{
    StoreDigits(digits, out);
    // The digits after the point a byte further on. They come from the words: to load what was just
    // stored, at another offset, would wait for the stores.
    const bool isLong = digits.exponent >= 8;
    const uint64_t high = isLong ? digits.rest.low : digits.rest.high;
    const uint64_t low = isLong ? 0 : digits.rest.low;
    const int shift = 8 * (digits.exponent % 8);
    char* const point = out + digits.exponent + 1;
    *point = '.';
    StoreEightBytes(high >> shift | (low << 1) << (63 - shift), point + 1);
    StoreEightBytes(low >> shift, point + 9);
    return out + digits.rest.count + 2;
}

// d.ddde-07: the exponent has two digits or three.
inline char* WriteScientific(const ShortestDigits& digits, char* out)
{
    StoreDigits(digits, out + 1);
    out[0] = digits.first;
    out[1] = '.';
    char* place = out + (digits.rest.count == 0 ? 1 : digits.rest.count + 2);
    *place++ = 'e';
    *place++ = digits.exponent < 0 ? '-' : '+';
    const int exponent = std::abs(digits.exponent);
    if (exponent >= 100) *place++ = static_cast<char>('0' + exponent / 100);
    *place++ = static_cast<char>('0' + exponent / 10 % 10);
    *place++ = static_cast<char>('0' + exponent % 10);
    return place;
}

}  // namespace

size_t WriteNumber(double number, char* out)
{
    constexpr double kWholeLimit = 1e15;  // below it every whole number is written without exponent
    const double size = std::fabs(number);
    char* place = out;
    if (number < 0.0) *place++ = '-';
    if (size < kWholeLimit) {
        const auto whole = static_cast<int64_t>(size);
        if (static_cast<double>(whole) == size) {
            return static_cast<size_t>(place - out) +
                   WriteWhole(static_cast<uint64_t>(whole), place);
        }
        const ShortestDigits digits = FindShortestDigits(size);
        // The shorter of the two forms, and the one without exponent of two that are as long: of a
        // single digit the scientific one has no point.
        const int lowest = digits.rest.count == 0 ? -3 : -4;
        place = digits.exponent >= 0        ? WriteWithPoint(digits, place)
                : digits.exponent >= lowest ? WriteBelowOne(digits, place)
                                            : WriteScientific(digits, place);
        return static_cast<size_t>(place - out);
    }
    // Up to 22 digits a whole number may be shorter with all of them, and then they are exact, not
    // only those that read back; infinities and NaN have their words.
    constexpr double kExponentLimit = 1e22;
    if (!(size >= kExponentLimit && std::isfinite(size))) {
        return static_cast<size_t>(std::to_chars(out, out + kNumberRoom, number).ptr - out);
    }
    place = WriteScientific(FindShortestDigits(size), place);
    return static_cast<size_t>(place - out);
}

void AppendNumber(double number, std::string& out)
{
    char text[kNumberRoom];
    out.append(text, WriteNumber(number, text));
}

bool IsTextOfNumber(std::string_view text, double number)
{
    char written[kNumberRoom];
    return text == std::string_view(written, WriteNumber(number, written));
}

bool AreOneNumber(std::string_view text, std::string_view other)
{
    double number = 0.0;
    double otherNumber = 0.0;
    return ReadNumber(text, number) == NumberText::Number &&
           ReadNumber(other, otherNumber) == NumberText::Number && number == otherNumber;
}

}  // namespace MCVelscore_850
