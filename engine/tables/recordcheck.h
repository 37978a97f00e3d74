#ifndef VELSCORE_ENGINE_TABLES_RECORDCHECK_H
#define VELSCORE_ENGINE_TABLES_RECORDCHECK_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/messages/failure.h"

namespace MCVelscore_850 {

// The careful reading of one record, byte by byte.

/// The longest field, the fields of the longest row together, in bytes, and the most columns.
inline constexpr size_t kMaxField = size_t{1} << 20;
inline constexpr size_t kMaxRow = size_t{1} << 24;
inline constexpr size_t kMaxColumns = size_t{1} << 20;

/// What is wrong with a record.
struct RecordFault {
    int code = 0;        ///< of the message catalogue; 0 for a sound record
    uint64_t found = 0;  ///< fields
    /// Of JSON Lines: the key at fault, or why there is no object.
    std::string_view detail{};
};

/// What a sound record has, or the first thing in it that is wrong. `record` may end with its line
/// end; `columns` is 0 for a header, which may have any number up to kMaxColumns.
///
/// Errors  kNulByte, kStrayQuote, kFieldTooLong, kRowTooLong, kTooManyColumns, kUnclosedQuote,
///         kRowLength.
RecordFault CheckRecord(std::string_view record, char delimiter, size_t columns);

/// The fields of a sound record, quotes taken off.
std::vector<std::string> FieldsOf(std::string_view record, char delimiter);

/// The failure of a row with that fault.
Failure FailureOf(const RecordFault& fault, const std::string& table, int64_t row, size_t columns,
                  std::string hint = {});

}  // namespace MCVelscore_850

#endif
