#ifndef VELSCORE_TESTS_CAPI_MADETABLES_H
#define VELSCORE_TESTS_CAPI_MADETABLES_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "capi/include/velscore_arrow.h"

// Arrow's structures as another program would make them, by hand, so that a test can get any part
// of them wrong; and what came back, as plain values.
namespace velscore_tests {

/// Structures that were exported and not yet released.
inline std::atomic<int> alive{0};

using Bytes = std::vector<std::byte>;

/// An array of the C data interface, with its schema's part.
struct MadeArray {
    std::string name;
    std::string format;
    int64_t length = 0;
    int64_t nullCount = 0;
    int64_t offset = 0;
    int64_t flags = ARROW_FLAG_NULLABLE;
    std::vector<std::optional<Bytes>> buffers{};  ///< a null pointer where there is none
    std::vector<MadeArray> children{};
    std::vector<MadeArray> dictionary{};  ///< one or none
    std::string metadata{};
};

template <class T>
Bytes BytesOf(const std::vector<T>& values)
{
    Bytes bytes(values.size() * sizeof(T));
    if (!bytes.empty()) std::memcpy(bytes.data(), values.data(), bytes.size());
    return bytes;
}

/// A bit a value, least significant first.
inline Bytes BitsOf(const std::vector<bool>& bits)
{
    Bytes bytes((bits.size() + 7) / 8);
    for (size_t i = 0; i < bits.size(); ++i) {
        if (bits[i]) bytes[i / 8] |= static_cast<std::byte>(1U << (i % 8));
    }
    return bytes;
}

/// A column of values of one width: nothing is null.
template <class T>
MadeArray Column(const std::string& name, const std::string& format,
                 const std::vector<std::optional<T>>& values)
{
    std::vector<T> plain;
    std::vector<bool> present;
    MadeArray made{.name = name, .format = format};
    for (const auto& value : values) {
        plain.push_back(value.value_or(T{}));
        present.push_back(value.has_value());
        made.nullCount += value ? 0 : 1;
    }
    made.length = static_cast<int64_t>(values.size());
    made.buffers = {BitsOf(present), BytesOf(plain)};
    if (made.nullCount == 0) made.buffers[0].reset();
    return made;
}

inline MadeArray Numbers(const std::string& name, const std::vector<std::optional<double>>& values)
{
    return Column<double>(name, "g", values);
}

template <class Offset = int32_t>
MadeArray Texts(const std::string& name, const std::vector<std::optional<std::string>>& values)
{
    std::vector<Offset> offsets{0};
    std::string bytes;
    std::vector<bool> present;
    MadeArray made{.name = name, .format = sizeof(Offset) == 4 ? "u" : "U"};
    for (const auto& value : values) {
        bytes += value.value_or("");
        offsets.push_back(static_cast<Offset>(bytes.size()));
        present.push_back(value.has_value());
        made.nullCount += value ? 0 : 1;
    }
    made.length = static_cast<int64_t>(values.size());
    made.buffers = {BitsOf(present), BytesOf(offsets),
                    BytesOf(std::vector<char>(bytes.begin(), bytes.end()))};
    if (made.nullCount == 0) made.buffers[0].reset();
    return made;
}

/// Indexes into a dictionary of values.
template <class T>
MadeArray Indexed(const std::string& format, const std::vector<std::optional<T>>& indexes,
                  MadeArray values)
{
    MadeArray made = Column<T>(values.name, format, indexes);
    values.name.clear();
    made.dictionary.push_back(std::move(values));
    return made;
}

/// A table of columns of the length of the first.
inline MadeArray Table(std::vector<MadeArray> columns)
{
    MadeArray table{.name = "", .format = "+s"};
    table.length = columns.empty() ? 0 : columns.front().length - columns.front().offset;
    table.buffers = {std::nullopt};
    table.children = std::move(columns);
    return table;
}

struct ExportedSchema {
    MadeArray made;
    std::vector<ArrowSchema> children;
    std::vector<ArrowSchema*> pointers;
    ArrowSchema dictionary{};
};

inline void ReleaseSchema(ArrowSchema* schema)
{
    auto* own = static_cast<ExportedSchema*>(schema->private_data);
    for (ArrowSchema& child : own->children) {
        if (child.release != nullptr) child.release(&child);
    }
    if (own->dictionary.release != nullptr) own->dictionary.release(&own->dictionary);
    delete own;
    schema->release = nullptr;
    --alive;
}

inline ArrowSchema ExportSchema(const MadeArray& made)
{
    ++alive;
    auto* own = new ExportedSchema{made, {}, {}, {}};
    for (const MadeArray& child : made.children) own->children.push_back(ExportSchema(child));
    for (ArrowSchema& child : own->children) own->pointers.push_back(&child);
    ArrowSchema schema{};
    schema.format = own->made.format.c_str();
    schema.name = own->made.name.c_str();
    schema.metadata = own->made.metadata.empty() ? nullptr : own->made.metadata.data();
    schema.flags = made.flags;
    schema.n_children = static_cast<int64_t>(own->children.size());
    schema.children = own->pointers.data();
    if (!made.dictionary.empty()) {
        own->dictionary = ExportSchema(made.dictionary.front());
        schema.dictionary = &own->dictionary;
    }
    schema.release = ReleaseSchema;
    schema.private_data = own;
    return schema;
}

struct ExportedArray {
    MadeArray made;
    std::vector<ArrowArray> children;
    std::vector<ArrowArray*> pointers;
    ArrowArray dictionary{};
    std::vector<const void*> buffers;
};

inline void ReleaseArray(ArrowArray* array)
{
    auto* own = static_cast<ExportedArray*>(array->private_data);
    for (ArrowArray& child : own->children) {
        if (child.release != nullptr) child.release(&child);
    }
    if (own->dictionary.release != nullptr) own->dictionary.release(&own->dictionary);
    delete own;
    array->release = nullptr;
    --alive;
}

inline ArrowArray ExportArray(const MadeArray& made)
{
    ++alive;
    auto* own = new ExportedArray{made, {}, {}, {}, {}};
    for (const MadeArray& child : made.children) own->children.push_back(ExportArray(child));
    for (ArrowArray& child : own->children) own->pointers.push_back(&child);
    static const std::byte none{};
    for (const auto& buffer : own->made.buffers) {
        own->buffers.push_back(!buffer           ? nullptr
                               : buffer->empty() ? static_cast<const void*>(&none)
                                                 : buffer->data());
    }
    ArrowArray array{};
    array.length = made.length;
    array.null_count = made.nullCount;
    array.offset = made.offset;
    array.n_buffers = static_cast<int64_t>(own->buffers.size());
    array.buffers = own->buffers.data();
    array.n_children = static_cast<int64_t>(own->children.size());
    array.children = own->pointers.data();
    if (!made.dictionary.empty()) {
        own->dictionary = ExportArray(made.dictionary.front());
        array.dictionary = &own->dictionary;
    }
    array.release = ReleaseArray;
    array.private_data = own;
    return array;
}

/// A stream of tables, which ends in an error where one is told.
struct MadeStream {
    MadeArray schema;
    std::vector<MadeArray> tables;
    std::string error{};
    size_t next = 0;
};

inline ArrowArrayStream ExportStream(MadeStream made)
{
    ++alive;
    ArrowArrayStream stream{};
    stream.get_schema = [](ArrowArrayStream* self, ArrowSchema* out) {
        *out = ExportSchema(static_cast<MadeStream*>(self->private_data)->schema);
        return 0;
    };
    stream.get_next = [](ArrowArrayStream* self, ArrowArray* out) {
        auto& own = *static_cast<MadeStream*>(self->private_data);
        *out = {};
        if (own.next < own.tables.size()) {
            *out = ExportArray(own.tables[own.next++]);
            return 0;
        }
        return own.error.empty() ? 0 : 5;
    };
    stream.get_last_error = [](ArrowArrayStream* self) {
        return static_cast<MadeStream*>(self->private_data)->error.c_str();
    };
    stream.release = [](ArrowArrayStream* self) {
        delete static_cast<MadeStream*>(self->private_data);
        self->release = nullptr;
        --alive;
    };
    stream.private_data = new MadeStream(std::move(made));
    return stream;
}
inline ArrowArrayStream StreamOf(const MadeArray& table)
{
    return ExportStream({.schema = table, .tables = {table}});
}
/// Of several tables of one schema.
inline ArrowArrayStream StreamOf(const std::vector<MadeArray>& tables)
{
    return ExportStream({.schema = tables.front(), .tables = tables});
}

/// A value that came back: a number, a text, or neither.
struct Value {
    std::optional<double> number{};
    std::optional<std::string> text{};
};

inline bool HasValue(const ArrowArray& array, int64_t at)
{
    const auto* bits =
        array.n_buffers > 0 ? static_cast<const uint8_t*>(array.buffers[0]) : nullptr;
    return bits == nullptr || ((bits[at / 8] >> (at % 8)) & 1) != 0;
}

template <class T>
T ValueAt(const ArrowArray& array, int64_t at)
{
    T value;
    std::memcpy(&value, static_cast<const char*>(array.buffers[1]) + at * int64_t{sizeof(T)},
                sizeof value);
    return value;
}

inline Value ValueOf(const ArrowSchema& schema, const ArrowArray& array, int64_t row)
{
    const int64_t at = array.offset + row;
    if (!HasValue(array, at)) return {};
    const std::string format = schema.format;
    if (schema.dictionary != nullptr) {
        return ValueOf(*schema.dictionary, *array.dictionary, ValueAt<int32_t>(array, at));
    }
    if (format == "g") return {.number = ValueAt<double>(array, at)};
    if (format == "i") return {.number = ValueAt<int32_t>(array, at)};
    if (format == "l") return {.number = static_cast<double>(ValueAt<int64_t>(array, at))};
    if (format == "u") {
        const auto begin = ValueAt<int32_t>(array, at);
        const auto end = ValueAt<int32_t>(array, at + 1);
        return {.text = std::string(static_cast<const char*>(array.buffers[2]) + begin,
                                    static_cast<size_t>(end - begin))};
    }
    return {};
}

/// What came back, column by column.
struct ReadTables {
    std::vector<std::string> names;
    std::vector<std::vector<Value>> columns;
    size_t tables = 0;
    size_t rows = 0;

    const std::vector<Value>& Named(const std::string& name) const
    {
        static const std::vector<Value> none;
        for (size_t i = 0; i < names.size(); ++i) {
            if (names[i] == name) return columns[i];
        }
        return none;
    }
    void Begin(const ArrowSchema& schema)
    {
        for (int64_t i = 0; i < schema.n_children; ++i) names.push_back(schema.children[i]->name);
        columns.resize(names.size());
    }
    void Add(const ArrowSchema& schema, const ArrowArray& table)
    {
        ++tables;
        rows += static_cast<size_t>(table.length);
        for (int64_t i = 0; i < schema.n_children; ++i) {
            for (int64_t row = 0; row < table.length; ++row) {
                columns[static_cast<size_t>(i)].push_back(
                    ValueOf(*schema.children[i], *table.children[i], row));
            }
        }
    }
};

/// Reads a stream to its end and releases it. `error` becomes its last error.
inline ReadTables ReadAll(ArrowArrayStream& stream, std::string* error = nullptr)
{
    ReadTables all;
    ArrowSchema schema{};
    if (stream.get_schema(&stream, &schema) == 0) {
        all.Begin(schema);
        for (;;) {
            ArrowArray table{};
            if (stream.get_next(&stream, &table) != 0) {
                if (error != nullptr) *error = stream.get_last_error(&stream);
                break;
            }
            if (table.release == nullptr) break;
            all.Add(schema, table);
            table.release(&table);
        }
        schema.release(&schema);
    }
    stream.release(&stream);
    return all;
}

/// So many times the same text.
inline MadeArray Same(const std::string& name, const std::string& text, size_t rows)
{
    return Texts(name, std::vector<std::optional<std::string>>(rows, text));
}

/// The numbers of a column that came back; kNull for null.
inline std::vector<double> NumbersOf(const ReadTables& tables, const std::string& name)
{
    std::vector<double> numbers;
    for (const Value& value : tables.Named(name)) numbers.push_back(value.number.value_or(-1e99));
    return numbers;
}
/// What NumbersOf() has where there is no value.
inline constexpr double kNull = -1e99;

}  // namespace velscore_tests

#endif
