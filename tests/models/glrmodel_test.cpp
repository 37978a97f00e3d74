#include "models/glrmodel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "host/messages/scoringlog.h"
#include "host/values/datetimevalue.h"
#include "models/lrresult.h"
#include "models/mlrmodel.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

// y = 1 + 2 [f = b] + 3 x^2 + 0.5 x [f = b]
class Small : public Built<GLRModel> {
public:
    explicit Small(double df = 5.0, bool covariances = true)
    {
        Factor("f", {"a", "b"});
        Covariate("x");
        Parameters({"p0", "p1", "p2", "p3"});
        model.SetDF(df);
        EXPECT_TRUE(SetUp());
        Cell("p1", "f", "b");
        Cell("p2", "x", "2");
        Cell("p3", "f", "b");
        Cell("p3", "x", "1");
        Beta("p0", 1.0);
        Beta("p1", 2.0);
        Beta("p2", 3.0);
        Beta("p3", 0.5);
        if (!covariances) return;
        PCovMatrix& v = *model.CreatePCovMatrix();
        v.SetCell("p0", "p0", 1.0);
        v.SetCell("p1", "p1", 4.0);
        v.SetCell("p0", "p1", 0.5);
        v.SetCell("p2", "p2", 0.25);
    }
    GLRModel& Ready()
    {
        model.FinishSetup();
        return model;
    }
};

Case Row(const char* f, double x) { return std::move(Case().With("f", f).With("x", x)); }

TEST(GLRModel, AddsTheParametersThatTheCaseMeets)
{
    Small small;
    GLRModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 1.0 + 2.0 + 3.0 * 4.0 + 0.5 * 2.0);
    ASSERT_TRUE(model.GetScore(&Row("a", 2.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 1.0 + 3.0 * 4.0);
}

TEST(GLRModel, StandardErrorTakesTheDesignRow)
{
    Small small;
    GLRModel& model = small.Ready();
    Slot slot;
    // d = (1, 1, 4, 2): 1 + 4 + 2 * 0.5 + 16 * 0.25 = 10
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0).Record(), slot.result, true).IsOK());
    const auto& r = slot.As<LRResult>();
    EXPECT_EQ(r.GetStdDev(), std::sqrt(10.0));
    EXPECT_EQ(r.GetCIBottom(), 16.0 - std::sqrt(10.0) * 2.570581835615);
    EXPECT_EQ(r.GetCITop(), 16.0 + std::sqrt(10.0) * 2.570581835615);
    // d = (1, 0, 4, 0): the category that the case doesn't meet adds nothing: 1 + 4
    ASSERT_TRUE(model.GetScore(&Row("a", 2.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(r.GetStdDev(), std::sqrt(5.0));
}

// Two-sided 95% quantiles of Student's t, to the digits in which they are published.
TEST(GLRModel, T05IsTheQuantileOfStudentsT)
{
    EXPECT_EQ(GLRModel::t05(5.0), 2.570581835615);
    EXPECT_NEAR(GLRModel::t05(30.0), 2.0422724563, 1e-6);
    EXPECT_EQ(GLRModel::t05(0.0), kSysmis);
}

TEST(GLRModel, CovarianceOfZeroAddsNothingToTheVarianceOfAnInfiniteDesignValue)
{
    Small small;
    small.model.GetPCovMatrix()->SetCell("p2", "p2", 0.0);
    GLRModel& model = small.Ready();
    Slot slot;
    // The square of 1e200 is infinite, and infinity times 0 would be no number. 1 + 4 + 2 * 0.5
    ASSERT_TRUE(model.GetScore(&Row("b", 1e200).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), std::sqrt(6.0));
}

TEST(GLRModel, DesignValueOfZeroAddsNothingToTheVarianceWhateverItsCovariances)
{
    Small small;
    small.model.GetPCovMatrix()->SetCell("p0", "p2", NumericValue::GetInfinity());
    small.model.GetPCovMatrix()->SetCell("p2", "p2", NumericValue::GetInfinity());
    GLRModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 0.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), std::sqrt(6.0));  // d = (1, 1, 0, 0)
}

TEST(GLRModel, CovariateOfZeroDropsItsParameters)
{
    Small small;
    GLRModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 0.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 3.0);
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), std::sqrt(6.0));  // d = (1, 1, 0, 0)
}

// One covariate x with beta 1 and the exponent of the cell.
double PowerOf(double x, const char* exponent)
{
    Built<GLRModel> built;
    built.Covariate("x");
    built.Parameters({"p"});
    EXPECT_TRUE(built.SetUp());
    built.Cell("p", "x", exponent);
    built.Beta("p", 1.0);
    built.model.FinishSetup();
    Slot slot;
    Case c;
    c.With("x", x);
    EXPECT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    return slot.Number();
}

TEST(GLRModel, ExponentCountsAsTheNextWholeNumber)
{
    EXPECT_EQ(PowerOf(2.0, "2"), 4.0);
    EXPECT_EQ(PowerOf(2.0, "2.5"), 8.0);
    EXPECT_EQ(PowerOf(2.0, "0.5"), 2.0);
    EXPECT_EQ(PowerOf(-3.0, "3"), -27.0);
}

TEST(GLRModel, ExponentOfZeroOrBelowLeavesOneUnlessTheCovariateIsZero)
{
    EXPECT_EQ(PowerOf(2.0, "0"), 1.0);
    EXPECT_EQ(PowerOf(2.0, "-1"), 1.0);
    EXPECT_EQ(PowerOf(0.0, "0"), 0.0);
    EXPECT_EQ(PowerOf(0.0, "-1"), 0.0);
}

TEST(GLRModel, CovariateOfOneIsOneWhateverTheExponent)
{
    EXPECT_EQ(PowerOf(1.0, "7"), 1.0);
    EXPECT_EQ(PowerOf(1.0, "1e300"), 1.0);
}

TEST(GLRModel, ExponentThatNoModelHasStillEnds)
{
    EXPECT_EQ(PowerOf(2.0, "1e300"), NumericValue::GetInfinity());
    EXPECT_EQ(PowerOf(0.5, "1e300"), 0.0);
}

TEST(GLRModel, ParameterWithoutCellsIsAnIntercept)
{
    Built<GLRModel> built;
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    built.Beta("p", 4.5);
    built.model.FinishSetup();
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&Case().Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 4.5);
}

TEST(GLRModel, NumericFactorIsComparedTolerantly)
{
    Built<GLRModel> built;
    built.Factor("f", {"0.1", "0.2", "0.30000000000000004"}, ScoreDictVar::NUMERIC);
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    built.Cell("p", "f", "0.3");
    built.Beta("p", 1.0);
    built.model.FinishSetup();
    Slot slot;
    Case c;
    c.With("f", 0.30000000000000004);  // within 1e-12 of 0.3
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 1.0);
}

TEST(GLRModel, LinearSVMTakesSigmaAndPercentileFromTheDocument)
{
    Small small;
    small.model.SetAlgorithmName("linearSVM");
    small.model.SetSigmaValue(1.5);
    small.model.SetPercentileValue(2.0);
    Slot slot;
    ASSERT_TRUE(small.Ready().GetScore(&Row("a", 1.0).Record(), slot.result, true).IsOK());
    const auto& r = slot.As<LRResult>();
    EXPECT_EQ(r.GetStdDev(), 1.5);
    EXPECT_EQ(r.GetCIBottom(), 2.0);
    EXPECT_EQ(r.GetCITop(), 6.0);
}

TEST(GLRModel, LinearSVMWithoutPercentileTakesTheLimitsFromDf)
{
    Small small;
    small.model.SetAlgorithmName("linearSVM");
    small.model.SetSigmaValue(1.5);
    Slot slot;
    ASSERT_TRUE(small.Ready().GetScore(&Row("a", 1.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.As<LRResult>().GetCITop(), 4.0 + 1.5 * 2.570581835615);
}

TEST(GLRModel, AlgorithmNameIsComparedExactly)
{
    Small small;
    small.model.SetAlgorithmName("LinearSVM");
    small.model.SetSigmaValue(1.5);
    small.model.SetPercentileValue(2.0);
    Slot slot;
    ASSERT_TRUE(small.Ready().GetScore(&Row("a", 1.0).Record(), slot.result, true).IsOK());
    const auto& r = slot.As<LRResult>();
    EXPECT_EQ(r.GetStdDev(), std::sqrt(1.25));  // d = (1, 0, 1, 0)
    EXPECT_EQ(r.GetCITop(), 4.0 + std::sqrt(1.25) * 2.570581835615);
}

TEST(GLRModel, SigmaOfAnotherAlgorithmWithoutCovariancesGivesNoError)
{
    Small small(5.0, false);
    small.model.SetSigmaValue(1.5);
    Slot slot;
    ASSERT_TRUE(small.Ready().GetScore(&Row("a", 1.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), 0.0);
}

TEST(GLRModel, WithoutCovariancesBothLimitsLieOnThePrediction)
{
    Small small(5.0, false);
    Slot slot;
    ASSERT_TRUE(small.Ready().GetScore(&Row("a", 1.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), 0.0);
    EXPECT_EQ(slot.As<LRResult>().GetCIBottom(), 4.0);
    EXPECT_EQ(slot.As<LRResult>().GetCITop(), 4.0);
}

TEST(GLRModel, DfWithoutAQuantileGivesNoLimits)
{
    for (const double df : {0.0, kSysmis}) {
        Small small(df);
        Slot slot;
        ASSERT_TRUE(small.Ready().GetScore(&Row("a", 1.0).Record(), slot.result, true).IsOK());
        EXPECT_EQ(slot.As<LRResult>().GetCIBottom(), kSysmis);
        EXPECT_EQ(slot.As<LRResult>().GetCITop(), kSysmis);
        EXPECT_EQ(slot.As<LRResult>().GetStdDev(), std::sqrt(1.25));
    }
}

TEST(GLRModel, PredictionOnlyLeavesErrorAndLimitsAlone)
{
    Small small;
    small.model.SetPredictionOnly(true);
    Slot slot;
    ASSERT_TRUE(small.Ready().GetScore(&Row("b", 2.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 16.0);
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), -1.0);
    EXPECT_EQ(slot.As<LRResult>().GetCITop(), kSysmis);
}

TEST(GLRModel, TextOutsideTheEncoderIsBad)
{
    Small small;
    Slot slot;
    EXPECT_EQ(small.Ready().GetScore(&Row("c", 2.0).Record(), slot.result, true).GetErrorCode(),
              90029);
    EXPECT_EQ(slot.Number(), kSysmis);
}

TEST(GLRModel, WithoutValidationATextOutsideTheEncoderMeetsNoCategory)
{
    Small small;
    small.model.SetScoreCaseValidationCheck(false);
    Slot slot;
    ASSERT_TRUE(small.Ready().GetScore(&Row("c", 2.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 1.0 + 3.0 * 4.0);
}

TEST(GLRModel, WithoutValidationAnAbsentCovariateCountsAsZero)
{
    Small small;
    small.model.SetScoreCaseValidationCheck(false);
    Slot slot;
    Case c;
    c.With("f", "b").With("x", nullptr);
    ASSERT_TRUE(small.Ready().GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 3.0);
}

TEST(GLRModel, WithoutValidationAnAbsentCovariateIsZeroAlsoAfterACaseThatHadIt)
{
    Small small;
    small.model.SetScoreCaseValidationCheck(false);
    GLRModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0).Record(), slot.result, true).IsOK());
    Case c;
    c.With("f", "b").With("x", nullptr);
    ASSERT_TRUE(model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 3.0);
}

TEST(GLRModel, ParameterWithBetaZeroAddsNothingToTheVariance)
{
    Small small;
    small.Beta("p1", 0.0);
    Slot slot;
    // d = (1, 0, 4, 2) though the case is b: 1 + 16 * 0.25
    ASSERT_TRUE(small.Ready().GetScore(&Row("b", 2.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), std::sqrt(5.0));
}

TEST(GLRModel, AddsParametersInTheirOrder)
{
    // Each 1 is lost beside 1e16, whose neighbours are 2 apart; the other way round it would be 2.
    Built<GLRModel> built;
    built.Parameters({"p0", "p1", "p2", "p3"});
    ASSERT_TRUE(built.SetUp());
    built.Beta("p0", 1e16);
    built.Beta("p1", 1.0);
    built.Beta("p2", 1.0);
    built.Beta("p3", -1e16);
    PCovMatrix& v = *built.model.CreatePCovMatrix();
    v.SetCell("p0", "p0", 1e16);
    v.SetCell("p1", "p1", 1.0);
    v.SetCell("p2", "p2", 1.0);
    built.model.FinishSetup();
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&Case().Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 0.0);
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), 1e8);  // and not one ulp above
}

TEST(GLRModel, NegativeVarianceFromRoundingIsZero)
{
    Small small(5.0, false);
    small.model.CreatePCovMatrix()->SetCell("p0", "p0", -1e-20);
    Slot slot;
    ASSERT_TRUE(small.Ready().GetScore(&Row("a", 1.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), 0.0);
    EXPECT_EQ(slot.As<LRResult>().GetCIBottom(), 4.0);
}

TEST(GLRModel, MissingPredictionKeepsTheObjectAndLeavesErrorAndLimits)
{
    Small small;
    small.model.SetMissingValuePolicy(ScoreModel::MV_SYSMIS_RESULT);
    GLRModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0).Record(), slot.result, true).IsOK());
    const ScoreValue* prediction = slot.result->GetPrediction();
    const auto status = model.GetScore(&Row("b", kSysmis).Record(), slot.result, true);
    EXPECT_EQ(status.GetErrorCode(), 90029);
    EXPECT_EQ(status.GetDiscreteDatum(), -1);  // this family names no predictor
    EXPECT_EQ(slot.result->GetPrediction(), prediction);
    EXPECT_EQ(slot.Number(), kSysmis);
    EXPECT_EQ(slot.As<LRResult>().GetStdDev(), std::sqrt(10.0));
}

TEST(GLRModel, BadValueUnderStatusOnlyPolicyKeepsTheResult)
{
    Small small;
    small.model.SetMissingValuePolicy(ScoreModel::MV_STATUS_ONLY);
    GLRModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(model.GetScore(&Row("b", kSysmis).Record(), slot.result, true).GetErrorCode(), 90029);
    EXPECT_EQ(slot.Number(), 16.0);
}

TEST(GLRModel, PolicySetBackToSubstitutionHasNothingToSubstitute)
{
    Small small;
    GLRModel& model = small.Ready();
    ASSERT_EQ(model.GetMissingValuePolicy(), ScoreModel::MV_SYSMIS_RESULT);
    model.SetMissingValuePolicy(ScoreModel::MV_SUBSTITUTE);
    Slot slot;
    EXPECT_EQ(model.GetScore(&Row("b", kSysmis).Record(), slot.result, true).GetErrorCode(), 90029);
    EXPECT_EQ(slot.Number(), kSysmis);
}

TEST(GLRModel, NullRecordIsTraced)
{
    Small small;
    GLRModel& model = small.Ready();
    std::vector<std::string> lines;
    ScoringLog::GetInstance()->SetSink(
        [&](int, std::string_view line) { lines.emplace_back(line); });
    ScoringLog::GetInstance()->SetLevel(1);
    Slot slot;
    EXPECT_EQ(model.GetScore(nullptr, slot.result, true).GetErrorCode(), 90029);
    ScoringLog::GetInstance()->SetLevel(0);
    ScoringLog::GetInstance()->SetSink(nullptr);
    EXPECT_EQ(lines, std::vector<std::string>{"MCStatus error code is :90029"});
    EXPECT_EQ(slot.result, nullptr);
}

TEST(GLRModel, DateIsReadFromItsVariablesOrigin)
{
    DictVarType type;
    type.name = "d";
    type.valueType = ScoreDictVar::DATETIME;
    type.dateTimeType = ScoreDictVar::DATE_DAYS_SINCE_1960;
    Built<GLRModel> built;
    built.Add(std::make_unique<DictVar>(type), ScoreModel::ROLE_COVARIATE);
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    built.model.GetNumericPPMatrix()[0][0] = 1.0;
    built.Beta("p", 2.0);
    built.model.FinishSetup();
    Case c;
    c.With("d", Given(std::make_unique<DateTimeValue>(10.0)));  // 1970-01-11
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 2.0 * 3663.0);  // 1960-01-01 to 1970-01-01 is 3653 days
}

TEST(GLRModel, DerivedPredictorIsComputedWhereTheRecordDoesNotHoldIt)
{
    for (const bool holds : {false, true}) {
        for (const bool inRecord : {false, true}) {
            Built<GLRModel> built;
            built.DerivedCovariate("d", 5.0);
            built.Parameters({"p"});
            ASSERT_TRUE(built.SetUp());
            built.model.GetNumericPPMatrix()[0][0] = 1.0;
            built.Beta("p", 2.0);
            built.model.FinishSetup();
            Case c;
            c.With(holds ? "d" : "other", 40);
            Slot slot;
            ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, inRecord).IsOK());
            EXPECT_EQ(slot.Number(), holds && inRecord ? 80.0 : 10.0) << holds << inRecord;
        }
    }
}

TEST(GLRModel, PositionThatHoldsNothingIsNotTriedByName)
{
    TornRecord record("x", 2.0);
    Built<GLRModel> built;
    built.Covariate("x");
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    built.model.FinishSetup();
    Slot slot;
    EXPECT_EQ(built.model.GetScore(&record, slot.result, true).GetErrorCode(), 90029);
}

TEST(GLRModel, SetupOfAnUnknownPredictorMakesNoTable)
{
    Built<GLRModel> built;
    built.model.AddPredictor("nowhere");
    built.Parameters({"p"});
    EXPECT_FALSE(built.SetUp());
    EXPECT_EQ(built.model.GetParamTable(), nullptr);
    EXPECT_EQ(built.model.GetPPCMatrix(), nullptr);
}

TEST(GLRModel, SetupLeavesTheCovariancesToTheReader)
{
    Built<GLRModel> built;
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    EXPECT_EQ(built.model.GetPCovMatrix(), nullptr);
    EXPECT_EQ(built.model.GetCategoryVector(), (RegressionModel::NameVector{{"GLRdummy", 0}}));
    EXPECT_EQ(built.model.GetModelType(), 5);
}

TEST(GLRModel, SubstitutesTheReplacementOfACovariateAndNotOfAFactor)
{
    Small small;
    Replace(*small.Dictionary().GetVar("x"), 2.0);
    GLRModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("a", kSysmis).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 13.0);
    EXPECT_EQ(model.GetScore(&Row("c", 2.0).Record(), slot.result, true).GetErrorCode(), 90029);
    EXPECT_EQ(slot.Number(), kSysmis);
}

TEST(GLRModel, AllowedMissingFactorMeetsNoCategory)
{
    Small small;
    small.model.SetAllowMissingFactors(true);
    Slot slot;
    ASSERT_TRUE(small.Ready().GetScore(&Row("c", 2.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 13.0);
}

TEST(GLRModel, LimitsFollowTheConfidenceLevelUnlessTheDocumentFixesThem)
{
    Small small;
    GLRModel& model = small.Ready();
    model.SetConfidenceLevel(0.99);
    Slot slot;
    // As StandardErrorTakesTheDesignRow; t for 5 degrees of freedom by mpmath.
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0).Record(), slot.result, true).IsOK());
    const auto& r = slot.As<LRResult>();
    EXPECT_NEAR(r.GetCIBottom(), 16.0 - std::sqrt(10.0) * 4.0321429835552272, 1e-13);
    EXPECT_NEAR(r.GetCITop(), 16.0 + std::sqrt(10.0) * 4.0321429835552272, 1e-13);
    ModelDescription told;
    model.Describe(told);
    EXPECT_TRUE(told.hasConfidenceLevel);
    EXPECT_EQ(told.quantities[2].meaning, "lower 99% confidence limit of the mean (Student's t)");
    EXPECT_EQ(told.quantities[3].meaning, "upper 99% confidence limit of the mean (Student's t)");

    model.SetAlgorithmName("linearSVM");
    model.SetPercentileValue(2.0);
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(r.GetCIBottom(), 14.0);
    EXPECT_EQ(r.GetCITop(), 18.0);
    ModelDescription fixed;
    model.Describe(fixed);
    EXPECT_FALSE(fixed.hasConfidenceLevel);
}

TEST(GLRModel, ErrorOfTheLinearPredictorIsOfTheCovariancesAlsoWhereSigmaIsFixed)
{
    Small small;
    GLRModel& model = small.Ready();
    EXPECT_EQ(LinearPredictorError(model, Row("b", 2.0)), std::sqrt(10.0));
    EXPECT_EQ(LinearPredictorError(model, Row("a", 2.0)), std::sqrt(5.0));
    model.SetAlgorithmName("linearSVM");
    model.SetSigmaValue(1.5);
    EXPECT_EQ(LinearPredictorError(model, Row("b", 2.0)), std::sqrt(10.0));
    EXPECT_EQ(LinearPredictorError(Small(5.0, false).Ready(), Row("b", 2.0)), kSysmis);
    const auto run = model.MakeState();
    Slot slot;
    ASSERT_TRUE(model.ScoreRow(*run, &Row("b", 2.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(run->linearPredictorError, kSysmis);  // nobody asked
}

// Without validation a factor of texts may be given a number, which is taken for a position where
// it is one but for rounding, and without rounding in the multinomial family.
template <class Model>
double PredictorOfPosition(double number)
{
    Built<Model> built(Categorical("y", {"a", "b"}));
    built.Factor("f", {"u", "v"});
    built.Parameters({"pu", "pv"});
    EXPECT_TRUE(built.SetUp());
    built.Cell("pu", "f", "u");
    built.Cell("pv", "f", "v");
    const std::string row = built.model.GetCategoryVector().back().first;
    built.Beta(row, "pu", 10.0);
    built.Beta(row, "pv", 20.0);
    built.model.SetScoreCaseValidationCheck(false);
    built.model.FinishSetup();
    const auto state = built.model.MakeState();
    Slot slot;
    Case c;
    c.With("f", number);
    EXPECT_TRUE(built.model.ScoreRow(*state, &c.Record(), slot.result, true).IsOK());
    if constexpr (std::is_same_v<Model, GLRModel>) {
        return state->linearPredictor;
    } else {
        return static_cast<const CaseState&>(*state).linearPredictors.back();
    }
}

TEST(GLRModel, NumberForATextIsNearlyAPosition)
{
    struct Row {
        double number, general, multinomial;
    };
    const Row rows[] = {
        {1.0, 20.0, 20.0},        {0.0, 10.0, 10.0},
        {1.0 + 1e-14, 20.0, 0.0}, {1.5, 0.0, 0.0},
        {1.25, 0.0, 0.0},         {-2.0, 0.0, 0.0},
        {1e300, 0.0, 0.0},        {std::numeric_limits<double>::quiet_NaN(), 0.0, 0.0}};
    for (const Row& row : rows) {
        EXPECT_EQ(PredictorOfPosition<GLRModel>(row.number), row.general) << row.number;
        EXPECT_EQ(PredictorOfPosition<MLRModel>(row.number), row.multinomial) << row.number;
    }
}

TEST(GLRModel, LimitsComeWithTheDegreesOfFreedomAsTheyStand)
{
    Small small;
    GLRModel& model = small.Ready();
    model.SetDF(2.0);
    EXPECT_EQ(model.GetDF(), 2.0);
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.As<LRResult>().GetCITop(), 16.0 + std::sqrt(10.0) * 4.30265272974946);
}

TEST(GLRModel, DerivedPredictorIsComputedUnlessTheRecordHoldsIt)
{
    Built<GLRModel> built;
    built.DerivedCovariate("d", 5.0);
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    built.model.GetNumericPPMatrix()[0][0] = 1.0;
    built.Beta("p", 2.0);
    built.model.FinishSetup();
    for (const bool indexed : {true, false}) {
        Case c(indexed);
        c.With("d", 40.0);
        for (const auto& [derivedInRecord, predicted] : {std::pair{false, 10.0}, {true, 80.0}}) {
            const auto state = built.model.MakeState();
            Slot slot;
            const auto status =
                built.model.ScoreRow(*state, &c.Record(), slot.result, derivedInRecord);
            ASSERT_TRUE(status.IsOK());
            EXPECT_EQ(slot.Number(), predicted) << indexed;
        }
    }
}

// A cell of a factor of texts that is no position: no text meets it, and without validation the
// number itself does.
TEST(GLRModel, CellBelowAllPositionsMeetsItsNumberAlone)
{
    Built<GLRModel> built;
    built.Factor("f", {"u", "v"});
    built.Parameters({"pu", "odd"});
    ASSERT_TRUE(built.SetUp());
    built.Cell("pu", "f", "u");
    built.model.GetNumericPPMatrix()[1][0] = -2.0;
    built.Beta("pu", 10.0);
    built.Beta("odd", 20.0);
    built.model.SetScoreCaseValidationCheck(false);
    built.model.FinishSetup();
    const auto expect = [&](Given f, double lp) {
        Slot slot;
        Case c;
        c.With("f", std::move(f));
        ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
        EXPECT_EQ(slot.Number(), lp);
    };
    expect("u", 10.0);
    expect("v", 0.0);
    expect(-2.0, 20.0);
    expect(-2.0 * (1.0 + 1e-14), 20.0);
    expect(-1.0, 0.0);
    expect(0.0, 10.0);
}

}  // namespace
}  // namespace MCVelscore_850
