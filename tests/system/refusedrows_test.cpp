// What the command tells of a row that has no score: its status, the field at fault and what stood
// in it, in every family and in every command alike.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

std::string CaseModel(const std::string& name)
{
    return ReadFile(DataFile("cases/" + name + "/model.pmml"));
}

TestModel Generalized(const std::string& attributes = "")
{
    TestModel model;
    model.modelHead =
        "modelType=\"generalizedLinear\" modelName=\"GZLM\" functionName=\"regression\" "
        "linkFunction=\"identity\" " +
        attributes;
    return model;
}

// A general linear model whose covariate is a derived field instead of x.
std::string WithDerived(const std::string& expression)
{
    TestModel model;
    model.sexField += R"(<DataField name="z" optype="continuous" dataType="double"/>)";
    model.xMining += R"(<MiningField name="z"/>)";
    model.afterSchema =
        "<LocalTransformations><DerivedField name='made' optype='continuous' dataType='double'>" +
        expression + "</DerivedField></LocalTransformations>";
    std::string text = model.Text();
    const auto replace = [&](const std::string& from, const std::string& to) {
        text.replace(text.find(from), from.size(), to);
    };
    replace(R"(<CovariateList><Predictor name="x"/>)",
            R"(<CovariateList><Predictor name="made"/>)");
    replace(R"(predictorName="x")", R"(predictorName="made")");
    return text;
}

struct Refused {
    const char* name;
    std::string model;
    std::string header;
    std::string row;
    std::string field;
    std::string told;  ///< of the first such row, in the closing line
};

void PrintTo(const Refused& refused, std::ostream* out) { *out << refused.name; }

class RefusedRow : public testing::TestWithParam<Refused> {};

TEST_P(RefusedRow, TellsItsFieldAndWhatStoodThere)
{
    const Refused& refused = GetParam();
    const ScratchFolder folder;
    const Finished run = RunVelscore({"score", folder.Write("model.pmml", refused.model)},
                                     refused.header + "\n" + refused.row + "\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const CsvText scores = ParseCsv(run.out);
    EXPECT_EQ(scores.Texts("status"), Texts{"90029"});
    EXPECT_EQ(scores.Texts("status_field"), Texts{refused.field});
    EXPECT_EQ(scores.Texts("prediction"), Texts{""});
    EXPECT_NE(run.err.find("90029 (first: row 1, " + refused.told + ")"), std::string::npos)
        << run.err;
}

const std::string kSwiss = "Agriculture,Examination,Education,Catholic,Infant.Mortality";
const std::string kVeteran = "time,trt,karno,celltype";
const std::string kQuotient =
    "<Apply function='/'><FieldRef field='x'/><FieldRef field='z'/></Apply>";

INSTANTIATE_TEST_SUITE_P(
    Families, RefusedRow,
    testing::Values(
        Refused{"LinearMissing", CaseModel("lm-swiss"), kSwiss, "17,15,,9.96,22.2", "Education",
                "field Education: empty"},
        Refused{"GeneralLinearMissing", TestModel().Text(), "x,sex", "NA,f", "x", "field x: 'NA'"},
        Refused{"GeneralLinearUnlisted", TestModel().Text(), "x,sex", "1,q", "sex",
                "field sex: 'q'"},
        // of several the one that the model looks at last: covariates come after factors
        Refused{"TheLastOfSeveral", TestModel().Text(), "x,sex", ",q", "x", "field x: empty"},
        Refused{"GeneralizedMissing", Generalized().Text(), "x,sex", ",f", "x", "field x: empty"},
        Refused{"GeneralizedUnlisted", Generalized().Text(), "x,sex", "1,q", "sex",
                "field sex: 'q'"},
        Refused{"ConditionalMissing", CaseModel("clr-infert"), "spontaneous,induced", "2,",
                "induced", "field induced: empty"},
        Refused{"CoxPredictor", CaseModel("cox-veteran-strata"), kVeteran, "72,1,,adeno", "karno",
                "field karno: empty"},
        Refused{"CoxEndTime", CaseModel("cox-veteran-strata"), kVeteran, ",1,60,adeno", "time",
                "field time: empty"},
        Refused{"CoxStratumMissing", CaseModel("cox-veteran-strata"), kVeteran, "72,1,60,",
                "celltype", "field celltype: empty"},
        Refused{"CoxStratumUnlisted", CaseModel("cox-veteran-strata"), kVeteran, "72,1,60,other",
                "celltype", "field celltype: 'other'"},
        Refused{"MultinomialMissing", CaseModel("mlr-iris-squared"), "Sepal.Width,Sepal.Length",
                "3.5,", "Sepal.Length", "field Sepal.Length: empty"},
        // A derived field has no column: what it is computed from is at fault.
        Refused{"InputOfADerivedField", WithDerived(kQuotient), "x,z,sex", "1,,f", "z",
                "field z: empty"},
        Refused{"OnlyInputOfADerivedField",
                WithDerived("<Apply function='ln'><FieldRef field='x'/></Apply>"), "x,z,sex",
                "-2.5,1,f", "x", "field x: '-2.5'"},
        Refused{"DerivedFieldOfSoundInputs", WithDerived(kQuotient), "x,z,sex", "1,0,f", "made",
                "field made"}),
    [](const auto& each) { return each.param.name; });

// The text that a status's own message tells, and a row without a field at fault, stay as they are.
TEST(RefusedRows, MessagesOfTheirOwnStand)
{
    const ScratchFolder folder;
    const Finished run =
        RunVelscore({"score", folder.Write("model.pmml", TestModel().Text())}, "x,sex\ntwo,f\n");
    EXPECT_NE(run.err.find("269050 (first: 'two' in the field x of row 1 is not a number)"),
              std::string::npos)
        << run.err;
}

TEST(RefusedRows, TrialsBeyondAnIntAreTold)
{
    TestModel model = Generalized("distribution=\"binomial\" trialsVariable=\"n\"");
    model.xMining += "<MiningField name=\"n\"/>";
    model.sexField += "<DataField name=\"n\" optype=\"continuous\" dataType=\"double\"/>";
    const ScratchFolder folder;
    const Finished run = RunVelscore({"score", folder.Write("model.pmml", model.Text())},
                                     "x,sex,n\n1,f,1e10\n1,f,\n");
    EXPECT_EQ(ParseCsv(run.out).Texts("status_field"), (Texts{"n", "n"}));
    EXPECT_NE(run.err.find("row 1, field n: '1e10'"), std::string::npos) << run.err;
}

// A value that a replacement stands in for is no reason. The covariate comes after the factor here,
// so it would be told were it one; its value isn't missing but not valid, which the model replaces.
TEST(RefusedRows, AReplacedValueIsNotBlamed)
{
    TestModel model;
    model.xMining = R"(<MiningField name="x" missingValueReplacement="5"/>)";
    std::string text = model.Text();
    const std::string x = R"(<DataField name="x" optype="continuous" dataType="double"/>)";
    text.replace(text.find(x), x.size(),
                 R"(<DataField name="x" optype="continuous" dataType="double">
      <Interval closure="closedClosed" leftMargin="0" rightMargin="10"/></DataField>)");
    const ScratchFolder folder;
    const Finished run =
        RunVelscore({"score", folder.Write("model.pmml", text)}, "x,sex\n99,q\n99,f\n");
    const CsvText scores = ParseCsv(run.out);
    EXPECT_EQ(scores.Texts("status"), (Texts{"90029", "0"}));
    EXPECT_EQ(scores.Texts("prediction"), (Texts{"", "11"}));
    EXPECT_EQ(scores.Texts("status_field"), (Texts{"sex", ""}));
}

TEST(RefusedRows, CurvesTellTheSame)
{
    const std::string model = DataFile("cases/cox-veteran-strata/model.pmml");
    for (const auto& [row, told] : {std::pair{"1,,adeno", "field karno: empty"},
                                    std::pair{"1,60,other", "field celltype: 'other'"},
                                    std::pair{"1,60,", "field celltype: empty"}}) {
        const Finished run =
            RunVelscore({"curve", model}, std::string("trt,karno,celltype\n") + row + "\n");
        EXPECT_EQ(run.out, "row,time,survival,cum_hazard\n1,,,\n");
        EXPECT_NE(run.err.find(std::string("90029 (first: row 1, ") + told + ")"),
                  std::string::npos)
            << run.err;
    }
}

TEST(RefusedRows, VerifyTellsTheSame)
{
    TestModel model;
    model.atEnd =
        "<ModelVerification><VerificationFields><VerificationField field='x' column='a'/>"
        "<VerificationField field='sex' column='b'/><VerificationField field='y' column='c'/>"
        "</VerificationFields><InlineTable><row><a>2</a><b>q</b><c>15</c></row>"
        "<row><a>two</a><b>m</b><c>15</c></row><row><b>m</b><c>15</c></row></InlineTable>"
        "</ModelVerification>";
    const ScratchFolder folder;
    const std::string document = folder.Write("model.pmml", model.Text());
    EXPECT_EQ(RunVelscore({"verify", document}).out,
              "record 1, y: expected 15, found nothing (status 90029, field sex: 'q')\n"
              "record 2, y: expected 15, found nothing (status 269050, field x: 'two')\n"
              "record 3, y: expected 15, found nothing (status 90029, field x: empty)\n");
    const auto report = nlohmann::json::parse(RunVelscore({"verify", "--json", document}).out);
    EXPECT_EQ(report.at("differences")[0].at("statusField"), "sex");
    EXPECT_EQ(report.at("differences")[0].at("statusText"), "q");
}

}  // namespace
}  // namespace MCVelscore_850
