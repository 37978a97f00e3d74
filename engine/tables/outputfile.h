#ifndef VELSCORE_ENGINE_TABLES_OUTPUTFILE_H
#define VELSCORE_ENGINE_TABLES_OUTPUTFILE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace MCVelscore_850 {

/// Where a command's data goes: a file that gets its name when it is whole. Until then the data
/// stands in a temporary file beside it, and what had the name before keeps it, whatever ends the
/// program. It is on its disk before it takes the name, so that a loss of power leaves one or the
/// other whole.
///
/// Links   lead on: the file at their end is replaced, the link stays.
/// Modes   A new file has the mode, and if possible the owner, of the one that it replaces.
/// Streams What is no regular file, a pipe or a device, is written as it is, and so are standard
///         output and what names a descriptor that is open already, such as /dev/stdout. A pipe
///         whose reader went away is no failure: everything is dropped from then on.
/// Errors  Failure of kind Output (RefuseOutput) from the constructor and from Finish().
/// Owner   closes what it opened. A destroyed one that was neither finished nor left removes its
///         temporary file.
class OutputFile {
public:
    /// `path` "-" is standard output.
    explicit OutputFile(const std::string& path);
    /// Goes on behind the first `size` bytes of the temporary file that an earlier run left for the
    /// file; what it holds beyond them goes. Refuses one that is shorter.
    OutputFile(const std::string& path, const std::string& part, uint64_t size);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    /// How messages call it.
    const std::string& Name() const { return name_; }

    /// Zero, or the errno value of what failed; Written() tells how far it came.
    int Write(std::string_view bytes);
    uint64_t Written() const { return written_; }
    /// True once the reader of the pipe went away.
    bool IsClosed() const { return closed_; }
    /// True where there is no temporary file, nor a name to be had.
    bool IsStream() const { return part_.empty(); }
    /// The temporary file; empty for a stream, and once it has its name.
    const std::string& Part() const { return part_; }

    /// Takes back what was written beyond the first `size` bytes, where that can be: not in a pipe.
    void CutTo(uint64_t size);
    /// Closes it; a file gets its name.
    void Finish();
    /// Closes it and leaves what was written where it is. Answers the temporary file's name; empty
    /// for a stream.
    std::string Leave();

private:
    void Open(const std::string& path, const std::string& part);
    void MakePart();
    void OpenPart(const std::string& part);
    void FindBegin();
    int Close();

    std::string name_;
    std::string target_;  // the name at the end of all links
    std::string part_;    // the temporary file; empty for a stream, and once it has its name
    std::optional<mode_t> mode_;  // of the file that is replaced
    int descriptor_ = -1;
    bool owned_ = true;
    bool regular_ = false;
    bool closed_ = false;
    uint64_t begin_ = 0;  // where our first byte goes in a regular file
    uint64_t written_ = 0;
};

/// Writes a text to an OutputFile, all of it or none.
///
/// Errors  as OutputFile.
void WriteWholeFile(const std::string& path, std::string_view text);

/// The one refusal of an output: kOutputFull when `error`, an errno value, says that there is no
/// room, kOutputNotWritten for any other.
[[noreturn]] void RefuseOutput(const std::string& name, int error);

}  // namespace MCVelscore_850

#endif
