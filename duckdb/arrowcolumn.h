#ifndef VELSCORE_DUCKDB_ARROWCOLUMN_H
#define VELSCORE_DUCKDB_ARROWCOLUMN_H

#include <cstdint>
#include <string_view>
#include <vector>

#include "capi/include/velscore_arrow.h"
#include "duckdb/api.h"

namespace velscore::sql {

// Columns of the library's results: float64, int32 and dictionaries of utf8.

/// A bit a row; null where every row has a value.
inline const void* BitsOf(const ArrowArray& array)
{
    return array.null_count == 0 ? nullptr : array.buffers[0];
}

inline bool HasBit(const void* bits, idx_t row)
{
    return bits == nullptr || (static_cast<const uint8_t*>(bits)[row / 8] >> row % 8 & 1) != 0;
}

/// The texts of a dictionary.
class DictionaryTexts {
public:
    explicit DictionaryTexts(const ArrowArray& array)
        : codes_(static_cast<const int32_t*>(array.buffers[1])),
          offsets_(static_cast<const int32_t*>(array.dictionary->buffers[1])),
          text_(static_cast<const char*>(array.dictionary->buffers[2])),
          count_(static_cast<size_t>(array.dictionary->length))
    {}

    size_t Count() const { return count_; }
    /// Of a row that has a value.
    size_t CodeOf(idx_t row) const { return static_cast<size_t>(codes_[row]); }
    std::string_view Text(size_t code) const
    {
        return {text_ + offsets_[code], static_cast<size_t>(offsets_[code + 1] - offsets_[code])};
    }

private:
    const int32_t* codes_;
    const int32_t* offsets_;
    const char* text_;
    size_t count_;
};

/// Writes a column of texts behind `before` rows that are there. The database makes each text once,
/// at the first row that has it; a further row's value is that one's, which owns nothing.
inline void WriteTexts(const ArrowArray& array, duckdb_vector out, idx_t before = 0)
{
    const DictionaryTexts texts(array);
    const void* bits = BitsOf(array);
    auto* values = static_cast<duckdb_string_t*>(duckdb_vector_get_data(out)) + before;
    std::vector<const duckdb_string_t*> made(texts.Count());
    for (idx_t row = 0; row < static_cast<idx_t>(array.length); ++row) {
        if (!HasBit(bits, row)) continue;
        const size_t code = texts.CodeOf(row);
        if (made[code] == nullptr) {
            const std::string_view text = texts.Text(code);
            duckdb_unsafe_vector_assign_string_element_len(out, before + row, text.data(),
                                                           text.size());
            made[code] = &values[row];
        } else {
            values[row] = *made[code];
        }
    }
}

}  // namespace velscore::sql

#endif
