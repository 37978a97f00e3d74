#include "models/mlrmodel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "models/mlrresult.h"
#include "tests/models/classifierfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

constexpr double kInfinity = NumericValue::GetInfinity();

std::unique_ptr<DictVar> ThreeCategories() { return Categorical("y", {"mid", "low", "top"}); }

// Three categories; the linear predictor of each is a covariate of its own name.
class Direct : public Built<MLRModel> {
public:
    explicit Direct(std::unique_ptr<DictVar> target = ThreeCategories())
        : Built<MLRModel>(std::move(target))
    {
        for (const char* name : kNames) {
            Covariate(name);
            Parameters({std::string("p") + name});
        }
    }
    MLRModel& Ready()
    {
        EXPECT_TRUE(SetUp());
        for (const char* name : kNames) {
            Cell(std::string("p") + name, name, "1");
            Beta(name, std::string("p") + name, 1.0);
        }
        model.FinishSetup();
        return model;
    }
    MCScore::MCStatus Score(double mid, double low, double top)
    {
        Case c;
        c.With("mid", mid).With("low", low).With("top", top).With("w", offset);
        return model.GetScore(&c.Record(), slot.result, true);
    }
    std::vector<double> Percents() const
    {
        return {slot.Percent("mid"), slot.Percent("low"), slot.Percent("top")};
    }

    static constexpr const char* kNames[] = {"mid", "low", "top"};
    double offset = 0.0;
    Slot slot;
};

TEST(MLRModel, ProbabilitiesAreASoftmaxOverAllRows)
{
    Direct model;
    model.Ready();
    ASSERT_TRUE(model.Score(std::log(2.0), std::log(3.0), std::log(5.0)).IsOK());
    EXPECT_NEAR(model.slot.Percent("mid"), 0.2, kRounding);
    EXPECT_NEAR(model.slot.Percent("low"), 0.3, kRounding);
    EXPECT_NEAR(model.slot.Percent("top"), 0.5, kRounding);
    EXPECT_EQ(model.slot.Text(), "top");
    ASSERT_TRUE(model.Score(std::log(5.0), std::log(3.0), std::log(2.0)).IsOK());
    EXPECT_NEAR(model.slot.Percent("mid"), 0.5, kRounding);
    EXPECT_NEAR(model.slot.Percent("top"), 0.2, kRounding);
    EXPECT_EQ(model.slot.Text(), "mid");
}

TEST(MLRModel, OfEqualCategoriesTheFirstInTheTargetsOrderIsPredicted)
{
    Direct model;
    model.Ready();
    ASSERT_TRUE(model.Score(0, 0, 0).IsOK());
    EXPECT_EQ(model.slot.Text(), "mid");  // and not "low", the first by name
    for (const double percent : model.Percents()) EXPECT_EQ(percent, 1.0 / 3.0);
    ASSERT_TRUE(model.Score(-1, 1, 1).IsOK());
    EXPECT_EQ(model.slot.Text(), "low");
}

TEST(MLRModel, PercentsStandInTheOrderOfTheNames)
{
    Direct model;
    model.Ready();
    ASSERT_TRUE(model.Score(1, 2, 3).IsOK());
    std::vector<std::string> names;
    for (const auto& [value, percent] : model.slot.As<MLRResult>().GetAllValuePercent()) {
        names.push_back(value->GetString());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"low", "mid", "top"}));
}

TEST(MLRModel, OverflowIsGuarded)
{
    struct Row {
        double lp[3];
        const char* predicted;
        std::vector<double> percents;
    };
    const double limit = 709.782712893384;
    const Row rows[] = {
        {{1e3, 0, 0}, "mid", {1, 0, 0}},
        {{1e3, 1e3, 0}, "mid", {0.5, 0.5, 0}},
        {{-1e3, -1e3, 0}, "top", {0, 0, 1}},
        {{1e308, -1e308, 0}, "mid", {1, 0, 0}},
        {{0, 1e308, 1e308}, "low", {0, 0.5, 0.5}},
        {{-1e308, -1e308, 0}, "top", {0, 0, 1}},
        // At the limit exp is taken as it is: 1.797e308 beside 1.
        {{limit, 0, -1e308}, "mid", {1, 5.562684646268136e-309, 0}},
        // One double above it the largest is subtracted, and 0 falls below the other limit.
        {{std::nextafter(limit, 1e3), 0, 0}, "mid", {1, 0, 0}},
        {{0, -limit, -1e308}, "mid", {1, 5.562684646268136e-309, 0}},
        {{0, std::nextafter(-limit, -1e3), 0}, "mid", {0.5, 0, 0.5}},
    };
    for (const Row& row : rows) {
        Direct model;
        model.Ready();
        ASSERT_TRUE(model.Score(row.lp[0], row.lp[1], row.lp[2]).IsOK());
        EXPECT_EQ(model.slot.Text(), row.predicted) << row.lp[0] << " " << row.lp[1];
        for (size_t c = 0; c < 3; ++c) {
            EXPECT_NEAR(model.Percents()[c], row.percents[c], row.percents[c] * 1e-15 + 1e-320)
                << row.lp[0] << " " << row.lp[1] << " category " << c;
        }
    }
}

TEST(MLRModel, LinearPredictorsThatAreNoNumbersPredictTheLargestOfTheOthersOrTheFirst)
{
    struct Row {
        double lp[3];
        const char* predicted;
    };
    const double nan = std::nan("");
    for (const Row& row : {Row{{nan, 1, 2}, "mid"}, Row{{0, nan, 2}, "top"},
                           Row{{nan, nan, nan}, "mid"}, Row{{0, kInfinity, 2}, "low"}}) {
        Direct model;
        model.model.SetScoreCaseValidationCheck(false);
        model.Ready();
        ASSERT_TRUE(model.Score(row.lp[0], row.lp[1], row.lp[2]).IsOK());
        EXPECT_EQ(model.slot.Text(), row.predicted);
        EXPECT_TRUE(std::isnan(
            model.slot.Percent(row.predicted == std::string("top") ? "low" : row.predicted)));
    }
}

// The offset.

TEST(MLRModel, ConstantOffsetCancelsOut)
{
    Direct plain;
    plain.Ready();
    Direct shifted;
    shifted.model.SetOffsetValue(5.0);
    shifted.Ready();
    ASSERT_TRUE(plain.Score(1, 2, -0.5).IsOK());
    ASSERT_TRUE(shifted.Score(1, 2, -0.5).IsOK());
    EXPECT_EQ(shifted.slot.Text(), plain.slot.Text());
    for (size_t c = 0; c < 3; ++c) {
        EXPECT_NEAR(shifted.Percents()[c], plain.Percents()[c], kRounding);
    }
}

TEST(MLRModel, OffsetIsSeenByTheGuardsAlone)
{
    Direct model;
    model.model.SetOffsetValue(1000.0);
    model.Ready();
    ASSERT_TRUE(model.Score(0, 0, 0).IsOK());
    for (const double percent : model.Percents()) EXPECT_EQ(percent, 1.0 / 3.0);
    // Below the lower guard nothing is subtracted, and nothing is left.
    Direct low;
    low.model.SetOffsetValue(-1000.0);
    low.Ready();
    ASSERT_TRUE(low.Score(0, 1, 0).IsOK());
    EXPECT_EQ(low.slot.Text(), "low");
    for (const double percent : low.Percents()) EXPECT_TRUE(std::isnan(percent));
}

TEST(MLRModel, OffsetVariableIsReadOfEachCaseAndStaysReadable)
{
    Direct model;
    auto* w = Continuous("w").release();
    model.Dictionary().AddVar("w", w);
    model.model.SetOffsetVar(w);
    model.Ready();
    model.offset = 3.5;
    ASSERT_TRUE(model.Score(1, 2, 3).IsOK());
    EXPECT_EQ(model.model.GetOffsetValue(), 3.5);
    EXPECT_EQ(model.model.GetOffsetVar(), w);
    const std::vector<double> before = model.Percents();
    model.offset = -4.0;
    ASSERT_TRUE(model.Score(1, 2, 3).IsOK());
    EXPECT_EQ(model.model.GetOffsetValue(), -4.0);
    for (size_t c = 0; c < 3; ++c) EXPECT_NEAR(model.Percents()[c], before[c], kRounding);
    model.offset = 1000.0;
    ASSERT_TRUE(model.Score(0, 0, 0).IsOK());
    EXPECT_EQ(model.slot.Percent("low"), 1.0 / 3.0);
}

TEST(MLRModel, BadOffsetFailsTheCaseAndIsNamed)
{
    Direct model;
    auto* w = Continuous("w").release();
    model.Dictionary().AddVar("w", w);
    model.model.SetOffsetVar(w);
    model.Ready();
    model.offset = kSysmis;
    const auto status = model.Score(1, 2, 3);
    EXPECT_EQ(status.GetErrorCode(), 90029);
    EXPECT_EQ(status.GetDiscreteDatum(), 3);
    EXPECT_EQ(model.slot.Text(), "");
}

TEST(MLRModel, FirstOffsetThatIsSetWins)
{
    const auto w = Continuous("w");
    MLRModel model;
    model.SetOffsetVar(w.get());
    model.SetOffsetValue(2.0);
    EXPECT_EQ(model.GetOffsetVar(), w.get());
    EXPECT_EQ(model.GetOffsetValue(), 0.0);
    MLRModel other;
    other.SetOffsetValue(2.0);
    other.SetOffsetVar(w.get());
    other.SetOffsetValue(3.0);
    EXPECT_EQ(other.GetOffsetVar(), nullptr);
    EXPECT_EQ(other.GetOffsetValue(), 2.0);
}

TEST(MLRModel, OffsetVariableOfNothingAddsNothing)
{
    Direct model;
    model.model.SetOffsetVar(nullptr);
    model.model.SetOffsetValue(1000.0);  // too late
    model.Ready();
    ASSERT_TRUE(model.Score(-800, -800, 0).IsOK());
    EXPECT_EQ(model.Percents(), (std::vector<double>{0, 0, 1}));
    EXPECT_EQ(model.model.GetOffsetValue(), 0.0);
}

// Factors.

class WithFactor : public Built<MLRModel> {
public:
    WithFactor(const std::vector<std::string>& categories, const std::string& cell,
               ScoreDictVar::ValueType type = ScoreDictVar::STRING)
        : Built<MLRModel>(ThreeCategories())
    {
        Factor("f", categories, type);
        Covariate("x");
        Parameters({"p0", "pf"});
        EXPECT_TRUE(SetUp());
        Cell("pf", "f", cell);
        Cell("pf", "x", "1");
        Beta("top", "p0", 1.0);
        Beta("top", "pf", 1.0);
    }
    // The linear predictor of "top" as its odds against "low" tell it.
    double Top(Given f, double x = 1.0)
    {
        model.FinishSetup();
        Case c;
        c.With("f", std::move(f)).With("x", x);
        status = model.GetScore(&c.Record(), slot.result, true);
        return std::log(slot.Percent("top") / slot.Percent("low"));
    }
    MCScore::MCStatus status;
    Slot slot;
};

TEST(MLRModel, FactorIsComparedWithTheCell)
{
    WithFactor model({"u", "v"}, "v");
    EXPECT_NEAR(model.Top("v", 2.0), 3.0, 4 * kRounding);
    EXPECT_NEAR(model.Top("u", 2.0), 1.0, 4 * kRounding);
    EXPECT_NEAR(model.Top("v", 0.0), 1.0, 4 * kRounding);
}

TEST(MLRModel, NumericFactorIsComparedExactly)
{
    WithFactor model({"0.3", "0.30000000000000004"}, "0.3", ScoreDictVar::NUMERIC);
    EXPECT_NEAR(model.Top(0.3), 2.0, 4 * kRounding);
    EXPECT_NEAR(model.Top(0.30000000000000004), 1.0, 4 * kRounding);
}

TEST(MLRModel, AllowedMissingFactorDropsItsParametersAndTheCaseIsScored)
{
    WithFactor model({"u", "v"}, "v");
    model.model.SetAllowMissingFactors(true);
    EXPECT_NEAR(model.Top("other"), 1.0, 4 * kRounding);
    EXPECT_TRUE(model.status.IsOK());
    auto missing = std::make_unique<StringValue>("");
    missing->SetMissing();
    EXPECT_NEAR(model.Top(std::unique_ptr<ScoreValue>(std::move(missing))), 1.0, 4 * kRounding);
    EXPECT_TRUE(model.status.IsOK());
}

TEST(MLRModel, TextOutsideTheEncoderIsBad)
{
    WithFactor model({"u", "v"}, "v");
    model.Top("u");
    model.Top("other");
    EXPECT_EQ(model.status.GetErrorCode(), 90029);
    EXPECT_EQ(model.status.GetDiscreteDatum(), 0);
    EXPECT_EQ(model.slot.Text(), "NULL");
}

TEST(MLRModel, ValueThatIsAbsentWithoutValidationKeepsTheNumberOfTheCaseBefore)
{
    WithFactor model({"u", "v"}, "v");
    model.model.SetScoreCaseValidationCheck(false);
    model.Top("v", 2.0);
    EXPECT_NEAR(model.Top(nullptr, 2.0), 3.0, 4 * kRounding);
}

TEST(MLRModel, AddsParametersInTheirOrder)
{
    // Each 1 is lost beside 1e16, whose neighbours are 2 apart; the other way round it would be 2.
    Built<MLRModel> built(ThreeCategories());
    built.Parameters({"p0", "p1", "p2", "p3"});
    ASSERT_TRUE(built.SetUp());
    built.Beta("top", "p0", 1e16);
    built.Beta("top", "p1", 1.0);
    built.Beta("top", "p2", 1.0);
    built.Beta("top", "p3", -1e16);
    built.model.FinishSetup();
    Slot slot;
    ASSERT_TRUE(built.model.GetScore(&Case().Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Percent("top"), 1.0 / 3.0);
}

TEST(MLRModel, AnyNumberOfCategoriesIsTaken)
{
    for (const std::vector<std::string>& categories :
         {std::vector<std::string>{"a"}, {"a", "b"}, {"a", "b", "c", "d", "e"}}) {
        Built<MLRModel> built(Categorical("y", categories));
        built.Parameters({"p"});
        ASSERT_TRUE(built.SetUp());
        built.model.FinishSetup();
        Slot slot;
        ASSERT_TRUE(built.model.GetScore(&Case().Record(), slot.result, true).IsOK());
        EXPECT_EQ(slot.Text(), "a");
        EXPECT_EQ(slot.PercentCount(), categories.size());
        EXPECT_EQ(slot.Percent("a"), 1.0 / static_cast<double>(categories.size()));
    }
    Built<MLRModel> none(Continuous("y"));
    none.Parameters({"p"});
    EXPECT_TRUE(none.SetUp());
    EXPECT_TRUE(none.model.GetCategoryMap().empty());
}

TEST(MLRModel, DisplayIsTheCommonPartAlone)
{
    Direct model;
    EXPECT_EQ(model.model.GetModelType(), 1);
    model.Ready();
    std::ostringstream out;
    model.model.Display(out);
    EXPECT_EQ(out.str(),
              "\n"
              "Begin display of RegressionModel.\n"
              "The target: y\n"
              "df = 0\n"
              "Target categories :  size = 3\n"
              "\tlow\t1\n"
              "\tmid\t0\n"
              "\ttop\t2\n"
              "\n"
              "Parameters :  size = 3\n"
              "\tplow\t1\n"
              "\tpmid\t0\n"
              "\tptop\t2\n"
              "\n"
              "Predictors :  size = 3\n"
              "\tlow\t1\n"
              "\tmid\t0\n"
              "\ttop\t2\n"
              "\n"
              "Begin display of ParamTable object.\n"
              "Number of categories = 3, number of parameters = 3\n"
              "\tBeta=1 df=1\tBeta=0 df=0\tBeta=0 df=0\n"
              "\tBeta=0 df=0\tBeta=1 df=1\tBeta=0 df=0\n"
              "\tBeta=0 df=0\tBeta=0 df=0\tBeta=1 df=1\n"
              "\n"
              "End display of ParamTable object.\n"
              "PCovMatrix not present\n"
              "Begin display of PPCMatrix object.\n"
              "Number of parameters = 3, number of predictors = 3\n"
              "\t1\t Null\t\t Null\t\n"
              "\t Null\t\t1\t Null\t\n"
              "\t Null\t\t Null\t\t1\n"
              "\n"
              "End display of PPCMatrix object.\n"
              "End display of RegressionModel.\n");
}

TEST(MLRModel, DescribesAnEquationForEachCategoryAndTheReference)
{
    WithFactor model({"u", "v"}, "v");
    model.model.FinishSetup();
    ModelDescription about;
    model.model.Describe(about);
    EXPECT_EQ(about.className, "MLRModel");
    EXPECT_EQ(about.targetCategories, (std::vector<std::string>{"mid", "low", "top"}));
    EXPECT_EQ(about.referenceCategory, "mid");  // the first without a beta
    ASSERT_EQ(about.equations.size(), 3u);
    EXPECT_EQ(about.equations[1].category, "low");
    EXPECT_TRUE(about.equations[1].terms.empty());
    ASSERT_EQ(about.equations[2].terms.size(), 2u);
    EXPECT_EQ(about.equations[2].terms[1].factors.at(0).category, "v");
    EXPECT_EQ(about.quantities.size(), 4u);
}

}  // namespace
}  // namespace MCVelscore_850
