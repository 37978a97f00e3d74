// Survival curves through the command, and what inspect tells of a Cox model.

#include <cmath>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

std::string Case(const std::string& name, const std::string& file)
{
    return DataFile("cases/" + name + "/" + file);
}

std::string Line(const Texts& fields)
{
    std::string line;
    for (const std::string& field : fields) line += (line.empty() ? "" : ",") + field;
    return line + "\n";
}

// The table with its column left out.
std::string Without(const CsvText& table, const std::string& column)
{
    const auto at = static_cast<size_t>(table.Column(column));
    const auto cut = [at](Texts fields) {
        fields.erase(fields.begin() + static_cast<long>(at));
        return Line(fields);
    };
    std::string text = cut(table.header);
    for (const Texts& row : table.rows) text += cut(row);
    return text;
}

TEST(Curve, IsThatOfRAtEachCasesOwnTime)
{
    // R's numbers are those at the time of the case: the last step of the curve not after it.
    for (const char* name : {"cox-veteran-strata", "cox-veteran-contrasts", "cox-lung-public"}) {
        SCOPED_TRACE(name);
        const CsvText input = ParseCsv(ReadFile(Case(name, "input.csv")));
        const CsvText expected = ParseCsv(ReadFile(Case(name, "expected.csv")));
        // The curve needs no end time.
        const Finished run =
            RunVelscore({"curve", Case(name, "model.pmml")}, Without(input, "time"));
        ASSERT_EQ(run.exitCode, 0) << run.err;
        const CsvText curves = ParseCsv(run.out);
        ASSERT_EQ(curves.header, (Texts{"row", "time", "survival", "cum_hazard"}));

        const Texts times = input.Texts("time");
        std::vector<double> survival(times.size(), 1.0);
        std::vector<double> hazard(times.size(), 0.0);
        for (const Texts& step : curves.rows) {
            const size_t row = std::stoul(step[0]) - 1;
            ASSERT_LT(row, times.size());
            if (std::stod(step[1]) > std::stod(times[row])) continue;
            survival[row] = std::stod(step[2]);
            hazard[row] = std::stod(step[3]);
        }
        const Texts wantedSurvival = expected.Texts("prediction");
        const Texts wantedHazard = expected.Texts("cum_hazard");
        for (size_t row = 0; row < times.size(); ++row) {
            if (wantedSurvival[row].empty()) continue;
            EXPECT_NEAR(survival[row], std::stod(wantedSurvival[row]), 1e-9) << row;
            EXPECT_NEAR(hazard[row], std::stod(wantedHazard[row]), 1e-9 * hazard[row]) << row;
        }
    }
}

TEST(Curve, HoldsWhatScoreAnswersAtEachOfItsTimes)
{
    const std::string model = Case("cox-veteran-strata", "model.pmml");
    const std::string header = "trt,karno,celltype,time\n";
    const Finished curve = RunVelscore({"curve", model}, header + "2,60,adeno,\n");
    ASSERT_EQ(curve.exitCode, 0) << curve.err;
    const CsvText steps = ParseCsv(curve.out);
    ASSERT_EQ(steps.rows.size(), 25U);
    std::string cases = header;
    for (const std::string& time : steps.Texts("time")) cases += "2,60,adeno," + time + "\n";
    const Finished scores = RunVelscore({"score", model}, cases);
    ASSERT_EQ(scores.exitCode, 0) << scores.err;
    EXPECT_EQ(steps.Texts("survival"), ParseCsv(scores.out).Texts("prediction"));
    EXPECT_EQ(steps.Texts("cum_hazard"), ParseCsv(scores.out).Texts("cum_hazard"));
}

TEST(Curve, CaseWithoutOneHasALineOfItsOwnAndIsTold)
{
    const std::string model = Case("cox-veteran-strata", "model.pmml");
    const std::string cases = "trt,karno,celltype\n1,,adeno\n1,60,other\n1,60,\n1,x,adeno\n";
    const Finished run = RunVelscore({"curve", model}, cases);
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "row,time,survival,cum_hazard\n1,,,\n2,,,\n3,,,\n4,,,\n");
    EXPECT_NE(run.err.find("0 of 4 cases scored; 4 not scored: 3 with status 90029 (first: row 1, "
                           "field karno: empty), 1 with status 269050"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(RunVelscore({"curve", "--strict", model}, cases).exitCode, 5);
}

TEST(Curve, TakesTheOptionsOfATable)
{
    const ScratchFolder folder;
    const std::string out = folder.Path("curves.csv");
    const Finished run =
        RunVelscore({"curve", Case("cox-veteran-strata", "model.pmml"), "-", "-o", out,
                     "--delimiter", ";", "--decimal", ",", "--na", "none", "--quiet"},
                    "trt;karno;celltype\n1;60,5;adeno\n1;none;adeno\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const CsvText steps = ParseCsv(ReadFile(out), ';');
    ASSERT_EQ(steps.rows.size(), 26U);
    EXPECT_EQ(steps.rows[0][1], "3");
    EXPECT_EQ(steps.rows[0][2].substr(0, 2), "0,");
    EXPECT_EQ(steps.rows[25], (Texts{"2", "", "", ""}));
}

TEST(Curve, ModelWithoutOneIsWrongUsage)
{
    const ScratchFolder folder;
    const std::string model = folder.Write("model.pmml", TestModel().Text());
    const Finished run = RunVelscore({"curve", model}, "sex,x\nm,2\n");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_NE(run.err.find("has no survival curves: its family is general linear model"),
              std::string::npos)
        << run.err;
}

TEST(Curve, TableWithoutAStratumLacksAColumn)
{
    const Finished run =
        RunVelscore({"curve", Case("cox-veteran-strata", "model.pmml")}, "trt,karno\n1,60\n");
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_NE(run.err.find("celltype"), std::string::npos) << run.err;
}

TEST(ScoreOfCox, EmptyStratumIsRefusedAndNotScoredWithTheFirst)
{
    const Finished run = RunVelscore({"score", Case("cox-veteran-strata", "model.pmml")},
                                     "time,trt,karno,celltype\n72,1,60,\n72,1,60,squamous\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const CsvText scores = ParseCsv(run.out);
    EXPECT_EQ(scores.Texts("status"), (Texts{"90029", "0"}));
    EXPECT_EQ(scores.Texts("prediction")[0], "");
    const Finished numeric = RunVelscore({"score", Case("cox-lung-numeric-strata", "model.pmml")},
                                         "time,age,sex,ecog\n72,60,male,\n72,60,male,0\n");
    EXPECT_EQ(ParseCsv(numeric.out).Texts("status"), (Texts{"90029", "0"}));
}

TEST(ScoreOfCox, PredictionOnlyLeavesTheHazardOut)
{
    const Finished run =
        RunVelscore({"score", "--prediction-only", Case("cox-veteran-uncentred", "model.pmml"),
                     Case("cox-veteran-uncentred", "input.csv")});
    EXPECT_EQ(ParseCsv(run.out).header, (Texts{"prediction", "status", "status_field"}));
}

TEST(InspectOfCox, ListsStrataTimesAndBasePoint)
{
    const Finished run = RunVelscore({"inspect", Case("cox-veteran-strata", "model.pmml")});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    for (const char* line :
         {"family        Cox regression (CoxRegModel)\n", "end time      time\n",
          "strata        celltype\n", "reads         trt, karno, time, celltype\n",
          "baseline      squamous: 30 cells, times 1 to 999\n",
          "baseline      large: 26 cells, times 12 to 553\n",
          "base point, taken off before each beta multiplies\n"
          "  trt2        0.49635036496350365\n",
          "  cum_hazard  cumulative hazard up to the case's end time\n"}) {
        EXPECT_NE(run.out.find(line), std::string::npos) << line << run.out;
    }
}

TEST(InspectOfCox, TellsProgramsTheSame)
{
    const Finished run =
        RunVelscore({"inspect", "--json", Case("cox-veteran-strata", "model.pmml")});
    const auto about = nlohmann::json::parse(run.out);
    EXPECT_EQ(about.at("endTime"), "time");
    EXPECT_EQ(about.at("strata"), "celltype");
    ASSERT_EQ(about.at("baseline").size(), 4U);
    EXPECT_EQ(about.at("baseline")[1].at("value"), "smallcell");
    EXPECT_EQ(about.at("baseline")[1].at("maxTime"), 392);
    EXPECT_EQ(about.at("equations")[0].at("terms")[0].at("referencePoint"), 0.49635036496350365);
}

TEST(InspectOfCox, NamesTheEvents)
{
    const ScratchFolder folder;
    std::string document = ReadFile(Case("cox-lung-extensions-3.2", "model.pmml"));
    const std::string target = "<MiningField name=\"event\" usageType=\"predicted\"/>";
    ASSERT_NE(document.find(target), std::string::npos);
    document.replace(document.find(target), target.size(),
                     "<MiningField name=\"event\" usageType=\"target\"><Extension>"
                     "<X-Stratum name=\"status\"><Value value=\"1\"/><Value value=\"2\"/>"
                     "</X-Stratum></Extension></MiningField>");
    const Finished run = RunVelscore({"inspect", folder.Write("model.pmml", document)});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.out.find("events        1, 2\n"), std::string::npos) << run.out;
}

}  // namespace
}  // namespace MCVelscore_850
