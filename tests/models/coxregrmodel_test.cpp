#include "models/coxregrmodel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

#include "host/messages/scoringlog.h"
#include "host/model/modeltables.h"
#include "host/values/datetimevalue.h"
#include "models/coxregresult.h"
#include "models/lrresult.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;
using Table = CoxRegModel::HazardTable;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// lp = 0.5 [f = b] + 0.25 x^2, hazard 0.1 from time 1, 0.3 from 4, 0.7 from 9, up to 12.
class Small : public Built<CoxRegModel> {
public:
    explicit Small(bool stratified = false) : Built("status")
    {
        Factor("f", {"a", "b"});
        Covariate("x");
        Plain(Continuous("time"));
        Parameters({"pf", "px"});
        model.SetEndTimeVariableName("time");
        if (stratified) {
            Plain(Categorical("s", {"north", "south"}));
            model.SetCumHazardTable({kTable, {{2.0, 1.0}}}, {"north", "south"}, "s");
            model.SetMinMaxTime({1.0, 2.0}, {12.0, 5.0});
        } else {
            model.SetCumHazardTable({kTable}, {}, "");
            model.SetMinMaxTime({1.0}, {12.0});
        }
    }
    DictVar& Plain(std::unique_ptr<DictVar> var)
    {
        DictVar& added = *var;
        Dictionary().AddVar(added.GetName(), var.release());
        return added;
    }
    CoxRegModel& Ready()
    {
        EXPECT_TRUE(SetUp());
        Fill();
        return model;
    }
    void Fill()
    {
        Cell("pf", "f", "b");
        Cell("px", "x", "2");
        Beta("pf", 0.5);
        Beta("px", 0.25);
        model.FinishSetup();
    }
    static inline const Table kTable{{1.0, 0.1}, {4.0, 0.3}, {9.0, 0.7}};
};

Case Row(const char* f, double x, Given time)
{
    return std::move(Case().With("f", f).With("x", x).With("time", std::move(time)));
}

// What a case's hazard and survival are by the model's own operations.
void ExpectScore(Slot& slot, double lp, double baseline, const std::string& said)
{
    const double hazard = std::exp(lp) * baseline;
    EXPECT_EQ(slot.As<CoxRegResult>().GetCumHazardValue(), hazard) << said;
    EXPECT_EQ(slot.Number(), 1.0 / std::exp(hazard)) << said;
}

TEST(CoxRegModel, SurvivalComesFromTheBaselineAndTheLinearPredictor)
{
    Small small;
    CoxRegModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
    ExpectScore(slot, 0.5 + 0.25 * 4.0, 0.3, "b");
    ASSERT_TRUE(model.GetScore(&Row("a", 3.0, 5).Record(), slot.result, true).IsOK());
    ExpectScore(slot, 0.25 * 9.0, 0.3, "a");
    EXPECT_EQ(slot.result->GetScoreResultType(), ScoreResult::COXREG_RESULT);
    EXPECT_EQ(slot.result->GetConfidence(), -1.0);
}

// A baseline, its limits, and what it holds at a time; kSysmis where it has nothing.
struct Lookup {
    const char* said;
    Table table;
    std::vector<double> minTimes;
    std::vector<double> maxTimes;
    double time;
    double baseline;
};
const Table kSteps{{1.0, 0.1}, {4.0, 0.3}, {9.0, 0.7}};
const Lookup kLookups[] = {
    {"before the first time", kSteps, {1.0}, {12.0}, 0.5, 0.0},
    {"at the first time", kSteps, {1.0}, {12.0}, 1.0, 0.1},
    {"between two times", kSteps, {1.0}, {12.0}, 3.999, 0.1},
    {"at a time", kSteps, {1.0}, {12.0}, 4.0, 0.3},
    {"at the last time", kSteps, {1.0}, {12.0}, 9.0, 0.7},
    {"behind the last time", kSteps, {1.0}, {12.0}, 10.0, 0.7},
    {"at the largest time allowed", kSteps, {1.0}, {12.0}, 12.0, 0.7},
    {"beyond it", kSteps, {1.0}, {12.0}, 12.000001, kSysmis},
    {"a largest time before the last", kSteps, {1.0}, {8.0}, 9.0, kSysmis},
    {"not a number", kSteps, {1.0}, {12.0}, kNaN, kSysmis},
    {"endless", kSteps, {1.0}, {12.0}, kInfinity, kSysmis},
    {"before any time", kSteps, {1.0}, {12.0}, -kInfinity, 0.0},
    // A document's first cell needn't be its smallest time: here that of 4.
    {"before the first cell of an unsorted document", kSteps, {4.0}, {12.0}, 3.0, 0.0},
    {"at the first cell of an unsorted document", kSteps, {4.0}, {12.0}, 4.0, 0.3},
    {"inside the limits, before the first time", kSteps, {0.5}, {12.0}, 0.75, kSysmis},
    {"no smallest time", kSteps, {}, {12.0}, 0.5, kSysmis},
    {"no smallest time, at a time", kSteps, {}, {12.0}, 4.0, 0.3},
    {"no largest time", kSteps, {1.0}, {}, 4.0, kSysmis},
    {"no largest time, before the first", kSteps, {1.0}, {}, 0.5, 0.0},
    // The limits that a reader gives a table without cells.
    {"no cells, without strata", {}, {-kSysmis}, {12.0}, 5.0, 0.0},
    {"no cells, with strata", {}, {kSysmis}, {12.0}, 5.0, kSysmis},
    {"minus zero is zero", {{0.0, 0.2}}, {0.0}, {12.0}, -0.0, 0.2},
    {"a missing hazard at the time lets the one before stand",
     {{1.0, 0.1}, {4.0, kSysmis}},
     {1.0},
     {12.0},
     4.0,
     0.1},
    {"a missing hazard before the time is none",
     {{1.0, 0.1}, {4.0, kSysmis}},
     {1.0},
     {12.0},
     5.0,
     kSysmis},
    {"a missing hazard at the first time is none", {{4.0, kSysmis}}, {1.0}, {12.0}, 4.0, kSysmis},
};

TEST(CoxRegModel, BaselineIsAStepFunctionWithinItsLimits)
{
    for (const Lookup& row : kLookups) {
        Small small;
        small.model.SetCumHazardTable({row.table}, {}, "");
        small.model.SetMinMaxTime(row.minTimes, row.maxTimes);
        CoxRegModel& model = small.Ready();
        Slot slot;
        EXPECT_TRUE(model.GetScore(&Row("a", 2.0, row.time).Record(), slot.result, true).IsOK())
            << row.said;
        if (row.baseline == kSysmis) {
            EXPECT_EQ(slot.Number(), kSysmis) << row.said;
            EXPECT_EQ(slot.As<CoxRegResult>().GetCumHazardValue(), kSysmis) << row.said;
        } else {
            ExpectScore(slot, 1.0, row.baseline, row.said);
        }
    }
}

TEST(CoxRegModel, TimeBeforeTheFirstIsSurvivedWhateverTheCovariates)
{
    Small small;
    CoxRegModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 7.0, 0.5).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 1.0);
    EXPECT_EQ(slot.As<CoxRegResult>().GetCumHazardValue(), 0.0);
    // Only an exp beyond the doubles makes of the hazard of 0 no number.
    ASSERT_TRUE(model.GetScore(&Row("b", 1e9, 0.5).Record(), slot.result, true).IsOK());
    EXPECT_TRUE(std::isnan(slot.Number()));
    EXPECT_TRUE(std::isnan(slot.As<CoxRegResult>().GetCumHazardValue()));
}

TEST(CoxRegModel, EveryTimeOfALargeTableFindsItsOwnStep)
{
    // Against the walk from the first cell that defines the look-up.
    Table table;
    for (int i = 0; i < 500; ++i) table[i * 1.25] = i * 0.01;
    Small small;
    small.model.SetCumHazardTable({table}, {}, "");
    small.model.SetMinMaxTime({0.0}, {700.0});
    CoxRegModel& model = small.Ready();
    Slot slot;
    for (double t = 0.0; t <= 700.0; t += 0.3125) {
        double baseline = kSysmis;
        for (const auto& [time, hazard] : table) {
            if (time > t) break;
            baseline = hazard;
        }
        ASSERT_TRUE(model.GetScore(&Row("a", 2.0, t).Record(), slot.result, true).IsOK());
        ExpectScore(slot, 1.0, baseline, std::to_string(t));
    }
}

TEST(CoxRegModel, MissingEndTimeFailsTheCaseAndLeavesTheResult)
{
    Small small;
    CoxRegModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
    const double before = slot.Number();
    for (const bool absent : {false, true}) {
        Case c = absent ? Row("b", 3.0, nullptr) : Row("b", 3.0, kSysmis);
        const auto status = model.GetScore(&c.Record(), slot.result, true);
        EXPECT_EQ(status.GetErrorCode(), 90029);
        EXPECT_EQ(status.GetDiscreteDatum(), -1);
        EXPECT_EQ(slot.Number(), before);
    }
}

TEST(CoxRegModel, MissingEndTimeOfAFreshResultWritesNoPrediction)
{
    Small small;
    Slot slot;
    EXPECT_FALSE(
        small.Ready().GetScore(&Row("b", 2.0, kSysmis).Record(), slot.result, true).IsOK());
    ASSERT_NE(slot.result, nullptr);
    EXPECT_EQ(slot.result->GetPrediction(), nullptr);
}

// The steps of a case in their order, by which of two faults is told.
TEST(CoxRegModel, EndTimeIsAskedBeforeThePredictorsAndTheStratumIsFoundAfterThem)
{
    Small small(true);
    small.model.SetMissingValuePolicy(ScoreModel::MV_SYSMIS_RESULT);
    CoxRegModel& model = small.Ready();
    Slot slot;
    const auto score = [&](double x, double time, const char* stratum) {
        Case c = Row("b", x, time);
        c.With("s", stratum);
        return model.GetScore(&c.Record(), slot.result, true);
    };
    ASSERT_TRUE(score(2.0, 5.0, "north").IsOK());
    const double before = slot.Number();
    EXPECT_EQ(score(kSysmis, kSysmis, "north").GetDiscreteDatum(), -1);
    EXPECT_EQ(slot.Number(), before);  // no policy was asked
    EXPECT_EQ(score(2.0, 5.0, "east").GetErrorCode(), 90029);
    EXPECT_EQ(slot.Number(), before);
    EXPECT_EQ(score(kSysmis, 5.0, "east").GetDiscreteDatum(), 1);
    EXPECT_EQ(slot.Number(), kSysmis);
}

TEST(CoxRegModel, TimeBeyondTheTableMakesAReusedResultMissing)
{
    Small small;
    CoxRegModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
    const ScoreValue* prediction = slot.result->GetPrediction();
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0, 13).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.result->GetPrediction(), prediction);
    EXPECT_EQ(slot.Number(), kSysmis);
    EXPECT_EQ(slot.As<CoxRegResult>().GetCumHazardValue(), kSysmis);
}

TEST(CoxRegModel, EndTimeIsReadByName)
{
    Small small;
    CoxRegModel& model = small.Ready();
    Slot slot;
    Case c(false);
    c.With("time", 5).With("x", 2.0).With("f", "a");
    ASSERT_TRUE(model.GetScore(&c.Record(), slot.result, true).IsOK());
    ExpectScore(slot, 1.0, 0.3, "without positions");
}

TEST(CoxRegModel, EndTimeThatIsADateCountsFromItsVariablesOrigin)
{
    DictVarType type;
    type.name = "day";
    type.valueType = ScoreDictVar::DATETIME;
    type.dateTimeType = ScoreDictVar::DATE_DAYS_SINCE_1960;
    Small small;
    small.Plain(std::make_unique<DictVar>(type));
    small.model.SetEndTimeVariableName("day");
    small.model.SetCumHazardTable({{{3650.0, 0.5}, {3660.0, 0.75}}}, {}, "");
    small.model.SetMinMaxTime({3650.0}, {4000.0});
    CoxRegModel& model = small.Ready();
    Case c;
    c.With("f", "a").With("x", 2.0);
    c.With("day", Given(std::make_unique<DateTimeValue>(10.0)));  // day 3663 since 1960
    Slot slot;
    ASSERT_TRUE(model.GetScore(&c.Record(), slot.result, true).IsOK());
    ExpectScore(slot, 1.0, 0.75, "date");
}

TEST(CoxRegModel, EndTimeInNoDictionaryFailsEveryCase)
{
    Small small;
    small.model.SetEndTimeVariableName("nowhere");
    CoxRegModel& model = small.Ready();
    EXPECT_EQ(model.GetEndTimeVariable(), nullptr);
    Slot slot;
    EXPECT_EQ(model.GetScore(&Row("a", 1.0, 5).Record(), slot.result, true).GetErrorCode(), 90029);
}

// A derived end time of 5 in place of the plain one.
void DeriveEndTime(Small& small)
{
    auto* derived = new TransformationDictionary;
    derived->AddVar("t5", Derived("t5", 5.0).release());
    derived->SetUpDerivedCaseRecord();
    small.model.SetTransformationScoreDictionary(derived);
    small.model.SetEndTimeVariableName("t5");
}

TEST(CoxRegModel, DerivedEndTimeIsComputedAlsoWhereTheRecordHoldsOne)
{
    for (const bool inRecord : {false, true}) {
        Small small;
        DeriveEndTime(small);
        CoxRegModel& model = small.Ready();
        Case c;
        c.With("f", "a").With("x", 2.0).With("t5", 9.0);
        Slot slot;
        ASSERT_TRUE(model.GetScore(&c.Record(), slot.result, inRecord).IsOK());
        ExpectScore(slot, 1.0, 0.3, "derived");
    }
}

TEST(CoxRegModel, EachStratumHasItsOwnTableAndLimits)
{
    Small small(true);
    CoxRegModel& model = small.Ready();
    struct StratumRow {
        const char* stratum;
        double time;
        double baseline;
    };
    for (const StratumRow& row : {StratumRow{"north", 5.0, 0.3},
                                  {"south", 5.0, 1.0},
                                  {"south", 1.5, 0.0},
                                  {"north", 1.5, 0.1}}) {
        Slot slot;
        Case c = Row("a", 2.0, row.time);
        c.With("s", row.stratum);
        ASSERT_TRUE(model.GetScore(&c.Record(), slot.result, true).IsOK());
        ExpectScore(slot, 1.0, row.baseline, row.stratum);
    }
    Slot slot;
    Case beyond = Row("a", 2.0, 6.0);
    beyond.With("s", "south");
    ASSERT_TRUE(model.GetScore(&beyond.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), kSysmis);
}

TEST(CoxRegModel, AbsentStratumTakesTheFirstOneInSilence)
{
    Small small(true);
    CoxRegModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("a", 2.0, 10.0).Record(), slot.result, true).IsOK());
    ExpectScore(slot, 1.0, 0.7, "no such field");
    Case c = Row("a", 2.0, 10.0);
    c.With("s", nullptr);
    ASSERT_TRUE(model.GetScore(&c.Record(), slot.result, true).IsOK());
    ExpectScore(slot, 1.0, 0.7, "null");
}

TEST(CoxRegModel, UnknownAndMissingStrataFailTheCase)
{
    Small small(true);
    small.model.SetCumHazardTable({Small::kTable, {{2.0, 1.0}}}, {"", "south"}, "s");
    CoxRegModel& model = small.Ready();
    const auto codeOf = [&](Given stratum) {
        Slot slot;
        Case c = Row("a", 2.0, 3.0);
        c.With("s", std::move(stratum));
        const long code = model.GetScore(&c.Record(), slot.result, true).GetErrorCode();
        EXPECT_EQ(slot.result->GetPrediction() == nullptr, code != 0);
        return code;
    };
    EXPECT_EQ(codeOf("east"), 90029);
    EXPECT_EQ(codeOf("South"), 90029);  // byte for byte
    EXPECT_EQ(codeOf("south"), 0);
    EXPECT_EQ(codeOf(""), 0);  // a stratum without a name is one all the same
    auto missing = std::make_unique<StringValue>("");
    missing->SetMissing();  // what an empty field of a table is
    EXPECT_EQ(codeOf(Given(std::move(missing))), 90029);
    EXPECT_EQ(codeOf(3.0), 90029);
}

TEST(CoxRegModel, StratifiedModelWithoutCategoriesKnowsNoStratum)
{
    Small small(true);
    small.model.SetCumHazardTable({Small::kTable}, {}, "s");
    CoxRegModel& model = small.Ready();
    Slot slot;
    Case c = Row("a", 2.0, 3.0);
    c.With("s", "north");
    EXPECT_EQ(model.GetScore(&c.Record(), slot.result, true).GetErrorCode(), 90029);
}

TEST(CoxRegModel, StratumInNoDictionaryFailsEveryCase)
{
    Small small(true);
    small.model.SetCumHazardTable({Small::kTable}, {"north"}, "nowhere");
    Slot slot;
    Case c = Row("a", 2.0, 3.0);
    c.With("nowhere", "north");
    EXPECT_EQ(small.Ready().GetScore(&c.Record(), slot.result, true).GetErrorCode(), 90029);
}

TEST(CoxRegModel, NumericStratumIsComparedAsANumberWithTheFirstThatReadsSo)
{
    Small small(true);
    small.Plain(Continuous("n"));
    small.model.SetCumHazardTable({{{1.0, 0.5}}, {{1.0, 0.6}}, {{1.0, 0.7}}, {{1.0, 0.8}}},
                                  {"other", "1.0", "1", " 2e0 "}, "n");
    small.model.SetMinMaxTime({1, 1, 1, 1}, {9, 9, 9, 9});
    CoxRegModel& model = small.Ready();
    const auto baselineOf = [&](double n) {
        Slot slot;
        Case c = Row("a", 0.0, 2.0);  // lp 0: the hazard is the baseline
        c.With("n", n);
        const auto status = model.GetScore(&c.Record(), slot.result, true);
        return status.IsOK() ? slot.As<CoxRegResult>().GetCumHazardValue() : -1.0;
    };
    EXPECT_EQ(baselineOf(1.0), 0.6);
    EXPECT_EQ(baselineOf(2.0), 0.8);
    EXPECT_EQ(baselineOf(3.0), -1.0);
    EXPECT_EQ(baselineOf(kNaN), -1.0);
    EXPECT_EQ(baselineOf(kSysmis), -1.0);  // a missing number is no stratum without a number
}

// A date's text is its plain number.
TEST(CoxRegModel, StratumThatIsADateIsFoundByItsText)
{
    Small small(true);
    DictVarType type;
    type.name = "d";
    type.valueType = ScoreDictVar::DATETIME;
    small.Plain(std::make_unique<DictVar>(type));
    small.model.SetCumHazardTable({{{1.0, 0.5}}, {{1.0, 0.6}}}, {"10", "11"}, "d");
    small.model.SetMinMaxTime({1, 1}, {9, 9});
    Slot slot;
    Case c = Row("a", 2.0, 3.0);
    c.With("d", std::unique_ptr<ScoreValue>(std::make_unique<DateTimeValue>(11.0)));
    ASSERT_TRUE(small.Ready().GetScore(&c.Record(), slot.result, true).IsOK());
    ExpectScore(slot, 1.0, 0.6, "the second");
}

TEST(CoxRegModel, OfTwoStrataOfOneTextTheFirstCounts)
{
    Small small(true);
    small.model.SetCumHazardTable({{{1.0, 0.5}}, {{1.0, 0.6}}}, {"north", "north"}, "s");
    small.model.SetMinMaxTime({1, 1}, {9, 9});
    Slot slot;
    Case c = Row("a", 2.0, 3.0);
    c.With("s", "north");
    ASSERT_TRUE(small.Ready().GetScore(&c.Record(), slot.result, true).IsOK());
    ExpectScore(slot, 1.0, 0.5, "the first");
}

TEST(CoxRegModel, StratumWithoutATableOfItsOwnHasNoScore)
{
    Small small(true);
    small.model.SetCumHazardTable({Small::kTable}, {"north", "south"}, "s");
    CoxRegModel& model = small.Ready();
    Slot slot;
    Case c = Row("a", 2.0, 3.0);
    c.With("s", "south");
    ASSERT_TRUE(model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), kSysmis);
}

TEST(CoxRegModel, BasePointCentresTheDesign)
{
    Small small;
    small.model.SetBasePointTable({0.5, 3.0});
    CoxRegModel& model = small.Ready();
    Slot slot;
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(model.GetScore(&Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
        ExpectScore(slot, (1.0 * 0.5 - 0.5 * 0.5) + (4.0 * 0.25 - 3.0 * 0.25), 0.3, "b");
    }
    // A parameter that the case doesn't meet is taken off all the same.
    ASSERT_TRUE(model.GetScore(&Row("a", 0.0, 5).Record(), slot.result, true).IsOK());
    ExpectScore(slot, (0.0 - 0.5 * 0.5) + (0.0 - 3.0 * 0.25), 0.3, "a");
}

TEST(CoxRegModel, ReferenceTermIsTakenOffEachTermAndNotOffTheSum)
{
    Small small;
    small.model.SetBasePointTable({0.0, 3999996.0});
    ASSERT_TRUE(small.SetUp());
    small.Fill();
    small.Beta("pf", 0.1);
    small.model.FinishSetup();
    Slot slot;
    ASSERT_TRUE(small.model.GetScore(&Row("b", 2000.0, 5).Record(), slot.result, true).IsOK());
    // 4e6 * 0.25 - 999999 is 1 exactly; 0.1 + 1e6 would have lost digits.
    ExpectScore(slot, 0.1 + 1.0, 0.3, "0.1 + (1e6 - 999999)");
}

TEST(CoxRegModel, BasePointOfAnotherLengthCentresNothing)
{
    Small small;
    small.model.SetBasePointTable({0.5});
    CoxRegModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
    ExpectScore(slot, 1.5, 0.3, "too short");
    model.SetBasePointTable({0.5, 3.0});  // and the next case looks again
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
    ExpectScore(slot, 0.25 + 0.25, 0.3, "complete");
    model.SetBasePointTable({9.0, 9.0});  // the terms stand by now
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
    ExpectScore(slot, 0.25 + 0.25, 0.3, "later");
}

TEST(CoxRegModel, ReferenceTermsAreComputedAlsoByACaseThatFails)
{
    Small small;
    small.model.SetBasePointTable({0.5, 3.0});
    CoxRegModel& model = small.Ready();
    Slot slot;
    EXPECT_FALSE(model.GetScore(&Row("c", 2.0, 5).Record(), slot.result, true).IsOK());
    model.SetBasePointTable({9.0, 9.0});
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
    ExpectScore(slot, 0.5, 0.3, "the terms of the first case");
}

TEST(CoxRegModel, ComputeRefValuesFillsTheBetas)
{
    Small small;
    small.model.SetBasePointTable({0.5, 3.0});
    CoxRegModel& model = small.Ready();
    std::vector<double> betas(2, 0.0);
    model.computeRefValues(betas, 3);
    EXPECT_EQ(betas, std::vector<double>(2, 0.0));
    model.computeRefValues(betas, 2);
    EXPECT_EQ(betas, (std::vector<double>{0.5, 0.25}));
}

TEST(CoxRegModel, ComputeRefValuesOfAnotherLengthSetsTheFlagAlone)
{
    Small small;
    small.model.SetBasePointTable({0.5, 3.0});
    CoxRegModel& model = small.Ready();
    std::vector<double> betas;
    model.computeRefValues(betas, 1);
    EXPECT_TRUE(betas.empty());
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
    ExpectScore(slot, 1.5, 0.3, "the terms count as computed, and are 0");
}

TEST(CoxRegModel, BetaOfZeroAddsNotEvenItsReferenceTerm)
{
    Small small;
    small.model.SetBasePointTable({0.5, kInfinity});
    ASSERT_TRUE(small.SetUp());
    small.Fill();
    small.Beta("px", 0.0);
    small.model.FinishSetup();
    Slot slot;
    ASSERT_TRUE(small.model.GetScore(&Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
    ExpectScore(slot, 0.25, 0.3, "px");
}

// The linear predictor of one covariate x with beta 1 and the exponent of the cell.
double PowerOf(double x, const char* exponent)
{
    Built<CoxRegModel> built("status");
    built.Covariate("x");
    built.Parameters({"p"});
    built.model.SetEndTimeVariableName("x");
    built.model.SetCumHazardTable({{{-100.0, 1.0}}}, {}, "");
    built.model.SetMinMaxTime({-100.0}, {100.0});
    EXPECT_TRUE(built.SetUp());
    built.Cell("p", "x", exponent);
    built.Beta("p", 1.0);
    built.model.FinishSetup();
    Case c;
    c.With("x", x);
    Slot slot;
    EXPECT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    return slot.As<CoxRegResult>().GetCumHazardValue();
}

TEST(CoxRegModel, CovariateIsRaisedToItsExponent)
{
    EXPECT_EQ(PowerOf(2.0, "1"), std::exp(2.0));
    EXPECT_EQ(PowerOf(2.0, "3"), std::exp(8.0));
    EXPECT_EQ(PowerOf(2.0, "0.5"), std::exp(std::pow(2.0, 0.5)));
    EXPECT_EQ(PowerOf(-2.0, "2"), std::exp(4.0));
    EXPECT_TRUE(std::isnan(PowerOf(-2.0, "0.5")));
}

TEST(CoxRegModel, CovariateOfZeroDropsItsParameterWhateverTheExponent)
{
    EXPECT_EQ(PowerOf(0.0, "2"), 1.0);  // lp 0
    EXPECT_EQ(PowerOf(0.0, "0"), 1.0);
    EXPECT_EQ(PowerOf(0.0, "-1"), 1.0);
    EXPECT_EQ(PowerOf(2.0, "0"), std::exp(1.0));
    EXPECT_EQ(PowerOf(2.0, "-1"), std::exp(1.0));
}

TEST(CoxRegModel, CovariateOfOneIsOneWhateverTheExponent)
{
    EXPECT_EQ(PowerOf(1.0, "7"), std::exp(1.0));
}

// Two factors with contrasts and a covariate: d[pf] = M[case's][b] of f, d[pg] = M x of g.
class Contrasted : public Built<CoxRegModel> {
public:
    Contrasted() : Built("status")
    {
        Factor("f", {"a", "b", "c"});
        Factor("g", {"1", "2"}, ScoreDictVar::NUMERIC);
        Covariate("x");
        Parameters({"pf", "pg"});
        model.SetEndTimeVariableName("x");
        model.SetCumHazardTable({{{0.0, 1.0}}}, {}, "");
        model.SetMinMaxTime({0.0}, {100.0});
        EXPECT_TRUE(
            model.SetContrastMatrix("f", {{1, 0}, {0, 2}, {-1, -1}}, Texts({"a", "b", "c"})));
        EXPECT_TRUE(model.SetContrastMatrix("g", {{-1}, {0.5}},
                                            {new NumericValue(1.0), new NumericValue(2.0)}));
    }
    static std::vector<ScoreValue*> Texts(const std::vector<const char*>& texts)
    {
        std::vector<ScoreValue*> values;
        for (const char* text : texts) values.push_back(new StringValue(text));
        return values;
    }
    CoxRegModel& Ready(const char* column = "b")
    {
        EXPECT_TRUE(SetUp());
        Cell("pf", "f", column);
        Cell("pg", "g", "1");
        Cell("pg", "x", "1");
        Beta("pf", 1.0);
        Beta("pg", 2.0);
        model.FinishSetup();
        return model;
    }
    static Case Row(const char* f, double g, double x)
    {
        return std::move(Case().With("f", f).With("g", g).With("x", x));
    }
};

TEST(CoxRegModelContrasts, RowIsTheCasesCategoryAndColumnTheParameters)
{
    Contrasted built;
    CoxRegModel& model = built.Ready();
    Slot slot;
    struct ContrastRow {
        const char* f;
        double g;
        double lp;
    };
    // pf by column b of its matrix, pg by column 1 times x = 3
    for (const ContrastRow& row : {ContrastRow{"a", 1, 0.0 - 1.0 * 3.0 * 2.0},
                                   {"b", 1, 2.0 - 1.0 * 3.0 * 2.0},
                                   {"c", 2, -1.0 + 0.5 * 3.0 * 2.0}}) {
        Case c = Contrasted::Row(row.f, row.g, 3.0);
        ASSERT_TRUE(model.GetScore(&c.Record(), slot.result, true).IsOK()) << row.f;
        EXPECT_EQ(slot.As<CoxRegResult>().GetCumHazardValue(), std::exp(row.lp)) << row.f;
    }
}

TEST(CoxRegModelContrasts, CategoryWithoutARowOrAColumnFailsTheCase)
{
    Contrasted built;
    built.model.SetContrastMatrix("f", {{1, 0}, {0, 2}}, Contrasted::Texts({"a", "b"}));
    CoxRegModel& model = built.Ready();
    Slot slot;
    EXPECT_EQ(
        model.GetScore(&Contrasted::Row("c", 1, 3.0).Record(), slot.result, true).GetErrorCode(),
        90017);
    EXPECT_EQ(slot.result->GetPrediction(), nullptr);
    EXPECT_EQ(model.GetFailedVar(), model.GetDictionary()->GetVar("f"));
    EXPECT_TRUE(model.GetScore(&Contrasted::Row("b", 1, 3.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(model.GetFailedVar(), nullptr);

    Contrasted narrow;  // category c has place 2, and the rows have two columns
    CoxRegModel& other = narrow.Ready("c");
    EXPECT_EQ(
        other.GetScore(&Contrasted::Row("a", 1, 3.0).Record(), slot.result, true).GetErrorCode(),
        90017);
}

TEST(CoxRegModelContrasts, OfTwoEqualCategoriesTheFirstGivesRowAndColumn)
{
    Contrasted built;
    built.model.SetContrastMatrix("f", {{3, 5}, {7, 9}}, Contrasted::Texts({"b", "b"}));
    Slot slot;
    ASSERT_TRUE(
        built.Ready().GetScore(&Contrasted::Row("b", 1, 3.0).Record(), slot.result, true).IsOK());
    // pf 3, pg -1 * 3 * 2
    EXPECT_EQ(slot.As<CoxRegResult>().GetCumHazardValue(), std::exp(3.0 - 6.0));
}

TEST(CoxRegModelContrasts, MatrixShorterThanItsCategoriesFailsTheCase)
{
    Contrasted built;
    built.model.SetContrastMatrix("f", {{1, 0}}, Contrasted::Texts({"a", "b"}));
    CoxRegModel& model = built.Ready();
    Slot slot;
    EXPECT_TRUE(model.GetScore(&Contrasted::Row("a", 1, 3.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(
        model.GetScore(&Contrasted::Row("b", 1, 3.0).Record(), slot.result, true).GetErrorCode(),
        90017);
}

TEST(CoxRegModelContrasts, EntryOfZeroEndsTheWalkOfItsParameter)
{
    // pg depends on f first: with category a its entry is 0, and g's missing place isn't looked
    // for.
    Contrasted built;
    built.model.SetContrastMatrix("g", {{-1}}, {new NumericValue(1.0)});
    EXPECT_TRUE(built.SetUp());
    built.Cell("pg", "f", "b");
    built.Cell("pg", "g", "1");
    built.Beta("pg", 2.0);
    built.model.FinishSetup();
    Slot slot;
    EXPECT_TRUE(
        built.model.GetScore(&Contrasted::Row("a", 2, 3.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.As<CoxRegResult>().GetCumHazardValue(), 1.0);
    EXPECT_EQ(built.model.GetScore(&Contrasted::Row("b", 2, 3.0).Record(), slot.result, true)
                  .GetErrorCode(),
              90017);
}

TEST(CoxRegModelContrasts, FactorWithBetaZeroIsNotLookedFor)
{
    Contrasted built;
    built.model.SetContrastMatrix("f", {{1}}, Contrasted::Texts({"a"}));
    CoxRegModel& model = built.Ready();
    built.Beta("pf", 0.0);
    model.FinishSetup();
    Slot slot;
    EXPECT_TRUE(model.GetScore(&Contrasted::Row("c", 1, 3.0).Record(), slot.result, true).IsOK());
}

TEST(CoxRegModelContrasts, EveryFactorNeedsThemWhereOneHasThem)
{
    Built<CoxRegModel> built("status");
    built.Factor("f", {"a", "b"});
    built.Factor("g", {"a", "b"});
    built.Parameters({"p"});
    EXPECT_TRUE(built.model.SetContrastMatrix("g", {{1}, {0}}, Contrasted::Texts({"a", "b"})));
    ASSERT_EQ(built.model.GetContrastMatrices().size(), 2U);
    EXPECT_TRUE(built.model.GetContrastMatrices()[0].empty());
    EXPECT_FALSE(built.SetUp());
    EXPECT_NE(built.model.GetParamTable(), nullptr);
    EXPECT_TRUE(built.model.SetContrastMatrix("f", {{1}, {0}}, Contrasted::Texts({"a", "b"})));
    EXPECT_TRUE(built.SetUp());
}

TEST(CoxRegModelContrasts, FactorBehindTheLastMatrixNeedsOneToo)
{
    Built<CoxRegModel> built("status");
    built.Factor("f", {"a", "b"});
    built.Factor("g", {"a", "b"});
    EXPECT_TRUE(built.model.SetContrastMatrix("f", {{1}, {0}}, Contrasted::Texts({"a", "b"})));
    EXPECT_FALSE(built.SetUp());
}

TEST(CoxRegModelContrasts, MatrixOfTheSixthPredictorMakesSixEntries)
{
    Built<CoxRegModel> built("status");
    for (int i = 0; i < 6; ++i) built.Factor("f" + std::to_string(i), {"a", "b"});
    EXPECT_TRUE(built.model.SetContrastMatrix("f5", {{1}, {0}}, Contrasted::Texts({"a", "b"})));
    const auto& matrices = built.model.GetContrastMatrices();
    ASSERT_EQ(matrices.size(), 6U);
    for (size_t i = 0; i < 5; ++i) EXPECT_TRUE(matrices[i].empty());
    EXPECT_EQ(matrices[5], (RegressionModel::Matrix{{1}, {0}}));
}

// A category that counts itself out.
class Counted final : public ScoreValue {
public:
    explicit Counted(int& alive) : ScoreValue(STRING), alive_(alive) { ++alive_; }
    ~Counted() override { --alive_; }
    ScoreValue* Clone() const override { return nullptr; }
    bool Equals(const ScoreValue*) const override { return false; }
    double GetDouble() const override { return kSysmis; }
    std::string GetString() const override { return ""; }
    bool IsMissingValue() const override { return false; }
    int GetValueType() const override { return STRING; }

private:
    int& alive_;
};

TEST(CoxRegModelContrasts, CategoriesBelongToTheModelWhateverItAnswers)
{
    int alive = 0;
    {
        Built<CoxRegModel> built("status");
        built.Factor("f", {"a"});
        EXPECT_FALSE(built.model.SetContrastMatrix("nowhere", {{1}},
                                                   {new Counted(alive), new Counted(alive)}));
        EXPECT_EQ(alive, 0);
        EXPECT_TRUE(built.model.SetContrastMatrix("f", {{1}}, {new Counted(alive), nullptr}));
        EXPECT_EQ(alive, 1);
        EXPECT_TRUE(built.model.SetContrastMatrix("f", {{1}}, {new Counted(alive)}));
        EXPECT_EQ(alive, 1);  // the one before is released
    }
    EXPECT_EQ(alive, 0);
}

TEST(CoxRegModelContrasts, CategoryThatIsNotThereEqualsNothing)
{
    Contrasted built;
    built.model.SetContrastMatrix("f", {{1, 0}, {0, 2}}, {nullptr, new StringValue("b")});
    CoxRegModel& model = built.Ready();
    Slot slot;
    EXPECT_TRUE(model.GetScore(&Contrasted::Row("b", 1, 3.0).Record(), slot.result, true).IsOK());
    EXPECT_EQ(
        model.GetScore(&Contrasted::Row("a", 1, 3.0).Record(), slot.result, true).GetErrorCode(),
        90017);
}

TEST(CoxRegModel, BadPredictorMakesTheNumberMissingAndNamesTheLastOne)
{
    Small small;
    small.model.SetMissingValuePolicy(ScoreModel::MV_SYSMIS_RESULT);
    CoxRegModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
    const ScoreValue* prediction = slot.result->GetPrediction();
    const double hazard = slot.As<CoxRegResult>().GetCumHazardValue();
    const auto status = model.GetScore(&Row("c", kSysmis, 5).Record(), slot.result, true);
    EXPECT_EQ(status.GetErrorCode(), 90029);
    EXPECT_EQ(status.GetDiscreteDatum(), 1);
    EXPECT_EQ(slot.result->GetPrediction(), prediction);
    EXPECT_EQ(slot.Number(), kSysmis);
    EXPECT_EQ(slot.As<CoxRegResult>().GetCumHazardValue(), hazard);  // never written by a failure
}

TEST(CoxRegModel, MissingPredictionIsANumberAlsoForATextTarget)
{
    Built<CoxRegModel> built(Categorical("status", {"dead", "alive"}));
    built.Covariate("x");
    built.model.SetEndTimeVariableName("x");
    built.model.SetCumHazardTable({{{0.0, 1.0}}}, {}, "");
    built.Parameters({"p"});
    // Another variable is bad: the end time has to be there.
    built.Covariate("y");
    ASSERT_TRUE(built.SetUp());
    built.model.FinishSetup();
    Slot slot;
    Case c;
    c.With("x", 1.0).With("y", kSysmis);
    EXPECT_EQ(built.model.GetScore(&c.Record(), slot.result, true).GetErrorCode(), 90029);
    ASSERT_NE(slot.result->GetPrediction(), nullptr);
    EXPECT_EQ(slot.result->GetPrediction()->GetValueType(), ScoreValue::NUMERIC);
    EXPECT_EQ(slot.Number(), kSysmis);
}

TEST(CoxRegModel, StatusOnlyPolicyKeepsTheResult)
{
    Small small;
    small.model.SetMissingValuePolicy(ScoreModel::MV_STATUS_ONLY);
    CoxRegModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
    const double before = slot.Number();
    const auto status = model.GetScore(&Row("c", 2.0, 5).Record(), slot.result, true);
    EXPECT_EQ(status.GetErrorCode(), 90029);
    EXPECT_EQ(status.GetDiscreteDatum(), 0);
    EXPECT_EQ(slot.Number(), before);
}

TEST(CoxRegModel, SubstitutesTheReplacementAndNeverTheMean)
{
    for (const bool replaced : {false, true}) {
        Small small;
        ScoreDictVar& x = *small.Dictionary().GetVar("x");
        auto stats = std::make_unique<VarStats>();
        stats->SetMean(3.0);
        const NumericValue two(2.0);
        if (replaced) stats->SetMissingReplacement(&two);
        x.SetVarStats(stats.release());
        CoxRegModel& model = small.Ready();
        model.SetMissingValuePolicy(ScoreModel::MV_SUBSTITUTE);
        Slot slot;
        const auto status = model.GetScore(&Row("a", kSysmis, 5).Record(), slot.result, true);
        EXPECT_EQ(status.IsOK(), replaced);
        if (replaced) ExpectScore(slot, 1.0, 0.3, "replaced");
    }
}

TEST(CoxRegModel, ReplacementThatIsMissingItselfReplacesNothing)
{
    Small small;
    Replace(*small.Dictionary().GetVar("x"), kSysmis);
    CoxRegModel& model = small.Ready();
    ASSERT_EQ(model.GetMissingValuePolicy(), ScoreModel::MV_SUBSTITUTE);
    Slot slot;
    EXPECT_EQ(model.GetScore(&Row("a", kSysmis, 5).Record(), slot.result, true).GetErrorCode(),
              90029);
}

TEST(CoxRegModel, AbsentPredictorWithoutValidationFailsTheCase)
{
    Small small;
    small.model.SetScoreCaseValidationCheck(false);
    Slot slot;
    Case c;
    c.With("f", "a").With("time", 5);
    EXPECT_EQ(small.Ready().GetScore(&c.Record(), slot.result, true).GetErrorCode(), 90029);
}

TEST(CoxRegModel, DeadStringIsWrittenIntoANewResultAlone)
{
    Small small;
    small.model.SetTargetString("1,2,");
    CoxRegModel& model = small.Ready();
    Slot slot;
    ASSERT_TRUE(model.GetScore(&Row("a", 2.0, 5).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.As<CoxRegResult>().GetDeadString(), "1,2,");
    const ScoreResult* kept = slot.result;
    slot.As<CoxRegResult>().SetDeadString("own");
    ASSERT_TRUE(model.GetScore(&Row("a", 2.0, 5).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.result, kept);
    EXPECT_EQ(slot.As<CoxRegResult>().GetDeadString(), "own");
}

TEST(CoxRegModel, ResultOfAnotherFamilyIsReplaced)
{
    Small small;
    Slot slot;
    slot.result = new LRResult(nullptr);
    ASSERT_TRUE(small.Ready().GetScore(&Row("a", 2.0, 5).Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.result->GetScoreResultType(), ScoreResult::COXREG_RESULT);
    EXPECT_EQ(slot.result->GetTarget(), small.model.GetTargetVar());
}

TEST(CoxRegModel, PredictionOnlyWritesTheHazardAllTheSame)
{
    Small small;
    small.model.SetPredictionOnly(true);
    Slot slot;
    ASSERT_TRUE(small.Ready().GetScore(&Row("a", 2.0, 5).Record(), slot.result, true).IsOK());
    ExpectScore(slot, 1.0, 0.3, "prediction only");
}

std::vector<std::string> TraceOf(CoxRegModel& model, const ScoreCaseRecord* record)
{
    std::vector<std::string> lines;
    ScoringLog::GetInstance()->SetSink(
        [&](int, std::string_view line) { lines.emplace_back(line); });
    ScoringLog::GetInstance()->SetLevel(1);
    Slot slot;
    model.GetScore(record, slot.result, true);
    ScoringLog::GetInstance()->SetLevel(0);
    ScoringLog::GetInstance()->SetSink(nullptr);
    return lines;
}

TEST(CoxRegModel, EveryFailureIsTracedOnceAndTheNullRecordInItsOwnSpelling)
{
    Small small(true);
    CoxRegModel& model = small.Ready();
    const std::vector<std::string> failed{"MCStatus error code is :90029"};
    EXPECT_EQ(TraceOf(model, nullptr), std::vector<std::string>{"MCStatus error code is : 90029"});
    EXPECT_EQ(TraceOf(model, &Row("a", 1.0, kSysmis).Record()), failed);
    EXPECT_EQ(TraceOf(model, &Row("c", kSysmis, 5).Record()), failed);
    Case unknown = Row("a", 1.0, 5);
    unknown.With("s", "east");
    EXPECT_EQ(TraceOf(model, &unknown.Record()), failed);
    EXPECT_TRUE(TraceOf(model, &Row("a", 1.0, 5).Record()).empty());

    Contrasted built;
    built.model.SetContrastMatrix("f", {{1}}, Contrasted::Texts({"a"}));
    EXPECT_EQ(TraceOf(built.Ready(), &Contrasted::Row("c", 1, 3.0).Record()),
              std::vector<std::string>{"MCStatus error code is :90017"});
}

TEST(CoxRegModel, SetupRegistersItsOneCategoryUnlessThereIsOne)
{
    Built<CoxRegModel> built("status");
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    EXPECT_EQ(built.model.GetCategoryVector(), (RegressionModel::NameVector{{"CoxRegDummy", 0}}));
    EXPECT_EQ(built.model.GetPCovMatrix(), nullptr);
    ASSERT_TRUE(built.SetUp());
    EXPECT_EQ(built.model.GetCategoryMap().size(), 1U);

    Built<CoxRegModel> own("status");
    const_cast<RegressionModel::NameMap&>(own.model.GetCategoryMap()).emplace("mine", 0);
    ASSERT_TRUE(own.SetUp());
    EXPECT_EQ(own.model.GetCategoryVector(), (RegressionModel::NameVector{{"mine", 0}}));
}

TEST(CoxRegModel, SetupOfAnUnknownPredictorStillMakesTheTables)
{
    Built<CoxRegModel> built("status");
    built.Covariate("a");
    built.model.AddPredictor("nowhere");
    built.Parameters({"p"});
    EXPECT_FALSE(built.SetUp());
    EXPECT_NE(built.model.GetParamTable(), nullptr);
    EXPECT_NE(built.model.GetPPCMatrix(), nullptr);
}

TEST(CoxRegModel, AnswersWhatItWasGiven)
{
    CoxRegModel model(ScoreModel::TYPE_CSCOXREG);
    EXPECT_EQ(model.GetModelType(), 27);
    EXPECT_EQ(CoxRegModel(ScoreModel::TYPE_COXREG).GetModelType(), 26);
    model.SetEndTimeVariableName("t1");
    model.SetStartTimeVariableName("t0");
    model.SetSubjectVariableName("who");
    model.SetStratumVarName("where");
    model.SetStratumCatValMaxMap({{"north", 12.0}});
    model.SetBasePointTable({1.0, 2.0});
    model.SetCumHazardTable({{{1.0, 0.5}}}, {"north"}, "s");
    model.SetMinMaxTime({1.0}, {12.0});
    EXPECT_EQ(model.GetEndTimeVariableName(), "t1");
    EXPECT_EQ(model.GetStartTimeVariableName(), "t0");
    EXPECT_EQ(model.GetSubjectVariableName(), "who");
    EXPECT_EQ(model.GetStratumVarName(), "where");
    EXPECT_EQ(model.GetStratumVariableName(), "s");
    EXPECT_EQ(model.GetStratumCatValMaxMap(), (std::map<std::string, double>{{"north", 12.0}}));
    EXPECT_EQ(model.GetBasePointTable(), (std::vector<double>{1.0, 2.0}));
    EXPECT_EQ(model.GetMaxTimes(), std::vector<double>{12.0});
    EXPECT_EQ(model.GetStratumCategs(), std::vector<std::string>{"north"});
    EXPECT_EQ(model.GetCumHazardTables(), (std::vector<Table>{{{1.0, 0.5}}}));
}

TEST(CoxRegModel, CurveHoldsTheScoreAtEveryTimeOfTheStratum)
{
    Small small(true);
    small.model.SetBasePointTable({0.5, 3.0});
    CoxRegModel& model = small.Ready();
    Case c;
    c.With("f", "b").With("x", 2.0).With("s", "north");  // and no end time
    std::vector<SurvivalPoint> curve(9);
    ASSERT_TRUE(model.CurveRow(*model.MakeState(), &c.Record(), true, curve).IsOK());
    ASSERT_EQ(curve.size(), 3U);
    size_t i = 0;
    for (const auto& [time, hazard] : Small::kTable) {
        Slot slot;
        Case at = Row("b", 2.0, time);
        at.With("s", "north");
        // A model binds to the layout of its first record: this one is read by name.
        Small fresh(true);
        fresh.model.SetBasePointTable({0.5, 3.0});
        ASSERT_TRUE(fresh.Ready().GetScore(&at.Record(), slot.result, true).IsOK());
        EXPECT_EQ(curve[i].time, time);
        EXPECT_EQ(curve[i].survival, slot.Number());
        EXPECT_EQ(curve[i].cumHazard, slot.As<CoxRegResult>().GetCumHazardValue());
        EXPECT_EQ(curve[i].cumHazard, std::exp(0.25 + 0.25) * hazard);
        ++i;
    }
}

TEST(CoxRegModel, CurveFailsAsAScoreDoes)
{
    Small small(true);
    CoxRegModel& model = small.Ready();
    std::vector<SurvivalPoint> curve(9);
    EXPECT_EQ(model.CurveRow(*model.MakeState(), nullptr, true, curve).GetErrorCode(), 90029);
    EXPECT_TRUE(curve.empty());
    Case bad;
    bad.With("f", "c").With("x", 2.0).With("s", "north");
    const auto status = model.CurveRow(*model.MakeState(), &bad.Record(), true, curve);
    EXPECT_EQ(status.GetErrorCode(), 90029);
    EXPECT_EQ(status.GetDiscreteDatum(), 0);
    Case unknown;
    unknown.With("f", "a").With("x", 2.0).With("s", "east");
    EXPECT_EQ(model.CurveRow(*model.MakeState(), &unknown.Record(), true, curve).GetErrorCode(),
              90029);
    EXPECT_TRUE(curve.empty());
    Small lost(true);
    lost.model.SetCumHazardTable({Small::kTable}, {"north"}, "nowhere");
    Case c;
    c.With("f", "b").With("x", 2.0).With("nowhere", "north");
    EXPECT_EQ(
        lost.Ready().CurveRow(*lost.model.MakeState(), &c.Record(), true, curve).GetErrorCode(),
        90029);
    EXPECT_TRUE(curve.empty());
}

TEST(CoxRegModel, TabulatesBaselinesByStratumAndCovariances)
{
    Small small(true);
    CoxRegModel& model = small.Ready();
    ModelTables tables;
    model.Tabulate(tables);
    ASSERT_EQ(tables.baselines.size(), 2U);
    EXPECT_EQ(tables.baselines[0].times, (std::vector<double>{1, 4, 9}));
    EXPECT_EQ(tables.baselines[0].hazards, (std::vector<double>{0.1, 0.3, 0.7}));
    EXPECT_EQ(tables.baselines[1].times, std::vector<double>{2.0});
    EXPECT_TRUE(tables.covariances.empty());
    PCovMatrix& v = *model.CreatePCovMatrix();
    v.SetCell("pf", "px", 0.5);
    v.SetCell("px", "px", 2.0);
    model.Tabulate(tables);
    EXPECT_EQ(tables.baselines.size(), 2U);
    EXPECT_EQ(tables.covariances, (std::vector<std::vector<double>>{{0.0, 0.5}, {0.5, 2.0}}));
}

TEST(CoxRegModel, CurveHasNoNumberBeyondTheLargestTime)
{
    Small small;
    small.model.SetMinMaxTime({4.0}, {8.0});
    CoxRegModel& model = small.Ready();
    Case c;
    c.With("f", "a").With("x", 2.0);
    std::vector<SurvivalPoint> curve;
    ASSERT_TRUE(model.CurveRow(*model.MakeState(), &c.Record(), true, curve).IsOK());
    ASSERT_EQ(curve.size(), 3U);
    EXPECT_EQ(curve[0].survival, 1.0);  // before the first cell of the document
    EXPECT_EQ(curve[1].cumHazard, std::exp(1.0) * 0.3);
    EXPECT_EQ(curve[2].survival, kSysmis);
    EXPECT_EQ(curve[2].cumHazard, kSysmis);
}

TEST(CoxRegModel, DescribesStrataTimesEventsAndBasePoint)
{
    Small small(true);
    small.model.SetCumHazardTable({Small::kTable, {}}, {"north", "south"}, "s");
    small.model.SetMinMaxTime({1.0, kSysmis}, {12.0});
    small.model.SetBasePointTable({0.5, 3.0});
    small.model.SetTargetString("1,dead,");
    ModelDescription about;
    small.Ready().Describe(about);
    EXPECT_EQ(about.family, "Cox regression");
    EXPECT_EQ(about.variables, (std::vector<std::string>{"f", "x", "time", "s"}));
    EXPECT_EQ(about.endTimeVariable, "time");
    EXPECT_EQ(about.stratumVariable, "s");
    EXPECT_EQ(about.eventValues, (std::vector<std::string>{"1", "dead"}));
    ASSERT_EQ(about.strata.size(), 2U);
    EXPECT_EQ(about.strata[0].value, "north");
    EXPECT_EQ(about.strata[0].cells, 3U);
    EXPECT_EQ(about.strata[0].minTime, 1.0);
    EXPECT_EQ(about.strata[0].maxTime, 12.0);
    EXPECT_EQ(about.strata[1].cells, 0U);
    EXPECT_TRUE(std::isnan(about.strata[1].minTime));
    EXPECT_TRUE(std::isnan(about.strata[1].maxTime));
    ASSERT_EQ(about.equations.size(), 1U);
    EXPECT_EQ(about.equations[0].terms[0].referencePoint, 0.5);
    EXPECT_EQ(about.equations[0].terms[1].referencePoint, 3.0);
    ASSERT_EQ(about.quantities.size(), 2U);
    EXPECT_EQ(about.quantities[1].column, "cum_hazard");
}

TEST(CoxRegModel, DescribesContrastsAndReadsATimeThatIsAPredictorOnce)
{
    Contrasted built;
    ModelDescription about;
    built.Ready().Describe(about);
    EXPECT_EQ(about.variables, (std::vector<std::string>{"f", "g", "x"}));
    EXPECT_FALSE(about.equations.at(0).terms[0].referencePoint.has_value());
    EXPECT_TRUE(about.eventValues.empty());
    ASSERT_EQ(about.contrasts.size(), 2U);
    EXPECT_EQ(about.contrasts[0].predictor, "f");
    EXPECT_EQ(about.contrasts[0].categories, (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(about.contrasts[1].rows, (std::vector<std::vector<double>>{{-1}, {0.5}}));
}

std::string DisplayOf(const CoxRegModel& model)
{
    std::ostringstream out;
    model.Display(out);
    return out.str();
}

TEST(CoxRegModel, DisplayShowsWhatTheFamilyAdds)
{
    Contrasted built;
    built.model.SetBasePointTable({0.5, 3.0});
    built.model.SetCumHazardTable({{{1.0, 0.25}, {2.0, 0.5}}, {{3.0, 1.5}}}, {"north", "south"},
                                  "s");
    const std::string shown = DisplayOf(built.Ready());
    const size_t own = shown.find("Contrast matrices:");
    ASSERT_NE(own, std::string::npos);
    EXPECT_EQ(shown.find("Begin display of CoxRegModel\n\nBegin display of RegressionModel.\n"),
              0U);
    EXPECT_EQ(shown.substr(own),
              "Contrast matrices:\n"
              "For factor f :  size = 3 by 2\n\t1\t0\n\t0\t2\n\t-1\t-1\n\n"
              "For factor g :  size = 2 by 1\n\t-1\n\t0.5\n\n"
              "endTimeVariable: x\n"
              "X-BasePoint: \n0.5\n3\n"
              "X-Stratum varName=s\n"
              "value=north\n  X-BaseCumHazardTable: \n"
              "     time=1; cumHazard= 0.25\n     time=2; cumHazard= 0.5\n"
              "value=south\n  X-BaseCumHazardTable: \n     time=3; cumHazard= 1.5\n"
              "End display of CoxRegModel\n");
}

TEST(CoxRegModel, DisplayLeavesOutWhatIsNotThere)
{
    Small small;
    const std::string shown = DisplayOf(small.Ready());
    EXPECT_EQ(shown.substr(shown.find("Contrast matrices:")),
              "Contrast matrices:\nendTimeVariable: time\n  X-BaseCumHazardTable: \n"
              "     time=1; cumHazard= 0.1\n     time=4; cumHazard= 0.3\n"
              "     time=9; cumHazard= 0.7\nEnd display of CoxRegModel\n");
}

TEST(CoxRegModel, ErrorOfTheLinearPredictorIsTakenFromTheBasePoint)
{
    Small small;
    CoxRegModel& model = small.Ready();
    EXPECT_EQ(LinearPredictorError(model, Row("b", 2.0, 5)), kSysmis);
    PCovMatrix& v = *model.CreatePCovMatrix();
    v.SetCell("pf", "pf", 4.0);
    v.SetCell("px", "px", 1.0);
    v.SetCell("pf", "px", 0.5);
    // d = (1, 4): 4 + 16 + 2 * 4 * 0.5
    EXPECT_EQ(LinearPredictorError(model, Row("b", 2.0, 5)), std::sqrt(24.0));
    model.SetBasePointTable({0.5, 1.0});
    // d - r = (0.5, 3): 0.25 * 4 + 9 + 2 * 1.5 * 0.5; and (-0.5, 8): 1 + 64 - 2 * 4 * 0.5
    EXPECT_EQ(LinearPredictorError(model, Row("b", 2.0, 5)), std::sqrt(11.5));
    EXPECT_EQ(LinearPredictorError(model, Row("a", 3.0, 5)), std::sqrt(61.0));
}

// exp(lp) is the risk; half of the cases survive until the cumulative hazard reaches log 2 = 0.693.
TEST(CoxRegModel, AnswersRiskMedianAndSurvivalAtTheTimesThatAreAsked)
{
    struct Question {
        const char* f;
        double x;
        double lp;
        double median;
    };
    // Hazards 0.1, 0.3, 0.7 at 1, 4, 9: 0.7 alone is enough, 0.3 exp(1.5) = 1.34 too.
    const Question rows[] = {{"a", 0.0, 0.0, 9.0}, {"b", 2.0, 1.5, 4.0}, {"a", 4.0, 4.0, 1.0}};
    Small small;
    const CoxRegModel& model = small.Ready();
    for (const Question& row : rows) {
        const auto state = model.MakeState();
        state->survivalAsked = {.risk = true, .median = true, .times = {0.5, 4.0, 13.0}};
        Slot slot;
        Case c = Row(row.f, row.x, 5);
        ASSERT_TRUE(model.ScoreRow(*state, &c.Record(), slot.result, true).IsOK());
        EXPECT_EQ(state->survival.risk, std::exp(row.lp));
        EXPECT_EQ(state->survival.median, row.median) << row.lp;
        ASSERT_EQ(state->survival.survivals.size(), 3U);
        EXPECT_EQ(state->survival.survivals[0], 1.0);
        EXPECT_EQ(state->survival.survivals[1], 1.0 / std::exp(std::exp(row.lp) * 0.3));
        EXPECT_EQ(state->survival.survivals[2], kSysmis);  // beyond the largest time
        ExpectScore(slot, row.lp, 0.3, row.f);
    }
}

TEST(CoxRegModel, MoreThanHalfMayOutliveTheBaseline)
{
    Small small;
    const CoxRegModel& model = small.Ready();
    small.model.SetBasePointTable({1.0, 0.0});
    const auto state = model.MakeState();
    state->survivalAsked = {.median = true};
    Slot slot;
    // exp(-0.5) 0.7 = 0.42 at the end
    ASSERT_TRUE(model.ScoreRow(*state, &Row("a", 0.0, 5).Record(), slot.result, true).IsOK());
    EXPECT_EQ(state->survival.median, kSysmis);
}

// Without the end time's result a case needs no end time.
TEST(CoxRegModel, AnswersWithoutAnEndTimeWhereNobodyWantsItsResult)
{
    Small small(true);
    const CoxRegModel& model = small.Ready();
    const auto state = model.MakeState();
    state->survivalAsked = {.median = true, .times = {2.5}, .endTime = false};
    Slot slot;
    Case c;
    c.With("f", "b").With("x", 2.0).With("s", "south");
    ASSERT_TRUE(model.ScoreRow(*state, &c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(state->survival.median, 2.0);  // the only time of the south, with a hazard of 1
    EXPECT_EQ(state->survival.survivals, std::vector<double>{1.0 / std::exp(std::exp(1.5))});
    EXPECT_EQ(slot.Number(), kSysmis);
    EXPECT_EQ(slot.As<CoxRegResult>().GetCumHazardValue(), kSysmis);
}

TEST(CoxRegModel, CurveAnswersTheTimesThatAreAsked)
{
    Small small(true);
    small.model.SetCumHazardTable({Small::kTable}, {"north", "south"}, "s");
    small.model.SetMinMaxTime({1.0, 1.0}, {12.0, 12.0});
    const CoxRegModel& model = small.Ready();
    const auto state = model.MakeState();
    state->survivalAsked.times = {0.5, 5.0, 13.0};
    Case c;
    c.With("f", "b").With("x", 2.0).With("s", "north");
    std::vector<SurvivalPoint> curve;
    ASSERT_TRUE(model.CurveRow(*state, &c.Record(), true, curve).IsOK());
    ASSERT_EQ(curve.size(), 3U);
    EXPECT_EQ(curve[0].survival, 1.0);
    EXPECT_EQ(curve[1].time, 5.0);
    EXPECT_EQ(curve[1].cumHazard, std::exp(1.5) * 0.3);
    EXPECT_EQ(curve[2].survival, kSysmis);
    // A stratum without a table has no curve.
    Case south;
    south.With("f", "b").With("x", 2.0).With("s", "south");
    ASSERT_TRUE(model.CurveRow(*state, &south.Record(), true, curve).IsOK());
    EXPECT_TRUE(curve.empty());
    state->survivalAsked.median = true;
    state->survivalAsked.endTime = false;
    Slot slot;
    ASSERT_TRUE(model.ScoreRow(*state, &south.Record(), slot.result, true).IsOK());
    EXPECT_EQ(state->survival.median, kSysmis);
}

TEST(CoxRegModel, RiskIsAnsweredWithoutTheMedian)
{
    Small small;
    const CoxRegModel& model = small.Ready();
    const auto state = model.MakeState();
    state->survivalAsked.risk = true;
    Slot slot;
    ASSERT_TRUE(model.ScoreRow(*state, &Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
    EXPECT_EQ(state->survival.risk, std::exp(1.5));
    EXPECT_EQ(state->survival.median, kSysmis);
    EXPECT_TRUE(state->survival.survivals.empty());
}

TEST(CoxRegModel, RunThatSettlesAsAnotherTakesItsReferences)
{
    Small small;
    small.model.SetBasePointTable({1.0, 2.0});
    const CoxRegModel& model = small.Ready();
    const auto first = model.MakeState();
    const auto second = model.MakeState();
    Slot slot;
    const auto score = [&](ScoringState& state) {
        EXPECT_TRUE(model.ScoreRow(state, &Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
        return state.linearPredictor;
    };
    EXPECT_EQ(score(*first), 0.5 * (1 - 1.0) + 0.25 * (4 - 2.0));
    small.model.SetBasePointTable({0.0, 0.0});  // of runs that begin now
    second->SettleAs(*first);
    EXPECT_EQ(score(*first), 0.5);
    EXPECT_EQ(score(*second), 0.5);
    second->Unsettle();
    EXPECT_EQ(score(*second), 1.5);
}

TEST(CoxRegModel, ComputeRefValuesOfNoParameterSetsTheFlagAlone)
{
    Small small;
    small.model.SetBasePointTable({0.5, 3.0});
    CoxRegModel& model = small.Ready();
    std::vector<double> betas;
    for (const int count : {0, -1}) {
        model.computeRefValues(betas, count);
        EXPECT_TRUE(betas.empty());
    }
}

// New tables and limits take the place of the old ones in every look-up.
TEST(CoxRegModel, SecondBaselinesReplaceTheFirst)
{
    Small small(true);
    small.model.SetCumHazardTable({{{2.0, 0.5}}, {{3.0, 2.0}}}, {"south", "7"}, "s");
    small.model.SetMinMaxTime({2.0, 3.0}, {9.0, 9.0});
    const CoxRegModel& model = small.Ready();
    struct Expected {
        Given stratum;
        double hazard;
        double median;
    };
    Expected rows[] = {{"south", 0.5, kSysmis}, {"7", 2.0, 3.0}, {7.0, 2.0, 3.0}};
    for (Expected& row : rows) {
        const auto state = model.MakeState();
        state->survivalAsked.median = true;
        Slot slot;
        Case c;
        c.With("f", "a").With("x", 0.0).With("time", 5.0).With("s", std::move(row.stratum));
        ASSERT_TRUE(model.ScoreRow(*state, &c.Record(), slot.result, true).IsOK());
        EXPECT_EQ(slot.As<CoxRegResult>().GetCumHazardValue(), row.hazard);
        EXPECT_EQ(state->survival.median, row.median);
    }
    const auto state = model.MakeState();
    Slot slot;
    Case gone;
    gone.With("f", "a").With("x", 0.0).With("time", 5.0).With("s", "north");
    EXPECT_EQ(model.ScoreRow(*state, &gone.Record(), slot.result, true).GetErrorCode(), 90029);
}

TEST(CoxRegModel, CurveComputesDerivedPredictors)
{
    Small small;
    small.DerivedCovariate("d", 2.0);
    small.Parameters({"pd"});
    ASSERT_TRUE(small.SetUp());
    small.model.GetPPCMatrix()->SetCell("pd", "d", new NumericValue(1.0));
    small.Beta("pd", 0.75);
    small.Fill();
    Case c;
    c.With("f", "a").With("x", 0.0);
    std::vector<SurvivalPoint> curve;
    ASSERT_TRUE(small.model.CurveRow(*small.model.MakeState(), &c.Record(), false, curve).IsOK());
    ASSERT_EQ(curve.size(), 3U);
    EXPECT_EQ(curve[0].cumHazard, std::exp(1.5) * 0.1);
}

// A median within the limits as they stand: those that were set before leave nothing behind.
TEST(CoxRegModel, SecondLimitsReplaceTheFirst)
{
    Small small;                              // up to 12
    small.model.SetMinMaxTime({1.0}, {5.0});  // without the time of 0.7
    const CoxRegModel& model = small.Ready();
    const auto state = model.MakeState();
    state->survivalAsked.median = true;
    Slot slot;
    ASSERT_TRUE(model.ScoreRow(*state, &Row("a", 0.0, 5).Record(), slot.result, true).IsOK());
    EXPECT_EQ(state->survival.median, kSysmis);
    ASSERT_TRUE(model.ScoreRow(*state, &Row("b", 2.0, 5).Record(), slot.result, true).IsOK());
    EXPECT_EQ(state->survival.median, 4.0);
}

}  // namespace
}  // namespace MCVelscore_850
