// Built-in functions that write numbers, dates and times by a pattern.

#include <locale.h>
#include <time.h>
#include <cmath>
#include <ctime>
#include <iterator>

#include <fmt/format.h>

#include "host/expressions/functions.h"

namespace MCVelscore_850 {

namespace {

using Args = const FunctionArguments&;
using Value = ExpressionValue;

constexpr int kWidest = 100;

// A pattern of printf with one conversion of a number: its text before and after, and the
// conversion as a format of fmt's, which knows no locale and no argument of another type.
class NumberFormat final : public FunctionState {
public:
    bool Prepare(const std::string& pattern, std::string& reason) override
    {
        if (pattern != pattern_ || !read_) {
            pattern_ = pattern;
            read_ = true;
            reason_.clear();
            Read();
        }
        reason = reason_;
        return reason_.empty();
    }

    void Append(double number, std::string& out) const
    {
        out += before_;
        const auto end = std::back_inserter(out);
        if (whole_) {
            fmt::format_to(end, fmt::runtime(format_), std::llrint(number));
        } else {
            fmt::format_to(end, fmt::runtime(format_), number);
        }
        out += after_;
    }
    /// Whole conversions take what fits their integer.
    bool Takes(double number) const
    {
        return std::isfinite(number) && (!whole_ || std::fabs(number) < 9e18);
    }

private:
    void Read()
    {
        before_.clear();
        after_.clear();
        format_.clear();
        std::string* text = &before_;
        for (size_t i = 0; i < pattern_.size(); ++i) {
            if (pattern_[i] != '%') {
                *text += pattern_[i];
            } else if (pattern_.compare(i, 2, "%%") == 0) {
                *text += pattern_[i++];
            } else if (text == &after_) {
                reason_ = "it has a second conversion";
                return;
            } else {
                i = ReadConversion(i + 1);
                text = &after_;
                if (!reason_.empty()) return;
            }
        }
        if (format_.empty()) reason_ = "it has no conversion of a number";
    }

    int ReadSize(size_t& i)
    {
        int size = 0;
        while (i < pattern_.size() && pattern_[i] >= '0' && pattern_[i] <= '9') {
            size = std::min(size * 10 + (pattern_[i++] - '0'), kWidest + 1);
        }
        if (size > kWidest) reason_ = "it is too wide";
        return size;
    }

    // Reads flags, width, precision and conversion from i on; answers where the conversion stands.
    size_t ReadConversion(size_t i)
    {
        constexpr std::string_view kFlags = "-+ #0";
        bool flags[kFlags.size()] = {};
        for (; i < pattern_.size() && kFlags.find(pattern_[i]) != kFlags.npos; ++i) {
            flags[kFlags.find(pattern_[i])] = true;
        }
        const auto [left, plus, blank, alternate, zeros] = flags;
        const int width = ReadSize(i);
        int precision = -1;
        if (i < pattern_.size() && pattern_[i] == '.') precision = ReadSize(++i);
        constexpr std::string_view kWhole = "di";
        constexpr std::string_view kReal = "fFeEgG";
        const char conversion = i < pattern_.size() ? pattern_[i] : '\0';
        whole_ = kWhole.find(conversion) != kWhole.npos;
        if (conversion == '\0' || (!whole_ && kReal.find(conversion) == kReal.npos)) {
            reason_ = "its conversion is none of d, i, f, e and g";
        } else if (whole_ && precision >= 0) {
            reason_ = "a whole number takes no precision";
        }
        format_ = "{:";
        if (left || !zeros) format_ += left ? '<' : '>';
        if (plus || blank) format_ += plus ? '+' : ' ';
        if (alternate && !whole_) format_ += '#';
        if (zeros && !left) format_ += '0';
        if (width > 0) format_ += std::to_string(width);
        if (!whole_) format_ += "." + std::to_string(precision < 0 ? 6 : precision);
        format_ += whole_ ? 'd' : conversion;
        format_ += '}';
        return i;
    }

    std::string pattern_;
    std::string reason_;
    bool read_ = false;
    std::string before_;
    std::string after_;
    std::string format_;
    bool whole_ = false;
};

// A pattern of strftime: conversions that depend on nothing but the moment.
class DateTimeFormat final : public FunctionState {
public:
    bool Prepare(const std::string& pattern, std::string& reason) override
    {
        if (pattern != pattern_ || !read_) {
            pattern_ = pattern;
            read_ = true;
            ok_ = IsKnown();
        }
        if (!ok_) reason = "it has a conversion that dates and times don't know";
        return ok_;
    }

    // Formats seconds since 1970 that lie in the years 0 to 9999.
    bool Append(double seconds, std::string& out) const
    {
        static const locale_t kPlain = newlocale(LC_ALL_MASK, "C", nullptr);
        const auto whole = static_cast<std::time_t>(std::floor(seconds));
        std::tm parts{};
        char text[1024];
        if (gmtime_r(&whole, &parts) == nullptr) return false;
        const size_t length =
            kPlain == nullptr ? 0 : strftime_l(text, sizeof text, pattern_.c_str(), &parts, kPlain);
        out.assign(text, length);
        return length > 0 || pattern_.empty();
    }

private:
    bool IsKnown() const
    {
        constexpr std::string_view kConversions = "aAbBcCdDeFgGhHIjmMnprRStTuUVwWxXyYzZ%";
        for (size_t i = 0; i < pattern_.size(); ++i) {
            if (pattern_[i] != '%') continue;
            if (++i == pattern_.size() || kConversions.find(pattern_[i]) == kConversions.npos) {
                return false;
            }
        }
        return true;
    }

    std::string pattern_;
    bool read_ = false;
    bool ok_ = false;
};

template <class Format>
std::unique_ptr<FunctionState> Make()
{
    return std::make_unique<Format>();
}

// The state, made ready for the second argument.
template <class Format>
Format* TakeFormat(Args a, Value& out)
{
    MakeText(a[1]);
    auto* format = static_cast<Format*>(a.state);
    std::string reason;
    if (a[1].HasValue() && format->Prepare(a[1].text, reason)) return format;
    out.SetInvalid();
    return nullptr;
}

void FormatNumber(Args a, Value& out)
{
    const NumberFormat* format = TakeFormat<NumberFormat>(a, out);
    if (format == nullptr) return;
    double number = 0.0;
    if (!AsNumber(a[0], number) || !format->Takes(number)) return out.SetInvalid();
    out.text.clear();
    format->Append(number, out.text);
    out.MarkText();
}

void FormatDatetime(Args a, Value& out)
{
    const DateTimeFormat* format = TakeFormat<DateTimeFormat>(a, out);
    if (format == nullptr) return;
    DateTimeShape shape = DateTimeShape::Date;
    double plain = 0.0;
    if (!AsDateTime(a[0], shape, plain)) return out.SetInvalid();
    // A time of day is formatted as one of 1970-01-01.
    if (shape == DateTimeShape::Date) plain *= kSecondsPerDay;
    const bool inRange = plain >= DaysToYear(0) * kSecondsPerDay &&
                         plain < (DaysToYear(9999) + 365.0) * kSecondsPerDay;
    if (!inRange || !format->Append(plain, out.text)) return out.SetInvalid();
    out.MarkText();
}

constexpr Function kFunctions[] = {
    {"formatNumber", 2, 2, MissingRule::Propagate, Function::Text, nullptr, FormatNumber, 1,
     Make<NumberFormat>},
    {"formatDatetime", 2, 2, MissingRule::Propagate, Function::Text, nullptr, FormatDatetime, 1,
     Make<DateTimeFormat>},
};

}  // namespace

std::span<const Function> FormatFunctions() { return kFunctions; }

}  // namespace MCVelscore_850
