#ifndef VELSCORE_ENGINE_TABLES_COLUMNBLOCK_H
#define VELSCORE_ENGINE_TABLES_COLUMNBLOCK_H

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace MCVelscore_850 {

/// One column of a block of rows, borrowed: of texts, of numbers or of codes of texts, whichever
/// pointer isn't null.
struct TableColumn {
    /// A text a row, as a field of a file has it; those of two rows lie `stride` apart.
    const std::string_view* texts = nullptr;
    size_t stride = 1;
    /// From the begin of each text on, an empty one too, kPlainNumberRoom bytes can be read.
    bool textsHaveRoom = false;
    /// A number a row; dates and times count from their variable's own origin.
    const double* numbers = nullptr;
    /// Indexes into `dictionary`; any other number is no value.
    const int32_t* codes = nullptr;
    std::span<const std::string_view> dictionary{};
    /// Of numbers and codes: a bit a row, least significant first, set where the row has a value;
    /// null when every row has one.
    const uint8_t* present = nullptr;
    /// A number that is NaN is no value, whatever `present` says.
    bool nanIsMissing = false;

    bool IsPresent(size_t row) const
    {
        if (nanIsMissing && std::isnan(numbers[row])) return false;
        return present == nullptr || ((present[row / 8] >> (row % 8)) & 1U) != 0;
    }
    /// Of texts and codes; empty where the row has no value.
    std::string_view Text(size_t row) const
    {
        if (texts != nullptr) return texts[row * stride];
        const auto code = static_cast<size_t>(codes[row]);  // a negative one is out of range too
        return code < dictionary.size() && IsPresent(row) ? dictionary[code] : std::string_view();
    }
};

/// Some rows of a table, borrowed: its columns in the order of its header.
struct ColumnBlock {
    size_t rows = 0;
    std::span<const TableColumn> columns{};
};

/// Makes blocks of texts that lie row by row in one array, as the rows of a file do.
class TextRows {
public:
    /// `haveRoom` as TableColumn::textsHaveRoom.
    explicit TextRows(size_t columns, bool haveRoom = false) : columns_(columns)
    {
        for (TableColumn& column : columns_) column.textsHaveRoom = haveRoom;
    }

    /// `fields` has a text for each column of each row. The block stands until the next call.
    ColumnBlock Block(std::span<const std::string_view> fields)
    {
        const size_t stride = columns_.size();
        for (size_t i = 0; i < stride; ++i) {
            columns_[i].texts = fields.data() + i;
            columns_[i].stride = stride;
        }
        return {stride == 0 ? 0 : fields.size() / stride, columns_};
    }

private:
    std::vector<TableColumn> columns_;
};

}  // namespace MCVelscore_850

#endif
