#include "host/variables/catencoder.h"

#include <memory>

#include <gtest/gtest.h>

#include "host/values/datetimevalue.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"
#include "tests/allocations.h"
#include "vars.h"

namespace MCVelscore_850 {
namespace {

using Property = DictVar::Property;

// Longer than a string holds in itself, so that a copy would show as an allocation.
constexpr char kFirst[] = "a category whose name is long enough to need memory";
constexpr char kSecond[] = "another category whose name is long enough to need memory";

TEST(CatEncoder, IsAbsentUntilItIsSetUpAndForContinuousVariables)
{
    DictVar text(TextType());
    EXPECT_EQ(text.GetCatEncoder(), nullptr);
    text.SetUpCatEncoder();
    const CatEncoder* encoder = text.GetCatEncoder();
    EXPECT_NE(encoder, nullptr);
    EXPECT_EQ(text.GetCatEncoderForUpdate(), encoder);
    text.SetUpCatEncoder();
    EXPECT_EQ(text.GetCatEncoder(), encoder);

    DictVar number(NumberType());
    number.SetUpCatEncoder();
    EXPECT_EQ(number.GetCatEncoder(), nullptr);
}

TEST(CatEncoder, AnswersPositionsInDeclaredOrder)
{
    DictVar var(TextType());
    Declare(var, {"b", "a"});
    var.SetUpCatEncoder();
    const StringValue a("a");
    const StringValue z("z");
    EXPECT_EQ(var.GetCatEncoder()->EncodeString("b"), 0);
    EXPECT_EQ(var.GetCatEncoder()->EncodeString("a"), 1);
    EXPECT_EQ(var.GetCatEncoder()->EncodeValue(&a), 1);
    EXPECT_EQ(var.GetCatEncoder()->EncodeValue(&z), -1);
    EXPECT_EQ(var.GetCatEncoder()->EncodeString("z"), -1);
}

TEST(CatEncoder, KnowsACategoryThatIsAddedLaterAtOnce)
{
    DictVar var(TextType());
    var.SetUpCatEncoder();
    EXPECT_EQ(var.GetCatEncoder()->EncodeString("x"), -1);
    var.AddCategory(new StringValue("x"), "x");
    EXPECT_EQ(var.GetCatEncoder()->EncodeString("x"), 0);
    var.AddCategory(new StringValue("y"), "y");
    EXPECT_EQ(var.GetCatEncoder()->EncodeString("y"), 1);
}

TEST(CatEncoder, WhateverIsMissingHasNoPosition)
{
    DictVar var(TextType());
    Declare(var, {"a"});
    Declare(var, {"n/a"}, Property::Missing);
    var.SetAcceptsUnlisted(true);
    var.SetUpCatEncoder();
    StringValue missing("a");
    missing.SetMissing();
    const StringValue declared("n/a");
    EXPECT_EQ(var.GetCatEncoder()->EncodeValue(nullptr), -1);
    EXPECT_EQ(var.GetCatEncoder()->EncodeValue(&missing), -1);
    EXPECT_EQ(var.GetCatEncoder()->EncodeValue(&declared), -1);
    EXPECT_EQ(var.GetCatEncoder()->EncodeString("n/a"), -1);
}

TEST(CatEncoder, UnlistedValuesShareThePositionAfterTheLast)
{
    DictVar var(TextType());
    Declare(var, {"a", "b"});
    Declare(var, {"bad"}, Property::Invalid);
    var.SetAcceptsUnlisted(true);
    var.SetUpCatEncoder();
    const StringValue z("z");
    const StringValue bad("bad");
    const NumericValue otherKind(1.0);
    EXPECT_EQ(var.GetCatEncoder()->EncodeValue(&z), 2);
    EXPECT_EQ(var.GetCatEncoder()->EncodeString("y"), 2);
    EXPECT_EQ(var.GetCatEncoder()->EncodeValue(&bad), -1);
    EXPECT_EQ(var.GetCatEncoder()->EncodeString("bad"), -1);
    EXPECT_EQ(var.GetCatEncoder()->EncodeValue(&otherKind), -1);
}

TEST(CatEncoder, TextThatIsTakenAsItIsHasThePositionAfterTheLast)
{
    DictVar var(TextType());
    Declare(var, {"a", "b"});
    var.SetUpCatEncoder();
    StringValue value("z");
    EXPECT_EQ(var.GetCatEncoder()->EncodeValue(&value), -1);
    value.SetTakenAsIs(true);
    EXPECT_EQ(var.GetCatEncoder()->EncodeValue(&value), 2);
    value.Assign("b");
    EXPECT_EQ(var.GetCatEncoder()->EncodeValue(&value), 1);
}

TEST(CatEncoder, ReadsATextAsTheVariablesKind)
{
    DictVar code(CodeType());
    Declare(code, {"1", "2"});
    code.SetUpCatEncoder();
    const NumericValue two(2.0);
    EXPECT_EQ(code.GetCatEncoder()->EncodeValue(&two), 1);
    EXPECT_EQ(code.GetCatEncoder()->EncodeString("2.0"), 1);
    EXPECT_EQ(code.GetCatEncoder()->EncodeString("two"), -1);

    DictVar truth(BooleanType());
    Declare(truth, {"false", "true"});
    truth.SetUpCatEncoder();
    EXPECT_EQ(truth.GetCatEncoder()->EncodeString("1"), 1);
    EXPECT_EQ(truth.GetCatEncoder()->EncodeString("F"), 0);

    DictVarType type = DateType();
    type.level = ScoreDictVar::ORDINAL;
    DictVar date(type);
    Declare(date, {"2000-01-01", "2000-01-02"});
    date.SetUpCatEncoder();
    EXPECT_EQ(date.GetCatEncoder()->EncodeString("2000-01-02"), 1);
    EXPECT_EQ(date.GetCatEncoder()->EncodeString("2000-01-32"), -1);
}

TEST(CatEncoder, LooksUpWithoutAllocating)
{
    DictVar text(TextType());
    Declare(text, {kFirst, kSecond});
    text.SetUpCatEncoder();
    DictVar code(CodeType());
    Declare(code, {"1", "2"});
    code.SetUpCatEncoder();
    const std::string second = kSecond;
    const StringValue secondValue(second);
    const std::string two = "2";
    const NumericValue twoValue(2.0);

    const long before = AllocationCount();
    const int byText = text.GetCatEncoder()->EncodeString(second);
    const int byValue = text.GetCatEncoder()->EncodeValue(&secondValue);
    const int byNumberText = code.GetCatEncoder()->EncodeString(two);
    const int byNumber = code.GetCatEncoder()->EncodeValue(&twoValue);
    EXPECT_EQ(AllocationCount() - before, 0);
    EXPECT_EQ(byText, 1);
    EXPECT_EQ(byValue, 1);
    EXPECT_EQ(byNumberText, 1);
    EXPECT_EQ(byNumber, 1);

    const long beforeClone = AllocationCount();
    const std::unique_ptr<ScoreValue> clone(secondValue.Clone());
    EXPECT_GT(AllocationCount() - beforeClone, 0) << "the library's allocations aren't counted";
}

}  // namespace
}  // namespace MCVelscore_850
