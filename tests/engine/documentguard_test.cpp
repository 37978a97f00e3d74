#include "engine/documents/documentguard.h"

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/messages/failure.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {
namespace {

// A document of small limits is a document that can be written out.
constexpr DocumentLimits kSmall{.depth = 3,
                                .attributes = 2,
                                .tokenBytes = 40,
                                .textBytes = 1000,
                                .elements = 5,
                                .names = 8,
                                .documentBytes = 1000};

struct Outcome {
    int code = 0;  // 0: accepted
    std::string text;
};

Outcome OutcomeOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::Document);
        return {failure.Code(), failure.what()};
    }
    return {};
}

// Fed in pieces of the given size, all at once by default.
Outcome Guard(const std::string& bytes, const DocumentLimits& limits = {},
              size_t piece = std::string::npos)
{
    return OutcomeOf([&] {
        DocumentGuard guard("m.pmml", limits);
        for (size_t at = 0; at < bytes.size(); at += std::min(piece, bytes.size())) {
            guard.Feed(std::string_view(bytes).substr(at, piece));
        }
        guard.Finish();
    });
}

std::string Times(size_t count, const std::string& text)
{
    std::string out;
    for (size_t i = 0; i < count; ++i) out += text;
    return out;
}

std::string DistinctElements(size_t count)
{
    std::string out;
    for (size_t i = 0; i < count; ++i) out += "<e" + std::to_string(i) + "/>";
    return out;
}

std::string Utf16(const std::string& ascii)
{
    std::string out = "\xff\xfe";
    for (const char c : ascii) out.append({c, '\0'});
    return out;
}

// "file:line:column: ..." at the start of a refusal.
void ExpectPlace(const Outcome& outcome, const std::string& place)
{
    EXPECT_TRUE(outcome.text.starts_with("m.pmml:" + place + ":")) << outcome.text;
}

const std::string kDocument =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<PMML version=\"4.4\">\n"
    "  <!-- a note -->\n"
    "  <Header copyright='&lt;none&gt;'/>\n"
    "  <Text>a &amp; b<![CDATA[ <raw> ]]></Text>\n"
    "</PMML>\n";

TEST(DocumentGuard, TakesAWellFormedDocument) { EXPECT_EQ(Guard(kDocument).code, 0); }

TEST(DocumentGuard, TakesItByteByByteToo) { EXPECT_EQ(Guard(kDocument, {}, 1).code, 0); }

TEST(DocumentGuard, RefusesEveryTruncation)
{
    // the line end after the root's end tag may go
    for (size_t size = 0; size + 1 < kDocument.size(); ++size) {
        EXPECT_EQ(Guard(kDocument.substr(0, size)).code, kNotWellFormed) << "cut at " << size;
    }
}

TEST(DocumentGuard, RefusesAControlCharacterWhereverItStands)
{
    for (size_t at = 0; at < kDocument.size(); ++at) {
        std::string spoiled = kDocument;
        spoiled[at] = '\x01';
        EXPECT_EQ(Guard(spoiled).code, kNotWellFormed) << "spoiled at " << at;
    }
}

TEST(DocumentGuard, RefusesBytesThatAreNoUtf8)
{
    const Outcome outcome = Guard("<a>\n  <b c=\"\xe9\"/></a>");  // "é" of ISO-8859-1
    EXPECT_EQ(outcome.code, kNotWellFormed);
    ExpectPlace(outcome, "2:9");
}

TEST(DocumentGuard, SaysLineAndColumnOfAFault)
{
    // the end tag's name begins after "</", in line 3
    const Outcome outcome = Guard("<a>\n  <b>\n    </c>\n</a>");
    EXPECT_EQ(outcome.code, kNotWellFormed);
    ExpectPlace(outcome, "3:7");
}

TEST(DocumentGuard, RefusesAnAttributeGivenTwice)
{
    EXPECT_EQ(Guard("<a b=\"1\" b=\"2\"/>").code, kNotWellFormed);
}

TEST(DocumentGuard, RefusesASecondRoot) { EXPECT_EQ(Guard("<a/><b/>").code, kNotWellFormed); }

TEST(DocumentGuard, RefusesNothingAtAll) { EXPECT_EQ(Guard("").code, kNotWellFormed); }

TEST(DocumentGuard, RefusesWhatIsNoXmlWithAWordOfHelp)
{
    EXPECT_EQ(Guard("name,age\n").code, kNotWellFormed);
    EXPECT_NE(Guard(std::string("\x1f\x8b\x08\0\0\0", 6)).text.find("gzip"), std::string::npos);
    EXPECT_NE(Guard("PK\x03\x04....").text.find("zip archive"), std::string::npos);
    EXPECT_NE(Guard(std::string("\xff\xfe\0\0<\0\0\0", 8)).text.find("UTF-32"), std::string::npos);
}

TEST(DocumentGuard, TakesUtf16AndLatin1)
{
    EXPECT_EQ(Guard(Utf16("<a b=\"1\">text</a>")).code, 0);
    EXPECT_EQ(Guard("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a b=\"\xe9\"/>").code, 0);
    EXPECT_EQ(Guard("\xef\xbb\xbf<a/>").code, 0);  // UTF-8 with a byte-order mark
}

TEST(DocumentGuard, NamesTheEncodingsWhenItReadsAnotherOne)
{
    const Outcome outcome = Guard("<?xml version=\"1.0\" encoding=\"EBCDIC-CP-BE\"?><a/>");
    EXPECT_EQ(outcome.code, kNotWellFormed);
    EXPECT_NE(outcome.text.find("UTF-8"), std::string::npos) << outcome.text;
}

TEST(DocumentGuard, RefusesADoctypeOfAnyKindAtItsPlace)
{
    const char* const kinds[] = {
        "<!DOCTYPE a>",
        "<!DOCTYPE a []>",
        "<!DOCTYPE a SYSTEM \"file:///etc/passwd\">",
        "<!DOCTYPE a PUBLIC \"-//x\" \"http://example.com/x.dtd\">",
        "<!DOCTYPE a [<!ENTITY b \"c\">]>",
        "<!DOCTYPE a [<!ENTITY b SYSTEM \"/etc/passwd\">]>",
        "<!DOCTYPE a [<!ATTLIST a b CDATA 'c'>]>",
    };
    for (const char* kind : kinds) {
        const Outcome outcome =
            Guard("<?xml version=\"1.0\"?>\n<!-- -->\n " + std::string(kind) + "\n<a/>");
        EXPECT_EQ(outcome.code, kDoctype) << kind;
        ExpectPlace(outcome, "3:2");
    }
}

TEST(DocumentGuard, RefusesADoctypeInUtf16)
{
    EXPECT_EQ(Guard(Utf16("<!DOCTYPE a [<!ENTITY b 'c'>]><a>&b;</a>")).code, kDoctype);
}

TEST(DocumentGuard, RefusesADoctypeBeforeItsEnd)
{
    DocumentGuard guard("m.pmml");
    EXPECT_EQ(OutcomeOf([&] { guard.Feed("<!DOCTYPE a ["); }).code, kDoctype);
}

TEST(DocumentGuard, TakesTheWordDoctypeInTextAndComments)
{
    EXPECT_EQ(Guard("<!-- <!DOCTYPE a> --><a b='!DOCTYPE'><![CDATA[<!DOCTYPE a>]]></a>").code, 0);
}

TEST(DocumentGuard, TakesDepthUpToTheLimit)
{
    EXPECT_EQ(Guard("<a><b><c/></b><b><c/></b></a>", kSmall).code, 0);
    const Outcome outcome = Guard("<a><b>\n<c> <d/></c></b></a>", kSmall);
    EXPECT_EQ(outcome.code, kTooDeep);
    ExpectPlace(outcome, "2:5");
}

TEST(DocumentGuard, TakesAttributesUpToTheLimit)
{
    EXPECT_EQ(Guard("<a b='1' c='2'><d e='1' f='2'/></a>", kSmall).code, 0);
    const Outcome outcome = Guard("<a>\n  <b c='1' d='2' e='3'/></a>", kSmall);
    EXPECT_EQ(outcome.code, kTooManyAttributes);
    ExpectPlace(outcome, "2:3");
}

TEST(DocumentGuard, TakesElementsUpToTheLimit)
{
    EXPECT_EQ(Guard("<a><b/><b/><b/><b/></a>", kSmall).code, 0);
    const Outcome outcome = Guard("<a><b/><b/><b/>\n<b/><b/></a>", kSmall);
    EXPECT_EQ(outcome.code, kTooManyElements);
    ExpectPlace(outcome, "2:5");
}

TEST(DocumentGuard, TakesTokensUpToTheLimit)
{
    struct Token {
        std::string before, open, close;
    };
    // open and close have 10 bytes, with the 30 between them 40 in all
    const std::string x30(30, 'x');
    const Token tokens[] = {
        {"", "<e a=\"" + x30, "\" />"},
        {"", "<!--" + x30, " - -->"},
        {"", "<?p " + x30, "yyyy?>"},
        {"<e>", "</e" + std::string(30, ' '), "      >"},
    };
    for (const Token& token : tokens) {
        const std::string atLimit = token.open + token.close;
        ASSERT_EQ(atLimit.size(), 40u) << atLimit;
        // a blank or another letter more
        const std::string over = token.open + token.open.back() + token.close;
        for (const size_t piece : {size_t{1}, size_t{7}, std::string::npos}) {
            EXPECT_EQ(Guard("<r>" + token.before + atLimit + "</r>", kSmall, piece).code, 0)
                << atLimit;
            const Outcome outcome =
                Guard("<r>" + token.before + "\n" + over + "</r>", kSmall, piece);
            EXPECT_EQ(outcome.code, kTokenTooLong) << over;
            ExpectPlace(outcome, "2:1");
        }
    }
}

TEST(DocumentGuard, CountsATokenBeforeTheRootToo)
{
    const std::string long40(40, 'x');
    EXPECT_EQ(Guard("<!--" + long40 + "--><a/>", kSmall).code, kTokenTooLong);
    EXPECT_EQ(Guard("<?p " + long40 + "?><a/>", kSmall).code, kTokenTooLong);
    EXPECT_EQ(Guard("<a/><!--" + long40 + "-->", kSmall).code, kTokenTooLong);
    EXPECT_EQ(Guard("<?xml version=\"1.0\"" + std::string(40, ' ') + "?><a/>", kSmall).code,
              kTokenTooLong);
}

TEST(DocumentGuard, RefusesALongTokenBeforeItsEnd)
{
    DocumentGuard guard("m.pmml", kSmall);
    EXPECT_EQ(OutcomeOf([&] { guard.Feed("<a>\n <b c=\"" + std::string(75, 'x')); }).code,
              kTokenTooLong);  // 81 bytes of a tag that may have 40
}

TEST(DocumentGuard, TakesTextUpToTheLimit)
{
    DocumentLimits limits = kSmall;
    limits.textBytes = 20;
    const std::string x20(20, 'x');
    struct Text {
        std::string before, text, after, place;
    };
    const Text texts[] = {
        {"<a>", x20, "</a>", "1:1"},
        {"<a>\n<b>", x20, "</b></a>", "2:1"},
        {"<a>\n<b/>", x20, "</a>", "2:1"},
        {"<a><b/>\n<c>y</c>", x20, "</a>", "2:1"},
        {"<a>", "<![CDATA[xxxxxxxx]]>", "</a>", "1:1"},
        {"<a>", "xxxxxxxxxx<!--c-->xx", "</a>", "1:1"},
        {"<a>", "xxxxxx<?p?>&lt;&#65;", "</a>", "1:1"},
        {"<a>", std::string(20, '\n'), "</a>", "1:1"},
    };
    for (const Text& t : texts) {
        const std::string atLimit = t.before + t.text + t.after;
        const std::string over = t.before + "x" + t.text + t.after;
        for (const size_t piece : {size_t{1}, size_t{7}, std::string::npos}) {
            EXPECT_EQ(Guard(atLimit, limits, piece).code, 0) << atLimit;
            const Outcome outcome = Guard(over, limits, piece);
            EXPECT_EQ(outcome.code, kTextTooLong) << over;
            ExpectPlace(outcome, t.place);
        }
    }
    // Each text counts for itself, and a tag that is long in coming isn't text.
    const std::string several =
        "<a>" + x20 + "<b c='" + std::string(30, 'y') + "'/>" + x20 + "</a>";
    EXPECT_EQ(Guard(several, limits, 1).code, 0);
}

TEST(DocumentGuard, TakesNamesUpToTheLimit)
{
    const std::string eight = "<a b='' c=''>\n<d e='' f=''/><g h=''/><b a='' c=''/>";
    EXPECT_EQ(Guard(eight + "</a>", kSmall).code, 0);
    for (const char* one : {"<i/>", "<a i=''/>"}) {
        const Outcome outcome = Guard(eight + "\n " + one + "</a>", kSmall);
        EXPECT_EQ(outcome.code, kTooManyNames) << one;
        ExpectPlace(outcome, "3:2");
    }
}

TEST(DocumentGuard, CountsWhateverBecomesANodeOfItsOwn)
{
    for (const char* node : {"<?p?>", "<![CDATA[]]>", "<b/>"}) {
        EXPECT_EQ(Guard("<a>" + Times(4, node) + "</a>", kSmall).code, 0) << node;
        EXPECT_EQ(Guard("<a>" + Times(5, node) + "</a>", kSmall).code, kTooManyElements) << node;
    }
}

TEST(DocumentGuard, TakesBytesUpToTheLimit)
{
    const std::string start = "<a>";
    const std::string end = "</a>";
    const std::string text(kSmall.documentBytes - start.size() - end.size(), 'x');
    EXPECT_EQ(Guard(start + text + end, kSmall).code, 0);
    EXPECT_EQ(Guard(start + text + "x" + end, kSmall).code, kDocumentTooLarge);
    EXPECT_EQ(Guard(start + text + "x" + end, kSmall, 64).code, kDocumentTooLarge);
}

TEST(DocumentGuard, NotesWhereEachElementBegins)
{
    DocumentGuard guard("m.pmml");
    const std::string document = "<a>\n  <b\n  c='\xc3\xa9'/><d>\r\n</d>\n\t<e/></a>";
    for (const char& byte : document) guard.Feed({&byte, 1});
    guard.Finish();
    std::vector<std::pair<uint32_t, uint32_t>> places;
    for (const ElementPlace& place : guard.Places()) places.emplace_back(place.line, place.column);
    // "é" is two bytes and one column; "\r\n" is one line end
    const std::vector<std::pair<uint32_t, uint32_t>> expected = {{1, 1}, {2, 3}, {3, 10}, {5, 2}};
    EXPECT_EQ(places, expected);
}

TEST(DocumentGuard, CountsAByteOrderMarkAsNoCharacter)
{
    for (const std::string& document :
         {Utf16("<a><b/></a>"), std::string("\xef\xbb\xbf<a><b/></a>"),
          std::string("<a><b/></a>")}) {
        DocumentGuard guard("m.pmml");
        guard.Feed(document);
        guard.Finish();
        ASSERT_EQ(guard.Places().size(), 2u);
        EXPECT_EQ(guard.Places()[0].column, 1u);
        EXPECT_EQ(guard.Places()[1].column, 4u);
    }
}

TEST(DocumentGuard, DefaultLimitsStandOnBothSides)
{
    EXPECT_EQ(Guard(Times(256, "<a>") + Times(256, "</a>")).code, 0);
    EXPECT_EQ(Guard(Times(257, "<a>") + Times(257, "</a>")).code, kTooDeep);

    std::string attributes;
    for (int i = 0; i < 256; ++i) attributes += " a" + std::to_string(i) + "=''";
    EXPECT_EQ(Guard("<a" + attributes + "/>").code, 0);
    EXPECT_EQ(Guard("<a" + attributes + " b=''/>").code, kTooManyAttributes);

    // "<a b=''/>" has 9 bytes
    const std::string value((size_t{1} << 20) - 9, 'x');
    EXPECT_EQ(Guard("<a b='" + value + "'/>").code, 0);
    EXPECT_EQ(Guard("<a b='" + value + "x'/>").code, kTokenTooLong);

    EXPECT_EQ(Guard("<a>" + Times(999'999, "<b/>") + "</a>").code, 0);
    EXPECT_EQ(Guard("<a>" + Times(1'000'000, "<b/>") + "</a>").code, kTooManyElements);

    const std::string text(size_t{16} << 20, 'x');
    EXPECT_EQ(Guard("<a>" + text + "</a>").code, 0);
    EXPECT_EQ(Guard("<a>x" + text + "</a>").code, kTextTooLong);

    EXPECT_EQ(Guard("<a>" + DistinctElements(9'999) + "</a>").code, 0);
    EXPECT_EQ(Guard("<a>" + DistinctElements(10'000) + "</a>").code, kTooManyNames);
}

TEST(DocumentGuard, RefusesMoreThan256MebibytesInAll)
{
    DocumentGuard guard("m.pmml");
    const std::string comment = "<b/><!--" + std::string(1'000'000, 'x') + "-->";
    guard.Feed("<a>");
    size_t fed = 3;
    const size_t limit = size_t{256} << 20;
    for (; fed + comment.size() <= limit; fed += comment.size()) guard.Feed(comment);
    EXPECT_EQ(OutcomeOf([&] { guard.Feed(comment); }).code, kDocumentTooLarge);
}

// Documents made to cost. Each is fed in blocks, and what it costs is told by the bytes that were
// fed before it was refused: nothing of the rest is ever looked at.
struct Attack {
    Outcome outcome;
    size_t bytes = 0;
};

constexpr size_t kBlock = 65536;

// `start`, then `again` as often as it takes.
Attack Flood(const std::string& start, const std::string& again, size_t times)
{
    Attack attack;
    attack.outcome = OutcomeOf([&] {
        DocumentGuard guard("m.pmml");
        guard.Feed(start);
        attack.bytes = start.size();
        std::string block;
        while (block.size() < kBlock) block += again;
        for (size_t size = again.size() * times; attack.bytes < size;) {
            attack.bytes += block.size();
            guard.Feed(block);
        }
        guard.Finish();
    });
    return attack;
}

Attack FeedInBlocks(const std::string& document)
{
    Attack attack;
    attack.outcome = OutcomeOf([&] {
        DocumentGuard guard("m.pmml");
        while (attack.bytes < document.size()) {
            const std::string_view block = std::string_view(document).substr(attack.bytes, kBlock);
            attack.bytes += block.size();
            guard.Feed(block);
        }
        guard.Finish();
    });
    return attack;
}

TEST(DocumentGuardAttack, AMillionNestedElementsEndAtTheLimitOfDepth)
{
    const Attack attack = Flood("<a>", "<a>", 1'000'000);
    EXPECT_EQ(attack.outcome.code, kTooDeep);
    ExpectPlace(attack.outcome, "1:769");  // 256 elements of three bytes, then the one too deep
    EXPECT_LT(attack.bytes, size_t{200'000});
}

TEST(DocumentGuardAttack, A200MegabyteAttributeEndsAtTheLimitOfATag)
{
    const Attack attack = Flood("<a b=\"", "x", 200'000'000);
    EXPECT_EQ(attack.outcome.code, kTokenTooLong);
    ExpectPlace(attack.outcome, "1:1");
    EXPECT_LT(attack.bytes, size_t{2'200'000});  // twice the limit and a block
}

TEST(DocumentGuardAttack, A200MegabyteCommentEndsAtTheLimitOfAComment)
{
    const Attack attack = Flood("<a><!--", "x", 200'000'000);
    EXPECT_EQ(attack.outcome.code, kTokenTooLong);
    EXPECT_LT(attack.bytes, size_t{2'200'000});
}

TEST(DocumentGuardAttack, A250MegabyteTextEndsAtTheLimitOfAText)
{
    const Attack attack = Flood("<a>", "x", 250'000'000);
    EXPECT_EQ(attack.outcome.code, kTextTooLong);
    ExpectPlace(attack.outcome, "1:1");
    EXPECT_LT(attack.bytes, (size_t{16} << 20) + 2 * kBlock);
}

TEST(DocumentGuardAttack, TwoHundredThousandNamesEndAtTheLimitOfNames)
{
    // 10,000 of them are below 150 kB, as elements or as attributes
    std::string attributes = "<a>";
    for (int i = 0; i < 200'000; ++i) attributes += "<b c" + std::to_string(i) + "=''/>";
    for (const std::string& document : {"<a>" + DistinctElements(200'000), attributes}) {
        const Attack attack = FeedInBlocks(document);
        EXPECT_EQ(attack.outcome.code, kTooManyNames);
        EXPECT_LT(attack.bytes, size_t{150'000} + kBlock);
    }
}

TEST(DocumentGuardAttack, AnEntityBombEndsAtItsDoctype)
{
    std::string bomb = "<!DOCTYPE a [<!ENTITY e0 \"ha\">";
    for (int i = 1; i < 30; ++i) {
        const std::string before = "&e" + std::to_string(i - 1) + ";";
        bomb += "<!ENTITY e" + std::to_string(i) + " \"" + before + before + "\">";
    }
    EXPECT_EQ(Guard(bomb + "]><a>&e29;</a>").code, kDoctype);
}

// 400,000 attributes come to 5 MB and end at the limit of a tag; as many as fit below that limit
// end at the limit of attributes.
std::string ManyAttributes(size_t count)
{
    std::string tag = "<a";
    for (size_t i = 0; i < count; ++i) tag += " a" + std::to_string(i) + "=''";
    return tag + "/>";
}

TEST(DocumentGuardAttack, ManyAttributesOnOneElementAreRefused)
{
    const Attack attack = FeedInBlocks(ManyAttributes(400'000));
    EXPECT_EQ(attack.outcome.code, kTokenTooLong);
    EXPECT_LT(attack.bytes, size_t{2'200'000});
    EXPECT_EQ(Guard(ManyAttributes(100'000)).code, kTooManyAttributes);
}

}  // namespace
}  // namespace MCVelscore_850
