#ifndef VELSCORE_ENGINE_CSVWRITER_H
#define VELSCORE_ENGINE_CSVWRITER_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace MCVelscore_850 {

/// Writes a table of comma-separated values to a file or to standard output: whole rows only.
///
/// Form    RFC 4180 with LF line ends. Numbers in their shortest form that reads back.
/// Errors  kOutputNotWritten (Failure) with the whole rows written so far. A regular file is cut
///         back to the last whole row. A pipe whose reader went away is no failure: the writer
///         then drops everything and IsClosed() says so.
/// Order   fields, then EndRow(), for each row; Close() at the end. What a destroyed writer holds
///         unflushed is lost, on purpose: Close() reports, a destructor couldn't.
class CsvWriter {
public:
    /// `path` "-" is standard output. Any other file is made, or emptied.
    explicit CsvWriter(const std::string& path, char delimiter = ',', char decimal = '.');
    CsvWriter(const CsvWriter&) = delete;
    CsvWriter& operator=(const CsvWriter&) = delete;
    ~CsvWriter();

    void AddText(std::string_view text)
    {
        Separate();
        if (text.find_first_of(special_) == std::string_view::npos) {
            buffer_.append(text);
        } else {
            AddQuoted(text);
        }
    }
    void AddNumber(double number);
    void AddEmpty() { Separate(); }
    void EndRow();

    /// Writes out what is buffered.
    void Flush();
    void Close();

    /// True once the reader of the pipe went away.
    bool IsClosed() const { return closed_; }
    /// Whole rows that reached the file, the header not counted.
    int64_t RowsWritten() const { return linesWritten_ > 0 ? linesWritten_ - 1 : 0; }

private:
    void Separate()
    {
        if (rowHasField_) buffer_.push_back(delimiter_);
        rowHasField_ = true;
    }
    void AddQuoted(std::string_view text);
    [[noreturn]] void Fail(int error, size_t written);

    std::string name_;
    char delimiter_;
    char decimal_;
    std::string special_;  // what forces quotes
    int descriptor_ = -1;
    bool regular_ = false;
    bool closed_ = false;
    bool rowHasField_ = false;
    std::string buffer_;
    std::vector<size_t> lineEnds_;  // in the buffer
    uint64_t fileOffset_ = 0;       // where the buffer's first byte goes in a regular file
    int64_t linesWritten_ = 0;
};

/// The one refusal of an output: kOutputNotWritten for `error`, an errno value.
[[noreturn]] void RefuseOutput(const std::string& name, int error, int64_t rowsWritten);

}  // namespace MCVelscore_850

#endif
