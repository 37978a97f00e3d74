#ifndef VELSCORE_ENGINE_TABLES_ROWREADER_H
#define VELSCORE_ENGINE_TABLES_ROWREADER_H

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/tables/blockreader.h"
#include "engine/tables/blocksplitter.h"
#include "engine/tables/bytesource.h"
#include "engine/tables/recordblock.h"

namespace MCVelscore_850 {

/// Reads a table row by row on one thread, in constant memory: a BlockReader with its
/// BlockSplitter, whose rules are the table's.
///
/// Rows    are counted from 1, after the header where the form has one.
/// Errors  Failure, after the rows before the fault were delivered: what MakeBlockReader() and its
///         reader throw, and FailureOf() a torn row.
class RowReader {
public:
    /// Reads the header. The source must outlive the reader.
    explicit RowReader(ByteSource& source, char delimiter = ',');

    const std::vector<std::string>& Header() const { return reader_->Header(); }

    /// The fields of the next row, as many as the header has; they stand until the next call.
    /// False at the end.
    bool Next(std::span<const std::string_view>& fields) { return NextRows(1, fields) == 1; }
    /// As many further rows as can be had without waiting for more than one, at most `most`: their
    /// fields row by row, which stand until the next call. Answers their number, 0 at the end.
    size_t NextRows(size_t most, std::span<const std::string_view>& fields);

    /// The number of the row that was delivered last, 0 before the first.
    int64_t RowNumber() const { return row_; }

private:
    const ByteSource& source_;
    std::unique_ptr<BlockReader> reader_;
    std::unique_ptr<BlockSplitter> splitter_;
    RecordBlock block_;
    bool begun_ = false;
    int64_t row_ = 0;
};

}  // namespace MCVelscore_850

#endif
