// Functions that a document defines.

#include <gtest/gtest.h>

#include "derivation.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {
namespace {

std::string Parameter(const std::string& name, const std::string& attributes = "")
{
    return "<ParameterField name='" + name + "' " + attributes + "/>";
}

std::string Define(const std::string& name, const std::string& content,
                   const std::string& attributes = "")
{
    return "<DefineFunction name='" + name + "' optype='continuous' " + attributes + ">" + content +
           "</DefineFunction>";
}

// a + 2 b
const std::string kPlusTwice =
    Define("plusTwice", Parameter("a") + Parameter("b") +
                            Apply("+", FieldRef("a") + Apply("*", Constant("2") + FieldRef("b"))));

TEST(DefinedFunctions, ArgumentsTakeThePlaceOfParameters)
{
    Derivation d(
        kPlusTwice + DerivedField("d", Apply("plusTwice", FieldRef("x") + FieldRef("y"))) +
        DerivedField("e", Apply("plusTwice", Apply("ln", Constant("1")) +
                                                 Apply("+", FieldRef("x") + Constant("1")))));
    d.With("x", 3.0).With("y", 5.0);
    EXPECT_EQ(d.Number("d"), 13.0);
    EXPECT_EQ(d.Number("e"), 8.0);
    EXPECT_EQ(d.Var("d").Inputs(), (std::vector<const ScoreDictVar*>{d.Dictionary()->GetVar("x"),
                                                                     d.Dictionary()->GetVar("y")}));
}

TEST(DefinedFunctions, CallEachOtherAndTheirOwnCallsNest)
{
    const std::string nested =
        Apply("plusTwice", Apply("plusTwice", FieldRef("x") + Constant("1")) +
                               Apply("plusTwice", Constant("1") + FieldRef("x")));
    // f(x) = plusTwice(plusTwice(x, x), 1) = 3 x + 2; it stands before what it calls
    Derivation d(
        Define("f", Parameter("v") +
                        Apply("plusTwice",
                              Apply("plusTwice", FieldRef("v") + FieldRef("v")) + Constant("1"))) +
        kPlusTwice + DerivedField("d", nested) +
        DerivedField("e", Apply("f", Apply("f", FieldRef("x")))));
    d.With("x", 10.0);
    EXPECT_EQ(d.Number("d"), 12.0 + 2.0 * 21.0);
    EXPECT_EQ(d.Number("e"), 98.0);  // 3 * 32 + 2
}

TEST(DefinedFunctions, AllExpressionsReadParameters)
{
    const std::string interval = "<Interval closure='closedOpen' leftMargin='0' rightMargin='5'/>";
    const std::string body =
        Apply("concat",
              "<Discretize field='v' defaultValue='out'><DiscretizeBin binValue='in'>" + interval +
                  "</DiscretizeBin></Discretize>"
                  "<NormDiscrete field='v' value='4'/>"
                  "<NormContinuous field='v'><LinearNorm orig='0' norm='0'/>"
                  "<LinearNorm orig='2' norm='1'/></NormContinuous>"
                  "<MapValues outputColumn='o' defaultValue='none'><FieldColumnPair field='v' "
                  "column='i'/>"
                  "<InlineTable><row><i>4.0</i><o>four</o></row></InlineTable></MapValues>");
    Derivation d(Define("f", Parameter("v") + body) +
                 DerivedField("d", Apply("f", FieldRef("x")), "categorical", "string"));
    EXPECT_EQ(d.With("x", 4.0)["d"].GetString(), "in12four");
    EXPECT_EQ(d.With("x", 5.0)["d"].GetString(), "out02.5none");
}

TEST(DefinedFunctions, TypesOfParametersAndOfTheOutcomeAreCastTo)
{
    Derivation d(Define("f",
                        Parameter("v", "optype='continuous' dataType='integer'") +
                            Apply("/", FieldRef("v") + Constant("2")),
                        "dataType='integer'") +
                 DerivedField("d", Apply("f", FieldRef("x"))));
    EXPECT_EQ(d.With("x", 5.9).Number("d"), 2.0);  // 5 / 2 without its fraction
}

TEST(DefinedFunctions, RulesOfApplyStandBesideThem)
{
    const std::string half =
        Define("half", Parameter("v") + Apply("if", Apply("isMissing", FieldRef("v")) +
                                                        Constant("-1") + FieldRef("v")));
    Derivation d(half + DerivedField("d", Apply("half", FieldRef("x"))) +
                 DerivedField("e", Apply("half", FieldRef("x"), "mapMissingTo='7'")) +
                 DerivedField("f", Apply("half", Apply("ln", FieldRef("y")),
                                         "invalidValueTreatment='asMissing' defaultValue='8'")));
    EXPECT_EQ(d.Number("d"), -1.0);  // the function sees the missing value
    EXPECT_EQ(d.Number("e"), 7.0);   // and isn't asked
    EXPECT_EQ(d.With("y", -1.0).Number("f"), 8.0);
}

TEST(DefinedFunctions, FunctionThatCallsItselfIsRefused)
{
    const std::string call = Parameter("v") + Apply("f", FieldRef("v"));
    EXPECT_EQ(RefusedFor(Define("f", call)), (Refusal{kFunctionCycle, {"f"}}));
    EXPECT_EQ(
        RefusedFor(Define("g", call) + Define("h", Parameter("v") + Apply("g", FieldRef("v"))) +
                   Define("f", Parameter("v") + Apply("h", FieldRef("v")))),
        (Refusal{kFunctionCycle, {"f"}}));
}

TEST(DefinedFunctions, FaultyOnesAreRefused)
{
    const struct {
        std::string section;
        Refusal expected;
    } kRows[] = {
        {Define("f", Constant("1")) + Define("f", Constant("2")), {kDuplicateFunction, {"f"}}},
        {Define("ln", Constant("1")), {kDuplicateFunction, {"ln"}}},
        {Define("f", Parameter("v")), {kExpressionMissing, {"f"}}},
        {Define("f", Parameter("v") + Parameter("v") + Constant("1")), {kDuplicateField, {"v"}}},
        {Define("f", Parameter("v") + FieldRef("x")), {kUnknownFieldReference, {"x", "f"}}},
        {Define("f", Parameter("v") + Apply("g", FieldRef("v"))),
         {kFunctionNotSupported, {"g", "f"}}},
        {Define("f", Constant("1"), "dataType='real'"),
         {kUnknownDataType, {"real", "dataType", "f"}}},
        {"<DefineFunction/>", {260115, {"name", "DefineFunction"}}},
        {kPlusTwice + DerivedField("d", Apply("plusTwice", FieldRef("x"))),
         {kWrongArgumentCount, {"plusTwice", "1", "2", "d"}}},
    };
    for (const auto& row : kRows) EXPECT_EQ(RefusedFor(row.section), row.expected) << row.section;
}

// Each function calls the one before twice: the last would take 2^40 steps.
TEST(DefinedFunctions, CallsThatWouldTakeTooLongAreRefused)
{
    const auto name = [](int i) { return std::string("f").append(std::to_string(i)); };
    const auto functions = [&](int count) {
        std::string section =
            Define("f0", Parameter("v") + Apply("+", FieldRef("v") + Constant("1")));
        for (int i = 1; i <= count; ++i) {
            const std::string inner = Apply(name(i - 1), FieldRef("v"));
            section += Define(name(i), Parameter("v") + Apply("+", inner + inner));
        }
        return section + DerivedField("d", Apply(name(count), FieldRef("x")));
    };
    Derivation d(functions(10));
    EXPECT_EQ(d.With("x", 1.0).Number("d"), 2048.0);  // 2^10 times (1 + 1)
    EXPECT_EQ(RefusedFor(functions(40)), (Refusal{kTooManySteps, {"1000000", "d"}}));
}

TEST(DefinedFunctions, ChainOfFunctionsThatIsTooLongIsRefused)
{
    std::string section = Define("f0", Parameter("v") + FieldRef("v"));
    for (int i = 1; i <= 3000; ++i) {
        std::string name = "f";
        std::string inner = "f";
        name.append(std::to_string(i));
        inner.append(std::to_string(i - 1));
        section += Define(name, Parameter("v") + Apply(inner, FieldRef("v")));
    }
    EXPECT_EQ(RefusedFor(section).code, kExpressionTooDeep);
}

// Functions stand in the document's own section; models' sections call them.
TEST(DefinedFunctions, FunctionsOfTheDocumentAreKnownToTheModelsSection)
{
    const Dom dom(
        "<PMML><DataDictionary><DataField name='x' optype='continuous' dataType='double'/>"
        "</DataDictionary><TransformationDictionary>" +
        Define("f", Parameter("v") + Apply("+", FieldRef("v") + Constant("1"))) +
        Define("g", Parameter("v") + Constant("1")) +
        "</TransformationDictionary><Model><LocalTransformations>" +
        Define("g", Parameter("v") + Constant("2")) + DerivedField("d", Apply("f", FieldRef("x"))) +
        DerivedField("e", Apply("g", FieldRef("x"))) + "</LocalTransformations></Model></PMML>");
    PmmlReader reader;
    const std::unique_ptr<ScoreDictionary> dictionary(
        reader.ParseDictionary(dom.First("DataDictionary"), true));
    EXPECT_EQ(reader.HandleTransformationDictionary(dom.First("TransformationDictionary"),
                                                    dictionary.get()),
              nullptr);
    const std::unique_ptr<TransformationDictionary> derived(
        reader.HandleTransformationDictionary(dom.First("LocalTransformations"), dictionary.get()));
    CaseRecord record({"x"});
    record.Own(0, std::make_unique<NumericValue>(4.0));
    const auto value = [&](const char* name) {
        return static_cast<const TransformVar&>(*derived->GetVar(name))
            .GetTransformedValue(&record, dictionary.get(), derived.get())
            ->GetDouble();
    };
    EXPECT_EQ(value("d"), 5.0);
    EXPECT_EQ(value("e"), 2.0);  // the nearer one
}

}  // namespace
}  // namespace MCVelscore_850
