#include "host/documents/basetranslator.h"

#include <memory>
#include <sstream>

#include <gtest/gtest.h>

#include "dom.h"
#include "host/messages/messages.h"
#include "host/model/scoremodel.h"
#include "host/values/scorevalue.h"
#include "host/variables/scoredictionary.h"
#include "vars.h"

namespace MCVelscore_850 {
namespace {

class Reader final : public BaseTranslator {
public:
    using BaseTranslator::CurrentElement;
    using BaseTranslator::ForgetCurrentElement;
    using BaseTranslator::ParseFromTree;
    using BaseTranslator::Transcode;
    ScoreModel* ParseFromTree(xercesc::DOMDocument*, const std::string&) override
    {
        return nullptr;
    }
};

// Comments, text and a nested element of the same tag stand between what is looked for.
constexpr char kSmall[] =
    "<a x='1' empty=''> text <!-- note --><b n='first'><c n='inner'/></b>"
    "<?pi?><c n='outer'/><b n='second'/> more </a>";

class BaseTranslatorTest : public testing::Test {
protected:
    std::string AttributeOf(const xercesc::DOMElement* element, const std::string& name)
    {
        return reader_.ToString(reader_.GetAttribute(element, name));
    }

    Dom dom_{kSmall};
    Reader reader_;
};

TEST_F(BaseTranslatorTest, AttributeIsItsTextOrNull)
{
    EXPECT_EQ(AttributeOf(dom_.Root(), "x"), "1");
    EXPECT_EQ(reader_.GetAttribute(dom_.Root(), "y"), nullptr);
    EXPECT_EQ(reader_.GetAttribute(dom_.Root(), "X"), nullptr);
    ASSERT_NE(reader_.GetAttribute(dom_.Root(), "empty"), nullptr);
    EXPECT_TRUE(IsBlank(reader_.GetAttribute(dom_.Root(), "empty")));
}

TEST_F(BaseTranslatorTest, ForcedAttributeThatIsAbsentIsRefused)
{
    EXPECT_EQ(reader_.ToString(reader_.GetAttributeForced(dom_.Root(), "x")), "1");
    EXPECT_EQ(RefusalOf([&] { reader_.GetAttributeForced(dom_.First("b"), "y"); }),
              (Refusal{kAbsent, {"y", "b"}}));
    EXPECT_EQ(reader_.CurrentElement(), dom_.First("b"));
}

TEST_F(BaseTranslatorTest, ChildByTagIsTheFirstChildAndNoGrandchild)
{
    EXPECT_EQ(AttributeOf(reader_.GetChildByTag(dom_.Root(), "b"), "n"), "first");
    EXPECT_EQ(AttributeOf(reader_.GetChildByTag(dom_.Root(), "c"), "n"), "outer");
    EXPECT_EQ(reader_.GetChildByTag(dom_.Root(), "B"), nullptr);
    EXPECT_EQ(reader_.GetChildByTag(dom_.First("c"), "b"), nullptr);
    EXPECT_EQ(reader_.GetChildByTag(dom_.Document(), "a"), dom_.Root());
}

TEST_F(BaseTranslatorTest, ForcedChildThatIsAbsentIsRefused)
{
    EXPECT_EQ(reader_.GetChildByTagForced(dom_.Root(), "b"), dom_.First("b"));
    EXPECT_EQ(RefusalOf([&] { reader_.GetChildByTagForced(dom_.Root(), "zz"); }),
              (Refusal{kAbsent, {"zz", "a"}}));
    EXPECT_EQ(reader_.CurrentElement(), dom_.Root());
}

TEST_F(BaseTranslatorTest, ElementsByTagNameAreAllDescendantsInDocumentOrder)
{
    const auto* found = reader_.GetElementsByTagName(dom_.Root(), "c");
    ASSERT_EQ(found->getLength(), 2u);
    EXPECT_EQ(AttributeOf(static_cast<xercesc::DOMElement*>(found->item(0)), "n"), "inner");
    EXPECT_EQ(AttributeOf(static_cast<xercesc::DOMElement*>(found->item(1)), "n"), "outer");
    EXPECT_EQ(reader_.GetElementsByTagName(dom_.Root(), "a")->getLength(), 0u);
}

TEST_F(BaseTranslatorTest, WalkOverElementsPassesTextAndComments)
{
    std::string walked;
    for (auto* e = reader_.GetFirstChildElt(dom_.Root()); e; e = reader_.GetNextSiblingElt(e)) {
        walked += AttributeOf(e, "n") + " ";
    }
    EXPECT_EQ(walked, "first outer second ");
    EXPECT_EQ(reader_.GetFirstChildElt(dom_.First("c")), nullptr);
    EXPECT_EQ(reader_.GetFirstChildElt(dom_.Document()), dom_.Root());
    EXPECT_EQ(reader_.GetNextSiblingElt(dom_.Root()), nullptr);
}

TEST_F(BaseTranslatorTest, ComparisonIsExact)
{
    const auto is = [&](const char* text, const std::string& tag) {
        return reader_.IsEqual(XmlFromUtf8(text).c_str(), tag);
    };
    EXPECT_TRUE(is("regression", "regression"));
    EXPECT_TRUE(is("", ""));
    EXPECT_FALSE(is("Regression", "regression"));
    EXPECT_FALSE(is("regression ", "regression"));
    EXPECT_FALSE(is("regressio", "regression"));
    EXPECT_FALSE(reader_.IsEqual(nullptr, ""));
    const std::string longTag(200, 't');
    EXPECT_TRUE(is(longTag.c_str(), longTag));
    EXPECT_FALSE(is(longTag.c_str(), longTag + "t"));
    EXPECT_TRUE(
        is("gr\xC3\xB6\xC3\x9F"
           "e",
           "gr\xC3\xB6\xC3\x9F"
           "e"));
}

TEST_F(BaseTranslatorTest, AttributeOfALetterBeyondAsciiIsFound)
{
    const Dom dom(
        "<?xml version='1.0' encoding='UTF-8'?><a gr\xC3\xB6\xC3\x9F"
        "e='7'/>");
    EXPECT_EQ(AttributeOf(dom.Root(),
                          "gr\xC3\xB6\xC3\x9F"
                          "e"),
              "7");
}

TEST_F(BaseTranslatorTest, NumbersBecomeText)
{
    EXPECT_EQ(reader_.ToString(42), "42");
    EXPECT_EQ(reader_.ToString(-7), "-7");
}

TEST_F(BaseTranslatorTest, NumbersAreReadOrRefusedWithTheirText)
{
    const auto number = [&](const std::string& text) {
        return reader_.VerifyDouble(XmlFromUtf8(text).c_str());
    };
    EXPECT_EQ(number(" +2.5 "), 2.5);
    EXPECT_EQ(number("1e-999"), 0.0);
    EXPECT_EQ(number("0." + std::string(100, '0') + "1e101"), 1.0);
    EXPECT_EQ(reader_.VerifyDouble(std::string("-3")), -3.0);
    for (const std::string text :
         {"", "abc", "INF", "NaN", "0x1", "1 2", "\xD9\xA3",
          "a text that is longer than any number in a document would be"}) {
        const Refusal expected{kNotANumber, {text, "text"}};
        EXPECT_EQ(RefusalOf([&] { number(text); }), expected);
        EXPECT_EQ(RefusalOf([&] { reader_.VerifyDouble(text); }), expected);
    }
    EXPECT_EQ(RefusalOf([&] { number("1e999"); }), (Refusal{kNumberTooLarge, {"1e999", "text"}}));
    EXPECT_EQ(RefusalOf([&] { reader_.VerifyDouble(static_cast<const XMLCh*>(nullptr)); }),
              (Refusal{kNotANumber, {"", "text"}}));
}

TEST_F(BaseTranslatorTest, WholeNumbersAreReadOrRefusedWithTheirText)
{
    EXPECT_EQ(reader_.VerifyInt(XmlFromUtf8(" +12 ").c_str()), 12);
    EXPECT_EQ(reader_.VerifyInt(std::string("-3")), -3);
    for (const std::string text : {"", "1.0", "1e2", "x"}) {
        const Refusal expected{kNotAnInteger, {text, "text"}};
        EXPECT_EQ(RefusalOf([&] { reader_.VerifyInt(XmlFromUtf8(text).c_str()); }), expected);
        EXPECT_EQ(RefusalOf([&] { reader_.VerifyInt(text); }), expected);
    }
    EXPECT_EQ(RefusalOf([&] { reader_.VerifyInt(std::string("4294967296")); }),
              (Refusal{kNumberTooLarge, {"4294967296", "text"}}));
}

TEST_F(BaseTranslatorTest, ARefusedNumberNamesTheAttributeThatHoldsIt)
{
    const Dom dom("<p name='one' beta='one' df='' note=''><q value='two'/>three</p>");
    const auto refused = [&](const char* attribute) {
        return RefusalOf(
            [&] { reader_.VerifyDouble(reader_.GetAttribute(dom.Root(), attribute)); });
    };
    // Of attributes with the same text it is the one that was asked for.
    EXPECT_EQ(refused("beta"), (Refusal{kNotANumber, {"one", "beta"}}));
    EXPECT_EQ(refused("note"), (Refusal{kNotANumber, {"", "note"}}));
    EXPECT_EQ(RefusalOf([&] { reader_.VerifyInt(reader_.GetAttribute(dom.Root(), "df")); }),
              (Refusal{kNotAnInteger, {"", "df"}}));
    // A copy could be of either.
    EXPECT_EQ(RefusalOf([&] { reader_.VerifyDouble(std::string("one")); }),
              (Refusal{kNotANumber, {"one", "beta or name"}}));
    EXPECT_EQ(RefusalOf([&] { reader_.VerifyDouble(std::string("three")); }),
              (Refusal{kNotANumber, {"three", "p"}}));
    reader_.GetAttribute(dom.First("q"), "other");
    EXPECT_EQ(RefusalOf([&] { reader_.VerifyDouble(std::string("two")); }),
              (Refusal{kNotANumber, {"two", "value"}}));
}

TEST_F(BaseTranslatorTest, ValueIsMadeOfTheVariablesKindOrNull)
{
    const DictVar number(NumberType());
    const DictVar text(TextType());
    const DictVar date(DateType());
    const auto make = [&](const ScoreDictVar* var, const std::string& from) {
        std::unique_ptr<ScoreValue> narrow(reader_.CarefullyMakeVarValue(var, from));
        const std::unique_ptr<ScoreValue> wide(
            reader_.CarefullyMakeVarValue(var, XmlFromUtf8(from).c_str()));
        EXPECT_EQ(narrow == nullptr, wide == nullptr) << from;
        return narrow;
    };
    EXPECT_EQ(make(&number, "+2.5")->GetDouble(), 2.5);
    EXPECT_EQ(make(&text, "2.5")->GetString(), "2.5");
    EXPECT_EQ(make(&text, " ")->GetString(), " ");
    EXPECT_EQ(make(&date, "1970-01-02")->GetDouble(), 1.0);
    EXPECT_EQ(make(&number, "abc"), nullptr);
    EXPECT_EQ(make(&number, "NaN"), nullptr);
    EXPECT_EQ(make(&number, "1e999"), nullptr);
    EXPECT_EQ(make(&date, "1970-02-30"), nullptr);
    EXPECT_EQ(make(&text, ""), nullptr);
    EXPECT_EQ(make(nullptr, "1"), nullptr);
    EXPECT_EQ(reader_.CarefullyMakeVarValue(&text, static_cast<const XMLCh*>(nullptr)), nullptr);
}

TEST_F(BaseTranslatorTest, TextsOfTheModelAreInTheChosenEncodingAndMessagesInUtf8)
{
    const auto text = XmlFromUtf8("\xC3\xA9");
    EXPECT_EQ(reader_.Transcode(text.c_str()), "\xC3\xA9");
    reader_.CreateTranscoder("ISO-8859-1");
    EXPECT_EQ(reader_.Transcode(text.c_str()), "\xE9");
    EXPECT_EQ(reader_.ToString(text.c_str()), "\xC3\xA9");
    EXPECT_EQ(RefusalOf([&] { reader_.CreateTranscoder("nothing"); }),
              (Refusal{kUnknownEncoding, {"nothing"}}));
}

TEST_F(BaseTranslatorTest, FormsOfParsingThatAReaderLeavesOutAreRefused)
{
    const Refusal expected{kCallNotAvailable, {"ParseFromTree"}};
    BaseTranslator& base = reader_;
    std::istringstream in;
    auto* document = dom_.Document();
    auto* root = dom_.Root();
    ScoreDictionary* none = nullptr;
    ScoreModel* model = nullptr;
    const std::string text;
    EXPECT_EQ(RefusalOf([&] { base.ParseFromTree(in, text); }), expected);
    EXPECT_EQ(RefusalOf([&] { base.ParseFromTree(text, text); }), expected);
    EXPECT_EQ(RefusalOf([&] { base.ParseFromTree(root, none, none, text); }), expected);
    EXPECT_EQ(RefusalOf([&] { base.ParseFromTree(root, model, text); }), expected);
    EXPECT_EQ(RefusalOf([&] { base.ParseFromTree(in, text, text); }), expected);
    EXPECT_EQ(RefusalOf([&] { base.ParseFromTree(document, none, text); }), expected);
}

}  // namespace
}  // namespace MCVelscore_850
