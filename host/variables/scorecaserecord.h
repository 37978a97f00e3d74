#ifndef VELSCORE_HOST_VARIABLES_SCORECASERECORD_H
#define VELSCORE_HOST_VARIABLES_SCORECASERECORD_H

#include <string>
#include <vector>

#include "host/export.h"

namespace MCVelscore_850 {

class ScoreValue;

/// One case, as a model reads it. A null stands for an absent value.
///
/// Slots   the order of the virtual operations is part of the plug-in's interface.
class VELHOST_API ScoreCaseRecord {
public:
    virtual ~ScoreCaseRecord();

    virtual ScoreValue* GetValue(const std::string& name) const = 0;
    /// Null for a position out of range, and for any position without indexed access.
    virtual ScoreValue* GetValue(int position) const = 0;
    virtual bool HasIndexedAccess() const = 0;
    /// The position of the named variable, -1 when the record has none.
    virtual int GetVarIndex(const std::string& name) const = 0;
    /// The record's own array of values, by position.
    virtual const std::vector<ScoreValue*>* GetValues() const = 0;
};

}  // namespace MCVelscore_850

#endif
