#include "engine/scoring/resultschema.h"

#include <limits>

#include <gtest/gtest.h>

#include "host/model/modeldescription.h"
#include "host/model/scoreresult.h"
#include "host/values/numericvalue.h"

namespace MCVelscore_850 {
namespace {

using Names = std::vector<std::string>;

Names NamesOf(const ResultSchema& schema)
{
    Names names;
    for (const ResultColumn& column : schema.Columns()) names.push_back(column.name);
    return names;
}

TEST(ResultSchema, ColumnsFollowTheKindOfResultAndTheOptions)
{
    ModelDescription description;
    description.targetCategories = {"b", "a"};
    description.equations.resize(1);
    struct Wanted {
        int type;
        Names all;
    };
    const Wanted wanted[] = {
        {ScoreResult::LR_RESULT, {"prediction", "std_dev", "ci_lower", "ci_upper"}},
        {ScoreResult::MLR_RESULT, {"prediction", "probability(b)", "probability(a)"}},
        {ScoreResult::CLR_RESULT, {"prediction"}},
        {ScoreResult::COXREG_RESULT, {"prediction", "cum_hazard"}}};
    for (const auto& [type, all] : wanted) {
        description.resultType = type;
        Names names = all;
        names.insert(names.end(), {"status", "status_field"});
        const ResultSchema schema(description);
        EXPECT_EQ(NamesOf(schema), names);
        EXPECT_EQ(schema.ValueCount(), all.size());
        names = all;
        names.insert(names.end(), {"linear_predictor", "status", "status_field"});
        EXPECT_EQ(NamesOf(ResultSchema(description, {.linearPredictor = true})), names);
        EXPECT_EQ(NamesOf(ResultSchema(description, {.predictionOnly = true})),
                  (Names{"prediction", "status", "status_field"}));
    }
}

TEST(ResultSchema, ModelsWithSeveralEquationsHaveNoLinearPredictor)
{
    ModelDescription description;
    description.resultType = ScoreResult::CLR_RESULT;
    description.equations.resize(2);
    EXPECT_EQ(NamesOf(ResultSchema(description, {.linearPredictor = true})),
              (Names{"prediction", "status", "status_field"}));
}

TEST(ResultSchema, TheLinearPredictorsErrorNeedsOneEquationAndCovariances)
{
    ModelDescription description;
    description.resultType = ScoreResult::COXREG_RESULT;
    description.equations.resize(1);
    const ResultOptions asked{.linearPredictorError = true};
    const Names without{"prediction", "cum_hazard", "status", "status_field"};
    EXPECT_EQ(NamesOf(ResultSchema(description, asked)), without);
    description.hasCovariances = true;
    EXPECT_EQ(NamesOf(ResultSchema(description, asked)), without) << "of a family that has none";
    description.hasLinearPredictorError = true;
    EXPECT_EQ(NamesOf(ResultSchema(description)), without);
    const ResultSchema schema(description, asked);
    EXPECT_EQ(NamesOf(schema), (Names{"prediction", "cum_hazard", "std_err(linear_predictor)",
                                      "status", "status_field"}));
    EXPECT_EQ(schema.Columns()[2].meaning, "standard error of the linear predictor");
    description.equations.resize(2);
    EXPECT_EQ(NamesOf(ResultSchema(description, asked)), without);
}

TEST(ResultSchema, OptionsForNamesTakeWhatCostsTimeOnlyWhereItIsNamed)
{
    ModelDescription description;
    description.resultType = ScoreResult::MLR_RESULT;
    description.targetCategories = {"b", "a"};
    description.equations.resize(1);
    description.hasCovariances = true;
    const auto asksForErrors = [&](const Names& names) {
        const ResultOptions options = OptionsFor(description, names);
        EXPECT_TRUE(options.linearPredictor);
        EXPECT_FALSE(options.predictionOnly);
        return options.linearPredictorError;
    };
    EXPECT_FALSE(asksForErrors({"status", "linear_predictor", "probabilities"}));
    EXPECT_FALSE(asksForErrors({"probability(a)", "prediction"}));
    EXPECT_TRUE(asksForErrors({"prediction", "std_err(linear_predictor)"}));
    EXPECT_TRUE(asksForErrors({"std_err"}));  // to be refused with all that there are
}

TEST(ResultSchema, OptionsForACoxModelAskForSurvivalAsItIsNamed)
{
    ModelDescription description;
    description.resultType = ScoreResult::COXREG_RESULT;
    description.equations.resize(1);
    const auto asked = [&](const Names& names) { return OptionsFor(description, names); };
    const ResultOptions all = asked({"survival@9.5", "risk", "median_survival", "survival@1e1"});
    EXPECT_TRUE(all.survival.risk && all.survival.median);
    EXPECT_FALSE(all.survival.endTime);
    EXPECT_EQ(NamesOf(ResultSchema(description, all)),
              (Names{"linear_predictor", "risk", "median_survival", "survival@1e1", "survival@9.5",
                     "status", "status_field"}));
    EXPECT_EQ(all.survival.times, (std::vector<double>{10.0, 9.5}));
    const ResultOptions risk = asked({"risk", "cum_hazard"});
    EXPECT_TRUE(risk.survival.risk && risk.survival.endTime);
    EXPECT_FALSE(risk.survival.median);
    EXPECT_FALSE(asked({"linear_predictor", "status"}).survival.endTime);
    EXPECT_TRUE(asked({"status"}).survival.endTime);
    // To be refused with all that there are.
    const ResultOptions unknown = asked({"rsk"});
    EXPECT_TRUE(unknown.survival.risk && unknown.survival.median && unknown.survival.endTime);
}

TEST(ResultSchema, PredictionsAreNumbersOrCategories)
{
    ModelDescription description;
    description.targetCategories = {"b", "a"};
    description.resultType = ScoreResult::LR_RESULT;
    const ResultSchema linear(description);
    EXPECT_EQ(linear.Columns().front().kind, ResultKind::Number);
    EXPECT_TRUE(linear.Categories().empty());
    description.resultType = ScoreResult::MLR_RESULT;
    const ResultSchema classes(description);
    EXPECT_EQ(classes.Columns()[0].kind, ResultKind::Category);
    EXPECT_EQ(classes.Columns()[1].kind, ResultKind::Number);
    EXPECT_EQ(classes.Columns()[2].category, 1u);
    EXPECT_EQ(classes.Columns()[3].kind, ResultKind::Status);
    EXPECT_EQ(classes.Columns()[4].kind, ResultKind::FieldName);
    EXPECT_EQ(classes.Categories(), (Names{"b", "a"}));
}

TEST(ResultSchema, ColumnsMeanWhatTheModelTellsOfThem)
{
    ModelDescription description;
    description.resultType = ScoreResult::LR_RESULT;
    description.quantities = {{"prediction", "mean of the target"}, {"std_dev", "error", true}};
    const ResultSchema schema(description);
    EXPECT_EQ(schema.Columns()[0].meaning, "mean of the target");
    EXPECT_FALSE(schema.Columns()[0].lacksCovariances);
    EXPECT_EQ(schema.Columns()[1].meaning, "error");
    EXPECT_TRUE(schema.Columns()[1].lacksCovariances);
    EXPECT_NE(schema.Columns()[4].meaning, "");  // of the status, which no model tells
}

TEST(ResultSchema, NumbersThatStandForNoneDoNotExist)
{
    constexpr double kMissing = NumericValue::GetSysmisValue();
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (const auto quantity :
         {ResultQuantity::Prediction, ResultQuantity::StdDev, ResultQuantity::CILower,
          ResultQuantity::CIUpper, ResultQuantity::Probability, ResultQuantity::CumHazard,
          ResultQuantity::LinearPredictor, ResultQuantity::LinearPredictorError,
          ResultQuantity::Risk, ResultQuantity::MedianSurvival, ResultQuantity::SurvivalAt}) {
        EXPECT_TRUE(ResultSchema::Exists(quantity, 0.0));
        EXPECT_TRUE(ResultSchema::Exists(quantity, 1e300));
        EXPECT_FALSE(ResultSchema::Exists(quantity, kMissing));
        EXPECT_FALSE(ResultSchema::Exists(quantity, kNaN));
        const bool error =
            quantity == ResultQuantity::StdDev || quantity == ResultQuantity::LinearPredictorError;
        EXPECT_EQ(ResultSchema::Exists(quantity, -1.0), !error);
        // A limit without a mean times a number of trials.
        const bool limit =
            quantity == ResultQuantity::CILower || quantity == ResultQuantity::CIUpper;
        EXPECT_EQ(ResultSchema::Exists(quantity, kInfinity), !limit);
        EXPECT_EQ(ResultSchema::Exists(quantity, -kMissing), !limit);
    }
    const double numbers[] = {1.0, kMissing, 0.0, kNaN, -1.0};
    EXPECT_EQ(ResultSchema::ExistingBits(ResultQuantity::StdDev, numbers, 5), 0b00101u);
    EXPECT_EQ(ResultSchema::ExistingBits(ResultQuantity::Prediction, numbers, 5), 0b10101u);
}

TEST(ResultSchema, NumbersOfTheSureRangeExist)
{
    for (const ResultQuantity quantity :
         {ResultQuantity::Prediction, ResultQuantity::StdDev, ResultQuantity::CILower,
          ResultQuantity::CIUpper, ResultQuantity::Probability, ResultQuantity::CumHazard,
          ResultQuantity::LinearPredictor, ResultQuantity::LinearPredictorError,
          ResultQuantity::Risk, ResultQuantity::MedianSurvival, ResultQuantity::SurvivalAt,
          ResultQuantity::ProbabilityError}) {
        const auto [low, high] = ResultSchema::SureRange(quantity);
        EXPECT_LT(low, high);
        for (const double number : {low, 0.0, 1.0, high}) {
            EXPECT_TRUE(ResultSchema::Exists(quantity, number))
                << static_cast<int>(quantity) << ": " << number;
        }
    }
}

}  // namespace
}  // namespace MCVelscore_850
