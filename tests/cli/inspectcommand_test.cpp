// inspect, for people and for programs.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/cli/inprocess.h"
#include "tests/scratchfolder.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;

class Inspect : public testing::Test {
protected:
    const ScratchFolder folder_;
    const std::string model_ = folder_.Write("model.pmml", TestModel().Text());
};

TEST_F(Inspect, ShowsAModelWhole)
{
    const Answered run = RunInProcess({"inspect", model_});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out, "document      " + model_ +
                           ", version 4.4\n"
                           "family        general linear model (GLRModel)\n"
                           "target        y\n"
                           "factors       sex\n"
                           "covariates    x\n"
                           "reads         sex, x\n"
                           "df            8\n"
                           "covariances   yes\n"
                           "equation\n"
                           "  linear predictor =\n"
                           "    + 1\n"
                           "    + 2 * x\n"
                           "    + 10 * [sex = m]\n"
                           "columns of the output\n"
                           "  prediction  mean of the target\n"
                           "  std_dev     standard error of the mean\n"
                           "  ci_lower    lower 95% confidence limit of the mean (Student's t)\n"
                           "  ci_upper    upper 95% confidence limit of the mean (Student's t)\n"
                           "columns on request (--columns)\n"
                           "  linear_predictor           linear predictor\n"
                           "  std_err(linear_predictor)  standard error of the linear predictor\n");
}

struct Shown {
    const char* document;
    Texts lines;
};

// The documents' own numbers and names.
TEST_F(Inspect, ShowsWhatEachFamilyHas)
{
    const Shown kShown[] = {
        {"examples/birth-weight/model.pmml",
         {"categories    normal, low\n", "reference     normal\n", "link          logit\n",
          "equation for low\n  linear predictor =\n    - 0.11599493193416886\n",
          "    + 1.187601245795875 * contrast[race = black] * contrast[ht = no]\n",
          "contrasts of race\n  white        0 0\n  black        1 0\n  other        0 1\n"}},
        {"examples/housing-satisfaction/model.pmml",
         {"equation for Low and below\n", "equation for Medium and below\n",
          "  std_err(probability(Medium))  standard error of the probability\n"}},
        {"examples/veteran-lung-cancer/model.pmml",
         {"end time      time\n", "strata        celltype\n",
          "baseline      squamous: 30 cells, times 1 to 999\n",
          "    - 9.568041576149935e-06 * karno^2\n",
          "base point, taken off before each beta multiplies\n  trt2        "
          "0.49635036496350365\n"}},
        {"tests/data/published/gamma-power.pmml",
         {"distribution  Gamma\n", "link          Power with parameter -1\n",
          "mean          eta^(1/k), eta = linear predictor, k = -1\n",
          "adapted       line 15, column 3: "}},
        {"tests/data/published/binomial-trials.pmml",
         {"offset        0.5\n", "trials        seeds\n",
          "covariances   none: no standard errors, no confidence limits\n",
          "  ci_lower    empty: the document has no covariances\n"}},
        {"tests/data/published/cox-strata.pmml",
         {"notice        line 19, column 3: startTimeVariable \"start\" isn't read"}},
        {"tests/data/cases/blr-birthwt-cutoff/model.pmml", {"cut-off       "}},
    };
    for (const Shown& shown : kShown) {
        const Answered run = RunInProcess({"inspect", shown.document});
        EXPECT_EQ(run.exitCode, 0) << run.err;
        for (const std::string& line : shown.lines) {
            EXPECT_NE(run.out.find(line), std::string::npos) << line << "in\n" << run.out;
        }
    }
}

TEST_F(Inspect, ShowsNoCharacterThatATerminalObeys)
{
    std::string text = TestModel().Text();
    for (const char* before : {" name=", " predictorName="}) {
        const std::string written = std::string(before) + "\"x\"";
        for (size_t at = 0; (at = text.find(written, at)) != std::string::npos;) {
            text.replace(at, written.size(), std::string(before) + "\"x&#10;family none\"");
        }
    }
    const std::string model = folder_.Write("hidden.pmml", text);
    EXPECT_NE(RunInProcess({"inspect", model}).out.find("covariates    x\\u000Afamily none\n"),
              std::string::npos);
    EXPECT_EQ(Json::parse(RunInProcess({"inspect", model, "--json"}).out).at("covariates").at(0),
              "x\nfamily none");
}

TEST_F(Inspect, TellsProgramsTheSame)
{
    const Json about = Json::parse(RunInProcess({"inspect", model_, "--json"}).out);
    EXPECT_EQ(about.at("target"), "y");
    EXPECT_EQ(about.at("df"), 8);
    EXPECT_EQ(about.at("equations").at(0).at("terms").at(2).at("beta"), 10);
    const Answered dump = RunInProcess({"inspect", model_, "--dump"});
    EXPECT_EQ(dump.exitCode, 0);
    EXPECT_NE(dump.out.find("Begin display of"), std::string::npos) << dump.out;
}

// y = 1 + 2 x + 10 [sex = m], 8 degrees of freedom; the intercept has the variance 4, and the 97.5%
// point of t is 2.306004135.
TEST_F(Inspect, ShowsCoefficientsAsATable)
{
    EXPECT_EQ(RunInProcess({"inspect", model_, "--coefficients"}).out,
              "t with 8 degrees of freedom\n"
              "  term       estimate  std. error  t value   p value  lower 95%  upper 95%\n"
              "  Intercept         1           2      0.5  0.630536   -3.61201    5.61201\n"
              "  x                 2           0                             2          2\n"
              "  [sex=m]          10           0                            10         10\n");
    const std::string at90 =
        RunInProcess({"inspect", model_, "--coefficients", "--level", "0.9"}).out;
    EXPECT_NE(at90.find("lower 90%"), std::string::npos) << at90;
    EXPECT_TRUE(RunInProcess({"inspect", model_, "--coefficients", "--csv"})
                    .out.starts_with("equation,parameter,label,estimate,std_err,t_value,p_value,"));
    EXPECT_EQ(
        Json::parse(RunInProcess({"inspect", model_, "--coefficients", "--json"}).out).at("level"),
        0.95);
}

TEST_F(Inspect, ShowsCoefficientsOfOtherFamilies)
{
    // A logistic model has z values and odds ratios; of several equations each has its category.
    const std::string odds =
        RunInProcess(
            {"inspect", "tests/data/cases/glz-logit-number-birthwt/model.pmml", "--coefficients"})
            .out;
    EXPECT_TRUE(odds.starts_with("z, the normal distribution\n")) << odds;
    EXPECT_NE(odds.find("z value"), std::string::npos) << odds;
    EXPECT_NE(odds.find("odds ratio lower"), std::string::npos) << odds;
    const std::string several =
        RunInProcess({"inspect", "tests/data/cases/mlr-birthwt-race/model.pmml", "--coefficients"})
            .out;
    EXPECT_NE(several.find("\n  black: "), std::string::npos) << several;
    const std::string none =
        RunInProcess({"inspect", "tests/data/published/binomial-trials.pmml", "--coefficients"})
            .out;
    EXPECT_TRUE(
        none.starts_with("the document has no covariances: no standard errors, tests and "
                         "limits\n  term"))
        << none;
    EXPECT_EQ(none.find("std. error"), std::string::npos) << none;
}

struct Refused {
    Texts options;
    const char* told;
};

TEST_F(Inspect, RefusesWhatDoesNotGoTogether)
{
    const Refused kRefused[] = {
        {{"--dump", "--json"}, "--dump and --json don't go together"},
        {{"--coefficients", "--csv", "--json"}, "--csv and --json don't go together"},
        {{"--coefficients", "--dump"}, "--coefficients and --dump don't go together"},
        {{"--csv"}, "--csv has a meaning with --coefficients alone"},
        {{"--level", "0.9"}, "--level has a meaning with --coefficients alone"},
        {{"--coefficients", "--level", "95"}, "Did you mean 0.95?"},
        {{"--as-is", "--allow", "misspelt-attribute"}, "--allow has no meaning with --as-is"},
    };
    for (const Refused& refused : kRefused) {
        Texts arguments{"inspect", model_};
        arguments.insert(arguments.end(), refused.options.begin(), refused.options.end());
        const Answered run = RunInProcess(arguments);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find(refused.told), std::string::npos) << run.err;
    }
}

}  // namespace
}  // namespace MCVelscore_850
