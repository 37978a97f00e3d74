#include "engine/tables/arrowvalues.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include <fmt/format.h>

#include "engine/messages/failure.h"
#include "engine/messages/shorttext.h"
#include "engine/tables/arrowtexts.h"
#include "engine/tables/exactnumber.h"
#include "host/messages/messages.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

// No machine has buffers of more rows, and no place in them overflows.
constexpr int64_t kMostRows = int64_t{1} << 56;

template <class T>
T Load(const void* from)
{
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

int64_t CountSetBits(const uint8_t* bits, int64_t first, int64_t count)
{
    int64_t set = 0;
    int64_t at = first;
    const int64_t end = first + count;
    for (; at < end && at % 8 != 0; ++at) set += (bits[at / 8] >> (at % 8)) & 1;
    for (; at + 64 <= end; at += 64) set += std::popcount(Load<uint64_t>(bits + at / 8));
    for (; at < end; ++at) set += (bits[at / 8] >> (at % 8)) & 1;
    return set;
}

template <class T>
void ReadAs(const uint8_t* data, size_t rows, double* numbers)
{
    for (size_t i = 0; i < rows; ++i) {
        numbers[i] = static_cast<double>(Load<T>(data + i * sizeof(T)));
    }
}

}  // namespace

void RefuseArrow(std::string_view what, const std::string& why)
{
    throw Failure(FailureKind::Cases, kArrowStructure, {std::string(what), why});
}

std::string ArrowColumnName(std::string_view name)
{
    return fmt::format("column '{}'", ShortText(name));
}

ArrowValues::ArrowValues(const ArrowArray& array, const ArrowType& type, std::string_view what,
                         int64_t first, int64_t rows)
    : type_(type), what_(what), rows_(rows)
{
    if (array.release == nullptr) RefuseArrow(what_, "the array was released");
    if (array.length < 0 || array.offset < 0 || array.length > kMostRows ||
        array.offset > kMostRows) {
        RefuseArrow(what_, fmt::format("the array's length is {} and its offset {}", array.length,
                                       array.offset));
    }
    if (array.length < first || array.length - first < rows) {
        RefuseArrow(what_, fmt::format("the array has {} rows, and the table {}", array.length,
                                       first + rows));
    }
    first_ = array.offset + first;
    buffers_ = array.buffers;
    bufferCount_ = array.n_buffers;
    CheckBuffers(array);
    CheckNulls(array);
    if (type_.kind == ArrowKind::Null) return;
    data_ = static_cast<const uint8_t*>(array.buffers[1]);
    if (array.null_count != 0) validity_ = static_cast<const uint8_t*>(array.buffers[0]);
}

void ArrowValues::CheckBuffers(const ArrowArray& array) const
{
    const int64_t expected = type_.BufferCount();
    // Views have one for each text beside them; some producers give validity bits of the null type.
    const bool mayHaveMore = type_.kind == ArrowKind::TextView ||
                             (type_.kind == ArrowKind::Null && array.n_buffers == 1);
    if (array.n_buffers != expected && !(mayHaveMore && array.n_buffers > expected)) {
        RefuseArrow(what_, fmt::format("the array has {} buffers, and its type {}", array.n_buffers,
                                       expected));
    }
    if (expected == 0) return;
    if (array.buffers == nullptr) RefuseArrow(what_, "the array's pointer to buffers is null");
    if (rows_ > 0 && array.buffers[1] == nullptr) {
        RefuseArrow(what_, "the array's buffer of values is null");
    }
    if (mayHaveMore && array.n_buffers > expected &&
        array.buffers[array.n_buffers - 1] == nullptr) {
        RefuseArrow(what_, "the array's buffer of sizes is null");
    }
    if (array.n_children != 0) {
        RefuseArrow(what_,
                    fmt::format("the array has {} children, and its type none", array.n_children));
    }
}

void ArrowValues::CheckNulls(const ArrowArray& array) const
{
    const int64_t told = array.null_count;
    if (told < -1 || told > array.length) {
        RefuseArrow(what_, fmt::format("the array tells {} nulls in {} rows", told, array.length));
    }
    if (type_.kind == ArrowKind::Null || told == -1) return;
    const auto* bits = static_cast<const uint8_t*>(array.buffers[0]);
    if (bits == nullptr) {
        if (told > 0) {
            RefuseArrow(what_, fmt::format("the array tells {} nulls and has no validity", told));
        }
        return;
    }
    const int64_t nulls = array.length - CountSetBits(bits, array.offset, array.length);
    if (nulls == told) return;
    RefuseArrow(what_, fmt::format("the array tells {} nulls and has {}", told, nulls));
}

const uint8_t* ArrowValues::PresentBits(int64_t first, size_t rows, std::vector<uint8_t>& own) const
{
    if (validity_ == nullptr) return nullptr;
    const int64_t begin = first_ + first;
    if (CountSetBits(validity_, begin, static_cast<int64_t>(rows)) == static_cast<int64_t>(rows)) {
        return nullptr;
    }
    if (begin % 8 == 0) return validity_ + begin / 8;
    own.assign((rows + 7) / 8, 0);
    for (size_t row = 0; row < rows; ++row) {
        const int64_t at = begin + static_cast<int64_t>(row);
        const auto bit = static_cast<unsigned>((validity_[at / 8] >> (at % 8)) & 1);
        own[row / 8] = static_cast<uint8_t>(own[row / 8] | bit << (row % 8));
    }
    return own.data();
}

const double* ArrowValues::Doubles(int64_t first) const
{
    if (type_.kind != ArrowKind::Float || type_.bytes != sizeof(double)) return nullptr;
    const uint8_t* const at = Value(first);
    if (std::bit_cast<uintptr_t>(at) % alignof(double) != 0) return nullptr;
    return reinterpret_cast<const double*>(at);
}

bool ArrowValues::ReadNumbers(int64_t first, size_t rows, double* numbers) const
{
    const auto isExact = [&](auto number) {
        for (size_t i = 0; i < rows; ++i) {
            const int64_t row = first + static_cast<int64_t>(i);
            numbers[i] = 0.0;
            if (IsPresent(row) && !number(row, numbers[i])) return false;
        }
        return true;
    };
    switch (type_.kind) {
        case ArrowKind::Signed:
            switch (type_.bytes) {
                case 1: ReadAs<int8_t>(Value(first), rows, numbers); return true;
                case 2: ReadAs<int16_t>(Value(first), rows, numbers); return true;
                case 4: ReadAs<int32_t>(Value(first), rows, numbers); return true;
                default: break;
            }
            return isExact([this](int64_t row, double& number) {
                const int64_t whole = Whole(row);
                number = static_cast<double>(whole);
                constexpr auto kMost = static_cast<int64_t>(kMostExactWhole);
                return whole >= -kMost && whole <= kMost;
            });
        case ArrowKind::Unsigned:
            switch (type_.bytes) {
                case 1: ReadAs<uint8_t>(Value(first), rows, numbers); return true;
                case 2: ReadAs<uint16_t>(Value(first), rows, numbers); return true;
                case 4: ReadAs<uint32_t>(Value(first), rows, numbers); return true;
                default: break;
            }
            return isExact([this](int64_t row, double& number) {
                number = static_cast<double>(Natural(row));
                return Natural(row) <= kMostExactWhole;
            });
        case ArrowKind::Decimal:
            return isExact([this](int64_t row, double& number) {
                return ArrowDecimal({Value(row), type_.bytes}, type_.scale).ReadNumber(number);
            });
        case ArrowKind::Float:
            if (type_.bytes == sizeof(float)) {
                ReadAs<float>(Value(first), rows, numbers);
            } else {
                ReadAs<double>(Value(first), rows, numbers);
            }
            return true;
        case ArrowKind::Truth:
            for (size_t i = 0; i < rows; ++i) {
                numbers[i] = Truth(first + static_cast<int64_t>(i)) ? 1.0 : 0.0;
            }
            return true;
        default: return false;
    }
}

void ArrowValues::ReadTexts(int64_t first, size_t rows, std::optional<DateTimeShape> wanted,
                            std::string_view* texts, std::vector<std::string>& made) const
{
    for (size_t i = 0; i < rows; ++i) {
        const int64_t row = first + static_cast<int64_t>(i);
        texts[i] = {};
        if (!IsPresent(row)) continue;
        if (type_.IsText()) {
            texts[i] = Text(row);
        } else {
            made[i].clear();
            AppendText(row, wanted, made[i]);
            texts[i] = made[i];
        }
    }
}

void ArrowValues::ReadIndexes(int64_t first, size_t rows, int64_t count, int32_t* indexes) const
{
    for (size_t i = 0; i < rows; ++i) {
        const int64_t row = first + static_cast<int64_t>(i);
        indexes[i] = -1;
        if (!IsPresent(row)) continue;
        // As a number without sign a negative one is too large too.
        const uint64_t index =
            type_.kind == ArrowKind::Signed ? static_cast<uint64_t>(Whole(row)) : Natural(row);
        if (index >= static_cast<uint64_t>(count)) {
            RefuseArrow(what_, fmt::format("row {} has an index beyond the dictionary of {} "
                                           "entries",
                                           row + 1, count));
        }
        indexes[i] = static_cast<int32_t>(index);
    }
}

int64_t ArrowValues::Whole(int64_t row) const
{
    switch (type_.bytes) {
        case 1: return Load<int8_t>(Value(row));
        case 2: return Load<int16_t>(Value(row));
        case 4: return Load<int32_t>(Value(row));
        default: return Load<int64_t>(Value(row));
    }
}

uint64_t ArrowValues::Natural(int64_t row) const
{
    switch (type_.bytes) {
        case 1: return Load<uint8_t>(Value(row));
        case 2: return Load<uint16_t>(Value(row));
        case 4: return Load<uint32_t>(Value(row));
        default: return Load<uint64_t>(Value(row));
    }
}

double ArrowValues::Float(int64_t row) const
{
    return type_.bytes == sizeof(float) ? static_cast<double>(Load<float>(Value(row)))
                                        : Load<double>(Value(row));
}

bool ArrowValues::Truth(int64_t row) const
{
    const int64_t at = first_ + row;
    return ((data_[at / 8] >> (at % 8)) & 1) != 0;
}

void ArrowValues::AppendText(int64_t row, std::optional<DateTimeShape> wanted,
                             std::string& text) const
{
    switch (type_.kind) {
        case ArrowKind::Truth: text += Truth(row) ? "true" : "false"; break;
        case ArrowKind::Signed: text += std::to_string(Whole(row)); break;
        case ArrowKind::Unsigned: text += std::to_string(Natural(row)); break;
        case ArrowKind::Float: AppendNumber(Float(row), text); break;
        case ArrowKind::Decimal:
            ArrowDecimal({Value(row), type_.bytes}, type_.scale).AppendTo(text);
            break;
        default: AppendArrowTime(type_, wanted, Whole(row), text); break;
    }
}

std::string_view ArrowValues::Text(int64_t row) const
{
    switch (type_.kind) {
        case ArrowKind::Text: return TextBetween<int32_t>(row);
        case ArrowKind::LargeText: return TextBetween<int64_t>(row);
        default: return TextView(row);
    }
}

template <class Offset>
std::string_view ArrowValues::TextBetween(int64_t row) const
{
    const uint8_t* const at = data_ + static_cast<size_t>(first_ + row) * sizeof(Offset);
    const auto begin = Load<Offset>(at);
    const auto end = Load<Offset>(at + sizeof(Offset));
    const auto* bytes = static_cast<const char*>(buffers_[2]);
    if (begin < 0 || end < begin) {
        RefuseArrow(what_,
                    fmt::format("the text of row {} goes from byte {} to {}", row + 1, begin, end));
    }
    if (begin == end) return {};
    if (bytes == nullptr) RefuseArrow(what_, "the array's buffer of texts is null");
    return {bytes + begin, static_cast<size_t>(end - begin)};
}

// A view has 16 bytes: the size, then the text itself up to 12 bytes, or its first four, the number
// of a buffer and the place in it.
std::string_view ArrowValues::TextView(int64_t row) const
{
    constexpr size_t kViewBytes = 16;
    constexpr int32_t kMostWithin = 12;
    constexpr int64_t kOtherBuffers = 3;  // validity, views, and the sizes at the end
    const uint8_t* const view = data_ + static_cast<size_t>(first_ + row) * kViewBytes;
    const auto size = Load<int32_t>(view);
    if (size < 0) {
        RefuseArrow(what_, fmt::format("the text of row {} has {} bytes", row + 1, size));
    }
    if (size <= kMostWithin) {
        return {reinterpret_cast<const char*>(view + 4), static_cast<size_t>(size)};
    }
    const auto buffer = Load<int32_t>(view + 8);
    const auto begin = Load<int32_t>(view + 12);
    if (buffer < 0 || buffer >= bufferCount_ - kOtherBuffers || buffers_[buffer + 2] == nullptr) {
        RefuseArrow(what_, fmt::format("the text of row {} lies in buffer {}, which isn't there",
                                       row + 1, buffer));
    }
    const auto* sizes = static_cast<const uint8_t*>(buffers_[bufferCount_ - 1]);
    const auto room = Load<int64_t>(sizes + static_cast<size_t>(buffer) * sizeof(int64_t));
    if (begin < 0 || int64_t{begin} + size > room) {
        RefuseArrow(what_, fmt::format("the text of row {} goes beyond its buffer", row + 1));
    }
    return {static_cast<const char*>(buffers_[buffer + 2]) + begin, static_cast<size_t>(size)};
}

}  // namespace MCVelscore_850
