#ifndef VELSCORE_TESTS_CAPI_ARROWFAULTS_H
#define VELSCORE_TESTS_CAPI_ARROWFAULTS_H

#include <functional>
#include <limits>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "tests/capi/madetables.h"

// Arrow structures that are wrong in one place each.
namespace velscore_tests {

inline constexpr int kStructure = 269350;
inline constexpr int kType = 269351;
inline constexpr int kTooDeep = 269353;
inline constexpr int kMissingColumn = 269303;
inline constexpr int kDuplicateColumn = 269307;
inline constexpr int64_t kMost = std::numeric_limits<int64_t>::max();

inline MadeArray Sound()
{
    return Table({Numbers("x", {1.0, {}, 2.0}), Same("sex", "f", 3),
                  Indexed<int32_t>("i", {0, 1, {}}, Texts("group", {"a", "b"}))});
}

// Structures as they lie in memory: pointers may be set that no program would.
struct Structures {
    ArrowSchema schema;
    ArrowArray array;
    ArrowSchema& Schema(size_t i) { return *schema.children[i]; }
    ArrowArray& Array(size_t i) { return *array.children[i]; }
};

struct Fault {
    std::string name;
    int code;
    std::string says;  ///< a piece of the message
    std::function<void(MadeArray&)> make = [](MadeArray&) {};
    std::function<void(Structures&)> spoil = [](Structures&) {};
};

inline std::ostream& operator<<(std::ostream& out, const Fault& fault) { return out << fault.name; }

inline Fault Made(std::string name, int code, std::string says,
                  std::function<void(MadeArray&)> make)
{
    return {std::move(name), code, std::move(says), std::move(make)};
}
inline Fault Spoilt(std::string name, int code, std::string says,
                    std::function<void(Structures&)> spoil)
{
    return {std::move(name), code, std::move(says), [](MadeArray&) {}, std::move(spoil)};
}

template <class Structure>
void Drop(Structure& structure)
{
    structure.release(&structure);
}

inline MadeArray View(int32_t size, int32_t buffer, int32_t begin, int64_t room)
{
    MadeArray made{.name = "sex", .format = "vu"};
    made.length = 3;
    const std::vector<int32_t> view{size, 0x61616161, buffer, begin};
    std::vector<int32_t> views;
    for (int i = 0; i < 3; ++i) views.insert(views.end(), view.begin(), view.end());
    made.buffers = {std::nullopt, BytesOf(views), Bytes(64), BytesOf(std::vector<int64_t>{room})};
    return made;
}

inline MadeArray Nested(int depth)
{
    MadeArray made{.name = "deep", .format = "+s"};
    made.length = 3;
    made.buffers = {std::nullopt};
    if (depth > 0) made.children.push_back(Nested(depth - 1));
    return made;
}

inline std::vector<Fault> SchemaFaults()
{
    return {
        Spoilt("schema_released", kStructure, "the schema was released",
               [](auto& s) { Drop(s.schema); }),
        Spoilt("schema_without_format", kStructure, "no format",
               [](auto& s) { s.schema.format = nullptr; }),
        Made("schema_of_no_table", kStructure, "list (+l)", [](auto& m) { m.format = "+l"; }),
        Made("schema_of_a_column", kStructure, "'g'", [](auto& m) { m.format = "g"; }),
        Spoilt("schema_with_negative_children", kStructure, "-1 children",
               [](auto& s) { s.schema.n_children = -1; }),
        Spoilt("schema_with_countless_children", kStructure, "children",
               [](auto& s) { s.schema.n_children = kMost; }),
        Spoilt("schema_without_children", kStructure, "3 children",
               [](auto& s) { s.schema.children = nullptr; }),
        Spoilt("column_schema_null", kStructure, "column 1",
               [](auto& s) {
                   Drop(s.Schema(0));
                   s.schema.children[0] = nullptr;
               }),
        Spoilt("column_schema_released", kStructure, "column 2",
               [](auto& s) { Drop(s.Schema(1)); }),
        Spoilt("column_schema_without_format", kStructure, "column 1",
               [](auto& s) { s.Schema(0).format = nullptr; }),
        Spoilt("column_without_name", kMissingColumn, "x",
               [](auto& s) { s.Schema(0).name = nullptr; }),
        Made("column_twice", kDuplicateColumn, "x", [](auto& m) { m.children[2] = m.children[0]; }),
        Made("column_missing", kMissingColumn, "sex",
             [](auto& m) { m.children.erase(m.children.begin() + 1); }),
        Made("no_columns", kMissingColumn, "x", [](auto& m) { m.children.clear(); }),
        Made("dictionary_schema_of_float_indexes", kStructure, "indexes",
             [](auto& m) { m.children[2].format = "g"; }),
        Spoilt("dictionary_schema_released", kStructure, "dictionary",
               [](auto& s) { Drop(*s.Schema(2).dictionary); }),
        Spoilt("dictionary_schema_without_format", kStructure, "dictionary",
               [](auto& s) { s.Schema(2).dictionary->format = nullptr; }),
        Made("kept_too_deep", kTooDeep, "deep", [](auto& m) { m.children[2] = Nested(100); }),
        Spoilt("kept_metadata_of_negative_pairs", kStructure, "metadata",
               [](auto& s) {
                   static const int32_t pairs = -5;
                   s.Schema(2).metadata = reinterpret_cast<const char*>(&pairs);
               }),
        Spoilt("kept_metadata_of_negative_length", kStructure, "metadata",
               [](auto& s) {
                   static const int32_t pairs[] = {1, -7};
                   s.Schema(2).metadata = reinterpret_cast<const char*>(pairs);
               }),
    };
}

inline std::vector<Fault> TypeFaults()
{
    std::vector<Fault> faults;
    const std::pair<const char*, const char*> kTypes[] = {{"e", "float16"},
                                                          {"z", "binary"},
                                                          {"Z", "large_binary"},
                                                          {"vz", "binary_view"},
                                                          {"w:8", "fixed_size"},
                                                          {"tDs", "duration"},
                                                          {"tiM", "interval"},
                                                          {"+l", "list"},
                                                          {"+L", "large_list"},
                                                          {"+vl", "list_view"},
                                                          {"+w:2", "fixed_size_list"},
                                                          {"+s", "struct"},
                                                          {"+m", "map"},
                                                          {"+us:0,1", "union"},
                                                          {"+r", "run_end_encoded"},
                                                          {"d:9,2,32", "decimal"},
                                                          {"d:99,2", "decimal"},
                                                          {"d:9,2000000000", "decimal"},
                                                          {"d:", "decimal"},
                                                          {"d:9", "decimal"},
                                                          {"d:x,y", "decimal"},
                                                          {"", "''"},
                                                          {"tts2", "tts2"},
                                                          {"gg", "gg"},
                                                          {"d:-9,2", "decimal"}};
    for (const auto& [format, says] : kTypes) {
        faults.push_back(
            Made(std::string("type_") + std::to_string(faults.size()), kType, says,
                 [format = std::string(format)](auto& m) { m.children[0].format = format; }));
    }
    faults.push_back(Made("type_of_dictionary", kType, "binary", [](auto& m) {
        m.children[1] = Indexed<int8_t>("c", {0, 0, 0}, Texts("sex", {"f"}));
        m.children[1].dictionary[0].format = "z";
    }));
    faults.push_back(Made("dictionary_of_a_dictionary", kType, "dictionary", [](auto& m) {
        MadeArray inner = Indexed<int8_t>("c", {0}, Texts("sex", {"f"}));
        inner.name = "sex";
        m.children[1] = Indexed<int8_t>("c", {0, 0, 0}, inner);
    }));
    return faults;
}

inline std::vector<Fault> ArrayFaults()
{
    return {
        Spoilt("array_released", kStructure, "released", [](auto& s) { Drop(s.array); }),
        Spoilt("array_of_negative_length", kStructure, "length is -1",
               [](auto& s) { s.array.length = -1; }),
        Spoilt("array_of_negative_offset", kStructure, "offset -4",
               [](auto& s) { s.array.offset = -4; }),
        Spoilt("array_of_length_beyond_its_columns", kStructure, "3 rows, and the table 4",
               [](auto& s) { s.array.length = 4; }),
        Spoilt("array_of_offset_beyond_its_columns", kStructure, "3 rows, and the table 4",
               [](auto& s) { s.array.offset = 1; }),
        Spoilt("array_whose_end_overflows", kStructure, "offset",
               [](auto& s) {
                   s.array.length = 3;
                   s.array.offset = kMost;
               }),
        Spoilt("array_of_fewer_columns", kStructure, "2 columns, and the schema 3",
               [](auto& s) { s.array.n_children = 2; }),
        Spoilt("array_of_negative_columns", kStructure, "-3 columns",
               [](auto& s) { s.array.n_children = -3; }),
        Spoilt("array_without_columns", kStructure, "null",
               [](auto& s) { s.array.children = nullptr; }),
        Spoilt("array_with_null_rows", kStructure, "rows of the table itself are null",
               [](auto& s) { s.array.null_count = 1; }),
        Spoilt("array_with_too_many_nulls", kStructure, "4 nulls in 3 rows",
               [](auto& s) { s.array.null_count = 4; }),
        Spoilt("array_with_negative_nulls", kStructure, "-2 nulls",
               [](auto& s) { s.array.null_count = -2; }),
        Spoilt("column_null", kStructure, "column 'x'",
               [](auto& s) {
                   Drop(s.Array(0));
                   s.array.children[0] = nullptr;
               }),
        Spoilt("column_released", kStructure, "column 'sex'", [](auto& s) { Drop(s.Array(1)); }),
        Spoilt("column_nobody_reads_released", kStructure, "column 'group'",
               [](auto& s) { Drop(s.Array(2)); }),
        Spoilt("column_of_negative_length", kStructure, "length is -3",
               [](auto& s) { s.Array(0).length = -3; }),
        Spoilt("column_of_negative_offset", kStructure, "offset -1",
               [](auto& s) { s.Array(0).offset = -1; }),
        Spoilt("column_whose_end_overflows", kStructure, "offset",
               [](auto& s) { s.Array(0).offset = kMost; }),
        Spoilt("column_of_countless_rows", kStructure, "length",
               [](auto& s) { s.Array(0).length = kMost; }),
        Spoilt("column_too_short", kStructure, "2 rows, and the table 3",
               [](auto& s) { s.Array(0).length = 2; }),
        Spoilt("column_of_too_few_nulls", kStructure, "tells 0 nulls and has 1",
               [](auto& s) { s.Array(0).null_count = 0; }),
        Spoilt("column_of_too_many_nulls", kStructure, "tells 2 nulls and has 1",
               [](auto& s) { s.Array(0).null_count = 2; }),
        Spoilt("column_of_more_nulls_than_rows", kStructure, "9 nulls",
               [](auto& s) { s.Array(0).null_count = 9; }),
        Spoilt("column_of_negative_nulls", kStructure, "-7 nulls",
               [](auto& s) { s.Array(0).null_count = -7; }),
        Spoilt("column_of_nulls_without_validity", kStructure, "no validity",
               [](auto& s) { s.Array(0).buffers[0] = nullptr; }),
        Spoilt("column_without_buffers", kStructure, "buffers",
               [](auto& s) { s.Array(0).buffers = nullptr; }),
        Spoilt("column_of_no_buffers", kStructure, "0 buffers",
               [](auto& s) { s.Array(0).n_buffers = 0; }),
        Spoilt("column_of_negative_buffers", kStructure, "-1 buffers",
               [](auto& s) { s.Array(0).n_buffers = -1; }),
        Spoilt("column_of_three_buffers", kStructure, "3 buffers",
               [](auto& s) { s.Array(0).n_buffers = 3; }),
        Spoilt("column_without_values", kStructure, "values is null",
               [](auto& s) { s.Array(0).buffers[1] = nullptr; }),
        Spoilt("column_with_children", kStructure, "5 children",
               [](auto& s) { s.Array(0).n_children = 5; }),
        Spoilt("column_with_an_unexpected_dictionary", kStructure, "its schema none",
               [](auto& s) { s.Array(0).dictionary = s.Array(2).dictionary; }),
        Spoilt("texts_of_two_buffers", kStructure, "2 buffers",
               [](auto& s) { s.Array(1).n_buffers = 2; }),
        Spoilt("texts_without_offsets", kStructure, "values is null",
               [](auto& s) { s.Array(1).buffers[1] = nullptr; }),
        Spoilt("texts_without_bytes", kStructure, "texts is null",
               [](auto& s) { s.Array(1).buffers[2] = nullptr; }),
        Made("texts_of_negative_offsets", kStructure, "from byte -1",
             [](auto& m) {
                 m.children[1].buffers[1] = BytesOf(std::vector<int32_t>{-1, 1, 2, 3});
             }),
        Made("texts_of_falling_offsets", kStructure, "from byte 2 to 1",
             [](auto& m) {
                 m.children[1].buffers[1] = BytesOf(std::vector<int32_t>{0, 2, 1, 3});
             }),
        Made("large_texts_of_falling_offsets", kStructure, "from byte 3 to 0",
             [](auto& m) {
                 m.children[1] = Texts<int64_t>("sex", {"f", "f", "f"});
                 m.children[1].buffers[1] = BytesOf(std::vector<int64_t>{0, 3, 0, 3});
             }),
        Made("view_of_negative_size", kStructure, "-1 bytes",
             [](auto& m) { m.children[1] = View(-1, 0, 0, 64); }),
        Made("view_into_no_buffer", kStructure, "buffer 1",
             [](auto& m) { m.children[1] = View(20, 1, 0, 64); }),
        Made("view_into_a_negative_buffer", kStructure, "buffer -1",
             [](auto& m) { m.children[1] = View(20, -1, 0, 64); }),
        Made("view_from_before_its_buffer", kStructure, "beyond its buffer",
             [](auto& m) { m.children[1] = View(20, 0, -8, 64); }),
        Made("view_beyond_its_buffer", kStructure, "beyond its buffer",
             [](auto& m) { m.children[1] = View(20, 0, 45, 64); }),
        Made("view_without_sizes", kStructure, "sizes is null",
             [](auto& m) {
                 m.children[1] = View(20, 0, 0, 64);
                 m.children[1].buffers[3].reset();
             }),
        {"dictionary_missing", kStructure, "lacks its dictionary",
         [](auto& m) {
             m.children[1] = Indexed<int8_t>("c", {0, 0, 0}, Texts("sex", {"f"}));
         },
         [](auto& s) {
             Drop(*s.Array(1).dictionary);
             s.Array(1).dictionary = nullptr;
         }},
        {"dictionary_released", kStructure, "dictionary",
         [](auto& m) {
             m.children[1] = Indexed<int8_t>("c", {0, 0, 0}, Texts("sex", {"f"}));
         },
         [](auto& s) { Drop(*s.Array(1).dictionary); }},
        Made("dictionary_of_negative_length", kStructure, "length is -1",
             [](auto& m) {
                 m.children[1] = Indexed<int8_t>("c", {0, 0, 0}, Texts("sex", {"f"}));
                 m.children[1].dictionary[0].length = -1;
             }),
        Made("dictionary_of_countless_entries", kStructure, "entries",
             [](auto& m) {
                 m.children[1] = Indexed<int8_t>("c", {0, 0, 0}, Texts("sex", {"f"}));
                 m.children[1].dictionary[0].length = int64_t{1} << 40;
             }),
        Made("index_beyond_the_dictionary", kStructure, "row 2 has an index",
             [](auto& m) {
                 m.children[1] = Indexed<uint8_t>("C", {0, 1, 0}, Texts("sex", {"f"}));
             }),
        Made("index_below_the_dictionary", kStructure, "row 3 has an index",
             [](auto& m) {
                 m.children[1] = Indexed<int64_t>("l", {0, 0, -1}, Texts("sex", {"f"}));
             }),
        Made("index_far_beyond_the_dictionary", kStructure, "row 1 has an index",
             [](auto& m) {
                 m.children[1] = Indexed<uint64_t>("L", {~uint64_t{0}, 0, 0}, Texts("sex", {"f"}));
             }),
        Made("index_into_an_empty_dictionary", kStructure, "of 0 entries",
             [](auto& m) {
                 m.children[1] = Indexed<int8_t>("c", {0, 0, 0}, Texts("sex", {}));
             }),
        Spoilt("kept_of_negative_children", kStructure, "-1 children",
               [](auto& s) { s.Array(2).n_children = -1; }),
        Spoilt("kept_with_a_null_child", kStructure, "pointer to an array is null",
               [](auto& s) {
                   static ArrowArray* children[] = {nullptr};
                   s.Array(2).n_children = 1;
                   s.Array(2).children = children;
               }),
        Made("null_of_two_buffers", kStructure, "2 buffers",
             [](auto& m) {
                 m.children[0] = MadeArray{.name = "x", .format = "n"};
                 m.children[0].length = 3;
                 m.children[0].nullCount = 3;
                 m.children[0].buffers = {Bytes(8), Bytes(8)};
             }),
        Spoilt("kept_too_short", kStructure, "1 rows, and the table 3",
               [](auto& s) { s.Array(2).length = 1; }),
        Spoilt("kept_with_a_released_dictionary", kStructure, "released",
               [](auto& s) { Drop(*s.Array(2).dictionary); }),
        Spoilt("kept_without_buffers", kStructure, "buffers",
               [](auto& s) { s.Array(2).buffers = nullptr; }),
    };
}

inline std::vector<Fault> AllFaults()
{
    std::vector<Fault> all = SchemaFaults();
    for (const std::vector<Fault>& more : {TypeFaults(), ArrayFaults()}) {
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

/// The structures of Sound() with one fault.
inline Structures SpoiltBy(const Fault& fault)
{
    MadeArray made = Sound();
    fault.make(made);
    Structures structures{ExportSchema(made), ExportArray(made)};
    fault.spoil(structures);
    return structures;
}

/// The column that has to be kept for a fault to be met; empty for none.
inline std::string KeptFor(const Fault& fault)
{
    if (fault.name == "kept_too_deep") return "deep";
    return fault.name.starts_with("kept") ? "group" : "";
}

}  // namespace velscore_tests

#endif
