#include "models/blrmodel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "host/model/caseexplanation.h"
#include "host/values/datetimevalue.h"
#include "models/mlrresult.h"
#include "tests/models/classifierfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

constexpr double kInfinity = NumericValue::GetInfinity();

// A model whose linear predictor is the covariate x: one parameter with beta 1 and exponent 1, in
// the row of the category that has the betas.
class Direct : public Built<BLRModel> {
public:
    explicit Direct(const std::string& betaCategory = "yes",
                    std::unique_ptr<DictVar> target = TextTarget())
        : Built<BLRModel>(std::move(target))
    {
        Covariate("x");
        Parameters({"p"});
        EXPECT_TRUE(SetUp());
        Cell("p", "x", "1");
        Beta(betaCategory, "p", 1.0);
        model.SetReferencedTargetCate(new StringValue(betaCategory));
        model.FinishSetup();
    }
    MCScore::MCStatus Score(double x)
    {
        Case c;
        c.With("x", x);
        return model.GetScore(&c.Record(), slot.result, true);
    }
    Slot slot;
};

Case Row(Given f, double x) { return std::move(Case().With("f", std::move(f)).With("x", x)); }

// logit p(yes) = 0.5 + 2 c1(f) - 1 c2(f) + 0.25 x c1(f) + 3 x^2, c1 and c2 the columns of f's
// contrast matrix: u (1, 0), v (0, 1), w (-1, -1).
class Contrasts : public Built<BLRModel> {
public:
    explicit Contrasts(std::vector<double> labels = {0.0, 1.0, 2.0}) : Built<BLRModel>(TextTarget())
    {
        Factor("f", {"u", "v", "w"});
        Covariate("x");
        Parameters({"p0", "pu", "pv", "pux", "pxx"});
        EXPECT_TRUE(model.SetContrastMatrix("f", {{1, 0}, {0, 1}, {-1, -1}}, labels));
        EXPECT_TRUE(SetUp());
        Cell("pu", "f", "u");
        Cell("pv", "f", "v");
        Cell("pux", "x", "1");
        Cell("pux", "f", "u");
        Cell("pxx", "x", "2");
        Beta("yes", "p0", 0.5);
        Beta("yes", "pu", 2.0);
        Beta("yes", "pv", -1.0);
        Beta("yes", "pux", 0.25);
        Beta("yes", "pxx", 3.0);
    }
    BLRModel& Ready()
    {
        model.FinishSetup();
        return model;
    }
    MCScore::MCStatus Score(Given f, double x)
    {
        Case c = Row(std::move(f), x);
        return model.GetScore(&c.Record(), slot.result, true);
    }
    Slot slot;
};

double Logistic(double lp) { return 1.0 / (1.0 + std::exp(-lp)); }

TEST(BLRModel, FactorEntersByTheContrastOfTheCasesCategory)
{
    Contrasts model;
    model.model.FinishSetup();
    ASSERT_TRUE(model.Score("u", 1).IsOK());
    EXPECT_NEAR(model.slot.Percent("yes"), Logistic(0.5 + 2.0 + 0.25 + 3.0), kRounding);
    ASSERT_TRUE(model.Score("v", 1).IsOK());
    EXPECT_NEAR(model.slot.Percent("yes"), Logistic(0.5 - 1.0 + 3.0), kRounding);
    ASSERT_TRUE(model.Score("w", 2).IsOK());
    EXPECT_NEAR(model.slot.Percent("yes"), Logistic(0.5 - 2.0 + 1.0 - 0.25 * 2.0 + 3.0 * 4.0),
                kRounding);
    ASSERT_TRUE(model.Score("w", 0).IsOK());
    EXPECT_NEAR(model.slot.Percent("yes"), Logistic(0.5 - 2.0 + 1.0), kRounding);
}

TEST(BLRModel, RowsOfAContrastMatrixAreFoundByTheirLabels)
{
    // The rows stand for w, u, v: the case's row and the cell's column both go by the labels.
    Contrasts model({2.0, 0.0, 1.0});
    model.model.FinishSetup();
    // u is label 1: column 1 and, for a case of u, row 1: (0, 1). v is label 2: no such column.
    EXPECT_EQ(model.Score("u", 0).GetErrorCode(), 90017);
    model.Beta("yes", "pv", 0.0);
    model.model.FinishSetup();
    ASSERT_TRUE(model.Score("u", 0).IsOK());
    EXPECT_NEAR(model.slot.Percent("yes"), Logistic(0.5 + 2.0), kRounding);
    ASSERT_TRUE(model.Score("v", 0).IsOK());  // row 2: (-1, -1)
    EXPECT_NEAR(model.slot.Percent("yes"), Logistic(0.5 - 2.0), kRounding);
}

TEST(BLRModel, NumericLabelsAreComparedTolerantlyAndTheFirstMatchCounts)
{
    Built<BLRModel> built(TextTarget());
    built.Factor("f", {"0.3", "0.5"}, ScoreDictVar::NUMERIC);
    built.Parameters({"p"});
    ASSERT_TRUE(built.model.SetContrastMatrix("f", {{1, 8}, {5, 9}, {7, 7}},
                                              {0.3, 0.30000000000000004, 0.5}));
    ASSERT_TRUE(built.SetUp());
    built.Cell("p", "f", "0.30000000000000004");
    built.Beta("yes", "p", 1.0);
    built.model.FinishSetup();
    Slot slot;
    Case c;
    c.With("f", 0.3);
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_NEAR(slot.Percent("yes"), Logistic(1.0), kRounding);  // row 0, column 0
}

TEST(BLRModel, FactorValueOrCellWithoutAContrastEndsTheCase)
{
    struct Row {
        const char* what;
        RegressionModel::Matrix matrix;
        std::vector<double> labels;
        const char* value;
        bool ok;
    };
    const Row rows[] = {
        {"all there", {{1, 0}, {0, 1}, {-1, -1}}, {0, 1, 2}, "w", true},
        {"no labels", {{1, 0}, {0, 1}, {-1, -1}}, {}, "u", false},
        {"no row for the case", {{1, 0}, {0, 1}}, {0, 1}, "w", false},
        {"no column for the cell", {{1, 0}, {0, 1}, {-1, -1}}, {5, 1, 2}, "v", false},
        {"a row that is too short", {{1, 0}, {0}, {-1, -1}}, {0, 1, 2}, "v", false},
        {"fewer rows than labels", {{1, 0}, {0, 1}}, {0, 1, 2}, "w", false},
        {"a label that is no number", {{1, 0}, {0, 1}, {1, 1}}, {0, 1, std::nan("")}, "w", false},
    };
    for (const Row& row : rows) {
        Contrasts model;
        model.model.SetContrastMatrix("f", row.matrix, row.labels);
        model.model.FinishSetup();
        const auto status = model.Score(row.value, 1);
        EXPECT_EQ(status.IsOK(), row.ok) << row.what;
        EXPECT_EQ(status.GetErrorCode(), row.ok ? 0 : 90017) << row.what;
        EXPECT_EQ(model.slot.result->GetPrediction() != nullptr, row.ok) << row.what;
    }
}

TEST(BLRModel, MissingContrastLeavesAReusedResultAsItWas)
{
    Contrasts model;
    model.model.SetContrastMatrix("f", {{1, 0}, {0, 1}}, {0, 1});
    model.model.FinishSetup();
    ASSERT_TRUE(model.Score("u", 1).IsOK());
    const double before = model.slot.Percent("yes");
    EXPECT_EQ(model.Score("w", 1).GetErrorCode(), 90017);
    EXPECT_EQ(model.slot.Text(), "yes");
    EXPECT_EQ(model.slot.Percent("yes"), before);
}

TEST(BLRModel, FactorBehindACovariateOfZeroIsStillLookedUp)
{
    // The covariate comes first among the predictors here, and the term is dead already.
    Built<BLRModel> built(TextTarget());
    built.Covariate("x");
    built.Factor("f", {"u", "v"});
    built.Parameters({"p"});
    built.model.SetContrastMatrix("f", {{1}}, {0});
    ASSERT_TRUE(built.SetUp());
    built.Cell("p", "x", "1");
    built.Cell("p", "f", "u");
    built.Beta("yes", "p", 1.0);
    built.model.FinishSetup();
    Slot slot;
    Case unknown;
    unknown.With("x", 0).With("f", "v");
    EXPECT_EQ(built.model.GetScore(&unknown.Record(), slot.result, true).GetErrorCode(), 90017);
    EXPECT_EQ(built.model.GetFailedVar(), built.model.GetDictionary()->GetVar("f"));
    Case known;
    known.With("x", 0).With("f", "u");
    ASSERT_TRUE(built.model.GetScore(&known.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Percent("yes"), 0.5);
}

TEST(BLRModel, TermThatDiedStaysDeadWhateverFollows)
{
    // 0 times an infinite contrast is no number; the parameter adds nothing all the same.
    Built<BLRModel> built(TextTarget());
    built.Covariate("x");
    built.Factor("f", {"u", "v"});
    built.Parameters({"p"});
    built.model.SetContrastMatrix("f", {{kInfinity}, {0}}, {0, 1});
    ASSERT_TRUE(built.SetUp());
    built.Cell("p", "x", "1");
    built.Cell("p", "f", "u");
    built.Beta("yes", "p", 1.0);
    built.model.FinishSetup();
    Slot slot;
    Case c;
    c.With("x", 0).With("f", "u");
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(slot.Percent("yes"), 0.5);
}

TEST(BLRModel, BetaOfZeroSparesTheLookUpOfAContrast)
{
    Contrasts model;
    model.model.SetContrastMatrix("f", {{1}, {0}, {-1}}, {0, 1, 2});  // no column for v
    model.model.FinishSetup();
    EXPECT_EQ(model.Score("u", 1).GetErrorCode(), 90017);
    model.Beta("yes", "pv", 0.0);
    model.model.FinishSetup();
    EXPECT_TRUE(model.Score("u", 1).IsOK());
}

TEST(BLRModel, AllowedMissingFactorHasNoContrastUnlessInfinityIsALabel)
{
    // A text outside the encoder is bad and has infinity in its place.
    for (const bool labelled : {false, true}) {
        Contrasts model;
        model.model.SetAllowMissingFactors(true);
        if (labelled) {
            model.model.SetContrastMatrix("f", {{1, 0}, {0, 1}, {-1, -1}, {4, 4}},
                                          {0, 1, 2, kInfinity});
        }
        model.model.FinishSetup();
        const auto status = model.Score("other", 0);
        EXPECT_EQ(status.GetErrorCode(), labelled ? 0 : 90017);
        if (labelled) {
            EXPECT_NEAR(model.slot.Percent("yes"), Logistic(0.5 + 2.0 * 4.0 - 4.0), kRounding);
        }
    }
}

TEST(BLRModel, TextOutsideTheEncoderIsBadAndNamed)
{
    Contrasts model;
    model.model.FinishSetup();
    const auto status = model.Score("other", 0);
    EXPECT_EQ(status.GetErrorCode(), 90029);
    EXPECT_EQ(status.GetDiscreteDatum(), 0);
    EXPECT_EQ(model.slot.Text(), "");
}

TEST(BLRModel, FactorIsNotSubstitutedByAReplacement)
{
    Contrasts model;
    Replace(*model.Dictionary().GetVar("f"), 1.0);
    Replace(*model.Dictionary().GetVar("x"), 1.0);
    model.model.FinishSetup();
    EXPECT_EQ(model.Score("other", 1).GetErrorCode(), 90029);
    EXPECT_TRUE(model.Score("u", kSysmis).IsOK());
    EXPECT_NEAR(model.slot.Percent("yes"), Logistic(5.75), kRounding);
}

TEST(BLRModel, ValueThatIsAbsentWithoutValidationKeepsTheNumberOfTheCaseBefore)
{
    Contrasts model;
    model.model.SetScoreCaseValidationCheck(false);
    model.model.FinishSetup();
    ASSERT_TRUE(model.Score("v", 1).IsOK());
    Case c;
    c.With("f", nullptr).With("x", 2);
    ASSERT_TRUE(model.model.GetScore(&c.Record(), model.slot.result, true).IsOK());
    EXPECT_NEAR(model.slot.Percent("yes"), Logistic(0.5 - 1.0 + 12.0), kRounding);  // v again
}

// The row of the betas: a reference category of index 0 has its row on the first case alone.

TEST(BLRModel, ReferenceCategoryOfIndexOneIsStable)
{
    Direct model("yes");
    for (int turn = 0; turn < 3; ++turn) {
        ASSERT_TRUE(model.Score(2).IsOK());
        EXPECT_NEAR(model.slot.Percent("yes"), Logistic(2), kRounding) << turn;
    }
}

TEST(BLRModel, SecondCaseUsesRowOneWhenReferenceIndexIsZero)
{
    Direct model("no");
    ASSERT_TRUE(model.Score(2).IsOK());
    EXPECT_NEAR(model.slot.Percent("no"), Logistic(2), kRounding);
    for (int turn = 0; turn < 3; ++turn) {
        ASSERT_TRUE(model.Score(2).IsOK());  // row 1 has no betas
        EXPECT_EQ(model.slot.Percent("no"), 0.5) << turn;
    }
}

TEST(BLRModel, RowFlipsAlsoAfterAFirstCaseThatFailed)
{
    Direct model("no");
    EXPECT_EQ(model.Score(kSysmis).GetErrorCode(), 90029);
    ASSERT_TRUE(model.Score(2).IsOK());
    EXPECT_EQ(model.slot.Percent("no"), 0.5);
}

TEST(BLRModel, NullRecordIsNoFirstCase)
{
    Direct model("no");
    EXPECT_FALSE(model.model.GetScore(nullptr, model.slot.result, true).IsOK());
    ASSERT_TRUE(model.Score(2).IsOK());
    EXPECT_NEAR(model.slot.Percent("no"), Logistic(2), kRounding);
}

TEST(BLRModel, RowFlipsForAFreshResultToo)
{
    Direct model("no");
    ASSERT_TRUE(model.Score(2).IsOK());
    Slot other;
    Case c;
    c.With("x", 2);
    ASSERT_TRUE(model.model.GetScore(&c.Record(), other.result, true).IsOK());
    EXPECT_EQ(other.Percent("no"), 0.5);
}

TEST(BLRModel, WithoutAReferenceCategoryRowOneCounts)
{
    Direct model("yes");
    model.model.SetReferencedTargetCate(nullptr);
    ASSERT_TRUE(model.Score(2).IsOK());
    EXPECT_NEAR(model.slot.Percent("yes"), Logistic(2), kRounding);
}

TEST(BLRModel, ReferenceCategoryThatTheTargetDoesNotHaveFailsEachCase)
{
    Direct model("yes");
    model.model.SetReferencedTargetCate(new StringValue("perhaps"));
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(model.Score(2).GetErrorCode(), 90015) << turn;
        ASSERT_NE(model.slot.result, nullptr);  // stays with the caller
        EXPECT_EQ(model.slot.result->GetPrediction(), nullptr);
    }
    // Before the values are looked at.
    EXPECT_EQ(model.Score(kSysmis).GetErrorCode(), 90015);
}

TEST(BLRModel, OverflowIsGuardedOnBothSides)
{
    // Beyond ln(largest double) the larger is subtracted; below its negative exp counts as 0.
    // exp(709.782712893384) by mpmath is 1.797693134862273e308, still a double, and
    // 1 + that is rounded to it; 1 / it = 5.5626846462684e-309.
    struct Row {
        double x;
        const char* predicted;
        double yes;
        double no;
    };
    const Row rows[] = {
        {800.0, "yes", 1.0, 0.0},
        {1e3, "yes", 1.0, 0.0},
        {1e308, "yes", 1.0, 0.0},
        {-1e3, "no", 0.0, 1.0},
        {-1e308, "no", 0.0, 1.0},
        {-kInfinity, "no", 0.0, 1.0},
        {-709.782712893385, "no", 0.0, 1.0},
    };
    for (const Row& row : rows) {
        Direct model;
        model.model.SetScoreCaseValidationCheck(false);
        ASSERT_TRUE(model.Score(row.x).IsOK());
        EXPECT_EQ(model.slot.Text(), row.predicted) << row.x;
        EXPECT_EQ(model.slot.Percent("yes"), row.yes) << row.x;
        EXPECT_EQ(model.slot.Percent("no"), row.no) << row.x;
    }
    // At the limits themselves nothing is subtracted and nothing cut off.
    for (const double x : {709.782712893384, -709.782712893384}) {
        Direct model;
        ASSERT_TRUE(model.Score(x).IsOK());
        const std::string small = x > 0 ? "no" : "yes";
        EXPECT_NEAR(model.slot.Percent(small), 5.5626846462684e-309, 1e-320) << x;
        EXPECT_EQ(model.slot.Percent(x > 0 ? "yes" : "no"), 1.0) << x;
    }
    // Just above it the 0 becomes -709.78.., below the other limit, and its exp 0.
    Direct model;
    ASSERT_TRUE(model.Score(709.782712893385).IsOK());
    EXPECT_EQ(model.slot.Percent("no"), 0.0);
}

TEST(BLRModel, LinearPredictorThatIsNoNumberPredictsTheFirstCategory)
{
    for (const double x : {std::nan(""), kInfinity}) {
        Direct model;
        model.model.SetScoreCaseValidationCheck(false);
        ASSERT_TRUE(model.Score(x).IsOK());
        EXPECT_EQ(model.slot.Text(), std::isnan(x) ? "no" : "yes");
        EXPECT_TRUE(std::isnan(model.slot.Percent("yes")));  // inf - inf
    }
}

// The cut-off.

struct CutoffRow {
    const char* first;   // of the target's categories, which has index 0
    const char* second;  // which has the betas
    const char* category;
    double cutoff;
    double x;
    const char* predicted;
};

// The second category's probability is 1 / (1 + exp(-x)): 0.731 for 1, 0.378 for -0.5.
const CutoffRow kCutoffs[] = {
    // Not in force.
    {"a", "b", "a", 0.0, 1.0, "b"},
    {"a", "b", "", 0.9, 1.0, "b"},
    {"a", "b", "a", -1.0, 1.0, "b"},
    // The category of the cut-off comes last by name, then first; it has the betas.
    {"a", "b", "b", 0.7, 1.0, "b"},   // 0.731 is above
    {"a", "b", "b", 0.74, 1.0, "a"},  // and below
    {"a", "b", "b", 0.3, -0.5, "b"},  // 0.378: taken though less probable
    {"b", "a", "a", 0.7, 1.0, "a"},
    {"b", "a", "a", 0.74, 1.0, "b"},
    {"b", "a", "a", 0.3, -0.5, "a"},
    // It is the other one.
    {"a", "b", "a", 0.25, 1.0, "a"},  // 0.269
    {"a", "b", "a", 0.27, 1.0, "b"},
    {"b", "a", "b", 0.25, 1.0, "b"},
    {"b", "a", "b", 0.27, 1.0, "a"},
    // Strictly above.
    {"a", "b", "a", 0.5, 0.0, "b"},
    {"a", "b", "b", 0.5, 0.0, "a"},
    {"b", "a", "a", 0.5, 0.0, "b"},
    {"b", "a", "b", 0.5, 0.0, "a"},
    // A category that the target doesn't have: the first name is taken, and stands.
    {"a", "b", "c", 0.5, 5.0, "a"},
    {"b", "a", "c", 0.5, 5.0, "a"},
    {"b", "a", "A", 0.5, -5.0, "a"},  // letters are compared as they are
};

TEST(BLRModel, CutoffDecidesWhereItIsInForce)
{
    for (const CutoffRow& row : kCutoffs) {
        Direct model(row.second, Categorical("y", {row.first, row.second}));
        model.model.SetCutoff(row.cutoff);
        model.model.SetTargetReferenceCategory(row.category);
        for (int turn = 0; turn < 2; ++turn) {  // a fresh result and a reused one
            ASSERT_TRUE(model.Score(row.x).IsOK());
            EXPECT_EQ(model.slot.Text(), row.predicted)
                << row.first << row.second << " " << row.category << " " << row.cutoff << " "
                << row.x << ", turn " << turn;
            EXPECT_NEAR(model.slot.Percent(row.second), Logistic(row.x), kRounding);
            EXPECT_EQ(model.slot.PercentCount(), 2u);
        }
    }
}

TEST(BLRModel, CutoffNeverTakesItsCategoryUnderPredictionOnly)
{
    for (const char* category : {"no", "yes"}) {
        Direct model;
        model.model.SetPredictionOnly(true);
        model.model.SetCutoff(0.001);
        model.model.SetTargetReferenceCategory(category);
        for (const double x : {5.0, -5.0}) {
            ASSERT_TRUE(model.Score(x).IsOK());
            EXPECT_NE(model.slot.Text(), category);
            EXPECT_EQ(model.slot.PercentCount(), 0u);
        }
    }
}

TEST(BLRModel, CutoffOnANumericTargetGoesByTheCategorysText)
{
    Direct model("1", NumberTarget());
    model.model.SetCutoff(0.9);
    model.model.SetTargetReferenceCategory("1");
    for (int turn = 0; turn < 2; ++turn) {
        ASSERT_TRUE(model.Score(2).IsOK());  // 0.88
        EXPECT_EQ(model.slot.Number(), 0.0);
        ASSERT_TRUE(model.Score(3).IsOK());  // 0.95
        EXPECT_EQ(model.slot.Number(), 1.0);
    }
    model.model.SetTargetReferenceCategory("1.0");
    ASSERT_TRUE(model.Score(3).IsOK());
    EXPECT_EQ(model.slot.Number(), 0.0);  // the first of the names
}

TEST(BLRModel, ReferenceOfANumericTargetIsFoundByItsText)
{
    Direct model("1", NumberTarget());
    model.model.SetReferencedTargetCate(new NumericValue(1.0));
    ASSERT_TRUE(model.Score(2).IsOK());
    EXPECT_NEAR(model.slot.Percent("1"), Logistic(2), kRounding);
}

// Setup and its parts.

TEST(BLRModelSetup, ContrastOfAnUnknownPredictorIsRefused)
{
    Built<BLRModel> built(TextTarget());
    EXPECT_FALSE(built.model.SetContrastMatrix("f", {{1}}, {0}));
    EXPECT_TRUE(built.model.GetContrastMatrices().empty());
    built.Covariate("x");
    built.Factor("f", {"u", "v"});
    EXPECT_TRUE(built.model.SetContrastMatrix("f", {{1}, {0}}, {0, 1}));
    EXPECT_EQ(built.model.GetContrastMatrices(),
              (std::vector<RegressionModel::Matrix>{{}, {{1}, {0}}}));
    EXPECT_TRUE(built.model.SetContrastMatrix("f", {{2}}, {0}));  // the later one counts
    EXPECT_EQ(built.model.GetContrastMatrices()[1], (RegressionModel::Matrix{{2}}));
}

TEST(BLRModelSetup, FactorNeedsAContrastMatrixWithRows)
{
    for (const bool empty : {false, true}) {
        Built<BLRModel> built(TextTarget());
        built.Covariate("x");
        built.Factor("f", {"u", "v"});
        built.Parameters({"p"});
        if (empty) built.model.SetContrastMatrix("f", {}, {});
        EXPECT_FALSE(built.SetUp());
        EXPECT_NE(built.model.GetParamTable(), nullptr);
        EXPECT_NE(built.model.GetPPCMatrix(), nullptr);
        EXPECT_NE(built.model.GetPCovMatrix(), nullptr);
        EXPECT_EQ(built.model.GetNumericPPMatrix(), (RegressionModel::Matrix{{kSysmis, kSysmis}}));
    }
}

TEST(BLRModelSetup, TargetNeedsTwoCategories)
{
    for (const std::vector<std::string>& categories :
         {std::vector<std::string>{"a"}, {"a", "b", "c"}, {}}) {
        Built<BLRModel> built(Categorical("y", categories));
        built.Parameters({"p"});
        EXPECT_FALSE(built.SetUp()) << categories.size();
        EXPECT_NE(built.model.GetParamTable(), nullptr);
    }
}

TEST(BLRModelSetup, IsOfItsTypeAndKeepsWhatItIsGiven)
{
    BLRModel model;
    EXPECT_EQ(model.GetModelType(), 4);
    EXPECT_EQ(model.GetRefCategory(), nullptr);
    EXPECT_EQ(model.GetCutoff(), 0.0);
    EXPECT_EQ(model.GetTargetReferenceCategory(), "");
    model.SetCutoff(0.25);
    model.SetTargetReferenceCategory("yes");
    model.SetReferencedTargetCate(new StringValue("no"));
    EXPECT_EQ(model.GetCutoff(), 0.25);
    EXPECT_EQ(model.GetTargetReferenceCategory(), "yes");
    EXPECT_EQ(model.GetRefCategory()->GetString(), "no");
}

TEST(BLRModel, DateCovariateIsReadFromItsOwnOrigin)
{
    // Day -3652 from 1970 is 1960-01-02, day 1 from 1960.
    DictVarType type;
    type.name = "d";
    type.valueType = ScoreDictVar::DATETIME;
    type.dateTimeType = ScoreDictVar::DATE_DAYS_SINCE_1960;
    Built<BLRModel> built(TextTarget());
    built.Add(std::make_unique<DictVar>(type), ScoreModel::ROLE_COVARIATE);
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    built.model.GetPPCMatrix()->SetCell("p", "d", new NumericValue(1.0));
    built.model.GetNumericPPMatrix()[0][0] = 1.0;
    built.Beta("yes", "p", 1.0);
    built.model.FinishSetup();
    Slot slot;
    Case c;
    c.With("d", std::unique_ptr<ScoreValue>(new DateTimeValue(-3652.0)));
    ASSERT_TRUE(built.model.GetScore(&c.Record(), slot.result, true).IsOK());
    EXPECT_NEAR(slot.Percent("yes"), Logistic(1.0), kRounding);
}

TEST(BLRModel, DisplayWrapsTheCommonPart)
{
    Contrasts model;
    std::ostringstream out;
    model.model.Display(out);
    EXPECT_EQ(out.str(),
              "Begin display of BLRModel\n"
              "\n"
              "Begin display of RegressionModel.\n"
              "The target: y\n"
              "df = 0\n"
              "Target categories :  size = 2\n"
              "\tno\t0\n"
              "\tyes\t1\n"
              "\n"
              "Parameters :  size = 5\n"
              "\tp0\t0\n"
              "\tpu\t1\n"
              "\tpux\t3\n"
              "\tpv\t2\n"
              "\tpxx\t4\n"
              "\n"
              "Predictors :  size = 2\n"
              "\tf\t0\n"
              "\tx\t1\n"
              "\n"
              "Begin display of ParamTable object.\n"
              "Number of categories = 2, number of parameters = 5\n"
              "\tBeta=0 df=0\tBeta=0 df=0\tBeta=0 df=0\tBeta=0 df=0\tBeta=0 df=0\n"
              "\tBeta=0.5 df=1\tBeta=2 df=1\tBeta=-1 df=1\tBeta=0.25 df=1\tBeta=3 df=1\n"
              "\n"
              "End display of ParamTable object.\n"
              "PCovMatrix :  size = 5 by 5\n"
              "\t0\t0\t0\t0\t0\n"
              "\t0\t0\t0\t0\t0\n"
              "\t0\t0\t0\t0\t0\n"
              "\t0\t0\t0\t0\t0\n"
              "\t0\t0\t0\t0\t0\n"
              "\n"
              "Begin display of PPCMatrix object.\n"
              "Number of parameters = 5, number of predictors = 2\n"
              "\t Null\t\t Null\t\n"
              "\tu\t Null\t\n"
              "\tv\t Null\t\n"
              "\tu\t1\n"
              "\t Null\t\t2\n"
              "\n"
              "End display of PPCMatrix object.\n"
              "End display of RegressionModel.\n"
              "End display of BLRModel\n");
}

TEST(BLRModel, DescribesItsEquationItsContrastsAndTheCutoff)
{
    Contrasts model;
    model.model.SetReferencedTargetCate(new StringValue("yes"));
    model.model.SetCutoff(0.3);
    model.model.SetTargetReferenceCategory("yes");
    model.model.FinishSetup();
    ModelDescription about;
    model.model.Describe(about);
    EXPECT_EQ(about.className, "BLRModel");
    EXPECT_EQ(about.targetCategories, (std::vector<std::string>{"no", "yes"}));
    EXPECT_EQ(about.referenceCategory, "no");
    EXPECT_TRUE(about.hasCutoff);
    EXPECT_EQ(about.cutoff, 0.3);
    EXPECT_EQ(about.cutoffCategory, "yes");
    ASSERT_EQ(about.equations.size(), 1u);
    EXPECT_EQ(about.equations[0].category, "yes");
    ASSERT_EQ(about.equations[0].terms.size(), 5u);
    EXPECT_EQ(about.equations[0].terms[1].beta, 2.0);
    ASSERT_EQ(about.contrasts.size(), 1u);
    EXPECT_EQ(about.contrasts[0].predictor, "f");
    EXPECT_EQ(about.contrasts[0].categories, (std::vector<std::string>{"u", "v", "w"}));
    EXPECT_EQ(about.contrasts[0].rows, (RegressionModel::Matrix{{1, 0}, {0, 1}, {-1, -1}}));
}

TEST(BLRModel, DescribesTheBetasOfTheFirstCategoryWithoutACutoff)
{
    Direct model("no");
    model.model.SetCutoff(0.3);  // for no category: not in force
    ModelDescription about;
    model.model.Describe(about);
    EXPECT_EQ(about.referenceCategory, "yes");
    EXPECT_EQ(about.equations.at(0).category, "no");
    EXPECT_EQ(about.equations.at(0).terms.at(0).beta, 1.0);
    EXPECT_FALSE(about.hasCutoff);
    EXPECT_TRUE(about.contrasts.empty());
}

TEST(BLRModel, ErrorOfTheLinearPredictorTakesTheContrasts)
{
    Contrasts contrasts;
    EXPECT_EQ(LinearPredictorError(contrasts.Ready(), Row("w", 2.0)), kSysmis);
    PCovMatrix& v = *contrasts.model.GetPCovMatrix();
    v.SetCell("p0", "p0", 1.0);
    v.SetCell("pu", "pu", 4.0);
    v.SetCell("p0", "pu", 0.5);
    v.SetCell("pxx", "pxx", 0.25);
    // d = (1, -1, -1, -2, 4): 1 + 4 - 2 * 0.5 + 16 * 0.25
    EXPECT_EQ(LinearPredictorError(contrasts.model, Row("w", 2.0)), std::sqrt(8.0));
    contrasts.model.SetPredictionOnly(true);
    EXPECT_EQ(LinearPredictorError(contrasts.model, Row("w", 2.0)), std::sqrt(8.0));
}

// The first case of a run takes the reference category's row, and every later one row 1.
TEST(BLRModel, StateThatSettlesAsAnotherGoesOnBehindItsFirstCase)
{
    Built<BLRModel> built(Categorical("y", {"no", "yes"}));
    built.Covariate("x");
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    built.Cell("p", "x", "1");
    built.Beta("no", "p", 1.0);
    built.Beta("yes", "p", 3.0);
    built.model.SetReferencedTargetCate(new StringValue("no"));
    built.model.FinishSetup();
    Slot slot;
    const auto score = [&](ScoringState& state) {
        Case c;
        c.With("x", 2.0);
        EXPECT_TRUE(built.model.ScoreRow(state, &c.Record(), slot.result, true).IsOK());
        return state.linearPredictor;
    };
    const auto first = built.model.MakeState();
    const auto second = built.model.MakeState();
    EXPECT_EQ(score(*first), 2.0);
    EXPECT_EQ(score(*first), 6.0);
    second->SettleAs(*first);
    EXPECT_EQ(score(*second), 6.0);
    second->Unsettle();
    EXPECT_EQ(score(*second), 2.0);
    // What a run isn't asked for it doesn't compute.
    built.model.GetPCovMatrix()->SetCell("p", "p", 1.0);
    EXPECT_EQ(score(*first), 6.0);
    EXPECT_TRUE(first->probabilityErrors.empty());
}

// Without a cell of the matrix in the row of the case's category there is no contrast.
TEST(BLRModel, ContrastThatTheMatrixLacksMattersWhereItsBetaDoes)
{
    struct Row {
        double beta;
        const char* f;
        long code;
    };
    const Row rows[] = {
        {1.0, "u", 0}, {1.0, "v", 90017}, {1.0, "w", 90017}, {0.0, "v", 0}, {0.0, "w", 0}};
    for (const Row& row : rows) {
        Built<BLRModel> built(Categorical("y", {"no", "yes"}));
        DictVar& f = built.Factor("f", {"u", "v", "w"});
        built.Covariate("x");
        built.Parameters({"p", "pf"});
        // Row v has no column of w, and w no row.
        ASSERT_TRUE(built.model.SetContrastMatrix("f", {{1, 0, 2}, {0, 1}}, {0, 1, 2}));
        ASSERT_TRUE(built.SetUp());
        built.Cell("p", "x", "1");
        built.Cell("pf", "f", "w");
        built.Beta("yes", "p", 0.5);
        built.Beta("yes", "pf", row.beta);
        built.model.FinishSetup();
        const auto state = built.model.MakeState();
        Slot slot;
        Case c;
        c.With("f", row.f).With("x", 3.0);
        CaseExplanation explanation;
        const auto status =
            built.model.ExplainRow(*state, &c.Record(), slot.result, true, explanation);
        EXPECT_EQ(status.GetErrorCode(), row.code) << row.f;
        EXPECT_EQ(state->failedVar, row.code == 0 ? nullptr : &f);
        if (row.code != 0) continue;
        EXPECT_EQ(state->linearPredictor, 1.5 + 2.0 * row.beta);
        ASSERT_EQ(explanation.Sums().size(), 1U);
        const auto& addends = explanation.Sums()[0].addends;
        EXPECT_EQ(addends[0].contribution, 1.5);
        EXPECT_EQ(addends[1].contribution, 2.0 * row.beta);
        EXPECT_EQ(std::isnan(addends[1].value), std::string(row.f) != "u");
    }
}

// Columns beyond the categories are nobody's.
TEST(BLRModel, CellOfACategoryWithoutALabelHasNoContrast)
{
    Built<BLRModel> built(Categorical("y", {"no", "yes"}));
    built.Factor("f", {"u", "v", "w"});
    built.Parameters({"p"});
    ASSERT_TRUE(built.model.SetContrastMatrix("f", {{1, 2, 3}, {4, 5, 6}}, {0, 1}));
    ASSERT_TRUE(built.SetUp());
    built.Cell("p", "f", "w");
    built.Beta("yes", "p", 1.0);
    built.model.FinishSetup();
    Slot slot;
    Case c;
    c.With("f", "u");
    EXPECT_EQ(built.model.GetScore(&c.Record(), slot.result, true).GetErrorCode(), 90017);
}

}  // namespace
}  // namespace MCVelscore_850
