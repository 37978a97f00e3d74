#ifndef VELSCORE_ENGINE_TABLES_PLAINNUMBER_H
#define VELSCORE_ENGINE_TABLES_PLAINNUMBER_H

#include <cstdint>
#include <string_view>

namespace MCVelscore_850 {

/// Reads a number as most fields of a table hold it: an optional minus, then up to 15 digits with
/// at most one `decimal` mark among or before them. False for any other text, which may be a number
/// all the same.
///
/// Error  none, the double is the nearest one: the digits as a whole number are below 2^53 and the
///        power of ten is at most 10^15, so both are exact doubles, and one division rounds once.
inline bool ReadPlainNumber(std::string_view text, char decimal, double& number)
{
    constexpr size_t kDigits = 15;
    // Static, or each call would write the table to its stack.
    static constexpr double kPowers[kDigits + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                                    1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
    const char* place = text.data();
    const char* const end = place + text.size();
    const bool negative = place != end && *place == '-';
    if (negative) ++place;
    if (static_cast<size_t>(end - place) > kDigits + 1) return false;
    const char* afterMark = nullptr;
    uint64_t whole = 0;
    size_t digits = 0;
    for (; place != end; ++place) {
        const auto digit = static_cast<unsigned>(static_cast<unsigned char>(*place)) - '0';
        if (digit <= 9) {
            whole = whole * 10 + digit;
            ++digits;
        } else if (*place == decimal && afterMark == nullptr) {
            afterMark = place + 1;
        } else {
            return false;
        }
    }
    if (digits == 0 || digits > kDigits) return false;
    double value = static_cast<double>(whole);
    if (afterMark != nullptr) value /= kPowers[end - afterMark];
    number = negative ? -value : value;
    return true;
}

}  // namespace MCVelscore_850

#endif
