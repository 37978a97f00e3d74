#include "engine/tables/rowtext.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

constexpr std::string_view kOfNumbers = "+-.0123456789einfa";

}  // namespace

RowText::RowText(const RowForm& form)
    : form_(form),
      plainNumbers_(form.decimal == '.' &&
                    kOfNumbers.find(form.delimiter) == std::string_view::npos)
{
    for (const char c : {form.delimiter, '"', '\r', '\n'})
        special_[static_cast<unsigned char>(c)] = true;
}

void RowText::AddRounded(double number)
{
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
