#include "engine/tables/csvwriter.h"

#include <algorithm>

#include "engine/messages/failure.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kFlushAt = size_t{1} << 16;

}  // namespace

CsvWriter::CsvWriter(const std::string& path, char delimiter, char decimal)
    : file_(path), delimiter_(delimiter), decimal_(decimal)
{
    for (const char c : {delimiter, '"', '\r', '\n'})
        special_[static_cast<unsigned char>(c)] = true;
    buffer_.reserve(kFlushAt + kFlushAt / 4);
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
    const uint64_t before = file_.Written();
    const size_t size = lineEnds_.empty() ? 0 : lineEnds_.back();
    const int error = file_.Write(std::string_view(buffer_).substr(0, size));
    if (error != 0) {
        const auto cut =
            std::upper_bound(lineEnds_.begin(), lineEnds_.end(), file_.Written() - before);
        linesWritten_ += cut - lineEnds_.begin();
        file_.CutTo(before + (cut == lineEnds_.begin() ? 0 : *(cut - 1)));
        buffer_.clear();
        lineEnds_.clear();
        RefuseOutput(file_.Name(), error);
    }
    if (!IsClosed()) linesWritten_ += static_cast<int64_t>(lineEnds_.size());
    buffer_.erase(0, size);
    lineEnds_.clear();
}

void CsvWriter::Close()
{
    Flush();
    file_.Finish();
}

std::string CsvWriter::EndEarly(bool underItsName)
{
    if (RowsWritten() == 0 || file_.IsStream()) return {};
    try {
        if (underItsName) {
            file_.Finish();
            return file_.Name();
        }
    } catch (const Failure&) {
        // Without the name the rows are left where they are.
    }
    return file_.Leave();
}

}  // namespace MCVelscore_850
