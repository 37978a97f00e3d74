#include "cli/sourcelines.h"

#include <string>

#include <gtest/gtest.h>

namespace MCVelscore_850 {
namespace {

struct Sample {
    const char* about;
    std::string text;
    size_t line;
    size_t column;
    const char* attribute;
    std::string shown;
    std::string marks;
};

TEST(SourceLines, MarkThePlaceAndTheAttribute)
{
    const Sample kSamples[] = {
        {"the element alone", "<a>\n  <b c='1'/>\n</a>", 2, 3, "", "  <b c='1'/>", "  ^"},
        {"an attribute to its last quote", "<b c='1' d = \"2\" e='3'/>", 1, 1, "d",
         "<b c='1' d = \"2\" e='3'/>", "^        ~~~~~~~"},
        {"not a longer name, nor a text that looks alike", "<b dd='1' c=' d=' d='2'/>", 1, 1, "d",
         "<b dd='1' c=' d=' d='2'/>", "^                 ~~~~~"},
        {"not the attribute of another element", "<b><c d='1'/></b>", 1, 1, "d",
         "<b><c d='1'/></b>", "^"},
        {"an attribute on another line stays unmarked", "<b\n d='1'/>", 1, 1, "d", "<b", "^"},
        {"a text that goes on in the next line", "<b d='1\n2'/>", 1, 1, "d", "<b d='1", "^  ~~~~"},
        {"a tabulator counts as one character", "\t<b\td='1'/>", 1, 2, "d", " <b d='1'/>",
         " ^  ~~~~~"},
        {"columns are characters, not bytes", "\xC3\xA9\xE2\x82\xAC<b d='\xC3\xA9'/>", 1, 3, "d",
         "\xC3\xA9\xE2\x82\xAC<b d='\xC3\xA9'/>", "  ^  ~~~~~"},
        {"what a terminal would obey is written out", "\x1B[31m<b/>\xC2\x9B", 1, 6, "",
         "\\u001B[31m<b/>\\u009B", "          ^"},
        {"what turns the line's direction too", "<b d='\xE2\x80\xAE' c=''/>", 1, 1, "c",
         "<b d='\\u202E' c=''/>", "^             ~~~~"},
        {"all three line ends", "1\r\n2\r3\n<b/>\r\n", 4, 1, "", "<b/>", "^"},
        {"a byte-order mark is no character", "\xEF\xBB\xBF<b/>", 1, 1, "", "<b/>", "^"},
        {"no such line", "<b/>", 2, 1, "", "", ""},
        {"no such column", "<b/>", 1, 5, "", "", ""},
        {"no place", "<b/>", 0, 0, "", "", ""},
    };
    for (const Sample& sample : kSamples) {
        SCOPED_TRACE(sample.about);
        const SourceLines::Excerpt excerpt =
            SourceLines(sample.text).At(sample.line, sample.column, sample.attribute);
        EXPECT_EQ(excerpt.line, sample.shown);
        EXPECT_EQ(excerpt.marks, sample.marks);
    }
}

// 100 characters at most, from 30 before the place.
TEST(SourceLines, CutLongLinesAroundThePlace)
{
    const std::string text = std::string(500, 'x') + "<b d='1'/>" + std::string(500, 'y');
    const SourceLines::Excerpt middle = SourceLines(text).At(1, 501, "d");
    EXPECT_EQ(middle.line,
              "..." + std::string(30, 'x') + "<b d='1'/>" + std::string(60, 'y') + "...");
    EXPECT_EQ(middle.marks, std::string(33, ' ') + "^  ~~~~~");

    const SourceLines::Excerpt first = SourceLines(text).At(1, 11, "");
    EXPECT_EQ(first.line, std::string(100, 'x') + "...");
    EXPECT_EQ(first.marks, std::string(10, ' ') + "^");

    const SourceLines::Excerpt last = SourceLines(text).At(1, 1010, "");
    EXPECT_EQ(last.line, "..." + std::string(31, 'y'));

    // An attribute too far behind the place is shown with 30 characters before it.
    const std::string wide = "<b long='" + std::string(200, 'z') + "' d='1'/>";
    const SourceLines::Excerpt far = SourceLines(wide).At(1, 1, "d");
    EXPECT_EQ(far.line, "..." + std::string(28, 'z') + "' d='1'/>");
    EXPECT_EQ(far.marks, std::string(33, ' ') + "~~~~~");

    const std::string fits(100, 'x');
    EXPECT_EQ(SourceLines(fits).At(1, 90, "").line, fits);
}

}  // namespace
}  // namespace MCVelscore_850
