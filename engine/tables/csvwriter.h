#ifndef VELSCORE_ENGINE_TABLES_CSVWRITER_H
#define VELSCORE_ENGINE_TABLES_CSVWRITER_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/tables/outputfile.h"

namespace MCVelscore_850 {

/// Writes a table of comma-separated values to an OutputFile: whole rows only.
///
/// Form    RFC 4180 with LF line ends. Numbers in their shortest form that reads back.
/// Errors  those of OutputFile; a regular file is cut back to the last whole row then. A pipe whose
///         reader went away is no failure: the writer then drops everything and IsClosed() says so.
/// Order   fields, then EndRow(), for each row; Close() at the end of a whole table, EndEarly() at
///         that of any other. What a destroyed writer holds is lost, on purpose: Close() reports, a
///         destructor couldn't.
class CsvWriter {
public:
    /// `path` "-" is standard output.
    explicit CsvWriter(const std::string& path, char delimiter = ',', char decimal = '.');
    CsvWriter(const CsvWriter&) = delete;
    CsvWriter& operator=(const CsvWriter&) = delete;

    void AddText(std::string_view text)
    {
        Separate();
        for (const char c : text) {
            if (special_[static_cast<unsigned char>(c)]) return AddQuoted(text);
        }
        buffer_.append(text);
    }
    void AddNumber(double number);
    void AddEmpty() { Separate(); }
    void EndRow();

    /// Writes out what is buffered.
    void Flush();
    /// Writes out what is buffered and ends the file, which gets its name.
    void Close();
    /// Ends the file with the whole rows that reached it. Answers the file that holds them: the
    /// temporary one or, when it shall get its name all the same, that one. Empty for a stream, and
    /// where there are no rows: then nothing is left.
    std::string EndEarly(bool underItsName);

    /// True once the reader of the pipe went away.
    bool IsClosed() const { return file_.IsClosed(); }
    /// Whole rows that reached the file, the header not counted.
    int64_t RowsWritten() const { return linesWritten_ > 0 ? linesWritten_ - 1 : 0; }

private:
    void Separate()
    {
        if (rowHasField_) buffer_.push_back(delimiter_);
        rowHasField_ = true;
    }
    void AddQuoted(std::string_view text);

    OutputFile file_;
    char delimiter_;
    char decimal_;
    std::array<bool, 256> special_{};  // by byte: it forces quotes
    bool rowHasField_ = false;
    std::string buffer_;
    std::vector<size_t> lineEnds_;  // in the buffer
    int64_t linesWritten_ = 0;
};

}  // namespace MCVelscore_850

#endif
