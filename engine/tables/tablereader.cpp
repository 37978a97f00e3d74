#include "engine/tables/tablereader.h"

#include <algorithm>

#include "engine/messages/failure.h"
#include "engine/tables/tablesource.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

TableReader::TableReader(std::vector<std::string> paths, const RecordForm& form,
                         const RecordReader::BlockSize& blockSize, const StopFlag* stop)
    : paths_(std::move(paths)), form_(form), blockSize_(blockSize), stop_(stop)
{
    bool isKnown = true;
    for (const std::string& path : paths_) {
        // One that isn't there is told before hours of work.
        RefuseUnreadable(path);
        uint64_t size = 0;
        if (!IsRegularFile(path, size)) isKnown = false;
        totalBytes_ += size;
        names_.push_back(InputFile::NameOf(path));
    }
    if (!isKnown) totalBytes_ = 0;
    Open();
}

TableReader::~TableReader() = default;

void TableReader::Open()
{
    reader_.reset();
    source_ = OpenTable(paths_[table_], stop_);
    reader_ = std::make_unique<RecordReader>(*source_, form_, blockSize_);
    if (table_ == 0) {
        header_ = reader_->Header();
    } else if (reader_->Header() != header_) {
        RefuseOtherHeader(reader_->Header());
    }
}

void TableReader::RefuseOtherHeader(const std::vector<std::string>& header) const
{
    const size_t common = std::min(header.size(), header_.size());
    size_t place = 0;
    while (place < common && header[place] == header_[place]) ++place;
    const auto shown = [&](const std::vector<std::string>& names) {
        return place < names.size() ? "'" + names[place] + "'" : std::string("no column");
    };
    throw Failure(
        FailureKind::Cases, kOtherHeader,
        {names_[table_], std::to_string(place + 1), shown(header), names_.front(), shown(header_)});
}

void TableReader::GoTo(const Place& place)
{
    bytesBefore_ = 0;
    for (size_t i = 0; i < place.table; ++i) {
        uint64_t size = 0;
        IsRegularFile(paths_[i], size);
        bytesBefore_ += size;
    }
    rowsBefore_ = place.rowsBefore;
    table_ = place.table;
    Open();
    if (place.offset > 0) reader_->GoTo(place.offset, place.row);  // else behind the header
}

bool TableReader::Next(RecordBlock& block)
{
    while (!reader_->Next(block)) {
        bytesBefore_ += source_->Consumed();
        rowsBefore_ += reader_->Rows();
        if (table_ + 1 == paths_.size()) return false;
        ++table_;
        Open();
    }
    block.bytesRead = bytesBefore_ + source_->Consumed();
    block.table = table_;
    block.rowsBefore = rowsBefore_;
    return true;
}

}  // namespace MCVelscore_850
