#include "engine/tables/rowwriter.h"

#include "engine/messages/failure.h"
#include "engine/tables/rowtext.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kFlushAt = size_t{1} << 16;

}  // namespace

RowWriter::RowWriter(const std::string& path, Compression compression)
    : file_(path), compression_(compression), compressor_(compression)
{}

RowWriter::RowWriter(const std::string& path, Compression compression, const Position& begin)
    : file_(path, begin.part, begin.bytes),
      compression_(compression),
      compressor_(compression),
      bytesBefore_(begin.bytes),
      rowsWritten_(begin.rows)
{}

RowWriter::Position RowWriter::End() const
{
    Position end{file_.Part(), bytesBefore_ + file_.Written() + buffer_.size(), rowsWritten_};
    for (const Cut& cut : cuts_) end.rows += cut.rows;
    return end;
}

void RowWriter::Write(const RowText& rows, std::string_view packed)
{
    const size_t begin = buffer_.size();
    if (compression_ == Compression::None) {
        buffer_.append(rows.Text());
        for (const size_t end : rows.RowEnds()) cuts_.push_back({begin + end, 1});
    } else if (!rows.RowEnds().empty()) {
        if (packed.empty()) {
            compressor_.Compress(rows.Text(), buffer_);
        } else {
            buffer_.append(packed);
        }
        cuts_.push_back({buffer_.size(), static_cast<int64_t>(rows.RowEnds().size())});
    }
    if (buffer_.size() >= kFlushAt) Flush();
}

void RowWriter::Flush()
{
    const uint64_t before = file_.Written();
    const int error = file_.Write(buffer_);
    const uint64_t written = file_.Written() - before;
    size_t kept = 0;
    for (const Cut& cut : cuts_) {
        if (IsClosed() || cut.place > written) break;
        kept = cut.place;
        rowsWritten_ += cut.rows;
    }
    buffer_.clear();
    cuts_.clear();
    if (error == 0) return;
    file_.CutTo(before + kept);
    RefuseOutput(file_.Name(), error);
}

void RowWriter::Close()
{
    // No rows at all are an empty member: no bytes would be no compressed file.
    if (compression_ != Compression::None && buffer_.empty() && End().bytes == 0) {
        compressor_.Compress({}, buffer_);
    }
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
