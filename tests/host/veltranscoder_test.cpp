#include "host/documents/veltranscoder.h"

#include <gtest/gtest.h>

#include "dom.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {
namespace {

using Text16 = std::basic_string<XMLCh>;

// A word with letters of 1, 2, 3 and 4 bytes in UTF-8: a, e acute, euro sign, G clef (U+1D11E).
const Text16 kWord16 = {u'a', u'\u00E9', u'\u20AC', XMLCh(0xD834), XMLCh(0xDD1E)};
constexpr char kWord8[] = "a\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E";
constexpr char kReplacement8[] = "\xEF\xBF\xBD";

class VelTranscoderTest : public testing::Test {
protected:
    void SetUp() override { StartXml(); }
};

TEST_F(VelTranscoderTest, EmptyNameAndUtf8MeanUtf8)
{
    for (const char* name : {"", "UTF-8", "utf-8"}) {
        EXPECT_EQ(VelTranscoder(name).transcodeTo(kWord16.c_str()), kWord8) << name;
    }
}

TEST_F(VelTranscoderTest, NullIsEmpty)
{
    EXPECT_EQ(VelTranscoder("").transcodeTo(nullptr), "");
    EXPECT_EQ(VelTranscoder("ISO-8859-1").transcodeTo(nullptr), "");
    EXPECT_EQ(Utf8FromXml(nullptr), "");
}

TEST_F(VelTranscoderTest, Latin1HasOneByteALetter)
{
    const Text16 text = {u'a', u'\u00E9', u'\u00FF'};
    EXPECT_EQ(VelTranscoder("ISO-8859-1").transcodeTo(text.c_str()), "a\xE9\xFF");
}

TEST_F(VelTranscoderTest, LetterThatTheEncodingLacksIsReplacedAndTheRestStays)
{
    const Text16 text = {u'a', u'\u20AC', u'b'};
    const std::string narrow = VelTranscoder("ISO-8859-1").transcodeTo(text.c_str());
    ASSERT_EQ(narrow.size(), 3u);
    EXPECT_EQ(narrow.front(), 'a');
    EXPECT_EQ(narrow.back(), 'b');
    EXPECT_NE(narrow[1], '\x80');  // where another encoding has the euro sign
}

TEST_F(VelTranscoderTest, LongTextsAreWhole)
{
    const Text16 text(100000, u'\u00E9');
    EXPECT_EQ(VelTranscoder("ISO-8859-1").transcodeTo(text.c_str()), std::string(100000, '\xE9'));
}

TEST_F(VelTranscoderTest, UnknownEncodingIsRefused)
{
    EXPECT_EQ(RefusalOf([] { VelTranscoder("no-such-encoding"); }),
              (Refusal{kUnknownEncoding, {"no-such-encoding"}}));
}

TEST(Utf8FromXml, LoneSurrogatesAreReplaced)
{
    const struct {
        Text16 text;
        std::string expected;
    } kRows[] = {
        {{XMLCh(0xD834)}, kReplacement8},
        {{XMLCh(0xDD1E)}, kReplacement8},
        {{XMLCh(0xD834), u'a'}, std::string(kReplacement8) + "a"},
        {{XMLCh(0xDD1E), XMLCh(0xD834)}, std::string(kReplacement8) + kReplacement8},
        {{XMLCh(0xD834), XMLCh(0xD834), XMLCh(0xDD1E)},
         std::string(kReplacement8) + "\xF0\x9D\x84\x9E"},
    };
    for (const auto& row : kRows) EXPECT_EQ(Utf8FromXml(row.text.c_str()), row.expected);
}

TEST(XmlFromUtf8, IsTheWayBack)
{
    EXPECT_EQ(XmlFromUtf8(kWord8), kWord16);
    EXPECT_EQ(XmlFromUtf8(""), Text16());
    EXPECT_EQ(XmlFromUtf8("\xF4\x8F\xBF\xBF"), (Text16{XMLCh(0xDBFF), XMLCh(0xDFFF)}));  // the last
}

TEST(XmlFromUtf8, BytesThatAreNoUtf8AreReplacedOneByOne)
{
    const XMLCh bad = 0xFFFD;
    const struct {
        std::string bytes;
        Text16 expected;
    } kRows[] = {
        {"\xE9", {bad}},                // a letter of Latin 1
        {"a\x80z", {u'a', bad, u'z'}},  // a middle without a start
        {"\xC3", {bad}},                // cut short
        {"\xE2\x82", {bad, bad}},
        {"\xC3z", {bad, u'z'}},
        {"\xC0\xAF", {bad, bad}},  // "/" written too long
        {"\xE0\x80\xAF", {bad, bad, bad}},
        {"\xF0\x80\x80\xAF", {bad, bad, bad, bad}},
        {"\xED\xA0\xB4", {bad, bad, bad}},           // half of a pair
        {"\xF4\x90\x80\x80", {bad, bad, bad, bad}},  // beyond the last character
        {"\xFF", {bad}},
    };
    for (const auto& row : kRows) EXPECT_EQ(XmlFromUtf8(row.bytes), row.expected);
}

}  // namespace
}  // namespace MCVelscore_850
