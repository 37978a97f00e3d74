#include <gtest/gtest.h>

#include "models/clrresult.h"
#include "models/coxregresult.h"
#include "models/lrresult.h"
#include "models/mlrresult.h"
#include "tests/allocations.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

// A value that says when it is released.
class Watched final : public ScoreValue {
public:
    explicit Watched(int& released) : ScoreValue(NUMERIC), released_(released) {}
    ~Watched() override { ++released_; }
    ScoreValue* Clone() const override { return new NumericValue(1.0); }
    bool Equals(const ScoreValue*) const override { return false; }
    double GetDouble() const override { return 1.0; }
    std::string GetString() const override { return "watched"; }
    bool IsMissingValue() const override { return false; }
    int GetValueType() const override { return NUMERIC; }

private:
    int& released_;
};

TEST(Results, TypesAreTheNumbersThatHostsKnow)
{
    EXPECT_EQ(LRResult(nullptr).GetScoreResultType(), 5);
    EXPECT_EQ(CLRResult(nullptr).GetScoreResultType(), 4);
    EXPECT_EQ(MLRResult(nullptr).GetScoreResultType(), 3);
    EXPECT_EQ(CoxRegResult(nullptr).GetScoreResultType(), 17);
}

template <class Result>
class EveryResult : public ::testing::Test {};
using AllResults = ::testing::Types<LRResult, CLRResult, MLRResult, CoxRegResult>;
TYPED_TEST_SUITE(EveryResult, AllResults);

TYPED_TEST(EveryResult, SetPredictionReleasesTheOldOneAndTheDestructorTheLast)
{
    int released = 0;
    {
        TypeParam result(nullptr);
        result.SetPrediction(new Watched(released));
        EXPECT_EQ(released, 0);
        result.SetPrediction(new Watched(released));
        EXPECT_EQ(released, 1);
    }
    EXPECT_EQ(released, 2);
}

TYPED_TEST(EveryResult, SetPredictionOfTheObjectThatIsThereKeepsIt)
{
    int released = 0;
    {
        TypeParam result(nullptr);
        result.SetPrediction(new Watched(released));
        result.SetPrediction(result.GetPrediction());
        EXPECT_EQ(released, 0);
    }
    EXPECT_EQ(released, 1);
}

TYPED_TEST(EveryResult, AnswersTheTargetItWasMadeFor)
{
    const auto target = Continuous("y");
    EXPECT_EQ(TypeParam(target.get()).GetTarget(), target.get());
    EXPECT_EQ(TypeParam(target.get()).GetPrediction(), nullptr);
}

TYPED_TEST(EveryResult, SetConfidenceHasNoEffect)
{
    TypeParam result(nullptr);
    result.SetPrediction(new NumericValue(1.0));
    const double before = result.GetConfidence();
    result.SetConfidence(0.5);
    EXPECT_EQ(result.GetConfidence(), before);
}

TYPED_TEST(EveryResult, CopyHasAPredictionOfItsOwn)
{
    TypeParam result(nullptr);
    result.SetPrediction(new NumericValue(2.5));
    const TypeParam copy(result);
    EXPECT_NE(copy.GetPrediction(), result.GetPrediction());
    EXPECT_EQ(copy.GetPrediction()->GetDouble(), 2.5);
    TypeParam assigned(nullptr);
    assigned.SetPrediction(new NumericValue(9.0));
    assigned = result;
    EXPECT_NE(assigned.GetPrediction(), result.GetPrediction());
    EXPECT_EQ(assigned.GetPrediction()->GetDouble(), 2.5);
}

TYPED_TEST(EveryResult, AssignmentOfNoPredictionLeavesNone)
{
    TypeParam empty(nullptr);
    TypeParam result(nullptr);
    result.SetPrediction(new NumericValue(2.5));
    result = empty;
    EXPECT_EQ(result.GetPrediction(), nullptr);
}

TYPED_TEST(EveryResult, SelfAssignmentChangesNothing)
{
    TypeParam result(nullptr);
    result.SetPrediction(new NumericValue(2.5));
    const ScoreValue* before = result.GetPrediction();
    TypeParam& same = result;
    result = same;
    EXPECT_EQ(result.GetPrediction(), before);
}

TEST(LRResult, FreshOneHasNoErrorAndNoLimits)
{
    const LRResult result(nullptr);
    EXPECT_EQ(result.GetStdDev(), -1.0);
    EXPECT_EQ(result.GetConfidence(), -1.0);
    EXPECT_EQ(result.GetCIBottom(), kSysmis);
    EXPECT_EQ(result.GetCITop(), kSysmis);
}

TEST(LRResult, CopyAndAssignmentCarryErrorAndLimits)
{
    LRResult result(nullptr);
    result.SetStdDev(1.5);
    result.SetCIBottom(-2.0);
    result.SetCITop(3.0);
    const LRResult copy(result);
    LRResult assigned(nullptr);
    assigned = result;
    for (const LRResult* r : {&copy, static_cast<const LRResult*>(&assigned)}) {
        EXPECT_EQ(r->GetStdDev(), 1.5);
        EXPECT_EQ(r->GetCIBottom(), -2.0);
        EXPECT_EQ(r->GetCITop(), 3.0);
        EXPECT_EQ(r->GetPrediction(), nullptr);
    }
}

TEST(CLRResult, KeepsNoStandardError)
{
    CLRResult result(nullptr);
    result.SetStdDev(2.0);
    EXPECT_EQ(result.GetStdDev(), -1.0);
    EXPECT_EQ(result.GetConfidence(), 1.0);
}

TEST(MLRResult, APercentIsSetWhereverTheCallerLooksFirst)
{
    const auto target = Categorical("y", {"a", "b"});
    for (const size_t place : {size_t{0}, size_t{1}, size_t{2}}) {
        MLRResult result(target.get());
        result.AddValuePercent(new StringValue("a"), 0.25);
        result.AddValuePercent(new StringValue("b"), 0.75);
        EXPECT_TRUE(result.SetPercentAt(place, "b", 0.5));
        EXPECT_FALSE(result.SetPercentAt(place, "c", 0.1));
        const StringValue a("a");
        const StringValue b("b");
        EXPECT_EQ(result.GetPercent(&a), 0.25) << place;
        EXPECT_EQ(result.GetPercent(&b), 0.5) << place;
    }
}

TEST(MLRResult, ConfidenceIsThePercentOfThePrediction)
{
    const auto target = Categorical("y", {"a", "b"});
    MLRResult result(target.get());
    EXPECT_EQ(result.GetConfidence(), -1.0);  // no percents
    EXPECT_TRUE(result.AddValuePercent(new StringValue("a"), 0.25));
    EXPECT_TRUE(result.AddValuePercent(new StringValue("b"), 0.75));
    EXPECT_EQ(result.GetConfidence(), -1.0);  // no prediction
    result.SetPrediction(new StringValue("b"));
    EXPECT_EQ(result.GetConfidence(), 0.75);
    result.SetPrediction(new StringValue("c"));
    EXPECT_EQ(result.GetConfidence(), -1.0);  // not among the entries
}

TEST(MLRResult, ValueThatTheTargetRefusesIsReleasedAndNotAdded)
{
    auto target = Categorical("y", {"a", "b"});
    target->DeclareValue(std::make_unique<StringValue>("gone"), "gone", DictVar::Property::Missing);
    MLRResult result(target.get());
    const long before = LiveAllocations();
    EXPECT_FALSE(result.AddValuePercent(new StringValue("c"), 0.5));     // not valid
    EXPECT_FALSE(result.AddValuePercent(new StringValue("gone"), 0.5));  // missing
    EXPECT_EQ(LiveAllocations(), before);
    EXPECT_TRUE(result.GetAllValuePercent().empty());
}

TEST(MLRResult, SameCategoryTwiceIsAddedTwice)
{
    const auto target = Categorical("y", {"a", "b"});
    MLRResult result(target.get());
    EXPECT_TRUE(result.AddValuePercent(new StringValue("a"), 0.1));
    EXPECT_TRUE(result.AddValuePercent(new StringValue("a"), 0.2));
    EXPECT_EQ(result.GetAllValuePercent().size(), 2u);
    EXPECT_TRUE(result.SetPercent("a", 0.3));  // the first entry alone
    EXPECT_EQ(result.GetAllValuePercent()[0].second, 0.3);
    EXPECT_EQ(result.GetAllValuePercent()[1].second, 0.2);
}

TEST(MLRResult, NumericCategoryIsFoundByItsTextAndNotByItsNumber)
{
    const auto target = Categorical("y", {"1", "0.5"}, ScoreDictVar::NUMERIC);
    MLRResult result(target.get());
    const NumericValue one(1.0);
    ASSERT_TRUE(result.AddValuePercent(one.Clone(), 0.25));
    for (const char* key : {"1.0", "01", "1e0", "one", "", "0.5"}) {
        EXPECT_FALSE(result.SetPercent(key, 0.75)) << key;
    }
    EXPECT_TRUE(result.SetPercent("1", 0.75));
    EXPECT_EQ(result.GetPercent(&one), 0.75);
}

TEST(MLRResult, SetPercentOfAnUnknownCategoryChangesNothing)
{
    const auto target = Categorical("y", {"a", "b"});
    MLRResult result(target.get());
    result.AddValuePercent(new StringValue("a"), 0.1);
    EXPECT_FALSE(result.SetPercent("b", 0.9));
    EXPECT_EQ(result.GetAllValuePercent().size(), 1u);
    EXPECT_EQ(result.GetAllValuePercent()[0].second, 0.1);
}

TEST(MLRResult, CopiesHaveValuesOfTheirOwn)
{
    const auto target = Categorical("y", {"a", "b"});
    MLRResult result(target.get());
    result.SetPrediction(new StringValue("a"));
    result.AddValuePercent(new StringValue("a"), 0.1);
    const MLRResult copy(result);
    MLRResult assigned(target.get());
    assigned.AddValuePercent(new StringValue("b"), 0.9);
    assigned = result;
    for (const MLRResult* r : {&copy, static_cast<const MLRResult*>(&assigned)}) {
        ASSERT_EQ(r->GetAllValuePercent().size(), 1u);
        EXPECT_NE(r->GetAllValuePercent()[0].first, result.GetAllValuePercent()[0].first);
        EXPECT_EQ(r->GetAllValuePercent()[0].first->GetString(), "a");
        EXPECT_EQ(r->GetAllValuePercent()[0].second, 0.1);
    }
}

TEST(MLRResult, ReleasesItsValuesAlsoThoseThatAnAssignmentReplaces)
{
    const auto target = Categorical("y", {"a", "b"});
    const long before = LiveAllocations();
    {
        MLRResult two(target.get());
        two.SetPrediction(new StringValue("a"));
        two.AddValuePercent(new StringValue("a"), 0.25);
        two.AddValuePercent(new StringValue("b"), 0.75);
        MLRResult one(target.get());
        one.SetPrediction(new StringValue("b"));
        one.AddValuePercent(new StringValue("b"), 1.0);
        MLRResult copy(two);
        copy = one;
        one = two;
        EXPECT_EQ(copy.GetAllValuePercent().size(), 1u);
        EXPECT_EQ(one.GetAllValuePercent().size(), 2u);
    }
    EXPECT_EQ(LiveAllocations(), before);
}

TEST(CoxRegResult, CopyTakesTheDeadStringAndNotTheHazard)
{
    CoxRegResult result(nullptr);
    EXPECT_EQ(result.GetDeadString(), "");
    EXPECT_EQ(result.GetCumHazardValue(), kSysmis);
    result.SetDeadString("1,2,");
    result.SetCumHazardValue(0.5);
    const CoxRegResult copy(result);
    EXPECT_EQ(copy.GetDeadString(), "1,2,");
    EXPECT_EQ(copy.GetCumHazardValue(), kSysmis);
}

TEST(CoxRegResult, AssignmentKeepsDeadStringAndHazardAsTheyWere)
{
    CoxRegResult from(nullptr);
    from.SetDeadString("1,");
    from.SetCumHazardValue(0.5);
    CoxRegResult to(nullptr);
    to.SetDeadString("2,");
    to.SetCumHazardValue(0.25);
    to = from;
    EXPECT_EQ(to.GetDeadString(), "2,");
    EXPECT_EQ(to.GetCumHazardValue(), 0.25);
}

}  // namespace
}  // namespace MCVelscore_850
