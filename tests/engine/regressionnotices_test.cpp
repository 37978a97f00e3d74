// What is said of a RegressionModel, and of its probabilities, without changing anything.

#include <string>

#include <gtest/gtest.h>

#include "tests/engine/adapted.h"

namespace MCVelscore_850 {
namespace {

struct Row {
    const char* name;
    std::string head;    // attributes of the model
    std::string target;  // what is said of the target's field
    std::string tables;
    std::string told;  // a piece of what the rule tells; empty where it has nothing to tell
};

// A document up to its model.
std::string DictionaryOf(const std::string& target)
{
    return "<PMML version='4.4'><DataDictionary><DataField name='y' " + target +
           "</DataField><DataField name='x' optype='continuous' dataType='double'/>"
           "<DataField name='f' optype='categorical' dataType='string'/></DataDictionary>";
}

std::string TextOf(const Row& row)
{
    return DictionaryOf(row.target) + "<RegressionModel " + row.head +
           "><MiningSchema><MiningField name='y' usageType='target'/><MiningField name='x'/>"
           "<MiningField name='f'/></MiningSchema>" +
           row.tables + "</RegressionModel></PMML>";
}

// What the notice of a rule tells of a document; nothing where it is silent.
void ExpectTold(const std::string& document, const std::string& name, const std::string& part,
                std::string_view rule)
{
    const Adapted adapted(document);
    std::string told;
    for (const Adaptation& each : adapted.adaptations) {
        if (each.rule->name != rule) continue;
        told = each.change;
        EXPECT_EQ(each.rule->answer, Answer::Notice);
    }
    EXPECT_EQ(told.empty(), part.empty()) << name << ": " << told;
    EXPECT_NE(told.find(part), std::string::npos) << name << ": " << told;
}

void ExpectTold(const Row& row, std::string_view rule)
{
    ExpectTold(TextOf(row), row.name, row.told, rule);
}

const std::string kNumber = "optype='continuous' dataType='double'>";
const std::string kTwo =
    "optype='categorical' dataType='integer'><Value value='0'/><Value value='1'/>";
const std::string kThree =
    "optype='categorical' dataType='string'><Value value='a'/><Value value='b'/><Value value='c'/>";
const std::string kOrdered =
    "optype='ordinal' dataType='string'><Value value='a'/><Value value='b'/><Value value='c'/>";
const std::string kSlope = "<NumericPredictor name='x' coefficient='2'/>";
const std::string kTable = "<RegressionTable intercept='1'>" + kSlope + "</RegressionTable>";

std::string TableOf(const std::string& category, const std::string& terms)
{
    return "<RegressionTable intercept='1' targetCategory='" + category + "'>" + terms +
           "</RegressionTable>";
}

std::string TableWith(const std::string& terms)
{
    return "<RegressionTable intercept='1'>" + terms + "</RegressionTable>";
}

TEST(MissingNormalization, IsToldWhereTheAlgorithmSpeaksOfALink)
{
    const std::string regression = "functionName='regression'";
    const Row rows[] = {
        {"algorithm", regression + " algorithmName='PoissonRegressor'", kNumber, kTable,
         "algorithmName \"PoissonRegressor\""},
        {"name", regression + " modelName='my Gamma fit'", kNumber, kTable,
         "modelName \"my Gamma fit\""},
        {"type", regression + " modelType='logisticRegression'", kNumber, kTable,
         "modelType \"logisticRegression\""},
        {"none", regression + " algorithmName='TweedieRegressor' normalizationMethod='none'",
         kNumber, kTable, "normalizationMethod is none"},
        {"with a method",
         regression + " algorithmName='PoissonRegressor' normalizationMethod='exp'", kNumber,
         kTable, ""},
        {"no link", regression + " algorithmName='LinearRegression'", kNumber, kTable, ""},
    };
    for (const Row& row : rows) ExpectTold(row, "missing-normalization");
}

TEST(RepeatedTerm, IsToldForEachFieldOnce)
{
    const std::string regression = "functionName='regression'";
    const std::string category = "<CategoricalPredictor name='f' value='a' coefficient='1'/>";
    const std::string other = "<CategoricalPredictor name='f' value='b' coefficient='1'/>";
    const Row rows[] = {
        {"number", regression, kNumber, TableWith(kSlope + kSlope + kSlope),
         "the same term of \"x\" twice"},
        {"exponent left out", regression, kNumber,
         TableWith(kSlope + "<NumericPredictor name='x' exponent='1' coefficient='3'/>"),
         "\"x\" twice"},
        {"both", regression, kNumber, TableWith(kSlope + category + kSlope + category),
         "\"x\", \"f\" twice"},
        {"other power", regression, kNumber,
         TableWith(kSlope + "<NumericPredictor name='x' exponent='2' coefficient='3'/>"), ""},
        {"other category", regression, kNumber, TableWith(category + other), ""},
        {"other table", "functionName='classification' normalizationMethod='softmax'", kTwo,
         TableOf("0", kSlope) + TableOf("1", kSlope), ""},
    };
    for (const Row& row : rows) ExpectTold(row, "repeated-term");
}

TEST(RegressionOfCategories, SaysWhatIsPredicted)
{
    const std::string logit = "functionName='regression' normalizationMethod='logit'";
    const Row rows[] = {
        {"logit", logit, kTwo, kTable, "the probability of 1, and no category"},
        {"cloglog", "functionName='regression' normalizationMethod='cloglog'", kTwo, kTable,
         "normalizationMethod \"cloglog\""},
        {"a number's", logit, kNumber, kTable, ""},
        {"no method", "functionName='regression'", kTwo, kTable, ""},
        {"exp", "functionName='regression' normalizationMethod='exp'", kTwo, kTable, ""},
        {"tables of categories", logit, kTwo, TableOf("1", kSlope) + TableOf("0", ""), ""},
        {"a classification", "functionName='classification' normalizationMethod='logit'", kTwo,
         TableOf("1", kSlope) + TableOf("0", ""), ""},
    };
    for (const Row& row : rows) ExpectTold(row, "regression-of-categories");
}

TEST(UnboundedProbabilities, AreToldWithTheirReason)
{
    const auto head = [](const std::string& method) {
        return "functionName='classification' normalizationMethod='" + method + "'";
    };
    const std::string two = TableOf("1", kSlope) + TableOf("0", "");
    const std::string three = TableOf("a", kSlope) + TableOf("b", kSlope) + TableOf("c", "");
    const std::string slopes =
        TableOf("a", kSlope) + TableOf("b", kSlope + kSlope) + TableOf("c", "");
    const Row rows[] = {
        {"none of two", head("none"), kTwo, two, "as they are"},
        {"none of three", head("none"), kThree, three, "as they are"},
        {"simplemax", head("simplemax"), kTwo, two, "by their sum"},
        {"logit of three", head("logit"), kThree, three, "what the others leave"},
        {"ordered, own slopes", head("logit"), kOrdered, slopes, "which may fall"},
        {"ordered, none", head("none"), kOrdered, three, "as they are"},
        {"ordered, shared slopes", head("logit"), kOrdered, three, ""},
        {"softmax", head("softmax"), kThree, three, ""},
        {"logit of two", head("logit"), kTwo, two, ""},
        {"probit of two", head("probit"), kTwo, two, ""},
        {"cauchit of two", head("cauchit"), kTwo, two, ""},
        {"a regression", "functionName='regression' normalizationMethod='none'", kNumber, kTable,
         ""},
    };
    for (const Row& row : rows) ExpectTold(row, "unbounded-probabilities");
}

TEST(UnboundedProbabilities, AreToldOfLinksWhoseInverseHasNoBounds)
{
    struct {
        const char* head;
        const char* extension;
        const char* told;
    } const rows[] = {
        {"modelType='generalizedLinear' linkFunction='identity'", "", "as they are"},
        {"modelType='generalizedLinear' linkFunction='log'", "", "exp(eta) isn't held below 1"},
        {"modelType='generalizedLinear' linkFunction='logc'", "", "isn't held above 0"},
        {"modelType='generalizedLinear' linkFunction='power' linkParameter='2'", "",
         "a power of eta"},
        {"modelType='generalLinear' linkFunction='log'", "", "exp(eta)"},
        {"modelType='multinomialLogistic' linkFunction='log'", "", "exp(eta)"},
        {"modelType='generalizedLinear'",
         "<Extension extender='velscore' name='linkFunction' value='log'/>", "exp(eta)"},
        {"modelType='generalizedLinear' linkFunction='oddspower' linkParameter='2'", "", ""},
        {"modelType='generalizedLinear' linkFunction='probit'", "", ""},
        {"modelType='generalizedLinear' linkFunction='loglog'", "", ""},
    };
    for (const auto& row : rows) {
        const std::string model =
            std::string("<GeneralRegressionModel ") + row.head +
            " algorithmName='GZLM' functionName='classification' "
            "distribution='binomial'>" +
            row.extension +
            "<MiningSchema><MiningField name='y' usageType='target'/>"
            "<MiningField name='x'/></MiningSchema><ParameterList>"
            "<Parameter name='p'/></ParameterList><CovariateList/><ParamMatrix>"
            "<PCell targetCategory='1' parameterName='p' beta='1'/>"
            "</ParamMatrix></GeneralRegressionModel></PMML>";
        ExpectTold(DictionaryOf(kTwo) + model, row.head + std::string(row.extension), row.told,
                   "unbounded-probabilities");
    }
}

}  // namespace
}  // namespace MCVelscore_850
