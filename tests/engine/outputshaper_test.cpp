#include "engine/scoring/outputshaper.h"

#include <algorithm>
#include <limits>

#include <gtest/gtest.h>

#include "engine/messages/failure.h"
#include "engine/scoring/resultreader.h"
#include "engine/tables/rowtext.h"
#include "host/messages/messages.h"
#include "host/model/scoremodel.h"
#include "host/model/scoringstate.h"
#include "host/values/stringvalue.h"
#include "models/coxregresult.h"
#include "models/lrresult.h"
#include "tests/engine/fakemodel.h"

namespace MCVelscore_850 {
namespace {

using Names = std::vector<std::string>;
using Row = std::vector<std::string_view>;

// Writes through a shaper.
class OutputShaperTest : public testing::Test {
protected:
    OutputShaper Shaper(int resultType, OutputOptions options = {}, Names header = {"id", "x", "y"},
                        ResultOptions results = {})
    {
        description_.resultType = resultType;
        schema_ = std::make_unique<ResultSchema>(description_, results);
        reader_ = std::make_unique<ResultReader>(*schema_, nullptr);
        return OutputShaper(*schema_, header, "cases.csv", options);
    }
    // The row of a scored case, as a scorer puts it into a block.
    void WriteScored(const OutputShaper& shaper, const Row& fields, const ScoreResult& result)
    {
        ResultBlock results(*schema_);
        results.Begin(1);
        reader_->Read(result, ScoringState(), 0, results);
        results.categories = reader_->Categories();
        shaper.WriteRow(rows_, {fields}, results, 0);
    }
    std::string Written() const { return std::string(rows_.Text()); }

    RowText rows_;
    ModelDescription description_;
    std::unique_ptr<ResultSchema> schema_;
    std::unique_ptr<ResultReader> reader_;
};

// A classifying result over fixed percents, in an order of its own.
class Percents final : public ScoreClsResult {
public:
    Percents(const std::string& prediction, std::vector<std::pair<std::string, double>> percents)
        : prediction_(prediction)
    {
        for (auto& [category, percent] : percents) {
            values_.push_back(std::make_unique<StringValue>(category));
            percents_.emplace_back(values_.back().get(), percent);
        }
    }
    void SetPrediction(ScoreValue* value) override { delete value; }
    ScoreValue* GetPrediction() const override { return &prediction_; }
    const ScoreDictVar* GetTarget() const override { return nullptr; }
    void SetConfidence(double) override {}
    double GetConfidence() const override { return -1.0; }
    int GetScoreResultType() const override { return MLR_RESULT; }
    bool AddValuePercent(ScoreValue* value, double) override
    {
        delete value;
        return false;
    }
    double GetPercent(const ScoreValue*) const override { return -1.0; }
    const ValuePercents& GetAllValuePercent() const override { return percents_; }

private:
    mutable StringValue prediction_;
    std::vector<std::unique_ptr<StringValue>> values_;
    ValuePercents percents_;
};

TEST_F(OutputShaperTest, ColumnsFollowTheKindOfResult)
{
    description_.targetCategories = {"b", "a"};
    EXPECT_EQ(Shaper(ScoreResult::LR_RESULT).Columns(),
              (Names{"prediction", "std_dev", "ci_lower", "ci_upper", "status", "status_field"}));
    EXPECT_EQ(Shaper(ScoreResult::MLR_RESULT).Columns(),
              (Names{"prediction", "probability(b)", "probability(a)", "status", "status_field"}));
    EXPECT_EQ(Shaper(ScoreResult::CLR_RESULT).Columns(),
              (Names{"prediction", "status", "status_field"}));
    EXPECT_EQ(Shaper(ScoreResult::COXREG_RESULT).Columns(),
              (Names{"prediction", "cum_hazard", "status", "status_field"}));
}

TEST_F(OutputShaperTest, PredictionOnlyDropsTheOtherColumns)
{
    description_.targetCategories = {"b", "a"};
    for (const int type : {ScoreResult::LR_RESULT, ScoreResult::MLR_RESULT, ScoreResult::CLR_RESULT,
                           ScoreResult::COXREG_RESULT}) {
        EXPECT_EQ(Shaper(type, {}, {"id"}, {.predictionOnly = true}).Columns(),
                  (Names{"prediction", "status", "status_field"}));
    }
}

TEST_F(OutputShaperTest, ColumnsAreThoseOfTheListInItsOrder)
{
    description_.targetCategories = {"b", "a"};
    EXPECT_EQ(
        Shaper(ScoreResult::MLR_RESULT, {.columns = {"status", "probabilities", "prediction"}})
            .Columns(),
        (Names{"status", "probability(b)", "probability(a)", "prediction"}));
    EXPECT_EQ(Shaper(ScoreResult::MLR_RESULT, {.columns = {"probability(a)"}}).Columns(),
              Names{"probability(a)"});
}

TEST_F(OutputShaperTest, KeptColumnsComeFirstWithAPrefixOnAClash)
{
    const Names header{"prediction", "id", "input.status", "status"};
    EXPECT_EQ(Shaper(ScoreResult::CLR_RESULT, {.keepAll = true}, header).Columns(),
              (Names{"input.prediction", "id", "input.status", "input.input.status", "prediction",
                     "status", "status_field"}));
    EXPECT_EQ(Shaper(ScoreResult::CLR_RESULT, {.keep = {"id"}}, header).Columns(),
              (Names{"id", "prediction", "status", "status_field"}));
}

TEST_F(OutputShaperTest, KeptColumnThatIsNotThereIsWrongUsage)
{
    try {
        Shaper(ScoreResult::LR_RESULT, {.keep = {"ident"}});
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::Usage);
        EXPECT_EQ(failure.Code(), kUnknownKeptColumn);
    }
}

TEST_F(OutputShaperTest, LinearResultFillsItsColumnsAndKeepsTheInputsText)
{
    const OutputShaper shaper = Shaper(ScoreResult::LR_RESULT, {.keep = {"id", "x"}});
    LRResult result(nullptr);
    result.SetPrediction(new NumericValue(1.25));
    result.SetStdDev(0.5);
    result.SetCIBottom(-1.0);
    result.SetCITop(3.5);
    WriteScored(shaper, Row{"a,1", "01.50", "7"}, result);
    EXPECT_EQ(Written(), "\"a,1\",01.50,1.25,0.5,-1,3.5,0,\n");
}

TEST_F(OutputShaperTest, WhatIsNoNumberIsAnEmptyField)
{
    const double none = std::numeric_limits<double>::quiet_NaN();
    const OutputShaper shaper = Shaper(ScoreResult::LR_RESULT);
    LRResult result(nullptr);
    result.SetPrediction(new NumericValue(none));
    result.SetStdDev(-none);
    result.SetCIBottom(none);
    result.SetCITop(-none);
    WriteScored(shaper, Row{"1", "2", "3"}, result);
    EXPECT_EQ(Written(), ",,,,0,\n");
}

// What a model makes of the system-missing limit with 20, with 1 and with -1 trials.
TEST_F(OutputShaperTest, MissingLimitTimesTrialsIsAnEmptyField)
{
    const OutputShaper shaper = Shaper(ScoreResult::LR_RESULT);
    LRResult result(nullptr);
    result.SetPrediction(new NumericValue(3.0));
    result.SetStdDev(0.5);
    std::string wanted;
    for (const double trials : {20.0, 1.0, -1.0}) {
        result.SetCIBottom(1e300);
        result.SetCITop(NumericValue::GetSysmisValue() * trials);
        WriteScored(shaper, Row{"1", "2", "3"}, result);
        wanted += "3,0.5,1e+300,,0,\n";
    }
    EXPECT_EQ(Written(), wanted);
}

// bench/growth_bench.cpp tells whether these take time in proportion.
TEST_F(OutputShaperTest, ManyKeptColumnsAreNamedInTheirOrder)
{
    constexpr size_t kColumns = 100000;
    Names header;
    for (size_t i = 0; i < kColumns; ++i) header.push_back("a long name " + std::to_string(i));
    const OutputShaper shaper = Shaper(ScoreResult::CLR_RESULT, {.keepAll = true}, header);
    ASSERT_EQ(shaper.Columns().size(), kColumns + 3);
    EXPECT_TRUE(std::equal(header.begin(), header.end(), shaper.Columns().begin()));
}

TEST_F(OutputShaperTest, MissingNumbersAreEmptyFields)
{
    const OutputShaper shaper = Shaper(ScoreResult::LR_RESULT);
    LRResult result(nullptr);  // no error was written into it: -1, and no limits
    result.SetPrediction(new NumericValue(2.0));
    WriteScored(shaper, Row{"1", "2", "3"}, result);
    EXPECT_EQ(Written(), "2,,,,0,\n");
}

TEST_F(OutputShaperTest, NumbersThatTheDocumentCannotGiveAreEmptyFields)
{
    description_.quantities = {{"prediction", ""}, {"std_dev", "", true}, {"ci_upper", "", true}};
    const OutputShaper shaper = Shaper(ScoreResult::LR_RESULT);
    LRResult result(nullptr);
    result.SetPrediction(new NumericValue(2.0));
    result.SetStdDev(0.0);
    result.SetCIBottom(2.0);
    result.SetCITop(2.0);
    WriteScored(shaper, Row{"1", "2", "3"}, result);
    EXPECT_EQ(Written(), "2,,2,,0,\n");
}

TEST_F(OutputShaperTest, RowWithoutAScoreShowsStatusAndFieldAlone)
{
    const OutputShaper shaper = Shaper(ScoreResult::LR_RESULT, {.keep = {"id"}});
    const std::string field = "y";
    ResultBlock results(*schema_);
    results.Begin(1);
    results.SetFault(0, {90029, &field});
    shaper.WriteRow(rows_, {Row{"7", "2", "3"}}, results, 0);
    EXPECT_EQ(Written(), "7,,,,,90029,y\n");
}

TEST_F(OutputShaperTest, PercentsFindTheirColumnsWhateverTheResultsOrder)
{
    description_.targetCategories = {"b", "a", "c"};
    const OutputShaper shaper = Shaper(ScoreResult::MLR_RESULT);
    WriteScored(shaper, Row{"", "", ""}, Percents("a", {{"a", 0.75}, {"b", 0.25}}));
    WriteScored(shaper, Row{"", "", ""}, Percents("c", {{"b", 0.25}, {"c", 0.5}, {"a", 0.125}}));
    EXPECT_EQ(Written(), "a,0.25,0.75,,0,\nc,0.25,0.125,0.5,0,\n");
}

TEST_F(OutputShaperTest, CoxResultShowsItsCumulativeHazard)
{
    const OutputShaper shaper = Shaper(ScoreResult::COXREG_RESULT);
    CoxRegResult result(nullptr);
    result.SetPrediction(new NumericValue(0.5));
    result.SetCumHazardValue(0.75);
    WriteScored(shaper, Row{"", "", ""}, result);
    EXPECT_EQ(Written(), "0.5,0.75,0,\n");
}

}  // namespace
}  // namespace MCVelscore_850
