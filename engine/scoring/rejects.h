#ifndef VELSCORE_ENGINE_SCORING_REJECTS_H
#define VELSCORE_ENGINE_SCORING_REJECTS_H

#include <cstdint>
#include <string_view>

#include "engine/scoring/resultblock.h"
#include "engine/tables/blocksplitter.h"

namespace MCVelscore_850 {

class RowText;

/// Writes the rows of a table that have no score, and why, as a table of its own.
///
/// Columns  file; row, from 1 after the header; byte_offset, of the row's first byte in the table,
///          unpacked; column, the one at fault; code, of the message catalogue; class; text, what
///          stands in the column; record, the row as it stands in the table.
/// Classes  too few fields, too many fields, open quote, stray quote, not JSON, nested value, key
///          twice, encoding, too long, not a number, not a date, missing, invalid, refused by the
///          model.
/// Bytes    that aren't UTF-8, and NUL bytes, are written \xNN.
class RejectTable {
public:
    static void WriteHeader(RowText& rows);
    static void WriteTorn(RowText& rows, std::string_view file, const TornRow& torn,
                          size_t columns);
    /// `isMissing` tells of the text at fault, where there is one.
    static void WriteNotScored(RowText& rows, std::string_view file, const RawRow& row,
                               const CaseStatus& status, bool isMissing);
};

}  // namespace MCVelscore_850

#endif
