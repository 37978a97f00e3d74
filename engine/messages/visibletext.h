#ifndef VELSCORE_ENGINE_MESSAGES_VISIBLETEXT_H
#define VELSCORE_ENGINE_MESSAGES_VISIBLETEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace MCVelscore_850 {

/// Where the character of UTF-8 behind the one at `at` begins.
size_t NextCharacter(std::string_view text, size_t at);

/// One character of UTF-8 as a message shows it: a control character, or one that turns the
/// direction of what follows or isn't seen, as "\u202E"; any other as it is.
std::string VisibleCharacter(std::string_view character);

/// A text with all such characters shown so. Who writes several lines keeps their breaks.
enum class LineBreaks { Escaped, Kept };
std::string VisibleText(std::string_view text, LineBreaks breaks = LineBreaks::Escaped);

/// A JSON text with such characters in its strings as JSON's own escapes; what it says stays the
/// same. Line breaks between its parts are kept.
std::string EscapedJson(std::string_view json);

}  // namespace MCVelscore_850

#endif
