#ifndef VELSCORE_TESTS_ENGINE_UNLISTEDCOUNT_H
#define VELSCORE_TESTS_ENGINE_UNLISTEDCOUNT_H

#include <span>
#include <vector>

#include "engine/scoring/casefield.h"
#include "engine/scoring/unlistedvalues.h"

namespace MCVelscore_850 {

/// Counts the unlisted values of blocks, as a run does.
class UnlistedCount {
public:
    explicit UnlistedCount(std::span<const CaseField> fields)
    {
        for (const CaseField& field : fields) columns_.push_back(field.NoneUnlisted());
    }
    void Add(std::span<const UnlistedValue> values)
    {
        for (const UnlistedValue& value : values) columns_[value.field].Count(value.text);
    }
    /// The columns that met any.
    std::vector<UnlistedValues> Met() const
    {
        std::vector<UnlistedValues> met;
        for (const UnlistedValues& column : columns_) {
            if (column.count > 0) met.push_back(column);
        }
        return met;
    }

private:
    std::vector<UnlistedValues> columns_;
};

}  // namespace MCVelscore_850

#endif
