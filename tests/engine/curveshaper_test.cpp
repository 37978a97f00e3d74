#include "engine/scoring/curveshaper.h"

#include <algorithm>
#include <limits>

#include <gtest/gtest.h>

#include "engine/tables/rowtext.h"
#include "host/values/numericvalue.h"

namespace MCVelscore_850 {
namespace {

using Names = std::vector<std::string>;

ModelDescription Described(Names factors, Names covariates, const std::string& stratum)
{
    ModelDescription description;
    description.factors = std::move(factors);
    description.covariates = std::move(covariates);
    description.variables = description.factors;
    description.variables.insert(description.variables.end(), description.covariates.begin(),
                                 description.covariates.end());
    description.endTimeVariable = "time";
    description.stratumVariable = stratum;
    for (const std::string& name : {std::string("time"), stratum}) {
        auto& all = description.variables;
        if (!name.empty() && std::find(all.begin(), all.end(), name) == all.end()) {
            all.push_back(name);
        }
    }
    return description;
}

TEST(CurveShaper, NeedsNoEndTimeUnlessTheModelReadsItForSomethingElse)
{
    EXPECT_EQ(CurveShaper::Needs(Described({"f"}, {"x"}, "s")).variables, (Names{"f", "x", "s"}));
    EXPECT_EQ(CurveShaper::Needs(Described({"f"}, {"time"}, "")).variables, (Names{"f", "time"}));
    EXPECT_EQ(CurveShaper::Needs(Described({"time"}, {"x"}, "")).variables, (Names{"time", "x"}));
    EXPECT_EQ(CurveShaper::Needs(Described({"f"}, {"x"}, "time")).variables,
              (Names{"f", "x", "time"}));
}

TEST(CurveShaper, SuitsModelsThatHaveABaseline)
{
    ModelDescription description;
    EXPECT_FALSE(CurveShaper::Suits(description));
    description.strata.emplace_back();
    EXPECT_TRUE(CurveShaper::Suits(description));
}

TEST(CurveShaper, WritesALineForEachTimeAndOneForACaseWithoutACurve)
{
    RowText rows;
    constexpr double kMissing = NumericValue::GetSysmisValue();
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    rows.AddHeader(CurveShaper::Columns());
    CurveShaper::WriteCurve(rows, 1, {{0.5, 1.0, 0.0}, {2.0, 0.75, 0.25}});
    CurveShaper::WriteNoCurve(rows, 2);
    CurveShaper::WriteCurve(rows, 3, {{9.0, kMissing, kNaN}});
    CurveShaper::WriteCurve(rows, 4, {});
    EXPECT_EQ(rows.Text(),
              "row,time,survival,cum_hazard\n1,0.5,1,0\n1,2,0.75,0.25\n2,,,\n3,9,,\n4,,,\n");
}

}  // namespace
}  // namespace MCVelscore_850
