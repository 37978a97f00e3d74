#ifndef VELSCORE_ENGINE_TABLES_ARROWARRAYS_H
#define VELSCORE_ENGINE_TABLES_ARROWARRAYS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/tables/arrowdata.h"

namespace MCVelscore_850 {

/// Bytes that arrays share, aligned as Arrow recommends; what stands in them is undefined at first.
using ArrowBytes = std::shared_ptr<std::byte[]>;
ArrowBytes MakeArrowBytes(size_t size);
/// The same, all of them 0.
ArrowBytes MakeArrowZeros(size_t size);

/// A copy of bytes.
ArrowBytes CopyArrowBytes(const void* bytes, size_t size);

/// Texts that go into arrays: one behind the other.
struct ArrowTextBytes {
    ArrowBytes offsets;  ///< of 32 bits, one more than there are texts
    ArrowBytes bytes;
    int64_t count = 0;
};
ArrowTextBytes MakeArrowTexts(std::span<const std::string_view> texts);

/// A column of an array that is made here. What it holds is shared and doesn't change any more.
struct ArrowColumnParts {
    ArrowBytes validity;  ///< null where every row has a value
    ArrowBytes values;    ///< or the offsets of texts
    ArrowBytes texts{};   ///< of a column of texts alone
    int64_t nullCount = 0;
    ArrowTextBytes dictionary{};  ///< that values are indexes into, where it has offsets
};

/// A column of copies of numbers, of which NaN is no value.
ArrowColumnParts ArrowNumbers(const std::vector<double>& numbers);
/// A column of indexes into a dictionary, of which one below 0 is no value.
ArrowColumnParts ArrowCodes(const std::vector<int32_t>& codes, const ArrowTextBytes& dictionary);

/// Each array owns a share of what it holds, so that it may be moved out of its table and outlive
/// it, as the standard wants it.
ArrowOwner<ArrowArray> MakeArrowArray(int64_t rows, ArrowColumnParts parts);

/// Some rows of a column that somebody else made, without a copy: `owner` keeps it, and lives as
/// long as the view.
///
/// Errors  Failure (kArrowStructure, kArrowTooDeep) for an array that lacks what its own numbers
///         tell, or has fewer rows.
ArrowOwner<ArrowArray> ViewArrowArray(const ArrowArray& array, const std::string& name,
                                      const std::shared_ptr<const void>& owner, int64_t first,
                                      int64_t rows);

/// A table of columns of so many rows.
ArrowOwner<ArrowArray> MakeArrowTable(int64_t rows, std::vector<ArrowOwner<ArrowArray>> columns);

}  // namespace MCVelscore_850

#endif
