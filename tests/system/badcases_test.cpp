// Tables that can't be read or hold what can't be scored: exit code, message, and the rows that
// could be scored all the same.

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

class BadCases : public testing::Test {
protected:
    BadCases() : model_(folder_.Write("model.pmml", TestModel().Text())) {}
    Finished Score(const std::string& table, std::vector<std::string> options = {})
    {
        options.insert(options.begin(), {"score", model_, folder_.Write("cases.csv", table)});
        return RunVelscore(options);
    }
    static bool Says(const Finished& run, const std::string& text)
    {
        return run.err.find(text) != std::string::npos;
    }

    ScratchFolder folder_;
    std::string model_;
};

const std::string kHeaderOut = "prediction,std_dev,ci_lower,ci_upper,status,status_field\n";

TEST_F(BadCases, EmptyTableHasNoHeader)
{
    const Finished run = Score("");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(Says(run, "cases.csv")) << run.err;
    EXPECT_TRUE(Says(run, "header")) << run.err;
    EXPECT_TRUE(Says(run, "what to do:")) << run.err;
}

TEST_F(BadCases, HeaderAloneScoresNoCase)
{
    const Finished run = Score("x,sex\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, kHeaderOut);
    EXPECT_TRUE(Says(run, "0 of 0 cases scored")) << run.err;
}

TEST_F(BadCases, MissingColumnIsNamedBesideTheColumnsFound)
{
    const Finished run = Score("x,gender\n1,f\n");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(Says(run, "'sex'")) << run.err;
    EXPECT_TRUE(Says(run, "x, gender")) << run.err;
}

TEST_F(BadCases, MisspeltColumnIsSuggested)
{
    TestModel model;
    std::string text = model.Text();
    for (size_t at = 0; (at = text.find("\"x\"", at)) != std::string::npos;) {
        text.replace(at, 3, "\"weight\"");
    }
    model_ = folder_.Write("weight.pmml", text);
    const Finished run = Score("id,wieght,Sex\n1,2,f\n");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_TRUE(Says(run, "'wieght' for 'weight'")) << run.err;
    EXPECT_TRUE(Says(run, "'Sex' for 'sex'")) << run.err;
    // A column that the model reads stands for itself.
    EXPECT_FALSE(Says(Score("x,sex\n1,f\n"), "Did you mean"));
}

TEST_F(BadCases, OneColumnThatHoldsSeveralTellsTheDelimiter)
{
    struct Sample {
        const char* table;
        std::vector<std::string> options;
        const char* told;
    };
    for (const Sample& sample :
         {Sample{"x;sex\n1;f\n", {}, "give --delimiter ';'"},
          Sample{"x\tsex\n1\tf\n", {}, "give --delimiter tab"},
          Sample{"x,sex\n1,f\n", {"--delimiter", ";"}, "give --delimiter ','"},
          Sample{"\"x\";\"sex\"\n1;f\n", {}, "give --delimiter ';'"}}) {
        const Finished run = Score(sample.table, sample.options);
        EXPECT_EQ(run.exitCode, 3) << sample.table;
        EXPECT_TRUE(Says(run, sample.told)) << run.err;
    }
    EXPECT_FALSE(Says(Score("x\n1\n"), "--delimiter"));
}

TEST_F(BadCases, TheModelInPlaceOfTheTableIsToldAsSuch)
{
    const Finished run = RunVelscore({"score", model_, model_});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_TRUE(Says(run, "model.pmml is a model document")) << run.err;
    EXPECT_TRUE(Says(run, "behind the model")) << run.err;
}

TEST_F(BadCases, CompressionThatIsNotReadIsToldAsSuch)
{
    const Finished run = Score("BZh91AY&SY");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_TRUE(Says(run, "cases.csv is compressed by bzip2")) << run.err;
    EXPECT_TRUE(Says(run, "bzip2 -dc")) << run.err;
}

TEST_F(BadCases, MisspeltCategoryIsSuggested)
{
    TestModel model;
    model.sexField = R"(<DataField name="sex" optype="categorical" dataType="string">
      <Extension extender="velscore" name="unlistedCategories" value="accept"/>
      <Value value="f"/><Value value="m"/><Value value="unknown"/></DataField>)";
    model_ = folder_.Write("accepting.pmml", model.Text());
    Finished run = Score("x,sex\n1,f\n1,unknwon\n");
    EXPECT_TRUE(Says(run, "('unknwon'). Did you mean 'unknown'?")) << run.err;
    model.sexField = R"(<DataField name="sex" optype="categorical" dataType="string">
      <Value value="f"/><Value value="m"/><Value value="unknown"/></DataField>)";
    model.sexMining =
        R"(<MiningField name="sex" usageType="active" invalidValueTreatment="returnInvalid"/>)";
    model_ = folder_.Write("refusing.pmml", model.Text());
    run = Score("x,sex\n1,f\n1,unknwon\n");
    EXPECT_TRUE(Says(run, "Did you mean 'unknown'?")) << run.err;
}

TEST_F(BadCases, MissingColumnOfAWideTableIsToldInAShortMessage)
{
    std::string header = "x";
    for (int i = 0; i < 20000; ++i) header += ",column " + std::to_string(i);
    const Finished run = Score(header + "\n");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_TRUE(Says(run, "'sex'")) << run.err;
    EXPECT_TRUE(Says(run, "column 0")) << run.err;
    EXPECT_LT(run.err.size(), 2000u);
}

TEST_F(BadCases, TextOfAFieldIsToldShortAndInOneLine)
{
    const Finished run =
        Score("x,sex\n\"two\nlines \x1b[31m " + std::string(900000, 'x') + "\",f\n");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_TRUE(Says(run, "'two")) << run.err.substr(0, 2000);
    EXPECT_TRUE(Says(run, "is not a number")) << run.err.substr(0, 2000);
    EXPECT_LT(run.err.size(), 500u);
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1);
    EXPECT_FALSE(Says(run, "\x1b"));
}

TEST_F(BadCases, TableWithoutAHeaderLacksTheColumns)
{
    const Finished run = Score("1,f\n2,m\n");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_TRUE(Says(run, "has no column 'sex', 'x'")) << run.err;
}

TEST_F(BadCases, RefusedTableLeavesTheOutputFileAlone)
{
    const std::string out = folder_.Write("scores.csv", "precious\n");
    EXPECT_EQ(Score("x,gender\n1,f\n", {"-o", out}).exitCode, 3);
    EXPECT_EQ(ReadFile(out), "precious\n");
}

struct Fault {
    const char* name;
    std::string table;  // one good row (prediction 3), then the fault
    const char* message;
};

class FaultInMidTable : public BadCases, public testing::WithParamInterface<Fault> {};

TEST_P(FaultInMidTable, WritesTheRowsBeforeItAndSaysWhere)
{
    const Finished run = Score(GetParam().table);
    EXPECT_EQ(run.exitCode, 3);
    const CsvText scores = ParseCsv(run.out);
    EXPECT_EQ(scores.Texts("prediction"), (std::vector<std::string>{"3"}));
    EXPECT_EQ(run.out.back(), '\n');
    EXPECT_TRUE(Says(run, GetParam().message)) << run.err;
    EXPECT_TRUE(Says(run, "row 2")) << run.err;
    EXPECT_TRUE(Says(run, "whole rows written before that: 1")) << run.err;
}

INSTANTIATE_TEST_SUITE_P(
    Tables, FaultInMidTable,
    testing::Values(Fault{"TooShort", "x,sex\n1,f\n2\n", "has 1 fields, the header 2"},
                    Fault{"TooLong", "x,sex\n1,f\n2,m,3\n", "has 3 fields, the header 2"},
                    Fault{"BlankLineInside", "x,sex\n1,f\n\n2,m\n", "has 0 fields, the header 2"},
                    Fault{"UnclosedQuote", "x,sex\n1,f\n2,\"m\n3,f\n4,f\n", "never closed"},
                    Fault{"StrayQuote", "x,sex\n1,f\n2,m\"x\n", "quote"},
                    Fault{"NulByte", std::string("x,sex\n1,f\n2,\0\n", 14), "NUL"}),
    [](const auto& each) { return each.param.name; });

TEST_F(BadCases, WindowsLineEndsAndAByteOrderMarkReadAsUsual)
{
    const Finished run = Score("\xEF\xBB\xBFx,sex\r\n1,f\r\n2,m\r\n\r\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(ParseCsv(run.out).Texts("prediction"), (std::vector<std::string>{"3", "15"}));
}

TEST_F(BadCases, TextInANumericColumnRefusesItsRowAlone)
{
    const Finished run = Score("x,sex\n1,f\ntwo,f\n3,f\n");
    EXPECT_EQ(run.exitCode, 0);
    const CsvText scores = ParseCsv(run.out);
    EXPECT_EQ(scores.Texts("prediction"), (std::vector<std::string>{"3", "", "7"}));
    EXPECT_EQ(scores.Texts("std_dev"), (std::vector<std::string>{"2", "", "2"}));
    EXPECT_EQ(scores.Texts("status"), (std::vector<std::string>{"0", "269050", "0"}));
    EXPECT_EQ(scores.Texts("status_field"), (std::vector<std::string>{"", "x", ""}));
    EXPECT_TRUE(Says(run, "2 of 3 cases scored")) << run.err;
    EXPECT_TRUE(Says(run, "'two'")) << run.err;
    EXPECT_TRUE(Says(run, "row 2")) << run.err;
}

TEST_F(BadCases, UnknownCategoryIsNotScored)
{
    const Finished run = Score("x,sex\n1,f\n1,x\n");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(ParseCsv(run.out).Texts("status"), (std::vector<std::string>{"0", "90029"}));
    EXPECT_EQ(ParseCsv(run.out).Texts("prediction"), (std::vector<std::string>{"3", ""}));
}

TEST_F(BadCases, StrictEndsWithFiveWhenACaseWasNotScored)
{
    EXPECT_EQ(Score("x,sex\n1,f\n", {"--strict"}).exitCode, 0);
    const Finished run = Score("x,sex\n1,f\n,f\n2,f\n", {"--strict"});
    EXPECT_EQ(run.exitCode, 5);
    EXPECT_EQ(ParseCsv(run.out).rows.size(), 3u);  // the table is scored to its end
}

TEST_F(BadCases, UnlistedValuesInAnAcceptingColumnAreTold)
{
    TestModel accepting;
    accepting.sexField = R"(<DataField name="sex" optype="categorical" dataType="string">
      <Extension extender="velscore" name="unlistedCategories" value="accept"/>
      <Value value="f"/><Value value="m"/></DataField>)";
    model_ = folder_.Write("accepting.pmml", accepting.Text());
    const std::string table = "x,sex\n1,f\n1,M\n1,mm\n1,M\n";
    const Finished run = Score(table);
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(ParseCsv(run.out).Texts("prediction"),
              (std::vector<std::string>{"3", "3", "3", "3"}));
    EXPECT_TRUE(Says(run, "column sex has 3 values")) << run.err;
    EXPECT_TRUE(Says(run, "'M', 'mm'")) << run.err;
    EXPECT_EQ(Score(table, {"--strict"}).exitCode, 5);
    EXPECT_EQ(Score("x,sex\n1,f\n", {"--strict"}).exitCode, 0);
}

TEST_F(BadCases, CasesThatCannotBeRead)
{
    for (const char* file : {"/nowhere/at/all.csv", "/"}) {
        const Finished run = RunVelscore({"score", model_, file});
        EXPECT_EQ(run.exitCode, 3) << file;
        EXPECT_TRUE(Says(run, file)) << run.err;
        EXPECT_TRUE(Says(run, "what to do:")) << run.err;
    }
}

}  // namespace
}  // namespace MCVelscore_850
