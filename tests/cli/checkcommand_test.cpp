// check: what it tells of documents, and what --fix writes.

#include <filesystem>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "cli/findingtext.h"
#include "cli/sourcelines.h"
#include "engine/documents/audit/finding.h"
#include "tests/cli/inprocess.h"
#include "tests/scratchfolder.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;

constexpr Rule kFault{"a-fault", Answer::Fault, false, "", "{what}", "Mend it."};
constexpr Rule kNotice{"a-notice", Answer::Notice, false, "", "{what}", ""};
constexpr Rule kAdapted{"an-adaptation", Answer::Adapted, true, "", "{what}", ""};

// So many of a rule, told of lines one after another.
void Add(Findings& findings, const Rule& rule, size_t count)
{
    for (size_t i = 0; i < count; ++i) {
        findings.AddAdapted(rule, {i + 1, 1, "a/b"}, "it is so");
    }
}

struct Counted {
    size_t faults;
    size_t notices;
    size_t adapted;
    const char* text;
};

TEST(FindingText, CountsAreInWords)
{
    for (const Counted& row :
         {Counted{0, 0, 0, ""}, Counted{1, 0, 0, "1 fault"}, Counted{2, 1, 0, "2 faults, 1 notice"},
          Counted{0, 2, 1, "2 notices, 1 adaptation"},
          Counted{1, 1, 2, "1 fault, 1 notice, 2 adaptations"}}) {
        Findings findings;
        Add(findings, kNotice, row.notices);
        Add(findings, kFault, row.faults);
        Add(findings, kAdapted, row.adapted);
        EXPECT_EQ(CountsText(findings), row.text);
    }
}

TEST(FindingText, PaintsWhatATerminalShows)
{
    const SourceLines lines("<a b='1'/>\n");
    Findings findings;
    Add(findings, kAdapted, 1);
    EXPECT_EQ(FindingText(lines, false).TextOf(findings, "m.pmml"),
              "m.pmml:1:1: adapted: it is so [an-adaptation]\n"
              "     1 | <a b='1'/>\n"
              "       | ^\n"
              "  at a/b\n");
    EXPECT_EQ(FindingText(lines, true).TextOf(findings, "m.pmml"),
              "\033[1mm.pmml:1:1\033[0m: \033[1;36madapted:\033[0m it is so [an-adaptation]\n"
              "     1 | <a b='1'/>\n"
              "       | \033[1;32m^\033[0m\n"
              "  at a/b\n");
    Findings others;
    Add(others, kFault, 1);
    Add(others, kNotice, 1);
    const std::string painted = FindingText(lines, true).TextOf(others, "m.pmml");
    EXPECT_NE(painted.find(": \033[1;31mfault:\033[0m it is so"), std::string::npos) << painted;
    EXPECT_NE(painted.find("  what to do: Mend it.\n"), std::string::npos) << painted;
    EXPECT_NE(painted.find(": \033[1;33mnotice:\033[0m it is so"), std::string::npos) << painted;
}

TEST(FindingText, TellsAdaptationsByRuleAndTheFirstNotices)
{
    Findings findings;
    Add(findings, kAdapted, 2);
    EXPECT_EQ(FindingLines(findings, "m.pmml"),
              Texts{"m.pmml was adapted (an-adaptation); velscore check tells how"});
    EXPECT_TRUE(FindingLines(Findings(), "m.pmml").empty());
    Findings notices;
    Add(notices, kNotice, 4);
    EXPECT_EQ(FindingLines(notices, "m.pmml"), (Texts{"notice: m.pmml:1:1: it is so [a-notice]",
                                                      "notice: m.pmml:2:1: it is so [a-notice]",
                                                      "notice: m.pmml:3:1: it is so [a-notice]",
                                                      "1 more notice; velscore check shows them"}));
}

const std::string kSound = TestModel().Text();

class Check : public testing::Test {
protected:
    std::string Write(const std::string& text) const { return folder_.Write("m.pmml", text); }
    static std::string ShortVersion() { return Replaced(kSound, "\"4.4\"", "\"4.4.1\""); }
    // Two faults of a rule, in line 34 and line 35.
    static std::string Faulty()
    {
        return Replaced(Replaced(kSound, "beta=\"2\"", "Beta=\"2\""), "beta=\"10\"", "Beta=\"10\"");
    }
    // An adaptation that counts where strictness is asked for.
    static std::string Doubtful()
    {
        TestModel model;
        model.xMining = R"(<MiningField name="x" missingValueReplacement="none"/>)";
        return model.Text();
    }

    const ScratchFolder folder_;
};

TEST_F(Check, ShowsTheLineOfAFindingWithAMark)
{
    const std::string file = Write(ShortVersion());
    const Answered run = RunInProcess({"check", file});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.out,
              file +
                  ":2:1: adapted: version \"4.4.1\" is read as \"4.4\" [short-version]\n"
                  "     2 | <PMML xmlns=\"http://www.dmg.org/PMML-4_4\" version=\"4.4.1\">\n"
                  "       | ^\n"
                  "  at PMML\n" +
                  file +
                  ": OK, general linear model, target y; 1 adaptation; --fix puts 1 of them "
                  "right\n");
    EXPECT_EQ(RunInProcess({"check", Write(kSound)}).out,
              file + ": OK, general linear model, target y\n");
}

TEST_F(Check, ShowsEachFaultWithItsAttributeMarked)
{
    const std::string file = Write(Faulty());
    const Answered run = RunInProcess({"check", file});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_EQ(run.err, "velscore: refused 1 of 1 documents\n");
    EXPECT_EQ(
        run.out.find(file + ":34:7: fault: PCell has no attribute \"Beta\"; did you mean "
                            "\"beta\"? [misspelt-attribute]\n"
                            "    34 |       <PCell parameterName=\"p1\" Beta=\"2\" df=\"1\"/>\n"
                            "       |       ^                         ~~~~~~~~\n"
                            "  at PMML/GeneralRegressionModel/ParamMatrix/PCell[2]\n"
                            "  what to do: "),
        0u)
        << run.out;
    EXPECT_NE(run.out.find("\n" + file + ":35:7: fault: "), std::string::npos) << run.out;
    EXPECT_TRUE(run.out.ends_with(file + ": refused: 2 faults; --fix puts 2 of them right\n"))
        << run.out;
}

TEST_F(Check, ShowsTheReadersRefusalInTheSameForm)
{
    const std::string file = Write(Replaced(ShortVersion(), "beta=\"2\"", "beta=\"two\""));
    const Answered run = RunInProcess({"check", file});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.out.find("[short-version]"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find(file + ":34:7: fault: the beta 'two' is not a number [269001]\n"
                                  "    34 |       <PCell parameterName=\"p1\" beta=\"two\" "),
              std::string::npos)
        << run.out;
}

TEST_F(Check, GoesOnBehindADocumentThatIsNotThere)
{
    const std::string good = Write(kSound);
    const Answered run = RunInProcess({"check", "/nowhere/m.pmml", good});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(run.out.starts_with("fault: /nowhere/m.pmml can't be read")) << run.out;
    EXPECT_NE(run.out.find("  what to do: "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("/nowhere/m.pmml: refused\n" + good + ": OK"), std::string::npos)
        << run.out;
    EXPECT_EQ(run.err, "velscore: refused 1 of 2 documents\n");
}

TEST_F(Check, CountsWhatItDoesNotList)
{
    std::string elements;
    for (int i = 0; i < 150; ++i) elements += "<Extra/>";
    const std::string file = Write(Replaced(kSound, "<Header/>", "<Header/>" + elements));
    const Answered run = RunInProcess({"check", file});
    EXPECT_NE(run.out.find(file + ": and 50 more [unknown-element]\n"), std::string::npos);
    EXPECT_TRUE(run.out.ends_with("; 150 notices\n")) << run.out;
}

TEST_F(Check, TellsExpectedWordsOnce)
{
    const Answered run =
        RunInProcess({"check", Write(Replaced(kSound, "<MiningField name=\"x\"",
                                              "<MiningField name=\"x\" outliers=\"no\""))});
    const std::string all = R"("asIs", "asMissingValues", "asExtremeValues")";
    EXPECT_NE(run.out.find("  what to do: Write one of " + all + ".\n"), std::string::npos);
    EXPECT_EQ(run.out.find(all), run.out.rfind(all)) << run.out;
}

TEST_F(Check, TellsProgramsTheSame)
{
    const std::string good = Write(kSound);
    const std::string bad = folder_.Write("bad.pmml", Faulty());
    const Answered run = RunInProcess({"check", "--json", good, bad, "/nowhere/m.pmml"});
    EXPECT_EQ(run.exitCode, 2);
    const Json report = Json::parse(run.out);
    ASSERT_EQ(report.size(), 3u);
    EXPECT_EQ(report.at(0).at("ok"), true);
    EXPECT_EQ(report.at(1).at("ok"), false);
    EXPECT_EQ(report.at(1).at("line"), 34);
    EXPECT_EQ(report.at(1).at("findings").size(), 2u);
    EXPECT_EQ(report.at(2).at("code"), 269101);
}

struct Ends {
    const char* about;
    std::string text;
    Texts options;
    int exitCode;
};

TEST_F(Check, EndsByTheFindingsAndTheStrictness)
{
    const Ends kEnds[] = {
        {"sound", kSound, {"--strict"}, 0},
        {"adapted for sure", ShortVersion(), {"--strict"}, 0},
        {"a doubt", Doubtful(), {}, 0},
        {"a doubt, strictly", Doubtful(), {"--strict"}, 5},
        {"faulty, strictly", Faulty(), {"--strict"}, 2},
        {"faults allowed", Faulty(), {"--allow", "misspelt-attribute"}, 2},
        {"as it is",
         Replaced(kSound, "usageType=\"active\"", "usagetype=\"active\""),
         {"--as-is"},
         0},
    };
    for (const Ends& ends : kEnds) {
        Texts arguments{"check", Write(ends.text)};
        arguments.insert(arguments.end(), ends.options.begin(), ends.options.end());
        const Answered run = RunInProcess(arguments);
        EXPECT_EQ(run.exitCode, ends.exitCode) << ends.about << "\n" << run.out << run.err;
        if (run.exitCode == 5) {
            EXPECT_EQ(run.err, "velscore: 1 of 1 documents leave a doubt (--strict)\n");
        }
    }
}

struct Refused {
    Texts arguments;
    const char* told;
};

TEST_F(Check, RefusesWhatHasNoMeaning)
{
    const std::string file = Write(kSound);
    const std::string other = folder_.Path("fixed.pmml");
    const Refused kRefused[] = {
        {{file, "-o", other}, "-o has a meaning with --fix alone"},
        {{"-", "-"}, "standard input (-) can be read once only"},
        {{"--fix", file, file}, "--fix writes one document; name one"},
        {{"--fix", file, "--json"}, "--fix writes a document, not a report as JSON"},
        {{"--fix", file, "--as-is"}, "--fix and --as-is don't go together"},
        {{"--fix", file, "-o", file}, "itself; write to another file"},
        {{file, "--allow", "no-such-rule"}, "--allow no-such-rule: "},
    };
    for (const Refused& refused : kRefused) {
        Texts arguments{"check"};
        arguments.insert(arguments.end(), refused.arguments.begin(), refused.arguments.end());
        const Answered run = RunInProcess(arguments, kSound);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find(refused.told), std::string::npos) << run.err;
        EXPECT_EQ(ReadFile(file), kSound);
    }
}

TEST_F(Check, FixWritesWhatIsRead)
{
    const std::string fixed = folder_.Path("fixed.pmml");
    const std::string file = Write(Replaced(Faulty(), "\"4.4\"", "\"4.4.1\""));
    const Answered run = RunInProcess({"check", "--fix", file, "-o", fixed});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("velscore: " + file +
                           ": line 34, column 7: Beta is now beta [misspelt-attribute]\n"),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("velscore: 3 changes written to " + fixed + "\n"), std::string::npos)
        << run.err;
    EXPECT_EQ(RunInProcess({"check", fixed}).out, fixed + ": OK, general linear model, target y\n");
}

TEST_F(Check, FixSaysWhatItDidOrThatThereWasNothing)
{
    const Answered none = RunInProcess({"check", "--fix", "-"}, kSound);
    EXPECT_EQ(none.exitCode, 0);
    EXPECT_EQ(none.err, "velscore: standard input: there was nothing to put right\n");
    EXPECT_NE(none.out.find("<PMML"), std::string::npos);
    const Answered one = RunInProcess({"check", "--fix", Write(ShortVersion())});
    EXPECT_NE(one.err.find("velscore: 1 change written to standard output\n"), std::string::npos)
        << one.err;
}

TEST_F(Check, FixWritesNothingWhereAFaultStays)
{
    const std::string fixed = folder_.Path("fixed.pmml");
    const std::string file = Write(Replaced(Faulty(), "\"continuous\"", "\"continious\""));
    const Answered run = RunInProcess({"check", "--fix", file, "-o", fixed});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find(file + ":5:5: "), std::string::npos) << run.err;
    EXPECT_FALSE(std::filesystem::exists(fixed));
}

TEST_F(Check, FixIsStrictToo)
{
    TestModel model;
    model.sexMining = R"(<MiningField name="sex" missingValueReplacement="q"/>)";
    const Answered notice = RunInProcess({"check", "--fix", "--strict", Write(model.Text())});
    EXPECT_EQ(notice.exitCode, 0) << notice.err;
    EXPECT_NE(notice.err.find("velscore: notice: standard output:"), std::string::npos)
        << notice.err;
}

}  // namespace
}  // namespace MCVelscore_850
