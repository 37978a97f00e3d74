#ifndef VELSCORE_ENGINE_SCORING_RESULTBLOCK_H
#define VELSCORE_ENGINE_SCORING_RESULTBLOCK_H

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/scoring/resultschema.h"
#include "host/model/batchscorer.h"

namespace MCVelscore_850 {

/// Whether a row became a case, and whether that has a score.
struct CaseStatus {
    long code = 0;                           ///< 0, or the code that refuses the row
    const std::string* field = nullptr;      ///< the field at fault, when there is one
    std::optional<std::string_view> text{};  ///< what stood in it; none of a derived field

    bool IsOK() const { return code == 0; }
    /// Empty when no single field is at fault.
    std::string_view FieldName() const { return field == nullptr ? std::string_view() : *field; }
};

/// A category of the target, as a result has it: a text, or a number where the target is one.
struct ResultCategory {
    std::string text;
    std::optional<double> number{};
};

/// Rows as bits, a word for each 64 of a block's.
using RowBits = std::array<uint64_t, BatchScorer::kRows / 64>;

inline bool HasRow(const RowBits& bits, size_t row) { return (bits[row / 64] >> (row % 64)) & 1U; }
inline void AddRow(RowBits& bits, size_t row) { bits[row / 64] |= uint64_t{1} << (row % 64); }

/// The first rows of a block, as bits.
inline RowBits FirstRows(size_t count)
{
    RowBits bits{};
    for (size_t i = 0; i < bits.size() && i * 64 < count; ++i) {
        const size_t rows = count - i * 64;
        bits[i] = rows >= 64 ? ~uint64_t{0} : (uint64_t{1} << rows) - 1;
    }
    return bits;
}

/// The results of a block of rows by the columns of a ResultSchema; filled by a TableScorer, which
/// writes over it block by block.
struct ResultBlock {
    static constexpr size_t kRows = BatchScorer::kRows;
    /// Columns have room for a multiple of so many rows, a word of bits.
    static constexpr size_t kRowMultiple = 64;

    /// A column that holds values: numbers, or codes of categories. What stands where a row isn't
    /// present, and behind the rows, means nothing. They are written into the block's own memory,
    /// or from the next block on wherever the column is made to point to.
    struct Column {
        std::span<double> numbers{};
        std::span<int32_t> codes{};
        RowBits present{};
    };

    /// Makes room for results of that schema.
    explicit ResultBlock(const ResultSchema& schema)
        : columns(schema.ValueCount()), status(kRows), faults(kRows), numbers_(columns.size())
    {
        for (size_t i = 0; i < columns.size(); ++i) {
            if (schema.Columns()[i].kind == ResultKind::Category) {
                codes_.resize(kRows);
                columns[i].codes = codes_;
            } else {
                numbers_[i].resize(kRows);
                columns[i].numbers = numbers_[i];
            }
        }
    }
    ResultBlock(ResultBlock&&) = default;
    ResultBlock& operator=(ResultBlock&&) = default;
    ResultBlock(const ResultBlock&) = delete;
    ResultBlock& operator=(const ResultBlock&) = delete;
    ~ResultBlock() = default;

    /// Begins a block: every row has status 0 and no value.
    void Begin(size_t count)
    {
        rows = count;
        if (hasFaults) std::fill(status.begin(), status.end(), 0);
        hasFaults = false;
        for (Column& column : columns) column.present = {};
    }
    void SetFault(size_t row, const CaseStatus& fault)
    {
        hasFaults = true;
        status[row] = static_cast<int32_t>(fault.code);
        faults[row] = fault;
    }
    /// What is to tell of a row.
    const CaseStatus& StatusOf(size_t row) const
    {
        static constexpr CaseStatus kOK;
        return status[row] == 0 ? kOK : faults[row];
    }

    size_t rows = 0;
    std::vector<Column> columns;     ///< the schema's first ones, in their order
    bool hasFaults = false;          ///< a row's status isn't 0
    std::vector<int32_t> status;     ///< 0, or the code that refuses the row
    std::vector<CaseStatus> faults;  ///< of rows whose status isn't 0; views the block's texts
    std::span<const ResultCategory> categories{};  ///< that codes stand for, the scorer's own

private:
    std::vector<std::vector<double>> numbers_;  // by column
    std::vector<int32_t> codes_;                // of the predicted category
};

}  // namespace MCVelscore_850

#endif
