// Derived fields: how they are read, and what FieldRef, Constant and Apply yield.

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "derivation.h"
#include "host/messages/messages.h"
#include "host/variables/catencoder.h"

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

TEST(FieldRef, IsTheValueOfItsField)
{
    Derivation d(DerivedField("d", FieldRef("x")) + TextField("e", FieldRef("c")));
    d.With("x", 2.5).With("c", "b");
    EXPECT_EQ(d.Number("d"), 2.5);
    EXPECT_EQ(d["e"].GetString(), "b");
    EXPECT_EQ(d["e"].GetValueType(), ScoreValue::STRING);
}

TEST(FieldRef, MissingOrInvalidFieldStaysSoOrIsItsReplacement)
{
    const std::string fields =
        DerivedField("d", FieldRef("z")) + DerivedField("e", FieldRef("z", "mapMissingTo='-1.5'")) +
        TextField("f", FieldRef("c")) + TextField("g", FieldRef("c", "mapMissingTo='none'"));
    Derivation d(fields);
    for (int invalid = 0; invalid < 2; ++invalid) {
        if (invalid == 1) d.With("z", 11.0).With("c", "not declared");
        EXPECT_EQ(d.Missing("d"), invalid == 0);
        EXPECT_EQ(d.Invalid("d"), invalid == 1);
        EXPECT_EQ(d.Number("e"), -1.5) << invalid;
        EXPECT_TRUE(d.Missing("f")) << invalid;
        EXPECT_EQ(d["g"].GetString(), "none") << invalid;
    }
}

TEST(FieldRef, ReplacementThatIsNoNumberIsRefusedForANumericField)
{
    EXPECT_EQ(RefusedFor(DerivedField("d", FieldRef("x", "mapMissingTo='none'"))),
              (Refusal{kNotANumber, {"none", "mapMissingTo"}}));
}

TEST(Constant, IsAlwaysTheSame)
{
    const Derivation d(DerivedField("d", Constant("3.5", "dataType='double'")) +
                       DerivedField("e", Constant(" 7 ")) +
                       TextField("f", Constant("007", "dataType='string'")) +
                       DerivedField("g", Constant("", "missing='true'")));
    EXPECT_EQ(d.Number("d"), 3.5);
    EXPECT_EQ(d.Number("e"), 7.0);
    EXPECT_EQ(d["f"].GetString(), "007");
    EXPECT_TRUE(d.Missing("g"));
}

TEST(Constant, TextThatIsNoNumberOfItsTypeIsRefused)
{
    EXPECT_EQ(RefusedFor(DerivedField("d", Constant("x", "dataType='double'"))),
              (Refusal{kNotANumber, {"x", "Constant"}}));
}

TEST(Apply, ComputesTheFourOperations)
{
    const struct {
        const char* function;
        double expected;
    } kRows[] = {{"+", 10.0}, {"-", 6.0}, {"*", 16.0}, {"/", 4.0}};
    for (const auto& row : kRows) {
        Derivation d(DerivedField("d", Apply(row.function, FieldRef("x") + FieldRef("y"))));
        EXPECT_EQ(d.With("x", 8.0).With("y", 2.0).Number("d"), row.expected) << row.function;
    }
}

TEST(Apply, Nests)
{
    // (x - 1) * (x / 4) at x = 9: 8 * 2.25
    Derivation d(DerivedField("d", Apply("*", Apply("-", FieldRef("x") + Constant("1")) +
                                                  Apply("/", FieldRef("x") + Constant("4")))));
    EXPECT_EQ(d.With("x", 9.0).Number("d"), 18.0);
}

// The default treatment is returnInvalid, and a default stands for a missing outcome alone.
TEST(Apply, OutcomeThatIsNotValidIsTreatedAsAsked)
{
    const struct {
        const char* attributes;
        double expected;  // NaN: not valid
    } kRows[] = {
        {"", kNaN},
        {"defaultValue='-7'", kNaN},
        {"mapMissingTo='-8'", kNaN},  // no argument is missing
        {"invalidValueTreatment='returnInvalid' defaultValue='-7'", kNaN},
        {"invalidValueTreatment='asMissing'", NumericValue::GetSysmisValue()},
        {"invalidValueTreatment='asMissing' defaultValue='-7'", -7.0},
        {"invalidValueTreatment='asMissing' mapMissingTo='-8'", NumericValue::GetSysmisValue()},
        {"invalidValueTreatment='asIs' defaultValue='-7'", kInfinity},
    };
    for (const auto& row : kRows) {
        Derivation d(DerivedField("d", Apply("/", FieldRef("x") + FieldRef("y"), row.attributes)));
        const double found = d.With("x", 1.0).With("y", 0.0).Number("d");
        if (std::isnan(row.expected)) {
            EXPECT_TRUE(d.Invalid("d")) << row.attributes;
        } else {
            EXPECT_EQ(found, row.expected) << row.attributes;
        }
    }
    EXPECT_EQ(RefusedFor(
                  DerivedField("d", Apply("ln", FieldRef("x"), "invalidValueTreatment='asValue'"))),
              (Refusal{kUnknownDataType, {"asValue", "invalidValueTreatment", "d"}}));
}

TEST(Apply, OverflowIsNotValid)
{
    Derivation d(DerivedField("d", Apply("*", FieldRef("x") + FieldRef("x"))));
    EXPECT_TRUE(d.With("x", 1e200).Invalid("d"));
}

// 1 / (1 / 0): the inner infinity goes on.
TEST(Apply, InfinityThatIsLeftAsItIsIsANumber)
{
    const std::string inner =
        Apply("/", Constant("1") + FieldRef("x"), "invalidValueTreatment='asIs'");
    Derivation d(
        DerivedField("d", Apply("/", Constant("1") + inner)) +
        DerivedField("e", Apply("lessThan", FieldRef("y") + Constant("INF", "dataType='double'"))));
    EXPECT_EQ(d.With("x", 0.0).Number("d"), 0.0);
    EXPECT_EQ(d.With("y", 1e300).Number("e"), 1.0);
}

TEST(Apply, MissingArgumentIsMapMissingToElseTheDefaultElseMissing)
{
    const std::string sum = FieldRef("x") + FieldRef("y");
    Derivation d(DerivedField("d", Apply("+", sum)) +
                 DerivedField("e", Apply("+", sum, "mapMissingTo='-8'")) +
                 DerivedField("f", Apply("+", sum, "defaultValue='-7'")) +
                 DerivedField("g", Apply("+", sum, "mapMissingTo='-8' defaultValue='-7'")));
    d.With("x", 1.0);
    EXPECT_TRUE(d.Missing("d"));
    EXPECT_EQ(d.Number("e"), -8.0);
    EXPECT_EQ(d.Number("f"), -7.0);  // what has a missing argument yields nothing either
    EXPECT_EQ(d.Number("g"), -8.0);
    d.With("y", 2.0);
    for (const char* name : {"d", "e", "f", "g"}) EXPECT_EQ(d.Number(name), 3.0) << name;
}

TEST(Apply, TextThatSpellsANumberCounts)
{
    Derivation d(DerivedField("d", Apply("+", FieldRef("t") + Constant("1"))));
    EXPECT_EQ(d.With("t", "41").Number("d"), 42.0);
    EXPECT_TRUE(d.With("t", "many").Invalid("d"));
}

TEST(Apply, OtherCountOfArgumentsIsRefused)
{
    const auto refused = [](const std::string& arguments) {
        return RefusedFor(DerivedField("d", Apply("+", arguments)));
    };
    EXPECT_EQ(refused(""), (Refusal{kWrongArgumentCount, {"+", "0", "2", "d"}}));
    EXPECT_EQ(refused(FieldRef("x")), (Refusal{kWrongArgumentCount, {"+", "1", "2", "d"}}));
    EXPECT_EQ(refused(FieldRef("x") + FieldRef("x") + FieldRef("x")),
              (Refusal{kWrongArgumentCount, {"+", "3", "2", "d"}}));
}

TEST(DerivedFields, UnknownFieldFunctionOrExpressionIsRefusedByName)
{
    const struct {
        std::string expression;
        Refusal expected;
    } kRows[] = {
        {FieldRef("nobody"), {kUnknownFieldReference, {"nobody", "d"}}},
        {FieldRef("X"), {kUnknownFieldReference, {"X", "d"}}},  // x is another name
        {Apply("cosh2", FieldRef("x")), {kFunctionNotSupported, {"cosh2", "d"}}},
        {"<Lag field='x'/>", {kExpressionNotSupported, {"Lag", "d"}}},
        {"<Aggregate field='x' function='sum'/>", {kExpressionNotSupported, {"Aggregate", "d"}}},
        {"<TextIndex textField='t'/>", {kExpressionNotSupported, {"TextIndex", "d"}}},
        {"", {kExpressionMissing, {"d"}}},
        {"<Extension/>", {kExpressionMissing, {"d"}}},
        {"<FieldRef/>", {260115, {"field", "FieldRef"}}},
        {"<Apply/>", {260115, {"function", "Apply"}}},
        {"<NormContinuous/>", {260115, {"field", "NormContinuous"}}},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(RefusedFor(DerivedField("d", row.expression)), row.expected) << row.expression;
    }
}

TEST(DerivedFields, TypesAndNamesAreRequired)
{
    EXPECT_EQ(RefusedFor("<DerivedField optype='continuous' dataType='double'/>"),
              (Refusal{260115, {"name", "DerivedField"}}));
    EXPECT_EQ(RefusedFor("<DerivedField name='d' dataType='double'/>"),
              (Refusal{260115, {"optype", "DerivedField"}}));
    EXPECT_EQ(RefusedFor("<DerivedField name='d' optype='continuous'/>"),
              (Refusal{260115, {"dataType", "DerivedField"}}));
    EXPECT_EQ(RefusedFor(DerivedField("d", FieldRef("x"), "continuous", "real")),
              (Refusal{kUnknownDataType, {"real", "dataType", "d"}}));
}

TEST(DerivedFields, NameOfAnotherFieldIsRefused)
{
    EXPECT_EQ(RefusedFor(DerivedField("x", FieldRef("y"))), (Refusal{kDuplicateField, {"x"}}));
    EXPECT_EQ(RefusedFor(DerivedField("d", FieldRef("x")) + DerivedField("d", FieldRef("y"))),
              (Refusal{kDuplicateField, {"d"}}));
}

TEST(DerivedFields, SectionWithoutFieldsYieldsNone)
{
    EXPECT_EQ(Derivation("").Derived(), nullptr);
    EXPECT_EQ(Derivation("<Extension/>").Derived(), nullptr);
}

TEST(DerivedFields, OtherElementOfTheSectionIsRefusedByName)
{
    EXPECT_EQ(RefusedFor("<DataField name='f' optype='continuous' dataType='double'/>"),
              (Refusal{kExpressionNotSupported, {"DataField", "TransformationDictionary"}}));
}

TEST(DerivedFields, MayUseFieldsThatStandAfterThem)
{
    Derivation d(DerivedField("d", Apply("+", FieldRef("e") + FieldRef("x"))) +
                 DerivedField("e", Apply("*", FieldRef("x") + Constant("2"))));
    EXPECT_EQ(d.With("x", 5.0).Number("d"), 15.0);
    EXPECT_EQ(d.Number("e"), 10.0);
    EXPECT_TRUE(d.Var("d").IsDerived());
    EXPECT_EQ(d.Var("d").Inputs(),
              (std::vector<const ScoreDictVar*>{&d.Var("e"), d.Dictionary()->GetVar("x")}));
}

TEST(DerivedFields, InputsStandOnceInTheOrderOfTheirNaming)
{
    const Derivation d(DerivedField(
        "d",
        Apply("+", Apply("*", FieldRef("z") + FieldRef("x")) +
                       Apply("-", FieldRef("z") + Apply("/", FieldRef("y") + FieldRef("x"))))));
    const auto* dictionary = d.Dictionary();
    EXPECT_EQ(d.Var("d").Inputs(),
              (std::vector<const ScoreDictVar*>{dictionary->GetVar("z"), dictionary->GetVar("x"),
                                                dictionary->GetVar("y")}));
}

TEST(DerivedFields, FieldThatDependsOnItselfIsRefused)
{
    EXPECT_EQ(RefusedFor(DerivedField("d", FieldRef("d"))), (Refusal{kDerivedFieldCycle, {"d"}}));
    EXPECT_EQ(RefusedFor(DerivedField("d", FieldRef("e")) + DerivedField("e", FieldRef("f")) +
                         DerivedField("f", Apply("+", FieldRef("x") + FieldRef("d")))),
              (Refusal{kDerivedFieldCycle, {"d"}}));
}

std::string Numbered(int i)
{
    std::string name = "d";
    return name.append(std::to_string(i));
}

// n fields, each the one before it plus 1, the first x plus 1.
std::string Chain(int length, bool inOrderOfUse)
{
    std::string fields;
    for (int i = 1; i <= length; ++i) {
        const std::string from = i == 1 ? "x" : Numbered(i - 1);
        const std::string field =
            DerivedField(Numbered(i), Apply("+", FieldRef(from) + Constant("1")));
        fields = inOrderOfUse ? fields + field : field + fields;
    }
    return fields;
}

TEST(DerivedFields, ChainOfManyFieldsIsEvaluated)
{
    for (const bool inOrderOfUse : {true, false}) {
        Derivation d(Chain(400, inOrderOfUse));
        EXPECT_EQ(d.With("x", 0.0).Number("d400"), 400.0);
    }
}

// Whatever the order in which they stand: read one by one, they'd still be evaluated all the way
// down, and the stack has an end.
TEST(DerivedFields, ChainThatIsTooLongIsRefused)
{
    EXPECT_EQ(RefusedFor(Chain(5000, true)).code, kExpressionTooDeep);
    EXPECT_EQ(RefusedFor(Chain(5000, false)).code, kExpressionTooDeep);
}

TEST(DerivedFields, FunctionsThatNestTooDeepAreRefused)
{
    const auto nested = [](int depth) {
        std::string expression = FieldRef("x");
        for (int i = 0; i < depth; ++i) expression = Apply("+", expression + Constant("1"));
        return DerivedField("d", expression);
    };
    Derivation d(nested(200));
    EXPECT_EQ(d.With("x", 0.0).Number("d"), 200.0);
    EXPECT_EQ(RefusedFor(nested(2000)), (Refusal{kExpressionTooDeep, {"d"}}));
}

// 60 fields, each twice the one before it: 2^60 evaluations if each asked anew.
TEST(DerivedFields, FieldThatIsUsedTwiceIsComputedOnce)
{
    std::string fields;
    for (int i = 1; i <= 60; ++i) {
        const std::string from = FieldRef(i == 1 ? "x" : Numbered(i - 1));
        fields += DerivedField(Numbered(i), Apply("+", from + from));
    }
    Derivation d(fields);
    EXPECT_EQ(d.With("x", 1.0).Number("d60"), 1152921504606846976.0);  // 2^60
    EXPECT_EQ(d.With("x", 3.0).Number("d60"), 3458764513820540928.0);
    d.Derived()->SetUpDerivedCaseRecord();
    const auto* record = d.Derived()->GetValuesForDerivedVars(d.Record(), d.Dictionary());
    EXPECT_EQ(record->GetValue("d60")->GetDouble(), 3458764513820540928.0);
}

TEST(DerivedFields, TextGetsTheCategoriesItsExpressionYieldsAndAnEncoder)
{
    const Derivation d(TextField("d", FieldRef("c", "mapMissingTo='none'")) +
                       TextField("e", Constant("one", "dataType='string'")) +
                       TextField("f", FieldRef("k", "mapMissingTo='9'")) +
                       TextField("g", Constant("5", "dataType='integer'")));
    EXPECT_EQ(Categories(d.Var("d")), (Texts{"a", "b", "none"}));
    EXPECT_EQ(Categories(d.Var("e")), Texts{"one"});
    EXPECT_EQ(Categories(d.Var("f")), (Texts{"1", "2", "9"}));
    EXPECT_EQ(Categories(d.Var("g")), Texts{"5"});
    ASSERT_NE(d.Var("d").GetCatEncoder(), nullptr);
    EXPECT_EQ(d.Var("d").GetCatEncoder()->EncodeString("none"), 2);
    EXPECT_EQ(d.Var("f").GetCatEncoder()->EncodeValue(&d["f"]), 2);  // k is missing
}

// 2,000 categories in 600 fields: each field would hold its own copies.
TEST(DerivedFields, TextsOfAllFieldsTogetherAreLimited)
{
    std::string values;
    for (int i = 0; i < 2000; ++i) values += "<Value value='" + Numbered(i) + "'/>";
    std::string fields = TextField("many", values + Constant("", "missing='true'"));
    for (int i = 1; i <= 600; ++i) fields += TextField(Numbered(i), FieldRef("many"));
    EXPECT_EQ(RefusedFor(fields), (Refusal{kTooManyDerivedTexts, {"1000000", "d501"}}));
}

TEST(DerivedFields, TextOfAnOpenFieldStaysOpen)
{
    Derivation d(TextField("d", FieldRef("t")));
    EXPECT_TRUE(d.Var("d").HasOpenCategories());
    EXPECT_EQ(d.With("t", "whatever")["d"].GetString(), "whatever");
}

TEST(DerivedFields, DeclaredValuesGoBeforeThoseOfTheExpression)
{
    Derivation d(TextField("d", "<Value value='b'/>" + FieldRef("c")));
    EXPECT_EQ(Categories(d.Var("d")), Texts{"b"});
    EXPECT_FALSE(d.Var("d").Accepts(&d.With("c", "a")["d"]));
    EXPECT_TRUE(d.Var("d").Accepts(&d.With("c", "b")["d"]));
}

TEST(DerivedFields, NumberAsTextIsItsShortestSpelling)
{
    Derivation d(TextField("d", FieldRef("x")));
    EXPECT_EQ(d.With("x", 2.0)["d"].GetString(), "2");
    EXPECT_EQ(d.With("x", 0.1)["d"].GetString(), "0.1");
}

TEST(DerivedFields, ValueInTheRecordIsTakenAsComputed)
{
    Derivation d(DerivedField("d", Apply("+", FieldRef("e") + Constant("1"))) +
                 DerivedField("e", FieldRef("x")));
    CaseRecord record({"x", "e"});
    record.Own(0, std::make_unique<NumericValue>(10.0));
    record.Own(1, std::make_unique<NumericValue>(50.0));
    const ScoreValue* value = d.Var("d").GetTransformedValue(&record, d.Dictionary(), d.Derived());
    EXPECT_EQ(value->GetDouble(), 51.0);
}

TEST(DerivedFields, PositionsAreUsedWhereTheRecordHasThem)
{
    Derivation d(DerivedField("d", FieldRef("x")));
    CaseRecord record({"other", "names"});
    record.Own(1, std::make_unique<NumericValue>(6.0));
    d.Dictionary()->GetVar("x")->SetDictIndex(1);
    EXPECT_EQ(d.Var("d").GetTransformedValue(&record, d.Dictionary(), d.Derived())->GetDouble(),
              6.0);
}

TEST(DerivedFields, CloneComputesIntoAValueOfItsOwn)
{
    Derivation d(DerivedField("d", FieldRef("x")));
    const std::unique_ptr<ScoreDictVar> copy(d.Var("d").Clone());
    ASSERT_TRUE(copy->IsDerived());
    const ScoreValue& original = d.With("x", 1.0)["d"];
    d.With("x", 2.0);
    const auto& clone = static_cast<const TransformVar&>(*copy);
    EXPECT_EQ(clone.GetTransformedValue(d.Record(), d.Dictionary(), d.Derived())->GetDouble(), 2.0);
    EXPECT_EQ(original.GetDouble(), 1.0);
}

TEST(TransformationDictionary, RecordOfDerivedValuesIsReadByNameAlone)
{
    Derivation d(DerivedField("d", FieldRef("x")) + TextField("e", FieldRef("c")));
    EXPECT_EQ(d.Derived()->GetValuesForDerivedVars(d.Record(), d.Dictionary()), nullptr);
    d.Derived()->SetUpDerivedCaseRecord();
    d.With("x", 4.0).With("c", "b");
    const ScoreCaseRecord* record =
        d.Derived()->GetValuesForDerivedVars(d.Record(), d.Dictionary());
    ASSERT_NE(record, nullptr);
    EXPECT_FALSE(record->HasIndexedAccess());
    EXPECT_EQ(record->GetValue(0), nullptr);
    EXPECT_EQ(record->GetValue("d")->GetDouble(), 4.0);
    EXPECT_EQ(record->GetValue("e")->GetString(), "b");
    EXPECT_EQ(record->GetValue("x"), nullptr);
    d.With("x", 5.0);
    record = d.Derived()->GetValuesForDerivedVars(d.Record(), d.Dictionary());
    EXPECT_EQ(record->GetValue("d")->GetDouble(), 5.0);
}

// Fields that something else than a DerivedField declares, such as those of an Output section.
class GivenFields : public testing::Test {
protected:
    static Dom Parsed(const std::string& fields, const std::string& functions = "")
    {
        return Dom("<PMML><DataDictionary>" + std::string(kDataFields) +
                   "</DataDictionary><TransformationDictionary>" +
                   "<DefineFunction name='f'><Constant>1</Constant></DefineFunction>" +
                   "<DefineFunction name='g'><Constant>2</Constant></DefineFunction>" +
                   "</TransformationDictionary><Model><LocalTransformations>" + functions +
                   DerivedField("q", FieldRef("nosuch")) + "</LocalTransformations><Output>" +
                   fields + "</Output></Model></PMML>");
    }

    // Each child of Output has its name as tag, its type as attributes and its expression within.
    TransformationDictionary* Read(const Dom& dom)
    {
        dictionary_.reset(reader_.ParseDictionary(dom.First("DataDictionary"), true));
        std::vector<DerivedDeclaration> given;
        for (auto* child = dom.First("Output")->getFirstElementChild(); child != nullptr;
             child = child->getNextElementSibling()) {
            const auto text = [&](const char* attribute) {
                return Utf8FromXml(child->getAttribute(XmlFromUtf8(attribute).c_str()));
            };
            given.push_back({Utf8FromXml(child->getTagName()), text("optype"), text("dataType"),
                             child, child->getFirstElementChild()});
        }
        derived_.reset(reader_.ReadDerivedFields(given, dom.First("Model"), dictionary_.get()));
        return derived_.get();
    }

    static std::string Given(const std::string& name, const std::string& expression,
                             const std::string& type = "optype='continuous' dataType='double'")
    {
        return "<" + name + " " + type + ">" + expression + "</" + name + ">";
    }

    PmmlReader reader_;
    std::unique_ptr<ScoreDictionary> dictionary_;
    std::unique_ptr<TransformationDictionary> derived_;
};

TEST_F(GivenFields, NameEachOtherInAnyOrderAndTheFunctionsAround)
{
    const Dom dom = Parsed(Given("a", Apply("+", FieldRef("d") + Apply("f", ""))) +
                               Given("d", FieldRef("x")) + Given("e", Apply("g", "")) +
                               Given("h", FieldRef("c") + "<Value value='z'/>",
                                     "optype='categorical' dataType='string'"),
                           "<DefineFunction name='f'><Constant>10</Constant></DefineFunction>");
    ASSERT_NE(Read(dom), nullptr);
    CaseRecord record({"x"});
    record.Own(0, std::make_unique<NumericValue>(4.0));
    const auto var = [&](const char* name) -> const TransformVar& {
        return static_cast<const TransformVar&>(*derived_->GetVar(name));
    };
    const auto value = [&](const char* name) {
        return var(name)
            .GetTransformedValue(&record, dictionary_.get(), derived_.get())
            ->GetDouble();
    };
    EXPECT_EQ(value("d"), 4.0);
    EXPECT_EQ(value("a"), 14.0);  // the model's function goes before the document's
    EXPECT_EQ(value("e"), 2.0);
    // their own Value elements say nothing of the expression's outcome
    EXPECT_EQ(Categories(var("h")), (Texts{"a", "b"}));
    EXPECT_EQ(derived_->GetVar("q"), nullptr);
}

TEST_F(GivenFields, NoneAreNoDictionary) { EXPECT_EQ(Read(Parsed("")), nullptr); }

TEST_F(GivenFields, ARefusalStandsAtTheElementThatIsToBlame)
{
    struct Fault {
        const char* what;
        std::string fields;
        int code;
        const char* element;
    };
    const Fault faults[] = {
        {"the name of a data field", Given("x", FieldRef("y")), kDuplicateField, "x"},
        {"a name twice", Given("a", FieldRef("y")) + Given("a", FieldRef("y")), kDuplicateField,
         "a"},
        {"an unknown type", Given("a", FieldRef("x"), "optype='continuous' dataType='number'"),
         kUnknownDataType, "a"},
        {"a cycle", Given("a", FieldRef("d")) + Given("d", FieldRef("a")), kDerivedFieldCycle, "a"},
        {"a field that nothing declares", Given("a", FieldRef("nosuch")), kUnknownFieldReference,
         "FieldRef"},
        {"what is no expression", Given("a", "<Lag field='x'/>"), kExpressionNotSupported, "Lag"},
    };
    for (const Fault& fault : faults) {
        const Dom dom = Parsed(fault.fields);
        EXPECT_EQ(RefusalOf([&] { Read(dom); }).code, fault.code) << fault.what;
        ASSERT_NE(reader_.CurrentElement(), nullptr) << fault.what;
        EXPECT_EQ(Utf8FromXml(reader_.CurrentElement()->getTagName()), fault.element) << fault.what;
    }
}

}  // namespace
}  // namespace MCVelscore_850
