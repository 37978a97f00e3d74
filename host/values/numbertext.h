#ifndef VELSCORE_HOST_VALUES_NUMBERTEXT_H
#define VELSCORE_HOST_VALUES_NUMBERTEXT_H

#include <cstddef>
#include <string>
#include <string_view>

#include "host/export.h"

namespace MCVelscore_850 {

/// What a text is, read as a number.
enum class NumberText { Number, NotANumber, TooLarge };

/// Reads a decimal number with optional sign ('+' too) and exponent; blanks at the ends are
/// passed over. Overflow answers TooLarge and leaves `number`; underflow gives 0. Texts like INF,
/// NaN and hexadecimal are no numbers.
VELHOST_API NumberText ReadNumber(std::string_view text, double& number);

/// Reads a whole number that fits an int, by the same rules.
VELHOST_API NumberText ReadInteger(std::string_view text, int& number);

/// The bytes that WriteNumber() may write to: the longest text of a number has 24, and whole words
/// are stored behind its end.
inline constexpr size_t kNumberRoom = 40;

/// Writes what AppendNumber() appends to `out`, which has kNumberRoom bytes, and answers its
/// length. No NUL follows; the bytes after the text are undefined.
VELHOST_API size_t WriteNumber(double number, char* out);

/// Appends the shortest text that reads back to the same double; a whole number below 1e15 in
/// absolute value without point or exponent, minus zero as "0".
VELHOST_API void AppendNumber(double number, std::string& out);

/// True for the text that AppendNumber writes for the number; nothing is allocated.
VELHOST_API bool IsTextOfNumber(std::string_view text, double number);

/// True for two texts that ReadNumber() reads as one number, however each is written: 1 and 1.0.
VELHOST_API bool AreOneNumber(std::string_view text, std::string_view other);

/// The text without blanks (space, tab, line end) at its ends.
std::string_view TrimBlanks(std::string_view text);

inline std::string_view TrimBlanks(std::string_view text)
{
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

}  // namespace MCVelscore_850

#endif
