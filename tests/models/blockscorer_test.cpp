// The block scorer of a model gives every row that it scores the bits of ScoreRow, whatever the
// instruction set, and leaves every row that ScoreRow doesn't score: models of all families that
// are drawn, over rows that are drawn, the odd ones among them.
//
// VELSCORE_TEST_ROWS says over how many rows a family and link, 100,000 without it.

#include "models/blockscorer.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <latch>
#include <limits>
#include <thread>

#include "host/values/datetimetext.h"
#include "host/values/datetimevalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/caserecord.h"
#include "models/coxregresult.h"
#include "models/coxregrmodel.h"
#include "models/glrmodel.h"
#include "models/gzlrmodel.h"
#include "models/lrresult.h"
#include "models/mlrresult.h"
#include "models/ogzlrmodel.h"
#include "models/ormodel.h"
#include "tests/instructionsets.h"
#include "tests/models/drawnrows.h"
#include "tests/models/modelfixture.h"
#include "tests/models/randommodels.h"

namespace MCVelscore_850 {

namespace {

using namespace testing;

// The numbers among a row's results.
constexpr struct {
    const char* name;
    double* BatchResults::*column;
} kQuantities[] = {
    {"prediction", &BatchResults::prediction},
    {"linear predictor", &BatchResults::linearPredictor},
    {"std_dev", &BatchResults::stdDev},
    {"ci_lower", &BatchResults::ciLower},
    {"ci_upper", &BatchResults::ciUpper},
    {"cum_hazard", &BatchResults::cumHazard},
    {"error of the linear predictor", &BatchResults::linearPredictorError},
    {"risk", &BatchResults::risk},
    {"median survival", &BatchResults::medianSurvival},
};
enum : size_t {
    kPrediction,
    kLinearPredictor,
    kStdDev,
    kLower,
    kUpper,
    kHazard,
    kLinearPredictorError,
    kRisk,
    kMedian,
    kQuantityCount
};
static_assert(kQuantityCount == std::size(kQuantities));

// At which survival is asked for: among the times of drawn baselines, and beyond most of them.
constexpr double kAskedTimes[] = {0.25, 2.0, 100.0};

// Which of them a model has, and whether it has a category and probabilities, or survival at times.
struct Answered {
    bool quantities[kQuantityCount] = {};
    bool category = false;
    bool probabilities = false;
    bool survivals = false;
};

Answered AnsweredBy(const RegressionModel& model, int resultType)
{
    Answered answered;
    answered.quantities[kLinearPredictor] = model.GetModelType() != ScoreModel::TYPE_MLR;
    answered.quantities[kLinearPredictorError] = answered.quantities[kLinearPredictor];
    answered.quantities[kPrediction] = resultType != ScoreResult::MLR_RESULT;
    answered.category = resultType == ScoreResult::MLR_RESULT;
    answered.probabilities = answered.category && !model.GetPredictionOnly();
    const bool hasErrors = resultType == ScoreResult::LR_RESULT && !model.GetPredictionOnly();
    for (const size_t q : {kStdDev, kLower, kUpper}) answered.quantities[q] = hasErrors;
    answered.survivals = resultType == ScoreResult::COXREG_RESULT;
    for (const size_t q : {kHazard, kRisk, kMedian}) answered.quantities[q] = answered.survivals;
    return answered;
}

// The results of the rows of a block, with room beyond them that nobody writes to.
class Answers {
public:
    static constexpr double kUnwritten = 1234.5678;
    static constexpr int32_t kNoCategory = 12345678;
    static constexpr size_t kRoom = kRows + BatchScorer::kRowMultiple;

    explicit Answers(size_t categories)
        : probabilities(categories), survivals(std::size(kAskedTimes))
    {
        for (auto& column : numbers) column.resize(kRoom);
        for (auto& column : probabilities) column.resize(kRoom);
        for (auto& column : survivals) column.resize(kRoom);
        category.resize(kRoom);
        Forget();
    }
    void Forget()
    {
        for (auto& column : numbers) std::fill(column.begin(), column.end(), kUnwritten);
        for (auto& column : probabilities) std::fill(column.begin(), column.end(), kUnwritten);
        for (auto& column : survivals) std::fill(column.begin(), column.end(), kUnwritten);
        std::fill(category.begin(), category.end(), kNoCategory);
    }
    /// True when nothing stands beyond the vectors that hold the rows.
    bool EndsWith(size_t rows) const
    {
        constexpr size_t kStep = BatchScorer::kRowMultiple;
        const size_t end = (rows + kStep - 1) / kStep * kStep;
        const auto isUnwritten = [end](const std::vector<double>& column) {
            return std::all_of(column.begin() + static_cast<std::ptrdiff_t>(end), column.end(),
                               [](double each) { return each == kUnwritten; });
        };
        return std::all_of(std::begin(numbers), std::end(numbers), isUnwritten) &&
               std::all_of(probabilities.begin(), probabilities.end(), isUnwritten) &&
               std::all_of(survivals.begin(), survivals.end(), isUnwritten) &&
               std::all_of(category.begin() + static_cast<std::ptrdiff_t>(end), category.end(),
                           [](int32_t each) { return each == kNoCategory; });
    }

    /// True when some result of the row is infinite or no number.
    bool IsOdd(size_t row) const
    {
        const auto isOdd = [row](const std::vector<double>& column) {
            return !std::isfinite(column[row]);
        };
        return std::any_of(std::begin(numbers), std::end(numbers), isOdd) ||
               std::any_of(probabilities.begin(), probabilities.end(), isOdd);
    }

    std::vector<double> numbers[kQuantityCount];
    std::vector<int32_t> category;
    std::vector<std::vector<double>> probabilities;
    std::vector<std::vector<double>> survivals;  // by time of kAskedTimes
};

// A run of cases through ScoreRow.
class Run {
public:
    Run(const RegressionModel& model, std::span<const std::string> categories)
        : model_(model), categories_(categories), state_(model.MakeState())
    {
        state_->wantsLinearPredictorError = true;
        state_->survivalAsked.risk = true;
        state_->survivalAsked.median = true;
        state_->survivalAsked.times.assign(std::begin(kAskedTimes), std::end(kAskedTimes));
    }

    /// The code of its status, 0 for a case that is scored.
    long Score(const CaseRecord& record)
    {
        return model_.ScoreRow(*state_, &record, slot_.result, true).GetErrorCode();
    }
    int ResultType() const { return slot_.result->GetScoreResultType(); }
    /// What the last case was answered.
    void Give(const Answered& answered, Answers& answers, size_t row)
    {
        answers.numbers[kLinearPredictor][row] = state_->linearPredictor;
        answers.numbers[kLinearPredictorError][row] = state_->linearPredictorError;
        if (answered.quantities[kPrediction]) answers.numbers[kPrediction][row] = slot_.Number();
        if (answered.quantities[kStdDev]) {
            const auto& measured = slot_.As<LRResult>();
            answers.numbers[kStdDev][row] = measured.GetStdDev();
            answers.numbers[kLower][row] = measured.GetCIBottom();
            answers.numbers[kUpper][row] = measured.GetCITop();
        }
        if (answered.survivals) {
            answers.numbers[kHazard][row] = slot_.As<CoxRegResult>().GetCumHazardValue();
            answers.numbers[kRisk][row] = state_->survival.risk;
            answers.numbers[kMedian][row] = state_->survival.median;
            for (size_t i = 0; i < std::size(kAskedTimes); ++i) {
                answers.survivals[i][row] = state_->survival.survivals.at(i);
            }
        }
        if (answered.category) answers.category[row] = CategoryOf(*slot_.result->GetPrediction());
        if (answered.probabilities) GiveProbabilities(answers, row);
    }

private:
    int32_t CategoryOf(const ScoreValue& value) const
    {
        for (size_t c = 0; c < categories_.size(); ++c) {
            const bool is = value.Kind() == ScoreValue::STRING
                                ? static_cast<const StringValue&>(value).Text() == categories_[c]
                                : value.GetDouble() == std::strtod(categories_[c].c_str(), nullptr);
            if (is) return static_cast<int32_t>(c);
        }
        return -1;
    }
    void GiveProbabilities(Answers& answers, size_t row)
    {
        const auto& percents = slot_.As<MLRResult>().GetAllValuePercent();
        // A result keeps the order of its categories.
        for (size_t i = places_.size(); i < percents.size(); ++i) {
            places_.push_back(static_cast<size_t>(CategoryOf(*percents[i].first)));
        }
        for (size_t i = 0; i < percents.size(); ++i) {
            answers.probabilities[places_[i]][row] = percents[i].second;
        }
    }

    const RegressionModel& model_;
    std::span<const std::string> categories_;
    std::unique_ptr<ScoringState> state_;
    Slot slot_;
    std::vector<size_t> places_;  // by entry of the result, its category
};

// The block scorer of one instruction set, with what it writes.
class Scored {
public:
    Scored(const DrawnModel& drawn, std::shared_ptr<const BatchScorer> made, const char* name)
        : set(name), answers(made->Categories().size()), scorer_(std::move(made))
    {
        scratch_ = scorer_->MakeScratch();
        for (const ScoreDictVar* var : scorer_->Inputs()) {
            const auto found = std::find_if(drawn.columns.begin(), drawn.columns.end(),
                                            [&](const auto& column) { return column.var == var; });
            columns_.push_back(static_cast<size_t>(found - drawn.columns.begin()));
        }
        inputs_.resize(columns_.size());
        for (auto& column : answers.probabilities) probabilities_.push_back(column.data());
        for (auto& column : answers.survivals) survivals_.push_back(column.data());
    }

    const char* set;
    Answers answers;
    std::array<uint64_t, kRows / 64> unsure;

    std::span<const std::string> Categories() const { return scorer_->Categories(); }
    bool IsLeft(size_t row) const { return ((unsure[row / 64] >> (row % 64)) & 1) != 0; }
    void BindTexts(const Block& block)
    {
        for (size_t i = 0; i < columns_.size(); ++i) {
            if (!HasTexts(*scorer_->Inputs()[i])) continue;
            const std::vector<std::string>& texts = block.Texts(columns_[i]);
            const std::vector<std::string_view> views(texts.begin(), texts.end());
            scorer_->BindTexts(i, views, *scratch_);
        }
    }
    void Score(const Block& block, const Answered& wanted)
    {
        for (size_t i = 0; i < columns_.size(); ++i) {
            const Cells& cells = block.Of(columns_[i]);
            const bool texts = HasTexts(*scorer_->Inputs()[i]);
            inputs_[i].numbers = texts ? nullptr : cells.numbers;
            inputs_[i].codes = texts ? cells.codes : nullptr;
            inputs_[i].present = cells.lacksSome || block.rows % 2 == 0 ? cells.present : nullptr;
        }
        BatchResults results;
        for (size_t q = 0; q < kQuantityCount; ++q) {
            if (wanted.quantities[q]) results.*kQuantities[q].column = answers.numbers[q].data();
        }
        if (wanted.category) results.category = answers.category.data();
        if (wanted.probabilities) results.probabilities = probabilities_.data();
        if (wanted.survivals) {
            results.survivals = survivals_.data();
            results.survivalTimes = kAskedTimes;
        }
        answers.Forget();
        unsure.fill(~uint64_t{0});
        scorer_->Score(inputs_, block.rows, results, unsure.data(), *scratch_);
    }

private:
    std::shared_ptr<const BatchScorer> scorer_;
    std::unique_ptr<BatchScorer::Scratch> scratch_;
    std::vector<size_t> columns_;  // by input
    std::vector<BatchColumn> inputs_;
    std::vector<double*> probabilities_;
    std::vector<double*> survivals_;
};

// What a test has seen, so that it can't pass by looking at nothing.
struct Seen {
    size_t rows = 0;
    size_t compared = 0;  // scored by the block
    size_t refused = 0;   // not scored by ScoreRow
    size_t good = 0;      // of good values and scored by ScoreRow
    size_t odd = 0;       // of those, with some result that isn't a finite number
    size_t errors = 0;    // of those, with an error of the linear predictor above 0
    size_t models = 0;
    size_t withoutBlocks = 0;
};

constexpr size_t kSizes[] = {1, 7, 8, 9, 511, 512};
constexpr size_t kBlocksOfModel = 4;
constexpr Mixture kMixtures[] = {{10, 2}, {25, 0}, {3, 0}, {60, 0}};
constexpr Mixture kPlainMixture = {0, 0};

// Compares the block scorers of one drawn model with ScoreRow.
class Comparison {
public:
    Comparison(DrawnModel& drawn, Draw& draw, std::span<const char* const> sets, Seen& seen)
        : drawn_(drawn), draw_(draw), seen_(seen)
    {
        for (const char* set : sets) {
            const kernels::BlockKernels* kernels = kernels::KernelsOf(set);
            if (kernels == nullptr) continue;
            std::shared_ptr<const BatchScorer> scorer = drawn.Get().MakeBlockScorer(*kernels);
            if (scorer != nullptr) scored_.emplace_back(drawn, std::move(scorer), set);
        }
    }
    bool HasBlocks() const { return !scored_.empty(); }

    void Compare(bool plain)
    {
        Block block(drawn_);
        RowRecord record(drawn_);
        Run run(drawn_.Get(), scored_.front().Categories());
        // The first case of a run is scored by itself.
        block.Fill(draw_, 1, kPlainMixture);
        record.Take(block, 0);
        run.Score(record.Get());
        const Answered answered = AnsweredBy(drawn_.Get(), run.ResultType());
        Answers expected(scored_.front().Categories().size());
        for (size_t i = 0; i < kBlocksOfModel; ++i) {
            if (i == kBlocksOfModel / 2) block.TurnTexts();
            block.Fill(draw_, draw_.Of(kSizes), plain ? kPlainMixture : draw_.Of(kMixtures));
            ScoreRows(block, record, run, answered, expected);
            const Answered wanted = DrawWanted(answered);
            for (Scored& scored : scored_) {
                if (i == 0 || i == kBlocksOfModel / 2) scored.BindTexts(block);
                scored.Score(block, wanted);
                ASSERT_NO_FATAL_FAILURE(CompareRows(block, wanted, expected, scored));
            }
            Count(block.rows);
        }
    }

private:
    void ScoreRows(const Block& block, RowRecord& record, Run& run, const Answered& answered,
                   Answers& expected)
    {
        expected.Forget();
        for (size_t row = 0; row < block.rows; ++row) {
            good_[row] = record.Take(block, row);
            isScored_[row] = run.Score(record.Get()) == 0;
            if (isScored_[row]) run.Give(answered, expected, row);
            good_[row] = good_[row] && isScored_[row];
            if (good_[row] && expected.IsOdd(row)) ++seen_.odd;
            if (good_[row] && expected.numbers[kLinearPredictorError][row] > 0.0) ++seen_.errors;
        }
    }
    Answered DrawWanted(Answered answered)
    {
        // Now and then nothing but what a model predicts.
        const size_t leftOut = draw_.Once(8) ? 1 : 5;
        for (bool& quantity : answered.quantities) quantity = quantity && !draw_.Once(leftOut);
        answered.category = answered.category && !draw_.Once(5);
        answered.probabilities = answered.probabilities && !draw_.Once(5);
        answered.survivals = answered.survivals && !draw_.Once(5);
        return answered;
    }
    void CompareRows(const Block& block, const Answered& wanted, const Answers& expected,
                     const Scored& scored)
    {
        ASSERT_TRUE(scored.answers.EndsWith(block.rows)) << scored.set;
        for (size_t row = 0; row < block.rows; ++row) {
            if (scored.IsLeft(row)) {
                ASSERT_TRUE(!good_[row] || drawn_.leavesGoodRows)
                    << scored.set << " leaves the good row " << row << " of " << block.rows;
                continue;
            }
            ASSERT_TRUE(isScored_[row]) << scored.set << " scores row " << row << " of "
                                        << block.rows << ", which ScoreRow doesn't";
            for (size_t q = 0; q < kQuantityCount; ++q) {
                if (!wanted.quantities[q]) continue;
                ASSERT_TRUE(SameBits(scored.answers.numbers[q][row], expected.numbers[q][row]))
                    << std::hexfloat << scored.set << ", row " << row << ", " << kQuantities[q].name
                    << ": " << scored.answers.numbers[q][row] << " for "
                    << expected.numbers[q][row];
            }
            if (wanted.category) {
                ASSERT_EQ(scored.answers.category[row], expected.category[row])
                    << scored.set << ", row " << row;
            }
            for (size_t i = 0; wanted.survivals && i < std::size(kAskedTimes); ++i) {
                ASSERT_TRUE(SameBits(scored.answers.survivals[i][row], expected.survivals[i][row]))
                    << std::hexfloat << scored.set << ", row " << row << ", survival at "
                    << kAskedTimes[i] << ": " << scored.answers.survivals[i][row] << " for "
                    << expected.survivals[i][row];
            }
            for (size_t c = 0; wanted.probabilities && c < expected.probabilities.size(); ++c) {
                ASSERT_TRUE(
                    SameBits(scored.answers.probabilities[c][row], expected.probabilities[c][row]))
                    << std::hexfloat << scored.set << ", row " << row << ", category " << c << ": "
                    << scored.answers.probabilities[c][row] << " for "
                    << expected.probabilities[c][row];
            }
        }
        for (size_t row = block.rows; row < kRows; ++row) {
            ASSERT_FALSE(scored.IsLeft(row)) << scored.set << ", row " << row << " beyond";
        }
    }
    void Count(size_t rows)
    {
        seen_.rows += rows;
        for (size_t row = 0; row < rows; ++row) {
            seen_.compared += scored_.front().IsLeft(row) ? 0 : 1;
            seen_.refused += isScored_[row] ? 0 : 1;
            seen_.good += good_[row] ? 1 : 0;
        }
    }

    DrawnModel& drawn_;
    Draw& draw_;
    Seen& seen_;
    std::vector<Scored> scored_;
    bool good_[kRows];
    bool isScored_[kRows];
};

size_t WantedRows()
{
    const char* rows = std::getenv("VELSCORE_TEST_ROWS");
    return rows == nullptr ? 100'000 : std::strtoull(rows, nullptr, 10);
}

uint64_t SeedOf(const DrawnFamily& family, uint64_t round, bool plain)
{
    constexpr uint64_t kLinks = 64;
    return (round * kLinks + static_cast<uint64_t>(family.link)) * 2 + (plain ? 1 : 0);
}

// Models after models until so many rows are compared.
void CompareModels(const DrawnFamily& family, std::span<const char* const> sets, bool plain,
                   size_t rows, Seen& seen)
{
    for (uint64_t round = 0; seen.rows < rows; ++round) {
        SCOPED_TRACE(::testing::Message() << family.name << ", round " << round);
        Draw draw(SeedOf(family, round, plain));
        const auto drawn = family.make(draw, plain, family.link);
        Comparison comparison(*drawn, draw, sets, seen);
        ++seen.models;
        if (comparison.HasBlocks()) {
            ASSERT_NO_FATAL_FAILURE(comparison.Compare(plain));
        } else {
            ASSERT_TRUE(drawn->mayLackBlocks);
            ++seen.withoutBlocks;
        }
    }
}

class BlockScorerOfFamily : public ::testing::TestWithParam<DrawnFamily> {};
INSTANTIATE_TEST_SUITE_P(Families, BlockScorerOfFamily, ::testing::ValuesIn(DrawnFamilies()),
                         [](const auto& family) { return std::string(family.param.name); });

TEST_P(BlockScorerOfFamily, GivesTheBitsOfScoreRow)
{
    Seen seen;
    ASSERT_NO_FATAL_FAILURE(
        CompareModels(GetParam(), kernels::kInstructionSets, false, WantedRows(), seen));
    EXPECT_GT(seen.compared, seen.rows / 2);
    EXPECT_GT(seen.refused, seen.rows / 200);
    // A probability that is no finite number is no score of a normalized model; a distribution
    // function makes a finite one of an infinite linear predictor, the sums alone don't.
    const std::string_view name = GetParam().name;
    if (name == "NormalizedSimplemax" || name == "NormalizedNone") {
        EXPECT_LE(seen.odd, seen.rows / 1000);
    } else if (!name.starts_with("Normalized")) {
        EXPECT_GT(seen.odd, seen.rows / 1000);
    }
    EXPECT_LT(seen.withoutBlocks, seen.models / 4 + 1);
}

class BlockScorerOfSet : public ::testing::TestWithParam<const char*> {};
INSTANTIATE_TEST_SUITE_P(InstructionSets, BlockScorerOfSet,
                         ::testing::ValuesIn(kernels::SetsOfThisProcessor()),
                         [](const auto& set) { return std::string(set.param); });

TEST_P(BlockScorerOfSet, ScoresEveryRowOfGoodValuesOfAPlainModel)
{
    constexpr size_t kPlainRows = 1000;
    for (const DrawnFamily& family : DrawnFamilies()) {
        Seen seen;
        const char* const sets[] = {GetParam()};
        ASSERT_NO_FATAL_FAILURE(CompareModels(family, sets, true, kPlainRows, seen));
        EXPECT_EQ(seen.compared, seen.rows) << family.name;
        EXPECT_EQ(seen.good, seen.rows) << family.name;
        EXPECT_EQ(seen.withoutBlocks, 0U) << family.name;
    }
}

TEST_P(BlockScorerOfFamily, MeetsErrorsOfTheLinearPredictor)
{
    constexpr size_t kFewRows = 20'000;
    Seen seen;
    ASSERT_NO_FATAL_FAILURE(
        CompareModels(GetParam(), kernels::kInstructionSets, true, kFewRows, seen));
    const std::string_view name = GetParam().name;
    const bool hasSeveralEquations = name == "Multinomial" || name.starts_with("Normalized");
    EXPECT_EQ(seen.errors > seen.rows / 4, !hasSeveralEquations) << seen.errors;
}

// The blocks of a table, and what a run over them answers, one block after another: the rows that a
// block leaves go through ScoreRow, as the first row does, which is scored by itself.
using Table = std::vector<std::unique_ptr<Block>>;
struct TableAnswers {
    std::vector<Answers> blocks;
    std::vector<long> codes;  // of the rows that ScoreRow took
};

TableAnswers ScoreTable(DrawnModel& drawn, std::shared_ptr<const BatchScorer> scorer,
                        const Table& table)
{
    Scored scored(drawn, std::move(scorer), "");
    scored.BindTexts(*table.front());
    RowRecord record(drawn);
    Run run(drawn.Get(), scored.Categories());
    TableAnswers answers;
    record.Take(*table.front(), 0);
    answers.codes.push_back(run.Score(record.Get()));
    const Answered answered = AnsweredBy(drawn.Get(), run.ResultType());
    for (const auto& block : table) {
        scored.Score(*block, answered);
        for (size_t row = 0; row < block->rows; ++row) {
            if (!scored.IsLeft(row)) continue;
            record.Take(*block, row);
            answers.codes.push_back(run.Score(record.Get()));
            if (answers.codes.back() == 0) run.Give(answered, scored.answers, row);
        }
        answers.blocks.push_back(scored.answers);
    }
    return answers;
}

// True when the rows that were scored have the same bits.
bool AreSame(const TableAnswers& a, const TableAnswers& b)
{
    const auto same = [](const std::vector<double>& one, const std::vector<double>& other) {
        return std::equal(one.begin(), one.end(), other.begin(), other.end(), SameBits);
    };
    const auto sameBlocks = [&](const Answers& one, const Answers& other) {
        return one.category == other.category &&
               std::equal(std::begin(one.numbers), std::end(one.numbers), std::begin(other.numbers),
                          same) &&
               std::equal(one.probabilities.begin(), one.probabilities.end(),
                          other.probabilities.begin(), other.probabilities.end(), same) &&
               std::equal(one.survivals.begin(), one.survivals.end(), other.survivals.begin(),
                          other.survivals.end(), same);
    };
    return a.codes == b.codes && std::equal(a.blocks.begin(), a.blocks.end(), b.blocks.begin(),
                                            b.blocks.end(), sameBlocks);
}

TEST_P(BlockScorerOfFamily, ServesThreadsAtOnce)
{
    constexpr size_t kThreads = 8;
    constexpr size_t kBlocks = 6;
    const DrawnFamily& family = GetParam();
    Draw draw(SeedOf(family, 1, true));
    const auto drawn = family.make(draw, true, family.link);
    Table table;
    for (size_t i = 0; i < kBlocks; ++i) {
        table.push_back(std::make_unique<Block>(*drawn));
        table.back()->Fill(draw, kRows, kPlainMixture);
        table.back()->TakeAway(draw, 10);
    }
    const std::shared_ptr<const BatchScorer> scorer =
        drawn->Get().MakeBlockScorer(kernels::ChosenKernels());
    ASSERT_NE(scorer, nullptr);
    const TableAnswers alone = ScoreTable(*drawn, scorer, table);
    EXPECT_NEAR(static_cast<double>(alone.codes.size()), 0.1 * kBlocks * kRows, 100.0);

    std::latch begin(kThreads);
    std::vector<TableAnswers> answers(kThreads);
    std::vector<std::thread> threads;
    for (TableAnswers& each : answers) {
        threads.emplace_back([&] {
            begin.arrive_and_wait();
            each = ScoreTable(*drawn, scorer, table);
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const TableAnswers& each : answers) EXPECT_TRUE(AreSame(each, alone));
}

// Models that are never drawn, over drawn rows.
template <class Model>
class HandMade final : public DrawnModel {
public:
    Built<Model> built;

    explicit HandMade(std::unique_ptr<DictVar> target) : built(std::move(target)) {}
    RegressionModel& Get() override { return built.model; }
    void Covariate(const std::string& name)
    {
        columns.push_back({&built.Covariate(name), DrawnColumn::Any, {}, {}});
    }
    void Factor(const std::string& name, const std::vector<std::string>& texts)
    {
        columns.push_back({&built.Factor(name, texts), DrawnColumn::Listed, {}, texts});
    }
    const DictVar& Other(std::unique_ptr<DictVar> var)
    {
        const DictVar& added = *var;
        const std::string name = added.GetName();
        built.Dictionary().AddVar(name, var.release());
        columns.push_back({&added, DrawnColumn::Any, {}, {}});
        return added;
    }
    /// Compares its blocks with its cases.
    void Expect()
    {
        constexpr size_t kRounds = 8;
        built.model.FinishSetup();
        Seen seen;
        Draw draw(1);
        Comparison comparison(*this, draw, kernels::kInstructionSets, seen);
        ASSERT_TRUE(comparison.HasBlocks());
        for (size_t i = 0; i < kRounds; ++i) {
            ASSERT_NO_FATAL_FAILURE(comparison.Compare(i % 2 == 0));
        }
        EXPECT_GT(seen.compared, seen.rows / 2);
    }
};

// Cells of a factor of texts that are no position: below all, between two, and beyond.
TEST(BlockScorerOf, AFactorWhoseCellsAreNoCategories)
{
    for (const double odd : {-2.0, 0.5, 7.0, 1e300}) {
        HandMade<GLRModel> made(Continuous("y"));
        made.Factor("f", {"a", "b", "c"});
        const std::vector<double> cells = {0.0, odd, 1.0, 2.0, odd, 0.0};
        for (size_t p = 0; p < cells.size(); ++p) {
            std::string name = "p";
            name += std::to_string(p);
            made.built.Parameters({name});
        }
        ASSERT_TRUE(made.built.SetUp());
        for (size_t p = 0; p < cells.size(); ++p) {
            made.built.model.GetNumericPPMatrix()[p][0] = cells[p];
            std::string name = "p";
            name += std::to_string(p);
            made.built.Beta(name, 1.0 + static_cast<double>(p));
        }
        ASSERT_NO_FATAL_FAILURE(made.Expect()) << odd;
    }
}

// Thresholds alone, and one category alone.
TEST(BlockScorerOf, AnOrdinalScaleWithoutPredictors)
{
    for (const std::vector<std::string>& categories :
         {std::vector<std::string>{"lo", "mid", "hi"}, {"lo", "hi"}, {"only"}}) {
        HandMade<ORModel> made(Categorical("y", categories));
        made.built.Parameters({"threshold"});
        made.built.model.SetOffsetValue(0.25);
        ASSERT_TRUE(made.built.SetUp());
        for (size_t c = 0; c < categories.size(); ++c) {
            made.built.Beta(categories[c], "threshold", static_cast<double>(c) - 0.75);
        }
        ASSERT_NO_FATAL_FAILURE(made.Expect()) << categories.size();
    }
}

// Its offset is the design value at its own index, of which there may be none.
TEST(BlockScorerOf, AnOrdinalModelWhoseOffsetLiesBeyondItsParameters)
{
    for (const size_t parameters : {1U, 2U, 3U}) {
        HandMade<OGZLRModel> made(Categorical("y", {"lo", "mid", "hi"}));
        made.Covariate("x");
        made.built.model.SetOffsetVar(&made.Other(Continuous("o")));  // index 1
        const std::vector<std::string> names = {"threshold", "px", "pxx"};
        made.built.Parameters({names.begin(), names.begin() + static_cast<int>(parameters)});
        ASSERT_TRUE(made.built.SetUp());
        made.built.Beta("lo", "threshold", -0.5);
        made.built.Beta("mid", "threshold", 0.5);
        for (size_t p = 1; p < parameters; ++p) {
            made.built.Cell(names[p], "x", std::to_string(p));
            made.built.Beta("mid", names[p], 0.25);
        }
        ASSERT_NO_FATAL_FAILURE(made.Expect()) << parameters;
    }
}

// One category has nothing to choose below a mean of one half.
TEST(BlockScorerOf, AGeneralizedLinearModelOfOneCategory)
{
    HandMade<GZLRModel> made(Categorical("y", {"only"}));
    made.Covariate("x");
    made.built.Parameters({"p"});
    made.built.model.SetLinkFunction(GZLRModel::LINK_LOGIT);
    made.leavesGoodRows = true;
    ASSERT_TRUE(made.built.SetUp());
    made.built.Cell("p", "x", "2");
    made.built.Beta("p", 1.0);
    ASSERT_NO_FATAL_FAILURE(made.Expect());
}

// Trials of a variable that is null, limits of no level, and an event that isn't of the target.
TEST(BlockScorerOf, AGeneralizedLinearModelThatLacksPieces)
{
    for (const bool classifies : {false, true}) {
        HandMade<GZLRModel> made(classifies ? Categorical("y", {"no", "yes"}) : Continuous("y"));
        made.Covariate("x");
        made.built.Parameters({"p"});
        made.built.model.SetLinkFunction(GZLRModel::LINK_PROBIT);
        made.built.model.SetDistType(GZLRModel::DIST_BINOMIAL);
        if (!classifies) made.built.model.SetTrialsVar(nullptr);
        ASSERT_TRUE(made.built.SetUp());
        made.built.Cell("p", "x", "1");
        made.built.Beta("p", 0.5);
        made.built.model.CreatePCovMatrix()->SetCell("p", "p", 2.0);
        made.built.model.SetConfidenceLevel(1.0);
        ASSERT_NO_FATAL_FAILURE(made.Expect()) << classifies;
    }
}

TEST(BlockScorerOf, AGeneralLinearModelWithoutLimits)
{
    HandMade<GLRModel> made(Continuous("y"));
    made.Covariate("x");
    made.built.Parameters({"p"});
    ASSERT_TRUE(made.built.SetUp());
    made.built.Cell("p", "x", "1");
    made.built.Beta("p", 0.5);
    made.built.model.CreatePCovMatrix()->SetCell("p", "p", 2.0);
    made.built.model.SetDF(0.0);
    ASSERT_NO_FATAL_FAILURE(made.Expect());
}

// Dummies of one factor are one look-up where nothing is taken off them, and only there.
TEST(BlockScorerOf, ACoxModelWhoseDummiesAreCentred)
{
    const std::vector<double> points[] = {
        {0.0, 0.0, 0.0}, {0.0, 0.5, 0.0}, {0.5, 0.0, 0.0}, {0.0, 0.0, 2.0}, {0.5, 0.5, 0.5}};
    for (const std::vector<double>& point : points) {
        HandMade<CoxRegModel> made(Continuous("status"));
        made.Factor("f", {"a", "b", "c"});
        made.Covariate("x");
        made.built.Parameters({"pa", "pb", "pc"});
        made.built.model.SetEndTimeVariableName("x");
        made.built.model.SetCumHazardTable({{{-1.0, 0.25}, {0.0, 0.5}, {1.0, 0.75}}}, {}, "");
        made.built.model.SetMinMaxTime({-1.0}, {5.0});
        made.built.model.SetBasePointTable(point);
        ASSERT_TRUE(made.built.SetUp());
        for (const auto& [name, category] : {std::pair{"pa", "a"}, {"pb", "b"}, {"pc", "c"}}) {
            made.built.Cell(name, "f", category);
            made.built.Beta(name, 2.0);  // a reference of 1 at a base point of one half
        }
        ASSERT_NO_FATAL_FAILURE(made.Expect());
    }
}

// A category without a place in the contrasts is left to its case, which fails by it.
TEST(BlockScorerOf, ACoxModelWhoseContrastsLackPlaces)
{
    HandMade<CoxRegModel> made(Continuous("status"));
    made.Factor("f", {"a", "b", "c"});
    made.Covariate("x");
    made.built.Parameters({"pc", "px"});
    made.built.model.SetEndTimeVariableName("x");
    made.built.model.SetCumHazardTable({{{-1.0, 0.25}, {1.0, 0.75}}}, {}, "");
    made.built.model.SetMinMaxTime({-1.0}, {5.0});
    ASSERT_TRUE(made.built.model.SetContrastMatrix(
        "f", {{1.0, 0.0, 0.5}, {0.0, 1.0}, {0.5, 0.5, -1.0}},
        {new StringValue("a"), new StringValue("b"), new StringValue("c")}));
    ASSERT_TRUE(made.built.SetUp());
    made.built.Cell("pc", "f", "c");
    made.built.Cell("px", "x", "1");
    made.built.Beta("pc", 1.5);
    made.built.Beta("px", 0.25);
    ASSERT_NO_FATAL_FAILURE(made.Expect());
}

}  // namespace
}  // namespace MCVelscore_850
