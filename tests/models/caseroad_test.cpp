#include "models/caseroad.h"

#include <gtest/gtest.h>

#include "host/messages/scoringlog.h"
#include "models/clrresult.h"
#include "models/lrresult.h"
#include "models/mlrresult.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

// A family whose row of differences the test chooses. Its prediction is the sum of its values.
template <class Result, int type, bool numbers>
class AnyFamily : public BareFamily {
public:
    CaseRoad road{.tracesNullRecord = false,
                  .fetchesDerivedRecord = true,
                  .failsUnderStatusOnly = true,
                  .namesBadPredictor = true,
                  .clearsNumbers = false,
                  .missingPrediction = MissingPrediction::Number};
    mutable double sum = 0.0;
    mutable bool reachedResult = false;

    MCScore::MCStatus ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                ScoreResult*& result, bool derivedInRecord) const override
    {
        reachedResult = false;
        CaseWalk walk(*this, state, road, record, derivedInRecord);
        if (!walk.Start()) return walk.Status();
        walk.PrepareResult<Result>(result, type);
        walk.FetchDerived();
        sum = 0.0;
        if constexpr (numbers) {
            walk.GatherNumbers(
                [&](size_t i, const ScoreDictVar* var) { return walk.FindValue(i, var); });
            for (const double x : state.numbers) sum += x;
        } else {
            walk.GatherValues(predictorVars.size());
            if (walk.Status().IsOK() && !walk.HasEveryValue(predictorVars.size())) {
                return walk.Status();
            }
            for (size_t i = 0; walk.Status().IsOK() && i < state.valueRefs.size(); ++i) {
                sum += NumericReading(*state.valueRefs[i], *predictorVars[i]);
            }
        }
        if (!walk.Status().IsOK()) return walk.Status();
        reachedResult = true;
        walk.WritePrediction(sum);
        return walk.Status();
    }
    bool Setup() override
    {
        categoryMap.emplace("only", 0);
        const bool resolved = ResolvePredictors();
        paramTable = std::make_unique<ParamTable>(this);
        ppcMatrix = std::make_unique<PPCMatrix>(this);
        return resolved;
    }
    /// Takes another variable for a predictor.
    void Replace(size_t predictor, const ScoreDictVar* var) { predictorVars[predictor] = var; }
    using RegressionModel::ownState;
};

using ValueFamily = AnyFamily<LRResult, ScoreResult::LR_RESULT, false>;
using NumberFamily = AnyFamily<LRResult, ScoreResult::LR_RESULT, true>;

template <class Family>
class EveryFamily : public ::testing::Test {
protected:
    void Build()
    {
        built.Covariate("a");
        built.Covariate("b");
        built.SetUp();
        built.model.FinishSetup();
    }
    MCScore::MCStatus Score(Given a, Given b, bool indexed = true)
    {
        Case c(indexed);
        c.With("a", std::move(a)).With("b", std::move(b));
        last = std::make_unique<Case>(std::move(c));
        return built.model.GetScore(&last->Record(), slot.result, true);
    }
    Built<Family> built;
    Slot slot;
    std::unique_ptr<Case> last;
};
using BothFamilies = ::testing::Types<ValueFamily, NumberFamily>;
TYPED_TEST_SUITE(EveryFamily, BothFamilies);

TYPED_TEST(EveryFamily, NullRecordFailsAndMakesNoResult)
{
    this->Build();
    const auto status = this->built.model.GetScore(nullptr, this->slot.result, true);
    EXPECT_EQ(status.GetErrorCode(), 90029);
    EXPECT_EQ(this->slot.result, nullptr);
}

TYPED_TEST(EveryFamily, NullRecordIsTracedWhereTheFamilyDoes)
{
    this->Build();
    std::vector<std::string> lines;
    ScoringLog* log = ScoringLog::GetInstance();
    log->SetSink([&](int, std::string_view line) { lines.emplace_back(line); });
    log->SetLevel(1);
    this->built.model.GetScore(nullptr, this->slot.result, true);
    EXPECT_TRUE(lines.empty());
    this->built.model.road.tracesNullRecord = true;
    this->built.model.GetScore(nullptr, this->slot.result, true);
    log->SetLevel(0);
    log->SetSink(nullptr);
    EXPECT_EQ(lines, std::vector<std::string>{"MCStatus error code is :90029"});
}

TYPED_TEST(EveryFamily, TheVariableThatACaseFailedForIsRememberedUntilTheNext)
{
    this->Build();
    const auto failed = [&] { return this->built.model.GetFailedVar(); };
    const auto var = [&](const char* name) {
        return this->built.model.GetDictionary()->GetVar(name);
    };
    for (const bool names : {true, false}) {  // the status may name it or not
        this->built.model.road.namesBadPredictor = names;
        EXPECT_FALSE(this->Score(kSysmis, 2).IsOK());
        EXPECT_EQ(failed(), var("a"));
        EXPECT_FALSE(this->Score(kSysmis, kSysmis).IsOK());
        EXPECT_EQ(failed(), var("b"));  // the last one
        EXPECT_TRUE(this->Score(1, 2).IsOK());
        EXPECT_EQ(failed(), nullptr);
    }
    EXPECT_FALSE(this->Score(kSysmis, 2).IsOK());
    this->built.model.GetScore(nullptr, this->slot.result, true);
    EXPECT_EQ(failed(), nullptr);
}

TYPED_TEST(EveryFamily, ResultOfTheRightTypeIsReusedWithItsPredictionObject)
{
    this->Build();
    ASSERT_TRUE(this->Score(1, 2).IsOK());
    ScoreResult* result = this->slot.result;
    const ScoreValue* prediction = result->GetPrediction();
    ASSERT_TRUE(this->Score(3, 4).IsOK());
    EXPECT_EQ(this->slot.result, result);
    EXPECT_EQ(result->GetPrediction(), prediction);
    EXPECT_EQ(this->slot.Number(), 7.0);
}

TYPED_TEST(EveryFamily, ResultOfAnotherTypeIsReplaced)
{
    this->Build();
    this->slot.result = new CLRResult(nullptr);
    ASSERT_TRUE(this->Score(1, 2).IsOK());
    EXPECT_EQ(this->slot.result->GetScoreResultType(), ScoreResult::LR_RESULT);
    EXPECT_EQ(this->slot.result->GetTarget(), this->built.model.GetTargetVar());
    EXPECT_EQ(this->slot.Number(), 3.0);
}

TYPED_TEST(EveryFamily, ReusedResultWithoutPredictionIsFilledAsAFreshOne)
{
    this->Build();
    this->built.model.SetMissingValuePolicy(ScoreModel::MV_STATUS_ONLY);
    EXPECT_FALSE(this->Score(1, nullptr).IsOK());
    ASSERT_EQ(this->slot.result->GetPrediction(), nullptr);
    EXPECT_TRUE(this->Score(1, 2).IsOK());
    EXPECT_EQ(this->slot.Number(), 3.0);
}

TYPED_TEST(EveryFamily, RecordWithoutIndexedAccessIsReadByNameAndBindsNothing)
{
    this->Build();
    EXPECT_TRUE(this->Score(1, 2, false).IsOK());
    EXPECT_EQ(this->slot.Number(), 3.0);
    EXPECT_FALSE(this->built.model.ownState.isBound);
    EXPECT_TRUE(this->Score(1, 2, true).IsOK());
    EXPECT_TRUE(this->built.model.ownState.isBound);
}

TYPED_TEST(EveryFamily, PositionThatHoldsNothingIsTriedByName)
{
    this->built.Covariate("a");
    this->built.SetUp();
    this->built.model.FinishSetup();
    TornRecord record("a", 2.0);
    ASSERT_TRUE(this->built.model.GetScore(&record, this->slot.result, true).IsOK());
    EXPECT_EQ(this->slot.Number(), 2.0);
}

TYPED_TEST(EveryFamily, FirstIndexedRecordBindsForGood)
{
    this->Build();
    Case first;
    first.With("a", 1).With("b", 2).With("c", 4);
    ASSERT_TRUE(this->built.model.GetScore(&first.Record(), this->slot.result, true).IsOK());
    EXPECT_EQ(this->slot.Number(), 3.0);
    // Later records are taken to be laid out as the first, whatever their names say.
    Case turned;
    turned.With("c", 4).With("b", 2).With("a", 1);
    ASSERT_TRUE(this->built.model.GetScore(&turned.Record(), this->slot.result, true).IsOK());
    EXPECT_EQ(this->slot.Number(), 6.0);
    EXPECT_EQ(this->built.Dictionary().GetVar("a")->GetDictIndex(), 0);
}

TYPED_TEST(EveryFamily, TwoBadPredictorsNameTheLater)
{
    this->Build();
    const auto status = this->Score(kSysmis, nullptr);
    EXPECT_EQ(status.GetErrorCode(), 90029);
    EXPECT_EQ(status.GetDiscreteDatum(), 1);
    EXPECT_EQ(this->slot.Number(), kSysmis);
    EXPECT_FALSE(this->built.model.reachedResult);
    this->built.model.road.namesBadPredictor = false;
    EXPECT_EQ(this->Score(kSysmis, nullptr).GetDiscreteDatum(), -1);
}

TYPED_TEST(EveryFamily, StatusOnlyPolicyKeepsThePreviousPrediction)
{
    this->Build();
    this->built.model.SetMissingValuePolicy(ScoreModel::MV_STATUS_ONLY);
    ASSERT_TRUE(this->Score(1, 2).IsOK());
    EXPECT_EQ(this->Score(1, kSysmis).GetErrorCode(), 90029);
    EXPECT_EQ(this->slot.Number(), 3.0);
}

TYPED_TEST(EveryFamily, SubstitutionScoresWithTheReplacement)
{
    Replace(this->built.Covariate("a"), 10.0);
    this->built.Covariate("b");
    this->built.SetUp();
    this->built.model.FinishSetup();
    EXPECT_TRUE(this->Score(kSysmis, 2).IsOK());
    EXPECT_EQ(this->slot.Number(), 12.0);
    EXPECT_TRUE(this->Score(nullptr, 2).IsOK());  // absent
    EXPECT_EQ(this->slot.Number(), 12.0);
    EXPECT_FALSE(this->Score(1, kSysmis).IsOK());  // b has no replacement
    EXPECT_EQ(this->slot.Number(), kSysmis);
}

TYPED_TEST(EveryFamily, ReplacementThatIsMissingItselfStandsInForNothing)
{
    Replace(this->built.Covariate("a"), kSysmis);
    this->built.Covariate("b");
    this->built.SetUp();
    this->built.model.FinishSetup();
    EXPECT_EQ(this->Score(kSysmis, 2).GetErrorCode(), 90029);
    EXPECT_EQ(this->slot.Number(), kSysmis);
    EXPECT_EQ(this->Score(nullptr, 2).GetErrorCode(), 90029);
}

TYPED_TEST(EveryFamily, RolesOfSetupSayWhatIsSubstituted)
{
    DictVar& a = this->built.Covariate("a");
    DictVar& b = this->built.Covariate("b");
    Replace(a, 10.0);
    Replace(b, 20.0);
    this->built.model.SetVarRole(&b, ScoreModel::ROLE_OFFSET);
    this->built.SetUp();
    // What is said later changes nothing.
    this->built.model.SetVarRole(&a, ScoreModel::ROLE_OFFSET);
    this->built.model.SetVarRole(&b, ScoreModel::ROLE_COVARIATE);
    this->built.model.FinishSetup();
    EXPECT_TRUE(this->Score(kSysmis, 2).IsOK());
    EXPECT_EQ(this->slot.Number(), 12.0);
    EXPECT_EQ(this->Score(1, kSysmis).GetErrorCode(), 90029);
}

TYPED_TEST(EveryFamily, UnknownPolicyLetsTheValueStand)
{
    this->Build();
    this->built.model.SetMissingValuePolicy(static_cast<ScoreModel::MVPolicy>(7));
    EXPECT_TRUE(this->Score(1, kSysmis).IsOK());
    EXPECT_EQ(this->slot.Number(), kSysmis);
}

TYPED_TEST(EveryFamily, WithoutValidationAMissingValueStands)
{
    this->Build();
    this->built.model.SetScoreCaseValidationCheck(false);
    EXPECT_TRUE(this->Score(1, kSysmis).IsOK());
    EXPECT_EQ(this->slot.Number(), kSysmis);
}

TYPED_TEST(EveryFamily, DerivedValueComesFromTheTransformationsUnlessTheRecordHoldsIt)
{
    this->built.DerivedCovariate("d", 5.0);
    this->built.SetUp();
    this->built.model.FinishSetup();
    Case c;
    c.With("d", 40);
    ASSERT_TRUE(this->built.model.GetScore(&c.Record(), this->slot.result, false).IsOK());
    EXPECT_EQ(this->slot.Number(), 5.0);
    this->built.model.ownState.isBound = false;
    ASSERT_TRUE(this->built.model.GetScore(&c.Record(), this->slot.result, true).IsOK());
    EXPECT_EQ(this->slot.Number(), 40.0);
    // A record that is said to hold it and doesn't: nothing is computed in its place.
    Case lacking;
    lacking.With("d", nullptr);
    EXPECT_EQ(this->built.model.GetScore(&lacking.Record(), this->slot.result, true).GetErrorCode(),
              90029);
}

TEST(ValueFamily, SubstitutionOverwritesTheRecordsOwnObject)
{
    Built<ValueFamily> built;
    Replace(built.Covariate("a"), 10.0);
    built.SetUp();
    built.model.FinishSetup();
    Case c;
    c.With("a", kSysmis);
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(c.Record().GetValue("a")->GetDouble(), 10.0);
}

TEST(ValueFamily, WithoutReplacementTheMeanStandsIn)
{
    Built<ValueFamily> built;
    DictVar& a = built.Covariate("a");
    auto stats = std::make_unique<VarStats>();
    stats->SetMean(3.0);
    a.SetVarStats(stats.release());
    Replace(built.Covariate("b"), 1.0);  // keeps the policy
    built.SetUp();
    built.model.FinishSetup();
    Case c;
    c.With("a", kSysmis).With("b", 1);
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 4.0);
}

TEST(ValueFamily, FieldWithoutReplacementAndMeanHasNothingThatStandsIn)
{
    Built<ValueFamily> built;
    built.Covariate("a").SetVarStats(new VarStats);
    Replace(built.Covariate("b"), 1.0);  // keeps the policy
    built.SetUp();
    built.model.FinishSetup();
    Case c;
    c.With("a", kSysmis).With("b", 1);
    Slot slot;
    EXPECT_EQ(built.model.GetScore(&c.Record(), slot.result, true).GetErrorCode(), 90029);
    EXPECT_EQ(slot.Number(), kSysmis);
}

TEST(ValueFamily, FactorIsNotSubstituted)
{
    Built<ValueFamily> built;
    Replace(built.Covariate("a"), 10.0);
    built.Factor("f", {"1", "2"}, ScoreDictVar::NUMERIC);
    Replace(*built.Dictionary().GetVar("f"), 2.0);
    built.SetUp();
    built.model.FinishSetup();
    Case c;
    c.With("a", 1).With("f", kSysmis);
    Slot slot;
    EXPECT_FALSE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
}

TEST(ValueFamily, ValueOfAnotherKindIsReplacedAndNotOverwritten)
{
    Built<ValueFamily> built;
    Replace(built.Covariate("a"), 10.0);
    built.SetUp();
    built.model.FinishSetup();
    Case c;
    c.With("a", "text");
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 10.0);
    EXPECT_EQ(c.Record().GetValue("a")->GetString(), "text");
}

TEST(NumberFamily, TextIsReadAsItsPosition)
{
    Built<NumberFamily> built;
    built.Factor("f", {"a", "b", "c"});
    built.SetUp();
    built.model.FinishSetup();
    Case c;
    c.With("f", "c");
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 2.0);
}

TEST(NumberFamily, AbsentValueWithoutValidationKeepsTheNumberOfTheCaseBeforeOrIsCleared)
{
    for (const bool clears : {false, true}) {
        Built<NumberFamily> built;
        built.model.road.clearsNumbers = clears;
        built.Covariate("a");
        built.SetUp();
        built.model.FinishSetup();
        built.model.SetScoreCaseValidationCheck(false);
        Slot slot;
        Case there;
        Case absent;
        there.With("a", 7);
        absent.With("a", nullptr);
        ASSERT_TRUE(built.model.GetScore(&there.Record(), slot.result, true).IsOK());
        ASSERT_TRUE(built.model.GetScore(&absent.Record(), slot.result, true).IsOK());
        EXPECT_EQ(slot.Number(), clears ? 0.0 : 7.0);
    }
}

TEST(NumberFamily, TextIsJudgedByItsPositionAlone)
{
    // Unlisted texts are valid here, yet without an encoder they have no position.
    Built<NumberFamily> built;
    DictVarType type;
    type.name = "f";
    type.level = ScoreDictVar::CATEGORICAL;
    type.valueType = ScoreDictVar::STRING;
    built.Add(std::make_unique<DictVar>(type), ScoreModel::ROLE_FACTOR);
    built.SetUp();
    built.model.FinishSetup();
    Case c;
    c.With("f", "c");
    Slot slot;
    EXPECT_EQ(built.model.GetScore(&c.Record(), slot.result, true).GetErrorCode(), 90029);
}

// The missing prediction of a family whose target is a category.
using Classifier = AnyFamily<MLRResult, ScoreResult::MLR_RESULT, false>;

std::string MissingText(std::unique_ptr<DictVar> target, const char* before, bool numeric)
{
    Built<Classifier> built(std::move(target));
    built.model.road.missingPrediction = MissingPrediction::TargetTyped;
    built.Covariate("a");
    built.SetUp();
    built.model.FinishSetup();
    Slot slot;
    if (before != nullptr) {
        slot.result = new MLRResult(built.model.GetTargetVar());
        if (numeric) {
            slot.result->SetPrediction(new NumericValue(std::string(before)));
        } else if (*before != '\0') {
            slot.result->SetPrediction(new StringValue(before));
        }
    }
    Case c;
    c.With("a", kSysmis);
    EXPECT_FALSE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    const ScoreValue* prediction = slot.result->GetPrediction();
    return prediction->GetValueType() == ScoreValue::NUMERIC && prediction->IsMissingValue()
               ? "system-missing"
               : prediction->GetString();
}

TEST(MissingPrediction, TextTargetReadsEmptyInAFreshResultAndNULLInAReusedOne)
{
    EXPECT_EQ(MissingText(Categorical("y", {"a", "b"}), nullptr, false), "");
    EXPECT_EQ(MissingText(Categorical("y", {"a", "b"}), "a", false), "NULL");
    EXPECT_EQ(MissingText(Categorical("y", {"a", "b"}), "", false), "");  // no prediction yet
}

TEST(MissingPrediction, NumericTargetReadsSystemMissingBothTimes)
{
    const auto target = [] { return Categorical("y", {"0", "1"}, ScoreDictVar::NUMERIC); };
    EXPECT_EQ(MissingText(target(), nullptr, true), "system-missing");
    EXPECT_EQ(MissingText(target(), "1", true), "system-missing");
}

TEST(MissingPrediction, WithoutATargetReadsEmpty)
{
    Classifier model;
    auto* dictionary = new BaseDictionary;
    model.SetScoreDictionary(dictionary);
    auto var = Continuous("a");
    model.SetVarRole(var.get(), ScoreModel::ROLE_COVARIATE);
    dictionary->AddVar("a", var.release());
    model.AddPredictor("a");
    model.road.missingPrediction = MissingPrediction::TargetTyped;
    ASSERT_TRUE(model.Setup());
    model.FinishSetup();
    Slot slot;
    Case c;
    c.With("a", kSysmis);
    EXPECT_FALSE(model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Text(), "");
}

// A record that knows positions and has no array of its values.
class NamesAlone final : public ScoreCaseRecord {
public:
    ScoreValue* GetValue(const std::string& name) const override
    {
        return name == "a" ? &a_ : name == "b" ? &b_ : nullptr;
    }
    ScoreValue* GetValue(int) const override { return nullptr; }
    bool HasIndexedAccess() const override { return true; }
    int GetVarIndex(const std::string& name) const override { return name == "a" ? 0 : 1; }
    const std::vector<ScoreValue*>* GetValues() const override { return nullptr; }

private:
    mutable NumericValue a_{1.0};
    mutable NumericValue b_{2.0};
};

TYPED_TEST(EveryFamily, RecordOfPositionsWithoutAnArrayIsReadByName)
{
    this->Build();
    const NamesAlone record;
    ASSERT_TRUE(this->built.model.GetScore(&record, this->slot.result, true).IsOK());
    EXPECT_EQ(this->slot.Number(), 3.0);
    EXPECT_TRUE(this->built.model.ownState.isBound);
}

TYPED_TEST(EveryFamily, VariableThatTheRecordLacksIsMissing)
{
    this->Build();
    Case lacking;
    lacking.With("a", 1).With("c", 5);
    EXPECT_EQ(this->built.model.GetScore(&lacking.Record(), this->slot.result, true).GetErrorCode(),
              90029);
    EXPECT_EQ(this->built.model.GetFailedVar(), this->built.Dictionary().GetVar("b"));
}

TYPED_TEST(EveryFamily, RecordShorterThanTheFirstLacksWhatItHasNoPositionFor)
{
    this->Build();
    ASSERT_TRUE(this->Score(1, 2).IsOK());
    Case shorter;
    shorter.With("a", 1);
    EXPECT_EQ(this->built.model.GetScore(&shorter.Record(), this->slot.result, true).GetErrorCode(),
              90029);
    EXPECT_EQ(this->built.model.GetFailedVar(), this->built.Dictionary().GetVar("b"));
}

TYPED_TEST(EveryFamily, NeedOfDerivedValuesWithoutTransformationsChangesNothing)
{
    this->Build();
    this->built.model.SetNeedDerivedPredictor(true);
    Case c;
    c.With("a", 1).With("b", 2);
    ASSERT_TRUE(this->built.model.GetScore(&c.Record(), this->slot.result, false).IsOK());
    EXPECT_EQ(this->slot.Number(), 3.0);
}

// A variable of no dictionary of the model keeps the position that somebody gave it.
TYPED_TEST(EveryFamily, VariableOfSomebodyElseKeepsItsPosition)
{
    this->Build();
    const auto stranger = Continuous("stranger");
    stranger->SetDictIndex(2);
    this->built.model.Replace(1, stranger.get());
    Case c;
    c.With("a", 1).With("b", 2).With("c", 4).With("stranger", 8);
    ASSERT_TRUE(this->built.model.GetScore(&c.Record(), this->slot.result, true).IsOK());
    EXPECT_EQ(this->slot.Number(), 5.0);  // a, and the third
}

// The policy that a run has, whatever the setup found to substitute.
TYPED_TEST(EveryFamily, AnotherPolicyAfterTheSetupSubstitutesNothing)
{
    Replace(this->built.Covariate("a"), 10.0);
    this->built.Covariate("b");
    this->built.SetUp();
    this->built.model.FinishSetup();
    this->built.model.SetMissingValuePolicy(ScoreModel::MV_SYSMIS_RESULT);
    EXPECT_EQ(this->Score(kSysmis, 2).GetErrorCode(), 90029);
    EXPECT_EQ(this->slot.Number(), kSysmis);
}

}  // namespace
}  // namespace MCVelscore_850
