#include "engine/tables/arrowcolumns.h"

#include <algorithm>
#include <limits>

#include <fmt/format.h>

#include "engine/messages/failure.h"
#include "host/messages/messages.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

ArrowColumn::ArrowColumn(const ArrowField& field, const ArrowReader& reader, bool nanIsMissing,
                         size_t most)
    : what_(ArrowColumnName(field.name)),
      type_(*field.type),
      hasDictionary_(field.index.has_value()),
      index_(field.index.value_or(ArrowType{})),
      becomesTexts_(type_.IsText() || type_.IsTime() ||
                    (type_.kind == ArrowKind::Truth && reader.readsTexts)),
      shape_(reader.shape),
      nanIsMissing_(nanIsMissing && type_.kind == ArrowKind::Float)
{
    numbers_.resize(most);
    texts_.resize(most);
    madeTexts_.resize(most);
    codes_.assign(most, -1);
}

void ArrowColumn::Begin(const ArrowArray& array, int64_t first, int64_t rows)
{
    values_ = ArrowValues(array, hasDictionary_ ? index_ : type_, what_, first, rows);
    if (hasDictionary_) {
        ReadDictionary(array.dictionary);
    } else if (array.dictionary != nullptr) {
        RefuseArrow(what_, "the array has a dictionary, and its schema none");
    }
    plain_ = hasDictionary_ || becomesTexts_ || values_.HasNulls() ? nullptr : values_.Doubles(0);
}

void ArrowColumn::ReadDictionary(const ArrowArray* dictionary)
{
    if (dictionary == nullptr) RefuseArrow(what_, "the array lacks its dictionary");
    constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
    const std::string what = "the dictionary of " + what_;
    if (dictionary->length > kMost) {
        RefuseArrow(what, fmt::format("it has {} entries", dictionary->length));
    }
    const int64_t count = std::max<int64_t>(dictionary->length, 0);
    const ArrowValues entries(*dictionary, type_, what, 0, count);
    const auto size = static_cast<size_t>(count);
    entryNumbers_.resize(size);
    dictionaryOfTexts_ = becomesTexts_ || type_.kind == ArrowKind::Null ||
                         !entries.ReadNumbers(0, size, entryNumbers_.data());
    if (dictionaryOfTexts_) {
        entryTexts_.resize(size);
        if (!type_.IsText()) madeEntries_.resize(size);
        entries.ReadTexts(0, size, shape_, entryTexts_.data(), madeEntries_);
        return;
    }
    entryPresent_.resize(size);
    for (size_t i = 0; i < size; ++i) entryPresent_[i] = entries.IsPresent(static_cast<int64_t>(i));
}

TableColumn ArrowColumn::Block(int64_t first, size_t rows)
{
    return hasDictionary_ ? Indexed(first, rows) : Values(first, rows);
}

TableColumn ArrowColumn::Values(int64_t first, size_t rows)
{
    TableColumn column;
    if (type_.kind == ArrowKind::Null) {
        column.codes = codes_.data();  // none of them means a text
        return column;
    }
    column.nanIsMissing = nanIsMissing_;
    if (!becomesTexts_) {
        column.numbers = values_.Doubles(first);
        if (column.numbers == nullptr && values_.ReadNumbers(first, rows, numbers_.data())) {
            column.numbers = numbers_.data();
        }
    }
    if (column.numbers != nullptr) {
        column.present = values_.PresentBits(first, rows, present_);
        return column;
    }
    values_.ReadTexts(first, rows, shape_, texts_.data(), madeTexts_);
    column.texts = texts_.data();
    return column;
}

TableColumn ArrowColumn::Indexed(int64_t first, size_t rows)
{
    TableColumn column;
    const size_t count = dictionaryOfTexts_ ? entryTexts_.size() : entryNumbers_.size();
    values_.ReadIndexes(first, rows, static_cast<int64_t>(count), codes_.data());
    if (dictionaryOfTexts_) {
        column.codes = codes_.data();
        column.dictionary = entryTexts_;
        return column;
    }
    present_.assign((rows + 7) / 8, 0);
    for (size_t row = 0; row < rows; ++row) {
        const auto entry = static_cast<size_t>(codes_[row]);
        const bool isThere = codes_[row] >= 0 && entryPresent_[entry];
        numbers_[row] = isThere ? entryNumbers_[entry] : 0.0;
        present_[row / 8] = static_cast<uint8_t>(present_[row / 8] | unsigned{isThere} << row % 8);
    }
    column.numbers = numbers_.data();
    column.present = present_.data();
    column.nanIsMissing = nanIsMissing_;
    return column;
}

ArrowColumns::ArrowColumns(const ArrowSchema& schema, bool nanIsMissing, size_t mostRows)
    : fields_(ReadArrowSchema(schema)), nanIsMissing_(nanIsMissing), mostRows_(mostRows)
{
    for (const ArrowField& field : fields_) header_.push_back(field.name);
    block_.resize(fields_.size());
}

void ArrowColumns::Use(size_t column, const ArrowReader& reader)
{
    const ArrowField& field = fields_[column];
    if (!field.type) {
        throw Failure(FailureKind::Cases, kArrowType, {field.name, field.typeName});
    }
    const auto isIt = [&](const Used& used) { return used.column == column; };
    if (std::any_of(used_.begin(), used_.end(), isIt)) return;
    used_.push_back({column, ArrowColumn(field, reader, nanIsMissing_, mostRows_)});
}

void ArrowColumns::Begin(const ArrowArray& table)
{
    constexpr std::string_view what = "the table";
    if (table.release == nullptr) RefuseArrow(what, "the array was released");
    if (table.length < 0 || table.offset < 0 ||
        table.length > std::numeric_limits<int64_t>::max() - table.offset) {
        RefuseArrow(what, fmt::format("the array's length is {} and its offset {}", table.length,
                                      table.offset));
    }
    if (table.n_children != static_cast<int64_t>(fields_.size())) {
        RefuseArrow(what, fmt::format("the array has {} columns, and the schema {}",
                                      table.n_children, fields_.size()));
    }
    if (table.n_children > 0 && table.children == nullptr) {
        RefuseArrow(what, "the array's pointer to its columns is null");
    }
    if (table.null_count < -1 || table.null_count > table.length) {
        RefuseArrow(what, fmt::format("the array tells {} nulls in {} rows", table.null_count,
                                      table.length));
    }
    // A row of a table is there; only what stands in it may be missing.
    const bool hasBits = table.n_buffers > 0 && table.buffers != nullptr && table.buffers[0];
    if (table.null_count > 0 || (table.null_count < 0 && hasBits)) {
        RefuseArrow(what, "rows of the table itself are null");
    }
    for (int64_t i = 0; i < table.n_children; ++i) {
        const ArrowArray* column = table.children[i];
        if (column != nullptr && column->release != nullptr) continue;
        RefuseArrow(
            ArrowColumnName(header_[static_cast<size_t>(i)]),
            column == nullptr ? "the pointer to its array is null" : "the array was released");
    }
    rows_ = table.length;
    offset_ = table.offset;
    for (Used& used : used_) {
        used.reader.Begin(*table.children[used.column], offset_, rows_);
        if (used.reader.Plain() != nullptr) block_[used.column] = used.reader.Block(0, 0);
    }
}

ColumnBlock ArrowColumns::Block(int64_t first, size_t rows)
{
    for (Used& used : used_) {
        if (const double* plain = used.reader.Plain()) {
            block_[used.column].numbers = plain + first;
        } else {
            block_[used.column] = used.reader.Block(first, rows);
        }
    }
    return {rows, block_};
}

}  // namespace MCVelscore_850
