#ifndef VELSCORE_HOST_VARIABLES_SCOREDICTVAR_H
#define VELSCORE_HOST_VARIABLES_SCOREDICTVAR_H

#include <cstdint>
#include <string>

#include "host/export.h"

namespace MCVelscore_850 {

class CatEncoder;
class ScoreValue;
class ValueSet;
class VarStats;

/// One variable of a dictionary: what it is called, which values it accepts, where a record holds
/// it.
///
/// Slots   the order of the virtual operations is part of the plug-in's interface.
/// Owner   Clone() and MakeValue() belong to the caller; SetVarStats() and AddCategory() take
///         their objects over; what the other operations answer belongs to the variable.
/// Threads read by many; SetDictIndex() is called by a model's first case only.
class VELHOST_API ScoreDictVar {
public:
    /// What GetValueType() answers. A value uses another number for date-time
    /// (ScoreValue::DATETIME is 5, not 4).
    enum ValueType { NUMERIC = 0, STRING = 1, DATETIME = 4 };
    enum MeasureLevel { CONTINUOUS = 0, CATEGORICAL = 1, ORDINAL = 2 };
    /// The origin and unit from which a date or time is counted.
    enum DateTimeType {
        NOT_DATETIME,
        DATE,
        TIME,
        DATE_TIME,
        DATE_DAYS_SINCE_0,
        DATE_DAYS_SINCE_1960,
        DATE_DAYS_SINCE_1970,
        DATE_DAYS_SINCE_1980,
        TIME_SECONDS,
        DATE_TIME_SECONDS_SINCE_0,
        DATE_TIME_SECONDS_SINCE_1960,
        DATE_TIME_SECONDS_SINCE_1970,
        DATE_TIME_SECONDS_SINCE_1980
    };
    enum OutlierTreatment { AS_IS = 0, AS_MISSING = 1, AS_EXTREME = 2 };

    virtual ~ScoreDictVar();

    virtual ScoreDictVar* Clone() const = 0;
    /// True for null, the system-missing number, the missing text, a value declared missing, and
    /// an outlier that is treated as missing.
    virtual bool IsMissing(const ScoreValue* value) const = 0;
    /// True for a value that the variable accepts. NaN, infinities and values of another kind
    /// than the variable's are not missing, but never valid.
    virtual bool IsValid(const ScoreValue* value) const = 0;
    virtual const std::string& GetName() const = 0;
    virtual int GetValueType() const = 0;
    virtual MeasureLevel GetMeasureLevel() const = 0;
    virtual VarStats* GetVarStats() const = 0;
    virtual void SetVarStats(VarStats* stats) = 0;
    /// The declared values; null for a continuous variable and for one whose categories are open.
    virtual const ValueSet* GetValueSet() const = 0;
    /// A new value of the variable's type; text that can't be read becomes system-missing.
    virtual ScoreValue* MakeValue(const std::string& text) const = 0;
    virtual int GetNumCategories() const = 0;
    virtual void SetDictIndex(int position) const = 0;
    /// The position in the record, -1 at first.
    virtual int GetDictIndex() const = 0;
    /// True for a variable of a transformation dictionary, which is a TransformVar.
    virtual bool IsDerived() const = 0;
    virtual DateTimeType GetDateTimeType() const = 0;
    /// The encoder of the categories, null until one is set up.
    virtual const CatEncoder* GetCatEncoder() const = 0;
    virtual CatEncoder* GetCatEncoderForUpdate() = 0;
    /// True for a categorical variable that declares no value and knows no category yet.
    virtual bool HasOpenCategories() const = 0;
    /// Appends a category and so closes an open variable. Does nothing for a continuous variable,
    /// a category that is there, and a value declared missing or invalid.
    virtual void AddCategory(ScoreValue* value, const std::string& text) = 0;

    // Beyond the slots that a plug-in of the first version knows.

    virtual void SetOutlierTreatment(int treatment) = 0;
    virtual int GetOutlierTreatment() const = 0;
    /// !IsMissing(value) && IsValid(value), in one call: the test that every case makes of every
    /// predictor.
    virtual bool Accepts(const ScoreValue* value) const = 0;
    /// True when values that the variable doesn't list are accepted.
    virtual bool AcceptsUnlisted() const = 0;

    /// True for a number that Accepts() is sure to answer true for, without a virtual call; false
    /// says nothing.
    bool SurelyAccepts(double number) const
    {
        if (!(number >= sureLow_ && number <= sureHigh_)) return false;
        return !sureOfWhole_ || number == static_cast<double>(static_cast<int64_t>(number));
    }

    /// What SurelyAccepts looks at: a closed range, empty where low is above high; with
    /// `wholeAlone` whole numbers in it only.
    struct SureRange {
        double low;
        double high;
        bool wholeAlone;
    };
    SureRange GetSureRange() const { return {sureLow_, sureHigh_, sureOfWhole_}; }

protected:
    ScoreDictVar() = default;
    ScoreDictVar(const ScoreDictVar&) = default;
    ScoreDictVar& operator=(const ScoreDictVar&) = default;

    /// The closed range of SurelyAccepts; an empty one (low above high) is sure of nothing. With
    /// `wholeAlone` it is sure of whole numbers only, and the range must lie within int64_t.
    void SetSureRange(double low, double high, bool wholeAlone = false)
    {
        sureLow_ = low;
        sureHigh_ = high;
        sureOfWhole_ = wholeAlone;
    }

private:
    double sureLow_ = 1.0;
    double sureHigh_ = 0.0;
    bool sureOfWhole_ = false;
};

}  // namespace MCVelscore_850

#endif
