#include "engine/tables/rowtext.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>

#include "engine/tables/utf8.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

constexpr std::string_view kOfNumbers = "+-.0123456789einfa";

}  // namespace

RowText::RowText(const RowForm& form)
    : form_(form),
      isJson_(form.table == TableForm::JsonLines),
      plainNumbers_(isJson_ || (form.decimal == '.' &&
                                kOfNumbers.find(form.delimiter) == std::string_view::npos))
{
    if (isJson_) {
        for (size_t byte = 0; byte < special_.size(); ++byte) {
            special_[byte] = byte < 0x20 || byte > 0x7F || byte == '"' || byte == '\\';
        }
        return;
    }
    for (const char c : {form.delimiter, '"', '\r', '\n'})
        special_[static_cast<unsigned char>(c)] = true;
}

void RowText::SetColumns(std::span<const std::string> names)
{
    if (!isJson_) return;
    RowText key(form_);
    key.keys_.emplace_back();
    for (const std::string& name : names) {
        key.Clear();
        key.AddText(name);
        keys_.push_back(fmt::format("{}{}:", keys_.empty() ? "{" : ",",
                                    std::string_view(key.text_.data(), key.text_.size())));
    }
}

void RowText::AddHeader(std::span<const std::string> names)
{
    if (isJson_) return;
    for (const std::string& name : names) AddText(name);
    EndRow();
}

void RowText::AddRounded(double number)
{
    if (isJson_ && !std::isfinite(number)) return AddEmpty();
    Separate();
    const size_t begin = text_.size();
    char text[64];
    const auto written = std::to_chars(std::begin(text), std::end(text), number,
                                       std::chars_format::general, form_.digits);
    text_.append(std::begin(text), written.ptr);
    if (!plainNumbers_) MendNumber(begin);
}

void RowText::AddLabel(double number)
{
    if (isJson_ && !std::isfinite(number)) return AddEmpty();
    Separate();
    const size_t begin = text_.size();
    text_.reserve(begin + kNumberRoom);
    text_.resize(begin + WriteNumber(number, text_.data() + begin));
    if (!plainNumbers_) MendNumber(begin);
}

void RowText::AddAnyWhole(int64_t number)
{
    Separate();
    const size_t begin = text_.size();
    const fmt::format_int text(number);
    text_.append(text.data(), text.data() + text.size());
    if (!plainNumbers_) MendNumber(begin);
}

// Gives the number that begins there its decimal mark; quotes where it holds the delimiter.
void RowText::MendNumber(size_t begin)
{
    std::replace(text_.begin() + begin, text_.end(), '.', form_.decimal);
    if (std::find(text_.begin() + begin, text_.end(), form_.delimiter) == text_.end()) return;
    const std::string text(text_.begin() + begin, text_.end());
    text_.resize(begin);
    AddQuoted(text);
}

void RowText::AddString(std::string_view text)
{
    constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
    text_.push_back('"');
    for (size_t at = 0; at < text.size();) {
        const size_t begin = at;
        while (at < text.size() && !special_[static_cast<unsigned char>(text[at])]) ++at;
        text_.append(text.substr(begin, at - begin));
        if (at == text.size()) break;
        const auto byte = static_cast<unsigned char>(text[at]);
        if (byte == '"' || byte == '\\') {
            text_.push_back('\\');
            text_.push_back(text[at++]);
        } else if (byte < 0x20) {
            fmt::format_to(fmt::appender(text_), "\\u{:04x}", byte);
            ++at;
        } else {
            const size_t size = CharacterSize(text, at);
            text_.append(size == 0 ? kReplacement : text.substr(at, size));
            at += std::max(size, size_t{1});
        }
    }
    text_.push_back('"');
}

void RowText::AddQuoted(std::string_view text)
{
    text_.push_back('"');
    for (const char c : text) {
        if (c == '"') text_.push_back('"');
        text_.push_back(c);
    }
    text_.push_back('"');
}

}  // namespace MCVelscore_850
