// explain: for people, as a table of terms, and as JSON.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/cli/inprocess.h"
#include "tests/scratchfolder.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;

// y = 1 + 2 x + 10 [sex = m]
class Explain : public testing::Test {
protected:
    Answered Explained(Texts options, const std::string& cases = "x,sex\n3,m\n-1,f\n,f\n5,z\n")
    {
        options.insert(options.begin(), {"explain", model_, folder_.Write("cases.csv", cases)});
        return RunInProcess(options);
    }

    const ScratchFolder folder_;
    const std::string model_ = folder_.Write("model.pmml", TestModel().Text());
};

// The limits are 2.306004 times 2, the quantile of t with 8 degrees of freedom, about the
// prediction.
TEST_F(Explain, ShowsTheTermsOfEachCase)
{
    const Answered run = Explained({});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "document      " + model_ +
                           "\n"
                           "family        general linear model (GLRModel)\n"
                           "target        y\n"
                           "\nrow 1\n"
                           "  term              value  beta  contribution\n"
                           "  Intercept             1     1             1\n"
                           "  x                     3     2             6\n"
                           "  [sex=m]               1    10            10\n"
                           "  linear predictor                         17\n"
                           "  prediction      17\n"
                           "  std_dev          2\n"
                           "  ci_lower    12.388\n"
                           "  ci_upper    21.612\n"
                           "\nrow 2\n"
                           "  term              value  beta  contribution\n"
                           "  Intercept             1     1             1\n"
                           "  x                    -1     2            -2\n"
                           "  [sex=m]               0    10             0\n"
                           "  linear predictor                         -1\n"
                           "  prediction        -1\n"
                           "  std_dev            2\n"
                           "  ci_lower    -5.61201\n"
                           "  ci_upper     3.61201\n"
                           "\nrow 3\n"
                           "  no score, and so no explanation: status 90029, field x: empty\n"
                           "  the case can't be scored: a value is missing or not valid\n"
                           "\nrow 4\n"
                           "  no score, and so no explanation: status 90029, field sex: 'z'\n"
                           "  the case can't be scored: a value is missing or not valid\n");
    EXPECT_EQ(run.err, "velscore: 2 of 4 cases explained\n");
    EXPECT_EQ(Explained({"--strict"}).exitCode, 5);
    EXPECT_EQ(Explained({"--quiet"}).err, "");
    const std::string three = Explained({"--digits", "3"}).out;
    EXPECT_NE(three.find("  ci_upper    21.6\n"), std::string::npos) << three;
}

TEST_F(Explain, ShowsEquationsAndBasePoints)
{
    const std::string several =
        RunInProcess({"explain", "examples/housing-satisfaction/model.pmml", "-", "--limit", "1"},
                     ReadFile("examples/housing-satisfaction/cases.csv"))
            .out;
    EXPECT_NE(several.find("  equation for Low and below\n  term "), std::string::npos) << several;
    EXPECT_NE(several.find("\nlink          cumulative logit\n"), std::string::npos) << several;
    const Answered cox = RunInProcess({"explain", "examples/veteran-lung-cancer/model.pmml",
                                       "examples/veteran-lung-cancer/cases.csv", "--limit", "1"});
    EXPECT_NE(cox.out.find("base point"), std::string::npos) << cox.out;
    EXPECT_NE(cox.out.find("0.49635 "), std::string::npos) << cox.out;
}

TEST_F(Explain, ShowsTenCasesUnlessMoreAreAskedFor)
{
    std::string cases = "x,sex\n";
    for (int i = 0; i < 12; ++i) cases += std::to_string(i) + ",m\n";
    const Answered ten = Explained({}, cases);
    EXPECT_NE(ten.out.find("\nrow 10\n"), std::string::npos);
    EXPECT_EQ(ten.out.find("\nrow 11\n"), std::string::npos);
    EXPECT_EQ(ten.err,
              "velscore: 10 of 10 cases explained; more follow: --limit N shows more, --long and "
              "--json write all\n");
    EXPECT_EQ(Explained({"--limit", "12"}, cases).err, "velscore: 12 of 12 cases explained\n");
    EXPECT_EQ(Json::parse(Explained({"--json"}, cases).out).at("cases").size(), 12u);
}

TEST_F(Explain, WritesAllCasesAsRowsOfTerms)
{
    EXPECT_EQ(Explained({"--long"}).out,
              "row,equation,term,value,contribution\n"
              "1,,Intercept,1,1\n1,,x,3,6\n1,,[sex=m],1,10\n"
              "2,,Intercept,1,1\n2,,x,-1,-2\n2,,[sex=m],0,0\n"
              "3,,,,\n4,,,,\n");
    EXPECT_EQ(Explained({"--long", "--top", "1"}, "x,sex\n3,m\n-30,m\n").out,
              "row,equation,term,value,contribution\n"
              "1,,[sex=m],1,10\n1,,other terms,,7\n"
              "2,,x,-30,-60\n2,,other terms,,11\n");
    EXPECT_EQ(Json::parse(Explained({"--json"}, "x,sex\n").out).at("cases"), Json::array());
}

TEST_F(Explain, ComparesWithABaseline)
{
    // Means of 3, -1 and 1, 0 alone: the others have no score.
    EXPECT_EQ(Explained({"--long", "--baseline", "mean"}).out,
              "row,equation,term,value,contribution\n"
              "1,,Intercept,1,0\n1,,x,3,4\n1,,[sex=m],1,5\n"
              "2,,Intercept,1,0\n2,,x,-1,-4\n2,,[sex=m],0,-5\n"
              "3,,,,\n4,,,,\n");
    const std::string other = folder_.Write("other.csv", "sex,x\nm,9\nm,9\nf,-1\n");
    EXPECT_EQ(Explained({"--long", "--baseline", "3@" + other}).out,
              Explained({"--long", "--baseline", "2"}).out);
    for (const auto& [asked, told] :
         std::map<std::string, std::string>{{"2", "row 2"},
                                            {"mean", "the mean case"},
                                            {"mean@" + other, "the mean case of " + other},
                                            {"1@" + other, "row 1 of " + other}}) {
        const std::string out = Explained({"--baseline", asked}).out;
        EXPECT_NE(out.find("\nbaseline      " + told + "\n"), std::string::npos) << out;
    }
}

// What a baseline was made of can't be compared where it was a stream.
TEST_F(Explain, WithABaselineFromAStreamCannotBeResumed)
{
    const Answered run =
        RunInProcess({"explain", model_, folder_.Write("cases.csv", "x,sex\n3,m\n"), "--long",
                      "--baseline", "mean@-", "--resume", "-o", folder_.Path("o.csv")},
                     "x,sex\n1,f\n");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("--resume goes on with a file"), std::string::npos) << run.err;
}

struct Refused {
    Texts options;
    const char* told;
};

TEST_F(Explain, RefusesWhatHasNoMeaning)
{
    const auto longAlone = " has a meaning with --long alone";
    const auto noBaseline =
        "; expected is mean or the number of a row, from 1, and behind it @TABLE where it isn't "
        "one of the cases";
    const Refused kRefused[] = {
        {{"--long", "--json"}, "--long and --json don't go together"},
        {{"--json", "--limit", "3"}, "--limit has no meaning with --json, which writes all cases"},
        {{"--long", "--limit", "3"}, "--limit has no meaning with --long, which writes all cases"},
        {{"--json", "--digits", "3"}, "--digits has no meaning with --json"},
        {{"--baseline", "3"}, "--baseline: row 3 has no score (status 90029); name another row"},
        {{"--baseline", "9"}, "--baseline: there is no row 9"},
    };
    for (const Refused& refused : kRefused) {
        const Answered run = Explained(refused.options);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find(refused.told), std::string::npos) << run.err;
    }
    for (const Texts& options :
         {Texts{"--format", "csv"}, Texts{"--compress", "gzip"}, Texts{"--out-delimiter", ";"},
          Texts{"--rejects", "r.csv"}, Texts{"--max-rejects", "1"}, Texts{"--summary", "s.json"},
          Texts{"--threads", "2"}, Texts{"--resume"}, Texts{"--partial"}, Texts{"--progress"}}) {
        const Answered run = Explained(options);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_NE(run.err.find("error: " + options.front() + longAlone), std::string::npos)
            << run.err;
    }
    for (const char* text : {"median", "0", "-1", "1x", "mean@", "1@", "@t.csv", "Mean"}) {
        const Answered run = Explained({"--baseline", text});
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_NE(run.err.find("--baseline is '" + std::string(text) + "'" + noBaseline),
                  std::string::npos)
            << run.err;
    }
    const Answered none = Explained({"--baseline", "mean"}, "x,sex\n,m\n");
    EXPECT_NE(none.err.find("--baseline: there is no case that has a score"), std::string::npos)
        << none.err;
}

TEST_F(Explain, RefusesInputsThatCannotBeRead)
{
    const Answered none = RunInProcess({"explain", model_});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_NE(none.err.find("explain needs cases: a table with the columns sex, x; - is standard "
                            "input"),
              std::string::npos)
        << none.err;
    const Answered twice =
        RunInProcess({"explain", model_, "-", "--baseline", "mean"}, "x,sex\n1,m\n");
    EXPECT_EQ(twice.exitCode, 1);
    EXPECT_NE(twice.err.find("--baseline reads the cases twice, which standard input can't be"),
              std::string::npos)
        << twice.err;
    EXPECT_EQ(RunInProcess({"explain", "-", "-"}).exitCode, 1);
    const Answered torn = Explained({}, "x,sex\n3,m\n1\n");
    EXPECT_EQ(torn.exitCode, 3);
    EXPECT_NE(torn.out.find("\nrow 1\n"), std::string::npos) << torn.out;
    EXPECT_NE(torn.err.find("row 2 has 1 field"), std::string::npos) << torn.err;
    EXPECT_EQ(Explained({"-o", folder_.Path("no/where.txt")}).exitCode, 4);
    EXPECT_EQ(Explained({"-o", "/dev/full"}).exitCode, 4);
    EXPECT_EQ(Explained({"-o", folder_.Path("cases.csv")}).exitCode, 1);
    EXPECT_EQ(Explained({"-o", model_}).exitCode, 1);
}

}  // namespace
}  // namespace MCVelscore_850
