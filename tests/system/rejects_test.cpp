// Rows that can't be read or have no score, in the table of --rejects, and what becomes of the
// output meanwhile.

#include <gtest/gtest.h>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;
using namespace std::string_literals;

const std::string kHeader = "file,row,byte_offset,column,code,class,text,record\n";

// A row of a table and what is told of it.
struct BadRow {
    std::string row;
    std::string column;
    int code;
    std::string word;     // the class
    std::string text;     // what stands in the column
    std::string written;  // the row, as the table of rejects has it
};

class Rejects : public testing::Test {
protected:
    Rejects() : model_(folder_.Write("model.pmml", TestModel().Text())) {}

    Finished Score(const std::string& table, const Texts& options) const
    {
        Texts arguments{"score", model_, folder_.Write("cases.csv", table), "--prediction-only"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return RunVelscore(arguments);
    }
    // Scores these rows, a sound one before each, and compares both tables.
    void Expect(const std::string& header, const std::string& sound, const std::string& score,
                const std::vector<BadRow>& rows) const
    {
        std::string table = header + "\n";
        std::string output = "prediction,status,status_field\n";
        std::string rejects = kHeader;
        int number = 0;
        for (const BadRow& bad : rows) {
            table += sound + "\n";
            output += score + ",0,\n";
            number += 2;
            rejects += "cases.csv,"s + std::to_string(number) + "," + std::to_string(table.size()) +
                       "," + bad.column + "," + std::to_string(bad.code) + "," + bad.word + "," +
                       bad.text + "," + bad.written + "\n";
            table += bad.row + "\n";
            const bool torn = bad.column.empty() && bad.code > 269300;
            output += ","s + std::to_string(torn ? 269053 : bad.code) + "," + bad.column + "\n";
        }
        const std::string file = folder_.Path("rejects.csv");
        const Finished run = Score(table, {"--rejects", file});
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(run.out, output);
        std::string written = ReadFile(file);
        for (size_t at = 0; (at = written.find(folder_.Path() + "/", at)) != std::string::npos;) {
            written.erase(at, folder_.Path().size() + 1);
        }
        EXPECT_EQ(written, rejects);
    }

    ScratchFolder folder_;
    std::string model_;
};

TEST_F(Rejects, TellTheirPlaceTheirClassAndTheRowItself)
{
    const std::string tooLong((size_t{1} << 20) + 1, 'a');
    Expect("x,sex", "1,f", "3",
           {{"1", "", 269304, "too few fields", "", "1"},
            {"1,f,9", "", 269304, "too many fields", "", "\"1,f,9\""},
            {"", "", 269304, "too few fields", "", ""},
            {"\"1,f", "", 269305, "open quote", "", "\"\"\"1,f\""},
            {"1\"2,f", "", 269308, "stray quote", "", "\"1\"\"2,f\""},
            {"1,\"f\"x", "", 269308, "stray quote", "", "\"1,\"\"f\"\"x\""},
            {"1,\xE9", "", 269325, "encoding", "", "\"1,\\xE9\""},
            {"1,\0m"s, "", 269306, "encoding", "", "\"1,\\x00m\""},
            {"1," + tooLong, "", 269309, "too long", "", "\"1," + tooLong + "\""},
            {"abc,m", "x", 269050, "not a number", "abc", "\"abc,m\""},
            {",m", "x", 90029, "missing", "", "\",m\""},
            {"1,NA", "sex", 90029, "missing", "NA", "\"1,NA\""},
            {"1,q", "sex", 90029, "invalid", "q", "\"1,q\""},
            {"1,\xC3\xA9", "sex", 90029, "invalid", "\xC3\xA9", "\"1,\xC3\xA9\""},
            {"1,\"a,b\"", "sex", 90029, "invalid", "\"a,b\"", "\"1,\"\"a,b\"\"\""}});
}

TEST_F(Rejects, TellOfDates)
{
    std::string text = TestModel().Text();
    const std::string type = R"(name="x" optype="continuous" dataType="double")";
    text.replace(text.find(type), type.size(),
                 R"(name="x" optype="continuous" dataType="dateDaysSince[1970]")");
    folder_.Write("model.pmml", text);
    // 1 + 2 * 10 days
    Expect("x,sex", "1970-01-11,f", "21",
           {{"1970-13-01,f", "x", 269051, "not a date", "1970-13-01", "\"1970-13-01,f\""},
            {",f", "x", 90029, "missing", "", "\",f\""}});
}

TEST_F(Rejects, TellOfValuesThatTheDocumentRefuses)
{
    TestModel model;
    model.sexMining = R"(<MiningField name="sex" invalidValueTreatment="returnInvalid"/>)";
    folder_.Write("model.pmml", model.Text());
    Expect("x,sex", "1,f", "3", {{"1,q", "sex", 269052, "invalid", "q", "\"1,q\""}});
}

// A row whose fields are all sound has none to blame: its derived one can't be computed.
TEST_F(Rejects, TellOfRowsThatTheModelRefuses)
{
    std::string text = TestModel().Text();
    const auto replace = [&](const std::string& from, const std::string& to) {
        text.replace(text.find(from), from.size(), to);
    };
    replace("<DataField name=\"sex\"",
            "<DataField name=\"z\" optype=\"continuous\" dataType=\"double\"/>"
            "<DataField name=\"sex\"");
    replace("<MiningField name=\"sex\"", "<MiningField name=\"z\"/><MiningField name=\"sex\"");
    replace("<ParameterList>",
            "<LocalTransformations><DerivedField name='made' optype='continuous' "
            "dataType='double'><Apply function='/'><FieldRef field='x'/><FieldRef field='z'/>"
            "</Apply></DerivedField></LocalTransformations><ParameterList>");
    replace("<CovariateList><Predictor name=\"x\"/>", "<CovariateList><Predictor name=\"made\"/>");
    replace("predictorName=\"x\"", "predictorName=\"made\"");
    folder_.Write("model.pmml", text);
    Expect("x,z,sex", "6,2,f", "7",
           {{"6,0,f", "made", 90029, "refused by the model", "", "\"6,0,f\""},
            {"6,,f", "z", 90029, "missing", "", "\"6,,f\""}});
}

TEST_F(Rejects, AreFromOneTableAfterTheOther)
{
    const std::string one = folder_.Write("one.csv", "x,sex\n1,f\n1\n");
    const std::string two = folder_.Write("two.csv", "x,sex\n1\nabc,f\n");
    const std::string rejects = folder_.Path("rejects.csv");
    const Finished run = RunVelscore({"score", model_, one, two, "--rejects", rejects, "--keep",
                                      "all", "--name-column", "table", "--prediction-only"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "table,x,sex,prediction,status,status_field\n" + one + ",1,f,3,0,\n" + one +
                           ",,,,269053,\n" + two + ",,,,269053,\n" + two + ",abc,f,,269050,x\n");
    EXPECT_EQ(ReadFile(rejects), kHeader + one + ",2,10,,269304,too few fields,,1\n" + two +
                                     ",1,6,,269304,too few fields,,1\n" + two +
                                     ",2,8,x,269050,not a number,abc,\"abc,f\"\n");
    EXPECT_EQ(run.err,
              "velscore: 1 of 4 cases scored; 3 not scored: 1 with status 269050 (first: 'abc' in "
              "the field x of row 2 of " +
                  two + " is not a number), 2 with status 269053 (first: row 2 of " + one + ")\n");
}

TEST_F(Rejects, KeepTheOutputsDialectAndItsOwn)
{
    const std::string rejects = folder_.Path("rejects.csv");
    const Finished run = Score("x;sex\n1,5;f\n1.5;f\n",
                               {"--delimiter", ";", "--decimal", ",", "--rejects", rejects});
    EXPECT_EQ(run.out, "prediction;status;status_field\n4;0;\n;269050;x\n") << run.err;
    EXPECT_EQ(ReadFile(rejects),
              kHeader + folder_.Path("cases.csv") + ",2,12,x,269050,not a number,1.5,1.5;f\n");
}

TEST_F(Rejects, MayBeNone)
{
    const std::string rejects = folder_.Path("rejects.csv");
    EXPECT_EQ(Score("x,sex\n1,f\n", {"--rejects", rejects, "--max-rejects", "0"}).exitCode, 0);
    EXPECT_EQ(ReadFile(rejects), kHeader);
}

TEST_F(Rejects, MakeAStrictRunEndWithFive)
{
    for (const char* row : {"1", "abc,f"}) {
        const std::string table = "x,sex\n1,f\n"s + row + "\n";
        const std::string rejects = folder_.Path("rejects.csv");
        EXPECT_EQ(Score(table, {"--rejects", rejects}).exitCode, 0) << row;
        EXPECT_EQ(Score(table, {"--rejects", rejects, "--strict"}).exitCode, 5) << row;
    }
}

TEST_F(Rejects, AreCompressedAsTheirNameSays)
{
    for (const auto& [name, command] :
         {std::pair{"rejects.csv.gz", "gzip -dc"}, std::pair{"rejects.csv.zst", "zstd -dcq"}}) {
        const std::string file = folder_.Path(name);
        EXPECT_EQ(Score("x,sex\n1,f\n1\n", {"--rejects", file}).exitCode, 0);
        const Finished unpacked = RunProgram({"/bin/sh", "-c", command + " <\"$0\""s, file});
        EXPECT_EQ(unpacked.out,
                  kHeader + folder_.Path("cases.csv") + ",2,10,,269304,too few fields,,1\n");
    }
}

TEST_F(Rejects, MayGoToStandardOutput)
{
    const std::string out = folder_.Path("scores.csv");
    const Finished run = Score("x,sex\n1,f\n1\n", {"--rejects", "-", "-o", out});
    EXPECT_EQ(run.out, kHeader + folder_.Path("cases.csv") + ",2,10,,269304,too few fields,,1\n");
    EXPECT_EQ(ReadFile(out), "prediction,status,status_field\n3,0,\n,269053,\n");
}

struct Allowed {
    int most;
    int exitCode;
    std::string output;  // rows
    std::string rejects;
    std::string told;
};

void PrintTo(const Allowed& allowed, std::ostream* out) { *out << allowed.most; }

class MostRejects : public Rejects, public testing::WithParamInterface<Allowed> {};

TEST_P(MostRejects, EndTheRunBeforeOneMore)
{
    const Allowed& allowed = GetParam();
    const std::string out = folder_.Path("scores.csv");
    const std::string rejects = folder_.Path("rejects.csv");
    const Finished run = Score("x,sex\n1,f\n1\n2,f\nabc,f\n3,f\n",
                               {"--rejects", rejects, "--max-rejects", std::to_string(allowed.most),
                                "--partial", "-o", out});
    EXPECT_EQ(run.exitCode, allowed.exitCode);
    EXPECT_EQ(ReadFile(out), "prediction,status,status_field\n" + allowed.output);
    std::string told = allowed.told;
    for (size_t at = 0; (at = told.find('@', at)) != std::string::npos;) {
        told.replace(at, 1, folder_.Path() + "/");
    }
    EXPECT_EQ(run.err, told);
    if (!allowed.rejects.empty()) {
        EXPECT_EQ(ParseCsv(ReadFile(rejects)).Texts("row"), Texts({allowed.rejects})) << run.err;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, MostRejects,
    testing::Values(
        Allowed{0, 3, "3,0,\n", "",
                "velscore: error: @cases.csv: row 2 would be rejected, one more than the 0 allowed "
                "[269326]\n  what to do: Mend the table, or allow more with --max-rejects.\n"
                "velscore: whole rows written before that: 1, in @scores.csv\n"},
        Allowed{1, 3, "3,0,\n,269053,\n5,0,\n", "2",
                "velscore: error: @cases.csv: row 4 would be rejected, one more than the 1 allowed "
                "[269326]\n  what to do: Mend the table, or allow more with --max-rejects.\n"
                "velscore: whole rows written before that: 3, in @scores.csv; the rejects among "
                "them in @rejects.csv\n"},
        Allowed{2, 0, "3,0,\n,269053,\n5,0,\n,269050,x\n7,0,\n", "",
                "velscore: 3 of 5 cases scored; 2 not scored: 1 with status 269050 (first: 'abc' "
                "in the field x of row 4 is not a number), 1 with status 269053 (first: row "
                "2)\n"}),
    [](const auto& test) { return "Of" + std::to_string(test.param.most); });

TEST_F(Rejects, OfCurvesHaveALineOfTheirOwnInTheOutput)
{
    const std::string rejects = folder_.Path("rejects.csv");
    const std::string cases =
        folder_.Write("cases.csv", "time,trt,karno,celltype\n72,1\n72,1,,adeno\n72,1,60,adeno\n");
    const Finished run = RunVelscore(
        {"curve", DataFile("cases/cox-veteran-strata/model.pmml"), cases, "--rejects", rejects});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_TRUE(run.out.starts_with("row,time,survival,cum_hazard\n1,,,\n2,,,\n3,3,0.")) << run.out;
    EXPECT_EQ(ReadFile(rejects), kHeader + cases + ",1,24,,269304,too few fields,,\"72,1\"\n" +
                                     cases + ",2,29,karno,90029,missing,,\"72,1,,adeno\"\n");
}

TEST_F(Rejects, GoToAFileOfTheirOwn)
{
    const std::string cases = folder_.Write("cases.csv", "x,sex\n1,f\n");
    const std::string out = folder_.Path("scores.csv");
    const std::string link = folder_.Path("link.csv");
    ASSERT_EQ(RunProgram({"/bin/ln", "-s", "scores.csv", link}).exitCode, 0);
    struct Wrong {
        Texts options;
        const char* told;
    };
    const std::vector<Wrong> kWrong = {
        {{"--rejects", cases}, "itself; write to another file"},
        {{"--rejects", model_}, "itself; write to another file"},
        {{"--summary", cases}, "itself; write to another file"},
        {{"--rejects", out, "-o", out}, "scores.csv is to be two outputs at once; name two files"},
        {{"--rejects", link, "-o", out}, "link.csv is to be two outputs at once"},
        {{"--rejects", folder_.Path() + "/./scores.csv", "-o", out}, "is to be two outputs"},
        {{"--summary", out, "-o", out}, "is to be two outputs at once"},
        {{"--rejects", out, "--summary", out}, "is to be two outputs at once"},
        {{"--rejects", "-"}, "standard output is to be two outputs at once"},
        {{"--rejects", "/dev/stdout"}, "standard output is to be two outputs at once"},
        {{"--summary", "-"}, "standard output is to be two outputs at once"},
        {{"--rejects", "-", "--summary", "-", "-o", out}, "standard output is to be two outputs"},
        {{"--max-rejects", "3"}, "--max-rejects has a meaning with --rejects alone"},
        {{"--rejects", out, "--max-rejects", "-1"}, "'-1' is no whole number of 0 or more"},
        {{"--rejects", out, "--max-rejects", "1.5"}, "'1.5' is no whole number of 0 or more"},
        {{"--rejects", ""}, "--rejects: the text is empty"}};
    const std::string model = ReadFile(model_);
    for (const Wrong& wrong : kWrong) {
        const Finished run = Score("x,sex\n1,f\n", wrong.options);
        EXPECT_EQ(run.exitCode, 1) << wrong.options[1];
        EXPECT_EQ(run.out, "") << wrong.options[1];
        EXPECT_NE(run.err.find(wrong.told), std::string::npos) << run.err;
        EXPECT_EQ(ReadFile(cases), "x,sex\n1,f\n");
        EXPECT_EQ(ReadFile(model_), model);
    }
}

TEST_F(Rejects, MayGoWhereNobodyReads)
{
    const Finished run = Score(
        "x,sex\n1,f\n1\n", {"--rejects", "/dev/null", "--summary", "/dev/null", "-o", "/dev/null"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
}

TEST_F(Rejects, ThatCannotBeWrittenAreToldBeforeScoring)
{
    const std::string out = folder_.Write("scores.csv", "precious\n");
    for (const char* option : {"--rejects", "--summary"}) {
        const Finished run = Score("x,sex\n1,f\n", {option, folder_.Path("none/file"), "-o", out});
        EXPECT_EQ(run.exitCode, 4);
        EXPECT_NE(run.err.find("none/file can't be written"), std::string::npos) << run.err;
        EXPECT_NE(run.err.find("whole rows written before that: 0\n"), std::string::npos)
            << run.err;
        EXPECT_EQ(ReadFile(out), "precious\n");
        EXPECT_EQ(Score("x,sex\n1,f\n", {option, "/dev/full"}).exitCode, 4);
    }
}

}  // namespace
}  // namespace MCVelscore_850
