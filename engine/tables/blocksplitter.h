#ifndef VELSCORE_ENGINE_TABLES_BLOCKSPLITTER_H
#define VELSCORE_ENGINE_TABLES_BLOCKSPLITTER_H

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/tables/blockreader.h"
#include "engine/tables/recordblock.h"
#include "engine/tables/recordcheck.h"

namespace MCVelscore_850 {

/// A row as it stands in its table.
struct RawRow {
    int64_t number = 0;       ///< from 1 after the header
    uint64_t offset = 0;      ///< of its first byte in the table, unpacked
    std::string_view text{};  ///< without its line end
};

/// A row that can't be taken for what the header says.
struct TornRow {
    RawRow raw;
    RecordFault fault;
};

/// Splits the records of a RecordBlock into fields.
///
/// Fields  stand until the next call.
/// Memory  nothing is allocated for a block that is like those before it.
class BlockSplitter {
public:
    virtual ~BlockSplitter();

    /// The block must outlive its splitting.
    virtual void Begin(const RecordBlock& block) = 0;
    /// From now on a row of the block that isn't UTF-8 is torn, by kRowEncoding; of some forms it
    /// is in any case.
    virtual void CheckEncoding() {}

    /// The fields of the next rows up to a torn one, row by row, at most `most` rows. Answers their
    /// number: 0 before a torn row, and at the block's end.
    virtual size_t NextRows(size_t most, std::span<const std::string_view>& fields) = 0;
    /// The same fields as JSON has them, a string in its quotes, null as such, and empty where
    /// there is none; none at all of a table of another form.
    virtual std::span<const std::string_view> JsonValues() const { return {}; }
    /// The torn row that is next; null where there is none.
    virtual const TornRow* Torn() = 0;
    virtual void PassTorn() = 0;

    /// A row of those delivered last, counted from 0.
    virtual RawRow Raw(size_t row) const = 0;
};

/// What becomes of a column.
struct ColumnUse {
    bool isUsed = false;    ///< somebody reads or keeps it
    bool isNumber = false;  ///< who reads it expects numbers
};

/// What a splitter has to know of its table.
struct SplitterPlan {
    TableForm form = TableForm::Csv;
    std::span<const std::string> header{};  ///< outlives the splitter
    char delimiter = ',';
    char decimal = '.';  ///< that the reader of a field expects
    std::vector<ColumnUse> uses{};
};

std::unique_ptr<BlockSplitter> MakeBlockSplitter(const SplitterPlan& plan);

}  // namespace MCVelscore_850

#endif
