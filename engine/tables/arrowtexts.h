#ifndef VELSCORE_ENGINE_TABLES_ARROWTEXTS_H
#define VELSCORE_ENGINE_TABLES_ARROWTEXTS_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "engine/tables/arrowtype.h"
#include "host/values/datetimetext.h"

namespace MCVelscore_850 {

/// A decimal of the C data interface: a whole number of 128 or 256 bits in two's complement, the
/// lowest byte first, divided by 10^scale.
class ArrowDecimal {
public:
    ArrowDecimal(std::span<const uint8_t> bytes, int scale);

    /// Its number where that is exactly digits that a double holds, rounded once; false else.
    bool ReadNumber(double& number) const;
    /// Appends its digits, without zeros that end the fraction: 1.50 is "1.5".
    void AppendTo(std::string& text) const;

private:
    std::string Digits() const;

    static constexpr size_t kMostWords = 8;
    uint32_t words_[kMostWords] = {};  ///< of the magnitude, the lowest first
    bool isNegative_ = false;
    int scale_;
};

/// Appends a date, a time of day or both as tables of texts have them: 2026-11-21, 23:59:59.5,
/// 2026-11-21T23:59:59.5, with a Z behind where the type has a time zone. For who reads dates a
/// midnight is its date, and for who reads both a date its midnight. A number that is none of these
/// gives a text that nobody reads as one: beyond the years 0 to 9999, or the hours of a day.
void AppendArrowTime(const ArrowType& type, std::optional<DateTimeShape> wanted, int64_t number,
                     std::string& text);

}  // namespace MCVelscore_850

#endif
