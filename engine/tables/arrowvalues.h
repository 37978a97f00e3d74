#ifndef VELSCORE_ENGINE_TABLES_ARROWVALUES_H
#define VELSCORE_ENGINE_TABLES_ARROWVALUES_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/tables/arrowdata.h"
#include "engine/tables/arrowtype.h"
#include "host/values/datetimetext.h"

namespace MCVelscore_850 {

/// Throws Failure (kArrowStructure, kind Cases): what of a table or column, and why.
[[noreturn]] void RefuseArrow(std::string_view what, const std::string& why);
/// How messages call a column.
std::string ArrowColumnName(std::string_view name);

/// The values of some rows of an Arrow array, checked and borrowed. What the interface can't tell,
/// the size of a buffer, is believed.
///
/// Errors  Failure (kArrowStructure) from the constructor for an array that is released, whose
///         length, offset, number of nulls, buffers or dictionary can't be right; and while texts
///         are read, for offsets that can't.
class ArrowValues {
public:
    ArrowValues() = default;
    /// `rows` rows from `first` on, both of the table; `what`, which is borrowed too, is how
    /// messages call the array.
    ArrowValues(const ArrowArray& array, const ArrowType& type, std::string_view what,
                int64_t first, int64_t rows);

    int64_t Rows() const { return rows_; }
    /// False where there are no nulls.
    bool HasNulls() const { return validity_ != nullptr; }
    bool IsPresent(int64_t row) const
    {
        if (type_.kind == ArrowKind::Null) return false;
        const int64_t at = first_ + row;
        return validity_ == nullptr || ((validity_[at / 8] >> (at % 8)) & 1U) != 0;
    }
    /// The bits of rows from `first` on, least significant first: null where all are there, else in
    /// the array itself or in `own`.
    const uint8_t* PresentBits(int64_t first, size_t rows, std::vector<uint8_t>& own) const;

    /// The array's own doubles from a row on; null where they aren't doubles or can't be read as
    /// they lie.
    const double* Doubles(int64_t first) const;
    /// The numbers of rows; what stands where a row has none means nothing. False where a double
    /// can't hold a number exactly: a whole one beyond 2^53, a decimal of many digits. Not of texts
    /// and times.
    bool ReadNumbers(int64_t first, size_t rows, double* numbers) const;
    /// The texts of rows as a table of texts would have them, empty where there is no value. They
    /// view the array or `made`, which has a place for each row. `wanted` as AppendArrowTime has
    /// it.
    void ReadTexts(int64_t first, size_t rows, std::optional<DateTimeShape> wanted,
                   std::string_view* texts, std::vector<std::string>& made) const;
    /// The indexes of rows into a dictionary of `count` entries, -1 where there is none.
    void ReadIndexes(int64_t first, size_t rows, int64_t count, int32_t* indexes) const;

private:
    void CheckBuffers(const ArrowArray& array) const;
    void CheckNulls(const ArrowArray& array) const;
    int64_t Whole(int64_t row) const;
    uint64_t Natural(int64_t row) const;
    double Float(int64_t row) const;
    bool Truth(int64_t row) const;
    void AppendText(int64_t row, std::optional<DateTimeShape> wanted, std::string& text) const;
    std::string_view Text(int64_t row) const;
    std::string_view TextView(int64_t row) const;
    template <class Offset>
    std::string_view TextBetween(int64_t row) const;
    const uint8_t* Value(int64_t row) const
    {
        return data_ + static_cast<size_t>(first_ + row) * type_.bytes;
    }

    ArrowType type_;
    std::string_view what_;
    const uint8_t* validity_ = nullptr;
    const uint8_t* data_ = nullptr;  ///< values, offsets of texts or views of them
    const void** buffers_ = nullptr;
    int64_t bufferCount_ = 0;
    int64_t first_ = 0;  ///< of the rows, in the buffers
    int64_t rows_ = 0;
};

}  // namespace MCVelscore_850

#endif
