#ifndef VELSCORE_ENGINE_TABLES_TABLEREADER_H
#define VELSCORE_ENGINE_TABLES_TABLEREADER_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "engine/tables/blockreader.h"
#include "engine/tables/bytesource.h"
#include "engine/tables/recordblock.h"

namespace MCVelscore_850 {

/// Reads tables of the same columns one after another, as blocks of records: files, or standard
/// input for "-".
///
/// Columns those of the first table's header. Any other table of comma-separated values has the
/// same
///         ones in the same order; of JSON Lines the first object has all of their keys.
/// Errors  Failure: what MakeBlockReader() and its reader throw; kCasesNotRead for any of the files
///         from the constructor; kOtherHeader for a table whose columns aren't those of the first,
///         kOtherTableForm for one of another form.
class TableReader {
public:
    /// Reads the header of the first table.
    TableReader(std::vector<std::string> paths, const RecordForm& form,
                const BlockReader::BlockSize& blockSize, const StopFlag* stop = nullptr);
    ~TableReader();

    const std::vector<std::string>& Header() const { return header_; }
    TableForm Form() const { return tableForm_; }
    /// What to do about a header that lacks a column, beside what is to do of any form; or empty.
    std::string HeaderRemedy() const;
    /// How messages call a table.
    const std::string& NameOf(size_t table) const { return names_[table]; }
    size_t TableCount() const { return names_.size(); }

    /// Cuts off the next block; false at the end of the last table.
    bool Next(RecordBlock& block);

    /// Where a block ends.
    struct Place {
        size_t table = 0;
        uint64_t offset = 0;  ///< in the unpacked table; 0 for the place behind the header
        int64_t row = 1;      ///< of the record that is next
        int64_t rowsBefore = 0;
    };
    static Place EndOf(const RecordBlock& block)
    {
        return {block.table, block.offset + block.size, block.nextRow, block.rowsBefore};
    }
    /// Goes on from there: where a block of the same tables ended, in an earlier run say.
    void GoTo(const Place& place);

    /// The size of all tables as they lie, 0 when it isn't known.
    uint64_t TotalBytes() const { return totalBytes_; }

private:
    void Open();
    void RefuseOtherTable() const;
    void RefuseOtherHeader(const std::vector<std::string>& header, size_t place) const;

    std::vector<std::string> paths_;
    std::vector<std::string> names_;
    RecordForm form_;
    BlockReader::BlockSize blockSize_;
    const StopFlag* stop_;
    size_t table_ = 0;
    std::unique_ptr<ByteSource> source_;
    std::unique_ptr<BlockReader> reader_;
    TableForm tableForm_ = TableForm::Csv;  ///< of the first table
    std::vector<std::string> header_;
    uint64_t bytesBefore_ = 0;  ///< of the tables before
    int64_t rowsBefore_ = 0;
    uint64_t totalBytes_ = 0;
};

}  // namespace MCVelscore_850

#endif
