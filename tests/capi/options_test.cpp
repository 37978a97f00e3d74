// Options, their effects beside the command's and what is said of those that can't be.

#include <cstddef>
#include <limits>

#include <gtest/gtest.h>

#include "tests/capi/scored.h"
#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"

namespace velscore_tests {
namespace {

using MCVelscore_850::DataFile;
using MCVelscore_850::ParseCsv;
using MCVelscore_850::ReadFile;
using MCVelscore_850::RunVelscore;

MadeArray OneRow() { return Table({Numbers("x", {1.0}), Same("sex", "m", 1)}); }

velscore_score_options Plain() { return VELSCORE_SCORE_OPTIONS_INIT; }

struct Refusal {
    std::string name;
    int code;
    std::string text;
    std::function<void(velscore_score_options&)> set;
};

std::ostream& operator<<(std::ostream& out, const Refusal& each) { return out << each.name; }

constexpr const char* kNobody[] = {"nobody"};
constexpr const char* kTwice[] = {"prediction", "prediction"};
constexpr const char* kNull[] = {nullptr};
constexpr const char* kX[] = {"x", "x"};
constexpr const char* kColumns[] = {"x", "y"};

std::vector<Refusal> Refusals()
{
    return {
        {"nan", 269403, "the option 'nan' is 'none'; expected is missing or invalid",
         [](auto& o) { o.nan = "none"; }},
        {"policy", 269403,
         "the option 'policy' is 'keep'; expected is substitute, sysmis or status",
         [](auto& o) { o.policy = "keep"; }},
        {"level_above_1", 269403,
         "the option 'level' is '95'; expected is a number above 0 and below 1",
         [](auto& o) { o.level = 95.0; }},
        {"level_below_0", 269403, "the option 'level' is '-0.5'", [](auto& o) { o.level = -0.5; }},
        {"level_no_number", 269403, "the option 'level' is 'nan'",
         [](auto& o) { o.level = std::numeric_limits<double>::quiet_NaN(); }},
        {"level_of_a_prediction_alone", 269405, "gives its prediction alone",
         [](auto& o) {
             o.level = 0.9;
             o.prediction_only = 1;
         }},
        {"prediction_only_and_columns", 269403, "the option 'prediction_only' is '1'",
         [](auto& o) {
             o.prediction_only = 1;
             o.columns = kTwice;
             o.columns_count = 1;
         }},
        {"unknown_column", 269317, "nobody",
         [](auto& o) {
             o.columns = kNobody;
             o.columns_count = 1;
         }},
        {"column_twice", 269318, "prediction",
         [](auto& o) {
             o.columns = kTwice;
             o.columns_count = 2;
         }},
        {"unknown_kept", 269311, "nobody",
         [](auto& o) {
             o.keep = kNobody;
             o.keep_count = 1;
         }},
        {"kept_null", 269401, "the argument 'keep' is a null pointer",
         [](auto& o) {
             o.keep = kNull;
             o.keep_count = 1;
         }},
        {"list_null", 269401, "the argument 'columns' is a null pointer",
         [](auto& o) { o.columns_count = 3; }},
        {"missing_null", 269401, "the argument 'missing' is a null pointer",
         [](auto& o) { o.missing_count = 1; }},
        {"map_null", 269401, "the argument 'map_columns' is a null pointer",
         [](auto& o) {
             o.map_fields = kX;
             o.map_count = 1;
         }},
        {"map_twice", 269403, "the option 'map_fields' is 'x'; expected is each field once",
         [](auto& o) {
             o.map_fields = kX;
             o.map_columns = kColumns;
             o.map_count = 2;
         }},
        {"map_unknown", 269327, "nobody",
         [](auto& o) {
             o.map_fields = kNobody;
             o.map_columns = kColumns;
             o.map_count = 1;
         }},
        {"size_of_nothing", 269402, "velscore_score_options has a size of 0",
         [](auto& o) { o.size = 0; }},
        {"size_of_a_part", 269402, "velscore_score_options has a size of 16",
         [](auto& o) { o.size = 16; }},
        {"size_beyond_reason", 269402, "velscore_score_options has a size of",
         [](auto& o) { o.size = ~size_t{0}; }},
    };
}

class OptionRefusals : public testing::TestWithParam<Refusal> {};

TEST_P(OptionRefusals, AreToldWithTheirValue)
{
    const auto model = velscore::Model::FromText(TestModel().Text());
    velscore_score_options options = Plain();
    GetParam().set(options);
    ArrowArrayStream in = StreamOf(OneRow());
    ArrowArrayStream out{};
    velscore_error error = VELSCORE_ERROR_INIT;
    EXPECT_EQ(velscore_score(model.Get(), &options, &in, &out, &error), GetParam().code);
    ASSERT_NE(error.text, nullptr);
    EXPECT_NE(std::string(error.text).find(GetParam().text), std::string::npos) << error.text;
    ASSERT_NE(error.remedy, nullptr);
    EXPECT_EQ(error.fault, VELSCORE_FAULT_CALL);
    EXPECT_EQ(out.release, nullptr);
    velscore_error_clear(&error);
    EXPECT_EQ(error.text, nullptr);
    EXPECT_EQ(alive, 0);
}

INSTANTIATE_TEST_SUITE_P(Score, OptionRefusals, testing::ValuesIn(Refusals()),
                         [](const auto& each) { return each.param.name; });

// A structure of a later version: what only that knows may be there, unless it is set.
TEST(Versions, WhatALaterHeaderAddsIsRefusedWhereItIsSet)
{
    struct Later {
        velscore_score_options known = VELSCORE_SCORE_OPTIONS_INIT;
        void* more = nullptr;
    } later;
    later.known.size = sizeof later;
    const auto model = velscore::Model::FromText(TestModel().Text());
    ArrowSchema schema{};
    ASSERT_EQ(velscore_result_schema(model.Get(), &later.known, &schema, nullptr), 0);
    schema.release(&schema);
    later.more = &later;
    EXPECT_EQ(velscore_result_schema(model.Get(), &later.known, &schema, nullptr), 269402);
}

// A structure of the first header ends before the rules that are allowed.
TEST(Versions, WhatAnOlderHeaderLacksIsNotRead)
{
    velscore_options options = VELSCORE_OPTIONS_INIT;
    options.size = offsetof(velscore_options, allow);
    options.allow_count = 7;  // whatever lies behind it
    velscore_model* model = nullptr;
    const std::string text = TestModel().Text();
    ASSERT_EQ(velscore_open_text(text.data(), text.size(), &options, &model, nullptr), 0);
    velscore_close(model);
}

// One of scores before what explanations have of their own.
TEST(Versions, ExplanationsOfAnOlderHeaderHaveAllTerms)
{
    const auto model = velscore::Model::FromText(TestModel().Text());
    velscore_score_options options = VELSCORE_SCORE_OPTIONS_INIT;
    options.size = offsetof(velscore_score_options, top);
    const size_t top = 0;
    ArrowArrayStream whatever{};
    options.top = &top;
    options.baseline = &whatever;
    options.baseline_row = -1;
    ArrowArrayStream in = StreamOf(OneRow());
    ArrowArrayStream out{};
    ASSERT_EQ(velscore_explain(model.Get(), &options, &in, &out, nullptr), 0);
    EXPECT_EQ(ReadAll(out).rows, 3U);  // Intercept, x and [sex=m]
}

// Curves have no end time to miss; their policy is read all the same.
TEST(Curves, RefuseAPolicyThatThereIsNot)
{
    const auto model =
        velscore::Model::Open(MCVelscore_850::DataFile("cases/cox-lung-centred/model.pmml"));
    velscore_score_options options = VELSCORE_SCORE_OPTIONS_INIT;
    options.policy = "sometimes";
    ArrowArrayStream in = StreamOf(OneRow());
    ArrowArrayStream out{};
    EXPECT_EQ(velscore_curve(model.Get(), &options, &in, &out, nullptr), 269403);
    EXPECT_EQ(alive, 0);
}

struct AllowRefusal {
    std::string name;
    std::vector<const char*> rules;
    int asIs;
    int code;
    std::string text;
};

std::ostream& operator<<(std::ostream& out, const AllowRefusal& each) { return out << each.name; }

class AllowRefusals : public testing::TestWithParam<AllowRefusal> {};

TEST_P(AllowRefusals, AreToldBeforeTheDocumentIsRead)
{
    velscore_options options = VELSCORE_OPTIONS_INIT;
    options.as_is = GetParam().asIs;
    options.allow = GetParam().rules.empty() ? nullptr : GetParam().rules.data();
    options.allow_count = std::max<size_t>(GetParam().rules.size(), 1);
    velscore_model* model = nullptr;
    char* json = nullptr;
    velscore_error error = VELSCORE_ERROR_INIT;
    EXPECT_EQ(velscore_check("nowhere.pmml", &options, &json, &error), GetParam().code);
    EXPECT_EQ(velscore_open_text("", 0, &options, &model, &error), GetParam().code);
    EXPECT_EQ(velscore_open("nowhere.pmml", &options, &model, &error), GetParam().code);
    ASSERT_NE(error.text, nullptr);
    EXPECT_NE(std::string(error.text).find(GetParam().text), std::string::npos) << error.text;
    EXPECT_NE(error.remedy, nullptr);
    EXPECT_EQ(error.fault, VELSCORE_FAULT_CALL);
    EXPECT_EQ(model, nullptr);
    EXPECT_EQ(json, nullptr);
    velscore_error_clear(&error);
}

INSTANTIATE_TEST_SUITE_P(
    Open, AllowRefusals,
    testing::Values(
        AllowRefusal{"misspelt",
                     {"misspelt-atribute"},
                     0,
                     269412,
                     "'misspelt-atribute' can't be allowed: no rule has that name"},
        AllowRefusal{"misspelt_is_helped",
                     {"misspelt-atribute"},
                     0,
                     269412,
                     "Did you mean 'misspelt-attribute'?"},
        AllowRefusal{"second", {"unknown-word", "nobody"}, 0, 269412, "'nobody'"},
        AllowRefusal{"no_fault", {"short-version"}, 0, 269412, "refuses no document"},
        AllowRefusal{"no_audit",
                     {"unknown-word"},
                     1,
                     269403,
                     "the option 'as_is' is '1'; expected is 0 beside rules that are allowed"},
        AllowRefusal{"rule_null", {nullptr}, 0, 269401, "the argument 'allow' is a null pointer"},
        AllowRefusal{"list_null", {}, 0, 269401, "the argument 'allow' is a null pointer"}),
    [](const auto& each) { return each.param.name; });

TEST(NullArguments, AreCodesEverywhere)
{
    const auto model = velscore::Model::FromText(TestModel().Text());
    velscore_model* made = nullptr;
    velscore_binding* binding = nullptr;
    char* json = nullptr;
    ArrowSchema schema{};
    ArrowArray array{};
    ArrowArrayStream stream{};
    velscore_results results = VELSCORE_RESULTS_INIT;
    constexpr int kCode = 269401;
    EXPECT_EQ(velscore_open(nullptr, nullptr, &made, nullptr), kCode);
    EXPECT_EQ(velscore_open("x", nullptr, nullptr, nullptr), kCode);
    EXPECT_EQ(velscore_open_text(nullptr, 1, nullptr, &made, nullptr), kCode);
    EXPECT_EQ(velscore_open_text("x", 1, nullptr, nullptr, nullptr), kCode);
    EXPECT_EQ(velscore_describe(nullptr, &json, nullptr), kCode);
    EXPECT_EQ(velscore_describe(model.Get(), nullptr, nullptr), kCode);
    EXPECT_EQ(velscore_check(nullptr, nullptr, &json, nullptr), kCode);
    EXPECT_EQ(velscore_check("x", nullptr, nullptr, nullptr), kCode);
    EXPECT_EQ(velscore_verify(nullptr, &json, nullptr), kCode);
    EXPECT_EQ(velscore_verify(model.Get(), nullptr, nullptr), kCode);
    EXPECT_EQ(velscore_result_schema(nullptr, nullptr, &schema, nullptr), kCode);
    EXPECT_EQ(velscore_result_schema(model.Get(), nullptr, nullptr, nullptr), kCode);
    EXPECT_EQ(velscore_score(model.Get(), nullptr, nullptr, &stream, nullptr), kCode);
    EXPECT_EQ(velscore_curve(model.Get(), nullptr, nullptr, &stream, nullptr), kCode);
    EXPECT_EQ(velscore_explain(model.Get(), nullptr, nullptr, &stream, nullptr), kCode);
    ArrowArrayStream in = StreamOf(OneRow());
    EXPECT_EQ(velscore_score(model.Get(), nullptr, &in, nullptr, nullptr), kCode);
    in = StreamOf(OneRow());
    EXPECT_EQ(velscore_score(nullptr, nullptr, &in, &stream, nullptr), kCode);
    EXPECT_EQ(velscore_scan_csv(model.Get(), nullptr, nullptr, &stream, nullptr), kCode);
    EXPECT_EQ(velscore_scan_csv(model.Get(), "x", nullptr, nullptr, nullptr), kCode);
    EXPECT_EQ(velscore_scan_csv(nullptr, "x", nullptr, &stream, nullptr), kCode);
    EXPECT_EQ(velscore_bind(model.Get(), nullptr, nullptr, &binding, nullptr), kCode);
    EXPECT_EQ(velscore_bind_names(model.Get(), nullptr, nullptr, 1, &binding, nullptr), kCode);
    EXPECT_EQ(velscore_bind_names(model.Get(), nullptr, kNull, 1, &binding, nullptr), kCode);
    EXPECT_EQ(velscore_binding_schema(nullptr, &schema, nullptr), kCode);
    EXPECT_EQ(velscore_score_batch(nullptr, nullptr, &array, nullptr), kCode);
    EXPECT_EQ(velscore_score_columns(nullptr, nullptr, 0, 0, &results, nullptr), kCode);
    EXPECT_EQ(velscore_result_count(nullptr), 0U);
    EXPECT_EQ(velscore_result_name(nullptr, 0), nullptr);
    EXPECT_EQ(velscore_category(nullptr, 0), nullptr);
    velscore_close(nullptr);
    velscore_unbind(nullptr);
    velscore_free(nullptr);
    velscore_error_clear(nullptr);
    EXPECT_EQ(alive, 0);
}

TEST(Errors, OneWithoutItsSizeStopsTheCall)
{
    velscore_error error{};
    velscore_model* made = nullptr;
    EXPECT_EQ(velscore_open("nowhere.pmml", nullptr, &made, &error), 269402);
    EXPECT_EQ(error.text, nullptr);
}

TEST(Errors, TellTheRowAndTheColumnOfATable)
{
    const std::string text = TestModel().Text();
    velscore_error error = VELSCORE_ERROR_INIT;
    velscore_model* model = nullptr;
    ASSERT_EQ(velscore_open_text(text.data(), text.size(), nullptr, &model, &error), 0);
    const char* const names[] = {"x", "sex"};
    velscore_binding* binding = nullptr;
    EXPECT_EQ(velscore_bind_names(model, nullptr, names, 1, &binding, &error), 269303);
    EXPECT_STREQ(error.field, "sex");
    EXPECT_EQ(error.row, 0U);
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<double> x{1.0, nan};
    const char* const texts[] = {"f", "f"};
    const velscore_column columns[] = {{x.data(), nullptr, nullptr, nullptr, 0, nullptr},
                                       {nullptr, texts, nullptr, nullptr, 0, nullptr}};
    velscore_score_options options = VELSCORE_SCORE_OPTIONS_INIT;
    options.strict = 1;
    ASSERT_EQ(velscore_bind_names(model, &options, names, 2, &binding, &error), 0);
    const velscore_results results = VELSCORE_RESULTS_INIT;
    EXPECT_NE(velscore_score_columns(binding, columns, 2, 2, &results, &error), 0);
    EXPECT_EQ(error.row, 2U);
    EXPECT_STREQ(error.field, "x");
    // A program that was built before there were these: nothing is written behind its structure.
    velscore_error_clear(&error);
    velscore_error older = VELSCORE_ERROR_INIT;
    older.size = offsetof(velscore_error, field);
    older.row = 77;
    EXPECT_NE(velscore_score_columns(binding, columns, 2, 2, &results, &older), 0);
    EXPECT_EQ(older.field, nullptr);
    EXPECT_EQ(older.row, 77U);
    velscore_error_clear(&older);
    EXPECT_EQ(older.row, 77U);
    velscore_unbind(binding);
    velscore_close(model);
}

TEST(Errors, TellWhereADocumentIsWrong)
{
    std::string document = TestModel().Text();
    document.replace(document.find("beta=\"2\""), 8, "beta=\"two\"");
    try {
        (void)velscore::Model::FromText(document, "model.pmml");
        FAIL() << "the document was read";
    } catch (const velscore::Error& error) {
        EXPECT_EQ(error.Code(), 269001);
        EXPECT_EQ(error.Fault(), VELSCORE_FAULT_DOCUMENT);
        EXPECT_EQ(error.File(), "model.pmml");
        EXPECT_GT(error.Line(), 20U);
        EXPECT_GT(error.Column(), 0U);
        EXPECT_NE(error.Element().find("PCell"), std::string::npos) << error.Element();
        EXPECT_NE(std::string(error.what()).find("two"), std::string::npos);
        EXPECT_FALSE(error.Remedy().empty());
    }
    try {
        (void)velscore::Model::FromText(FaultyText(), "faulty.pmml");
        FAIL() << "the document was read";
    } catch (const velscore::Error& error) {
        EXPECT_EQ(error.Code(), 269199);
        EXPECT_EQ(error.File(), "faulty.pmml");
        EXPECT_EQ(error.Line(), 14U);
        EXPECT_EQ(error.Column(), 7U);
        EXPECT_NE(std::string(error.what()).find("[misspelt-attribute]"), std::string::npos);
        EXPECT_FALSE(error.Remedy().empty());
    }
    try {
        (void)velscore::Model::FromText("<PMML>\n <a></b></PMML>");
        FAIL() << "the document was read";
    } catch (const velscore::Error& error) {
        EXPECT_EQ(error.Code(), 269103);
        EXPECT_EQ(error.Line(), 2U);
    }
    try {
        (void)velscore::Model::Open("nowhere/model.pmml");
        FAIL() << "the document was read";
    } catch (const velscore::Error& error) {
        EXPECT_EQ(error.Code(), 269101);
        EXPECT_EQ(error.File(), "nowhere/model.pmml");
    }
}

TEST(Errors, AreEmptyAgainAfterACallThatSucceeds)
{
    const auto model = velscore::Model::FromText(TestModel().Text());
    velscore_error error = VELSCORE_ERROR_INIT;
    char* json = nullptr;
    ASSERT_NE(velscore_describe(nullptr, &json, &error), 0);
    ASSERT_NE(error.text, nullptr);
    ASSERT_EQ(velscore_describe(model.Get(), &json, &error), 0);
    EXPECT_EQ(error.text, nullptr);
    EXPECT_EQ(error.code, 0);
    velscore_free(json);
}

TEST(Options, LevelPolicyAndColumnsAreThoseOfOneCall)
{
    const std::string folder = DataFile("cases/missing-lm-replacement/");
    const auto model = velscore::Model::Open(folder + "model.pmml");
    const auto scan = [&](const velscore::ScoreOptions& options) {
        ArrowArrayStream out = model.ScanCsv(folder + "input.csv", options, 1);
        return ReadAll(out);
    };
    const auto expect = [&](const ReadTables& found, std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"score", folder + "model.pmml", folder + "input.csv"});
        const auto expected = ParseCsv(RunVelscore(arguments).out);
        ASSERT_EQ(found.names, expected.header);
        ASSERT_EQ(found.rows, expected.rows.size());
        for (const std::string& name : found.names) {
            const auto texts = expected.Texts(name);
            for (size_t row = 0; row < found.rows; ++row) {
                const Value& value = found.Named(name)[row];
                if (value.number) {
                    EXPECT_EQ(*value.number, std::strtod(texts[row].c_str(), nullptr)) << name;
                } else {
                    EXPECT_EQ(value.text.value_or(""), texts[row]) << name;
                }
            }
        }
    };
    expect(scan({}), {});
    expect(scan({.level = 0.9}), {"--level", "0.9"});
    expect(scan({.policy = "status"}), {"--policy", "status"});
    expect(scan({.policy = "sysmis"}), {"--policy", "sysmis"});
    expect(scan({.predictionOnly = true}), {"--prediction-only"});
    expect(scan({.columns = {"ci_upper", "prediction"}}), {"--columns", "ci_upper,prediction"});
    expect(scan({.columns = {"linear_predictor", "std_err(linear_predictor)"}}),
           {"--columns", "linear_predictor,std_err(linear_predictor)"});
    expect(scan({}), {});
}

TEST(Options, StrictEndsAtTheFirstRowWithoutAScore)
{
    std::string error;
    const MadeArray table = Table({Numbers("x", {1.0, 2.0, {}, {}}), Same("sex", "m", 4)});
    ScoresOf(TestModel().Text(), table, {.strict = true}, &error);
    EXPECT_NE(error.find("row 3 has no score: status 90029, field 'x' [269407]"), std::string::npos)
        << error;
    error.clear();
    EXPECT_EQ(ScoresOf(TestModel().Text(), table, {}, &error).rows, 4U);
    EXPECT_EQ(error, "");
}

TEST(Options, MissingTextsAndMappedColumnsAreHeeded)
{
    const MadeArray table = Table({Texts("weight", {"-9", "2"}), Same("sex", "f", 2)});
    const ReadTables scores =
        ScoresOf(TestModel().Text(), table, {.missing = {"-9"}, .map = {{"x", "weight"}}});
    EXPECT_EQ(NumbersOf(scores, "prediction"), (std::vector<double>{velscore_tests::kNull, 5}));
}

TEST(Options, NoModelOfCategoriesHasALevel)
{
    const auto model = velscore::Model::Open(DataFile("cases/mlr-birthwt-race/model.pmml"));
    velscore_score_options options = Plain();
    options.level = 0.9;
    ArrowSchema schema{};
    velscore_error error = VELSCORE_ERROR_INIT;
    EXPECT_EQ(velscore_result_schema(model.Get(), &options, &schema, &error), 269405);
    EXPECT_NE(std::string(error.text).find("predicts a category"), std::string::npos) << error.text;
    velscore_error_clear(&error);
    ASSERT_EQ(velscore_result_schema(model.Get(), nullptr, &schema, nullptr), 0);
    EXPECT_STREQ(schema.children[0]->name, "prediction");
    EXPECT_STREQ(schema.children[0]->format, "i");
    ASSERT_NE(schema.children[0]->dictionary, nullptr);
    EXPECT_STREQ(schema.children[0]->dictionary->format, "u");
    EXPECT_STREQ(schema.children[1]->format, "g");
    EXPECT_STREQ(schema.children[schema.n_children - 2]->name, "status");
    EXPECT_EQ(schema.children[schema.n_children - 2]->flags & ARROW_FLAG_NULLABLE, 0);
    schema.release(&schema);
}

}  // namespace
}  // namespace velscore_tests
