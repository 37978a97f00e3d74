#include "engine/documents/plainelements.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace MCVelscore_850 {

namespace {

// Names are compared each with each, so a plain element has few attributes.
constexpr size_t kPlainAttributes = 16;

enum CharKind : uint8_t { kNameStart = 1, kNameChar = 2, kValueChar = 4 };

// Which kinds each byte belongs to. The quotes are decided by the value that they stand in.
constexpr std::array<uint8_t, 256> MakeKinds()
{
    std::array<uint8_t, 256> kinds{};
    for (unsigned c = 0x20; c < 0x7F; ++c) {
        const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
        const bool digit = c >= '0' && c <= '9';
        if (letter) kinds[c] |= kNameStart;
        if (letter || digit || c == '-' || c == '.') kinds[c] |= kNameChar;
        if (c != '<' && c != '&' && c != '"' && c != '\'') kinds[c] |= kValueChar;
    }
    return kinds;
}
constexpr std::array<uint8_t, 256> kKinds = MakeKinds();

// Walks over one tag. Every step answers false where the text isn't what it looks for, or ends.
class TagWalk {
public:
    TagWalk(const char* at, const char* end) : at_(at), end_(end) {}

    const char* At() const { return at_; }

    bool Name(std::string_view& name)
    {
        const char* begin = at_;
        if (!Is(kNameStart)) return false;
        while (Is(kNameChar)) ++at_;
        name = {begin, static_cast<size_t>(at_ - begin)};
        return true;
    }

    bool Value()
    {
        if (at_ == end_ || (*at_ != '"' && *at_ != '\'')) return false;
        const char quote = *at_++;
        const char other = quote == '"' ? '\'' : '"';
        while (Is(kValueChar) || (at_ != end_ && *at_ == other)) ++at_;
        return Char(quote);
    }

    bool Char(char c)
    {
        if (at_ == end_ || *at_ != c) return false;
        ++at_;
        return true;
    }

    bool Blanks()
    {
        const char* begin = at_;
        while (at_ != end_ && *at_ == ' ') ++at_;
        return at_ != begin;
    }

private:
    bool Is(CharKind kind) const
    {
        return at_ != end_ && (kKinds[static_cast<unsigned char>(*at_)] & kind) != 0;
    }

    const char* at_;
    const char* end_;
};

// The end of the plain element that begins at `at`; null when there is none.
const char* EndOfPlainElement(const char* at, const char* end, size_t attributeLimit)
{
    TagWalk walk(at, end);
    std::string_view name;
    if (!walk.Char('<') || !walk.Name(name)) return nullptr;
    std::array<std::string_view, kPlainAttributes> names;
    const size_t limit = std::min(attributeLimit, kPlainAttributes);
    for (size_t count = 0;; ++count) {
        const bool parted = walk.Blanks();
        if (walk.Char('/')) return walk.Char('>') ? walk.At() : nullptr;
        if (!parted || count == limit) return nullptr;
        if (!walk.Name(name) || !walk.Char('=') || !walk.Value()) return nullptr;
        const auto known = names.begin() + static_cast<std::ptrdiff_t>(count);
        if (std::find(names.begin(), known, name) != known) return nullptr;
        names[count] = name;
    }
}

}  // namespace

PlainRun ReadPlainElements(std::string_view bytes, ElementPlace start, const DocumentLimits& limits,
                           std::vector<ElementPlace>& places)
{
    const char* const begin = bytes.data();
    const char* const end = begin + bytes.size();
    const char* at = begin;
    uint32_t line = start.line;
    std::ptrdiff_t columnAtBegin = start.column;  // negative once a line end was passed
    const auto columnAt = [&](const char* p) {
        return static_cast<uint32_t>(columnAtBegin + (p - begin));
    };
    while (at != end) {
        const char c = *at;
        if (c == ' ' || c == '\t') {
            ++at;
        } else if (c == '\n' || (c == '\r' && at + 1 != end && at[1] == '\n')) {
            at += c == '\n' ? 1 : 2;
            ++line;
            columnAtBegin = 1 - (at - begin);
        } else if (c == '<' && places.size() < limits.elements) {
            const char* next = EndOfPlainElement(at, end, limits.attributes);
            if (next == nullptr || static_cast<size_t>(next - at) > limits.tokenBytes) break;
            places.push_back({line, columnAt(at)});
            at = next;
        } else {
            break;
        }
    }
    return {static_cast<size_t>(at - begin), {line, columnAt(at)}};
}

}  // namespace MCVelscore_850
