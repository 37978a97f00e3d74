#include "engine/scoring/casepreparer.h"

#include <gtest/gtest.h>

#include "engine/messages/failure.h"
#include "host/expressions/expression.h"
#include "host/expressions/transformvar.h"
#include "host/messages/messages.h"
#include "host/model/mcstatus.h"
#include "host/values/numericvalue.h"
#include "host/variables/varstats.h"
#include "tests/engine/fakemodel.h"
#include "tests/engine/onerow.h"
#include "tests/engine/unlistedcount.h"

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
    CaseStatus Prepare(const Row& row) { return preparer_->Prepare(OneRow(row), 0); }
    // Of all rows that were prepared: their texts are literals.
    std::vector<UnlistedValues> Unlisted()
    {
        UnlistedCount count(preparer_->Fields());
        count.Add(preparer_->Unlisted());
        return count.Met();
    }
    const ScoreValue& Value(int position) const { return *preparer_->Record().GetValue(position); }
    static void SetLimits(DictVar& var, double low, double high, int treatment)
    {
        auto stats = std::make_unique<VarStats>();
        stats->SetMinimum(low);
        stats->SetMaximum(high);
        var.SetVarStats(stats.release());
        var.SetOutlierTreatment(treatment);
    }
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

TEST_F(CasePreparerTest, AColumnForWhatIsNoInputIsRefused)
{
    model_.AddNumber("age");
    model_.AddNumber("size");
    try {
        Bind({"age", "size"}, {.columnOf = {{"agee", "size"}}});
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Code(), kUnknownMappedName);
        EXPECT_EQ(failure.Kind(), FailureKind::Usage);
        EXPECT_EQ(failure.Arguments(), (std::vector<std::string>{"agee", "age, size"}));
    }
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
    SetLimits(x, 20.0, 80.0, ScoreDictVar::AS_EXTREME);
    Bind({"x"});
    const std::pair<const char*, double> kRows[] = {{"10", 20}, {"20", 20}, {"50", 50}, {"99", 80}};
    for (const auto& [text, taken] : kRows) {
        ASSERT_TRUE(Prepare({text}).IsOK());
        EXPECT_EQ(Number(0), taken) << text;
    }
    ASSERT_TRUE(Prepare({""}).IsOK());
    EXPECT_TRUE(IsMissing(x, 0));
}

TEST_F(CasePreparerTest, MissingValueIsNoOutlierHoweverFarBeyondTheLimits)
{
    DictVar& x = model_.AddNumber("x");
    SetLimits(x, 0.0, 80.0, ScoreDictVar::AS_EXTREME);
    x.DeclareValue(std::make_unique<NumericValue>(-999.0), "-999", DictVar::Property::Missing);
    Bind({"x"});
    ASSERT_TRUE(Prepare({"-999"}).IsOK());
    EXPECT_TRUE(IsMissing(x, 0));
    ASSERT_TRUE(Prepare({"-998"}).IsOK());
    EXPECT_EQ(Number(0), 0.0);
}

TEST_F(CasePreparerTest, LimitsOfDatesCountFromTheTypesOwnOrigin)
{
    DictVarType type = TypeOf("day", ScoreDictVar::CONTINUOUS, ScoreDictVar::DATETIME);
    type.dateTimeType = ScoreDictVar::DATE_DAYS_SINCE_1980;
    DictVar& day = model_.Add(type);
    SetLimits(day, 100.0, 200.0, ScoreDictVar::AS_EXTREME);
    Bind({"day"});
    constexpr double kOrigin = 3652.0;  // days from 1970 to 1980, with two leap years
    const std::pair<const char*, double> kRows[] = {
        {"99", 100}, {"100", 100}, {"150", 150}, {"201", 200}, {"1980-01-01", 100}};
    for (const auto& [text, taken] : kRows) {
        ASSERT_TRUE(Prepare({text}).IsOK());
        EXPECT_EQ(Number(0), kOrigin + taken) << text;
    }
    ASSERT_TRUE(Prepare({""}).IsOK());
    EXPECT_TRUE(IsMissing(day, 0));
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

TEST_F(CasePreparerTest, ReplacementThatIsNoCategoryIsTakenAllTheSame)
{
    DictVar& sex = model_.AddText("sex", {"f", "m"});
    treatments_ = {{.name = "sex",
                    .invalidValueTreatment = "asValue",
                    .invalidValueReplacement = "__unknown",
                    .missingValueReplacement = "N/A"}};
    Bind({"sex"});
    const std::pair<const char*, const char*> kRows[] = {
        {"", "N/A"}, {"x", "__unknown"}, {"m", "m"}};
    for (const auto& [text, taken] : kRows) {
        ASSERT_TRUE(Prepare({text}).IsOK());
        EXPECT_EQ(Value(0).GetString(), taken);
        EXPECT_TRUE(sex.Accepts(&Value(0))) << taken;
    }
    // In another row, where nothing put it in, the same text is not valid.
    treatments_ = {{.name = "sex", .missingValueReplacement = "N/A"}};
    Bind({"sex"});
    ASSERT_TRUE(Prepare({""}).IsOK());
    ASSERT_TRUE(Prepare({"N/A"}).IsOK());
    EXPECT_FALSE(sex.Accepts(&Value(0)));
}

// A contrast matrix has a row for each category: one beside them has no place in it.
TEST_F(CasePreparerTest, ReplacementThatIsNoCategoryOfContrastsIsLeftToTheVariable)
{
    DictVar& sex = model_.AddText("sex", {"f", "m"});
    model_.description.factors = {"sex"};
    model_.description.contrasts = {{.predictor = "sex", .categories = {"f", "m"}, .rows = {}}};
    treatments_ = {{.name = "sex", .missingValueReplacement = "N/A"}};
    Bind({"sex"});
    ASSERT_TRUE(Prepare({""}).IsOK());
    EXPECT_FALSE(sex.Accepts(&Value(0)));
}

// A text has no place in a field of numbers; it is none of a factor's categories all the same.
TEST_F(CasePreparerTest, ReplacementThatIsNoNumberEqualsNoCategory)
{
    DictVar& code = model_.Add(TypeOf("code", ScoreDictVar::CATEGORICAL, ScoreDictVar::NUMERIC));
    code.DeclareValue(std::make_unique<NumericValue>(1.0), "1", DictVar::Property::Valid);
    model_.description.factors = {"code"};
    for (const char* text : {"N/A", "-1"}) {
        treatments_ = {{.name = "code", .missingValueReplacement = text}};
        Bind({"code"});
        ASSERT_TRUE(Prepare({""}).IsOK());
        EXPECT_TRUE(code.Accepts(&Value(0))) << text;
        EXPECT_FALSE(NumericValue(1.0).Equals(&Value(0))) << text;
    }
}

TEST_F(CasePreparerTest, InvalidValueAsIsIsTakenWhereTheModelDoesNotReadItAsAFactor)
{
    DictVar& derivedOnly = model_.AddText("t", {"a", "b"});
    DictVar& factor = model_.AddText("f", {"a", "b"});
    DictVarType whole = NumberType("n");
    whole.dataType = "integer";
    DictVar& number = model_.Add(whole);
    model_.description.factors = {"f"};
    for (const char* name : {"t", "f", "n"}) {
        treatments_.push_back({.name = name, .invalidValueTreatment = "asIs"});
    }
    Bind({"t", "f", "n"});
    ASSERT_TRUE(Prepare({"c", "c", "1.5"}).IsOK());
    EXPECT_TRUE(derivedOnly.Accepts(&Value(0)));
    EXPECT_FALSE(factor.Accepts(&Value(1)));
    EXPECT_TRUE(number.Accepts(&Value(2)));
    EXPECT_EQ(Value(0).GetString(), "c");
    EXPECT_EQ(Number(2), 1.5);
    ASSERT_TRUE(Prepare({"", "a", ""}).IsOK());  // nothing of it stays
    EXPECT_TRUE(IsMissing(derivedOnly, 0));
    EXPECT_TRUE(IsMissing(number, 2));
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
    EXPECT_TRUE(Unlisted().empty());
    for (const char* text : {"f", "femal", "", "femal", "mael", "M", "F", "NA"}) {
        ASSERT_TRUE(Prepare({text, "b"}).IsOK());
    }
    const std::vector<UnlistedValues> unlisted = Unlisted();
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
    EXPECT_TRUE(Unlisted().empty());
    for (const char* text : {"mael", "m", "mael"}) ASSERT_TRUE(Prepare({text}).IsOK());
    const std::vector<UnlistedValues> unlisted = Unlisted();
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

// The model reads "twofold", and x as well where `reads` says so.
class ReplacementsOfDerivedTest : public CasePreparerTest {
protected:
    ReplacementsOfDerivedTest() : x_(model_.AddNumber("x"))
    {
        auto transformations = std::make_unique<TransformationDictionary>();
        auto twofold =
            std::make_unique<TransformVar>(NumberType("twofold"), std::make_shared<Twice>(x_));
        transformations->AddVar("twofold", twofold.release());
        model_.SetTransformationScoreDictionary(transformations.release());
    }
    double Twofold() const { return Number(preparer_->Record().GetVarIndex("twofold")); }

    DictVar& x_;
};

TEST_F(ReplacementsOfDerivedTest, ReplacementOfANumberReachesThem)
{
    x_.DeclareInterval({-10.0, 50.0, true, true});
    SetLimits(x_, 0.0, 20.0, ScoreDictVar::AS_MISSING);
    // Beyond the limits itself: what is put in isn't judged again.
    treatments_ = {
        {.name = "x", .invalidValueTreatment = "asMissing", .missingValueReplacement = "-3"}};
    model_.description.covariates = {"x", "twofold"};
    for (const bool alsoReadByTheModel : {false, true}) {
        model_.description.variables = {"twofold"};
        if (alsoReadByTheModel) model_.description.variables.push_back("x");
        Bind({"x"});
        // missing; invalid; an outlier
        for (const char* text : {"", "99", "30"}) {
            ASSERT_TRUE(Prepare({text}).IsOK());
            EXPECT_EQ(Twofold(), -6.0) << text;
        }
        ASSERT_TRUE(Prepare({"4"}).IsOK());
        EXPECT_EQ(Twofold(), 8.0);
        ASSERT_TRUE(Prepare({"-3"}).IsOK());  // an outlier, as the table has it
        EXPECT_EQ(Twofold(), -6.0);
        Bind({"x"}, {.substitutes = false});
        ASSERT_TRUE(Prepare({""}).IsOK());
        EXPECT_EQ(Twofold(), NumericValue::GetSysmisValue());
        ASSERT_TRUE(Prepare({"-3"}).IsOK());
        EXPECT_EQ(Twofold(), NumericValue::GetSysmisValue());
    }
}

// A missing value that the model reads itself and doesn't replace refuses the row, as ever.
TEST_F(ReplacementsOfDerivedTest, FieldThatTheModelReadsAndDoesNotReplaceStaysMissing)
{
    treatments_ = {{.name = "x", .missingValueReplacement = "5"}};
    struct Case {
        const char* what;
        std::vector<std::string> covariates;
        std::vector<std::string> variables;
        ScoreModel::MVPolicy policy;
    };
    const Case cases[] = {
        {"a time", {"twofold"}, {"twofold", "x"}, ScoreModel::MV_SUBSTITUTE},
        {"an offset too", {"twofold", "x"}, {"twofold", "x", "x"}, ScoreModel::MV_SUBSTITUTE},
        {"no substitution", {"twofold", "x"}, {"twofold", "x"}, ScoreModel::MV_SYSMIS_RESULT},
    };
    for (const Case& tried : cases) {
        SCOPED_TRACE(tried.what);
        model_.description.covariates = tried.covariates;
        model_.description.variables = tried.variables;
        model_.SetMissingValuePolicy(tried.policy);
        Bind({"x"});
        ASSERT_TRUE(Prepare({""}).IsOK());
        EXPECT_TRUE(IsMissing(x_, 0));
    }
}

TEST_F(ReplacementsOfDerivedTest, ReplacementOfADateCountsFromTheTypesOwnOrigin)
{
    DictVarType type = TypeOf("day", ScoreDictVar::CONTINUOUS, ScoreDictVar::DATETIME);
    // From 1960 to 1970 there are 3653 days, three of them leap days.
    const std::pair<ScoreDictVar::DateTimeType, double> kTypes[] = {
        {ScoreDictVar::DATE, 10.0}, {ScoreDictVar::DATE_DAYS_SINCE_1960, 10.0 - 3653.0}};
    for (const auto& [dateTimeType, plain] : kTypes) {
        FakeModel model;
        type.dateTimeType = dateTimeType;
        model.Add(type);
        model.description.variables.clear();
        CasePreparer preparer(model, model.description,
                              {{.name = "day", .missingValueReplacement = "10"}},
                              std::vector<std::string>{"day"}, "cases.csv", {.alsoRead = {"day"}});
        ASSERT_TRUE(preparer.Prepare(OneRow(Row{""}), 0).IsOK());
        EXPECT_EQ(preparer.Record().GetValue(0)->GetDouble(), plain) << dateTimeType;
    }
}

TEST_F(CasePreparerTest, ANumberAfterAReplacedOneIsNotTakenAsItIs)
{
    model_.AddNumber("x");
    model_.description.variables.clear();
    treatments_ = {{.name = "x", .missingValueReplacement = "10"}};
    Bind({"x"}, {.alsoRead = {"x"}});
    ASSERT_TRUE(Prepare({""}).IsOK());
    EXPECT_TRUE(Value(0).IsTakenAsIs());
    ASSERT_TRUE(Prepare({"2"}).IsOK());
    EXPECT_FALSE(Value(0).IsTakenAsIs());
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
