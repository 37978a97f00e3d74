#ifndef VELSCORE_ENGINE_TABLES_RECORDBLOCK_H
#define VELSCORE_ENGINE_TABLES_RECORDBLOCK_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "engine/tables/bytescan.h"
#include "engine/tables/plainnumber.h"

namespace MCVelscore_850 {

/// The bytes behind a block's text that may be read: whoever scans it, or reads the number of its
/// last field, which may be empty, looks at them.
inline constexpr size_t kRoomBehindText = std::max(kWideScan, kPlainNumberRoom);

/// Some records of a table, one after the other as they stand in it: cut off by a BlockReader, to
/// be split by a BlockSplitter, on another thread if need be.
struct RecordBlock {
    /// A record that quotes, its length or the end of the table tear: [begin, end) of the text.
    struct Torn {
        size_t begin;
        size_t end;
        int code;  ///< what it is refused with where its own bytes are sound
    };

    std::string_view Text() const { return {bytes.data(), size}; }

    std::vector<char> bytes;  ///< the text, then kRoomBehindText bytes or more that mean nothing
    size_t size = 0;
    /// Blank lines before the first record. Each counts as a row, and is one too short.
    int64_t blankLines = 0;
    /// Some of them, one behind the other, of so many bytes each.
    struct BlankRun {
        uint64_t offset;  ///< of the first in the table
        uint64_t size;
        int64_t lines;
    };
    std::vector<BlankRun> blankRuns;  ///< all of them, in their order
    int64_t firstRow = 0;             ///< the first record's number, from 1 after the header
    int64_t nextRow = 0;              ///< that of the record behind the block
    uint64_t offset = 0;              ///< of the text's first byte in the table, unpacked
    bool hasQuotes = false;
    std::vector<Torn> torn;  ///< in their order
    uint64_t bytesRead = 0;  ///< of all tables as they lie, when this block was cut off
    size_t table = 0;        ///< which of several it is of
    int64_t rowsBefore = 0;  ///< in the tables before that one
};

}  // namespace MCVelscore_850

#endif
