#include "engine/messages/visibletext.h"

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "engine/reports/jsontext.h"

namespace MCVelscore_850 {
namespace {

// UTF-8 of the characters named: U+202E turns the direction, U+E0041 is a tag without a glyph.
const std::string kHiddenTexts[][2] = {
    {"a\xE2\x80\xAE"
     "b",
     "\"a\\u202eb\""},
    {"\xC2\x9B", "\"\\u009b\""},
    {"\x7F", "\"\\u007f\""},
    {"\x1B[31m", "\"\\u001b[31m\""},
    {"\xF3\xA0\x81\x81", "\"\\udb40\\udc41\""},
    {"line\nbreak", "\"line\\nbreak\""},
    {"gr\xC3\xBC\xC3\x9F", "\"gr\xC3\xBC\xC3\x9F\""},
};

TEST(JsonText, EscapesWhatATerminalWouldObeyAndSaysTheSame)
{
    for (const auto& [text, written] : kHiddenTexts) {
        const std::string json = JsonText(text);
        EXPECT_EQ(json, written + "\n");
        EXPECT_EQ(nlohmann::json::parse(json), text);
    }
}

TEST(JsonText, KeepsTheLinesOfAReport)
{
    EXPECT_EQ(JsonText({{"a", 1}, {"b", "c"}}), "{\n  \"a\": 1,\n  \"b\": \"c\"\n}\n");
}

// As nlohmann's library, which reads reports elsewhere, writes the same.
TEST(JsonText, IsWrittenAsTheLibraryWritesIt)
{
    using Other = nlohmann::ordered_json;
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    const std::vector<std::vector<double>> rows{{1.0, -0.0, 1e-5, 1e300}, {}, {0.1 + 0.2, kNaN}};
    const std::vector<std::string> texts{"", "a\"b\\", "\xC3\x28 no UTF-8"};

    JsonValue json{{"truth", true}, {"none", nullptr}, {"whole", -3}, {"large", ~size_t{0}}};
    json["rows"] = rows;
    json["texts"] = texts;
    json["array"] = JsonValue::Array();
    json["object"] = JsonValue::Object();
    json["truth"] = false;
    json["array"].Add({{"member", JsonValue::Array()}});
    json["array"].Add("text");

    Other other{{"truth", true}, {"none", nullptr}, {"whole", -3}, {"large", ~size_t{0}}};
    other["rows"] = rows;
    other["texts"] = texts;
    other["array"] = Other::array();
    other["object"] = Other::object();
    other["truth"] = false;
    other["array"].push_back(Other::object({{"member", Other::array()}}));
    other["array"].push_back("text");
    EXPECT_EQ(JsonText(json), other.dump(2, ' ', false, Other::error_handler_t::replace) + "\n");
}

}  // namespace
}  // namespace MCVelscore_850
