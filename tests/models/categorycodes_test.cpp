#include "models/categorycodes.h"

#include <gtest/gtest.h>

#include <cmath>

#include "host/values/datetimevalue.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"

namespace MCVelscore_850 {
namespace {

// Found one after another where they are few, by a table where they are many: it makes no
// difference.
class CategoryCodesOf : public ::testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(FewAndMany, CategoryCodesOf, ::testing::Values(3, 30));

TEST_P(CategoryCodesOf, FindsNumbers)
{
    CategoryCodes codes;
    for (int i = 0; i < GetParam(); ++i) {
        const NumericValue number(0.5 * i);
        EXPECT_EQ(codes.Append(&number), i);
    }
    const auto find = [&](double number) {
        const NumericValue value(number);
        return codes.Find(&value);
    };
    EXPECT_EQ(find(0.0), 0);
    EXPECT_EQ(find(-0.0), 0);
    EXPECT_EQ(find(1.0), 2);
    EXPECT_EQ(find(std::nextafter(1.0, 2.0)), CategoryCodes::kNone);
    EXPECT_EQ(find(std::nan("")), CategoryCodes::kNone);
    const StringValue text("1");
    EXPECT_EQ(codes.Find(&text), CategoryCodes::kNone);
    EXPECT_EQ(codes.Find(nullptr), CategoryCodes::kNone);
}

TEST_P(CategoryCodesOf, FindsTexts)
{
    CategoryCodes codes;
    for (int i = 0; i < GetParam(); ++i) {
        const StringValue text(std::to_string(i));
        EXPECT_EQ(codes.Add(text), i);
    }
    const StringValue known("2");
    EXPECT_EQ(codes.Add(known), 2);
    const StringValue blank("2 ");
    EXPECT_EQ(codes.Find(&blank), CategoryCodes::kNone);
    const NumericValue number(2.0);
    EXPECT_EQ(codes.Find(&number), CategoryCodes::kNone);
    EXPECT_EQ(codes.Size(), static_cast<size_t>(GetParam()));
}

TEST_P(CategoryCodesOf, FindsDates)
{
    CategoryCodes codes;
    for (int i = 0; i < GetParam(); ++i) {
        const DateTimeValue date(i);
        EXPECT_EQ(codes.Append(&date), i);
    }
    const DateTimeValue known(2.0), unknown(-1.0);
    EXPECT_EQ(codes.Find(&known), 2);
    EXPECT_EQ(codes.Find(&unknown), CategoryCodes::kNone);
}

TEST_P(CategoryCodesOf, ANullCategoryTakesACodeAndOfEqualOnesTheFirstIsFound)
{
    CategoryCodes codes;
    const StringValue text("twice");
    EXPECT_EQ(codes.Append(nullptr), 0);
    for (int i = 1; i < GetParam(); ++i) EXPECT_EQ(codes.Append(&text), i);
    EXPECT_EQ(codes.Find(&text), 1);
    EXPECT_EQ(codes.Find(nullptr), CategoryCodes::kNone);
}

}  // namespace
}  // namespace MCVelscore_850
