// check with what it lists, --fix, and what the other commands say of a document's findings.

#include <algorithm>
#include <filesystem>
#include <set>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

// The sound document, and with it one that has a finding of each kind.
const std::string kSound = TestModel().Text();
std::string ShortVersion() { return Replaced(kSound, "version=\"4.4\"", "version=\"4.4.1\""); }
// An adaptation that counts where strictness is asked for.
std::string Doubtful()
{
    TestModel model;
    model.xMining = R"(<MiningField name="x" missingValueReplacement="none"/>)";
    return model.Text();
}
std::string WithNotice()
{
    TestModel model;
    model.sexMining = R"(<MiningField name="sex" missingValueReplacement="q"/>)";
    return model.Text();
}
// Two faults of a rule, line 34 and line 35.
std::string Faulty()
{
    std::string text = Replaced(kSound, "beta=\"2\"", "Beta=\"2\"");
    return Replaced(text, "beta=\"10\"", "Beta=\"10\"");
}

class Check : public testing::Test {
protected:
    std::string Write(const std::string& text) const { return folder_.Write("m.pmml", text); }
    static bool Has(const std::string& text, const std::string& part)
    {
        return text.find(part) != std::string::npos;
    }
    // The findings of one document, as check tells programs.
    static Json Findings(const std::string& file)
    {
        return Json::parse(RunVelscore({"check", "--json", file}).out).at(0).at("findings");
    }

    ScratchFolder folder_;
    const std::string cases_ = folder_.Write("cases.csv", "x,sex\n1,f\n2,m\n");
};

// A document of another encoding is shown in UTF-8, its columns counted in characters.
TEST_F(Check, ShowsLinesOfOtherEncodings)
{
    const auto document = [](const std::string& encoding, const std::string& letter) {
        return Replaced(Replaced(ShortVersion(), "UTF-8", encoding), "<PMML ",
                        "<PMML x-by=\"" + letter + "\" ");
    };
    const std::string shown = "<PMML x-by=\"\xC3\xA9\" xmlns";
    EXPECT_TRUE(Has(RunVelscore({"check", Write(document("UTF-8", "\xC3\xA9"))}).out, shown));
    EXPECT_TRUE(Has(RunVelscore({"check", Write(document("ISO-8859-1", "\xE9"))}).out, shown));
    std::string wide = "\xFF\xFE";
    for (const char c : document("UTF-16", "\xE9")) (wide += c) += '\0';
    const Finished run = RunVelscore({"check", Write(wide)});
    EXPECT_TRUE(Has(run.out, shown)) << run.out;
    EXPECT_TRUE(Has(run.out, ":2:1: adapted: ")) << run.out;
    const Finished marked =
        RunVelscore({"check", Write("\xEF\xBB\xBF" + ShortVersion().substr(39))});
    EXPECT_TRUE(Has(marked.out, ":1:1: adapted: ")) << marked.out;
    EXPECT_TRUE(Has(marked.out, "1 | <PMML xmlns")) << marked.out;
}

TEST_F(Check, ReadsStandardInputWithItsLines)
{
    const Finished run = RunVelscore({"check", "-"}, Faulty());
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(Has(run.out, "standard input:34:7: fault: ")) << run.out;
    EXPECT_TRUE(Has(run.out, "    34 |       <PCell")) << run.out;
    EXPECT_TRUE(Has(run.out, "standard input: refused: 2 faults; --fix puts 2 of them right\n"))
        << run.out;
}

// What the reader itself refuses has the same form, behind what was found before.
TEST_F(Check, TellsTheReadersRefusalInTheSameForm)
{
    const std::string file = Write(Replaced(ShortVersion(), "beta=\"2\"", "beta=\"two\""));
    const Finished run = RunVelscore({"check", file});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(Has(run.out, "[short-version]")) << run.out;
    EXPECT_TRUE(Has(run.out, file + ":34:7: fault: the beta 'two' is not a number [269001]\n"
                                    "    34 |       <PCell parameterName=\"p1\" beta=\"two\" "))
        << run.out;
    const Json report = Json::parse(RunVelscore({"check", "--json", file}).out).at(0);
    ASSERT_EQ(report.at("findings").size(), 2u);
    EXPECT_EQ(report.at("findings").at(1).at("rule"), nullptr);
    EXPECT_EQ(report.at("findings").at(1).at("code"), 269001);
    EXPECT_EQ(report.at("findings").at(1).at("severity"), "fault");
    EXPECT_EQ(report.at("findings").at(1).at("line"), 34);
}

TEST_F(Check, HasNoColoursOutsideATerminal)
{
    const Finished run = RunVelscore({"check", Write(Faulty())}, "", {"TERM=xterm-256color"});
    EXPECT_FALSE(Has(run.out + run.err, "\033"));
}

TEST_F(Check, TellsMachinesEachFinding)
{
    const std::string file = Write(Faulty());
    const Json report = Json::parse(RunVelscore({"check", "--json", file}).out).at(0);
    EXPECT_EQ(report.at("ok"), false);
    EXPECT_EQ(report.at("line"), 34);
    EXPECT_EQ(report.at("leftOut"), Json::object());
    const Json& findings = report.at("findings");
    ASSERT_EQ(findings.size(), 2u);
    const Json expected = Json::parse(R"({
        "rule": "misspelt-attribute", "code": null, "severity": "fault", "strict": false,
        "line": 34, "column": 7, "path": "PMML/GeneralRegressionModel/ParamMatrix/PCell[2]",
        "element": "PCell", "attribute": "Beta", "near": "beta", "fixable": true})");
    for (const auto& item : expected.items())
        EXPECT_EQ(findings.at(0).at(item.key()), item.value());
    // Every key is told in the documentation, and the other way round there are no more.
    const std::string page = ReadFile("docs/command.md");
    EXPECT_EQ(findings.at(0).size(), 15u);
    for (const auto& item : findings.at(0).items()) {
        EXPECT_TRUE(Has(page, "`" + item.key() + "`")) << item.key();
    }

    const Json adapted =
        Json::parse(RunVelscore({"check", "--json", Write(ShortVersion())}).out)[0];
    EXPECT_EQ(adapted.at("ok"), true);
    EXPECT_EQ(adapted.at("adapted").size(), 1u);
    EXPECT_EQ(adapted.at("findings").at(0).at("severity"), "adapted");
    EXPECT_EQ(adapted.at("findings").at(0).at("rule"), "short-version");
    EXPECT_EQ(adapted.at("findings").at(0).at("found"), nullptr);
}

TEST_F(Check, CountsWhatItDoesNotList)
{
    std::string values;
    for (int i = 0; i < 150; ++i) values += "<Extra/>";
    const std::string file = Write(Replaced(kSound, "<Header/>", "<Header/>" + values));
    const Json report = Json::parse(RunVelscore({"check", "--json", file}).out)[0];
    ASSERT_EQ(report.at("findings").size(), 100u);
    EXPECT_EQ(report.at("leftOut"), Json({{"unknown-element", 50}}));
    const Finished run = RunVelscore({"check", file});
    EXPECT_TRUE(Has(run.out, file + ": and 50 more [unknown-element]\n")) << run.out;
    EXPECT_TRUE(Has(run.out, "; 150 notices\n")) << run.out;
}

TEST_F(Check, StrictCountsWhatMayLeaveADoubt)
{
    struct Sample {
        std::string text;
        int plain;
        int strict;
    };
    const Sample kSamples[] = {
        {kSound, 0, 0},     {ShortVersion(), 0, 0}, {WithNotice(), 0, 0},
        {Doubtful(), 0, 5}, {Faulty(), 2, 2},
    };
    for (const Sample& sample : kSamples) {
        const std::string file = Write(sample.text);
        EXPECT_EQ(RunVelscore({"check", file}).exitCode, sample.plain) << sample.text;
        const Finished strict = RunVelscore({"check", "--strict", file});
        EXPECT_EQ(strict.exitCode, sample.strict) << strict.out;
        const Finished score = RunVelscore({"score", file, cases_, "--strict"});
        EXPECT_EQ(score.exitCode, sample.strict) << score.err;
        EXPECT_EQ(ParseCsv(score.out).rows.size(), sample.strict == 2 ? 0u : 2u) << score.out;
    }
}

TEST_F(Check, AllowTurnsFaultsOfARuleIntoNotices)
{
    const std::string file = Write(
        Replaced(kSound, "name=\"sex\" usageType=\"active\"", "name=\"sex\" usagetype=\"active\""));
    const Finished refused = RunVelscore({"score", file, cases_});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_TRUE(Has(refused.err, "[misspelt-attribute]")) << refused.err;
    EXPECT_TRUE(Has(refused.err, "--allow")) << refused.err;
    const Finished allowed = RunVelscore({"score", file, cases_, "--allow", "misspelt-attribute"});
    EXPECT_EQ(allowed.exitCode, 0) << allowed.err;
    EXPECT_EQ(allowed.out, RunVelscore({"score", Write(kSound), cases_}).out);
    EXPECT_TRUE(Has(allowed.err, "notice: ")) << allowed.err;

    Write(
        Replaced(kSound, "name=\"sex\" usageType=\"active\"", "name=\"sex\" usagetype=\"active\""));
    EXPECT_EQ(RunVelscore({"score", file, cases_, "--as-is"}).exitCode, 0);
    EXPECT_EQ(RunVelscore({"check", file, "--allow", "unknown-word"}).exitCode, 2);
}

TEST_F(Check, AllowOfNoFaultIsWrongUsage)
{
    const std::string file = Write(kSound);
    struct Sample {
        const char* rule;
        const char* told;
    };
    for (const Sample& sample : {Sample{"misspelt-atribute", "Did you mean 'misspelt-attribute'?"},
                                 Sample{"no-such-rule-at-all", "no rule has that name"},
                                 Sample{"short-version", "refuses no document"}}) {
        for (const char* command : {"check", "inspect", "verify", "convert"}) {
            const Finished run = RunVelscore({command, file, "--allow", sample.rule});
            EXPECT_EQ(run.exitCode, 1) << command;
            EXPECT_TRUE(Has(run.err, sample.told)) << run.err;
        }
    }
    EXPECT_EQ(RunVelscore({"check", file, "--as-is", "--allow", "unknown-word"}).exitCode, 1);
}

TEST_F(Check, FaultsAreRefusedByEveryCommand)
{
    const std::string file = Write(Faulty());
    for (const Texts& arguments : {Texts{"score", file, cases_}, Texts{"curve", file, cases_},
                                   Texts{"inspect", file}, Texts{"verify", file}}) {
        const Finished run = RunVelscore(arguments);
        EXPECT_EQ(run.exitCode, 2) << arguments[0];
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(Has(run.err, file + ":34:7: PCell has no attribute \"Beta\"")) << run.err;
        EXPECT_TRUE(Has(run.err, "[misspelt-attribute]\n")) << run.err;
        EXPECT_TRUE(Has(run.err, "  and 1 more fault\n")) << run.err;
        EXPECT_TRUE(Has(run.err, "velscore check shows every fault")) << run.err;
    }
}

TEST_F(Check, ListsTheWordsOfAnAttributeOnceAndAll)
{
    const std::string file = Write(
        Replaced(kSound, "<MiningField name=\"x\"", "<MiningField name=\"x\" outliers=\"no\""));
    const std::string all = R"("asIs", "asMissingValues", "asExtremeValues")";
    const std::string out = RunVelscore({"check", file}).out;
    EXPECT_TRUE(Has(out, "  what to do: Write one of " + all + ".\n")) << out;
    EXPECT_EQ(out.find(all), out.rfind(all)) << out;
    const std::string type =
        RunVelscore({"check", Write(Replaced(kSound, "modelType=\"", "modelType=\"x"))}).out;
    EXPECT_FALSE(Has(type, " more.")) << type;
}

// The parameter without a cell, which comes of it, stands before it.
TEST_F(Check, ScoreTellsAMisspeltNameFirst)
{
    const std::string file = Write(Replaced(kSound, "<PPCell", "<PPCel"));
    const Finished run = RunVelscore({"score", file, cases_});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(Has(run.err, "PPMatrix has no element \"PPCel\"; did you mean \"PPCell\"?"))
        << run.err;
    EXPECT_TRUE(Has(run.err, "  and 1 more fault\n")) << run.err;
}

TEST_F(Check, ScoreTellsNoticesAndAdaptationsAtItsEnd)
{
    const std::string file = Write(Replaced(WithNotice(), "\"4.4\"", "\"4.4.1\""));
    Texts arguments{"score", file, cases_, "--summary", folder_.Path("run.json")};
    const Finished run = RunVelscore(arguments);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(Has(run.err, "velscore: notice: " + file + ":")) << run.err;
    EXPECT_TRUE(Has(run.err, "[replacement-unlisted]\n")) << run.err;
    EXPECT_TRUE(run.err.ends_with("velscore: " + file +
                                  " was adapted (short-version); velscore check tells how\n"))
        << run.err;
    const Json summary = Json::parse(ReadFile(folder_.Path("run.json")));
    ASSERT_EQ(summary.at("notices").size(), 1u);
    EXPECT_TRUE(Has(summary.at("notices").at(0), "[replacement-unlisted]"));
    EXPECT_EQ(summary.at("adapted").size(), 1u);

    arguments.push_back("--quiet");
    EXPECT_EQ(RunVelscore(arguments).err, "");
    const std::string inspected = RunVelscore({"inspect", file}).out;
    EXPECT_LT(inspected.find("\nadapted "), inspected.find("\nnotice ")) << inspected;
    EXPECT_TRUE(Has(inspected, "[replacement-unlisted]\n")) << inspected;
}

TEST_F(Check, ScoreTellsTheFirstThreeNotices)
{
    const std::string file =
        Write(Replaced(kSound, "<Header/>", "<Header/><E1/><E2/><E3/><E4/><E5/>"));
    const Finished run = RunVelscore({"score", file, cases_});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    for (const char* shown : {"\"E1\"", "\"E2\"", "\"E3\"", "velscore: 2 more notices; "}) {
        EXPECT_TRUE(Has(run.err, shown)) << run.err;
    }
    EXPECT_FALSE(Has(run.err, "\"E4\"")) << run.err;
}

TEST_F(Check, HelpExplainsARule)
{
    const Finished run = RunVelscore({"help", "misspelt-attribute"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(run.out.starts_with("misspelt-attribute  fault: ")) << run.out;
    EXPECT_TRUE(Has(run.out, "what to do: ")) << run.out;
    EXPECT_FALSE(Has(run.out, "{")) << run.out;
    EXPECT_EQ(RunVelscore({"help", "short-version"}).exitCode, 0);
}

class Fix : public Check {
protected:
    Finished Run(const std::string& text, Texts more = {})
    {
        Texts arguments{"check", "--fix", Write(text), "-o", fixed_};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return RunVelscore(arguments);
    }
    std::string fixed_ = folder_.Path("fixed.pmml");
};

TEST_F(Fix, WritesWhatIsReadAndKeepsTheRest)
{
    std::string text = Replaced(Faulty(), "\"4.4\"", "\"4.4.1\"");
    text = Replaced(text, "<Header/>", "<Header/>\n  <!-- kept & all -->\n  <?note it?>");
    const Finished run = Run(text);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(Has(run.err, "line 36, column 7: Beta is now beta [misspelt-attribute]"))
        << run.err;
    EXPECT_TRUE(Has(run.err, "line 37, column 7: Beta is now beta")) << run.err;
    EXPECT_TRUE(Has(run.err, "[short-version]")) << run.err;
    EXPECT_TRUE(Has(run.err, "velscore: 3 changes written to " + fixed_)) << run.err;
    const std::string fixed = ReadFile(fixed_);
    EXPECT_TRUE(Has(fixed, "<Header/>\n  <!-- kept & all -->\n  <?note it?>")) << fixed;
    EXPECT_EQ(std::count(fixed.begin(), fixed.end(), '\n'),
              std::count(text.begin(), text.end(), '\n') - 1)
        << fixed;
    EXPECT_EQ(Findings(fixed_), Json::array());
    EXPECT_EQ(RunVelscore({"score", fixed_, cases_}).out,
              RunVelscore({"score", Write(kSound), cases_}).out);
}

TEST_F(Fix, TakesOutACellThatSaysAgainWhatAnotherSays)
{
    const std::string cell = "<PCell parameterName=\"p1\" beta=\"2\" df=\"1\"/>";
    const Finished run = Run(Replaced(kSound, cell, cell + "\n" + cell));
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(Has(run.err, "line 35, column 1: PCell is taken out [repeated-cell]")) << run.err;
    const std::string fixed = ReadFile(fixed_);
    EXPECT_EQ(fixed.find("beta=\"2\""), fixed.rfind("beta=\"2\"")) << fixed;
    EXPECT_EQ(Findings(fixed_), Json::array());
}

// Whether a word of two letters off is the near one, nobody knows for sure.
TEST_F(Fix, WritesNothingWhereAFaultStays)
{
    const Finished run = Run(Replaced(Faulty(), "optype=\"continuous\"", "optype=\"continious\""));
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(Has(run.err, "m.pmml:5:5: ") && Has(run.err, "[unknown-word]")) << run.err;
    EXPECT_FALSE(std::filesystem::exists(fixed_));
}

TEST_F(Fix, IsOfOneDocumentAndNotOntoItself)
{
    const std::string file = Write(kSound);
    EXPECT_EQ(RunVelscore({"check", "--fix", file, file}).exitCode, 1);
    EXPECT_EQ(RunVelscore({"check", "--fix", file, "-o", file}).exitCode, 1);
    EXPECT_EQ(RunVelscore({"check", "--fix", "--json", file}).exitCode, 1);
    EXPECT_EQ(RunVelscore({"check", "--fix", "--as-is", file}).exitCode, 1);
    EXPECT_EQ(RunVelscore({"check", file, "-o", fixed_}).exitCode, 1);
    EXPECT_EQ(RunVelscore({"check", "--fix", "-"}, kSound).exitCode, 0);
}

// What other exporters write, put right: nothing is adapted any more, and the model is the same.
TEST_F(Fix, MakesThePublishedDocumentsNeedNoAdaptation)
{
    const auto model = [](const std::string& file) {
        Json shown = Json::parse(RunVelscore({"inspect", "--json", file}).out);
        for (const char* other : {"document", "adapted"}) shown.erase(other);
        return shown;
    };
    size_t adapted = 0;
    for (const auto& entry : std::filesystem::directory_iterator(DataFile("published"))) {
        const std::string file = entry.path().string();
        const Finished run = RunVelscore({"check", "--fix", file, "-o", fixed_});
        EXPECT_EQ(run.exitCode, 0) << file << run.err;
        adapted += Has(run.err, "nothing to put right") ? 0 : 1;
        for (const Json& finding : Findings(fixed_)) {
            EXPECT_NE(finding.at("severity"), "adapted") << file << finding;
        }
        EXPECT_EQ(model(fixed_), model(file)) << file;
    }
    EXPECT_GE(adapted, 8u);
}

}  // namespace
}  // namespace MCVelscore_850
