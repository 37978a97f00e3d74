// A case that scores allocates nothing after the first: counted over a million cases.

#include <gtest/gtest.h>

#include "models/coxregresult.h"
#include "models/coxregrmodel.h"
#include "models/glrmodel.h"
#include "models/lrmodel.h"
#include "tests/models/allocationcounter.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

template <class Model>
class Scoring : public ::testing::Test {};
using Models = ::testing::Types<LRModel, GLRModel>;
TYPED_TEST_SUITE(Scoring, Models);

TYPED_TEST(Scoring, MillionCasesThroughOneResultAllocateNothing)
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
    constexpr int kCases = 1000000;
    for (int i = 0; i < kCases; ++i) {
        first.SetDoubleValue(i % 100);
        built.model.GetScore(&record, slot.result, true);
        total += slot.Number();
    }
    EXPECT_EQ(AllocationCount() - before, 0);
    // 0.5 times the mean of 0..99, plus 0.5 (2 + .. + 10), in every case.
    EXPECT_DOUBLE_EQ(total / kCases, 0.5 * 49.5 + 0.5 * 54.0);
}

TEST(ScoringOfCox, MillionCasesThroughOneResultAllocateNothing)
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
    constexpr int kCases = 1000000;
    for (int i = 0; i < kCases; ++i) {
        time.SetDoubleValue(i % 1000 + 0.5);
        built.model.GetScore(&record, slot.result, true);
        total += slot.As<CoxRegResult>().GetCumHazardValue();
    }
    EXPECT_EQ(AllocationCount() - before, 0);
    // lp = -1 + 0.5 (3 - 1) = 0, so the mean hazard is that of 0, 0.001, .., 0.999.
    EXPECT_NEAR(total / kCases, 0.4995, 1e-9);
}

TEST(AllocationCounter, SeesAnAllocation)
{
    const long before = AllocationCount();
    delete new NumericValue(1.0);
    EXPECT_GT(AllocationCount(), before);
}

}  // namespace
}  // namespace MCVelscore_850
