#include "engine/csvwriter.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/failure.h"
#include "host/messages.h"
#include "host/numbertext.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kFlushAt = size_t{1} << 16;

// Where the next byte goes: at the end for a file opened for appending, else at its offset.
uint64_t WritePosition(int descriptor, const struct stat& status)
{
    const int flags = ::fcntl(descriptor, F_GETFL);
    if (flags >= 0 && (flags & O_APPEND) != 0) return static_cast<uint64_t>(status.st_size);
    const off_t offset = ::lseek(descriptor, 0, SEEK_CUR);
    return offset < 0 ? 0 : static_cast<uint64_t>(offset);
}

}  // namespace

CsvWriter::CsvWriter(const std::string& path, char delimiter, char decimal)
    : name_(path == "-" ? "standard output" : path),
      delimiter_(delimiter),
      decimal_(decimal),
      special_{delimiter, '"', '\r', '\n'}
{
    descriptor_ = path == "-"
                      ? STDOUT_FILENO
                      : ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (descriptor_ < 0) Fail(errno, 0);
    struct stat status {};
    if (::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode)) {
        regular_ = true;
        fileOffset_ = WritePosition(descriptor_, status);
    }
    buffer_.reserve(kFlushAt + kFlushAt / 4);
}

CsvWriter::~CsvWriter()
{
    if (descriptor_ > STDOUT_FILENO) ::close(descriptor_);
}

void CsvWriter::AddNumber(double number)
{
    Separate();
    const size_t begin = buffer_.size();
    AppendNumber(number, buffer_);
    if (decimal_ != '.') {
        std::replace(buffer_.begin() + static_cast<std::ptrdiff_t>(begin), buffer_.end(), '.',
                     decimal_);
    }
    // The delimiter may be the decimal mark, a sign or a digit.
    if (buffer_.find(delimiter_, begin) != std::string::npos) {
        const std::string text = buffer_.substr(begin);
        buffer_.resize(begin);
        AddQuoted(text);
    }
}

void CsvWriter::AddQuoted(std::string_view text)
{
    buffer_.push_back('"');
    for (const char c : text) {
        if (c == '"') buffer_.push_back('"');
        buffer_.push_back(c);
    }
    buffer_.push_back('"');
}

void CsvWriter::EndRow()
{
    buffer_.push_back('\n');
    lineEnds_.push_back(buffer_.size());
    rowHasField_ = false;
    if (buffer_.size() >= kFlushAt) Flush();
}

void CsvWriter::Flush()
{
    const size_t size = lineEnds_.empty() ? 0 : lineEnds_.back();
    size_t written = 0;
    while (written < size && !closed_) {
        const ssize_t count = ::write(descriptor_, buffer_.data() + written, size - written);
        if (count >= 0) {
            written += static_cast<size_t>(count);
        } else if (errno == EPIPE) {
            closed_ = true;
        } else if (errno != EINTR) {
            Fail(errno, written);
        }
    }
    if (!closed_) linesWritten_ += static_cast<int64_t>(lineEnds_.size());
    fileOffset_ += written;
    buffer_.erase(0, size);
    lineEnds_.clear();
}

void CsvWriter::Close()
{
    Flush();
    if (descriptor_ > STDOUT_FILENO) {
        // Some file systems report a full disk only here.
        const int descriptor = descriptor_;
        descriptor_ = -1;
        if (::close(descriptor) != 0 && errno != EINTR) Fail(errno, 0);
    }
}

void CsvWriter::Fail(int error, size_t written)
{
    const auto cut = std::upper_bound(lineEnds_.begin(), lineEnds_.end(), written);
    linesWritten_ += cut - lineEnds_.begin();
    if (regular_ && descriptor_ >= 0) {
        const size_t whole = cut == lineEnds_.begin() ? 0 : *(cut - 1);
        // A file that can't be cut back keeps its torn row; the message tells the whole ones.
        if (::ftruncate(descriptor_, static_cast<off_t>(fileOffset_ + whole)) != 0) errno = error;
    }
    buffer_.clear();
    lineEnds_.clear();
    RefuseOutput(name_, error, RowsWritten());
}

void RefuseOutput(const std::string& name, int error, int64_t rowsWritten)
{
    throw Failure(FailureKind::Output, kOutputNotWritten,
                  {name, std::strerror(error), std::to_string(rowsWritten)});
}

}  // namespace MCVelscore_850
