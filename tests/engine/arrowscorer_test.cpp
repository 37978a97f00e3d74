// Tables in memory, from Arrow's structures to scores, curves and explanations, and tables of files
// that are handed out as such.
#include "engine/scoring/arrowscorer.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "engine/scoring/arrowcurves.h"
#include "engine/scoring/arrowexplanations.h"
#include "engine/scoring/tablescan.h"
#include "engine/tables/arrowarrays.h"
#include "host/messages/messages.h"
#include "tests/capi/arrowfaults.h"
#include "tests/capi/arrowtypes.h"
#include "tests/engine/smallmodels.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

using namespace velscore_tests;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using Strings = std::vector<std::string>;
using Doubles = std::vector<double>;

ArrowOwner<ArrowSchema> SchemaOf(const MadeArray& table)
{
    ArrowSchema schema = ExportSchema(table);
    return ArrowOwner(schema);
}
ArrowOwner<ArrowArray> ArrayOf(const MadeArray& table)
{
    ArrowArray array = ExportArray(table);
    return ArrowOwner(array);
}

// One table through a scorer that is fresh.
ReadTables ScoresOf(const LoadedModel& model, const MadeArray& table,
                    const ArrowOptions& options = {})
{
    const auto schema = SchemaOf(table);
    ArrowScorer scorer(model, *schema, options);
    const int64_t rows = scorer.Begin(ArrayOf(table));
    ReadTables read;
    const auto made = scorer.Schema();
    read.Begin(*made);
    read.Add(*made, *scorer.Score(0, rows));
    scorer.End();
    return read;
}
ReadTables ScoresOf(const std::string& document, const MadeArray& table,
                    const ArrowOptions& options = {})
{
    return ScoresOf(OpenText(document), table, options);
}

class ArrowNumberTypes : public testing::TestWithParam<TypeCase> {};
INSTANTIATE_TEST_SUITE_P(Arrow, ArrowNumberTypes, testing::ValuesIn(NumberCases()),
                         [](const auto& each) { return each.param.name; });

TEST_P(ArrowNumberTypes, AreNumbersForAVariableOfNumbers)
{
    const auto rows = static_cast<size_t>(GetParam().column.length);
    const ReadTables scores =
        ScoresOf(TestModel().Text(), Table({GetParam().column, Same("sex", "f", rows)}));
    EXPECT_EQ(NumbersOf(scores, "prediction"), GetParam().predictions);
    EXPECT_EQ(alive, 0);
}

class ArrowTextTypes : public testing::TestWithParam<TextCase> {};
INSTANTIATE_TEST_SUITE_P(Arrow, ArrowTextTypes, testing::ValuesIn(TextCases()),
                         [](const auto& each) { return each.param.name; });

TEST_P(ArrowTextTypes, AreTextsForAVariableOfTexts)
{
    const ReadTables scores =
        ScoresOf(TextModel(GetParam().category), Table({Numbers("x", {0.0}), GetParam().column}));
    EXPECT_EQ(NumbersOf(scores, "prediction"), Doubles{11});
}

class ArrowFaults : public testing::TestWithParam<Fault> {};
INSTANTIATE_TEST_SUITE_P(Arrow, ArrowFaults, testing::ValuesIn(AllFaults()),
                         [](const auto& each) { return each.param.name; });

TEST_P(ArrowFaults, AreRefused)
{
    {
        const LoadedModel model = OpenText(TestModel().Text());
        Structures structures = SpoiltBy(GetParam());
        const ArrowOwner<ArrowSchema> schema(structures.schema);
        ArrowOwner<ArrowArray> array(structures.array);
        ArrowOptions options;
        if (const std::string kept = KeptFor(GetParam()); !kept.empty()) {
            options.output.keep = {kept};
        }
        try {
            ArrowScorer scorer(model, *schema, options);
            const int64_t rows = scorer.Begin(std::move(array));
            scorer.Score(0, rows);
            ADD_FAILURE() << "taken";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Kind(), FailureKind::Cases);
            EXPECT_EQ(failure.Code(), GetParam().code);
            EXPECT_NE(std::string(failure.what()).find(GetParam().says), std::string::npos)
                << failure.what();
        }
    }
    EXPECT_EQ(alive, 0);
}

// 1960-04-10 is day 100 of 1960 and day -3553 of 1970.
TEST(ArrowDates, CountFromTheOriginOfTheirVariable)
{
    struct Row {
        const char* type;
        MadeArray column;
        double prediction;
    };
    const Row rows[] = {
        {"dateDaysSince[1960]", Column<int32_t>("x", "tdD", {-3553}), 201},
        {"dateDaysSince[1970]", Column<int64_t>("x", "tsn:", {172800000000000}), 5},
        {"dateDaysSince[1970]", Column<int64_t>("x", "tsn:", {172800000000001}), kNull},
        {"dateTimeSecondsSince[1970]", Column<int32_t>("x", "tdD", {1}), 172801},
        {"dateTimeSecondsSince[1970]", Column<int64_t>("x", "tsn:UTC", {3000000000}), 7},
        {"timeSeconds", Column<int64_t>("x", "ttu", {2500000}), 6},
        // The year 12000, and times beyond the day and before it.
        {"dateDaysSince[1970]", Column<int32_t>("x", "tdD", {3663000}), kNull},
        {"timeSeconds", Column<int32_t>("x", "tts", {86399}), 172799},
        {"timeSeconds", Column<int32_t>("x", "tts", {86400}), kNull},
        {"timeSeconds", Column<int32_t>("x", "tts", {-1}), kNull},
    };
    for (const Row& row : rows) {
        const std::string document =
            Replaced(TestModel().Text(), "name=\"x\" optype=\"continuous\" dataType=\"double\"",
                     std::string("name=\"x\" optype=\"continuous\" dataType=\"") + row.type + "\"");
        EXPECT_EQ(
            NumbersOf(ScoresOf(document, Table({row.column, Same("sex", "f", 1)})), "prediction"),
            Doubles{row.prediction})
            << row.type;
    }
}

TEST(ArrowTable, HasTheColumnsOfTheOutput)
{
    MadeArray table = Table(
        {Texts("id", {"a", {}, "c"}), Numbers("x", {1.0, {}, 2.0}), Texts("sex", {"f", "m", "m"})});
    ArrowOptions options;
    options.output.keep = {"id", "x"};
    const ReadTables scores = ScoresOf(TestModel().Text(), table, options);
    EXPECT_EQ(scores.names, (Strings{"id", "x", "prediction", "std_dev", "ci_lower", "ci_upper",
                                     "status", "status_field"}));
    EXPECT_EQ(scores.Named("id")[0].text, "a");
    EXPECT_FALSE(scores.Named("id")[1].text);
    EXPECT_EQ(NumbersOf(scores, "x"), (Doubles{1, kNull, 2}));
    EXPECT_EQ(NumbersOf(scores, "prediction"), (Doubles{3, kNull, 15}));
    EXPECT_EQ(NumbersOf(scores, "std_dev"), (Doubles{2, kNull, 2}));
    EXPECT_EQ(NumbersOf(scores, "status"), (Doubles{0, 90029, 0}));
    EXPECT_FALSE(scores.Named("status_field")[0].text);
    EXPECT_EQ(scores.Named("status_field")[1].text, "x");
    EXPECT_FALSE(scores.Named("status_field")[2].text);
}

// The offsets of the table and of its columns add up.
TEST(ArrowTable, MayBeginBehindOffsets)
{
    MadeArray x = Numbers("x", {9.0, 9.0, 9.0, 1.0, {}, 2.0});
    x.offset = 1;
    x.length = 5;
    MadeArray table{.name = "", .format = "+s"};
    table.offset = 2;
    table.length = 3;
    table.buffers = {std::nullopt};
    table.children = {x, Same("sex", "f", 5)};
    ArrowOptions options;
    options.output.keep = {"x"};
    const ReadTables scores = ScoresOf(TestModel().Text(), table, options);
    EXPECT_EQ(NumbersOf(scores, "prediction"), (Doubles{3, kNull, 5}));
    EXPECT_EQ(NumbersOf(scores, "x"), (Doubles{1, kNull, 2}));
}

// Blocks of 512 rows, whose results begin in the midst of a byte of bits, with values missing from
// the second on, in the third everywhere, in the fourth nowhere.
TEST(ArrowTable, OfManyBlocksKeepsItsRows)
{
    constexpr size_t kRows = 2000;
    std::vector<std::optional<double>> numbers;
    Doubles expected;
    for (size_t row = 0; row < kRows; ++row) {
        const bool isThere = row < 600 || (row < 1024 && row % 3 != 0) || row >= 1536;
        numbers.push_back(isThere ? std::optional(static_cast<double>(row)) : std::nullopt);
        expected.push_back(isThere ? 1 + 2 * static_cast<double>(row) : kNull);
    }
    const LoadedModel model = OpenText(TestModel().Text());
    const MadeArray table = Table({Numbers("x", numbers), Same("sex", "f", kRows)});
    const auto schema = SchemaOf(table);
    for (const int64_t part : {2000, 1000, 700, 513, 100, 3}) {
        ArrowScorer scorer(model, *schema, {});
        const auto made = scorer.Schema();
        ReadTables read;
        read.Begin(*made);
        const int64_t rows = scorer.Begin(ArrayOf(table));
        ASSERT_EQ(rows, 2000);
        for (int64_t first = 0; first < rows; first += part) {
            const auto scores = scorer.Score(first, std::min(part, rows - first));
            int64_t nulls = 0;
            for (int64_t row = first; row < std::min(rows, first + part); ++row) {
                nulls += expected[static_cast<size_t>(row)] == kNull ? 1 : 0;
            }
            EXPECT_EQ(scores->children[0]->null_count, nulls);
            EXPECT_EQ(scores->children[0]->buffers[0] == nullptr, nulls == 0);
            read.Add(*made, *scores);
        }
        EXPECT_EQ(NumbersOf(read, "prediction"), expected) << part;
        for (size_t row = 0; row < kRows; ++row) {
            const bool isThere = expected[row] != kNull;
            ASSERT_EQ(read.Named("status")[row].number, isThere ? 0 : 90029) << row;
            ASSERT_EQ(read.Named("status_field")[row].text.value_or(""), isThere ? "" : "x");
        }
    }
}

// What isn't computed is null everywhere; what stands behind a null is 0.
TEST(ArrowTable, NullsHideZeros)
{
    const LoadedModel model = OpenText(Without(TestModel().Text(), "<PCovMatrix", "</PCovMatrix>"));
    const MadeArray table = Table({Numbers("x", {1.0, {}}), Same("sex", "m", 2)});
    const auto schema = SchemaOf(table);
    ArrowScorer scorer(model, *schema, {});
    const int64_t rows = scorer.Begin(ArrayOf(table));
    const auto scores = scorer.Score(0, rows);
    EXPECT_EQ(ValueAt<double>(*scores->children[0], 0), 13.0);
    EXPECT_EQ(ValueAt<double>(*scores->children[0], 1), 0.0);
    EXPECT_EQ(scores->children[0]->null_count, 1);
    for (int64_t column : {1, 2, 3}) {
        EXPECT_EQ(scores->children[column]->null_count, 2) << column;
        for (int64_t row : {0, 1}) EXPECT_FALSE(HasValue(*scores->children[column], row));
    }
    EXPECT_EQ(scores->children[5]->null_count, 1);
    scorer.End();
    // Without faults nothing of the rows before is left.
    const MadeArray sound = Table({Numbers("x", {1.0, 2.0}), Same("sex", "m", 2)});
    scorer.Begin(ArrayOf(sound));
    const auto second = scorer.Score(0, 2);
    EXPECT_EQ(second->children[5]->null_count, 2);
    EXPECT_EQ(ValueAt<int32_t>(*second->children[4], 1), 0);
}

TEST(ArrowTable, CategoriesAreADictionary)
{
    const LoadedModel model = OpenText(ClassifyingText());
    const MadeArray table = Table({Numbers("x", {1.0, -1.0, {}, 2.0})});
    const ReadTables scores = ScoresOf(model, table);
    const auto& classes = scores.Named("prediction");
    EXPECT_EQ(classes[0].text, "yes");
    EXPECT_EQ(classes[1].text, "no");
    EXPECT_FALSE(classes[2].text);
    EXPECT_EQ(classes[3].text, "yes");
    EXPECT_NEAR(scores.Named("probability(yes)")[3].number.value(), 0.9, 1e-15);
    // A table without rows has the dictionary too.
    const MadeArray empty = Table({Numbers("x", {})});
    const auto schema = SchemaOf(empty);
    ArrowScorer scorer(model, *schema, {});
    scorer.Begin(ArrayOf(empty));
    const auto none = scorer.Score(0, 0);
    EXPECT_EQ(none->length, 0);
    ASSERT_NE(none->children[0]->dictionary, nullptr);
    EXPECT_EQ(none->children[0]->dictionary->length, 2);
    const auto made = scorer.Schema();
    EXPECT_STREQ(made->children[0]->format, "i");
    EXPECT_STREQ(made->children[0]->dictionary->format, "u");
    EXPECT_EQ(made->children[0]->flags, ARROW_FLAG_NULLABLE);
    EXPECT_STREQ(made->children[1]->format, "g");
    EXPECT_STREQ(made->children[3]->format, "i");
    EXPECT_EQ(made->children[3]->flags, 0);  // a status is always there
}

// Numbers that are categories are told as rows of text have them, from the first table on.
TEST(ArrowTable, CategoriesThatAreNumbers)
{
    std::string text = Replaced(ClassifyingText(), "dataType='string'", "dataType='double'");
    text = Replaced(text, "<Value value='no'", "<Value value='1.50'");
    text = Replaced(text, "<Value value='yes'", "<Value value='2.0'");
    text = Replaced(text, "targetReferenceCategory='no'", "targetReferenceCategory='1.50'");
    for (int i = 0; i < 2; ++i) {
        text = Replaced(text, "targetCategory='yes'", "targetCategory='2.0'");
    }
    const ReadTables scores = ScoresOf(text, Table({Numbers("x", {1.0, -1.0})}));
    EXPECT_EQ(scores.Named("prediction")[0].text, "2");
    EXPECT_EQ(scores.Named("prediction")[1].text, "1.5");
}

// Rows count on over tables, until the next is a first one.
TEST(ArrowTable, StrictRefusesARowByItsNumber)
{
    const LoadedModel model = OpenText(TestModel().Text());
    const MadeArray sound = Table({Numbers("x", {1.0, 2.0, 3.0}), Same("sex", "f", 3)});
    const MadeArray faulty = Table({Numbers("x", {1.0, {}, 3.0}), Same("sex", "f", 3)});
    const auto schema = SchemaOf(sound);
    ArrowScorer scorer(model, *schema, {.strict = true});
    const auto refusedRow = [&](int64_t first) {
        try {
            scorer.Score(first, 2);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Code(), kRowNotScored);
            EXPECT_EQ(failure.Kind(), FailureKind::Cases);
            EXPECT_EQ(failure.Arguments().at(1), "90029");
            EXPECT_EQ(failure.Arguments().at(2), "x");
            return failure.Arguments().at(0);
        }
        return std::string();
    };
    scorer.Begin(ArrayOf(sound));
    EXPECT_EQ(refusedRow(0), "");
    scorer.End();
    scorer.Begin(ArrayOf(faulty));
    EXPECT_EQ(refusedRow(0), "5");
    EXPECT_EQ(refusedRow(1), "5");
    // Nothing of the refused rows is left for others.
    EXPECT_EQ(scorer.Score(2, 1)->children[0]->buffers[0], nullptr);
    scorer.End();
    scorer.BeginAnew();
    scorer.Begin(ArrayOf(faulty));
    EXPECT_EQ(refusedRow(1), "2");
}

TEST(ArrowTable, NaNIsMissingUnlessItIsToBeInvalid)
{
    TestModel replacing;
    replacing.xMining =
        R"(<MiningField name="x" missingValueReplacement="5" invalidValueTreatment="returnInvalid"/>)";
    for (const bool isIndexed : {false, true}) {
        MadeArray x = Numbers("x", {1.0, kNaN, 2.0});
        if (isIndexed) x = Indexed<int8_t>("c", {0, 1, 2}, x);
        const MadeArray table = Table({x, Same("sex", "f", 3)});
        EXPECT_EQ(NumbersOf(ScoresOf(replacing.Text(), table), "prediction"), (Doubles{3, 11, 5}));
        const ReadTables invalid = ScoresOf(replacing.Text(), table, {.nanIsMissing = false});
        EXPECT_EQ(NumbersOf(invalid, "prediction"), (Doubles{3, kNull, 5}));
        EXPECT_EQ(NumbersOf(invalid, "status"), (Doubles{0, 269052, 0}));
    }
}

// As much as a table may tell of its rows: that it doesn't know of nulls, or that it has none.
TEST(ArrowTable, MayTellOfItsOwnNulls)
{
    const auto predictions = [](int64_t nullCount, bool hasBits) {
        MadeArray table = Table({Numbers("x", {1.0, 2.0}), Same("sex", "f", 2)});
        table.nullCount = nullCount;
        if (hasBits) table.buffers = {BitsOf({true, true})};
        return NumbersOf(ScoresOf(TestModel().Text(), table), "prediction");
    };
    EXPECT_EQ(predictions(0, false), (Doubles{3, 5}));
    EXPECT_EQ(predictions(-1, false), (Doubles{3, 5}));
    EXPECT_EQ(predictions(0, true), (Doubles{3, 5}));
    EXPECT_THROW(predictions(-1, true), Failure);
    EXPECT_THROW(predictions(1, true), Failure);
}

// The nulls are counted from the midst of a byte over whole words to the midst of another.
TEST(ArrowTable, CountsTheNullsOfItsColumns)
{
    constexpr size_t kRows = 300;
    for (const int64_t offset : {0, 3, 8, 9, 70}) {
        std::vector<std::optional<double>> numbers;
        Doubles expected;
        int64_t nulls = 0;
        for (size_t i = 0; i < kRows; ++i) {
            const bool isThere = i % 3 != 0;
            numbers.push_back(isThere ? std::optional(static_cast<double>(i)) : std::nullopt);
            if (static_cast<int64_t>(i) < offset) continue;
            expected.push_back(isThere ? 1 + 2 * static_cast<double>(i) : kNull);
            nulls += isThere ? 0 : 1;
        }
        MadeArray x = Numbers("x", numbers);
        x.offset = offset;
        x.length = static_cast<int64_t>(kRows) - offset;
        x.nullCount = nulls;
        MadeArray table{.name = "", .format = "+s"};
        table.length = x.length;
        table.buffers = {std::nullopt};
        table.children = {x, Same("sex", "f", static_cast<size_t>(x.length))};
        EXPECT_EQ(NumbersOf(ScoresOf(TestModel().Text(), table), "prediction"), expected) << offset;
        table.children[0].nullCount = nulls + 1;
        EXPECT_THROW(ScoresOf(TestModel().Text(), table), Failure) << offset;
    }
}

// A column may have more rows than its table, up to 2^56.
TEST(ArrowTable, TakesTheFirstRowsOfLongerColumns)
{
    const LoadedModel model = OpenText(TestModel().Text());
    const MadeArray table = Table({Numbers("x", {1.0, 2.0}), Same("sex", "f", 2)});
    const auto schema = SchemaOf(table);
    for (const auto& [rows, isTaken] :
         {std::pair(int64_t{1} << 56, true), std::pair((int64_t{1} << 56) + 1, false)}) {
        ArrowScorer scorer(model, *schema, {});
        ArrowOwner<ArrowArray> array = ArrayOf(table);
        array.Get()->children[0]->length = rows;
        if (!isTaken) {
            EXPECT_THROW(scorer.Begin(std::move(array)), Failure);
            continue;
        }
        ASSERT_EQ(scorer.Begin(std::move(array)), 2);
        EXPECT_EQ(ValueAt<double>(*scorer.Score(0, 2)->children[0], 1), 5.0);
    }
}

TEST(ArrowTable, KeepsColumnsOfNullsAndTablesWithoutRows)
{
    MadeArray nulls{.name = "none", .format = "n"};
    nulls.length = 2;
    nulls.nullCount = 2;
    ArrowOptions options;
    options.output.keep = {"none", "id"};
    const ReadTables scores = ScoresOf(
        TestModel().Text(),
        Table({Numbers("x", {1.0, 2.0}), Same("sex", "f", 2), nulls, Texts("id", {"a", "b"})}),
        options);
    EXPECT_EQ(scores.names[0], "none");
    EXPECT_EQ(scores.Named("id")[1].text, "b");
    nulls.length = 0;
    nulls.nullCount = 0;
    const ReadTables none =
        ScoresOf(TestModel().Text(),
                 Table({Numbers("x", {}), Same("sex", "f", 0), nulls, Texts("id", {})}), options);
    EXPECT_EQ(none.tables, 1U);
    EXPECT_EQ(none.rows, 0U);
}

TEST(ArrowOwner, HandsOverAndLetsGo)
{
    ArrowArray taken{};
    {
        ArrowOwner<ArrowArray> owner = ArrayOf(Numbers("x", {1.0}));
        EXPECT_FALSE(owner.IsReleased());
        owner.MoveTo(taken);
        EXPECT_TRUE(owner.IsReleased());
    }
    EXPECT_EQ(alive, 1);
    ASSERT_NE(taken.release, nullptr);
    EXPECT_EQ(taken.length, 1);
    taken.release(&taken);
    EXPECT_EQ(alive, 0);
}

// What is kept is handed on as it is, whatever its type, and outlives all it came from.
TEST(ArrowTable, KeepsColumnsOfAnyType)
{
    MadeArray list{.name = "prediction", .format = "+l"};
    list.length = 3;
    list.nullCount = 1;
    list.buffers = {BitsOf({true, true, false}), BytesOf(std::vector<int32_t>{0, 1, 3, 3})};
    list.children = {Numbers("item", {1.0, 2.0, 3.0})};
    list.metadata = std::string("\1\0\0\0\1\0\0\0k\2\0\0\0vv", 15);
    const MadeArray table = Table({Numbers("x", {1.0, 2.0, 3.0}), Same("sex", "f", 3), list});
    ArrowOptions options;
    options.output.keep = {"prediction"};
    ArrowOwner<ArrowArray> kept;
    {
        const LoadedModel model = OpenText(TestModel().Text());
        const auto schema = SchemaOf(table);
        ArrowScorer scorer(model, *schema, options);
        const auto made = scorer.Schema();
        EXPECT_STREQ(made->children[0]->name, "input.prediction");
        EXPECT_STREQ(made->children[0]->format, "+l");
        EXPECT_STREQ(made->children[0]->children[0]->name, "item");
        EXPECT_EQ(std::string(made->children[0]->metadata, 15), list.metadata);
        EXPECT_EQ(made->children[0]->flags, ARROW_FLAG_NULLABLE);
        scorer.Begin(ArrayOf(table));
        // All rows: the number of nulls is known. A part: it isn't.
        EXPECT_EQ(scorer.Score(0, 3)->children[0]->null_count, 1);
        auto part = scorer.Score(1, 2);
        EXPECT_EQ(part->length, 2);
        kept = ArrowOwner(*part.Get()->children[0]);
        scorer.End();
    }
    EXPECT_GT(alive, 0);
    EXPECT_EQ(kept->null_count, -1);
    EXPECT_EQ(kept->length, 2);
    EXPECT_EQ(kept->offset, 1);
    EXPECT_EQ(ValueAt<int32_t>(*kept, 2), 3);
    EXPECT_EQ(ValueAt<double>(*kept->children[0], 2), 3.0);
    kept = {};
    EXPECT_EQ(alive, 0);
}

TEST(ArrowArrays, TextsLieBehindEachOther)
{
    const std::string_view texts[] = {"ab", "", "c"};
    const ArrowTextBytes made = MakeArrowTexts(texts);
    const auto* offsets = reinterpret_cast<const int32_t*>(made.offsets.get());
    EXPECT_EQ(std::vector<int32_t>(offsets, offsets + 4), (std::vector<int32_t>{0, 2, 2, 3}));
    EXPECT_EQ(std::string_view(reinterpret_cast<const char*>(made.bytes.get()), 3), "abc");
    EXPECT_EQ(made.count, 3);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(made.bytes.get()) % 64, 0U);
}

TEST(ArrowArrays, OfNumbersAndCodesHaveBitsWhereOneIsMissing)
{
    const ArrowColumnParts whole = ArrowNumbers({1.0, 2.0});
    EXPECT_EQ(whole.validity, nullptr);
    EXPECT_EQ(whole.nullCount, 0);
    std::vector<double> numbers(17, 1.0);
    numbers[3] = kNaN;
    numbers[16] = kNaN;
    const auto array = MakeArrowArray(17, ArrowNumbers(numbers));
    EXPECT_EQ(array->null_count, 2);
    EXPECT_EQ(array->n_buffers, 2);
    for (int64_t row = 0; row < 17; ++row) {
        EXPECT_EQ(HasValue(*array, row), row != 3 && row != 16) << row;
    }
    const std::string_view texts[] = {"a", "b"};
    const auto codes = MakeArrowArray(3, ArrowCodes({1, -1, 0}, MakeArrowTexts(texts)));
    EXPECT_EQ(codes->null_count, 1);
    EXPECT_FALSE(HasValue(*codes, 1));
    EXPECT_EQ(ValueAt<int32_t>(*codes, 0), 1);
    ASSERT_NE(codes->dictionary, nullptr);
    EXPECT_EQ(codes->dictionary->length, 2);
    EXPECT_EQ(codes->dictionary->n_buffers, 3);
    EXPECT_EQ(array->dictionary, nullptr);
}

// 2^x times the baseline's 0.25 at 2, 1 at 5 and 2 at 8.
TEST(ArrowCurves, APointALine)
{
    const LoadedModel model = OpenText(CoxText());
    const MadeArray table = Table({Numbers("x", {1.0, {}, 0.0})});
    const auto schema = SchemaOf(table);
    ArrowOptions options;
    options.table.curves = true;
    ArrowCurves curves(model, *schema, options);
    const auto made = ArrowCurves::Schema();
    ReadTables read;
    read.Begin(*made);
    EXPECT_EQ(curves.Begin(ArrayOf(table)), 3);
    read.Add(*made, *curves.Draw(0, 2));
    read.Add(*made, *curves.Draw(2, 1));
    curves.End();
    curves.Begin(ArrayOf(table));
    read.Add(*made, *curves.Draw(2, 1));
    EXPECT_EQ(read.names, (Strings{"row", "time", "survival", "cum_hazard"}));
    EXPECT_EQ(NumbersOf(read, "row"), (Doubles{1, 1, 1, 2, 3, 3, 3, 6, 6, 6}));
    EXPECT_EQ(NumbersOf(read, "time"), (Doubles{2, 5, 8, kNull, 2, 5, 8, 2, 5, 8}));
    const double hazards[] = {0.5, 2, 4, kNull, 0.25, 1, 2, 0.25, 1, 2};
    for (size_t i = 0; i < 10; ++i) {
        const double hazard = NumbersOf(read, "cum_hazard")[i];
        const double survival = NumbersOf(read, "survival")[i];
        if (hazards[i] == kNull) {
            EXPECT_EQ(hazard, kNull);
            EXPECT_EQ(survival, kNull);
        } else {
            EXPECT_NEAR(hazard, hazards[i], 1e-15);
            EXPECT_NEAR(survival, std::exp(-hazards[i]), 1e-15);
        }
    }
    EXPECT_STREQ(made->children[0]->format, "l");
    EXPECT_EQ(made->children[0]->flags, 0);
    EXPECT_EQ(made->children[1]->flags, ARROW_FLAG_NULLABLE);
}

TEST(ArrowCurves, StrictRefusesACaseWithoutOne)
{
    const LoadedModel model = OpenText(CoxText());
    const MadeArray table = Table({Numbers("x", {1.0, {}, 0.0})});
    const auto schema = SchemaOf(table);
    ArrowOptions options;
    options.table.curves = true;
    options.strict = true;
    ArrowCurves curves(model, *schema, options);
    curves.Begin(ArrayOf(table));
    curves.End();
    curves.Begin(ArrayOf(table));
    curves.Draw(0, 1);
    try {
        curves.Draw(0, 3);
        ADD_FAILURE() << "taken";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), kRowNotScored);
        EXPECT_EQ(failure.Arguments().at(0), "5");
    }
}

// y = 1 + 2 x + 10 [sex = m].
TEST(ArrowExplanations, ATermALine)
{
    const LoadedModel model = OpenText(TestModel().Text());
    const MadeArray table = Table({Numbers("x", {3.0, {}}), Texts("sex", {"m", "f"})});
    const auto schema = SchemaOf(table);
    ArrowExplanations explanations(model, *schema, {});
    EXPECT_EQ(explanations.MostLines(), 3U);
    const auto made = ArrowExplanations::Schema();
    ReadTables read;
    read.Begin(*made);
    EXPECT_EQ(explanations.Begin(ArrayOf(table)), 2);
    read.Add(*made, *explanations.Explain(0, 2));
    explanations.End();
    explanations.Begin(ArrayOf(table));
    read.Add(*made, *explanations.Explain(1, 1));
    EXPECT_EQ(read.names, (Strings{"row", "equation", "term", "value", "contribution"}));
    EXPECT_EQ(NumbersOf(read, "row"), (Doubles{1, 1, 1, 2, 4}));
    EXPECT_EQ(NumbersOf(read, "value"), (Doubles{1, 3, 1, kNull, kNull}));
    EXPECT_EQ(NumbersOf(read, "contribution"), (Doubles{1, 6, 10, kNull, kNull}));
    const auto& terms = read.Named("term");
    EXPECT_EQ(terms[0].text, "Intercept");
    EXPECT_EQ(terms[1].text, "x");
    EXPECT_EQ(terms[2].text, "[sex=m]");
    EXPECT_FALSE(terms[3].text);
    for (const Value& value : read.Named("equation")) EXPECT_FALSE(value.text);
    EXPECT_STREQ(made->children[0]->format, "l");
    EXPECT_STREQ(made->children[3]->format, "g");
    EXPECT_STREQ(made->children[4]->format, "g");
}

TEST(ArrowExplanations, NameEquationsAndTheOtherTerms)
{
    const LoadedModel model = OpenText(ClassifyingText());
    const MadeArray table = Table({Numbers("x", {2.0})});
    const auto schema = SchemaOf(table);
    ArrowExplanations explanations(model, *schema, {}, {.top = 1});
    EXPECT_EQ(explanations.MostLines(), 2U);
    const auto made = ArrowExplanations::Schema();
    ReadTables read;
    read.Begin(*made);
    explanations.Begin(ArrayOf(table));
    read.Add(*made, *explanations.Explain(0, 1));
    ASSERT_EQ(read.rows, 2U);
    EXPECT_EQ(read.Named("equation")[0].text, "yes");
    EXPECT_EQ(read.Named("equation")[1].text, "yes");
    EXPECT_NE(read.Named("term")[0].text, read.Named("term")[1].text);
    EXPECT_EQ(read.Named("term")[1].text, "other terms");
    EXPECT_NEAR(NumbersOf(read, "contribution")[0], 2 * std::log(3.0), 1e-15);
    EXPECT_EQ(NumbersOf(read, "contribution")[1], 0.0);
    EXPECT_EQ(NumbersOf(read, "value")[1], kNull);
}

TEST(ArrowExplanations, StrictRefusesACaseWithoutAScore)
{
    const LoadedModel model = OpenText(TestModel().Text());
    const MadeArray table = Table({Numbers("x", {3.0, {}}), Same("sex", "m", 2)});
    const auto schema = SchemaOf(table);
    ArrowExplanations explanations(model, *schema, {.strict = true});
    explanations.Begin(ArrayOf(table));
    EXPECT_EQ(explanations.Explain(0, 1)->length, 3);
    try {
        explanations.Explain(0, 2);
        ADD_FAILURE() << "taken";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Arguments().at(0), "2");
    }
}

TEST(ArrowExplainedCases, EndWhenTheVisitorHasEnough)
{
    const LoadedModel model = OpenText(TestModel().Text());
    const MadeArray table = Table({Numbers("x", {1.0, 2.0, 3.0}), Same("sex", "f", 3)});
    const auto schema = SchemaOf(table);
    ArrowExplainedCases cases(model, *schema, {});
    std::vector<int64_t> rows;
    const auto visit = [&](int64_t last) {
        return cases.Visit(0, 3, [&](int64_t row, const CaseStatus& status, const auto& each) {
            EXPECT_TRUE(status.IsOK());
            EXPECT_EQ(each.Sums()[0].linearPredictor, 1.0 + 2.0 * static_cast<double>(row % 4));
            rows.push_back(row);
            return row < last;
        });
    };
    EXPECT_EQ(cases.Begin(ArrayOf(table)), 3);
    EXPECT_FALSE(visit(2));
    EXPECT_TRUE(visit(9));
    EXPECT_EQ(rows, (std::vector<int64_t>{1, 2, 1, 2, 3}));
}

class TableScanTest : public testing::Test {
protected:
    // Rows of x = 0, 1, .., sex = m in every third, x empty in the 7th of each ten.
    static std::string Rows(size_t rows)
    {
        std::string text = "id,x,sex\n";
        for (size_t row = 0; row < rows; ++row) {
            text += "r" + std::to_string(row) + "," + (row % 10 == 6 ? "" : std::to_string(row)) +
                    (row % 3 == 0 ? ",m\n" : ",f\n");
        }
        return text;
    }
    ReadTables Scan(const Strings& paths, const ScanOptions& options)
    {
        TableScan scan(model_, paths, options);
        const auto made = scan.Schema();
        ReadTables read;
        read.Begin(*made);
        try {
            while (const auto table = scan.Next()) read.Add(*made, **table);
        } catch (const Failure& failure) {
            failed_ = failure.Code();
            // The end stands.
            EXPECT_THROW(scan.Next(), Failure);
        }
        return read;
    }
    ScratchFolder folder_;
    LoadedModel model_ = OpenText(TestModel().Text());
    int failed_ = 0;
};

TEST_F(TableScanTest, GivesEachRowByAnyThreadsAndBlocks)
{
    constexpr size_t kRows = 12000;  // more than is read to tell the form
    const Strings paths{folder_.Write("a.csv", Rows(kRows)), folder_.Write("b.csv", Rows(10))};
    for (const size_t threads : {0U, 1U, 3U}) {
        for (const size_t bytes : {1000U, 1U << 20}) {
            ScanOptions options{.threads = threads, .blockBytes = bytes};
            options.scoring.output.keep = {"id"};
            const ReadTables read = Scan(paths, options);
            EXPECT_EQ(failed_, 0);
            ASSERT_EQ(read.rows, kRows + 10);
            EXPECT_EQ(read.tables > 9, bytes == 1000U) << read.tables;
            for (size_t i = 0; i < read.rows; ++i) {
                const size_t row = i % kRows;
                const bool isThere = row % 10 != 6;
                ASSERT_EQ(read.Named("id")[i].text, "r" + std::to_string(row));
                ASSERT_EQ(read.Named("prediction")[i].number.has_value(), isThere);
                if (!isThere) continue;
                ASSERT_EQ(read.Named("prediction")[i].number,
                          1.0 + 2.0 * static_cast<double>(row) + (row % 3 == 0 ? 10.0 : 0.0));
            }
        }
    }
}

TEST_F(TableScanTest, HandsOutTheRowsBeforeAFault)
{
    const std::string rows = Rows(500);
    const Strings paths{folder_.Write("a.csv", rows + "torn\n" + rows.substr(rows.find('\n') + 1))};
    for (const size_t threads : {1U, 3U}) {
        failed_ = 0;
        const ReadTables read = Scan(paths, {.threads = threads, .blockBytes = 2000});
        EXPECT_EQ(failed_, kRowLength);
        EXPECT_EQ(read.rows, 500U);
        failed_ = 0;
        ScanOptions strict{.threads = threads, .blockBytes = 2000};
        strict.scoring.strict = true;
        EXPECT_EQ(Scan(paths, strict).tables, 0U);  // the 7th row, and all of a block goes with it
        EXPECT_EQ(failed_, kRowNotScored);
    }
}

// Each of them is a row too short, however many stand before the first whole one.
TEST_F(TableScanTest, BlankLinesEndTheTable)
{
    const std::string blank(300, '\n');
    EXPECT_EQ(Scan({folder_.Write("a.csv", "x,sex\n" + blank + "1,m\n")}, {}).rows, 0U);
    EXPECT_EQ(failed_, kRowLength);
}

TEST_F(TableScanTest, WithoutAHeaderTheColumnsAreTheModels)
{
    ScanOptions options;
    options.dialect.hasHeader = false;
    const ReadTables read = Scan({folder_.Write("a.csv", "m,1\nf,2\n")}, options);
    EXPECT_EQ(NumbersOf(read, "prediction"), (Doubles{13, 5}));
    // Unless they are told, by their numbers.
    options.scoring.table.columnOf = {{"x", "3"}, {"sex", "1"}};
    EXPECT_EQ(NumbersOf(Scan({folder_.Write("c.csv", "m,q,1\nf,q,2\n")}, options), "prediction"),
              (Doubles{13, 5}));
    ScanOptions decimal;
    decimal.dialect = {.delimiter = ';', .decimal = ',', .tellsDelimiter = true};
    EXPECT_EQ(NumbersOf(Scan({folder_.Write("b.csv", "x;sex\n1,5;m\n")}, decimal), "prediction"),
              Doubles{14});
}

}  // namespace
}  // namespace MCVelscore_850
