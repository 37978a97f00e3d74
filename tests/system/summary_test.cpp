// The report of a run that --summary writes.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::ordered_json;
using Texts = std::vector<std::string>;

class Summary : public testing::Test {
protected:
    Summary() : model_(folder_.Write("model.pmml", TestModel().Text())) {}

    // Runs score with --summary, and takes the report apart.
    Json Report(const Texts& arguments, int exitCode)
    {
        const std::string file = folder_.Path("summary.json");
        Texts all{"score", model_, "--prediction-only", "--summary", file};
        all.insert(all.end(), arguments.begin(), arguments.end());
        run_ = RunVelscore(all);
        EXPECT_EQ(run_.exitCode, exitCode) << run_.err;
        return Json::parse(ReadFile(file));
    }

    ScratchFolder folder_;
    std::string model_;
    Finished run_;
};

Texts KeysOf(const Json& object)
{
    Texts keys;
    for (const auto& item : object.items()) keys.push_back(item.key());
    return keys;
}

TEST_F(Summary, TellsAllOfARun)
{
    std::string text = TestModel().Text();
    text.replace(text.find("version=\"4.4\""), 13, "version=\"4.4.1\"");
    folder_.Write("model.pmml", text);
    const std::string one = folder_.Write("one.csv", "x,sex\n1,f\n,m\n1,q\n1\n");
    const std::string two = folder_.Write("two.csv", "x,sex\n2,m\n,f\n");
    const Json report = Report(
        {one, two, "--rejects", folder_.Path("rejects.csv"), "--threads", "2", "--strict"}, 5);
    EXPECT_EQ(KeysOf(report),
              (Texts{"velscore",       "document",    "documentVersion", "documentSha256",
                     "family",         "adapted",     "notices",         "tables",
                     "rows",           "scored",      "notScored",       "rejected",
                     "unlisted",       "rowsWritten", "exitCode",        "error",
                     "interrupted",    "threads",     "seconds",         "rowsPerSecond",
                     "peakMemoryBytes"}));
    const std::string page = ReadFile("docs/batch.md");
    for (const std::string& key : KeysOf(report)) {
        EXPECT_NE(page.find("`" + key + "`"), std::string::npos) << key;
    }
    EXPECT_EQ("velscore " + report.at("velscore").get<std::string>() + "\n",
              RunVelscore({"--version"}).out);
    EXPECT_EQ(report.at("document"), model_);
    EXPECT_EQ(report.at("documentVersion"), "4.4");
    const Finished digest = RunProgram({"/usr/bin/sha256sum", model_});
    EXPECT_EQ(report.at("documentSha256"), digest.out.substr(0, 64));
    EXPECT_EQ(report.at("family"), "general linear model");
    ASSERT_EQ(report.at("adapted").size(), 1u);
    EXPECT_NE(report.at("adapted").at(0).get<std::string>().find("[short-version]"),
              std::string::npos);
    EXPECT_EQ(report.at("notices"), Json::array());
    EXPECT_EQ(report.at("tables"), Json({one, two}));
    EXPECT_EQ(report.at("rows"), 6);
    EXPECT_EQ(report.at("scored"), 2);
    EXPECT_EQ(report.at("notScored"), Json::parse(R"([{"status": 90029, "field": "sex", "count": 1,
                               "first": [{"table": "ONE", "row": 3, "text": "q"}]},
                              {"status": 90029, "field": "x", "count": 2,
                               "first": [{"table": "ONE", "row": 2, "text": ""},
                                         {"table": "TWO", "row": 2, "text": ""}]},
                              {"status": 269053, "field": null, "count": 1,
                               "first": [{"table": "ONE", "row": 4, "text": null}]}])",
                                                  [&](int, Json::parse_event_t, Json& parsed) {
                                                      if (parsed == "ONE") parsed = one;
                                                      if (parsed == "TWO") parsed = two;
                                                      return true;
                                                  }));
    EXPECT_EQ(report.at("rejected"), 4);
    EXPECT_EQ(report.at("unlisted"), Json::array());
    EXPECT_EQ(report.at("rowsWritten"), 6);
    EXPECT_EQ(ParseCsv(run_.out).rows.size(), 6u);
    EXPECT_EQ(ParseCsv(ReadFile(folder_.Path("rejects.csv"))).rows.size(), 4u);
    EXPECT_EQ(report.at("exitCode"), 5);
    EXPECT_EQ(report.at("error"), nullptr);
    EXPECT_EQ(report.at("interrupted"), false);
    EXPECT_EQ(report.at("threads"), 2);
    const Json& seconds = report.at("seconds");
    EXPECT_EQ(KeysOf(seconds), (Texts{"total", "reading", "scoring", "writing"}));
    for (const auto& part : seconds) EXPECT_GE(part.get<double>(), 0.0);
    EXPECT_DOUBLE_EQ(report.at("rowsPerSecond").get<double>() * seconds.at("total").get<double>(),
                     6.0);
    EXPECT_GT(report.at("peakMemoryBytes").get<int64_t>(), int64_t{1} << 20);
}

TEST_F(Summary, TellsTheFirstFiveCasesOfAReason)
{
    const std::string cases =
        folder_.Write("cases.csv", "x,sex\na,f\nb,f\nc,f\n1,f\nd,f\ne,f\nf,f\n");
    const Json reasons = Report({cases}, 0)["notScored"];
    ASSERT_EQ(reasons.size(), 1u);
    EXPECT_EQ(reasons.at(0).at("count"), 6);
    std::string texts;
    for (const Json& first : reasons.at(0).at("first")) {
        texts += first.at("text").get<std::string>() + std::to_string(first.at("row").get<int>());
    }
    EXPECT_EQ(texts, "a1b2c3d5e6");
}

TEST_F(Summary, TellsUnlistedValues)
{
    TestModel accepting;
    accepting.sexMining = R"(<MiningField name="sex" invalidValueTreatment="asIs"/>)";
    folder_.Write("model.pmml", accepting.Text());
    const std::string cases = folder_.Write("cases.csv", "x,sex\n1,q\n1,f\n2,r\n3,q\n4,s\n5,t\n");
    EXPECT_EQ(Report({cases}, 0)["unlisted"],
              Json::parse(R"([{"column": "sex", "count": 5, "first": ["q", "r", "s"],
                               "oneMayBeReference": false}])"));
}

TEST_F(Summary, TellsWhatEndedTheRun)
{
    const std::string cases = folder_.Write("cases.csv", "x,sex\n1,f\n1\n");
    const Json report = Report({cases}, 3);
    EXPECT_EQ(report.at("exitCode"), 3);
    EXPECT_EQ(report.at("rowsWritten"), 1);
    EXPECT_EQ(report.at("error").at("code"), 269304);
    EXPECT_EQ(report.at("error").at("message"), cases + ": row 2 has 1 fields, the header 2");
    EXPECT_EQ(report.at("error").at("remedy"), "Mend the table and score it again.");
}

TEST_F(Summary, OfFewRejectsAllowedCountsThoseThatWereWritten)
{
    const std::string cases = folder_.Write("cases.csv", "x,sex\n1,f\n1\na,f\nb,f\n");
    const Json report =
        Report({cases, "--rejects", folder_.Path("rejects.csv"), "--max-rejects", "2"}, 3);
    EXPECT_EQ(report.at("error").at("code"), 269326);
    EXPECT_EQ(report.at("rejected"), 2);
    EXPECT_EQ(report.at("rows"), 3);
    EXPECT_EQ(report.at("rowsWritten"), 3);
}

// The names and texts of tables may be in any encoding, the report is in UTF-8.
TEST_F(Summary, IsJsonWhateverTheTableHolds)
{
    const std::string cases = folder_.Write("caf\xE9.csv", "x,sex\n1,\xE9\n");
    const Json report = Report({cases}, 0);
    EXPECT_EQ(report.at("notScored").at(0).at("first").at(0).at("text"), "\xEF\xBF\xBD");
    EXPECT_EQ(report.at("tables").at(0), folder_.Path("caf\xEF\xBF\xBD.csv"));
    const std::string rejects = folder_.Path("rejects.csv");
    Report({cases, "--rejects", rejects}, 0);
    EXPECT_EQ(ParseCsv(ReadFile(rejects)).Texts("file"), Texts{folder_.Path("caf\\xE9.csv")});
}

TEST_F(Summary, IsNotWrittenByARunThatIsRefused)
{
    const std::string file = folder_.Write("summary.json", "precious\n");
    const std::string cases = folder_.Write("cases.csv", "x\n1\n");
    EXPECT_EQ(RunVelscore({"score", model_, cases, "--summary", file}).exitCode, 3);
    EXPECT_EQ(ReadFile(file), "precious\n");
}

TEST_F(Summary, MayGoToStandardOutput)
{
    const std::string cases = folder_.Write("cases.csv", "x,sex\n1,f\n");
    const Finished run = RunVelscore(
        {"score", model_, cases, "--summary", "-", "-o", folder_.Path("scores.csv"), "--quiet"});
    EXPECT_EQ(Json::parse(run.out)["scored"], 1) << run.err;
}

TEST_F(Summary, ComesOfCurvesToo)
{
    const std::string cases =
        folder_.Write("cases.csv", "trt,karno,celltype\n1,60,adeno\n1,,adeno\n");
    const std::string file = folder_.Path("summary.json");
    const Finished run = RunVelscore(
        {"curve", DataFile("cases/cox-veteran-strata/model.pmml"), cases, "--summary", file});
    const Json report = Json::parse(ReadFile(file));
    EXPECT_EQ(report.at("rows"), 2);
    EXPECT_EQ(report.at("scored"), 1);
    EXPECT_EQ(report.at("rowsWritten"), ParseCsv(run.out).rows.size());
}

}  // namespace
}  // namespace MCVelscore_850
