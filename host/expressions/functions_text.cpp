// Built-in functions of texts. Positions and lengths count characters of UTF-8, not bytes.

#include <locale.h>
#include <clocale>
#include <cmath>
#include <cwctype>

#include "host/expressions/functions.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using Args = const FunctionArguments&;
using Value = ExpressionValue;

// The argument as a text; a value without one makes the outcome invalid.
bool TakeText(Value& argument, Value& out)
{
    MakeText(argument);
    if (argument.HasValue()) return true;
    out.SetInvalid();
    return false;
}

// The argument as a whole number of at least `least`.
bool TakeCount(const Value& argument, double least, size_t& count)
{
    constexpr double kMost = 1e15;
    double number = 0.0;
    if (!AsNumber(argument, number) || !(number >= least) || std::floor(number) != number) {
        return false;
    }
    count = static_cast<size_t>(std::min(number, kMost));
    return true;
}

bool StartsCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }

// The byte at which the character of that number, counted from 0, begins; the end when there are
// fewer.
size_t ByteOf(std::string_view text, size_t character)
{
    size_t met = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (StartsCharacter(text[i]) && met++ == character) return i;
    }
    return text.size();
}

// Takes the character at `at`, of one to four bytes; -1 for bytes that are no UTF-8.
int TakeCharacter(std::string_view text, size_t at, size_t& length)
{
    const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[at + i]); };
    const unsigned first = byte(0);
    length = first < 0x80 ? 1 : first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (length == 1) return static_cast<int>(first);
    if (first < 0xC0 || first > 0xF7 || at + length > text.size()) {
        length = 1;
        return -1;
    }
    unsigned code = first & (0xFFu >> (length + 1));
    for (size_t i = 1; i < length; ++i) {
        if (StartsCharacter(text[at + i])) {
            length = 1;
            return -1;
        }
        code = code << 6 | (byte(i) & 0x3Fu);
    }
    return static_cast<int>(code);
}

void AppendCharacter(unsigned code, std::string& out)
{
    if (code < 0x80) {
        out += static_cast<char>(code);
        return;
    }
    const int following = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    constexpr unsigned kFirst[] = {0, 0xC0, 0xE0, 0xF0};
    out += static_cast<char>(kFirst[following] | code >> (6 * following));
    for (int i = following - 1; i >= 0; --i) {
        out += static_cast<char>(0x80 | (code >> (6 * i) & 0x3Fu));
    }
}

// The locale whose letters are those of Unicode, whatever the process has set.
locale_t Letters()
{
    static const locale_t kLetters = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return kLetters;
}

// Letter by letter, each to one letter, so that a text keeps its number of characters. Without
// that locale only the letters of ASCII change.
template <wint_t (*Change)(wint_t, locale_t), int (*ChangeAscii)(int)>
void ChangeCase(Args a, Value& out)
{
    if (!TakeText(a[0], out)) return;
    const std::string& text = a[0].text;
    out.text.clear();
    size_t length = 0;
    for (size_t i = 0; i < text.size(); i += length) {
        const int code = TakeCharacter(text, i, length);
        if (code >= 0x80 && Letters() != nullptr) {
            AppendCharacter(Change(static_cast<wint_t>(code), Letters()), out.text);
        } else if (code >= 0x80 || code < 0) {
            out.text.append(text, i, length);
        } else {
            out.text += static_cast<char>(ChangeAscii(code));
        }
    }
    out.MarkText();
}

int AsciiUpper(int c) { return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c; }
int AsciiLower(int c) { return c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c; }

void StringLength(Args a, Value& out)
{
    if (!TakeText(a[0], out)) return;
    double characters = 0.0;
    for (const char c : a[0].text) characters += StartsCharacter(c) ? 1.0 : 0.0;
    out.SetNumber(characters);
}

// text, position of the first character counted from 1, number of characters; what lies beyond
// the end isn't there.
void Substring(Args a, Value& out)
{
    size_t start = 0;
    size_t count = 0;
    if (!TakeText(a[0], out)) return;
    if (!TakeCount(a[1], 1.0, start) || !TakeCount(a[2], 0.0, count)) return out.SetInvalid();
    const std::string_view text = a[0].text;
    const std::string_view rest = text.substr(ByteOf(text, start - 1));
    out.SetText(rest.substr(0, ByteOf(rest, count)));
}

void Trim(Args a, Value& out)
{
    if (TakeText(a[0], out)) out.SetText(TrimBlanks(a[0].text));
}

void Concat(Args a, Value& out)
{
    out.text.clear();
    for (Value& argument : a.values) {
        if (!TakeText(argument, out)) return;
        if (out.text.size() + argument.text.size() > kLongestText) return out.SetInvalid();
        out.text += argument.text;
    }
    out.MarkText();
}

constexpr Function Of(const char* name, int least, int most, void (*compute)(Args, Value&),
                      Function::Result result = Function::Text)
{
    return {name, least, most, MissingRule::Propagate, result, nullptr, compute};
}

constexpr Function kFunctions[] = {
    Of("uppercase", 1, 1, ChangeCase<towupper_l, AsciiUpper>),
    Of("lowercase", 1, 1, ChangeCase<towlower_l, AsciiLower>),
    Of("stringLength", 1, 1, StringLength, Function::Number),
    Of("substring", 3, 3, Substring),
    Of("trimBlanks", 1, 1, Trim),
    Of("concat", 1, Function::kAny, Concat),
};

}  // namespace

std::span<const Function> TextFunctions() { return kFunctions; }

}  // namespace MCVelscore_850
