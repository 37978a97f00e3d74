// The two ordinal families: cumulative links, category probabilities, thresholds, offsets.

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "models/mlrresult.h"
#include "tests/models/classifierfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

constexpr double kInfinity = NumericValue::GetInfinity();
using Link = CumulativeLinkModel::CumulLinkFunction;

std::unique_ptr<DictVar> ThreeLevels() { return Categorical("y", {"lo", "mid", "hi"}); }

// The inverse links.

struct LinkRow {
    Link link;
    double x;
    double p;
    double tolerance;  // relative
};

// By mpmath with 40 digits; the rows of tolerance 0 are what the guards answer.
const LinkRow kLinkRows[] = {
    {Link::CUM_LOGIT, -2.0, 0.1192029220221175559403, 4e-16},
    {Link::CUM_LOGIT, 0.0, 0.5, 0.0},
    {Link::CUM_LOGIT, 0.5, 0.6224593312018545646389, 4e-16},
    {Link::CUM_LOGIT, 3.0, 0.9525741268224332191212, 4e-16},
    {Link::CUM_LOGIT, -707.5, 5.453232991066741607316e-308, 4e-16},
    {Link::CUM_LOGIT, -708.0, 0.0, 0.0},  // the limit itself, though exp(-708) = 3.3e-308
    {Link::CUM_LOGIT, -1e3, 0.0, 0.0},
    {Link::CUM_LOGIT, -1e308, 0.0, 0.0},
    {Link::CUM_LOGIT, 709.0, 1.0, 0.0},
    {Link::CUM_LOGIT, 710.0, 1.0, 0.0},  // exp(710) is infinite
    {Link::CUM_LOGIT, 1e308, 1.0, 0.0},
    {Link::CUM_LOGIT, kInfinity, 1.0, 0.0},
    {Link::CUM_CAUCHIT, -2.0, 0.1475836176504332741754, 8e-16},
    {Link::CUM_CAUCHIT, 0.5, 0.6475836176504332741754, 4e-16},
    {Link::CUM_CAUCHIT, 3.0, 0.8975836176504332741754, 4e-16},
    {Link::CUM_CAUCHIT, 1e10, 0.9999999999681690113816, 4e-16},
    {Link::CUM_CAUCHIT, 1e308, 1.0, 0.0},  // no guard: atan alone
    {Link::CUM_CAUCHIT, -1e308, 0.0, 0.0},
    {Link::CUM_CLOGLOG, -2.0, 0.126576981506883357011, 1e-15},
    {Link::CUM_CLOGLOG, 0.5, 0.8077043544520350719257, 4e-16},
    {Link::CUM_CLOGLOG, 3.0, 0.9999999981078213051617, 4e-16},
    {Link::CUM_CLOGLOG, -30.0, 9.357622968839736779378e-14, 2e-3},  // 1 - 0.99.. loses digits
    {Link::CUM_CLOGLOG, 6.5625, 1.0, 0.0},
    {Link::CUM_CLOGLOG, 710.0, 1.0, 0.0},
    {Link::CUM_CLOGLOG, 1e308, 1.0, 0.0},
    {Link::CUM_CLOGLOG, -708.0, 0.0, 0.0},
    {Link::CUM_CLOGLOG, -1e308, 0.0, 0.0},
    {Link::CUM_LOGLOG, -2.0, 0.0006179789893310934986195, 2e-15},
    {Link::CUM_LOGLOG, 0.5, 0.5452392118926050554202, 4e-16},
    {Link::CUM_LOGLOG, 3.0, 0.9514319929004534072915, 4e-16},
    {Link::CUM_LOGLOG, 30.0, 0.9999999999999064237703, 4e-16},
    {Link::CUM_LOGLOG, -6.55, 2.099489992048665769579e-304, 4e-13},
    {Link::CUM_LOGLOG, -6.5625, 0.0, 0.0},  // u = -708.04, beyond the limit; exp(u) = 3.2e-308
    {Link::CUM_LOGLOG, -709.5, 0.0, 0.0},
    {Link::CUM_LOGLOG, -1e308, 0.0, 0.0},
    {Link::CUM_LOGLOG, 708.0, 1.0, 0.0},
    {Link::CUM_LOGLOG, 1e308, 1.0, 0.0},
    {Link::CUM_PROBIT, -10.0, 7.619853024160526065973e-24, 1e-13},
    {Link::CUM_PROBIT, -2.0, 0.02275013194817920720028, 1e-13},
    {Link::CUM_PROBIT, 0.5, 0.6914624612740131036377, 1e-13},
    {Link::CUM_PROBIT, 3.0, 0.9986501019683699054733, 1e-13},
    {Link::CUM_PROBIT, 1e308, 1.0, 0.0},
    {Link::CUM_PROBIT, -1e308, 0.0, 0.0},
};

TEST(CumulativeLink, InverseIsTheDistributionFunctionOfTheLink)
{
    for (const LinkRow& row : kLinkRows) {
        EXPECT_NEAR(ORModel::CInvLinkFunction(row.link, row.x), row.p, row.p * row.tolerance)
            << "link " << row.link << " of " << row.x;
    }
}

// The steps of each link in doubles, by mpmath: exp rounded once (and at least 0.2 units away from
// where a libm could round otherwise), then each operation. A form that is equal in real numbers
// answers otherwise.
TEST(CumulativeLink, LogitDividesTheExponentialByOnePlusItself)
{
    struct {
        double x, p;
    } constexpr kRows[] = {
        {-16.5, 6.825602910446288e-08},   // 1 / (1 + exp(-x)): 6.825602910446286e-08
        {-5.625, 0.0035936025814200896},  // 0.00359360258142009
        {-2.75, 0.06008665017400762},     // 0.060086650174007626
        {1.25, 0.7772998611746912},       // 0.7772998611746911
        {4.875, 0.9924227587321391},      // 0.9924227587321393
        {6.875, 0.9989677689632451},      // 0.9989677689632452
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(ORModel::CInvLinkFunction(Link::CUM_LOGIT, row.x), row.p) << row.x;
    }
}

TEST(CumulativeLink, CloglogTakesTheExponentialFromOneWithTheDigitsThatThisLoses)
{
    struct {
        double x, p;
    } constexpr kRows[] = {
        {-30.0, 9.35918009759007e-14},    // -expm1(-exp(x)): 9.357622968839737e-14
        {-37.0, 1.1102230246251565e-16},  // one step below 1, 2^-53
        {-38.0, 0.0},                     // exp(x) = 3.1e-17 is lost beside 1
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(ORModel::CInvLinkFunction(Link::CUM_CLOGLOG, row.x), row.p) << row.x;
    }
}

TEST(CumulativeLink, LowerLimitIsInclusiveAndTheNextDoubleIsNot)
{
    const double above = std::nextafter(-708.0, 0.0);
    EXPECT_GT(ORModel::CInvLinkFunction(Link::CUM_LOGIT, above), 3.3e-308);
    EXPECT_EQ(ORModel::CInvLinkFunction(Link::CUM_LOGIT, -708.0), 0.0);
}

TEST(CumulativeLink, SystemMissingStaysSoAndAnUnknownLinkHasNoAnswer)
{
    for (const int link : {0, 1, 2, 3, 4}) {
        EXPECT_EQ(ORModel::CInvLinkFunction(static_cast<Link>(link), kSysmis), kSysmis);
    }
    for (const int link : {5, 6, 7}) {
        EXPECT_EQ(ORModel::CInvLinkFunction(static_cast<Link>(link), 0.5), kSysmis);
    }
    for (const int link : {0, 1, 2, 3}) {
        EXPECT_TRUE(std::isnan(ORModel::CInvLinkFunction(static_cast<Link>(link), std::nan(""))));
    }
}

TEST(CumulativeLink, CumulativeProbabilityEndsAtZeroAndOne)
{
    const std::vector<double> thresholds{-1.0, 0.5, 9.0};
    const ORModel plus;
    const OGZLRModel minus;
    const auto logit = Link::CUM_LOGIT;
    for (const CumulativeLinkModel* model : {static_cast<const CumulativeLinkModel*>(&plus),
                                             static_cast<const CumulativeLinkModel*>(&minus)}) {
        EXPECT_EQ(model->ComputeCumProb(logit, 3, -1, 2.0, thresholds), 0.0);
        EXPECT_EQ(model->ComputeCumProb(logit, 3, 2, 2.0, thresholds), 1.0);
        EXPECT_EQ(model->ComputeCumProb(logit, 3, 3, 2.0, thresholds), kSysmis);
        EXPECT_EQ(model->ComputeCumProb(logit, 3, -2, 2.0, thresholds), kSysmis);
        EXPECT_EQ(model->ComputeCumProb(logit, 1, 0, 2.0, thresholds), 1.0);
        EXPECT_EQ(model->ComputeCumProb(logit, 9, 5, 2.0, thresholds), kSysmis);  // no threshold
    }
    // The linear predictor raises the one and lowers the other: 0.5 + 2.5 = 3, 0.5 - 2.5 = -2.
    EXPECT_NEAR(plus.ComputeCumProb(logit, 3, 1, 2.5, thresholds), 0.9525741268224332191212,
                kRounding);
    EXPECT_NEAR(minus.ComputeCumProb(logit, 3, 1, 2.5, thresholds), 0.1192029220221175559403,
                kRounding);
}

// Models of three levels; eta is the covariate x.
template <class Model>
class Levels : public Built<Model> {
public:
    explicit Levels(double first, double second, std::unique_ptr<DictVar> target = ThreeLevels())
        : Built<Model>(std::move(target))
    {
        this->Covariate("x");
        this->Parameters({"threshold", "px"});
        first_ = first;
        second_ = second;
    }
    Model& Ready()
    {
        EXPECT_TRUE(this->SetUp());
        this->Cell("px", "x", "1");
        this->Beta("lo", "threshold", first_);
        this->Beta("mid", "threshold", second_);
        this->Beta("mid", "px", 1.0);
        this->model.FinishSetup();
        return this->model;
    }
    MCScore::MCStatus Score(Given x, Given w = nullptr, bool derivedInRecord = true)
    {
        Case c;
        c.With("x", std::move(x)).With("w", std::move(w));
        return this->model.GetScore(&c.Record(), slot.result, derivedInRecord);
    }
    std::vector<double> Percents() const
    {
        return {slot.Percent("lo"), slot.Percent("mid"), slot.Percent("hi")};
    }
    Slot slot;

private:
    double first_, second_;
};

double Logistic(double x) { return 1.0 / (1.0 + std::exp(-x)); }

template <class Model>
class Ordinal : public ::testing::Test {
protected:
    // The sign of the linear predictor beside a threshold.
    static constexpr double kSign = std::is_same_v<Model, ORModel> ? 1.0 : -1.0;
};
using Models = ::testing::Types<ORModel, OGZLRModel>;
TYPED_TEST_SUITE(Ordinal, Models);

TYPED_TEST(Ordinal, ProbabilitiesAreDifferencesOfNeighbours)
{
    Levels<TypeParam> model(-0.5, 1.0);
    model.Ready();
    for (const double x : {0.0, 0.75, -2.0, 3.0}) {
        const double f0 = Logistic(-0.5 + this->kSign * x);
        const double f1 = Logistic(1.0 + this->kSign * x);
        ASSERT_TRUE(model.Score(x).IsOK());
        EXPECT_NEAR(model.slot.Percent("lo"), f0, kRounding) << x;
        EXPECT_NEAR(model.slot.Percent("mid"), f1 - f0, kRounding) << x;
        EXPECT_NEAR(model.slot.Percent("hi"), 1.0 - f1, kRounding) << x;
        EXPECT_NEAR(f0 + (f1 - f0) + (1.0 - f1), 1.0, kRounding);
    }
    ASSERT_TRUE(model.Score(this->kSign * 5).IsOK());
    EXPECT_EQ(model.slot.Text(), "lo");
    ASSERT_TRUE(model.Score(this->kSign * -5).IsOK());
    EXPECT_EQ(model.slot.Text(), "hi");
    ASSERT_TRUE(model.Score(this->kSign * -0.25).IsOK());  // F 0.32, 0.68
    EXPECT_EQ(model.slot.Text(), "mid");
}

TYPED_TEST(Ordinal, EveryLinkIsTaken)
{
    // Thresholds -2 and 0.5 and no predictor term, by mpmath as above.
    const double f[][2] = {{0.1192029220221175559403, 0.6224593312018545646389},
                           {0.1475836176504332741754, 0.6475836176504332741754},
                           {0.126576981506883357011, 0.8077043544520350719257},
                           {0.0006179789893310934986195, 0.5452392118926050554202},
                           {0.02275013194817920720028, 0.6914624612740131036377}};
    for (const int link : {0, 1, 2, 3, 4}) {
        Levels<TypeParam> model(-2.0, 0.5);
        EXPECT_EQ(model.model.GetLinkFunction(), Link::CUM_LOGIT);
        model.model.SetLinkFunction(static_cast<Link>(link));
        model.Ready();
        ASSERT_TRUE(model.Score(0).IsOK());
        EXPECT_NEAR(model.slot.Percent("lo"), f[link][0], 1e-14) << link;
        EXPECT_NEAR(model.slot.Percent("mid"), f[link][1] - f[link][0], 1e-14) << link;
        EXPECT_NEAR(model.slot.Percent("hi"), 1.0 - f[link][1], 1e-14) << link;
    }
}

TYPED_TEST(Ordinal, UnknownLinkLeavesEverythingToTheLastCategory)
{
    Levels<TypeParam> model(-2.0, 0.5);
    model.model.SetLinkFunction(static_cast<Link>(6));
    model.Ready();
    ASSERT_TRUE(model.Score(0).IsOK());
    EXPECT_EQ(model.Percents(), (std::vector<double>{0.0, 0.0, 1.0}));
    EXPECT_EQ(model.slot.Text(), "hi");
}

TYPED_TEST(Ordinal, ThresholdsThatFallNeverMakeANegativeProbability)
{
    Levels<TypeParam> model(1.0, -0.5);
    model.Ready();
    ASSERT_TRUE(model.Score(0).IsOK());
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(1.0), kRounding);
    EXPECT_EQ(model.slot.Percent("mid"), 0.0);
    EXPECT_NEAR(model.slot.Percent("hi"), 1.0 - Logistic(1.0), kRounding);  // beside F0, not F1
}

TYPED_TEST(Ordinal, EqualThresholdsLeaveNothingBetween)
{
    Levels<TypeParam> model(0.0, 0.0);
    model.Ready();
    ASSERT_TRUE(model.Score(0).IsOK());
    EXPECT_EQ(model.Percents(), (std::vector<double>{0.5, 0.0, 0.5}));
    EXPECT_EQ(model.slot.Text(), "lo");  // of equal ones the lowest
}

TYPED_TEST(Ordinal, CategoriesGoByTheTargetsOrderAndPercentsByTheNames)
{
    Levels<TypeParam> model(-0.5, 1.0);
    model.Ready();
    ASSERT_TRUE(model.Score(0).IsOK());
    std::vector<std::string> names;
    for (const auto& [value, percent] : model.slot.template As<MLRResult>().GetAllValuePercent()) {
        names.push_back(value->GetString());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"hi", "lo", "mid"}));
}

TYPED_TEST(Ordinal, BetasLieInTheLastRowButOne)
{
    Levels<TypeParam> model(-0.5, 1.0);
    model.Ready();
    model.Beta("lo", "px", 50.0);
    model.Beta("hi", "px", 50.0);
    model.Beta("hi", "threshold", 50.0);  // there is no boundary above the last
    model.model.FinishSetup();
    ASSERT_TRUE(model.Score(1).IsOK());
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 + this->kSign), kRounding);
    EXPECT_NEAR(model.slot.Percent("hi"), 1.0 - Logistic(1.0 + this->kSign), kRounding);
}

TYPED_TEST(Ordinal, ThresholdColumnIsNoTermOfTheLinearPredictor)
{
    // The betas' row holds a threshold too, and its parameter has no cells: an intercept elsewhere.
    Levels<TypeParam> model(-0.5, 30.0);
    model.Ready();
    ASSERT_TRUE(model.Score(0).IsOK());
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5), kRounding);
}

TYPED_TEST(Ordinal, ThresholdsAloneMakeAModel)
{
    Built<TypeParam> built(ThreeLevels());
    built.Parameters({"threshold"});
    built.model.SetOffsetValue(0.25);
    ASSERT_TRUE(built.SetUp());
    built.Beta("lo", "threshold", -0.5);
    built.Beta("mid", "threshold", 1.0);
    built.model.FinishSetup();
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&Case().Record(), slot.result, true).IsOK());
    EXPECT_NEAR(slot.Percent("lo"), Logistic(-0.5 + this->kSign * 0.25), kRounding);
}

TYPED_TEST(Ordinal, OneCategoryHasItAll)
{
    Built<TypeParam> built(Categorical("y", {"only"}));
    built.Covariate("x");
    built.Parameters({"threshold", "px"});
    ASSERT_TRUE(built.SetUp());
    built.Cell("px", "x", "1");
    built.model.FinishSetup();
    Slot slot;
    Case c;
    c.With("x", 3);
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Percent("only"), 1.0);
    EXPECT_EQ(slot.Text(), "only");
}

TYPED_TEST(Ordinal, WithoutParametersTheThresholdsAreZero)
{
    Built<TypeParam> built(ThreeLevels());
    ASSERT_TRUE(built.SetUp());
    built.model.FinishSetup();
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&Case().Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Percent("lo"), 0.5);
    EXPECT_EQ(slot.Percent("hi"), 0.5);
}

TYPED_TEST(Ordinal, FactorMeetsItsCell)
{
    Built<TypeParam> built(ThreeLevels());
    built.Factor("f", {"u", "v"});
    built.Covariate("x");
    built.Parameters({"threshold", "pf"});
    ASSERT_TRUE(built.SetUp());
    built.Cell("pf", "f", "v");
    built.Cell("pf", "x", "2");
    built.Beta("mid", "pf", 0.5);
    built.Beta("mid", "threshold", 1.0);
    built.model.FinishSetup();
    Slot slot;
    for (const char* f : {"u", "v"}) {
        Case c;
        c.With("f", f).With("x", 2);
        ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
        const double eta = *f == 'v' ? 0.5 * 4.0 : 0.0;
        EXPECT_NEAR(slot.Percent("lo"), Logistic(this->kSign * eta), kRounding) << f;
    }
}

TYPED_TEST(Ordinal, LinearPredictorsFarOut)
{
    struct Row {
        double raised;  // the linear predictor, as it stands beside the thresholds
        std::vector<double> percents;
        const char* predicted;
    };
    const Row rows[] = {
        {1e3, {1, 0, 0}, "lo"},    {-1e3, {0, 0, 1}, "hi"},      {1e308, {1, 0, 0}, "lo"},
        {-1e308, {0, 0, 1}, "hi"}, {kInfinity, {1, 0, 0}, "lo"}, {-kInfinity, {0, 0, 1}, "hi"},
    };
    for (const Row& row : rows) {
        Levels<TypeParam> model(-0.5, 1.0);
        model.model.SetScoreCaseValidationCheck(false);
        model.Ready();
        ASSERT_TRUE(model.Score(this->kSign * row.raised).IsOK());
        EXPECT_EQ(model.Percents(), row.percents) << row.raised;
        EXPECT_EQ(model.slot.Text(), row.predicted) << row.raised;
    }
    Levels<TypeParam> model(-0.5, 1.0);
    model.model.SetScoreCaseValidationCheck(false);
    model.Ready();
    ASSERT_TRUE(model.Score(std::nan("")).IsOK());
    EXPECT_EQ(model.slot.Text(), "lo");
    for (const double percent : model.Percents()) EXPECT_TRUE(std::isnan(percent));
}

TYPED_TEST(Ordinal, SumThatIsTheSystemMissingNumberCountsAsNone)
{
    // What makes threshold + eta that very number has no cumulative probability.
    Levels<TypeParam> model(0.0, 0.0);
    model.model.SetScoreCaseValidationCheck(false);
    model.Ready();
    ASSERT_TRUE(model.Score(this->kSign * kSysmis).IsOK());
    EXPECT_EQ(model.Percents(), (std::vector<double>{0, 0, 1}));
}

TYPED_TEST(Ordinal, BadValueIsScoredByTheThresholdsAndTheOffsetAndFails)
{
    Levels<TypeParam> model(-0.5, 1.0);
    model.model.SetOffsetValue(2.0);
    model.model.SetMissingValuePolicy(ScoreModel::MV_SYSMIS_RESULT);
    model.Ready();
    for (int turn = 0; turn < 2; ++turn) {
        const auto status = model.Score(kSysmis);
        EXPECT_EQ(status.GetErrorCode(), 90029);
        EXPECT_EQ(status.GetDiscreteDatum(), 0);
        EXPECT_EQ(model.slot.Text(), this->kSign > 0 ? "lo" : "hi");
        EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 + this->kSign * 2.0), kRounding);
        ASSERT_TRUE(model.Score(0.5).IsOK());
        EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 + this->kSign * 2.5), kRounding);
    }
}

TYPED_TEST(Ordinal, AbsentValueWithoutValidationFailsTheCase)
{
    Levels<TypeParam> model(-0.5, 1.0);
    model.model.SetScoreCaseValidationCheck(false);
    model.Ready();
    EXPECT_EQ(model.Score(nullptr).GetErrorCode(), 90029);
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5), kRounding);
}

TYPED_TEST(Ordinal, SubstitutionChangesTheRecordsOwnValue)
{
    Levels<TypeParam> model(-0.5, 1.0);
    Replace(*model.Dictionary().GetVar("x"), 2.0);
    model.Ready();
    Case c;
    c.With("x", kSysmis);
    ASSERT_TRUE(model.model.GetScore(&c.Record(), model.slot.result, true).IsOK());
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 + this->kSign * 2.0), kRounding);
    EXPECT_EQ(c.Record().GetValue("x")->GetDouble(), 2.0);
}

TYPED_TEST(Ordinal, ConstantOffsetJoinsTheLinearPredictor)
{
    Levels<TypeParam> model(-0.5, 1.0);
    model.model.SetOffsetValue(0.75);
    model.Ready();
    ASSERT_TRUE(model.Score(1).IsOK());
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 + this->kSign * 1.75), kRounding);
}

TYPED_TEST(Ordinal, FirstOffsetThatIsSetWins)
{
    const auto w = Continuous("w");
    TypeParam model;
    model.SetOffsetVar(w.get());
    model.SetOffsetValue(2.0);
    EXPECT_EQ(model.GetOffsetVar(), w.get());
    EXPECT_EQ(model.GetOffsetValue(), 0.0);
    TypeParam other;
    other.SetOffsetValue(2.0);
    other.SetOffsetVar(w.get());
    other.SetOffsetValue(3.0);
    EXPECT_EQ(other.GetOffsetVar(), nullptr);
    EXPECT_EQ(other.GetOffsetValue(), 2.0);
}

TYPED_TEST(Ordinal, OffsetVariableOfNothingAddsNothing)
{
    Levels<TypeParam> model(-0.5, 1.0);
    model.model.SetOffsetVar(nullptr);
    model.Ready();
    ASSERT_TRUE(model.Score(1).IsOK());
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 + this->kSign), kRounding);
}

TYPED_TEST(Ordinal, IsOfTypeSevenAndDescribesEachBoundary)
{
    Levels<TypeParam> model(-0.5, 1.0);
    model.model.SetLinkFunction(Link::CUM_CLOGLOG);
    model.model.SetOffsetValue(0.75);
    model.Ready();
    EXPECT_EQ(model.model.GetModelType(), 7);
    EXPECT_EQ(model.model.GetPCovMatrix(), nullptr);
    EXPECT_TRUE(model.model.GetNumericPPMatrix().empty());
    ModelDescription about;
    model.model.Describe(about);
    EXPECT_EQ(about.className, (std::is_same_v<TypeParam, ORModel> ? "ORModel" : "OGZLRModel"));
    EXPECT_EQ(about.distribution, (std::is_same_v<TypeParam, ORModel> ? "" : "multinomial"));
    EXPECT_EQ(about.link, "cumulative complementary log-log");
    EXPECT_EQ(about.offset, "0.75");
    EXPECT_EQ(about.targetCategories, (std::vector<std::string>{"lo", "mid", "hi"}));
    ASSERT_EQ(about.equations.size(), 2u);
    const double thresholds[] = {-0.5, 1.0};
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_TRUE(about.equations[i].isCumulative);
        EXPECT_EQ(about.equations[i].category, about.targetCategories[i]);
        ASSERT_EQ(about.equations[i].terms.size(), 2u);
        EXPECT_EQ(about.equations[i].terms[0].beta, thresholds[i]);
        EXPECT_EQ(about.equations[i].terms[1].beta, this->kSign);
    }
}

// ORModel's own.

// Two categories whose second probability exceeds the first by no more than rounding: the cauchit
// of a threshold t is 0.5 + atan(t) / pi.
TEST(ORModel, AnyLargerProbabilityWins)
{
    Built<ORModel> built(Categorical("y", {"a", "b"}));
    built.model.SetLinkFunction(Link::CUM_CAUCHIT);
    built.Parameters({"threshold"});
    ASSERT_TRUE(built.SetUp());
    for (const auto& [threshold, predicted] :
         {std::pair<double, const char*>{0.0, "a"}, {-1.5e-14, "b"}, {1.5e-14, "a"}}) {
        built.Beta("a", "threshold", threshold);
        built.model.FinishSetup();
        Slot slot;
        ASSERT_TRUE(built.model.GetScore(&Case().Record(), slot.result, true).IsOK());
        EXPECT_EQ(slot.Text(), predicted) << threshold;
    }
}

class ORWithOffset : public Levels<ORModel> {
public:
    ORWithOffset() : Levels<ORModel>(-0.5, 1.0)
    {
        w = Continuous("w").release();
        Dictionary().AddVar("w", w);
        model.SetOffsetVar(w);
        Ready();
    }
    DictVar* w;
};

TEST(ORModel, OffsetVariableIsReadByItsPositionWithoutAnyCheck)
{
    ORWithOffset model;
    ASSERT_TRUE(model.Score(1, 0.5).IsOK());
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 + 1.5), kRounding);
    ASSERT_TRUE(model.Score(1, -3.0).IsOK());
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 - 2.0), kRounding);
    ASSERT_TRUE(model.Score(1, nullptr).IsOK());  // absent: adds nothing
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 + 1.0), kRounding);
    ASSERT_TRUE(model.Score(1, kSysmis).IsOK());  // missing: adds its number
    EXPECT_EQ(model.Percents(), (std::vector<double>{0, 0, 1}));
    ASSERT_TRUE(model.Score(1, "2.5").IsOK());  // a text's number
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 + 3.5), kRounding);
}

TEST(ORModel, OffsetVariableIsNotAskedByName)
{
    ORWithOffset model;
    Case c(false);
    c.With("x", 1).With("w", 0.5);
    ASSERT_TRUE(model.model.GetScore(&c.Record(), model.slot.result, true).IsOK());
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 + 1.0), kRounding);
}

TEST(ORModel, OffsetCountsAlsoAfterABadPredictor)
{
    ORWithOffset model;
    EXPECT_EQ(model.Score(kSysmis, 0.5).GetErrorCode(), 90029);
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 + 0.5), kRounding);
}

TEST(ORModel, DerivedOffsetIsReadFromTheRecordThatHoldsItOrFromADerivedRecord)
{
    for (const bool needed : {false, true}) {
        Levels<ORModel> model(-0.5, 1.0);
        auto* derived = new TransformationDictionary;
        auto var = Derived("w", 0.5);
        model.model.SetOffsetVar(var.get());
        derived->AddVar("w", var.release());
        derived->SetUpDerivedCaseRecord();
        model.model.SetTransformationScoreDictionary(derived);
        model.model.SetNeedDerivedPredictor(needed);  // by some predictor
        model.Ready();
        ASSERT_TRUE(model.Score(1, 2.0, true).IsOK());
        EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 + 3.0), kRounding);
        // The record's own is passed over; without a derived record nothing is added.
        ASSERT_TRUE(model.Score(1, 2.0, false).IsOK());
        EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 + (needed ? 1.5 : 1.0)), kRounding);
    }
}

TEST(ORModel, DisplayIsTheCommonPartAlone)
{
    Levels<ORModel> model(-0.5, 1.0);
    model.model.SetOffsetValue(0.75);
    model.Ready();
    std::ostringstream out;
    model.model.Display(out);
    EXPECT_EQ(out.str(),
              "\n"
              "Begin display of RegressionModel.\n"
              "The target: y\n"
              "df = 0\n"
              "Target categories :  size = 3\n"
              "\thi\t2\n"
              "\tlo\t0\n"
              "\tmid\t1\n"
              "\n"
              "Parameters :  size = 2\n"
              "\tpx\t1\n"
              "\tthreshold\t0\n"
              "\n"
              "Predictors :  size = 1\n"
              "\tx\t0\n"
              "\n"
              "Begin display of ParamTable object.\n"
              "Number of categories = 3, number of parameters = 2\n"
              "\tBeta=-0.5 df=1\tBeta=0 df=0\n"
              "\tBeta=1 df=1\tBeta=1 df=1\n"
              "\tBeta=0 df=0\tBeta=0 df=0\n"
              "\n"
              "End display of ParamTable object.\n"
              "PCovMatrix not present\n"
              "Begin display of PPCMatrix object.\n"
              "Number of parameters = 2, number of predictors = 1\n"
              "\t Null\t\n"
              "\t1\n"
              "\n"
              "End display of PPCMatrix object.\n"
              "End display of RegressionModel.\n");
}

// OGZLRModel's own.

TEST(OGZLRModel, ProbabilitiesWithinTheMarginAreATieAndTheLowerCategoryStays)
{
    // p(b) - p(a) = -2 atan(t) / pi: 0.64 |t| for a small t.
    Built<OGZLRModel> built(Categorical("y", {"a", "b"}));
    built.model.SetLinkFunction(Link::CUM_CAUCHIT);
    built.Parameters({"threshold"});
    ASSERT_TRUE(built.SetUp());
    struct Row {
        double threshold;
        const char* predicted;
    };
    const Row rows[] = {{0.0, "a"},
                        {-0.785e-14, "a"},  // 5e-15
                        {-1.5e-14, "a"},    // 9.5e-15
                        {-1.65e-14, "b"},   // 1.05e-14
                        {-1e-13, "b"}};
    for (const Row& row : rows) {
        built.Beta("a", "threshold", row.threshold);
        built.model.FinishSetup();
        Slot slot;
        ASSERT_TRUE(built.model.GetScore(&Case().Record(), slot.result, true).IsOK());
        EXPECT_EQ(slot.Text(), row.predicted) << row.threshold;
    }
}

TEST(OGZLRModel, MarginIsCountedFromTheBestOfAllBefore)
{
    // Three categories of 1/3 - e, 1/3, 1/3 + e with e within the margin of the neighbour: the
    // third exceeds the first by 2e, more than the margin.
    Built<OGZLRModel> built(ThreeLevels());
    built.model.SetLinkFunction(Link::CUM_CAUCHIT);
    built.Parameters({"threshold"});
    ASSERT_TRUE(built.SetUp());
    // cauchit quantiles: tan(pi (F - 1/2)); F0 = 1/3 - 8e-15, F1 = 2/3 - 8e-15
    const double slope = 3.141592653589793 / 0.75;  // dt / dF where F = 1/3 and 2/3
    const double t = 0.57735026918962576451;        // tan(pi / 6)
    built.Beta("lo", "threshold", -t - slope * 8e-15);
    built.Beta("mid", "threshold", t - slope * 8e-15);
    built.model.FinishSetup();
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&Case().Record(), slot.result, true).IsOK());
    EXPECT_NEAR(slot.Percent("mid") - slot.Percent("lo"), 8e-15, 1e-15);
    EXPECT_NEAR(slot.Percent("hi") - slot.Percent("lo"), 1.6e-14, 1e-15);
    EXPECT_EQ(slot.Text(), "hi");
}

class OGZLRWithOffset : public Built<OGZLRModel> {
public:
    // Predictors x, and the offset w behind it, with the index 1: parameter 1 is px.
    OGZLRWithOffset() : Built<OGZLRModel>(ThreeLevels())
    {
        Covariate("x");
        Parameters({"threshold", "px"});
        w = Continuous("w").release();
        Dictionary().AddVar("w", w);
        model.SetVarRole(w, ScoreModel::ROLE_OFFSET);
        model.SetOffsetVar(w);
        EXPECT_TRUE(SetUp());
        Cell("px", "x", "2");
        Beta("mid", "px", 0.5);
        Beta("lo", "threshold", -0.5);
        Beta("mid", "threshold", 1.0);
    }
    MCScore::MCStatus Score(Given x, Given offset)
    {
        Case c;
        c.With("x", std::move(x)).With("w", std::move(offset));
        return model.GetScore(&c.Record(), slot.result, true);
    }
    DictVar* w;
    Slot slot;
};

TEST(OGZLRModel, OffsetIsTheDesignValueAtItsIndexAndNotItsOwnValue)
{
    OGZLRWithOffset model;
    model.model.FinishSetup();
    for (const double offset : {0.0, 7.0}) {
        ASSERT_TRUE(model.Score(2, offset).IsOK());
        // design value of px: 4; eta = 0.5 * 4 + 4
        EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5 - 6.0), kRounding);
    }
}

TEST(OGZLRModel, OffsetAddsNothingWhereTheDesignValueWasNotComputed)
{
    OGZLRWithOffset model;
    model.Beta("mid", "px", 0.0);
    model.model.FinishSetup();
    ASSERT_TRUE(model.Score(2, 7).IsOK());
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5), kRounding);
    // Nor in a case that failed, also after one that computed it.
    OGZLRWithOffset failing;
    failing.model.FinishSetup();
    ASSERT_TRUE(failing.Score(2, 7).IsOK());
    EXPECT_FALSE(failing.Score(kSysmis, 7).IsOK());
    EXPECT_NEAR(failing.slot.Percent("lo"), Logistic(-0.5), kRounding);
}

TEST(OGZLRModel, OffsetBeyondTheParametersAddsNothing)
{
    Built<OGZLRModel> built(ThreeLevels());
    built.Covariate("x");
    built.Covariate("z");
    built.Parameters({"threshold", "px"});
    auto* w = Continuous("w").release();
    built.Dictionary().AddVar("w", w);
    built.model.SetOffsetVar(w);
    ASSERT_TRUE(built.SetUp());
    built.Cell("px", "x", "1");
    built.Beta("mid", "px", 1.0);
    built.model.FinishSetup();
    Slot slot;
    Case c;
    c.With("x", 1).With("z", 1).With("w", 5);
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_NEAR(slot.Percent("lo"), Logistic(-1.0), kRounding);
}

TEST(OGZLRModel, MissingOffsetFailsTheCaseAndIsNamed)
{
    OGZLRWithOffset model;
    model.model.FinishSetup();
    const auto status = model.Score(2, kSysmis);
    EXPECT_EQ(status.GetErrorCode(), 90029);
    EXPECT_EQ(status.GetDiscreteDatum(), 1);
    EXPECT_NEAR(model.slot.Percent("lo"), Logistic(-0.5), kRounding);
}

TEST(OGZLRModel, OffsetIsSubstitutedOnlyAsACovariate)
{
    for (const bool covariate : {false, true}) {
        OGZLRWithOffset offset;
        offset.model.SetVarRole(offset.w,
                                covariate ? ScoreModel::ROLE_COVARIATE : ScoreModel::ROLE_OFFSET);
        Replace(*offset.Dictionary().GetVar("x"), 1.0);
        Replace(*offset.w, 1.0);
        ASSERT_TRUE(offset.SetUp());
        offset.model.FinishSetup();
        EXPECT_EQ(offset.Score(2, kSysmis).IsOK(), covariate);
    }
}

TEST(OGZLRModel, DistributionIsKeptAndTheLinksName)
{
    OGZLRModel model;
    EXPECT_EQ(model.GetDistType(), OGZLRModel::DIST_MULTINOMIAL);
    model.SetDistType(OGZLRModel::DIST_MULTINOMIAL);
    EXPECT_EQ(model.GetDistType(), 0);
}

// The lines that the display adds behind the common part.
std::string OwnLines(OGZLRModel& model)
{
    std::ostringstream out;
    model.Display(out);
    const std::string text = out.str();
    EXPECT_EQ(text.rfind("Begin display of OGZLRModel\n\nBegin display of RegressionModel.\n", 0),
              0u);
    const std::string common = "End display of RegressionModel.\n";
    return text.substr(text.find(common) + common.size());
}

TEST(OGZLRModel, DisplayTellsLinkDistributionAndOffset)
{
    const char* links[] = {"Logit", "Cauchit", "Complementary log-log", "Negative log-log",
                           "Probit"};
    for (int link = 0; link < 5; ++link) {
        Levels<OGZLRModel> model(-0.5, 1.0);
        model.model.SetLinkFunction(static_cast<Link>(link));
        model.Ready();
        EXPECT_EQ(OwnLines(model.model), std::string("Link function: ") + links[link] +
                                             "\nDistribution: Multinomial\n"
                                             "End display of OGZLRModel\n");
    }
    Levels<OGZLRModel> constant(-0.5, 1.0);
    constant.model.SetOffsetValue(0.75);
    constant.Ready();
    EXPECT_EQ(OwnLines(constant.model),
              "Link function: Logit\nDistribution: Multinomial\nOffset value: 0.75\n"
              "End display of OGZLRModel\n");
    OGZLRWithOffset variable;
    EXPECT_EQ(OwnLines(variable.model),
              "Link function: Logit\nDistribution: Multinomial\nOffset variable: w\n"
              "End display of OGZLRModel\n");
}

TYPED_TEST(Ordinal, ErrorOfTheLinearPredictorLeavesTheThresholdsOut)
{
    Levels<TypeParam> levels(-0.5, 1.0);
    TypeParam& model = levels.Ready();
    const auto row = [] { return std::move(Case().With("x", 3.0)); };
    EXPECT_EQ(LinearPredictorError(model, row()), kSysmis);
    PCovMatrix& v = *model.CreatePCovMatrix();
    v.SetCell("threshold", "threshold", "lo", "lo", 100.0);
    v.SetCell("threshold", "threshold", "mid", "mid", 200.0);
    v.SetCell("px", "threshold", "mid", true, 7.0);
    v.SetCell("px", "px", 0.25);
    EXPECT_EQ(LinearPredictorError(model, row()), 1.5);  // sqrt(9 * 0.25)
}

}  // namespace
}  // namespace MCVelscore_850
