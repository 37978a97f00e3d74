#include "engine/messages/visibletext.h"

#include <algorithm>
#include <iterator>

#include <fmt/format.h>

namespace MCVelscore_850 {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

// Controls, what turns the direction of a line, and what has no width.
constexpr Range kHidden[] = {
    {0x0000, 0x001F}, {0x007F, 0x009F}, {0x00AD, 0x00AD}, {0x061C, 0x061C}, {0x200B, 0x200F},
    {0x2028, 0x202E}, {0x2060, 0x206F}, {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE007F},
};

bool Continues(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

char32_t CodeOf(std::string_view character)
{
    const auto first = static_cast<unsigned char>(character.front());
    if (first < 0x80) return first;
    constexpr unsigned char kLeadBits[] = {0x7F, 0x1F, 0x0F, 0x07};
    char32_t code = first & kLeadBits[std::min<size_t>(character.size() - 1, 3)];
    for (const char c : character.substr(1)) {
        code = code << 6 | (static_cast<unsigned char>(c) & 0x3F);
    }
    return code;
}

bool IsHidden(char32_t code)
{
    return std::any_of(std::begin(kHidden), std::end(kHidden), [code](const Range& range) {
        return code >= range.first && code <= range.last;
    });
}

}  // namespace

size_t NextCharacter(std::string_view text, size_t at)
{
    do ++at;
    while (at < text.size() && Continues(text[at]));
    return at;
}

std::string VisibleCharacter(std::string_view character)
{
    const char32_t code = CodeOf(character);
    if (!IsHidden(code)) return std::string(character);
    return fmt::format("\\u{:04X}", static_cast<unsigned>(code));
}

std::string VisibleText(std::string_view text, LineBreaks breaks)
{
    std::string visible;
    for (size_t at = 0; at < text.size();) {
        const size_t next = NextCharacter(text, at);
        const std::string_view character = text.substr(at, next - at);
        const bool isKept = breaks == LineBreaks::Kept && character == "\n";
        visible += isKept ? std::string(character) : VisibleCharacter(character);
        at = next;
    }
    return visible;
}

std::string EscapedJson(std::string_view json)
{
    std::string escaped;
    for (size_t at = 0; at < json.size();) {
        const size_t next = NextCharacter(json, at);
        const std::string_view character = json.substr(at, next - at);
        const char32_t code = CodeOf(character);
        at = next;
        if (character == "\n" || !IsHidden(code)) {
            escaped += character;
        } else if (code < 0x10000) {
            escaped += fmt::format("\\u{:04x}", static_cast<unsigned>(code));
        } else {  // a pair of surrogates
            const auto above = static_cast<unsigned>(code - 0x10000);
            escaped +=
                fmt::format("\\u{:04x}\\u{:04x}", 0xD800 + (above >> 10), 0xDC00 + (above & 0x3FF));
        }
    }
    return escaped;
}

}  // namespace MCVelscore_850
