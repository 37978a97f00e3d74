#ifndef VELSCORE_HOST_VARIABLES_VARSTATS_H
#define VELSCORE_HOST_VARIABLES_VARSTATS_H

#include <memory>

#include "host/values/numericvalue.h"

namespace MCVelscore_850 {

/// What is known of a continuous variable beside its values: the replacement for a missing one,
/// the limits beyond which a value is an outlier, the mean. Every number starts system-missing.
class VELHOST_API VarStats {
public:
    VarStats();
    VarStats(const VarStats& other);
    VarStats& operator=(const VarStats&) = delete;
    ~VarStats();

    void SetMinimum(double minimum) { minimum_ = minimum; }
    void SetMaximum(double maximum) { maximum_ = maximum; }
    void SetMean(double mean) { mean_ = mean; }
    double GetMinimum() const { return minimum_; }
    double GetMaximum() const { return maximum_; }
    double GetMean() const { return mean_; }

    /// Keeps a copy; a null takes the replacement away.
    void SetMissingReplacement(const ScoreValue* value);
    /// The replacement, or null.
    ScoreValue* GetMissingReplacement() const { return replacement_.get(); }

private:
    double minimum_ = NumericValue::GetSysmisValue();
    double maximum_ = NumericValue::GetSysmisValue();
    double mean_ = NumericValue::GetSysmisValue();
    std::unique_ptr<ScoreValue> replacement_;
};

}  // namespace MCVelscore_850

#endif
