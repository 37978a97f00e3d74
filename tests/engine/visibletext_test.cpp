#include "engine/messages/visibletext.h"

#include <string>

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

}  // namespace
}  // namespace MCVelscore_850
