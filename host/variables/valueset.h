#ifndef VELSCORE_HOST_VARIABLES_VALUESET_H
#define VELSCORE_HOST_VARIABLES_VALUESET_H

#include <vector>

#include "host/export.h"

namespace MCVelscore_850 {

class ScoreValue;

/// One declared value; the variable owns it.
class VELHOST_API ValueSetEntry {
public:
    explicit ValueSetEntry(const ScoreValue* value) : value_(value) {}
    const ScoreValue* GetEntryValue() const { return value_; }

private:
    const ScoreValue* value_;
};

/// The values that a variable declares as valid, in document order.
class VELHOST_API ValueSet {
public:
    enum Kind { NONE = 0, ENUMERATED = 1 };

    int GetKind() const { return entries_.empty() ? NONE : ENUMERATED; }
    const std::vector<ValueSetEntry>& GetEntries() const { return entries_; }
    void Append(const ScoreValue* value) { entries_.emplace_back(value); }

private:
    std::vector<ValueSetEntry> entries_;
};

}  // namespace MCVelscore_850

#endif
