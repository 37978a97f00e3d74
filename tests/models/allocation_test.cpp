// A case that scores allocates nothing after the first: counted over 100,000 cases.

#include <gtest/gtest.h>

#include "models/clrmodel.h"
#include "models/coxregresult.h"
#include "models/coxregrmodel.h"
#include "models/glrmodel.h"
#include "models/gzlrmodel.h"
#include "models/lrmodel.h"
#include "tests/allocations.h"
#include "tests/models/classifierfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

template <class Model>
class Scoring : public ::testing::Test {};
using Models = ::testing::Types<LRModel, GLRModel, GZLRModel>;
TYPED_TEST_SUITE(Scoring, Models);

TYPED_TEST(Scoring, ManyCasesThroughOneResultAllocateNothing)
{
    constexpr int kPredictors = 10;
    Built<TypeParam> built;
    std::vector<std::string> parameters;
    for (int i = 0; i < kPredictors; ++i) {
        built.Covariate("x" + std::to_string(i));
        parameters.push_back("b" + std::to_string(i));
    }
    parameters.push_back("(Constant)");
    built.Parameters(parameters);
    built.model.SetDF(7.0);
    ASSERT_TRUE(built.SetUp());
    PCovMatrix& covariances = *built.model.CreatePCovMatrix();
    Case c;
    for (int i = 0; i < kPredictors; ++i) {
        const std::string x = "x" + std::to_string(i);
        built.Cell(parameters[static_cast<size_t>(i)], x, "1");
        built.Beta(parameters[static_cast<size_t>(i)], 0.5);
        covariances.SetCell(parameters[static_cast<size_t>(i)], "(Constant)", 0.25);
        c.With(x, i + 1.0);
    }
    covariances.SetCell("(Constant)", "(Constant)", 10.0);
    built.model.FinishSetup();
    CaseRecord& record = c.Record();
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&record, slot.result, true).IsOK());

    const long before = AllocationCount();
    auto& first = static_cast<NumericValue&>(*record.GetValue(0));
    double total = 0.0;
    constexpr int kCases = 100000;
    for (int i = 0; i < kCases; ++i) {
        first.SetDoubleValue(i % 100);
        built.model.GetScore(&record, slot.result, true);
        total += slot.Number();
    }
    EXPECT_EQ(AllocationCount() - before, 0);
    // 0.5 times the mean of 0..99, plus 0.5 (2 + .. + 10), in every case.
    EXPECT_DOUBLE_EQ(total / kCases, 0.5 * 49.5 + 0.5 * 54.0);
}

// Two categories with names that don't fit into a string's own buffer, predicted in turn.
TEST(Classifying, GeneralizedLinearModelAllocatesNothingAfterTheFirstCase)
{
    const std::string event = "the event, under a long name";
    const std::string other = "the other one, under a long name too";
    Built<GZLRModel> built(Categorical("y", {event, other}));
    built.Covariate("x");
    built.Factor("f", {"a category with a long name", "another category with a long name"});
    built.Parameters({"b", "c"});
    built.model.SetLinkFunction(GZLRModel::LINK_LOGIT);
    ASSERT_TRUE(built.SetUp());
    built.Cell("b", "x", "1");
    built.Cell("c", "f", "another category with a long name");
    for (const char* parameter : {"b", "c"}) {
        built.model.GetParamTable()->SetCell(event, parameter, ParamTableCell(1.0, 1));
    }
    built.model.FinishSetup();
    Case c;
    c.With("x", 1.0).With("f", "another category with a long name");
    CaseRecord& record = c.Record();
    auto& x = static_cast<NumericValue&>(*record.GetValue(0));
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&record, slot.result, true).IsOK());
    // The prediction's text grows to the longer of the two names once.
    x.SetDoubleValue(-5.0);
    ASSERT_TRUE(built.model.GetScore(&record, slot.result, true).IsOK());

    const long before = AllocationCount();
    int events = 0;
    constexpr int kCases = 100000;
    for (int i = 0; i < kCases; ++i) {
        x.SetDoubleValue(i % 2 == 0 ? 1.0 : -5.0);  // eta 2 and -4
        built.model.GetScore(&record, slot.result, true);
        const auto& prediction = static_cast<const StringValue&>(*slot.result->GetPrediction());
        events += prediction.Text() == event ? 1 : 0;
    }
    EXPECT_EQ(AllocationCount() - before, 0);
    EXPECT_EQ(events, kCases / 2);
}

TEST(ScoringOfCox, ManyCasesThroughOneResultAllocateNothing)
{
    // Stratified by a text too long for a string's own buffer, centred, with contrasts.
    const std::string south = "the southern of the two strata";
    Built<CoxRegModel> built("status");
    built.Factor("f", {"a", "b"});
    built.Covariate("x");
    for (const char* name : {"time", "s"}) {
        auto var = *name == 's' ? Categorical("s", {"north", south}) : Continuous(name);
        built.Dictionary().AddVar(name, var.release());
    }
    built.Parameters({"pf", "px"});
    built.model.SetContrastMatrix("f", {{1}, {-1}}, {new StringValue("a"), new StringValue("b")});
    built.model.SetBasePointTable({0.0, 1.0});
    built.model.SetEndTimeVariableName("time");
    CoxRegModel::HazardTable table;
    for (int i = 0; i < 1000; ++i) table[i] = 0.001 * i;
    built.model.SetCumHazardTable({{}, table}, {"north", south}, "s");
    built.model.SetMinMaxTime({0.0, 0.0}, {1.0, 1000.0});
    ASSERT_TRUE(built.SetUp());
    built.Cell("pf", "f", "a");
    built.Cell("px", "x", "1");
    built.Beta("pf", 1.0);
    built.Beta("px", 0.5);
    built.model.FinishSetup();
    Case c;
    c.With("f", "b").With("x", 3.0).With("time", 0.0).With("s", south.c_str());
    CaseRecord& record = c.Record();
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&record, slot.result, true).IsOK());

    const long before = AllocationCount();
    auto& time = static_cast<NumericValue&>(*record.GetValue("time"));
    double total = 0.0;
    constexpr int kCases = 100000;
    for (int i = 0; i < kCases; ++i) {
        time.SetDoubleValue(i % 1000 + 0.5);
        built.model.GetScore(&record, slot.result, true);
        total += slot.As<CoxRegResult>().GetCumHazardValue();
    }
    EXPECT_EQ(AllocationCount() - before, 0);
    // lp = -1 + 0.5 (3 - 1) = 0, so the mean hazard is that of 0, 0.001, .., 0.999.
    EXPECT_NEAR(total / kCases, 0.4995, 1e-9);
}

const std::string kShort = "b";
const std::string kLong = "a category of a name that no small buffer holds";

template <class Model>
class ScoringCategories : public ::testing::Test {
protected:
    // Cases whose factor and whose predicted category change from one to the next, the shorter
    // name first; a case in a hundred is bad.
    static void ScoreManyCases(std::unique_ptr<DictVar> target)
    {
        Built<Model> built(std::move(target));
        built.Covariate("x");
        built.Factor("f", {kShort, kLong});
        if constexpr (std::is_same_v<Model, BLRModel>) {
            built.model.SetContrastMatrix("f", {{1, 0}, {0, 1}}, {0, 1});
        }
        built.Parameters({"p0", "px", "pf"});
        ASSERT_TRUE(built.SetUp());
        built.Cell("px", "x", "1");
        built.Cell("pf", "f", kLong);
        // An ordinal model has its betas in the last row but one, here the first.
        constexpr bool kFirstRow = Family<Model>::isOrdinal || std::is_same_v<Model, CLRModel>;
        for (const auto& [category, row] : built.model.GetCategoryVector()) {
            if (row != (kFirstRow ? 0 : 1)) continue;
            built.Beta(category, "px", 1.0);
            built.Beta(category, "pf", 0.5);
        }
        built.model.FinishSetup();

        Case c;
        c.With("x", -3).With("f", kLong.c_str());
        CaseRecord& record = c.Record();
        auto& x = static_cast<NumericValue&>(*record.GetValue(0));
        auto& f = static_cast<StringValue&>(*record.GetValue(1));
        f.SetString(kShort);
        Slot slot;
        ASSERT_TRUE(built.model.GetScore(&record, slot.result, true).IsOK());
        const std::string firstPrediction = slot.Text();

        const long before = AllocationCount();
        constexpr int kCases = 100000;
        int scored = 0;
        for (int i = 0; i < kCases; ++i) {
            x.SetDoubleValue(i % 100 == 7 ? kSysmis : i % 2 == 0 ? 3.0 : -3.0);
            f.SetString(i % 3 == 0 ? kLong : kShort);
            if (built.model.GetScore(&record, slot.result, true).IsOK()) ++scored;
        }
        EXPECT_EQ(AllocationCount() - before, 0);
        EXPECT_EQ(scored, kCases - kCases / 100);
        x.SetDoubleValue(3.0);
        ASSERT_TRUE(built.model.GetScore(&record, slot.result, true).IsOK());
        EXPECT_NE(slot.Text(), firstPrediction);
    }
};
using CategoryModels = ::testing::Types<BLRModel, MLRModel, CLRModel, ORModel, OGZLRModel>;
TYPED_TEST_SUITE(ScoringCategories, CategoryModels);

TYPED_TEST(ScoringCategories, OfTextsOfAnyLengthAllocateNothingAfterTheFirst)
{
    this->ScoreManyCases(Categorical("y", {kShort, kLong}));
    this->ScoreManyCases(Categorical("y", {kLong, kShort}));
}

TYPED_TEST(ScoringCategories, OfNumbersOfAnyLengthAllocateNothingAfterTheFirst)
{
    this->ScoreManyCases(Categorical("y", {"1", "0.30000000000000004"}, ScoreDictVar::NUMERIC));
    this->ScoreManyCases(
        Categorical("y", {"-1.2345678901234567e-100", "2"}, ScoreDictVar::NUMERIC));
}

TEST(AllocationCounter, SeesAnAllocation)
{
    const long before = AllocationCount();
    delete new NumericValue(1.0);
    EXPECT_GT(AllocationCount(), before);
}

}  // namespace
}  // namespace MCVelscore_850
