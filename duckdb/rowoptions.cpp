#include "duckdb/rowoptions.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

#include "duckdb/errors.h"

namespace velscore::sql {

namespace {

using Value = Owned<duckdb_value>;

// A value's type is the value's own.
duckdb_type IdOf(duckdb_value value) { return duckdb_get_type_id(duckdb_get_value_type(value)); }

[[noreturn]] void RefuseValue(duckdb_value value, const char* name, const char* expected)
{
    throw SqlError(std::string("the option '") + name + "' is " +
                   Taken(duckdb_value_to_string(value)) + "; expected is " + expected);
}

std::string TextOf(duckdb_value value, const char* name, const char* expected)
{
    if (duckdb_is_null_value(value) || IdOf(value) != DUCKDB_TYPE_VARCHAR) {
        RefuseValue(value, name, expected);
    }
    return Taken(duckdb_get_varchar(value));
}

constexpr duckdb_type kWholes[] = {
    DUCKDB_TYPE_TINYINT,  DUCKDB_TYPE_SMALLINT,  DUCKDB_TYPE_INTEGER,  DUCKDB_TYPE_BIGINT,
    DUCKDB_TYPE_UTINYINT, DUCKDB_TYPE_USMALLINT, DUCKDB_TYPE_UINTEGER, DUCKDB_TYPE_HUGEINT};
constexpr duckdb_type kFractions[] = {DUCKDB_TYPE_DECIMAL, DUCKDB_TYPE_FLOAT, DUCKDB_TYPE_DOUBLE};

bool IsOneOf(std::span<const duckdb_type> types, duckdb_type id)
{
    return std::find(types.begin(), types.end(), id) != types.end();
}

void ReadMap(duckdb_value value, const char* name, velscore::ScoreOptions& options)
{
    constexpr const char* kExpected =
        "a struct of names of columns, {'the model''s field': 'the column'}";
    const duckdb_logical_type type = duckdb_get_value_type(value);
    const duckdb_type id = duckdb_get_type_id(type);
    if (id == DUCKDB_TYPE_MAP) {
        for (idx_t i = 0; i < duckdb_get_map_size(value); ++i) {
            options.map.emplace_back(
                TextOf(Value(duckdb_get_map_key(value, i)).Get(), name, kExpected),
                TextOf(Value(duckdb_get_map_value(value, i)).Get(), name, kExpected));
        }
        return;
    }
    if (id != DUCKDB_TYPE_STRUCT) RefuseValue(value, name, kExpected);
    for (idx_t i = 0; i < duckdb_struct_type_child_count(type); ++i) {
        options.map.emplace_back(
            Taken(duckdb_struct_type_child_name(type, i)),
            TextOf(Value(duckdb_get_struct_child(value, i)).Get(), name, kExpected));
    }
}

void ReadMissing(duckdb_value value, const char* name, velscore::ScoreOptions& options)
{
    constexpr const char* kExpected = "a text, or a list of texts";
    if (IdOf(value) != DUCKDB_TYPE_LIST) {
        options.missing.push_back(TextOf(value, name, kExpected));
        return;
    }
    for (idx_t i = 0; i < duckdb_get_list_size(value); ++i) {
        options.missing.push_back(
            TextOf(Value(duckdb_get_list_child(value, i)).Get(), name, kExpected));
    }
}

// Words: the library says which, but takes an empty one for none.
std::string WordOf(duckdb_value value, const char* name, const char* expected)
{
    std::string word = TextOf(value, name, expected);
    if (word.empty()) RefuseValue(value, name, expected);
    return word;
}

void ReadNan(duckdb_value value, const char* name, velscore::ScoreOptions& options)
{
    options.nan = WordOf(value, name, "missing or invalid");
}

void ReadPolicy(duckdb_value value, const char* name, velscore::ScoreOptions& options)
{
    options.policy = WordOf(value, name, "substitute, sysmis or status");
}

void ReadLevel(duckdb_value value, const char* name, velscore::ScoreOptions& options)
{
    const duckdb_type id = IdOf(value);
    if (IsOneOf(kWholes, id) || IsOneOf(kFractions, id)) options.level = duckdb_get_double(value);
    if (options.level == 0.0) RefuseValue(value, name, "a number above 0 and below 1");
}

void ReadPredictionOnly(duckdb_value value, const char* name, velscore::ScoreOptions& options)
{
    if (IdOf(value) != DUCKDB_TYPE_BOOLEAN) RefuseValue(value, name, "true or false");
    options.predictionOnly = duckdb_get_bool(value);
}

void ReadTop(duckdb_value value, const char* name, velscore::ScoreOptions& options)
{
    const int64_t top = IsOneOf(kWholes, IdOf(value)) ? duckdb_get_int64(value) : -1;
    if (top < 0) RefuseValue(value, name, "a whole number of 0 or more");
    options.top = static_cast<size_t>(top);
}

std::string NamesOf(std::span<const RowOption* const> options)
{
    std::string names;
    for (const RowOption* option : options) {
        names.append(names.empty() ? "" : ", ").append(option->name);
    }
    return names;
}

}  // namespace

constinit const RowOption kMapOption{"map", ReadMap};
constinit const RowOption kMissingOption{"missing", ReadMissing};
constinit const RowOption kNanOption{"nan", ReadNan};
constinit const RowOption kPolicyOption{"policy", ReadPolicy};
constinit const RowOption kLevelOption{"level", ReadLevel};
constinit const RowOption kPredictionOnlyOption{"prediction_only", ReadPredictionOnly};
constinit const RowOption kTopOption{"top", ReadTop};

velscore::ScoreOptions RowOptionsOf(duckdb_value value, std::span<const RowOption* const> known,
                                    const std::string& function)
{
    velscore::ScoreOptions options;
    if (value == nullptr || duckdb_is_null_value(value)) return options;
    const duckdb_logical_type type = duckdb_get_value_type(value);
    if (duckdb_get_type_id(type) != DUCKDB_TYPE_STRUCT) {
        std::string text = "the options of ";
        text.append(function).append("() are ").append(Taken(duckdb_value_to_string(value)));
        text.append("; expected is a struct, {'option': value, ...}, of ").append(NamesOf(known));
        throw SqlError(text);
    }
    for (idx_t i = 0; i < duckdb_struct_type_child_count(type); ++i) {
        const std::string name = Taken(duckdb_struct_type_child_name(type, i));
        const auto option = std::find_if(known.begin(), known.end(),
                                         [&](const auto* each) { return each->name == name; });
        if (option == known.end()) {
            throw SqlError(function + "() has no option '" + name + "'; its options are " +
                           NamesOf(known));
        }
        const Value field(duckdb_get_struct_child(value, i));
        if (!duckdb_is_null_value(field.Get())) {
            (*option)->read(field.Get(), (*option)->name, options);
        }
    }
    return options;
}

std::vector<std::string> MappedColumns(std::vector<std::string> reads,
                                       const velscore::ScoreOptions& options)
{
    for (std::string& name : reads) {
        const auto mapped = std::find_if(options.map.begin(), options.map.end(),
                                         [&](const auto& each) { return each.first == name; });
        if (mapped != options.map.end()) name = mapped->second;
    }
    return reads;
}

}  // namespace velscore::sql
