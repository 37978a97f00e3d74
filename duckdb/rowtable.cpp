#include "duckdb/rowtable.h"

#include <algorithm>
#include <string_view>

#include "duckdb/errors.h"

namespace velscore::sql {

namespace {

constexpr const char* kTexts = "U";  // 64-bit offsets: no chunk of texts is too long

struct TakenType {
    duckdb_type id;
    ColumnForm form;
    const char* format;  ///< Arrow's; empty where the type's own parameters make it
};

constexpr TakenType kTaken[] = {
    {DUCKDB_TYPE_SQLNULL, ColumnForm::Nothing, "n"},
    {DUCKDB_TYPE_BOOLEAN, ColumnForm::Truths, "b"},
    {DUCKDB_TYPE_TINYINT, ColumnForm::Same, "c"},
    {DUCKDB_TYPE_SMALLINT, ColumnForm::Same, "s"},
    {DUCKDB_TYPE_INTEGER, ColumnForm::Same, "i"},
    {DUCKDB_TYPE_BIGINT, ColumnForm::Same, "l"},
    {DUCKDB_TYPE_UTINYINT, ColumnForm::Same, "C"},
    {DUCKDB_TYPE_USMALLINT, ColumnForm::Same, "S"},
    {DUCKDB_TYPE_UINTEGER, ColumnForm::Same, "I"},
    {DUCKDB_TYPE_UBIGINT, ColumnForm::Same, "L"},
    {DUCKDB_TYPE_HUGEINT, ColumnForm::Same, "d:38,0"},
    {DUCKDB_TYPE_UHUGEINT, ColumnForm::Wide, "d:39,0,256"},
    {DUCKDB_TYPE_FLOAT, ColumnForm::Same, "f"},
    {DUCKDB_TYPE_DOUBLE, ColumnForm::Same, "g"},
    {DUCKDB_TYPE_DECIMAL, ColumnForm::Decimals, ""},
    {DUCKDB_TYPE_VARCHAR, ColumnForm::Texts, kTexts},
    {DUCKDB_TYPE_ENUM, ColumnForm::Codes, ""},
    {DUCKDB_TYPE_DATE, ColumnForm::Same, "tdD"},
    {DUCKDB_TYPE_TIME, ColumnForm::Same, "ttu"},
    {DUCKDB_TYPE_TIME_NS, ColumnForm::Same, "ttn"},
    {DUCKDB_TYPE_TIMESTAMP_S, ColumnForm::Same, "tss:"},
    {DUCKDB_TYPE_TIMESTAMP_MS, ColumnForm::Same, "tsm:"},
    {DUCKDB_TYPE_TIMESTAMP, ColumnForm::Same, "tsu:"},
    {DUCKDB_TYPE_TIMESTAMP_NS, ColumnForm::Same, "tsn:"},
    {DUCKDB_TYPE_TIMESTAMP_TZ, ColumnForm::Same, "tsu:UTC"},
};

// What isn't taken, as SQL calls it.
struct OtherType {
    duckdb_type id;
    const char* name;
};

constexpr OtherType kOthers[] = {
    {DUCKDB_TYPE_INTERVAL, "INTERVAL"}, {DUCKDB_TYPE_BLOB, "BLOB"},
    {DUCKDB_TYPE_LIST, "a list"},       {DUCKDB_TYPE_ARRAY, "an array"},
    {DUCKDB_TYPE_STRUCT, "STRUCT"},     {DUCKDB_TYPE_MAP, "MAP"},
    {DUCKDB_TYPE_UNION, "UNION"},       {DUCKDB_TYPE_UUID, "UUID"},
    {DUCKDB_TYPE_BIT, "BIT"},           {DUCKDB_TYPE_TIME_TZ, "TIME WITH TIME ZONE"},
    {DUCKDB_TYPE_BIGNUM, "BIGNUM"},     {DUCKDB_TYPE_GEOMETRY, "GEOMETRY"},
    {DUCKDB_TYPE_VARIANT, "VARIANT"},
};

std::string NameOf(duckdb_type id)
{
    for (const OtherType& each : kOthers) {
        if (each.id == id) return each.name;
    }
    return "one that velscore doesn't know (" + std::to_string(id) + ")";
}

[[noreturn]] void RefuseType(const std::string& column, duckdb_type id)
{
    throw SqlError(
        "column '" + column + "' is of the type " + NameOf(id) +
        ", which isn't taken; the model reads it, so cast it to a number, a text, a truth, "
        "a date or a time");
}

size_t DecimalBytes(duckdb_type internal)
{
    switch (internal) {
        case DUCKDB_TYPE_SMALLINT: return 2;
        case DUCKDB_TYPE_INTEGER: return 4;
        case DUCKDB_TYPE_BIGINT: return 8;
        default: return 16;
    }
}

const char* IndexFormat(duckdb_type internal)
{
    switch (internal) {
        case DUCKDB_TYPE_UTINYINT: return "C";
        case DUCKDB_TYPE_USMALLINT: return "S";
        default: return "I";
    }
}

void LendSchema(ArrowSchema& schema, const char* format, const char* name)
{
    schema = {};
    schema.format = format;
    schema.name = name;
    schema.flags = ARROW_FLAG_NULLABLE;
    schema.release = [](ArrowSchema* own) { own->release = nullptr; };
}

void LendArray(ArrowArray& array, idx_t rows, const void** buffers, int64_t bufferCount)
{
    array = {};
    array.length = static_cast<int64_t>(rows);
    array.n_buffers = bufferCount;
    array.buffers = buffers;
    array.release = [](ArrowArray* own) { own->release = nullptr; };
}

bool IsThere(const uint64_t* validity, idx_t row)
{
    return validity == nullptr || (validity[row / 64] >> (row % 64) & 1) != 0;
}

// A text of the database: short ones lie in the value itself. By the layout that duckdb.h gives,
// since a call through its table for each value costs more than the text.
std::string_view TextOf(const duckdb_string_t& text)
{
    const uint32_t length = text.value.inlined.length;
    constexpr uint32_t kInlined = sizeof(text.value.inlined.inlined);
    return {length <= kInlined ? text.value.inlined.inlined : text.value.pointer.ptr, length};
}

// As bytes: what stands where a value is NULL need be no truth.
const void* Truths(const uint8_t* values, idx_t rows, std::vector<uint64_t>& words)
{
    words.assign((rows + 63) / 64, 0);
    for (idx_t row = 0; row < rows; ++row) {
        words[row / 64] |= uint64_t{values[row] != 0} << row % 64;
    }
    return words.data();
}

// Whole numbers of `Integer` to two's complement of 16 bytes.
template <class Integer>
const void* Widened(const void* values, idx_t rows, std::vector<uint64_t>& words)
{
    const auto* numbers = static_cast<const Integer*>(values);
    words.resize(rows * 2);
    for (idx_t row = 0; row < rows; ++row) {
        const auto number = static_cast<int64_t>(numbers[row]);
        words[2 * row] = static_cast<uint64_t>(number);
        words[2 * row + 1] = number < 0 ? ~uint64_t{0} : 0;
    }
    return words.data();
}

const void* Decimals(const void* values, size_t bytes, idx_t rows, std::vector<uint64_t>& words)
{
    switch (bytes) {
        case 2: return Widened<int16_t>(values, rows, words);
        case 4: return Widened<int32_t>(values, rows, words);
        case 8: return Widened<int64_t>(values, rows, words);
        default: return values;
    }
}

const void* Wide(const void* values, idx_t rows, std::vector<uint64_t>& words)
{
    words.assign(rows * 4, 0);
    const auto* numbers = static_cast<const duckdb_uhugeint*>(values);
    for (idx_t row = 0; row < rows; ++row) {
        words[4 * row] = numbers[row].lower;
        words[4 * row + 1] = numbers[row].upper;
    }
    return words.data();
}

void Texts(const duckdb_string_t* values, const uint64_t* validity, idx_t rows,
           std::vector<int64_t>& offsets, std::string& text)
{
    offsets.resize(rows + 1);
    text.clear();
    for (idx_t row = 0; row < rows; ++row) {
        offsets[row] = static_cast<int64_t>(text.size());
        // What stands where a value is NULL isn't a text.
        if (IsThere(validity, row)) text += TextOf(values[row]);
    }
    offsets[rows] = static_cast<int64_t>(text.size());
}

}  // namespace

void CheckRowType(duckdb_logical_type type, const std::string& function)
{
    const bool isStruct = duckdb_get_type_id(type) == DUCKDB_TYPE_STRUCT;
    if (isStruct && duckdb_struct_type_child_count(type) > 0 &&
        !Taken(duckdb_struct_type_child_name(type, 0)).empty()) {
        return;
    }
    throw SqlError(function + "() takes a row as " +
                   (isStruct ? "a struct whose fields have names, and found one without"
                             : "a struct, and found another type") +
                   "; give the alias of a table, or {'column': value, ...}");
}

RowTable::RowTable(duckdb_logical_type rowType, const std::vector<std::string>& reads)
{
    const idx_t count = duckdb_struct_type_child_count(rowType);
    columns_.resize(count);
    for (idx_t i = 0; i < count; ++i) {
        Column& column = columns_[i];
        column.name = Taken(duckdb_struct_type_child_name(rowType, i));
        if (std::find(reads.begin(), reads.end(), column.name) == reads.end()) {
            column.format = "n";
        } else {
            SetType(column, Type(duckdb_struct_type_child_type(rowType, i)).Get());
        }
        LendSchema(column.schema, column.format.c_str(), column.name.c_str());
        if (column.form == ColumnForm::Codes) {
            LendSchema(column.entrySchema, kTexts, "");
            column.schema.dictionary = &column.entrySchema;
        }
        schemas_.push_back(&column.schema);
        arrays_.push_back(&column.array);
    }
    LendSchema(schema_, "+s", "");
    schema_.n_children = static_cast<int64_t>(count);
    schema_.children = schemas_.data();
}

void RowTable::SetType(Column& column, duckdb_logical_type type) const
{
    const duckdb_type id = duckdb_get_type_id(type);
    const auto* row = std::find_if(std::begin(kTaken), std::end(kTaken),
                                   [id](const TakenType& each) { return each.id == id; });
    if (row == std::end(kTaken)) RefuseType(column.name, id);
    column.form = row->form;
    column.format = row->format;
    if (id == DUCKDB_TYPE_DECIMAL) {
        column.bytes = DecimalBytes(duckdb_decimal_internal_type(type));
        column.format = "d:" + std::to_string(duckdb_decimal_width(type)) + "," +
                        std::to_string(duckdb_decimal_scale(type));
    } else if (id == DUCKDB_TYPE_ENUM) {
        column.format = IndexFormat(duckdb_enum_internal_type(type));
        ReadEntries(column, type);
    }
}

void RowTable::ReadEntries(Column& column, duckdb_logical_type type)
{
    const uint32_t count = duckdb_enum_dictionary_size(type);
    column.entryOffsets.assign(1, 0);
    for (uint32_t i = 0; i < count; ++i) {
        column.entryText += Taken(duckdb_enum_dictionary_value(type, i));
        column.entryOffsets.push_back(static_cast<int64_t>(column.entryText.size()));
    }
}

ArrowArray RowTable::Of(duckdb_vector rows, idx_t count)
{
    for (size_t i = 0; i < columns_.size(); ++i) {
        Fill(columns_[i], duckdb_struct_vector_get_child(rows, i), count);
    }
    ArrowArray table;
    LendArray(table, count, buffers_, 1);
    table.n_children = static_cast<int64_t>(arrays_.size());
    table.children = arrays_.data();
    return table;
}

void RowTable::Fill(Column& column, duckdb_vector values, idx_t count)
{
    if (column.form == ColumnForm::Nothing) {
        LendArray(column.array, count, column.buffers, 0);
        column.array.null_count = column.array.length;
        return;
    }
    const void* data = duckdb_vector_get_data(values);
    const uint64_t* validity = duckdb_vector_get_validity(values);
    LendArray(column.array, count, column.buffers, 2);
    column.array.null_count = validity == nullptr ? 0 : -1;
    column.buffers[0] = validity;
    switch (column.form) {
        case ColumnForm::Truths:
            column.buffers[1] = Truths(static_cast<const uint8_t*>(data), count, column.words);
            break;
        case ColumnForm::Decimals:
            column.buffers[1] = Decimals(data, column.bytes, count, column.words);
            break;
        case ColumnForm::Wide: column.buffers[1] = Wide(data, count, column.words); break;
        case ColumnForm::Texts:
            Texts(static_cast<const duckdb_string_t*>(data), validity, count, column.offsets,
                  column.text);
            column.buffers[1] = column.offsets.data();
            column.buffers[2] = column.text.data();
            column.array.n_buffers = 3;
            break;
        case ColumnForm::Codes:
            column.buffers[1] = data;
            column.entryBuffers[1] = column.entryOffsets.data();
            column.entryBuffers[2] = column.entryText.data();
            LendArray(column.entries, column.entryOffsets.size() - 1, column.entryBuffers, 3);
            column.array.dictionary = &column.entries;
            break;
        case ColumnForm::Same:
        case ColumnForm::Nothing: column.buffers[1] = data; break;
    }
}

}  // namespace velscore::sql
