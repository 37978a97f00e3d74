#include "engine/tables/jsonlinessplitter.h"

#include <algorithm>
#include <cstring>

#include "engine/tables/plainnumber.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

// An empty field, with the room behind it that each has.
constexpr char kRoom[kPlainNumberRoom]{};
constexpr std::string_view kNothing(kRoom);

}  // namespace

JsonLinesSplitter::JsonLinesSplitter(const SplitterPlan& plan)
    : header_(plan.header), uses_(plan.uses), decimal_(plan.decimal), givenIn_(plan.header.size())
{
    uses_.resize(header_.size(), {.isUsed = true});
    for (size_t i = 0; i < header_.size(); ++i) columns_.emplace(header_[i], i);
}

void JsonLinesSplitter::Begin(const RecordBlock& block)
{
    block_ = &block;
    place_ = block.bytes.data();
    nextTorn_ = 0;
    row_ = block.firstRow;
    torn_.reset();
    // Row numbers may begin anew, in another table.
    std::fill(givenIn_.begin(), givenIn_.end(), 0);
}

size_t JsonLinesSplitter::NextRows(size_t most, std::span<const std::string_view>& fields)
{
    reader_.Forget();
    lines_.clear();
    firstRow_ = row_;
    const size_t room = most * header_.size();
    if (fields_.size() < room) {
        fields_.resize(room);
        values_.resize(room);
    }
    const char* const text = block_->bytes.data();
    const bool untilTorn = nextTorn_ < block_->torn.size();
    const char* const end = text + (untilTorn ? block_->torn[nextTorn_].begin : block_->size);
    while (!torn_ && lines_.size() < most && place_ < end) {
        const void* const found = std::memchr(place_, '\n', static_cast<size_t>(end - place_));
        const char* const lineEnd = found == nullptr ? end : static_cast<const char*>(found);
        const std::string_view line(place_, static_cast<size_t>(lineEnd - place_));
        place_ = found == nullptr ? end : lineEnd + 1;
        if (IsBlankLine(line)) continue;
        const RecordFault fault = TakeRow(line);
        if (fault.code == 0) {
            lines_.push_back(line);
        } else {
            torn_ = {RawOf(line, row_), fault};
        }
        ++row_;
    }
    if (!torn_ && lines_.size() < most) TakeTorn();
    fields = std::span(fields_).first(lines_.size() * header_.size());
    return lines_.size();
}

std::span<const std::string_view> JsonLinesSplitter::JsonValues() const
{
    return std::span(values_).first(lines_.size() * header_.size());
}

// The row that the reader tore, when it is next.
void JsonLinesSplitter::TakeTorn()
{
    if (nextTorn_ == block_->torn.size()) return;
    const RecordBlock::Torn& torn = block_->torn[nextTorn_++];
    const char* const text = block_->bytes.data();
    RecordFault fault;
    fault.code = torn.code;
    torn_ = {RawOf({text + torn.begin, torn.end - torn.begin}, row_++), fault};
    place_ = text + torn.end;
}

const TornRow* JsonLinesSplitter::Torn() { return torn_ ? &*torn_ : nullptr; }

void JsonLinesSplitter::PassTorn() { torn_.reset(); }

RawRow JsonLinesSplitter::Raw(size_t row) const
{
    return RawOf(lines_[row], firstRow_ + static_cast<int64_t>(row));
}

RawRow JsonLinesSplitter::RawOf(std::string_view line, int64_t number) const
{
    const auto offset = static_cast<uint64_t>(line.data() - block_->bytes.data());
    if (line.ends_with('\r')) line.remove_suffix(1);
    return {number, block_->offset + offset, line};
}

// The fields of the line's object become the next row.
RecordFault JsonLinesSplitter::TakeRow(std::string_view line)
{
    expected_ = 0;
    given_ = 0;
    const RecordFault fault = reader_.Read(line, *this);
    if (fault.code != 0) return fault;
    const size_t columns = header_.size();
    const size_t first = lines_.size() * columns;
    for (size_t i = 0; i < columns && given_ < columns; ++i) {
        if (givenIn_[i] == row_) continue;
        fields_[first + i] = kNothing;
        values_[first + i] = {};
    }
    return fault;
}

RecordFault JsonLinesSplitter::Take(const JsonMember& member)
{
    RecordFault fault;
    const size_t column = ColumnOf(member.key);
    if (column == header_.size()) return fault;
    if (givenIn_[column] == row_) {
        fault.code = kKeyTwice;
    } else if (member.kind == JsonMember::Nested && uses_[column].isUsed) {
        fault.code = kNestedValue;
    }
    if (fault.code != 0) {
        fault.detail = header_[column];
        return fault;
    }
    expected_ = column + 1;
    ++given_;
    givenIn_[column] = row_;
    const size_t place = lines_.size() * header_.size() + column;
    fields_[place] = FieldOf(member, uses_[column]);
    values_[place] = member.value;
    return fault;
}

// The key's column, their number where it is none. Mostly it is the expected one.
size_t JsonLinesSplitter::ColumnOf(std::string_view key) const
{
    if (expected_ < header_.size() && header_[expected_] == key) return expected_;
    const auto found = columns_.find(key);
    return found == columns_.end() ? header_.size() : found->second;
}

std::string_view JsonLinesSplitter::FieldOf(const JsonMember& member, const ColumnUse& use)
{
    if (member.text.empty()) return kNothing;
    if (member.kind != JsonMember::Number || !use.isNumber || decimal_ == '.') return member.text;
    std::string& text = reader_.Keep(member.text);
    std::replace(text.begin(), text.end(), '.', decimal_);
    return text;
}

}  // namespace MCVelscore_850
