#include "host/values/stringvalue.h"

#include "host/values/numericvalue.h"

namespace MCVelscore_850 {

StringValue::~StringValue() = default;

ScoreValue* StringValue::Clone() const { return new StringValue(*this); }

bool StringValue::Equals(const ScoreValue* other) const
{
    return other != nullptr && other->GetValueType() == STRING &&
           static_cast<const StringValue*>(other)->text_ == text_;
}

double StringValue::GetDouble() const { return NumericValue(text_).GetDouble(); }

}  // namespace MCVelscore_850
