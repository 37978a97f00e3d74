#include "engine/tables/arrowtexts.h"

#include <algorithm>
#include <bit>
#include <chrono>
#include <cmath>
#include <cstring>
#include <iterator>

#include <fmt/format.h>

#include "engine/tables/exactnumber.h"

namespace MCVelscore_850 {

namespace {

constexpr int64_t kSecondsOfDay = 86400;
constexpr int64_t kDaysToYear0 = -719528;
constexpr int64_t kDaysToYear10000 = 2932897;

// A quotient rounded down, and what is left over.
struct Divided {
    int64_t whole;
    int64_t rest;
};

Divided Divide(int64_t number, int64_t by)
{
    const int64_t rest = ((number % by) + by) % by;
    return {number / by - (number % by < 0 ? 1 : 0), rest};
}

void AppendDay(int64_t days, std::string& text)
{
    if (days < kDaysToYear0 || days >= kDaysToYear10000) {
        fmt::format_to(std::back_inserter(text), "day {} from 1970", days);
        return;
    }
    const std::chrono::year_month_day day{
        std::chrono::sys_days(std::chrono::days(static_cast<int>(days)))};
    fmt::format_to(std::back_inserter(text), "{:04}-{:02}-{:02}", static_cast<int>(day.year()),
                   static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
}

// `seconds` of a day, and a part of one.
void AppendClock(int64_t seconds, int64_t part, int64_t perSecond, std::string& text)
{
    fmt::format_to(std::back_inserter(text), "{:02}:{:02}:{:02}", seconds / 3600, seconds / 60 % 60,
                   seconds % 60);
    if (part == 0) return;
    const std::string digits = std::to_string(perSecond + part);  // a 1 keeps the zeros in front
    text += '.';
    text.append(digits, 1, digits.find_last_not_of('0'));
}

// Of a word order that is the machine's.
static_assert(std::endian::native == std::endian::little, "Arrow's buffers are read as they lie");

}  // namespace

ArrowDecimal::ArrowDecimal(std::span<const uint8_t> bytes, int scale) : scale_(scale)
{
    std::memcpy(words_, bytes.data(), bytes.size());
    const size_t words = bytes.size() / sizeof words_[0];
    isNegative_ = (words_[words - 1] >> 31) != 0;
    if (!isNegative_) return;
    uint64_t carry = 1;
    for (size_t i = 0; i < words; ++i) {
        carry += static_cast<uint32_t>(~words_[i]);
        words_[i] = static_cast<uint32_t>(carry);
        carry >>= 32;
    }
}

bool ArrowDecimal::ReadNumber(double& number) const
{
    constexpr int kMostScale = 22;  // 10^22 is the largest power of ten that is a double
    const bool isLow = std::all_of(std::begin(words_) + 2, std::end(words_),
                                   [](uint32_t word) { return word == 0; });
    const uint64_t magnitude = uint64_t{words_[1]} << 32 | words_[0];
    if (!isLow || magnitude > kMostExactWhole || std::abs(scale_) > kMostScale) return false;
    const auto whole = static_cast<double>(magnitude);
    const double power = std::pow(10.0, std::abs(scale_));  // exact, as both numbers are
    number = scale_ < 0 ? whole * power : whole / power;
    if (isNegative_) number = -number;
    return true;
}

std::string ArrowDecimal::Digits() const
{
    constexpr uint64_t kBase = 1000000000;
    uint32_t left[kMostWords];
    std::copy(std::begin(words_), std::end(words_), left);
    std::string digits;  // the lowest first
    const auto isZero = [&] {
        return std::all_of(std::begin(left), std::end(left), [](uint32_t w) { return w == 0; });
    };
    while (!isZero()) {
        uint64_t rest = 0;
        for (size_t i = kMostWords; i-- > 0;) {
            rest = rest << 32 | left[i];
            left[i] = static_cast<uint32_t>(rest / kBase);
            rest %= kBase;
        }
        for (int i = 0; i < 9; ++i, rest /= 10) digits += static_cast<char>('0' + rest % 10);
    }
    while (digits.size() > 1 && digits.back() == '0') digits.pop_back();
    if (digits.empty()) digits += '0';
    std::reverse(digits.begin(), digits.end());
    return digits;
}

void ArrowDecimal::AppendTo(std::string& text) const
{
    std::string digits = Digits();
    if (digits == "0") {
        text += digits;
        return;
    }
    if (isNegative_) text += '-';
    if (scale_ <= 0) {
        text.append(digits).append(static_cast<size_t>(-scale_), '0');
        return;
    }
    const auto fraction = static_cast<size_t>(scale_);
    if (digits.size() <= fraction) digits.insert(0, fraction + 1 - digits.size(), '0');
    digits.insert(digits.size() - fraction, 1, '.');
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.back() == '.') digits.pop_back();
    text += digits;
}

void AppendArrowTime(const ArrowType& type, std::optional<DateTimeShape> wanted, int64_t number,
                     std::string& text)
{
    if (type.kind == ArrowKind::Date) {
        const int64_t perDay = type.perSecond == 0 ? 1 : type.perSecond * kSecondsOfDay;
        AppendDay(Divide(number, perDay).whole, text);
        if (wanted == DateTimeShape::DateTime) text += "T00:00:00";
        return;
    }
    const auto [seconds, part] = Divide(number, type.perSecond);
    if (type.kind == ArrowKind::TimeOfDay) {
        if (seconds < 0 || seconds >= kSecondsOfDay) {
            fmt::format_to(std::back_inserter(text), "second {} of a day", seconds);
        } else {
            AppendClock(seconds, part, type.perSecond, text);
        }
        return;
    }
    const auto [days, ofDay] = Divide(seconds, kSecondsOfDay);
    AppendDay(days, text);
    if (wanted == DateTimeShape::Date && ofDay == 0 && part == 0) return;
    text += 'T';
    AppendClock(ofDay, part, type.perSecond, text);
    if (type.hasTimeZone) text += 'Z';
}

}  // namespace MCVelscore_850
