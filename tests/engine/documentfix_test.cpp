// Documents put right, and the rules by which they are judged.
#include "engine/documents/documentfix.h"

#include <gtest/gtest.h>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/documentrules.h"
#include "engine/documents/modelelement.h"
#include "engine/documents/treewriting.h"
#include "tests/engine/smallmodels.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

FixedDocument Fixed(const std::string& text)
{
    Document document = LoadDocumentText(text, "model.pmml");
    return FixDocument(document);
}

TEST(FixDocument, ASoundOneHasNothingToFix)
{
    const std::string text = TestModel().Text();
    const FixedDocument fixed = Fixed(text);
    EXPECT_TRUE(fixed.changes.empty());
    EXPECT_TRUE(fixed.rules.empty());
    // A line of its own behind the declaration; the rest stands as it stood.
    EXPECT_TRUE(fixed.text.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\""));
    EXPECT_NE(fixed.text.find("?>\n<PMML "), std::string::npos) << fixed.text.substr(0, 90);
    EXPECT_EQ(std::count(fixed.text.begin(), fixed.text.end(), '\n') + 1,
              std::count(text.begin(), text.end(), '\n'));
}

TEST(FixDocument, PutsRightWhatCanBeButOne)
{
    std::string text = Replaced(TestModel().Text(), "version=\"4.4\"", "version=\"4.4.1\"");
    text = Replaced(text, "beta=\"2\"", "Beta=\"2\"");
    text = Replaced(text, "beta=\"10\"", "Beta=\"10\"");
    const FixedDocument fixed = Fixed(text);
    EXPECT_EQ(fixed.rules, (std::vector<std::string_view>{"short-version", "misspelt-attribute"}));
    // Each with its place in the document as it was: the root, and the cells of p1 and p2.
    EXPECT_EQ(fixed.changes,
              (Texts{"line 2, column 1: version \"4.4.1\" is read as \"4.4\" [short-version]",
                     "line 34, column 7: Beta is now beta [misspelt-attribute]",
                     "line 35, column 7: Beta is now beta [misspelt-attribute]"}));
    EXPECT_NE(fixed.text.find("beta=\"10\""), std::string::npos);
    EXPECT_NE(fixed.text.find("version=\"4.4\""), std::string::npos);
    EXPECT_TRUE(Fixed(fixed.text).changes.empty());
}

// XML 1.1 has characters by references alone that 1.0 has as they are.
TEST(FixDocument, WritesXml10OfAnyVersion)
{
    const auto documentWith = [](const std::string& character) {
        std::string text =
            Replaced(TestModel().Text(), "<?xml version=\"1.0\"", "<?xml version=\"1.1\"");
        return Replaced(text, "label=\"x\"", "label=\"x" + character + "\"");
    };
    struct {
        const char* reference;
        const char* written;
    } const rows[] = {{"&#x7f;", "\x7F"}, {"&#x85;", "\xC2\x85"}, {"&#x2028;", "\xE2\x80\xA8"}};
    for (const auto& row : rows) {
        const FixedDocument fixed = Fixed(documentWith(row.reference));
        EXPECT_TRUE(fixed.text.starts_with("<?xml version=\"1.0\"")) << row.reference;
        EXPECT_NE(fixed.text.find("label=\"x" + std::string(row.written) + "\""), std::string::npos)
            << row.reference;
        EXPECT_TRUE(Fixed(fixed.text).changes.empty()) << row.reference;
    }
}

// A name that is put right shows what else is to be: a list, then its cell, then an attribute.
TEST(FixDocument, GoesOnUntilNothingIsLeft)
{
    std::string text = Replaced(TestModel().Text(), "<ParamMatrix>", "<ParamMatri>");
    text = Replaced(text, "</ParamMatrix>", "</ParamMatri>");
    text = Replaced(text, "<PCell parameterName=\"p1\" beta", "<PCel parameterName=\"p1\" Beta");
    const FixedDocument fixed = Fixed(text);
    EXPECT_EQ(fixed.changes.size(), 3U);
    EXPECT_NE(fixed.text.find("<PCell beta=\"2\""), std::string::npos) << fixed.text;
    EXPECT_TRUE(OpenText(fixed.text).DocumentFindings().Kept().empty());
}

TEST(FixDocument, ElementsThatLoseTheirPrefixAreInTheDefaultNamespace)
{
    std::string text = TestModel().Text();
    text = Replaced(text, "xmlns=", "xmlns:p=");
    for (const char* name : {"<PMML", "</PMML"}) {
        text = Replaced(text, name, std::string(name).insert(name[1] == '/' ? 2 : 1, "p:"));
    }
    const FixedDocument fixed = Fixed(text);
    EXPECT_NE(fixed.text.find(" xmlns=\"http://www.dmg.org/PMML-4_4\""), std::string::npos)
        << fixed.text.substr(0, 200);
    EXPECT_TRUE(OpenText(fixed.text).DocumentFindings().Kept().empty());
}

TEST(FixDocument, TellsWhatIsDifferentNow)
{
    TestModel model;
    model.sexField = "<DataField name='sex' optype='categorical' dataType='string'/>";
    const FixedDocument fixed = Fixed(model.Text());
    ASSERT_EQ(fixed.changes.size(), 1U);
    EXPECT_NE(fixed.changes[0].find("; add the reference category"), std::string::npos)
        << fixed.changes[0];
    EXPECT_EQ(fixed.changes[0].find("results now come"), std::string::npos);
}

TEST(DocumentRules, OfFaultsCanBeAllowed)
{
    struct Row {
        const char* name;
        const char* why;  ///< a piece of it; nothing where it can
    };
    const Row rows[] = {
        {"misspelt-attribute", nullptr},
        {"unknown-parameter", nullptr},
        {"short-version", "refuses no document"},
        {"missing-degrees-of-freedom", "refuses no document"},
        {"misspelt-atribute", "Did you mean 'misspelt-attribute'?"},
        {"xyzzy", "no rule has that name"},
    };
    for (const Row& row : rows) {
        const std::string why = WhyNotAllowed(row.name);
        if (row.why == nullptr) {
            EXPECT_EQ(why, "");
        } else {
            EXPECT_NE(why.find(row.why), std::string::npos) << why;
        }
    }
    EXPECT_EQ(WhyNotAllowed("xyzzy").find("Did you mean"), std::string::npos);
}

TEST(ModelElements, OfADocumentWithoutAModelTakeNoContrasts)
{
    const Document document = LoadDocumentText("<PMML version='4.4'><Header/></PMML>", "m.pmml");
    EXPECT_FALSE(ModelElement(document.Root()));
    EXPECT_FALSE(TakesContrasts(document.Root()));
}

}  // namespace
}  // namespace MCVelscore_850
