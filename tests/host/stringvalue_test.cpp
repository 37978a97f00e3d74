#include "host/values/stringvalue.h"

#include <memory>

#include <gtest/gtest.h>

#include "host/values/datetimevalue.h"
#include "host/values/numericvalue.h"

namespace MCVelscore_850 {
namespace {

TEST(StringValue, EqualsComparesBytes)
{
    const StringValue lower("abc");
    const StringValue same(std::string("abc"));
    const StringValue upper("Abc");
    const StringValue longer("abc ");
    EXPECT_TRUE(lower.Equals(&same));
    EXPECT_FALSE(lower.Equals(&upper));
    EXPECT_FALSE(lower.Equals(&longer));
    EXPECT_FALSE(lower.Equals(nullptr));
}

TEST(StringValue, EqualsNothingOfAnotherKind)
{
    const StringValue text("1");
    const NumericValue number(1.0);
    const DateTimeValue date(1.0);
    EXPECT_FALSE(text.Equals(&number));
    EXPECT_FALSE(text.Equals(&date));
}

TEST(StringValue, DoubleIsTheNumberThatTheTextSpells)
{
    EXPECT_EQ(StringValue("2.50").GetDouble(), 2.5);
    EXPECT_EQ(StringValue(" 3 ").GetDouble(), 3.0);
    EXPECT_EQ(StringValue("three").GetDouble(), NumericValue::GetSysmisValue());
    EXPECT_EQ(StringValue("").GetDouble(), NumericValue::GetSysmisValue());
}

TEST(StringValue, StringKeepsEveryByte)
{
    const std::string bytes("a\0b \xC3\xA9", 6);
    EXPECT_EQ(StringValue(bytes).GetString(), bytes);
    EXPECT_EQ(StringValue(" 007 ").GetString(), " 007 ");
    EXPECT_EQ(StringValue("x").GetValueType(), 1);
}

TEST(StringValue, MissingTextIsMissingForVariablesAndNotInItself)
{
    StringValue text("x");
    EXPECT_FALSE(text.IsMissingText());
    text.SetMissing();
    EXPECT_TRUE(text.IsMissingText());
    EXPECT_FALSE(text.IsMissingValue());
    EXPECT_EQ(text.GetString(), "");
}

TEST(StringValue, SettingATextEndsItsBeingMissing)
{
    StringValue text("x");
    text.SetMissing();
    text.SetString("");
    EXPECT_FALSE(text.IsMissingText());
    text.SetMissing();
    text.Assign("y");
    EXPECT_FALSE(text.IsMissingText());
    EXPECT_EQ(text.GetString(), "y");
}

TEST(StringValue, ReservedTextKeepsItsPlace)
{
    StringValue value("a");
    value.Reserve(100);
    EXPECT_EQ(value.Text(), "a");
    const char* place = value.Text().data();
    value.SetString(std::string(100, 'b'));
    EXPECT_EQ(value.Text().data(), place);
    value.Reserve(1);
    EXPECT_EQ(value.Text(), std::string(100, 'b'));
}

TEST(StringValue, CloneKeepsBeingMissing)
{
    StringValue text("x");
    text.SetMissing();
    const std::unique_ptr<ScoreValue> copy(text.Clone());
    text.SetString("later");
    EXPECT_TRUE(static_cast<const StringValue&>(*copy).IsMissingText());
}

}  // namespace
}  // namespace MCVelscore_850
