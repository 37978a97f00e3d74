#ifndef VELSCORE_ENGINE_TABLES_ROWTEXT_H
#define VELSCORE_ENGINE_TABLES_ROWTEXT_H

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

namespace MCVelscore_850 {

/// How rows of text are written.
struct RowForm {
    char delimiter = ',';
    char decimal = '.';
    /// The most significant digits of a number; 0 for as many as it takes to read it back.
    int digits = 0;
};

/// Rows as comma-separated text, in memory.
///
/// Form   RFC 4180 with LF line ends. Numbers in their shortest form that reads back, unless fewer
///        digits are wanted.
/// Order  fields, then EndRow(), for each row.
/// Memory keeps what it has through Clear().
class RowText {
public:
    explicit RowText(const RowForm& form = {});

    void AddText(std::string_view text)
    {
        Separate();
        for (const char c : text) {
            if (special_[static_cast<unsigned char>(c)]) return AddQuoted(text);
        }
        text_.append(text);
    }
    void AddNumber(double number)
    {
        if (form_.digits == 0) {
            AddLabel(number);
        } else {
            AddRounded(number);
        }
    }
    /// A number that names something, with all its digits.
    void AddLabel(double number);
    void AddWhole(int64_t number)
    {
        // A status, mostly.
        if (!plainNumbers_ || number < 0 || number > 9) return AddAnyWhole(number);
        Separate();
        text_.push_back(static_cast<char>('0' + number));
    }
    void AddEmpty() { Separate(); }
    void EndRow()
    {
        text_.push_back('\n');
        rowEnds_.push_back(text_.size());
        rowHasField_ = false;
    }

    /// The whole rows.
    std::string_view Text() const { return {text_.data(), rowEnds_.empty() ? 0 : rowEnds_.back()}; }
    /// Where each of them ends.
    const std::vector<size_t>& RowEnds() const { return rowEnds_; }
    void Clear()
    {
        text_.clear();
        rowEnds_.clear();
        rowHasField_ = false;
    }

private:
    void Separate()
    {
        if (rowHasField_) text_.push_back(form_.delimiter);
        rowHasField_ = true;
    }
    void AddRounded(double number);
    void AddAnyWhole(int64_t number);
    void AddQuoted(std::string_view text);
    void MendNumber(size_t begin);

    RowForm form_;
    bool plainNumbers_;                ///< no number holds the delimiter or another decimal mark
    std::array<bool, 256> special_{};  ///< by byte: it forces quotes
    bool rowHasField_ = false;
    fmt::memory_buffer text_;
    std::vector<size_t> rowEnds_;
};

}  // namespace MCVelscore_850

#endif
