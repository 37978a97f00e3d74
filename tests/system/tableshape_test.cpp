// Tables that call their columns otherwise, that have no header, and how the output is written.

#include <cmath>

#include <gtest/gtest.h>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

// 1 + 2 x + 10 for m, of these options alone.
struct Shape {
    const char* name;
    std::string table;
    Texts options;
    std::string output;
};

struct Refusal {
    const char* name;
    std::string table;
    Texts options;
    int exitCode;
    std::string told;
};

void PrintTo(const Shape& shape, std::ostream* out) { *out << shape.name; }
void PrintTo(const Refusal& refusal, std::ostream* out) { *out << refusal.name; }

template <class Row>
std::string NameOf(const testing::TestParamInfo<Row>& test)
{
    return test.param.name;
}

// The files that options of the rows below name: @x, @bad, ...
const ScratchFolder& MapFiles()
{
    static const ScratchFolder folder;
    static const bool isWritten = [&] {
        folder.Write("good", "x=age\n\nsex=Sex\r\n");
        folder.Write("marked", "\xEF\xBB\xBFx=age\nsex=Sex");
        folder.Write("bad", "x=age\nsex\n");
        folder.Write("twice", "x=age\nx=weight\n");
        return true;
    }();
    static_cast<void>(isWritten);
    return folder;
}

Finished ScoreShape(const std::string& table, const Texts& options)
{
    const ScratchFolder folder;
    Texts arguments{"score", folder.Write("model.pmml", TestModel().Text()),
                    folder.Write("cases.csv", table), "--prediction-only"};
    for (std::string option : options) {
        if (option.starts_with('@')) option = "@" + MapFiles().Path(option.substr(1));
        arguments.push_back(option);
    }
    return RunVelscore(arguments);
}

class TableShape : public testing::TestWithParam<Shape> {};

TEST_P(TableShape, IsWhatTheOptionsSay)
{
    const Shape& shape = GetParam();
    const Finished run = ScoreShape(shape.table, shape.options);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, shape.output);
}

const std::string kScores = "prediction,status,status_field\n";
const std::string kOtherNames = "age,Sex,x\n1,f,7\n2,m,8\n";

INSTANTIATE_TEST_SUITE_P(
    Options, TableShape,
    testing::Values(
        Shape{"MappedColumns",
              kOtherNames,
              {"--map", "x=age", "--map", "sex=Sex"},
              kScores + "3,0,\n15,0,\n"},
        Shape{"MappedByAFile", kOtherNames, {"--map", "@good"}, kScores + "3,0,\n15,0,\n"},
        Shape{
            "MappedByAFileWithAMark", kOtherNames, {"--map", "@marked"}, kScores + "3,0,\n15,0,\n"},
        Shape{"OneMappedColumn", kOtherNames, {"--map", "sex=Sex"}, kScores + "15,0,\n27,0,\n"},
        Shape{"ColumnWithAnEqualsSign", "a=b,sex\n1,f\n", {"--map", "x=a=b"}, kScores + "3,0,\n"},
        // The status blames the model's field; columns are kept by the table's own names.
        Shape{"BlamedField",
              "age,sex\n,f\n",
              {"--map", "x=age", "--keep", "age"},
              "age,prediction,status,status_field\n,,90029,x\n"},
        Shape{"NoHeader", "f,1\nm,2\n", {"--no-header"}, kScores + "3,0,\n15,0,\n"},
        Shape{"NoHeaderMapped",
              "9,1,f\n8,2,m\n",
              {"--no-header", "--map", "x=2", "--map", "sex=3", "--keep", "3,1"},
              "3,1,prediction,status,status_field\nf,9,3,0,\nm,8,15,0,\n"},
        Shape{"NoHeaderKeptWhole",
              "f,1\n",
              {"--no-header", "--keep", "all"},
              "1,2,prediction,status,status_field\nf,1,3,0,\n"},
        Shape{"OutDelimiter",
              "x,sex,note\n1.5,f,a;b\n",
              {"--out-delimiter", ";", "--keep", "note"},
              "note;prediction;status;status_field\n\"a;b\";4;0;\n"},
        Shape{"OutDelimiterTab",
              "x;sex\n1,5;f\n",
              {"--delimiter", ";", "--decimal", ",", "--out-delimiter", "tab", "--keep", "x"},
              "x\tprediction\tstatus\tstatus_field\n1,5\t4\t0\t\n"},
        // 1 + 2 * 1.23456789 = 3.46913578
        Shape{"Digits",
              "x,sex\n1.23456789,f\n1e8,m\n",
              {"--digits", "4", "--keep", "x"},
              "x,prediction,status,status_field\n1.23456789,3.469,0,\n1e8,2e+08,0,\n"},
        Shape{"NoDigitsMoreThanThereAre",
              "x,sex\n0.25,f\n",
              {"--digits", "17"},
              kScores + "1.5,0,\n"}),
    NameOf<Shape>);

class TableShapeRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(TableShapeRefusal, IsToldBeforeAnythingIsWritten)
{
    const Refusal& refusal = GetParam();
    const Finished run = ScoreShape(refusal.table, refusal.options);
    EXPECT_EQ(run.exitCode, refusal.exitCode);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find(refusal.told), std::string::npos) << run.err;
}

INSTANTIATE_TEST_SUITE_P(
    Options, TableShapeRefusal,
    testing::Values(
        Refusal{"ColumnThatIsNotThere",
                kOtherNames,
                {"--map", "x=agee", "--map", "sex=Sex"},
                3,
                "has no column 'agee', which the model needs; it has age, Sex, x [269303]\n  what "
                "to do: Did you mean 'age' for 'agee'?"},
        Refusal{"NameThatTheModelDoesNotRead",
                kOtherNames,
                {"--map", "X=age"},
                1,
                "--map names 'X', which the model doesn't read; it reads sex, x [269327]\n  what "
                "to do: Did you mean 'x'?"},
        Refusal{"Target", kOtherNames, {"--map", "y=age"}, 1, "--map names 'y', which the model"},
        Refusal{"Twice",
                kOtherNames,
                {"--map", "x=age", "--map", "x=x"},
                1,
                "--map tells the column of 'x' twice"},
        Refusal{"TwiceInAFile",
                kOtherNames,
                {"--map", "@twice"},
                1,
                "/twice tells the column of 'x' twice"},
        Refusal{"NoEqualsSign",
                kOtherNames,
                {"--map", "x"},
                1,
                "--map has 'x'; expected is NAME=COLUMN"},
        Refusal{"NoName", kOtherNames, {"--map", "=age"}, 1, "--map has '=age'; expected is"},
        Refusal{"NoColumn", kOtherNames, {"--map", "x="}, 1, "--map has 'x='; expected is"},
        Refusal{"BadLineOfAFile", kOtherNames, {"--map", "@bad"}, 1, "line 2 of "},
        Refusal{"FileThatIsNotThere", kOtherNames, {"--map", "@none"}, 1, "the file can't be read"},
        Refusal{"FileThatIsAFolder", kOtherNames, {"--map", "@."}, 1, "the file can't be read"},
        Refusal{"NoHeaderAndMoreColumns",
                "9,1,f\n",
                {"--no-header"},
                3,
                "has 3 columns, the model needs 2: sex, x; without a header they have to be "
                "these, in this order [269328]"},
        Refusal{"NoHeaderAndFewerColumns", "9\n", {"--no-header"}, 3, "has 1 columns, the model"},
        Refusal{"NoHeaderAndNothing", "", {"--no-header"}, 3, "with --no-header, one that has a"},
        Refusal{"NumberBeyondTheColumns",
                "1,f\n",
                {"--no-header", "--map", "x=1", "--map", "sex=3"},
                3,
                "has no column '3', which the model needs; it has 1, 2 [269303]"},
        Refusal{"NumberZero",
                "1,f\n",
                {"--no-header", "--map", "x=0", "--map", "sex=2"},
                3,
                "has no column '0'"},
        Refusal{"NameInPlaceOfANumber",
                "1,f\n",
                {"--no-header", "--map", "x=x", "--map", "sex=2"},
                3,
                "has no column 'x'"},
        Refusal{"NoHeaderAndOneMapped",
                "1,f\n",
                {"--no-header", "--map", "x=1"},
                3,
                "has no column 'sex', which the model needs; it has 1, 2 [269303]"},
        Refusal{"TornFirstRowWithoutAHeader",
                "1,\"f\n",
                {"--no-header"},
                3,
                "row 1 opens a quote that is never closed"},
        Refusal{"OutDelimiterOfTwo",
                kOtherNames,
                {"--out-delimiter", "ab"},
                1,
                "--out-delimiter is 'ab'; expected is one character of one byte, or tab"},
        Refusal{"OutDelimiterOfNone",
                kOtherNames,
                {"--out-delimiter", ""},
                1,
                "--out-delimiter: the text is empty"},
        Refusal{"OutDelimiterIsTheDecimalMark",
                kOtherNames,
                {"--delimiter", ";", "--decimal", ",", "--out-delimiter", ","},
                1,
                "--out-delimiter and --decimal are both ','"},
        Refusal{"NoDigits",
                kOtherNames,
                {"--digits", "0"},
                1,
                "--digits: '0' is no whole number from 1 to 17"},
        Refusal{"TooManyDigits", kOtherNames, {"--digits", "18"}, 1, "'18' is no whole number"},
        Refusal{"NoThreads",
                kOtherNames,
                {"--threads", "0"},
                1,
                "--threads: '0' is no whole number from 1 to 1024"}),
    NameOf<Refusal>);

// Two categories that are numbers; the second is twice as probable, the beta being log 2.
const char* const kClassifier = R"(<?xml version="1.0"?>
<PMML xmlns="http://www.dmg.org/PMML-4_4" version="4.4"><Header/>
  <DataDictionary>
    <DataField name="code" optype="categorical" dataType="integer">
      <Value value="1234567"/><Value value="7654321"/></DataField>
    <DataField name="x" optype="continuous" dataType="double"/>
  </DataDictionary>
  <GeneralRegressionModel modelType="multinomialLogistic" functionName="classification"
                          targetReferenceCategory="1234567">
    <MiningSchema><MiningField name="code" usageType="target"/><MiningField name="x"/>
    </MiningSchema>
    <Output>
      <OutputField name="guess" optype="categorical" dataType="integer" feature="predictedValue"/>
      <OutputField name="how_sure" optype="continuous" dataType="double" feature="probability"/>
    </Output>
    <ParameterList><Parameter name="p0"/><Parameter name="p1"/></ParameterList>
    <CovariateList><Predictor name="x"/></CovariateList>
    <PPMatrix><PPCell value="1" predictorName="x" parameterName="p1"/></PPMatrix>
    <ParamMatrix>
      <PCell targetCategory="7654321" parameterName="p0" beta="0.6931471805599453" df="1"/>
      <PCell targetCategory="7654321" parameterName="p1" beta="0" df="1"/>
    </ParamMatrix>
  </GeneralRegressionModel>
</PMML>
)";

TEST(Digits, LeaveCategoriesAlone)
{
    const ScratchFolder folder;
    const std::string model = folder.Write("model.pmml", kClassifier);
    const std::string table = "x\n1\n2\n";
    const Finished run = RunVelscore({"score", model, "--digits", "3"}, table);
    const std::string row = "7654321,0.333,0.667,0,\n";
    EXPECT_EQ(
        run.out,
        "prediction,probability(1234567),probability(7654321),status,status_field\n" + row + row)
        << run.err;
    const Finished document =
        RunVelscore({"score", model, "--digits", "3", "--output", "document"}, table);
    EXPECT_EQ(document.out,
              "guess,how_sure,status,status_field\n7654321,0.667,0,\n7654321,0.667,0,\n")
        << document.err;
}

TEST(Digits, OfCurvesLeaveTheTimesAlone)
{
    const std::string model = DataFile("cases/cox-veteran-strata/model.pmml");
    const std::string table = "time,trt,karno,celltype\n1,1,60,squamous\n";
    const CsvText all = ParseCsv(RunVelscore({"curve", model}, table).out);
    const Finished run = RunVelscore({"curve", model, "--digits", "2"}, table);
    const CsvText few = ParseCsv(run.out);
    ASSERT_EQ(few.rows.size(), all.rows.size()) << run.err;
    EXPECT_EQ(few.Texts("time"), all.Texts("time"));
    EXPECT_EQ(few.Texts("time").back(), "999");
    for (size_t i = 0; i < all.rows.size(); ++i) {
        const double survival = std::stod(all.Texts("survival")[i]);
        EXPECT_NEAR(std::stod(few.Texts("survival")[i]), survival, 0.05 * survival + 1e-12);
        EXPECT_LE(few.Texts("survival")[i].size(), 7u);  // such as 0.00028
    }
}

// A table for scores serves curves as it is: its end time isn't read, and may be absent.
TEST(CurveShape, NeedsNoEndTime)
{
    const std::string model = DataFile("cases/cox-veteran-strata/model.pmml");
    const std::string whole =
        RunVelscore({"curve", model}, "trt,karno,celltype\n1,60,squamous\n").out;
    ASSERT_GT(ParseCsv(whole).rows.size(), 10u);
    struct Form {
        const char* table;
        Texts options;
    };
    const std::vector<Form> kForms = {
        {"1,60,squamous\n", {"--no-header"}},
        {"1,60,72,squamous\n", {"--no-header"}},
        {"1,60,squamous\n",
         {"--no-header", "--map", "trt=1", "--map", "karno=2", "--map", "celltype=3"}},
        {"trt,karno,cell\n1,60,squamous\n", {"--map", "celltype=cell", "--map", "time=day"}}};
    for (const Form& form : kForms) {
        Texts arguments{"curve", model};
        arguments.insert(arguments.end(), form.options.begin(), form.options.end());
        const Finished run = RunVelscore(arguments, form.table);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(run.out, whole) << form.table;
    }
    const Finished two = RunVelscore({"curve", model, "--no-header"}, "1,60\n");
    EXPECT_EQ(two.exitCode, 3);
    EXPECT_NE(two.err.find("has 2 columns, the model needs 3: trt, karno, celltype;"),
              std::string::npos)
        << two.err;
}

}  // namespace
}  // namespace MCVelscore_850
