#include "engine/tables/tablereader.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "engine/messages/failure.h"
#include "engine/tables/tablesource.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

TableReader::TableReader(std::vector<std::string> paths, const RecordForm& form,
                         const BlockReader::BlockSize& blockSize, const StopFlag* stop)
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
    reader_ = MakeBlockReader(*source_, form_, blockSize_);
    if (table_ == 0) {
        header_ = reader_->Header();
        tableForm_ = reader_->Form();
    } else {
        RefuseOtherTable();
    }
}

// The table at hand has to go with the first one.
void TableReader::RefuseOtherTable() const
{
    if (reader_->Form() != tableForm_) {
        throw Failure(
            FailureKind::Cases, kOtherTableForm,
            {names_[table_], FormName(reader_->Form()), names_.front(), FormName(tableForm_)});
    }
    const std::vector<std::string>& header = reader_->Header();
    if (header == header_) return;
    if (tableForm_ == TableForm::JsonLines) {
        const std::unordered_set<std::string_view> keys(header.begin(), header.end());
        for (size_t i = 0; i < header_.size(); ++i) {
            if (!keys.contains(header_[i])) RefuseOtherHeader({}, i);
        }
        return;
    }
    const size_t common = std::min(header.size(), header_.size());
    size_t place = 0;
    while (place < common && header[place] == header_[place]) ++place;
    RefuseOtherHeader(header, place);
}

void TableReader::RefuseOtherHeader(const std::vector<std::string>& header, size_t place) const
{
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

std::string TableReader::HeaderRemedy() const
{
    if (tableForm_ == TableForm::Csv) return {};
    return "The columns of JSON Lines are the keys of the first object: give it every key, null "
           "where there is no value.";
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
