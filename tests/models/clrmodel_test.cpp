#include "models/clrmodel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "models/clrresult.h"
#include "models/mlrresult.h"
#include "tests/models/classifierfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

constexpr double kInfinity = NumericValue::GetInfinity();

// lp = x + 2 x^2 [f = v]
class Small : public Built<CLRModel> {
public:
    Small() : Built<CLRModel>(TextTarget())
    {
        Covariate("x");
        Factor("f", {"u", "v"});
        Parameters({"p", "pf"});
        EXPECT_TRUE(SetUp());
        Cell("p", "x", "1");
        Cell("pf", "x", "2");
        Cell("pf", "f", "v");
        Beta("no", "p", 1.0);
        Beta("no", "pf", 2.0);
    }
    MCScore::MCStatus Score(Given x, Given f, bool indexed = true)
    {
        last = std::make_unique<Case>(indexed);
        last->With("x", std::move(x)).With("f", std::move(f));
        return model.GetScore(&last->Record(), slot.result, true);
    }
    Slot slot;
    std::unique_ptr<Case> last;
};

double Logistic(double lp) { return 1.0 / (1.0 + std::exp(-lp)); }

TEST(CLRModel, PredictsTheProbabilityOfTheFirstCategory)
{
    Small small;
    small.model.FinishSetup();
    ASSERT_TRUE(small.Score(0.5, "u").IsOK());
    EXPECT_NEAR(small.slot.Number(), 0.62245933120185456464, kRounding);  // of 0.5, by mpmath
    ASSERT_TRUE(small.Score(0.5, "v").IsOK());
    EXPECT_NEAR(small.slot.Number(), Logistic(0.5 + 2.0 * 0.25), kRounding);
    ASSERT_TRUE(small.Score(0, "v").IsOK());
    EXPECT_EQ(small.slot.Number(), 0.5);
    EXPECT_EQ(small.slot.result->GetScoreResultType(), 4);
    EXPECT_EQ(small.slot.As<CLRResult>().GetStdDev(), -1.0);
}

TEST(CLRModel, BetasOfZeroPredictOneHalf)
{
    Small small;
    small.Beta("no", "p", 0.0);
    small.Beta("no", "pf", 0.0);
    small.model.FinishSetup();
    ASSERT_TRUE(small.Score(7, "v").IsOK());
    EXPECT_EQ(small.slot.Number(), 0.5);
}

TEST(CLRModel, TheMadeUpCategoryHasARowOfItsOwn)
{
    Small small;
    small.Beta("CLRdummy", "p", 3.0);  // no document can; 1 - 3 = -2 against 0
    small.model.FinishSetup();
    ASSERT_TRUE(small.Score(1, "u").IsOK());
    EXPECT_NEAR(small.slot.Number(), 0.11920292202211755594, kRounding);
}

TEST(CLRModel, OverflowIsGuarded)
{
    struct Row {
        double x;
        double p;
    };
    const double limit = 709.782712893384;
    const Row rows[] = {
        {1e3, 1.0},
        {-1e3, 0.0},
        {1e308, 1.0},
        {-1e308, 0.0},
        {limit, 1.0},
        // exp(-limit) by mpmath, beside 1
        {-limit, 5.562684646268136e-309},
        {std::nextafter(-limit, -1e3), 0.0},
    };
    for (const Row& row : rows) {
        Small small;
        small.model.FinishSetup();
        ASSERT_TRUE(small.Score(row.x, "u").IsOK());
        EXPECT_NEAR(small.slot.Number(), row.p, 1e-320) << row.x;
    }
    for (const double x : {std::nan(""), kInfinity}) {
        Small small;
        small.model.SetScoreCaseValidationCheck(false);
        small.model.FinishSetup();
        ASSERT_TRUE(small.Score(x, "u").IsOK());
        EXPECT_TRUE(std::isnan(small.slot.Number())) << x;
    }
}

TEST(CLRModel, NullRecordFailsWithoutATrace)
{
    Small small;
    small.model.FinishSetup();
    EXPECT_TRUE(TraceOfNullRecord(small.model).empty());
}

TEST(CLRModel, ReusedResultKeepsItsPredictionObject)
{
    Small small;
    small.model.FinishSetup();
    ASSERT_TRUE(small.Score(1, "u").IsOK());
    const ScoreResult* result = small.slot.result;
    const ScoreValue* prediction = result->GetPrediction();
    ASSERT_TRUE(small.Score(2, "u").IsOK());
    EXPECT_EQ(small.slot.result, result);
    EXPECT_EQ(result->GetPrediction(), prediction);
    EXPECT_NEAR(small.slot.Number(), Logistic(2), kRounding);
}

TEST(CLRModel, ResultOfAnotherTypeIsReplaced)
{
    Small small;
    small.model.FinishSetup();
    small.slot.result = new MLRResult(small.model.GetTargetVar());
    ASSERT_TRUE(small.Score(1, "u").IsOK());
    EXPECT_EQ(small.slot.result->GetScoreResultType(), ScoreResult::CLR_RESULT);
    EXPECT_NEAR(small.slot.Number(), Logistic(1), kRounding);
}

TEST(CLRModel, PredictionOnlyMakesNoDifference)
{
    Small small;
    small.model.SetPredictionOnly(true);
    small.model.FinishSetup();
    ASSERT_TRUE(small.Score(1, "u").IsOK());
    EXPECT_NEAR(small.slot.Number(), Logistic(1), kRounding);
}

TEST(CLRModel, BadValueUnderItsOwnPolicyIsANumberThatIsMissing)
{
    Small small;
    EXPECT_EQ(small.model.GetMissingValuePolicy(), ScoreModel::MV_SYSMIS_RESULT);
    small.model.FinishSetup();
    for (int turn = 0; turn < 2; ++turn) {  // a fresh result and a reused one
        const auto status = small.Score(kSysmis, "u");
        EXPECT_EQ(status.GetErrorCode(), 90029);
        EXPECT_EQ(status.GetDiscreteDatum(), -1);  // this family names no predictor
        EXPECT_EQ(small.slot.result->GetPrediction()->GetValueType(), ScoreValue::NUMERIC);
        EXPECT_EQ(small.slot.Number(), kSysmis);
    }
    EXPECT_FALSE(small.Score(1, "other").IsOK());
    EXPECT_FALSE(small.Score(1, nullptr).IsOK());
}

TEST(CLRModel, StatusOnlyPolicyAndAnyOtherLetTheValueStand)
{
    for (const int policy : {2, 3, 7}) {
        Small small;
        small.model.SetMissingValuePolicy(static_cast<ScoreModel::MVPolicy>(policy));
        small.model.FinishSetup();
        ASSERT_TRUE(small.Score(1, "other").IsOK()) << policy;  // meets no cell
        EXPECT_NEAR(small.slot.Number(), Logistic(1), kRounding);
        ASSERT_TRUE(small.Score(kSysmis, "u").IsOK());  // the most negative number
        EXPECT_EQ(small.slot.Number(), 0.0);
        ASSERT_TRUE(small.Score(nullptr, "v").IsOK());  // what is absent drops its terms
        EXPECT_EQ(small.slot.Number(), 0.5);
        ASSERT_TRUE(small.Score(1, nullptr).IsOK());
        EXPECT_NEAR(small.slot.Number(), Logistic(1), kRounding);
    }
}

TEST(CLRModel, SubstitutesACovariateIntoTheRecordAndNotAFactor)
{
    Small small;
    Replace(*small.Dictionary().GetVar("x"), 2.0);
    Replace(*small.Dictionary().GetVar("f"), 2.0);
    small.model.SetMissingValuePolicy(ScoreModel::MV_SUBSTITUTE);
    small.model.FinishSetup();
    ASSERT_TRUE(small.Score(kSysmis, "u").IsOK());
    EXPECT_NEAR(small.slot.Number(), Logistic(2), kRounding);
    EXPECT_EQ(small.last->Record().GetValue("x")->GetDouble(), 2.0);
    ASSERT_TRUE(small.Score(nullptr, "u").IsOK());
    EXPECT_NEAR(small.slot.Number(), Logistic(2), kRounding);
    EXPECT_EQ(small.Score(1, "other").GetErrorCode(), 90029);
    EXPECT_EQ(small.slot.Number(), kSysmis);
}

TEST(CLRModel, RecordWithoutPositionsIsReadByName)
{
    Small small;
    small.model.FinishSetup();
    ASSERT_TRUE(small.Score(1, "u", false).IsOK());
    EXPECT_NEAR(small.slot.Number(), Logistic(1), kRounding);
}

TEST(CLRModel, DerivedPredictorIsBadUnderValidationUnlessTheRecordHoldsIt)
{
    for (const bool validates : {true, false}) {
        Built<CLRModel> built(TextTarget());
        built.DerivedCovariate("d", 2.0);
        built.model.SetScoreCaseValidationCheck(validates);
        built.Parameters({"pd"});
        ASSERT_TRUE(built.SetUp());
        built.model.GetPPCMatrix()->SetCell("pd", "d", new NumericValue(1.0));
        built.Beta("no", "pd", 1.0);
        built.model.FinishSetup();
        Slot slot;
        Case without;
        without.With("other", 5);
        EXPECT_EQ(built.model.GetScore(&without.Record(), slot.result, false).IsOK(), !validates);
        EXPECT_NEAR(slot.Number(), validates ? kSysmis : Logistic(2), kRounding);
        Case within(false);
        within.With("d", 3);
        ASSERT_TRUE(built.model.GetScore(&within.Record(), slot.result, true).IsOK());
        EXPECT_NEAR(slot.Number(), Logistic(3), kRounding);
        // The reading by name finds it here too, where the walk alone would have passed it over.
        ASSERT_TRUE(built.model.GetScore(&within.Record(), slot.result, false).IsOK());
        EXPECT_NEAR(slot.Number(), Logistic(validates ? 3 : 2), kRounding);
    }
}

TEST(CLRModelSetup, TakesTheFirstCategoryAndAMadeUpOne)
{
    Built<CLRModel> built(Categorical("y", {"e", "d", "c", "b", "a"}));
    built.Covariate("x");
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    EXPECT_EQ(built.model.GetModelType(), 2);
    EXPECT_EQ(built.model.GetCategoryVector(),
              (RegressionModel::NameVector{{"CLRdummy", 1}, {"e", 0}}));
    EXPECT_EQ(built.model.GetDummyCategory(), "CLRdummy");
    EXPECT_NE(built.model.GetPCovMatrix(), nullptr);
    EXPECT_TRUE(built.model.GetNumericPPMatrix().empty());
}

TEST(CLRModelSetup, RefusalLeavesNoTable)
{
    struct Row {
        const char* what;
        std::vector<std::string> categories;
        std::vector<std::string> parameters;
        std::vector<std::string> predictors;
    };
    const Row rows[] = {
        {"no category", {}, {"p"}, {"x"}},
        {"a category of the made-up name", {"CLRdummy", "a"}, {"p"}, {"x"}},
        {"no parameter", {"a"}, {}, {"x"}},
        {"no predictor", {"a"}, {"p"}, {}},
        {"a predictor that is nowhere", {"a"}, {"p"}, {"x", "nowhere"}},
    };
    for (const Row& row : rows) {
        Built<CLRModel> built(Categorical("y", row.categories));
        built.Dictionary().AddVar("x", Continuous("x").release());
        for (const std::string& name : row.predictors) built.model.AddPredictor(name);
        built.Parameters(row.parameters);
        EXPECT_FALSE(built.SetUp()) << row.what;
        EXPECT_EQ(built.model.GetParamTable(), nullptr) << row.what;
        EXPECT_EQ(built.model.GetPPCMatrix(), nullptr) << row.what;
        EXPECT_EQ(built.model.GetCategoryMap().empty(), row.categories.empty()) << row.what;
    }
    Built<CLRModel> continuous;
    continuous.Covariate("x");
    continuous.Parameters({"p"});
    EXPECT_FALSE(continuous.SetUp());
}

TEST(CLRModelSetup, LaterCategoryMayBearTheMadeUpName)
{
    Built<CLRModel> built(Categorical("y", {"a", "CLRdummy"}));
    built.Covariate("x");
    built.Parameters({"p"});
    EXPECT_TRUE(built.SetUp());
}

TEST(CLRModel, DisplayWrapsTheCommonPart)
{
    Small small;
    std::ostringstream out;
    small.model.Display(out);
    EXPECT_EQ(out.str(),
              "Begin display of CLRModel\n"
              "\n"
              "Begin display of RegressionModel.\n"
              "The target: y\n"
              "df = 0\n"
              "Target categories :  size = 2\n"
              "\tCLRdummy\t1\n"
              "\tno\t0\n"
              "\n"
              "Parameters :  size = 2\n"
              "\tp\t0\n"
              "\tpf\t1\n"
              "\n"
              "Predictors :  size = 2\n"
              "\tf\t1\n"
              "\tx\t0\n"
              "\n"
              "Begin display of ParamTable object.\n"
              "Number of categories = 2, number of parameters = 2\n"
              "\tBeta=1 df=1\tBeta=2 df=1\n"
              "\tBeta=0 df=0\tBeta=0 df=0\n"
              "\n"
              "End display of ParamTable object.\n"
              "PCovMatrix :  size = 2 by 2\n"
              "\t0\t0\n"
              "\t0\t0\n"
              "\n"
              "Begin display of PPCMatrix object.\n"
              "Number of parameters = 2, number of predictors = 2\n"
              "\t1\t Null\t\n"
              "\t2\tv\n"
              "\n"
              "End display of PPCMatrix object.\n"
              "End display of RegressionModel.\n"
              "End display of CLRModel\n");
}

TEST(CLRModel, DescribesTheProbabilityThatItPredicts)
{
    Small small;
    small.model.FinishSetup();
    ModelDescription about;
    small.model.Describe(about);
    EXPECT_EQ(about.className, "CLRModel");
    EXPECT_TRUE(about.targetCategories.empty());  // none is predicted
    ASSERT_EQ(about.equations.size(), 1u);
    EXPECT_EQ(about.equations[0].category, "no");
    ASSERT_EQ(about.quantities.size(), 1u);
    EXPECT_EQ(about.quantities[0].column, "prediction");
    EXPECT_EQ(about.quantities[0].meaning, "probability of no");
}

TEST(CLRModel, ErrorOfTheLinearPredictorIsOfTheFirstCategorysEquation)
{
    Small small;
    small.model.FinishSetup();
    const auto row = [] { return std::move(Case().With("x", 3.0).With("f", "v")); };
    EXPECT_EQ(LinearPredictorError(small.model, row()), kSysmis);
    PCovMatrix& v = *small.model.GetPCovMatrix();
    v.SetCell("p", "p", 2.0);
    v.SetCell("pf", "pf", 0.5);
    v.SetCell("p", "pf", 0.25);
    // d = (3, 9): 9 * 2 + 81 * 0.5 + 2 * 27 * 0.25
    EXPECT_EQ(LinearPredictorError(small.model, row()), std::sqrt(72.0));
}

// Without validation a factor of numbers meets what equals none of them: nothing, and a text.
TEST(CLRModel, WithoutValidationWhatIsNoNumberIsNoCategory)
{
    Built<CLRModel> built(TextTarget());
    built.Covariate("x");
    built.Factor("g", {"0", "1"}, ScoreDictVar::NUMERIC);
    built.Parameters({"p", "p0", "p1"});
    ASSERT_TRUE(built.SetUp());
    built.Cell("p", "x", "1");
    built.Cell("p0", "g", "0");
    built.Cell("p1", "g", "1");
    for (const auto& [name, beta] : {std::pair{"p", 1.0}, {"p0", 20.0}, {"p1", 30.0}}) {
        built.Beta("no", name, beta);
    }
    built.model.SetScoreCaseValidationCheck(false);
    built.model.FinishSetup();
    const auto state = built.model.MakeState();
    struct Row {
        Given x, g;
        double lp;
    };
    Row rows[] = {{2.0, 1.0, 32.0},
                  {2.0, nullptr, 2.0},
                  {2.0, "1", 2.0},
                  {nullptr, 0.0, 20.0},  // an absent number is 0
                  {nullptr, nullptr, 0.0}};
    for (Row& row : rows) {
        Slot slot;
        Case c;
        c.With("x", std::move(row.x)).With("g", std::move(row.g));
        ASSERT_TRUE(built.model.ScoreRow(*state, &c.Record(), slot.result, true).IsOK());
        EXPECT_EQ(state->linearPredictor, row.lp);
    }
}

}  // namespace
}  // namespace MCVelscore_850
