#include "engine/tables/utf8.h"

#include <gtest/gtest.h>

namespace MCVelscore_850 {
namespace {

using namespace std::string_literals;

// The bounds of the table of well-formed byte sequences in the Unicode standard.
const std::string kSound[] = {"",
                              "a",
                              "\x7F",
                              "\xC2\x80",
                              "\xDF\xBF",
                              "\xE0\xA0\x80",
                              "\xEC\xBF\xBF",
                              "\xED\x80\x80",
                              "\xED\x9F\xBF",
                              "\xEE\x80\x80",
                              "\xEF\xBF\xBF",
                              "\xF0\x90\x80\x80",
                              "\xF4\x8F\xBF\xBF",
                              "\0"s};

const std::string kBad[] = {"\x80",              // goes on with nothing
                            "\xC0\x80",          // longer than it need be
                            "\xC1\xBF",          //
                            "\xE0\x9F\xBF",      //
                            "\xF0\x8F\xBF\xBF",  //
                            "\xED\xA0\x80",      // a surrogate
                            "\xF4\x90\x80\x80",  // beyond the last character
                            "\xF5\x80\x80\x80",  //
                            "\xFF",              //
                            "\xC2",              // cut
                            "\xE2\x82",          //
                            "\xF0\x9F\x98",      //
                            "\xE2\x28\xA1",      // something else in the midst
                            "\xF0\x9F\x28\x80"};

// Eight bytes are passed over at a time, so the place counts.
TEST(Utf8, IsToldAtAnyPlace)
{
    for (size_t before = 0; before <= 17; ++before) {
        for (size_t after : {size_t{0}, size_t{1}, size_t{9}}) {
            const std::string front(before, 'x');
            const std::string back(after, 'y');
            for (const std::string& text : kSound) {
                EXPECT_TRUE(IsUtf8(front + text + back)) << before << " " << AsUtf8(text);
            }
            for (const std::string& text : kBad) {
                EXPECT_FALSE(IsUtf8(front + text + back)) << before << " " << AsUtf8(text);
            }
        }
    }
}

TEST(Utf8, ShowsBytesThatAreNoneAndNul)
{
    EXPECT_EQ(AsUtf8("caf\xC3\xA9"), "caf\xC3\xA9");
    EXPECT_EQ(AsUtf8("caf\xE9, \xE9t\xE9"), "caf\\xE9, \\xE9t\\xE9");
    EXPECT_EQ(AsUtf8("a\0b"s), "a\\x00b");
    EXPECT_EQ(AsUtf8("\xE2\x82z"), "\\xE2\\x82z");
    EXPECT_EQ(AsUtf8("\xED\xA0\x80"), "\\xED\\xA0\\x80");
    EXPECT_EQ(AsUtf8("a\tb\x7F"), "a\tb\x7F");
    for (const std::string& text : kBad) {
        EXPECT_TRUE(IsUtf8(AsUtf8(text)));
    }
}

}  // namespace
}  // namespace MCVelscore_850
