#include "engine/tables/utf8.h"

#include <cstdint>
#include <cstring>

#include <fmt/format.h>

namespace MCVelscore_850 {

namespace {

// Where the first byte beyond ASCII may be: no later than it is.
size_t PassAscii(std::string_view text, size_t at)
{
    constexpr uint64_t kHighBits = 0x8080808080808080U;
    for (; at + sizeof(uint64_t) <= text.size(); at += sizeof(uint64_t)) {
        uint64_t eight = 0;
        std::memcpy(&eight, text.data() + at, sizeof eight);
        if ((eight & kHighBits) != 0) break;
    }
    return at;
}

}  // namespace

size_t CharacterSize(std::string_view text, size_t at)
{
    struct Lead {
        unsigned char low, high;    // of the first byte
        unsigned char low2, high2;  // of the second one
        size_t size;
    };
    // The table of well-formed byte sequences in the Unicode standard.
    static constexpr Lead kLeads[] = {
        {0x00, 0x7F, 0x00, 0x00, 1}, {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
        {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
        {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4}};
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[at + i]); };
    for (const Lead& lead : kLeads) {
        if (byte(0) < lead.low || byte(0) > lead.high) continue;
        if (text.size() - at < lead.size) return 0;
        if (lead.size > 1 && (byte(1) < lead.low2 || byte(1) > lead.high2)) return 0;
        for (size_t i = 2; i < lead.size; ++i) {
            if (byte(i) < 0x80 || byte(i) > 0xBF) return 0;
        }
        return lead.size;
    }
    return 0;
}

bool IsUtf8(std::string_view text)
{
    for (size_t at = PassAscii(text, 0); at < text.size();) {
        const size_t size = CharacterSize(text, at);
        if (size == 0) return false;
        at = size == 1 ? PassAscii(text, at + 1) : at + size;
    }
    return true;
}

std::string AsUtf8(std::string_view text)
{
    std::string out;
    for (size_t at = 0; at < text.size();) {
        const size_t size = text[at] == '\0' ? 0 : CharacterSize(text, at);
        if (size == 0) {
            out += fmt::format("\\x{:02X}", static_cast<unsigned char>(text[at++]));
        } else {
            out.append(text, at, size);
            at += size;
        }
    }
    return out;
}

}  // namespace MCVelscore_850
