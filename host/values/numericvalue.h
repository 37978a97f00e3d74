#ifndef VELSCORE_HOST_VALUES_NUMERICVALUE_H
#define VELSCORE_HOST_VALUES_NUMERICVALUE_H

#include <limits>
#include <string>

#include "host/values/scorevalue.h"

namespace MCVelscore_850 {

/// A number. Its text is the shortest that reads back to the same double; a whole number below
/// 1e15 in absolute value has neither point nor exponent, and minus zero is "0".
class VELHOST_API NumericValue final : public ScoreValue {
public:
    explicit NumericValue(double value) : ScoreValue(NUMERIC), value_(value) {}
    /// The number that the text spells, blanks at its ends apart; else the system-missing number.
    explicit NumericValue(const std::string& text);
    ~NumericValue() override;

    ScoreValue* Clone() const override;
    bool Equals(const ScoreValue* other) const override;
    double GetDouble() const override { return value_; }
    std::string GetString() const override;
    bool IsMissingValue() const override { return value_ == GetSysmisValue(); }
    int GetValueType() const override { return NUMERIC; }

    void SetDoubleValue(double value) { value_ = value; }

    /// The system-missing number, compared by equality. It is the same double as the statistics
    /// library's missing value, which the link functions hand through.
    static constexpr double GetSysmisValue() { return -std::numeric_limits<double>::max(); }
    static constexpr double GetInfinity() { return std::numeric_limits<double>::infinity(); }
    static constexpr bool IsSystemMissingValue(double value) { return value == GetSysmisValue(); }

    /// a == b, or both finite and |a - b| <= 1e-12 max(|a|, |b|). There is no absolute tolerance:
    /// only 0 equals 0.
    static bool IsEqual(double a, double b) { return a == b || IsClose(a, b); }

private:
    static bool IsClose(double a, double b);

    double value_;
};

}  // namespace MCVelscore_850

#endif
