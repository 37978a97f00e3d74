// Parameters and cells: what may not stand in a document, and what looks alike and may.

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/engine/adapted.h"
#include "tests/engine/audited.h"
#include "tests/readers/legacyparts.h"

namespace MCVelscore_850 {
namespace {

// A general linear model: a factor f with three levels, a covariate x and its square.
Parts General()
{
    Parts parts;
    parts.fields =
        "<DataField name='y' optype='continuous' dataType='double'/>\n"
        "<DataField name='f' optype='categorical' dataType='string'><Value value='red'/>"
        "<Value value='green'/><Value value='blue'/></DataField>\n"
        "<DataField name='x' optype='continuous' dataType='double'/>\n";
    parts.model = "modelType='generalLinear' functionName='regression' modelDF='9'";
    parts.schema =
        "<MiningField name='y' usageType='target'/><MiningField name='f'/><MiningField name='x'/>";
    parts.parameters =
        "<Parameter name='p0' label='Intercept'/>\n<Parameter name='p1' label='fred'/>\n"
        "<Parameter name='p2' label='fgreen'/>\n<Parameter name='p3' label='x'/>\n"
        "<Parameter name='p4'/>";
    parts.factors = "<Predictor name='f'/>";
    parts.covariates = "<Predictor name='x'/>";
    parts.cells =
        "<PPCell parameterName='p1' predictorName='f' value='red'/>\n"
        "<PPCell parameterName='p2' predictorName='f' value='green'/>\n"
        "<PPCell parameterName='p3' predictorName='x' value='1'/>\n"
        "<PPCell parameterName='p4' predictorName='x' value='2'/>";
    parts.betas =
        "<PCell parameterName='p0' beta='1'/>\n<PCell parameterName='p1' beta='2'/>\n"
        "<PCell parameterName='p2' beta='3'/>\n<PCell parameterName='p3' beta='4'/>\n"
        "<PCell parameterName='p4' beta='5'/>";
    parts.covariances =
        "<PCovCell pRow='p0' pCol='p0' value='1'/>\n<PCovCell pRow='p3' pCol='p0' value='0.5'/>\n"
        "<PCovCell pRow='p3' pCol='p3' value='2'/>";
    return parts;
}

// The same with a target of three categories, of which the first is the reference.
Parts Multinomial()
{
    Parts parts = General();
    parts.fields.replace(0, parts.fields.find('\n'),
                         "<DataField name='y' optype='categorical' dataType='string'>"
                         "<Value value='a'/><Value value='b'/><Value value='c'/></DataField>");
    parts.model =
        "modelType='multinomialLogistic' functionName='classification' "
        "targetReferenceCategory='a'";
    parts.betas.clear();
    for (const std::string category : {"b", "c"}) {
        for (const std::string parameter : {"p0", "p1", "p2", "p3", "p4"}) {
            parts.betas += "<PCell targetCategory='" + category + "' parameterName='" + parameter +
                           "' beta='1'/>\n";
        }
    }
    parts.covariances =
        "<PCovCell pRow='p0' pCol='p3' tRow='b' tCol='c' value='0.5'/>\n"
        "<PCovCell pRow='p0' pCol='p0' tRow='b' tCol='b' value='1'/>";
    return parts;
}

// A model of two categories with one equation, that of "b".
Parts Binary()
{
    Parts parts = Multinomial();
    parts.fields.replace(parts.fields.find("<Value value='c'/>"), 18, "");
    parts.model =
        "modelType='generalizedLinear' algorithmName='GZLM' functionName='classification' "
        "distribution='binomial' linkFunction='logit' targetReferenceCategory='a'";
    parts.betas.erase(parts.betas.find("<PCell targetCategory='c'"));
    parts.covariances.clear();
    return parts;
}

Parts Ordinal()
{
    Parts parts = Multinomial();
    parts.model = "modelType='ordinalMultinomial' linkFunction='logit'";
    parts.betas =
        "<PCell targetCategory='a' parameterName='p0' beta='-1'/>\n"
        "<PCell targetCategory='b' parameterName='p0' beta='1'/>\n"
        "<PCell parameterName='p1' beta='2'/><PCell parameterName='p2' beta='3'/>"
        "<PCell parameterName='p3' beta='4'/><PCell parameterName='p4' beta='5'/>";
    parts.covariances = "<PCovCell pRow='p0' pCol='p0' tRow='a' tCol='b' value='0.5'/>";
    return parts;
}

Parts Cox()
{
    Parts parts = General();
    parts.model = "modelType='CoxRegression' endTimeVariable='y'";
    parts.parameters = "<Parameter name='p1'/><Parameter name='p2'/>\n<Parameter name='p3'/>";
    parts.cells.erase(parts.cells.rfind("<PPCell"));
    parts.betas =
        "<PCell parameterName='p1' beta='2'/><PCell parameterName='p2' beta='3'/>\n"
        "<PCell parameterName='p3' beta='4'/>";
    parts.covariances.clear();
    return parts;
}

Parts Linear() { return Parts(); }

LegacyParts Older() { return LegacyParts(); }

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

// Puts a text behind another.
std::string After(const std::string& text, const std::string& before, const std::string& added)
{
    return Replaced(text, before, before + added);
}

struct FaultRow {
    const char* what;
    std::string text;
    std::string rule;
    // Of the first finding: what follows the model in its path, attribute, text found, near word.
    std::string path;
    std::string attribute;
    std::string found;
    std::string near;
    Answer answer = Answer::Fault;
};

void PrintTo(const FaultRow& row, std::ostream* out) { *out << row.what; }

const std::string kLevel = "<PPCell parameterName='p1' predictorName='f' value='red'/>";
const std::string kBeta3 = "<PCell parameterName='p3' beta='4'/>";
const std::string kVariance3 = "<PCovCell pRow='p3' pCol='p3' value='2'/>";

std::vector<FaultRow> FaultRows()
{
    const std::string general = General().Text();
    const std::string multinomial = Multinomial().Text();
    const std::string ordinal = Ordinal().Text();
    const std::string older = Older().Text();
    return {
        // Names.
        {"a design of an unknown parameter",
         Replaced(general, "parameterName='p2' pred", "parameterName='P2 ' pred"),
         "unknown-parameter", "PPMatrix/PPCell[2]", "parameterName", "P2 ", "p2"},
        {"a beta of an unknown parameter",
         After(general, kBeta3, "<PCell parameterName='slope' beta='0'/>"), "unknown-parameter",
         "ParamMatrix/PCell[5]", "parameterName", "slope", ""},
        {"a covariance of an unknown row",
         Replaced(general, "pRow='p3' pCol='p0'", "pRow='p33' pCol='p0'"), "unknown-parameter",
         "PCovMatrix/PCovCell[2]", "pRow", "p33", "p3"},
        {"a covariance of an unknown column",
         Replaced(general, "pRow='p3' pCol='p0'", "pRow='p3' pCol=''"), "unknown-parameter",
         "PCovMatrix/PCovCell[2]", "pCol", "", ""},
        {"the constant, which a general linear model doesn't imply",
         After(general, kBeta3, "<PCell parameterName='(Constant)' beta='1'/>"),
         "unknown-parameter", "ParamMatrix/PCell[5]", "parameterName", "(Constant)", ""},
        {"an unknown parameter in the older form",
         Replaced(older, "p-cell parameter-name='bw'", "p-cell parameter-name='of another'"),
         "unknown-parameter", "p-table/p-cell[3]", "parameter-name", "of another", "",
         Answer::Notice},
        {"an unknown parameter of a covariance in the older form",
         Replaced(older, "</regression-model>",
                  "<pcov-matrix><pcov-cell p-row='bx' p-col='no' "
                  "value='1'/></pcov-matrix></regression-model>"),
         "unknown-parameter", "pcov-matrix/pcov-cell", "p-col", "no", "", Answer::Notice},
        {"an unknown predictor",
         Replaced(general, "predictorName='x' value='1'", "predictorName='X' value='1'"),
         "unknown-predictor", "PPMatrix/PPCell[3]", "predictorName", "X", "x"},
        {"a field that is no predictor",
         Replaced(general, "predictorName='x' value='1'", "predictorName='y' value='1'"),
         "unknown-predictor", "PPMatrix/PPCell[3]", "predictorName", "y", ""},
        {"an unknown predictor in the older form",
         Replaced(older, "predictor-name='w'", "predictor-name='ww'"), "unknown-predictor",
         "pp-matrix/pp-cell[2]", "predictor-name", "ww", "w"},
        {"a level in another case",
         Replaced(general, "value='green'/>\n<PPCell", "value='Green'/>\n<PPCell"),
         "unknown-category", "PPMatrix/PPCell[2]", "value", "Green", "green"},
        {"a level with a blank behind it",
         Replaced(general, kLevel, "<PPCell parameterName='p1' predictorName='f' value='red '/>"),
         "unknown-category", "PPMatrix/PPCell[1]", "value", "red ", "red"},
        {"a beta of an unknown category",
         After(multinomial, "<ParamMatrix>",
               "<PCell targetCategory='d' parameterName='p0' beta='0'/>"),
         "unknown-category", "ParamMatrix/PCell[1]", "targetCategory", "d", ""},
        {"a covariance of an unknown category",
         Replaced(multinomial, "tRow='b' tCol='c'", "tRow='b' tCol='C'"), "unknown-category",
         "PCovMatrix/PCovCell[1]", "tCol", "C", "c"},
        {"a design of an unknown category",
         Replaced(multinomial, "predictorName='x' value='1'",
                  "predictorName='x' value='1' targetCategory='d'"),
         "unknown-category", "PPMatrix/PPCell[3]", "targetCategory", "d", ""},
        {"columns of a sum contrast",
         Replaced(
             Replaced(general, kLevel, "<PPCell parameterName='p1' predictorName='f' value='1'/>"),
             "predictorName='f' value='green'", "predictorName='f' value='2'"),
         "contrasts-as-categories", "PPMatrix/PPCell[1]", "value", "1", ""},
        {"columns of a polynomial",
         Replaced(
             Replaced(general, kLevel, "<PPCell parameterName='p1' predictorName='f' value='.L'/>"),
             "predictorName='f' value='green'", "predictorName='f' value='.Q'"),
         "contrasts-as-categories", "PPMatrix/PPCell[1]", "value", ".L", ""},
        {"a design for a category in a family with one equation",
         Replaced(general, "predictorName='x' value='1'",
                  "predictorName='x' value='1' targetCategory='b'"),
         "design-of-category", "PPMatrix/PPCell[3]", "targetCategory", "b", ""},
        {"a design for a category in an ordinal model",
         Replaced(ordinal, "predictorName='x' value='1'",
                  "predictorName='x' value='1' targetCategory='b'"),
         "design-of-category", "PPMatrix/PPCell[3]", "targetCategory", "b", ""},
        {"a design that leaves another category's beta without terms",
         Replaced(multinomial, "predictorName='x' value='1'",
                  "predictorName='x' value='1' targetCategory='b'"),
         "design-of-category", "PPMatrix/PPCell[3]", "targetCategory", "b", ""},
        {"a design that contradicts the one of all categories",
         After(multinomial, kLevel,
               "<PPCell parameterName='p3' predictorName='x' value='2' targetCategory='b'/>"),
         "design-of-category", "PPMatrix/PPCell[2]", "targetCategory", "b", ""},
        // Cells that go together.
        {"two exponents",
         After(general, kLevel, "<PPCell parameterName='p3' predictorName='x' value='3'/>"),
         "contradicting-cells", "PPMatrix/PPCell[4]", "value", "1", ""},
        {"two levels of one factor",
         After(general, kLevel, "<PPCell parameterName='p1' predictorName='f' value='blue'/>"),
         "contradicting-cells", "PPMatrix/PPCell[2]", "value", "blue", ""},
        {"two betas", After(general, kBeta3, "<PCell parameterName='p3' beta='4.5'/>"),
         "contradicting-cells", "ParamMatrix/PCell[5]", "beta", "4.5", ""},
        {"two betas of one category",
         After(multinomial, "<PCell targetCategory='c' parameterName='p3' beta='1'/>",
               "<PCell targetCategory='c' parameterName='p3' beta='2'/>"),
         "contradicting-cells", "ParamMatrix/PCell[10]", "beta", "2", ""},
        {"betas of two categories where there are none",
         Replaced(general, kBeta3,
                  "<PCell targetCategory='a' parameterName='p3' beta='4'/>"
                  "<PCell targetCategory='b' parameterName='p3' beta='5'/>"),
         "contradicting-cells", "ParamMatrix/PCell[5]", "beta", "5", ""},
        {"two betas of a Cox model",
         After(Cox().Text(), "<PCell parameterName='p3' beta='4'/>",
               "<PCell parameterName='p3' beta='5'/>"),
         "contradicting-cells", "ParamMatrix/PCell[4]", "beta", "5", ""},
        {"two covariances",
         After(general, kVariance3, "<PCovCell pRow='p3' pCol='p0' value='0.6'/>"),
         "contradicting-cells", "PCovMatrix/PCovCell[4]", "value", "0.6", ""},
        {"two betas in the older form",
         After(older, "<p-table>", "<p-cell parameter-name='bw' beta='4'/>"), "contradicting-cells",
         "p-table/p-cell[4]", "beta", "3", ""},
        {"a level said twice", After(general, kLevel, kLevel), "repeated-cell",
         "PPMatrix/PPCell[2]", "value", "red", "", Answer::Notice},
        {"a beta said twice, written in another way",
         After(general, kBeta3, "<PCell parameterName='p3' beta='4.0'/>"), "repeated-cell",
         "ParamMatrix/PCell[5]", "beta", "4.0", "", Answer::Notice},
        {"a covariance said twice", After(general, kVariance3, kVariance3), "repeated-cell",
         "PCovMatrix/PCovCell[4]", "value", "2", "", Answer::Notice},
        {"triangles that differ",
         After(general, kVariance3, "<PCovCell pRow='p0' pCol='p3' value='0.6'/>"),
         "asymmetric-covariances", "PCovMatrix/PCovCell[4]", "value", "0.6", ""},
        {"triangles of categories that differ",
         After(multinomial, "<PCovMatrix>",
               "<PCovCell pRow='p3' pCol='p0' tRow='c' tCol='b' value='0.6'/>"),
         "asymmetric-covariances", "PCovMatrix/PCovCell[2]", "value", "0.5", ""},
        {"a variance below 0", Replaced(general, "pCol='p3' value='2'", "pCol='p3' value='-2e-9'"),
         "negative-variance", "PCovMatrix/PCovCell[3]", "value", "-2e-9", ""},
        {"a covariance without variance", Replaced(general, kVariance3, ""),
         "covariance-without-variance", "PCovMatrix/PCovCell[2]", "pRow", "p3", ""},
        {"a covariance without variance beside an extension",
         Replaced(general, kVariance3, "<Extension name='rank' value='3'/>"),
         "covariance-without-variance", "PCovMatrix/PCovCell[2]", "pRow", "p3", ""},
        {"a beta of the reference category",
         After(multinomial, "<ParamMatrix>",
               "<PCell targetCategory='a' parameterName='p3' beta='2'/>"),
         "beta-of-reference", "ParamMatrix/PCell[1]", "beta", "2", ""},
        {"a beta of each of two categories",
         After(Binary().Text(), "<ParamMatrix>",
               "<PCell targetCategory='a' parameterName='p3' beta='2'/>"),
         "beta-of-reference", "ParamMatrix/PCell[1]", "beta", "2", ""},
        // What no cell says.
        {"an empty PPMatrix", Replaced(general, General().cells, ""), "empty-matrix", "PPMatrix",
         "", "", ""},
        {"no PPMatrix", Replaced(general, "<PPMatrix>" + General().cells + "</PPMatrix>", ""),
         "empty-matrix", "", "", "", ""},
        {"an empty ParamMatrix", Replaced(general, General().betas, ""), "empty-matrix",
         "ParamMatrix", "", "", ""},
        {"no ParamMatrix",
         Replaced(general, "<ParamMatrix>" + General().betas + "</ParamMatrix>", ""),
         "empty-matrix", "", "", "", ""},
        {"no pp-matrix in the older form",
         [] {
             LegacyParts parts;
             parts.head = "target-variable-name='y' model-type='multinomial-logistic'";
             parts.cells.clear();
             return parts.Text();
         }(),
         "empty-matrix", "", "", "", ""},
        {"fewer predictors than parameters",
         Replaced(Replaced(Linear().Text(), Linear().cells, ""), "<Predictor name='b'/>", ""),
         "unpaired-parameters", "ParameterList", "", "", ""},
        {"fewer parameters than predictors",
         Replaced(
             Replaced(Replaced(Linear().Text(), Linear().cells, ""), "<Parameter name='pb'/>", ""),
             "<PCell parameterName='pb' beta='2'/>", ""),
         "unpaired-parameters", "ParameterList", "", "", ""},
        {"a constant that stands for a slope in the older form",
         Replaced(older, "<parameter name='bw'/>", ""), "unpaired-parameters", "parameter-list", "",
         "", ""},
        {"a cell against the positions in the older form",
         Replaced(older, "parameter-name='bx' predictor-name='x'",
                  "parameter-name='bx' predictor-name='w'"),
         "cell-against-position", "pp-matrix/pp-cell[1]", "predictor-name", "w", "",
         Answer::Notice},
        {"a square in the older form",
         Replaced(older, "predictor-name='w' value='1'", "predictor-name='w' value='2'"),
         "cell-against-position", "pp-matrix/pp-cell[2]", "predictor-name", "w", "",
         Answer::Notice},
        {"a parameter without cell", Replaced(general, kLevel, ""), "parameter-without-cell",
         "ParameterList/Parameter[2]", "name", "p1", ""},
        {"a parameter without cell beside a constant with a beta of 0",
         Replaced(Replaced(general, "parameterName='p0' beta='1'", "parameterName='p0' beta='0'"),
                  kLevel, ""),
         "parameter-without-cell", "ParameterList/Parameter[2]", "name", "p1", ""},
        {"a parameter of any name without cell beside a constant with a beta of 0",
         Replaced(Replaced(Replaced(general, " label='fred'", ""), "parameterName='p0' beta='1'",
                           "parameterName='p0' beta='0'"),
                  kLevel, ""),
         "parameter-without-cell", "ParameterList/Parameter[2]", "name", "p1", ""},
        {"a parameter without cell in a Cox model",
         Replaced(Cox().Text(), "<PPCell parameterName='p2' predictorName='f' value='green'/>", ""),
         "parameter-without-cell", "ParameterList/Parameter[2]", "name", "p2", ""},
        {"a parameter without cell in a multinomial model", Replaced(multinomial, kLevel, ""),
         "parameter-without-cell", "ParameterList/Parameter[2]", "name", "p1", ""},
        {"a parameter without cell in an ordinal model", Replaced(ordinal, kLevel, ""),
         "parameter-without-cell", "ParameterList/Parameter[2]", "name", "p1", ""},
        {"a parameter that lacks its beta", Replaced(general, kBeta3, ""), "parameter-without-beta",
         "ParameterList/Parameter[4]", "name", "p3", "", Answer::Notice},
        {"a parameter that lacks the beta of a category",
         Replaced(multinomial, "<PCell targetCategory='c' parameterName='p1' beta='1'/>", ""),
         "parameter-without-beta", "ParameterList/Parameter[2]", "name", "p1", "", Answer::Notice},
        {"a second level of a factor that lacks its beta, beside the reference",
         Replaced(general, "<PCell parameterName='p2' beta='3'/>", ""), "parameter-without-beta",
         "ParameterList/Parameter[3]", "name", "p2", "", Answer::Notice},
        {"a threshold without beta",
         Replaced(ordinal, "<PCell targetCategory='b' parameterName='p0' beta='1'/>", ""),
         "threshold-without-beta", "ParamMatrix", "", "p0", ""},
    };
}

class CellFault : public testing::TestWithParam<FaultRow> {};

TEST_P(CellFault, IsToldWhereItStands)
{
    const FaultRow& row = GetParam();
    const Audited audited(row.text);
    const Finding finding = audited.Of(row.rule);
    ASSERT_NE(finding.rule, nullptr) << "told: " << audited.Rules();
    EXPECT_EQ(finding.answer, row.answer);
    const std::string model =
        row.text.starts_with("<zelt") ? "model/regression-model" : "GeneralRegressionModel";
    const std::string wanted = model + (row.path.empty() ? "" : "/" + row.path);
    EXPECT_TRUE(finding.place.path.ends_with(wanted)) << finding.place.path;
    EXPECT_GT(finding.place.line, 0u);
    EXPECT_GT(finding.place.column, 0u);
    EXPECT_EQ(finding.attribute, row.attribute);
    EXPECT_EQ(finding.found, row.found);
    EXPECT_EQ(finding.nearWord, row.near);
    // No other fault is told of the one change.
    if (row.answer == Answer::Fault) {
        EXPECT_EQ(audited.Rules(Answer::Fault).find(' '), std::string::npos) << audited.Rules();
    } else {
        EXPECT_EQ(audited.Rules(Answer::Fault), "");
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, CellFault, testing::ValuesIn(FaultRows()));

struct SoundRow {
    const char* what;
    std::string text;
};

void PrintTo(const SoundRow& row, std::ostream* out) { *out << row.what; }

std::vector<SoundRow> SoundRows()
{
    const std::string general = General().Text();
    const std::string multinomial = Multinomial().Text();
    const std::string ordinal = Ordinal().Text();
    const std::string older = Older().Text();
    const std::string numbers = Replaced(
        Replaced(general, "<Value value='red'/><Value value='green'/><Value value='blue'/>",
                 "<Value value='1'/><Value value='2.0'/><Value value='3'/>"),
        "name='f' optype='categorical' dataType='string'",
        "name='f' optype='categorical' dataType='double'");
    return {
        {"a general linear model", general},
        {"a multinomial model, whose covariances may lack variances", multinomial},
        {"a model of two categories", Binary().Text()},
        {"an ordinal model", ordinal},
        {"a Cox model", Cox().Text()},
        {"a linear regression", Linear().Text()},
        {"a linear regression by position", Replaced(Linear().Text(), Linear().cells, "")},
        {"a linear regression by position that lists no constant",
         Replaced(Replaced(Linear().Text(), Linear().cells, ""), "<Parameter name='(Constant)'/>",
                  "")},
        {"a linear regression that implies its constant, without a beta",
         Replaced(Replaced(Linear().Text(), "<Parameter name='(Constant)'/>", ""),
                  "<PCell parameterName='(Constant)' beta='3'/>", "")},
        {"the older form", older},
        {"the older form with a constant of any name",
         Replaced(Replaced(older, "<parameter name='(Constant)'/>", ""), "<parameter name='bw'/>",
                  "<parameter name='bw'/><parameter name='(Constant)'/>")},
        {"the older form without constant",
         Replaced(Replaced(older, "<parameter name='(Constant)'/>", ""),
                  "<p-cell parameter-name='(Constant)' beta='1' df='1'/>", "")},
        {"a level of numbers in another spelling",
         Replaced(Replaced(numbers, "value='red'", "value='1.0'"), "value='green'", "value='+2'")},
        {"levels of an open factor",
         Replaced(general, "<Value value='red'/><Value value='green'/><Value value='blue'/>", "")},
        {"levels that are numbers like columns",
         Replaced(Replaced(Replaced(general, "<Value value='red'/><Value value='green'/>",
                                    "<Value value='1'/><Value value='2'/>"),
                           "value='red'", "value='1'"),
                  "value='green'", "value='2'")},
        {"triangles that agree",
         After(general, kVariance3, "<PCovCell pRow='p0' pCol='p3' value='.50'/>")},
        {"a variance of 0, and none where the covariance is 0",
         Replaced(After(general, kVariance3, "<PCovCell pRow='p1' pCol='p0' value='0'/>"),
                  "pCol='p3' value='2'", "pCol='p3' value='0'")},
        {"a beta of 0 for the reference category",
         After(multinomial, "<ParamMatrix>",
               "<PCell targetCategory='a' parameterName='p3' beta='0'/>")},
        {"a reference category that is the one with the betas, where there is one equation",
         Replaced(Binary().Text(), "targetReferenceCategory='a'", "targetReferenceCategory='b'")},
        {"a category for a cell of a model that has none",
         Replaced(general, "parameterName='p3' beta",
                  "targetCategory='z' parameterName='p3' beta")},
        {"a constant of any name",
         Replaced(General().Text(), "name='p0' label='Intercept'", "name='p0'")},
        {"a parameter with a beta of 0 and no cell",
         Replaced(Replaced(general, kLevel, ""), "parameterName='p1' beta='2'",
                  "parameterName='p1' beta='0'")},
        {"the reference level of a factor as a parameter without beta",
         After(After(general, "<Parameter name='p4'/>", "<Parameter name='p5'/>"),
               "predictorName='f' value='green'/>",
               "<PPCell parameterName='p5' predictorName='f' value='blue'/>")},
        {"a parameter that is aliased for a category",
         Replaced(
             Replaced(multinomial, "<PCell targetCategory='c' parameterName='p3' beta='1'/>", ""),
             "<PCell targetCategory='b' parameterName='p3' beta='1'/>",
             "<PCell targetCategory='b' parameterName='p3' beta='0' df='0'/>")},
        {"a model without predictors",
         [] {
             Parts parts = General();
             parts.parameters = "<Parameter name='p0'/>";
             parts.factors = parts.covariates = parts.cells = parts.covariances = "";
             parts.betas = "<PCell parameterName='p0' beta='1'/>";
             return parts.Text();
         }()},
        {"a covariate that is the model's offset",
         Replaced(
             Replaced(Replaced(general, "modelType='generalLinear'",
                               "modelType='generalizedLinear' algorithmName='GZLM' "
                               "distribution='poisson' linkFunction='log' offsetVariable='offset'"),
                      "<DataField name='x'",
                      "<DataField name='offset' optype='continuous' dataType='double'/><DataField "
                      "name='x'"),
             "<Predictor name='x'/>", "<Predictor name='x'/><Predictor name='offset'/>")},
    };
}

class CellSound : public testing::TestWithParam<SoundRow> {};

TEST_P(CellSound, IsPassedOver)
{
    const Audited audited(GetParam().text);
    EXPECT_EQ(audited.Rules(Answer::Fault), "");
    for (const Finding& finding : audited.findings.Kept()) {
        EXPECT_EQ(finding.answer, Answer::Adapted) << finding.ToString();
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, CellSound, testing::ValuesIn(SoundRows()));

// A model with a predictor more that has a field and no cell.
std::string WithPredictor(const std::string& field, const std::string& parameter = "")
{
    Parts parts = General();
    const std::string name = field.substr(0, field.find('\''));
    parts.fields += "<DataField name='" + field + ">";
    parts.covariates += "\n<Predictor name='" + name + "'/>";
    if (!parameter.empty()) {
        parts.parameters += "\n<Parameter " + parameter + "/>";
        const std::string written = parameter.substr(0, parameter.find('\'', 6) + 1);
        parts.betas += "<PCell parameterN" + written.substr(1) + " beta='0.5'/>";
    }
    return parts.Text();
}

// The document names no reference category, which could tell it.
TEST(StrayBeta, IsTheOnlyOneOfACategoryAndMissedElsewhere)
{
    const std::string text = Replaced(Multinomial().Text(), " targetReferenceCategory='a'", "");
    const auto moved = [&](const std::string& parameter) {
        return Audited(Replaced(text, "<PCell targetCategory='c' parameterName='" + parameter,
                                "<PCell targetCategory='a' parameterName='" + parameter));
    };
    EXPECT_FALSE(Audited(text).Has("stray-beta"));
    for (const std::string parameter : {"p0", "p1"}) {
        const Finding finding = moved(parameter).Of("stray-beta");
        ASSERT_NE(finding.rule, nullptr) << parameter;
        EXPECT_EQ(finding.found, "a");
        EXPECT_EQ(finding.attribute, "targetCategory");
    }
    // A category may have its constant alone, betas of 0 being left out.
    EXPECT_FALSE(Audited(After(text, "<PCell targetCategory='c' parameterName='p4' beta='1'/>",
                               "<PCell targetCategory='a' parameterName='p0' beta='1'/>"))
                     .Has("stray-beta"));
}

TEST(UnusedPredictor, IsAFaultWhereItSaysOffset)
{
    for (const char* field : {"offset(log(days))' optype='continuous' dataType='double'/",
                              "Offset' optype='continuous' dataType='double'/",
                              "logdays' displayName='offset: log of days' optype='continuous' "
                              "dataType='double'/"}) {
        const Audited audited(WithPredictor(field));
        EXPECT_EQ(audited.Rules(), "offset-as-covariate") << field;
        EXPECT_EQ(audited.Of("offset-as-covariate").place.path,
                  "PMML/GeneralRegressionModel/CovariateList/Predictor[2]");
    }
}

TEST(UnusedPredictor, IsANoticeElse)
{
    const Audited audited(WithPredictor("days' optype='continuous' dataType='double'/"));
    EXPECT_EQ(audited.Rules(), "unused-predictor");
    EXPECT_EQ(audited.Of("unused-predictor").found, "days");
    // also of an offset beside the one that the model has
    const Audited another(Replaced(WithPredictor("offset2' optype='continuous' dataType='double'/"),
                                   "modelType='generalLinear'",
                                   "modelType='generalizedLinear' algorithmName='GZLM' "
                                   "linkFunction='log' offsetValue='2'"));
    EXPECT_EQ(another.Rules(), "unused-predictor");
}

TEST(UnusedPredictor, IsALogicalOneWhereAParameterIsItsTruth)
{
    for (const char* parameter : {"name='smokerTRUE'", "name='p5' label='smokerTRUE'",
                                  "name='smokerT'", "name='smokertrue'", "name='smokeryes'"}) {
        const Audited audited(
            WithPredictor("smoker' optype='categorical' dataType='string'><Value value='no'/>"
                          "<Value value='yes'/></DataField",
                          parameter));
        EXPECT_EQ(audited.Rules(), "logical-covariate") << parameter;
        EXPECT_NE(audited.Of("logical-covariate").text.find("\"smoker\""), std::string::npos);
    }
    // any other parameter without cells is one for itself
    const Audited other(
        WithPredictor("smoker' optype='continuous' dataType='double'/", "name='smokerly'"));
    EXPECT_EQ(other.Rules(), "parameter-without-cell unused-predictor");
}

TEST(LogicalCovariate, IsNoConstantOfAModelWithoutOne)
{
    const std::string text = Replaced(
        Replaced(
            WithPredictor("smoker' optype='continuous' dataType='double'/", "name='smokerTRUE'"),
            "<Parameter name='p0' label='Intercept'/>\n", ""),
        General().covariances, "");
    EXPECT_EQ(Audited(Replaced(text, "<PCell parameterName='p0' beta='1'/>\n", "")).Rules(),
              "logical-covariate");
}

TEST(CellFindings, SayWhatIsKnownTheNearestFirst)
{
    const Audited audited(
        Replaced(General().Text(), "parameterName='p4' beta", "parameterName='p44' beta"));
    const Finding finding = audited.Of("unknown-parameter");
    EXPECT_EQ(finding.text,
              "PCell parameterName \"p44\" is no parameter of the model, which has one of \"p4\", "
              "\"p0\", \"p1\" and 2 more; did you mean \"p4\"?");
}

TEST(CellFindings, ShowNamesWithoutWhatATerminalObeys)
{
    const Audited audited(Replaced(General().Text(), "pRow='p3' pCol='p0'",
                                   "pRow='p3&#x9;&#x9B;31m\xC3\xA9' pCol='p0'"));
    const std::string text = audited.Of("unknown-parameter").text;
    EXPECT_TRUE(text.starts_with("PCovCell pRow \"p3\\u0009\\u009B31m\xC3\xA9\" is no parameter"))
        << text;
}

TEST(CellFindings, OfACategoryThatIsntThereAskForNoBetasOfIt)
{
    const Audited audited(Replaced(Multinomial().Text(), "targetCategory='c' parameterName='p3'",
                                   "targetCategory='C' parameterName='p3'"));
    EXPECT_EQ(audited.Rules(Answer::Fault), "unknown-category");
    EXPECT_EQ(audited.findings.CountOf("parameter-without-beta"), 1u) << audited.Rules();
    EXPECT_EQ(audited.Of("parameter-without-beta").found, "p3");  // that of "c" is gone
}

// What the bins of a derived text yield are its categories.
TEST(CellFindings, KnowTheCategoriesOfADerivedFactor)
{
    const auto binned = [](const std::string& category, const std::string& attributes = "") {
        Parts parts = General();
        parts.before =
            "<LocalTransformations><DerivedField name='g' optype='categorical' dataType='string'>"
            "<Discretize field='x' " +
            attributes +
            "><DiscretizeBin binValue='low'>"
            "<Interval closure='openClosed' rightMargin='5'/></DiscretizeBin>"
            "<DiscretizeBin binValue='high'><Interval closure='openOpen' leftMargin='5'/>"
            "</DiscretizeBin></Discretize></DerivedField></LocalTransformations>";
        parts.factors += "<Predictor name='g'/>";
        parts.parameters += "<Parameter name='p5'/>";
        parts.cells += "<PPCell parameterName='p5' predictorName='g' value='" + category + "'/>";
        parts.betas += "<PCell parameterName='p5' beta='6'/>";
        return parts.Text();
    };
    const Finding finding = Audited(binned("Low", "defaultValue='low'")).Of("unknown-category");
    ASSERT_NE(finding.rule, nullptr);
    EXPECT_EQ(finding.found, "Low");
    EXPECT_EQ(finding.nearWord, "low");
    EXPECT_EQ(finding.expected, "one of \"low\", \"high\"");
    EXPECT_EQ(Audited(binned("low")).Rules(), "");
    EXPECT_EQ(Audited(binned("other", "mapMissingTo='other'")).Rules(), "");
}

TEST(CellFindings, CountAllAndKeepTheFirst)
{
    std::string cells;
    for (int i = 0; i < 3000; ++i) {
        cells += "<PCell parameterName='q" + std::to_string(i) + "' beta='1'/>";
    }
    const Audited audited(After(General().Text(), "<ParamMatrix>", cells));
    EXPECT_EQ(audited.findings.CountOf("unknown-parameter"), 3000u);
    EXPECT_EQ(audited.findings.Kept().size(), Findings::kKeptOfRule);
}

// The last that is kept tells as much as the first.
TEST(CellFindings, TellTheNearestOfEachThatIsKept)
{
    std::string cells;
    for (size_t i = 0; i < Findings::kKeptOfRule; ++i) {
        cells += "<PCell parameterName='p44' beta='1'/>";
    }
    const Audited audited(After(General().Text(), "<ParamMatrix>", cells));
    const auto& kept = audited.findings.Kept();
    ASSERT_EQ(std::count_if(kept.begin(), kept.end(),
                            [](const Finding& finding) {
                                return finding.rule->name == "unknown-parameter" &&
                                       finding.nearWord == "p4" && !finding.expected.empty();
                            }),
              static_cast<std::ptrdiff_t>(Findings::kKeptOfRule));
}

// One that is called like a predictor is its parameter that lacks a cell, wherever the constant
// stands.
TEST(CellFindings, TakeNoPredictorsNameForTheConstants)
{
    Parts parts = General();
    parts.parameters =
        "<Parameter name='x'/><Parameter name='k'/><Parameter name='p1' label='fred'/>"
        "<Parameter name='p2' label='fgreen'/>";
    parts.cells =
        "<PPCell parameterName='p1' predictorName='f' value='red'/>"
        "<PPCell parameterName='p2' predictorName='f' value='green'/>";
    parts.betas =
        "<PCell parameterName='x' beta='1'/><PCell parameterName='k' beta='2'/>"
        "<PCell parameterName='p1' beta='3'/><PCell parameterName='p2' beta='4'/>";
    parts.covariances.clear();
    const Finding finding = Audited(parts.Text()).Of("parameter-without-cell");
    ASSERT_NE(finding.rule, nullptr) << Audited(parts.Text()).Rules();
    EXPECT_EQ(finding.found, "x");
}

// Of a factor that lists no values one level without a beta may be the reference, two can't.
TEST(CellFindings, OfSeveralLevelsWithoutABeta)
{
    Parts parts = General();
    // Of numbers: of texts the adapter lists those of the cells.
    std::string text = Replaced(
        parts.Text(),
        "dataType='string'><Value value='red'/><Value value='green'/><Value value='blue'/>",
        "dataType='integer'>");
    text = Replaced(text, "value='red'", "value='1'");
    text = Replaced(text, "value='green'", "value='2'");
    const std::string one = Replaced(text, "<PCell parameterName='p1' beta='2'/>", "");
    EXPECT_EQ(Audited(one).findings.CountOf("parameter-without-beta"), 0u);
    const std::string both = Replaced(one, "<PCell parameterName='p2' beta='3'/>", "");
    // A third level has a beta.
    const std::string third =
        After(After(After(both, "<ParameterList>", "<Parameter name='p5'/>"), "<PPMatrix>",
                    "<PPCell parameterName='p5' predictorName='f' value='3'/>"),
              "<ParamMatrix>", "<PCell parameterName='p5' beta='6'/>");
    EXPECT_EQ(Audited(third).findings.CountOf("parameter-without-beta"), 2u)
        << Audited(third).Rules();
}

// The two betas of another category miss the constant that this one has alone.
TEST(StrayBeta, IsMissedByACategoryOfTwo)
{
    Parts parts = Multinomial();
    parts.model = "modelType='multinomialLogistic' functionName='classification'";
    parts.betas =
        "<PCell targetCategory='b' parameterName='p1' beta='1'/>"
        "<PCell targetCategory='b' parameterName='p2' beta='1'/>"
        "<PCell targetCategory='a' parameterName='p0' beta='1'/>";
    const Finding finding = Audited(parts.Text()).Of("stray-beta");
    ASSERT_NE(finding.rule, nullptr) << Audited(parts.Text()).Rules();
    EXPECT_EQ(finding.found, "a");
}

// The adapter takes these away, and what was read of them before counts no more.
TEST(CellFindings, OfCovariancesThatAreGone)
{
    Parts parts = Multinomial();
    parts.covariances =
        "<PCovCell pRow='p0' pCol='p0' value='1'/><PCovCell pRow='p0' pCol='p0' value='2'/>";
    const Audited audited(parts.Text());
    EXPECT_EQ(audited.Rules(Answer::Adapted), "covariance-categories");
    EXPECT_EQ(audited.Rules(Answer::Fault), "");
}

// What stands between two cells of one place doesn't hide the second.
TEST(CellFindings, OfASecondCellBehindOneOfNoPlace)
{
    Parts parts = General();
    parts.covariances =
        "<PCovCell pRow='p3' pCol='p0' value='1'/><PCovCell pRow='p3' pCol='qq' value='1'/>"
        "<PCovCell pRow='p3' pCol='p0' value='2'/>";
    EXPECT_EQ(Audited(parts.Text()).Rules(Answer::Fault), "unknown-parameter contradicting-cells");
}

// In a family without equations of its own for categories a cell may name any, and is told.
TEST(DesignsOfCategories, AreToldWhateverTheyName)
{
    Parts parts = General();
    parts.cells += "<PPCell parameterName='p4' predictorName='x' value='1' targetCategory='zz'/>";
    EXPECT_TRUE(Audited(parts.Text()).Has("design-of-category")) << Audited(parts.Text()).Rules();
    // Also where the target lists its categories, of which the family makes nothing.
    parts.fields.replace(0, parts.fields.find('\n'),
                         "<DataField name='y' optype='categorical' dataType='string'>"
                         "<Value value='a'/><Value value='b'/></DataField>");
    EXPECT_TRUE(Audited(parts.Text()).Has("design-of-category")) << Audited(parts.Text()).Rules();
}

TEST(CellFindings, LeaveToTheVocabularyWhatIsNoNumberOrNotThere)
{
    // a place that two cells have, one of them without a number
    const std::string text =
        After(General().Text(), kBeta3, "<PCell parameterName='p3' beta='four'/>");
    EXPECT_EQ(Audited(text).Rules(Answer::Fault), "");
    EXPECT_EQ(Audited(Replaced(General().Text(), "<PCell parameterName='p3' beta", "<PCell beta"))
                  .Rules(Answer::Fault),
              "");
}

// Designs of single categories.

std::string OwnDesigns()
{
    Parts parts = Multinomial();
    parts.cells =
        "<PPCell parameterName='p1' predictorName='f' value='red'/>\n"
        "<PPCell parameterName='p2' predictorName='f' value='green'/>\n"
        "<PPCell parameterName='p3' predictorName='x' value='1' targetCategory='b'/>\n"
        "<PPCell parameterName='p3' predictorName='x' value='2' targetCategory='c'/>\n"
        "<PPCell parameterName='p4' predictorName='x' value='2'/>\n"
        "<PPCell parameterName='p4' predictorName='f' value='red' targetCategory='c'/>";
    parts.covariances = "<PCovCell pRow='p3' pCol='p0' tRow='c' tCol='b' value='0.5'/>";
    return parts.Text();
}

TEST(CategoryDesign, GivesEachDesignAParameter)
{
    const Adapted adapted(OwnDesigns());
    EXPECT_EQ(adapted.Rules(), "category-design");
    EXPECT_FALSE(adapted.Has("predictorName='x' targetCategory"));
    EXPECT_TRUE(adapted.Has("<PPCell parameterName='p3' predictorName='x' value='1'>"));
    EXPECT_TRUE(adapted.Has("<PPCell parameterName='p3 of c' predictorName='x' value='2'>"));
    EXPECT_TRUE(adapted.Has("<PPCell parameterName='p4' predictorName='x' value='2'>"));
    EXPECT_TRUE(adapted.Has("<PPCell parameterName='p4 of c' predictorName='f' value='red'>"));
    EXPECT_TRUE(adapted.Has("<PPCell parameterName='p4 of c' predictorName='x' value='2'>"));
    EXPECT_FALSE(adapted.Has("<PPCell parameterName='p4' predictorName='f'"));
    EXPECT_TRUE(adapted.Has("<PCell beta='1' parameterName='p3' targetCategory='b'>"));
    EXPECT_TRUE(adapted.Has("<PCell beta='1' parameterName='p3 of c' targetCategory='c'>"));
    EXPECT_TRUE(adapted.Has("<PCovCell pCol='p0' pRow='p3 of c'"));
    EXPECT_EQ(Audited(OwnDesigns()).Rules(), "category-design");
}

TEST(CategoryDesign, OfWhichAllCategoriesHaveTheSameNeedsNone)
{
    const std::string text =
        Replaced(Multinomial().Text(), kLevel,
                 "<PPCell parameterName='p1' predictorName='f' value='red' targetCategory='b'/>"
                 "<PPCell parameterName='p1' predictorName='f' value='red' targetCategory='c'/>");
    const Adapted adapted(text);
    EXPECT_EQ(adapted.Rules(), "category-design");
    EXPECT_TRUE(adapted.Has("<PPCell parameterName='p1' predictorName='f' value='red'>"));
    EXPECT_FALSE(adapted.Has("p1 of"));
    EXPECT_EQ(Audited(text).Rules(), "category-design");
}

TEST(CategoryDesign, TakesANameThatIsFree)
{
    const Adapted adapted(Replaced(OwnDesigns(), "<Parameter name='p4'/>",
                                   "<Parameter name='p4'/><Parameter name='p3 of c'/>"));
    EXPECT_TRUE(adapted.Has("<PPCell parameterName='p3 of c'' predictorName='x' value='2'>"));
}

TEST(CategoryDesign, LeavesWhatCantBeToldApart)
{
    const std::string text = OwnDesigns();
    for (const auto& [from, to] : std::vector<std::pair<std::string, std::string>>{
             {"value='2' targetCategory='c'", "value='2' targetCategory='d'"},
             {"value='2' targetCategory='c'", "value='2' targetCategory='b'"}}) {
        EXPECT_TRUE(Adapted(Replaced(text, from, to)).Untouched()) << to;
    }
}

}  // namespace
}  // namespace MCVelscore_850
