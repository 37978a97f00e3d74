// The families that predict a category, and conditional logistic regression, through the command:
// one small document each.

#include <cmath>

#include <gtest/gtest.h>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

// A document of a target y, a covariate x and a factor f; logit or linear predictor 0.5 + 2 x and
// 1 for f = b, in the row of `category`.
struct Document {
    std::string head = "modelType='multinomialLogistic'";
    std::string target = "<Value value='no'/><Value value='yes'/>";
    std::string factorField = "dataType='string'><Value value='a'/><Value value='b'/>";
    std::string miningX = "<MiningField name='x'/>";
    std::string predictor = "<Predictor name='f'/>";
    std::string factorCell = "b";
    std::string betas =
        "<PCell targetCategory='yes' parameterName='p0' beta='0.5'/>"
        "<PCell targetCategory='yes' parameterName='px' beta='2'/>"
        "<PCell targetCategory='yes' parameterName='pf' beta='1'/>";
    std::string parameters = "<Parameter name='p0'/><Parameter name='px'/><Parameter name='pf'/>";

    std::string Text() const
    {
        return "<PMML version='4.4' xmlns='http://www.dmg.org/PMML-4_4'><Header/><DataDictionary>"
               "<DataField name='y' optype='categorical' dataType='string'>" +
               target +
               "</DataField><DataField name='x' optype='continuous' dataType='double'/>"
               "<DataField name='f' optype='categorical' " +
               factorField +
               "</DataField></DataDictionary><GeneralRegressionModel "
               "functionName='classification' " +
               head + "><MiningSchema><MiningField name='y' usageType='target'/>" + miningX +
               "<MiningField name='f'/></MiningSchema><ParameterList>" + parameters +
               "</ParameterList><FactorList>" + predictor +
               "</FactorList><CovariateList><Predictor name='x'/></CovariateList><PPMatrix>"
               "<PPCell value='1' predictorName='x' parameterName='px'/><PPCell value='" +
               factorCell + "' predictorName='f' parameterName='pf'/></PPMatrix><ParamMatrix>" +
               betas + "</ParamMatrix></GeneralRegressionModel></PMML>";
    }
};

// f enters by the contrast +1 for a and -1 for b, the cell names a.
Document Binary(const std::string& category)
{
    Document document;
    document.predictor =
        "<Predictor name='f' contrastMatrixType='sum'><Categories><Category value='a'/>"
        "<Category value='b'/></Categories><Matrix nbRows='2' nbCols='1'><Array>1</Array>"
        "<Array>-1</Array></Matrix></Predictor>";
    document.factorCell = "a";
    document.betas = "";
    for (const char* beta : {"'p0' beta='0.5'", "'px' beta='2'", "'pf' beta='1'"}) {
        document.betas += "<PCell targetCategory='" + category + "' parameterName=" + beta + "/>";
    }
    return document;
}

Document Conditional()
{
    Document document;
    document.head = "modelType='multinomialLogistic' algorithmName='conditionalLogistic'";
    document.parameters = "<Parameter name='px'/><Parameter name='pf'/>";
    document.betas =
        "<PCell targetCategory='no' parameterName='px' beta='2'/>"
        "<PCell targetCategory='no' parameterName='pf' beta='1'/>";
    return document;
}

Document Ordinal(const std::string& selector)
{
    Document document;
    document.head = "modelType='ordinalMultinomial' algorithmName='" + selector + "'";
    document.betas =
        "<PCell targetCategory='no' parameterName='p0' beta='0.5'/>"
        "<PCell parameterName='px' beta='2'/><PCell parameterName='pf' beta='1'/>";
    return document;
}

double Logistic(double lp) { return 1.0 / (1.0 + std::exp(-lp)); }

class Classification : public testing::Test {
protected:
    Finished Run(const Document& document, const std::string& table, Texts options = {})
    {
        options.insert(options.begin(), {"score", folder_.Write("m.pmml", document.Text())});
        return RunVelscore(options, table);
    }
    CsvText Scores(const Document& document, const std::string& table, Texts options = {})
    {
        const Finished run = Run(document, table, std::move(options));
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return ParseCsv(run.out);
    }
    ScratchFolder folder_;
};

double Number(const CsvText& scores, const std::string& column, size_t row = 0)
{
    const std::string text = scores.Texts(column).at(row);
    return text.empty() ? std::nan("") : std::stod(text);
}

TEST_F(Classification, EveryFamilyWritesProbabilitiesThatSumToOne)
{
    struct Row {
        const char* what;
        Document document;
        double no;  // of x = 0.25, f = b
    };
    const Row rows[] = {
        {"multinomial", Document(), 1.0 - Logistic(0.5 + 0.5 + 1.0)},
        {"binary", Binary("yes"), 1.0 - Logistic(0.5 + 0.5 - 1.0)},
        {"ordinal", Ordinal("ordinalRegression"), Logistic(0.5 + 0.5 + 1.0)},
        {"ordinal, generalized", Ordinal("GZLM"), Logistic(0.5 - 0.5 - 1.0)},
    };
    std::string table = "x,f\n0.25,b\n";
    for (int i = -40; i < 40; ++i) table += std::to_string(i * 0.37) + (i % 2 ? ",a\n" : ",b\n");
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const CsvText scores = Scores(row.document, table);
        EXPECT_EQ(scores.header, (Texts{"prediction", "probability(no)", "probability(yes)",
                                        "status", "status_field"}));
        EXPECT_NEAR(Number(scores, "probability(no)"), row.no, 1e-15);
        ASSERT_EQ(scores.rows.size(), 81u);
        for (size_t i = 0; i < scores.rows.size(); ++i) {
            const double no = Number(scores, "probability(no)", i);
            const double yes = Number(scores, "probability(yes)", i);
            EXPECT_NEAR(no + yes, 1.0, 1e-12);
            EXPECT_EQ(scores.Texts("prediction")[i], yes > no ? "yes" : "no");
        }
    }
    const CsvText conditional = Scores(Conditional(), table);
    EXPECT_EQ(conditional.header, (Texts{"prediction", "status", "status_field"}));
    EXPECT_NEAR(Number(conditional, "prediction"), Logistic(0.5 + 1.0), 1e-15);
}

TEST_F(Classification, PoliciesDecideWhetherAReplacementIsTaken)
{
    const std::string table = "x,f\n,b\n0.25,\n0.25,b\n";
    for (Document document : {Document(), Binary("yes"), Ordinal("ordinalRegression"),
                              Ordinal("GZLM"), Conditional()}) {
        SCOPED_TRACE(document.head);
        document.miningX = "<MiningField name='x' missingValueReplacement='0.25'/>";
        const bool conditional = document.head.find("conditional") != std::string::npos;
        const Texts fields{"x", "f", ""};
        const std::string column = conditional ? "prediction" : "probability(no)";
        for (const char* policy : {"substitute", "sysmis", "status"}) {
            const Finished run = Run(document, table, {"--policy", policy});
            if (conditional && policy == std::string("status")) {
                EXPECT_EQ(run.exitCode, 1);  // it knows no such policy
                continue;
            }
            EXPECT_EQ(run.exitCode, 0) << run.err;
            const CsvText scores = ParseCsv(run.out);
            const bool substitutes = policy == std::string("substitute");
            EXPECT_EQ(scores.Texts("status"), (Texts{substitutes ? "0" : "90029", "90029", "0"}))
                << policy;
            EXPECT_EQ(scores.Texts("status_field"),
                      (Texts{substitutes ? "" : fields[0], fields[1], ""}))
                << policy;
            // A case that failed shows nothing, whatever its model went on to compute.
            EXPECT_EQ(scores.Texts(column)[0], substitutes ? scores.Texts(column)[2] : "");
            EXPECT_EQ(scores.Texts("prediction")[1], "");
            EXPECT_EQ(scores.Texts(column)[1], "");
        }
    }
}

TEST_F(Classification, BetasOfTheFirstCategoryServeEveryCaseAndColumnsKeepTheirOrder)
{
    const std::string table = "x,f\n0.25,b\n0.25,b\n1,a\n-0.25,a\n";
    const CsvText scores = Scores(Binary("no"), table);
    EXPECT_EQ(scores.header, (Texts{"prediction", "probability(no)", "probability(yes)", "status",
                                    "status_field"}));
    const double lps[] = {0.0, 0.0, 3.5, 1.0};
    for (size_t i = 0; i < 4; ++i) {
        EXPECT_NEAR(Number(scores, "probability(no)", i), Logistic(lps[i]), 1e-15) << i;
    }
    EXPECT_EQ(scores.Texts("prediction"), (Texts{"yes", "yes", "no", "no"}));  // ties first
    // As the document stands, the first case alone has the betas' row.
    Document selected = Binary("no");
    selected.head += " algorithmName='contrastLogistic'";
    const CsvText asIs = Scores(selected, table, {"--as-is"});
    EXPECT_EQ(asIs.header, scores.header);
    EXPECT_EQ(Number(asIs, "probability(no)", 0), 0.5);
    EXPECT_EQ(Number(asIs, "probability(no)", 2), 0.5);
    const Finished check = RunVelscore({"check", folder_.Path("m.pmml")});
    EXPECT_NE(check.out.find("two equal probabilities"), std::string::npos) << check.out;
}

TEST_F(Classification, InspectShowsTheContrastsAndTheEquation)
{
    Document document = Binary("yes");
    document.head += " targetReferenceCategory='no'";
    const Finished run = RunVelscore({"inspect", folder_.Write("m.pmml", document.Text())});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    for (const char* line :
         {"binary logistic regression (BLRModel)", "categories    no, yes", "reference     no",
          "equation for yes\n  linear predictor =\n    + 0.5\n    + 2 * x\n"
          "    + 1 * contrast[f = a]\n",
          "contrasts of f\n  a            1\n  b            -1\n", "probability(yes)"}) {
        EXPECT_NE(run.out.find(line), std::string::npos) << line << "\nin\n" << run.out;
    }
}

TEST_F(Classification, UnlistedCategoriesOfAFactorWithoutValuesAreCountedAtTheEnd)
{
    Document document;
    document.factorField = "dataType='string'>";
    const std::string table = "x,f\n0.25,b\n0.25,a\n0.25,typo\n0.25,a\n";
    Finished run = Run(document, table, {"--strict"});
    EXPECT_EQ(run.exitCode, 5) << run.err;
    run = Run(document, table);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NEAR(Number(ParseCsv(run.out), "probability(yes)", 0), Logistic(2.0), 1e-15);
    EXPECT_NEAR(Number(ParseCsv(run.out), "probability(yes)", 2), Logistic(1.0), 1e-15);
    EXPECT_NE(run.err.find("column f has 1 value that the model's dictionary doesn't list "
                           "('a', 'typo'; one of these may be the reference)"),
              std::string::npos)
        << run.err;
    document.factorField = "dataType='boolean'>";
    document.factorCell = "true";
    run = Run(document, "x,f\n0.25,TRUE\n0.25,1\n0.25,false\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(ParseCsv(run.out).Texts("status"), (Texts{"0", "0", "0"}));
    for (const size_t row : {0u, 1u}) {
        EXPECT_NEAR(Number(ParseCsv(run.out), "probability(yes)", row), Logistic(2.0), 1e-15);
    }
    EXPECT_NEAR(Number(ParseCsv(run.out), "probability(yes)", 2), Logistic(1.0), 1e-15);
    EXPECT_TRUE(run.err.starts_with("velscore: 3 of 3 cases scored\n")) << run.err;
}

// The list was made from the cells, where the reference has none: a batch without any other value
// is in order.
TEST_F(Classification, TheReferenceCategoryThatNoCellNamesIsNoUnlistedValue)
{
    Document document;
    document.factorField = "dataType='string'>";
    Finished run =
        Run(document, "x,f\n0.25,b\n0.25,a\n0.25,\n0.25,a\n0.5,a\n", {"--policy", "sysmis"});
    EXPECT_EQ(run.err.find("doesn't list"), std::string::npos) << run.err;
    run = Run(document, "x,f\n0.25,b\n0.25,a\n0.5,a\n", {"--strict"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(run.err.starts_with("velscore: 3 of 3 cases scored\n")) << run.err;
    // Which of two it is nobody knows, so a slip that comes first is told all the same.
    run = Run(document, "x,f\n0.25,typo\n0.25,a\n0.5,a\n", {"--strict"});
    EXPECT_EQ(run.exitCode, 5);
    EXPECT_NE(run.err.find("('typo', 'a'; one of these may be the reference)"), std::string::npos)
        << run.err;
    // A list of the document's own is whole: any other value is counted.
    document.factorField =
        "dataType='string'><Extension extender='velscore' name='unlistedCategories' "
        "value='accept'/><Value value='a'/><Value value='b'/>";
    run = Run(document, "x,f\n0.25,c\n0.25,a\n", {"--strict"});
    EXPECT_EQ(run.exitCode, 5);
    EXPECT_NE(run.err.find("column f has 1 value that the model's dictionary doesn't list ('c')"),
              std::string::npos)
        << run.err;
}

// The plug-in would add the number of a missing value, -1.8e308, and answer with probability 1.
TEST_F(Classification, OrdinalRowsWithoutAValidOffsetAreRefused)
{
    for (const std::string& selector : Texts{"ordinalRegression", "GZLM"}) {
        Document document = Ordinal(selector);
        document.head += " offsetVariable='o'";
        document.miningX += "<MiningField name='o'/>";
        document.factorField +=
            "</DataField><DataField name='o' optype='continuous' dataType='double'>"
            "<Interval closure='closedClosed' leftMargin='0' rightMargin='2'/>";
        for (const char* policy : {"substitute", "sysmis", "status"}) {
            SCOPED_TRACE(selector + ", " + policy);
            Texts options{"--policy", policy};
            // The generalized family adds something else, which the audit refuses.
            if (selector == "GZLM") options.push_back("--as-is");
            const Finished run =
                Run(document, "x,f,o\n0.25,b,1\n0.25,b,\n0.25,b,3\n0.25,b,0\n", options);
            EXPECT_EQ(run.exitCode, 0) << run.err;
            const CsvText scores = ParseCsv(run.out);
            EXPECT_EQ(scores.Texts("status"), (Texts{"0", "90029", "90029", "0"}));
            EXPECT_EQ(scores.Texts("status_field"), (Texts{"", "o", "o", ""}));
            for (const char* column : {"prediction", "probability(no)", "probability(yes)"}) {
                EXPECT_EQ(scores.Texts(column)[1], "") << column;
                EXPECT_EQ(scores.Texts(column)[2], "") << column;
            }
            EXPECT_NE(run.err.find("2 with status 90029 (first: row 2, field o: empty)"),
                      std::string::npos)
                << run.err;
        }
    }
    // The offset of a sound row is still added: the threshold, the betas, and 1.
    Document document = Ordinal("ordinalRegression");
    document.head += " offsetVariable='o'";
    document.miningX += "<MiningField name='o'/>";
    document.factorField +=
        "</DataField><DataField name='o' optype='continuous' dataType='double'>";
    EXPECT_NEAR(Number(Scores(document, "x,f,o\n0.25,b,1\n"), "probability(no)"),
                Logistic(0.5 + 0.5 + 1.0 + 1.0), 1e-15);
}

}  // namespace
}  // namespace MCVelscore_850
