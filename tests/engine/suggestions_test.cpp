#include "engine/messages/suggestions.h"

#include <gtest/gtest.h>

#include "engine/messages/explanation.h"
#include "host/messages/messages.h"
#include "tests/engine/fakemodel.h"
#include "tests/engine/smallmodels.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

TEST(Suggestions, OfColumnsAreFreeOnesNearTheMissing)
{
    struct Row {
        Texts missing, header, used;
        std::string expected;
    };
    const Row rows[] = {
        {{"height"}, {"heigth", "w"}, {}, "Did you mean 'heigth' for 'height'?"},
        {{"height", "weight"},
         {"heigth", "wieght"},
         {},
         "Did you mean 'heigth' for 'height', 'wieght' for 'weight'?"},
        {{"height"}, {"heigth", "w"}, {"heigth"}, ""},
        {{"height"}, {"a", "b"}, {}, ""},
        // One column alone: most likely another delimiter.
        {{"height"},
         {"height;w"},
         {},
         "Its columns seem to be separated by semicolons: give --delimiter ';'."},
        {{"height"}, {"heigth"}, {}, "Did you mean 'heigth' for 'height'?"},
        {{"height"}, {"heigth", "a;b"}, {}, "Did you mean 'heigth' for 'height'?"},
        {{"h1"}, {"a;b", "c;d"}, {}, ""},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(SuggestColumns(row.missing, row.header, row.used), row.expected);
    }
    // Five at most, of however many are missing.
    Texts missing;
    Texts header;
    for (const char* name : {"alpha", "bravo", "charlie", "delta", "echoes", "foxtrot"}) {
        missing.emplace_back(name);
        header.push_back(std::string(name) + "s");
    }
    const std::string many = SuggestColumns(missing, header, {});
    EXPECT_NE(many.find("'echoess' for 'echoes'"), std::string::npos) << many;
    EXPECT_EQ(many.find("foxtrot"), std::string::npos) << many;
}

TEST(Suggestions, OfADelimiterIsTheOneThatComesMost)
{
    EXPECT_EQ(SuggestDelimiter("a;b,c,d", '\0'),
              "Its columns seem to be separated by commas: give --delimiter ','.");
    EXPECT_EQ(SuggestDelimiter("a;b,c,d", ','),
              "Its columns seem to be separated by semicolons: give --delimiter ';'.");
    EXPECT_EQ(SuggestDelimiter("a\tb", ','),
              "Its columns seem to be separated by tabulators: give --delimiter tab.");
    EXPECT_EQ(SuggestDelimiter("a|b;c", ','),
              "Its columns seem to be separated by semicolons: give --delimiter ';'.");
    EXPECT_EQ(SuggestDelimiter("a", '\0'), "");
}

TEST(Suggestions, OfWordsHaveWhatGoesBeforeThem)
{
    const Texts words{"score", "verify"};
    EXPECT_EQ(SuggestWord("verifi", words), "Did you mean 'verify'?");
    EXPECT_EQ(SuggestWord("scor", words, "--"), "Did you mean '--score'?");
    EXPECT_EQ(SuggestWord("xyzzy", words), "");
}

TEST(Suggestions, OfCategoriesAreAVariablesOfTexts)
{
    FakeModel model;
    model.AddText("colour", {"green", "violet"});
    model.AddNumber("x");
    EXPECT_EQ(SuggestCategory(model, "colour", "violett"), "Did you mean 'violet'?");
    EXPECT_EQ(SuggestCategory(model, "colour", "q"), "");
    EXPECT_EQ(SuggestCategory(model, "x", "violett"), "");
    EXPECT_EQ(SuggestCategory(model, "nobody", "violett"), "");
}

// Of a field of numbers that lists some none is suggested.
TEST(Suggestions, OfCategoriesAreNoNumbers)
{
    TestModel model;
    model.sexField =
        "<DataField name='sex' optype='categorical' dataType='double'>"
        "<Value value='101'/><Value value='202'/></DataField>";
    const LoadedModel opened = OpenText(Replaced(model.Text(), "value=\"m\"", "value=\"202\""));
    EXPECT_EQ(SuggestCategory(opened.Model(), "sex", "2022"), "");
}

TEST(FaultTexts, TellFieldAndText)
{
    EXPECT_EQ(FaultText("", "x"), "");
    EXPECT_EQ(FaultText("f", std::nullopt), "field f");
    EXPECT_EQ(FaultText("f", ""), "field f: empty");
    EXPECT_EQ(FaultText("f", "x y"), "field f: 'x y'");
}

TEST(Explanation, OfACode)
{
    const auto found = Explain(kNoOutputSection);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->code, kNoOutputSection);
    EXPECT_NE(found->text.find("..."), std::string::npos) << found->text;
    EXPECT_FALSE(found->remedy.empty());
    EXPECT_FALSE(Explain(1));
    EXPECT_EQ(ExplainAll().size(), Messages::All().size());
    EXPECT_EQ(MessageText(kNoOutputSection, {"m.pmml"}).find("..."), std::string::npos);
    // One with places for what a case had, one without, and none at all.
    EXPECT_TRUE(TellsTheCase(kRowNotScored));
    EXPECT_FALSE(TellsTheCase(90029));
    EXPECT_FALSE(TellsTheCase(1));
}

}  // namespace
}  // namespace MCVelscore_850
