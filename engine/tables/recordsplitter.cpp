#include "engine/tables/recordsplitter.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "engine/tables/plainnumber.h"
#include "engine/tables/utf8.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

bool IsLineEnd(char c) { return c == '\n' || c == '\r'; }

// Behind the line end at `place`, or at `end`.
const char* PassLineEnd(const char* place, const char* end)
{
    if (place == end) return end;
    const bool isCr = *place++ == '\r';
    return isCr && place < end && *place == '\n' ? place + 1 : place;
}

}  // namespace

RecordSplitter::RecordSplitter(size_t columns, char delimiter)
    : columns_(columns), delimiter_(delimiter), marks_({delimiter, '\n', '\r', '"'})
{}

void RecordSplitter::Begin(const RecordBlock& block)
{
    block_ = &block;
    place_ = block.bytes.data();
    hasNul_ = std::memchr(place_, 0, block.size) != nullptr;
    checksEncoding_ = false;
    nextTorn_ = 0;
    blankRun_ = 0;
    blankLine_ = 0;
    row_ = block.firstRow - block.blankLines;
    torn_.reset();
}

void RecordSplitter::CheckEncoding() { checksEncoding_ = !IsUtf8(block_->Text()); }

size_t RecordSplitter::NextRows(size_t most, std::span<const std::string_view>& fields)
{
    unquotedCount_ = 0;
    records_.clear();
    firstRow_ = row_;
    if (fields_.size() < most * columns_) fields_.resize(most * columns_);
    if (Torn() == nullptr) {
        const bool untilTorn = nextTorn_ < block_->torn.size();
        SplitSound(most, block_->bytes.data() +
                             (untilTorn ? block_->torn[nextTorn_].begin : block_->size));
    }
    const size_t rows = records_.size();
    // A torn row that ended them was passed already.
    records_.push_back(torn_ ? torn_->raw.text.data() : place_);
    fields = std::span(fields_).first(rows * columns_);
    return rows;
}

const TornRow* RecordSplitter::Torn()
{
    if (torn_) return &*torn_;
    if (blankRun_ < block_->blankRuns.size()) {
        const RecordBlock::BlankRun& run = block_->blankRuns[blankRun_];
        const uint64_t offset = run.offset + run.size * static_cast<uint64_t>(blankLine_);
        if (++blankLine_ == run.lines) {
            ++blankRun_;
            blankLine_ = 0;
        }
        torn_ = {{row_++, offset}, {kRowLength}};
        return &*torn_;
    }
    if (nextTorn_ == block_->torn.size()) return nullptr;
    const RecordBlock::Torn& torn = block_->torn[nextTorn_];
    const char* const text = block_->bytes.data();
    if (place_ != text + torn.begin) return nullptr;
    ++nextTorn_;
    RecordFault fault = CheckRecord({place_, torn.end - torn.begin}, delimiter_, columns_);
    // A row of another length is one that goes on beyond what was read of it.
    const bool goesOn = fault.code == 0 || fault.code == kRowLength;
    if (goesOn || torn.code == kTableCut) fault.code = torn.code;
    Tear(text + torn.end, fault);
    return &*torn_;
}

void RecordSplitter::PassTorn() { torn_.reset(); }

RawRow RecordSplitter::Raw(size_t row) const
{
    return RawOf(records_[row], records_[row + 1], firstRow_ + static_cast<int64_t>(row));
}

RawRow RecordSplitter::RawOf(const char* begin, const char* end, int64_t number) const
{
    const uint64_t offset = OffsetOf(begin);
    if (end > begin && end[-1] == '\n') --end;
    if (end > begin && end[-1] == '\r') --end;
    return {number, offset, {begin, static_cast<size_t>(end - begin)}};
}

// The record that begins at place_ and ends at `end` is torn.
void RecordSplitter::Tear(const char* end, const RecordFault& fault)
{
    torn_ = {RawOf(place_, end, row_++), fault};
    place_ = end;
}

// Splits records of well-formed quotes, up to `most` rows or an odd one.
void RecordSplitter::SplitSound(size_t most, const char* const end)
{
    while (records_.size() < most && place_ < end) {
        std::string_view* field = fields_.data() + records_.size() * columns_;
        std::string_view* const lastOfTable = fields_.data() + most * columns_;
        std::string_view* last = field + columns_ - 1;
        const char* begin = place_;
        const char* chunk = begin;
        uint64_t found = marks_.AtWide(chunk);
        // Marks before that place are passed.
        const auto goTo = [&](const char* next) {
            const auto passed = static_cast<size_t>(next - chunk);
            if (passed < kWideScan) {
                found &= ~uint64_t{0} << passed;
            } else {
                chunk = next;
                found = marks_.AtWide(chunk);
            }
        };
        bool odd = false;
        for (;;) {
            const char* mark = end;
            while (found == 0 && chunk + kWideScan < end) {
                chunk += kWideScan;
                found = marks_.AtWide(chunk);
            }
            if (found != 0) mark = std::min(end, chunk + std::countr_zero(found));
            found &= found - 1;
            if (mark < end && *mark == delimiter_) {
                if (field == last) {
                    odd = true;
                    break;
                }
                *field++ = {begin, static_cast<size_t>(mark - begin)};
                begin = mark + 1;
                continue;
            }
            if (mark < end && *mark == '"') {
                const char* const close = TakeQuotedField(mark, end);
                goTo(close);
                found &= found - 1;  // the end of the field is dealt with here
                if (close < end && *close == delimiter_) {
                    if (field == last) {
                        odd = true;
                        break;
                    }
                    *field++ = quoted_;
                    begin = close + 1;
                    continue;
                }
                begin = nullptr;
                mark = close;
            }
            // The record ends here.
            const char* const next = PassLineEnd(mark, end);
            if (field != last || IsSuspect(mark)) {
                odd = true;
                break;
            }
            *field++ = begin == nullptr
                           ? quoted_
                           : std::string_view(begin, static_cast<size_t>(mark - begin));
            records_.push_back(place_);
            ++row_;
            place_ = next;
            if (next >= end || field == lastOfTable) return;
            begin = next;
            last = field + columns_ - 1;
            if (next != mark + 1) goTo(next);
        }
        if (odd && !TakeOddRecord(end)) return;
    }
}

// The field of the quote at `begin` into quoted_; answers where it ends.
const char* RecordSplitter::TakeQuotedField(const char* begin, const char* end)
{
    const char* const text = begin + 1;
    bool doubled = false;
    const char* place = text;
    for (;;) {
        const void* const found = std::memchr(place, '"', static_cast<size_t>(end - place));
        if (found == nullptr) {  // not in a block of a RecordReader
            place = end;
            break;
        }
        place = static_cast<const char*>(found);
        if (place + 1 >= end || place[1] != '"') break;
        doubled = true;
        place += 2;
    }
    quoted_ = {text, static_cast<size_t>(place - text)};
    if (doubled) {
        std::string& written = NextUnquoted();
        written.clear();
        for (const char* c = text; c < place; ++c) {
            written += *c;
            if (*c == '"') ++c;
        }
        quoted_ = written;
    }
    return std::min(place + 1, end);
}

// A string that has room for its number to be read, whatever it is set to.
std::string& RecordSplitter::NextUnquoted()
{
    if (unquotedCount_ == unquoted_.size()) unquoted_.emplace_back().reserve(kPlainNumberRoom);
    return unquoted_[unquotedCount_++];
}

// A record that isn't as the others: looked at with care. False where it is torn.
bool RecordSplitter::TakeOddRecord(const char* end)
{
    const char* const next = RecordEnd(place_, end);
    const std::string_view record(place_, static_cast<size_t>(next - place_));
    RecordFault fault = CheckRecord(record, delimiter_, columns_);
    if (fault.code == 0 && checksEncoding_ && !IsUtf8(record)) fault.code = kRowEncoding;
    if (fault.code != 0) {
        Tear(next, fault);
        return false;
    }
    std::string_view* field = fields_.data() + records_.size() * columns_;
    for (const std::string& text : FieldsOf(record, delimiter_)) {
        std::string& kept = NextUnquoted();
        kept = text;
        *field++ = kept;
    }
    records_.push_back(place_);
    ++row_;
    place_ = next;
    return true;
}

// Of those that are looked for in the block at hand.
bool RecordSplitter::HasForbiddenBytes(const char* end) const
{
    const std::string_view record(place_, static_cast<size_t>(end - place_));
    return (hasNul_ && record.find('\0') != std::string_view::npos) ||
           (checksEncoding_ && !IsUtf8(record));
}

// Where the record ends that begins there, its line end with it.
const char* RecordSplitter::RecordEnd(const char* begin, const char* end) const
{
    bool quoted = false;
    const char* place = begin;
    for (; place < end && (quoted || !IsLineEnd(*place)); ++place) {
        if (*place == '"') quoted = !quoted;
    }
    return PassLineEnd(place, end);
}

}  // namespace MCVelscore_850
