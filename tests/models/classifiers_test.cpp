// The road of a case through the families that predict a category: what they do alike, and what
// each does its own way.

#include <gtest/gtest.h>

#include <cmath>

#include "models/clrresult.h"
#include "models/mlrresult.h"
#include "tests/models/classifierfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

// 1 / (1 + exp(-2)), by mpmath with 40 digits
constexpr double kLogisticOf2 = 0.88079707797788244406;

template <class Model>
class Classifiers : public ::testing::Test {
protected:
    using OfFamily = Family<Model>;
    explicit Classifiers(std::unique_ptr<DictVar> target = TextTarget()) : built(std::move(target))
    {}
    MCScore::MCStatus Score(Given a, Given b, bool indexed = true)
    {
        last = std::make_unique<Case>(indexed);
        last->With("a", std::move(a)).With("b", std::move(b));
        return built.model.GetScore(&last->Record(), slot.result, true);
    }
    // The category whose probability a growing linear predictor raises, and the other one.
    std::string Raised() const
    {
        return std::is_same_v<Model, ORModel> ? built.first : built.second;
    }
    std::string Lowered() const
    {
        return std::is_same_v<Model, ORModel> ? built.second : built.first;
    }
    // What a bad case predicts: ordinal models go on with their thresholds, both 0.5 here.
    std::string Missing(const std::string& text) const
    {
        return OfFamily::goesOnAfterABadValue ? built.first : text;
    }

    TwoCategories<Model> built;
    Slot slot;
    std::unique_ptr<Case> last;
};
using Models = ::testing::Types<BLRModel, MLRModel, ORModel, OGZLRModel>;
TYPED_TEST_SUITE(Classifiers, Models);

TYPED_TEST(Classifiers, WriteEachProbabilityAndTheMoreProbableCategory)
{
    this->built.Ready();
    ASSERT_TRUE(this->Score(1.5, 0.5).IsOK());
    EXPECT_EQ(this->slot.Text(), this->Raised());
    EXPECT_NEAR(this->slot.Percent(this->Raised()), kLogisticOf2, kRounding);
    EXPECT_NEAR(this->slot.Percent(this->Lowered()), 1.0 - kLogisticOf2, kRounding);
    ASSERT_TRUE(this->Score(-1.5, -0.5).IsOK());  // the same result, other way round
    EXPECT_EQ(this->slot.Text(), this->Lowered());
    EXPECT_NEAR(this->slot.Percent(this->Lowered()), kLogisticOf2, kRounding);
    EXPECT_EQ(this->slot.PercentCount(), 2u);
}

TYPED_TEST(Classifiers, ATieGoesToTheFirstCategory)
{
    this->built.Ready();
    ASSERT_TRUE(this->Score(2, -2).IsOK());
    EXPECT_EQ(this->slot.Text(), this->built.first);
    EXPECT_EQ(this->slot.Percent("no"), 0.5);
    EXPECT_EQ(this->slot.Percent("yes"), 0.5);
}

TYPED_TEST(Classifiers, NullRecordFailsWithoutAResultAndIsTracedByTwoFamilies)
{
    const std::vector<std::string> lines = TraceOfNullRecord(this->built.Ready());
    if (TestFixture::OfFamily::traces) {
        EXPECT_EQ(lines, std::vector<std::string>{"MCStatus error code is :90029"});
    } else {
        EXPECT_TRUE(lines.empty());
    }
}

TYPED_TEST(Classifiers, ReusedResultKeepsItsObjectsAndTakesEveryPercentInPlace)
{
    this->built.Ready();
    ASSERT_TRUE(this->Score(1, 1).IsOK());
    const ScoreResult* result = this->slot.result;
    const ScoreValue* prediction = result->GetPrediction();
    ASSERT_TRUE(this->Score(-1, -1).IsOK());
    EXPECT_EQ(this->slot.result, result);
    EXPECT_EQ(result->GetPrediction(), prediction);
    EXPECT_EQ(this->slot.PercentCount(), 2u);
}

TYPED_TEST(Classifiers, ResultOfAnotherTypeIsReplaced)
{
    this->built.Ready();
    this->slot.result = new CLRResult(this->built.model.GetTargetVar());
    this->slot.result->SetPrediction(new NumericValue(7.0));
    ASSERT_TRUE(this->Score(1, 1).IsOK());
    EXPECT_EQ(this->slot.result->GetScoreResultType(), ScoreResult::MLR_RESULT);
    EXPECT_EQ(this->slot.Text(), this->Raised());
    EXPECT_EQ(this->slot.PercentCount(), 2u);
}

TYPED_TEST(Classifiers, ReusedResultWithoutPercentsGetsThemAppended)
{
    this->built.Ready();
    this->slot.result = new MLRResult(this->built.model.GetTargetVar());
    this->slot.result->SetPrediction(new StringValue("no"));
    ASSERT_TRUE(this->Score(1, 1).IsOK());
    EXPECT_EQ(this->slot.PercentCount(), 2u);
    EXPECT_NEAR(this->slot.Percent(this->Raised()), kLogisticOf2, kRounding);
}

TYPED_TEST(Classifiers, ReusedResultWithSomePercentsIsWrittenInPlaceAndNotExtended)
{
    this->built.Ready();
    auto* result = new MLRResult(this->built.model.GetTargetVar());
    this->slot.result = result;
    result->SetPrediction(new StringValue("no"));
    result->AddValuePercent(new StringValue("no"), 0.25);
    ASSERT_TRUE(this->Score(1, 1).IsOK());
    EXPECT_EQ(this->slot.PercentCount(), 1u);
    EXPECT_NEAR(this->slot.Percent("no"),
                this->Raised() == "no" ? kLogisticOf2 : 1.0 - kLogisticOf2, kRounding);
}

TYPED_TEST(Classifiers, PredictionOnlyWritesTheCategoryAlone)
{
    this->built.model.SetPredictionOnly(true);
    this->built.Ready();
    ASSERT_TRUE(this->Score(1, 1).IsOK());
    EXPECT_EQ(this->slot.Text(), this->Raised());
    EXPECT_EQ(this->slot.PercentCount(), 0u);
    ASSERT_TRUE(this->Score(-1, -1).IsOK());
    EXPECT_EQ(this->slot.Text(), this->Lowered());
    EXPECT_EQ(this->slot.PercentCount(), 0u);
}

TYPED_TEST(Classifiers, PredictionOnlyLeavesThePercentsOfAReusedResult)
{
    this->built.Ready();
    ASSERT_TRUE(this->Score(1, 1).IsOK());
    this->built.model.SetPredictionOnly(true);
    ASSERT_TRUE(this->Score(-1, -1).IsOK());
    EXPECT_EQ(this->slot.Text(), this->Lowered());
    EXPECT_NEAR(this->slot.Percent(this->Raised()), kLogisticOf2, kRounding);  // the case before
}

TYPED_TEST(Classifiers, NumericTargetPredictsItsNumber)
{
    TwoCategories<TypeParam> numeric(NumberTarget());
    TypeParam& model = numeric.Ready();
    const std::string raised = std::is_same_v<TypeParam, ORModel> ? "0" : "1";
    Case up;
    Case down;
    up.With("a", 1).With("b", 1);
    down.With("a", -1).With("b", -1);
    Slot out;
    ASSERT_TRUE(model.GetScore(&up.Record(), out.result, true).IsOK());
    EXPECT_EQ(out.result->GetPrediction()->GetValueType(), ScoreValue::NUMERIC);
    EXPECT_EQ(out.Number(), raised == "1" ? 1.0 : 0.0);
    EXPECT_NEAR(out.Percent(raised), kLogisticOf2, kRounding);
    const ScoreValue* prediction = out.result->GetPrediction();
    ASSERT_TRUE(model.GetScore(&down.Record(), out.result, true).IsOK());
    EXPECT_EQ(out.result->GetPrediction(), prediction);
    EXPECT_EQ(out.Number(), raised == "1" ? 0.0 : 1.0);
    EXPECT_NEAR(out.Percent(raised), 1.0 - kLogisticOf2, kRounding);
}

TYPED_TEST(Classifiers, ReusedResultWithANumberTakesTheNumberOfTheName)
{
    TwoCategories<TypeParam> numeric(NumberTarget());
    TypeParam& model = numeric.Ready();
    Slot out;
    out.result = new MLRResult(model.GetTargetVar());
    out.result->SetPrediction(new NumericValue(9.0));
    Case c;
    c.With("a", 1).With("b", 1);
    ASSERT_TRUE(model.GetScore(&c.Record(), out.result, true).IsOK());
    EXPECT_EQ(out.Number(), (std::is_same_v<TypeParam, ORModel> ? 0.0 : 1.0));
}

TYPED_TEST(Classifiers, NumericTargetThatIsMissingReadsSystemMissing)
{
    TwoCategories<TypeParam> numeric(NumberTarget());
    numeric.model.SetMissingValuePolicy(ScoreModel::MV_SYSMIS_RESULT);
    TypeParam& model = numeric.Ready();
    const double missing = TestFixture::OfFamily::goesOnAfterABadValue ? 0.0 : kSysmis;
    Slot out;
    for (int turn = 0; turn < 2; ++turn) {  // a fresh result and a reused one
        Case c;
        c.With("a", kSysmis).With("b", 1);
        EXPECT_FALSE(model.GetScore(&c.Record(), out.result, true).IsOK());
        EXPECT_EQ(out.result->GetPrediction()->GetValueType(), ScoreValue::NUMERIC);
        EXPECT_EQ(out.Number(), missing);
    }
}

TYPED_TEST(Classifiers, BadValueUnderSysmisPolicyWritesTheMissingTextAndNamesTheLastPredictor)
{
    this->built.model.SetMissingValuePolicy(ScoreModel::MV_SYSMIS_RESULT);
    this->built.Ready();
    auto status = this->Score(kSysmis, 1);
    EXPECT_EQ(status.GetErrorCode(), 90029);
    EXPECT_EQ(status.GetDiscreteDatum(), 0);
    EXPECT_EQ(this->slot.Text(), this->Missing(""));
    status = this->Score(kSysmis, kSysmis);
    EXPECT_EQ(status.GetErrorCode(), 90029);
    EXPECT_EQ(status.GetDiscreteDatum(), 1);
    EXPECT_EQ(this->slot.Text(), this->Missing("NULL"));
    ASSERT_TRUE(this->Score(1, 1).IsOK());
    EXPECT_EQ(this->slot.Text(), this->Raised());
}

TYPED_TEST(Classifiers, BadValueUnderStatusOnlyPolicyKeepsTheResultUnlessOrdinal)
{
    this->built.model.SetMissingValuePolicy(ScoreModel::MV_STATUS_ONLY);
    this->built.Ready();
    ASSERT_TRUE(this->Score(1, 1).IsOK());
    const auto status = this->Score(1, nullptr);
    EXPECT_EQ(status.GetErrorCode(), 90029);
    EXPECT_EQ(status.GetDiscreteDatum(), 1);
    if (TestFixture::OfFamily::goesOnAfterABadValue) {
        EXPECT_EQ(this->slot.Text(), this->built.first);
        EXPECT_EQ(this->slot.Percent("yes"), 0.5);
    } else {
        EXPECT_EQ(this->slot.Text(), this->Raised());
        EXPECT_NEAR(this->slot.Percent("yes"), kLogisticOf2, kRounding);
    }
}

TYPED_TEST(Classifiers, BadValueUnderStatusOnlyPolicyLeavesAFreshResultEmptyUnlessOrdinal)
{
    this->built.model.SetMissingValuePolicy(ScoreModel::MV_STATUS_ONLY);
    this->built.Ready();
    EXPECT_FALSE(this->Score(kSysmis, 1).IsOK());
    ASSERT_NE(this->slot.result, nullptr);
    if (TestFixture::OfFamily::goesOnAfterABadValue) {
        EXPECT_EQ(this->slot.Text(), "no");
    } else {
        EXPECT_EQ(this->slot.result->GetPrediction(), nullptr);
        EXPECT_EQ(this->slot.PercentCount(), 0u);
    }
}

TYPED_TEST(Classifiers, SubstitutesTheReplacementOfACovariate)
{
    Replace(*this->built.Dictionary().GetVar("a"), 1.5);
    this->built.Ready();
    EXPECT_EQ(this->built.model.GetMissingValuePolicy(), ScoreModel::MV_SUBSTITUTE);
    for (const bool absent : {false, true}) {
        ASSERT_TRUE((absent ? this->Score(nullptr, 0.5) : this->Score(kSysmis, 0.5)).IsOK());
        EXPECT_NEAR(this->slot.Percent(this->Raised()), kLogisticOf2, kRounding);
    }
    const auto status = this->Score(1, kSysmis);  // b has none
    EXPECT_EQ(status.GetErrorCode(), 90029);
    EXPECT_EQ(this->slot.Text(), this->Missing("NULL"));
}

TYPED_TEST(Classifiers, SubstitutionWithNothingToSubstituteIsTheSysmisPolicy)
{
    this->built.Ready();
    EXPECT_EQ(this->built.model.GetMissingValuePolicy(), ScoreModel::MV_SYSMIS_RESULT);
    this->built.model.SetMissingValuePolicy(ScoreModel::MV_SUBSTITUTE);  // as a host may ask
    EXPECT_EQ(this->Score(kSysmis, 1).GetErrorCode(), 90029);
    EXPECT_EQ(this->slot.Text(), this->Missing(""));
}

TYPED_TEST(Classifiers, AnyOtherPolicyLetsTheValueStand)
{
    this->built.model.SetMissingValuePolicy(static_cast<ScoreModel::MVPolicy>(7));
    this->built.Ready();
    ASSERT_TRUE(this->Score(kSysmis, 1).IsOK());  // the most negative number there is
    EXPECT_EQ(this->slot.Text(), this->Lowered());
    EXPECT_EQ(this->slot.Percent(this->Raised()), 0.0);
}

TYPED_TEST(Classifiers, WithoutValidationNothingIsTested)
{
    this->built.model.SetScoreCaseValidationCheck(false);
    this->built.Ready();
    ASSERT_TRUE(this->Score(kSysmis, 1).IsOK());
    EXPECT_EQ(this->slot.Text(), this->Lowered());
}

TYPED_TEST(Classifiers, RecordWithoutPositionsIsReadByName)
{
    this->built.Ready();
    for (int turn = 0; turn < 2; ++turn) {
        ASSERT_TRUE(this->Score(1, 1, false).IsOK());
        EXPECT_NEAR(this->slot.Percent(this->Raised()), kLogisticOf2, kRounding);
    }
    ASSERT_TRUE(this->Score(-1, -1, true).IsOK());  // the first record with positions binds
    EXPECT_NEAR(this->slot.Percent(this->Lowered()), kLogisticOf2, kRounding);
    ASSERT_TRUE(this->Score(1, 1, false).IsOK());
    EXPECT_NEAR(this->slot.Percent(this->Raised()), kLogisticOf2, kRounding);
}

TYPED_TEST(Classifiers, DerivedPredictorComesFromTheTransformationsUnlessTheRecordHoldsIt)
{
    Built<TypeParam> own(TextTarget());
    const TransformVar& d = own.DerivedCovariate("d", 2.0);
    const bool ordinal = TestFixture::OfFamily::isOrdinal;
    if (ordinal) own.Parameters({"threshold"});
    own.Parameters({"pd"});
    ASSERT_TRUE(own.SetUp());
    own.model.GetPPCMatrix()->SetCell("pd", "d", new NumericValue(1.0));
    auto& numbers = own.model.GetNumericPPMatrix();
    if (!numbers.empty()) numbers[0][0] = 1.0;
    own.Beta(ordinal ? "no" : "yes", "pd", 1.0);
    own.model.FinishSetup();
    EXPECT_TRUE(d.IsDerived());

    const std::string raised = std::is_same_v<TypeParam, ORModel> ? "no" : "yes";
    Slot out;
    Case without;
    without.With("other", 5);
    ASSERT_TRUE(own.model.GetScore(&without.Record(), out.result, false).IsOK());
    EXPECT_NEAR(out.Percent(raised), kLogisticOf2, kRounding);
    Case within(false);  // by name: the model is bound to the layout of the first record
    within.With("d", -2);
    ASSERT_TRUE(own.model.GetScore(&within.Record(), out.result, true).IsOK());
    EXPECT_NEAR(out.Percent(raised), 1.0 - kLogisticOf2, kRounding);
    // The record's own is passed over where it holds no derived values.
    ASSERT_TRUE(own.model.GetScore(&within.Record(), out.result, false).IsOK());
    EXPECT_NEAR(out.Percent(raised), kLogisticOf2, kRounding);
}

TYPED_TEST(Classifiers, PredictorThatIsNowhereFailsSetupWithItsTablesMade)
{
    Built<TypeParam> own(TextTarget());
    own.model.AddPredictor("nowhere");
    own.Parameters({"p"});
    EXPECT_FALSE(own.SetUp());
    EXPECT_NE(own.model.GetParamTable(), nullptr);
    EXPECT_NE(own.model.GetPPCMatrix(), nullptr);
    // Of these families the binary one alone makes its covariances at once.
    EXPECT_EQ(own.model.GetPCovMatrix() != nullptr, (std::is_same_v<TypeParam, BLRModel>));
}

TYPED_TEST(Classifiers, CategoriesAreNumberedInTheTargetsOrderAndOnce)
{
    Built<TypeParam> own(Categorical("y", {"b", "a", "b"}));
    own.Parameters({"p"});
    EXPECT_TRUE(own.SetUp());
    EXPECT_EQ(own.model.GetCategoryVector(), (RegressionModel::NameVector{{"a", 1}, {"b", 0}}));
}

TYPED_TEST(Classifiers, PowersOfACovariate)
{
    // x^e by its cell: 0 drops the parameter whatever the exponent is, 1 and an exponent of 0 or
    // below leave 1. The first category's probability shows the linear predictor.
    struct Row {
        double x;
        const char* exponent;
        double lp;
    };
    const Row rows[] = {{2.0, "1", 2.0},  {2.0, "3", 8.0},  {4.0, "0.5", 2.0}, {1.0, "5", 1.0},
                        {0.0, "0", 0.0},  {0.0, "-1", 0.0}, {0.0, "2", 0.0},   {3.0, "0", 1.0},
                        {3.0, "-2", 1.0}, {-2.0, "2", 4.0}, {-2.0, "1", -2.0}};
    for (const Row& row : rows) {
        Built<TypeParam> own(TextTarget());
        own.Covariate("x");
        const bool ordinal = TestFixture::OfFamily::isOrdinal;
        if (ordinal) own.Parameters({"threshold"});
        own.Parameters({"px"});
        ASSERT_TRUE(own.SetUp());
        own.Cell("px", "x", row.exponent);
        own.Beta(ordinal ? "no" : "yes", "px", 1.0);
        own.model.FinishSetup();
        Slot out;
        Case c;
        c.With("x", row.x);
        ASSERT_TRUE(own.model.GetScore(&c.Record(), out.result, true).IsOK());
        const std::string raised = std::is_same_v<TypeParam, ORModel> ? "no" : "yes";
        EXPECT_NEAR(out.Percent(raised), 1.0 / (1.0 + std::exp(-row.lp)), kRounding)
            << row.x << "^" << row.exponent;
    }
}

TYPED_TEST(Classifiers, FractionalPowerOfANegativeCovariateIsNoNumber)
{
    Built<TypeParam> own(TextTarget());
    own.Covariate("x");
    const bool ordinal = TestFixture::OfFamily::isOrdinal;
    if (ordinal) own.Parameters({"threshold"});
    own.Parameters({"px"});
    ASSERT_TRUE(own.SetUp());
    own.Cell("px", "x", "0.5");
    own.Beta(ordinal ? "no" : "yes", "px", 1.0);
    own.model.FinishSetup();
    Slot out;
    Case c;
    c.With("x", -2.0);
    ASSERT_TRUE(own.model.GetScore(&c.Record(), out.result, true).IsOK());  // nothing guards it
    EXPECT_EQ(out.Text(), "no");
    EXPECT_TRUE(std::isnan(out.Percent("no")));
    EXPECT_TRUE(std::isnan(out.Percent("yes")));
}

TYPED_TEST(Classifiers, BetaOfZeroIsPassedOver)
{
    // What its parameter would compute doesn't matter: no number here.
    Built<TypeParam> own(TextTarget());
    own.Covariate("x");
    const bool ordinal = TestFixture::OfFamily::isOrdinal;
    if (ordinal) own.Parameters({"threshold"});
    own.Parameters({"px"});
    ASSERT_TRUE(own.SetUp());
    own.Cell("px", "x", "0.5");
    own.model.FinishSetup();
    Slot out;
    Case c;
    c.With("x", -2.0);
    ASSERT_TRUE(own.model.GetScore(&c.Record(), out.result, true).IsOK());
    EXPECT_EQ(out.Percent("no"), 0.5);
}

}  // namespace
}  // namespace MCVelscore_850
