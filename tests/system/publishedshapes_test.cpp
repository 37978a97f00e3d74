// Documents in the shapes in which the standard publishes its examples and exporters write theirs:
// accepted by the command, and scored by the standard's formulas, which stand here as arithmetic.

#include <cmath>
#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;
using Numbers = std::vector<double>;

CsvText Scores(const std::string& document, const std::string& cases, const Texts& options = {})
{
    const ScratchFolder folder;
    Texts arguments = {"score", "--quiet", DataFile("published/" + document),
                       folder.Write("cases.csv", cases)};
    arguments.insert(arguments.end(), options.begin(), options.end());
    const Finished run = RunVelscore(arguments);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    return ParseCsv(run.out);
}

void ExpectNumbers(const CsvText& scores, const std::string& column, const Numbers& expected)
{
    const Texts found = scores.Texts(column);
    ASSERT_EQ(found.size(), expected.size()) << column;
    for (size_t row = 0; row < expected.size(); ++row) {
        char* end = nullptr;
        const double number = std::strtod(found[row].c_str(), &end);
        EXPECT_TRUE(!found[row].empty() && *end == '\0') << column << ": " << found[row];
        EXPECT_NEAR(number, expected[row], 1e-14 * std::max(1.0, std::fabs(expected[row])))
            << column << ", row " << row + 1;
    }
}

double Logistic(double eta) { return 1.0 / (1.0 + std::exp(-eta)); }
double Cauchy(double eta) { return 0.5 + std::atan(eta) / std::acos(-1.0); }
double Normal(double eta) { return 0.5 * std::erfc(-eta / std::sqrt(2.0)); }

TEST(PublishedShapes, GeneralLinear)
{
    const CsvText scores =
        Scores("general-linear.pmml", "carrier,night,depot,load\nRail,0,1,4\nRoad,1,3,8\n");
    // Intercept, carrier, night within carrier, depot by load, load squared.
    ExpectNumbers(scores, "prediction",
                  {12.5 - 2.25 + 1.5 + 0.5 * 4 + 0.03125 * 16, 12.5 - 0.125 * 8 + 0.03125 * 64});
    // x' C x: the intercept, twice its covariance with p1, p1; then 4 squared times that of p5.
    ExpectNumbers(scores, "std_dev",
                  {std::sqrt(0.5 - 2 * 0.25 + 0.75 + 16 * 0.0625), std::sqrt(0.5)});
}

TEST(PublishedShapes, DesignsOfSingleCategories)
{
    const CsvText scores =
        Scores("category-designs.pmml", "hours,season\n1.5,winter\n1.5,summer\n-2,winter\n");
    // In the equation of "car" p1 is the hours, in that of "train" their square; p2 is the hours,
    // and in that of "train" in winter alone.
    Numbers bus, car, train;
    for (const auto& [hours, winter] :
         std::vector<std::pair<double, double>>{{1.5, 1.0}, {1.5, 0.0}, {-2.0, 1.0}}) {
        const double byCar = std::exp(0.5 + 0.25 * hours - hours);
        const double byTrain = std::exp(-0.5 + 0.125 * hours * hours + 2 * hours * winter);
        const double sum = 1.0 + byCar + byTrain;
        bus.push_back(1.0 / sum);
        car.push_back(byCar / sum);
        train.push_back(byTrain / sum);
    }
    ExpectNumbers(scores, "probability(bus)", bus);
    ExpectNumbers(scores, "probability(car)", car);
    ExpectNumbers(scores, "probability(train)", train);
    EXPECT_EQ(scores.Texts("prediction"), (Texts{"train", "bus", "car"}));
}

TEST(PublishedShapes, GammaWithPowerLink)
{
    // The link is eta = mu^-1.
    ExpectNumbers(Scores("gamma-power.pmml", "model,age,engine\nA,1,4\nB,2,2\n"), "prediction",
                  {1 / (0.125 - 0.0625 + 0.25 + 0.03125 * 4), 1 / (0.125 + 0.03125 * 2)});
}

TEST(PublishedShapes, BinomialWithLogitLink)
{
    const CsvText scores = Scores("binomial-logit.pmml", "owner,income\nflat,4\nnone,1\nhouse,2\n");
    const double p[] = {Logistic(-1.25 + 0.5 + 1), Logistic(-1.25 + 0.25),
                        Logistic(-1.25 + 1.5 + 0.5)};
    ExpectNumbers(scores, "probability(Yes)", {p[0], p[1], p[2]});
    ExpectNumbers(scores, "probability(No)", {1 - p[0], 1 - p[1], 1 - p[2]});
    EXPECT_EQ(scores.Texts("prediction"), (Texts{"Yes", "No", "Yes"}));
}

TEST(PublishedShapes, PoissonWithOffsetVariable)
{
    ExpectNumbers(
        Scores("poisson-offset.pmml", "type,built,log_months\ntanker,65,4\nferry,60,6.5\n"),
        "prediction", {std::exp(-6.5 + 0.5 + 4), std::exp(-6.5 - 0.75 + 6.5)});
}

TEST(PublishedShapes, BinomialWithTrialsVariable)
{
    // The expected number of events: the trials times the inverse probit, offsetValue included.
    ExpectNumbers(
        Scores("binomial-trials.pmml", "dose,seeds\n2,10\n4,1\n1,200\n"), "prediction",
        {10 * Normal(-1.5 + 1 + 0.5), Normal(-1.5 + 2 + 0.5), 200 * Normal(-1.5 + 0.5 + 0.5)});
}

TEST(PublishedShapes, MultinomialLogistic)
{
    const CsvText scores =
        Scores("multinomial.pmml", "abroad,sex,age,work\n0,Female,24,6\n1,Male,40,12\n");
    // Each category's exponential over their sum; the reference has the linear predictor 0. The
    // parameters without a cell have the beta 0.
    const double one[] = {std::exp(2.5 - 0.75 + 0.5 - 0.0625 * 24 + 0.125 * 6),
                          std::exp(2.5 - 0.0625 * 40 + 0.125 * 12)};
    const double two[] = {std::exp(1.25 + 0.375 - 1 + 0.03125 * 24 - 0.25 * 6),
                          std::exp(1.25 + 0.03125 * 40 - 0.25 * 12)};
    const double sum[] = {one[0] + two[0] + 1, one[1] + two[1] + 1};
    ExpectNumbers(scores, "probability(1)", {one[0] / sum[0], one[1] / sum[1]});
    ExpectNumbers(scores, "probability(2)", {two[0] / sum[0], two[1] / sum[1]});
    ExpectNumbers(scores, "probability(3)", {1 / sum[0], 1 / sum[1]});
    EXPECT_EQ(scores.Texts("prediction"), (Texts{"1", "1"}));
}

// The cumulative probabilities are F(threshold + linear predictor); in the second document every
// category's cells repeat the betas, and the thresholds stand among them.
TEST(PublishedShapes, OrdinalMultinomial)
{
    struct Row {
        const char* document;
        double (*inverseLink)(double);
    };
    for (const Row& row :
         {Row{"ordinal.pmml", Cauchy}, Row{"ordinal-by-category.pmml", Logistic}}) {
        SCOPED_TRACE(row.document);
        const CsvText scores = Scores(row.document, "sex,age,work\nFemale,24,6\nMale,40,2\n");
        const double eta[] = {0.75 - 0.0625 * 24 + 0.25 * 6, -0.0625 * 40 + 0.25 * 2};
        Numbers first, second, third;
        for (const double each : eta) {
            const double low = row.inverseLink(-0.5 + each);
            const double high = row.inverseLink(1.25 + each);
            first.push_back(low);
            second.push_back(high - low);
            third.push_back(1 - high);
        }
        ExpectNumbers(scores, "probability(1)", first);
        ExpectNumbers(scores, "probability(2)", second);
        ExpectNumbers(scores, "probability(3)", third);
        EXPECT_EQ(scores.Texts("prediction"), (Texts{"1", "3"}));
    }
}

TEST(PublishedShapes, ContrastsInALogisticModel)
{
    const CsvText scores =
        Scores("contrasts.pmml", "sex,class,age\nfemale,1,32\nmale,3,16\nfemale,2,0\n");
    // Constant, sex, the two Helmert columns of class, and each of them by age.
    const double p[] = {
        Logistic(-1.25 + 2.5 + 1.5 * 0.75 - 0.03125 * 0.75 * 32),
        Logistic(-1.25 + 1.5 * -0.25 + 0.5 * -0.5 - 0.03125 * -0.25 * 16 - 0.0625 * -0.5 * 16),
        Logistic(-1.25 + 2.5 + 1.5 * -0.25 + 0.5 * 0.5)};
    ExpectNumbers(scores, "probability(1)", {p[0], p[1], p[2]});
    ExpectNumbers(scores, "probability(0)", {1 - p[0], 1 - p[1], 1 - p[2]});
}

TEST(PublishedShapes, ContrastsInAGeneralLinearModel)
{
    const CsvText scores =
        Scores("contrasts-general-linear.pmml", "soil,rain\nclay,4\nloam,4\nsand,4\npeat,4\n,4\n");
    EXPECT_EQ(scores.Texts("status"), (Texts{"0", "0", "0", "90029", "90029"}));
    CsvText scored = scores;
    scored.rows.resize(3);
    ExpectNumbers(scored, "prediction",
                  {10 + 2 + 0.5 * 4, 10 + 2 * -0.5 - 1 + 0.5 * 4 + 0.25 * 4,
                   10 + 2 * -0.5 + 1 + 0.5 * 4 - 0.25 * 4});
    ExpectNumbers(scored, "std_dev",
                  {0.5, std::sqrt(0.25 + 2 * 0.125 + 1), std::sqrt(0.25 - 2 * 0.125 + 1)});
}

// The derived covariates are none of the table's columns.
TEST(PublishedShapes, InspectTellsTheColumnsOfTheTable)
{
    const Finished run =
        RunVelscore({"inspect", DataFile("published/contrasts-general-linear.pmml")});
    EXPECT_NE(run.out.find("reads         rain, soil\n"), std::string::npos) << run.out;
}

TEST(PublishedShapes, CoxRegression)
{
    const CsvText scores = Scores(
        "cox.pmml", "weeks,aid,age,prior\n20,0,32.5,5\n0.5,1,24.5,3\n51,1,24.5,3\n53,1,20,3\n");
    // The baseline up to the time, times exp of the linear predictor less that of the reference
    // points; nothing beyond maxTime.
    const double hazard = 0.125 * std::exp(0.375 - 0.0625 * (32.5 - 24.5) + 0.125 * (5 - 3));
    CsvText scored = scores;
    scored.rows.resize(3);
    ExpectNumbers(scored, "cum_hazard", {hazard, 0, 0.375});
    ExpectNumbers(scored, "prediction", {std::exp(-hazard), 1, std::exp(-0.375)});
    EXPECT_EQ(scores.Texts("prediction")[3], "");
}

TEST(PublishedShapes, CoxRegressionWithStrata)
{
    const CsvText scores = Scores("cox-strata.pmml", "stop,ward,dose\n12,1,8\n60,2,4\n12,3,8\n");
    const double hazards[] = {0.0625 * std::exp(-0.25 * (8 - 4) + 0.03125 * (64 - 20)),
                              1.5 * std::exp(0.03125 * (16 - 20))};
    CsvText scored = scores;
    scored.rows.resize(2);
    ExpectNumbers(scored, "cum_hazard", {hazards[0], hazards[1]});
    ExpectNumbers(scored, "prediction", {std::exp(-hazards[0]), std::exp(-hazards[1])});
    EXPECT_EQ(scores.Texts("status")[2], "90029");  // a stratum without a baseline
}

// sqrt(x' C x), x being what the betas multiply; in a Cox model less its reference point.
TEST(PublishedShapes, TheErrorOfTheLinearPredictorComesFromTheCovariances)
{
    const Texts asked = {"--columns", "std_err(linear_predictor)"};
    const char* const column = "std_err(linear_predictor)";
    // P0000001, age less 24.5, and twice their covariance; the category 1 has no beta.
    ExpectNumbers(Scores("cox.pmml", "weeks,aid,age,prior\n9,0,30.5,3\n9,1,30.5,1\n", asked),
                  column, {std::sqrt(0.03 + 2 * 6 * 0.001 + 36 * 0.0004), 6 * 0.02});
    // Of the constant alone.
    ExpectNumbers(Scores("contrasts.pmml", "sex,class,age\nfemale,1,32\nmale,3,16\n", asked),
                  column, {0.5, 0.5});
    // As the error of the mean, in GeneralLinear.
    ExpectNumbers(Scores("general-linear.pmml", "carrier,night,depot,load\nRail,0,1,4\n", asked),
                  column, {std::sqrt(0.5 - 2 * 0.25 + 0.75 + 16 * 0.0625)});
}

// The fields' intervals are the ranges of the training data; values beyond them are to be taken as
// they are, and an unknown category has no parameter.
TEST(PublishedShapes, RangesOfTheTrainingDataRefuseNothingTakenAsIs)
{
    const CsvText scores =
        Scores("training-ranges.pmml", "age,sex,income\n96,Female,12\n16,Other,2\n32.5,Male,4\n");
    EXPECT_EQ(scores.Texts("status"), (Texts{"0", "0", "0"}));
    Numbers a, b, c;
    const double cases[3][3] = {{96, 0, 12}, {16, 0, 2}, {32.5, 1, 4}};
    for (const auto& [age, male, income] : cases) {
        const double ea = std::exp(-1 + 0.0625 * age + 0.5 * male - 0.25 * income);
        const double eb = std::exp(0.5 - 0.03125 * age + 0.25 * male + 0.125 * income);
        a.push_back(ea / (ea + eb + 1));
        b.push_back(eb / (ea + eb + 1));
        c.push_back(1 / (ea + eb + 1));
    }
    ExpectNumbers(scores, "probability(a)", a);
    ExpectNumbers(scores, "probability(b)", b);
    ExpectNumbers(scores, "probability(c)", c);
}

// What no rule can put right is a refusal of the document, with its place.
TEST(PublishedShapes, OrdinalModelWithBetasByCategoryIsRefused)
{
    std::string text = ReadFile(DataFile("published/ordinal-by-category.pmml"));
    const std::string slope = "targetCategory=\"2\" parameterName=\"p3\" beta=\"0.25\"";
    ASSERT_NE(text.find(slope), std::string::npos);
    text.replace(text.find(slope) + slope.size() - 5, 4, "0.75");
    const ScratchFolder folder;
    const Finished run = RunVelscore({"check", folder.Write("model.pmml", text)});
    EXPECT_EQ(run.exitCode, 2) << run.err;
    EXPECT_NE(run.out.find("[269196]"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("PCell[8]"), std::string::npos) << run.out;
}

}  // namespace
}  // namespace MCVelscore_850
