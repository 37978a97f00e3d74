// How scores come about, from the lines of one case to what is written of whole tables.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "engine/messages/failure.h"
#include "engine/reports/explanationjson.h"
#include "engine/scoring/baselinebuilder.h"
#include "engine/scoring/explainedtables.h"
#include "engine/scoring/explanationlines.h"
#include "engine/scoring/explanationshaper.h"
#include "engine/scoring/scoringsession.h"
#include "engine/tables/rowtext.h"
#include "host/messages/messages.h"
#include "host/values/numbertext.h"
#include "tests/engine/smallmodels.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// An equation of terms a, b, c, .., so many.
ExplanationOutline OutlineOfTerms(size_t terms, size_t equations = 1)
{
    ExplanationOutline outline;
    for (size_t i = 0; i < equations; ++i) {
        auto& equation = outline.equations.emplace_back();
        for (size_t j = 0; j < terms; ++j) {
            equation.terms.push_back({std::string(1, static_cast<char>('a' + j))});
        }
    }
    return outline;
}

CaseExplanation::Sum SumOf(const std::vector<double>& contributions, size_t equation = 0)
{
    CaseExplanation::Sum sum;
    sum.equation = equation;
    for (const double each : contributions) {
        sum.Add(10.0 * each, each);
        sum.linearPredictor += each;
    }
    return sum;
}

// "term value contribution", "-" for no number.
Texts Told(std::span<const ExplanationLine> lines)
{
    const auto text = [](double number) {
        std::string made;
        if (!std::isnan(number)) AppendNumber(number, made);
        return made.empty() ? "-" : made;
    };
    Texts told;
    for (const ExplanationLine& line : lines) {
        told.push_back(std::string(line.term) + " " + text(line.value) + " " +
                       text(line.contribution));
    }
    return told;
}

TEST(ExplanationLines, AllTermsAsTheyAreAdded)
{
    const ExplanationOutline outline = OutlineOfTerms(3);
    ExplanationLines lines(outline, {});
    const auto sum = SumOf({1.0, -4.0, 2.0});
    EXPECT_EQ(Told(lines.Of(sum)), (Texts{"a 10 1", "b -40 -4", "c 20 2"}));
    EXPECT_EQ(lines.LinearPredictor(sum), -1.0);
    EXPECT_EQ(lines.Of(sum)[1].outlined, &outline.equations[0].terms[1]);
}

// By size, the first added of equal ones first, no number before all.
TEST(ExplanationLines, TheLargestAndOneLineForTheOthers)
{
    const ExplanationOutline outline = OutlineOfTerms(4);
    struct Row {
        size_t top;
        std::vector<double> contributions;
        Texts lines;
    };
    const Row rows[] = {
        {2, {1.0, -4.0, 2.0, 0.5}, {"b -40 -4", "c 20 2", "other terms - 1.5"}},
        {3, {2.0, -2.0, 2.0, 1.0}, {"a 20 2", "b -20 -2", "c 20 2", "other terms - 1"}},
        {1, {0.0, 1.0, 0.0, 0.0}, {"b 10 1", "other terms - 0"}},
        {0, {1.0, 1.0, 1.0, 1.0}, {"other terms - 4"}},
        {4, {1.0, 2.0, 3.0, 4.0}, {"a 10 1", "b 20 2", "c 30 3", "d 40 4"}},
        {9, {1.0, 2.0, 3.0, 4.0}, {"a 10 1", "b 20 2", "c 30 3", "d 40 4"}},
        {2, {1.0, 8.0, kNaN, 4.0}, {"c - -", "b 80 8", "other terms - -"}},
    };
    for (const Row& row : rows) {
        ExplanationLines lines(outline, {.top = row.top});
        EXPECT_EQ(Told(lines.Of(SumOf(row.contributions))), row.lines) << row.top;
    }
    ExplanationLines lines(outline, {.top = 1});
    EXPECT_EQ(lines.Of(SumOf({1.0, 2.0, 3.0, 4.0})).back().outlined, nullptr);
}

TEST(ExplanationLines, MostLinesOfACase)
{
    struct Row {
        std::optional<size_t> top;
        size_t lines;
    };
    // Two equations of three terms.
    const Row rows[] = {{std::nullopt, 6}, {0, 2}, {1, 4}, {2, 6}, {3, 6}, {99, 6}};
    for (const Row& row : rows) {
        EXPECT_EQ(ExplanationLines::MostLines(OutlineOfTerms(3, 2), {.top = row.top}), row.lines);
    }
}

CaseExplanation Explained(const std::vector<CaseExplanation::Sum>& sums)
{
    CaseExplanation explanation;
    for (const auto& sum : sums) explanation.Begin(sum.equation) = sum;
    return explanation;
}

std::shared_ptr<const ExplanationBaseline> MeanOf(const std::vector<CaseExplanation>& cases)
{
    BaselineBuilder builder(0);
    int64_t row = 0;
    for (const CaseExplanation& each : cases) EXPECT_TRUE(builder.Take(++row, {}, each));
    EXPECT_EQ(builder.Status(), 0);
    return builder.Make();
}

TEST(ExplanationBaseline, IsTheMeanOfTheCasesThatHaveAnEquation)
{
    const auto baseline = MeanOf({Explained({SumOf({1.0, 2.0}), SumOf({7.0, 8.0}, 2)}),
                                  Explained({SumOf({2.0, 4.0})}), Explained({SumOf({6.0, 3.0})})});
    ASSERT_NE(baseline, nullptr);
    EXPECT_EQ(baseline->cases, 3);
    ASSERT_EQ(baseline->sums.size(), 3U);
    EXPECT_EQ(baseline->sums[0].linearPredictor, 6.0);  // (3 + 6 + 9) / 3
    EXPECT_EQ(baseline->sums[0].addends[0].contribution, 3.0);
    EXPECT_EQ(baseline->sums[0].addends[0].value, 30.0);
    EXPECT_EQ(baseline->sums[0].addends[1].contribution, 3.0);
    EXPECT_TRUE(baseline->sums[1].addends.empty());
    EXPECT_EQ(baseline->sums[2].linearPredictor, 15.0);  // of one case alone
    EXPECT_EQ(baseline->sums[2].equation, 2U);
}

TEST(ExplanationLines, DifferencesFromABaseline)
{
    const ExplanationOutline outline = OutlineOfTerms(2, 3);
    const auto baseline = MeanOf({Explained({SumOf({1.0, 2.0}), SumOf({4.0, 8.0}, 2)})});
    ExplanationLines lines(outline, {.baseline = baseline});
    EXPECT_EQ(Told(lines.Of(SumOf({3.0, 1.0}))), (Texts{"a 30 2", "b 10 -1"}));
    EXPECT_EQ(lines.LinearPredictor(SumOf({3.0, 1.0})), 1.0);
    EXPECT_EQ(Told(lines.Of(SumOf({3.0, 1.0}, 2))), (Texts{"a 30 -1", "b 10 -7"}));
    // One that the baseline doesn't have, within its equations and behind them.
    EXPECT_EQ(Told(lines.Of(SumOf({3.0, 1.0}, 1))), (Texts{"a 30 -", "b 10 -"}));
    EXPECT_TRUE(std::isnan(lines.LinearPredictor(SumOf({3.0, 1.0}, 1))));
    const auto first = MeanOf({Explained({SumOf({1.0, 2.0})})});
    ExplanationLines others(outline, {.baseline = first});
    EXPECT_TRUE(std::isnan(others.LinearPredictor(SumOf({3.0, 1.0}, 1))));
    // The largest differences: those of 1 and 5.
    ExplanationLines top(outline, {.top = 1, .baseline = baseline});
    EXPECT_EQ(Told(top.Of(SumOf({2.0, 7.0}))), (Texts{"b 70 5", "other terms - 1"}));
}

TEST(BaselineBuilder, TakesOneRowAlone)
{
    BaselineBuilder builder(2);
    EXPECT_TRUE(builder.Take(1, {}, Explained({SumOf({1.0})})));
    EXPECT_FALSE(builder.Take(2, {}, Explained({SumOf({5.0})})));
    EXPECT_EQ(builder.Status(), 0);
    const auto baseline = builder.Make();
    ASSERT_NE(baseline, nullptr);
    EXPECT_EQ(baseline->cases, 1);
    EXPECT_EQ(baseline->sums.at(0).linearPredictor, 5.0);

    BaselineBuilder unscored(1);
    CaseStatus status;
    status.code = 90029;
    EXPECT_FALSE(unscored.Take(1, status, {}));
    EXPECT_EQ(unscored.Status(), 90029);
    EXPECT_EQ(unscored.Make(), nullptr);
    BaselineBuilder mean(0);
    EXPECT_TRUE(mean.Take(1, status, {}));
    EXPECT_EQ(mean.Status(), 0);
    EXPECT_EQ(mean.Make(), nullptr);
}

// y = 1 + 2 x + 10 [sex = m].
class Explanations : public testing::Test {
protected:
    std::string Table(const std::string& text) { return folder_.Write("cases.csv", text); }
    ScratchFolder folder_;
};

TEST_F(Explanations, ATermALineOfEachCase)
{
    const LoadedModel model = OpenText(TestModel().Text());
    ExplanationShaper shaper(model.Model(), {});
    RowText rows;
    rows.AddHeader(ExplanationShaper::Columns());
    ExplainTables(model, {Table("x,sex\n3,m\n,f\n4,f\n")}, {}, [&](const ExplainedCase& each) {
        EXPECT_EQ(each.results.StatusOf(each.place).code, each.row == 2 ? 90029 : 0);
        shaper.WriteCase(rows, each.row, each.explanation);
        return true;
    });
    EXPECT_EQ(rows.Text(),
              "row,equation,term,value,contribution\n"
              "1,,Intercept,1,1\n1,,x,3,6\n1,,[sex=m],1,10\n"
              "2,,,,\n"
              "3,,Intercept,1,1\n3,,x,4,8\n3,,[sex=m],0,0\n");
}

TEST_F(Explanations, RowsCountInAllTables)
{
    const LoadedModel model = OpenText(TestModel().Text());
    const Texts tables{folder_.Write("a.csv", "x,sex\n1,m\n2,m\n"),
                       folder_.Write("b.csv", "x,sex\n3,m\n4,m\n")};
    std::vector<int64_t> seen;
    Texts predictions;
    ExplainTables(model, tables, {}, [&](const ExplainedCase& each) {
        seen.push_back(each.row);
        EXPECT_EQ(each.results.StatusOf(each.place).code, each.status.code);
        predictions.push_back(ResultText(each, 0, [](double number) {
            std::string text;
            AppendNumber(number, text);
            return "<" + text + ">";
        }));
        return each.row < 3;
    });
    EXPECT_EQ(seen, (std::vector<int64_t>{1, 2, 3}));
    EXPECT_EQ(predictions, (Texts{"<13>", "<15>", "<17>"}));
}

// Without a header the fields are the model's in its order: sex, then x.
TEST_F(Explanations, TablesWithoutAHeader)
{
    ScoringOptions options;
    options.dialect.hasHeader = false;
    Texts texts;
    ExplainTables(OpenText(TestModel().Text()), {Table("m,3\n")}, options,
                  [&](const ExplainedCase& each) {
                      texts.push_back(std::to_string(each.explanation.Sums()[0].linearPredictor));
                      return true;
                  });
    EXPECT_EQ(texts, Texts{std::to_string(17.0)});
}

TEST_F(Explanations, AsJson)
{
    const LoadedModel model = OpenText(TestModel().Text());
    const ExplanationOutline outline = OutlineOf(model.Model());
    ExplanationLines lines(outline, {});
    std::string text = ExplanationBegin(model, "the mean");
    bool isFirst = true;
    ExplainTables(model, {Table("x,sex\n3,m\n,f\n")}, {}, [&](const ExplainedCase& each) {
        text += ExplanationJson(each, lines, isFirst);
        isFirst = false;
        return true;
    });
    text += ExplanationEnd(true);
    Json json = Json::parse(text);
    EXPECT_EQ(json.at("document"), "model.pmml");
    EXPECT_EQ(json.at("target"), "y");
    EXPECT_EQ(json.at("baseline"), "the mean");
    ASSERT_EQ(json.at("cases").size(), 2U);
    // Each case on a line of its own.
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 5);
    Json first = json["cases"][0];
    EXPECT_EQ(first.at("results").at("prediction"), 17.0);
    EXPECT_EQ(first.at("results").at("std_dev"), 2.0);
    first.erase("results");
    EXPECT_EQ(first, Json::parse(R"({"row": 1, "status": 0, "equations": [
        {"linearPredictor": 17.0, "terms": [
        {"term": "Intercept", "kind": "parameter", "beta": 1.0, "value": 1.0, "contribution": 1.0},
        {"term": "x", "kind": "parameter", "beta": 2.0, "value": 3.0, "contribution": 6.0},
        {"term": "[sex=m]", "kind": "parameter", "beta": 10.0, "value": 1.0,
         "contribution": 10.0}]}]})"));
    EXPECT_EQ(json["cases"][1], Json::parse(R"({"row": 2, "status": 90029, "statusField": "x",
        "statusText": "", "equations": [],
        "results": {"prediction": null, "std_dev": null, "ci_lower": null, "ci_upper": null}})"));
    EXPECT_EQ(Json::parse(ExplanationBegin(model, "") + ExplanationEnd(false)).at("cases").size(),
              0U);
}

TEST_F(Explanations, OfCategoriesAndTheOtherTermsAsJson)
{
    const LoadedModel model = OpenText(ClassifyingText());
    const ExplanationOutline outline = OutlineOf(model.Model());
    ExplanationLines lines(outline, {.top = 1});
    std::string text;
    ExplainTables(model, {Table("x\n2\n")}, {}, [&](const ExplainedCase& each) {
        text = ExplanationJson(each, lines, true);
        return true;
    });
    const Json json = Json::parse(text);
    EXPECT_EQ(json.at("results").at("prediction"), "yes");
    EXPECT_NEAR(json.at("results").at("probability(yes)").get<double>(), 0.9, 1e-15);
    const Json equation = json.at("equations").back();
    EXPECT_EQ(equation.at("category"), "yes");
    EXPECT_FALSE(equation.contains("cumulative"));
    EXPECT_NEAR(equation.at("linearPredictor").get<double>(), 2 * std::log(3.0), 1e-15);
    ASSERT_EQ(equation.at("terms").size(), 2U);
    EXPECT_EQ(equation["terms"][0].at("kind"), "parameter");
    EXPECT_EQ(equation["terms"][1],
              Json::parse(R"({"term": "other terms", "kind": "others", "contribution": 0.0})"));
}

TEST_F(Explanations, ATornRowIsRefusedByItsNumber)
{
    int rows = 0;
    try {
        ExplainTables(OpenText(TestModel().Text()), {Table("x,sex\n1,m\n2\n")}, {},
                      [&](const ExplainedCase&) { return ++rows > 0; });
        ADD_FAILURE() << "taken";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), kRowLength);
        EXPECT_EQ(failure.Arguments().at(1), "2");
    }
    EXPECT_EQ(rows, 1);
}

}  // namespace
}  // namespace MCVelscore_850
