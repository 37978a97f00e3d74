// diff: what two models, and their scores, differ in, as text and as JSON.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/cli/inprocess.h"
#include "tests/scratchfolder.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;

// y = 1 + 2 x + 10 [sex = m], and with 2.5 for 2.
class Diff : public testing::Test {
protected:
    const ScratchFolder folder_;
    const std::string text_ = TestModel().Text();
    const std::string first_ = folder_.Write("a.pmml", text_);
    const std::string second_ =
        folder_.Write("b.pmml", Replaced(text_, "beta=\"2\"", "beta=\"2.5\""));
};

TEST_F(Diff, EndsWithZeroForTheSameModel)
{
    const Answered run = RunInProcess({"diff", first_, first_});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "velscore: the models are the same\n");
    const Answered scores = RunInProcess({"diff", first_, first_, "-"}, "x,sex\n1,f\n,m\n");
    EXPECT_EQ(scores.exitCode, 0);
    EXPECT_EQ(scores.err,
              "velscore: the models are the same; 1 of 2 cases scored by both, all alike\n");
}

TEST_F(Diff, TellsDifferencesAndEndsWithSix)
{
    const Answered run = RunInProcess({"diff", first_, second_});
    EXPECT_EQ(run.exitCode, 6);
    EXPECT_EQ(run.out, "beta x: 2 -> 2.5 (by 0.5)\n");
    EXPECT_EQ(run.err, "velscore: 1 differences\n");
    const std::string replacing = folder_.Write(
        "c.pmml", Replaced(text_, "name=\"x\" usageType=\"active\"",
                           "name=\"x\" usageType=\"active\" missingValueReplacement=\"3\""));
    EXPECT_EQ(RunInProcess({"diff", first_, replacing}).out, "missing value of x: none -> 3\n");
    EXPECT_EQ(Json::parse(RunInProcess({"diff", first_, second_, "--json"}).out).at("same"), false);
}

TEST_F(Diff, ComparesScoresRowByRow)
{
    const std::string replacing = folder_.Write(
        "c.pmml", Replaced(ReadFile(second_), "name=\"x\" usageType=\"active\"",
                           "name=\"x\" usageType=\"active\" missingValueReplacement=\"3\""));
    const std::string cases = "x,sex\n0,f\n2,m\n-6,f\n,m\ny,f\n";
    const Answered run = RunInProcess({"diff", first_, replacing, "-"}, cases);
    EXPECT_EQ(run.exitCode, 6);
    EXPECT_NE(run.out.find("rows scored by the second alone: 1\n"), std::string::npos) << run.out;
    // 0, 1 and 3 apart over three rows
    EXPECT_NE(run.out.find("prediction: 2 of 3 rows differ, by 3 at most (row 3: -11 -> -14), by "
                           "1.3333333333333333 in the mean\n"),
              std::string::npos)
        << run.out;
    EXPECT_EQ(run.err, "velscore: 2 differences; 3 of 5 cases scored by both, with differences\n");
    EXPECT_NE(RunInProcess({"diff", replacing, first_, "-"}, cases)
                  .out.find("rows scored by the first alone: 1\n"),
              std::string::npos);
}

TEST_F(Diff, TellsColumnsAndValuesThatOneAloneHas)
{
    // Without covariances there are no errors and limits.
    std::string text = text_;
    const size_t begin = text.find("<PCovMatrix");
    const size_t end = text.find("</PCovMatrix>") + 13;
    text.erase(begin, end - begin);
    const std::string without = folder_.Write("d.pmml", text);
    const Answered run = RunInProcess({"diff", first_, without, "-"}, "x,sex\n1,f\n");
    EXPECT_EQ(run.exitCode, 6);
    EXPECT_NE(run.out.find("std_dev: 1 rows in which one alone has a value\n"), std::string::npos)
        << run.out;
    const Answered families =
        RunInProcess({"diff", first_, "examples/veteran-lung-cancer/model.pmml", "-"},
                     "x,sex,time,trt,karno,celltype\n1,f,72,1,60,squamous\n");
    EXPECT_NE(families.out.find("columns of the first alone: std_dev, ci_lower, ci_upper\n"),
              std::string::npos)
        << families.out;
    EXPECT_NE(families.out.find("columns of the second alone: cum_hazard\n"), std::string::npos)
        << families.out;
}

TEST_F(Diff, TellsCategoriesThatChanged)
{
    const std::string model = "tests/data/cases/mlr-birthwt-race/model.pmml";
    const std::string text = ReadFile(model);
    const size_t begin = text.find("beta=\"") + 6;
    std::string changed = text;
    changed.replace(begin, text.find('"', begin) - begin, "40");
    const Answered run = RunInProcess({"diff", model, folder_.Write("e.pmml", changed),
                                       "tests/data/cases/mlr-birthwt-race/input.csv"});
    EXPECT_EQ(run.exitCode, 6);
    EXPECT_NE(run.out.find(" rows differ, first row "), std::string::npos) << run.out;
}

struct Refused {
    Texts arguments;
    int exitCode;
    const char* told;
};

TEST_F(Diff, RefusesWhatHasNoMeaning)
{
    const Refused kRefused[] = {
        {{"-", "-"}, 1, "only one input can come from standard input; name the others"},
        {{first_, "-", "-"}, 1, "only one input can come from standard input; name the others"},
        {{first_, second_, "--delimiter", ";"},
         1,
         "--delimiter has a meaning with a table of cases alone"},
        {{first_, second_, "--decimal", ","},
         1,
         "--decimal has a meaning with a table of cases alone"},
        {{first_, second_, "--na", "-9"}, 1, "--na has a meaning with a table of cases alone"},
        {{first_, second_, "--map", "x=X"}, 1, "--map has a meaning with a table of cases alone"},
        {{first_, second_, "--no-header"},
         1,
         "--no-header has a meaning with a table of cases alone"},
        {{first_, second_, "c.csv", "--delimiter", ";;"}, 1, "--delimiter is ';;'"},
        {{first_, "/nowhere/b.pmml"}, 2, "/nowhere/b.pmml can't be read"},
        {{first_, second_, "/nowhere/c.csv"}, 3, "/nowhere/c.csv can't be read"},
    };
    for (const Refused& refused : kRefused) {
        Texts arguments{"diff"};
        arguments.insert(arguments.end(), refused.arguments.begin(), refused.arguments.end());
        const Answered run = RunInProcess(arguments);
        EXPECT_EQ(run.exitCode, refused.exitCode);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find(refused.told), std::string::npos) << run.err;
    }
}

}  // namespace
}  // namespace MCVelscore_850
