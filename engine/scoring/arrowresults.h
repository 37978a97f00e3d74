#ifndef VELSCORE_ENGINE_SCORING_ARROWRESULTS_H
#define VELSCORE_ENGINE_SCORING_ARROWRESULTS_H

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/scoring/resultblock.h"
#include "engine/scoring/resultschema.h"
#include "engine/tables/arrowarrays.h"
#include "engine/tables/arrowdata.h"

namespace MCVelscore_850 {

/// Results as columns of Arrow's C data interface.
///
/// Columns  numbers are float64, categories int32 indexes into a dictionary of texts, status int32,
///          status_field such a dictionary too. What has no value is null; status always has one.
///          What stands behind a null is 0.
/// Memory   a table's own; where every row has status 0 those of all tables share their zeros.
class ArrowResults {
public:
    /// `positions` are those of the schema's columns that are wanted, in their order.
    ArrowResults(const ResultSchema& schema, std::span<const size_t> positions);

    /// The schema of a wanted column under a name.
    ArrowOwner<ArrowSchema> SchemaOf(size_t wanted, const std::string& name) const;

    /// Begins a table of so many rows at most.
    void Begin(int64_t most);
    /// Has the next block written where its rows belong. It is Add()ed before the next call, and
    /// what stood in its columns is gone.
    void Place(ResultBlock& block);
    /// Adds the rows of a block that was placed.
    void Add(const ResultBlock& block);
    int64_t Rows() const { return static_cast<int64_t>(done_); }
    /// Appends the columns that are wanted to others, and ends the table.
    void Finish(std::vector<ArrowOwner<ArrowArray>>& columns);

private:
    struct Values {
        ArrowBytes values;
        ArrowBytes validity;  ///< none while every row has a value
        size_t presentCount = 0;
    };
    bool HasValues(size_t wanted) const;
    int64_t NullsOf(const Values& values) const
    {
        return static_cast<int64_t>(done_ - values.presentCount);
    }
    void AddBits(size_t wanted, const ResultBlock& block, const RowBits& all);
    void AddFaults(const ResultBlock& block);
    int32_t IndexOf(std::string_view field);
    ArrowColumnParts ValuesOf(size_t wanted);
    ArrowColumnParts Zeros(bool areNull);
    ArrowColumnParts StatusOf();
    ArrowColumnParts FieldsOf();

    std::vector<ResultColumn> wanted_;
    std::vector<size_t> positions_;
    size_t most_ = 0;
    size_t done_ = 0;
    std::vector<Values> columns_;  ///< by the wanted ones
    bool hasFaults_ = false;
    Values status_;
    Values fields_;
    ArrowBytes zeros_;
    size_t zeroRows_ = 0;
    ArrowTextBytes categories_;
    size_t categoryCount_ = 0;  ///< of those that a block had
    std::vector<std::string> fieldNames_;
    std::map<std::string, int32_t, std::less<>> fieldIndexes_;
    ArrowTextBytes fieldTexts_;
};

}  // namespace MCVelscore_850

#endif
