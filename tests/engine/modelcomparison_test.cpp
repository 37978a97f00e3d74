// What two models differ in, and their scores.
#include "engine/comparison/modelcomparison.h"

#include <cmath>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "engine/comparison/comparisonjson.h"
#include "engine/comparison/scorecomparison.h"
#include "engine/scoring/scoringsession.h"
#include "host/messages/messages.h"
#include "tests/engine/smallmodels.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;

// "subject name: first -> second (by size)", a line each.
Texts Told(const std::vector<ModelDifference>& differences)
{
    Texts lines;
    for (const ModelDifference& each : differences) {
        std::string& line = lines.emplace_back(fmt::format("{} {}: {} -> {}", each.subject,
                                                           each.name, each.first.value_or("none"),
                                                           each.second.value_or("none")));
        if (each.size) line += fmt::format(" (by {:.3g})", *each.size);
    }
    return lines;
}

struct Edit {
    std::string from;
    std::string to;
};
struct Changed {
    std::vector<Edit> edits;
    Texts differences;
};

void ExpectDifferences(const std::string& text, const std::vector<Changed>& rows)
{
    const LoadedModel first = OpenText(text);
    EXPECT_EQ(Told(CompareModels(first, first)), Texts{});
    for (const Changed& row : rows) {
        std::string other = text;
        for (const Edit& edit : row.edits) other = Replaced(other, edit.from, edit.to);
        EXPECT_EQ(Told(CompareModels(first, OpenText(other))), row.differences) << row.edits[0].to;
    }
}

TEST(CompareModels, TellsEachThingInWhichTheyDiffer)
{
    ExpectDifferences(
        TestModel().Text(),
        {{{{"beta=\"2\"", "beta=\"2.5\""}}, {"beta x: 2 -> 2.5 (by 0.5)"}},
         {{{"beta=\"1\"", "beta=\"-1\""}}, {"beta intercept: 1 -> -1 (by 2)"}},
         {{{"beta=\"10\"", "beta=\"11\""}}, {"beta [sex = m]: 10 -> 11 (by 1)"}},
         {{{"modelDF=\"8\"", "modelDF=\"9\""}}, {"model df: 8 -> 9 (by 1)"}},
         {{{"pCol=\"p0\" value=\"4\"", "pCol=\"p0\" value=\"6\""}},
          {"covariances 1 of 9 cells, the most row 1, column 1: 4 -> 6 (by 2)"}},
         // Row 3, column 2 and its mirror; the larger distance is told.
         {{{"pCol=\"p0\" value=\"4\"", "pCol=\"p0\" value=\"5\""},
           {"pRow=\"p2\" pCol=\"p1\" value=\"0\"", "pRow=\"p2\" pCol=\"p1\" value=\"-2\""}},
          {"covariances 3 of 9 cells, the most row 2, column 3: 0 -> -2 (by 2)"}},
         {{{"value=\"1\" predictorName=\"x\"", "value=\"2\" predictorName=\"x\""}},
          {"beta x: 2 -> none", "beta x^2: none -> 2"}},
         {{{"<Value value=\"m\"/>", "<Value value=\"m\"/><Value value=\"z\"/>"}},
          {"field sex: text, categorical: f, m -> text, categorical: f, m, z"}},
         {{{"name=\"sex\" optype=\"categorical\"", "name=\"sex\" optype=\"ordinal\""}},
          {"field sex: text, categorical: f, m -> text, ordinal: f, m"}},
         {{{"name=\"x\" optype=\"continuous\" dataType=\"double\"",
            "name=\"x\" optype=\"continuous\" dataType=\"date\""}},
          {"field x: number, continuous -> date or time, continuous"}},
         {{{"name=\"x\" usageType=\"active\"",
            "name=\"x\" usageType=\"active\" missingValueReplacement=\"3\""}},
          {"missing value of x: none -> 3"}},
         {{{"name=\"x\" usageType=\"active\"",
            "name=\"x\" usageType=\"active\" invalidValueTreatment=\"asMissing\""}},
          {"invalid value of x: none -> asMissing"}}});
}

TEST(CompareModels, TellsWhatOneAloneHas)
{
    const std::string text = TestModel().Text();
    const LoadedModel first = OpenText(text);
    const LoadedModel other = OpenText(Without(text, "<PCovMatrix", "</PCovMatrix>"));
    EXPECT_EQ(Told(CompareModels(first, other)),
              (Texts{"model df: 8 -> none", "covariances matrix: 3 x 3 -> none"}));
    EXPECT_EQ(Told(CompareModels(other, first)),
              (Texts{"model df: none -> 8", "covariances matrix: none -> 3 x 3"}));
}

// The name of a parameter decides nothing, and terms of the same factors have numbers.
TEST(CompareModels, TermsAreWhatTheyAreMadeOf)
{
    std::string text = TestModel().Text();
    std::string named = text;
    for (size_t at = 0; (at = named.find("\"p2\"", at)) != std::string::npos;) {
        named.replace(at, 4, "\"other\"");
    }
    EXPECT_EQ(Told(CompareModels(OpenText(text), OpenText(named))), Texts{});
    // Twice the same term: each against its like.
    std::string twice = Replaced(text, "<PPMatrix>",
                                 "<PPMatrix><PPCell value=\"1\" predictorName=\"x\" "
                                 "parameterName=\"p3\"/>");
    twice = Replaced(twice, "</ParameterList>", "<Parameter name=\"p3\"/></ParameterList>");
    twice =
        Replaced(twice, "</ParamMatrix>", "<PCell parameterName=\"p3\" beta=\"5\"/></ParamMatrix>");
    EXPECT_EQ(
        Told(CompareModels(OpenText(twice), OpenText(Replaced(twice, "beta=\"5\"", "beta=\"6\"")))),
        Texts{"beta x (2): 5 -> 6 (by 1)"});
    // A product, its factors turned round.
    const std::string product =
        Replaced(text, "<PPCell value=\"m\" predictorName=\"sex\" parameterName=\"p2\"/>",
                 "<PPCell value=\"m\" predictorName=\"sex\" parameterName=\"p2\"/>"
                 "<PPCell value=\"3\" predictorName=\"x\" parameterName=\"p2\"/>");
    const std::string turned =
        Replaced(text, "<PPCell value=\"m\" predictorName=\"sex\" parameterName=\"p2\"/>",
                 "<PPCell value=\"3\" predictorName=\"x\" parameterName=\"p2\"/>"
                 "<PPCell value=\"m\" predictorName=\"sex\" parameterName=\"p2\"/>");
    EXPECT_EQ(Told(CompareModels(OpenText(product), OpenText(turned))), Texts{});
    EXPECT_EQ(Told(CompareModels(OpenText(text), OpenText(product))),
              (Texts{"beta [sex = m]: 10 -> none", "beta [sex = m] * x^3: none -> 10"}));
}

TEST(CompareModels, CategoriesOfTheTargetHaveTheirOwnTerms)
{
    ExpectDifferences(ClassifyingText(),
                      {{{{"parameterName='p0' beta='0'", "parameterName='p0' beta='0.5'"}},
                        {"beta intercept of yes: 0 -> 0.5 (by 0.5)"}},
                       {{{"<Value value='no'", "<Value value='maybe'/><Value value='no'"},
                         {"<PCell",
                          "<PCell targetCategory='maybe' parameterName='p0' beta='1'/>"
                          "<PCell targetCategory='maybe' parameterName='px' beta='2'/>"
                          "<PCell"}},
                        {"model categories: no, yes -> maybe, no, yes",
                         "beta intercept of maybe: none -> 1", "beta x of maybe: none -> 2"}}});
}

TEST(CompareModels, BaselinesByTheirTimes)
{
    ExpectDifferences(
        CoxText(),
        {{{{"cumHazard='1'", "cumHazard='1.5'"}},
          {"baseline 1 of 3 hazards, the most at 5: 1 -> 1.5 (by 0.5)"}},
         {{{"cumHazard='0.25'", "cumHazard='0.5'"}, {"cumHazard='2'", "cumHazard='3'"}},
          {"baseline 2 of 3 hazards, the most at 8: 2 -> 3 (by 1)"}},
         {{{"time='8'", "time='9'"}},
          {"baseline times: 3 times from 2 to 8 -> 3 times from 2 to 9"}},
         {{{"maxTime='10'", "maxTime='12'"}}, {"baseline last time: 10 -> 12 (by 2)"}},
         {{{"<BaselineCell time='2'", "<BaselineCell time='1'"}},
          {"baseline times: 3 times from 2 to 8 -> 3 times from 1 to 8",
           "baseline first time: 2 -> 1 (by 1)"}},
         {{{"referencePoint='0'", "referencePoint='0.5'"}}, {"base point x: 0 -> 0.5 (by 0.5)"}},
         {{{"usageType='target'/>",
            "usageType='target'><Extension><X-Stratum name='status'><Value value='1'/>"
            "<Value value='2'/></X-Stratum></Extension></MiningField>"}},
          {"model events: none -> 1, 2"}}});
}

std::string WithStrata(const std::string& strata)
{
    std::string text = Replaced(CoxText(), "statusVariable='status'",
                                "statusVariable='status' baselineStrataVariable='g'");
    text = Replaced(text, "<DataField name='x'",
                    "<DataField name='g' optype='categorical' dataType='string'>"
                    "<Value value='a'/><Value value='b'/><Value value='c'/></DataField>"
                    "<DataField name='x'");
    text =
        Replaced(text, "<MiningField name='x'/>", "<MiningField name='g'/><MiningField name='x'/>");
    text = Without(text, "<BaseCumHazardTables", "</BaseCumHazardTables>");
    return Replaced(text, "</EventValues>",
                    "</EventValues><BaseCumHazardTables>" + strata + "</BaseCumHazardTables>");
}
std::string Stratum(const std::string& value, const std::string& hazard,
                    const std::string& maxTime = "10")
{
    return "<BaselineStratum value='" + value + "' maxTime='" + maxTime +
           "'><BaselineCell time='2' cumHazard='" + hazard + "'/></BaselineStratum>";
}

TEST(CompareModels, StrataWhateverTheirOrder)
{
    const LoadedModel first = OpenText(WithStrata(Stratum("a", "1") + Stratum("b", "2")));
    const auto against = [&](const std::string& strata) {
        return Told(CompareModels(first, OpenText(WithStrata(strata))));
    };
    EXPECT_EQ(against(Stratum("b", "2") + Stratum("a", "1")), Texts{});
    EXPECT_EQ(against(Stratum("b", "2.5") + Stratum("a", "1")),
              Texts{"baseline b: 1 of 1 hazards, the most at 2: 2 -> 2.5 (by 0.5)"});
    EXPECT_EQ(against(Stratum("a", "1", "9") + Stratum("b", "2")),
              Texts{"baseline a: last time: 10 -> 9 (by 1)"});
    EXPECT_EQ(against(Stratum("a", "1") + Stratum("c", "2")),
              (Texts{"stratum b: 1 times -> none", "stratum c: none -> 1 times"}));
}

// y = 1 + 2 x + 10 [sex = m] against others, over x = 1, 2, 3 and an empty one, sex = m, f, m, f.
class CompareScoresTest : public testing::Test {
protected:
    ScoreComparison Against(const std::string& other, const std::string& table = kTable,
                            const ScoringOptions& options = {})
    {
        return CompareScores(OpenText(TestModel().Text()), OpenText(other),
                             folder_.Write("cases.csv", table), options);
    }
    static constexpr char kTable[] = "x,sex\n1,m\n2,f\n3,m\n,f\n";
    ScratchFolder folder_;
};

Texts NamesOf(const ScoreComparison& comparison)
{
    Texts names;
    for (const auto& column : comparison.columns) names.push_back(column.name);
    return names;
}

TEST_F(CompareScoresTest, TheSameModelsDoNotDiffer)
{
    const ScoreComparison same = Against(TestModel().Text());
    EXPECT_FALSE(same.Differ());
    EXPECT_EQ(same.rows, 4);
    EXPECT_EQ(same.both, 3);
    EXPECT_EQ(same.firstAlone, 0);
    EXPECT_EQ(same.secondAlone, 0);
    EXPECT_EQ(NamesOf(same), (Texts{"prediction", "std_dev", "ci_lower", "ci_upper"}));
    for (const auto& column : same.columns) {
        EXPECT_EQ(column.compared, 3) << column.name;
        EXPECT_EQ(column.different, 0) << column.name;
        EXPECT_EQ(column.oneAlone, 0) << column.name;
        EXPECT_EQ(column.worstRow, 0) << column.name;
        EXPECT_EQ(column.Mean(), 0.0) << column.name;
    }
}

// With 3 x in place of 2 x they are apart by x: 1, 2 and 3.
TEST_F(CompareScoresTest, TellsTheLargestDistanceAndTheMean)
{
    const ScoreComparison apart = Against(Replaced(TestModel().Text(), "beta=\"2\"", "beta=\"3\""));
    EXPECT_TRUE(apart.Differ());
    const auto& column = apart.columns.at(0);
    EXPECT_EQ(column.compared, 3);
    EXPECT_EQ(column.different, 3);
    EXPECT_EQ(column.largest, 3.0);
    EXPECT_EQ(column.worstRow, 3);
    EXPECT_EQ(column.sum, 6.0);
    EXPECT_EQ(column.Mean(), 2.0);
    EXPECT_EQ(column.first, "17");
    EXPECT_EQ(column.second, "20");
    EXPECT_FALSE(column.isCategory);
    EXPECT_EQ(apart.columns.at(1).different, 0);  // the errors are the same
    // Equal distances: the first row is told.
    const auto even = Against(Replaced(TestModel().Text(), "beta=\"1\"", "beta=\"2\""));
    EXPECT_EQ(even.columns.at(0).worstRow, 1);
    EXPECT_EQ(even.columns.at(0).largest, 1.0);
}

TEST_F(CompareScoresTest, RowsThatOneAloneScores)
{
    const std::string other =
        Replaced(TestModel().Text(), "name=\"x\" usageType=\"active\"",
                 "name=\"x\" usageType=\"active\" missingValueReplacement=\"3\"");
    const ScoreComparison second = Against(other);
    EXPECT_EQ(second.both, 3);
    EXPECT_EQ(second.firstAlone, 0);
    EXPECT_EQ(second.secondAlone, 1);
    EXPECT_TRUE(second.Differ());
    const ScoreComparison first = CompareScores(OpenText(other), OpenText(TestModel().Text()),
                                                folder_.Write("cases.csv", kTable), {});
    EXPECT_EQ(first.firstAlone, 1);
    EXPECT_EQ(first.secondAlone, 0);
    EXPECT_TRUE(first.Differ());
}

// Without covariances there are columns, and nothing in them.
TEST_F(CompareScoresTest, ValuesThatOneAloneHas)
{
    const ScoreComparison apart =
        Against(Without(TestModel().Text(), "<PCovMatrix", "</PCovMatrix>"));
    const auto& error = apart.columns.at(1);
    EXPECT_EQ(error.name, "std_dev");
    EXPECT_EQ(error.compared, 0);
    EXPECT_EQ(error.oneAlone, 3);
    EXPECT_EQ(error.Mean(), 0.0);
    EXPECT_TRUE(apart.Differ());
}

TEST_F(CompareScoresTest, ColumnsThatTheOtherLacks)
{
    const ScoreComparison apart = Against(ClassifyingText());
    EXPECT_EQ(apart.ofFirst, (Texts{"prediction", "std_dev", "ci_lower", "ci_upper"}));
    EXPECT_EQ(apart.ofSecond, (Texts{"prediction", "probability(no)", "probability(yes)"}));
    EXPECT_TRUE(apart.columns.empty());
    EXPECT_TRUE(apart.Differ());
}

// P(yes) = 3^x / (1 + 3^x) against the same with 1/3: the categories change where x isn't 0.
TEST_F(CompareScoresTest, CategoriesDifferByOne)
{
    const ScoreComparison apart =
        CompareScores(OpenText(ClassifyingText()),
                      OpenText(Replaced(ClassifyingText(), "beta='1.09", "beta='-1.09")),
                      folder_.Write("cases.csv", "x\n0\n1\n-1\n"), {});
    const auto& column = apart.columns.at(0);
    EXPECT_TRUE(column.isCategory);
    EXPECT_EQ(column.compared, 3);
    EXPECT_EQ(column.different, 2);
    EXPECT_EQ(column.worstRow, 2);
    EXPECT_EQ(column.first, "yes");
    EXPECT_EQ(column.second, "no");
    EXPECT_NEAR(apart.columns.at(1).largest, 0.5, 1e-15);
}

TEST_F(CompareScoresTest, ColumnsAreMappedForWhoReadsThem)
{
    ScoringOptions options;
    options.columnOf = {{"x", "size"}, {"sex", "kind"}};
    const ScoreComparison same = Against(ClassifyingText(), "size,kind\n1,m\n2,f\n", options);
    EXPECT_EQ(same.both, 2);
    options.columnOf = {{"y2", "size"}};
    try {
        Against(ClassifyingText(), "size,kind\n1,m\n", options);
        ADD_FAILURE() << "taken";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::Usage);
        EXPECT_EQ(failure.Code(), kUnknownMappedName);
        EXPECT_EQ(failure.Arguments(), (Texts{"y2", "sex, x"}));
    }
    // Without a header the columns are the first model's: sex, then x.
    ScoringOptions bare;
    bare.dialect.hasHeader = false;
    const ScoreComparison second = Against(ClassifyingText(), "m,1\nf,2\n", bare);
    EXPECT_EQ(second.both, 2);
}

TEST_F(CompareScoresTest, AsJson)
{
    const LoadedModel first = OpenText(TestModel().Text());
    const LoadedModel second = OpenText(Replaced(TestModel().Text(), "beta=\"2\"", "beta=\"3\""));
    const auto differences = CompareModels(first, second);
    const auto scores =
        CompareScores(first, second, folder_.Write("cases.csv", kTable), ScoringOptions{});
    Json json = Json::parse(ComparisonJson(first, second, differences, scores));
    const Json columns = json["scores"]["columns"];
    json["scores"].erase("columns");
    EXPECT_EQ(json, Json::parse(R"({"first": "model.pmml", "second": "model.pmml", "same": false,
        "differences": [{"subject": "beta", "name": "x", "first": "2", "second": "3", "size": 1.0}],
        "scores": {"rows": 4, "both": 3, "firstAlone": 0, "secondAlone": 0,
                   "columnsOfFirst": [], "columnsOfSecond": []}})"));
    EXPECT_EQ(columns.at(0),
              Json::parse(R"({"column": "prediction", "compared": 3, "different": 3, "oneAlone": 0,
        "largest": 3.0, "mean": 2.0, "row": 3, "first": "17", "second": "20"})"));
    EXPECT_EQ(columns.at(1),
              Json::parse(R"({"column": "std_dev", "compared": 3, "different": 0, "oneAlone": 0,
        "largest": 0.0, "mean": 0.0, "row": null, "first": null, "second": null})"));

    const auto same = [&](const LoadedModel& other, bool scored) {
        std::optional<ScoreComparison> compared;
        if (scored) compared = CompareScores(first, other, folder_.Path("cases.csv"), {});
        return Json::parse(ComparisonJson(first, other, {}, compared)).at("same");
    };
    EXPECT_EQ(same(first, true), true);
    EXPECT_EQ(same(first, false), true);
    EXPECT_EQ(same(second, true), false);
    EXPECT_EQ(Json::parse(ComparisonJson(first, second, differences, std::nullopt)).at("same"),
              false);
    EXPECT_TRUE(Json::parse(ComparisonJson(first, second, {}, std::nullopt))["scores"].is_null());
}

TEST_F(CompareScoresTest, CategoriesAsJsonHaveNoDistance)
{
    const LoadedModel first = OpenText(ClassifyingText());
    const LoadedModel second = OpenText(Replaced(ClassifyingText(), "beta='1.09", "beta='-1.09"));
    const auto scores =
        CompareScores(first, second, folder_.Write("cases.csv", "x\n1\n"), ScoringOptions{});
    const Json json = Json::parse(ComparisonJson(first, second, {}, scores));
    EXPECT_EQ(json["scores"]["columns"][0],
              Json::parse(R"({"column": "prediction", "compared": 1, "different": 1, "oneAlone": 0,
        "largest": null, "mean": null, "row": 1, "first": "yes", "second": "no"})"));
}

}  // namespace
}  // namespace MCVelscore_850
