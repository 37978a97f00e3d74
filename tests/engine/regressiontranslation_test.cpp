// RegressionModel documents in the general form: what becomes of their parts, and what is refused.

#include "engine/documents/regressiontranslation.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/messages/messages.h"
#include "tests/engine/adapted.h"

namespace MCVelscore_850 {
namespace {

// The parts of a document that a test cares about.
struct RegressionParts {
    std::string version = "4.4";
    std::string fields =
        "<DataField name='y' optype='continuous' dataType='double'/>"
        "<DataField name='x' optype='continuous' dataType='double'/>"
        "<DataField name='f' optype='categorical' dataType='string'><Value value='a'/>"
        "<Value value='b'/></DataField>";
    std::string head = "functionName='regression'";
    std::string schema =
        "<MiningField name='y' usageType='target'/><MiningField name='x'/><MiningField name='f'/>";
    std::string inModel;
    std::string tables =
        "<RegressionTable intercept='1'><NumericPredictor name='x' coefficient='2'/>"
        "</RegressionTable>";
    std::string atEnd;   // of the model
    std::string beside;  // the model

    std::string Text() const
    {
        return "<PMML version='" + version + "'><DataDictionary>" + fields +
               "</DataDictionary>\n<RegressionModel " + head + ">\n<MiningSchema>" + schema +
               "</MiningSchema>" + inModel + "\n" + tables + atEnd + "</RegressionModel>\n" +
               beside + "</PMML>";
    }
};

RegressionParts Classifying(const std::string& normalization, const std::string& tables)
{
    RegressionParts parts;
    parts.head = "functionName='classification' normalizationMethod='" + normalization + "'";
    parts.fields =
        "<DataField name='y' optype='categorical' dataType='string'><Value value='no'/>"
        "<Value value='yes'/></DataField>"
        "<DataField name='x' optype='continuous' dataType='double'/>"
        "<DataField name='f' optype='categorical' dataType='string'><Value value='a'/>"
        "<Value value='b'/></DataField>";
    parts.tables = tables;
    return parts;
}

const std::string kYes =
    "<RegressionTable intercept='1' targetCategory='yes'>"
    "<NumericPredictor name='x' coefficient='2'/></RegressionTable>";
const std::string kNo = "<RegressionTable intercept='0' targetCategory='no'/>";

const std::string kSo = "<RegressionTable intercept='3' targetCategory='so'/>";

RegressionParts OfThree(const std::string& normalization, const std::string& optype,
                        const std::string& tables)
{
    RegressionParts parts = Classifying(normalization, tables);
    parts.fields = "<DataField name='y' optype='" + optype +
                   "' dataType='string'><Value value='no'/><Value value='yes'/>"
                   "<Value value='so'/></DataField>"
                   "<DataField name='x' optype='continuous' dataType='double'/>"
                   "<DataField name='f' optype='categorical' dataType='string'/>";
    return parts;
}

TEST(RegressionTranslation, ATableOfANumberBecomesAGeneralLinearModel)
{
    const Adapted adapted{RegressionParts{}.Text()};
    EXPECT_EQ(adapted.Rules(), "regression-model");
    EXPECT_TRUE(
        adapted.Has("<GeneralRegressionModel algorithmName='generalLinearModel' "
                    "functionName='regression' modelType='generalLinear' targetVariableName='y'>"))
        << adapted.after;
    EXPECT_TRUE(
        adapted.Has("<ParameterList><Parameter name='(Intercept)'></><Parameter name='x'></></>"
                    "<CovariateList><Predictor name='x'></></>"
                    "<PPMatrix><PPCell parameterName='x' predictorName='x' value='1'></></>"
                    "<ParamMatrix><PCell beta='1' parameterName='(Intercept)'></>"
                    "<PCell beta='2' parameterName='x'></></></>"))
        << adapted.after;
    EXPECT_FALSE(adapted.Has("<RegressionModel"));
    EXPECT_FALSE(adapted.adaptations.front().rule->strict);
    EXPECT_EQ(adapted.adaptations.front().place.line, 2U);
    EXPECT_EQ(adapted.adaptations.front().family, "linear regression");
}

TEST(RegressionTranslation, TheNewElementsHaveThePlacesOfThoseTheyStandFor)
{
    Adapted adapted{RegressionParts{}.Text()};
    const Element model = adapted.document.Root().Child("GeneralRegressionModel");
    EXPECT_EQ(model.Place().line, 2U);
    EXPECT_EQ(model.Place().path, "PMML/GeneralRegressionModel");
    EXPECT_EQ(model.Child("PPMatrix").Child("PPCell").Place().line, 4U);
    EXPECT_EQ(model.Child("CovariateList").Child("Predictor").Place().line, 4U);
    EXPECT_EQ(model.Child("MiningSchema").Place().line, 3U);
}

TEST(RegressionTranslation, AGeneralRegressionModelStaysWhateverStandsBeside)
{
    EXPECT_TRUE(Adapted{Parts{}.Text()}.Untouched());
}

// How the general form says each pair of shape and normalization.
struct FormCase {
    std::string name;
    std::string normalization;
    bool classifies;
    std::string expected;
};

class RegressionForms : public testing::TestWithParam<FormCase> {};

TEST_P(RegressionForms, HaveTheirModelTypeAndLink)
{
    const FormCase& row = GetParam();
    RegressionParts parts;
    if (row.classifies) {
        parts = Classifying(row.normalization, kYes + kNo);
    } else {
        parts.head += " normalizationMethod='" + row.normalization + "'";
    }
    const Adapted adapted{parts.Text()};
    EXPECT_TRUE(adapted.Has("<GeneralRegressionModel " + row.expected)) << adapted.after;
}

INSTANTIATE_TEST_SUITE_P(
    All, RegressionForms,
    testing::Values(
        FormCase{"None", "none", false, "algorithmName='generalLinearModel'"},
        FormCase{"Exp", "exp", false,
                 "algorithmName='GZLM' distribution='normal' functionName='regression' "
                 "linkFunction='log' modelType='generalizedLinear'"},
        FormCase{"Softmax", "softmax", false,
                 "algorithmName='GZLM' distribution='normal' functionName='regression' "
                 "linkFunction='logit'"},
        FormCase{"Probit", "probit", false,
                 "algorithmName='GZLM' distribution='normal' functionName='regression' "
                 "linkFunction='probit'"},
        FormCase{"TwoLogit", "logit", true,
                 "algorithmName='multinomialLogistic' functionName='classification' "
                 "modelType='multinomialLogistic'"},
        FormCase{"TwoSoftmax", "softmax", true, "algorithmName='multinomialLogistic'"},
        FormCase{"TwoNone", "none", true,
                 "algorithmName='GZLM' distribution='binomial' functionName='classification' "
                 "linkFunction='identity' modelType='generalizedLinear'"},
        FormCase{"TwoCloglog", "cloglog", true,
                 "algorithmName='GZLM' distribution='binomial' functionName='classification' "
                 "linkFunction='cloglog'"}),
    [](const auto& each) { return each.param.name; });

TEST(RegressionTranslation, OfTwoCategoriesTheFirstTableDecidesButForSoftmax)
{
    const std::string other =
        "<RegressionTable intercept='9' targetCategory='no'>"
        "<NumericPredictor name='x' coefficient='8'/></RegressionTable>";
    const Adapted logit{Classifying("logit", kYes + other).Text()};
    EXPECT_FALSE(logit.Has("beta='9'")) << logit.after;
    EXPECT_TRUE(logit.Has("<PCell beta='2' parameterName='x' targetCategory='yes'>"));
    const Adapted softmax{Classifying("softmax", kYes + other).Text()};
    EXPECT_TRUE(softmax.Has("<PCell beta='8' parameterName='x' targetCategory='no'>"))
        << softmax.after;
}

TEST(RegressionTranslation, ATableThatDoesNotCountIsTold)
{
    const std::string other =
        "<RegressionTable intercept='9' targetCategory='no'>"
        "<NumericPredictor name='x' coefficient='8'/></RegressionTable>";
    const Adapted adapted{Classifying("probit", kYes + other).Text()};
    EXPECT_NE(adapted.adaptations.front().change.find("RegressionTable of \"no\" doesn't count"),
              std::string::npos)
        << adapted.adaptations.front().change;
    EXPECT_EQ(Adapted{Classifying("probit", kYes + kNo).Text()}.adaptations.front().change.find(
                  "doesn't count"),
              std::string::npos);
}

TEST(RegressionTranslation, OrderedCategoriesShareSlopesOrAreStepsOfTheirOwnEquations)
{
    const std::string slope = "<NumericPredictor name='x' coefficient='2'/></RegressionTable>";
    const std::string no = "<RegressionTable intercept='-1' targetCategory='no'>" + slope;
    const std::string yes = "<RegressionTable intercept='1' targetCategory='yes'>" + slope;
    const Adapted shared{OfThree("logit", "ordinal", yes + no + kSo).Text()};
    EXPECT_TRUE(shared.Has("modelType='ordinalMultinomial'")) << shared.after;
    EXPECT_TRUE(
        shared.Has("<ParamMatrix>"
                   "<PCell beta='-1' parameterName='(Intercept)' targetCategory='no'></>"
                   "<PCell beta='1' parameterName='(Intercept)' targetCategory='yes'></>"
                   "<PCell beta='2' parameterName='x'></></>"))
        << shared.after;
    const Adapted own{OfThree("logit", "ordinal", kNo + yes + kSo).Text()};
    EXPECT_TRUE(own.Has("<GeneralRegressionModel algorithmName='normalizedRegression'"))
        << own.after;
    EXPECT_TRUE(own.Has("<Extension extender='velscore' name='orderedCategories' value='true'>"));
}

TEST(RegressionTranslation, OfMoreThanTwoCategoriesTheLastTablesHasWhatTheOthersLeave)
{
    const Adapted adapted{OfThree("logit", "categorical", kSo + kYes + kNo).Text()};
    EXPECT_TRUE(
        adapted.Has("<Extension extender='velscore' name='normalizationMethod' value='logit'>"))
        << adapted.after;
    EXPECT_TRUE(adapted.Has("<Extension extender='velscore' name='remainderCategory' value='no'>"));
    EXPECT_FALSE(adapted.Has("targetCategory='no'"));
}

TEST(RegressionTranslation, AFieldThatListsItsCategoriesIsAFactorWhoseMissingValuesCountAsNone)
{
    RegressionParts parts;
    parts.tables =
        "<RegressionTable intercept='1'><CategoricalPredictor name='f' value='b' "
        "coefficient='2'/></RegressionTable>";
    const Adapted adapted{parts.Text()};
    EXPECT_TRUE(adapted.Has("<FactorList><Predictor name='f'></></>")) << adapted.after;
    EXPECT_TRUE(adapted.Has("<PPCell parameterName='f[b]' predictorName='f' value='b'>"));
    EXPECT_TRUE(
        adapted.Has("<Extension extender='velscore' name='allowMissingFactors' value='true'>"));
    EXPECT_TRUE(adapted.Has("<MiningField invalidValueTreatment='returnInvalid' name='f'>"));
}

TEST(RegressionTranslation, AFieldThatIsANumberSomewhereIsNoFactor)
{
    RegressionParts parts;
    parts.fields =
        "<DataField name='y' optype='continuous' dataType='double'/>"
        "<DataField name='n' optype='ordinal' dataType='integer'><Value value='1'/>"
        "<Value value='2'/></DataField>";
    parts.schema = "<MiningField name='y' usageType='target'/><MiningField name='n'/>";
    // Behind the category too.
    for (const std::string number :
         {"<NumericPredictor name='n' coefficient='2'/>",
          "<PredictorTerm coefficient='2'><FieldRef field='n'/></PredictorTerm>"}) {
        const std::string category = "<CategoricalPredictor name='n' value='2' coefficient='3'/>";
        const bool isFirst = number.starts_with("<Num");
        parts.tables = "<RegressionTable intercept='1'>" +
                       (isFirst ? number + category : category + number) + "</RegressionTable>";
        const Adapted adapted{parts.Text()};
        EXPECT_FALSE(adapted.Has("<FactorList>")) << adapted.after;
        EXPECT_TRUE(adapted.Has("<DataField dataType='integer' name='n' optype='continuous'>"));
        EXPECT_TRUE(adapted.Has("<NormDiscrete field='n' mapMissingTo='0' value='2'>"));
    }
}

TEST(RegressionTranslation, AFamilyThatWantsEveryFactorGetsIndicators)
{
    RegressionParts parts;
    parts.head += " normalizationMethod='exp'";
    parts.tables =
        "<RegressionTable intercept='1'><CategoricalPredictor name='f' value='b' "
        "coefficient='2'/></RegressionTable>";
    const Adapted adapted{parts.Text()};
    EXPECT_FALSE(adapted.Has("<FactorList>")) << adapted.after;
    EXPECT_TRUE(
        adapted.Has("<DerivedField dataType='double' name='f[b]' optype='continuous'>"
                    "<NormDiscrete field='f' mapMissingTo='0' value='b'>"));
    EXPECT_TRUE(adapted.Has("<CovariateList><Predictor name='f[b]'></></>"));
}

TEST(RegressionTranslation, ATermOfACategoryThatItsFieldDoesNotListIsLeftOutAndTold)
{
    RegressionParts parts;
    parts.tables =
        "<RegressionTable intercept='1'><CategoricalPredictor name='f' value='zebra' "
        "coefficient='2'/></RegressionTable>";
    const Adapted adapted{parts.Text()};
    EXPECT_FALSE(adapted.Has("beta='2'")) << adapted.after;
    EXPECT_NE(adapted.adaptations.front().change.find("zebra"), std::string::npos);
}

TEST(RegressionTranslation, WholePowersAreExponentsAndOthersDerived)
{
    RegressionParts parts;
    parts.tables =
        "<RegressionTable intercept='1'>"
        "<NumericPredictor name='x' exponent='3' coefficient='2'/>"
        "<NumericPredictor name='x' exponent='-1' coefficient='4'/>"
        "<PredictorTerm coefficient='5'><FieldRef field='x'/><FieldRef field='x'/></PredictorTerm>"
        "</RegressionTable>";
    const Adapted adapted{parts.Text()};
    EXPECT_TRUE(adapted.Has("<PPCell parameterName='x^3' predictorName='x' value='3'>"))
        << adapted.after;
    EXPECT_TRUE(adapted.Has("<PPCell parameterName='x^2' predictorName='x' value='2'>"));
    EXPECT_TRUE(adapted.Has("<PPCell parameterName='x^-1' predictorName='x^-1' value='1'>"));
    EXPECT_TRUE(adapted.Has("name='x^-1' optype='continuous'><Apply function='pow'>"));
}

TEST(RegressionTranslation, ATermThatStandsTwiceHasTwoParameters)
{
    RegressionParts parts;
    parts.tables =
        "<RegressionTable intercept='1'><NumericPredictor name='x' coefficient='2'/>"
        "<NumericPredictor name='x' coefficient='3'/></RegressionTable>";
    const Adapted adapted{parts.Text()};
    EXPECT_TRUE(adapted.Has("<PCell beta='2' parameterName='x'>")) << adapted.after;
    EXPECT_TRUE(adapted.Has("<PCell beta='3' parameterName='x&apos;'>") ||
                adapted.Has("<PCell beta='3' parameterName='x''>"));
}

TEST(RegressionTranslation, ATargetWithoutCategoriesGetsThoseOfTheTables)
{
    RegressionParts parts = Classifying("softmax", kYes + kNo);
    parts.head = "functionName='regression' normalizationMethod='softmax'";
    parts.fields =
        "<DataField name='y' optype='continuous' dataType='string'/>"
        "<DataField name='x' optype='continuous' dataType='double'/>"
        "<DataField name='f' optype='categorical' dataType='string'/>";
    const Adapted adapted{parts.Text()};
    EXPECT_TRUE(
        adapted.Has("<DataField dataType='string' name='y' optype='categorical'>"
                    "<Value value='yes'></><Value value='no'></>"))
        << adapted.after;
    EXPECT_TRUE(adapted.Has("functionName='classification'"));
}

TEST(RegressionTranslation, TheRecordsOfAVerificationComeLast)
{
    RegressionParts parts;
    parts.atEnd = "<ModelVerification/>";
    EXPECT_TRUE(Adapted{parts.Text()}.Has("</></><ModelVerification></></>"));
}

TEST(RegressionTranslation, ExtensionsOfTheModelMeanNothingToTheGeneralForm)
{
    RegressionParts parts;
    parts.inModel = "<Extension name='modelDF' value='3'/>";
    EXPECT_FALSE(Adapted{parts.Text()}.Has("modelDF"));
}

// What is refused, with the code and the line of the element at fault.
struct Refusal {
    std::string name;
    RegressionParts parts;
    int code;
    unsigned long line;
    std::vector<std::string> arguments;
};

RegressionParts WithTables(const std::string& tables)
{
    RegressionParts parts;
    parts.tables = tables;
    return parts;
}

RegressionParts WithHead(const std::string& head)
{
    RegressionParts parts;
    parts.head = head;
    return parts;
}

RegressionParts Beside(const std::string& model)
{
    RegressionParts parts;
    parts.beside = model;
    return parts;
}

RegressionParts WithSchema(const std::string& head, const std::string& schema)
{
    RegressionParts parts;
    parts.head = head;
    parts.schema = schema;
    return parts;
}

std::string Term(const std::string& term)
{
    return "<RegressionTable intercept='1'>" + term + "</RegressionTable>";
}

const Refusal kRefusals[] = {
    {"NormalizationUnknown",
     WithHead("functionName='regression' normalizationMethod='Softmax'"),
     kUnknownNormalization,
     2,
     {"Softmax"}},
    {"NormalizationOfNumber",
     WithHead("functionName='regression' normalizationMethod='simplemax'"),
     kNormalizationNotTaken,
     2,
     {"simplemax", "a regression"}},
    {"FunctionUnknown",
     WithHead("functionName='clustering'"),
     kUnknownFunctionName,
     2,
     {"clustering"}},
    {"NoTable", WithTables(""), kAbsent, 2, {"RegressionTable", "RegressionModel"}},
    {"TwoTablesOfANumber",
     WithTables("<RegressionTable/>\n<RegressionTable/>"),
     kTableCount,
     5,
     {"2"}},
    {"TableWithoutCategory",
     Classifying("logit", kYes + "\n<RegressionTable/>"),
     kTableWithoutCategory,
     5,
     {"2"}},
    {"TableOfUnknownCategory",
     Classifying("logit", kYes + "\n<RegressionTable targetCategory='No'/>"),
     kUnknownTableCategory,
     5,
     {"No", "y", "\"no\", \"yes\""}},
    {"TableTwice", Classifying("logit", kYes + "\n" + kYes), kTableTwice, 5, {"yes"}},
    {"TableMissingForSoftmax",
     Classifying("softmax", kYes),
     kTablesMissing,
     2,
     {"\"no\"", "softmax"}},
    {"FirstTableEmpty", Classifying("logit", kNo + kYes), kEmptyFirstTable, 4, {"no", "logit"}},
    {"CoefficientIsNoNumber",
     WithTables(Term("\n<NumericPredictor name='x' coefficient='2,5'/>")),
     kNotFinite,
     5,
     {"2,5", "coefficient", "NumericPredictor"}},
    {"CoefficientIsInfinite",
     WithTables(Term("\n<NumericPredictor name='x' coefficient='1e999'/>")),
     kNotFinite,
     5,
     {"1e999", "coefficient", "NumericPredictor"}},
    {"CoefficientMissing",
     WithTables(Term("\n<NumericPredictor name='x'/>")),
     kAbsent,
     5,
     {"coefficient", "NumericPredictor"}},
    {"InterceptIsNoNumber",
     WithTables("<RegressionTable intercept=''/>"),
     kNotFinite,
     4,
     {"", "intercept", "RegressionTable"}},
    {"ExponentIsNoNumber",
     WithTables(Term("\n<NumericPredictor name='x' exponent='two' coefficient='1'/>")),
     kNotFinite,
     5,
     {"two", "exponent", "NumericPredictor"}},
    {"AttributeMisspelt",
     WithTables(Term("\n<NumericPredictor name='x' exponents='2' coefficient='1'/>")),
     kMisspeltAttribute,
     5,
     {"exponents", "NumericPredictor", "exponent"}},
    {"HeadMisspelt",
     WithHead("functionName='regression' normalisationMethod='exp'"),
     kMisspeltAttribute,
     2,
     {"normalisationMethod", "RegressionModel", "normalizationMethod"}},
    {"TermOfUnknownField",
     WithTables(Term("\n<PredictorTerm coefficient='1'><FieldRef field='w'/></PredictorTerm>")),
     kUnknownTermField,
     5,
     {"w", "PredictorTerm"}},
    {"CategoryOfUnknownField",
     WithTables(Term("\n<CategoricalPredictor name='w' value='a' coefficient='1'/>")),
     kUnknownTermField,
     5,
     {"w", "CategoricalPredictor"}},
    {"TextAsANumber",
     WithTables(Term("\n<NumericPredictor name='f' coefficient='1'/>")),
     kTextInEquation,
     5,
     {"f", "string", "NumericPredictor"}},
    {"ProductOfNothing",
     WithTables(Term("\n<PredictorTerm coefficient='1'/>")),
     kAbsent,
     5,
     {"FieldRef", "PredictorTerm"}},
    {"ForeignElement",
     WithTables(Term("\n<OrdinalPredictor name='x'/>")),
     kUnexpectedTableElement,
     5,
     {"OrdinalPredictor", "RegressionTable"}},
    {"AnotherModelBeside", Beside("<TreeModel/>"), kModelBeside, 5, {"TreeModel"}},
    {"TwoRegressionModels", Beside("<RegressionModel/>"), kModelBeside, 5, {"RegressionModel"}},
    {"NoTarget",
     WithSchema("functionName='regression'", "<MiningField name='x'/>"),
     kNoTargetField,
     2,
     {"RegressionModel"}},
    {"TargetsDiffer",
     WithSchema("functionName='regression' targetFieldName='x'",
                "<MiningField name='y' usageType='target'/><MiningField name='x'/>"),
     kTargetFieldsDiffer,
     2,
     {"x", "y"}},
    {"ExpOfCategories",
     OfThree("exp", "categorical", kNo + kYes + kSo),
     kNormalizationNotTaken,
     2,
     {"exp", "a classification into more than two categories"}},
    {"TwoTablesMissing",
     OfThree("logit", "categorical", kYes),
     kTablesMissing,
     2,
     {"\"no\", \"so\"", "logit"}},
    {"TableOfAMiddleCategoryMissing",
     OfThree("logit", "ordinal", kNo + kSo),
     kTablesMissing,
     2,
     {"\"yes\"", "logit"}},
};

class RegressionRefusals : public testing::TestWithParam<Refusal> {};

TEST_P(RegressionRefusals, TellWhatAndWhere)
{
    const Refusal& row = GetParam();
    try {
        const Adapted adapted{row.parts.Text()};
        FAIL() << "nothing was refused: " << adapted.after;
    } catch (const VSException& refusal) {
        EXPECT_EQ(refusal.GetErrorCode(), row.code) << refusal.GetText();
        EXPECT_EQ(refusal.GetPlace().line, row.line) << refusal.GetText();
        EXPECT_EQ(refusal.GetArguments(), row.arguments) << refusal.GetText();
    }
}

INSTANTIATE_TEST_SUITE_P(All, RegressionRefusals, testing::ValuesIn(kRefusals),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace MCVelscore_850
