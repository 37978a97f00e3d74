#ifndef VELSCORE_ENGINE_MESSAGES_SHORTTEXT_H
#define VELSCORE_ENGINE_MESSAGES_SHORTTEXT_H

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

#include "engine/messages/visibletext.h"

namespace MCVelscore_850 {

/// A text of a table or document as a message shows it: its beginning, on one line, with what a
/// terminal would obey or hide made visible.
inline std::string ShortText(std::string_view text)
{
    constexpr size_t kShown = 60;
    size_t size = text.size();
    if (size > kShown) {
        size = kShown;
        // not within a character of UTF-8
        while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) --size;
    }
    std::string shown = VisibleText(text.substr(0, size));
    if (size < text.size()) shown += "...";
    return shown;
}

/// Names in one line of a message, the first ones when there are many.
inline std::string JoinNames(std::span<const std::string> names, std::string_view between)
{
    constexpr size_t kShown = 20;
    std::string joined;
    for (size_t i = 0; i < std::min(names.size(), kShown); ++i) {
        if (i > 0) joined += between;
        joined += ShortText(names[i]);
    }
    if (names.size() > kShown) {
        joined += between;
        joined += "and " + std::to_string(names.size() - kShown) + " more";
    }
    return joined;
}

}  // namespace MCVelscore_850

#endif
