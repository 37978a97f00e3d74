// The library against the reference values: every row of every file, its code, its algorithm's
// value and, where there is one, the exact value.

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <set>

#include "stats/mcmissingvalue.h"
#include "tests/stats/support/functions.h"

namespace {

using MCCommon_850::MCMV;
using namespace reference;

bool IsMark(double x) { return MCMV::IsMissing(x) || !std::isfinite(x); }

// Exact for missing values, infinities and NaN, within the tolerance for numbers.
bool Agrees(double x, double wanted, Tolerance t)
{
    if (std::isnan(wanted)) return std::isnan(x);
    if (IsMark(wanted) || IsMark(x)) return x == wanted;
    return std::fabs(x - wanted) <= t.rel * std::fabs(wanted) + t.abs;
}

void ExpectAgrees(const std::vector<double>& got, const std::vector<double>& wanted, Limit limit,
                  const Row& row, const char* column)
{
    ASSERT_EQ(got.size(), wanted.size()) << "line " << row.line;
    for (std::size_t i = 0; i < got.size(); ++i) {
        const Tolerance t = limit(row.args, wanted[i], got[i]);
        EXPECT_TRUE(Agrees(got[i], wanted[i], t))
            << column << ", line " << row.line << " (" << row.args.Text() << "): " << got[i] << " for "
            << wanted[i] << ", off by " << std::fabs(got[i] - wanted[i]) << ", allowed "
            << t.rel * std::fabs(wanted[i]) + t.abs;
    }
}

class Reference : public testing::TestWithParam<std::string> {};

TEST_P(Reference, EveryRowAgreesInCodeAlgorithmAndTruth)
{
    const Function& function = Find(GetParam());
    const std::vector<Row> rows = Read(function.name);
    ASSERT_FALSE(rows.empty());
    for (const Row& row : rows) {
        const Outcome outcome = function.call(row.args);
        EXPECT_EQ(outcome.code, row.code) << "line " << row.line << " (" << row.args.Text() << ")";
        ExpectAgrees(outcome.values, row.algorithm, function.algorithm, row, "algorithm");
        if (!row.truth.empty()) ExpectAgrees(outcome.values, row.truth, function.truth, row, "truth");
    }
}

std::vector<std::string> Names()
{
    std::vector<std::string> names;
    for (const Function& function : Functions()) names.push_back(function.name);
    return names;
}

INSTANTIATE_TEST_SUITE_P(Stats, Reference, testing::ValuesIn(Names()),
                         [](const auto& test) { return test.param; });

TEST(ReferenceFiles, EachFunctionHasOneAndEachOneHasItsFunction)
{
    std::set<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(Folder()))
        if (entry.path().extension() == ".csv") files.insert(entry.path().stem().string());
    const std::vector<std::string> names = Names();
    EXPECT_EQ(files, std::set<std::string>(names.begin(), names.end()));
}

TEST(ReferenceFiles, HoldSixThousandSixHundredAndFortyThreeRows)
{
    std::size_t rows = 0;
    for (const Function& function : Functions()) rows += Read(function.name).size();
    EXPECT_EQ(rows, 6643u);
}

}  // namespace
