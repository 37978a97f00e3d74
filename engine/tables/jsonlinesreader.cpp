#include "engine/tables/jsonlinesreader.h"

#include <algorithm>
#include <cstring>
#include <unordered_set>

#include "engine/messages/failure.h"
#include "engine/tables/fileform.h"
#include "engine/tables/jsonobject.h"
#include "engine/tables/recordcheck.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

// A buffer of that many bytes without a line end holds the begin of a line too long.
constexpr size_t kMostBuffer = kMaxRow + 1;

// Takes the keys of the table's first row.
class KeyTaker final : public JsonMemberTaker {
public:
    RecordFault Take(const JsonMember& member) override
    {
        RecordFault fault;
        const auto [key, isNew] = known_.emplace(member.key);
        if (isNew) {
            keys_.push_back(*key);
            if (keys_.size() > kMaxColumns) fault.code = kTooManyColumns;
        } else {
            fault.code = kKeyTwice;
            fault.detail = *key;
        }
        return fault;
    }
    std::vector<std::string>& Keys() { return keys_; }

private:
    std::vector<std::string> keys_;
    std::unordered_set<std::string> known_;  // doesn't move them
};

}  // namespace

JsonLinesReader::JsonLinesReader(ByteSource& source, const RecordForm& form,
                                 const BlockSize& blockSize, std::string_view start)
    : source_(source),
      form_(form),
      blockSize_{std::min(blockSize.bytes, kMostBuffer), blockSize.rows}
{
    if (start.starts_with(kByteOrderMark)) {
        start.remove_prefix(kByteOrderMark.size());
        offset_ = kByteOrderMark.size();
    }
    MakeRoom(start.size());
    std::copy(start.begin(), start.end(), buffer_.begin());
    filled_ = start.size();
    ReadHeader();
}

void JsonLinesReader::ReadHeader()
{
    size_t size = 0;
    while (!FindFirstLine(size) && !ended_ && filled_ < kMostBuffer) Fill();
    RecordFault fault;
    KeyTaker taker;
    if (size > kMaxRow) {
        fault.code = kRowTooLong;
    } else {
        // The parser may read on behind the line.
        std::vector<char> line(buffer_.data(), buffer_.data() + size);
        line.resize(size + kJsonRoom, ' ');
        fault = JsonObjectReader().Read({line.data(), size}, taker);
    }
    if (fault.code != 0) throw FailureOf(fault, source_.Name(), 1, 0);
    header_ = std::move(taker.Keys());
    if (header_.empty()) throw Failure(FailureKind::Cases, kNoHeader, {source_.Name()});
}

// Lets blank lines at the begin go. The first other one has `size` bytes then, and stays; false
// where it isn't whole yet.
bool JsonLinesReader::FindFirstLine(size_t& size)
{
    for (;;) {
        const std::string_view text(buffer_.data(), filled_);
        size = std::min(text.find('\n'), filled_);
        if (size == filled_) return false;
        if (!IsBlankLine(text.substr(0, size))) return true;
        Consume(size + 1);
    }
}

bool JsonLinesReader::Next(RecordBlock& block)
{
    while (dropping_) DropOverlong();
    while (!FindLines()) {
        if (ended_) TakeRest();
        if (ended_ || !Fill()) break;
    }
    if (cut_ == 0) return false;
    block.size = cut_;
    block.blankLines = 0;
    block.firstRow = row_;
    block.offset = offset_;
    block.hasQuotes = false;
    block.torn.swap(torn_);
    row_ += records_;
    block.nextRow = row_;
    // The block gets the buffer; what is behind its lines begins another.
    block.bytes.swap(buffer_);
    const size_t rest = filled_ - cut_;
    MakeRoom(rest);
    std::memcpy(buffer_.data(), block.bytes.data() + cut_, rest);
    std::memset(block.bytes.data() + cut_, ' ', kJsonRoom);
    offset_ += cut_;
    filled_ = rest;
    cut_ = 0;
    records_ = 0;
    torn_.clear();
    searched_ = 0;
    return true;
}

void JsonLinesReader::GoTo(uint64_t offset, int64_t row)
{
    const uint64_t passed = offset - offset_;
    if (passed > filled_) source_.Skip(passed - filled_);
    Consume(static_cast<size_t>(std::min<uint64_t>(passed, filled_)));
    offset_ = offset;
    row_ = row;
}

// Finds whole lines in the buffer, as many as a block may have; false where there is none.
bool JsonLinesReader::FindLines()
{
    const char* const begin = buffer_.data();
    while (cut_ < filled_ && records_ < blockSize_.rows) {
        const size_t from = std::max(cut_, searched_);
        const void* const found = std::memchr(begin + from, '\n', filled_ - from);
        if (found == nullptr) break;
        TakeLine(static_cast<size_t>(static_cast<const char*>(found) - begin) + 1);
    }
    searched_ = filled_;
    return cut_ > 0;
}

// The line from cut_ up to `end` is whole.
void JsonLinesReader::TakeLine(size_t end)
{
    // Nearly every line begins with its object.
    const std::string_view line(buffer_.data() + cut_, end - cut_);
    const bool isBlank = line.front() != '{' && IsBlankLine(line.substr(0, line.find('\n')));
    records_ += isBlank ? 0 : 1;
    cut_ = end;
}

void JsonLinesReader::TakeTorn(int code)
{
    torn_.push_back({cut_, filled_, code});
    ++records_;
    cut_ = filled_;
}

// What is left at the end: a line without its end, if anything.
void JsonLinesReader::TakeRest()
{
    if (filled_ == 0) return;
    if (source_.HasChangedSize()) {
        TakeTorn(kTableCut);
    } else {
        TakeLine(filled_);
    }
}

// Reads on; false where the open line is as long as none may be, which ends it.
bool JsonLinesReader::Fill()
{
    if (filled_ >= kMostBuffer) {
        filled_ = kMostBuffer;
        TakeTorn(kRowTooLong);
        dropping_ = form_.passesTorn;
        ended_ = ended_ || !form_.passesTorn;
        return false;
    }
    const size_t size =
        filled_ < blockSize_.bytes ? blockSize_.bytes : std::min(2 * filled_ + 1, kMostBuffer);
    MakeRoom(size);
    const size_t count = source_.Read(buffer_.data() + filled_, size - filled_);
    if (count == 0) ended_ = true;
    filled_ += count;
    return true;
}

// Passes over what is left of a line too long.
void JsonLinesReader::DropOverlong()
{
    const void* const found = std::memchr(buffer_.data(), '\n', filled_);
    if (found != nullptr) {
        dropping_ = false;
        Consume(static_cast<size_t>(static_cast<const char*>(found) - buffer_.data()) + 1);
        return;
    }
    Consume(filled_);
    if (ended_) {
        dropping_ = false;
    } else {
        Fill();
    }
}

void JsonLinesReader::MakeRoom(size_t size)
{
    if (buffer_.size() < size + kJsonRoom) buffer_.resize(size + kJsonRoom);
}

void JsonLinesReader::Consume(size_t count)
{
    std::memmove(buffer_.data(), buffer_.data() + count, filled_ - count);
    filled_ -= count;
    offset_ += count;
    searched_ = 0;
}

}  // namespace MCVelscore_850
