#include "engine/tables/rowwriter.h"

#include <algorithm>

#include "engine/messages/failure.h"
#include "engine/tables/rowtext.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kFlushAt = size_t{1} << 16;

}  // namespace

RowWriter::RowWriter(const std::string& path) : file_(path) {}

void RowWriter::Write(const RowText& rows)
{
    const size_t shift = buffer_.size();
    buffer_.append(rows.Text());
    for (const size_t end : rows.RowEnds()) rowEnds_.push_back(shift + end);
    if (buffer_.size() >= kFlushAt) Flush();
}

void RowWriter::Flush()
{
    const uint64_t before = file_.Written();
    const int error = file_.Write(buffer_);
    if (error != 0) {
        const auto cut =
            std::upper_bound(rowEnds_.begin(), rowEnds_.end(), file_.Written() - before);
        rowsWritten_ += cut - rowEnds_.begin();
        file_.CutTo(before + (cut == rowEnds_.begin() ? 0 : *(cut - 1)));
        buffer_.clear();
        rowEnds_.clear();
        RefuseOutput(file_.Name(), error);
    }
    if (!IsClosed()) rowsWritten_ += static_cast<int64_t>(rowEnds_.size());
    buffer_.clear();
    rowEnds_.clear();
}

void RowWriter::Close()
{
    Flush();
    file_.Finish();
}

std::string RowWriter::EndEarly(bool underItsName)
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
