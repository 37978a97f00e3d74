// Expressions on fields: NormDiscrete, Discretize, MapValues, dates and times, and the type that
// an outcome is cast to.

#include <cmath>

#include <gtest/gtest.h>

#include "derivation.h"
#include "host/messages/messages.h"
#include "host/variables/catencoder.h"
#include "tests/allocations.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

Texts Categories(const DictVar& var)
{
    Texts texts;
    if (const ValueSet* set = var.GetValueSet()) {
        for (const auto& entry : set->GetEntries())
            texts.push_back(entry.GetEntryValue()->GetString());
    }
    return texts;
}

std::string TextField(const std::string& name, const std::string& expression)
{
    return DerivedField(name, expression, "categorical", "string");
}

std::string NormDiscrete(const std::string& field, const std::string& value,
                         const std::string& attributes = "")
{
    return "<NormDiscrete field='" + field + "' value='" + value + "' " + attributes + "/>";
}

TEST(NormDiscrete, IsOneForItsValueAndZeroForOthers)
{
    Derivation d(DerivedField("d", NormDiscrete("c", "a")) +
                 DerivedField("e", NormDiscrete("k", "2.0", "method='indicator'")) +
                 DerivedField("f", NormDiscrete("w", "true")) +
                 DerivedField("g", NormDiscrete("day", "2003-04-01")));
    d.With("c", "a").With("k", 2.0).With("w", "T").Read("day", "2003-04-01");
    for (const char* name : {"d", "e", "f", "g"}) EXPECT_EQ(d.Number(name), 1.0) << name;
    d.With("c", "b").With("k", 1.0).With("w", "F").Read("day", "2003-04-02");
    for (const char* name : {"d", "e", "f", "g"}) EXPECT_EQ(d.Number(name), 0.0) << name;
}

TEST(NormDiscrete, MissingFieldIsMissingOrItsReplacement)
{
    Derivation d(DerivedField("d", NormDiscrete("c", "a")) +
                 DerivedField("e", NormDiscrete("c", "a", "mapMissingTo='0.5'")));
    EXPECT_TRUE(d.Missing("d"));
    EXPECT_EQ(d.Number("e"), 0.5);
    d.With("c", "not declared");
    EXPECT_TRUE(d.Invalid("d"));
    EXPECT_EQ(d.Number("e"), 0.5);
}

TEST(NormDiscrete, OtherMethodOrValueIsRefused)
{
    EXPECT_EQ(RefusedFor(DerivedField("d", NormDiscrete("c", "a", "method='thermometer'"))),
              (Refusal{kUnknownDataType, {"thermometer", "method", "d"}}));
    EXPECT_EQ(RefusedFor(DerivedField("d", NormDiscrete("k", "two"))),
              (Refusal{kNotANumber, {"two", "value"}}));
    EXPECT_EQ(RefusedFor(DerivedField("d", "<NormDiscrete field='c'/>")),
              (Refusal{260115, {"value", "NormDiscrete"}}));
    EXPECT_EQ(RefusedFor(DerivedField("d", NormDiscrete("day", "yesterday"))),
              (Refusal{kNotOfDataType, {"yesterday", "date", "d"}}));
}

std::string Bin(const std::string& value, const std::string& interval)
{
    return "<DiscretizeBin binValue='" + value + "'><Interval " + interval + "/></DiscretizeBin>";
}

std::string Discretize(const std::string& field, const std::string& bins,
                       const std::string& attributes = "")
{
    return "<Discretize field='" + field + "' " + attributes + ">" + bins + "</Discretize>";
}

TEST(Discretize, BoundsAreOpenOrClosed)
{
    const struct {
        const char* closure;
        bool low;
        bool high;
    } kRows[] = {{"openOpen", false, false},
                 {"openClosed", false, true},
                 {"closedOpen", true, false},
                 {"closedClosed", true, true}};
    for (const auto& row : kRows) {
        const std::string interval =
            "closure='" + std::string(row.closure) + "' leftMargin='1' rightMargin='2'";
        Derivation d(DerivedField("d", Discretize("x", Bin("7", interval), "defaultValue='0'")));
        EXPECT_EQ(d.With("x", 1.5).Number("d"), 7.0) << row.closure;
        EXPECT_EQ(d.With("x", 1.0).Number("d"), row.low ? 7.0 : 0.0) << row.closure;
        EXPECT_EQ(d.With("x", 2.0).Number("d"), row.high ? 7.0 : 0.0) << row.closure;
        EXPECT_EQ(d.With("x", 0.999).Number("d"), 0.0) << row.closure;
        EXPECT_EQ(d.With("x", 2.001).Number("d"), 0.0) << row.closure;
    }
}

const std::string kBins = Bin("low", "closure='openOpen' rightMargin='0'") +
                          Bin("middle", "closure='closedClosed' leftMargin='0' rightMargin='5'") +
                          Bin("high", "closure='openOpen' leftMargin='5' rightMargin='9'") +
                          Bin("low", "closure='closedOpen' leftMargin='20'");

TEST(Discretize, FirstBinThatHoldsTheNumberElseTheDefaultElseMissing)
{
    Derivation d(
        TextField("d", Discretize("x", kBins)) +
        TextField("e", Discretize("x", kBins, "defaultValue='none' mapMissingTo='absent'")));
    EXPECT_TRUE(d.Missing("d"));
    EXPECT_EQ(d["e"].GetString(), "absent");
    const struct {
        double x;
        const char* bin;
    } kRows[] = {{-1e300, "low"}, {0.0, "middle"}, {5.0, "middle"}, {8.0, "high"}, {1e300, "low"}};
    for (const auto& row : kRows) {
        EXPECT_EQ(d.With("x", row.x)["d"].GetString(), row.bin) << row.x;
        EXPECT_EQ(d["e"].GetString(), row.bin) << row.x;
    }
    EXPECT_TRUE(d.With("x", 9.0).Missing("d"));
    EXPECT_EQ(d["e"].GetString(), "none");
}

TEST(Discretize, TextGetsTheBinsAsCategories)
{
    const Derivation d(
        TextField("d", Discretize("x", kBins, "defaultValue='none' mapMissingTo='absent'")));
    EXPECT_EQ(Categories(d.Var("d")), (Texts{"low", "middle", "high", "none", "absent"}));
    EXPECT_EQ(d.Var("d").GetCatEncoder()->EncodeString("high"), 2);
}

TEST(Discretize, MarginsOfADateMayBeSpelledOut)
{
    const std::string bins =
        Bin("1", "closure='closedOpen' leftMargin='1960-01-11' rightMargin='20'") +
        Bin("2", "closure='closedOpen' leftMargin='20'");
    Derivation d(DerivedField("d", Discretize("days60", bins, "defaultValue='0'")));
    EXPECT_EQ(d.Read("days60", "1960-01-10").Number("d"), 0.0);
    EXPECT_EQ(d.Read("days60", "10").Number("d"), 1.0);
    EXPECT_EQ(d.Read("days60", "1960-01-20").Number("d"), 1.0);
    EXPECT_EQ(d.Read("days60", "20").Number("d"), 2.0);
}

TEST(Discretize, FaultyBinsAreRefused)
{
    const auto refused = [](const std::string& bins) {
        return RefusedFor(DerivedField("d", Discretize("x", bins)));
    };
    EXPECT_EQ(refused(Bin("one", "closure='openOpen'")),
              (Refusal{kNotANumber, {"one", "binValue"}}));
    EXPECT_EQ(refused(Bin("1", "closure='open'")),
              (Refusal{kUnknownDataType, {"open", "closure", "d"}}));
    EXPECT_EQ(refused(Bin("1", "closure='openOpen' leftMargin='a'")),
              (Refusal{kNotANumber, {"a", "leftMargin"}}));
    EXPECT_EQ(refused("<DiscretizeBin binValue='1'/>"),
              (Refusal{260115, {"Interval", "DiscretizeBin"}}));
    EXPECT_EQ(refused("<DiscretizeBin><Interval closure='openOpen'/></DiscretizeBin>"),
              (Refusal{260115, {"binValue", "DiscretizeBin"}}));
}

// Rows of a map, each of its cells: "a 1 x" under the columns in1, in2 and out.
std::string Rows(std::initializer_list<Texts> rows, const std::string& prefix = "")
{
    std::string text = "<InlineTable>";
    for (const Texts& cells : rows) {
        text += "<row>";
        for (size_t i = 0; i < cells.size(); ++i) {
            const std::string name = prefix + (i + 1 == cells.size() ? "out"
                                               : i == 0              ? "in1"
                                                                     : "in2");
            text += "<" + name + ">" + cells[i] + "</" + name + ">";
        }
        text += "</row>";
    }
    return text + "</InlineTable>";
}

std::string Pair(const std::string& field, const std::string& column)
{
    return "<FieldColumnPair field='" + field + "' column='" + column + "'/>";
}

std::string MapValues(const std::string& content, const std::string& attributes = "")
{
    return "<MapValues outputColumn='out' " + attributes + ">" + content + "</MapValues>";
}

TEST(MapValues, LooksUpOneOrSeveralFields)
{
    Derivation d(
        DerivedField("d", MapValues(Pair("c", "in1") + Rows({{"a", "1.5"}, {"b", "-2"}}))) +
        TextField("e", MapValues(Pair("t", "in1") + Pair("k", "in2") +
                                 Rows({{"u", "1", "u one"},
                                       {"u", "2.0", "u two"},
                                       {"v", "1", "v one"},
                                       {"v", "1", "again"}}))));
    EXPECT_EQ(d.With("c", "a").Number("d"), 1.5);
    EXPECT_EQ(d.With("c", "b").Number("d"), -2.0);
    EXPECT_EQ(d.With("t", "u").With("k", 2.0)["e"].GetString(), "u two");
    EXPECT_EQ(d.With("t", "v").With("k", 1.0)["e"].GetString(), "v one");
    EXPECT_TRUE(d.With("t", "v").With("k", 2.0).Missing("e"));
    EXPECT_EQ(Categories(d.Var("e")), (Texts{"u one", "u two", "v one"}));
}

// "u" with "v1" is not "uv" with "1".
TEST(MapValues, CellsOfSeveralColumnsAreKeptApart)
{
    Derivation d(DerivedField("d", MapValues(Pair("t", "in1") + Pair("c", "in2") +
                                                 Rows({{"xa", "b", "1"}, {"x", "ab", "2"}}),
                                             "defaultValue='0'")));
    EXPECT_EQ(d.With("t", "xa").With("c", "b").Number("d"), 1.0);
    EXPECT_EQ(d.With("t", "x").With("c", "b").Number("d"), 0.0);
}

TEST(MapValues, UnlistedIsTheDefaultAndMissingItsReplacement)
{
    const std::string content = Pair("c", "in1") + Rows({{"a", "1"}, {"x", ""}});
    Derivation d(DerivedField("d", MapValues(content)) +
                 DerivedField("e", MapValues(content, "defaultValue='8' mapMissingTo='9'")));
    EXPECT_TRUE(d.Missing("d"));
    EXPECT_EQ(d.Number("e"), 9.0);
    EXPECT_TRUE(d.With("c", "b").Missing("d"));
    EXPECT_EQ(d.Number("e"), 8.0);
    EXPECT_TRUE(d.With("c", "not declared").Invalid("d"));
    EXPECT_EQ(d.Number("e"), 9.0);
}

TEST(MapValues, CellsMatchAsValuesOfTheirFieldsType)
{
    Derivation d(
        DerivedField("d", MapValues(Pair("x", "in1") +
                                    Rows({{" 1.50 ", "1"}, {"2e1", "2"}, {"none", "3"}}))) +
        DerivedField("e", MapValues(Pair("w", "in1") + Rows({{"true", "1"}, {"0", "2"}}))) +
        DerivedField("f",
                     MapValues(Pair("days60", "in1") + Rows({{"10", "1"}, {"1960-01-21", "2"}}))) +
        DerivedField("g", MapValues(Pair("t", "in1") + Rows({{"1", "1"}, {"1.0", "2"}}))));
    EXPECT_EQ(d.With("x", 1.5).Number("d"), 1.0);
    EXPECT_EQ(d.With("x", 20.0).Number("d"), 2.0);
    EXPECT_EQ(d.With("w", "T").Number("e"), 1.0);
    EXPECT_EQ(d.With("w", "F").Number("e"), 2.0);
    EXPECT_EQ(d.Read("days60", "1960-01-11").Number("f"), 1.0);
    EXPECT_EQ(d.Read("days60", "20").Number("f"), 2.0);
    EXPECT_EQ(d.With("t", "1.0").Number("g"), 2.0);
}

// The code 1 is not 1.9, though a derived whole number would be cut to it.
TEST(MapValues, CellsOfAWholeFieldAreNotCutToWholeOnes)
{
    Derivation d(DerivedField("d", MapValues(Pair("k", "in1") + Rows({{"1.9", "9"}, {"1", "1"}}))) +
                 DerivedField("e", NormDiscrete("k", "1.9")));
    EXPECT_EQ(d.With("k", 1.0).Number("d"), 1.0);
    EXPECT_EQ(d.Number("e"), 0.0);
}

TEST(MapValues, CellsMayHaveAPrefix)
{
    for (const char* column : {"in1", "data:in1"}) {
        Derivation d(DerivedField(
            "d", MapValues(Pair("c", column) + Rows({{"a", "1"}, {"b", "2"}}, "data:"))));
        EXPECT_EQ(d.With("c", "b").Number("d"), 2.0) << column;
    }
}

TEST(MapValues, FaultyTablesAreRefused)
{
    const std::string pair = Pair("c", "in1");
    const struct {
        std::string content;
        Refusal expected;
    } kRows[] = {
        {pair + "<TableLocator/>", {kTableLocator, {"d"}}},
        {pair, {260115, {"InlineTable", "MapValues"}}},
        {Rows({{"a", "1"}}), {kMapWithoutColumns, {"d"}}},
        {pair + pair + Rows({{"a", "1"}}), {kMapColumnTwice, {"in1", "d"}}},
        {pair + Pair("t", "in2") + Rows({{"a", "1"}}), {kMapCellMissing, {"in2", "d"}}},
        {pair + "<InlineTable><row><in1>a</in1></row></InlineTable>",
         {kMapCellMissing, {"out", "d"}}},
        {pair + Rows({{"a", "one"}}), {kNotANumber, {"one", "row"}}},
        {Pair("nobody", "in1") + Rows({{"a", "1"}}), {kUnknownFieldReference, {"nobody", "d"}}},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(RefusedFor(DerivedField("d", MapValues(row.content))), row.expected);
    }
    EXPECT_EQ(RefusedFor(DerivedField("d", "<MapValues/>")),
              (Refusal{260115, {"outputColumn", "MapValues"}}));
}

// As many rows as a document's limits admit.
TEST(MapValues, LongTableIsReadAndLookedUpAtOnce)
{
    constexpr int kCount = 100000;
    std::string table = "<InlineTable>";
    for (int i = 0; i < kCount; ++i) {
        const std::string number = std::to_string(i);
        table.append("<row><in1>").append(number).append("</in1><out>");
        table.append(number).append("</out></row>");
    }
    Derivation d(DerivedField("d", MapValues(Pair("x", "in1") + table + "</InlineTable>")));
    double sum = 0.0;
    for (int i = 0; i < kCount; ++i) sum += d.With("x", i).Number("d");
    EXPECT_EQ(sum, 0.5 * kCount * (kCount - 1.0));
}

TEST(DatesInExpressions, CountFromTheOriginOfTheirType)
{
    Derivation d(DerivedField("d", FieldRef("day")) + DerivedField("e", FieldRef("days60")) +
                 DerivedField("f", Apply("+", FieldRef("seconds80") + Constant("1"))) +
                 DerivedField("g", FieldRef("clock")) + DerivedField("h", FieldRef("moment")));
    // 1980-01-01 lies 7305 days after 1960-01-01 and 3652 after 1970-01-01.
    d.Read("day", "1980-01-01")
        .Read("days60", "1980-01-01")
        .Read("seconds80", "1980-01-01T00:00:05");
    d.Read("clock", "01:00:00").Read("moment", "1970-01-01T00:00:09");
    EXPECT_EQ(d.Number("d"), 3652.0);
    EXPECT_EQ(d.Number("e"), 7305.0);
    EXPECT_EQ(d.Number("f"), 6.0);
    EXPECT_EQ(d.Number("g"), 3600.0);
    EXPECT_EQ(d.Number("h"), 9.0);
}

TEST(DatesInExpressions, AreTextsInTheFormsOfTheStandard)
{
    Derivation d(TextField("d", FieldRef("day")) + TextField("e", FieldRef("days60")) +
                 TextField("f", FieldRef("clock")) + TextField("g", FieldRef("moment")));
    d.Read("day", "0986-02-03").Read("days60", "1960-01-31");
    d.Read("clock", "9:59").Read("clock", "09:59").Read("moment", "1969-12-31T23:59:08.25");
    EXPECT_EQ(d["d"].GetString(), "0986-02-03");
    EXPECT_EQ(d["e"].GetString(), "30");
    EXPECT_EQ(d["f"].GetString(), "09:59:00");
    EXPECT_EQ(d["g"].GetString(), "1969-12-31T23:59:08.25");
}

TEST(DatesInExpressions, CompareByTheMomentWhateverTheyCountFrom)
{
    Derivation d(DerivedField("d", Apply("equal", FieldRef("day") + FieldRef("days60"))) +
                 DerivedField("e", Apply("lessThan", FieldRef("days60") + FieldRef("seconds80"))) +
                 DerivedField("f", Apply("equal", FieldRef("days60") + Constant("7305"))) +
                 DerivedField("g", Apply("greaterThan", FieldRef("day") + Constant("1979-12-31"))));
    d.Read("day", "1980-01-01").Read("days60", "7305").Read("seconds80", "1");
    for (const char* name : {"d", "e", "f", "g"}) EXPECT_EQ(d.Number(name), 1.0) << name;
    d.Read("day", "1979-12-31").Read("days60", "7306").Read("seconds80", "1");
    for (const char* name : {"d", "e", "f", "g"}) EXPECT_EQ(d.Number(name), 0.0) << name;
}

// The text form of a derived value, by its dataType.
TEST(Casting, FollowsTheDataTypeOfTheDerivedField)
{
    const auto text = [](const char* t) { return Constant(t, "dataType='string'"); };
    const std::string moment = Constant("2000-01-02T03:04:05", "dataType='dateTime'");
    constexpr double kMissing = NumericValue::GetSysmisValue();
    const struct {
        const char* dataType;
        std::string expression;
        double expected;  // NaN: not valid
    } kRows[] = {
        {"integer", Constant("2.7"), 2.0},
        {"integer", Constant("-2.7"), -2.0},
        {"integer", text("3.5"), 3.0},
        {"double", Constant("2.7"), 2.7},
        {"float", Constant("0.1"), 0.1},
        {"double", text(" 4 "), 4.0},
        {"double", text("four"), kNaN},
        {"double", Constant("true", "dataType='boolean'"), 1.0},
        {"double", Apply("equal", Constant("1") + Constant("2")), 0.0},
        {"double", Constant("", "missing='true'"), kMissing},
        {"double", Constant("", "missing='1'"), kMissing},
        {"double", Constant("5", "missing='0'"), 5.0},
        {"double", Apply("ln", Constant("0")), kNaN},
        // 2000-01-01 is day 10957 since 1970; values of variables count from there
        {"date", moment, 10958.0},
        {"time", moment, 11045.0},
        {"dateTime", Constant("2000-01-02", "dataType='date'"), 10958.0 * 86400.0},
        {"date", text("2000-01-02"), 10958.0},
        {"date", text("2000-01-32"), kNaN},
        {"date", Constant("12:00:00", "dataType='time'"), kNaN},
        // 3653 days from 1960 to 1970
        {"dateDaysSince[1960]", Constant("3663"), 10.0},
        {"dateDaysSince[1960]", Constant("1970-01-11", "dataType='date'"), 10.0},
        {"dateTimeSecondsSince[1970]", Constant("1970-01-02", "dataType='date'"), 86400.0},
        {"timeSeconds", moment, 11045.0},
        {"date", Constant("true", "dataType='boolean'"), kNaN},
    };
    for (const auto& row : kRows) {
        const Derivation d(DerivedField("d", row.expression, "continuous", row.dataType));
        if (std::isnan(row.expected)) {
            EXPECT_TRUE(d.Invalid("d")) << row.dataType << row.expression;
        } else {
            EXPECT_EQ(d.Number("d"), row.expected) << row.dataType << row.expression;
        }
    }
}

TEST(Casting, TextsAndTruths)
{
    const struct {
        const char* dataType;
        std::string expression;
        const char* expected;  // null: missing
    } kRows[] = {
        {"string", Constant("007"), "007"},
        {"string", Constant("007", "dataType='integer'"), "7"},
        {"string", Constant("2.50", "dataType='double'"), "2.5"},
        {"string", Apply("equal", Constant("1") + Constant("1")), "true"},
        {"string", FieldRef("w"), "T"},
        {"string", Apply("ln", Constant("0")), nullptr},
        {"boolean", FieldRef("w"), "true"},
        {"boolean", Constant("0"), "false"},
        {"boolean", Constant("T", "dataType='string'"), "true"},
        {"boolean", Constant("2"), nullptr},
        {"boolean", Constant("maybe", "dataType='string'"), nullptr},
        {"boolean", "<Value value='F'/><Value value='T'/>" + FieldRef("w"), "T"},
    };
    for (const auto& row : kRows) {
        Derivation d(DerivedField("d", row.expression, "categorical", row.dataType));
        d.With("w", "T");
        if (row.expected == nullptr) {
            EXPECT_TRUE(d.Missing("d")) << row.dataType << row.expression;
        } else {
            EXPECT_EQ(d["d"].GetString(), row.expected) << row.dataType << row.expression;
        }
    }
}

TEST(Constants, AreOfTheirDataType)
{
    const struct {
        const char* text;
        const char* dataType;
        Refusal expected;
    } kRows[] = {
        {"x", "double", {kNotANumber, {"x", "Constant"}}},
        {"INF", "integer", {kNotANumber, {"INF", "Constant"}}},
        {"x", "boolean", {kNotOfDataType, {"x", "boolean", "d"}}},
        {"2003-02-29", "date", {kNotOfDataType, {"2003-02-29", "date", "d"}}},
        {"x", "real", {kUnknownDataType, {"real", "dataType", "d"}}},
        {"-INF", "double", {}},
        {"NaN", "float", {}},
        {"10", "dateDaysSince[1960]", {}},
        {"1960-01-11", "dateDaysSince[1960]", {}},
    };
    for (const auto& row : kRows) {
        const std::string type = "dataType='" + std::string(row.dataType) + "'";
        EXPECT_EQ(RefusedFor(DerivedField("d", Constant(row.text, type))), row.expected)
            << row.text;
    }
}

TEST(OrdinalTexts, CompareByTheirDeclaredOrder)
{
    Derivation d(DerivedField("d", Apply("lessThan", FieldRef("o") + Constant("large"))) +
                 DerivedField("e", Apply("greaterThan", Constant("medium") + FieldRef("o"))));
    const struct {
        const char* size;
        double less;
        double below;
    } kRows[] = {{"small", 1.0, 1.0}, {"medium", 1.0, 0.0}, {"large", 0.0, 0.0}};
    for (const auto& row : kRows) {
        d.With("o", row.size);
        EXPECT_EQ(d.Number("d"), row.less) << row.size;
        EXPECT_EQ(d.Number("e"), row.below) << row.size;
    }
}

TEST(DerivedTexts, HaveTheCategoriesThatTheirFunctionsYield)
{
    const std::string sex = Apply("if", Apply("equal", FieldRef("x") + Constant("1")) +
                                            Constant("male") + Constant("female"));
    const Derivation d(
        TextField("d", sex) +
        TextField("e", Apply("uppercase", FieldRef("c"), "defaultValue='none'")) +
        TextField("f", Apply("concat", FieldRef("c") + Constant("-") + FieldRef("k"))) +
        DerivedField("g", Apply("greaterThan", FieldRef("x") + Constant("1")), "categorical",
                     "boolean") +
        TextField("h", Apply("concat", FieldRef("c") + FieldRef("x"))) +
        TextField("i", Apply("replace", FieldRef("c") + Constant("[ab]") + Constant("z"))));
    EXPECT_EQ(Categories(d.Var("d")), (Texts{"male", "female"}));
    EXPECT_EQ(Categories(d.Var("e")), (Texts{"A", "B", "none"}));
    EXPECT_EQ(Categories(d.Var("f")), (Texts{"a-1", "a-2", "b-1", "b-2"}));
    EXPECT_EQ(Categories(d.Var("g")), (Texts{"false", "true"}));
    EXPECT_TRUE(d.Var("h").HasOpenCategories());
    EXPECT_EQ(Categories(d.Var("i")), Texts{"z"});
}

TEST(DerivedTexts, HaveTheCategoriesOfFunctionsThatLeaveMissingArgumentsOut)
{
    const std::string ten = Constant("10", "dataType='double'");
    const Derivation d(TextField("d", Apply("sum", FieldRef("k") + ten)) +
                       TextField("e", Apply("sum", ten + ten)));
    EXPECT_EQ(Categories(d.Var("d")), (Texts{"11", "12", "10"}));
    EXPECT_EQ(d["d"].GetString(), "10");
    EXPECT_FALSE(d.Invalid("d"));
    EXPECT_EQ(Categories(d.Var("e")), Texts{"20"});
}

TEST(DerivedTexts, HaveTheCategoriesOfArgumentsThatAreMissingWithoutAField)
{
    const std::string two = Constant("2", "dataType='double'");
    const std::string missing = Constant("", "missing='true'");
    const std::string none =
        Apply("/", two + Constant("0", "dataType='double'"), "invalidValueTreatment='asMissing'");
    const Derivation d(TextField("d", Apply("min", Apply("equal", missing + two) + two)) +
                       TextField("e", Apply("sum", none + two)) +
                       TextField("f", Apply("sum", Apply("+", two + two) + two)));
    EXPECT_EQ(d["d"].GetString(), "2");
    EXPECT_FALSE(d.Invalid("d"));
    EXPECT_EQ(d["e"].GetString(), "2");
    EXPECT_EQ(Categories(d.Var("e")), Texts{"2"});
    EXPECT_EQ(Categories(d.Var("f")), Texts{"6"});
}

// log10(0) is -infinity, which has no text, but of which the distribution function is 0.
TEST(DerivedTexts, HaveTheCategoriesOfInfiniteArguments)
{
    const std::string difference = Apply("-", FieldRef("k") + Constant("1", "dataType='double'"));
    const std::string logarithm = Apply("log10", difference, "invalidValueTreatment='asIs'");
    const Derivation d(TextField("d", Apply("stdNormalCDF", logarithm)) +
                       TextField("e", logarithm));
    EXPECT_EQ(Categories(d.Var("d")), (Texts{"0", "0.5"}));
    EXPECT_EQ(Categories(d.Var("e")), Texts{"0"});
}

TEST(Evaluation, AllocatesNothingAfterTheFirstCase)
{
    const std::string sum = Apply("+", FieldRef("x") + Apply("ln", FieldRef("y")));
    Derivation d(
        DerivedField("n",
                     Apply("if", Apply("and", Apply("greaterThan", FieldRef("x") + Constant("1")) +
                                                  Apply("isNotMissing", FieldRef("y"))) +
                                     sum + Apply("median", FieldRef("x") + FieldRef("y")))) +
        DerivedField("m", MapValues(Pair("t", "in1") + Rows({{"a text that fills a buffer", "1"}}),
                                    "defaultValue='0'")) +
        TextField("t1", Apply("uppercase", Apply("concat", FieldRef("t") + FieldRef("t")))) +
        TextField("t2",
                  Apply("replace", FieldRef("t") + Constant("f[a-z]+") + Constant("&lt;$0>"))) +
        TextField("t3", Apply("formatNumber", FieldRef("x") + Constant("%30.3f"))) +
        TextField("t4", Apply("formatDatetime", FieldRef("day") + Constant("%A, %d %B %Y"))) +
        DerivedField("bin", Discretize("x", Bin("1", "closure='openOpen'"))));
    d.With("x", 2.0).With("y", 3.0).With("t", "a text that fills a buffer");
    d.Read("day", "2003-04-01");
    const std::vector<std::string> names{"n", "m", "t1", "t2", "t3", "t4", "bin"};
    for (int round = 0; round < 3; ++round) {
        for (const std::string& name : names) d[name];
    }
    const long before = AllocationCount();
    for (const std::string& name : names) d[name];
    EXPECT_EQ(AllocationCount(), before);
}

}  // namespace
}  // namespace MCVelscore_850
