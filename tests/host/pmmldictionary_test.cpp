#include <memory>

#include <gtest/gtest.h>

#include "dom.h"
#include "host/messages/messages.h"
#include "host/values/datetimevalue.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/dictvar.h"
#include "host/variables/scoredictionary.h"
#include "pmmlreader.h"

namespace MCVelscore_850 {
namespace {

using Dictionary = std::unique_ptr<ScoreDictionary>;

std::string InDictionary(const std::string& fields)
{
    return "<DataDictionary>" + fields + "</DataDictionary>";
}

Dictionary Read(const std::string& fields, bool withValues = true)
{
    StartXml();
    const Dom dom(InDictionary(fields));
    PmmlReader reader;
    return Dictionary(reader.ParseDictionary(dom.Root(), withValues));
}

Refusal RefusedFor(const std::string& fields)
{
    return RefusalOf([&] { Read(fields); });
}

std::string Field(const std::string& name, const std::string& optype, const std::string& dataType,
                  const std::string& content = "")
{
    return "<DataField name='" + name + "' optype='" + optype + "' dataType='" + dataType + "'>" +
           content + "</DataField>";
}

TEST(ParseDictionary, FieldsStandInDocumentOrder)
{
    const Dictionary d = Read(Field("b", "continuous", "double") + "<Taxonomy/>" +
                              Field("a", "categorical", "string"));
    ASSERT_EQ(d->GetVarCount(), 2);
    EXPECT_EQ(d->GetVars()[0]->GetName(), "b");
    EXPECT_EQ(d->GetVars()[1]->GetName(), "a");
    EXPECT_FALSE(d->GetVars()[0]->IsDerived());
    EXPECT_EQ(Read("")->GetVarCount(), 0);
}

TEST(ParseDictionary, EveryDataTypeHasItsValueType)
{
    const struct {
        const char* dataType;
        int valueType;
        ScoreDictVar::DateTimeType dateTimeType;
    } kRows[] = {
        {"string", 1, ScoreDictVar::NOT_DATETIME},
        {"boolean", 1, ScoreDictVar::NOT_DATETIME},
        {"integer", 0, ScoreDictVar::NOT_DATETIME},
        {"float", 0, ScoreDictVar::NOT_DATETIME},
        {"double", 0, ScoreDictVar::NOT_DATETIME},
        {"date", 4, ScoreDictVar::DATE},
        {"time", 4, ScoreDictVar::TIME},
        {"dateTime", 4, ScoreDictVar::DATE_TIME},
        {"dateDaysSince[0]", 4, ScoreDictVar::DATE_DAYS_SINCE_0},
        {"dateDaysSince[1960]", 4, ScoreDictVar::DATE_DAYS_SINCE_1960},
        {"dateDaysSince[1970]", 4, ScoreDictVar::DATE_DAYS_SINCE_1970},
        {"dateDaysSince[1980]", 4, ScoreDictVar::DATE_DAYS_SINCE_1980},
        {"timeSeconds", 4, ScoreDictVar::TIME_SECONDS},
        {"dateTimeSecondsSince[0]", 4, ScoreDictVar::DATE_TIME_SECONDS_SINCE_0},
        {"dateTimeSecondsSince[1960]", 4, ScoreDictVar::DATE_TIME_SECONDS_SINCE_1960},
        {"dateTimeSecondsSince[1970]", 4, ScoreDictVar::DATE_TIME_SECONDS_SINCE_1970},
        {"dateTimeSecondsSince[1980]", 4, ScoreDictVar::DATE_TIME_SECONDS_SINCE_1980},
    };
    for (const auto& row : kRows) {
        const Dictionary d = Read(Field("v", "continuous", row.dataType));
        EXPECT_EQ(d->GetVar("v")->GetValueType(), row.valueType) << row.dataType;
        EXPECT_EQ(d->GetVar("v")->GetDateTimeType(), row.dateTimeType) << row.dataType;
    }
}

TEST(ParseDictionary, OptypeIsTheMeasureLevel)
{
    const Dictionary d =
        Read(Field("a", "continuous", "double") + Field("b", "categorical", "double") +
             Field("c", "ordinal", "double"));
    EXPECT_EQ(d->GetVar("a")->GetMeasureLevel(), 0);
    EXPECT_EQ(d->GetVar("b")->GetMeasureLevel(), 1);
    EXPECT_EQ(d->GetVar("c")->GetMeasureLevel(), 2);
}

TEST(ParseDictionary, UnknownTypesAreRefused)
{
    EXPECT_EQ(RefusedFor(Field("v", "continuous", "Double")),
              (Refusal{kUnknownDataType, {"Double", "dataType", "v"}}));
    EXPECT_EQ(RefusedFor(Field("v", "continuous", "dateDaysSince[1990]")),
              (Refusal{kUnknownDataType, {"dateDaysSince[1990]", "dataType", "v"}}));
    EXPECT_EQ(RefusedFor(Field("v", "nominal", "double")),
              (Refusal{kUnknownDataType, {"nominal", "optype", "v"}}));
}

TEST(ParseDictionary, MissingAttributesAreRefused)
{
    const struct {
        const char* fields;
        Refusal expected;
    } kRows[] = {
        {"<DataField optype='continuous' dataType='double'/>", {260115, {"name", "DataField"}}},
        {"<DataField name='v' dataType='double'/>", {260115, {"optype", "DataField"}}},
        {"<DataField name='v' optype='continuous'/>", {260115, {"dataType", "DataField"}}},
        {"<DataField name='v' optype='categorical' dataType='string'><Value/></DataField>",
         {260115, {"value", "Value"}}},
        {"<DataField name='v' optype='continuous' dataType='double'><Interval/></DataField>",
         {260115, {"closure", "Interval"}}},
    };
    for (const auto& row : kRows) EXPECT_EQ(RefusedFor(row.fields), row.expected);
}

TEST(ParseDictionary, SecondFieldOfANameIsRefused)
{
    EXPECT_EQ(RefusedFor(Field("v", "continuous", "double") + Field("v", "ordinal", "string")),
              (Refusal{kDuplicateField, {"v"}}));
}

TEST(ParseDictionary, ValuesHaveTheirProperty)
{
    const Dictionary d = Read(Field("v", "categorical", "string",
                                    "<Value value='b'/><Value value='a' property='valid'/>"
                                    "<Value value='n/a' property='missing'/>"
                                    "<Value value='' property='missing'/>"
                                    "<Value value='bad' property='invalid'/>"
                                    "<Value value='' property='missing'/>"));
    const ScoreDictVar* v = d->GetVar("v");
    ASSERT_EQ(v->GetNumCategories(), 2);
    EXPECT_EQ(v->GetValueSet()->GetEntries()[0].GetEntryValue()->GetString(), "b");
    EXPECT_EQ(v->GetValueSet()->GetEntries()[1].GetEntryValue()->GetString(), "a");
    const StringValue a("a");
    const StringValue notAvailable("n/a");
    const StringValue empty("");
    const StringValue bad("bad");
    EXPECT_TRUE(v->IsValid(&a));
    EXPECT_TRUE(v->IsMissing(&notAvailable));
    EXPECT_TRUE(v->IsMissing(&empty));
    EXPECT_FALSE(v->IsMissing(&bad));
    EXPECT_FALSE(v->IsValid(&bad));
}

TEST(ParseDictionary, EmptyPropertyIsValidAndAnUnknownOneRefused)
{
    const Dictionary d =
        Read(Field("v", "categorical", "string", "<Value value='a' property=''/>"));
    EXPECT_EQ(d->GetVar("v")->GetNumCategories(), 1);
    EXPECT_EQ(
        RefusedFor(Field("v", "categorical", "string", "<Value value='a' property='Missing'/>")),
        (Refusal{kUnknownDataType, {"Missing", "property", "v"}}));
}

TEST(ParseDictionary, ValidValueThatIsNoneOfItsTypeIsRefused)
{
    EXPECT_EQ(RefusedFor(Field("v", "categorical", "integer", "<Value value='one'/>")),
              (Refusal{260127, {"one", "v"}}));
    EXPECT_EQ(RefusedFor(Field("v", "ordinal", "date", "<Value value='2023-02-29'/>")),
              (Refusal{260127, {"2023-02-29", "v"}}));
}

TEST(ParseDictionary, MissingWordOfANumericFieldIsKeptForReadersOfTexts)
{
    const Dictionary d = Read(Field("v", "continuous", "double",
                                    "<Value value='NA' property='missing'/>"
                                    "<Value value='-9' property='missing'/>"
                                    "<Value value='-8' property='invalid'/>"));
    const NumericValue minus9(-9.0);
    const NumericValue minus8(-8.0);
    const NumericValue one(1.0);
    const auto& var = static_cast<const DictVar&>(*d->GetVar("v"));
    EXPECT_TRUE(var.IsMissingWord("NA"));
    EXPECT_FALSE(var.IsMissingWord("-9"));  // a number, which the variable judges itself
    EXPECT_FALSE(var.IsMissingWord("-8"));
    EXPECT_TRUE(d->GetVar("v")->IsMissing(&minus9));
    EXPECT_FALSE(d->GetVar("v")->IsValid(&minus8));
    EXPECT_TRUE(d->GetVar("v")->Accepts(&one));
}

TEST(ParseDictionary, IntervalsHaveTheirClosure)
{
    const struct {
        const char* closure;
        bool atLow;
        bool atHigh;
    } kRows[] = {{"openOpen", false, false},
                 {"openClosed", false, true},
                 {"closedOpen", true, false},
                 {"closedClosed", true, true}};
    for (const auto& row : kRows) {
        const Dictionary d = Read(Field("v", "continuous", "double",
                                        std::string("<Interval closure='") + row.closure +
                                            "' leftMargin='1' rightMargin='2'/>"));
        const NumericValue low(1.0);
        const NumericValue high(2.0);
        EXPECT_EQ(d->GetVar("v")->IsValid(&low), row.atLow) << row.closure;
        EXPECT_EQ(d->GetVar("v")->IsValid(&high), row.atHigh) << row.closure;
        EXPECT_TRUE(d->GetVar("v")->SurelyAccepts(1.5)) << row.closure;
    }
}

TEST(ParseDictionary, IntervalWithoutAMarginHasNoBoundThere)
{
    const Dictionary d = Read(
        Field("low", "continuous", "double", "<Interval closure='openOpen' leftMargin='1'/>") +
        Field("high", "continuous", "double", "<Interval closure='openOpen' rightMargin='1'/>"));
    const NumericValue huge(1e308);
    const NumericValue least(-1e308);
    EXPECT_TRUE(d->GetVar("low")->IsValid(&huge));
    EXPECT_FALSE(d->GetVar("low")->IsValid(&least));
    EXPECT_FALSE(d->GetVar("high")->IsValid(&huge));
    EXPECT_TRUE(d->GetVar("high")->IsValid(&least));
}

TEST(ParseDictionary, IntervalOfAnUnknownClosureOrMarginIsRefused)
{
    EXPECT_EQ(RefusedFor(Field("v", "continuous", "double", "<Interval closure='closed'/>")),
              (Refusal{kUnknownDataType, {"closed", "closure", "v"}}));
    EXPECT_EQ(RefusedFor(Field("v", "continuous", "double",
                               "<Interval closure='openOpen' leftMargin='x'/>")),
              (Refusal{kNotANumber, {"x", "leftMargin"}}));
}

// Margins are numbers from the type's own origin, or dates and times as text.
TEST(ParseDictionary, IntervalsOfDatesCountFromTheOriginOfTheirType)
{
    for (const char* low : {"3653", "1970-01-01"}) {  // 3653 days from 1960 to 1970
        const Dictionary d = Read(Field("v", "continuous", "dateDaysSince[1960]",
                                        "<Interval closure='closedOpen' leftMargin='" +
                                            std::string(low) + "' rightMargin='3663'/>"));
        const struct {
            const char* day;
            bool valid;
        } kRows[] = {{"1969-12-31", false},
                     {"1970-01-01", true},
                     {"1970-01-10", true},
                     {"1970-01-11", false},
                     {"3654", true}};
        for (const auto& row : kRows) {
            const std::unique_ptr<ScoreValue> day(d->GetVar("v")->MakeValue(row.day));
            EXPECT_EQ(d->GetVar("v")->IsValid(day.get()), row.valid) << row.day << " from " << low;
        }
    }
}

TEST(ParseDictionary, ValuesOfDatesAreReadInEitherForm)
{
    const Dictionary d = Read(Field("v", "ordinal", "dateDaysSince[1960]",
                                    "<Value value='1960-01-11'/><Value value='20'/>"
                                    "<Value value='-1' property='missing'/>"));
    const auto has = [&](const char* text) {
        const std::unique_ptr<ScoreValue> value(d->GetVar("v")->MakeValue(text));
        return d->GetVar("v")->Accepts(value.get());
    };
    EXPECT_TRUE(has("10"));
    EXPECT_TRUE(has("1960-01-21"));
    EXPECT_FALSE(has("21"));
    const std::unique_ptr<ScoreValue> missing(d->GetVar("v")->MakeValue("1959-12-31"));
    EXPECT_TRUE(d->GetVar("v")->IsMissing(missing.get()));
}

// What is shown to people, cycles and taxonomies play no part in scoring.
TEST(ParseDictionary, DisplayCyclesAndTaxonomiesArePassedOver)
{
    const Dictionary d = Read(
        "<Extension/><DataField name='v' displayName='V' optype='ordinal' dataType='string' "
        "isCyclic='1' taxonomy='t'><Extension name='x'/>"
        "<Value value='a' displayValue='first'><Extension/></Value><Value value='b'/></DataField>"
        "<Taxonomy name='t'><ChildParent parentField='p' childField='c'/></Taxonomy>");
    ASSERT_EQ(d->GetVarCount(), 1);
    EXPECT_EQ(d->GetVar("v")->GetNumCategories(), 2);
}

TEST(ParseDictionary, FirstVersionsMayLeaveTheDataTypeOut)
{
    const auto read = [](const char* version) {
        const Dom dom("<PMML version='" + std::string(version) +
                      "'><DataDictionary><DataField name='n' optype='continuous'/>"
                      "<DataField name='t' optype='categorical'/></DataDictionary></PMML>");
        PmmlReader reader;
        return Dictionary(reader.ParseDictionary(dom.First("DataDictionary"), true));
    };
    const Dictionary d = read("3.0");
    EXPECT_EQ(d->GetVar("n")->GetValueType(), ScoreDictVar::NUMERIC);
    EXPECT_EQ(d->GetVar("t")->GetValueType(), ScoreDictVar::STRING);
    for (const char* version : {"3.1", "4.4"}) {
        EXPECT_EQ(RefusalOf([&] { read(version); }), (Refusal{260115, {"dataType", "DataField"}}));
    }
}

TEST(ParseDictionary, OwnExtensionAcceptsUnlistedCategories)
{
    const auto accepts = [](const char* extension) {
        const Dictionary d = Read(
            Field("v", "categorical", "string", std::string(extension) + "<Value value='a'/>"));
        const StringValue other("z");
        EXPECT_EQ(d->GetVar("v")->IsValid(&other), d->GetVar("v")->AcceptsUnlisted());
        return d->GetVar("v")->AcceptsUnlisted();
    };
    EXPECT_TRUE(
        accepts("<Extension extender='velscore' name='unlistedCategories' value='accept'/>"));
    EXPECT_FALSE(accepts("<Extension extender='other' name='unlistedCategories' value='accept'/>"));
    EXPECT_FALSE(accepts("<Extension name='unlistedCategories' value='accept'/>"));
    EXPECT_FALSE(accepts("<Extension extender='velscore' name='unlisted' value='accept'/>"));
    EXPECT_FALSE(accepts("<Extension extender='velscore' name='unlistedCategories' value='no'/>"));
}

TEST(ParseDictionary, BooleanKeepsTheSpellingOfItsDocument)
{
    const Dictionary d =
        Read(Field("v", "categorical", "boolean", "<Value value='FALSE'/><Value value='TRUE'/>"));
    const std::unique_ptr<ScoreValue> one(d->GetVar("v")->MakeValue("1"));
    EXPECT_EQ(one->GetString(), "TRUE");
    EXPECT_TRUE(d->GetVar("v")->IsValid(one.get()));
    const Dictionary twice =
        Read(Field("v", "categorical", "boolean", "<Value value='true'/><Value value='1'/>"));
    EXPECT_EQ(twice->GetVar("v")->GetNumCategories(), 1);
}

TEST(ParseDictionary, WithoutValuesEveryFieldIsOpen)
{
    const Dictionary d = Read(Field("v", "categorical", "string", "<Value value='a'/>"), false);
    EXPECT_TRUE(d->GetVar("v")->HasOpenCategories());
}

TEST(ParseDictionary, TextsAreInTheReadersEncoding)
{
    StartXml();
    const Dom dom(
        "<?xml version='1.0' encoding='UTF-8'?>" +
        InDictionary(Field("\xC3\xA9", "categorical", "string", "<Value value='\xC3\xBC'/>")));
    PmmlReader reader("ISO-8859-1");
    const Dictionary d(reader.ParseDictionary(dom.Root(), true));
    ASSERT_NE(d->GetVar("\xE9"), nullptr);
    EXPECT_EQ(d->GetVar("\xE9")->GetValueSet()->GetEntries()[0].GetEntryValue()->GetString(),
              "\xFC");
}

TEST(ParseDictionary, RefusalStandsAtTheElementAtFault)
{
    const Dom dom(
        InDictionary(Field("v", "categorical", "integer", "<Value value='1'/><Value value='x'/>")));
    PmmlReader reader;
    EXPECT_EQ(RefusalOf([&] { reader.ParseDictionary(dom.Root(), true); }).code, 260127);
    EXPECT_EQ(reader.CurrentElement(), dom.First("DataField")->getLastElementChild());
}

}  // namespace
}  // namespace MCVelscore_850
