#ifndef VELSCORE_ENGINE_TABLES_BLOCKREADER_H
#define VELSCORE_ENGINE_TABLES_BLOCKREADER_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "engine/tables/bytesource.h"
#include "engine/tables/recordblock.h"

namespace MCVelscore_850 {

/// The ways of writing a table that are read and written: comma-separated values, and JSON Lines,
/// an object a line.
enum class TableForm { Csv, JsonLines };

/// How messages call a form.
std::string FormName(TableForm form);

/// What is told of the tables to read.
struct RecordForm {
    char delimiter = ',';
    char decimal = '.';  ///< another than the delimiter
    bool hasHeader = true;
    /// Reading goes on behind a torn record, at the line end after the quote that tears it; else
    /// the table ends there.
    bool passesTorn = false;
    /// The delimiter was asked for: a table of another form is no such table.
    bool tellsDelimiter = false;
};

/// Cuts a table into blocks of whole records: the part of reading that goes from the first byte to
/// the last. What the records hold is a BlockSplitter's matter.
///
/// Blocks  hold what could be read without waiting for more, up to the size that is wanted. Rows
///         and their numbers don't depend on that size.
/// Errors  Failure of kind Cases: what the source throws, and what the form can't have.
class BlockReader {
public:
    static constexpr size_t kBlockSize = size_t{1} << 18;

    /// How large blocks are wanted.
    struct BlockSize {
        size_t bytes = kBlockSize;
        int64_t rows = std::numeric_limits<int64_t>::max();
    };

    virtual ~BlockReader();

    virtual TableForm Form() const = 0;
    /// Names of the columns; their numbers from 1 in a table without a header.
    virtual const std::vector<std::string>& Header() const = 0;
    /// Cuts off the next block; false at the end.
    virtual bool Next(RecordBlock& block) = 0;
    /// Goes on with the row of that number, at its place in the unpacked table, which is behind all
    /// that was delivered: the end of a block that another reader of the table cut off.
    virtual void GoTo(uint64_t offset, int64_t row) = 0;
    /// The rows that were delivered, torn ones too.
    virtual int64_t Rows() const = 0;
};

/// The reader of the form that the table has, which must be outlived by the source: JSON Lines
/// where the first byte behind a byte-order mark and blanks is '{'.
///
/// Errors  those of the reader's header; of kind Usage kOptionOfCsv for JSON Lines where the
///         delimiter or the lack of a header was told, kDelimiterIsDecimal for comma-separated
///         values with one mark for both.
std::unique_ptr<BlockReader> MakeBlockReader(ByteSource& source, const RecordForm& form,
                                             const BlockReader::BlockSize& blockSize);

}  // namespace MCVelscore_850

#endif
