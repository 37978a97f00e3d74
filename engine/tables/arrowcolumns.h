#ifndef VELSCORE_ENGINE_TABLES_ARROWCOLUMNS_H
#define VELSCORE_ENGINE_TABLES_ARROWCOLUMNS_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/tables/arrowschema.h"
#include "engine/tables/arrowvalues.h"
#include "engine/tables/columnblock.h"

namespace MCVelscore_850 {

/// What reads a column: where that tells how its values become texts.
struct ArrowReader {
    bool readsTexts = false;
    std::optional<DateTimeShape> shape{};  ///< of dates and times, where it reads such
};

/// One column of tables in Arrow's form, as columns of blocks.
///
/// Numbers   doubles are borrowed as they lie, other floats and whole numbers are converted. A
/// block
///           with a number that no double holds exactly, a whole one beyond 2^53 or a long decimal,
///           becomes texts, which are read as those of a file.
/// Texts     are borrowed; dates and times become texts as a file has them, so that they are read
///           by the same rules. A time that has a zone counts in UTC.
/// Truths    are 1 and 0 for who reads numbers, "true" and "false" for who reads texts.
/// Missing   is what has no value by the array's own bits, and NaN where that is wanted.
/// Memory    kept from block to block. A dictionary is read once a table.
class ArrowColumn {
public:
    /// `field` has a type. `most` rows are read at once.
    ArrowColumn(const ArrowField& field, const ArrowReader& reader, bool nanIsMissing, size_t most);

    /// Errors  those of ArrowValues, also in what its own structure has of a dictionary.
    void Begin(const ArrowArray& array, int64_t first, int64_t rows);
    TableColumn Block(int64_t first, size_t rows);
    /// The doubles of all rows where they lie, if they can be borrowed and none is null; else null.
    /// Blocks then differ in their place alone.
    const double* Plain() const { return plain_; }

private:
    void ReadDictionary(const ArrowArray* dictionary);
    TableColumn Values(int64_t first, size_t rows);
    TableColumn Indexed(int64_t first, size_t rows);

    std::string what_;
    ArrowType type_;
    bool hasDictionary_;
    ArrowType index_;
    bool becomesTexts_;
    std::optional<DateTimeShape> shape_;
    bool nanIsMissing_;

    ArrowValues values_;  ///< of a dictionary's indexes where there is one
    const double* plain_ = nullptr;
    std::vector<double> numbers_;
    std::vector<std::string_view> texts_;
    std::vector<std::string> madeTexts_;
    std::vector<int32_t> codes_;
    std::vector<uint8_t> present_;

    // Of a dictionary, by index: numbers where it has some, else texts.
    bool dictionaryOfTexts_ = false;
    std::vector<double> entryNumbers_;
    std::vector<bool> entryPresent_;
    std::vector<std::string_view> entryTexts_;
    std::vector<std::string> madeEntries_;
};

/// Tables of Arrow's C data interface, one after the other, by their schema: what its struct holds
/// as blocks of columns. Columns that nobody uses aren't looked at.
class ArrowColumns {
public:
    /// Errors  those of ReadArrowSchema.
    ArrowColumns(const ArrowSchema& schema, bool nanIsMissing, size_t mostRows);

    /// The names of the columns.
    std::span<const std::string> Header() const { return header_; }
    /// Reads a column from now on. Throws Failure (kArrowType) for a type that isn't taken.
    void Use(size_t column, const ArrowReader& reader);

    /// Takes a table for the next one; it stays the caller's, and is to stand until the next.
    ///
    /// Errors  Failure (kArrowStructure) for a table that isn't as its schema says.
    void Begin(const ArrowArray& table);
    int64_t Rows() const { return rows_; }
    /// Where the table's rows lie in the arrays of its columns.
    int64_t Offset() const { return offset_; }
    /// Some of its rows; stands until the next call. At most mostRows.
    ColumnBlock Block(int64_t first, size_t rows);

private:
    std::vector<ArrowField> fields_;
    std::vector<std::string> header_;
    bool nanIsMissing_;
    size_t mostRows_;
    struct Used {
        size_t column;
        ArrowColumn reader;
    };
    std::vector<Used> used_;
    std::vector<TableColumn> block_;
    int64_t rows_ = 0;
    int64_t offset_ = 0;
};

}  // namespace MCVelscore_850

#endif
