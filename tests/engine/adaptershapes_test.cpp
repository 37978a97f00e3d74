// What the adapter does to the shapes of published documents that the reader would take otherwise.

#include <gtest/gtest.h>

#include "host/messages/messages.h"
#include "tests/engine/adapted.h"

namespace MCVelscore_850 {
namespace {

// Contrasts in a family that knows none.

const std::string kFields =
    "<DataField name='y' optype='continuous' dataType='double'/>"
    "<DataField name='f' optype='categorical' dataType='string'><Value value='u'/>"
    "<Value value='v'/><Value value='w'/></DataField>";

// y on factor f, whose matrix has these rows; the cells name u and v.
Parts WithContrasts(const std::string& rows, const std::string& categories = "")
{
    Parts parts;
    parts.model = "modelType='generalLinear' functionName='regression'";
    parts.fields = kFields;
    parts.schema = "<MiningField name='y' usageType='target'/><MiningField name='f'/>";
    parts.parameters = "<Parameter name='p0'/><Parameter name='p1'/><Parameter name='p2'/>";
    parts.factors = "<Predictor name='f' contrastMatrixType='t'>" + categories +
                    "<Matrix nbRows='3' nbCols='2'>" + rows + "</Matrix></Predictor>";
    parts.covariates = "";
    parts.cells =
        "<PPCell parameterName='p1' predictorName='f' value='u'/>"
        "<PPCell parameterName='p2' predictorName='f' value='v'/>";
    parts.betas = "<PCell parameterName='p0' beta='1'/>";
    return parts;
}
const std::string kSum = "<Array>1 0</Array><Array>0 1</Array><Array>-1 -1</Array>";
const std::string kIndicator = "<Array>1 0</Array><Array>0 1</Array><Array>0 0</Array>";

TEST(ContrastColumnsRule, MakesACovariateOfEachColumn)
{
    const Adapted adapted(WithContrasts(kSum).Text());
    EXPECT_EQ(adapted.Rules(), "contrast-columns");
    EXPECT_TRUE(adapted.Has("<FactorList></>")) << adapted.after;
    EXPECT_TRUE(
        adapted.Has("<CovariateList><Predictor name='f[u]'></><Predictor name='f[v]'></></>"));
    EXPECT_TRUE(adapted.Has("<PPCell parameterName='p2' predictorName='f[v]' value='1'>"));
    EXPECT_TRUE(adapted.Has("<DerivedField dataType='double' name='f[u]' optype='continuous'>"));
    const std::string row = "<row><category></><contrast></></>";  // the helper writes no text
    EXPECT_TRUE(adapted.Has("<InlineTable>" + row + row + row + "</>"));
}

TEST(ContrastColumnsRule, TakesTheCategoriesInTheOrderOfTheMatrix)
{
    // The first column is w's, and no cell names it: only v's becomes a covariate.
    Parts parts = WithContrasts(
        kSum,
        "<Categories><Category value='w'/><Category value='v'/><Category value='u'/></Categories>");
    parts.cells = "<PPCell parameterName='p2' predictorName='f' value='v'/>";
    const Adapted adapted(parts.Text());
    EXPECT_EQ(adapted.Rules(), "contrast-columns");
    EXPECT_FALSE(adapted.Has("'f[w]'"));
    EXPECT_TRUE(adapted.Has("predictorName='f[v]' value='1'"));
}

TEST(ContrastColumnsRule, GivesANameThatNoFieldHas)
{
    Parts parts = WithContrasts(kSum);
    parts.fields += "<DataField name='f[u]' optype='continuous' dataType='double'/>";
    EXPECT_TRUE(Adapted(parts.Text()).Has("<Predictor name='f[u]&apos;'>") ||
                Adapted(parts.Text()).Has("<Predictor name='f[u]''>"));
}

TEST(ContrastColumnsRule, LeavesWhatSaysTheSameOrIsNotWhole)
{
    for (const std::string& rows :
         {kIndicator, std::string("<Array>1 0</Array><Array>0 1</Array>"),
          std::string("<Array>1 0</Array><Array>0 x</Array><Array>-1 -1</Array>"),
          std::string("<Array>1 0</Array><Array>0</Array><Array>-1 -1</Array>"),
          // v has no column
          std::string("<Array>1</Array><Array>0</Array><Array>-1</Array>"), std::string()}) {
        EXPECT_TRUE(Adapted(WithContrasts(rows).Text()).Untouched()) << rows;
    }
    // Families that read contrasts themselves.
    for (const char* model :
         {"modelType='CoxRegression'", "modelType='generalLinear' algorithmName='Cox'",
          "modelType='multinomialLogistic' algorithmName='contrastLogistic'"}) {
        Parts parts = WithContrasts(kSum);
        parts.model = model;
        EXPECT_TRUE(Adapted(parts.Text()).Untouched()) << model;
    }
}

TEST(ContrastColumnsRule, RefusesATableOfTooManyNumbers)
{
    std::string categories, rows, cells;
    for (int i = 0; i < 320; ++i) {  // 320 * 320 is more than 100,000
        categories += "<Category value='" + std::to_string(i) + "'/>";
        std::string row;
        for (int j = 0; j < 320; ++j) row += "2 ";
        rows += "<Array>" + row + "</Array>";
        cells += "<PPCell parameterName='p1' predictorName='f' value='" + std::to_string(i) + "'/>";
    }
    Parts parts = WithContrasts(rows, "<Categories>" + categories + "</Categories>");
    parts.cells = cells;
    try {
        Adapted adapted(parts.Text());
        FAIL() << "taken";
    } catch (const VSException& refusal) {
        EXPECT_EQ(refusal.GetErrorCode(), kContrastsTooLarge);
        EXPECT_EQ(refusal.GetArguments(), (std::vector<std::string>{"f", "100000"}));
    }
}

// The thresholds of an ordinal model.

// Categories 1, 2, 3; thresholds of p0, the slope of p1.
Parts Ordinal(const std::string& betas,
              const std::string& parameters = "<Parameter name='p0'/><Parameter name='p1'/>")
{
    Parts parts;
    parts.model = "modelType='ordinalMultinomial' functionName='classification'";
    parts.fields =
        "<DataField name='y' optype='ordinal' dataType='integer'><Value value='1'/>"
        "<Value value='2'/><Value value='3'/></DataField>"
        "<DataField name='a' optype='continuous' dataType='double'/>";
    parts.schema = "<MiningField name='y' usageType='target'/><MiningField name='a'/>";
    parts.parameters = parameters;
    parts.covariates = "<Predictor name='a'/>";
    parts.cells = "<PPCell parameterName='p1' predictorName='a' value='1'/>";
    parts.betas = betas;
    return parts;
}
std::string Threshold(const char* category, const char* beta, const char* name = "p0")
{
    return std::string("<PCell targetCategory='") + category + "' parameterName='" + name +
           "' beta='" + beta + "'/>";
}
std::string Slope(const char* beta, const char* category = nullptr)
{
    return std::string("<PCell parameterName='p1' beta='") + beta + "'" +
           (category == nullptr ? "" : std::string(" targetCategory='") + category + "'") + "/>";
}
// The cells as the helper writes them.
const std::string kInOrder =
    "<ParamMatrix><PCell beta='-1' parameterName='p0' targetCategory='1'></>"
    "<PCell beta='2' parameterName='p0' targetCategory='2'></><PCell beta='0.5' "
    "parameterName='p1'";

TEST(ThresholdsFirstRule, OrdersTheCells)
{
    for (const std::string& betas :
         {Slope("0.5") + Threshold("1", "-1") + Threshold("2", "2"),
          Threshold("1", "-1") + Slope("0.5") + Threshold("2", "2"),
          Threshold("2", "2") + Threshold("1", "-1") + Slope("0.5"),
          // a beta for each category, and a threshold of the last one
          Threshold("1", "-1") + Slope("0.5", "1") + Threshold("2", "2") + Slope("0.50", "2"),
          Threshold("1", "-1") + Threshold("2", "2") + Threshold("3", "9") + Slope("0.5")}) {
        const Adapted adapted(Ordinal(betas).Text());
        EXPECT_EQ(adapted.Rules(), "thresholds-first") << betas;
        EXPECT_TRUE(adapted.Has(kInOrder)) << adapted.after;
        EXPECT_EQ(adapted.after.find("'0.50'"), std::string::npos);
        EXPECT_EQ(adapted.after.find("beta='9'"), std::string::npos);
    }
}

TEST(ThresholdsFirstRule, FindsCategoriesByTheirNumber)
{
    const Adapted adapted(
        Ordinal(Slope("0.5") + Threshold("1.0", "-1") + Threshold("2", "2")).Text());
    EXPECT_EQ(adapted.Rules(), "thresholds-first");
}

TEST(ThresholdsFirstRule, PutsTheParameterFirst)
{
    const std::string betas = Threshold("1", "-1") + Threshold("2", "2") + Slope("0.5");
    const Adapted adapted(
        Ordinal(betas, "<Parameter name='p1'/><Parameter name='p0' label='Intercept'/>").Text());
    EXPECT_EQ(adapted.Rules(), "thresholds-first");
    EXPECT_TRUE(adapted.Has(
        "<ParameterList><Parameter label='Intercept' name='p0'></><Parameter name='p1'></></>"));
}

// The reader would move a parameter of that name behind the others.
TEST(ThresholdsFirstRule, RenamesAConstant)
{
    Parts parts = Ordinal(
        Threshold("1", "-1", "(Constant)") + Threshold("2", "2", "(Constant)") + Slope("0.5"),
        "<Parameter name='(Constant)'/><Parameter name='p1'/>");
    parts.covariances = "<PCovCell pRow='(Constant)' pCol='p1' tRow='1' value='0'/>";
    const Adapted adapted(parts.Text());
    EXPECT_EQ(adapted.Rules(), "thresholds-first");
    EXPECT_EQ(adapted.after.find("(Constant)"), std::string::npos);
    EXPECT_TRUE(adapted.Has("<Parameter name='Intercept'>"));
    EXPECT_TRUE(adapted.Has("pRow='Intercept'"));
    EXPECT_TRUE(adapted.Has("<PCell beta='2' parameterName='Intercept' targetCategory='2'>"));
}

TEST(ThresholdsFirstRule, LeavesOtherDocumentsAlone)
{
    const std::string both = Threshold("1", "-1") + Threshold("2", "2");
    for (const std::string& betas :
         {both + Slope("0.5"), Slope("0.5") + Threshold("1", "-1"),
          Slope("0.5") + both + Threshold("1", "3"), Slope("0.5") + both + Threshold("7", "3")}) {
        EXPECT_TRUE(Adapted(Ordinal(betas).Text()).Untouched()) << betas;
    }
    // Two parameters without a predictor: nothing tells which one holds the thresholds.
    EXPECT_TRUE(
        Adapted(Ordinal(Slope("0.5") + both,
                        "<Parameter name='p0'/><Parameter name='p1'/><Parameter name='p2'/>")
                    .Text())
            .Untouched());
    Parts other = Ordinal(Slope("0.5") + both);
    other.model = "modelType='multinomialLogistic'";
    EXPECT_TRUE(Adapted(other.Text()).Untouched());
}

TEST(ThresholdsFirstRule, RefusesBetasThatDiffer)
{
    try {
        Adapted adapted(Ordinal(Threshold("1", "-1") + Slope("0.5", "1") + Threshold("2", "2") +
                                Slope("0.25", "2"))
                            .Text());
        FAIL() << "taken";
    } catch (const VSException& refusal) {
        EXPECT_EQ(refusal.GetErrorCode(), kSeveralSlopes);
        EXPECT_EQ(refusal.GetArguments(), std::vector<std::string>{"p1"});
        EXPECT_GT(refusal.GetPlace().line, 0);
    }
}

// Models of two categories.

Parts Binomial(const std::string& attributes)
{
    Parts parts;
    parts.model = "modelType='generalizedLinear' algorithmName='GZLM' " + attributes;
    parts.fields =
        "<DataField name='y' optype='categorical' dataType='integer'><Value value='0'/>"
        "<Value value='1'/></DataField><DataField name='a' optype='continuous' dataType='double'/>"
        "<DataField name='b' optype='continuous' dataType='double'/>";
    return parts;
}

TEST(ClassificationTargetRule, ClassifiesATargetOfTwoCategories)
{
    for (const char* function : {"", "functionName='regression' "}) {
        const Adapted adapted(Binomial(std::string(function) + "distribution='binomial'").Text());
        EXPECT_EQ(adapted.Rules(), "classification-target") << function;
        EXPECT_TRUE(adapted.Has("functionName='classification'")) << function;
    }
    for (const char* attributes :
         {"functionName='classification' distribution='binomial'",
          "functionName='regression' distribution='poisson'", "functionName='regression'"}) {
        EXPECT_TRUE(Adapted(Binomial(attributes).Text()).Untouched()) << attributes;
    }
    // A target of three categories is another matter.
    Parts three = Binomial("functionName='regression' distribution='binomial'");
    three.fields.replace(three.fields.find("<Value value='1'/>"), 18,
                         "<Value value='1'/><Value value='2'/>");
    EXPECT_TRUE(Adapted(three.Text()).Untouched());
    Parts numeric = Binomial("functionName='regression' distribution='binomial'");
    numeric.fields.replace(numeric.fields.find("categorical"), 11, "continuous");
    EXPECT_TRUE(Adapted(numeric.Text()).Untouched());
}

TEST(CategoryOfBetasRule, TakesTheOneThatIsNotTheReference)
{
    const std::string classes = "functionName='classification' distribution='binomial' ";
    const Adapted one(Binomial(classes + "targetReferenceCategory='0'").Text());
    EXPECT_EQ(one.Rules(), "category-of-betas");
    EXPECT_TRUE(one.Has("<PCell beta='1' parameterName='pa' targetCategory='1'>"));
    const Adapted zero(Binomial(classes + "targetReferenceCategory='1.0'").Text());
    EXPECT_TRUE(zero.Has("<PCell beta='1' parameterName='pa' targetCategory='0'>"));
    for (const char* reference : {"", "targetReferenceCategory='2'"}) {
        EXPECT_TRUE(Adapted(Binomial(classes + reference).Text()).Untouched()) << reference;
    }
    // A model of counts has no categories, whatever it calls its reference.
    EXPECT_TRUE(Adapted(Binomial("functionName='regression' distribution='poisson' "
                                 "targetReferenceCategory='0'")
                            .Text())
                    .Untouched());
    // A multinomial model of two categories as well.
    Parts multinomial = Binomial("");
    multinomial.model =
        "modelType='multinomialLogistic' functionName='classification' "
        "targetReferenceCategory='0'";
    EXPECT_EQ(Adapted(multinomial.Text()).Rules(), "category-of-betas");
    Parts named = Binomial(classes + "targetReferenceCategory='0'");
    named.betas += "<PCell targetCategory='1' parameterName='pa' beta='1'/>";
    EXPECT_TRUE(Adapted(named.Text()).Untouched());
}

TEST(CategorySpellingRule, WritesANumberAsItsReaderDoes)
{
    const auto binomial = [](const std::string& category, const std::string& model) {
        Parts parts = Binomial("functionName='classification' distribution='binomial'");
        parts.fields.replace(parts.fields.find("<Value value='1'/>"), 18, "<Value value='1.0'/>");
        if (!model.empty()) parts.model = model;
        parts.betas = "<PCell targetCategory='" + category + "' parameterName='pa' beta='1'/>";
        return Adapted(parts.Text());
    };
    struct {
        const char* category;
        const char* model;
        const char* rules;
        const char* spelled;
    } const rows[] = {
        {"1.0", "", "category-spelling", "1"},
        {"+1", "", "category-spelling", "1"},
        {"1e0", "", "category-spelling", "1"},
        {"1", "", "", "1"},
        {"one", "", "", "one"},
        {"1.0",
         "modelType='multinomialLogistic' algorithmName='GZLM' distribution='binomial' "
         "linkFunction='probit' functionName='classification'",
         "category-spelling", "1"},
        // Other families compare numbers.
        {"1.0", "modelType='multinomialLogistic' functionName='classification'", "", "1.0"},
    };
    for (const auto& row : rows) {
        const Adapted adapted = binomial(row.category, row.model);
        EXPECT_EQ(adapted.Rules(), row.rules) << row.category << row.model;
        EXPECT_TRUE(adapted.Has("targetCategory='" + std::string(row.spelled) + "'"))
            << row.category << row.model;
    }
}

TEST(CategoryOfBetasRule, LeavesACategoryWithoutAName)
{
    Parts parts = Binomial("functionName='classification' distribution='binomial'");
    parts.fields =
        "<DataField name='y' optype='categorical' dataType='string'><Value value=''/>"
        "<Value value=''/></DataField><DataField name='a' optype='continuous' dataType='double'/>"
        "<DataField name='b' optype='continuous' dataType='double'/>";
    EXPECT_TRUE(Adapted(parts.Text()).Untouched());
}

// invalidValueTreatment "asIs".

Parts AsIs(const std::string& attributes, const std::string& within)
{
    Parts parts;
    parts.model = "modelType='generalLinear' functionName='regression'";
    parts.fields = "<DataField name='y' optype='continuous' dataType='double'/>" + within;
    parts.schema = "<MiningField name='y' usageType='target'/><MiningField name='a' " + attributes +
                   "/><MiningField name='f' " + attributes + "/>";
    parts.factors = "<Predictor name='f'/>";
    parts.covariates = "<Predictor name='a'/>";
    parts.cells = "<PPCell parameterName='pa' predictorName='a' value='1'/>";
    return parts;
}
const std::string kInterval =
    "<DataField name='a' optype='continuous' dataType='double'><Interval closure='closedClosed' "
    "leftMargin='0' rightMargin='1'/></DataField>";
const std::string kTexts =
    "<DataField name='f' optype='categorical' dataType='string'><Value value='u'/></DataField>";

TEST(ValuesAsIsRule, TakesAwayIntervalsAndAcceptsCategories)
{
    const Adapted adapted(AsIs("invalidValueTreatment='asIs'", kInterval + kTexts).Text());
    EXPECT_EQ(adapted.Rules(), "values-as-is");
    EXPECT_FALSE(adapted.Has("<Interval"));
    EXPECT_TRUE(
        adapted.Has("<Extension extender='velscore' name='unlistedCategories' value='accept'>"));
}

TEST(ValuesAsIsRule, LeavesOtherTreatments)
{
    for (const char* attributes :
         {"", "invalidValueTreatment='returnInvalid'", "invalidValueTreatment='asMissing'",
          "invalidValueTreatment='asIs' usageType='supplementary'"}) {
        EXPECT_TRUE(Adapted(AsIs(attributes, kInterval + kTexts).Text()).Untouched()) << attributes;
    }
    // One that takes others already says so once.
    const std::string accepting =
        "<DataField name='a' optype='continuous' dataType='double'/>"
        "<DataField name='f' optype='categorical' dataType='string'><Extension "
        "extender='velscore' name='unlistedCategories' value='accept'/><Value value='u'/>"
        "</DataField>";
    EXPECT_TRUE(Adapted(AsIs("invalidValueTreatment='asIs'", accepting).Text()).Untouched());
    const std::string open = "<DataField name='a' optype='continuous' dataType='double'/>";
    EXPECT_TRUE(Adapted(AsIs("invalidValueTreatment='asIs'", open).Text()).Untouched());
}

// Replacements that are none of a factor's categories.

// A factor f of that type, its mining field with these attributes.
Parts Replaced(const std::string& attributes, const std::string& type, const std::string& values)
{
    Parts parts = AsIs("",
                       "<DataField name='a' optype='continuous' dataType='double'/>"
                       "<DataField name='f' optype='categorical' dataType='" +
                           type + "'>" + values + "</DataField>");
    parts.schema =
        "<MiningField name='y' usageType='target'/><MiningField name='a'/>"
        "<MiningField name='f' " +
        attributes + "/>";
    return parts;
}

TEST(ReplacementUnlistedRule, TellsAReplacementThatIsNoCategoryAndChangesNothing)
{
    struct Case {
        std::string attributes;
        const char* type;
        const char* values;
        const char* told;  // the text; null for nothing
    };
    const Case cases[] = {
        {"missingValueReplacement='-1'", "string", "<Value value='u'/>", "\"-1\""},
        {"missingValueReplacement='u'", "string", "<Value value='u'/>", nullptr},
        {"missingValueReplacement='-1'", "string",
         "<Value value='u'/><Value value='-1' property='invalid'/>", "\"-1\""},
        {"invalidValueTreatment='asValue' invalidValueReplacement='0'", "string",
         "<Value value='u'/>", "\"0\""},
        {"invalidValueReplacement='0'", "string", "<Value value='u'/>", nullptr},
        {"missingValueReplacement='-1'", "string", "", nullptr},  // takes any text
        {"missingValueReplacement='-1'", "string",
         "<Value value='u'/><Extension extender='velscore' name='unlistedCategories' "
         "value='accept'/>",
         nullptr},
        {"missingValueReplacement='1.0'", "integer", "<Value value='1'/>", nullptr},
        {"missingValueReplacement='2'", "integer", "<Value value='1'/>", "\"2\""},
        {"missingValueReplacement='1'", "boolean", "<Value value='true'/>", nullptr},
        {"missingValueReplacement='0'", "boolean", "<Value value='true'/>", "\"0\""},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.attributes + " " + each.type + " " + each.values);
        const Adapted adapted(Replaced(each.attributes, each.type, each.values).Text());
        EXPECT_EQ(adapted.before, adapted.after);
        EXPECT_EQ(adapted.Rules(), each.told == nullptr ? "" : "replacement-unlisted");
        if (each.told == nullptr || adapted.adaptations.empty()) continue;
        EXPECT_EQ(adapted.adaptations[0].change.rfind(
                      "replacement " + std::string(each.told) + " of \"f\" is none of its ", 0),
                  0u)
            << adapted.adaptations[0].change;
    }
}

// A cell adds its category to those that the field lists.
TEST(ReplacementUnlistedRule, CategoriesOfCellsAreListedToo)
{
    Parts parts = Replaced("missingValueReplacement='7'", "string", "<Value value='u'/>");
    parts.cells += "<PPCell parameterName='pb' predictorName='f' value='7'/>";
    EXPECT_TRUE(Adapted(parts.Text()).Untouched());
}

}  // namespace
}  // namespace MCVelscore_850
