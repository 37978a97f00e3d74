// score and curve: outputs, rejects, what is said at the end, reports, and runs that end early.

#include <csignal>
#include <filesystem>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <nlohmann/json.hpp>

#include "cli/stopsignals.h"
#include "tests/cli/inprocess.h"
#include "tests/scratchfolder.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;
using Texts = std::vector<std::string>;

constexpr const char* kCox = "tests/data/cases/cox-veteran-strata/model.pmml";

Texts operator+(Texts all, const Texts& more)
{
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

// y = 1 + 2 x + 10 [sex = m]
class Score : public testing::Test {
protected:
    Score() : model_(folder_.Write("model.pmml", TestModel().Text())) {}

    std::string Path(const std::string& name) const { return folder_.Path(name); }
    Answered ScoreTable(const std::string& table, const Texts& options = {}) const
    {
        return RunInProcess(
            Texts{"score", model_, folder_.Write("cases.csv", table), "--prediction-only"} +
            options);
    }
    // Temporary files and notes in the folder.
    size_t Leftovers() const
    {
        size_t count = 0;
        for (const auto& file : fs::directory_iterator(folder_.Path())) {
            const std::string name = file.path().filename();
            count += name.find(".part") != std::string::npos || name.ends_with(".resume") ? 1 : 0;
        }
        return count;
    }
    // Rows of which the last has a field too few.
    static std::string TornTable(int rows)
    {
        std::string text = "x,sex\n";
        for (int i = 0; i < rows; ++i) text += "1,f\n";
        return text + "1\n";
    }

    const ScratchFolder folder_;
    const std::string model_;
};

TEST_F(Score, GoesFromStandardInputToStandardOutput)
{
    const Answered run = RunInProcess({"score", model_, "--prediction-only"}, "sex,x\nm,2\nf,1\n");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "prediction,status,status_field\n15,0,\n3,0,\n");
    EXPECT_EQ(run.err, "velscore: 2 of 2 cases scored\n");
    EXPECT_EQ(RunInProcess({"score", model_, "--quiet"}, "sex,x\nm,2\n").err, "");
}

TEST_F(Score, OfTheDocumentFromStandardInputTakesATable)
{
    const std::string cases = folder_.Write("cases.csv", "x,sex\n1,f\n");
    EXPECT_EQ(RunInProcess({"score", "-", cases, "--prediction-only"}, TestModel().Text()).out,
              "prediction,status,status_field\n3,0,\n");
    const Answered both = RunInProcess({"score", "-"}, TestModel().Text());
    EXPECT_EQ(both.exitCode, 1);
    EXPECT_NE(both.err.find("can't both come from standard input"), std::string::npos) << both.err;
}

TEST_F(Score, GoesToAFileThatHasItsNameWhenItIsWhole)
{
    const Answered run = ScoreTable("x,sex\n1,f\n", {"-o", Path("o.csv")});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(ReadFile(Path("o.csv")), "prediction,status,status_field\n3,0,\n");
    EXPECT_EQ(Leftovers(), 0u);
}

struct Closing {
    const char* about;
    const char* table;
    const char* line;
};

TEST_F(Score, SaysAtItsEndWhatIsNotScored)
{
    const Closing kClosings[] = {
        {"a value that is missing", "x,sex\n1,f\n,m\n",
         "1 of 2 cases scored; 1 not scored: 1 with status 90029 (first: row 2, field x: empty)"},
        {"a category near one", "x,sex\n1,mm\n",
         "0 of 1 cases scored; 1 not scored: 1 with status 90029 (first: row 1, field sex: 'mm'; "
         "Did you mean 'm'?)"},
        {"codes in their order, the first row of each", "x,sex\n1,f\nabc,f\n2,z\n,f\nd,f\n",
         "1 of 5 cases scored; 4 not scored: 2 with status 90029 (first: row 3, field sex: 'z'), 2 "
         "with status 269050 (first: "},
    };
    for (const Closing& closing : kClosings) {
        const Answered run = ScoreTable(closing.table);
        EXPECT_EQ(run.exitCode, 0);
        EXPECT_EQ(run.err.find(std::string("velscore: ") + closing.line), 0u)
            << closing.about << "\n"
            << run.err;
        EXPECT_EQ(ScoreTable(closing.table, {"--strict"}).exitCode, 5) << closing.about;
    }
}

TEST_F(Score, TellsTheTableOfTheFirstRowWhereThereAreSeveral)
{
    const std::string one = folder_.Write("one.csv", "x,sex\n1,f\n");
    const std::string two = folder_.Write("two.csv", "x,sex\n1,f\n,f\n");
    const Answered run = RunInProcess({"score", model_, one, two});
    EXPECT_NE(run.err.find("(first: row 2 of " + two + ", field x: empty)"), std::string::npos)
        << run.err;
}

TEST_F(Score, TellsValuesThatTheDictionaryDoesNotList)
{
    TestModel accepting;
    accepting.sexMining = R"(<MiningField name="sex" invalidValueTreatment="asIs"/>)";
    folder_.Write("model.pmml", accepting.Text());
    const Answered one = ScoreTable("x,sex\n1,f\n2,z\n");
    EXPECT_EQ(one.err.find("velscore: 2 of 2 cases scored; column sex has 1 value that the model's "
                           "dictionary doesn't list ('z')\n"),
              0u)
        << one.err;
    const Answered more = ScoreTable("x,sex\n1,q\n2,r\n3,q\n4,mm\n5,t\n");
    EXPECT_EQ(
        more.err.find("velscore: 5 of 5 cases scored; column sex has 5 values that the "
                      "model's dictionary doesn't list ('q', 'r', 'mm'). Did you mean 'm'?\n"),
        0u)
        << more.err;
    EXPECT_EQ(ScoreTable("x,sex\n2,z\n", {"--strict"}).exitCode, 5);
}

TEST_F(Score, SetsBadRowsApart)
{
    const Answered run =
        ScoreTable("x,sex\n1,f\n1\nabc,f\n2,m\n", {"--rejects", Path("rejects.csv")});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "prediction,status,status_field\n3,0,\n,269053,\n,269050,x\n15,0,\n");
    const std::string cases = Path("cases.csv");
    EXPECT_EQ(ReadFile(Path("rejects.csv")),
              "file,row,byte_offset,column,code,class,text,record\n" + cases +
                  ",2,10,,269304,too few fields,,1\n" + cases +
                  ",3,12,x,269050,not a number,abc,\"abc,f\"\n");
}

TEST_F(Score, EndsBeforeTheRejectThatIsOneTooMany)
{
    const Answered run =
        ScoreTable("x,sex\n1,f\n1\n1\n2,m\n",
                   {"--rejects", Path("rejects.csv"), "--max-rejects", "1", "-o", Path("o.csv")});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_NE(run.err.find("[269326]"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("whole rows written before that: 2, in " + Path("o.csv.part")),
              std::string::npos)
        << run.err;
    EXPECT_NE(run.err.find("; the rejects among them in " + Path("rejects.csv.part")),
              std::string::npos)
        << run.err;
    EXPECT_FALSE(fs::exists(Path("o.csv")));
    EXPECT_EQ(Leftovers(), 3u);  // both, and the note
}

// What a run that ends early leaves, by where its output goes.
TEST_F(Score, SaysWhereItsRowsAreWhenItEndsEarly)
{
    const std::string table = TornTable(3);
    const Answered stream = ScoreTable(table);
    EXPECT_EQ(stream.exitCode, 3);
    EXPECT_EQ(stream.out, "prediction,status,status_field\n3,0,\n3,0,\n3,0,\n");
    EXPECT_TRUE(stream.err.ends_with("velscore: whole rows written before that: 3\n"))
        << stream.err;

    folder_.Write("o.csv", "as before\n");
    const Answered file = ScoreTable(table, {"-o", Path("o.csv")});
    EXPECT_EQ(file.exitCode, 3);
    EXPECT_NE(file.err.find("; " + Path("o.csv") +
                            " is as it was (--partial would give it these rows); --resume would go "
                            "on with them\n"),
              std::string::npos)
        << file.err;
    EXPECT_EQ(ReadFile(Path("o.csv")), "as before\n");
    EXPECT_EQ(Leftovers(), 2u);

    const Answered partial = ScoreTable(table, {"-o", Path("p.csv"), "--partial"});
    EXPECT_EQ(partial.exitCode, 3);
    EXPECT_TRUE(partial.err.ends_with("velscore: whole rows written before that: 3, in " +
                                      Path("p.csv") + "\n"))
        << partial.err;
    EXPECT_EQ(ReadFile(Path("p.csv")), stream.out);
    EXPECT_EQ(Leftovers(), 2u);  // those of the run before alone
}

TEST_F(Score, OfNoRowsLeavesNothing)
{
    const Answered run = ScoreTable("x,sex\n1\n", {"-o", Path("o.csv")});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_TRUE(run.err.ends_with("velscore: whole rows written before that: 0\n")) << run.err;
    EXPECT_EQ(Leftovers(), 0u);
}

// Names may be in any encoding, and so may those of a run that can be gone on with.
TEST_F(Score, EndsEarlyOfATableWhoseNameIsNoUtf8)
{
    const std::string cases = folder_.Write("caf\xE9.csv", TornTable(3));
    const Texts run{"score", model_, cases, "--prediction-only", "-o", Path("o.csv")};
    const Answered early = RunInProcess(run);
    EXPECT_EQ(early.exitCode, 3);
    EXPECT_NE(early.err.find("--resume would go on with them"), std::string::npos) << early.err;
    EXPECT_EQ(RunInProcess(run + Texts{"--resume"}).exitCode, 3);
}

TEST_F(Score, GoesOnWithARunThatEndedEarly)
{
    const Texts options{"-o", Path("o.csv"), "--rejects", Path("r.csv")};
    std::string table = "x,sex\n";
    std::string scores = "prediction,status,status_field\n";
    for (int i = 0; i < 100; ++i) {
        table += i % 10 == 9 ? "1\n" : "1,f\n";
        scores += i % 10 == 9 ? ",269053,\n" : "3,0,\n";
    }
    const Answered early = ScoreTable(table, options + Texts{"--resume", "--max-rejects", "4"});
    EXPECT_EQ(early.exitCode, 3);
    EXPECT_NE(early.err.find("velscore: there is no run to go on with; beginning with the first "
                             "row\n"),
              std::string::npos)
        << early.err;
    const Answered last = ScoreTable(table, options + Texts{"--resume"});
    EXPECT_EQ(last.exitCode, 0) << last.err;
    EXPECT_EQ(last.err.find("no run to go on with"), std::string::npos) << last.err;
    EXPECT_NE(last.err.find("90 of 100 cases scored; 10 not scored"), std::string::npos)
        << last.err;
    EXPECT_EQ(ReadFile(Path("o.csv")), scores);
    EXPECT_EQ(Leftovers(), 0u);
    // An ended run leaves none to go on with, and a quiet one doesn't say so.
    EXPECT_EQ(ScoreTable(table, options + Texts{"--resume", "--quiet"}).err, "");
}

struct Refused {
    Texts arguments;
    int exitCode;
    std::string told;
};

TEST_F(Score, RefusesStreamsThatCannotBeResumed)
{
    const std::string cases = folder_.Write("cases.csv", "x,sex\n1,f\n");
    const std::string out = Path("o.csv");
    const std::string stream =
        "--resume goes on with a file, -o FILE, from tables that are files; a stream can't be read "
        "or written again";
    const Refused kRefused[] = {
        {{"score", model_, cases, "--resume"}, 1, stream},
        {{"score", model_, "-", "-o", out, "--resume"}, 1, stream},
        {{"score", model_, cases, "-o", out, "--rejects", "-", "--resume"}, 1, stream},
        {{"score", model_, Path("none.csv"), "-o", out, "--resume"}, 3, "none.csv can't be read"},
    };
    for (const Refused& refused : kRefused) {
        const Answered run = RunInProcess(refused.arguments);
        EXPECT_EQ(run.exitCode, refused.exitCode);
        EXPECT_NE(run.err.find(refused.told), std::string::npos) << run.err;
    }
}

TEST_F(Score, RefusesOutputsThatAreInputsOrEachOther)
{
    const std::string cases = folder_.Write("cases.csv", "x,sex\n1,f\n");
    const std::string out = Path("o.csv");
    const auto itself = [](const std::string& name) {
        return "the output is the input " + name + " itself";
    };
    const auto twice = [](const std::string& name) {
        return name + " is to be two outputs at once";
    };
    const Refused kRefused[] = {
        {{"-o", cases}, 1, itself(cases)},
        {{"-o", model_}, 1, itself(model_)},
        {{"--rejects", cases}, 1, itself(cases)},
        {{"--summary", model_}, 1, itself(model_)},
        {{"-o", out, "--rejects", out}, 1, twice(out)},
        {{"--rejects", out, "--summary", out}, 1, twice(out)},
        {{"--rejects", "-"}, 1, twice("standard output")},
        {{"-o", out, "--rejects", "-", "--summary", "-"}, 1, twice("standard output")},
    };
    for (const Refused& refused : kRefused) {
        const Answered run = RunInProcess(Texts{"score", model_, cases} + refused.arguments);
        EXPECT_EQ(run.exitCode, refused.exitCode);
        EXPECT_NE(run.err.find(refused.told), std::string::npos) << run.err;
        EXPECT_EQ(ReadFile(cases), "x,sex\n1,f\n");
        EXPECT_FALSE(fs::exists(out));
    }
}

TEST_F(Score, FailsWithTheKindOfItsFailure)
{
    const std::string cases = folder_.Write("cases.csv", "x,sex\n1,f\n");
    const Refused kRefused[] = {
        {{"score", Path("none.pmml"), cases}, 2, "none.pmml can't be read"},
        {{"score", model_, Path("none.csv")}, 3, "none.csv can't be read"},
        {{"score", model_, folder_.Write("other.csv", "a,b\n1,2\n")},
         3,
         "has no column 'sex', 'x'"},
        {{"score", model_, cases, "-o", Path("no/o.csv")}, 4, "no/o.csv can't be written"},
        {{"score", model_, cases, "-o", "/dev/full"}, 4, "[269312]"},
        {{"score", model_, cases, "-o", Path("o.csv"), "--summary", "/dev/full"}, 4, "[269312]"},
        {{"score", model_, cases, "--plugin", "/nowhere/p.so"}, 1, "--plugin"},
        {{"score", model_, cases, "--keep", "sexx"}, 1, "Did you mean 'sex'?"},
    };
    for (const Refused& refused : kRefused) {
        const Answered run = RunInProcess(refused.arguments);
        EXPECT_EQ(run.exitCode, refused.exitCode);
        EXPECT_NE(run.err.find(refused.told), std::string::npos) << run.err;
    }
}

TEST_F(Score, WritesTheDocumentsOwnColumns)
{
    TestModel model;
    model.afterSchema = "<Output><OutputField name='fit' feature='predictedValue'/></Output>";
    const std::string document = folder_.Write("output.pmml", model.Text());
    EXPECT_EQ(RunInProcess({"score", document, "--output", "document"}, "x,sex\n2,m\n").out,
              "fit,status,status_field\n15,0,\n");
    EXPECT_EQ(RunInProcess({"score", model_, "--output", "document"}, "x,sex\n2,m\n").exitCode, 2);
}

TEST_F(Score, TellsFindingsOfTheDocumentBehindTheClosingLine)
{
    const std::string file =
        folder_.Write("notices.pmml", Replaced(Replaced(TestModel().Text(), "\"4.4\"", "\"4.4.1\""),
                                               "<Header/>", "<Header/><E1/><E2/><E3/><E4/><E5/>"));
    const Answered run = RunInProcess({"score", file}, "x,sex\n1,f\n");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(
        run.err.starts_with("velscore: 1 of 1 cases scored\nvelscore: notice: " + file + ":"))
        << run.err;
    for (const char* part :
         {"\"E1\"", "\"E2\"", "\"E3\"", "velscore: 2 more notices; velscore check shows them\n"}) {
        EXPECT_NE(run.err.find(part), std::string::npos) << run.err;
    }
    EXPECT_EQ(run.err.find("\"E4\""), std::string::npos) << run.err;
    EXPECT_TRUE(run.err.ends_with("velscore: " + file +
                                  " was adapted (short-version); velscore check tells how\n"))
        << run.err;
}

TEST_F(Score, ReportsARunAsJson)
{
    const std::string two = folder_.Write("two.csv", "x,sex\n2,m\n,f\n");
    const Answered run =
        ScoreTable("x,sex\n1,f\n,m\n1,q\n1\n", {two, "--rejects", Path("r.csv"), "--summary",
                                                Path("s.json"), "--threads", "2", "--strict"});
    EXPECT_EQ(run.exitCode, 5) << run.err;
    const std::string cases = Path("cases.csv");
    const Json report = Json::parse(ReadFile(Path("s.json")));
    EXPECT_EQ(report.at("velscore"), VELSCORE_VERSION);
    EXPECT_EQ(report.at("document"), model_);
    EXPECT_EQ(report.at("documentVersion"), "4.4");
    EXPECT_EQ(report.at("documentSha256").get<std::string>().size(), 64u);
    EXPECT_EQ(report.at("tables"), Json({cases, two}));
    EXPECT_EQ(report.at("rows"), 6);
    EXPECT_EQ(report.at("scored"), 2);
    EXPECT_EQ(report.at("rejected"), 4);
    EXPECT_EQ(report.at("rowsWritten"), 6);
    EXPECT_EQ(report.at("exitCode"), 5);
    EXPECT_EQ(report.at("error"), nullptr);
    EXPECT_EQ(report.at("interrupted"), false);
    EXPECT_EQ(report.at("threads"), 2);
    const auto first = [](const std::string& table, int row, const Json& text) {
        return Json{{"table", table}, {"row", row}, {"text", text}};
    };
    EXPECT_EQ(report.at("notScored"),
              Json::array({{{"status", 90029},
                            {"field", "sex"},
                            {"count", 1},
                            {"first", Json::array({first(cases, 3, "q")})}},
                           {{"status", 90029},
                            {"field", "x"},
                            {"count", 2},
                            {"first", Json::array({first(cases, 2, ""), first(two, 2, "")})}},
                           {{"status", 269053},
                            {"field", nullptr},
                            {"count", 1},
                            {"first", Json::array({first(cases, 4, nullptr)})}}}));
    EXPECT_DOUBLE_EQ(
        report.at("rowsPerSecond").get<double>() * report.at("seconds").at("total").get<double>(),
        6.0);
}

TEST_F(Score, ReportsUnlistedValuesAndWhatEndedIt)
{
    TestModel accepting;
    accepting.sexMining = R"(<MiningField name="sex" invalidValueTreatment="asIs"/>)";
    folder_.Write("model.pmml", accepting.Text());
    const Answered run = ScoreTable("x,sex\n1,\xE9\n1\n", {"--summary", Path("s.json")});
    EXPECT_EQ(run.exitCode, 3);
    const Json report = Json::parse(ReadFile(Path("s.json")));
    EXPECT_EQ(report.at("exitCode"), 3);
    EXPECT_EQ(report.at("error").at("code"), 269304);
    EXPECT_EQ(report.at("error").at("message"),
              Path("cases.csv") + ": row 2 has 1 fields, the header 2");
    EXPECT_EQ(report.at("error").at("remedy"), "Mend the table and score it again.");
    // Bytes that are no text stand for themselves no more.
    EXPECT_EQ(report.at("unlisted"), Json::array({{{"column", "sex"},
                                                   {"count", 1},
                                                   {"first", Json::array({"\xEF\xBF\xBD"})},
                                                   {"oneMayBeReference", false}}}));
}

TEST_F(Score, OfCurvesWritesEachStep)
{
    const Answered run = RunInProcess({"curve", kCox, "--times", "0,30", "--wide"},
                                      "trt,karno,celltype\n1,60,adeno\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(run.out.starts_with("row,survival@0,survival@30\n1,1,0.")) << run.out;
    const Answered steps =
        RunInProcess({"curve", kCox}, "trt,karno,celltype\n1,60,adeno\n1,,adeno\n");
    EXPECT_EQ(std::count(steps.out.begin(), steps.out.end(), '\n'), 1 + 25 + 1);
    EXPECT_TRUE(steps.out.starts_with("row,time,survival,cum_hazard\n1,3,0.")) << steps.out;
    EXPECT_TRUE(steps.out.ends_with("\n2,,,\n")) << steps.out;
    const Answered linear = RunInProcess({"curve", model_}, "sex,x\nm,2\n");
    EXPECT_EQ(linear.exitCode, 1);
    EXPECT_NE(linear.err.find("has no survival curves"), std::string::npos) << linear.err;
}

TEST_F(Score, TellsProgressWhereItIsWanted)
{
    // Ten seconds don't pass here: that the option is taken is all there is to see.
    EXPECT_EQ(ScoreTable("x,sex\n1,f\n", {"--progress"}).err, "velscore: 1 of 1 cases scored\n");
}

// The stop flag stays raised: in processes of their own.
class InterruptedScore : public Score {
protected:
    InterruptedScore() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
    // Ends as the command would that gets this signal before its first row.
    [[noreturn]] void ScoreStopped(int signal, const Texts& options) const
    {
        CatchStopSignals();
        std::raise(signal);
        const Answered run = ScoreTable("x,sex\n1,f\n", options);
        std::fputs(run.err.c_str(), stderr);
        std::exit(run.exitCode);
    }
};

TEST_F(InterruptedScore, EndsWithTheSignalsCodeAndSaysHowFarItCame)
{
    EXPECT_EXIT(ScoreStopped(SIGINT, {}), testing::ExitedWithCode(130),
                "^velscore: interrupted; whole rows written: 0\n$");
    EXPECT_EXIT(ScoreStopped(SIGTERM, {"-o", Path("o.csv")}), testing::ExitedWithCode(143),
                "^velscore: interrupted; whole rows written: 0\n$");
    EXPECT_EXIT(ScoreStopped(SIGHUP, {"--summary", Path("s.json")}), testing::ExitedWithCode(129),
                "^velscore: interrupted; whole rows written: 0\n$");
}

}  // namespace
}  // namespace MCVelscore_850
