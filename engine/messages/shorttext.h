#ifndef VELSCORE_ENGINE_MESSAGES_SHORTTEXT_H
#define VELSCORE_ENGINE_MESSAGES_SHORTTEXT_H

#include <string>
#include <string_view>

namespace MCVelscore_850 {

/// A text of the table as a message shows it: its beginning, on one line, without the bytes that a
/// terminal would obey.
inline std::string ShortText(std::string_view text)
{
    constexpr size_t kShown = 60;
    size_t size = text.size();
    if (size > kShown) {
        size = kShown;
        // not within a character of UTF-8
        while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) --size;
    }
    std::string shown(text.substr(0, size));
    for (char& c : shown) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) c = '?';
    }
    if (size < text.size()) shown += "...";
    return shown;
}

}  // namespace MCVelscore_850

#endif
