#include "host/values/datetimevalue.h"

#include "host/values/datetimetext.h"
#include "host/values/numbertext.h"
#include "host/values/numericvalue.h"

namespace MCVelscore_850 {

DateTimeValue::~DateTimeValue() = default;

ScoreValue* DateTimeValue::Clone() const { return new DateTimeValue(*this); }

bool DateTimeValue::Equals(const ScoreValue* other) const
{
    return other != nullptr && other->GetValueType() == DATETIME &&
           static_cast<const DateTimeValue*>(other)->number_ == number_;
}

std::string DateTimeValue::GetString() const
{
    std::string text;
    AppendNumber(number_, text);
    return text;
}

bool DateTimeValue::IsMissingValue() const { return NumericValue::IsSystemMissingValue(number_); }

double DateTimeValue::GetDoubleValue(ScoreDictVar::DateTimeType type) const
{
    // A missing date is the system-missing number from every origin.
    return IsMissingValue() ? number_ : number_ + OriginShift(type);
}

}  // namespace MCVelscore_850
