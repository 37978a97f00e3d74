#ifndef VELSCORE_HOST_VALUES_SCOREVALUE_H
#define VELSCORE_HOST_VALUES_SCOREVALUE_H

#include <string>

#include "host/export.h"

namespace MCVelscore_850 {

/// One value of a case, of a category or of a cell: a number, a text, or a date or time.
///
/// Slots   the order of the virtual operations is part of the plug-in's interface.
/// Owner   Clone() belongs to the caller; everything else is borrowed.
class VELHOST_API ScoreValue {
public:
    /// What GetValueType() answers. A variable uses another number for date-time
    /// (ScoreDictVar::DATETIME is 4, not 5).
    enum ValueType { NUMERIC = 0, STRING = 1, DATETIME = 5 };

    virtual ~ScoreValue();

    virtual ScoreValue* Clone() const = 0;
    /// Numbers by ==, texts by their bytes, date-times by their number; false between kinds.
    virtual bool Equals(const ScoreValue* other) const = 0;
    virtual double GetDouble() const = 0;
    virtual std::string GetString() const = 0;
    /// True for the system-missing number alone.
    virtual bool IsMissingValue() const = 0;
    virtual int GetValueType() const = 0;

    /// What GetValueType() answers, without a virtual call: every case asks it of every value.
    ValueType Kind() const { return kind_; }

    /// True for a value that the document puts into a case, or wants taken as it stands: whatever
    /// its variable declares, it is neither missing nor invalid.
    bool IsTakenAsIs() const { return takenAsIs_; }
    void SetTakenAsIs(bool taken) { takenAsIs_ = taken; }

protected:
    explicit ScoreValue(ValueType kind) : kind_(kind) {}
    ScoreValue(const ScoreValue&) = default;
    ScoreValue& operator=(const ScoreValue&) = default;

private:
    ValueType kind_;
    bool takenAsIs_ = false;
};

}  // namespace MCVelscore_850

#endif
