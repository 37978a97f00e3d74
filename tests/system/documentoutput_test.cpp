// What a document says of its output: Targets, the Output section, and records to verify.

#include <algorithm>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

// y = 1 + 2 x + 10 [sex = m], standard error 2.
class DocumentOutput : public testing::Test {
protected:
    Finished Score(const TestModel& model, const std::string& table,
                   std::vector<std::string> options = {"--output", "document"})
    {
        options.insert(options.begin(), {"score", folder_.Write("model.pmml", model.Text())});
        return RunVelscore(options, table);
    }
    CsvText Scores(const TestModel& model, const std::string& table)
    {
        const Finished run = Score(model, table);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return ParseCsv(run.out);
    }
    static TestModel With(const std::string& output, const std::string& targets = "")
    {
        TestModel model;
        model.afterSchema = (output.empty() ? "" : "<Output>" + output + "</Output>") + targets;
        return model;
    }
    Finished Verify(const std::string& fields, const std::string& rows,
                    std::vector<std::string> options = {})
    {
        TestModel model = With("<OutputField name='se' feature='standardError'/>");
        model.atEnd = "<ModelVerification><VerificationFields>" + fields +
                      "</VerificationFields><InlineTable>" + rows +
                      "</InlineTable></ModelVerification>";
        options.insert(options.begin(), {"verify", folder_.Write("model.pmml", model.Text())});
        return RunVelscore(options);
    }

    ScratchFolder folder_;
};

TEST_F(DocumentOutput, HasTheFieldsInTheDocumentsOrder)
{
    const CsvText scores =
        Scores(With("<OutputField name='low' feature='confidenceIntervalLower'/>"
                    "<OutputField name='fit' feature='predictedValue'/>"
                    "<OutputField name='se' feature='standardError'/>"
                    "<OutputField name='high' feature='confidenceIntervalUpper'/>"
                    "<OutputField name='plain'/>"),
               "x,sex\n2,m\n");
    EXPECT_EQ(scores.header,
              (Texts{"low", "fit", "se", "high", "plain", "status", "status_field"}));
    EXPECT_EQ(scores.Texts("fit"), Texts{"15"});
    EXPECT_EQ(scores.Texts("plain"), Texts{"15"});
    EXPECT_EQ(scores.Texts("se"), Texts{"2"});
    // Student's t for 8 degrees of freedom from a printed table
    EXPECT_NEAR(std::stod(scores.Texts("low").at(0)), 15 - 2 * 2.306004, 1e-5);
    EXPECT_NEAR(std::stod(scores.Texts("high").at(0)), 15 + 2 * 2.306004, 1e-5);
}

TEST_F(DocumentOutput, ExpressionsSeeTheFieldsBeforeThemAndTheCase)
{
    const CsvText scores =
        Scores(With("<OutputField name='fit' feature='predictedValue'/>"
                    "<OutputField name='twice' feature='transformedValue'><Apply function='*'>"
                    "<Constant>2</Constant><FieldRef field='fit'/></Apply></OutputField>"
                    "<OutputField name='less' feature='transformedValue' dataType='double'>"
                    "<Apply function='-'><FieldRef field='twice'/><FieldRef field='x'/></Apply>"
                    "</OutputField>"),
               "x,sex\n2,m\n3,f\n");
    EXPECT_EQ(scores.Texts("twice"), (Texts{"30", "14"}));
    EXPECT_EQ(scores.Texts("less"), (Texts{"28", "11"}));
}

TEST_F(DocumentOutput, AResidualNeedsTheObservedTarget)
{
    const TestModel model = With("<OutputField name='r' feature='residual'/>");
    EXPECT_EQ(Scores(model, "x,sex,y\n2,m,18.5\n2,m,\n2,m,?\n").Texts("r"), (Texts{"3.5", "", ""}));
    EXPECT_EQ(Scores(model, "x,sex\n2,m\n").Texts("r"), Texts{""});
}

TEST_F(DocumentOutput, TargetsChangeThePredictedNumberInBothOutputs)
{
    const std::string targets =
        "<Targets><Target field='y' max='14' rescaleFactor='10' rescaleConstant='0.6' "
        "castInteger='round'/></Targets>";
    const CsvText document = Scores(With("<OutputField name='fit' feature='predictedValue'/>"
                                         "<OutputField name='r' feature='residual'/>",
                                         targets),
                                    "x,sex,y\n2,m,150\n1,f,31\n");
    // 15 is cut to 14; 3 stays: 140.6 and 30.6, rounded
    EXPECT_EQ(document.Texts("fit"), (Texts{"141", "31"}));
    EXPECT_EQ(document.Texts("r"), (Texts{"9", "0"}));
    const Finished own = Score(With("", targets), "x,sex\n2,m\n1,f\n", {});
    EXPECT_EQ(ParseCsv(own.out).Texts("prediction"), (Texts{"141", "31"}));
    EXPECT_EQ(ParseCsv(own.out).Texts("std_dev"), (Texts{"2", "2"}));
}

TEST_F(DocumentOutput, ADefaultStandsForACaseWithoutAScore)
{
    const CsvText scores = Scores(
        With("<OutputField name='fit' feature='predictedValue'/>"
             "<OutputField name='se' feature='standardError'/>",
             "<Targets><Target field='y'><TargetValue defaultValue='7'/></Target></Targets>"),
        "x,sex\n,m\nword,m\n2,m\n");
    EXPECT_EQ(scores.Texts("fit"), (Texts{"7", "7", "15"}));
    EXPECT_EQ(scores.Texts("se"), (Texts{"", "", "2"}));
    EXPECT_EQ(scores.Texts("status"), (Texts{"90029", "269050", "0"}));
}

TEST_F(DocumentOutput, WithoutASectionIsRefused)
{
    const Finished run = Score(TestModel(), "x,sex\n2,m\n");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find("269191"), std::string::npos) << run.err;
    EXPECT_EQ(run.out, "");
}

// "model.pmml:line:column: " of where a piece of the document begins.
std::string PlaceIn(const std::string& document, const std::string& piece)
{
    const size_t at = document.find(piece);
    EXPECT_NE(at, std::string::npos) << piece;
    const auto lines = std::count(document.begin(), document.begin() + static_cast<long>(at), '\n');
    const size_t column = at - document.rfind('\n', at);
    return "model.pmml:" + std::to_string(lines + 1) + ":" + std::to_string(column) + ": ";
}

TEST_F(DocumentOutput, ARefusalSaysWhereInTheSection)
{
    struct Row {
        std::string field;
        std::string element;  // where the fault is
        std::string path;
    };
    const Row rows[] = {
        {"<OutputField name='a' feature='clusterId'/>", "<OutputField name='a'",
         "Output/OutputField[2]"},
        {"<OutputField name='a' feature='decision'/>", "<OutputField name='a'",
         "Output/OutputField[2]"},
        {"<OutputField name='fit' value='1'/>", "<OutputField name='fit' value",
         "Output/OutputField[2]"},
        {"<OutputField name='a' feature='decision'>\n <FieldRef field='q'/></OutputField>",
         "<FieldRef field='q'", "Output/OutputField[2]/FieldRef"},
        {"<OutputField name='a' feature='decision'><Apply function='+'>\n<Constant>1</Constant>\n"
         "<Constant dataType='double'>one</Constant></Apply></OutputField>",
         "<Constant dataType", "Output/OutputField[2]/Apply/Constant[2]"},
        {"<OutputField name='a' feature='decision' dataType='number'><FieldRef field='x'/>"
         "</OutputField>",
         "<OutputField name='a'", "Output/OutputField[2]"},
    };
    for (const Row& row : rows) {
        const TestModel model = With("\n <OutputField name='fit'/>\n  " + row.field);
        const Finished run = Score(model, "x,sex\n2,m\n");
        EXPECT_EQ(run.exitCode, 2) << row.field;
        EXPECT_NE(run.err.find(PlaceIn(model.Text(), row.element)), std::string::npos)
            << row.element << "\n"
            << run.err;
        EXPECT_NE(run.err.find("GeneralRegressionModel/" + row.path + "\n"), std::string::npos)
            << row.path << "\n"
            << run.err;
    }
}

TEST_F(DocumentOutput, AFunctionOfTheModelGoesBeforeOneOfTheDocument)
{
    TestModel model = With(
        "<OutputField name='a' feature='transformedValue'><Apply function='f'>"
        "<FieldRef field='x'/></Apply></OutputField>");
    const auto function = [](const std::string& constant) {
        return "<DefineFunction name='f' optype='continuous'><ParameterField name='p'/><Constant>" +
               constant + "</Constant></DefineFunction>";
    };
    model.afterSchema += "<LocalTransformations>" + function("7") + "</LocalTransformations>";
    std::string text = model.Text();
    const std::string end = "</DataDictionary>";
    text.insert(text.find(end) + end.size(),
                "<TransformationDictionary>" + function("5") + "</TransformationDictionary>");
    const Finished run = RunVelscore(
        {"score", folder_.Write("model.pmml", text), "--output", "document"}, "x,sex\n2,m\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(ParseCsv(run.out).Texts("a"), Texts{"7"});
}

TEST_F(DocumentOutput, AFeatureOfOtherModelsIsRefusedByName)
{
    const TestModel model = With("<OutputField name='who' feature='clusterId'/>");
    const Finished run = Score(model, "x,sex\n2,m\n");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find("clusterId"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("who"), std::string::npos) << run.err;
    // it stands in nobody's way who doesn't ask for it
    EXPECT_EQ(Score(model, "x,sex\n2,m\n", {}).exitCode, 0);
}

TEST_F(DocumentOutput, AndPredictionOnlyAreWrongUsage)
{
    const TestModel model = With("<OutputField name='fit'/>");
    EXPECT_EQ(Score(model, "x,sex\n2,m\n", {"--output", "document", "--prediction-only"}).exitCode,
              1);
}

constexpr const char* kVerified =
    "<VerificationField field='x' column='a'/><VerificationField field='sex' column='b'/>"
    "<VerificationField field='y' column='c' precision='0.01' zeroThreshold='0.5'/>"
    "<VerificationField field='se' column='d'/>";

TEST_F(DocumentOutput, RecordsThatAgreeEndWithZero)
{
    const Finished run = Verify(kVerified,
                                "<row><a>2</a><b>m</b><c>15.1</c><d>2</d></row>"
                                "<row><a>-0.3</a><b>f</b><c>0.4</c><d>2.000001</d></row>"
                                "<row><b>f</b></row>");
    EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "velscore: 3 records, 6 values compared, 0 differ\n");
}

TEST_F(DocumentOutput, EachDifferenceIsTold)
{
    const Finished run = Verify(kVerified,
                                "<row><a>2</a><b>m</b><c>15.2</c><d>2.00001</d></row>"
                                "<row><a>-0.2</a><b>f</b><c>0.5</c><d>2</d></row>"
                                "<row><b>f</b><c>1</c></row><row><a>1</a><b>f</b><d>2</d></row>");
    EXPECT_EQ(run.exitCode, 6);
    EXPECT_EQ(run.out,
              "record 1, y: expected 15.2, found 15\n"
              "record 1, se: expected 2.00001, found 2\n"
              "record 2, y: expected 0.5, found 0.6\n"
              "record 3, y: expected 1, found nothing (status 90029, field x: empty)\n"
              "record 4, y: expected nothing, found 3\n");
    EXPECT_EQ(run.err, "velscore: 4 records, 8 values compared, 5 differ\n");
}

TEST_F(DocumentOutput, DifferencesAreThereForMachinesToo)
{
    const Finished run =
        Verify(kVerified, "<row><a>2</a><b>m</b><c>14</c><d>2</d></row>", {"--json"});
    EXPECT_EQ(run.exitCode, 6);
    const auto report = nlohmann::json::parse(run.out);
    EXPECT_EQ(report.at("compared"), 2);
    EXPECT_EQ(report.at("differences").at(0).at("field"), "y");
    EXPECT_EQ(report.at("differences").at(0).at("found"), "15");
}

TEST_F(DocumentOutput, ARecordFieldThatNothingKnowsIsRefused)
{
    const Finished run = Verify("<VerificationField field='q' column='a'/>", "<row><a>2</a></row>");
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find("269194"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("VerificationFields/VerificationField\n"), std::string::npos) << run.err;
}

TEST_F(DocumentOutput, ADocumentWithoutRecordsIsRefused)
{
    const std::string model = folder_.Write("model.pmml", TestModel().Text());
    const Finished run = RunVelscore({"verify", model});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_NE(run.err.find("269193"), std::string::npos) << run.err;
}

TEST_F(DocumentOutput, CasesBecomeRecordsThatVerify)
{
    TestModel model = With(
        "<OutputField name='se' feature='standardError'/>"
        "<OutputField name='r' feature='residual'/>");
    model.atEnd = "<ModelVerification/><Extension name='last'/>";
    const std::string document = folder_.Write("model.pmml", model.Text());
    const std::string cases = folder_.Write("cases.csv", "id,x,sex\n1,2,m\n2,,f\n3,0.5,f\n");
    const std::string verified = folder_.Path("verified.pmml");
    const Finished emitted = RunVelscore({"verify", document, "--emit", cases, "-o", verified});
    EXPECT_EQ(emitted.exitCode, 0) << emitted.err;
    EXPECT_EQ(emitted.err, "velscore: 2 records written, 1 cases without a score left out\n");
    const std::string text = ReadFile(verified);
    // one section, before the extension that ends the model; the residual has nothing to verify
    const size_t section = text.find("<ModelVerification");
    EXPECT_EQ(text.find("<ModelVerification", section + 1), std::string::npos);
    EXPECT_LT(section, text.find("<Extension name=\"last\""));
    EXPECT_NE(text.find("recordCount=\"2\""), std::string::npos);
    EXPECT_EQ(text.find("field=\"r\""), std::string::npos);
    const Finished run = RunVelscore({"verify", verified});
    EXPECT_EQ(run.exitCode, 0) << run.out;
    EXPECT_EQ(run.err, "velscore: 2 records, 4 values compared, 0 differ\n");
    // and they can fail
    std::string spoilt = text;
    const size_t value = spoilt.find(">15<");
    ASSERT_NE(value, std::string::npos);
    spoilt.replace(value, 4, ">16<");
    EXPECT_EQ(RunVelscore({"verify", folder_.Write("spoilt.pmml", spoilt)}).exitCode, 6);
}

TEST_F(DocumentOutput, EmitKeepsItsInputsWhole)
{
    const std::string document = folder_.Write("model.pmml", TestModel().Text());
    const std::string cases = folder_.Write("cases.csv", "x,sex\n2,m\n");
    EXPECT_EQ(RunVelscore({"verify", document, "--emit", cases, "-o", document}).exitCode, 1);
    const std::string before = ReadFile(cases);
    EXPECT_EQ(RunVelscore({"verify", document, "--emit", cases, "-o", cases}).exitCode, 1);
    EXPECT_EQ(ReadFile(cases), before);
    EXPECT_EQ(RunVelscore({"verify", "-", "--emit", cases}).exitCode, 1);
    EXPECT_EQ(RunVelscore({"verify", document, "-o", "x.pmml"}).exitCode, 1);
    EXPECT_EQ(RunVelscore({"verify", document, "--emit", folder_.Path("none.csv")}).exitCode, 3);
    EXPECT_EQ(ReadFile(document), TestModel().Text());
}

}  // namespace
}  // namespace MCVelscore_850
