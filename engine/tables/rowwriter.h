#ifndef VELSCORE_ENGINE_TABLES_ROWWRITER_H
#define VELSCORE_ENGINE_TABLES_ROWWRITER_H

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "engine/tables/compression.h"
#include "engine/tables/outputfile.h"

namespace MCVelscore_850 {

class RowText;

/// Writes rows of text to an OutputFile, compressed if wanted: whole rows only.
///
/// Errors  those of OutputFile; a regular file is cut back to the last whole row then. A pipe whose
///         reader went away is no failure: the writer then drops everything and IsClosed() says so.
///         Of compressed rows those that were written together stay or go together.
/// Order   rows; Close() at the end of a whole table, EndEarly() at that of any other. What a
///         destroyed writer holds is lost, on purpose: Close() reports, a destructor couldn't.
class RowWriter {
public:
    /// `path` "-" is standard output.
    explicit RowWriter(const std::string& path, Compression compression = Compression::None);

    /// How far a file is written: whole rows, the header among them.
    struct Position {
        std::string part{};  ///< the temporary file
        uint64_t bytes = 0;
        int64_t rows = 0;
    };
    /// Goes on where an earlier run's file is written up to there.
    RowWriter(const std::string& path, Compression compression, const Position& begin);
    RowWriter(const RowWriter&) = delete;
    RowWriter& operator=(const RowWriter&) = delete;

    /// The rows to come have no header.
    void OmitHeader() { headerRows_ = 0; }
    /// `packed` is what a Compressor has made of the rows already; else the writer compresses them.
    void Write(const RowText& rows, std::string_view packed = {});

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
    bool IsStream() const { return file_.IsStream(); }
    /// With what is buffered. Of no use for a stream.
    Position End() const;
    /// Whole rows that reached the file, the header not counted.
    int64_t RowsWritten() const { return std::max<int64_t>(0, rowsWritten_ - headerRows_); }

private:
    /// Where the file may be cut: in the buffer, and the rows up to there.
    struct Cut {
        size_t place;
        int64_t rows;
    };

    OutputFile file_;
    Compression compression_;
    Compressor compressor_;
    uint64_t bytesBefore_ = 0;  ///< of an earlier run
    std::string buffer_;
    std::vector<Cut> cuts_;
    int64_t rowsWritten_ = 0;
    int64_t headerRows_ = 1;
};

}  // namespace MCVelscore_850

#endif
