#include "engine/scoring/arrowresults.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "engine/tables/arrowschema.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kBlock = ResultBlock::kRows;

// The bytes of a bit a row: those of a block are written whole, wherever the rows before it end.
size_t BitBytes(size_t rows) { return (rows + kBlock) / 8 + 1; }

// Rows that values have room for: a block's end wherever the rows before it do.
size_t RoomFor(size_t rows) { return rows + ResultBlock::kRowMultiple; }

ArrowTextBytes TextsOf(std::span<const std::string> texts)
{
    const std::vector<std::string_view> views(texts.begin(), texts.end());
    return MakeArrowTexts(views);
}

// As rows of text have them.
ArrowTextBytes TextsOf(std::span<const ResultCategory> categories)
{
    std::vector<std::string> texts;
    for (const ResultCategory& category : categories) {
        std::string& text = texts.emplace_back(category.number ? "" : category.text);
        if (category.number) AppendNumber(*category.number, text);
    }
    return TextsOf(texts);
}

size_t CountOf(const RowBits& bits)
{
    size_t count = 0;
    for (const uint64_t word : bits) count += static_cast<size_t>(std::popcount(word));
    return count;
}

// Zeros where rows of a block lack a value: nobody wrote there, and what is handed out tells
// nothing of the memory before.
void ClearAbsent(const ResultBlock::Column& column, const RowBits& all)
{
    for (size_t word = 0; word < all.size(); ++word) {
        for (uint64_t left = all[word] & ~column.present[word]; left != 0; left &= left - 1) {
            const size_t row = word * 64 + static_cast<size_t>(std::countr_zero(left));
            if (column.codes.empty()) {
                column.numbers[row] = 0.0;
            } else {
                column.codes[row] = 0;
            }
        }
    }
}

// Writes a bit whatever stood there.
void WriteBit(std::byte* bits, size_t at, bool isSet)
{
    const auto mask = static_cast<std::byte>(1U << (at % 8));
    bits[at / 8] = isSet ? bits[at / 8] | mask : bits[at / 8] & ~mask;
}

void WriteBits(std::byte* bits, size_t at, const RowBits& from, size_t rows)
{
    if (at % 8 == 0) {
        std::memcpy(bits + at / 8, from.data(), sizeof from);
    } else {
        for (size_t row = 0; row < rows; ++row) WriteBit(bits, at + row, HasRow(from, row));
    }
}

}  // namespace

ArrowResults::ArrowResults(const ResultSchema& schema, std::span<const size_t> positions)
    : positions_(positions.begin(), positions.end()), columns_(positions.size())
{
    for (const size_t position : positions) wanted_.push_back(schema.Columns()[position]);
    fieldTexts_ = TextsOf(fieldNames_);
    categories_ = TextsOf(schema.Categories());  // until a block has the scorer's own
}

ArrowOwner<ArrowSchema> ArrowResults::SchemaOf(size_t wanted, const std::string& name) const
{
    switch (wanted_[wanted].kind) {
        case ResultKind::Number: return MakeArrowSchema("g", name, true);
        case ResultKind::Status: return MakeArrowSchema("i", name, false);
        case ResultKind::Category:
        case ResultKind::FieldName: break;
    }
    return MakeDictionarySchema(name, true);
}

// False where a table needs no memory of its own: no row will ever have one, or all are 0 so far.
bool ArrowResults::HasValues(size_t wanted) const
{
    const ResultColumn& column = wanted_[wanted];
    return !column.lacksCovariances &&
           (column.kind == ResultKind::Number || column.kind == ResultKind::Category);
}

void ArrowResults::Begin(int64_t most)
{
    most_ = static_cast<size_t>(most);
    done_ = 0;
    hasFaults_ = false;
    for (size_t i = 0; i < wanted_.size(); ++i) {
        if (!HasValues(i)) continue;
        const bool isCode = wanted_[i].kind == ResultKind::Category;
        columns_[i].values =
            MakeArrowBytes(RoomFor(most_) * (isCode ? sizeof(int32_t) : sizeof(double)));
        columns_[i].validity = nullptr;
        columns_[i].presentCount = 0;
    }
    if (most_ > zeroRows_ || zeros_ == nullptr) {
        zeros_ = MakeArrowZeros(most_ * sizeof(double));
        zeroRows_ = most_;
    }
}

void ArrowResults::Place(ResultBlock& block)
{
    const size_t room = RoomFor(most_) - done_;
    for (size_t i = 0; i < wanted_.size(); ++i) {
        if (!HasValues(i)) continue;
        ResultBlock::Column& column = block.columns[positions_[i]];
        std::byte* const values = columns_[i].values.get();
        if (wanted_[i].kind == ResultKind::Category) {
            column.codes = {reinterpret_cast<int32_t*>(values) + done_, room};
        } else {
            column.numbers = {reinterpret_cast<double*>(values) + done_, room};
        }
    }
}

void ArrowResults::Add(const ResultBlock& block)
{
    const RowBits all = FirstRows(block.rows);
    for (size_t i = 0; i < wanted_.size(); ++i) {
        if (HasValues(i)) AddBits(i, block, all);
    }
    if (block.hasFaults) AddFaults(block);
    if (block.categories.size() != categoryCount_) {
        categories_ = TextsOf(block.categories);
        categoryCount_ = block.categories.size();
    }
    done_ += block.rows;
}

// Which rows of a column have values; `all` are those of the block.
void ArrowResults::AddBits(size_t wanted, const ResultBlock& block, const RowBits& all)
{
    const ResultBlock::Column& from = block.columns[positions_[wanted]];
    Values& to = columns_[wanted];
    const bool isWhole = from.present == all;
    to.presentCount += isWhole ? block.rows : CountOf(from.present);
    if (isWhole && to.validity == nullptr) return;
    ClearAbsent(from, all);
    if (to.validity == nullptr) {  // the first null: the rows before it have values
        to.validity = MakeArrowBytes(BitBytes(most_));
        std::memset(to.validity.get(), 0xff, (done_ + 7) / 8);
    }
    WriteBits(to.validity.get(), done_, from.present, block.rows);
}

// From the first fault of a table on both columns are its own.
void ArrowResults::AddFaults(const ResultBlock& block)
{
    if (!hasFaults_) {
        hasFaults_ = true;
        status_ = {MakeArrowZeros(most_ * sizeof(int32_t)), nullptr, 0};
        fields_ = {MakeArrowZeros(most_ * sizeof(int32_t)), MakeArrowZeros(BitBytes(most_)), 0};
    }
    std::memcpy(status_.values.get() + done_ * sizeof(int32_t), block.status.data(),
                block.rows * sizeof(int32_t));
    auto* indexes = reinterpret_cast<int32_t*>(fields_.values.get());
    for (size_t row = 0; row < block.rows; ++row) {
        const std::string_view field = block.StatusOf(row).FieldName();
        if (field.empty()) continue;
        const size_t at = done_ + row;
        indexes[at] = IndexOf(field);
        WriteBit(fields_.validity.get(), at, true);
        ++fields_.presentCount;
    }
}

int32_t ArrowResults::IndexOf(std::string_view field)
{
    const auto found = fieldIndexes_.find(field);
    if (found != fieldIndexes_.end()) return found->second;
    const auto index = static_cast<int32_t>(fieldNames_.size());
    fieldIndexes_.emplace(fieldNames_.emplace_back(field), index);
    fieldTexts_ = TextsOf(fieldNames_);
    return index;
}

void ArrowResults::Finish(std::vector<ArrowOwner<ArrowArray>>& columns)
{
    const int64_t rows = Rows();
    for (size_t i = 0; i < wanted_.size(); ++i) {
        switch (wanted_[i].kind) {
            case ResultKind::Status: columns.push_back(MakeArrowArray(rows, StatusOf())); break;
            case ResultKind::FieldName: columns.push_back(MakeArrowArray(rows, FieldsOf())); break;
            case ResultKind::Number:
            case ResultKind::Category: columns.push_back(MakeArrowArray(rows, ValuesOf(i))); break;
        }
    }
    status_ = {};
    fields_ = {};
}

ArrowColumnParts ArrowResults::ValuesOf(size_t wanted)
{
    ArrowColumnParts parts = Zeros(true);
    if (HasValues(wanted)) {
        Values& values = columns_[wanted];
        parts.values = std::move(values.values);
        parts.nullCount = NullsOf(values);
        parts.validity = std::move(values.validity);
    }
    if (wanted_[wanted].kind == ResultKind::Category) parts.dictionary = categories_;
    return parts;
}

ArrowColumnParts ArrowResults::Zeros(bool areNull)
{
    if (!areNull) return {.validity = nullptr, .values = zeros_};
    return {.validity = zeros_, .values = zeros_, .nullCount = Rows()};
}

ArrowColumnParts ArrowResults::StatusOf()
{
    if (!hasFaults_) return Zeros(false);
    return {.validity = nullptr, .values = status_.values};
}

ArrowColumnParts ArrowResults::FieldsOf()
{
    ArrowColumnParts parts = Zeros(true);
    if (hasFaults_) parts = {fields_.validity, fields_.values, nullptr, NullsOf(fields_), {}};
    parts.dictionary = fieldTexts_;
    return parts;
}

}  // namespace MCVelscore_850
