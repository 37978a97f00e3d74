// What becomes of a case's values before it is scored: missing, invalid and outlying ones, their
// replacements, and how far these reach.

#include <cmath>

#include <gtest/gtest.h>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

// How a family's document is headed, and where its betas belong. All have the linear predictor
// 1 + the terms, which `column` shows through `link`.
struct Family {
    const char* name;
    const char* head;
    const char* target;
    const char* category;  // of the betas; empty for none
    const char* column;
    double (*link)(double);
    const char* after = "";
};

double Identity(double eta) { return eta; }
double Logistic(double eta) { return 1.0 / (1.0 + std::exp(-eta)); }
double Survival(double eta) { return std::exp(-0.25 * std::exp(eta - 1.0)); }

const std::string kClasses =
    "optype='categorical' dataType='string'><Value value='no'/><Value value='yes'/>";

// A Cox model has no intercept: the 1 is none of its own. Its end time is the column "time".
const Family kFamilies[] = {
    {"regression", "modelType='regression' functionName='regression'", nullptr, "", "prediction",
     Identity},
    {"generalLinear", "modelType='generalLinear' functionName='regression'", nullptr, "",
     "prediction", Identity},
    {"generalizedLinear",
     "modelType='generalizedLinear' algorithmName='GZLM' functionName='regression' "
     "distribution='normal' linkFunction='identity'",
     nullptr, "", "prediction", Identity},
    {"multinomialLogistic", "modelType='multinomialLogistic' functionName='classification'",
     kClasses.c_str(), "yes", "probability(yes)", Logistic},
    {"ordinal",
     "modelType='ordinalMultinomial' algorithmName='ordinalRegression' linkFunction='logit' "
     "functionName='classification'",
     kClasses.c_str(), "no", "probability(no)", Logistic},
    {"Cox", "modelType='CoxRegression' functionName='regression' endTimeVariable='time'", nullptr,
     "", "prediction", Survival,
     "<BaseCumHazardTables maxTime='10'><BaselineCell time='1' cumHazard='0.25'/>"
     "</BaseCumHazardTables>"},
};
const Family& kGeneralLinear = kFamilies[1];

struct Term {
    std::string predictor;
    std::string cell;  // a factor's category, or a covariate's exponent
    std::string beta;
    bool isFactor = false;
};

// y on the terms, whose fields, treatment and derivation are the test's own.
struct Model {
    std::string fields;  // DataFields but the target's
    std::string mining;  // MiningFields but the target's
    std::vector<Term> terms;
    std::string derived{};  // DerivedFields
    std::string factorAttributes{};
    std::string withinFactor{};

    std::string Text(const Family& family) const
    {
        const bool isCox = std::string(family.name) == "Cox";
        const std::string category =
            *family.category == '\0' ? "" : "' targetCategory='" + std::string(family.category);
        std::string parameters, factors, covariates, cells, betas;
        if (!isCox) {
            parameters = "<Parameter name='p0'/>";
            betas = "<PCell parameterName='p0' beta='1" + category + "'/>";
        }
        int count = 0;
        for (const Term& term : terms) {
            const std::string name = "p" + std::to_string(++count);
            parameters += "<Parameter name='" + name + "'/>";
            (term.isFactor ? factors : covariates) +=
                "<Predictor name='" + term.predictor + "'" +
                (term.isFactor ? factorAttributes + ">" + withinFactor : ">") + "</Predictor>";
            cells += "<PPCell parameterName='" + name + "' predictorName='" + term.predictor +
                     "' value='" + term.cell + "'/>";
            betas += "<PCell parameterName='" + name + "' beta='" + term.beta + category + "'/>";
        }
        return "<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_4'><Header/><DataDictionary>"
               "<DataField name='y' " +
               std::string(family.target != nullptr ? family.target
                                                    : "optype='continuous' dataType='double'>") +
               "</DataField>" +
               (isCox ? "<DataField name='time' optype='continuous' dataType='double'/>" : "") +
               fields + "</DataDictionary><GeneralRegressionModel " + family.head +
               "><MiningSchema><MiningField name='y' usageType='target'/>" +
               (isCox ? "<MiningField name='time'/>" : "") + mining +
               "</MiningSchema><LocalTransformations>" + derived +
               "</LocalTransformations><ParameterList>" + parameters +
               "</ParameterList><FactorList>" + factors + "</FactorList><CovariateList>" +
               covariates + "</CovariateList><PPMatrix>" + cells + "</PPMatrix><ParamMatrix>" +
               betas + "</ParamMatrix>" + family.after + "</GeneralRegressionModel></PMML>";
    }
};

class CaseValues : public testing::Test {
protected:
    // The scores of one column of texts, named `column`; a Cox model's time is 1.
    CsvText Scores(const Model& model, const Family& family, const std::string& column,
                   const Texts& texts, Texts options = {})
    {
        std::string table = column + ",time\n";
        for (const std::string& text : texts) table += text + ",1\n";
        options.insert(options.begin(),
                       {"score", "--quiet", folder_.Write("m.pmml", model.Text(family))});
        const Finished run = RunVelscore(options, table);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return ParseCsv(run.out);
    }

    // Each text's linear predictor, or NaN for a row that is refused with 90029.
    void Expect(const Model& model, const Family& family, const std::string& column,
                const std::vector<std::pair<std::string, double>>& rows, Texts options = {})
    {
        SCOPED_TRACE(family.name);
        Texts texts;
        for (const auto& row : rows) texts.push_back(row.first);
        const CsvText scores = Scores(model, family, column, texts, std::move(options));
        ASSERT_EQ(scores.rows.size(), rows.size());
        for (size_t i = 0; i < rows.size(); ++i) {
            const std::string number = scores.Texts(family.column).at(i);
            const std::string status = scores.Texts("status").at(i);
            if (std::isnan(rows[i].second)) {
                EXPECT_EQ(status, "90029") << rows[i].first;
                EXPECT_EQ(number, "") << rows[i].first;
                continue;
            }
            EXPECT_EQ(status, "0") << rows[i].first;
            const double expected = family.link(rows[i].second);
            EXPECT_NEAR(number.empty() ? std::nan("") : std::stod(number), expected,
                        1e-12 * std::max(1.0, std::fabs(expected)))
                << rows[i].first;
        }
    }

    std::string Check(const Model& model, const Family& family)
    {
        const Finished run = RunVelscore({"check", folder_.Write("m.pmml", model.Text(family))});
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return run.out;
    }

    ScratchFolder folder_;
};

const double kRefused = std::nan("");

std::string Continuous(const std::string& name, const std::string& type,
                       const std::string& within = "")
{
    return "<DataField name='" + name + "' optype='continuous' dataType='" + type + "'>" + within +
           "</DataField>";
}
std::string Categorical(const std::string& name, const std::string& type, const Texts& values)
{
    std::string field =
        "<DataField name='" + name + "' optype='categorical' dataType='" + type + "'>";
    for (const std::string& value : values) field += "<Value value='" + value + "'/>";
    return field + "</DataField>";
}
std::string Mining(const std::string& name, const std::string& attributes = "")
{
    return "<MiningField name='" + name + "' " + attributes + "/>";
}
// The derived field d.
std::string Derived(const std::string& expression)
{
    return "<DerivedField name='d' optype='continuous' dataType='double'>" + expression +
           "</DerivedField>";
}
std::string Apply(const std::string& function, const std::string& one, const std::string& other)
{
    return "<Apply function='" + function + "'>" + one + other + "</Apply>";
}
const std::string kX = "<FieldRef field='x'/>";

TEST_F(CaseValues, MissingValueBeyondTheLimitsOfOutliersIsMissing)
{
    const Model model{Continuous("x", "double", "<Value value='-999' property='missing'/>"),
                      Mining("x", "outliers='asExtremeValues' lowValue='0' highValue='2'"),
                      {{"x", "1", "0.5"}}};
    for (const Family& family : kFamilies) {
        Expect(model, family, "x",
               {{"-999", kRefused}, {"-998", 1.0}, {"1", 1.5}, {"50", 2.0}, {"", kRefused}});
    }
}

TEST_F(CaseValues, LimitsOfDatesCountFromTheTypesOwnOrigin)
{
    // 1960-04-10 is day 100 of 1960, a leap year: 31 + 29 + 31 + 9.
    Model model{Continuous("x", "dateDaysSince[1960]"),
                Mining("x", "outliers='asMissingValues' lowValue='100' highValue='200'"),
                {{"x", "1", "1"}}};
    Expect(model, kGeneralLinear, "x",
           {{"99", kRefused}, {"100", 101}, {"1960-04-10", 101}, {"200", 201}, {"201", kRefused}});
    model.mining = Mining("x", "outliers='asExtremeValues' lowValue='100' highValue='200'");
    Expect(model, kGeneralLinear, "x",
           {{"99", 101}, {"1960-01-01", 101}, {"150", 151}, {"2000-01-01", 201}, {"", kRefused}});
    // A date without an origin of its own counts from 1970.
    model.fields = Continuous("x", "date");
    Expect(model, kGeneralLinear, "x", {{"1969-12-31", 101}, {"1970-04-12", 102}});
}

// x counts directly with 2, and through its square with 1.
struct Squared {
    std::string mining;
    bool directly;

    Model Make(const std::string& type) const
    {
        Model model{Continuous("x", type,
                               "<Value value='-999' property='missing'/><Interval leftMargin='-50' "
                               "rightMargin='50' closure='closedClosed'/>"),
                    Mining("x", mining),
                    {{"d", "1", "1"}},
                    Derived(Apply("*", kX, kX))};
        if (directly) model.terms.push_back({"x", "1", "2"});
        return model;
    }
    double Of(double x) const { return 1.0 + x * x + (directly ? 2.0 * x : 0.0); }
};

TEST_F(CaseValues, ReplacementOfANumberReachesDerivedFields)
{
    for (const bool directly : {false, true}) {
        SCOPED_TRACE(directly ? "also read by the model" : "read by the derived field alone");
        for (const Family& family : kFamilies) {
            // A regression pairs its terms by position; the squares are too large for other links.
            if (std::string(family.name) == "regression" || family.link != Identity) continue;
            const Squared plain{"missingValueReplacement='3'", directly};
            Expect(plain.Make("double"), family, "x",
                   {{"", plain.Of(3)}, {"-999", plain.Of(3)}, {"4", plain.Of(4)}});
            const Squared invalid{"missingValueReplacement='3' invalidValueTreatment='asMissing'",
                                  directly};
            Expect(invalid.Make("double"), family, "x", {{"51", invalid.Of(3)}});
            // The replacement is an outlier itself, and no whole number.
            const Squared outlier{
                "missingValueReplacement='-2.5' outliers='asMissingValues' "
                "lowValue='0' highValue='10'",
                directly};
            Expect(outlier.Make("integer"), family, "x",
                   {{"11", outlier.Of(-2.5)}, {"-1", outlier.Of(-2.5)}, {"10", outlier.Of(10)}});
        }
    }
}

TEST_F(CaseValues, ReplacementOfANumberIsNotPutInWhereThePolicyReplacesNothing)
{
    for (const bool directly : {false, true}) {
        const Squared squared{"missingValueReplacement='3'", directly};
        for (const char* policy : {"sysmis", "status"}) {
            SCOPED_TRACE(policy);
            Expect(squared.Make("double"), kGeneralLinear, "x",
                   {{"", kRefused}, {"4", squared.Of(4)}}, {"--policy", policy});
        }
        Expect(squared.Make("double"), kGeneralLinear, "x",
               {{"", squared.Of(3)}, {"4", squared.Of(4)}}, {"--policy", "substitute"});
    }
}

TEST_F(CaseValues, FractionIsNoValueOfAContinuousIntegerField)
{
    Model model{Continuous("x", "integer"), Mining("x"), {{"x", "1", "1"}}};
    for (const Family& family : kFamilies) {
        Expect(model, family, "x",
               {{"1.5", kRefused}, {"2", 3}, {"2.0", 3}, {"2e0", 3}, {"-0.5", kRefused}});
    }
    // The field is told where the family tells one.
    const CsvText scores = Scores(model, kFamilies[3], "x", {"1.5"});
    EXPECT_EQ(scores.Texts("status_field"), Texts{"x"});
    model.fields = Continuous("x", "double");
    Expect(model, kGeneralLinear, "x", {{"1.5", 2.5}});
}

TEST_F(CaseValues, FractionThatTheDocumentItselfNamesIsAValueOfAnIntegerField)
{
    // A valid value, a category that a cell names, a limit of outliers, a replacement.
    Expect({Continuous("x", "integer", "<Value value='1.5'/><Value value='2'/>"),
            Mining("x"),
            {{"x", "1", "1"}}},
           kGeneralLinear, "x", {{"1.5", 2.5}, {"2", 3}, {"2.5", kRefused}});
    Expect({Categorical("x", "integer", {"1", "2"}), Mining("x"), {{"x", "1.5", "10", true}}},
           kGeneralLinear, "x", {{"1.5", 11}, {"1", 1}, {"2.5", kRefused}}, {"--as-is"});
    Expect({Continuous("x", "integer"),
            Mining("x", "outliers='asExtremeValues' lowValue='18.5' highValue='64.25'"),
            {{"x", "1", "1"}}},
           kGeneralLinear, "x", {{"1", 19.5}, {"99", 65.25}, {"20", 21}, {"20.5", kRefused}});
    Expect({Continuous("x", "integer"),
            Mining("x", "missingValueReplacement='37.4'"),
            {{"x", "1", "1"}}},
           kGeneralLinear, "x", {{"", 38.4}});
    Expect({Continuous("x", "integer"),
            Mining("x", "invalidValueTreatment='asIs'"),
            {{"x", "1", "1"}}},
           kGeneralLinear, "x", {{"1.5", 2.5}});
}

TEST_F(CaseValues, BooleansAreReadAsDataFramesWriteThem)
{
    const std::vector<std::pair<std::string, double>> rows = {
        {"True", 11}, {"TRUE", 11}, {"true", 11},     {"T", 11},    {"1", 11},
        {"1.0", 11},  {"False", 1}, {"FALSE", 1},     {"false", 1}, {"F", 1},
        {"0", 1},     {"0.0", 1},   {"yes", kRefused}};
    Expect(
        {Categorical("x", "boolean", {"true", "false"}), Mining("x"), {{"x", "true", "10", true}}},
        kGeneralLinear, "x", rows);
    Expect(
        {Categorical("x", "boolean", {"False", "True"}), Mining("x"), {{"x", "True", "10", true}}},
        kGeneralLinear, "x", rows);
}

TEST_F(CaseValues, ReplacementThatIsNoCategoryMeetsNoIndicatorAndCheckTellsIt)
{
    Model model{Categorical("x", "string", {"a", "b"}),
                Mining("x",
                       "missingValueReplacement='N/A' invalidValueTreatment='asValue' "
                       "invalidValueReplacement='__unknown'"),
                {{"x", "a", "0.5", true}}};
    for (const Family& family : kFamilies) {
        if (std::string(family.name) == "regression") continue;  // takes no factors
        Expect(model, family, "x", {{"", 1.0}, {"zzz", 1.0}, {"N/A", 1.0}, {"a", 1.5}, {"b", 1.0}});
        const std::string told = Check(model, family);
        EXPECT_NE(told.find("replacement \"N/A\" of \"x\" is none of its categories"),
                  std::string::npos)
            << told;
    }
    // What nobody put in is judged as ever.
    model.mining = Mining("x", "missingValueReplacement='N/A'");
    Expect(model, kGeneralLinear, "x", {{"", 1.0}, {"zzz", kRefused}});
    model.mining = Mining("x", "missingValueReplacement='a'");
    EXPECT_EQ(Check(model, kGeneralLinear).find("replacement"), std::string::npos);
    Expect(model, kGeneralLinear, "x", {{"", 1.5}});
}

TEST_F(CaseValues, ReplacementThatIsNoCategoryOfNumbersMeetsNoIndicator)
{
    for (const char* replacement : {"-1", "N/A"}) {
        Expect({Categorical("x", "integer", {"1", "2"}),
                Mining("x", "missingValueReplacement='" + std::string(replacement) + "'"),
                {{"x", "1", "10", true}}},
               kGeneralLinear, "x", {{"", 1}, {"1", 11}, {"2", 1}, {"3", kRefused}});
    }
}

TEST_F(CaseValues, ReplacementThatHasNoRowInAContrastMatrixRefusesTheRow)
{
    Model model{Categorical("x", "string", {"a", "b"}),
                Mining("x", "missingValueReplacement='N/A'"),
                {{"x", "a", "0.5", true}}};
    model.factorAttributes = " contrastMatrixType='sum'";
    model.withinFactor =
        "<Categories><Category value='a'/><Category value='b'/></Categories>"
        "<Matrix nbRows='2' nbCols='1'><Array>1</Array><Array>-1</Array></Matrix>";
    const Family& cox = kFamilies[5];
    Expect(model, cox, "x", {{"", kRefused}, {"a", 1.5}, {"b", 0.5}});
    EXPECT_EQ(Check(model, cox).find("replacement"), std::string::npos);
}

TEST_F(CaseValues, InvalidTextAsIsReachesTheDerivedFieldsThatAloneReadIt)
{
    Model model{Categorical("x", "string", {"a", "b"}),
                Mining("x", "invalidValueTreatment='asIs'"),
                {{"d", "1", "1"}},
                Derived("<Apply function='if'>" +
                        Apply("equal", kX, "<Constant dataType='string'>c</Constant>") +
                        "<Constant>7</Constant><Constant>3</Constant></Apply>")};
    Expect(model, kGeneralLinear, "x", {{"c", 8}, {"zzz", 4}, {"a", 4}, {"", kRefused}});
    model.mining = Mining("x");
    Expect(model, kGeneralLinear, "x", {{"c", kRefused}, {"a", 4}});
}

TEST_F(CaseValues, QuotientOfTwoIntegerFieldsKeepsItsFraction)
{
    const Model model{Continuous("x", "integer") + Continuous("n", "integer"),
                      Mining("x") + Mining("n"),
                      {{"d", "1", "1"}},
                      Derived(Apply("/", kX, "<FieldRef field='n'/>"))};
    const Finished run =
        RunVelscore({"score", "--quiet", folder_.Write("m.pmml", model.Text(kGeneralLinear))},
                    "x,n\n1,4\n10,4\n-8,4\n");
    EXPECT_EQ(ParseCsv(run.out).Texts("prediction"), (Texts{"1.25", "3.5", "-1"})) << run.err;
}

}  // namespace
}  // namespace MCVelscore_850
