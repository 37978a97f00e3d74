#include "engine/casepreparer.h"

#include <gtest/gtest.h>

#include "engine/failure.h"
#include "host/expression.h"
#include "host/mcstatus.h"
#include "host/messages.h"
#include "host/numericvalue.h"
#include "host/transformvar.h"
#include "host/varstats.h"
#include "tests/engine/fakemodel.h"

namespace MCVelscore_850 {
namespace {

using Row = std::vector<std::string_view>;

// A preparer over a fake model, with a row at a time.
class CasePreparerTest : public testing::Test {
protected:
    CasePreparer& Bind(const std::vector<std::string>& header, CaseOptions options = {})
    {
        preparer_ = std::make_unique<CasePreparer>(model_, model_.description, treatments_, header,
                                                   "cases.csv", std::move(options));
        return *preparer_;
    }
    CaseStatus Prepare(const Row& row) { return preparer_->Prepare(row); }
    const ScoreValue& Value(int position) const { return *preparer_->Record().GetValue(position); }
    double Number(int position) const { return Value(position).GetDouble(); }
    bool IsMissing(const DictVar& var, int position) const
    {
        return var.IsMissing(&Value(position));
    }

    FakeModel model_;
    std::vector<MiningFieldTreatment> treatments_;
    std::unique_ptr<CasePreparer> preparer_;
};

TEST_F(CasePreparerTest, ColumnsAreFoundByNameInAnyOrder)
{
    model_.AddNumber("x");
    model_.AddText("sex", {"f", "m"});
    Bind({"sex", "unused", "x"});
    ASSERT_TRUE(Prepare({"m", "text", "1.5"}).IsOK());
    EXPECT_EQ(Number(0), 1.5);
    EXPECT_EQ(Value(1).GetString(), "m");
    EXPECT_EQ(preparer_->Record().GetVarIndex("sex"), 1);
    EXPECT_TRUE(preparer_->Record().HasIndexedAccess());
}

TEST_F(CasePreparerTest, EveryMissingColumnIsNamedBesideThoseFound)
{
    model_.AddNumber("x");
    model_.AddNumber("y");
    model_.AddNumber("z");
    try {
        Bind({"y", "w"});
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), kMissingColumn);
        EXPECT_EQ(failure.Kind(), FailureKind::Cases);
        const std::string text = failure.what();
        EXPECT_NE(text.find("'x', 'z'"), std::string::npos) << text;
        EXPECT_NE(text.find("y, w"), std::string::npos) << text;
    }
}

TEST_F(CasePreparerTest, ColumnThatStandsTwiceIsRefusedOnlyWhenTheModelReadsIt)
{
    model_.AddNumber("x");
    EXPECT_NO_THROW(Bind({"x", "a", "a"}));
    EXPECT_THROW(Bind({"x", "x"}), Failure);
}

TEST_F(CasePreparerTest, EmptyFieldIsAMissingValueAndNeverNull)
{
    DictVar& x = model_.AddNumber("x");
    DictVar& sex = model_.AddText("sex", {"f", "m"});
    Bind({"x", "sex"});
    ASSERT_TRUE(Prepare({"1", "f"}).IsOK());
    ASSERT_TRUE(Prepare({"", ""}).IsOK());
    EXPECT_TRUE(IsMissing(x, 0));
    EXPECT_TRUE(IsMissing(sex, 1));
    ASSERT_TRUE(Prepare({"2", "m"}).IsOK());
    EXPECT_EQ(Number(0), 2.0);
    EXPECT_FALSE(IsMissing(sex, 1));
}

TEST_F(CasePreparerTest, NaIsMissingUnlessItIsADeclaredCategory)
{
    DictVar& x = model_.AddNumber("x");
    DictVar& sex = model_.AddText("sex", {"f", "m"});
    DictVar& region = model_.AddText("region", {"EU", "NA"});
    Bind({"x", "sex", "region"});
    ASSERT_TRUE(Prepare({"NA", "NA", "NA"}).IsOK());
    EXPECT_TRUE(IsMissing(x, 0));
    EXPECT_TRUE(IsMissing(sex, 1));
    EXPECT_FALSE(IsMissing(region, 2));
    EXPECT_EQ(Value(2).GetString(), "NA");
}

TEST_F(CasePreparerTest, AWordThatTheDocumentCallsMissingIsNoFaultInAFieldOfNumbers)
{
    DictVar& x = model_.AddNumber("x");
    model_.AddNumber("y");
    x.DeclareMissingWord(".");
    Bind({"x", "y"});
    ASSERT_TRUE(Prepare({".", "1"}).IsOK());
    EXPECT_TRUE(IsMissing(x, 0));
    EXPECT_EQ(Prepare({"1", "."}).code, kCaseTextNotANumber);  // it is x's word alone
    EXPECT_EQ(Prepare({"..", "1"}).code, kCaseTextNotANumber);
}

TEST_F(CasePreparerTest, GivenTextsAreMissingInEveryColumn)
{
    DictVar& x = model_.AddNumber("x");
    DictVar& sex = model_.AddText("sex", {"f", "?"});
    Bind({"x", "sex"}, {.missingTexts = {"-99", "?"}});
    ASSERT_TRUE(Prepare({"-99", "?"}).IsOK());
    EXPECT_TRUE(IsMissing(x, 0));
    EXPECT_TRUE(IsMissing(sex, 1));
}

TEST_F(CasePreparerTest, TextInANumericFieldRefusesTheRowAndNamesTheField)
{
    model_.AddNumber("x");
    model_.AddNumber("y");
    Bind({"x", "y"});
    for (const char* text : {"abc", "1,5", "nan", "inf", "0x10", "1e999", " ", "1 2"}) {
        const CaseStatus status = Prepare({"1", text});
        EXPECT_EQ(status.code, kCaseTextNotANumber) << text;
        ASSERT_NE(status.field, nullptr);
        EXPECT_EQ(*status.field, "y");
        EXPECT_EQ(status.text, text);
    }
    EXPECT_TRUE(Prepare({"+1.5e1", " 2 "}).IsOK());
    EXPECT_EQ(Number(0), 15.0);
    EXPECT_EQ(Number(1), 2.0);
}

TEST_F(CasePreparerTest, DecimalCommaLeavesNoRoomForPoints)
{
    model_.AddNumber("x");
    Bind({"x"}, {.decimal = ','});
    ASSERT_TRUE(Prepare({"-1,25e2"}).IsOK());
    EXPECT_EQ(Number(0), -125.0);
    EXPECT_EQ(Prepare({"1.234"}).code, kCaseTextNotANumber);
    EXPECT_EQ(Prepare({"1,2,3"}).code, kCaseTextNotANumber);
}

TEST_F(CasePreparerTest, BooleansTakeTheDeclaredSpelling)
{
    DictVarType type = TextType("flag");
    type.boolean = true;
    DictVar& flag = model_.Add(type);
    for (const char* word : {"TRUE", "FALSE"}) {
        flag.DeclareValue(std::make_unique<StringValue>(word), word, DictVar::Property::Valid);
    }
    Bind({"flag"});
    ASSERT_TRUE(Prepare({"1"}).IsOK());
    EXPECT_EQ(Value(0).GetString(), "TRUE");
    ASSERT_TRUE(Prepare({"false"}).IsOK());
    EXPECT_EQ(Value(0).GetString(), "FALSE");
}

TEST_F(CasePreparerTest, DatesAreReadAndOtherTextIsRefused)
{
    DictVarType type = TypeOf("day", ScoreDictVar::CONTINUOUS, ScoreDictVar::DATETIME);
    type.dateTimeType = ScoreDictVar::DATE;
    model_.Add(type);
    Bind({"day"});
    ASSERT_TRUE(Prepare({"1970-01-11"}).IsOK());
    EXPECT_EQ(Value(0).GetValueType(), ScoreValue::DATETIME);
    EXPECT_EQ(Number(0), 10.0);  // days since 1970-01-01
    EXPECT_EQ(Prepare({"yesterday"}).code, kCaseTextNotADateTime);
}

TEST_F(CasePreparerTest, OutliersAsExtremesTakeTheLimits)
{
    DictVar& x = model_.AddNumber("x");
    auto stats = std::make_unique<VarStats>();
    stats->SetMinimum(20.0);
    stats->SetMaximum(80.0);
    x.SetVarStats(stats.release());
    x.SetOutlierTreatment(ScoreDictVar::AS_EXTREME);
    Bind({"x"});
    const std::pair<const char*, double> kRows[] = {{"10", 20}, {"20", 20}, {"50", 50}, {"99", 80}};
    for (const auto& [text, taken] : kRows) {
        ASSERT_TRUE(Prepare({text}).IsOK());
        EXPECT_EQ(Number(0), taken) << text;
    }
    ASSERT_TRUE(Prepare({""}).IsOK());
    EXPECT_TRUE(IsMissing(x, 0));
}

TEST_F(CasePreparerTest, MissingCategoryIsReplacedOnlyUnderSubstitution)
{
    DictVar& sex = model_.AddText("sex", {"f", "m"});
    treatments_ = {{.name = "sex", .missingValueReplacement = "m"}};
    // As a model does that has no replacement for its numbers.
    model_.SetMissingValuePolicy(ScoreModel::MV_SYSMIS_RESULT);
    Bind({"sex"});
    ASSERT_TRUE(Prepare({""}).IsOK());
    EXPECT_EQ(Value(0).GetString(), "m");
    ASSERT_TRUE(Prepare({"f"}).IsOK());
    EXPECT_EQ(Value(0).GetString(), "f");
    Bind({"sex"}, {.substitutes = false});
    ASSERT_TRUE(Prepare({""}).IsOK());
    EXPECT_TRUE(IsMissing(sex, 0));
}

TEST_F(CasePreparerTest, MissingNumberOfAContinuousFieldIsLeftToTheModel)
{
    DictVar& x = model_.AddNumber("x");
    treatments_ = {{.name = "x", .missingValueReplacement = "5"}};
    Bind({"x"});
    ASSERT_TRUE(Prepare({""}).IsOK());
    EXPECT_TRUE(IsMissing(x, 0));
}

TEST_F(CasePreparerTest, InvalidValuesAreTreatedAsTheSchemaSays)
{
    struct Case {
        const char* treatment;
        long code;
        const char* value;  // null: missing
    };
    const Case kCases[] = {{"", 0, "x"},
                           {"asIs", 0, "x"},
                           {"asMissing", 0, nullptr},
                           {"asValue", 0, "f"},
                           {"returnInvalid", kCaseInvalidValue, nullptr}};
    DictVar& sex = model_.AddText("sex", {"f", "m"});
    for (const Case& expected : kCases) {
        SCOPED_TRACE(expected.treatment);
        treatments_ = {{.name = "sex",
                        .invalidValueTreatment = expected.treatment,
                        .invalidValueReplacement = "f"}};
        Bind({"sex"});
        const CaseStatus status = Prepare({"x"});
        EXPECT_EQ(status.code, expected.code);
        if (status.code != 0) {
            EXPECT_EQ(*status.field, "sex");
            EXPECT_EQ(status.text, "x");
        } else if (expected.value == nullptr) {
            EXPECT_TRUE(IsMissing(sex, 0));
        } else {
            EXPECT_EQ(Value(0).GetString(), expected.value);
        }
        EXPECT_TRUE(Prepare({"m"}).IsOK());
        EXPECT_EQ(Value(0).GetString(), "m");
    }
}

TEST_F(CasePreparerTest, InvalidValueAsMissingThenTakesTheReplacement)
{
    model_.AddText("sex", {"f", "m"});
    treatments_ = {
        {.name = "sex", .invalidValueTreatment = "asMissing", .missingValueReplacement = "f"}};
    Bind({"sex"});
    ASSERT_TRUE(Prepare({"x"}).IsOK());
    EXPECT_EQ(Value(0).GetString(), "f");
}

TEST_F(CasePreparerTest, MissingValueCanRefuseTheRow)
{
    model_.AddNumber("x");
    treatments_ = {{.name = "x", .missingValueTreatment = "returnInvalid"}};
    Bind({"x"});
    const CaseStatus status = Prepare({""});
    EXPECT_EQ(status.code, MCScore::kCaseNotScorable);
    EXPECT_EQ(*status.field, "x");
    EXPECT_TRUE(Prepare({"1"}).IsOK());
}

TEST_F(CasePreparerTest, UnlistedValuesAreCountedWithTheFirstThreeDifferentOnes)
{
    model_.AddText("sex", {"f", "m"}).SetAcceptsUnlisted(true);
    model_.AddText("closed", {"a"});
    Bind({"sex", "closed"});
    EXPECT_TRUE(preparer_->Unlisted().empty());
    for (const char* text : {"f", "femal", "", "femal", "mael", "M", "F", "NA"}) {
        ASSERT_TRUE(Prepare({text, "b"}).IsOK());
    }
    const std::vector<UnlistedValues> unlisted = preparer_->Unlisted();
    ASSERT_EQ(unlisted.size(), 1u);
    EXPECT_EQ(unlisted[0].column, "sex");
    EXPECT_EQ(unlisted[0].count, 5);
    EXPECT_EQ(unlisted[0].first, (std::vector<std::string>{"femal", "mael", "M"}));
}

TEST_F(CasePreparerTest, TheFirstUnlistedValueMayBeTheReferenceThatAListLacks)
{
    model_.AddText("sex", {"f"}).SetAcceptsUnlisted(true);
    Bind({"sex"}, {.withoutReference = {"sex"}});
    for (const char* text : {"m", "f", "m", "", "m"}) ASSERT_TRUE(Prepare({text}).IsOK());
    EXPECT_TRUE(preparer_->Unlisted().empty());
    for (const char* text : {"mael", "m", "mael"}) ASSERT_TRUE(Prepare({text}).IsOK());
    const std::vector<UnlistedValues> unlisted = preparer_->Unlisted();
    ASSERT_EQ(unlisted.size(), 1u);
    EXPECT_EQ(unlisted[0].count, 2);
    EXPECT_EQ(unlisted[0].first, (std::vector<std::string>{"m", "mael"}));
    EXPECT_TRUE(unlisted[0].oneMayBeReference);
}

// Twice a variable, read from the record as any expression does.
class Twice final : public Expression {
public:
    explicit Twice(const ScoreDictVar& var) : var_(var) {}
    void Evaluate(const ExpressionCase& c, ExpressionValue& value) const override
    {
        const ScoreValue* input = c.record->GetValue(var_.GetName());
        if (var_.IsMissing(input)) {
            value.SetMissing();
        } else {
            value.SetNumber(2.0 * input->GetDouble());
        }
    }
    void CollectInputs(std::vector<const ScoreDictVar*>& inputs) const override
    {
        inputs.push_back(&var_);
    }
    int Height() const override
    {
        if (!var_.IsDerived()) return 1;
        return 1 + static_cast<const TransformVar&>(var_).GetExpression().Height();
    }

private:
    const ScoreDictVar& var_;
};

// The model reads "fourfold" alone, which is twice "twofold", which is twice the column x; the
// table has neither of the derived ones.
TEST_F(CasePreparerTest, DerivedValuesStandInTheRecordInTheOrderOfTheirInputs)
{
    DictVar& x = model_.AddNumber("x");
    auto transformations = std::make_unique<TransformationDictionary>();
    auto twofold =
        std::make_unique<TransformVar>(NumberType("twofold"), std::make_shared<Twice>(x));
    auto fourfold =
        std::make_unique<TransformVar>(NumberType("fourfold"), std::make_shared<Twice>(*twofold));
    const TransformVar& derived = *fourfold;
    transformations->AddVar("fourfold", fourfold.release());
    transformations->AddVar("twofold", twofold.release());
    model_.SetTransformationScoreDictionary(transformations.release());
    model_.description.variables = {"fourfold"};
    Bind({"x"});
    const int position = preparer_->Record().GetVarIndex("fourfold");
    ASSERT_GE(position, 0);
    ASSERT_TRUE(Prepare({"1.5"}).IsOK());
    EXPECT_EQ(Number(position), 6.0);
    ASSERT_TRUE(Prepare({""}).IsOK());
    EXPECT_TRUE(derived.IsMissing(&Value(position)));
    ASSERT_TRUE(Prepare({"2"}).IsOK());
    EXPECT_EQ(Number(position), 8.0);
}

// A model under substitution writes its replacement into the record's own object.
TEST_F(CasePreparerTest, WhatTheModelWroteIntoTheRecordIsGoneInTheNextRow)
{
    model_.AddNumber("x");
    Bind({"x"});
    ASSERT_TRUE(Prepare({""}).IsOK());
    static_cast<NumericValue*>(preparer_->Record().GetValue(0))->SetDoubleValue(77.0);
    ASSERT_TRUE(Prepare({""}).IsOK());
    EXPECT_EQ(Number(0), NumericValue::GetSysmisValue());
}

}  // namespace
}  // namespace MCVelscore_850
