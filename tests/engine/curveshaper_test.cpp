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

constexpr double kMissing = NumericValue::GetSysmisValue();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(CurveShaper, WritesALineForEachTimeAndOneForACaseWithoutACurve)
{
    RowText rows;
    const CurveShaper shaper({}, {}, {}, "t");
    rows.AddHeader(shaper.Columns());
    shaper.WriteCurve(rows, {}, 1, {{0.5, 1.0, 0.0}, {2.0, 0.75, 0.25}});
    shaper.WriteTorn(rows, "t", 2);
    shaper.WriteCurve(rows, {}, 3, {{9.0, kMissing, kNaN}});
    shaper.WriteCurve(rows, {}, 4, {});
    EXPECT_EQ(rows.Text(),
              "row,time,survival,cum_hazard\n1,0.5,1,0\n1,2,0.75,0.25\n2,,,\n3,9,,\n4,,,\n");
}

TEST(CurveShaper, WritesALineForEachCaseInTheWideForm)
{
    RowText rows;
    const Names header{"id", "row"};
    const CurveShaper shaper({.wide = true, .times = {0.5, 2.0}},
                             {.keep = {"row", "id"}, .tableColumn = "table"}, header, "t");
    rows.AddHeader(shaper.Columns());
    const std::vector<std::string_view> fields{"a", "7"};
    shaper.WriteCurve(rows, {fields, "t"}, 1, {{0.5, 1.0, 0.0}, {2.0, kMissing, kNaN}});
    shaper.WriteCurve(rows, {fields, "t"}, 2, {});
    shaper.WriteTorn(rows, "t", 3);
    EXPECT_EQ(rows.Text(),
              "table,input.row,id,row,survival@0.5,survival@2\n"
              "t,7,a,1,1,\nt,7,a,2,,\nt,,,3,,\n");
}

}  // namespace
}  // namespace MCVelscore_850
