#include "host/values/numericvalue.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

#include "host/values/numbertext.h"

namespace MCVelscore_850 {

NumericValue::NumericValue(const std::string& text) : ScoreValue(NUMERIC), value_(GetSysmisValue())
{
    std::string_view trimmed = TrimBlanks(text);
    // As ReadNumber() takes it: documents and tables write the same category.
    if (trimmed.size() > 1 && trimmed[0] == '+' && trimmed[1] != '-') trimmed.remove_prefix(1);
    const char* end = trimmed.data() + trimmed.size();
    double value = 0.0;
    const auto read = std::from_chars(trimmed.data(), end, value);
    if (read.ptr != end || read.ec == std::errc::invalid_argument) return;
    if (read.ec == std::errc::result_out_of_range &&
        ReadNumber(trimmed, value) != NumberText::Number)
        return;
    value_ = value;
}

NumericValue::~NumericValue() = default;

ScoreValue* NumericValue::Clone() const { return new NumericValue(*this); }

bool NumericValue::Equals(const ScoreValue* other) const
{
    return other != nullptr && other->GetValueType() == NUMERIC &&
           static_cast<const NumericValue*>(other)->value_ == value_;
}

std::string NumericValue::GetString() const
{
    std::string text;
    AppendNumber(value_, text);
    return text;
}

bool NumericValue::IsClose(double a, double b)
{
    constexpr double kRelative = 1e-12;
    return std::isfinite(a) && std::isfinite(b) &&
           std::fabs(a - b) <= kRelative * std::max(std::fabs(a), std::fabs(b));
}

}  // namespace MCVelscore_850
