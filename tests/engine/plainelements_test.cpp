#include "engine/documents/plainelements.h"

#include <string>
#include <utility>
#include <vector>

#include <expat.h>
#include <gtest/gtest.h>

#include "engine/failure.h"
#include "host/messages.h"

namespace MCVelscore_850 {
namespace {

using LineColumn = std::pair<uint32_t, uint32_t>;

std::vector<LineColumn> Pairs(const std::vector<ElementPlace>& places)
{
    std::vector<LineColumn> pairs;
    for (const ElementPlace& place : places) pairs.emplace_back(place.line, place.column);
    return pairs;
}

size_t PlainBytes(const std::string& text, const DocumentLimits& limits = {})
{
    std::vector<ElementPlace> places;
    return ReadPlainElements(text, {1, 1}, limits, places).bytes;
}

TEST(PlainElements, AreReadWithTheBlanksBetweenThem)
{
    for (const std::string text :
         {"", " \t\n", "<a/>", "<a />", "<a b=\"\"/>", "<a b='1' c=\"2\" />",
          "<a  b='x'  c='y'  />", "<a_1.x-y b.c='it is \"so\"'/>", "<a b=\"it's\"/>", "<a b='>'/>",
          "<a b='a;b]]>/'/>", "<a/>\r\n<b/>\n\n\t<c/>"}) {
        EXPECT_EQ(PlainBytes(text), text.size()) << text;
    }
}

TEST(PlainElements, EndBeforeAnythingElse)
{
    // some of it well-formed, some not: that is for the parser to say
    for (const std::string other : {"<a>",
                                    "</a>",
                                    "<a></a>",
                                    "text",
                                    "&lt;",
                                    "<!-- -->",
                                    "<?p?>",
                                    "<![CDATA[]]>",
                                    "<!DOCTYPE a>",
                                    "<p:a/>",
                                    "<a p:b='1'/>",
                                    "<\xc3\xa9/>",
                                    "<a b='\xc3\xa9'/>",
                                    "<a b='&lt;'/>",
                                    "<a b='<'/>",
                                    "<a b='\t'/>",
                                    "<a b='\n'/>",
                                    "<a\nb='1'/>",
                                    "<a b ='1'/>",
                                    "<a b= '1'/>",
                                    "<a b='1'c='2'/>",
                                    "<a b='1' b='2'/>",
                                    "<a b/>",
                                    "<a b=1/>",
                                    "<a b='1/>",
                                    "<1a/>",
                                    "<-a/>",
                                    "< a/>",
                                    "<a/ >",
                                    "<a//>",
                                    "<a",
                                    "<a b='1'",
                                    "<a b='1'/",
                                    "<",
                                    "\r",
                                    "\rx",
                                    "\x01",
                                    "<a b='\x7f'/>",
                                    "<a b='\x01'/>"}) {
        EXPECT_EQ(PlainBytes(other), 0u) << other;
        EXPECT_EQ(PlainBytes("<x/> " + other), 5u) << other;
    }
    EXPECT_EQ(PlainBytes(std::string("<a\0/>", 5)), 0u);
}

TEST(PlainElements, EndBeforeAnElementBeyondALimit)
{
    DocumentLimits limits;
    limits.attributes = 1;
    EXPECT_EQ(PlainBytes("<a b='1'/><a b='1' c='2'/>", limits), 10u);
    limits = {};
    limits.tokenBytes = 10;
    EXPECT_EQ(PlainBytes("<a b='1'/><a b='12'/>", limits), 10u);
    limits = {};
    limits.elements = 2;
    EXPECT_EQ(PlainBytes("<a/><b/><c/>", limits), 8u);
}

TEST(PlainElements, HaveTheirPlaces)
{
    std::vector<ElementPlace> places;
    const PlainRun run = ReadPlainElements(" <a/>\n <b/><c/>\r\n<d/> x", {7, 5}, {}, places);
    EXPECT_EQ(Pairs(places), (std::vector<LineColumn>{{7, 6}, {8, 2}, {8, 6}, {9, 1}}));
    EXPECT_EQ(run.bytes, 22u);
    EXPECT_EQ((LineColumn{run.end.line, run.end.column}), (LineColumn{9, 6}));
}

// What the parser alone says of a document: accepted or not, the places of the elements, and the
// place of the fault.
struct Verdict {
    bool accepted = false;
    std::vector<LineColumn> places;
    std::string fault;

    bool operator==(const Verdict&) const = default;
};

Verdict OfParser(const std::string& bytes)
{
    struct State {
        XML_Parser parser;
        Verdict verdict;
    } state{XML_ParserCreate(nullptr), {}};
    XML_SetUserData(state.parser, &state);
    XML_SetStartElementHandler(state.parser, [](void* self, const XML_Char*, const XML_Char**) {
        State& s = *static_cast<State*>(self);
        s.verdict.places.emplace_back(XML_GetCurrentLineNumber(s.parser),
                                      XML_GetCurrentColumnNumber(s.parser) + 1);
    });
    state.verdict.accepted =
        XML_Parse(state.parser, bytes.data(), static_cast<int>(bytes.size()), 1) == XML_STATUS_OK;
    if (!state.verdict.accepted) {
        state.verdict.fault = std::to_string(XML_GetCurrentLineNumber(state.parser)) + ":" +
                              std::to_string(XML_GetCurrentColumnNumber(state.parser) + 1);
        state.verdict.places.clear();
    }
    XML_ParserFree(state.parser);
    return state.verdict;
}

Verdict OfGuard(const std::string& bytes, size_t piece)
{
    Verdict verdict;
    DocumentGuard guard("m");
    try {
        for (size_t at = 0; at < bytes.size(); at += piece) {
            guard.Feed(std::string_view(bytes).substr(at, piece));
        }
        guard.Finish();
        verdict.accepted = true;
        verdict.places = Pairs(guard.Places());
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), kNotWellFormed) << failure.what() << "\n" << bytes;
        const std::string text = failure.what();  // "m:line:column: ..."
        verdict.fault = text.substr(2, text.find(": ") - 2);
    }
    return verdict;
}

// Plain elements beside everything that isn't one.
const std::string kMixed =
    "<?xml version=\"1.0\"?>\n<r>\n <a b='1'/>\n <a b=\"2\" c='>'/><d>t\xc3\xa9xt</d>\r\n"
    " <!-- <a b='3'/> --> <a/><![CDATA[<a/>\n<a/>]]><a/>\n"
    " <e><f/><g x='&amp;'/> <h/>]]&gt;</e><i\n j='1'/> <k/> <l/>\n<?p <a/>\n?><m/>\n</r>\n";

TEST(PlainElements, AreTakenByTheGuardAsByTheParser)
{
    const Verdict expected = OfParser(kMixed);
    ASSERT_TRUE(expected.accepted);
    for (size_t piece = 1; piece <= kMixed.size(); ++piece) {
        EXPECT_EQ(OfGuard(kMixed, piece), expected) << "pieces of " << piece;
    }
}

TEST(PlainElements, SpoiledAnywhereAreRefusedByTheGuardAsByTheParser)
{
    const auto compare = [](const std::string& spoiled) {
        const Verdict expected = OfParser(spoiled);
        for (const size_t piece : {size_t{1}, size_t{7}, size_t{1000}}) {
            EXPECT_EQ(OfGuard(spoiled, piece), expected) << "pieces of " << piece << "\n"
                                                         << spoiled;
        }
    };
    // the declaration stays: another version or encoding is not the question here
    for (size_t at = kMixed.find("<r>"); at < kMixed.size(); ++at) {
        compare(kMixed.substr(0, at));
        compare(kMixed.substr(0, at) + kMixed.substr(at + 1));
        for (const char c :
             {'<', '>', '&', '"', '\'', '/', '=', '!', '?', ']', ' ', '\n', 'x', '\xff', '\x01'}) {
            std::string replaced = kMixed;
            replaced[at] = c;
            compare(replaced);
            compare(kMixed.substr(0, at) + c + kMixed.substr(at));
        }
        if (testing::Test::HasFailure()) return;  // one document says it
    }
}

TEST(PlainElements, InALongDocumentKeepTheirPlaces)
{
    // over several chunks, so that runs end within elements, and with tags that are not plain
    std::string text = "<r>\n";
    for (int i = 0; i < 3000; ++i) {
        text += "  <PCovCell pRow=\"p" + std::to_string(i) + "\" value='" + std::to_string(i * 7) +
                "'/>\n";
        if (i % 700 == 5) text += "<s>\xc3\xa9 <t u='\xc3\xa9'/></s> <v/>";
    }
    text += "</r>";
    const Verdict expected = OfParser(text);
    ASSERT_TRUE(expected.accepted);
    for (const size_t piece : {size_t{100}, size_t{4096}, text.size()}) {
        EXPECT_EQ(OfGuard(text, piece), expected) << "pieces of " << piece;
    }
    // a fault far in
    text.replace(text.size() - 40, 1, "<");
    EXPECT_FALSE(OfParser(text).accepted);
    EXPECT_EQ(OfGuard(text, 1000), OfParser(text));
}

TEST(PlainElements, OfWideCharactersAreLeftToTheParser)
{
    // two characters of two bytes each, U+3C61 and U+2F3E, whose bytes read as "<a/>"
    std::string wide = "\xfe\xff";
    for (const char c : std::string("<r>")) wide.append({'\0', c});
    wide += "<a/>";
    for (const char c : std::string("</r>")) wide.append({'\0', c});
    for (const size_t piece : {size_t{1}, size_t{2}, size_t{8}, size_t{100}}) {  // 8: up to "<r>"
        EXPECT_EQ(OfGuard(wide, piece), OfParser(wide));
        EXPECT_EQ(OfGuard(wide, piece).places.size(), 1u);
    }
}

TEST(PlainElements, CountForTheLimitsOfTheGuard)
{
    // byte by byte every element is read as a plain one that can be
    const auto codeOf = [](const std::string& text, const DocumentLimits& limits) {
        try {
            DocumentGuard guard("m", limits);
            for (const char& byte : text) guard.Feed({&byte, 1});
            guard.Finish();
        } catch (const Failure& failure) {
            return failure.Code();
        }
        return 0;
    };
    DocumentLimits limits;
    limits.depth = 2;
    EXPECT_EQ(codeOf("<a><b/><c/></a>", limits), 0);
    EXPECT_EQ(codeOf("<a><b/><c><d/></c></a>", limits), kTooDeep);
    limits = {};
    limits.attributes = 1;
    EXPECT_EQ(codeOf("<a><b c='1'/><b c='1' d='2'/></a>", limits), kTooManyAttributes);
    limits = {};
    limits.elements = 4;
    EXPECT_EQ(codeOf("<a><b/><b/><b/></a>", limits), 0);
    EXPECT_EQ(codeOf("<a><b/><b/><b/><b/></a>", limits), kTooManyElements);
    limits = {};
    limits.tokenBytes = 10;
    EXPECT_EQ(codeOf("<a><b/><b c='1'/></a>", limits), 0);
    EXPECT_EQ(codeOf("<a><b/><b c='12'/></a>", limits), kTokenTooLong);
    limits = {};
    limits.documentBytes = 19;
    EXPECT_EQ(codeOf("<a><b/><b/><b/></a>", limits), 0);
    EXPECT_EQ(codeOf("<a><b/><b/><b/> </a>", limits), kDocumentTooLarge);
}

}  // namespace
}  // namespace MCVelscore_850
