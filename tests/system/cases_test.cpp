// Every folder of tests/data/cases through the command: real models, real tables, R's numbers.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"

namespace MCVelscore_850 {
namespace {

std::vector<std::string> CaseNames()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(DataFile("cases"))) {
        if (entry.is_directory()) names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

// The rule of the cases' README.
bool Agrees(double found, double expected, double tolerance)
{
    const double difference = std::fabs(found - expected);
    return difference <= tolerance * std::max(std::fabs(expected), 1e-12) ||
           difference <= tolerance / 1000.0;
}

class Cases : public testing::TestWithParam<std::string> {};

TEST_P(Cases, ScoreAsRDoes)
{
    const std::string folder = DataFile("cases/" + GetParam() + "/");
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
                    << "row " << row + 1 << ": " << found[row] << ", R has " << wanted[row];
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

INSTANTIATE_TEST_SUITE_P(R, Cases, testing::ValuesIn(CaseNames()), [](const auto& each) {
    std::string name = each.param;
    std::replace_if(
        name.begin(), name.end(),
        [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); }, '_');
    return name;
});

}  // namespace
}  // namespace MCVelscore_850
