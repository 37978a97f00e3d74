// The options of score, each by what it changes in the output.

#include <map>

#include <gtest/gtest.h>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

class ScoreOptions : public testing::Test {
protected:
    ScoreOptions() : model_(folder_.Write("model.pmml", TestModel().Text())) {}
    void UseModel(const TestModel& model) { folder_.Write("model.pmml", model.Text()); }
    Finished Score(const std::string& table, std::vector<std::string> options = {})
    {
        options.insert(options.begin(), {"score", model_});
        return RunVelscore(options, table);
    }
    Texts Predictions(const std::string& table, std::vector<std::string> options = {})
    {
        const Finished run = Score(table, std::move(options));
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return ParseCsv(run.out).Texts("prediction");
    }

    ScratchFolder folder_;
    std::string model_;
};

TEST_F(ScoreOptions, ScoresStandardInputToStandardOutputByDefault)
{
    const Finished run = Score("sex,x\nm,2\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    // 1 + 2 * 2 + 10, error 2, and Student's t for 8 degrees of freedom from a printed table
    const CsvText scores = ParseCsv(run.out);
    EXPECT_EQ(scores.header,
              (Texts{"prediction", "std_dev", "ci_lower", "ci_upper", "status", "status_field"}));
    EXPECT_EQ(scores.Texts("prediction"), Texts{"15"});
    EXPECT_EQ(scores.Texts("std_dev"), Texts{"2"});
    EXPECT_NEAR(std::stod(scores.Texts("ci_lower").at(0)), 15 - 2 * 2.306004, 1e-5);
    EXPECT_NEAR(std::stod(scores.Texts("ci_upper").at(0)), 15 + 2 * 2.306004, 1e-5);
    EXPECT_EQ(scores.Texts("status"), Texts{"0"});
    EXPECT_EQ(run.err, "velscore: 1 of 1 cases scored\n");
}

TEST_F(ScoreOptions, TheModelMayComeFromStandardInput)
{
    const std::string cases = folder_.Write("cases.csv", "x,sex\n1,f\n");
    const Finished run = RunVelscore({"score", "-", cases}, TestModel().Text());
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(ParseCsv(run.out).Texts("prediction"), Texts{"3"});
}

TEST_F(ScoreOptions, TwoInputsFromStandardInputAreWrongUsage)
{
    EXPECT_EQ(RunVelscore({"score", "-", "-"}).exitCode, 1);
    EXPECT_EQ(RunVelscore({"score", "-"}).exitCode, 1);
}

TEST_F(ScoreOptions, OutGoesToAFile)
{
    const std::string out = folder_.Path("scores.csv");
    const Finished run = Score("x,sex\n1,f\n", {"-o", out});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(ParseCsv(ReadFile(out)).Texts("prediction"), Texts{"3"});
}

TEST_F(ScoreOptions, OutputOntoAnInputIsWrongUsageAndLeavesItAlone)
{
    const std::string cases = folder_.Write("cases.csv", "x,sex\n1,f\n");
    for (const std::string& input : {cases, model_}) {
        const std::string before = ReadFile(input);
        const Finished run = RunVelscore({"score", model_, cases, "-o", input});
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_NE(run.err.find("another file"), std::string::npos) << run.err;
        EXPECT_EQ(ReadFile(input), before);
    }
    const Finished appended =
        RunProgram({"/bin/sh", "-c", "exec \"$0\" score \"$1\" \"$2\" >> \"$2\"", VELSCORE_COMMAND,
                    model_, cases});
    EXPECT_EQ(appended.exitCode, 1);
    EXPECT_EQ(ReadFile(cases), "x,sex\n1,f\n");
}

TEST_F(ScoreOptions, OutputOntoTheModelIsWrongUsageHoweverBothAreNamed)
{
    const std::string cases = folder_.Write("cases.csv", "x,sex\n1,f\n");
    const std::string before = ReadFile(model_);
    for (const char* command : {"exec \"$0\" score \"$1\" \"$2\" >> \"$1\"",
                                "exec \"$0\" score - \"$2\" -o \"$1\" < \"$1\"",
                                "exec \"$0\" score - \"$2\" < \"$1\" >> \"$1\""}) {
        const Finished run =
            RunProgram({"/bin/sh", "-c", command, VELSCORE_COMMAND, model_, cases});
        EXPECT_EQ(run.exitCode, 1) << command;
        EXPECT_NE(run.err.find("another file"), std::string::npos) << run.err;
        EXPECT_EQ(ReadFile(model_), before) << command;
    }
}

TEST_F(ScoreOptions, KeepRepeatsTheInputsOwnText)
{
    const std::string table = "id,x,sex,status\n\"a,1\",01.0,f,old\n";
    const CsvText all = ParseCsv(Score(table, {"--keep", "all"}).out);
    EXPECT_EQ(all.header, (Texts{"id", "x", "sex", "input.status", "prediction", "std_dev",
                                 "ci_lower", "ci_upper", "status", "status_field"}));
    EXPECT_EQ(all.Texts("id"), Texts{"a,1"});
    EXPECT_EQ(all.Texts("x"), Texts{"01.0"});
    EXPECT_EQ(all.Texts("input.status"), Texts{"old"});
    const CsvText some = ParseCsv(Score(table, {"--keep", "sex,id", "--prediction-only"}).out);
    EXPECT_EQ(some.header, (Texts{"sex", "id", "prediction", "status", "status_field"}));
    EXPECT_EQ(Score(table, {"--keep", "name"}).exitCode, 1);
    const Finished misspelt = Score(table, {"--keep", "statsu"});
    EXPECT_NE(misspelt.err.find("Did you mean 'status'?"), std::string::npos) << misspelt.err;
}

TEST_F(ScoreOptions, KeepNamesAColumnWithACommaInQuotes)
{
    const Finished run = Score("\"a,b\",x,sex\n7,1,f\n", {"--keep", "\"a,b\",sex", "--keep", "x"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(ParseCsv(run.out).Texts("a,b"), Texts{"7"});
    EXPECT_EQ(ParseCsv(run.out).Texts("x"), Texts{"1"});
}

TEST_F(ScoreOptions, ColumnsAreWrittenByNameInTheOrderOfTheList)
{
    // 1 + 2 x, and 10 more for m
    const Finished run =
        Score("x,sex,id\n1,f,a\n2,m,b\n,m,c\n",
              {"--columns", "status,linear_predictor", "--columns", "prediction", "--keep", "id"});
    EXPECT_EQ(run.out, "id,status,linear_predictor,prediction\na,0,3,3\nb,0,15,15\nc,90029,,\n")
        << run.err;
}

TEST_F(ScoreOptions, ColumnsThatAreNotThereAreToldWithThoseThatAre)
{
    const Finished unknown = Score("x,sex\n1,f\n", {"--columns", "std_dve"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_NE(unknown.err.find("[269317]"), std::string::npos) << unknown.err;
    EXPECT_NE(unknown.err.find("Did you mean 'std_dev'?"), std::string::npos) << unknown.err;
    EXPECT_NE(unknown.err.find("prediction, std_dev, ci_lower, ci_upper, linear_predictor, "
                               "std_err(linear_predictor), status, status_field"),
              std::string::npos)
        << unknown.err;
    const Finished twice = Score("x,sex\n1,f\n", {"--columns", "status,prediction,status"});
    EXPECT_EQ(twice.exitCode, 1);
    EXPECT_NE(twice.err.find("[269318]"), std::string::npos) << twice.err;
    EXPECT_EQ(Score("x,sex\n1,f\n", {"--columns", "probabilities"}).exitCode, 1);
    for (const char* other : {"--prediction-only", "--output=document"}) {
        const Finished both = Score("x,sex\n1,f\n", {"--columns", "prediction", other});
        EXPECT_EQ(both.exitCode, 1);
        EXPECT_NE(both.err.find("--columns has no meaning"), std::string::npos) << both.err;
    }
}

TEST_F(ScoreOptions, PredictionOnlyLeavesThePredictionUnchanged)
{
    const Finished run = Score("x,sex\n1,f\n2,m\n", {"--prediction-only"});
    EXPECT_EQ(run.out, "prediction,status,status_field\n3,0,\n15,0,\n");
}

TEST_F(ScoreOptions, DelimiterAndDecimalServeInputAndOutput)
{
    const Finished run =
        Score("x;sex\n1,25;f\n1.25;f\n", {"--delimiter", ";", "--decimal", ",", "--keep", "x"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const CsvText scores = ParseCsv(run.out, ';');
    EXPECT_EQ(scores.Texts("prediction"), (Texts{"3,5", ""}));
    EXPECT_EQ(scores.Texts("status"), (Texts{"0", "269050"}));
    EXPECT_EQ(scores.Texts("x"), (Texts{"1,25", "1.25"}));
}

TEST_F(ScoreOptions, TabDelimiterHasAName)
{
    for (const char* name : {"tab", "\\t", "\t"}) {
        const Finished run = Score("x\tsex\n1\tf\n", {"--delimiter", name});
        EXPECT_EQ(ParseCsv(run.out, '\t').Texts("prediction"), Texts{"3"}) << run.err;
    }
}

TEST_F(ScoreOptions, SeparatorsThatMakeNoSenseAreWrongUsage)
{
    const std::vector<std::vector<std::string>> kWrong = {
        {"--delimiter", ";;"}, {"--delimiter", "\""}, {"--delimiter", ""},
        {"--decimal", "5"},    {"--decimal", "e"},    {"--delimiter", ".", "--decimal", "."},
        {"--decimal", ","}};
    for (const auto& options : kWrong)
        EXPECT_EQ(Score("x,sex\n1,f\n", options).exitCode, 1) << options[1];
}

TEST_F(ScoreOptions, DecimalCommaAsksForAnotherDelimiter)
{
    const Finished run = Score("x,sex\n\"1,5\",f\n", {"--decimal", ","});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("both ','"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("--delimiter ';'"), std::string::npos) << run.err;
}

TEST_F(ScoreOptions, MissingTextsAreTheEmptyFieldNaAndWhatIsGiven)
{
    const std::string table = "x,sex\n,f\nNA,f\n-9,f\n?,f\n1,NA\n";
    EXPECT_EQ(ParseCsv(Score(table).out).Texts("status"),
              (Texts{"90029", "90029", "0", "269050", "90029"}));
    EXPECT_EQ(ParseCsv(Score(table, {"--na", "-9", "--na", "?"}).out).Texts("status"),
              (Texts{"90029", "90029", "90029", "90029", "90029"}));
}

TEST_F(ScoreOptions, MissingTextOptionTakesOneTextAndLeavesThePositionals)
{
    const std::string cases = folder_.Write("cases.csv", "x,sex\n1,f\n");
    const Finished run = RunVelscore({"score", "--na", "-9", model_, cases});
    EXPECT_EQ(run.exitCode, 0) << run.err;
}

TEST_F(ScoreOptions, PolicyDecidesWhetherReplacementsAreTaken)
{
    TestModel replacing;
    replacing.xMining = R"(<MiningField name="x" usageType="active" missingValueReplacement="5"/>)";
    replacing.sexMining =
        R"(<MiningField name="sex" usageType="active" missingValueReplacement="m"/>)";
    UseModel(replacing);
    const std::string table = "x,sex\n,f\n1,\n1,f\n";
    EXPECT_EQ(Predictions(table), (Texts{"11", "13", "3"}));
    EXPECT_EQ(Predictions(table, {"--policy", "substitute"}), (Texts{"11", "13", "3"}));
    EXPECT_EQ(Predictions(table, {"--policy", "sysmis"}), (Texts{"", "", "3"}));
    EXPECT_EQ(Predictions(table, {"--policy", "status"}), (Texts{"", "", "3"}));
    EXPECT_EQ(Score(table, {"--policy", "drop"}).exitCode, 1);
}

TEST_F(ScoreOptions, InvalidValueTreatmentsOfTheDocumentAreFollowed)
{
    TestModel treating;
    treating.sexMining = R"(<MiningField name="sex" usageType="active"
      invalidValueTreatment="asMissing" missingValueReplacement="m"/>)";
    UseModel(treating);
    EXPECT_EQ(Predictions("x,sex\n1,other\n"), Texts{"13"});
    treating.sexMining =
        R"(<MiningField name="sex" usageType="active" invalidValueTreatment="returnInvalid"/>)";
    UseModel(treating);
    const CsvText scores = ParseCsv(Score("x,sex\n1,other\n").out);
    EXPECT_EQ(scores.Texts("status"), Texts{"269052"});
    EXPECT_EQ(scores.Texts("status_field"), Texts{"sex"});
}

TEST_F(ScoreOptions, QuietSaysNothingOfARunThatWorks)
{
    EXPECT_EQ(Score("x,sex\n1,f\n,f\n", {"--quiet"}).err, "");
}

TEST_F(ScoreOptions, OutputOffersTheDefaultAndTheDocumentsOwnColumns)
{
    EXPECT_EQ(Score("x,sex\n1,f\n", {"--output", "default"}).exitCode, 0);
    EXPECT_EQ(Score("x,sex\n1,f\n", {"--output", "document"}).exitCode, 2);  // it has none
    EXPECT_EQ(Score("x,sex\n1,f\n", {"--output", "other"}).exitCode, 1);
}

TEST_F(ScoreOptions, AsIsLeavesADocumentToTheReader)
{
    std::string text = TestModel().Text();
    text.replace(text.find("version=\"4.4\""), 13, "version=\"4.4.1\"");
    model_ = folder_.Write("version.pmml", text);
    EXPECT_EQ(Predictions("x,sex\n1,f\n"), Texts{"3"});
    EXPECT_EQ(Score("x,sex\n1,f\n", {"--as-is"}).exitCode, 2);
}

// 1 + 2 * 2 + 10 with an error of 2; Student's t for 8 degrees of freedom by mpmath.
TEST_F(ScoreOptions, LevelMovesTheLimitsAlone)
{
    constexpr struct {
        const char* level;
        double t;
    } kRows[] = {{"0.5", 0.7063866126448386},
                 {"0.9", 1.8595480375308985},
                 {"0.99", 3.3553873313333949},
                 {"0.999", 5.0413054333733667}};
    const std::string table = "sex,x\nm,2\nm,2\nm,2\n";  // alone, and together
    const std::string before = Score(table).out;
    EXPECT_EQ(Score(table, {"--level", "0.95"}).out, before);
    for (const auto& [level, t] : kRows) {
        const Finished run = Score(table, {"--level", level});
        EXPECT_EQ(run.exitCode, 0) << run.err;
        const CsvText scores = ParseCsv(run.out);
        EXPECT_EQ(scores.Texts("prediction"), (Texts{"15", "15", "15"}));
        EXPECT_EQ(scores.Texts("std_dev"), (Texts{"2", "2", "2"}));
        for (size_t row = 0; row < 3; ++row) {
            EXPECT_NEAR(std::stod(scores.Texts("ci_lower").at(row)), 15 - 2 * t, 1e-13) << level;
            EXPECT_NEAR(std::stod(scores.Texts("ci_upper").at(row)), 15 + 2 * t, 1e-13) << level;
        }
    }
}

TEST_F(ScoreOptions, LevelHoldsForTheDocumentsOwnColumnsToo)
{
    TestModel model;
    model.afterSchema = R"(<Output>
      <OutputField name="low" optype="continuous" dataType="double"
                   feature="confidenceIntervalLower"/></Output>)";
    UseModel(model);
    const Finished run = Score("sex,x\nm,2\n", {"--output", "document", "--level", "0.9"});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NEAR(std::stod(ParseCsv(run.out).Texts("low").at(0)), 15 - 2 * 1.8595480375308985,
                1e-13);
}

TEST_F(ScoreOptions, LevelsThatAreNoneAreWrongUsage)
{
    const auto refusal = [&](const std::string& level) {
        const Finished run = Score("sex,x\nm,2\n", {"--level", level});
        EXPECT_EQ(run.exitCode, 1) << level;
        EXPECT_EQ(run.out, "") << level;
        EXPECT_NE(
            run.err.find("--level is '" + level + "'; expected is a number above 0 and below 1"),
            std::string::npos)
            << run.err;
        return run.err;
    };
    for (const char* level : {"", "0", "1", "-0.5", "nan", "inf", "1e999", "abc", "0,95", "250"}) {
        EXPECT_EQ(refusal(level).find("Did you mean"), std::string::npos) << level;
    }
    EXPECT_NE(refusal("95").find("Did you mean 0.95?"), std::string::npos);
    EXPECT_NE(refusal("99.9%").find("Did you mean 0.999?"), std::string::npos);
    const Finished without = Score("sex,x\nm,2\n", {"--level", "0.9", "--prediction-only"});
    EXPECT_EQ(without.exitCode, 1);
    EXPECT_NE(without.err.find("--level has no meaning with --prediction-only"), std::string::npos);
}

TEST_F(ScoreOptions, LevelIsWrongUsageForAModelWithoutLimits)
{
    const auto refusal = [](const std::string& document) {
        const Finished run = RunVelscore({"score", document, "--level", "0.9"}, "");
        EXPECT_EQ(run.exitCode, 1) << document;
        return run.err;
    };
    for (const auto& [document, why] : std::map<std::string, std::string>{
             {"published/cox.pmml", "has no limits: its family has none (Cox regression)"},
             {"published/ordinal.pmml", "has no limits: it predicts a category (ordinal"},
             {"published/contrasts.pmml", "has no limits: it predicts a category (binary"},
             {"published/poisson-offset.pmml", "has no limits: the document has no covariances"}}) {
        const std::string err = refusal(DataFile(document));
        EXPECT_NE(err.find(why), std::string::npos) << err;
    }
}

TEST_F(ScoreOptions, TheErrorOfTheLinearPredictorIsAColumnOnRequest)
{
    const Finished run = Score("x,sex\n1,f\n2,m\n,m\n3,m\n",
                               {"--columns", "std_err(linear_predictor),linear_predictor,std_dev"});
    EXPECT_EQ(run.out,
              "std_err(linear_predictor),linear_predictor,std_dev\n2,3,2\n2,15,2\n,,\n2,17,2\n")
        << run.err;
    const Finished misspelt = Score("x,sex\n1,f\n", {"--columns", "std_err(linear_predicter)"});
    EXPECT_EQ(misspelt.exitCode, 1);
    EXPECT_NE(misspelt.err.find("Did you mean 'std_err(linear_predictor)'?"), std::string::npos)
        << misspelt.err;
}

TEST_F(ScoreOptions, TheErrorOfTheLinearPredictorIsNoColumnWhereItCannotBe)
{
    constexpr struct {
        const char* document;
        const char* header;
    } kRows[] = {{"published/poisson-offset.pmml", "type,built,log_months\n"},  // no covariances
                 {"published/ordinal.pmml", "sex,age,work\n"}};                 // several equations
    for (const auto& [document, header] : kRows) {
        const Finished run = RunVelscore(
            {"score", DataFile(document), "--columns", "std_err(linear_predictor)"}, header);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_NE(run.err.find("--columns names 'std_err(linear_predictor)'; the columns"),
                  std::string::npos)
            << run.err;
    }
}

}  // namespace
}  // namespace MCVelscore_850
