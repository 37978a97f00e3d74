#include "models/gzlrmodel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "host/messages/scoringlog.h"
#include "models/lrresult.h"
#include "models/mlrresult.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

constexpr double kZ = 1.959963984540054;  // Phi^-1(0.975), as tables have it

// eta = 1 + 2 [f = b] + 0.5 x^2, under any link.
class Small : public Built<GZLRModel> {
public:
    explicit Small(GZLRModel::LinkFunction link = GZLRModel::LINK_IDENTITY,
                   std::unique_ptr<DictVar> target = Continuous("y"))
        : Built(std::move(target))
    {
        model.SetLinkFunction(link);
        Factor("f", {"a", "b"});
        Covariate("x");
        Parameters({"p0", "p1", "p2"});
    }
    // Everything but FinishSetup: the table's cells come after what the test sets.
    Small& Filled(bool covariances = true)
    {
        EXPECT_TRUE(SetUp());
        Cell("p1", "f", "b");
        Cell("p2", "x", "2");
        for (const auto& [category, row] : model.GetCategoryVector()) {
            model.GetParamTable()->SetCell(category, "p0", ParamTableCell(1.0, 1));
            model.GetParamTable()->SetCell(category, "p1", ParamTableCell(2.0, 1));
            model.GetParamTable()->SetCell(category, "p2", ParamTableCell(0.5, 1));
        }
        if (!covariances) return *this;
        PCovMatrix& v = *model.CreatePCovMatrix();
        v.SetCell("p0", "p0", 1.0);
        v.SetCell("p1", "p1", 4.0);
        v.SetCell("p0", "p1", 0.5);
        v.SetCell("p2", "p2", 0.25);
        return *this;
    }
    GZLRModel& Ready(bool covariances = true)
    {
        Filled(covariances);
        model.FinishSetup();
        return model;
    }
};

Case Row(Given f, Given x)
{
    return std::move(Case().With("f", std::move(f)).With("x", std::move(x)));
}

// One case; the slot keeps the result.
struct Scored {
    Slot slot;
    MCScore::MCStatus status;
    LRResult& Numbers() { return slot.As<LRResult>(); }
    MLRResult& Classes() { return slot.As<MLRResult>(); }
    std::string Text() const { return slot.result->GetPrediction()->GetString(); }
};

void Score(GZLRModel& model, Case& c, Scored& scored)
{
    scored.status = model.GetScore(&c.Record(), scored.slot.result, true);
}

TEST(GZLRModel, ScoresMeanErrorAndLimits)
{
    Small small(GZLRModel::LINK_LOG);
    GZLRModel& model = small.Ready();
    Scored scored;
    Case c = Row("b", 2.0);
    Score(model, c, scored);
    ASSERT_TRUE(scored.status.IsOK());
    // eta = 1 + 2 + 0.5 * 4; d = (1, 1, 4): 1 + 4 + 2 * 0.5 + 16 * 0.25 = 10
    EXPECT_EQ(scored.slot.Number(), std::exp(5.0));
    EXPECT_EQ(scored.Numbers().GetStdDev(), std::sqrt(10.0));
    // The quantile is right to about 1 part in 1e15, and exp takes an error of 6.2 times that.
    const double lower = std::exp(5.0 - kZ * std::sqrt(10.0));
    const double upper = std::exp(5.0 + kZ * std::sqrt(10.0));
    EXPECT_NEAR(scored.Numbers().GetCIBottom(), lower, 1e-14 * lower);
    EXPECT_NEAR(scored.Numbers().GetCITop(), upper, 1e-14 * upper);
}

TEST(GZLRModel, NumericTargetHasOneRowUnderItsOwnName)
{
    Small small;
    GZLRModel& model = small.Ready();
    EXPECT_EQ(model.GetCategoryVector(), (RegressionModel::NameVector{{"GZLRdummy", 0}}));
    EXPECT_EQ(model.GetModelType(), ScoreModel::TYPE_GZLR);
    EXPECT_TRUE(model.GetNumericPPMatrix().empty());
}

TEST(GZLRModel, WithoutCovariancesBothLimitsAreTheMean)
{
    Small small(GZLRModel::LINK_LOGIT);
    GZLRModel& model = small.Ready(false);
    Scored scored;
    Case c = Row("a", 1.0);
    Score(model, c, scored);
    EXPECT_EQ(scored.Numbers().GetStdDev(), 0.0);
    EXPECT_EQ(scored.Numbers().GetCIBottom(), scored.slot.Number());
    EXPECT_EQ(scored.Numbers().GetCITop(), scored.slot.Number());
}

TEST(GZLRModel, CovariateOfZeroDropsItsParameterWhateverTheExponent)
{
    for (const char* exponent : {"2", "0", "-1"}) {
        Built<GZLRModel> built;
        built.Covariate("x");
        built.Parameters({"p0", "p1"});
        ASSERT_TRUE(built.SetUp());
        built.Cell("p1", "x", exponent);
        built.Beta("p0", 3.0);
        built.Beta("p1", 5.0);
        built.model.FinishSetup();
        Scored scored;
        Case zero;
        zero.With("x", 0.0);
        Score(built.model, zero, scored);
        EXPECT_EQ(scored.slot.Number(), 3.0) << exponent;
        Case one;
        one.With("x", 1.0);
        Score(built.model, one, scored);
        EXPECT_EQ(scored.slot.Number(), 8.0) << exponent;
    }
}

TEST(GZLRModel, FractionalExponentIsAPower)
{
    Built<GZLRModel> built;
    built.Covariate("x");
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    built.Cell("p", "x", "2.5");
    built.Beta("p", 1.0);
    built.model.FinishSetup();
    Scored scored;
    Case c;
    c.With("x", 4.0);
    Score(built.model, c, scored);
    EXPECT_EQ(scored.slot.Number(), 32.0);  // 4^2.5
}

TEST(GZLRModel, MeanThatDoesNotExistIsAMissingPredictionWithStatusOK)
{
    Small small(GZLRModel::LINK_LOG);
    GZLRModel& model = small.Ready(false);
    Scored scored;
    Case c = Row("a", 100.0);  // eta 5001
    Score(model, c, scored);
    EXPECT_TRUE(scored.status.IsOK());
    EXPECT_EQ(scored.slot.Number(), kSysmis);
    EXPECT_EQ(scored.Numbers().GetCIBottom(), kSysmis);
}

TEST(GZLRModel, PredictionOnlyLeavesErrorAndLimitsAsTheyWere)
{
    Small small;
    GZLRModel& model = small.Ready();
    Scored scored;
    Case first = Row("b", 2.0);
    Score(model, first, scored);
    const double top = scored.Numbers().GetCITop();
    model.SetPredictionOnly(true);
    Case second = Row("a", 0.0);
    Score(model, second, scored);
    EXPECT_EQ(scored.slot.Number(), 1.0);
    EXPECT_EQ(scored.Numbers().GetStdDev(), std::sqrt(10.0));
    EXPECT_EQ(scored.Numbers().GetCITop(), top);
}

TEST(GZLRModel, CovarianceIsMultipliedByTheRowsDesignValueFirst)
{
    Built<GZLRModel> built;
    built.Covariate("x");
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    built.Cell("p", "x", "1");
    built.Beta("p", 1.0);
    built.model.CreatePCovMatrix()->SetCell("p", "p", 0.3);
    built.model.FinishSetup();
    Scored scored;
    Case c;
    c.With("x", 1.7);
    Score(built.model, c, scored);
    EXPECT_EQ(scored.Numbers().GetStdDev(), std::sqrt((0.3 * 1.7) * 1.7));
    EXPECT_NE(scored.Numbers().GetStdDev(), std::sqrt(0.3 * (1.7 * 1.7)));
}

TEST(GZLRModel, NegativeVarianceFromRoundingIsAnErrorOfZero)
{
    Built<GZLRModel> built;
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    built.Beta("p", 2.0);
    built.model.CreatePCovMatrix()->SetCell("p", "p", -1e-20);
    built.model.FinishSetup();
    Scored scored;
    Case c;
    Score(built.model, c, scored);
    EXPECT_EQ(scored.Numbers().GetStdDev(), 0.0);
    EXPECT_EQ(scored.Numbers().GetCITop(), 2.0);
}

// Limits of the mean at eta -+ z se, by link; which of the two is larger.
TEST(GZLRModel, CovarianceOfZeroAddsNothingToTheVarianceOfAnInfiniteDesignValue)
{
    Small small;
    small.Filled().model.GetPCovMatrix()->SetCell("p2", "p2", 0.0);
    small.model.FinishSetup();
    Scored scored;
    Case c = Row("b", 1e200);  // its square is infinite
    Score(small.model, c, scored);
    ASSERT_TRUE(scored.status.IsOK());
    EXPECT_EQ(scored.Numbers().GetStdDev(), std::sqrt(6.0));  // 1 + 4 + 2 * 0.5
}

TEST(GZLRModel, OnlyANegativePowerSwapsTheLimits)
{
    GZLRModel model;
    model.SetLinkFunction(GZLRModel::LINK_POWER);
    model.SetLinkParameter(-1.0);
    auto [lower, upper] = model.GetCIMeanPred(4.0, 1.0, -1);
    EXPECT_DOUBLE_EQ(lower, 1.0 / (4.0 + kZ));
    EXPECT_DOUBLE_EQ(upper, 1.0 / (4.0 - kZ));
    model.SetLinkParameter(0.5);
    std::tie(lower, upper) = model.GetCIMeanPred(4.0, 1.0, -1);
    EXPECT_DOUBLE_EQ(lower, (4.0 - kZ) * (4.0 - kZ));
    EXPECT_DOUBLE_EQ(upper, (4.0 + kZ) * (4.0 + kZ));
    model.SetLinkParameter(0.0);  // the exponential, which rises
    std::tie(lower, upper) = model.GetCIMeanPred(4.0, 1.0, -1);
    EXPECT_NEAR(lower, std::exp(4.0 - kZ), 1e-14 * lower);
    EXPECT_NEAR(upper, std::exp(4.0 + kZ), 1e-14 * upper);
    // A mean that falls under another link leaves the lower above the upper.
    model.SetLinkFunction(GZLRModel::LINK_LOGC);
    model.SetLinkParameter(-1.0);
    std::tie(lower, upper) = model.GetCIMeanPred(-2.0, 0.5, -1);
    EXPECT_DOUBLE_EQ(lower, 1.0 - std::exp(-2.0 - 0.5 * kZ));
    EXPECT_DOUBLE_EQ(upper, 1.0 - std::exp(-2.0 + 0.5 * kZ));
    EXPECT_GT(lower, upper);
}

TEST(GZLRModel, LimitsOfAnErrorThatIsMissingAreMissing)
{
    const GZLRModel model;
    EXPECT_EQ(model.GetCIMeanPred(1.0, kSysmis, -1), (std::pair{kSysmis, kSysmis}));
    EXPECT_EQ(model.GetCIMeanPred(1.0, 0.0, -1), (std::pair{1.0, 1.0}));
}

TEST(GZLRModel, TrialsScaleABinomialMeanAlone)
{
    GZLRModel model;
    model.SetTrialsValue(20);
    EXPECT_EQ(model.GetMeanPred(0.25, -1), 0.25);
    EXPECT_EQ(model.GetCIMeanPred(0.25, 0.0, -1).first, 0.25);
    model.SetDistType(GZLRModel::DIST_BINOMIAL);
    EXPECT_EQ(model.GetMeanPred(0.25, -1), 5.0);
    EXPECT_EQ(model.GetMeanPred(0.25, 8), 5.0);  // the value, not the case's
    EXPECT_EQ(model.GetCIMeanPred(0.25, 0.0, -1), (std::pair{5.0, 5.0}));
    GZLRModel byVariable;
    byVariable.SetDistType(GZLRModel::DIST_BINOMIAL);
    const auto n = Continuous("n");
    byVariable.SetTrialsVar(n.get());
    EXPECT_EQ(byVariable.GetMeanPred(0.25, 8), 2.0);
    EXPECT_EQ(byVariable.GetCIMeanPred(0.25, 0.0, 8).second, 2.0);
}

TEST(GZLRModel, MeanThatIsMissingIsNotScaledButALimitIs)
{
    GZLRModel model;
    model.SetLinkFunction(GZLRModel::LINK_LOG);
    model.SetDistType(GZLRModel::DIST_BINOMIAL);
    model.SetTrialsValue(20);
    EXPECT_EQ(model.GetMeanPred(800.0, -1), kSysmis);
    const auto [lower, upper] = model.GetCIMeanPred(708.0, 1.0, -1);
    EXPECT_EQ(lower, std::exp(708.0 - kZ) * 20.0);
    EXPECT_EQ(upper, kSysmis * 20.0);
}

TEST(GZLRModel, FirstSetterOfTrialsAndOfOffsetWins)
{
    const auto v = Continuous("v");
    GZLRModel model;
    model.SetTrialsValue(0);  // no trials: dropped
    model.SetTrialsValue(-3);
    model.SetTrialsVar(v.get());
    model.SetTrialsValue(5);
    EXPECT_EQ(model.GetTrialsVar(), v.get());
    EXPECT_EQ(model.GetTrialsValue(), -1);
    model.SetOffsetValue(2.0);
    model.SetOffsetVar(v.get());
    model.SetOffsetValue(3.0);
    EXPECT_EQ(model.GetOffsetVar(), nullptr);
    EXPECT_EQ(model.GetOffsetValue(), 2.0);
    GZLRModel other;
    other.SetTrialsValue(5);
    other.SetTrialsVar(v.get());
    EXPECT_EQ(other.GetTrialsVar(), nullptr);
    EXPECT_EQ(other.GetTrialsValue(), 5);
}

TEST(GZLRModel, OffsetJoinsTheLinearPredictorAndNotTheVariance)
{
    Small small;
    small.model.SetOffsetValue(100.0);
    GZLRModel& model = small.Ready();
    Scored scored;
    Case c = Row("a", 0.0);
    Score(model, c, scored);
    EXPECT_EQ(scored.slot.Number(), 101.0);
    EXPECT_EQ(scored.Numbers().GetStdDev(), 1.0);
}

// The model of Small with an offset variable o and a trials variable n.
class WithVariables : public Small {
public:
    DictVar& o;
    DictVar& n;
    WithVariables()
        : o(AddPlain("o", ScoreModel::ROLE_OFFSET)), n(AddPlain("n", ScoreModel::ROLE_PREDICTOR))
    {
        model.SetDistType(GZLRModel::DIST_BINOMIAL);
        model.SetTrialsVar(&n);
        model.SetOffsetVar(&o);
    }
    MCScore::MCStatus Score(Given f, Given x, Given offset, Given trials)
    {
        Case c = Row(std::move(f), std::move(x));
        c.With("n", std::move(trials)).With("o", std::move(offset));
        last = std::make_unique<Case>(std::move(c));
        return model.GetScore(&last->Record(), slot.result, true);
    }
    Slot slot;
    std::unique_ptr<Case> last;

private:
    DictVar& AddPlain(const std::string& name, ScoreModel::VarRole role)
    {
        auto var = Continuous(name);
        DictVar& added = *var;
        Dictionary().AddVar(name, var.release());
        model.SetVarRole(&added, role);
        return added;
    }
};

TEST(GZLRModel, OffsetAndTrialsVariablesAreReadFromTheCase)
{
    WithVariables w;
    w.Ready();
    ASSERT_TRUE(w.Score("b", 2.0, 0.25, 4.0).IsOK());
    EXPECT_EQ(w.slot.Number(), (5.0 + 0.25) * 4.0);
    ASSERT_TRUE(w.Score("b", 2.0, 0.25, 2.9).IsOK());  // truncated
    EXPECT_EQ(w.slot.Number(), (5.0 + 0.25) * 2.0);
    ASSERT_TRUE(w.Score("b", 2.0, 0.25, -2.9).IsOK());
    EXPECT_EQ(w.slot.Number(), (5.0 + 0.25) * -2.0);
    ASSERT_TRUE(w.Score("b", 2.0, 0.25, 2147483647.5).IsOK());
    EXPECT_EQ(w.slot.Number(), (5.0 + 0.25) * 2147483647.0);
}

TEST(GZLRModel, OffsetOrTrialsThatAreMissingFailTheCaseWithoutNamingIt)
{
    WithVariables w;
    Replace(w.o, 5.0);  // an offset is no covariate: nothing stands in
    w.Ready();
    for (const bool offset : {false, true}) {
        const auto status =
            offset ? w.Score("a", 1.0, kSysmis, 1.0) : w.Score("a", 1.0, 1.0, kSysmis);
        EXPECT_EQ(status.GetErrorCode(), 90029);
        EXPECT_EQ(status.GetDiscreteDatum(), -1);
        EXPECT_EQ(w.slot.Number(), kSysmis);
    }
}

TEST(GZLRModel, StatusOnlyPolicyKeepsTheWholeResult)
{
    WithVariables w;
    w.model.SetMissingValuePolicy(ScoreModel::MV_STATUS_ONLY);
    w.Ready();
    ASSERT_TRUE(w.Score("a", 1.0, 1.0, 2.0).IsOK());
    const double top = w.slot.As<LRResult>().GetCITop();
    EXPECT_EQ(w.Score("c", 1.0, 1.0, 2.0).GetErrorCode(), 90029);
    EXPECT_EQ(w.Score("a", kSysmis, 1.0, 2.0).GetErrorCode(), 90029);
    EXPECT_EQ(w.Score("a", 1.0, kSysmis, 2.0).GetErrorCode(), 90029);
    EXPECT_EQ(w.Score("a", 1.0, 1.0, kSysmis).GetErrorCode(), 90029);
    EXPECT_EQ(w.slot.Number(), 5.0);  // (1 + 0.5 + 1) * 2
    EXPECT_EQ(w.slot.As<LRResult>().GetCITop(), top);
}

TEST(GZLRModel, BadValueLeavesErrorAndLimitsOfTheCaseBefore)
{
    Small small;
    small.model.SetMissingValuePolicy(ScoreModel::MV_SYSMIS_RESULT);
    GZLRModel& model = small.Ready();
    Scored scored;
    Case good = Row("b", 2.0);
    Score(model, good, scored);
    Case bad = Row("c", 2.0);
    Score(model, bad, scored);
    EXPECT_EQ(scored.status.GetErrorCode(), 90029);
    EXPECT_EQ(scored.slot.Number(), kSysmis);
    EXPECT_EQ(scored.Numbers().GetStdDev(), std::sqrt(10.0));
}

TEST(GZLRModel, TrialsThatAreNoNumberOrNoIntFailTheCase)
{
    for (const double trials :
         {2147483648.0, -2147483649.0, 1e300, std::nan(""), NumericValue::GetInfinity()}) {
        WithVariables w;
        w.Ready();
        w.model.SetScoreCaseValidationCheck(false);  // else NaN and infinity end before
        EXPECT_EQ(w.Score("a", 1.0, 1.0, trials).GetErrorCode(), 90029) << trials;
        EXPECT_EQ(w.slot.Number(), kSysmis) << trials;
    }
    WithVariables w;
    w.model.SetMissingValuePolicy(ScoreModel::MV_STATUS_ONLY);
    w.Ready();
    ASSERT_TRUE(w.Score("a", 1.0, 1.0, 2.0).IsOK());
    EXPECT_EQ(w.Score("a", 1.0, 1.0, 3e9).GetErrorCode(), 90029);
    EXPECT_EQ(w.slot.Number(), 5.0);  // (1 + 0.5 + 1) * 2, of the case before
}

TEST(GZLRModel, CovariateOffsetIsReadOnceMoreAtItsOwnPlace)
{
    Small small;
    small.model.SetOffsetVar(small.Dictionary().GetVar("x"));
    GZLRModel& model = small.Ready();
    Scored scored;
    Case c = Row("a", 3.0);
    Score(model, c, scored);
    EXPECT_EQ(scored.slot.Number(), 1.0 + 0.5 * 9.0 + 3.0);
    ModelDescription about;
    model.Describe(about);
    EXPECT_EQ(about.variables, (std::vector<std::string>{"f", "x"}));
    EXPECT_EQ(about.covariates, (std::vector<std::string>{"x"}));
}

TEST(GZLRModel, UnderSubstitutionTheReplacementAloneStandsIn)
{
    Small small;
    DictVar& x = static_cast<DictVar&>(*small.Dictionary().GetVar("x"));
    Replace(small.Covariate("kept"), 1.0);  // keeps the policy
    auto mean = std::make_unique<VarStats>();
    mean->SetMean(3.0);
    x.SetVarStats(mean.release());
    GZLRModel& model = small.Ready();
    Scored scored;
    Case c = Row("a", kSysmis);
    c.With("kept", 1.0);
    Score(model, c, scored);
    EXPECT_EQ(scored.status.GetErrorCode(), 90029);  // the field's mean doesn't
    EXPECT_EQ(scored.slot.Number(), kSysmis);

    Replace(x, 2.0);
    Case replaced = Row("a", kSysmis);
    replaced.With("kept", 1.0);
    Score(model, replaced, scored);
    EXPECT_TRUE(scored.status.IsOK());
    EXPECT_EQ(scored.slot.Number(), 3.0);
    EXPECT_EQ(replaced.Record().GetValue("x")->GetDouble(), 2.0);

    // Any number stands in, the system-missing one too.
    Replace(x, kSysmis);
    Case missing = Row("a", kSysmis);
    missing.With("kept", 1.0);
    Score(model, missing, scored);
    EXPECT_TRUE(scored.status.IsOK());
    EXPECT_EQ(scored.slot.Number(), NumericValue::GetInfinity());  // 0.5 times its square

    // The role is the one of that moment.
    Replace(x, 2.0);
    model.SetVarRole("x", ScoreModel::ROLE_OFFSET);
    Case other = Row("a", kSysmis);
    other.With("kept", 1.0);
    Score(model, other, scored);
    EXPECT_EQ(scored.status.GetErrorCode(), 90029);
}

TEST(GZLRModel, NullRecordIsTraced)
{
    Small small;
    GZLRModel& model = small.Ready();
    std::vector<std::string> lines;
    ScoringLog* log = ScoringLog::GetInstance();
    log->SetSink([&](int, std::string_view line) { lines.emplace_back(line); });
    log->SetLevel(1);
    Slot slot;
    EXPECT_EQ(model.GetScore(nullptr, slot.result, true).GetErrorCode(), 90029);
    log->SetLevel(0);
    log->SetSink(nullptr);
    EXPECT_EQ(slot.result, nullptr);
    EXPECT_EQ(lines, std::vector<std::string>{"MCStatus error code is :90029"});
}

std::unique_ptr<DictVar> YesNo() { return Categorical("y", {"yes", "no"}); }

TEST(GZLRModel, TwoCategoriesAreClassified)
{
    Small small(GZLRModel::LINK_LOGIT, YesNo());
    GZLRModel& model = small.Ready();
    Scored scored;
    Case c = Row("b", 2.0);
    Score(model, c, scored);
    ASSERT_TRUE(scored.status.IsOK());
    const double mean = 1.0 / (1.0 + std::exp(-5.0));
    EXPECT_EQ(scored.Text(), "yes");  // the first category is the event
    const auto& percents = scored.Classes().GetAllValuePercent();
    ASSERT_EQ(percents.size(), 2u);
    EXPECT_EQ(percents[0].first->GetString(), "yes");
    EXPECT_DOUBLE_EQ(percents[0].second, mean);
    EXPECT_EQ(percents[1].first->GetString(), "no");
    EXPECT_EQ(percents[1].second, 1.0 - percents[0].second);

    // The same result again: its objects stay.
    const ScoreValue* prediction = scored.slot.result->GetPrediction();
    model.SetLinkFunction(GZLRModel::LINK_LOGC);
    Case other = Row("a", 0.0);  // 1 - exp(1)
    Score(model, other, scored);
    EXPECT_EQ(scored.slot.result->GetPrediction(), prediction);
    EXPECT_EQ(scored.Text(), "no");
    ASSERT_EQ(percents.size(), 2u);
    EXPECT_EQ(percents[0].second, 1.0 - std::exp(1.0));
}

TEST(GZLRModel, BadValueOfATextTargetReadsByTheResultAndLeavesThePercents)
{
    Small small(GZLRModel::LINK_LOGIT, YesNo());
    small.model.SetMissingValuePolicy(ScoreModel::MV_SYSMIS_RESULT);
    GZLRModel& model = small.Ready();
    Scored scored;
    Case bad = Row("b", kSysmis);
    Score(model, bad, scored);
    EXPECT_EQ(scored.status.GetErrorCode(), 90029);
    EXPECT_EQ(scored.Text(), "");
    EXPECT_TRUE(scored.Classes().GetAllValuePercent().empty());
    Case good = Row("b", 2.0);
    Score(model, good, scored);
    ASSERT_EQ(scored.Classes().GetAllValuePercent().size(), 2u);
    const double percent = scored.Classes().GetAllValuePercent()[0].second;
    Score(model, bad, scored);
    EXPECT_EQ(scored.Text(), "NULL");
    EXPECT_EQ(scored.Classes().GetAllValuePercent()[0].second, percent);
}

TEST(GZLRModel, NumericCategoriesAreWrittenAsNumbers)
{
    Small small(GZLRModel::LINK_LOGIT, Categorical("y", {"1", "0"}, ScoreDictVar::NUMERIC));
    GZLRModel& model = small.Ready();
    Scored scored;
    Case c = Row("b", 2.0);
    Score(model, c, scored);
    EXPECT_EQ(scored.slot.Number(), 1.0);
    model.SetLinkFunction(GZLRModel::LINK_LOGC);
    Case other = Row("a", 0.0);
    Score(model, other, scored);
    EXPECT_EQ(scored.slot.Number(), 0.0);
}

// A two-category model whose mean is beta, under the identity link.
class Fixed : public Built<GZLRModel> {
public:
    explicit Fixed(double beta, std::unique_ptr<DictVar> target = YesNo())
        : Built(std::move(target))
    {
        Parameters({"p"});
        EXPECT_TRUE(SetUp());
        for (const auto& [category, row] : model.GetCategoryVector()) {
            model.GetParamTable()->SetCell(category, "p", ParamTableCell(beta, 1));
        }
        model.FinishSetup();
    }
    Scored& Score()
    {
        scored.status = model.GetScore(&c.Record(), scored.slot.result, true);
        return scored;
    }
    Case c;
    Scored scored;
};

TEST(GZLRModel, MeanOfOneHalfIsTheEvent)
{
    EXPECT_EQ(Fixed(0.5).Score().Text(), "yes");
    EXPECT_EQ(Fixed(std::nextafter(0.5, 0.0)).Score().Text(), "no");
}

TEST(GZLRModel, MeanThatIsNoNumberIsTheOtherCategory)
{
    Fixed fixed(std::nan(""));
    EXPECT_EQ(fixed.Score().Text(), "no");
    EXPECT_TRUE(fixed.scored.status.IsOK());
    EXPECT_TRUE(std::isnan(fixed.scored.Classes().GetAllValuePercent()[0].second));
}

TEST(GZLRModel, ScaledMeanIsComparedAsItStands)
{
    Fixed fixed(0.1);
    fixed.model.SetDistType(GZLRModel::DIST_BINOMIAL);
    fixed.model.SetTrialsValue(20);
    EXPECT_EQ(fixed.Score().Text(), "yes");
    EXPECT_EQ(fixed.scored.Classes().GetAllValuePercent()[0].second, 2.0);
}

TEST(GZLRModel, CategoriesWithoutAMeanFailTheCaseAndHaveMissingPercents)
{
    Fixed fixed(800.0);
    fixed.model.SetLinkFunction(GZLRModel::LINK_LOG);
    EXPECT_EQ(fixed.Score().status.GetErrorCode(), 90028);
    EXPECT_EQ(fixed.scored.Text(), "");
    const auto& percents = fixed.scored.Classes().GetAllValuePercent();
    ASSERT_EQ(percents.size(), 2u);
    EXPECT_EQ(percents[0].second, kSysmis);
    EXPECT_EQ(percents[1].second, 1.0 - kSysmis);
    EXPECT_EQ(fixed.Score().status.GetErrorCode(), 90028);
    EXPECT_EQ(fixed.scored.Text(), "NULL");  // the second time, into a reused result
    // Under the policy that writes nothing for a bad value too.
    fixed.model.SetMissingValuePolicy(ScoreModel::MV_STATUS_ONLY);
    Scored fresh;
    Case c;
    Score(fixed.model, c, fresh);
    EXPECT_EQ(fresh.Text(), "");
}

TEST(GZLRModel, PredictionOnlyWritesNoPercents)
{
    Fixed fixed(0.75);
    fixed.model.SetPredictionOnly(true);
    EXPECT_EQ(fixed.Score().Text(), "yes");
    EXPECT_TRUE(fixed.scored.Classes().GetAllValuePercent().empty());
    fixed.model.SetPredictionOnly(false);
    fixed.Score();
    EXPECT_EQ(fixed.scored.Classes().GetAllValuePercent().size(), 2u);
}

TEST(GZLRModel, ReusedResultOfAnotherKindIsReplaced)
{
    Fixed fixed(0.75);
    fixed.scored.slot.result = new LRResult(fixed.model.GetTargetVar());
    EXPECT_EQ(fixed.Score().slot.result->GetScoreResultType(), ScoreResult::MLR_RESULT);
}

TEST(GZLRModel, OneCategoryHasNothingToChooseBelowOneHalf)
{
    Fixed fixed(0.25, Categorical("y", {"yes"}));
    EXPECT_EQ(fixed.Score().status.GetErrorCode(), 90028);
    EXPECT_EQ(fixed.scored.Classes().GetAllValuePercent().size(), 1u);
    Fixed event(0.75, Categorical("y", {"yes"}));
    EXPECT_EQ(event.Score().Text(), "yes");
    EXPECT_TRUE(event.scored.status.IsOK());
}

TEST(GZLRModel, MoreThanTwoCategoriesCantBeSetUp)
{
    Built<GZLRModel> built(Categorical("y", {"a", "b", "c"}));
    EXPECT_FALSE(built.SetUp());
    EXPECT_EQ(built.model.GetParamTable(), nullptr);
    EXPECT_EQ(built.model.GetPPCMatrix(), nullptr);
}

TEST(GZLRModel, UnknownPredictorCantBeSetUpButHasTables)
{
    Built<GZLRModel> built;
    built.model.AddPredictor("nowhere");
    EXPECT_FALSE(built.SetUp());
    EXPECT_NE(built.model.GetParamTable(), nullptr);
    EXPECT_NE(built.model.GetPPCMatrix(), nullptr);
    EXPECT_EQ(built.model.GetPCovMatrix(), nullptr);
}

// Rows of betas 0.75 for yes and 0.25 for no, identity link.
class TwoRows : public Built<GZLRModel> {
public:
    TwoRows() : Built(YesNo())
    {
        Parameters({"p"});
        EXPECT_TRUE(SetUp());
        model.GetParamTable()->SetCell("yes", "p", ParamTableCell(0.75, 1));
        model.GetParamTable()->SetCell("no", "p", ParamTableCell(0.25, 1));
        model.FinishSetup();
    }
    double EventPercent()
    {
        model.GetScore(&c.Record(), slot.result, true);
        return slot.As<MLRResult>().GetAllValuePercent()[0].second;
    }
    Case c;
    Slot slot;
};

TEST(GZLRModel, NamedCategoryBecomesTheEventAndItsRowIsRead)
{
    TwoRows plain;
    EXPECT_EQ(plain.EventPercent(), 0.75);
    TwoRows named;
    named.model.UpdateResAndRefCat("no");
    EXPECT_EQ(named.EventPercent(), 0.25);
    const auto& percents = named.slot.As<MLRResult>().GetAllValuePercent();
    EXPECT_EQ(percents[0].first->GetString(), "no");
    EXPECT_EQ(named.slot.result->GetPrediction()->GetString(), "yes");
}

TEST(GZLRModel, SetupMakesTheFirstCategoryTheEventWhateverWasSetBefore)
{
    Built<GZLRModel> built(YesNo());
    built.Parameters({"p"});
    built.model.UpdateResAndRefCat("no");
    ASSERT_TRUE(built.SetUp());
    built.model.GetParamTable()->SetCell("yes", "p", ParamTableCell(0.75, 1));
    built.model.GetParamTable()->SetCell("no", "p", ParamTableCell(0.125, 1));
    built.model.FinishSetup();
    Case c;
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    const auto& percents = slot.As<MLRResult>().GetAllValuePercent();
    ASSERT_EQ(percents.size(), 2u);
    EXPECT_EQ(percents[0].first->GetString(), "yes");
    EXPECT_EQ(percents[0].second, 0.75);
    EXPECT_EQ(percents[1].first->GetString(), "no");
    EXPECT_EQ(slot.result->GetPrediction()->GetString(), "yes");
}

TEST(GZLRModel, EmptyOrUnknownNameOfTheEvent)
{
    TwoRows empty;
    empty.model.UpdateResAndRefCat("");
    EXPECT_EQ(empty.EventPercent(), 0.75);
    // A name that no category bears leaves the event and makes the last category the other one.
    TwoRows unknown;
    unknown.model.UpdateResAndRefCat("maybe");
    EXPECT_EQ(unknown.EventPercent(), 0.75);
    Small numeric;
    GZLRModel& model = numeric.Ready();
    model.UpdateResAndRefCat("1");  // no categories: nothing happens
    Scored scored;
    Case c = Row("a", 0.0);
    Score(model, c, scored);
    EXPECT_EQ(scored.slot.Number(), 1.0);
}

TEST(GZLRModel, EventIsComparedAsWritten)
{
    Built<GZLRModel> built(Categorical("y", {"0", "1"}, ScoreDictVar::NUMERIC));
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    built.model.GetParamTable()->SetCell("0", "p", ParamTableCell(0.75, 1));
    built.model.UpdateResAndRefCat("1.0");  // isn't the dictionary's text
    built.model.FinishSetup();
    Slot slot;
    Case c;
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Number(), 0.0);
}

TEST(GZLRModel, RowOfBetasIsSettledByTheFirstCase)
{
    TwoRows rows;
    EXPECT_EQ(rows.EventPercent(), 0.75);
    rows.model.UpdateResAndRefCat("no");
    rows.EventPercent();
    EXPECT_EQ(rows.slot.result->GetPrediction()->GetString(), "no");  // a mean of 0.75 still
}

TEST(GZLRModel, RowOfBetasIsSettledAlsoByACaseThatFails)
{
    Built<GZLRModel> built(YesNo());
    built.Covariate("x");
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    built.Beta("yes", "p", 0.75);
    built.Beta("no", "p", 0.25);
    built.model.FinishSetup();
    Slot slot;
    Case bad;
    bad.With("x", kSysmis);
    EXPECT_EQ(built.model.GetScore(&bad.Record(), slot.result, true).GetErrorCode(), 90029);
    built.model.UpdateResAndRefCat("no");
    Case good;
    good.With("x", 1);
    ASSERT_TRUE(built.model.GetScore(&good.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Percent("no"), 0.75);  // the row of yes still
}

TEST(GZLRModel, CellWrittenAfterTheSetupIsFinishedChangesNoScore)
{
    Small small;
    GZLRModel& model = small.Ready();
    Scored scored;
    Case c = Row("b", 2.0);
    const double score = 1.0 + 2.0 + 0.5 * 4.0;
    static_cast<StringValue&>(*model.GetPPCMatrix()->GetCell("p1", "f")).SetString("a");
    Score(model, c, scored);
    EXPECT_EQ(scored.slot.Number(), score);
    small.Cell("p1", "f", "a");  // releases the value that stood there
    small.Cell("p2", "x", "3");
    Score(model, c, scored);
    EXPECT_EQ(scored.slot.Number(), score);
}

std::string LinesAfterTheCommonPart(const GZLRModel& model)
{
    std::ostringstream out;
    model.Display(out);
    const std::string text = out.str();
    EXPECT_EQ(text.rfind("Begin display of GZLRModel\n", 0), 0u);
    const std::string end = "End display of RegressionModel.\n";
    return text.substr(text.find(end) + end.size());
}

TEST(GZLRModel, DisplayTellsLinkDistributionAndOffset)
{
    Small small;
    GZLRModel& model = small.Ready();
    EXPECT_EQ(LinesAfterTheCommonPart(model),
              "Link function: Identity\nDistribution: Normal\nEnd display of GZLRModel\n");
    model.SetLinkFunction(GZLRModel::LINK_POWER);
    model.SetLinkParameter(-0.5);
    model.SetDistType(GZLRModel::DIST_IGAUSS);
    model.SetOffsetValue(2.5);
    EXPECT_EQ(LinesAfterTheCommonPart(model),
              "Link function: Power\nLink parameter: -0.5\nDistribution: Inverse Gaussian\n"
              "Offset value: 2.5\nEnd display of GZLRModel\n");
    model.SetLinkFunction(GZLRModel::LINK_LOGIT);
    model.SetDistType(GZLRModel::DIST_BINOMIAL);
    EXPECT_EQ(LinesAfterTheCommonPart(model),
              "Link function: Logit\nDistribution: Binomial, target is binary\n"
              "Offset value: 2.5\nEnd display of GZLRModel\n");
    model.SetTrialsValue(20);
    EXPECT_NE(LinesAfterTheCommonPart(model).find("Binomial, events and trials: 20\n"),
              std::string::npos);
    WithVariables w;
    EXPECT_EQ(LinesAfterTheCommonPart(w.Ready()),
              "Link function: Identity\nDistribution: Binomial, events and trials: n\n"
              "Offset variable: o\nEnd display of GZLRModel\n");
}

TEST(GZLRModel, DescribesAConstantOffsetWithItsSign)
{
    const std::pair<double, const char*> offsets[] = {{-1.5, "eta, eta = linear predictor - 1.5"},
                                                      {1.5, "eta, eta = linear predictor + 1.5"}};
    for (const auto& [offset, mean] : offsets) {
        Built<GZLRModel> built;
        built.Covariate("x");
        built.Parameters({"b"});
        built.model.SetLinkFunction(GZLRModel::LINK_IDENTITY);
        built.model.SetOffsetValue(offset);
        ASSERT_TRUE(built.SetUp());
        built.model.FinishSetup();
        ModelDescription about;
        built.model.Describe(about);
        EXPECT_EQ(about.mean, mean);
    }
}

TEST(GZLRModel, DescribesMeanLinkAndWhatACaseIsReadFor)
{
    WithVariables w;
    w.model.SetLinkFunction(GZLRModel::LINK_ODDSPOWER);
    w.model.SetLinkParameter(0.5);
    ModelDescription about;
    w.Ready().Describe(about);
    EXPECT_EQ(about.link, "Odds power");
    EXPECT_TRUE(about.hasLinkParameter);
    EXPECT_EQ(about.linkParameter, 0.5);
    EXPECT_EQ(about.distribution, "Binomial");
    EXPECT_EQ(about.offset, "o");
    EXPECT_EQ(about.trials, "n");
    EXPECT_EQ(about.variables, (std::vector<std::string>{"f", "x", "o", "n"}));
    EXPECT_EQ(about.covariates, (std::vector<std::string>{"x"}));
    EXPECT_EQ(
        about.mean,
        "n * (1 + k eta)^(1/k) / (1 + (1 + k eta)^(1/k)), eta = linear predictor + o, k = 0.5");
    EXPECT_EQ(about.resultType, ScoreResult::LR_RESULT);
    EXPECT_TRUE(about.targetCategories.empty());
    // The trials multiply the whole of a difference.
    w.model.SetLinkFunction(GZLRModel::LINK_CLOGLOG);
    w.model.Describe(about);
    EXPECT_EQ(about.mean, "n * (1 - exp(-exp(eta))), eta = linear predictor + o");
    w.model.SetLinkFunction(GZLRModel::LINK_LOGC);
    w.model.Describe(about);
    EXPECT_EQ(about.mean, "n * (1 - exp(eta)), eta = linear predictor + o");

    Small small(GZLRModel::LINK_PROBIT, YesNo());
    GZLRModel& model = small.Ready();
    model.UpdateResAndRefCat("no");
    ModelDescription classes;
    model.Describe(classes);
    EXPECT_EQ(classes.mean, "Phi(eta), eta = linear predictor");
    EXPECT_EQ(classes.resultType, ScoreResult::MLR_RESULT);
    EXPECT_EQ(classes.targetCategories, (std::vector<std::string>{"yes", "no"}));
    EXPECT_EQ(classes.equations.at(0).category, "no");
    EXPECT_EQ(classes.quantities.at(0).meaning, "no where the mean is 0.5 or more, else yes");
    EXPECT_EQ(classes.quantities.at(1).column, "probability(yes)");
    EXPECT_EQ(classes.quantities.at(1).meaning, "1 - mean");
    EXPECT_EQ(classes.quantities.at(2).meaning, "mean");
}

TEST(GZLRModel, LimitsFollowTheConfidenceLevel)
{
    Small small(GZLRModel::LINK_LOG);
    GZLRModel& model = small.Ready();
    model.SetConfidenceLevel(0.9);
    Scored scored;
    Case c = Row("b", 2.0);
    Score(model, c, scored);
    // As ScoresMeanErrorAndLimits, with Phi^-1(0.95) by mpmath.
    constexpr double z = 1.6448536269514728;
    const double lower = std::exp(5.0 - z * std::sqrt(10.0));
    const double upper = std::exp(5.0 + z * std::sqrt(10.0));
    EXPECT_NEAR(scored.Numbers().GetCIBottom(), lower, 1e-14 * lower);
    EXPECT_NEAR(scored.Numbers().GetCITop(), upper, 1e-14 * upper);
    EXPECT_EQ(model.GetCIMeanPred(5.0, std::sqrt(10.0), -1),
              (std::pair{scored.Numbers().GetCIBottom(), scored.Numbers().GetCITop()}));
    model.SetConfidenceLevel(0.0);
    Score(model, c, scored);
    EXPECT_EQ(scored.Numbers().GetCIBottom(), kSysmis);
    EXPECT_EQ(scored.Numbers().GetCITop(), kSysmis);
}

TEST(GZLRModel, ErrorOfTheLinearPredictorIsTheSameUnderAnyLinkAndTarget)
{
    Small numeric(GZLRModel::LINK_LOG);
    EXPECT_EQ(LinearPredictorError(numeric.Ready(), Row("b", 2.0)), std::sqrt(10.0));
    Small classifying(GZLRModel::LINK_LOGIT, Categorical("y", {"no", "yes"}));
    classifying.model.SetOffsetValue(7.0);  // adds nothing to it
    EXPECT_EQ(LinearPredictorError(classifying.Ready(), Row("b", 2.0)), std::sqrt(10.0));
    EXPECT_EQ(LinearPredictorError(Small().Ready(false), Row("b", 2.0)), kSysmis);
}

}  // namespace
}  // namespace MCVelscore_850
