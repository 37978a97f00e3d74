#include "host/variables/dictvar.h"

#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "host/values/datetimevalue.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/varstats.h"
#include "vars.h"

namespace MCVelscore_850 {
namespace {

using Property = DictVar::Property;

constexpr double kMissing = -1.7976931348623157e+308;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

StringValue MissingText()
{
    StringValue text("");
    text.SetMissing();
    return text;
}

bool Missing(const DictVar& var, const ScoreValue& value) { return var.IsMissing(&value); }
bool Valid(const DictVar& var, const ScoreValue& value) { return var.IsValid(&value); }
bool Missing(const DictVar& var, double number) { return Missing(var, NumericValue(number)); }
bool Valid(const DictVar& var, double number) { return Valid(var, NumericValue(number)); }
bool Missing(const DictVar& var, const char* text) { return Missing(var, StringValue(text)); }
bool Valid(const DictVar& var, const char* text) { return Valid(var, StringValue(text)); }

std::vector<std::string> Categories(const DictVar& var)
{
    std::vector<std::string> texts;
    if (const ValueSet* set = var.GetValueSet()) {
        for (const auto& entry : set->GetEntries())
            texts.push_back(entry.GetEntryValue()->GetString());
    }
    return texts;
}

using Texts = std::vector<std::string>;

TEST(DictVar, CategoricalWithoutDeclaredValuesIsOpen)
{
    const DictVar var(TextType());
    EXPECT_TRUE(var.HasOpenCategories());
    EXPECT_EQ(var.GetValueSet(), nullptr);
    EXPECT_EQ(var.GetNumCategories(), 0);
    EXPECT_TRUE(Valid(var, "anything"));
    EXPECT_FALSE(Valid(var, MissingText()));
}

TEST(DictVar, DeclaredValuesCloseTheVariableInDocumentOrder)
{
    DictVar var(TextType());
    Declare(var, {"b", "a", "c"});
    EXPECT_FALSE(var.HasOpenCategories());
    ASSERT_NE(var.GetValueSet(), nullptr);
    EXPECT_EQ(var.GetValueSet()->GetKind(), 1);
    EXPECT_EQ(Categories(var), (Texts{"b", "a", "c"}));
    EXPECT_EQ(var.GetNumCategories(), 3);
    EXPECT_TRUE(Valid(var, "a"));
    EXPECT_FALSE(Valid(var, "A"));
    EXPECT_FALSE(Valid(var, ""));
}

TEST(DictVar, SecondCategoryOfTheSameNameIsNotAdded)
{
    DictVar var(TextType());
    Declare(var, {"a", "a"});
    var.AddCategory(new StringValue("a"), "a");
    EXPECT_EQ(Categories(var), Texts{"a"});
}

TEST(DictVar, AddedCategoryClosesAnOpenVariable)
{
    DictVar var(TextType());
    var.AddCategory(new StringValue("x"), "x");
    EXPECT_FALSE(var.HasOpenCategories());
    ASSERT_NE(var.GetValueSet(), nullptr);
    EXPECT_EQ(var.GetValueSet()->GetKind(), 1);
    EXPECT_EQ(Categories(var), Texts{"x"});
    EXPECT_TRUE(Valid(var, "x"));
    EXPECT_FALSE(Valid(var, "y"));
}

TEST(DictVar, ValueSetOfMissingValuesAloneIsOfKindNone)
{
    DictVar var(TextType());
    Declare(var, {"n/a"}, Property::Missing);
    EXPECT_FALSE(var.HasOpenCategories());
    ASSERT_NE(var.GetValueSet(), nullptr);
    EXPECT_EQ(var.GetValueSet()->GetKind(), 0);
    EXPECT_TRUE(var.GetValueSet()->GetEntries().empty());
    EXPECT_TRUE(Valid(var, "x"));
    EXPECT_TRUE(Missing(var, "n/a"));
    EXPECT_FALSE(Valid(var, "n/a"));
}

TEST(DictVar, AddCategoryDoesNothingToAContinuousVariable)
{
    DictVar var(NumberType());
    var.AddCategory(new NumericValue(1.0), "1");
    EXPECT_EQ(var.GetNumCategories(), 0);
    EXPECT_EQ(var.GetValueSet(), nullptr);
    EXPECT_TRUE(Valid(var, 2.0));
}

TEST(DictVar, AddCategoryTakesNoValueThatIsDeclaredMissingOrInvalid)
{
    DictVar var(TextType());
    Declare(var, {"n/a"}, Property::Missing);
    Declare(var, {"bad"}, Property::Invalid);
    var.AddCategory(new StringValue("n/a"), "n/a");
    var.AddCategory(new StringValue("bad"), "bad");
    EXPECT_EQ(var.GetNumCategories(), 0);
}

TEST(DictVar, AddCategoryTakesNoNullNoMissingAndNoOtherKind)
{
    DictVar text(TextType());
    text.AddCategory(nullptr, "");
    text.AddCategory(MissingText().Clone(), "");
    text.AddCategory(new NumericValue(1.0), "1");
    EXPECT_TRUE(text.HasOpenCategories());

    DictVar code(CodeType());
    for (const double number : {kMissing, kNaN, kInfinity, -kInfinity}) {
        code.AddCategory(new NumericValue(number), "");
    }
    EXPECT_TRUE(code.HasOpenCategories());
}

TEST(DictVar, DeclaredPropertyOfAValueIsTheFirstOne)
{
    DictVar var(TextType());
    Declare(var, {"a", "b"});
    Declare(var, {"a"}, Property::Missing);
    Declare(var, {"b"}, Property::Invalid);
    EXPECT_FALSE(Missing(var, "a"));
    EXPECT_TRUE(Valid(var, "a"));
    EXPECT_TRUE(Valid(var, "b"));
}

TEST(DictVar, InvalidValueOfAnOpenListIsInvalidAndNotMissing)
{
    DictVar var(TextType());
    Declare(var, {"bad"}, Property::Invalid);
    EXPECT_FALSE(Missing(var, "bad"));
    EXPECT_FALSE(Valid(var, "bad"));
    EXPECT_TRUE(Valid(var, "good"));
}

TEST(DictVar, UnlistedValuesAreValidWhereTheyAreAccepted)
{
    DictVar var(TextType());
    Declare(var, {"a"});
    Declare(var, {"n/a"}, Property::Missing);
    Declare(var, {"bad"}, Property::Invalid);
    EXPECT_FALSE(var.AcceptsUnlisted());
    EXPECT_FALSE(Valid(var, "z"));
    var.SetAcceptsUnlisted(true);
    EXPECT_TRUE(var.AcceptsUnlisted());
    EXPECT_TRUE(Valid(var, "z"));
    EXPECT_FALSE(Valid(var, "n/a"));
    EXPECT_FALSE(Valid(var, "bad"));
    EXPECT_FALSE(Valid(var, MissingText()));
    EXPECT_EQ(var.GetNumCategories(), 1);
}

TEST(DictVar, NumericCategoriesAreFoundByTheirNumber)
{
    DictVar var(CodeType());
    Declare(var, {"1.0", "02"});
    EXPECT_TRUE(Valid(var, 1.0));
    EXPECT_TRUE(Valid(var, 2.0));
    EXPECT_FALSE(Valid(var, 3.0));
    EXPECT_FALSE(Valid(var, "1"));  // a text is of another kind
    EXPECT_EQ(Categories(var), (Texts{"1", "2"}));
}

TEST(DictVar, NullAndSystemMissingAndMissingTextAreMissing)
{
    const DictVar number(NumberType());
    const DictVar text(TextType());
    EXPECT_TRUE(number.IsMissing(nullptr));
    EXPECT_FALSE(number.IsValid(nullptr));
    EXPECT_TRUE(Missing(number, kMissing));
    EXPECT_FALSE(Valid(number, kMissing));
    EXPECT_TRUE(Missing(text, MissingText()));
    EXPECT_TRUE(Missing(number, MissingText()));
    EXPECT_FALSE(Missing(text, ""));
}

TEST(DictVar, NaNAndInfinitiesAreInvalidAndNotMissing)
{
    const DictVar continuous(NumberType());
    const DictVar open(CodeType());
    for (const double number : {kNaN, kInfinity, -kInfinity}) {
        EXPECT_FALSE(Missing(continuous, number)) << number;
        EXPECT_FALSE(Valid(continuous, number)) << number;
        EXPECT_FALSE(Missing(open, number)) << number;
        EXPECT_FALSE(Valid(open, number)) << number;
    }
}

TEST(DictVar, ValueOfAnotherKindIsInvalidAndNotMissing)
{
    DictVar number(NumberType());
    Declare(number, {"99"}, Property::Missing);
    auto* stats = new VarStats;
    stats->SetMaximum(50.0);
    number.SetVarStats(stats);
    number.SetOutlierTreatment(ScoreDictVar::AS_MISSING);
    EXPECT_TRUE(Missing(number, 99.0));
    EXPECT_FALSE(Missing(number, DateTimeValue(99.0)));
    EXPECT_FALSE(Missing(number, DateTimeValue(60.0)));
    EXPECT_FALSE(Valid(number, DateTimeValue(1.0)));
    EXPECT_FALSE(Missing(number, "99"));
    EXPECT_FALSE(Valid(number, "1"));

    const DictVar text(TextType());
    EXPECT_FALSE(Missing(text, 1.0));
    EXPECT_FALSE(Valid(text, 1.0));
    const DictVar date(DateType());
    EXPECT_TRUE(Valid(date, DateTimeValue(1.0)));
    EXPECT_FALSE(Valid(date, 1.0));
}

TEST(DictVar, IntervalsBoundWhatIsValidByTheirClosure)
{
    const struct {
        DictVar::Interval interval;
        bool atLow;
        bool atHigh;
    } kRows[] = {
        {{1.0, 2.0, true, true}, true, true},
        {{1.0, 2.0, true, false}, true, false},
        {{1.0, 2.0, false, true}, false, true},
        {{1.0, 2.0, false, false}, false, false},
    };
    for (const auto& row : kRows) {
        DictVar var(NumberType());
        var.DeclareInterval(row.interval);
        EXPECT_EQ(Valid(var, 1.0), row.atLow);
        EXPECT_EQ(Valid(var, 2.0), row.atHigh);
        EXPECT_TRUE(Valid(var, 1.5));
        EXPECT_FALSE(Valid(var, 0.99));
        EXPECT_FALSE(Valid(var, 2.01));
        EXPECT_FALSE(Missing(var, 0.99));
    }
}

TEST(DictVar, IntervalsAddUpAndInfiniteEndsAreNoBound)
{
    DictVar var(NumberType());
    var.DeclareInterval({-kInfinity, 0.0, true, true});
    var.DeclareInterval({10.0, kInfinity, false, true});
    EXPECT_TRUE(Valid(var, -1e300));
    EXPECT_TRUE(Valid(var, 0.0));
    EXPECT_FALSE(Valid(var, 5.0));
    EXPECT_FALSE(Valid(var, 10.0));
    EXPECT_TRUE(Valid(var, 1e300));
    EXPECT_FALSE(Valid(var, kInfinity));
}

TEST(DictVar, ListedNumbersAreValidBesideTheIntervals)
{
    DictVar var(NumberType());
    Declare(var, {"-1"});
    EXPECT_TRUE(Valid(var, -1.0));
    EXPECT_FALSE(Valid(var, 5.0));
    var.DeclareInterval({0.0, 10.0, true, true});
    EXPECT_TRUE(Valid(var, -1.0));
    EXPECT_TRUE(Valid(var, 5.0));
    EXPECT_FALSE(Valid(var, -2.0));
}

TEST(DictVar, OutlierIsMissingWhereItIsTreatedSo)
{
    DictVar var(NumberType());
    auto* stats = new VarStats;
    stats->SetMinimum(0.0);
    stats->SetMaximum(10.0);
    var.SetVarStats(stats);
    EXPECT_FALSE(Missing(var, 11.0));
    var.SetOutlierTreatment(ScoreDictVar::AS_EXTREME);
    EXPECT_FALSE(Missing(var, 11.0));
    var.SetOutlierTreatment(ScoreDictVar::AS_MISSING);
    EXPECT_TRUE(Missing(var, 11.0));
    EXPECT_TRUE(Missing(var, -0.5));
    EXPECT_FALSE(Missing(var, 0.0));
    EXPECT_FALSE(Missing(var, 10.0));
    EXPECT_FALSE(Missing(var, kNaN));
}

TEST(DictVar, OneLimitBoundsOneSideAlone)
{
    DictVar var(NumberType());
    auto* stats = new VarStats;
    stats->SetMaximum(10.0);
    var.SetVarStats(stats);
    var.SetOutlierTreatment(ScoreDictVar::AS_MISSING);
    EXPECT_TRUE(Missing(var, 11.0));
    EXPECT_FALSE(Missing(var, -1e300));
}

TEST(DictVar, LimitsOfDatesCountFromTheTypesOwnOrigin)
{
    struct Case {
        ScoreDictVar::DateTimeType type;
        double origin;  // as a plain number, which counts from 1970
    };
    // From 1960 to 1970 there are 3653 days, three of them leap days; from 1970 to 1980 3652.
    const Case cases[] = {
        {ScoreDictVar::DATE, 0.0},
        {ScoreDictVar::DATE_DAYS_SINCE_1960, -3653.0},
        {ScoreDictVar::DATE_DAYS_SINCE_1980, 3652.0},
        {ScoreDictVar::DATE_TIME_SECONDS_SINCE_1980, 3652.0 * 86400.0},
    };
    for (const Case& expected : cases) {
        DictVar var(DateType(expected.type));
        auto stats = std::make_unique<VarStats>();
        stats->SetMinimum(100.0);
        stats->SetMaximum(200.0);
        var.SetVarStats(stats.release());
        EXPECT_EQ(var.OutlierLimits().low, expected.origin + 100.0) << expected.type;
        EXPECT_EQ(var.OutlierLimits().high, expected.origin + 200.0) << expected.type;
        var.SetOutlierTreatment(ScoreDictVar::AS_MISSING);
        for (const double number : {99.0, 100.0, 200.0, 201.0}) {
            EXPECT_EQ(Missing(var, DateTimeValue(expected.origin + number)),
                      number < 100.0 || number > 200.0)
                << expected.type << " " << number;
        }
    }
}

TEST(DictVar, FractionIsNoValueOfAContinuousVariableOfWholeNumbers)
{
    DictVar var(IntegerType());
    for (const double number : {0.0, -0.0, 2.0, -7.0, 9007199254740993.0, 1e300}) {
        EXPECT_TRUE(Valid(var, number)) << number;
    }
    for (const double number : {1.5, -0.1, 1e-300, 4503599627370495.5}) {
        EXPECT_FALSE(Valid(var, number)) << number;
        EXPECT_FALSE(Missing(var, number)) << number;
        EXPECT_FALSE(var.SurelyAccepts(number)) << number;
    }
    EXPECT_TRUE(var.SurelyAccepts(-7.0));
    EXPECT_FALSE(var.SurelyAccepts(kNaN));
    var.DeclareInterval({0.5, 10.5, true, true});
    EXPECT_TRUE(Valid(var, 1.0));
    EXPECT_FALSE(Valid(var, 1.5));
    Declare(var, {"1.5"});  // what the document lists is a value of it
    EXPECT_TRUE(Valid(var, 1.5));
    EXPECT_FALSE(Valid(var, 2.5));
    EXPECT_TRUE(Valid(DictVar(NumberType()), 1.5));
}

// A percentile often isn't whole, and outliers are set to it.
TEST(DictVar, LimitOfOutliersMayHaveAFractionInAVariableOfWholeNumbers)
{
    DictVar var(IntegerType());
    auto* stats = new VarStats;
    stats->SetMinimum(18.5);
    stats->SetMaximum(64.25);
    var.SetVarStats(stats);
    EXPECT_FALSE(Valid(var, 18.5));
    var.SetOutlierTreatment(ScoreDictVar::AS_EXTREME);
    EXPECT_TRUE(Valid(var, 18.5));
    EXPECT_TRUE(Valid(var, 64.25));
    EXPECT_FALSE(Valid(var, 20.5));
}

TEST(DictVar, ValueThatIsTakenAsItIsIsNeitherMissingNorInvalid)
{
    DictVar text(TextType());
    Declare(text, {"a", "b"});
    Declare(text, {"n/a"}, Property::Missing);
    Declare(text, {"bad"}, Property::Invalid);
    for (const char* word : {"c", "n/a", "bad", ""}) {
        StringValue value(word);
        EXPECT_FALSE(text.Accepts(&value)) << word;
        value.SetTakenAsIs(true);
        EXPECT_TRUE(text.Accepts(&value)) << word;
    }
    DictVar number(IntegerType());
    number.DeclareInterval({0.0, 10.0, true, true});
    auto* stats = new VarStats;
    stats->SetMinimum(0.0);
    number.SetVarStats(stats);
    number.SetOutlierTreatment(ScoreDictVar::AS_MISSING);
    for (const double beyond : {-1.0, 2.5, 11.0}) {
        NumericValue value(beyond);
        EXPECT_FALSE(number.Accepts(&value)) << beyond;
        value.SetTakenAsIs(true);
        EXPECT_TRUE(number.Accepts(&value)) << beyond;
    }
    // What isn't there stays missing, and what is of another kind invalid.
    StringValue missing = MissingText();
    NumericValue system(kMissing);
    for (ScoreValue* value :
         {static_cast<ScoreValue*>(&missing), static_cast<ScoreValue*>(&system)})
        value->SetTakenAsIs(true);
    EXPECT_TRUE(Missing(text, missing));
    EXPECT_TRUE(Missing(number, system));
    EXPECT_FALSE(Valid(text, system));
}

TEST(DictVar, BooleanTakesTheDeclaredSpellingOfTheSameTruth)
{
    DictVar var(BooleanType());
    Declare(var, {"T", "F"});
    for (const char* word : {"true", "TRUE", "True", "T", "1", "1.0"}) {
        const std::unique_ptr<ScoreValue> value(var.MakeValue(word));
        EXPECT_EQ(value->GetString(), "T") << word;
        EXPECT_TRUE(var.IsValid(value.get())) << word;
    }
    for (const char* word : {"false", "FALSE", "False", "F", "0", "0.0"}) {
        EXPECT_EQ(var.Spelling(word), "F") << word;
    }
    for (const char* word : {"tRUE", "yes", "t", "2", "1.00", ""}) {
        EXPECT_EQ(var.Spelling(word), word);
        EXPECT_FALSE(Valid(var, word)) << word;
    }
}

TEST(DictVar, BooleanLearnsItsSpellingFromAnAddedCategory)
{
    DictVar var(BooleanType());
    EXPECT_EQ(var.Spelling("1"), "1");
    var.AddCategory(new StringValue("perhaps"), "perhaps");
    var.AddCategory(new StringValue("TRUE"), "TRUE");
    EXPECT_EQ(var.Spelling("1"), "TRUE");
    EXPECT_EQ(var.Spelling("0"), "0");
    const std::unique_ptr<DictVar> copy(static_cast<DictVar*>(var.Clone()));
    EXPECT_EQ(copy->Spelling("T"), "TRUE");
}

TEST(DictVar, TextThatIsNoBooleanKeepsItsSpelling)
{
    DictVar var(TextType());
    Declare(var, {"true"});
    EXPECT_EQ(var.Spelling("1"), "1");
}

TEST(DictVar, MakeValueMakesTheVariablesKind)
{
    const std::unique_ptr<ScoreValue> text(DictVar(TextType()).MakeValue("5"));
    const std::unique_ptr<ScoreValue> number(DictVar(NumberType()).MakeValue("5"));
    const std::unique_ptr<ScoreValue> noNumber(DictVar(NumberType()).MakeValue("five"));
    const std::unique_ptr<ScoreValue> date(DictVar(DateType()).MakeValue("1970-01-03"));
    const std::unique_ptr<ScoreValue> noDate(DictVar(DateType()).MakeValue("1970-02-30"));
    EXPECT_EQ(text->GetValueType(), ScoreValue::STRING);
    EXPECT_EQ(number->GetValueType(), ScoreValue::NUMERIC);
    EXPECT_EQ(number->GetDouble(), 5.0);
    EXPECT_TRUE(noNumber->IsMissingValue());
    EXPECT_EQ(date->GetValueType(), ScoreValue::DATETIME);
    EXPECT_EQ(date->GetDouble(), 2.0);
    EXPECT_TRUE(noDate->IsMissingValue());
}

TEST(DictVar, PositionInARecordStartsUnknown)
{
    const DictVar var(NumberType());
    EXPECT_EQ(var.GetDictIndex(), -1);
    var.SetDictIndex(3);  // of a shared object, through a const pointer
    EXPECT_EQ(var.GetDictIndex(), 3);
}

TEST(DictVar, CloneSharesNothingWithItsOriginal)
{
    auto original = std::make_unique<DictVar>(TextType());
    Declare(*original, {"a"});
    Declare(*original, {"n/a"}, Property::Missing);
    original->SetUpCatEncoder();
    original->SetDictIndex(2);
    auto* stats = new VarStats;
    const NumericValue replacement(7.0);
    stats->SetMissingReplacement(&replacement);
    original->SetVarStats(stats);

    const std::unique_ptr<DictVar> copy(static_cast<DictVar*>(original->Clone()));
    copy->AddCategory(new StringValue("b"), "b");
    EXPECT_EQ(original->GetNumCategories(), 1);
    original.reset();

    EXPECT_EQ(Categories(*copy), (Texts{"a", "b"}));
    EXPECT_TRUE(Missing(*copy, "n/a"));
    EXPECT_EQ(copy->GetDictIndex(), 2);
    EXPECT_EQ(copy->GetVarStats()->GetMissingReplacement()->GetDouble(), 7.0);
    ASSERT_NE(copy->GetCatEncoder(), nullptr);
    EXPECT_EQ(copy->GetCatEncoder()->EncodeString("b"), 1);
}

TEST(VarStats, NumbersStartMissingAndTheReplacementIsACopy)
{
    VarStats stats;
    EXPECT_EQ(stats.GetMean(), kMissing);
    EXPECT_EQ(stats.GetMinimum(), kMissing);
    EXPECT_EQ(stats.GetMaximum(), kMissing);
    EXPECT_EQ(stats.GetMissingReplacement(), nullptr);
    NumericValue value(1.0);
    stats.SetMissingReplacement(&value);
    value.SetDoubleValue(2.0);
    EXPECT_EQ(stats.GetMissingReplacement()->GetDouble(), 1.0);
    stats.SetMissingReplacement(nullptr);
    EXPECT_EQ(stats.GetMissingReplacement(), nullptr);
}

// The one test that every case makes of every predictor has a short way of its own; over a grid
// of variables and values it has to agree with the two that define it.
TEST(DictVar, AcceptsIsNotMissingAndValid)
{
    std::vector<std::unique_ptr<DictVar>> vars;
    for (const DictVarType& type :
         {NumberType(), IntegerType(), CodeType(), TextType(), BooleanType(), DateType()}) {
        for (const bool declares : {false, true}) {
            for (const bool marks : {false, true}) {
                for (const bool unlisted : {false, true}) {
                    for (const int treatment : {0, 1, 2}) {
                        auto var = std::make_unique<DictVar>(type);
                        if (declares) Declare(*var, {"1", "true"});
                        if (marks) Declare(*var, {"99"}, Property::Missing);
                        if (marks) Declare(*var, {"-9", "bad"}, Property::Invalid);
                        if (marks) var->DeclareInterval({0.0, 50.0, true, false});
                        var->SetAcceptsUnlisted(unlisted);
                        auto stats = std::make_unique<VarStats>();
                        stats->SetMaximum(20.0);
                        var->SetVarStats(stats.release());
                        var->SetOutlierTreatment(treatment);
                        vars.push_back(std::move(var));
                    }
                }
            }
        }
    }
    std::vector<std::unique_ptr<ScoreValue>> values;
    values.push_back(nullptr);
    values.emplace_back(MissingText().Clone());
    for (const char* text : {"", "1", "99", "true", "T", "bad", "other"}) {
        values.push_back(std::make_unique<StringValue>(text));
    }
    for (const double number : {0.0, -0.0, 1.0, 1.5, 19.0, 21.0, 50.0, 99.0, -9.0, kMissing, kNaN,
                                kInfinity, -kInfinity}) {
        values.push_back(std::make_unique<NumericValue>(number));
        values.push_back(std::make_unique<DateTimeValue>(number));
    }
    int accepted = 0;
    for (const auto& var : vars) {
        for (const auto& value : values) {
            const bool expected = !var->IsMissing(value.get()) && var->IsValid(value.get());
            EXPECT_EQ(var->Accepts(value.get()), expected)
                << var->GetValueType() << " " << (value ? value->GetString() : "null");
            accepted += expected ? 1 : 0;
            if (value == nullptr || value->Kind() != ScoreValue::NUMERIC || expected) continue;
            EXPECT_FALSE(var->SurelyAccepts(value->GetDouble())) << value->GetString();
        }
    }
    EXPECT_GT(accepted, 100);
}

TEST(DictVar, NumbersBetweenWhatIsDeclaredAreSure)
{
    const auto number = [](double x) { return std::make_unique<NumericValue>(x); };
    DictVar var(NumberType());
    var.DeclareMissingValue(number(-999.0));
    var.EndDeclarations();
    EXPECT_TRUE(var.SurelyAccepts(-998.0));
    EXPECT_FALSE(var.SurelyAccepts(-999.0));
    EXPECT_FALSE(var.SurelyAccepts(-1000.0));  // it is good; that isn't said
    var.DeclareInterval({0.0, 100.0, false, true});
    var.EndDeclarations();
    EXPECT_FALSE(var.SurelyAccepts(0.0));
    EXPECT_TRUE(var.SurelyAccepts(5e-324));
    EXPECT_TRUE(var.SurelyAccepts(100.0));
    EXPECT_FALSE(var.SurelyAccepts(std::nextafter(100.0, 101.0)));
    var.DeclareValue(number(99.0), "99", DictVar::Property::Invalid);
    var.EndDeclarations();
    EXPECT_TRUE(var.SurelyAccepts(98.5));
    EXPECT_FALSE(var.SurelyAccepts(99.0));
    var.DeclareMissingRange(40.0, 50.0);
    var.EndDeclarations();
    EXPECT_TRUE(var.SurelyAccepts(39.0));
    EXPECT_FALSE(var.SurelyAccepts(40.0));
    EXPECT_FALSE(var.SurelyAccepts(45.0));
    var.SetOutlierTreatment(ScoreDictVar::AS_MISSING);
    EXPECT_FALSE(var.SurelyAccepts(39.0));

    DictVar listed(NumberType());
    listed.DeclareValue(number(7.0), "7", DictVar::Property::Valid);
    listed.EndDeclarations();
    EXPECT_FALSE(listed.SurelyAccepts(8.0));
}

// So that 100,000 declarations of one field take one look at all of them, and not one each.
TEST(DictVar, NothingIsSureBeforeDeclarationsEnd)
{
    const auto declares = std::to_array<void (*)(DictVar&)>({
        [](DictVar& var) {
            var.DeclareInterval({0.0, 100.0, true, true});
        },
        [](DictVar& var) { var.DeclareMissingRange(40.0, 50.0); },
        [](DictVar& var) { var.DeclareMissingValue(std::make_unique<NumericValue>(99.0)); },
        [](DictVar& var) {
            var.DeclareValue(std::make_unique<NumericValue>(99.0), "99",
                             DictVar::Property::Invalid);
        },
    });
    for (const auto declare : declares) {
        DictVar var(NumberType());
        EXPECT_TRUE(var.SurelyAccepts(7.0));
        declare(var);
        EXPECT_FALSE(var.SurelyAccepts(7.0));
        var.EndDeclarations();
        EXPECT_TRUE(var.SurelyAccepts(7.0));
    }
}

TEST(DictVar, NoSureNumberIsRefused)
{
    std::mt19937_64 random(850);
    const auto below = [&](size_t end) { return static_cast<int>(random() % end); };
    int sure = 0;
    for (int round = 0; round < 2000; ++round) {
        DictVar var(below(3) == 0 ? IntegerType() : NumberType());
        for (int i = below(5); i > 0; --i) {
            const double a = below(21) - 10;
            const double b = a + below(8);
            auto value = std::make_unique<NumericValue>(a);
            switch (below(5)) {
                case 0: var.DeclareInterval({a, b, below(2) == 0, below(2) == 0}); break;
                case 1: var.DeclareMissingRange(a, b); break;
                case 2: var.DeclareMissingValue(std::move(value)); break;
                default: {
                    constexpr DictVar::Property kProperties[] = {DictVar::Property::Valid,
                                                                 DictVar::Property::Invalid,
                                                                 DictVar::Property::Missing};
                    var.DeclareValue(std::move(value), std::to_string(a), kProperties[below(3)]);
                }
            }
        }
        var.EndDeclarations();
        for (double x = -20.0; x <= 20.0; x += 0.5) {
            if (!var.SurelyAccepts(x)) continue;
            ++sure;
            const NumericValue value(x);
            ASSERT_TRUE(var.Accepts(&value)) << round << ": " << x;
        }
    }
    EXPECT_GT(sure, 20000);
}

}  // namespace
}  // namespace MCVelscore_850
