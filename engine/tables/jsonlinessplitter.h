#ifndef VELSCORE_ENGINE_TABLES_JSONLINESSPLITTER_H
#define VELSCORE_ENGINE_TABLES_JSONLINESSPLITTER_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/tables/blocksplitter.h"
#include "engine/tables/jsonobject.h"

namespace MCVelscore_850 {

/// Splits the lines of a JsonLinesReader's blocks: objects whose keys are columns.
///
/// Fields  A string's text, a number as it is written, true and false; null and a key that the
///         object lacks are empty. Numbers of a column that is read as such get the decimal mark
///         that its reader expects. Keys that are no column are passed over.
/// Torn    by kNestedValue is a row with an object or array in a column that is used, by kKeyTwice
///         one with a column twice; and by what JsonObjectReader refuses.
class JsonLinesSplitter final : public BlockSplitter, private JsonMemberTaker {
public:
    explicit JsonLinesSplitter(const SplitterPlan& plan);

    void Begin(const RecordBlock& block) override;
    size_t NextRows(size_t most, std::span<const std::string_view>& fields) override;
    std::span<const std::string_view> JsonValues() const override;
    const TornRow* Torn() override;
    void PassTorn() override;
    RawRow Raw(size_t row) const override;

private:
    RecordFault TakeRow(std::string_view line);
    RecordFault Take(const JsonMember& member) override;
    size_t ColumnOf(std::string_view key) const;
    std::string_view FieldOf(const JsonMember& member, const ColumnUse& use);
    void TakeTorn();
    RawRow RawOf(std::string_view line, int64_t number) const;

    std::span<const std::string> header_;
    std::vector<ColumnUse> uses_;
    char decimal_;
    std::unordered_map<std::string_view, size_t> columns_;
    JsonObjectReader reader_;

    const RecordBlock* block_ = nullptr;
    const char* place_ = nullptr;  ///< where the next line begins
    size_t nextTorn_ = 0;          ///< of the block's
    int64_t row_ = 0;              ///< the next one's number
    std::optional<TornRow> torn_;
    std::vector<std::string_view> fields_;
    std::vector<std::string_view> values_;
    size_t expected_ = 0;                  ///< the column whose key is likely the next
    size_t given_ = 0;                     ///< columns of the row at hand
    std::vector<int64_t> givenIn_;         ///< by column, the row that had it last
    std::vector<std::string_view> lines_;  ///< of the rows delivered last
    int64_t firstRow_ = 0;                 ///< the number of the first of them
};

}  // namespace MCVelscore_850

#endif
