#include "cli/texttable.h"

#include <gtest/gtest.h>

namespace MCVelscore_850 {
namespace {

struct Shown {
    const char* about;
    std::vector<std::vector<std::string>> rows;
    const char* text;
};

TEST(TextTable, AlignsTheFirstColumnToTheLeftAndTheOthersToTheRight)
{
    const Shown kShown[] = {
        {"no rows", {}, ""},
        {"one column", {{"a"}, {"bcd"}}, "  a\n  bcd\n"},
        {"two blanks between", {{"term", "value"}, {"x", "3"}}, "  term  value\n  x         3\n"},
        {"an empty column is left out", {{"a", "", "b"}, {"c", "", "d"}}, "  a  b\n  c  d\n"},
        {"but not one with a text", {{"a", "", "b"}, {"c", "e", "d"}}, "  a     b\n  c  e  d\n"},
        {"no blanks at the end", {{"a", "b"}, {"c", ""}}, "  a  b\n  c\n"},
        {"rows may be short", {{"a", "b", "c"}, {"d"}}, "  a  b  c\n  d\n"},
        {"or long", {{"a"}, {"b", "c"}}, "  a\n  b  c\n"},
        {"an empty first column too", {{"", "a"}, {"", "bc"}}, "     a\n    bc\n"},
        {"a row of nothing", {{""}}, "\n"},
        {"widths are of characters, not bytes",
         {{"\xC3\xA9\xE2\x82\xAC", "1"}, {"abc", "22"}},
         "  \xC3\xA9\xE2\x82\xAC    1\n  abc  22\n"},
    };
    for (const Shown& shown : kShown) EXPECT_EQ(AlignedText(shown.rows), shown.text) << shown.about;
}

}  // namespace
}  // namespace MCVelscore_850
