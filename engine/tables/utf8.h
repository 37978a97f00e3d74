#ifndef VELSCORE_ENGINE_TABLES_UTF8_H
#define VELSCORE_ENGINE_TABLES_UTF8_H

#include <cstddef>
#include <string>
#include <string_view>

namespace MCVelscore_850 {

/// True for text in UTF-8: the shortest forms of Unicode's scalar values (RFC 3629).
bool IsUtf8(std::string_view text);

/// The text with each byte that isn't of UTF-8, and NUL, as \xNN.
std::string AsUtf8(std::string_view text);

/// The bytes of the character at `at`; 0 where none of UTF-8 begins there.
size_t CharacterSize(std::string_view text, size_t at);

}  // namespace MCVelscore_850

#endif
