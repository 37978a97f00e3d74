// What the adapter does to documents of the families that predict a category.

#include <gtest/gtest.h>

#include "tests/engine/adapted.h"

namespace MCVelscore_850 {
namespace {

// Puts `to` where `from` stands in the text, once.
void Put(std::string& text, const std::string& from, const std::string& to)
{
    const size_t at = text.find(from);
    ASSERT_NE(at, std::string::npos) << from;
    text.replace(at, from.size(), to);
}

// The link of an ordinal model.

Parts Ordinal(const std::string& attributes)
{
    Parts parts;
    parts.model = "modelType='ordinalMultinomial' " + attributes;
    return parts;
}

TEST(CumulativeLinkRule, CopiesTheLinkToWhereTheOrdinalReaderLooks)
{
    for (const char* named : {"", "algorithmName='ordinalRegression' ", "algorithmName='polr' ",
                              "algorithmName='polr' modelName='GZLM' "}) {
        const Adapted adapted(Ordinal(std::string(named) + "cumulativeLink='probit'").Text());
        EXPECT_EQ(adapted.Rules(), "cumulative-link") << named;
        EXPECT_TRUE(adapted.Has("cumulativeLink='probit'")) << named;
        EXPECT_TRUE(adapted.Has("linkFunction='probit'")) << named;
    }
    const Adapted empty(Ordinal("cumulativeLink='cloglog' linkFunction=''").Text());
    EXPECT_TRUE(empty.Has("linkFunction='cloglog'"));
}

TEST(CumulativeLinkRule, LeavesOtherDocumentsAlone)
{
    for (const char* attributes :
         {"", "cumulativeLink=''", "cumulativeLink='probit' linkFunction='logit'",
          "linkFunction='probit'",
          // this family reads cumulativeLink itself
          "algorithmName='GZLM' cumulativeLink='probit'",
          "modelName='GZLM' cumulativeLink='probit'"}) {
        EXPECT_TRUE(Adapted(Ordinal(attributes).Text()).Untouched()) << attributes;
    }
    Parts other;
    other.model = "modelType='generalLinear' cumulativeLink='probit'";
    EXPECT_TRUE(Adapted(other.Text()).Untouched());
}

// Contrasts in a multinomial model of two categories.

const std::string kMatrix =
    "<Matrix nbRows='2' nbCols='1'><Array>1</Array><Array>-1</Array></Matrix>";

// Target y (no, yes), factor f (u, v) with contrasts; the betas are of yes.
Parts TwoCategories(const std::string& attributes = "", const std::string& target = "")
{
    Parts parts;
    parts.model = "modelType='multinomialLogistic' functionName='classification' " + attributes;
    parts.fields = target.empty() ? "<DataField name='y' optype='categorical' dataType='string'>"
                                    "<Value value='no'/><Value value='yes'/></DataField>"
                                  : target;
    parts.fields +=
        "<DataField name='f' optype='categorical' dataType='string'><Value value='u'/>"
        "<Value value='v'/></DataField>";
    parts.schema = "<MiningField name='y' usageType='target'/><MiningField name='f'/>";
    parts.parameters = "<Parameter name='p0'/><Parameter name='pf'/>";
    parts.factors = "<Predictor name='f' contrastMatrixType='sum'>" + kMatrix + "</Predictor>";
    parts.covariates = "";
    parts.cells = "<PPCell value='u' predictorName='f' parameterName='pf'/>";
    parts.betas =
        "<PCell targetCategory='yes' parameterName='p0' beta='0.5'/>"
        "<PCell targetCategory='yes' parameterName='pf' beta='2'/>";
    return parts;
}

TEST(ContrastLogisticRule, SelectsTheBinaryFamily)
{
    const std::string basis =
        "<xBasis nbRows='2' nbCols='1'><R value='u'>1</R>"
        "<R value='v'>-1</R></xBasis>";
    for (const char* named : {"", "algorithmName='glm'", "algorithmName='' modelName='my model'",
                              "algorithmName='glm' modelName='contrastLogistic'"}) {
        const Adapted adapted(TwoCategories(named).Text());
        EXPECT_EQ(adapted.Rules(), "contrast-logistic") << named;
        EXPECT_TRUE(adapted.Has("algorithmName='contrastLogistic'")) << named;
    }
    for (const std::string& predictor :
         {"<Predictor name='f'>" + basis + "</Predictor>",
          std::string("<Predictor name='f'><Extension name='contrastMatrix'><X-Basis/></Extension>"
                      "</Predictor>"),
          // a form that no other rule reads: one factor of several is enough
          "<Predictor name='g'/><Predictor name='f'>" + basis + "</Predictor>"}) {
        Parts parts = TwoCategories();
        parts.factors = predictor;
        EXPECT_EQ(Adapted(parts.Text()).Rules(), "contrast-logistic") << predictor;
    }
}

// With a matrix that says no more than the cells do, so that no other rule has anything to change.
std::string Indicator(const Parts& parts)
{
    std::string text = parts.Text();
    if (text.find("<Array>-1<") != std::string::npos) Put(text, "<Array>-1<", "<Array>0<");
    return text;
}

TEST(ContrastLogisticRule, LeavesOtherDocumentsAlone)
{
    // Another number of categories, of which a missing or invalid one is none.
    for (const char* values :
         {"<Value value='no'/>", "<Value value='no'/><Value value='yes'/><Value value='x'/>",
          "<Value value='no'/><Value value='yes' property='missing'/>", ""}) {
        Parts parts = TwoCategories("", std::string("<DataField name='y' optype='categorical' "
                                                    "dataType='string'>") +
                                            values + "</DataField>");
        EXPECT_TRUE(Adapted(Indicator(parts)).Untouched()) << values;
    }
    // A selector that the reader knows.
    for (const char* named : {"algorithmName='contrastLogistic'", "modelName='contrastLogistic'",
                              "algorithmName='conditionalLogistic'", "algorithmName='GZLM'",
                              "modelName='GEE'", "algorithmName='GLMM'"}) {
        EXPECT_TRUE(Adapted(Indicator(TwoCategories(named))).Untouched()) << named;
    }
    // No contrast that the binary reader takes.
    for (const std::string& predictor :
         {std::string("<Predictor name='f'/>"),
          std::string("<Predictor name='f' contrastMatrixType='sum'/>"),
          "<Predictor name='f'>" + kMatrix + "</Predictor>",
          std::string("<Predictor name='f'><Extension name='other'/></Predictor>"),
          std::string("<Predictor name='f'><Other/><xBasis/></Predictor>")}) {
        Parts parts = TwoCategories();
        parts.factors = predictor;
        EXPECT_EQ(Adapted(Indicator(parts)).Rules(), "") << predictor;
    }
    // Another type; a version that knows no selectors.
    Parts parts = TwoCategories();
    Put(parts.model, "multinomialLogistic", "generalLinear");
    EXPECT_TRUE(Adapted(Indicator(parts)).Untouched());
    parts = TwoCategories();
    parts.root = "PMML version='3.0'";
    EXPECT_TRUE(Adapted(Indicator(parts)).Untouched());
}

// The betas of a binary model in its target's first category.

Parts BetasOfFirst(const std::string& category = "no", const std::string& target = "")
{
    Parts parts = TwoCategories("algorithmName='contrastLogistic'", target);
    Put(parts.betas, "'yes'", "'" + category + "'");
    Put(parts.betas, "'yes'", "'" + category + "'");
    return parts;
}

TEST(BetaCategoryRule, DeclaresTheCategoryOfTheBetasLast)
{
    const Adapted adapted(BetasOfFirst().Text());
    EXPECT_EQ(adapted.Rules(), "beta-category-last");
    EXPECT_TRUE(adapted.Has("<Value value='yes'></><Value value='no'></>"));
    ASSERT_EQ(adapted.adaptations.size(), 1u);
    EXPECT_TRUE(adapted.adaptations[0].rotatedTarget);
    EXPECT_NE(adapted.adaptations[0].change.find("\"no\""), std::string::npos);
    EXPECT_NE(adapted.adaptations[0].change.find("two equal probabilities"), std::string::npos);
    EXPECT_GT(adapted.adaptations[0].place.line, 0);
}

TEST(BetaCategoryRule, FollowsTheRuleThatSelectsTheFamily)
{
    Parts parts = BetasOfFirst();
    Put(parts.model, "algorithmName='contrastLogistic'", "");
    EXPECT_EQ(Adapted(parts.Text()).Rules(), "contrast-logistic beta-category-last");
}

TEST(BetaCategoryRule, KeepsWhatStandsBesideTheValues)
{
    const Adapted adapted(BetasOfFirst("no",
                                       "<DataField name='y' optype='categorical' dataType='string'>"
                                       "<Extension name='e'/><Value value='no'/>"
                                       "<Value value='?' property='missing'/><Value value='yes'/>"
                                       "<Value value='-' property='invalid'/></DataField>")
                              .Text());
    EXPECT_TRUE(
        adapted.Has("<Extension name='e'></><Value property='missing' value='?'></>"
                    "<Value value='yes'></><Value value='no'></>"
                    "<Value property='invalid' value='-'></>"));
}

TEST(BetaCategoryRule, ComparesNumbersAsNumbersAndTextsAsTexts)
{
    const auto field = [](const std::string& type) {
        return "<DataField name='y' optype='categorical' dataType='" + type +
               "'><Value value='1'/><Value value='2'/></DataField>";
    };
    EXPECT_EQ(Adapted(BetasOfFirst("1.0", field("integer")).Text()).Rules(), "beta-category-last");
    EXPECT_TRUE(Adapted(BetasOfFirst("1.0", field("string")).Text()).Untouched());
    EXPECT_TRUE(Adapted(BetasOfFirst("2.0", field("integer")).Text()).Untouched());
    EXPECT_TRUE(Adapted(BetasOfFirst("one", field("integer")).Text()).Untouched());
}

// What it left would be adapted again and again.
TEST(BetaCategoryRule, LeavesACategoryThatStandsTwice)
{
    const auto twice = [](const std::string& type, const std::string& other) {
        return "<DataField name='y' optype='categorical' dataType='" + type +
               "'><Value value='1'/><Value value='" + other + "'/></DataField>";
    };
    EXPECT_TRUE(Adapted(BetasOfFirst("1", twice("string", "1")).Text()).Untouched());
    EXPECT_TRUE(Adapted(BetasOfFirst("1", twice("integer", "1.0")).Text()).Untouched());
}

TEST(BetaCategoryRule, LeavesOtherDocumentsAlone)
{
    EXPECT_TRUE(Adapted(BetasOfFirst("yes").Text()).Untouched());
    EXPECT_TRUE(Adapted(BetasOfFirst("maybe").Text()).Untouched());
    Parts parts = BetasOfFirst();
    Put(parts.model, "contrastLogistic", "GZLM");
    EXPECT_TRUE(Adapted(Indicator(parts)).Untouched());
    parts = BetasOfFirst("no",
                         "<DataField name='y' optype='categorical' dataType='string'>"
                         "<Value value='no'/><Value value='yes'/><Value value='x'/>"
                         "</DataField>");
    EXPECT_TRUE(Adapted(Indicator(parts)).Untouched());
    parts = BetasOfFirst();
    parts.root = "PMML version='3.0'";
    EXPECT_TRUE(Adapted(Indicator(parts)).Untouched());
    // Without cells there is a word about the estimates, and the target stays.
    parts = BetasOfFirst();
    parts.betas = "";
    EXPECT_TRUE(Adapted(Indicator(parts)).Has("<Value value='no'></><Value value='yes'></>"));
}

// Factors whose field lists no values.

Parts OpenFactor(const std::string& type = "string", const std::string& predictor = "")
{
    Parts parts = TwoCategories();
    Put(parts.fields, "dataType='string'><Value value='u'/><Value value='v'/>",
        "dataType='" + type + "'>");
    parts.factors = predictor.empty() ? "<Predictor name='f'/>" : predictor;
    parts.cells =
        "<PPCell value='u' predictorName='f' parameterName='pf'/>"
        "<PPCell value='true' predictorName='f' parameterName='p0'/>"
        "<PPCell value='u' predictorName='f' parameterName='p0'/>"
        "<PPCell value='' predictorName='f' parameterName='p0'/>";
    return parts;
}

TEST(CategoriesOfCellsRule, ListsEachOnceAndAcceptsOthers)
{
    const std::string listed =
        "<Extension extender='velscore' name='unlistedCategories' value='accept'></>"
        "<Value value='u'></><Value value='true'></></>";
    for (const char* type : {"string", "boolean"}) {
        const Adapted adapted(OpenFactor(type).Text());
        EXPECT_EQ(adapted.Rules(), "categories-of-cells") << type;
        EXPECT_TRUE(adapted.Has(listed)) << type << ": " << adapted.after;
    }
    Parts ordinal = OpenFactor();
    Put(ordinal.fields, "<DataField name='f' optype='categorical'",
        "<DataField name='f' optype='ordinal'");
    EXPECT_TRUE(Adapted(ordinal.Text()).Has(listed));
    // An extension below the predictor that is no contrast matrix changes nothing.
    EXPECT_TRUE(
        Adapted(
            OpenFactor("string", "<Predictor name='f'><Extension name='e'/></Predictor>").Text())
            .Has(listed));
}

TEST(CategoriesOfCellsRule, LeavesOtherFactorsAlone)
{
    // Values of its own, of whatever property; a type of numbers.
    for (const char* values : {"<Value value='u'/>", "<Value value='u' property='missing'/>"}) {
        Parts parts = OpenFactor();
        Put(parts.fields, "dataType='string'></DataField>",
            std::string("dataType='string'>") + values + "</DataField>");
        EXPECT_TRUE(Adapted(parts.Text()).Untouched()) << values;
    }
    EXPECT_TRUE(Adapted(OpenFactor("integer").Text()).Untouched());
    Parts continuous = OpenFactor();
    Put(continuous.fields, "<DataField name='f' optype='categorical'",
        "<DataField name='f' optype='continuous'");
    EXPECT_TRUE(Adapted(continuous.Text()).Untouched());
    // No factor, or one without a cell.
    Parts none = OpenFactor();
    none.factors = "";
    none.covariates = "<Predictor name='f'/>";
    EXPECT_TRUE(Adapted(none.Text()).Untouched());
    Parts unused = OpenFactor();
    unused.cells = "";
    EXPECT_TRUE(Adapted(unused.Text()).Untouched());
    // Contrasts, which count categories or list them. (The selector keeps the family.)
    for (const std::string& inner :
         {"<Categories><Category value='u'/><Category value='v'/></Categories>" + kMatrix, kMatrix,
          std::string("<Extension name='e'/>") + kMatrix, std::string("<xBasis/>"),
          std::string("<Extension name='contrastMatrix'/>")}) {
        Parts parts = OpenFactor(
            "string", "<Predictor name='f' contrastMatrixType='t'>" + inner + "</Predictor>");
        parts.model += " algorithmName='contrastLogistic'";
        const Adapted adapted(parts.Text());
        EXPECT_EQ(adapted.Rules(), "") << inner;
        EXPECT_FALSE(adapted.Has("unlistedCategories")) << inner;
    }
}

}  // namespace
}  // namespace MCVelscore_850
