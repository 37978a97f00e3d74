// Every folder of tests/data/cases and tests/data/regression through the command: real models, real
// tables, the numbers of the programs that fitted them.

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"

namespace MCVelscore_850 {
namespace {

std::vector<std::string> CaseNames(const std::string& folder)
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(DataFile(folder))) {
        if (entry.is_directory()) names.push_back(folder + "/" + entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

class Cases : public testing::TestWithParam<std::string> {};

TEST_P(Cases, ScoreAsTheFittingProgramDoes)
{
    const std::string folder = DataFile(GetParam() + "/");
    const auto about = nlohmann::json::parse(ReadFile(folder + "case.json"));
    const Finished run = RunVelscore({"score", folder + "model.pmml", folder + "input.csv"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const CsvText scores = ParseCsv(run.out);
    const CsvText expected = ParseCsv(ReadFile(folder + "expected.csv"));
    ASSERT_EQ(scores.rows.size(), about.at("rows").get<size_t>());
    ASSERT_EQ(expected.rows.size(), scores.rows.size());

    for (const std::string& column : expected.header) {
        SCOPED_TRACE(column);
        double tolerance = about.at("tolerance");
        if (about.contains("column_tolerance")) {
            tolerance = about["column_tolerance"].value(column, tolerance);
        }
        const std::vector<std::string> found = scores.Texts(column);
        const std::vector<std::string> wanted = expected.Texts(column);
        ASSERT_EQ(found.size(), wanted.size()) << "the output has no such column";
        for (size_t row = 0; row < wanted.size(); ++row) {
            char* end = nullptr;
            const double number = std::strtod(wanted[row].c_str(), &end);
            if (wanted[row].empty() || *end != '\0') {  // no number, or a category
                EXPECT_EQ(found[row], wanted[row]) << "row " << row + 1;
            } else {
                ASSERT_FALSE(found[row].empty()) << "row " << row + 1;
                const double score = std::strtod(found[row].c_str(), &end);
                EXPECT_EQ(*end, '\0') << found[row];
                EXPECT_TRUE(Agrees(score, number, tolerance))
                    << "row " << row + 1 << ": " << found[row] << ", expected " << wanted[row];
            }
        }
    }
    // A row that wasn't scored shows no number.
    const std::vector<std::string> predictions = scores.Texts("prediction");
    const std::vector<std::string> statuses = scores.Texts("status");
    for (size_t row = 0; row < predictions.size(); ++row) {
        EXPECT_TRUE(statuses[row] == "0" || predictions[row].empty()) << "row " << row + 1;
    }
}

std::string TestName(const testing::TestParamInfo<std::string>& each)
{
    std::string name = each.param.substr(each.param.find('/') + 1);
    std::replace_if(
        name.begin(), name.end(),
        [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(R, Cases, testing::ValuesIn(CaseNames("cases")), TestName);
INSTANTIATE_TEST_SUITE_P(RegressionModel, Cases, testing::ValuesIn(CaseNames("regression")),
                         TestName);

// The general form of a RegressionModel says the same to the last digit.
class ConvertedCases : public testing::TestWithParam<std::string> {};

TEST_P(ConvertedCases, ScoreAsTheirRegressionModel)
{
    const std::string folder = DataFile(GetParam() + "/");
    const ScratchFolder scratch;
    const std::string converted = scratch.Path("converted.pmml");
    const Finished conversion = RunVelscore({"convert", folder + "model.pmml", "-o", converted});
    ASSERT_EQ(conversion.exitCode, 0) << conversion.err;
    const Finished check = RunVelscore({"check", converted});
    EXPECT_EQ(check.exitCode, 0) << check.out;
    EXPECT_EQ(check.out.find("RegressionModel with"), std::string::npos) << check.out;
    EXPECT_EQ(RunVelscore({"score", converted, folder + "input.csv"}).out,
              RunVelscore({"score", folder + "model.pmml", folder + "input.csv"}).out);
}

INSTANTIATE_TEST_SUITE_P(RegressionModel, ConvertedCases,
                         testing::ValuesIn(CaseNames("regression")), TestName);

}  // namespace
}  // namespace MCVelscore_850
