// Standard errors of probabilities and of linear predictors, `score --columns
// 'std_err(probability(yes))'`, against R: tests/data/probability-errors and
// tests/data/predictor-errors have its values, and the scripts that made them.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/scratchfolder.h"
#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

// The names of the columns of errors, by the columns of probabilities.
Texts ErrorColumns(const CsvText& scores)
{
    Texts names;
    for (const std::string& name : scores.header) {
        if (name.starts_with("probability(")) names.push_back("std_err(" + name + ")");
    }
    return names;
}

std::string List(const Texts& names)
{
    std::string list;
    for (const std::string& name : names) list += (list.empty() ? "" : ",") + name;
    return list;
}

std::string NameOfCase(const testing::TestParamInfo<const char*>& name)
{
    std::string text = name.param;
    std::replace(text.begin(), text.end(), '-', '_');
    return text;
}

class ProbabilityErrors : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(OfR, ProbabilityErrors,
                         testing::Values("blr-birthwt-sum", "blr-birthwt-cutoff",
                                         "blr-bacteria-helmert", "mlr-birthwt-race",
                                         "mlr-birthwt-visits-numeric", "mlr-housing-factors",
                                         "ordinal-logit-housing", "ordinal-probit-cumulative-only",
                                         "ordinal-cloglog-survey", "ordinal-loglog-warpbreaks",
                                         "ordinal-gzlm-logit-airquality",
                                         "ordinal-gzlm-cauchit-housing",
                                         "ordinal-gzlm-cloglog-housing"),
                         NameOfCase);

TEST_P(ProbabilityErrors, AreThoseOfR)
{
    const std::string folder = DataFile("cases/" + std::string(GetParam()) + "/");
    const std::string model = folder + "model.pmml";
    const std::string cases = folder + "input.csv";
    const CsvText plain = ParseCsv(RunVelscore({"score", model, cases}).out);
    const Texts names = ErrorColumns(plain);
    const Finished run = RunVelscore(
        {"score", model, cases, "--columns", "prediction,probabilities," + List(names)});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const CsvText found = ParseCsv(run.out);
    const CsvText expected =
        ParseCsv(ReadFile(DataFile("probability-errors/" + std::string(GetParam()) + ".csv")));
    ASSERT_EQ(names.size(), expected.header.size());
    ASSERT_EQ(found.rows.size(), expected.rows.size());
    for (size_t i = 0; i < names.size(); ++i) {
        // The errors of two categories are one; of more each column has the category's name.
        const std::string wanted =
            names.size() == 2 ? expected.header[i] : names[i].substr(20, names[i].size() - 22);
        const Texts numbers = found.Texts(names[i]);
        const Texts references = expected.Texts(wanted);
        ASSERT_EQ(numbers.size(), references.size()) << wanted;
        for (size_t row = 0; row < numbers.size(); ++row) {
            const double reference = std::strtod(references[row].c_str(), nullptr);
            EXPECT_NEAR(std::strtod(numbers[row].c_str(), nullptr), reference, 1e-10 * reference)
                << names[i] << ", row " << row;
        }
    }
    // Asked for or not, the other columns are the same to the last digit.
    for (const std::string& name : plain.header) {
        if (name.starts_with("status")) continue;
        EXPECT_EQ(found.Texts(name), plain.Texts(name)) << name;
    }
}

// Of the families that show them on request alone; std_dev is the same number in the others.
class PredictorErrors : public testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(OfR, PredictorErrors,
                         testing::Values("blr-birthwt-sum", "blr-bacteria-helmert",
                                         "cox-heart-start-stop", "cox-veteran-uncentred"),
                         NameOfCase);

TEST_P(PredictorErrors, AreThoseOfR)
{
    const std::string folder = DataFile("cases/" + std::string(GetParam()) + "/");
    const Finished run = RunVelscore({"score", folder + "model.pmml", folder + "input.csv",
                                      "--columns", "linear_predictor,std_err(linear_predictor)"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const CsvText found = ParseCsv(run.out);
    const CsvText expected =
        ParseCsv(ReadFile(DataFile("predictor-errors/" + std::string(GetParam()) + ".csv")));
    ASSERT_EQ(found.rows.size(), expected.rows.size());
    for (size_t row = 0; row < expected.rows.size(); ++row) {
        for (size_t column : {0U, 1U}) {
            const double wanted = std::strtod(expected.rows[row][column].c_str(), nullptr);
            EXPECT_NEAR(std::strtod(found.rows[row][column].c_str(), nullptr), wanted,
                        1e-10 * std::fabs(wanted))
                << expected.header[column] << ", row " << row;
        }
    }
}

// A generalized linear model of two categories whose linear predictor is 0.25 + x, with an
// intercept of the variance 4: the error of both probabilities is 2 times the link's derivative
// there.
std::string BinaryModel(const std::string& link, const std::string& covariances)
{
    return "<PMML xmlns='http://www.dmg.org/PMML-4_4' version='4.4'><Header/><DataDictionary>"
           "<DataField name='y' optype='categorical' dataType='string'><Value value='yes'/>"
           "<Value value='no'/></DataField>"
           "<DataField name='x' optype='continuous' dataType='double'/></DataDictionary>"
           "<GeneralRegressionModel modelType='generalizedLinear' functionName='classification' "
           "distribution='binomial' linkFunction='" +
           link +
           "'><MiningSchema><MiningField name='y' usageType='target'/><MiningField name='x'/>"
           "</MiningSchema><ParameterList><Parameter name='p0'/><Parameter name='p1'/>"
           "</ParameterList><CovariateList><Predictor name='x'/></CovariateList><PPMatrix>"
           "<PPCell value='1' predictorName='x' parameterName='p1'/></PPMatrix>" +
           covariances +
           "<ParamMatrix><PCell parameterName='p0' df='1' beta='0.25' targetCategory='yes'/>"
           "<PCell parameterName='p1' df='1' beta='1' targetCategory='yes'/></ParamMatrix>"
           "</GeneralRegressionModel></PMML>";
}
const std::string kVariance =
    "<PCovMatrix><PCovCell pRow='p0' pCol='p0' value='4'/><PCovCell pRow='p0' pCol='p1' value='0'/>"
    "<PCovCell pRow='p1' pCol='p1' value='0'/></PCovMatrix>";

TEST(ProbabilityErrorsOfLinks, AreTheLinksDerivative)
{
    const ScratchFolder folder;
    const std::string cases = folder.Write("cases.csv", "x\n0.05\n-1.5\n");
    const struct {
        const char* link;
        double (*derivative)(double x);
    } kLinks[] = {
        {"logit", [](double x) { return 1.0 / (2.0 + std::exp(x) + std::exp(-x)); }},
        {"probit", [](double x) { return std::exp(-x * x / 2) / std::sqrt(2 * M_PI); }},
        {"cloglog", [](double x) { return std::exp(x) * std::exp(-std::exp(x)); }},
        {"loglog", [](double x) { return std::exp(-x) * std::exp(-std::exp(-x)); }},
    };
    for (const auto& [link, derivative] : kLinks) {
        SCOPED_TRACE(link);
        const std::string model = folder.Write("model.pmml", BinaryModel(link, kVariance));
        const CsvText found =
            ParseCsv(RunVelscore({"score", model, cases, "--columns",
                                  "std_err(probability(no)),std_err(probability(yes)),status"})
                         .out);
        ASSERT_EQ(found.rows.size(), 2U);
        const double xs[] = {0.3, -1.25};
        for (size_t row = 0; row < 2; ++row) {
            for (size_t column : {0U, 1U}) {
                const double wanted = 2.0 * derivative(xs[row]);
                EXPECT_NEAR(std::strtod(found.rows[row][column].c_str(), nullptr), wanted,
                            1e-13 * wanted);
            }
        }
    }
}

// Three categories with the thresholds -1 and 0.5, a slope of 0.8 and variances of 0.04, 0.09 and
// 0.25: by the derivatives of F(threshold + 0.8 x).
TEST(ProbabilityErrorsOfLinks, OfAnOrdinalScale)
{
    const ScratchFolder folder;
    const std::string model = folder.Write(
        "ordinal.pmml",
        "<PMML xmlns='http://www.dmg.org/PMML-4_4' version='4.4'><Header/><DataDictionary>"
        "<DataField name='y' optype='ordinal' dataType='string'><Value value='a'/><Value "
        "value='b'/>"
        "<Value value='c'/></DataField>"
        "<DataField name='x' optype='continuous' dataType='double'/></DataDictionary>"
        "<GeneralRegressionModel modelType='ordinalMultinomial' functionName='classification' "
        "cumulativeLink='logit'><MiningSchema><MiningField name='y' usageType='target'/>"
        "<MiningField name='x'/></MiningSchema><ParameterList><Parameter name='p0'/>"
        "<Parameter name='p1'/></ParameterList><CovariateList><Predictor name='x'/></CovariateList>"
        "<PPMatrix><PPCell value='1' predictorName='x' parameterName='p1'/></PPMatrix><PCovMatrix>"
        "<PCovCell pRow='p0' pCol='p0' tRow='a' tCol='a' value='0.04'/>"
        "<PCovCell pRow='p0' pCol='p0' tRow='b' tCol='b' value='0.09'/>"
        "<PCovCell pRow='p1' pCol='p1' value='0.25'/></PCovMatrix><ParamMatrix>"
        "<PCell parameterName='p0' df='1' beta='-1' targetCategory='a'/>"
        "<PCell parameterName='p0' df='1' beta='0.5' targetCategory='b'/>"
        "<PCell parameterName='p1' df='1' beta='0.8'/></ParamMatrix>"
        "</GeneralRegressionModel></PMML>");
    const Finished run =
        RunVelscore({"score", model, "--columns",
                     "std_err(probability(a)),std_err(probability(b)),std_err(probability(c))"},
                    "x\n1.5\n");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const CsvText found = ParseCsv(run.out);
    const auto slope = [](double x) { return 1.0 / (2.0 + std::exp(x) + std::exp(-x)); };
    const double x = 1.5;
    const double f0 = slope(-1 + 0.8 * x);
    const double f1 = slope(0.5 + 0.8 * x);
    const double wanted[] = {
        std::sqrt(f0 * f0 * 0.04 + x * x * f0 * f0 * 0.25),
        std::sqrt(f0 * f0 * 0.04 + f1 * f1 * 0.09 + x * x * (f1 - f0) * (f1 - f0) * 0.25),
        std::sqrt(f1 * f1 * 0.09 + x * x * f1 * f1 * 0.25)};
    for (size_t c = 0; c < 3; ++c) {
        EXPECT_NEAR(std::strtod(found.rows[0][c].c_str(), nullptr), wanted[c], 1e-13) << c;
    }
}

TEST(ProbabilityErrorsOfLinks, NeedCovariancesAndAScore)
{
    const ScratchFolder folder;
    const std::string column = "std_err(probability(yes))";
    const std::string with = folder.Write("with.pmml", BinaryModel("logit", kVariance));
    const Finished empty =
        RunVelscore({"score", with, "--columns", column + ",status"}, "x\nNA\n-0.25\n");
    EXPECT_EQ(empty.out, column + ",status\n,90029\n0.5,0\n");
    EXPECT_NE(RunVelscore({"inspect", with}).out.find(column), std::string::npos);

    const std::string without = folder.Write("without.pmml", BinaryModel("logit", ""));
    const Finished refused = RunVelscore({"score", without, "--columns", column}, "x\n0\n");
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.err.find(column), std::string::npos) << refused.err;
    EXPECT_EQ(RunVelscore({"inspect", without}).out.find(column), std::string::npos);
}

}  // namespace
}  // namespace MCVelscore_850
