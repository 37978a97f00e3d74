// `velscore explain`: contributions add up to what score has, in every form that it writes.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/scratchfolder.h"
#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using nlohmann::json;
using Texts = std::vector<std::string>;

double NumberOf(const std::string& text) { return std::strtod(text.c_str(), nullptr); }

// The sign of a zero is no part of a sum.
bool SameNumber(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0 || a == b; }

std::vector<std::string> CaseNames()
{
    std::vector<std::string> names;
    for (const char* folder : {"cases", "regression"}) {
        for (const auto& entry : std::filesystem::directory_iterator(DataFile(folder))) {
            if (!entry.is_directory()) continue;
            names.push_back(std::string(folder) + "/" + entry.path().filename().string());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

// Row and equation to the sum of the contributions, added in the order of the lines.
using Sums = std::map<std::pair<int, std::string>, double>;

Sums SumsOf(const CsvText& lines)
{
    Sums sums;
    for (const Texts& line : lines.rows) {
        if (line[2].empty()) continue;
        const auto [place, isNew] =
            sums.emplace(std::pair(std::atoi(line[0].c_str()), line[1]), NumberOf(line[4]));
        if (!isNew) place->second += NumberOf(line[4]);
    }
    return sums;
}

class ExplainedCases : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(Folders, ExplainedCases, testing::ValuesIn(CaseNames()),
                         [](const auto& folder) {
                             std::string name = folder.param;
                             std::replace_if(
                                 name.begin(), name.end(),
                                 [](char c) { return std::isalnum(c) == 0; }, '_');
                             return name;
                         });

TEST_P(ExplainedCases, AddUpToTheLinearPredictorsOfScore)
{
    const std::string folder = DataFile(GetParam() + "/");
    const std::string model = folder + "model.pmml";
    const std::string cases = folder + "input.csv";
    const Finished run = RunVelscore({"explain", model, cases, "--long"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const CsvText lines = ParseCsv(run.out);
    ASSERT_EQ(lines.header, (Texts{"row", "equation", "term", "value", "contribution"}));
    const Sums sums = SumsOf(lines);

    const json told = json::parse(RunVelscore({"explain", model, cases, "--json"}).out);
    const CsvText scores = ParseCsv(RunVelscore({"score", model, cases}).out);
    ASSERT_EQ(told.at("cases").size(), scores.rows.size());
    size_t sumCount = 0;
    for (size_t row = 0; row < scores.rows.size(); ++row) {
        const json& each = told.at("cases").at(row);
        ASSERT_EQ(each.at("row"), row + 1);
        ASSERT_EQ(std::to_string(each.at("status").get<int>()), scores.Texts("status")[row]);
        for (const json& equation : each.at("equations")) {
            if (equation.at("terms").empty()) continue;
            const auto found = sums.find({row + 1, equation.value("category", "")});
            ASSERT_NE(found, sums.end());
            EXPECT_TRUE(SameNumber(found->second, equation.at("linearPredictor"))) << row;
            ++sumCount;
        }
        for (const auto& [name, value] : each.at("results").items()) {
            const std::string text = scores.Texts(name).at(row);
            if (value.is_number()) {
                EXPECT_EQ(value.get<double>(), NumberOf(text)) << name << row;
            } else {
                EXPECT_EQ(value.is_null() ? "" : value.get<std::string>(), text) << name << row;
            }
        }
    }
    EXPECT_EQ(sumCount, sums.size());
    EXPECT_GT(sumCount, 0U);

    const Finished asked = RunVelscore({"score", model, cases, "--columns", "linear_predictor"});
    if (asked.exitCode != 0) return;  // of several equations
    const Texts predictors = ParseCsv(asked.out).Texts("linear_predictor");
    ASSERT_FALSE(sums.empty());
    const std::string category = sums.begin()->first.second;
    size_t compared = 0;
    for (size_t row = 0; row < predictors.size(); ++row) {
        const auto found = sums.find({row + 1, category});
        if (found == sums.end()) continue;
        EXPECT_TRUE(SameNumber(found->second, NumberOf(predictors[row]))) << row;
        ++compared;
    }
    EXPECT_GT(compared, 0U);
}

// y = 1 + 2 x + 10 [sex = m]
class Explain : public testing::Test {
protected:
    Finished Run(Texts arguments, const std::string& cases = "x,sex\n3,m\n-1,f\n,f\n5,z\n")
    {
        arguments.insert(arguments.begin(), "explain");
        arguments.insert(arguments.begin() + 1, model_);
        arguments.insert(arguments.begin() + 2, folder_.Write("cases.csv", cases));
        return RunVelscore(arguments);
    }

    const ScratchFolder folder_;
    const std::string model_ = folder_.Write("model.pmml", TestModel().Text());
};

TEST_F(Explain, ShowsTenCasesAndSaysHowToGetMore)
{
    std::string cases = "x,sex\n";
    for (int i = 0; i < 12; ++i) cases += std::to_string(i) + ",m\n";
    const Finished ten = Run({}, cases);
    EXPECT_NE(ten.out.find("\nrow 10\n"), std::string::npos);
    EXPECT_EQ(ten.out.find("\nrow 11\n"), std::string::npos);
    EXPECT_NE(ten.err.find("more follow: --limit N shows more"), std::string::npos) << ten.err;
    const Finished all = Run({"--limit", "12"}, cases);
    EXPECT_NE(all.out.find("\nrow 12\n"), std::string::npos);
    EXPECT_EQ(all.err.find("more follow"), std::string::npos) << all.err;
    EXPECT_EQ(json::parse(Run({"--json"}, cases).out).at("cases").size(), 12U);
}

TEST_F(Explain, LongRowsWithoutAScoreAreEmpty)
{
    const Finished run = Run({"--long"});
    EXPECT_EQ(run.out,
              "row,equation,term,value,contribution\n"
              "1,,Intercept,1,1\n1,,x,3,6\n1,,[sex=m],1,10\n"
              "2,,Intercept,1,1\n2,,x,-1,-2\n2,,[sex=m],0,0\n"
              "3,,,,\n4,,,,\n");
    EXPECT_NE(run.err.find("2 not scored"), std::string::npos) << run.err;
    const Finished lines = Run({"--long", "--format", "jsonl"}, "x,sex\n3,m\n");
    EXPECT_EQ(lines.out.substr(0, lines.out.find('\n')),
              R"({"row":1,"equation":"","term":"Intercept","value":1,"contribution":1})");
}

TEST_F(Explain, TopKeepsTheLargestAndTheSum)
{
    EXPECT_EQ(Run({"--long", "--top", "1"}, "x,sex\n3,m\n-30,m\n").out,
              "row,equation,term,value,contribution\n"
              "1,,[sex=m],1,10\n1,,other terms,,7\n"
              "2,,x,-30,-60\n2,,other terms,,11\n");
    EXPECT_EQ(Run({"--long", "--top", "0"}, "x,sex\n3,m\n").out,
              "row,equation,term,value,contribution\n1,,other terms,,17\n");
    EXPECT_EQ(Run({"--long", "--top", "3"}, "x,sex\n3,m\n").out,
              Run({"--long"}, "x,sex\n3,m\n").out);
}

TEST_F(Explain, BaselineGivesDifferences)
{
    // Means of 3, -1 and 1, 0 alone: the others have no score.
    EXPECT_EQ(Run({"--long", "--baseline", "mean"}).out,
              "row,equation,term,value,contribution\n"
              "1,,Intercept,1,0\n1,,x,3,4\n1,,[sex=m],1,5\n"
              "2,,Intercept,1,0\n2,,x,-1,-4\n2,,[sex=m],0,-5\n"
              "3,,,,\n4,,,,\n");
    const std::string row2 =
        "row,equation,term,value,contribution\n"
        "1,,Intercept,1,0\n1,,x,3,8\n1,,[sex=m],1,10\n"
        "2,,Intercept,1,0\n2,,x,-1,0\n2,,[sex=m],0,0\n"
        "3,,,,\n4,,,,\n";
    EXPECT_EQ(Run({"--long", "--baseline", "2"}).out, row2);
    const std::string other = folder_.Write("other.csv", "sex,x\nm,9\nm,9\nf,-1\n");
    EXPECT_EQ(Run({"--long", "--baseline", "3@" + other}).out, row2);
    const Finished text = Run({"--baseline", "2"});
    EXPECT_NE(text.out.find("baseline      row 2\n"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("linear predictor                         18\n"), std::string::npos)
        << text.out;
}

TEST_F(Explain, RefusesWhatHasNoMeaning)
{
    const struct {
        Texts arguments;
        const char* text;
    } kWrong[] = {
        {{"--long", "--json"}, "--long and --json don't go together"},
        {{"--json", "--limit", "3"}, "--limit has no meaning with --json"},
        {{"--long", "--limit", "3"}, "--limit has no meaning with --long"},
        {{"--rejects", "r.csv"}, "--rejects has a meaning with --long alone"},
        {{"--threads", "2"}, "--threads has a meaning with --long alone"},
        {{"--json", "--digits", "3"}, "--digits has no meaning with --json"},
        {{"--baseline", "median"}, "--baseline is 'median'"},
        {{"--baseline", "0"}, "--baseline is '0'"},
        {{"--baseline", "mean@"}, "--baseline is 'mean@'"},
        {{"--baseline", "3"}, "row 3 has no score (status 90029)"},
        {{"--baseline", "9"}, "there is no row 9"},
        {{"--top", "-1"}, "--top"},
        {{"--limit", "0"}, "--limit"},
    };
    for (const auto& [arguments, text] : kWrong) {
        const Finished run = Run(arguments);
        EXPECT_EQ(run.exitCode, 1) << text;
        EXPECT_NE(run.err.find(text), std::string::npos) << run.err;
        EXPECT_EQ(run.out, "") << text;
    }
    const Finished none = Run({"--baseline", "mean"}, "x,sex\n,m\n");
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_NE(none.err.find("there is no case that has a score"), std::string::npos) << none.err;
    const Finished twice =
        RunVelscore({"explain", model_, "-", "--baseline", "mean"}, "x,sex\n1,m\n");
    EXPECT_EQ(twice.exitCode, 1);
    EXPECT_NE(twice.err.find("reads the cases twice"), std::string::npos) << twice.err;
}

TEST_F(Explain, WithoutCasesTellsTheColumnsThatItNeeds)
{
    const Finished run = RunVelscore({"explain", model_});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("a table with the columns sex, x; - is standard input"),
              std::string::npos)
        << run.err;
    EXPECT_EQ(RunVelscore({"explain", model_, "-", "--long"}, "x,sex\n3,m\n").exitCode, 0);
}

TEST_F(Explain, FaultsOfTheTableEndItBehindTheRowsBefore)
{
    const Finished text = Run({}, "x,sex\n3,m\n1\n");
    EXPECT_EQ(text.exitCode, 3);
    EXPECT_NE(text.out.find("\nrow 1\n"), std::string::npos) << text.out;
    EXPECT_NE(text.err.find("row 2 has 1 field"), std::string::npos) << text.err;
    EXPECT_EQ(Run({}, "x\n3\n").exitCode, 3);
    EXPECT_EQ(Run({"--long"}, "x\n3\n").exitCode, 3);
    EXPECT_EQ(Run({"-o", folder_.Path("no/where.txt")}).exitCode, 4);
    // The output mustn't be an input.
    EXPECT_EQ(Run({"-o", folder_.Path("cases.csv")}).exitCode, 1);
    EXPECT_EQ(Run({"-o", model_}).exitCode, 1);
}

TEST_F(Explain, LongOutputDoesNotDependOnThreads)
{
    std::string cases = "x,sex\n";
    for (int i = 0; i < 60000; ++i)
        cases += std::to_string(i % 97) + (i % 3 == 0 ? ",m\n" : ",f\n");
    const Finished one = Run({"--long", "--threads", "1", "--quiet"}, cases);
    ASSERT_EQ(one.exitCode, 0) << one.err;
    EXPECT_EQ(std::count(one.out.begin(), one.out.end(), '\n'), 60000 * 3 + 1);
    EXPECT_TRUE(one.out == Run({"--long", "--threads", "4", "--quiet"}, cases).out);
}

TEST_F(Explain, TakesTenThousandPredictors)
{
    constexpr int kCount = 10000;
    std::string fields;
    std::string mining;
    std::string parameters;
    std::string covariates;
    std::string cells;
    std::string betas;
    std::string header;
    std::string row;
    for (int i = 0; i < kCount; ++i) {
        const std::string x = "x" + std::to_string(i);
        const std::string p = "p" + std::to_string(i);
        fields += "<DataField name='" + x + "' optype='continuous' dataType='double'/>";
        mining += "<MiningField name='" + x + "'/>";
        parameters += "<Parameter name='" + p + "' label='" + x + "'/>";
        covariates += "<Predictor name='" + x + "'/>";
        cells += "<PPCell value='1' predictorName='" + x + "' parameterName='" + p + "'/>";
        betas += "<PCell parameterName='" + p + "' df='1' beta='0." + std::to_string(i + 1) + "'/>";
        header += (i == 0 ? "" : ",") + x;
        row += i == 0 ? "0.1" : ",0.1";
    }
    const std::string model = folder_.Write(
        "wide.pmml",
        "<PMML xmlns='http://www.dmg.org/PMML-4_4' version='4.4'><Header/><DataDictionary>"
        "<DataField name='y' optype='continuous' dataType='double'/>" +
            fields +
            "</DataDictionary><GeneralRegressionModel modelType='generalLinear' "
            "functionName='regression'><MiningSchema><MiningField name='y' usageType='target'/>" +
            mining + "</MiningSchema><ParameterList>" + parameters +
            "</ParameterList><CovariateList>" + covariates + "</CovariateList><PPMatrix>" + cells +
            "</PPMatrix><ParamMatrix>" + betas + "</ParamMatrix></GeneralRegressionModel></PMML>");
    const std::string cases = folder_.Write("wide.csv", header + "\n" + row + "\n");
    const Finished run = RunVelscore({"explain", model, cases, "--long"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const Sums sums = SumsOf(ParseCsv(run.out));
    const CsvText score =
        ParseCsv(RunVelscore({"score", model, cases, "--columns", "linear_predictor"}).out);
    ASSERT_EQ(sums.size(), 1U);
    EXPECT_EQ(sums.begin()->second, NumberOf(score.Texts("linear_predictor")[0]));
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), kCount + 1);
}

}  // namespace
}  // namespace MCVelscore_850
