#ifndef VELSCORE_DUCKDB_ROWTABLE_H
#define VELSCORE_DUCKDB_ROWTABLE_H

#include <cstdint>
#include <string>
#include <vector>

#include "capi/include/velscore_arrow.h"
#include "duckdb/api.h"

namespace velscore::sql {

/// How the values of a column come into Arrow's form.
enum class ColumnForm {
    Same,      ///< the database's own array is Arrow's
    Truths,    ///< bytes to bits
    Texts,     ///< to offsets and bytes
    Decimals,  ///< to 16 bytes each
    Wide,      ///< unsigned 16 bytes to 32
    Codes,     ///< an ENUM: indexes as they are, of a dictionary
    Nothing,   ///< no value: nothing but NULL, or a column that isn't read
};

/// Refuses what isn't a struct whose fields have names: throws SqlError, which names the function.
void CheckRowType(duckdb_logical_type type, const std::string& function);

/// The rows of a struct as a table of Arrow's C data interface: the structures stay here and are
/// lent. Numbers, dates and validity lie where the database has them.
///
/// Threads  one at a time. It isn't moved: the structures point into each other.
class RowTable {
public:
    /// Of a type that CheckRowType() takes. Fields that aren't in `reads` stand as nothing. Throws
    /// SqlError for a field of `reads` whose type isn't taken.
    RowTable(duckdb_logical_type rowType, const std::vector<std::string>& reads);
    RowTable(const RowTable&) = delete;
    RowTable& operator=(const RowTable&) = delete;

    const ArrowSchema* Schema() const { return &schema_; }
    /// A table of the rows of a flat vector of the type. Stands until the next call, or until it is
    /// released.
    ArrowArray Of(duckdb_vector rows, idx_t count);

private:
    struct Column {
        std::string name;
        std::string format;
        ColumnForm form = ColumnForm::Nothing;
        size_t bytes = 0;  ///< of a decimal as the database has it
        std::vector<int64_t> offsets;
        std::string text;
        std::vector<uint64_t> words;
        std::vector<int64_t> entryOffsets;  ///< of an ENUM's dictionary
        std::string entryText;
        ArrowSchema schema{};
        ArrowSchema entrySchema{};
        ArrowArray array{};
        ArrowArray entries{};
        const void* buffers[3] = {};
        const void* entryBuffers[3] = {};
    };

    void SetType(Column& column, duckdb_logical_type type) const;
    static void ReadEntries(Column& column, duckdb_logical_type type);
    static void Fill(Column& column, duckdb_vector values, idx_t count);

    std::vector<Column> columns_;
    std::vector<ArrowSchema*> schemas_;
    std::vector<ArrowArray*> arrays_;
    const void* buffers_[1] = {};
    ArrowSchema schema_{};
};

}  // namespace velscore::sql

#endif
