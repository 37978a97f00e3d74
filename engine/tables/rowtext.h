#ifndef VELSCORE_ENGINE_TABLES_ROWTEXT_H
#define VELSCORE_ENGINE_TABLES_ROWTEXT_H

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "engine/tables/blockreader.h"

namespace MCVelscore_850 {

/// How rows of text are written.
struct RowForm {
    char delimiter = ',';  ///< of comma-separated values, as the decimal mark is
    char decimal = '.';
    /// The most significant digits of a number; 0 for as many as it takes to read it back.
    int digits = 0;
    TableForm table = TableForm::Csv;
};

/// Rows as text, in memory: comma-separated values, or JSON Lines.
///
/// Form   RFC 4180, or an object a row (RFC 8259) whose keys are the columns, always all of them;
///        with LF line ends. Numbers in their shortest form that reads back, unless fewer digits
///        are wanted. JSON has null for an empty field and for a number that isn't finite, and
///        U+FFFD for each byte of a text that isn't UTF-8.
/// Order  SetColumns() for JSON Lines; then fields, as many as there are columns, and EndRow(), for
///        each row.
/// Memory keeps what it has through Clear().
class RowText {
public:
    explicit RowText(const RowForm& form = {});

    /// What the columns are called, once.
    void SetColumns(std::span<const std::string> names);
    /// The row of their names, which JSON Lines haven't.
    void AddHeader(std::span<const std::string> names);

    void AddText(std::string_view text)
    {
        Separate();
        if (isJson_) return AddString(text);
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
    void AddEmpty()
    {
        Separate();
        if (isJson_) text_.append(kNull);
    }
    /// A string, number, true, false or null as JSON has it, which comma-separated values can't
    /// hold.
    void AddJson(std::string_view value)
    {
        Separate();
        text_.append(value);
    }
    TableForm Form() const { return form_.table; }
    void EndRow()
    {
        if (isJson_) text_.push_back('}');
        text_.push_back('\n');
        rowEnds_.push_back(text_.size());
        rowFields_ = 0;
    }

    /// The whole rows.
    std::string_view Text() const { return {text_.data(), rowEnds_.empty() ? 0 : rowEnds_.back()}; }
    /// Where each of them ends.
    const std::vector<size_t>& RowEnds() const { return rowEnds_; }
    void Clear()
    {
        text_.clear();
        rowEnds_.clear();
        rowFields_ = 0;
    }

private:
    static constexpr std::string_view kNull = "null";

    void Separate()
    {
        if (isJson_) {
            text_.append(keys_[rowFields_]);
        } else if (rowFields_ > 0) {
            text_.push_back(form_.delimiter);
        }
        ++rowFields_;
    }
    void AddRounded(double number);
    void AddAnyWhole(int64_t number);
    void AddQuoted(std::string_view text);
    void AddString(std::string_view text);
    void MendNumber(size_t begin);

    RowForm form_;
    bool isJson_;
    bool plainNumbers_;                ///< no number holds the delimiter or another decimal mark
    std::array<bool, 256> special_{};  ///< by byte: it forces quotes, or an escape in JSON
    std::vector<std::string> keys_;    ///< of JSON, each with what stands around it
    size_t rowFields_ = 0;             ///< of the open row
    fmt::memory_buffer text_;
    std::vector<size_t> rowEnds_;
};

}  // namespace MCVelscore_850

#endif
