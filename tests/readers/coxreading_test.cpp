// What only a Cox document has: time and subject variables, baselines in both forms, strata,
// reference points, status values, and contrasts of its factors.

#include <gtest/gtest.h>

#include <cmath>

#include "host/messages/messages.h"
#include "models/coxregresult.h"
#include "models/coxregrmodel.h"
#include "readers/generalregressiontranslator.h"
#include "tests/models/modelfixture.h"
#include "tests/readers/readdocument.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;
using Table = CoxRegModel::HazardTable;
using Tables = std::vector<Table>;
using Texts = std::vector<std::string>;

// The parts of a Cox document that a test cares about: lp = 0.5 [f = b] + 0.25 x, hazard 0.1 from
// time 2 and 0.3 from 5, up to 9.
struct CoxParts {
    std::string version = "4.4";
    std::string fields;
    std::string schema;
    std::string status = "<MiningField name=\"status\" usageType=\"target\"/>";
    std::string model = "modelType=\"CoxRegression\" functionName=\"regression\"";
    std::string variables = "endTimeVariable=\"time\"";
    std::string extensions;
    std::string transformations;
    std::string parameters = "<Parameter name=\"pf\"/><Parameter name=\"px\"/>";
    std::string factor = "<Predictor name=\"f\"/>";
    std::string fCell = "b";
    std::string baseline =
        "<BaseCumHazardTables maxTime=\"9\"><BaselineCell time=\"2\" cumHazard=\"0.1\"/>"
        "<BaselineCell time=\"5\" cumHazard=\"0.3\"/></BaseCumHazardTables>";

    std::string Text() const
    {
        return "<PMML version=\"" + version +
               "\"><DataDictionary>"
               "<DataField name=\"status\" optype=\"continuous\" dataType=\"double\"/>"
               "<DataField name=\"time\" optype=\"continuous\" dataType=\"double\"/>"
               "<DataField name=\"x\" optype=\"continuous\" dataType=\"double\"/>"
               "<DataField name=\"f\" optype=\"categorical\" dataType=\"string\">"
               "<Value value=\"a\"/><Value value=\"b\"/></DataField>"
               "<DataField name=\"s\" optype=\"categorical\" dataType=\"string\">"
               "<Value value=\"north\"/><Value value=\"south\"/></DataField>" +
               fields + "</DataDictionary><GeneralRegressionModel " + model + " " + variables +
               ">" + extensions + "<MiningSchema>" + status +
               "<MiningField name=\"time\"/><MiningField name=\"x\"/><MiningField name=\"f\"/>"
               "<MiningField name=\"s\"/>" +
               schema + "</MiningSchema>" + transformations + "<ParameterList>" + parameters +
               "</ParameterList><FactorList>" + factor +
               "</FactorList><CovariateList><Predictor name=\"x\"/></CovariateList><PPMatrix>"
               "<PPCell value=\"" +
               fCell +
               "\" predictorName=\"f\" parameterName=\"pf\"/>"
               "<PPCell value=\"1\" predictorName=\"x\" parameterName=\"px\"/></PPMatrix>"
               "<ParamMatrix><PCell parameterName=\"pf\" beta=\"0.5\" df=\"1\"/>"
               "<PCell parameterName=\"px\" beta=\"0.25\" df=\"1\"/></ParamMatrix>" +
               baseline + "</GeneralRegressionModel></PMML>";
    }
};

std::string Extension(const std::string& name, const std::string& value)
{
    return "<Extension extender=\"velscore\" name=\"" + name + "\" value=\"" + value + "\"/>";
}

std::string TablesExtension(const std::string& within)
{
    return "<Extension extender=\"velscore\" name=\"X-BaseCumHazardTables\">" + within +
           "</Extension>";
}

std::string OwnTable(const std::string& times, double hazard)
{
    std::string table = "<X-BaseCumHazardTable>";
    for (const char time : times) {
        table += std::string("<X-Baseline time=\"") + time + "\" cumHazard=\"" +
                 std::to_string(hazard) + "\"/>";
        hazard += 1.0;
    }
    return table + "</X-BaseCumHazardTable>";
}

// The same model as the older form has it.
CoxParts OlderForm()
{
    CoxParts parts;
    parts.version = "3.2";
    parts.model =
        "modelType=\"generalLinear\" modelName=\"Cox\" functionName=\"regression\" "
        "targetVariableName=\"status\"";
    parts.variables = "";
    parts.extensions = Extension("endTimeVariable", "time") +
                       TablesExtension("<X-BaseMaxTime value=\"9\"/>" + OwnTable("25", 0.5));
    parts.baseline = "";
    return parts;
}

std::unique_ptr<CoxRegModel> ReadCox(const CoxParts& parts)
{
    return std::unique_ptr<CoxRegModel>(
        static_cast<CoxRegModel*>(ReadModel(parts.Text()).release()));
}

struct Scored {
    long code;
    double hazard;
    double survival;
};

Scored Score(CoxRegModel& model, const char* f, double x, double time, const char* s = "north")
{
    Slot slot;
    Case c(false);
    c.With("f", f).With("x", x).With("time", time).With("s", s);
    const auto status = model.GetScore(&c.Record(), slot.result, false);
    if (!status.IsOK()) return {status.GetErrorCode(), 0.0, 0.0};
    return {0, slot.As<CoxRegResult>().GetCumHazardValue(), slot.Number()};
}

std::vector<ModelDescription::Stratum> StrataOf(const CoxRegModel& model)
{
    ModelDescription about;
    model.Describe(about);
    return about.strata;
}

TEST(CoxReading, ScoresAPublishedDocument)
{
    const auto model = ReadCox(CoxParts());
    EXPECT_EQ(model->GetModelType(), 26);
    EXPECT_EQ(model->GetEndTimeVariableName(), "time");
    EXPECT_EQ(model->GetStratumVariableName(), "");
    EXPECT_EQ(model->GetCumHazardTables(), (Tables{{{2, 0.1}, {5, 0.3}}}));
    EXPECT_EQ(model->GetMaxTimes(), std::vector<double>{9});
    EXPECT_EQ(model->GetStratumCatValMaxMap(),
              (std::map<std::string, double>{{"No_StratumVariable_", 9}}));
    const Scored scored = Score(*model, "b", 2.0, 6.0);
    EXPECT_EQ(scored.hazard, std::exp(1.0) * 0.3);
    EXPECT_EQ(scored.survival, 1.0 / std::exp(scored.hazard));
    EXPECT_EQ(Score(*model, "b", 2.0, 1.0).survival, 1.0);
    EXPECT_EQ(Score(*model, "b", 2.0, 9.5).survival, kSysmis);
}

TEST(CoxReading, ScoresADocumentOfTheOlderForm)
{
    const auto model = ReadCox(OlderForm());
    EXPECT_EQ(model->GetModelType(), 26);
    EXPECT_EQ(model->GetCumHazardTables(), (Tables{{{2, 0.5}, {5, 1.5}}}));
    EXPECT_TRUE(model->GetStratumCategs().empty());
    EXPECT_EQ(model->GetStratumCatValMaxMap(),
              (std::map<std::string, double>{{"No_StratumVariable_", 9}}));
    EXPECT_EQ(Score(*model, "a", 4.0, 3.0).hazard, std::exp(1.0) * 0.5);
}

TEST(CoxReading, ComplexSamplesHaveAModelTypeOfTheirOwn)
{
    CoxParts parts = OlderForm();
    parts.model = With(parts.model, "\"Cox\"", "\"CSCox\"");
    EXPECT_EQ(ReadCox(parts)->GetModelType(), 27);
}

// Times, and what becomes of their roles.

TEST(CoxReading, AttributesOfTheTimesKeepTheirNamesAndTheSchemaHasTheLastWordOnRoles)
{
    CoxParts parts;
    parts.variables =
        "endTimeVariable=\"time\" startTimeVariable=\"start\" subjectIDVariable=\"who\"";
    parts.fields =
        "<DataField name=\"start\" optype=\"continuous\" dataType=\"double\"/>"
        "<DataField name=\"who\" optype=\"continuous\" dataType=\"double\"/>";
    const auto model = ReadCox(parts);
    EXPECT_EQ(model->GetStartTimeVariableName(), "start");
    EXPECT_EQ(model->GetSubjectVariableName(), "who");
    EXPECT_EQ(model->GetVarRole("start"), ScoreModel::ROLE_TIME);
    EXPECT_EQ(model->GetVarRole("who"), ScoreModel::ROLE_SUBJECT);
    EXPECT_EQ(model->GetVarRole("time"), ScoreModel::ROLE_PREDICTOR);  // active in the schema
}

TEST(CoxReading, StartTimeAndSubjectOfTheAttributeFormNeedNoField)
{
    CoxParts parts;
    parts.variables =
        "endTimeVariable=\"time\" startTimeVariable=\"nowhere\" subjectIDVariable=\"nobody\"";
    const auto model = ReadCox(parts);
    EXPECT_EQ(model->GetStartTimeVariableName(), "nowhere");
    EXPECT_EQ(Score(*model, "b", 2.0, 6.0).hazard, std::exp(1.0) * 0.3);
}

TEST(CoxReading, ExtensionsOfTheTimesSetTheirRolesAfterTheSchema)
{
    CoxParts parts = OlderForm();
    parts.fields =
        "<DataField name=\"start\" optype=\"continuous\" dataType=\"double\"/>"
        "<DataField name=\"who\" optype=\"continuous\" dataType=\"double\"/>";
    parts.schema = "<MiningField name=\"start\"/><MiningField name=\"who\"/>";
    parts.extensions +=
        Extension("startTimeVariable", "start") + Extension("subjectIDVariable", "who");
    const auto model = ReadCox(parts);
    EXPECT_EQ(model->GetVarRole("time"), ScoreModel::ROLE_TIME);
    EXPECT_EQ(model->GetVarRole("start"), ScoreModel::ROLE_TIME);
    EXPECT_EQ(model->GetVarRole("who"), ScoreModel::ROLE_SUBJECT);
    EXPECT_EQ(model->GetStartTimeVariableName(), "start");
    EXPECT_EQ(model->GetSubjectVariableName(), "who");
}

TEST(CoxReading, PredictorMayBeADerivedField)
{
    CoxParts parts;
    parts.transformations =
        "<LocalTransformations><DerivedField name=\"twice\" optype=\"continuous\" "
        "dataType=\"double\"><Apply function=\"*\"><Constant dataType=\"double\">2</Constant>"
        "<FieldRef field=\"x\"/></Apply></DerivedField></LocalTransformations>";
    const auto model =
        ReadModel(With(With(parts.Text(), "<Predictor name=\"x\"/>", "<Predictor name=\"twice\"/>"),
                       "predictorName=\"x\"", "predictorName=\"twice\""));
    EXPECT_EQ(Score(static_cast<CoxRegModel&>(*model), "a", 2.0, 6.0).hazard, std::exp(1.0) * 0.3);
}

TEST(CoxReading, EndTimeMayBeADerivedField)
{
    CoxParts parts;
    parts.variables = "endTimeVariable=\"twice\"";
    parts.transformations =
        "<LocalTransformations><DerivedField name=\"twice\" optype=\"continuous\" "
        "dataType=\"double\"><Apply function=\"*\"><Constant dataType=\"double\">2</Constant>"
        "<FieldRef field=\"time\"/></Apply></DerivedField></LocalTransformations>";
    const auto model = ReadCox(parts);
    EXPECT_EQ(Score(*model, "b", 2.0, 2.5).hazard, std::exp(1.0) * 0.3);
    EXPECT_EQ(Score(*model, "b", 2.0, 2.0).hazard, std::exp(1.0) * 0.1);
}

// Baselines.

const std::string kTwoStrata =
    "<BaseCumHazardTables><BaselineStratum value=\"north\" maxTime=\"9\">"
    "<BaselineCell time=\"2\" cumHazard=\"0.1\"/></BaselineStratum>"
    "<BaselineStratum value=\"south\" maxTime=\"4\"><BaselineCell time=\"3\" cumHazard=\"0.7\"/>"
    "<BaselineCell time=\"1\" cumHazard=\"0.2\"/></BaselineStratum></BaseCumHazardTables>";

TEST(CoxBaselines, StrataOfTheAttribute)
{
    CoxParts parts;
    parts.variables += " baselineStrataVariable=\"s\"";
    parts.baseline = kTwoStrata;
    const auto model = ReadCox(parts);
    EXPECT_EQ(model->GetStratumVariableName(), "s");
    EXPECT_EQ(model->GetStratumVarName(), "s");
    EXPECT_EQ(model->GetVarRole("s"), ScoreModel::ROLE_STRATUM);
    EXPECT_EQ(model->GetStratumCategs(), (Texts{"north", "south"}));
    EXPECT_EQ(model->GetCumHazardTables(), (Tables{{{2, 0.1}}, {{1, 0.2}, {3, 0.7}}}));
    EXPECT_EQ(model->GetStratumCatValMaxMap(),
              (std::map<std::string, double>{{"north", 9}, {"south", 4}}));
    // The first cell of the document, not the smallest time, is where the hazard begins.
    EXPECT_EQ(StrataOf(*model).at(1).minTime, 3.0);
    EXPECT_EQ(Score(*model, "a", 0.0, 2.0, "south").hazard, 0.0);
    EXPECT_EQ(Score(*model, "a", 0.0, 3.0, "south").hazard, 0.7);
    EXPECT_EQ(Score(*model, "a", 0.0, 5.0, "south").hazard, kSysmis);
    EXPECT_EQ(Score(*model, "a", 0.0, 5.0, "north").hazard, 0.1);
    EXPECT_EQ(Score(*model, "a", 0.0, 5.0, "east").code, 90029);
}

TEST(CoxBaselines, NameOnTheFirstStratumGoesBeforeTheAttributeAndIsNotKeptAsStratumVarName)
{
    CoxParts parts;
    parts.variables += " baselineStrataVariable=\"f\"";
    parts.baseline = With(kTwoStrata, "value=\"north\"", "varName=\"s\" value=\"north\"");
    const auto model = ReadCox(parts);
    EXPECT_EQ(model->GetStratumVariableName(), "s");
    EXPECT_EQ(model->GetStratumVarName(), "");
    EXPECT_EQ(Score(*model, "a", 0.0, 3.0, "south").hazard, 0.7);
}

TEST(CoxBaselines, NameOnALaterStratumIsNotLookedAt)
{
    CoxParts parts;
    parts.variables += " baselineStrataVariable=\"s\"";
    parts.baseline = With(kTwoStrata, "value=\"south\"", "varName=\"nowhere\" value=\"south\"");
    EXPECT_EQ(ReadCox(parts)->GetStratumVariableName(), "s");
}

TEST(CoxBaselines, StrataWithoutAVariableTakeTheFirstTable)
{
    CoxParts parts;
    parts.baseline = kTwoStrata;
    const auto model = ReadCox(parts);
    EXPECT_EQ(model->GetStratumVariableName(), "");
    EXPECT_EQ(Score(*model, "a", 0.0, 5.0, "south").hazard, 0.1);
}

TEST(CoxBaselines, TableWithoutCellsIsATableInThePublishedForm)
{
    CoxParts parts;
    parts.baseline = "<BaseCumHazardTables maxTime=\"9\"/>";
    const auto model = ReadCox(parts);
    EXPECT_EQ(model->GetCumHazardTables(), Tables{{}});
    // Its first time is the largest number there is: every time lies before it.
    EXPECT_EQ(Score(*model, "a", 0.0, 5.0).hazard, 0.0);

    parts.variables += " baselineStrataVariable=\"s\"";
    parts.baseline =
        "<BaseCumHazardTables><BaselineStratum value=\"north\" maxTime=\"9\"/>"
        "</BaseCumHazardTables>";
    EXPECT_EQ(Score(*ReadCox(parts), "a", 0.0, 5.0).hazard, kSysmis);
}

TEST(CoxBaselines, OfTwoCellsOfOneTimeTheFirstCounts)
{
    CoxParts parts;
    parts.baseline =
        "<BaseCumHazardTables maxTime=\"9\"><BaselineCell time=\"2\" cumHazard=\"0.1\"/>"
        "<BaselineCell time=\"2.0\" cumHazard=\"0.6\"/></BaseCumHazardTables>";
    EXPECT_EQ(ReadCox(parts)->GetCumHazardTables(), (Tables{{{2, 0.1}}}));
}

std::string OwnStratum(const std::string& attributes, const std::string& within)
{
    return "<X-Stratum " + attributes + ">" + within + "</X-Stratum>";
}

TEST(CoxBaselines, StrataOfTheOwnForm)
{
    CoxParts parts = OlderForm();
    parts.extensions =
        Extension("endTimeVariable", "time") +
        TablesExtension(
            OwnStratum("varName=\"s\" value=\"north\"",
                       "<X-BaseMaxTime value=\"9\"/>" + OwnTable("2", 0.5)) +
            OwnStratum("value=\"south\"", "<X-BaseMaxTime value=\"4\"/>" + OwnTable("31", 1.5)));
    const auto model = ReadCox(parts);
    EXPECT_EQ(model->GetStratumVariableName(), "s");
    EXPECT_EQ(model->GetStratumVarName(), "s");
    EXPECT_EQ(model->GetVarRole("s"), ScoreModel::ROLE_STRATUM);
    EXPECT_EQ(model->GetCumHazardTables(), (Tables{{{2, 0.5}}, {{1, 2.5}, {3, 1.5}}}));
    EXPECT_EQ(model->GetMaxTimes(), (std::vector<double>{9, 4}));
    EXPECT_EQ(model->GetStratumCatValMaxMap(),
              (std::map<std::string, double>{{"north", 9}, {"south", 4}}));
    EXPECT_EQ(Score(*model, "a", 0.0, 3.0, "south").hazard, 1.5);
    EXPECT_EQ(Score(*model, "a", 0.0, 2.0, "south").hazard, 0.0);
}

TEST(CoxBaselines, OwnFormWithoutANameIsNotStratified)
{
    CoxParts parts = OlderForm();
    parts.extensions =
        Extension("endTimeVariable", "time") +
        TablesExtension(
            OwnStratum("value=\"north\"", "<X-BaseMaxTime value=\"9\"/>" + OwnTable("2", 0.5)) +
            OwnStratum("varName=\"s\" value=\"south\"",
                       "<X-BaseMaxTime value=\"4\"/>" + OwnTable("3", 1.5)));
    const auto model = ReadCox(parts);
    EXPECT_EQ(model->GetStratumVariableName(), "");
    EXPECT_EQ(Score(*model, "a", 0.0, 3.0, "south").hazard, 0.5);
}

TEST(CoxBaselines, OwnFormWithoutALargestTimeShiftsTheLaterOnes)
{
    CoxParts parts = OlderForm();
    parts.extensions =
        Extension("endTimeVariable", "time") +
        TablesExtension(
            OwnStratum("varName=\"s\" value=\"north\"", OwnTable("2", 0.5)) +
            OwnStratum("value=\"south\"", "<X-BaseMaxTime value=\"4\"/>" + OwnTable("3", 1.5)));
    const auto model = ReadCox(parts);
    EXPECT_EQ(model->GetStratumCategs(), (Texts{"north", "south"}));
    EXPECT_EQ(model->GetMaxTimes(), std::vector<double>{4});
    EXPECT_EQ(model->GetStratumCatValMaxMap(), (std::map<std::string, double>{{"south", 4}}));
    EXPECT_EQ(Score(*model, "a", 0.0, 3.0, "north").hazard, 0.5);
    EXPECT_EQ(Score(*model, "a", 0.0, 5.0, "north").hazard, kSysmis);  // the southern limit
    EXPECT_EQ(Score(*model, "a", 0.0, 3.0, "south").hazard, kSysmis);  // none is left
}

TEST(CoxBaselines, OwnFormCountsAStratumsTableOnlyWhenItIsTheOnlyOne)
{
    CoxParts parts = OlderForm();
    parts.extensions =
        Extension("endTimeVariable", "time") +
        TablesExtension(
            OwnStratum("varName=\"s\" value=\"north\"", OwnTable("2", 0.5) + OwnTable("2", 0.5)) +
            OwnStratum("value=\"south\"", "<X-BaseMaxTime value=\"4\"/>" + OwnTable("3", 1.5)));
    const auto model = ReadCox(parts);
    EXPECT_EQ(model->GetStratumCategs(), (Texts{"north", "south"}));
    EXPECT_EQ(model->GetCumHazardTables(), (Tables{{{3, 1.5}}}));
}

TEST(CoxBaselines, OfSeveralLargestTimesInAStratumTheFirstIsKeptByCategoryAlone)
{
    CoxParts parts = OlderForm();
    parts.extensions =
        Extension("endTimeVariable", "time") +
        TablesExtension(OwnStratum(
            "varName=\"s\" value=\"north\"",
            "<X-BaseMaxTime value=\"9\"/><X-BaseMaxTime value=\"8\"/>" + OwnTable("2", 0.5)));
    const auto model = ReadCox(parts);
    EXPECT_TRUE(model->GetMaxTimes().empty());
    EXPECT_EQ(model->GetStratumCatValMaxMap(), (std::map<std::string, double>{{"north", 9}}));
}

TEST(CoxBaselines, OwnTableWithoutCellsKeepsTheTimeItStartedWith)
{
    // Without strata the negative of the missing number, in a stratum the missing number itself.
    CoxParts parts = OlderForm();
    parts.extensions = Extension("endTimeVariable", "time") +
                       TablesExtension("<X-BaseMaxTime value=\"9\"/>" + OwnTable("", 0.0));
    EXPECT_EQ(Score(*ReadCox(parts), "a", 0.0, 5.0).hazard, 0.0);
    parts.extensions =
        Extension("endTimeVariable", "time") +
        TablesExtension(OwnStratum("varName=\"s\" value=\"north\"",
                                   "<X-BaseMaxTime value=\"9\"/>" + OwnTable("", 0.0)));
    EXPECT_EQ(Score(*ReadCox(parts), "a", 0.0, 5.0).hazard, kSysmis);
}

TEST(CoxBaselines, DocumentWithBothFormsHasTheTablesOfBothAndTheCategoriesOfThePublished)
{
    CoxParts parts;
    parts.variables += " baselineStrataVariable=\"s\"";
    parts.extensions = TablesExtension(OwnStratum(
        "varName=\"f\" value=\"b\"", "<X-BaseMaxTime value=\"7\"/>" + OwnTable("2", 0.5)));
    parts.baseline = kTwoStrata;
    const auto model = ReadCox(parts);
    EXPECT_EQ(model->GetCumHazardTables(), (Tables{{{2, 0.5}}, {{2, 0.1}}, {{1, 0.2}, {3, 0.7}}}));
    EXPECT_EQ(model->GetStratumCategs(), (Texts{"north", "south"}));
    EXPECT_EQ(model->GetMaxTimes(), (std::vector<double>{9, 4}));
    EXPECT_EQ(model->GetStratumVariableName(), "s");
    EXPECT_EQ(model->GetStratumCatValMaxMap(),
              (std::map<std::string, double>{{"b", 7}, {"north", 9}, {"south", 4}}));
    EXPECT_EQ(Score(*model, "a", 0.0, 2.0, "north").hazard, 0.5);
}

TEST(CoxBaselines, OfTwoStrataOfOneNameTheFirstKeepsItsLargestTimeByCategory)
{
    CoxParts parts;
    parts.variables += " baselineStrataVariable=\"s\"";
    parts.baseline = With(kTwoStrata, "value=\"south\"", "value=\"north\"");
    const auto model = ReadCox(parts);
    EXPECT_EQ(model->GetStratumCatValMaxMap(), (std::map<std::string, double>{{"north", 9}}));
    EXPECT_EQ(model->GetMaxTimes(), (std::vector<double>{9, 4}));
    EXPECT_EQ(Score(*model, "a", 0.0, 5.0, "north").hazard, 0.1);
}

TEST(CoxBaselines, OwnStrataOfOneNameKeepTheFirstLargestTimeByCategory)
{
    CoxParts parts = OlderForm();
    parts.extensions =
        Extension("endTimeVariable", "time") +
        TablesExtension(
            OwnStratum("varName=\"s\" value=\"north\"",
                       "<X-BaseMaxTime value=\"9\"/>" + OwnTable("2", 0.5)) +
            OwnStratum("value=\"north\"", "<X-BaseMaxTime value=\"4\"/>" + OwnTable("3", 1.5)));
    const auto model = ReadCox(parts);
    EXPECT_EQ(model->GetStratumCatValMaxMap(), (std::map<std::string, double>{{"north", 9}}));
    EXPECT_EQ(model->GetMaxTimes(), (std::vector<double>{9, 4}));
}

TEST(CoxBaselines, StratumMayBeADerivedField)
{
    CoxParts parts;
    parts.variables += " baselineStrataVariable=\"side\"";
    parts.transformations =
        "<LocalTransformations><DerivedField name=\"side\" optype=\"categorical\" "
        "dataType=\"string\"><FieldRef field=\"s\"/></DerivedField></LocalTransformations>";
    parts.baseline = kTwoStrata;
    const auto model = ReadCox(parts);
    EXPECT_EQ(Score(*model, "a", 0.0, 3.0, "south").hazard, 0.7);
    EXPECT_EQ(Score(*model, "a", 0.0, 3.0, "north").hazard, 0.1);
}

// bench/cox_bench.cpp tells how long they take.
TEST(CoxBaselines, LargeTablesAndManyStrataAreRead)
{
    CoxParts parts;
    parts.baseline = "<BaseCumHazardTables maxTime=\"1e9\">";
    for (int i = 0; i < 100000; ++i) {
        parts.baseline += "<BaselineCell time=\"" + std::to_string(i) + "\" cumHazard=\"" +
                          std::to_string(i) + "e-5\"/>";
    }
    parts.baseline += "</BaseCumHazardTables>";
    CoxParts strata;
    strata.variables += " baselineStrataVariable=\"x\"";
    strata.baseline = "<BaseCumHazardTables>";
    strata.extensions = TablesExtension("");
    std::string own;
    for (int i = 0; i < 1000; ++i) {
        const std::string n = std::to_string(i);
        strata.baseline += "<BaselineStratum value=\"" + n + "\" maxTime=\"9\">";
        own += "<X-Stratum varName=\"x\" value=\"" + n + "\"><X-BaseMaxTime value=\"9\"/>";
        own += "<X-BaseCumHazardTable>";
        for (int j = 0; j < 100; ++j) {
            const std::string cell =
                " time=\"" + std::to_string(j) + "\" cumHazard=\"" + n + "\"/>";
            strata.baseline += "<BaselineCell" + cell;
            own += "<X-Baseline" + cell;
        }
        strata.baseline += "</BaselineStratum>";
        own += "</X-BaseCumHazardTable></X-Stratum>";
    }
    strata.baseline += "</BaseCumHazardTables>";
    CoxParts ownStrata = OlderForm();
    ownStrata.extensions = Extension("endTimeVariable", "time") + TablesExtension(own);

    for (const CoxParts* each : {&parts, &strata, &ownStrata}) {
        ParsedText text(each->Text());
        const std::unique_ptr<ScoreModel> model(
            GeneralRegressionTranslator().ParseFromTree(text.Get(), ""));
        auto& cox = static_cast<CoxRegModel&>(*model);
        if (each == &parts) {
            EXPECT_EQ(Score(cox, "a", 0.0, 77777.5).hazard, 77777e-5);
        } else {
            EXPECT_EQ(Score(cox, "a", 998.0, 5.0).hazard, std::exp(0.25 * 998.0) * 998.0);
        }
    }
}

// Reference points.

TEST(CoxReferencePoints, StandInTheParameterListOrInTheExtensionAndTheListOutranks)
{
    CoxParts parts;
    parts.parameters =
        "<Parameter name=\"pf\" referencePoint=\"0.5\"/>"
        "<Parameter name=\"px\" referencePoint=\"3\"/>";
    EXPECT_EQ(ReadCox(parts)->GetBasePointTable(), (std::vector<double>{0.5, 3}));
    EXPECT_EQ(Score(*ReadCox(parts), "b", 2.0, 6.0).hazard, std::exp(0.25 - 0.25) * 0.3);

    CoxParts older = OlderForm();
    older.extensions +=
        "<Extension name=\"referencePoint\"><X-BasePoint parameterName=\"px\" value=\"4\"/>"
        "<X-BasePoint parameterName=\"px\" value=\"5\"/>"
        "<X-BasePoint parameterName=\"pf\" value=\"1\"/></Extension>";
    EXPECT_EQ(ReadCox(older)->GetBasePointTable(), (std::vector<double>{1, 4}));
    older.parameters = "<Parameter name=\"pf\" referencePoint=\"7\"/><Parameter name=\"px\"/>";
    EXPECT_EQ(ReadCox(older)->GetBasePointTable(), (std::vector<double>{7, 4}));
}

TEST(CoxReferencePoints, OfTwoParametersOfOneNameTheFirstGivesThePoint)
{
    CoxParts parts;
    parts.parameters =
        "<Parameter name=\"pf\" referencePoint=\"0.5\"/>"
        "<Parameter name=\"px\" referencePoint=\"3\"/>"
        "<Parameter name=\"px\" referencePoint=\"9\"/>";
    EXPECT_EQ(ReadCox(parts)->GetBasePointTable(), (std::vector<double>{0.5, 3}));
}

TEST(CoxReferencePoints, PointOfAnUnknownParameterIsCountedAndThenDropped)
{
    CoxParts parts;
    parts.parameters = "<Parameter name=\"pf\" referencePoint=\"0.5\"/><Parameter name=\"px\"/>";
    parts.extensions =
        "<Extension name=\"referencePoint\"><X-BasePoint parameterName=\"other\" value=\"4\"/>"
        "</Extension>";
    EXPECT_EQ(ReadCox(parts)->GetBasePointTable(), (std::vector<double>{0.5, 0}));
}

TEST(CoxReferencePoints, OnAnotherFamilyAreRefusedByParameterAndModelType)
{
    std::string document = kGeneralLinearDocument;
    for (const char* name : {"\"p0\" label=\"Intercept\"", "\"p1\"", "\"p2\"", "\"p3\""}) {
        const std::string parameter = std::string("<Parameter name=") + name;
        document = With(document, parameter, parameter + " referencePoint=\"1\"");
    }
    const VSException refusal = RefusalOf(document);
    EXPECT_EQ(refusal.GetErrorCode(), kReferencePointFamily);
    EXPECT_EQ(refusal.GetArguments(), (Texts{"p0", "generalLinear"}));
}

TEST(CoxReading, CategoricalTargetNeedsNoList)
{
    const std::string open = With(CoxParts().Text(), "name=\"status\" optype=\"continuous\"",
                                  "name=\"status\" optype=\"categorical\"");
    const auto model = ReadModel(open);
    EXPECT_TRUE(model->GetTargetVar()->HasOpenCategories());
    EXPECT_EQ(Score(static_cast<CoxRegModel&>(*model), "a", 0.0, 6.0).hazard, 0.3);
}

TEST(CoxReading, CovarianceOfCategoriesIsRefused)
{
    const struct {
        const char* categories;
        const char* named;
    } kRows[] = {{"tRow=\"1\" tCol=\"1\"", "tCol"}, {"tCol=\"1\"", "tCol"}, {"tRow=\"1\"", "tRow"}};
    for (const auto& row : kRows) {
        const VSException refusal = RefusalOf(
            With(CoxParts().Text(), "<ParamMatrix>",
                 std::string("<PCovMatrix><PCovCell pRow=\"pf\" pCol=\"px\" value=\"1\" ") +
                     row.categories + "/></PCovMatrix><ParamMatrix>"));
        EXPECT_EQ(refusal.GetErrorCode(), 260191) << row.categories;
        EXPECT_EQ(refusal.GetArguments(), (Texts{row.named, "CoxRegression"})) << row.categories;
    }
}

TEST(CoxReading, EmptyParameterListIsTaken)
{
    CoxParts parts;
    parts.parameters = "";
    std::string document = parts.Text();
    for (const char* section : {"PPMatrix", "ParamMatrix"}) {
        const std::string begin = std::string("<") + section + ">";
        const std::string end = std::string("</") + section + ">";
        const size_t from = document.find(begin);
        document.erase(from, document.find(end) + end.size() - from);
    }
    const auto model = ReadModel(document);
    EXPECT_EQ(Score(static_cast<CoxRegModel&>(*model), "b", 2.0, 6.0).hazard, 0.3);  // lp 0
}

// The status of the target.

std::string StatusField(const std::string& within)
{
    return "<MiningField name=\"status\" usageType=\"target\">" + within + "</MiningField>";
}

TEST(CoxStatus, ValuesAreJoinedEachWithItsComma)
{
    struct StatusRow {
        const char* within;
        const char* events;
    };
    for (const StatusRow& row :
         {StatusRow{"<Extension><X-Stratum name=\"status\"><Value value=\"1\"/>"
                    "<Value value=\"2\"/></X-Stratum></Extension>",
                    "1,2,"},
          {"<X-Stratum name=\"other\"><Value value=\"1\"/></X-Stratum>", ""},
          // the first such element alone is looked at
          {"<X-Stratum name=\"other\"/><X-Stratum name=\"status\"><Value value=\"1\"/></X-Stratum>",
           ""},
          {"<X-Stratum name=\"status\"/>", ""},
          {"", ""}}) {
        CoxParts parts;
        parts.status = StatusField(row.within);
        const auto model = ReadCox(parts);
        Slot slot;
        Case c;
        c.With("f", "a").With("x", 1.0).With("time", 3.0);
        ASSERT_TRUE(model->GetScore(&c.Record(), slot.result, true).IsOK());
        EXPECT_EQ(slot.As<CoxRegResult>().GetDeadString(), row.events) << row.within;
    }
}

TEST(CoxStatus, ComplexSamplesDoNotLook)
{
    CoxParts parts = OlderForm();
    parts.model = With(parts.model, "\"Cox\"", "\"CSCox\"");
    parts.status = StatusField("<X-Stratum name=\"status\"><Value value=\"1\"/></X-Stratum>");
    ModelDescription about;
    ReadCox(parts)->Describe(about);
    EXPECT_TRUE(about.eventValues.empty());
}

// Contrasts.

const std::string kArrays =
    "<Array type=\"real\" n=\"1\">1</Array><Array type=\"real\" n=\"1\">-1</Array>";

std::string Factor(const std::string& attributes, const std::string& within)
{
    return "<Predictor name=\"f\"" + attributes + ">" + within + "</Predictor>";
}

TEST(CoxContrasts, AreReadInEveryFormOfTheirs)
{
    const std::string rows =
        "<Array type=\"real\" n=\"1\" value=\"a\">1</Array>"
        "<Array type=\"real\" n=\"1\" value=\"b\">-1</Array>";
    for (const std::string& factor :
         {Factor("", "<Extension name=\"contrastMatrix\"><X-Basis nbRows=\"2\" nbCols=\"1\">" +
                         rows + "</X-Basis></Extension>"),
          Factor("", "<Extension name=\"contrastMatrix\"><any nbRows=\"2\" nbCols=\"1\">" + rows +
                         "</any></Extension>"),
          Factor("", "<Matrix nbRows=\"2\" nbCols=\"1\">" + kArrays + "</Matrix>"),
          Factor(" contrastMatrixType=\"sum\"",
                 "<Matrix nbRows=\"2\" nbCols=\"1\">" + kArrays + "</Matrix>"),
          Factor(" contrastMatrixType=\"sum\"",
                 "<Categories><Category value=\"a\"/><Category value=\"b\"/></Categories>"
                 "<Matrix nbRows=\"2\" nbCols=\"1\">" +
                     kArrays + "</Matrix>")}) {
        CoxParts parts;
        parts.factor = factor;
        parts.fCell = "a";  // the column of a
        const auto model = ReadCox(parts);
        ASSERT_EQ(model->GetContrastMatrices().size(), 1U) << factor;
        EXPECT_EQ(model->GetContrastMatrices()[0], (RegressionModel::Matrix{{1}, {-1}})) << factor;
        EXPECT_EQ(Score(*model, "a", 0.0, 6.0).hazard, std::exp(0.5) * 0.3) << factor;
        EXPECT_EQ(Score(*model, "b", 0.0, 6.0).hazard, std::exp(-0.5) * 0.3) << factor;
    }
}

TEST(CoxContrasts, OtherChildrenOfAPredictorArePassedOver)
{
    for (const char* within : {"<Extension name=\"other\"><X-Basis/></Extension>",
                               "<Extension name=\"contrastMatrix\"/>", "<Categories/>",
                               "<Extension name=\"x\"/><Matrix nbRows=\"9\" nbCols=\"1\"/>"}) {
        CoxParts parts;
        parts.factor = Factor("", within);
        EXPECT_TRUE(ReadCox(parts)->GetContrastMatrices().empty()) << within;
    }
}

TEST(CoxContrasts, MatrixWithoutRowsHasNoPlaceForAnyCategory)
{
    CoxParts parts;
    parts.factor = Factor("", "<Matrix nbRows=\"2\" nbCols=\"1\"/>");
    EXPECT_EQ(Score(*ReadCox(parts), "b", 0.0, 6.0).code, 90017);
}

TEST(CoxContrasts, FactorTwiceInTheListTakesTheLastMatrix)
{
    CoxParts parts;
    const std::string matrix = "<Matrix nbRows=\"2\" nbCols=\"1\">" + kArrays + "</Matrix>";
    parts.factor = Factor("", matrix) + Factor("", With(matrix, ">1<", ">5<"));
    EXPECT_EQ(ReadCox(parts)->GetContrastMatrices()[0], (RegressionModel::Matrix{{5}, {-1}}));
}

// Refusals.

struct RefusalRow {
    const char* what;
    bool older;
    const char* from;
    const char* to;
    int code;
    Texts arguments;
};

const std::vector<RefusalRow> kRefusals{
    {"end time required from 4.0 on",
     false,
     "endTimeVariable=\"time\"",
     "",
     260115,
     {"endTimeVariable", "GeneralRegressionModel"}},
    {"end time named by nothing",
     false,
     "endTimeVariable=\"time\"",
     "endTimeVariable=\"\"",
     260120,
     {"endTimeVariable", "GeneralRegressionModel"}},
    {"end time in no dictionary",
     false,
     "endTimeVariable=\"time\"",
     "endTimeVariable=\"nowhere\"",
     260125,
     {"nowhere", "DataDictionary", "TransformationDictionary"}},
    {"end time of an extension in no dictionary",
     true,
     "value=\"time\"",
     "value=\"nowhere\"",
     260125,
     {"nowhere", "DataDictionary", "TransformationDictionary"}},
    {"start time of an extension in no dictionary",
     true,
     "<Extension",
     "<Extension name=\"startTimeVariable\" value=\"nowhere\"/><Extension",
     260125,
     {"nowhere", "DataDictionary", "TransformationDictionary"}},
    {"subject of an extension in no dictionary",
     true,
     "<Extension",
     "<Extension name=\"subjectIDVariable\" value=\"nobody\"/><Extension",
     260125,
     {"nobody", "DataDictionary", "TransformationDictionary"}},
    {"no end time in the older form",
     true,
     "name=\"endTimeVariable\"",
     "name=\"other\"",
     260120,
     {"endTimeVariable", "GeneralRegressionModel"}},
    // An extension behind a child of another kind is never seen.
    {"end time behind another child",
     true,
     "<Extension",
     "<Header/><Extension",
     260121,
     {"X-BaseCumHazardTables", "Extension", "GeneralRegressionModel"}},
    {"no baseline in the older form",
     true,
     "name=\"X-BaseCumHazardTables\"",
     "name=\"other\"",
     260121,
     {"X-BaseCumHazardTables", "Extension", "GeneralRegressionModel"}},
    {"two tables without strata",
     true,
     "<X-BaseCumHazardTable>",
     "<X-BaseCumHazardTable/><X-BaseCumHazardTable>",
     260121,
     {"X-BaseCumHazardTables", "Extension", "GeneralRegressionModel"}},
    {"stratum variable in no dictionary",
     false,
     "endTimeVariable=\"time\"",
     "endTimeVariable=\"time\" baselineStrataVariable=\"nowhere\"",
     260125,
     {"nowhere", "DataDictionary", "TransformationDictionary"}},
    {"stratum variable of the own form in no dictionary",
     true,
     "<X-BaseMaxTime",
     "<X-Stratum varName=\"nowhere\" value=\"1\"/><X-BaseMaxTime",
     260125,
     {"nowhere", "DataDictionary", "TransformationDictionary"}},
    {"stratum of the own form without a value",
     true,
     "<X-BaseMaxTime",
     "<X-Stratum varName=\"s\"/><X-BaseMaxTime",
     260115,
     {"value", "X-Stratum"}},
    {"no largest time", false, "maxTime=\"9\"", "", 260115, {"maxTime", "BaseCumHazardTables"}},
    {"largest time no number",
     false,
     "maxTime=\"9\"",
     "maxTime=\"all\"",
     kNotANumber,
     {"all", "maxTime"}},
    {"largest time of the own form without a value",
     true,
     "<X-BaseMaxTime value=\"9\"/>",
     "<X-BaseMaxTime/>",
     260115,
     {"value", "X-BaseMaxTime"}},
    {"cell without a time", false, "time=\"2\"", "", 260115, {"time", "BaselineCell"}},
    {"cell without a hazard",
     false,
     "cumHazard=\"0.1\"",
     "",
     260115,
     {"cumHazard", "BaselineCell"}},
    {"time no number", false, "time=\"2\"", "time=\"NaN\"", kNotANumber, {"NaN", "time"}},
    {"hazard no number",
     false,
     "cumHazard=\"0.1\"",
     "cumHazard=\"x\"",
     kNotANumber,
     {"x", "cumHazard"}},
    {"cell of the own form without a time", true, "time=\"2\"", "", 260115, {"time", "X-Baseline"}},
    {"reference points for some",
     false,
     "<Parameter name=\"px\"/>",
     "<Parameter name=\"px\" referencePoint=\"1\"/>",
     260251,
     {"1", "X-BasePoint", "referencePoint", "2", "Parameter", "ParameterList"}},
    {"reference point of the extension without a name",
     true,
     "<Extension",
     "<Extension name=\"referencePoint\"><X-BasePoint value=\"1\"/></Extension><Extension",
     260115,
     {"parameterName", "X-BasePoint"}},
    {"reference point of the extension without a value",
     true,
     "<Extension",
     "<Extension name=\"referencePoint\"><X-BasePoint parameterName=\"p\"/></Extension><Extension",
     260115,
     {"value", "X-BasePoint"}},
    {"reference point of a name that has one already, without a value",
     true,
     "<Extension",
     "<Extension name=\"referencePoint\"><X-BasePoint parameterName=\"p\" value=\"1\"/>"
     "<X-BasePoint parameterName=\"p\"/></Extension><Extension",
     260115,
     {"value", "X-BasePoint"}},
    {"contrasts as a direct child",
     false,
     "<Predictor name=\"f\"/>",
     "<Predictor name=\"f\"><xBasis nbRows=\"2\" nbCols=\"1\"/></Predictor>",
     260302,
     {"xBasis", "CoxRegression"}},
    {"contrast type without a matrix",
     false,
     "<Predictor name=\"f\"/>",
     "<Predictor name=\"f\" contrastMatrixType=\"sum\"/>",
     260115,
     {"xBasis", "Predictor"}},
    {"contrast rows beside the categories",
     false,
     "<Predictor name=\"f\"/>",
     "<Predictor name=\"f\"><Matrix nbRows=\"3\" nbCols=\"1\"/></Predictor>",
     260249,
     {"3", "nbRows", "2", "f"}},
    {"contrasts for one factor of two",
     false,
     "<Predictor name=\"f\"/>",
     "<Predictor name=\"f\"/><Predictor name=\"s\"><Matrix nbRows=\"2\" nbCols=\"1\">"
     "<Array n=\"1\">1</Array><Array n=\"1\">1</Array></Matrix></Predictor>",
     260304,
     {}},
};

TEST(CoxRefusals, SayWhatIsMissing)
{
    for (const RefusalRow& row : kRefusals) {
        const CoxParts parts = row.older ? OlderForm() : CoxParts();
        const VSException refusal = RefusalOf(With(parts.Text(), row.from, row.to));
        EXPECT_EQ(refusal.GetErrorCode(), row.code) << row.what;
        EXPECT_EQ(refusal.GetArguments(), row.arguments) << row.what;
    }
}

TEST(CoxRefusals, AttributesBelowVersion4AreNotLookedAt)
{
    CoxParts parts;
    parts.version = "3.2";
    parts.model += " targetVariableName=\"status\"";
    EXPECT_EQ(RefusalOf(parts.Text()).GetErrorCode(), 260120);
    parts.extensions = Extension("endTimeVariable", "time");
    EXPECT_EQ(RefusalOf(parts.Text()).GetErrorCode(), 0);
}

TEST(CoxRefusals, AttributesAreLookedAtFromVersion4On)
{
    CoxParts parts;
    parts.version = "4.0";
    EXPECT_EQ(ReadCox(parts)->GetEndTimeVariableName(), "time");
    parts.variables = "";
    parts.extensions = Extension("endTimeVariable", "time");  // comes too late to be enough
    EXPECT_EQ(RefusalOf(parts.Text()).GetErrorCode(), 260115);
}

// Of two faults the one of the earlier stage is told.
TEST(CoxRefusals, FollowTheOrderOfTheStages)
{
    const std::pair<const char*, const char*> noEndTime{"endTimeVariable=\"time\"", ""};
    const std::pair<const char*, const char*> badDf{" functionName=",
                                                    " modelDF=\"many\" functionName="};
    const std::pair<const char*, const char*> badTransformation{
        "<ParameterList>",
        "<LocalTransformations><DerivedField/></LocalTransformations><ParameterList>"};
    const std::pair<const char*, const char*> badTime{"time=\"2\"", "time=\"two\""};
    const std::pair<const char*, const char*> badFactor{"<FactorList>", "<FactorList><Wrong/>"};
    const std::pair<const char*, const char*> badBeta{"beta=\"0.5\"", "beta=\"half\""};
    const std::pair<const char*, const char*> onePoint{
        "<Parameter name=\"px\"/>", "<Parameter name=\"px\" referencePoint=\"1\"/>"};
    const std::pair<const char*, const char*> badCovariance{
        "<PPMatrix>", "<PCovMatrix><Wrong/></PCovMatrix><PPMatrix>"};
    const std::pair<const char*, const char*> badPredictorCell{"<PPMatrix>", "<PPMatrix><Wrong/>"};
    struct Faults {
        std::pair<const char*, const char*> earlier;
        std::pair<const char*, const char*> later;
        int code;
        const char* argument;
    };
    for (const Faults& faults : {
             Faults{noEndTime, badDf, 260115, "endTimeVariable"},
             {badDf, badTransformation, kNotANumber, "many"},
             {badTime, badFactor, kNotANumber, "two"},
             {badBeta, onePoint, kNotANumber, "half"},
             {onePoint, badCovariance, 260251, "1"},
             {badCovariance, badPredictorCell, 260178, "Wrong"},
         }) {
        const VSException refusal =
            RefusalOf(With(With(CoxParts().Text(), faults.earlier.first, faults.earlier.second),
                           faults.later.first, faults.later.second));
        EXPECT_EQ(refusal.GetErrorCode(), faults.code) << refusal.GetText();
        ASSERT_FALSE(refusal.GetArguments().empty());
        EXPECT_EQ(refusal.GetArguments()[0], faults.argument);
        EXPECT_NE(RefusalOf(With(CoxParts().Text(), faults.later.first, faults.later.second))
                      .GetErrorCode(),
                  0);
    }
}

TEST(CoxRefusals, BaselineIsMissedBeforeTheEndTime)
{
    CoxParts older = OlderForm();
    older.extensions = "";
    EXPECT_EQ(RefusalOf(older.Text()).GetErrorCode(), 260121);
    CoxParts published;
    published.baseline = "";
    EXPECT_EQ(RefusalOf(published.Text()).GetErrorCode(), 260121);
}

}  // namespace
}  // namespace MCVelscore_850
