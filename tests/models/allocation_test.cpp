// A case that scores allocates nothing after the first: counted over a million cases.

#include <gtest/gtest.h>

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

TEST(AllocationCounter, SeesAnAllocation)
{
    const long before = AllocationCount();
    delete new NumericValue(1.0);
    EXPECT_GT(AllocationCount(), before);
}

}  // namespace
}  // namespace MCVelscore_850
