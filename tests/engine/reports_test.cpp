// What is told of documents and models as JSON and CSV.
#include <cmath>
#include <limits>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "engine/documents/verificationtable.h"
#include "engine/reports/checkjson.h"
#include "engine/reports/coefficients.h"
#include "engine/reports/modeljson.h"
#include "engine/reports/verificationjson.h"
#include "engine/scoring/verification.h"
#include "host/messages/messages.h"
#include "tests/engine/smallmodels.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(JsonText, IndentsByTwoAndKeepsTheOrder)
{
    JsonValue json{{"z", 1}, {"a", JsonValue::Array()}, {"o", JsonValue::Object()}};
    json["list"] = std::vector<std::string>{"x", "y"};
    json["z"] = true;  // the member that is there
    JsonValue inner{{"none", nullptr}};
    json["list"].Add(inner);
    EXPECT_EQ(JsonText(json),
              "{\n  \"z\": true,\n  \"a\": [],\n  \"o\": {},\n  \"list\": [\n    \"x\",\n"
              "    \"y\",\n    {\n      \"none\": null\n    }\n  ]\n}\n");
}

TEST(JsonText, WritesScalarsAsJsonHasThem)
{
    struct Row {
        JsonValue value;
        std::string text;
    };
    const Row rows[] = {
        {JsonValue(), "null"},
        {false, "false"},
        {-7, "-7"},
        {size_t{18446744073709551615U}, "18446744073709551615"},
        {0.1, "0.1"},
        {kNaN, "null"},
        {std::numeric_limits<double>::infinity(), "null"},
        {"quote \" and \\", R"("quote \" and \\")"},
        {"line\nend", R"("line\nend")"},
        {"bad \xff byte", "\"bad \xEF\xBF\xBD byte\""},
        // What a terminal would hide: a change of the direction of writing.
        {"\xE2\x80\xAE", R"("\u202e")"},
    };
    for (const Row& row : rows) EXPECT_EQ(JsonText(row.value), row.text + "\n");
}

TEST(JsonValue, CopiesStandAlone)
{
    JsonValue first{{"a", 1}};
    JsonValue second = first;
    second["a"] = 2;
    first["b"] = second;
    second = first;
    first["a"] = 3;
    EXPECT_EQ(Json::parse(JsonText(first)), Json::parse(R"({"a": 3, "b": {"a": 2}})"));
    EXPECT_EQ(Json::parse(JsonText(second)), Json::parse(R"({"a": 1, "b": {"a": 2}})"));
}

ModelDescription WithCoefficients(std::vector<ModelDescription::Coefficient> coefficients)
{
    ModelDescription description;
    description.coefficients = std::move(coefficients);
    description.hasCovariances = true;
    return description;
}

// The quantile of the standard normal distribution at 0.975 and P(|Z| > 1.5), by mpmath.
constexpr double kNormal975 = 1.959963984540054;
constexpr double kBeyond15 = 0.13361440253771614;

TEST(Coefficients, OfTheNormalDistribution)
{
    const auto table = CoefficientsOf(
        WithCoefficients({{"", "p0", "Intercept", 3.0, 2.0, true}, {"", "p1", "x", -3.0, 2.0}}),
        0.95);
    EXPECT_EQ(table.level, 0.95);
    EXPECT_FALSE(table.isStudent);
    EXPECT_TRUE(table.hasCovariances);
    EXPECT_EQ(table.ratio, "");
    for (const auto& [row, estimate] : {std::pair(0, 3.0), std::pair(1, -3.0)}) {
        const CoefficientRow& found = table.rows.at(static_cast<size_t>(row));
        EXPECT_EQ(found.estimate, estimate);
        EXPECT_EQ(found.statistic, estimate / 2.0);
        EXPECT_NEAR(found.pValue, kBeyond15, 1e-15);
        EXPECT_NEAR(found.lower, estimate - 2.0 * kNormal975, 1e-14);
        EXPECT_NEAR(found.upper, estimate + 2.0 * kNormal975, 1e-14);
        EXPECT_TRUE(std::isnan(found.ratio));
        EXPECT_TRUE(std::isnan(found.ratioLower));
        EXPECT_TRUE(std::isnan(found.ratioUpper));
    }
    EXPECT_EQ(table.rows[1].parameter, "p1");
    EXPECT_EQ(table.rows[1].label, "x");
    EXPECT_EQ(table.Columns(), (Texts{"equation", "parameter", "label", "estimate", "std_err",
                                      "z_value", "p_value", "ci_lower", "ci_upper"}));
    EXPECT_EQ(table.NumbersOf(table.rows[0]).size(), 6U);
}

// With one degree of freedom Student's t is the Cauchy distribution: P(|T| > 1) is a half, and the
// limits of level 0.5 are one error away.
TEST(Coefficients, OfStudentsT)
{
    ModelDescription description = WithCoefficients({{"", "p0", "Intercept", 2.0, 2.0}});
    description.hasStudentEstimates = true;
    description.degreesOfFreedom = 1.0;
    const auto table = CoefficientsOf(description, 0.5);
    EXPECT_TRUE(table.isStudent);
    EXPECT_EQ(table.degreesOfFreedom, 1.0);
    EXPECT_EQ(table.rows.at(0).statistic, 1.0);
    EXPECT_NEAR(table.rows[0].pValue, 0.5, 1e-15);
    EXPECT_NEAR(table.rows[0].lower, 0.0, 1e-14);
    EXPECT_NEAR(table.rows[0].upper, 4.0, 1e-14);
    EXPECT_EQ(table.Columns()[5], "t_value");
    // Without degrees of freedom nothing can be told but the statistic.
    description.degreesOfFreedom = 0.0;
    const CoefficientRow none = CoefficientsOf(description, 0.5).rows.at(0);
    EXPECT_EQ(none.statistic, 1.0);
    EXPECT_TRUE(std::isnan(none.pValue));
    EXPECT_TRUE(std::isnan(none.lower));
    EXPECT_TRUE(std::isnan(none.upper));
}

TEST(Coefficients, WithoutAnErrorHaveNoStatistic)
{
    const auto table = CoefficientsOf(
        WithCoefficients({{"", "p0", "", 2.0, 0.0}, {"", "p1", "", 2.0, kNaN}}), 0.95);
    for (const CoefficientRow& row : table.rows) {
        EXPECT_TRUE(std::isnan(row.statistic));
        EXPECT_TRUE(std::isnan(row.pValue));
    }
    EXPECT_EQ(table.rows[0].lower, 2.0);
    EXPECT_EQ(table.rows[0].upper, 2.0);
    EXPECT_TRUE(std::isnan(table.rows[1].lower));
}

// exp of the estimate and of its limits; of constants none.
TEST(Coefficients, RatiosByTheLink)
{
    struct Row {
        const char* link;
        bool isCox;
        const char* ratio;
        const char* column;
    };
    const Row rows[] = {{"logit", false, "odds ratio", "odds_ratio"},
                        {"generalized logit", false, "odds ratio", "odds_ratio"},
                        {"cumulative logit", false, "odds ratio", "odds_ratio"},
                        {"", true, "hazard ratio", "hazard_ratio"},
                        {"probit", false, "", ""}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.link);
        ModelDescription description = WithCoefficients(
            {{"", "p0", "", std::log(2.0), 0.0, true}, {"", "p1", "", std::log(3.0), 1.0}});
        description.link = row.link;
        if (row.isCox) description.strata.emplace_back();
        const auto table = CoefficientsOf(description, 0.95);
        EXPECT_EQ(table.ratio, row.ratio);
        EXPECT_TRUE(std::isnan(table.rows[0].ratio));
        const Texts columns = table.Columns();
        EXPECT_EQ(table.NumbersOf(table.rows[1]).size() + 3, columns.size());
        if (*row.ratio == '\0') {
            EXPECT_TRUE(std::isnan(table.rows[1].ratio));
            EXPECT_EQ(columns.size(), 9U);
            continue;
        }
        EXPECT_NEAR(table.rows[1].ratio, 3.0, 1e-15);
        EXPECT_NEAR(table.rows[1].ratioLower, 3.0 * std::exp(-kNormal975), 1e-14);
        EXPECT_NEAR(table.rows[1].ratioUpper, 3.0 * std::exp(kNormal975), 1e-13);
        const std::string name = row.column;
        EXPECT_EQ(Texts(columns.end() - 3, columns.end()),
                  (Texts{name, name + "_lower", name + "_upper"}));
    }
}

TEST(Coefficients, AsCsvAndJson)
{
    ModelDescription description =
        WithCoefficients({{"a, b", "p0", "", 0.5, kNaN, true}, {"c", "p1", "x", 0.0, kNaN}});
    description.link = "logit";
    const auto table = CoefficientsOf(description, 0.9);
    EXPECT_EQ(CoefficientsCsv(table),
              "equation,parameter,label,estimate,std_err,z_value,p_value,ci_lower,ci_upper,"
              "odds_ratio,odds_ratio_lower,odds_ratio_upper\n"
              "\"a, b\",p0,,0.5,,,,,,,,\n"
              "c,p1,x,0,,,,,,1,,\n");
    EXPECT_EQ(Json::parse(JsonText(CoefficientsJson(table))), Json::parse(R"({
        "level": 0.9, "ratio": "odds ratio", "df": null, "rows": [
        {"equation": "a, b", "parameter": "p0", "label": "", "estimate": 0.5, "std_err": null,
         "z_value": null, "p_value": null, "ci_lower": null, "ci_upper": null,
         "odds_ratio": null, "odds_ratio_lower": null, "odds_ratio_upper": null},
        {"equation": "c", "parameter": "p1", "label": "x", "estimate": 0.0, "std_err": null,
         "z_value": null, "p_value": null, "ci_lower": null, "ci_upper": null,
         "odds_ratio": 1.0, "odds_ratio_lower": null, "odds_ratio_upper": null}]})"));
    description.hasStudentEstimates = true;
    description.degreesOfFreedom = 8.0;
    EXPECT_EQ(Json::parse(JsonText(CoefficientsJson(CoefficientsOf(description, 0.9)))).at("df"),
              8.0);
}

TEST(ModelJson, OfALinearModel)
{
    Json json = Json::parse(ModelJson(OpenText(TestModel().Text())));
    // Its rows are those of the tests above.
    EXPECT_EQ(json["coefficients"]["level"], 0.95);
    EXPECT_EQ(json["coefficients"]["rows"].size(), 3U);
    json.erase("coefficients");
    const Json columns = json["columns"];
    json.erase("columns");
    ASSERT_EQ(columns.size(), 4U);
    EXPECT_EQ(columns[0], Json::parse(R"({"column": "prediction", "meaning": "mean of the target",
                                          "empty": false})"));
    for (const Json& column : columns) EXPECT_EQ(column.at("empty"), false);
    const Json onRequest = json["columnsOnRequest"];
    json.erase("columnsOnRequest");
    ASSERT_EQ(onRequest.size(), 2U);
    EXPECT_EQ(onRequest[0], Json::parse(R"({"column": "linear_predictor",
                                            "meaning": "linear predictor"})"));
    EXPECT_EQ(json, Json::parse(R"({
        "document": "model.pmml", "version": "4.4", "family": "general linear model",
        "class": "GLRModel", "target": "y", "targetCategories": [], "referenceCategory": "",
        "factors": ["sex"], "covariates": ["x"], "offset": "", "trials": "", "endTime": "",
        "eventValues": [], "strata": "", "reads": ["sex", "x"], "distribution": "", "link": "",
        "linkParameter": null, "mean": "", "cutoff": null, "cutoffCategory": "", "df": 8.0,
        "hasCovariances": true,
        "equations": [{"terms": [
            {"parameter": "p0", "label": "Intercept", "beta": 1.0, "factors": []},
            {"parameter": "p1", "label": "x", "beta": 2.0,
             "factors": [{"predictor": "x", "exponent": 1.0}]},
            {"parameter": "p2", "label": "[sex=m]", "beta": 10.0,
             "factors": [{"predictor": "sex", "category": "m"}]}]}],
        "contrasts": [], "baseline": [], "adapted": [], "notices": []})"));
}

TEST(ModelJson, OfAClassifyingModelAndWithoutCovariances)
{
    const Json json = Json::parse(ModelJson(OpenText(ClassifyingText())));
    EXPECT_EQ(json.at("targetCategories"), (Json{"no", "yes"}));
    EXPECT_EQ(json.at("referenceCategory"), "no");
    // The reference category's linear predictor is 0: an equation without terms.
    ASSERT_EQ(json.at("equations").size(), 2U);
    EXPECT_EQ(json["equations"][0], Json::parse(R"({"category": "no", "terms": []})"));
    EXPECT_EQ(json["equations"][1].at("category"), "yes");
    EXPECT_EQ(json["equations"][1].at("terms").size(), 2U);
    Texts names;
    for (const Json& column : json.at("columns")) names.push_back(column.at("column"));
    EXPECT_EQ(names, (Texts{"prediction", "probability(no)", "probability(yes)"}));

    const Json without = Json::parse(
        ModelJson(OpenText(Without(TestModel().Text(), "<PCovMatrix", "</PCovMatrix>"))));
    EXPECT_EQ(without.at("hasCovariances"), false);
    for (const Json& column : without.at("columns")) {
        EXPECT_EQ(column.at("empty"), column.at("column") != "prediction");
    }
}

TEST(ModelJson, OfACoxModel)
{
    const Json json = Json::parse(ModelJson(OpenText(CoxText())));
    EXPECT_EQ(json.at("endTime"), "time");
    EXPECT_EQ(json.at("baseline"), Json::parse(R"([{"value": "", "cells": 3, "minTime": 2.0,
                                                    "maxTime": 10.0}])"));
    EXPECT_EQ(json.at("equations")[0].at("terms")[0].at("referencePoint"), 0.0);
    EXPECT_EQ(json.at("reads"), (Json{"x", "time"}));
}

TEST(ModelJson, NumbersOfLinksAndCutoffs)
{
    const std::string glz =
        Replaced(TestModel().Text(), "modelType=\"generalLinear\"",
                 "modelType=\"generalizedLinear\" linkFunction=\"power\" linkParameter=\"0.5\" "
                 "distribution=\"gamma\"");
    const Json json = Json::parse(ModelJson(OpenText(glz)));
    EXPECT_EQ(json.at("linkParameter"), 0.5);
    EXPECT_EQ(json.at("distribution"), "Gamma");
}

TEST(CheckJson, OfADocumentThatIsRead)
{
    const std::string text = Replaced(TestModel().Text(), "version=\"4.4\"", "version=\"4.4.1\"");
    const Json json = Json::parse(JsonText(AcceptedJson("called.pmml", OpenText(text))));
    EXPECT_EQ(json.at("document"), "called.pmml");
    EXPECT_EQ(json.at("ok"), true);
    EXPECT_EQ(json.at("family"), "general linear model");
    EXPECT_EQ(json.at("target"), "y");
    EXPECT_EQ(json.at("adapted").size(), 1U);
    EXPECT_EQ(json.at("leftOut"), Json::object());
    ASSERT_EQ(json.at("findings").size(), 1U);
    const Json& finding = json.at("findings")[0];
    EXPECT_EQ(finding.at("rule"), "short-version");
    EXPECT_EQ(finding.at("severity"), "adapted");
    EXPECT_TRUE(finding.at("code").is_null());
    EXPECT_EQ(finding.at("line"), 2);
    EXPECT_EQ(finding.at("column"), 1);
    EXPECT_TRUE(finding.at("attribute").is_null());
    EXPECT_TRUE(finding.at("found").is_null());
}

TEST(CheckJson, OfADocumentWithFaults)
{
    const std::string text =
        Replaced(TestModel().Text(), "name=\"sex\" usageType", "name=\"sex\" usagetype");
    try {
        OpenText(text);
        ADD_FAILURE() << "taken";
    } catch (const Failure& failure) {
        const Json json = Json::parse(JsonText(RefusedJson("called.pmml", failure)));
        EXPECT_EQ(json.at("ok"), false);
        EXPECT_EQ(json.at("code"), kDocumentFault);
        EXPECT_EQ(json.at("line"), 14);
        EXPECT_EQ(json.at("column"), 7);
        EXPECT_EQ(json.at("element"), "PMML/GeneralRegressionModel/MiningSchema/MiningField[3]");
        EXPECT_EQ(json.at("message"), failure.what());
        EXPECT_EQ(json.at("remedy"), failure.Remedy());
        // The fault itself, and no second time as a refusal.
        ASSERT_EQ(json.at("findings").size(), 1U);
        const Json& finding = json.at("findings")[0];
        EXPECT_EQ(finding.at("rule"), "misspelt-attribute");
        EXPECT_EQ(finding.at("severity"), "fault");
        EXPECT_EQ(finding.at("strict"), false);
        EXPECT_EQ(finding.at("element"), "MiningField");
        EXPECT_EQ(finding.at("attribute"), "usagetype");
        EXPECT_EQ(finding.at("near"), "usageType");
        EXPECT_EQ(finding.at("fixable"), true);
    }
}

TEST(CheckJson, OfADocumentThatTheReaderRefuses)
{
    const std::string text = Replaced(TestModel().Text(), "beta=\"2\"", "beta=\"two\"");
    try {
        OpenText(text, {.asIs = true});
        ADD_FAILURE() << "taken";
    } catch (const Failure& failure) {
        const Json json = Json::parse(JsonText(RefusedJson("called.pmml", failure)));
        ASSERT_EQ(json.at("findings").size(), 1U);
        const Json& refusal = json.at("findings")[0];
        EXPECT_TRUE(refusal.at("rule").is_null());
        EXPECT_EQ(refusal.at("code"), failure.Code());
        EXPECT_EQ(refusal.at("severity"), "fault");
        EXPECT_EQ(refusal.at("strict"), false);
        EXPECT_EQ(refusal.at("fixable"), false);
        EXPECT_EQ(refusal.at("message"), failure.what());
        EXPECT_EQ(refusal.at("line"), json.at("line"));
        EXPECT_EQ(refusal.at("column"), json.at("column"));
        EXPECT_EQ(refusal.at("path"), json.at("element"));
        EXPECT_GT(json.at("line"), 14);
    }
}

// Not one of a document's place: a file that isn't there.
TEST(CheckJson, OfAFailureWithoutAPlace)
{
    const Failure failure(FailureKind::Document, kNoOutputSection, {"m.pmml"});
    const Json json = Json::parse(JsonText(RefusedJson("m.pmml", failure)));
    EXPECT_FALSE(json.contains("line"));
    EXPECT_FALSE(json.contains("element"));
    EXPECT_EQ(json.at("code"), kNoOutputSection);
    ASSERT_EQ(json.at("findings").size(), 1U);
    EXPECT_TRUE(json["findings"][0].at("line").is_null());
    EXPECT_TRUE(json["findings"][0].at("column").is_null());
    EXPECT_TRUE(json["findings"][0].at("path").is_null());
    EXPECT_EQ(json["findings"][0].at("message"), failure.what());
}

// Of each rule the first 100 are kept, and the others counted.
TEST(CheckJson, CountsWhatIsLeftOut)
{
    TestModel model;
    std::string values;
    for (int i = 0; i < 103; ++i) values += "<Value value='" + std::to_string(i) + "' odd='1'/>";
    model.sexField =
        Replaced(model.sexField, "<Value value=\"f\"/>", "<Value value=\"f\"/>" + values);
    const Json json = Json::parse(JsonText(AcceptedJson("m", OpenText(model.Text()))));
    EXPECT_EQ(json.at("findings").size(), 100U);
    EXPECT_EQ(json.at("leftOut"), Json::parse(R"({"unknown-attribute": 3})"));
}

TEST(VerificationJson, TellsEachDifference)
{
    const LoadedModel model = OpenText(TestModel().Text());
    VerificationTable table;
    table.fields = {{"x"}, {"sex"}, {"y", 0.01}};
    table.records = {{"1", "m", "13"}, {"2", "f", "6"}, {"", "f", "1"}};
    EXPECT_EQ(Json::parse(VerificationJson(model, Verify(model, table))), Json::parse(R"({
        "document": "model.pmml", "adapted": [], "notices": [], "records": 3, "compared": 3,
        "differences": [
        {"record": 2, "field": "y", "expected": "6", "found": "5", "precision": 0.01,
         "status": 0, "statusField": "", "statusText": null},
        {"record": 3, "field": "y", "expected": "1", "found": "", "precision": 0.01,
         "status": 90029, "statusField": "x", "statusText": ""}]})"));
}

}  // namespace
}  // namespace MCVelscore_850
