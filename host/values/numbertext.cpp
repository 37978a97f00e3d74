#include "host/values/numbertext.h"

#include <algorithm>
#include <charconv>
#include <cmath>

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

using NumberBuffer = char[32];

std::string_view WriteNumber(double number, NumberBuffer& buffer)
{
    constexpr double kWholeLimit = 1e15;  // below it every whole double is exact in a long long
    const bool whole = std::fabs(number) < kWholeLimit && number == std::trunc(number);
    const auto written =
        whole ? std::to_chars(buffer, buffer + sizeof buffer, static_cast<long long>(number))
              : std::to_chars(buffer, buffer + sizeof buffer, number);
    return {buffer, written.ptr};
}

}  // namespace

void AppendNumber(double number, std::string& out)
{
    NumberBuffer buffer;
    out += WriteNumber(number, buffer);
}

bool IsTextOfNumber(std::string_view text, double number)
{
    NumberBuffer buffer;
    return text == WriteNumber(number, buffer);
}

}  // namespace MCVelscore_850
