#include "engine/scoring/tablescorer.h"

#include <algorithm>
#include <limits>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <stdexcept>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "host/expressions/expression.h"
#include "host/expressions/transformvar.h"
#include "host/messages/messages.h"
#include "host/messages/scoringlog.h"
#include "host/model/mcstatus.h"
#include "host/model/scoringstate.h"
#include "host/values/datetimevalue.h"
#include "host/values/numericvalue.h"
#include "host/variables/targetdeclaration.h"
#include "host/variables/transformationdictionary.h"
#include "host/variables/varstats.h"
#include "models/lrresult.h"
#include "models/mlrresult.h"
#include "tests/allocations.h"
#include "tests/engine/fakemodel.h"
#include "tests/engine/unlistedcount.h"

namespace MCVelscore_850 {
namespace {

// By which road a row was scored: its standard error.
constexpr double kAlone = 1.0;
constexpr double kTogether = 2.0;

// A block scorer of the model below.
class DoublingBlocks final : public BatchScorer {
public:
    struct Codes final : Scratch {
        std::vector<std::vector<int>> positions;  // by input and code
    };

    explicit DoublingBlocks(std::vector<const ScoreDictVar*> inputs) : inputs_(std::move(inputs)) {}

    std::span<const ScoreDictVar* const> Inputs() const override { return inputs_; }
    std::span<const std::string> Categories() const override { return {}; }
    std::unique_ptr<Scratch> MakeScratch() const override
    {
        auto codes = std::make_unique<Codes>();
        codes->positions.resize(inputs_.size());
        return codes;
    }
    void BindTexts(size_t input, std::span<const std::string_view> texts,
                   Scratch& scratch) const override
    {
        mostTexts = std::max(mostTexts, texts.size());
        ++timesBound;
        auto& positions = static_cast<Codes&>(scratch).positions[input];
        positions.clear();
        for (const std::string_view text : texts) {
            const StringValue value{std::string(text)};
            const auto& var = static_cast<const DictVar&>(*inputs_[input]);
            positions.push_back(var.Accepts(&value) ? var.FindCategory(value) : kUnknown);
        }
    }
    void Score(std::span<const BatchColumn> inputs, size_t rows, const BatchResults& results,
               uint64_t* unsure, Scratch& scratch) const override
    {
        ++blocks;
        numbers = inputs.front().numbers;
        std::fill(unsure, unsure + kRows / 64, 0);
        for (size_t row = 0; row < rows; ++row) {
            double sum = 0.0;
            bool sure = true;
            for (size_t i = 0; i < inputs.size(); ++i) {
                const BatchColumn& column = inputs[i];
                const bool there =
                    column.present == nullptr || ((column.present[row / 8] >> (row % 8)) & 1) != 0;
                if (column.codes != nullptr) {
                    const auto& positions = static_cast<Codes&>(scratch).positions[i];
                    const auto code = static_cast<size_t>(column.codes[row]);
                    const int position = code < positions.size() ? positions[code] : kUnknown;
                    // As a model has it that takes any text: an unknown one counts for nothing.
                    const bool takesAny = inputs_[i]->AcceptsUnlisted();
                    sure = sure && there && (takesAny || position != kUnknown);
                    sum += position == kUnknown ? -1 : position;
                } else {
                    const NumericValue value(column.numbers[row]);
                    sure = sure && there &&
                           (inputs_[i]->GetValueType() == ScoreDictVar::DATETIME ||
                            inputs_[i]->Accepts(&value));
                    sum += 2.0 * column.numbers[row];
                }
            }
            if (!sure) unsure[row / 64] |= uint64_t{1} << (row % 64);
            if (results.prediction != nullptr) results.prediction[row] = sum;
            if (results.stdDev != nullptr) results.stdDev[row] = kTogether;
            if (results.ciLower != nullptr) results.ciLower[row] = sum - 1.0;
            if (results.ciUpper != nullptr) results.ciUpper[row] = NumericValue::GetSysmisValue();
            if (results.linearPredictor != nullptr) results.linearPredictor[row] = sum / 2.0;
            if (results.linearPredictorError != nullptr) {
                results.linearPredictorError[row] = sum / 4.0;
            }
        }
    }

    bool SurelyWithin(const double* values, size_t rows, double low, double high) const override
    {
        return std::all_of(values, values + rows,
                           [&](double value) { return value >= low && value <= high; });
    }

    mutable size_t mostTexts = 0;
    mutable int timesBound = 0;
    mutable int blocks = 0;
    mutable const double* numbers = nullptr;  // of the first input of the last block

private:
    static constexpr int kUnknown = -2;
    std::vector<const ScoreDictVar*> inputs_;
};

// Predicts the sum of 2 x over its numbers and dates and of the positions of its texts' categories;
// a case with a value that isn't accepted fails for it.
class Doubling : public FakeModel {
public:
    MCScore::MCStatus ScoreRow(ScoringState& state, const ScoreCaseRecord* record,
                               ScoreResult*& result, bool) const override
    {
        ++alone;
        if (result == nullptr) result = new LRResult(GetTargetVar());
        state.failedVar = nullptr;
        double sum = 0.0;
        for (const std::string& name : description.variables) {
            const ScoreDictVar& var = *FindVar(name);
            const ScoreValue* value = record->GetValue(name);
            if (!var.Accepts(value)) {
                state.failedVar = &var;
                return MCScore::MCStatus(MCScore::kCaseNotScorable, false);
            }
            switch (value->GetValueType()) {
                case ScoreValue::STRING:
                    sum += static_cast<const DictVar&>(var).FindCategory(*value);
                    break;
                case ScoreValue::DATETIME:
                    sum += 2.0 * static_cast<const DateTimeValue*>(value)->GetDoubleValue(
                                     var.GetDateTimeType());
                    break;
                default: sum += 2.0 * value->GetDouble();
            }
        }
        auto& linear = static_cast<LRResult&>(*result);
        linear.SetPrediction(new NumericValue(sum));
        linear.SetStdDev(kAlone);
        linear.SetCIBottom(sum - 1.0);
        state.linearPredictor = sum / 2.0;
        if (state.wantsLinearPredictorError) state.linearPredictorError = sum / 4.0;
        asked = state.wantsLinearPredictorError;
        return {};
    }
    std::unique_ptr<BatchScorer> MakeBatchScorer() const override
    {
        if (!together) return nullptr;
        std::vector<const ScoreDictVar*> inputs;
        for (const std::string& name : description.variables) {
            if (!hasNoColumn.contains(name)) inputs.push_back(FindVar(name));
        }
        if (!wantsToo.empty()) inputs.push_back(FindVar(wantsToo));
        auto scorer = std::make_unique<DoublingBlocks>(std::move(inputs));
        blocks = scorer.get();
        return scorer;
    }
    const ScoreDictVar* GetTargetVar() const override { return target.get(); }

    bool together = true;
    std::set<std::string> hasNoColumn;  // among a block's inputs
    std::string wantsToo;               // a variable that cases aren't read for
    std::unique_ptr<DictVar> target;
    mutable int alone = 0;
    mutable bool asked = false;  // for the error of the linear predictor
    mutable const DoublingBlocks* blocks = nullptr;
};

// What became of one row.
struct Scored {
    std::optional<double> prediction;
    std::optional<double> stdDev;
    long status = 0;
    std::string field;
    std::optional<std::string> text;

    bool IsTogether() const { return stdDev == kTogether; }
};

using Names = std::vector<std::string>;
using Texts = std::vector<std::string_view>;

class TableScorerTest : public testing::Test {
protected:
    TableScorerTest()
    {
        model_.description.resultType = ScoreResult::LR_RESULT;
        model_.description.equations.resize(1);
    }

    TableScorer& Bind(const Names& header, CaseOptions options = {}, ResultOptions results = {})
    {
        header_ = header;
        rows_ = std::make_unique<TextRows>(header.size());
        scorer_ = std::make_unique<TableScorer>(model_, model_.description, treatments_, header,
                                                "cases.csv", std::move(options), results);
        results_ = std::make_unique<ResultBlock>(scorer_->Schema());
        unlisted_ = std::make_unique<UnlistedCount>(scorer_->Preparer().Fields());
        return *scorer_;
    }
    std::optional<double> Number(size_t column, size_t row) const
    {
        const ResultBlock::Column& values = results_->columns[column];
        if (!HasRow(values.present, row)) return std::nullopt;
        return values.numbers[row];
    }
    std::vector<Scored> ScoreBlock(const ColumnBlock& block)
    {
        scorer_->Score(block, *results_);
        unlisted_->Add(scorer_->Unlisted());
        EXPECT_EQ(results_->rows, block.rows);
        std::vector<Scored> scored;
        for (size_t row = 0; row < block.rows; ++row) {
            const CaseStatus& status = results_->StatusOf(row);
            EXPECT_EQ(results_->status[row], status.code);
            scored.push_back({Number(0, row), Number(1, row), status.code,
                              std::string(status.FieldName()),
                              std::optional<std::string>(status.text)});
        }
        return scored;
    }
    // A table of texts, in blocks of at most so many rows.
    std::vector<Scored> Score(const Texts& fields, size_t rowsOfBlock = TableScorer::kRows)
    {
        std::vector<Scored> all;
        const size_t step = rowsOfBlock * header_.size();
        for (size_t begin = 0; begin < fields.size(); begin += step) {
            const auto part =
                std::span(fields).subspan(begin, std::min(step, fields.size() - begin));
            for (Scored& scored : ScoreBlock(rows_->Block(part))) all.push_back(std::move(scored));
        }
        return all;
    }
    // Lets a case settle the model, so that the blocks after it go together.
    void Settle(const Texts& fields)
    {
        ASSERT_EQ(Score(fields).front().status, 0);
        model_.alone = 0;
    }
    static void SetLimits(DictVar& var, double low, double high)
    {
        auto stats = std::make_unique<VarStats>();
        stats->SetMinimum(low);
        stats->SetMaximum(high);
        var.SetVarStats(stats.release());
        var.SetOutlierTreatment(ScoreDictVar::AS_EXTREME);
    }

    Doubling model_;
    std::vector<MiningFieldTreatment> treatments_;
    Names header_;
    std::unique_ptr<TextRows> rows_;
    std::unique_ptr<TableScorer> scorer_;
    std::unique_ptr<ResultBlock> results_;
    std::unique_ptr<UnlistedCount> unlisted_;
};

TEST_F(TableScorerTest, TheFirstRowGoesAloneAndTheOthersTogether)
{
    model_.AddNumber("x");
    model_.AddText("f", {"a", "b", "c"});
    Bind({"f", "id", "x"});
    const std::vector<Scored> scored =
        Score({"c", "1", "1.5", "a", "2", "-2", "b", "3", "10", "c", "4", "0"});
    const double wanted[] = {5.0, -4.0, 21.0, 2.0};
    for (size_t row = 0; row < 4; ++row) {
        EXPECT_EQ(scored[row].prediction, wanted[row]) << row;
        EXPECT_EQ(scored[row].stdDev, row == 0 ? kAlone : kTogether) << row;
        EXPECT_EQ(scored[row].status, 0);
        EXPECT_EQ(Number(2, row), wanted[row] - 1.0);
        EXPECT_EQ(Number(3, row), std::nullopt);  // the system-missing number
    }
    EXPECT_EQ(model_.alone, 1);
    for (const Scored& each : Score({"b", "5", "1", "b", "6", "2"})) {
        EXPECT_TRUE(each.IsTogether());
    }
}

TEST_F(TableScorerTest, BlocksBeginAfterTheFirstRowThatIsScored)
{
    model_.AddNumber("x");
    Bind({"x"});
    const std::vector<Scored> scored = Score({"", "two", "3", "4", "", "6"});
    const std::vector<long> wanted{
        MCScore::kCaseNotScorable, kCaseTextNotANumber, 0, 0, MCScore::kCaseNotScorable, 0};
    for (size_t row = 0; row < wanted.size(); ++row) EXPECT_EQ(scored[row].status, wanted[row]);
    EXPECT_EQ(scored[2].stdDev, kAlone);
    EXPECT_EQ(scored[2].prediction, 6.0);
    EXPECT_TRUE(scored[3].IsTogether());
    EXPECT_TRUE(scored[5].IsTogether());
    EXPECT_EQ(scored[5].prediction, 12.0);
    EXPECT_EQ(scored[4].prediction, std::nullopt);
}

TEST_F(TableScorerTest, RowsOfALaterBlockKeepNothingOfTheOneBefore)
{
    model_.AddNumber("x");
    Bind({"x"});
    Settle({"1"});
    EXPECT_EQ(Score({"1", "2"})[1].prediction, 4.0);
    const std::vector<Scored> scored = Score({"", "", "5"});
    EXPECT_EQ(scored[0].prediction, std::nullopt);
    EXPECT_EQ(scored[1].prediction, std::nullopt);
    EXPECT_EQ(scored[2].prediction, 10.0);
    const std::vector<Scored> sound = Score({"1", "2"});
    EXPECT_EQ(sound[0].status, 0);
    EXPECT_EQ(sound[0].field, "");
}

TEST_F(TableScorerTest, ARowThatCannotBeScoredTellsWhyAsAloneItWould)
{
    model_.AddNumber("x");
    model_.AddText("f", {"a", "b"});
    Bind({"x", "f"});
    Settle({"1", "a"});
    const std::vector<Scored> scored =
        Score({"2", "a", "two", "a", "", "b", "3", "q", "NA", "q", "4", "b"});
    struct Wanted {
        long status;
        const char* field;
        std::optional<std::string> text;
    };
    const Wanted wanted[] = {{0, "", std::nullopt},
                             {kCaseTextNotANumber, "x", "two"},
                             {MCScore::kCaseNotScorable, "x", ""},
                             {MCScore::kCaseNotScorable, "f", "q"},
                             {MCScore::kCaseNotScorable, "x", "NA"},
                             {0, "", std::nullopt}};
    for (size_t row = 0; row < std::size(wanted); ++row) {
        EXPECT_EQ(scored[row].status, wanted[row].status) << row;
        EXPECT_EQ(scored[row].field, wanted[row].field) << row;
        EXPECT_EQ(scored[row].text, wanted[row].text) << row;
        EXPECT_EQ(scored[row].IsTogether(), wanted[row].status == 0) << row;
    }
    EXPECT_EQ(scored[5].prediction, 9.0);
}

// Rows of every kind, thousands of them: the roads agree in all but the one that they tell.
TEST_F(TableScorerTest, BothRoadsTellTheSameOfAnyTable)
{
    DictVar& x = model_.AddNumber("x");
    SetLimits(x, -50.0, 50.0);
    DictVar& z = model_.AddNumber("z");
    z.DeclareMissingValue(std::make_unique<NumericValue>(-9.0));
    z.EndDeclarations();
    model_.AddText("f", {"a", "b", "c"}).SetAcceptsUnlisted(true);
    model_.AddText("g", {"u", "v"});
    DictVarType flag = TextType("t");
    flag.boolean = true;
    for (const char* word : {"TRUE", "FALSE"}) {
        if (std::string(word) == "TRUE") model_.Add(flag);
        static_cast<DictVar*>(model_.GetDictionary()->GetVar("t"))
            ->DeclareValue(std::make_unique<StringValue>(word), word, DictVar::Property::Valid);
    }
    treatments_ = {
        {.name = "z", .missingValueReplacement = "7"},
        {.name = "g", .invalidValueTreatment = "asMissing", .missingValueReplacement = "v"},
        {.name = "t", .invalidValueTreatment = "returnInvalid"}};
    const Texts ofX{"1", "-2.5", "1e2", "-99", "", "NA", "two", "?"};
    const Texts ofZ{"3", "-9", "0", "4.25", "", " 5 "};
    const Texts ofF{"a", "b", "c", "q", "r", ""};
    const Texts ofG{"u", "v", "w", ""};
    const Texts ofT{"TRUE", "false", "1", "0", "maybe"};
    std::mt19937 random(20);
    const auto pick = [&](const Texts& texts) {
        // Mostly the first ones, which are sound.
        const size_t choice = std::uniform_int_distribution<size_t>(0, 3 * texts.size())(random);
        return texts[choice < texts.size() ? choice : choice % 2];
    };
    Texts fields;
    for (int row = 0; row < 3000; ++row) {
        for (const Texts* texts : {&ofG, &ofX, &ofT, &ofF, &ofZ}) fields.push_back(pick(*texts));
    }
    const Names header{"g", "x", "t", "f", "z"};
    const CaseOptions options{.missingTexts = {"?"}, .withoutReference = {"f"}};
    model_.together = false;
    Bind(header, options);
    const std::vector<Scored> alone = Score(fields);
    const std::vector<UnlistedValues> unlistedAlone = unlisted_->Met();
    for (const size_t rowsOfBlock : {TableScorer::kRows, size_t{1}, size_t{100}}) {
        model_.together = true;
        Bind(header, options);
        const std::vector<Scored> scored = Score(fields, rowsOfBlock);
        ASSERT_EQ(scored.size(), alone.size());
        size_t together = 0;
        for (size_t row = 0; row < alone.size(); ++row) {
            ASSERT_EQ(scored[row].prediction, alone[row].prediction) << row;
            ASSERT_EQ(scored[row].status, alone[row].status) << row;
            ASSERT_EQ(scored[row].field, alone[row].field) << row;
            ASSERT_EQ(scored[row].text, alone[row].text) << row;
            together += scored[row].IsTogether() ? 1 : 0;
        }
        EXPECT_GT(together, 1000u);
        const std::vector<UnlistedValues> unlisted = unlisted_->Met();
        ASSERT_EQ(unlisted.size(), unlistedAlone.size());
        ASSERT_EQ(unlisted.size(), 1u);
        EXPECT_EQ(unlisted[0].count, unlistedAlone[0].count);
        EXPECT_EQ(unlisted[0].first, unlistedAlone[0].first);
    }
}

TEST_F(TableScorerTest, ALongTableGoesBlockByBlock)
{
    model_.AddNumber("x");
    Bind({"x"});
    constexpr int kRows = 1200;
    Names texts;
    for (int i = 0; i < kRows; ++i) texts.push_back(std::to_string(i));
    const std::vector<Scored> scored = Score(Texts(texts.begin(), texts.end()));
    ASSERT_EQ(scored.size(), size_t{kRows});
    for (int i = 0; i < kRows; ++i) {
        EXPECT_EQ(scored[static_cast<size_t>(i)].prediction, 2.0 * i);
        EXPECT_EQ(scored[static_cast<size_t>(i)].IsTogether(), i > 0);
    }
    EXPECT_EQ(model_.blocks->blocks, 3);  // of 512, 512 and 176 rows
}

TEST_F(TableScorerTest, MissingValuesAreReplacedAndOutliersSetToTheirLimitsInBlocksToo)
{
    SetLimits(model_.AddNumber("x"), 0.0, 10.0);
    model_.Add(TypeOf("z", ScoreDictVar::CATEGORICAL, ScoreDictVar::NUMERIC));
    model_.AddText("f", {"a", "b"});
    treatments_ = {{.name = "z", .missingValueReplacement = "4"},
                   {.name = "f", .missingValueReplacement = "b"}};
    Bind({"x", "z", "f"});
    Settle({"1", "1", "a"});
    const std::vector<Scored> scored =
        Score({"5", "", "a", "99", "1", "a", "-3", "1", "", "5", "1", "a"});
    const double wanted[] = {10 + 8, 20 + 2, 2 + 1, 10 + 2};
    for (size_t row = 0; row < std::size(wanted); ++row) {
        EXPECT_EQ(scored[row].prediction, wanted[row]) << row;
        EXPECT_TRUE(scored[row].IsTogether()) << row;
    }
    EXPECT_EQ(model_.alone, 0);
}

TEST_F(TableScorerTest, ColumnsOfTextsWithRoomAreReadAndTreatedTheSame)
{
    SetLimits(model_.AddNumber("x"), 0.0, 10.0);
    model_.AddNumber("y");
    DictVar& z = model_.Add(TypeOf("z", ScoreDictVar::CATEGORICAL, ScoreDictVar::NUMERIC));
    z.DeclareValue(std::make_unique<NumericValue>(99.0), "99", DictVar::Property::Missing);
    treatments_ = {{.name = "z", .missingValueReplacement = "4"}};
    Bind({"x", "y", "z"});
    rows_ = std::make_unique<TextRows>(3, true);
    constexpr int kRows = 150;
    Names texts;
    for (int i = 0; i < kRows; ++i) {
        texts.push_back(std::to_string(i - 70));
        texts.push_back(fmt::format("-{}.5", i));
        texts.push_back(i % 3 == 0 ? "99" : "10");
    }
    for (std::string& text : texts) text.reserve(kPlainNumberRoom);
    const Texts views(texts.begin(), texts.end());
    Settle(views);
    const std::vector<Scored> scored = Score(views);
    for (int i = 0; i < kRows; ++i) {
        const Scored& row = scored[static_cast<size_t>(i)];
        const double sum = std::clamp(i - 70, 0, 10) - (i + 0.5) + (i % 3 == 0 ? 4 : 10);
        EXPECT_EQ(row.prediction, 2.0 * sum) << i;
        EXPECT_TRUE(row.IsTogether()) << i;
    }
}

TEST_F(TableScorerTest, UnlistedValuesAreCountedAndTheLikelyReferenceIsNone)
{
    model_.AddText("f", {"a"}).SetAcceptsUnlisted(true);
    Bind({"f"}, {.withoutReference = {"f"}});
    Settle({"a"});
    Score({"ref", "q", "a", "ref", "ref"});
    Score({"ref", "q", "ref"});
    EXPECT_EQ(model_.alone, 0);
    ASSERT_EQ(unlisted_->Met().size(), 1u);
    EXPECT_EQ(unlisted_->Met()[0].count, 2);
    EXPECT_EQ(unlisted_->Met()[0].first, (Names{"ref", "q"}));
}

TEST_F(TableScorerTest, NumbersThatAreNotListedAreCountedToo)
{
    DictVar& code = model_.Add(TypeOf("code", ScoreDictVar::CATEGORICAL, ScoreDictVar::NUMERIC));
    code.DeclareValue(std::make_unique<NumericValue>(1.0), "1", DictVar::Property::Valid);
    code.SetAcceptsUnlisted(true);
    model_.AddNumber("x").SetAcceptsUnlisted(true);  // which lists none
    Bind({"code", "x"});
    Settle({"1", "0"});
    const double codes[] = {1.0, 7.0, 7.5};
    const double numbers[] = {0.0, 1.0, 0.0};
    TableColumn columns[2];
    columns[0].numbers = codes;
    columns[1].numbers = numbers;
    ScoreBlock({3, columns});
    Score({"1", "2", "7", "0"});
    ASSERT_EQ(unlisted_->Met().size(), 2u);
    EXPECT_EQ(unlisted_->Met()[0].count, 3);
    EXPECT_EQ(unlisted_->Met()[0].first, (Names{"7", "7.5"}));
    EXPECT_EQ(unlisted_->Met()[1].count, 6);
}

TEST_F(TableScorerTest, TextsThatAppearLateAreBoundOnce)
{
    model_.AddText("f", {"a", "b", "c"});
    Bind({"f"});
    Settle({"a"});
    Score({"a", "b"});
    Score({"b", "a", "a"});
    EXPECT_EQ(model_.blocks->timesBound, 1);
    const std::vector<Scored> scored = Score({"b", "c", "a"});
    EXPECT_EQ(model_.blocks->timesBound, 2);
    EXPECT_EQ(scored[1].prediction, 2.0);
    EXPECT_TRUE(scored[1].IsTogether());
}

TEST_F(TableScorerTest, TooManyTextsGoAloneAndTheOthersStayTogether)
{
    Names texts;
    constexpr size_t kTexts = BlockRoad::kMostTexts + 200;
    for (size_t i = 0; i < kTexts; ++i) texts.push_back("t" + std::to_string(i));
    model_.AddText("f", texts);
    Bind({"f"});
    Settle({"t0"});
    const Texts fields(texts.begin(), texts.end());
    for (int round = 0; round < 2; ++round) {
        const std::vector<Scored> scored = Score(fields);
        size_t together = 0;
        for (size_t i = 0; i < kTexts; ++i) {
            ASSERT_EQ(scored[i].prediction, static_cast<double>(i));
            together += scored[i].IsTogether() ? 1 : 0;
        }
        EXPECT_EQ(together, BlockRoad::kMostTexts);
    }
    EXPECT_EQ(model_.blocks->mostTexts, BlockRoad::kMostTexts);
}

TEST_F(TableScorerTest, LongTextsTakeNoMoreMemoryThanTheirBound)
{
    const std::string category(BlockRoad::kMostTextBytes / 2 + 1, 'a');
    const std::string other(BlockRoad::kMostTextBytes / 2 + 1, 'b');
    model_.AddText("f", {category, other});
    Bind({"f"});
    Settle({category});
    EXPECT_TRUE(Score({category})[0].IsTogether());
    const Scored further = Score({other})[0];
    EXPECT_FALSE(further.IsTogether());
    EXPECT_EQ(further.prediction, 1.0);
}

TEST_F(TableScorerTest, ColumnsOfNumbersAndCodesGoAsTextsDo)
{
    model_.AddNumber("x");
    model_.AddText("f", {"a", "b"});
    Bind({"f", "x"});
    Settle({"a", "1"});
    // More rows than a multiple of the kernels', and one that is none.
    for (const size_t rows : {size_t{16}, size_t{11}}) {
        constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
        std::vector<double> numbers(16);
        std::vector<int32_t> codes(16);
        for (size_t i = 0; i < 16; ++i) {
            numbers[i] = static_cast<double>(i) + 0.5;
            codes[i] = static_cast<int32_t>(i % 2);
        }
        numbers[4] = kNaN;
        codes[5] = 2;  // "q", no category
        codes[6] = 99;
        const Texts dictionary{"b", "a", "q"};
        const uint8_t numberBits[] = {0b11111101, 0xff};  // row 1 has no number
        const uint8_t codeBits[] = {0b11111011, 0xff};    // row 2 has no text
        TableColumn columns[2];
        columns[0].codes = codes.data();
        columns[0].dictionary = dictionary;
        columns[0].present = codeBits;
        columns[1].numbers = numbers.data();
        columns[1].present = numberBits;
        const std::vector<Scored> scored = ScoreBlock({rows, columns});
        const std::map<size_t, std::pair<std::string, std::string>> refused{
            {1, {"x", ""}}, {2, {"f", ""}}, {4, {"x", "nan"}}, {5, {"f", "q"}}, {6, {"f", ""}}};
        for (size_t row = 0; row < rows; ++row) {
            const auto found = refused.find(row);
            if (found == refused.end()) {
                const double position = codes[row] == 0 ? 1.0 : 0.0;
                EXPECT_EQ(scored[row].prediction, 2.0 * numbers[row] + position) << row;
                EXPECT_TRUE(scored[row].IsTogether()) << row;
            } else {
                EXPECT_EQ(scored[row].status, MCScore::kCaseNotScorable) << row;
                EXPECT_EQ(scored[row].field, found->second.first) << row;
                EXPECT_EQ(scored[row].text, found->second.second) << row;
            }
        }
    }
}

TEST_F(TableScorerTest, ANumberIsATextToAVariableOfTextsAndATextANumber)
{
    model_.AddText("f", {"1", "2.5"});
    model_.AddNumber("x");
    Bind({"f", "x"});
    Settle({"1", "1"});
    const double numbers[] = {2.5, 1.0, 3.0};
    const int32_t codes[] = {1, 0, 0};
    const Texts dictionary{"10", "1e1"};
    TableColumn columns[2];
    columns[0].numbers = numbers;
    columns[1].codes = codes;
    columns[1].dictionary = dictionary;
    const std::vector<Scored> scored = ScoreBlock({3, columns});
    EXPECT_EQ(scored[0].prediction, 1.0 + 20.0);
    EXPECT_EQ(scored[1].prediction, 0.0 + 20.0);
    EXPECT_TRUE(scored[0].IsTogether() && scored[1].IsTogether());
    EXPECT_EQ(scored[2].field, "f");
    EXPECT_EQ(scored[2].text, "3");
}

// Beyond the rows of a borrowed column nothing may be read.
TEST_F(TableScorerTest, NumbersGoAsTheyAreWhereTheyHaveTheRoomThatKernelsRead)
{
    model_.AddNumber("x");
    Bind({"x"});
    Settle({"1"});
    const std::vector<double> numbers(24, 1.5);
    TableColumn column;
    column.numbers = numbers.data();
    ScoreBlock({24, std::span(&column, 1)});
    EXPECT_EQ(model_.blocks->numbers, numbers.data());
    ScoreBlock({23, std::span(&column, 1)});
    EXPECT_NE(model_.blocks->numbers, numbers.data());
}

TEST_F(TableScorerTest, TextsOfRefusedNumbersStandTogether)
{
    DictVar& x = model_.AddNumber("x");
    x.DeclareInterval({0.0, 1.0, true, true});
    x.EndDeclarations();
    Bind({"x"});
    Settle({"1"});
    std::vector<double> numbers;
    for (size_t i = 0; i < TableScorer::kRows; ++i) {
        numbers.push_back(-1.2345678901234567e-300 * static_cast<double>(i + 1));
    }
    TableColumn column;
    column.numbers = numbers.data();
    const ColumnBlock block{numbers.size(), std::span(&column, 1)};
    const std::vector<Scored> scored = ScoreBlock(block);
    for (size_t i = 0; i < numbers.size(); ++i) {
        ASSERT_TRUE(scored[i].text.has_value());
        ASSERT_EQ(NumericValue(*scored[i].text).GetDouble(), numbers[i]) << i;
    }
    const long before = AllocationCount();
    for (int round = 0; round < 3; ++round) scorer_->Score(block, *results_);
    EXPECT_EQ(AllocationCount(), before);
}

TEST_F(TableScorerTest, DatesCountFromTheOriginOfTheirVariable)
{
    DictVarType type = TypeOf("day", ScoreDictVar::CONTINUOUS, ScoreDictVar::DATETIME);
    type.dateTimeType = ScoreDictVar::DATE_DAYS_SINCE_1960;
    model_.Add(type);
    Bind({"day"});
    Settle({"1960-01-02"});
    const std::vector<Scored> scored = Score({"1960-01-11", "25", "soon", ""});
    EXPECT_EQ(scored[0].prediction, 20.0);
    EXPECT_EQ(scored[1].prediction, 50.0);
    EXPECT_TRUE(scored[0].IsTogether() && scored[1].IsTogether());
    EXPECT_EQ(scored[2].status, kCaseTextNotADateTime);
    EXPECT_EQ(scored[3].status, MCScore::kCaseNotScorable);
    const double numbers[] = {10.0, 25.0};
    TableColumn column;
    column.numbers = numbers;
    const std::vector<Scored> typed = ScoreBlock({2, std::span(&column, 1)});
    EXPECT_EQ(typed[0].prediction, 20.0);
    EXPECT_TRUE(typed[1].IsTogether());
}

TEST_F(TableScorerTest, AModelWithoutABlockScorerScoresEachRowAlone)
{
    model_.AddNumber("x");
    model_.together = false;
    Bind({"x"});
    const std::vector<Scored> scored = Score({"1", "2", "", "4"});
    EXPECT_EQ(model_.alone, 4);
    EXPECT_EQ(scored[3].prediction, 8.0);
    EXPECT_EQ(scored[2].status, MCScore::kCaseNotScorable);
}

TEST_F(TableScorerTest, WhileTheTraceIsOnEachRowGoesAlone)
{
    model_.AddNumber("x");
    ScoringLog::GetInstance()->SetLevel(1);
    Bind({"x"});
    ScoringLog::GetInstance()->SetLevel(0);
    Score({"1", "2", "3"});
    EXPECT_EQ(model_.alone, 3);
}

// Of a variable that the block scorer has no column for, it can't tell whether a case is sound.
TEST_F(TableScorerTest, AVariableWithoutAColumnIsJudgedAllTheSame)
{
    model_.AddNumber("x");
    model_.AddText("f", {"a"});
    model_.hasNoColumn = {"f"};
    Bind({"x", "f"});
    Settle({"1", "a"});
    const std::vector<Scored> scored = Score({"2", "a", "3", "q", "4", "", "5", "a"});
    EXPECT_TRUE(scored[0].IsTogether() && scored[3].IsTogether());
    EXPECT_EQ(scored[3].prediction, 10.0);
    EXPECT_EQ(scored[1].status, MCScore::kCaseNotScorable);
    EXPECT_EQ(scored[1].text, "q");
    EXPECT_EQ(scored[2].status, MCScore::kCaseNotScorable);
}

TEST_F(TableScorerTest, ABlockScorerThatWantsAVariableOfNoRecordIsLeft)
{
    model_.AddNumber("x");
    model_.AddNumber("y");
    model_.description.variables = {"x"};
    model_.wantsToo = "y";
    Bind({"x"});
    for (const Scored& each : Score({"1", "2", "3"})) EXPECT_EQ(each.stdDev, kAlone);
}

TEST_F(TableScorerTest, PredictedNumbersAreWhatTheTargetMakesOfThem)
{
    model_.AddNumber("x");
    model_.target = std::make_unique<DictVar>(NumberType("y"));
    TargetDeclaration target;
    target.maximum = 10.0;
    target.rescaleFactor = 0.1;
    target.rescaleConstant = 0.7;
    model_.target->SetTargetDeclaration(target);
    Bind({"x"});
    const std::vector<Scored> scored = Score({"3.3", "3.3", "99", "99"});
    EXPECT_EQ(scored[0].prediction, 6.6 * 0.1 + 0.7);
    EXPECT_EQ(scored[1].prediction, scored[0].prediction);
    EXPECT_EQ(scored[2].prediction, 10.0 * 0.1 + 0.7);
    EXPECT_TRUE(scored[1].IsTogether() && scored[2].IsTogether());
    // What becomes of 0 is no number then.
    target.rescaleConstant = NumericValue::GetSysmisValue();
    model_.target->SetTargetDeclaration(target);
    Bind({"x"});
    for (const Scored& each : Score({"0", "0"})) {
        EXPECT_EQ(each.status, 0);
        EXPECT_EQ(each.prediction, std::nullopt);
    }
}

TEST_F(TableScorerTest, WhatTheDocumentCannotGiveIsNoValueOnEitherRoad)
{
    model_.AddNumber("x");
    model_.description.quantities = {{"prediction", ""}, {"std_dev", "", true}};
    Bind({"x"});
    for (const Scored& each : Score({"1", "2", "3"})) {
        EXPECT_TRUE(each.prediction.has_value());
        EXPECT_EQ(each.stdDev, std::nullopt);
    }
    EXPECT_EQ(model_.alone, 1);
}

TEST_F(TableScorerTest, TheLinearPredictorIsTheLastColumnOfValuesWhenItIsAskedFor)
{
    model_.AddNumber("x");
    Bind({"x"}, {}, {.linearPredictor = true});
    ASSERT_EQ(scorer_->Schema().ValueCount(), 5u);
    Score({"1", "2", "", "4"});
    EXPECT_EQ(Number(4, 0), 1.0);
    EXPECT_EQ(Number(4, 1), 2.0);
    EXPECT_EQ(Number(4, 2), std::nullopt);
    EXPECT_EQ(Number(4, 3), 4.0);
    Bind({"x"}, {}, {.predictionOnly = true});
    ASSERT_EQ(scorer_->Schema().ValueCount(), 1u);
}

TEST_F(TableScorerTest, TheLinearPredictorsErrorIsComputedOnEitherRoadWhenItIsAskedFor)
{
    model_.AddNumber("x");
    model_.description.hasLinearPredictorError = true;
    Bind({"x"}, {}, {.linearPredictor = true});
    Score({"1", "2"});
    EXPECT_FALSE(model_.asked);
    Bind({"x"}, {}, {.linearPredictorError = true});
    ASSERT_EQ(scorer_->Schema().ValueCount(), 5u);
    Score({"1", "2", "", "-4"});
    EXPECT_TRUE(model_.asked);
    EXPECT_EQ(Number(4, 0), 0.5);
    EXPECT_EQ(Number(4, 1), 1.0);
    EXPECT_EQ(Number(4, 2), std::nullopt);
    EXPECT_EQ(Number(4, 3), std::nullopt);  // below 0 is no error
}

TEST_F(TableScorerTest, CasesAreVisitedAloneUntilTheVisitorHasEnough)
{
    model_.AddNumber("x");
    Bind({"x"});
    const Texts fields{"1", "", "3", "4"};
    std::vector<size_t> visited;
    scorer_->VisitCases(rows_->Block(fields), [&](size_t row, const CaseStatus& status,
                                                  const CaseRecord& record,
                                                  const ScoreResult* result) {
        EXPECT_EQ(status.IsOK(), row != 1);
        EXPECT_EQ(result == nullptr, row == 1);
        if (result != nullptr) {
            EXPECT_EQ(result->GetPrediction()->GetDouble(), 2.0 * record.GetValue(0)->GetDouble());
        }
        visited.push_back(row);
        return row < 2;
    });
    EXPECT_EQ(visited, (std::vector<size_t>{0, 1, 2}));
    EXPECT_EQ(model_.alone, 3);
}

TEST_F(TableScorerTest, AResultOfAnotherKindThanTheDescriptionTellsIsADefect)
{
    model_.AddNumber("x");
    model_.description.resultType = ScoreResult::CLR_RESULT;
    Bind({"x"});
    const Texts fields{"1"};
    EXPECT_THROW(scorer_->Score(rows_->Block(fields), *results_), std::logic_error);
}

TEST_F(TableScorerTest, BlocksWithoutNewTextsAllocateNothing)
{
    model_.AddNumber("x");
    model_.AddText("f", {"a", "b", "a rather long name of a category"});
    treatments_ = {{.name = "f", .missingValueReplacement = "b"}};
    Bind({"x", "f"});
    Settle({"1", "a"});
    Texts fields;
    for (size_t i = 0; i < TableScorer::kRows; ++i) {
        fields.push_back(i % 2 == 0 ? "1.25" : "-3e1");
        fields.push_back(Texts{"a", "b", "a rather long name of a category", ""}[i % 4]);
    }
    const ColumnBlock block = rows_->Block(fields);
    scorer_->Score(block, *results_);
    const long before = AllocationCount();
    for (int i = 0; i < 100; ++i) scorer_->Score(block, *results_);
    EXPECT_EQ(AllocationCount(), before);
    EXPECT_EQ(model_.alone, 0);
}

// 1 / x, missing where x is, and no valid number at 0.
class Inverse final : public Expression {
public:
    explicit Inverse(const ScoreDictVar& var) : var_(var) {}
    void Evaluate(const ExpressionCase& c, ExpressionValue& value) const override
    {
        const ScoreValue* input = c.record->GetValue(var_.GetName());
        if (var_.IsMissing(input)) {
            value.SetMissing();
        } else {
            value.SetNumber(1.0 / input->GetDouble());
        }
    }
    void CollectInputs(std::vector<const ScoreDictVar*>& inputs) const override
    {
        inputs.push_back(&var_);
    }
    int Height() const override { return 1; }

private:
    const ScoreDictVar& var_;
};

class DerivedTest : public TableScorerTest {
protected:
    DerivedTest()
    {
        DictVar& x = model_.AddNumber("x");
        auto transformations = std::make_unique<TransformationDictionary>();
        auto made =
            std::make_unique<TransformVar>(NumberType("made"), std::make_shared<Inverse>(x));
        transformations->AddVar("made", made.release());
        model_.SetTransformationScoreDictionary(transformations.release());
        model_.AddText("f", {"a", "b"}).SetAcceptsUnlisted(true);
        model_.description.variables = {"made", "f"};
    }
};

TEST_F(DerivedTest, DerivedFieldsAreComputedRowByRowAndScoredTogether)
{
    Bind({"f", "x"});
    const std::vector<Scored> scored =
        Score({"a", "2", "b", "4", "a", "0", "a", "", "b", "two", "a", "0.5"});
    const std::optional<double> wanted[] = {1.0,          1.5,          std::nullopt,
                                            std::nullopt, std::nullopt, 4.0};
    for (size_t row = 0; row < std::size(wanted); ++row) {
        EXPECT_EQ(scored[row].prediction, wanted[row]) << row;
        EXPECT_EQ(scored[row].IsTogether(), row > 0 && wanted[row].has_value()) << row;
    }
    EXPECT_EQ(scored[2].field, "x");
    EXPECT_EQ(scored[2].text, "0");
    EXPECT_EQ(scored[3].status, MCScore::kCaseNotScorable);
    EXPECT_EQ(scored[4].status, kCaseTextNotANumber);
}

TEST_F(DerivedTest, ADerivedFieldMayStandBesideWhatItIsComputedFrom)
{
    model_.description.variables = {"x", "made", "f"};
    Bind({"f", "x"});
    Settle({"a", "1"});
    EXPECT_EQ(Score({"b", "4"})[0].prediction, 8.0 + 0.5 + 1.0);
    EXPECT_EQ(model_.alone, 0);
}

TEST_F(DerivedTest, UnlistedValuesAreCountedOnce)
{
    Bind({"f", "x"});
    Settle({"a", "1"});
    Score({"q", "2", "a", "4", "q", "8"});
    EXPECT_EQ(model_.alone, 0);
    ASSERT_EQ(unlisted_->Met().size(), 1u);
    EXPECT_EQ(unlisted_->Met()[0].count, 2);
}

TEST_F(DerivedTest, ItsBlocksAllocateNothing)
{
    Bind({"f", "x"});
    Settle({"a", "1"});
    Texts fields;
    for (size_t i = 0; i < TableScorer::kRows; ++i) fields.insert(fields.end(), {"b", "2"});
    const ColumnBlock block = rows_->Block(fields);
    scorer_->Score(block, *results_);
    const long before = AllocationCount();
    for (int i = 0; i < 20; ++i) scorer_->Score(block, *results_);
    EXPECT_EQ(AllocationCount(), before);
    EXPECT_EQ(model_.alone, 0);
}

// A text of no bytes at 0, missing where x is, else "a".
class Named final : public Expression {
public:
    explicit Named(const ScoreDictVar& var) : var_(var) {}
    void Evaluate(const ExpressionCase& c, ExpressionValue& value) const override
    {
        const ScoreValue* input = c.record->GetValue(var_.GetName());
        if (var_.IsMissing(input)) {
            value.SetMissing();
        } else {
            value.SetText(input->GetDouble() == 0.0 ? "" : "a");
        }
    }
    void CollectInputs(std::vector<const ScoreDictVar*>& inputs) const override
    {
        inputs.push_back(&var_);
    }
    int Height() const override { return 1; }

private:
    const ScoreDictVar& var_;
};

TEST_F(TableScorerTest, ADerivedTextThatIsMissingIsNotTheEmptyText)
{
    DictVar& x = model_.AddNumber("x");
    auto transformations = std::make_unique<TransformationDictionary>();
    auto made = std::make_unique<TransformVar>(TextType("made"), std::make_shared<Named>(x));
    transformations->AddVar("made", made.release());
    model_.SetTransformationScoreDictionary(transformations.release());
    model_.description.variables = {"made"};
    Bind({"x"});
    Settle({"1"});
    const std::vector<Scored> scored = Score({"0", "", "1"});
    EXPECT_EQ(scored[0].status, 0);
    EXPECT_EQ(scored[1].status, MCScore::kCaseNotScorable);
    EXPECT_EQ(scored[1].field, "x");
    EXPECT_TRUE(scored[0].IsTogether() && scored[2].IsTogether());
}

// A model of two categories, whose block scorer has them in another order than the description: a
// where x is above 0, which is x's probability.
class TwoClasses final : public Doubling {
public:
    class Blocks final : public BatchScorer {
    public:
        explicit Blocks(const ScoreDictVar* x) : x_(x) {}
        std::span<const ScoreDictVar* const> Inputs() const override { return {&x_, 1}; }
        std::span<const std::string> Categories() const override { return categories_; }
        std::unique_ptr<Scratch> MakeScratch() const override
        {
            return std::make_unique<Scratch>();
        }
        void BindTexts(size_t, std::span<const std::string_view>, Scratch&) const override {}
        void Score(std::span<const BatchColumn> inputs, size_t rows, const BatchResults& results,
                   uint64_t* unsure, Scratch&) const override
        {
            std::fill(unsure, unsure + kRows / 64, 0);
            for (size_t row = 0; row < rows; ++row) {
                const double x = inputs[0].numbers[row];
                results.category[row] = x > 0.5 ? 0 : 1;
                if (results.probabilities == nullptr) continue;
                results.probabilities[0][row] = x;
                results.probabilities[1][row] = 1.0 - x;
            }
        }

    private:
        const ScoreDictVar* x_;
        std::vector<std::string> categories_{"a", "b"};
    };

    MCScore::MCStatus ScoreRow(ScoringState&, const ScoreCaseRecord* record, ScoreResult*& result,
                               bool) const override
    {
        ++alone;
        const double x = record->GetValue("x")->GetDouble();
        delete result;
        auto made = std::make_unique<MLRResult>(target.get());
        made->SetPrediction(target->MakeValue(x > 0.5 ? "a" : "b"));
        made->AddValuePercent(target->MakeValue("b"), 1.0 - x);
        made->AddValuePercent(target->MakeValue("a"), x);
        result = made.release();
        return {};
    }
    std::unique_ptr<BatchScorer> MakeBatchScorer() const override
    {
        return std::make_unique<Blocks>(FindVar("x"));
    }
};

TEST(TableScorerOfCategories, BothRoadsUseTheDescriptionsOrderOfCategories)
{
    TwoClasses model;
    model.AddNumber("x");
    model.target = std::make_unique<DictVar>(TextType("y"));
    model.description.resultType = ScoreResult::MLR_RESULT;
    model.description.targetCategories = {"b", "a"};
    for (const bool predictionOnly : {false, true}) {
        model.alone = 0;
        TableScorer scorer(model, model.description, {}, Names{"x"}, "cases.csv", {},
                           {.predictionOnly = predictionOnly});
        const Texts fields{"0.75", "0.25", "0.625"};
        const double ofA[] = {0.75, 0.25, 0.625};
        TextRows rows(1);
        ResultBlock results(scorer.Schema());
        scorer.Score(rows.Block(fields), results);
        EXPECT_EQ(model.alone, 1);
        for (size_t row = 0; row < 3; ++row) {
            ASSERT_TRUE(HasRow(results.columns[0].present, row));
            const auto code = static_cast<size_t>(results.columns[0].codes[row]);
            EXPECT_EQ(results.categories[code].text, ofA[row] > 0.5 ? "a" : "b");
            if (predictionOnly) continue;
            EXPECT_EQ(results.columns[1].numbers[row], 1.0 - ofA[row]);
            EXPECT_EQ(results.columns[2].numbers[row], ofA[row]);
        }
    }
}

TEST(TableScorerOfCategories, ABlockScorerOfOtherCategoriesIsLeft)
{
    for (const Names& categories : {Names{"b", "c"}, Names{"b", "a", "c"}}) {
        TwoClasses model;
        model.AddNumber("x");
        model.target = std::make_unique<DictVar>(TextType("y"));
        model.description.resultType = ScoreResult::MLR_RESULT;
        model.description.targetCategories = categories;
        TableScorer scorer(model, model.description, {}, Names{"x"}, "cases.csv");
        const Texts fields{"0.75", "0.25"};
        TextRows rows(1);
        ResultBlock results(scorer.Schema());
        scorer.Score(rows.Block(fields), results);
        EXPECT_EQ(model.alone, 2);
        // A category that the description doesn't list is told all the same.
        const auto code = static_cast<size_t>(results.columns[0].codes[0]);
        EXPECT_EQ(results.categories[code].text, "a");
        // One that no result knows has no probability.
        EXPECT_FALSE(HasRow(results.columns[categories.size()].present, 0));
    }
}

}  // namespace
}  // namespace MCVelscore_850
