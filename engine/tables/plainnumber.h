#ifndef VELSCORE_ENGINE_TABLES_PLAINNUMBER_H
#define VELSCORE_ENGINE_TABLES_PLAINNUMBER_H

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "host/values/eightbytes.h"

namespace MCVelscore_850 {

/// Reads a number as most fields of a table hold it: an optional minus, then up to 19 digits with
/// at most one `decimal` mark before, among or behind them. False for any other text, and for one
/// in some 1,000 of those with more than 16 characters after the sign; it may be a number all the
/// same.
///
/// Error  none, the double is the nearest one. Of up to 16 characters the digits as a whole number
///        and the power of ten are exact doubles where there is a mark, and one division rounds
///        once. DivideByPowerOfTen() says when it is sure of more.
bool ReadPlainNumber(std::string_view text, char decimal, double& number);

/// The bytes from a field's begin on, whatever its length, that the readings "in room" may read: a
/// sign, and sixteen behind it.
inline constexpr size_t kPlainNumberRoom = 17;

/// The same, faster for short texts, for fields that lie in a buffer with kPlainNumberRoom bytes
/// from each field's begin on. What the bytes behind the text hold changes nothing.
bool ReadPlainNumberInRoom(std::string_view text, char decimal, double& number);

/// The same of `count` texts that lie `stride` apart: the numbers of those that are read, and the
/// bit of each other one in `unread`, which has zeros before. The processor chooses the way.
void ReadPlainNumbersInRoom(const std::string_view* texts, size_t stride, size_t count,
                            char decimal, double* numbers, uint64_t* unread);

namespace plainnumber {

inline constexpr size_t kMostDigits = 19;  // what a 64-bit number surely holds
inline constexpr uint64_t kExactLimit = uint64_t{1} << 53;
inline constexpr uint64_t kTenTo8 = 100000000;

/// The double nearest to whole / 10^power, power being at most 19. False where either is 0, and
/// where the quotient is so near the middle of two doubles that its first 64 bits don't tell.
bool DivideByPowerOfTen(uint64_t whole, size_t power, double& quotient);

/// ReadPlainNumber() for the 17 to 20 characters after the sign.
bool ReadLong(std::string_view text, bool negative, char decimal, double& number);

/// The ways of ReadPlainNumbersInRoom(). The second takes sixteen characters at once, and leaves
/// texts of more than 15 behind the sign to the first.
void ReadTextsPortably(const std::string_view* texts, size_t stride, size_t count, char decimal,
                       double* numbers, uint64_t* unread);
#if defined(__x86_64__)
void ReadTextsBySse41(const std::string_view* texts, size_t stride, size_t count, char decimal,
                      double* numbers, uint64_t* unread);
bool HasSse41();
#endif

/// A digit becomes its value, anything else a byte of another value.
inline uint64_t DigitsOf(uint64_t characters) { return characters ^ EightTimes('0'); }

/// The highest bit of each byte that is no digit.
inline uint64_t OthersAmong(uint64_t digits)
{
    constexpr uint64_t kHighest = EightTimes(0x80);
    return (((digits & ~kHighest) + EightTimes(0x80 - 10)) | digits) & kHighest;
}

/// The number that eight digits make. Neighbours become numbers of two digits; then those of even
/// and of odd place are added up, each times its power of ten, in the upper half of a word.
inline uint64_t NumberOf(uint64_t digits)
{
    constexpr uint64_t kEverySecond = 0x000000FF000000FFU;
    constexpr uint64_t kEvenPowers = 100 + (uint64_t{1000000} << 32);
    constexpr uint64_t kOddPowers = 1 + (uint64_t{10000} << 32);
    const uint64_t twos = digits * 10 + (digits >> 8);
    return ((twos & kEverySecond) * kEvenPowers + ((twos >> 16) & kEverySecond) * kOddPowers) >> 32;
}

/// Fewer than eight characters, but one at least, in the lowest bytes.
inline uint64_t LoadFewBytes(const char* bytes, size_t size)
{
    const auto byte = [bytes](size_t i) {
        return uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
    };
    if (size < 4) return byte(0) | byte(size / 2) | byte(size - 1);
    // Bytes that both halves hold are the same.
    return LoadFourBytes(bytes) | LoadFourBytes(bytes + size - 4) << (8 * (size - 4));
}

/// The number of `size` characters that stand at the end of words; before them stand zeros.
template <size_t kWords>
inline bool ReadWords(std::array<uint64_t, kWords> words, size_t size, bool negative, char decimal,
                      double& number)
{
    static constexpr double kPowers[kMostDigits + 1] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,
                                                        1e7,  1e8,  1e9,  1e10, 1e11, 1e12, 1e13,
                                                        1e14, 1e15, 1e16, 1e17, 1e18, 1e19};
    size_t marks = 0;
    size_t decimals = 0;
    for (size_t i = 0; i < kWords; ++i) {
        const uint64_t others = OthersAmong(words[i]);
        if (others == 0) continue;
        if (++marks > 1 || (others & (others - 1)) != 0) return false;
        const int place = std::countr_zero(others) - 7;  // of the byte's lowest bit
        const uint64_t mark = uint64_t{0xFF} << place;
        if (((words[i] ^ DigitsOf(EightTimes(static_cast<unsigned char>(decimal)))) & mark) != 0) {
            return false;
        }
        decimals = 8 * (kWords - i) - 1 - static_cast<size_t>(place) / 8;
        // What stands before the mark moves up to what stands behind it.
        const uint64_t before = (uint64_t{1} << place) - 1;
        words[i] = (words[i] & ~before & ~mark) | (words[i] & before) << 8;
        for (size_t j = i; j > 0; --j) {
            words[j] |= words[j - 1] >> 56;
            words[j - 1] <<= 8;
        }
    }
    if (size == marks || size - marks > kMostDigits) return false;
    uint64_t whole = NumberOf(words[0]);
    for (size_t i = 1; i < kWords; ++i) whole = whole * kTenTo8 + NumberOf(words[i]);
    double value = 0.0;
    // A long text has two ways, of which the first is mostly sure: which of them its digits allow
    // can't be foreseen. A whole number is rounded as it becomes a double.
    if (kWords < 3 || !DivideByPowerOfTen(whole, decimals, value)) {
        if (kWords > 1 && decimals > 0 && whole > kExactLimit) return false;
        value = static_cast<double>(whole) / kPowers[decimals];
    }
    // Which sign comes can't be foreseen: it is set without asking.
    number = std::bit_cast<double>(std::bit_cast<uint64_t>(value) | uint64_t{negative} << 63);
    return true;
}

template <bool kInRoom>
inline bool Read(std::string_view text, char decimal, double& number)
{
    if (text.empty()) return false;
    const bool negative = text.front() == '-';
    text.remove_prefix(negative ? 1 : 0);
    const char* const begin = text.data();
    const size_t size = text.size();
    if (size > 16) return ReadLong(text, negative, decimal, number);
    if (size >= 8) {
        // Characters that both words hold are shifted out of the first.
        const uint64_t last = DigitsOf(LoadEightBytes(begin + size - 8));
        if (size == 8) return ReadWords<1>({last}, size, negative, decimal, number);
        const uint64_t first = DigitsOf(LoadEightBytes(begin)) << (8 * (16 - size));
        return ReadWords<2>({first, last}, size, negative, decimal, number);
    }
    if (size == 0) return false;
    const uint64_t characters = kInRoom ? LoadEightBytes(begin) : LoadFewBytes(begin, size);
    return ReadWords<1>({DigitsOf(characters) << (8 * (8 - size))}, size, negative, decimal,
                        number);
}

}  // namespace plainnumber

inline bool ReadPlainNumber(std::string_view text, char decimal, double& number)
{
    return plainnumber::Read<false>(text, decimal, number);
}

inline bool ReadPlainNumberInRoom(std::string_view text, char decimal, double& number)
{
    return plainnumber::Read<true>(text, decimal, number);
}

}  // namespace MCVelscore_850

#endif
