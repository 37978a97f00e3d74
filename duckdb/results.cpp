#include "duckdb/results.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "duckdb/arrowcolumn.h"

namespace velscore::sql {

namespace {

enum class Kind { Number, Text, Code, Probabilities };

struct Field {
    const char* name;
    const char* column;  ///< of the library's results
    Kind kind;
};

// The library calls a predicted number and a predicted category by one name.
constexpr const char* kPrediction = "prediction";

constexpr Field kFields[] = {
    {"prediction", kPrediction, Kind::Number},
    {"category", kPrediction, Kind::Text},
    {"linear_predictor", "linear_predictor", Kind::Number},
    {"std_dev", "std_dev", Kind::Number},
    {"ci_lower", "ci_lower", Kind::Number},
    {"ci_upper", "ci_upper", Kind::Number},
    {"cum_hazard", "cum_hazard", Kind::Number},
    {"probabilities", "", Kind::Probabilities},
    {"status", "status", Kind::Code},
    {"status_field", "status_field", Kind::Text},
};

constexpr std::string_view kProbability = "probability(";

Type TypeOfKind(Kind kind)
{
    switch (kind) {
        case Kind::Number: return TypeOf(DUCKDB_TYPE_DOUBLE);
        case Kind::Text: return TypeOf(DUCKDB_TYPE_VARCHAR);
        case Kind::Code: return TypeOf(DUCKDB_TYPE_INTEGER);
        case Kind::Probabilities: break;
    }
    return Type(duckdb_create_map_type(TypeOf(DUCKDB_TYPE_VARCHAR).Get(),
                                       TypeOf(DUCKDB_TYPE_DOUBLE).Get()));
}

bool Suits(const ArrowSchema& column, Kind kind)
{
    const std::string_view format = column.format;
    if (column.dictionary != nullptr) return kind == Kind::Text;
    return (kind == Kind::Number && format == "g") || (kind == Kind::Code && format == "i");
}

size_t WordsOf(idx_t rows) { return (rows + 63) / 64; }

// A vector's validity from bits of Arrow's, which are the same, and those of the rows themselves.
// Left alone where all is there: what reads the vector is faster without.
void SetValidity(duckdb_vector out, const void* bits, const uint64_t* isThere, idx_t rows)
{
    if (bits == nullptr && isThere == nullptr && duckdb_vector_get_validity(out) == nullptr) return;
    duckdb_vector_ensure_validity_writable(out);
    uint64_t* words = duckdb_vector_get_validity(out);
    std::memset(words, 0xff, WordsOf(rows) * sizeof(uint64_t));
    if (bits != nullptr) std::memcpy(words, bits, (rows + 7) / 8);
    if (isThere == nullptr) return;
    for (size_t i = 0; i < WordsOf(rows); ++i) words[i] &= isThere[i];
}

void SetAllNull(duckdb_vector out, idx_t rows)
{
    duckdb_vector_ensure_validity_writable(out);
    std::memset(duckdb_vector_get_validity(out), 0, WordsOf(rows) * sizeof(uint64_t));
}

void WriteColumn(const ArrowArray& array, Kind kind, const uint64_t* isThere, duckdb_vector out)
{
    const auto rows = static_cast<idx_t>(array.length);
    if (array.null_count == array.length) return SetAllNull(out, rows);
    if (kind == Kind::Text) {
        WriteTexts(array, out);
    } else {
        const size_t size = kind == Kind::Number ? sizeof(double) : sizeof(int32_t);
        std::memcpy(duckdb_vector_get_data(out), array.buffers[1], rows * size);
    }
    SetValidity(out, BitsOf(array), isThere, rows);
}

}  // namespace

Type ResultType()
{
    std::vector<Type> types;
    std::vector<duckdb_logical_type> handles;
    std::vector<const char*> names;
    for (const Field& field : kFields) {
        types.push_back(TypeOfKind(field.kind));
        handles.push_back(types.back().Get());
        names.push_back(field.name);
    }
    return Type(duckdb_create_struct_type(handles.data(), names.data(), names.size()));
}

ResultWriter::ResultWriter(const ArrowSchema& schema)
{
    const auto count = static_cast<size_t>(schema.n_children);
    for (const Field& field : kFields) {
        columns_.push_back(kNone);
        for (size_t i = 0; i < count; ++i) {
            const ArrowSchema& column = *schema.children[i];
            if (field.column == std::string_view(column.name) && Suits(column, field.kind)) {
                columns_.back() = i;
            }
        }
    }
    for (size_t i = 0; i < count; ++i) {
        const std::string_view name = schema.children[i]->name;
        if (!name.starts_with(kProbability)) continue;
        probabilities_.push_back(i);
        categories_.emplace_back(
            name.substr(kProbability.size(), name.size() - kProbability.size() - 1));
    }
}

void ResultWriter::Write(const ArrowArray& results, const uint64_t* isThere, duckdb_vector out)
{
    const auto rows = static_cast<idx_t>(results.length);
    for (size_t i = 0; i < columns_.size(); ++i) {
        const duckdb_vector field = duckdb_struct_vector_get_child(out, i);
        if (kFields[i].kind == Kind::Probabilities) {
            WriteProbabilities(results, isThere, field);
        } else if (columns_[i] == kNone) {
            SetAllNull(field, rows);
        } else {
            WriteColumn(*results.children[columns_[i]], kFields[i].kind, isThere, field);
        }
    }
    SetValidity(out, nullptr, isThere, rows);
}

void ResultWriter::WriteProbabilities(const ArrowArray& results, const uint64_t* isThere,
                                      duckdb_vector out)
{
    const auto rows = static_cast<idx_t>(results.length);
    const size_t count = probabilities_.size();
    if (count == 0) {
        duckdb_list_vector_set_size(out, 0);
        SetAllNull(out, rows);
        return;
    }
    duckdb_list_vector_reserve(out, rows * count);
    duckdb_list_vector_set_size(out, rows * count);
    const duckdb_vector pairs = duckdb_list_vector_get_child(out);
    const duckdb_vector keys = duckdb_struct_vector_get_child(pairs, 0);
    const duckdb_vector values = duckdb_struct_vector_get_child(pairs, 1);
    auto* texts = static_cast<duckdb_string_t*>(duckdb_vector_get_data(keys));
    auto* numbers = static_cast<double*>(duckdb_vector_get_data(values));
    auto* lists = static_cast<duckdb_list_entry*>(duckdb_vector_get_data(out));

    for (idx_t row = 0; row < rows; ++row) lists[row] = {row * count, count};
    for (size_t i = 0; i < count; ++i) {
        if (rows == 0) break;
        duckdb_unsafe_vector_assign_string_element_len(keys, i, categories_[i].data(),
                                                       categories_[i].size());
        const auto* from =
            static_cast<const double*>(results.children[probabilities_[i]]->buffers[1]);
        for (idx_t row = 0; row < rows; ++row) {
            texts[row * count + i] = texts[i];
            numbers[row * count + i] = from[row];
        }
    }
    // A row has all of its probabilities or none.
    SetValidity(out, BitsOf(*results.children[probabilities_[0]]), isThere, rows);
}

}  // namespace velscore::sql
