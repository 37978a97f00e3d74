#ifndef VELSCORE_TESTS_CAPI_ARROWTYPES_H
#define VELSCORE_TESTS_CAPI_ARROWTYPES_H

#include <ostream>
#include <string>
#include <vector>

#include "tests/capi/madetables.h"
#include "tests/system/testmodel.h"

// Columns of every type of Arrow that is taken, with what TestModel's y = 1 + 2 x + 10 [sex = m]
// makes of them.
namespace velscore_tests {

struct TypeCase {
    std::string name;
    MadeArray column;
    std::vector<double> predictions;
};

inline std::ostream& operator<<(std::ostream& out, const TypeCase& each)
{
    return out << each.name;
}

inline MadeArray Truths(const std::string& name, const std::vector<bool>& truths,
                        const std::vector<bool>& present)
{
    MadeArray made{.name = name, .format = "b"};
    made.length = static_cast<int64_t>(truths.size());
    made.nullCount = -1;
    made.buffers = {BitsOf(present), BitsOf(truths)};
    return made;
}

// Whole numbers of so many bytes, the lowest first, negative ones in two's complement.
inline MadeArray Decimals(const std::string& name, const std::string& format, size_t bytes,
                          const std::vector<int64_t>& values)
{
    MadeArray made{.name = name, .format = format};
    made.length = static_cast<int64_t>(values.size());
    Bytes all;
    for (const int64_t value : values) {
        Bytes one = BytesOf(std::vector<int64_t>{value});
        one.resize(bytes, value < 0 ? std::byte{0xFF} : std::byte{0});
        all.insert(all.end(), one.begin(), one.end());
    }
    made.buffers = {std::nullopt, all};
    return made;
}

inline MadeArray Nulls(const std::string& name, int64_t rows)
{
    MadeArray made{.name = name, .format = "n"};
    made.length = rows;
    made.nullCount = rows;
    return made;
}

// As some producers have them.
inline MadeArray NullsWithBits(const std::string& name, int64_t rows)
{
    MadeArray made = Nulls(name, rows);
    made.buffers = {BytesOf(std::vector<uint8_t>{0})};
    return made;
}

// Views: short texts within, long ones in a buffer of their own.
inline MadeArray Views(const std::string& name, const std::vector<std::string>& texts)
{
    MadeArray made{.name = name, .format = "vu"};
    made.length = static_cast<int64_t>(texts.size());
    Bytes views;
    std::string far;
    for (const std::string& text : texts) {
        Bytes view(16);
        const auto size = static_cast<int32_t>(text.size());
        std::memcpy(view.data(), &size, sizeof size);
        if (size <= 12) {
            std::memcpy(view.data() + 4, text.data(), text.size());
        } else {
            const int32_t buffer = 0;
            const auto begin = static_cast<int32_t>(far.size());
            std::memcpy(view.data() + 4, text.data(), 4);
            std::memcpy(view.data() + 8, &buffer, sizeof buffer);
            std::memcpy(view.data() + 12, &begin, sizeof begin);
            far += text;
        }
        views.insert(views.end(), view.begin(), view.end());
    }
    made.buffers = {std::nullopt, views, BytesOf(std::vector<char>(far.begin(), far.end())),
                    BytesOf(std::vector<int64_t>{static_cast<int64_t>(far.size())})};
    return made;
}

inline std::vector<TypeCase> NumberCases()
{
    constexpr int64_t kLarge = (int64_t{1} << 53) + 1;
    return {
        {"int8", Column<int8_t>("x", "c", {1, -2, {}}), {3, -3, kNull}},
        {"uint8", Column<uint8_t>("x", "C", {1, 200, {}}), {3, 401, kNull}},
        {"int16", Column<int16_t>("x", "s", {1, -300}), {3, -599}},
        {"uint16", Column<uint16_t>("x", "S", {1, 60000}), {3, 120001}},
        {"int32", Column<int32_t>("x", "i", {1, -70000}), {3, -139999}},
        {"uint32", Column<uint32_t>("x", "I", {1, 4000000000U}), {3, 8000000001.0}},
        {"int64", Column<int64_t>("x", "l", {1, -5, {}}), {3, -9, kNull}},
        // The texts of both read as 2^53 and 2^53 + 4, the doubles beside them.
        {"int64_large",
         Column<int64_t>("x", "l", {1, kLarge, kLarge + 2}),
         {3, 1 + 2 * 9007199254740992.0, 1 + 2 * 9007199254740996.0}},
        {"uint64_large", Column<uint64_t>("x", "L", {~uint64_t{0}}), {1 + 2 * 0x1p64}},
        {"float32", Column<float>("x", "f", {1.5F, {}}), {4, kNull}},
        {"float64", Numbers("x", {1.5, {}, -2.0}), {4, kNull, -3}},
        {"bool", Truths("x", {true, false, true}, {true, true, false}), {3, 1, kNull}},
        {"utf8", Texts("x", {"1.5", {}, "NA", ""}), {4, kNull, kNull, kNull}},
        {"large_utf8", Texts<int64_t>("x", {"1.5", {}}), {4, kNull}},
        {"utf8_view", Views("x", {"1.5", "0.000000000000000000001"}), {4, 1}},
        {"null", Nulls("x", 2), {kNull, kNull}},
        {"null_with_validity_bits", NullsWithBits("x", 2), {kNull, kNull}},
        {"decimal128", Decimals("x", "d:10,2", 16, {150, -25}), {4, 0.5}},
        {"decimal128_of_negative_scale", Decimals("x", "d:10,-2", 16, {3}), {601}},
        {"decimal256", Decimals("x", "d:40,1,256", 32, {15, -5}), {4, 0}},
        // 9007199254740993.5 is read as a text is: to the nearest double, ...994.
        {"decimal128_long",
         Decimals("x", "d:20,1", 16, {90071992547409935}),
         {1 + 2 * 9007199254740994.0}},
        {"dictionary_of_numbers",
         Indexed<int8_t>("c", {1, 0, {}, 2}, Numbers("x", {1.5, 7.0, {}})),
         {15, 4, kNull, kNull}},
        {"dictionary_of_utf8", Indexed<uint64_t>("L", {1, 0}, Texts("x", {"1.5", "7"})), {15, 4}},
        {"dictionary_of_large_integers",
         Indexed<int32_t>("i", {1, 0}, Column<int64_t>("x", "l", {kLarge, 2})),
         {5, 1 + 2 * 9007199254740992.0}},
    };
}

// The reference category is "f"; every other text adds 10.
inline std::string TextModel(const std::string& text)
{
    MCVelscore_850::TestModel model;
    model.sexField =
        "<DataField name=\"sex\" optype=\"categorical\" dataType=\"string\">"
        "<Value value=\"f\"/><Value value=\"" +
        text + "\"/></DataField>";
    std::string document = model.Text();
    const std::string cell = "value=\"m\"";
    return document.replace(document.find(cell), cell.size(), "value=\"" + text + "\"");
}

struct TextCase {
    std::string name;
    std::string category;
    MadeArray column;
};

inline std::ostream& operator<<(std::ostream& out, const TextCase& each)
{
    return out << each.name;
}

inline std::vector<TextCase> TextCases()
{
    return {
        {"int8", "1", Column<int8_t>("sex", "c", {1})},
        {"float_without_a_fraction", "1", Numbers("sex", {1.0})},
        {"float", "1.5", Numbers("sex", {1.5})},
        {"uint64", "18446744073709551615", Column<uint64_t>("sex", "L", {~uint64_t{0}})},
        {"int64_large", "-9007199254740993", Column<int64_t>("sex", "l", {-9007199254740993})},
        {"bool", "true", Truths("sex", {true}, {true})},
        {"utf8", "m", Texts("sex", {"m"})},
        {"utf8_view", "a category of many letters", Views("sex", {"a category of many letters"})},
        {"dictionary", "m", Indexed<int8_t>("c", {1}, Texts("sex", {"f", "m"}))},
        {"dictionary_of_truths", "true",
         Indexed<int8_t>("c", {0}, Truths("sex", {true, false}, {true, true}))},
        {"decimal", "1.5", Decimals("sex", "d:10,2", 16, {150})},
        {"decimal_without_a_fraction", "2", Decimals("sex", "d:10,2", 16, {200})},
        // 2 * 10^18 * 10^20
        {"decimal_long", "200000000000000000000000000000000000000",
         Decimals("sex", "d:38,-20", 16, {2000000000000000000})},
        {"date32", "2026-11-21", Column<int32_t>("sex", "tdD", {20778})},
        {"date32_before_1970", "1969-12-31", Column<int32_t>("sex", "tdD", {-1})},
        {"date64", "2026-11-21", Column<int64_t>("sex", "tdm", {20778 * 86400000LL})},
        {"time32_seconds", "23:59:59", Column<int32_t>("sex", "tts", {86399})},
        {"time32_milliseconds", "00:00:01.5", Column<int32_t>("sex", "ttm", {1500})},
        {"time64_nanoseconds", "00:00:00.000000001", Column<int64_t>("sex", "ttn", {1})},
        {"timestamp_seconds", "1970-01-02T00:00:01", Column<int64_t>("sex", "tss:", {86401})},
        {"timestamp_before_1970", "1969-12-31T23:59:59.75", Column<int64_t>("sex", "tsm:", {-250})},
        {"timestamp_of_a_zone", "1970-01-01T00:00:00Z",
         Column<int64_t>("sex", "tsu:Europe/Oslo", {0})},
    };
}

}  // namespace velscore_tests

#endif
