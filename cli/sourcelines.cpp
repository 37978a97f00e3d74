#include "cli/sourcelines.h"

#include <utility>

#include "engine/messages/visibletext.h"
#include "engine/tables/fileform.h"

namespace MCVelscore_850 {

namespace {

// As wide as a terminal can be counted on to be, less a margin for the line's number.
constexpr size_t kShown = 100;
// What stays before the place, of a line that is cut.
constexpr size_t kBefore = 30;
constexpr std::string_view kCut = "...";

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

bool BeginsCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }

size_t Skip(std::string_view line, size_t at, size_t characters)
{
    for (; characters > 0 && at < line.size(); --characters) at = NextCharacter(line, at);
    return at;
}

size_t SkipBack(std::string_view line, size_t at, size_t characters)
{
    for (; characters > 0 && at > 0; --characters) {
        do --at;
        while (at > 0 && !BeginsCharacter(line[at]));
    }
    return at;
}

std::string Shown(std::string_view character)
{
    return character == "\t" ? " " : VisibleCharacter(character);
}

struct Range {
    size_t begin = 0;
    size_t end = 0;
};

// Where the attribute stands in the tag at the beginning of `tag`, in bytes, from its name to the
// quote behind its text; empty where it stands on another line.
Range AttributeIn(std::string_view tag, std::string_view name)
{
    char quote = '\0';
    for (size_t at = 1; at < tag.size(); ++at) {
        if (quote != '\0') {
            if (tag[at] == quote) quote = '\0';
            continue;
        }
        if (tag[at] == '>') return {};
        if (tag[at] == '"' || tag[at] == '\'') {
            quote = tag[at];
            continue;
        }
        if (!IsBlank(tag[at - 1]) || !tag.substr(at).starts_with(name)) continue;
        size_t end = at + name.size();
        while (end < tag.size() && IsBlank(tag[end])) ++end;
        if (end >= tag.size() || tag[end] != '=') continue;
        end = tag.find_first_of("\"'", end);
        if (end != std::string_view::npos) end = tag.find(tag[end], end + 1);
        return {at, end == std::string_view::npos ? tag.size() : end + 1};
    }
    return {};
}

}  // namespace

SourceLines::SourceLines(std::string text) : text_(std::move(text))
{
    begins_.push_back(text_.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
    for (size_t at = 0; at < text_.size(); ++at) {
        const bool isBreak =
            text_[at] == '\n' ||
            (text_[at] == '\r' && !(at + 1 < text_.size() && text_[at + 1] == '\n'));
        if (isBreak) begins_.push_back(at + 1);
    }
}

std::string_view SourceLines::Line(size_t number) const
{
    if (number == 0 || number > begins_.size()) return {};
    const size_t end = number < begins_.size() ? begins_[number] : text_.size();
    std::string_view line =
        std::string_view(text_).substr(begins_[number - 1], end - begins_[number - 1]);
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.remove_suffix(1);
    return line;
}

SourceLines::Excerpt SourceLines::At(size_t number, size_t column, std::string_view attribute) const
{
    const std::string_view line = Line(number);
    const size_t place = column == 0 ? line.size() : Skip(line, 0, column - 1);
    if (place >= line.size()) return {};

    Range marked;
    if (!attribute.empty()) {
        const Range inTag = AttributeIn(line.substr(place), attribute);
        marked = {place + inTag.begin, place + inTag.end};
    }
    // The window begins a little before the place, so that the attribute is seen behind it; or
    // before the attribute, where it stands too far behind.
    const bool fits = Skip(line, 0, kShown) == line.size();
    size_t first = fits ? 0 : SkipBack(line, place, kBefore);
    if (marked.begin != marked.end && Skip(line, first, kShown) < marked.end) {
        first = SkipBack(line, marked.begin, kBefore);
    }
    const size_t last = Skip(line, first, kShown);
    Excerpt excerpt;
    if (first > 0) {
        excerpt.line = kCut;
        excerpt.marks.assign(kCut.size(), ' ');
    }
    for (size_t at = first, next = at; at < last; at = next) {
        next = NextCharacter(line, at);
        const std::string shown = Shown(line.substr(at, next - at));
        excerpt.line += shown;
        const char mark = at == place ? '^' : at >= marked.begin && at < marked.end ? '~' : ' ';
        excerpt.marks.append(next - at == shown.size() ? 1 : shown.size(), mark);
    }
    if (last < line.size()) excerpt.line += kCut;
    excerpt.marks.erase(excerpt.marks.find_last_not_of(' ') + 1);
    return excerpt;
}

}  // namespace MCVelscore_850
