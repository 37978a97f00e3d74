#ifndef VELSCORE_ENGINE_DOCUMENTS_AUDIT_FIELDVALUES_H
#define VELSCORE_ENGINE_DOCUMENTS_AUDIT_FIELDVALUES_H

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/documents/audit/documentfacts.h"

namespace MCVelscore_850 {

/// An Interval of a field or of a bin; a margin that isn't there is infinite.
struct FieldInterval {
    Element element;
    double low = 0.0;
    double high = 0.0;
    bool lowClosed = false;
    bool highClosed = false;

    bool IsEmpty() const { return low > high || (low == high && !(lowClosed && highClosed)); }
    /// As it is written: "[0, 5)".
    std::string Text() const;
};

/// Nothing for one that the reader refuses: no closure of the standard, a margin that is no value
/// of the type.
std::optional<FieldInterval> ReadFieldInterval(Element interval, std::string_view dataType);

/// Two intervals that share values; a shared margin alone is a touch.
struct IntervalOverlap {
    FieldInterval one;
    FieldInterval other;
    bool touch = false;
};
/// For each interval that begins before those below it end, the one of these that reaches furthest.
std::vector<IntervalOverlap> FindOverlaps(std::vector<FieldInterval> intervals);

/// The values that a field can have where it can't have all, and what the mining schema puts in
/// their place.
struct ClosedValues {
    const DocumentFacts::Field* field = nullptr;
    std::vector<std::string> listed;
    std::unordered_set<std::string> keys;  ///< of the listed ones, and of replacements

    bool Has(const std::string& text) const;
};

/// The key under which equal values of a field meet: of numbers, truths and texts.
std::string ValueKey(const DocumentFacts::Field& field, const std::string& text);

/// The fields that take the values alone which they list, or which their expression can yield.
class ClosedFields {
public:
    explicit ClosedFields(const DocumentFacts& facts);

    /// Null for a field that takes others, and for a name that no field has.
    const ClosedValues* Find(const std::string& name) const;

private:
    std::unordered_map<std::string, ClosedValues> fields_;
};

}  // namespace MCVelscore_850

#endif
