// check, inspect, help, and what all commands share.

#include <algorithm>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::json;

class Command : public testing::Test {
protected:
    Command() : model_(folder_.Write("model.pmml", TestModel().Text())) {}
    static bool Has(const std::string& text, const std::string& part)
    {
        return text.find(part) != std::string::npos;
    }
    static long LineOf(const std::string& text, const std::string& part)
    {
        const auto end = text.begin() + static_cast<std::ptrdiff_t>(text.find(part));
        return 1 + std::count(text.begin(), end, '\n');
    }

    ScratchFolder folder_;
    std::string model_;
};

TEST_F(Command, WithoutArgumentsIsWrongUsage)
{
    const Finished run = RunVelscore({});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(Has(run.err, "--help")) << run.err;
}

TEST_F(Command, UnknownCommandsAndOptionsAreWrongUsage)
{
    EXPECT_EQ(RunVelscore({"judge"}).exitCode, 1);
    EXPECT_TRUE(Has(RunVelscore({"judge"}).err, "'judge'"));
    EXPECT_EQ(RunVelscore({"score", model_, "--fast"}).exitCode, 1);
    EXPECT_EQ(RunVelscore({"score"}).exitCode, 1);
    EXPECT_EQ(RunVelscore({"inspect", model_, "b.pmml"}).exitCode, 1);
    EXPECT_EQ(RunVelscore({"score", model_, "--threads", "0"}).exitCode, 1);
    EXPECT_EQ(RunVelscore({"score", model_, "--threads", "many"}).exitCode, 1);
}

TEST_F(Command, MisspeltWordsAreBlamedAndSuggested)
{
    struct Sample {
        std::vector<std::string> arguments;
        const char* told;
    };
    const Sample kSamples[] = {
        {{"scor", "m", "c"}, "and help. Did you mean 'score'?"},
        {{"score", "--keeep", "id", "a", "b"},
         "score has no option --keeep. Did you mean '--keep'?"},
        {{"score", "a", "b", "--keeep", "id"},
         "score has no option --keeep. Did you mean '--keep'?"},
        {{"score", "a", "b", "--keeep=id", "c"}, "no option --keeep. Did you mean '--keep'?"},
        {{"score", "a", "--na", "--quite", "--quite"},
         "no option --quite. Did you mean '--quiet'?"},
        {{"score", "a", "-keep", "id"}, "no option -keep. Did you mean '--keep'?"},
        {{"check", "a", "--jsno"}, "check has no option --jsno. Did you mean '--json'?"},
        {{"--versoin"}, "no option --versoin. Did you mean '--version'?"},
        {{"score", "a", "--policy", "sysmiss"},
         "'sysmiss' is none of substitute, sysmis, status. "
         "Did you mean 'sysmis'?"},
        {{"score", "a", "--output", "documents"}, "Did you mean 'document'?"},
    };
    for (const Sample& sample : kSamples) {
        const Finished run = RunVelscore(sample.arguments);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_TRUE(Has(run.err, sample.told)) << run.err;
    }
    EXPECT_FALSE(Has(RunVelscore({"judge"}).err, "Did you mean"));
    EXPECT_TRUE(Has(RunVelscore({"inspect", model_, "b.pmml"}).err, "b.pmml"));
}

// That command is the Python package's.
TEST_F(Command, AReportIsSaidToBeMadeElsewhere)
{
    using Texts = std::vector<std::string>;
    for (const Texts& arguments : {Texts{"report"}, Texts{"report", "a.pmml", "-o", "b.html"}}) {
        const Finished run = RunVelscore(arguments);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find("reports are made by the package for Python"), std::string::npos)
            << run.err;
        EXPECT_NE(run.err.find("python -m velscore report MODEL [CASES] -o report.html"),
                  std::string::npos)
            << run.err;
    }
}

TEST_F(Command, HelpOfEachCommandShowsAnExample)
{
    for (const char* name : {"score", "check", "inspect", "convert", "help"}) {
        const Finished run = RunVelscore({name, "--help"});
        EXPECT_EQ(run.exitCode, 0) << name;
        EXPECT_EQ(run.err, "") << name;
        EXPECT_TRUE(Has(run.out, std::string("Example:\n  velscore ") + name)) << run.out;
    }
    EXPECT_EQ(RunVelscore({"--help"}).exitCode, 0);
}

TEST_F(Command, VersionIsToldOnStandardOutput)
{
    const Finished run = RunVelscore({"--version"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(run.out.starts_with("velscore ")) << run.out;
}

TEST_F(Command, CheckReportsEachDocumentAndEndsWithTwoWhenOneIsRefused)
{
    TestModel adapted;
    const std::string good = folder_.Write("good.pmml", adapted.Text());
    std::string text = adapted.Text();
    text.replace(text.find("version=\"4.4\""), 13, "version=\"4.4.1\"");
    const std::string version = folder_.Write("version.pmml", text);
    TestModel wrong;
    wrong.xBeta = "two";
    const std::string bad = folder_.Write("bad.pmml", wrong.Text());

    const Finished fine = RunVelscore({"check", good, version});
    EXPECT_EQ(fine.exitCode, 0) << fine.err;
    EXPECT_TRUE(Has(fine.out, good + ": OK")) << fine.out;
    EXPECT_TRUE(Has(fine.out, version + ":2:1: adapted: ")) << fine.out;

    const Finished mixed = RunVelscore({"check", bad, good});
    EXPECT_EQ(mixed.exitCode, 2);
    EXPECT_TRUE(Has(mixed.out, good + ": OK")) << mixed.out;
    // file:line:column, what was found, the code, what to do
    const std::string place = ":" + std::to_string(LineOf(wrong.Text(), "beta=\"two\"")) + ":7: ";
    EXPECT_TRUE(Has(mixed.out, bad + place + "fault: ")) << mixed.out;
    EXPECT_TRUE(Has(mixed.out, bad + ": refused\n")) << mixed.out;
    EXPECT_TRUE(Has(mixed.out, "two")) << mixed.out;
    EXPECT_TRUE(Has(mixed.out, "[269001]")) << mixed.out;
    EXPECT_TRUE(Has(mixed.out, "what to do: ")) << mixed.out;
    EXPECT_TRUE(Has(mixed.err, "refused 1 of 2 documents")) << mixed.err;
}

TEST_F(Command, CheckTellsMachinesTheSame)
{
    TestModel wrong;
    wrong.xBeta = "two";
    const std::string bad = folder_.Write("bad.pmml", wrong.Text());
    const Finished run = RunVelscore({"check", "--json", model_, bad, "/nowhere/at/all.pmml"});
    EXPECT_EQ(run.exitCode, 2);
    const Json report = Json::parse(run.out);
    ASSERT_EQ(report.size(), 3u);
    EXPECT_EQ(report.at(0).at("ok"), true);
    EXPECT_EQ(report.at(0).at("target"), "y");
    EXPECT_EQ(report.at(1).at("ok"), false);
    EXPECT_EQ(report.at(1).at("document"), bad);
    EXPECT_EQ(report.at(1).at("line"), LineOf(wrong.Text(), "beta=\"two\""));
    EXPECT_EQ(report.at(1).at("code"), 269001);
    EXPECT_EQ(report.at(2).at("code"), 269101);
}

TEST_F(Command, CheckReadsStandardInputOnce)
{
    EXPECT_EQ(RunVelscore({"check", "-"}, TestModel().Text()).exitCode, 0);
    EXPECT_EQ(RunVelscore({"check", "-", "-"}, TestModel().Text()).exitCode, 1);
}

TEST_F(Command, InspectShowsFamilyTargetPredictorsAndEquation)
{
    const Finished run = RunVelscore({"inspect", model_});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    for (const char* part : {"general linear model", "target        y", "factors       sex",
                             "covariates    x", "df            8", "+ 1\n", "+ 2 * x\n",
                             "+ 10 * [sex = m]\n", "prediction", "std_dev", "95%"}) {
        EXPECT_TRUE(Has(run.out, part)) << part << "\n" << run.out;
    }
}

TEST_F(Command, InspectShowsNoCharacterThatATerminalObeys)
{
    std::string text = TestModel().Text();
    // The covariate's name turns the direction of its line, and goes on in another one.
    const std::string name = "x\xE2\x80\xAE\nfamily none";
    for (const char* attribute : {"name=\"x\"", "predictorName=\"x\""}) {
        const std::string written = attribute;
        const std::string key = written.substr(0, written.find('"'));
        for (size_t at = text.find(" " + written); at != std::string::npos;
             at = text.find(" " + written, at + 1)) {
            text.replace(at, written.size() + 1, " " + key + "\"x\xE2\x80\xAE&#10;family none\"");
        }
    }
    const std::string model = folder_.Write("hidden.pmml", text);
    for (const char* form : {"", "--dump", "--coefficients", "--json"}) {
        std::vector<std::string> arguments{"inspect", model};
        if (*form != '\0') arguments.emplace_back(form);
        const Finished run = RunVelscore(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_FALSE(Has(run.out, "\xE2\x80\xAE")) << form << run.out;
    }
    const Finished plain = RunVelscore({"inspect", model});
    EXPECT_TRUE(Has(plain.out, "covariates    x\\u202E\\u000Afamily none\n")) << plain.out;
    const Json json = Json::parse(RunVelscore({"inspect", "--json", model}).out);
    EXPECT_EQ(json.at("covariates").at(0), name);
}

TEST_F(Command, InspectTellsMachinesTheSame)
{
    const Json model = Json::parse(RunVelscore({"inspect", "--json", model_}).out);
    EXPECT_EQ(model.at("target"), "y");
    EXPECT_EQ(model.at("df"), 8);
    EXPECT_EQ(model.at("factors"), Json::array({"sex"}));
    EXPECT_EQ(model.at("reads").size(), 2u);
    const Json& terms = model.at("equations").at(0).at("terms");
    ASSERT_EQ(terms.size(), 3u);
    EXPECT_EQ(terms.at(2).at("beta"), 10);
    EXPECT_EQ(terms.at(2).at("factors").at(0).at("category"), "m");
}

TEST_F(Command, InspectDumpsAllThatTheModelHolds)
{
    const Finished run = RunVelscore({"inspect", "--dump", model_});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(Has(run.out, "Begin display of")) << run.out;
    EXPECT_EQ(RunVelscore({"inspect", "--dump", "--json", model_}).exitCode, 1);
}

TEST_F(Command, HelpExplainsACode)
{
    const Finished run = RunVelscore({"help", "90029"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(Has(run.out, "90029")) << run.out;
    EXPECT_TRUE(Has(run.out, "what to do: ")) << run.out;
    EXPECT_EQ(RunVelscore({"help", "7"}).exitCode, 1);
    EXPECT_EQ(RunVelscore({"help", "seven"}).exitCode, 1);
    EXPECT_TRUE(
        Has(RunVelscore({"help", "unknown-paramter"}).err, "Did you mean 'unknown-parameter'?"));
    EXPECT_TRUE(Has(RunVelscore({"help"}).out, "269301"));
}

TEST_F(Command, PluginThatCannotBeLoadedEndsWithSeven)
{
    const Finished absent = RunVelscore({"check", "--plugin", "/nowhere/at/all.so", model_});
    EXPECT_EQ(absent.exitCode, 7);
    EXPECT_TRUE(Has(absent.err, "/nowhere/at/all.so")) << absent.err;
    EXPECT_TRUE(Has(absent.err, "what to do: ")) << absent.err;
    EXPECT_EQ(RunVelscore({"inspect", "--plugin", VELSCORE_HOST_LIBRARY, model_}).exitCode, 7);
}

TEST_F(Command, TraceGoesToStandardErrorOrToAFile)
{
    const std::string table = "x,sex\n1,f\n";
    const Finished silent = RunVelscore({"score", "--quiet", model_}, table);
    EXPECT_EQ(silent.err, "");
    const Finished traced = RunVelscore({"score", "--quiet", model_}, table, {"VELSCORE_TRACE=2"});
    EXPECT_EQ(traced.out, silent.out);
    EXPECT_TRUE(Has(traced.err, "Entry:")) << traced.err;
    EXPECT_TRUE(Has(traced.err, "PMML version is :4.4")) << traced.err;
    const std::string file = folder_.Path("trace.txt");
    EXPECT_EQ(RunVelscore({"score", "--quiet", model_}, table, {"VELSCORE_TRACE=1:" + file}).err,
              "");
    EXPECT_TRUE(Has(ReadFile(file), "Entry:"));
    EXPECT_EQ(RunVelscore({"score", model_}, table, {"VELSCORE_TRACE=loud"}).exitCode, 1);
}

TEST_F(Command, ErrorsHaveNoColourInAFile)
{
    EXPECT_FALSE(Has(RunVelscore({"score", "/nowhere/at/all"}).err, "\033"));
}

}  // namespace
}  // namespace MCVelscore_850
