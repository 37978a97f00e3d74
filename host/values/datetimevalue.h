#ifndef VELSCORE_HOST_VALUES_DATETIMEVALUE_H
#define VELSCORE_HOST_VALUES_DATETIMEVALUE_H

#include <string>

#include "host/values/scorevalue.h"
#include "host/variables/scoredictvar.h"

namespace MCVelscore_850 {

/// A date, a time of day or both, as one plain number: days since 1970-01-01 for a date, seconds
/// since midnight for a time, seconds since 1970-01-01T00:00:00 for a date with time.
class VELHOST_API DateTimeValue final : public ScoreValue {
public:
    explicit DateTimeValue(double number) : ScoreValue(DATETIME), number_(number) {}
    ~DateTimeValue() override;

    ScoreValue* Clone() const override;
    bool Equals(const ScoreValue* other) const override;
    /// The plain number.
    double GetDouble() const override { return number_; }
    /// The plain number as text.
    std::string GetString() const override;
    bool IsMissingValue() const override;
    int GetValueType() const override { return DATETIME; }

    /// The number counted from the origin of `type`: days or seconds since 1960, 1970, 1980 or
    /// year 0; the plain number for a type without an origin of its own.
    double GetDoubleValue(ScoreDictVar::DateTimeType type) const;

    void SetNumber(double number) { number_ = number; }

private:
    double number_;
};

}  // namespace MCVelscore_850

#endif
