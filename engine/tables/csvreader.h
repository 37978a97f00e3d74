#ifndef VELSCORE_ENGINE_TABLES_CSVREADER_H
#define VELSCORE_ENGINE_TABLES_CSVREADER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/messages/failure.h"
#include "engine/tables/bytesource.h"

namespace MCVelscore_850 {

/// Reads a table of comma-separated values with a header, row by row, in constant memory.
///
/// Form    RFC 4180: quotes around a field, doubled inside it; line ends LF, CR LF or CR, also
///         inside quotes. Blanks belong to their field. A byte-order mark is dropped.
/// Blanks  A blank line is an empty field in a table of one column. In a wider one blank lines at
///         the end are passed over; one before a further row is a row too short.
/// Rows    are counted from 1 after the header.
/// Errors  Failure, after the rows before the fault were delivered: kNoHeader, kRowLength,
///         kUnclosedQuote, kStrayQuote, kNulByte, kFieldTooLong, kRowTooLong, kTooManyColumns,
///         kNoTextTable, kTableCut for a last row without a line end in a table that changed its
///         size meanwhile, and what the source throws.
class CsvReader {
public:
    /// The longest field, the fields of the longest row together, in bytes, and the most columns.
    static constexpr size_t kMaxField = size_t{1} << 20;
    static constexpr size_t kMaxRow = size_t{1} << 24;
    static constexpr size_t kMaxColumns = size_t{1} << 20;

    /// Reads the header. The source must outlive the reader.
    explicit CsvReader(ByteSource& source, char delimiter = ',');
    CsvReader(const CsvReader&) = delete;
    CsvReader& operator=(const CsvReader&) = delete;
    ~CsvReader();

    const std::vector<std::string>& Header() const { return header_; }

    /// The fields of the next row, as many as the header has; they stand until the next call.
    /// False at the end.
    bool Next(std::span<const std::string_view>& fields);
    /// As many further rows as can be had without waiting for more than one, at most `most`: their
    /// fields row by row, which stand until the next call. Answers their number, 0 at the end.
    size_t NextRows(size_t most, std::span<const std::string_view>& fields);

    /// The number of the row that was delivered last, 0 before the first.
    int64_t RowNumber() const { return row_; }
    uint64_t BytesRead() const { return bytesRead_; }

private:
    struct Parser;  // hides the parsing library's types
    friend struct Parser;

    struct Field {
        uint32_t begin;
        uint32_t end;
    };
    /// A parsed line: fields_[firstField, firstField + stored); `found` also counts the fields
    /// beyond the header's count, which aren't stored.
    struct Line {
        uint32_t firstField;
        uint32_t stored;
        uint64_t found;
    };

    /// Delivers the next row into the fields from `place` on.
    bool NextRow(size_t place);
    bool IsSoundRow(const Line& line) const;
    bool NextLine(Line& line);
    void FillBatch();
    void FinishTable();
    void Parse(const char* bytes, size_t size);
    bool IsQuoteOpen() const;
    bool ParseWithQuotes(std::string_view bytes);
    void SplitPlainLines(std::string_view lines);
    void TakeSplitField(uint32_t begin, uint32_t end);
    void DropDelivered();
    void TakeField(const char* bytes, size_t size);
    void TakeLineEnd(int terminator);
    void ReadHeader();
    void FailLater(int code, std::vector<std::string> details, std::string hint = {});
    [[noreturn]] void Fail(int code, std::vector<std::string> details) const;
    std::string OpenRow() const;

    ByteSource& source_;
    char delimiter_;
    std::unique_ptr<Parser> parser_;
    std::vector<char> chunk_;
    uint64_t bytesRead_ = 0;
    bool started_ = false;
    bool ended_ = false;
    std::optional<Failure> failure_;  // thrown once the lines before it are delivered
    char lastByte_ = '\n';

    // The lines that were parsed and not delivered, then the fields of the open one.
    std::string text_;
    std::vector<Field> fields_;
    std::vector<Line> lines_;
    size_t nextLine_ = 0;
    size_t openFirstField_ = 0;
    size_t openText_ = 0;  // where the open line's text begins
    uint64_t openFound_ = 0;
    int lastTerminator_ = 0;
    int64_t linesParsed_ = 0;

    std::vector<std::string> header_;
    std::vector<std::string_view> rowFields_;  // of the rows that were delivered last
    int64_t row_ = 0;
    int64_t blankLines_ = 0;  // blank lines since the last row of a wide table
};

}  // namespace MCVelscore_850

#endif
