#include "host/variables/caserecord.h"

#include <memory>

#include <gtest/gtest.h>

#include "host/values/numericvalue.h"

namespace MCVelscore_850 {
namespace {

TEST(CaseRecord, PositionsFollowTheNames)
{
    const CaseRecord record({"a", "b", "c"});
    EXPECT_EQ(record.GetVarIndex("a"), 0);
    EXPECT_EQ(record.GetVarIndex("c"), 2);
    EXPECT_EQ(record.GetVarIndex("d"), -1);
    EXPECT_TRUE(record.HasIndexedAccess());
    EXPECT_EQ(record.GetValues()->size(), 3u);
}

TEST(CaseRecord, EveryValueStartsAbsent)
{
    const CaseRecord record({"a"});
    EXPECT_EQ(record.GetValue("a"), nullptr);
    EXPECT_EQ(record.GetValue(0), nullptr);
    EXPECT_EQ(record.GetValue("b"), nullptr);
}

TEST(CaseRecord, OwnedAndBorrowedValuesAreFoundByNameAndPosition)
{
    NumericValue borrowed(2.0);
    CaseRecord record({"a", "b"});
    record.Own(0, std::make_unique<NumericValue>(1.0));
    record.Point(1, &borrowed);
    EXPECT_EQ(record.GetValue("a")->GetDouble(), 1.0);
    EXPECT_EQ(record.GetValue(0)->GetDouble(), 1.0);
    EXPECT_EQ(record.GetValue("b"), &borrowed);
    EXPECT_EQ((*record.GetValues())[1], &borrowed);
}

TEST(CaseRecord, ALaterValueTakesThePlaceOfAnEarlier)
{
    NumericValue borrowed(2.0);
    CaseRecord record({"a"});
    record.Own(0, std::make_unique<NumericValue>(1.0));
    record.Own(0, std::make_unique<NumericValue>(3.0));
    EXPECT_EQ(record.GetValue(0)->GetDouble(), 3.0);
    record.Point(0, &borrowed);
    EXPECT_EQ(record.GetValue(0), &borrowed);
    record.Own(0, nullptr);
    EXPECT_EQ(record.GetValue(0), nullptr);
}

TEST(CaseRecord, PositionOutOfRangeAnswersNull)
{
    CaseRecord record({"a"});
    record.Own(0, std::make_unique<NumericValue>(1.0));
    EXPECT_EQ(record.GetValue(-1), nullptr);
    EXPECT_EQ(record.GetValue(1), nullptr);
    EXPECT_EQ(record.GetValue(2147483647), nullptr);
}

TEST(CaseRecord, WithoutIndexedAccessOnlyNamesAnswer)
{
    CaseRecord record({"a"}, false);
    record.Own(0, std::make_unique<NumericValue>(1.0));
    EXPECT_FALSE(record.HasIndexedAccess());
    EXPECT_EQ(record.GetValue(0), nullptr);
    EXPECT_EQ(record.GetValue("a")->GetDouble(), 1.0);
}

}  // namespace
}  // namespace MCVelscore_850
