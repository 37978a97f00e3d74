// Every type of Arrow that is taken, for a variable of numbers, of texts and of dates; the expected
// scores are of y = 1 + 2 x + 10 [sex = m].

#include <gtest/gtest.h>

#include "tests/capi/arrowtypes.h"
#include "tests/capi/scored.h"

namespace velscore_tests {
namespace {

class NumberTypes : public testing::TestWithParam<TypeCase> {};

TEST_P(NumberTypes, AreNumbersForAVariableOfNumbers)
{
    const auto rows = static_cast<size_t>(GetParam().column.length);
    const ReadTables scores =
        ScoresOf(TestModel().Text(), Table({GetParam().column, Same("sex", "f", rows)}));
    EXPECT_EQ(NumbersOf(scores, "prediction"), GetParam().predictions);
    EXPECT_EQ(alive, 0);
}

INSTANTIATE_TEST_SUITE_P(Arrow, NumberTypes, testing::ValuesIn(NumberCases()),
                         [](const auto& each) { return each.param.name; });

class TextTypes : public testing::TestWithParam<TextCase> {};

TEST_P(TextTypes, AreTextsForAVariableOfTexts)
{
    const ReadTables scores =
        ScoresOf(TextModel(GetParam().category), Table({Numbers("x", {0.0}), GetParam().column}));
    EXPECT_EQ(NumbersOf(scores, "prediction"), (std::vector<double>{11}));
}

INSTANTIATE_TEST_SUITE_P(Arrow, TextTypes, testing::ValuesIn(TextCases()),
                         [](const auto& each) { return each.param.name; });

std::string DateModel(const std::string& type)
{
    std::string document = TestModel().Text();
    const std::string field = "name=\"x\" optype=\"continuous\" dataType=\"double\"";
    return document.replace(document.find(field), field.size(),
                            "name=\"x\" optype=\"continuous\" dataType=\"" + type + "\"");
}

TEST(DateTypes, CountFromTheOriginOfTheirVariable)
{
    const auto score = [](const std::string& type, const MadeArray& column) {
        return NumbersOf(ScoresOf(DateModel(type), Table({column, Same("sex", "f", 1)})),
                         "prediction");
    };
    // 1960-04-10 is day 100 of 1960, 3553 days before 1970.
    EXPECT_EQ(score("dateDaysSince[1960]", Column<int32_t>("x", "tdD", {-3553})),
              std::vector<double>{201});
    // A midnight is its date, a date its midnight, and any other time no date.
    EXPECT_EQ(score("dateDaysSince[1970]", Column<int64_t>("x", "tsn:", {172800000000000})),
              std::vector<double>{5});
    EXPECT_EQ(score("dateTimeSecondsSince[1970]", Column<int32_t>("x", "tdD", {1})),
              std::vector<double>{172801});
    EXPECT_EQ(score("dateDaysSince[1970]", Column<int64_t>("x", "tsn:", {172800000000001})),
              std::vector<double>{kNull});
    EXPECT_EQ(score("dateTimeSecondsSince[1970]", Column<int64_t>("x", "tsn:UTC", {3000000000})),
              std::vector<double>{7});
    EXPECT_EQ(score("timeSeconds", Column<int64_t>("x", "ttu", {2500000})), std::vector<double>{6});
    // The year 12000 and a time beyond the day are no values.
    EXPECT_EQ(score("dateDaysSince[1970]", Column<int32_t>("x", "tdD", {3663000})),
              std::vector<double>{kNull});
    EXPECT_EQ(score("timeSeconds", Column<int32_t>("x", "tts", {86400})),
              std::vector<double>{kNull});
}

TEST(Nan, IsMissingUnlessItIsToBeInvalid)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<std::optional<double>> numbers(600, 1.0);
    numbers[1] = nan;
    numbers[599] = nan;
    const MadeArray table = Table({Numbers("x", numbers), Same("sex", "f", 600)});
    TestModel replacing;
    replacing.xMining = R"(<MiningField name="x" missingValueReplacement="5"
      invalidValueTreatment="returnInvalid"/>)";
    const ReadTables missing = ScoresOf(replacing.Text(), table);
    for (const size_t row : {1u, 599u}) {
        EXPECT_EQ(NumbersOf(missing, "prediction")[row], 11) << row;
    }
    EXPECT_EQ(NumbersOf(missing, "prediction")[2], 3);
    const ReadTables invalid = ScoresOf(replacing.Text(), table, {.nan = "invalid"});
    for (const size_t row : {1u, 599u}) {
        EXPECT_EQ(NumbersOf(invalid, "prediction")[row], kNull) << row;
        EXPECT_EQ(NumbersOf(invalid, "status")[row], 269052) << row;
        EXPECT_EQ(invalid.Named("status_field")[row].text, "x") << row;
    }
    // Without a replacement a missing value has no score, in no other way than a null.
    const ReadTables refused = ScoresOf(TestModel().Text(), table);
    EXPECT_EQ(NumbersOf(refused, "status")[1], 90029);
    EXPECT_EQ(refused.Named("status_field")[599].text, "x");
}

TEST(Offsets, OfTheTableAndOfAColumnAddUp)
{
    MadeArray x = Numbers("x", {9.0, 9.0, 9.0, 1.0, {}, 2.0});
    x.offset = 1;
    x.length = 5;
    MadeArray sex = Same("sex", "f", 5);
    MadeArray table{.name = "", .format = "+s"};
    table.offset = 2;
    table.length = 3;
    table.buffers = {std::nullopt};
    table.children = {x, sex};
    const ReadTables scores = ScoresOf(TestModel().Text(), table, {.keep = {"x"}});
    EXPECT_EQ(NumbersOf(scores, "prediction"), (std::vector<double>{3, kNull, 5}));
    EXPECT_EQ(NumbersOf(scores, "x"), (std::vector<double>{1, kNull, 2}));
}

TEST(Keep, HandsColumnsOfAnyTypeOnRowForRow)
{
    MadeArray list{.name = "prediction", .format = "+l"};
    list.length = 2;
    list.buffers = {std::nullopt, BytesOf(std::vector<int32_t>{0, 1, 3})};
    list.children = {Numbers("item", {1.0, 2.0, 3.0})};
    list.metadata = std::string("\1\0\0\0\1\0\0\0k\2\0\0\0vv", 15);
    const MadeArray table =
        Table({Numbers("x", {1.0, 2.0}), Same("sex", "f", 2), list, Texts("id", {"a", {}})});
    const auto model = velscore::Model::FromText(TestModel().Text());
    ArrowArrayStream in = StreamOf(table);
    ArrowArrayStream out = model.Score(in, {.keep = {"id", "prediction"}});
    ArrowSchema schema{};
    ASSERT_EQ(out.get_schema(&out, &schema), 0);
    ASSERT_EQ(schema.n_children, 8);
    EXPECT_STREQ(schema.children[0]->name, "id");
    EXPECT_STREQ(schema.children[1]->name, "input.prediction");
    EXPECT_STREQ(schema.children[1]->format, "+l");
    EXPECT_EQ(std::string(schema.children[1]->metadata, 15), list.metadata);
    ArrowArray scored{};
    ASSERT_EQ(out.get_next(&out, &scored), 0);
    out.release(&out);
    // A column that is moved out outlives the table and all it came from.
    ArrowArray kept = *scored.children[1];
    scored.children[1]->release = nullptr;
    ArrowArray prediction = *scored.children[2];
    scored.children[2]->release = nullptr;
    scored.release(&scored);
    EXPECT_EQ(ValueAt<double>(prediction, 1), 5);
    ASSERT_EQ(kept.n_children, 1);
    EXPECT_EQ(ValueAt<int32_t>(kept, 2), 3);
    EXPECT_EQ(ValueAt<double>(*kept.children[0], 2), 3.0);
    prediction.release(&prediction);
    kept.release(&kept);
    schema.release(&schema);
    EXPECT_EQ(alive, 0);
}

TEST(LargeTables, ComeOutInPartsThatKeepTheirRows)
{
    constexpr size_t kRows = 70000;
    std::vector<std::optional<double>> numbers;
    for (size_t i = 0; i < kRows; ++i) numbers.emplace_back(static_cast<double>(i));
    numbers[69999].reset();
    const ReadTables scores =
        ScoresOf(TestModel().Text(), Table({Numbers("x", numbers), Same("sex", "m", kRows)}),
                 {.keepAll = true});
    EXPECT_EQ(scores.tables, 5);  // of 16,384 rows at most
    ASSERT_EQ(scores.rows, kRows);
    const std::vector<double> predictions = NumbersOf(scores, "prediction");
    const std::vector<double> kept = NumbersOf(scores, "x");
    for (size_t i = 0; i + 1 < kRows; ++i) {
        ASSERT_EQ(predictions[i], 11 + 2 * static_cast<double>(i));
        ASSERT_EQ(kept[i], static_cast<double>(i));
    }
    EXPECT_EQ(predictions[kRows - 1], kNull);
    EXPECT_EQ(scores.Named("status_field")[kRows - 1].text, "x");
    EXPECT_FALSE(scores.Named("status_field")[kRows - 2].text);
}

}  // namespace
}  // namespace velscore_tests
