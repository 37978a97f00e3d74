// `velscore inspect --coefficients` against R: tests/data/coefficients has its values, and the
// script that made them.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>

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

double NumberOf(const std::string& text)
{
    return text.empty() ? std::nan("") : std::strtod(text.c_str(), nullptr);
}

std::string Model(const std::string& name) { return DataFile("cases/" + name + "/model.pmml"); }

std::vector<std::string> CaseNames()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(DataFile("coefficients"))) {
        if (entry.path().extension() == ".csv") names.push_back(entry.path().stem().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

class Coefficients : public testing::TestWithParam<std::string> {};
INSTANTIATE_TEST_SUITE_P(OfR, Coefficients, testing::ValuesIn(CaseNames()), [](const auto& name) {
    std::string text = name.param;
    std::replace(text.begin(), text.end(), '-', '_');
    return text;
});

// The row of an equation and a label, -1 for none.
int RowOf(const CsvText& table, const std::string& equation, const std::string& label)
{
    const Texts equations = table.Texts("equation");
    const Texts labels = table.Texts("label");
    for (size_t row = 0; row < labels.size(); ++row) {
        if (equations[row] == equation && labels[row] == label) return static_cast<int>(row);
    }
    return -1;
}

TEST_P(Coefficients, AreThoseOfR)
{
    const bool isLinear = GetParam().starts_with("lm") || GetParam().starts_with("glm");
    const Finished run = RunVelscore({"inspect", Model(GetParam()), "--coefficients", "--csv"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const CsvText found = ParseCsv(run.out);
    const CsvText expected = ParseCsv(ReadFile(DataFile("coefficients/" + GetParam() + ".csv")));
    // More than R's are the parameter's name, and where betas are 0 for good an aliased parameter
    // and the constant that a linear regression always has.
    EXPECT_EQ(found.header.size(), expected.header.size() + 1);
    const bool hasZero =
        GetParam() == "glm-toothgrowth-aliased" || GetParam() == "lm-stackloss-no-constant";
    EXPECT_EQ(found.rows.size(), expected.rows.size() + (hasZero ? 1 : 0));
    for (const Texts& row : expected.rows) {
        SCOPED_TRACE(row[0] + ": " + row[1]);
        const int place = RowOf(found, row[0], row[1]);
        ASSERT_GE(place, 0);
        for (size_t i = 2; i < row.size(); ++i) {
            std::string name = expected.header[i];
            if (name == "value") name = isLinear ? "t_value" : "z_value";
            const int column = found.Column(name);
            ASSERT_GE(column, 0) << name;
            const std::string& text =
                found.rows[static_cast<size_t>(place)][static_cast<size_t>(column)];
            ASSERT_EQ(text.empty(), row[i].empty()) << name;
            if (text.empty()) continue;
            const double number = NumberOf(text);
            const double wanted = NumberOf(row[i]);
            EXPECT_LE(std::fabs(number - wanted), 1e-10 * std::fabs(wanted) + 1e-300)
                << name << ": " << number << " for " << wanted;
        }
    }
}

TEST(CoefficientsOfCases, HaveReferencesOfAllFamilies) { EXPECT_GE(CaseNames().size(), 28U); }

// y = 1 + 2 x + 10 [sex = m], 8 degrees of freedom; the intercept has the variance 4, and the
// 97.5% and 95% points of t are 2.306004135 and 1.859548038.
TEST(InspectCoefficients, TellsTheLevelAndLeavesOutWhatThereIsNot)
{
    const ScratchFolder folder;
    const std::string model = folder.Write("model.pmml", TestModel().Text());
    const Finished text = RunVelscore({"inspect", model, "--coefficients"});
    EXPECT_EQ(text.out,
              "t with 8 degrees of freedom\n"
              "  term       estimate  std. error  t value   p value  lower 95%  upper 95%\n"
              "  Intercept         1           2      0.5  0.630536   -3.61201    5.61201\n"
              "  x                 2           0                             2          2\n"
              "  [sex=m]          10           0                            10         10\n");
    const CsvText at90 =
        ParseCsv(RunVelscore({"inspect", model, "--coefficients", "--csv", "--level", "0.9"}).out);
    EXPECT_EQ(at90.header, (Texts{"equation", "parameter", "label", "estimate", "std_err",
                                  "t_value", "p_value", "ci_lower", "ci_upper"}));
    EXPECT_NEAR(NumberOf(at90.Texts("ci_lower")[0]), 1 - 2 * 1.859548038, 1e-8);
    EXPECT_EQ(at90.Texts("t_value")[1], "");
    const json report =
        json::parse(RunVelscore({"inspect", model, "--coefficients", "--json"}).out);
    EXPECT_EQ(report.at("level"), 0.95);
    EXPECT_EQ(report.at("df"), 8.0);
    EXPECT_EQ(report.at("rows")[0].at("t_value"), 0.5);
    EXPECT_TRUE(report.at("rows")[1].at("t_value").is_null());
    EXPECT_EQ(json::parse(RunVelscore({"inspect", model, "--json"}).out).at("coefficients"),
              report);
}

TEST(InspectCoefficients, OddsAndHazardRatios)
{
    const auto column = [](const std::string& name, const std::string& which) {
        const CsvText table =
            ParseCsv(RunVelscore({"inspect", Model(name), "--coefficients", "--csv"}).out);
        return std::pair(table, table.Texts(which));
    };
    for (const auto& [name, ratio] :
         {std::pair("blr-birthwt-sum", "odds_ratio"), std::pair("mlr-birthwt-race", "odds_ratio"),
          std::pair("glz-logit-number-birthwt", "odds_ratio"),
          std::pair("ordinal-logit-housing", "odds_ratio"),
          std::pair("cox-lung-centred", "hazard_ratio")}) {
        SCOPED_TRACE(name);
        const auto [table, ratios] = column(name, ratio);
        ASSERT_EQ(ratios.size(), table.rows.size());
        size_t compared = 0;
        for (size_t row = 0; row < ratios.size(); ++row) {
            const bool isConstant = table.Texts("label")[row].find("ntercept") != std::string::npos;
            ASSERT_EQ(ratios[row].empty(), isConstant) << row;
            if (isConstant) continue;
            EXPECT_EQ(NumberOf(ratios[row]), std::exp(NumberOf(table.Texts("estimate")[row])));
            if (!table.Texts("ci_lower")[row].empty()) {
                EXPECT_EQ(NumberOf(table.Texts(std::string(ratio) + "_lower")[row]),
                          std::exp(NumberOf(table.Texts("ci_lower")[row])));
            }
            ++compared;
        }
        EXPECT_GT(compared, 2U);
    }
    EXPECT_TRUE(column("glz-poisson-quine", "odds_ratio").second.empty());
    EXPECT_TRUE(column("lm-swiss", "odds_ratio").second.empty());
}

// The document's order of categories and parameters, as its covariances have it.
TEST(InspectCoefficients, OfSeveralEquationsEachHasItsOwnErrors)
{
    const CsvText table = ParseCsv(
        RunVelscore({"inspect", Model("mlr-birthwt-race"), "--coefficients", "--csv"}).out);
    const Texts errors = table.Texts("std_err");
    ASSERT_EQ(table.Texts("equation"), (Texts{"black", "black", "black", "black", "black", "other",
                                              "other", "other", "other", "other"}));
    EXPECT_EQ(std::count(errors.begin(), errors.end(), ""), 0);
    std::vector<std::string> sorted = errors;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(std::unique(sorted.begin(), sorted.end()), sorted.end());
}

TEST(InspectCoefficients, WithoutCovariancesSayOnceThatErrorsLack)
{
    const Finished run = RunVelscore({"inspect", Model("cox-lung-centred"), "--coefficients"});
    EXPECT_EQ(run.out.substr(0, run.out.find("\n  age")),
              "the document has no covariances: no standard errors, tests and limits\n"
              "  term          estimate  hazard ratio");
    EXPECT_EQ(run.err, "");
    const CsvText table = ParseCsv(
        RunVelscore({"inspect", Model("cox-lung-centred"), "--coefficients", "--csv"}).out);
    for (const char* column : {"std_err", "z_value", "p_value", "ci_lower", "ci_upper"}) {
        for (const std::string& text : table.Texts(column)) EXPECT_EQ(text, "") << column;
        EXPECT_EQ(table.Texts(column).size(), table.rows.size());
    }
}

TEST(InspectCoefficients, RefusesWhatDoesNotGoTogether)
{
    const struct {
        Texts arguments;
        const char* text;
    } kWrong[] = {
        {{"--csv"}, "--csv has a meaning with --coefficients alone"},
        {{"--level", "0.9"}, "--level has a meaning with --coefficients alone"},
        {{"--coefficients", "--dump"}, "--coefficients and --dump don't go together"},
        {{"--coefficients", "--csv", "--json"}, "--csv and --json don't go together"},
        {{"--coefficients", "--level", "95"}, "Did you mean 0.95?"},
    };
    for (const auto& [arguments, text] : kWrong) {
        Texts all{"inspect", Model("lm-swiss")};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const Finished run = RunVelscore(all);
        EXPECT_EQ(run.exitCode, 1) << text;
        EXPECT_NE(run.err.find(text), std::string::npos) << run.err;
    }
}

}  // namespace
}  // namespace MCVelscore_850
