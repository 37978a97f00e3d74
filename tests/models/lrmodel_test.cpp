#include "models/lrmodel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "host/messages/scoringlog.h"
#include "host/values/datetimevalue.h"
#include "models/lrresult.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

// A linear model with the given slopes (predictors x0, x1, ..) and the intercept last.
class Linear : public Built<LRModel> {
public:
    explicit Linear(const std::vector<double>& slopes, double intercept, double df = 0.0)
    {
        std::vector<std::string> names;
        for (size_t i = 0; i < slopes.size(); ++i) {
            Covariate(std::string("x").append(std::to_string(i)));
            names.push_back(std::string("b").append(std::to_string(i)));
        }
        names.push_back("(Constant)");
        Parameters(names);
        model.SetDF(df);
        EXPECT_TRUE(SetUp());
        for (size_t i = 0; i < slopes.size(); ++i) Beta(names[i], slopes[i]);
        Beta("(Constant)", intercept);
    }
    Linear& Covariance(int i, int j, double value)
    {
        model.GetPCovMatrix()->SetCell(Name(i), Name(j), value);
        return *this;
    }
    LRModel& Ready()
    {
        model.FinishSetup();
        return model;
    }

private:
    std::string Name(int i) const
    {
        for (const auto& [name, index] : model.GetParameterMap()) {
            if (index == i) return name;
        }
        return "";
    }
};

Case Row(const std::vector<double>& values)
{
    Case c;
    for (size_t i = 0; i < values.size(); ++i)
        c.With(std::string("x").append(std::to_string(i)), values[i]);
    return c;
}

struct Scored {
    double prediction, stdDev, ciBottom, ciTop;
};

Scored ScoreOnce(LRModel& model, const std::vector<double>& values)
{
    Slot slot;
    EXPECT_TRUE(model.GetScore(&Row(values).Record(), slot.result, true).IsOK());
    const auto& r = slot.As<LRResult>();
    return {slot.Number(), r.GetStdDev(), r.GetCIBottom(), r.GetCITop()};
}

// Two-sided 95% quantiles of Student's t for 1 to 10 degrees of freedom, to the digits in which
// they are published.
TEST(LRModelT05, WholeDfUpToTenComesFromTheTable)
{
    EXPECT_EQ(LRModel::t05(1.0), 12.7062047361747);
    EXPECT_EQ(LRModel::t05(5.0), 2.570581835615);
    EXPECT_EQ(LRModel::t05(10.0), 2.22813885198627);
}

// True quantiles (t table, 10 digits): the polynomial is right to about seven.
TEST(LRModelT05, LargerDfComesFromThePolynomial)
{
    EXPECT_NEAR(LRModel::t05(11.0), 2.2009851601, 2e-6);
    EXPECT_NEAR(LRModel::t05(30.0), 2.0422724563, 1e-6);
    EXPECT_NEAR(LRModel::t05(1e9), 1.9599639845, 1e-6);
}

TEST(LRModelT05, FractionsTakeThePolynomialToo)
{
    // By hand: u = 1 / df, Horner from the innermost coefficient.
    const auto polynomial = [](double u) {
        return 1.959964 +
               u * (2.3722712 +
                    u * (2.8224986 + u * (2.5558497 + u * (1.5895341 + u * 0.73289821))));
    };
    EXPECT_EQ(LRModel::t05(5.5), polynomial(1 / 5.5));
    EXPECT_EQ(LRModel::t05(0.5), polynomial(2.0));
    EXPECT_EQ(LRModel::t05(11.0), polynomial(1 / 11.0));
    EXPECT_NE(LRModel::t05(10.0), polynomial(0.1));
}

TEST(LRModelT05, DfOfZeroOrBelowOrNaNHasNoQuantile)
{
    for (const double df : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN(), kSysmis}) {
        EXPECT_EQ(LRModel::t05(df), kSysmis) << df;
    }
}

TEST(LRModel, PredictsTheLinearPredictor)
{
    Linear linear({2.0, -0.5}, 1.0);
    EXPECT_EQ(ScoreOnce(linear.Ready(), {3.0, 4.0}).prediction, 1.0 + 2.0 * 3.0 - 0.5 * 4.0);
}

TEST(LRModel, StandardErrorIsTheQuadraticFormOfTheCovariances)
{
    // x = (3, 4, 1); x'Vx with V = [[.25, .1, .05], [.1, .5, .02], [.05, .02, 2]] by hand:
    // 9*.25 + 16*.5 + 2 + 2*(12*.1 + 3*.05 + 4*.02) = 15.11
    Linear linear({2.0, -0.5}, 1.0, 5.0);
    linear.Covariance(0, 0, 0.25).Covariance(0, 1, 0.1).Covariance(0, 2, 0.05);
    linear.Covariance(1, 1, 0.5).Covariance(1, 2, 0.02).Covariance(2, 2, 2.0);
    const Scored s = ScoreOnce(linear.Ready(), {3.0, 4.0});
    const double se = std::sqrt(15.11);
    EXPECT_NEAR(s.stdDev, se, 1e-14);
    EXPECT_NEAR(s.ciBottom, 5.0 - 2.570581835615 * se, 1e-13);
    EXPECT_NEAR(s.ciTop, 5.0 + 2.570581835615 * se, 1e-13);
}

TEST(LRModel, AddsTheSlopesToTheInterceptInTheirOrder)
{
    // Each 1 is lost beside 1e16, whose neighbours are 2 apart; slopes added first would give 2.
    Linear linear({1.0, 1.0, -1e16}, 1e16);
    EXPECT_EQ(ScoreOnce(linear.Ready(), {1.0, 1.0, 1.0}).prediction, 0.0);
}

TEST(LRModel, VarianceStartsWithTheIntercepts)
{
    // 1e16, plus 2 * 0.5 and plus 1, each lost; added the other way the root is 1e8 and one ulp.
    Linear linear({2.0}, 1.0, 5.0);
    linear.Covariance(1, 1, 1e16).Covariance(0, 1, 0.5).Covariance(0, 0, 1.0);
    EXPECT_EQ(ScoreOnce(linear.Ready(), {1.0}).stdDev, 1e8);
}

TEST(LRModel, WithoutPredictorsTheInterceptIsAll)
{
    Linear linear({}, 7.0, 3.0);
    linear.Covariance(0, 0, 4.0);
    const Scored s = ScoreOnce(linear.Ready(), {});
    EXPECT_EQ(s.prediction, 7.0);
    EXPECT_EQ(s.stdDev, 2.0);
}

TEST(LRModel, CaseOfZerosLeavesInterceptAndItsVariance)
{
    Linear linear({2.0, 3.0}, 7.0, 3.0);
    linear.Covariance(0, 0, 100.0).Covariance(0, 2, 50.0).Covariance(2, 2, 9.0);
    const Scored s = ScoreOnce(linear.Ready(), {0.0, 0.0});
    EXPECT_EQ(s.prediction, 7.0);
    EXPECT_EQ(s.stdDev, 3.0);
}

TEST(LRModel, NegativeVarianceFromRoundingPutsBothLimitsOnThePrediction)
{
    Linear linear({2.0}, 1.0, 5.0);
    linear.Covariance(0, 0, -1e-20);
    const Scored s = ScoreOnce(linear.Ready(), {3.0});
    EXPECT_EQ(s.prediction, 7.0);
    EXPECT_EQ(s.stdDev, 0.0);
    EXPECT_EQ(s.ciBottom, 7.0);
    EXPECT_EQ(s.ciTop, 7.0);
}

TEST(LRModel, VarianceThatIsNoNumberStaysSo)
{
    Linear linear({2.0}, 1.0, 5.0);
    linear.Covariance(0, 0, std::numeric_limits<double>::quiet_NaN());
    EXPECT_TRUE(std::isnan(ScoreOnce(linear.Ready(), {3.0}).stdDev));
}

// Each of the two would be no number: infinity times 0.
TEST(LRModel, ZeroAddsNothingToTheVarianceWhateverItIsMultipliedBy)
{
    constexpr double kInfinity = NumericValue::GetInfinity();
    // An infinite value whose covariances are 0: 1 + 3 * 4 * 3 is left.
    Linear zeroCells({0.0, 2.0}, 1.0);
    zeroCells.Covariance(1, 1, 4.0).Covariance(2, 2, 1.0);
    LRModel& model = zeroCells.Ready();
    model.SetScoreCaseValidationCheck(false);  // an infinite number isn't valid
    EXPECT_EQ(ScoreOnce(model, {kInfinity, 3.0}).stdDev, std::sqrt(37.0));

    // A value of 0 whose covariances are infinite.
    Linear infiniteCells({0.0, 2.0}, 1.0);
    infiniteCells.Covariance(1, 1, 4.0).Covariance(2, 2, 1.0);
    for (const int other : {0, 1, 2}) infiniteCells.Covariance(0, other, kInfinity);
    EXPECT_EQ(ScoreOnce(infiniteCells.Ready(), {0.0, 3.0}).stdDev, std::sqrt(37.0));
}

TEST(LRModel, DfOfZeroGivesNoLimitsAndStatusOK)
{
    Linear linear({2.0}, 1.0, 0.0);
    const Scored s = ScoreOnce(linear.Ready(), {3.0});
    EXPECT_EQ(s.stdDev, 0.0);  // no covariances
    EXPECT_EQ(s.ciBottom, kSysmis);
    EXPECT_EQ(s.ciTop, kSysmis);
}

TEST(LRModel, PredictionOnlyLeavesErrorAndLimitsAlone)
{
    Linear linear({2.0}, 1.0, 5.0);
    linear.Covariance(0, 0, 1.0);
    linear.model.SetPredictionOnly(true);
    const Scored s = ScoreOnce(linear.Ready(), {3.0});
    EXPECT_EQ(s.prediction, 7.0);
    EXPECT_EQ(s.stdDev, -1.0);
    EXPECT_EQ(s.ciBottom, kSysmis);
    EXPECT_EQ(s.ciTop, kSysmis);
}

TEST(LRModel, InterceptWithoutACellReadsZero)
{
    Built<LRModel> built;
    built.Covariate("x0");
    built.Parameters({"b0"});  // no parameter 1
    ASSERT_TRUE(built.SetUp());
    built.Beta("b0", 2.0);
    built.model.GetPCovMatrix()->SetCell("b0", "b0", 0.25);
    built.model.FinishSetup();
    const Scored s = ScoreOnce(built.model, {3.0});
    EXPECT_EQ(s.prediction, 6.0);
    EXPECT_EQ(s.stdDev, 1.5);  // the slope's variance alone: 9 * 0.25
}

TEST(LRModel, SetupOfAnUnknownPredictorFailsWithTheTablesMade)
{
    Built<LRModel> built;
    built.model.AddPredictor("nowhere");
    built.Parameters({"b0", "(Constant)"});
    EXPECT_FALSE(built.SetUp());
    EXPECT_NE(built.model.GetParamTable(), nullptr);
    EXPECT_NE(built.model.GetPPCMatrix(), nullptr);
    EXPECT_NE(built.model.GetPCovMatrix(), nullptr);
}

TEST(LRModel, HasOneDummyCategory)
{
    Linear linear({2.0}, 1.0);
    EXPECT_EQ(linear.model.GetCategoryVector(), (RegressionModel::NameVector{{"LRdummy", 0}}));
    EXPECT_EQ(linear.model.GetModelType(), 3);
}

TEST(LRModel, BadValueUnderSysmisPolicyAlwaysGetsANewPrediction)
{
    Linear linear({2.0}, 1.0);
    linear.model.SetMissingValuePolicy(ScoreModel::MV_SYSMIS_RESULT);
    LRModel& model = linear.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row({3.0}).Record(), slot.result, true).IsOK());
    auto& result = slot.As<LRResult>();
    const ScoreValue* before = result.GetPrediction();
    result.SetStdDev(42.0);
    const auto status = model.GetScore(&Row({kSysmis}).Record(), slot.result, true);
    EXPECT_EQ(status.GetErrorCode(), 90029);
    EXPECT_EQ(status.GetDiscreteDatum(), -1);
    EXPECT_EQ(slot.Number(), kSysmis);
    EXPECT_NE(result.GetPrediction(), before);
    EXPECT_EQ(result.GetStdDev(), 42.0);  // error and limits are not written on this path
}

TEST(LRModel, BadValueUnderStatusOnlyPolicyKeepsTheResult)
{
    Linear linear({2.0}, 1.0, 5.0);
    linear.model.SetMissingValuePolicy(ScoreModel::MV_STATUS_ONLY);
    LRModel& model = linear.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row({3.0}).Record(), slot.result, true).IsOK());
    EXPECT_EQ(model.GetScore(&Row({kSysmis}).Record(), slot.result, true).GetErrorCode(), 90029);
    EXPECT_EQ(slot.Number(), 7.0);
    EXPECT_EQ(slot.As<LRResult>().GetCITop(), 7.0);
}

TEST(LRModel, NullRecordLeavesNoTrace)
{
    Linear linear({2.0}, 1.0);
    LRModel& model = linear.Ready();
    int lines = 0;
    ScoringLog::GetInstance()->SetSink([&](int, std::string_view) { ++lines; });
    ScoringLog::GetInstance()->SetLevel(1);
    Slot slot;
    EXPECT_EQ(model.GetScore(nullptr, slot.result, true).GetErrorCode(), 90029);
    ScoringLog::GetInstance()->SetLevel(0);
    ScoringLog::GetInstance()->SetSink(nullptr);
    EXPECT_EQ(lines, 0);
}

TEST(LRModel, DerivedPredictorComesFromTheDerivedRecordUnlessTheCaseHoldsIt)
{
    for (const bool inRecord : {false, true}) {
        Built<LRModel> built;
        built.DerivedCovariate("d", 5.0);
        built.Parameters({"b", "(Constant)"});
        ASSERT_TRUE(built.SetUp());
        built.Beta("b", 2.0);
        built.model.FinishSetup();
        Case c;
        c.With("d", 40);
        Slot slot;
        ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, inRecord).IsOK());
        EXPECT_EQ(slot.Number(), inRecord ? 80.0 : 10.0);
    }
}

TEST(LRModel, ValueAbsentWithoutValidationFailsTheCase)
{
    Linear linear({2.0}, 1.0);
    linear.model.SetScoreCaseValidationCheck(false);
    LRModel& model = linear.Ready();
    Slot slot;
    Case c;
    c.With("x0", nullptr);
    EXPECT_EQ(model.GetScore(&c.Record(), slot.result, true).GetErrorCode(), 90029);
}

TEST(LRModel, DateEntersTheSlopeFromItsOriginAndTheInnerSumAsItsPlainNumber)
{
    DictVarType type;
    type.name = "d";
    type.valueType = ScoreDictVar::DATETIME;
    type.dateTimeType = ScoreDictVar::DATE_DAYS_SINCE_1960;
    Built<LRModel> built;
    built.Add(std::make_unique<DictVar>(type), ScoreModel::ROLE_COVARIATE);
    built.Parameters({"b", "(Constant)"});
    built.model.SetDF(5.0);
    ASSERT_TRUE(built.SetUp());
    built.Beta("b", 2.0);
    built.model.GetPCovMatrix()->SetCell("b", "b", 1.0);
    built.model.FinishSetup();
    Case c;
    c.With("d", Given(std::make_unique<DateTimeValue>(10.0)));  // 1970-01-11
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    const double days = 3653.0 + 10.0;  // 1960-01-01 to 1970-01-01 is 3653 days
    EXPECT_EQ(slot.Number(), 2.0 * days);
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), std::sqrt(days * 10.0));
    // The reading is multiplied with the covariance first; that with the number first is one less
    // in the last place.
    built.model.GetPCovMatrix()->SetCell("b", "b", 1.3);
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), std::sqrt((days * 1.3) * 10.0));
    // The intercept's row takes the reading from the origin.
    built.model.GetPCovMatrix()->SetCell("b", "b", 0.0);
    built.model.GetPCovMatrix()->SetCell("b", "(Constant)", 0.5);
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), std::sqrt(days));
}

// The model of StandardErrorIsTheQuadraticFormOfTheCovariances: 5 +- t sqrt(15.11), t for 5 degrees
// of freedom by mpmath.
TEST(LRModel, LimitsFollowTheConfidenceLevel)
{
    constexpr struct {
        double level;
        double t;
    } kRows[] = {{0.5, 0.72668684380042265},
                 {0.9, 2.0150483733330244},
                 {0.99, 4.0321429835552272},
                 {0.999, 6.8688266258811089}};
    Linear linear({2.0, -0.5}, 1.0, 5.0);
    linear.Covariance(0, 0, 0.25).Covariance(0, 1, 0.1).Covariance(0, 2, 0.05);
    linear.Covariance(1, 1, 0.5).Covariance(1, 2, 0.02).Covariance(2, 2, 2.0);
    LRModel& model = linear.Ready();
    const Scored before = ScoreOnce(model, {3.0, 4.0});
    const double se = std::sqrt(15.11);
    for (const auto& [level, t] : kRows) {
        model.SetConfidenceLevel(level);
        EXPECT_EQ(model.GetConfidenceLevel(), level);
        const Scored s = ScoreOnce(model, {3.0, 4.0});
        EXPECT_NEAR(s.ciBottom, 5.0 - t * se, 1e-13) << level;
        EXPECT_NEAR(s.ciTop, 5.0 + t * se, 1e-13) << level;
        EXPECT_EQ(s.prediction, before.prediction);
        EXPECT_EQ(s.stdDev, before.stdDev);
    }
    model.SetDF(1.0);  // after the level
    EXPECT_NEAR(ScoreOnce(model, {3.0, 4.0}).ciTop, 5.0 + 636.61924876871905 * se, 1e-10);
    model.SetDF(5.0);
    model.SetConfidenceLevel(0.95);
    EXPECT_EQ(ScoreOnce(model, {3.0, 4.0}).ciTop, before.ciTop);
    model.SetConfidenceLevel(1.0);
    EXPECT_EQ(ScoreOnce(model, {3.0, 4.0}).ciTop, kSysmis);
}

TEST(LRModel, ARunKeepsTheLevelThatItBeganWith)
{
    Linear linear({}, 7.0, 5.0);
    linear.Covariance(0, 0, 4.0);
    LRModel& model = linear.Ready();
    const auto run = model.MakeState();
    model.SetConfidenceLevel(0.9);
    const auto later = model.MakeState();
    Slot slot;
    Case none;
    ASSERT_TRUE(model.ScoreRow(*run, &none.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.As<LRResult>().GetCITop(), 7.0 + 2.0 * 2.570581835615);
    ASSERT_TRUE(model.ScoreRow(*later, &none.Record(), slot.result, true).IsOK());
    EXPECT_NEAR(slot.As<LRResult>().GetCITop(), 7.0 + 2.0 * 2.0150483733330244, 1e-14);
}

TEST(LRModel, ErrorOfTheLinearPredictorIsThatOfTheMeanWhereItIsAskedFor)
{
    Linear linear({2.0, -0.5}, 1.0, 5.0);
    linear.Covariance(0, 0, 0.25).Covariance(0, 1, 0.1).Covariance(0, 2, 0.05);
    linear.Covariance(1, 1, 0.5).Covariance(1, 2, 0.02).Covariance(2, 2, 2.0);
    LRModel& model = linear.Ready();
    EXPECT_NEAR(LinearPredictorError(model, Row({3.0, 4.0})), std::sqrt(15.11), 1e-14);
    EXPECT_EQ(LinearPredictorError(model, Row({3.0, 4.0})), ScoreOnce(model, {3.0, 4.0}).stdDev);
    const auto run = model.MakeState();
    Slot slot;
    ASSERT_TRUE(model.ScoreRow(*run, &Row({3.0, 4.0}).Record(), slot.result, true).IsOK());
    EXPECT_EQ(run->linearPredictorError, kSysmis);  // nobody asked
    model.SetPredictionOnly(true);
    EXPECT_NEAR(LinearPredictorError(model, Row({3.0, 4.0})), std::sqrt(15.11), 1e-14);
}

TEST(LRModel, ErrorOfTheLinearPredictorNeedsCovariancesAndACaseThatIsScored)
{
    EXPECT_EQ(LinearPredictorError(Linear({2.0}, 1.0, 5.0).Ready(), Row({3.0})), kSysmis);
    Linear linear({2.0}, 1.0, 5.0);
    linear.Covariance(0, 0, 4.0);
    LRModel& model = linear.Ready();
    const auto run = model.MakeState();
    run->wantsLinearPredictorError = true;
    Slot slot;
    ASSERT_TRUE(model.ScoreRow(*run, &Row({3.0}).Record(), slot.result, true).IsOK());
    EXPECT_EQ(run->linearPredictorError, 6.0);
    ASSERT_FALSE(model.ScoreRow(*run, &Row({kSysmis}).Record(), slot.result, true).IsOK());
    EXPECT_EQ(run->linearPredictorError, kSysmis);
}

}  // namespace
}  // namespace MCVelscore_850
