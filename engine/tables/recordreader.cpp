#include "engine/tables/recordreader.h"

#include <algorithm>
#include <cstring>

#include "engine/messages/suggestions.h"
#include "engine/tables/fileform.h"
#include "engine/tables/recordcheck.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

// Blank lines whose ends differ from line to line take memory. Beyond so many runs of them the
// places of the last ones aren't told exactly.
constexpr size_t kMostBlankRuns = size_t{1} << 16;

bool IsLineEnd(char c) { return c == '\n' || c == '\r'; }

const char* LastOf(char c, const char* begin, const char* end)
{
    return static_cast<const char*>(::memrchr(begin, c, static_cast<size_t>(end - begin)));
}

// Where the line end begins that ends at `end`.
const char* LineEndBefore(const char* begin, const char* end)
{
    const bool isCrLf = end[-1] == '\n' && end - begin > 1 && end[-2] == '\r';
    return end - (isCrLf ? 2 : 1);
}

}  // namespace

RecordReader::RecordReader(ByteSource& source, const RecordForm& form, const BlockSize& blockSize,
                           std::string_view start)
    : source_(source),
      form_(form),
      blockSize_{std::min(blockSize.bytes, kMaxRecord), blockSize.rows},
      lineEnds_({'\n', '\r'}),
      quotesAndLineEnds_({'"', '\n', '\r'}),
      filled_(start.size())
{
    MakeRoom(filled_);
    std::copy(start.begin(), start.end(), buffer_.begin());
    Start();
    ReadHeader();
}

// Reads the first bytes: a byte-order mark goes, and another form is refused.
void RecordReader::Start()
{
    while (!ended_ && NeedsMoreToTellForm({At(0), filled_})) Fill();
    if (std::string_view(At(0), filled_).starts_with(kByteOrderMark)) {
        Consume(kByteOrderMark.size());
    }
    RefuseOtherForms({At(0), filled_}, source_.Name());
}

void RecordReader::ReadHeader()
{
    while (!FindRecords(true)) {
        if (ended_) FinishTable();
        if (ended_ || !Fill()) break;
    }
    const std::string_view record(At(0), cut_);
    RecordFault fault = CheckRecord(record, form_.delimiter, 0);
    if (fault.code == 0 && !torn_.empty()) fault.code = torn_.front().code;
    if (fault.code != 0) {
        std::string hint;
        // Quoted names between other delimiters look like text after a closing quote.
        if (fault.code == kStrayQuote) {
            hint =
                SuggestDelimiter(record.substr(0, record.find_first_of("\r\n")), form_.delimiter);
        }
        throw FailureOf(fault, Name(), form_.hasHeader ? 0 : 1, 0, std::move(hint));
    }
    header_ = FieldsOf(record, form_.delimiter);
    if (header_.empty()) throw Failure(FailureKind::Cases, kNoHeader, {Name()});
    if (form_.hasHeader) {
        Consume(cut_);
        return;
    }
    for (size_t i = 0; i < header_.size(); ++i) header_[i] = std::to_string(i + 1);
    Consume(0);
}

bool RecordReader::Next(RecordBlock& block)
{
    while (dropping_) DropOverlong();
    for (;;) {
        StripBlankLines();
        if (FindRecords(false)) break;
        if (ended_) FinishTable();
        if (ended_ || !Fill()) break;
    }
    if (cut_ == 0) return false;
    block.size = cut_;
    block.blankLines = blankLines_;
    block.blankRuns.swap(blankRuns_);
    blankRuns_.clear();
    block.firstRow = row_ + blankLines_;
    block.offset = offset_;
    block.hasQuotes = hasQuotes_;
    block.torn.swap(torn_);
    row_ = block.firstRow + records_;
    block.nextRow = row_;
    blankLines_ = 0;
    // The block gets the buffer; what is behind its records begins another.
    block.bytes.swap(buffer_);
    const size_t rest = filled_ - cut_;
    MakeRoom(rest);
    std::memcpy(buffer_.data(), block.bytes.data() + cut_, rest);
    offset_ += cut_;
    filled_ = rest;
    Forget();
    return true;
}

void RecordReader::GoTo(uint64_t offset, int64_t row)
{
    const uint64_t passed = offset - offset_;
    if (passed > filled_) source_.Skip(passed - filled_);
    Consume(static_cast<size_t>(std::min<uint64_t>(passed, filled_)));
    offset_ = offset;
    row_ = row;
}

void RecordReader::MakeRoom(size_t size)
{
    if (buffer_.size() < size + kRoomBehindText) buffer_.resize(size + kRoomBehindText);
}

// Lets the buffer's first bytes go, and all that is known of the others.
void RecordReader::Consume(size_t count)
{
    std::memmove(buffer_.data(), At(count), filled_ - count);
    filled_ -= count;
    offset_ += count;
    Forget();
}

void RecordReader::Forget()
{
    cut_ = 0;
    records_ = 0;
    torn_.clear();
    hasQuotes_ = false;
    searched_ = 0;
    place_ = 0;
    record_ = 0;
    blankRun_ = 0;
    quote_ = kNone;
    anchor_ = kNone;
}

// Reads on; false where the open record is as long as one may be, which ends it.
bool RecordReader::Fill()
{
    if (filled_ == kMaxRecord) {
        torn_.push_back({record_, filled_, kRowTooLong});
        TakeRecord(filled_);
        dropping_ = form_.passesTorn;
        ended_ = ended_ || !form_.passesTorn;
        return false;
    }
    const size_t size = filled_ < blockSize_.bytes ? blockSize_.bytes
                                                   : std::min(2 * filled_ + kScanWidth, kMaxRecord);
    MakeRoom(size);
    const size_t count = source_.Read(buffer_.data() + filled_, size - filled_);
    if (count == 0) ended_ = true;
    filled_ += count;
    return true;
}

// Passes over what is left of a record too long.
void RecordReader::DropOverlong()
{
    size_t end = 0;
    if (FindLineEnd(0, end)) {
        dropping_ = false;
    } else {
        end = filled_;
        if (end > 0 && !ended_ && *At(end - 1) == '\r') --end;
    }
    Consume(end);
    if (!dropping_) return;
    if (ended_) {
        dropping_ = false;
    } else {
        Fill();
    }
}

// Blank lines in front of a record of several fields.
void RecordReader::StripBlankLines()
{
    if (header_.size() < 2) return;
    size_t place = 0;
    while (place < filled_ && IsLineEnd(*At(place))) {
        size_t end = 0;
        if (!FindLineEnd(place, end)) break;
        ++blankLines_;
        const bool isRun = !blankRuns_.empty() && (blankRuns_.back().size == end - place ||
                                                   blankRuns_.size() == kMostBlankRuns);
        if (!isRun) blankRuns_.push_back({offset_ + place, end - place, 0});
        ++blankRuns_.back().lines;
        place = end;
    }
    if (place > 0) Consume(place);
}

// The end of the first line end from `place` on; false where there is none, or it may go on in
// bytes that weren't read yet.
bool RecordReader::FindLineEnd(size_t place, size_t& end) const
{
    const char* const last = At(filled_);
    const char* const found = lineEnds_.Find(At(place), last);
    if (found == last) return false;
    end = static_cast<size_t>(found - At(0)) + 1;
    if (*found == '\n') return true;
    if (end == filled_) return ended_;
    if (*At(end) == '\n') ++end;
    return true;
}

// Finds whole records in the buffer: all of them, or one. False where there is none.
bool RecordReader::FindRecords(bool justOne)
{
    if (!hasQuotes_) {
        hasQuotes_ = std::memchr(At(searched_), '"', filled_ - searched_) != nullptr;
        if (!hasQuotes_) FindPlainRecords(justOne);
        searched_ = filled_;
    }
    if (hasQuotes_) FindQuotedRecords(justOne);
    return cut_ > 0;
}

// Without quotes each line is a record.
void RecordReader::FindPlainRecords(bool justOne)
{
    if (justOne) {
        size_t end = 0;
        if (FindLineEnd(0, end)) TakeRecord(end);
        return;
    }
    const char* const begin = At(0);
    // What was searched before has no record's end, unless it is a CR that ended it.
    const char* const from = At(searched_ > 0 ? searched_ - 1 : 0);
    const char* last = At(filled_);
    const char* found = LastOf('\n', from, last);
    if (found == nullptr) {
        if (!ended_ && last > from && last[-1] == '\r') --last;
        found = LastOf('\r', from, last);
        if (found == nullptr) return;
    }
    const char* cut = found + 1;
    if (header_.size() > 1) {  // trailing blank lines wait for what is behind them
        for (const char* end = LineEndBefore(begin, cut); end == begin || IsLineEnd(end[-1]);
             end = LineEndBefore(begin, cut)) {
            cut = end;
            if (cut == begin) return;
        }
    }
    cut_ = static_cast<size_t>(cut - begin);
    record_ = cut_;
    records_ = static_cast<int64_t>(lineEnds_.Count(begin, cut));
    for (const char* cr = begin; cr < cut; ++cr) {  // those of CR LF were counted twice
        cr = static_cast<const char*>(std::memchr(cr, '\r', static_cast<size_t>(cut - cr)));
        if (cr == nullptr) break;
        if (cr + 1 < cut && cr[1] == '\n') --records_;
    }
    if (records_ <= blockSize_.rows) return;
    for (records_ = 0, cut_ = 0; records_ < blockSize_.rows;) {
        size_t end = 0;
        FindLineEnd(cut_, end);
        TakeRecord(end);
    }
}

void RecordReader::FindQuotedRecords(bool justOne)
{
    const char* const end = At(filled_);
    const int64_t most = justOne ? 1 : blockSize_.rows;
    while (place_ < filled_ && (cut_ == 0 || records_ < most)) {
        if (anchor_ != kNone) {
            if (!EndTorn()) return;
            continue;
        }
        if (quote_ != kNone) {
            if (!PassQuotedField()) return;
            continue;
        }
        const char* const found = quotesAndLineEnds_.Find(At(place_), end);
        place_ = static_cast<size_t>(found - At(0));
        if (found == end) return;
        if (*found == '"') {
            if (place_ == record_ || found[-1] == form_.delimiter) {
                quote_ = place_++;
                doubled_ = 0;
            } else {
                Tear(place_);
            }
            continue;
        }
        size_t next = 0;
        if (!FindLineEnd(place_, next)) return;
        const bool isBlank = place_ == record_ && header_.size() > 1;
        place_ = next;
        if (isBlank) {
            ++blankRun_;
            record_ = next;
            continue;
        }
        TakeRecord(next);
    }
}

// Goes on in the field of the open quote; false where that needs more bytes.
bool RecordReader::PassQuotedField()
{
    const size_t begin = quote_ + 1;
    const void* const found = std::memchr(At(place_), '"', filled_ - place_);
    const size_t at =
        found == nullptr ? filled_ : static_cast<size_t>(static_cast<const char*>(found) - At(0));
    if (at - begin - doubled_ > kMaxField) {
        Tear(quote_);
        return true;
    }
    place_ = at;
    if (at == filled_) return false;
    if (at + 1 == filled_) {
        if (!ended_) return false;
    } else if (*At(at + 1) == '"') {
        ++doubled_;
        place_ = at + 2;
        return true;
    } else if (*At(at + 1) != form_.delimiter && !IsLineEnd(*At(at + 1))) {
        // Over a line end, the quote that seems to close the field more likely opens another.
        const bool spansLines = lineEnds_.Find(At(begin), At(at)) != At(at);
        Tear(spansLines ? quote_ : at + 1);
        return true;
    }
    quote_ = kNone;
    ++place_;
    return true;
}

// The open record is torn at `anchor`.
void RecordReader::Tear(size_t anchor)
{
    anchor_ = anchor;
    if (form_.passesTorn) {
        EndTorn();
        return;
    }
    torn_.push_back({record_, filled_, kUnclosedQuote});
    TakeRecord(filled_);
    ended_ = true;
}

// Ends the torn record with its line; false where that needs more bytes.
bool RecordReader::EndTorn()
{
    size_t end = 0;
    if (!FindLineEnd(anchor_, end)) {
        place_ = filled_;
        if (!ended_) return false;
        end = filled_;
    }
    torn_.push_back({record_, end, kUnclosedQuote});
    TakeRecord(end);
    return true;
}

void RecordReader::TakeRecord(size_t end)
{
    records_ += blankRun_ + 1;
    blankRun_ = 0;
    cut_ = end;
    record_ = end;
    place_ = end;
    quote_ = kNone;
    anchor_ = kNone;
}

// What is left at the end: a record without a line end, if anything.
void RecordReader::FinishTable()
{
    if (filled_ == 0) return;
    if (source_.HasChangedSize()) {
        torn_.push_back({record_, filled_, kTableCut});
        TakeRecord(filled_);
    } else if (anchor_ != kNone) {
        EndTorn();
    } else if (quote_ != kNone) {
        Tear(quote_);
    } else {
        TakeRecord(filled_);
    }
}

}  // namespace MCVelscore_850
