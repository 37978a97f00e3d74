// Survival at given times, medians and risks of Cox models: what R says of them (the folders under
// tests/data/survival, of r_survival.R there), and how they are asked for.

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

std::string Survival(const std::string& name, const std::string& file)
{
    return DataFile("survival/" + name + "/" + file);
}

std::string Joined(const Texts& texts)
{
    std::string joined;
    for (const std::string& text : texts) joined += (joined.empty() ? "" : ",") + text;
    return joined;
}

const std::string kStrata = DataFile("cases/cox-veteran-strata/model.pmml");
const std::string kStrataCases = "trt,karno,celltype\n1,60,squamous\n2,50,adeno\n";

class SurvivalOfR : public testing::TestWithParam<const char*> {
protected:
    std::string model = Survival(GetParam(), "model.pmml");
    std::string cases = Survival(GetParam(), "input.csv");
    CsvText expected = ParseCsv(ReadFile(Survival(GetParam(), "expected.csv")));
};
INSTANTIATE_TEST_SUITE_P(Models, SurvivalOfR,
                         testing::Values("lung-efron", "lung-breslow", "veteran-strata-efron",
                                         "veteran-strata-breslow", "heart-start-stop"),
                         [](const auto& each) {
                             std::string name = each.param;
                             std::replace(name.begin(), name.end(), '-', '_');
                             return name;
                         });

// 17-digit parameters, and a baseline that is carried through two exponentials.
constexpr double kTolerance = 1e-12;

void ExpectNear(const CsvText& found, const CsvText& expected, const std::string& column)
{
    SCOPED_TRACE(column);
    const Texts numbers = found.Texts(column);
    const Texts wanted = expected.Texts(column);
    ASSERT_EQ(numbers.size(), wanted.size());
    for (size_t row = 0; row < wanted.size(); ++row) {
        SCOPED_TRACE(row);
        ASSERT_EQ(numbers[row].empty(), wanted[row].empty()) << numbers[row];
        if (wanted[row].empty()) continue;
        if (column == "median_survival") {
            EXPECT_EQ(std::stod(numbers[row]), std::stod(wanted[row]));
        } else {
            EXPECT_NEAR(std::stod(numbers[row]), std::stod(wanted[row]),
                        kTolerance * std::fmax(1.0, std::fabs(std::stod(wanted[row]))));
        }
    }
}

TEST_P(SurvivalOfR, IsThatOfTheColumns)
{
    // The table has no end time, and none of these columns is for it.
    const Finished run = RunVelscore(
        {"score", model, cases, "--columns", Joined(expected.header), "--columns", "status"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const CsvText scores = ParseCsv(run.out);
    for (const std::string& column : expected.header) ExpectNear(scores, expected, column);
    for (const std::string& status : scores.Texts("status")) EXPECT_EQ(status, "0");
}

TEST_P(SurvivalOfR, IsThatOfTheWideCurves)
{
    Texts times;
    for (const std::string& column : expected.header) {
        if (column.starts_with("survival@")) times.push_back(column.substr(9));
    }
    const Finished run = RunVelscore({"curve", model, cases, "--times", Joined(times), "--wide"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const CsvText curves = ParseCsv(run.out);
    ASSERT_EQ(curves.header.size(), times.size() + 1);
    EXPECT_EQ(curves.header[0], "row");
    for (const std::string& time : times) ExpectNear(curves, expected, "survival@" + time);
}

TEST_P(SurvivalOfR, IsTheSameToTheLastBitTogetherAndAlone)
{
    // With a trace on every row goes alone.
    Texts arguments{"score", model, cases, "--columns", Joined(expected.header)};
    const Finished together = RunVelscore(arguments);
    const ScratchFolder folder;
    const Finished alone =
        RunVelscore(arguments, "", {"VELSCORE_TRACE=1:" + folder.Path("trace.txt")});
    EXPECT_EQ(together.exitCode, 0) << together.err;
    EXPECT_EQ(together.out, alone.out);
}

TEST(SurvivalColumns, HoldWhatTheRowsOwnTimeGives)
{
    const std::string header = "trt,karno,celltype,time\n";
    Texts expected;
    for (const char* time : {"0.5", "30", "186", "400"}) {
        const Finished own = RunVelscore({"score", kStrata, "--columns", "prediction"},
                                         header + "2,50,adeno," + time);
        expected.push_back(ParseCsv(own.out).Texts("prediction")[0]);
    }
    const Finished run =
        RunVelscore({"score", kStrata, "--columns",
                     "survival@0.5,survival@30,survival@186,survival@400,prediction"},
                    header + "2,50,adeno,30\n");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    expected.push_back(expected[1]);
    EXPECT_EQ(ParseCsv(run.out).rows, (std::vector<Texts>{expected}));
    EXPECT_EQ(expected[3], "");  // beyond the stratum's last time
}

TEST(SurvivalColumns, NeedNoEndTimeUnlessAColumnIsForIt)
{
    const Finished without = RunVelscore({"score", kStrata, "--columns", "risk"}, kStrataCases);
    EXPECT_EQ(without.exitCode, 0) << without.err;
    const std::string table = "time,trt,karno,celltype\n,1,60,squamous\n";
    EXPECT_EQ(ParseCsv(RunVelscore({"score", kStrata, "--columns", "risk,status"}, table).out)
                  .Texts("status"),
              Texts{"0"});
    for (const char* columns : {"risk,prediction", "cum_hazard,risk", "status"}) {
        SCOPED_TRACE(columns);
        EXPECT_EQ(RunVelscore({"score", kStrata, "--columns", columns}, kStrataCases).exitCode, 3);
        EXPECT_EQ(RunVelscore({"score", kStrata, "--columns", columns, "--strict"}, table).exitCode,
                  5);
    }
    const Finished unmapped =
        RunVelscore({"score", kStrata, "--columns", "risk", "--map", "time=t"}, kStrataCases);
    EXPECT_EQ(unmapped.exitCode, 0) << unmapped.err;
    const Finished byNumber = RunVelscore({"score", kStrata, "--columns", "risk", "--no-header"},
                                          "1,60,squamous\n2,50,adeno\n");
    EXPECT_EQ(byNumber.exitCode, 0) << byNumber.err;
    EXPECT_EQ(byNumber.out, RunVelscore({"score", kStrata, "--columns", "risk"}, kStrataCases).out);
}

struct Refused {
    const char* name;
    Texts arguments;
    Texts says;
};
void PrintTo(const Refused& refused, std::ostream* out) { *out << refused.name; }

class RefusedSurvival : public testing::TestWithParam<Refused> {};
INSTANTIATE_TEST_SUITE_P(
    Each, RefusedSurvival,
    testing::Values(
        Refused{"NoNumber", {"score", "--columns", "survival@soon"}, {"the time 'soon'", "269331"}},
        Refused{"NoTime", {"score", "--columns", "survival@"}, {"the time (empty)", "269331"}},
        Refused{"Negative", {"score", "--columns", "survival@-1"}, {"the time '-1'", "0 or more"}},
        Refused{"Twice", {"score", "--columns", "survival@3,survival@3"}, {"twice", "269318"}},
        Refused{
            "Misspelt",
            {"score", "--columns", "median_survial"},
            {"Did you mean 'median_survival'?", "risk, median_survival, survival@TIME, status"}},
        Refused{"TimesNoNumber", {"curve", "--times", "1,x"}, {"the time 'x'", "269331"}},
        Refused{"TimesEmpty", {"curve", "--times", ""}, {"the time (empty)"}},
        Refused{"TimesNegative", {"curve", "--times=-1,2"}, {"the time '-1'"}},
        Refused{"TimesUnsorted", {"curve", "--times", "30,20"}, {"20 behind 30", "ascending"}},
        Refused{"TimesTwice", {"curve", "--times", "30,30"}, {"30 behind 30"}},
        Refused{"TimesInfinite", {"curve", "--times", "1,inf"}, {"the time 'inf'"}},
        Refused{"EveryNothing", {"curve", "--times", "every 0"}, {"'every 0'", "above 0"}},
        Refused{"EveryNegative", {"curve", "--times", "every -3"}, {"'every -3'", "above 0"}},
        Refused{"EveryWord", {"curve", "--times", "every"}, {"'every'", "in quotes"}},
        Refused{"EveryTooOften", {"curve", "--times", "every 0.001"}, {"999001", "269332"}},
        Refused{"WideWithoutTimes", {"curve", "--wide"}, {"--wide needs --times"}},
        Refused{"KeptUnknown", {"curve", "--keep", "ident"}, {"'ident'", "269311"}}),
    [](const auto& each) { return std::string(each.param.name); });

TEST_P(RefusedSurvival, IsToldAndIsWrongUsage)
{
    Texts arguments = GetParam().arguments;
    arguments.insert(arguments.end(), {kStrata, "-"});
    const Finished run = RunVelscore(arguments, "time,trt,karno,celltype\n9,1,60,squamous\n");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "");
    for (const std::string& text : GetParam().says) {
        EXPECT_NE(run.err.find(text), std::string::npos) << text << "\n" << run.err;
    }
}

TEST(SurvivalColumns, OfAnotherModelAreRefusedWithWhatItHas)
{
    const ScratchFolder folder;
    const std::string model = folder.Write("model.pmml", TestModel().Text());
    for (const std::string column : {"survival@365", "risk", "median_survival"}) {
        const Finished run = RunVelscore({"score", model, "--columns", column}, "sex,x\nm,2\n");
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_NE(run.err.find("names '" + column +
                               "'; the columns of this model are: prediction, "
                               "std_dev, ci_lower, ci_upper, linear_predictor, "
                               "std_err(linear_predictor), status, status_field"),
                  std::string::npos)
            << run.err;
    }
}

TEST(SurvivalColumns, AMillionTimesAreRefused)
{
    std::string list = "0";
    for (int i = 1; i < 20'000; ++i) list += "," + std::to_string(i);
    // The command line holds no text of a million; a thousand columns are the most.
    std::string columns;
    for (int i = 0; i <= 1000; ++i) columns += ",survival@" + std::to_string(i);
    const Finished many =
        RunVelscore({"score", kStrata, "--columns", columns.substr(1)}, kStrataCases);
    EXPECT_EQ(many.exitCode, 1);
    EXPECT_NE(many.err.find("asks for 1001 times; 1000 are the most"), std::string::npos)
        << many.err;
    const Finished curve = RunVelscore({"curve", kStrata, "--times", "every 0.0005"}, kStrataCases);
    EXPECT_EQ(curve.exitCode, 1);
    EXPECT_NE(curve.err.find("asks for 1998001 times; 100000 are the most"), std::string::npos)
        << curve.err;
    EXPECT_EQ(RunVelscore({"curve", kStrata, "--times", list, "--wide"}, kStrataCases).exitCode, 0);
}

TEST(CurveTimes, AreARowEachWithWhatIsKept)
{
    const Finished run =
        RunVelscore({"curve", kStrata, "--times", "0,186,400", "--keep", "id,row", "--name-column",
                     "table", "--digits", "3"},
                    "id,row,trt,karno,celltype\n\"a,b\",9,2,50,adeno\nc,,,50,adeno\n");
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const CsvText curves = ParseCsv(run.out);
    EXPECT_EQ(curves.header,
              (Texts{"table", "id", "input.row", "row", "time", "survival", "cum_hazard"}));
    ASSERT_EQ(curves.rows.size(), 4U);
    EXPECT_EQ(curves.rows[0], (Texts{"standard input", "a,b", "9", "1", "0", "1", "0"}));
    EXPECT_EQ(curves.rows[1][4], "186");
    EXPECT_EQ(curves.rows[2], (Texts{"standard input", "a,b", "9", "1", "400", "", ""}));
    EXPECT_EQ(curves.rows[3], (Texts{"standard input", "c", "", "2", "", "", ""}));
}

TEST(CurveTimes, EveryGoesUpToTheLastTimeOfAllStrata)
{
    const auto timesOf = [](const char* times) {
        const Finished run = RunVelscore({"curve", kStrata, "--times", times, "--wide"},
                                         "trt,karno,celltype\n2,50,adeno\n");
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return ParseCsv(run.out).header;
    };
    // Up to 999, that of squamous.
    EXPECT_EQ(timesOf("every 333"),
              (Texts{"row", "survival@0", "survival@333", "survival@666", "survival@999"}));
    EXPECT_EQ(timesOf("every 1000"), (Texts{"row", "survival@0"}));
    // Of decimals the decimal multiples: 0.3, where 3 * 0.1 is another double.
    const Texts tenths = timesOf("every 0.1");
    ASSERT_EQ(tenths.size(), 9992U);
    EXPECT_EQ(tenths[4], "survival@0.3");
    EXPECT_EQ(tenths.back(), "survival@999");
}

TEST(CurveTimes, WideIsARowACaseAlsoWithoutACurveOrAReading)
{
    const ScratchFolder folder;
    const Finished run =
        RunVelscore({"curve", kStrata, "--times", "0,400", "--wide", "--keep", "karno", "--rejects",
                     folder.Path("rejects.csv")},
                    "trt,karno,celltype\n1,60,squamous\n1,x,squamous\n1\n1,60,adeno\n");
    EXPECT_EQ(run.exitCode, 0) << run.err;
    const CsvText curves = ParseCsv(run.out);
    EXPECT_EQ(curves.header, (Texts{"karno", "row", "survival@0", "survival@400"}));
    ASSERT_EQ(curves.rows.size(), 4U);
    EXPECT_EQ(curves.rows[0][2], "1");
    EXPECT_NE(curves.rows[0][3], "");
    EXPECT_EQ(curves.rows[1], (Texts{"x", "2", "", ""}));
    EXPECT_EQ(curves.rows[2], (Texts{"", "3", "", ""}));
    EXPECT_EQ(curves.rows[3], (Texts{"60", "4", "1", ""}));
}

TEST(CurveTimes, GoToJsonLines)
{
    const Finished run = RunVelscore(
        {"curve", kStrata, "--times", "0,400", "--wide", "--format", "jsonl", "--keep", "trt"},
        "trt,karno,celltype\n2,50,adeno\n");
    EXPECT_EQ(run.out, "{\"trt\":\"2\",\"row\":1,\"survival@0\":1,\"survival@400\":null}\n")
        << run.err;
}

TEST(InspectOfCox, ListsTheColumnsOnRequest)
{
    const Finished run = RunVelscore({"inspect", kStrata});
    for (const char* line :
         {"  risk              exp of the linear predictor", "  median_survival   smallest time",
          "  survival@TIME     probability to survive that time\n"}) {
        EXPECT_NE(run.out.find(line), std::string::npos) << run.out;
    }
}

}  // namespace
}  // namespace MCVelscore_850
