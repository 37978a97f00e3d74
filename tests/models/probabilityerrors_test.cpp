// Standard errors of probabilities: sqrt(g' V g), g being the derivatives of a probability by the
// estimates. The expected numbers are by mpmath, which differentiates the probabilities itself.

#include <gtest/gtest.h>

#include "models/gzlrmodel.h"
#include "tests/models/classifierfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

// What a case's probabilities have for errors, in a run that asks for them.
std::vector<double> ErrorsOf(const RegressionModel& model, Case c, bool predictionOnly = false)
{
    const auto state = model.MakeState();
    state->wantsProbabilityErrors = true;
    state->predictionOnly = predictionOnly;
    Slot slot;
    EXPECT_TRUE(model.ScoreRow(*state, &c.Record(), slot.result, true).IsOK());
    return state->probabilityErrors;
}

Case OfTwo(double a, double b) { return std::move(Case().With("a", a).With("b", b)); }

// At a = 1, b = 2: p = 1 / (1 + exp(-3)), x' V x = 1 + 2 * 0.5 * 2 + 4 * 4 = 19.
TEST(ProbabilityErrors, OfBinaryModelsAreThoseOfTheLinearPredictorTimesPTimesOneMinusP)
{
    TwoCategories<BLRModel> two;
    BLRModel& model = two.Ready();
    EXPECT_TRUE(ErrorsOf(model, OfTwo(1, 2)).empty());  // no covariances
    PCovMatrix& v = *model.GetPCovMatrix();
    v.SetCell("pa", "pa", 1.0);
    v.SetCell("pa", "pb", 0.5);
    v.SetCell("pb", "pb", 4.0);
    const std::vector<double> errors = ErrorsOf(model, OfTwo(1, 2));
    ASSERT_EQ(errors.size(), 2U);
    for (const double error : errors) EXPECT_NEAR(error, 0.19692049437376938, 1e-15);
}

// Of both categories' estimates, which don't vary together: V of the second as above, that of the
// first 0.25 I. So the variance is (p (1 - p))^2 (19 + 0.25 * 5).
TEST(ProbabilityErrors, OfAMultinomialModelCountTheEstimatesOfEveryCategory)
{
    TwoCategories<MLRModel> two;
    MLRModel& model = two.Ready();
    EXPECT_TRUE(ErrorsOf(model, OfTwo(1, 2)).empty());
    PCovMatrix& v = *model.CreatePCovMatrix();
    v.SetCell("pa", "pa", two.second, two.second, 1.0);
    v.SetCell("pa", "pb", two.second, two.second, 0.5);
    v.SetCell("pb", "pb", two.second, two.second, 4.0);
    v.SetCell("pa", "pa", two.first, two.first, 0.25);
    v.SetCell("pb", "pb", two.first, two.first, 0.25);
    const std::vector<double> errors = ErrorsOf(model, OfTwo(1, 2));
    ASSERT_EQ(errors.size(), 2U);
    for (const double error : errors) EXPECT_NEAR(error, 0.2032949687891046, 1e-15);
    EXPECT_TRUE(ErrorsOf(model, OfTwo(1, 2), true).empty());  // no probabilities
}

// Three categories with the thresholds given, and the slope 1.
template <class Model>
class ThreeLevels : public Built<Model> {
public:
    ThreeLevels(int link, double first, double second)
        : Built<Model>(Categorical("y", {"lo", "mid", "hi"}))
    {
        this->Covariate("x");
        this->Parameters({"threshold", "px"});
        this->model.SetLinkFunction(static_cast<CumulativeLinkModel::CumulLinkFunction>(link));
        EXPECT_TRUE(this->SetUp());
        this->Cell("px", "x", "1");
        this->Beta("lo", "threshold", first);
        this->Beta("mid", "threshold", second);
        this->Beta("mid", "px", 1.0);
        PCovMatrix& v = *this->model.CreatePCovMatrix();
        EXPECT_TRUE(v.SetCell("threshold", "threshold", "lo", "lo", 0.01));
        EXPECT_TRUE(v.SetCell("threshold", "threshold", "mid", "mid", 0.04));
        EXPECT_TRUE(v.SetCell("threshold", "threshold", "lo", "mid", 0.005));
        EXPECT_TRUE(v.SetCell("threshold", "px", "mid", false, -0.012));
        EXPECT_TRUE(v.SetCell("px", "px", 0.09));
        this->model.FinishSetup();
    }
};

// Thresholds -0.5 and 1, x = 0.75, a row for each cumulative link: the errors of lo, mid and hi
// where the linear predictor raises the cumulative probabilities, and where it lowers them.
struct OrdinalRow {
    int link;
    double raising[3];
    double lowering[3];
};
const OrdinalRow kOrdinalRows[] = {
    {0,
     {0.060603489526453086, 0.043968457879338322, 0.033990597634187846},
     {0.042622110797482678, 0.053762528197317621, 0.081121626608856263}},
    {1,
     {0.073764442492471927, 0.060812414906431914, 0.021115424947577252},
     {0.030585256643220067, 0.076647295497143831, 0.098738399515308816}},
    {2,
     {0.087549635678968399, 0.084169903482408003, 0.0049132201952026443},
     {0.052970042466239062, 0.081563002859491779, 0.11719075767395568}},
    {3,
     {0.088008247444639788, 0.066532393535819519, 0.03936032399091452},
     {0.026203378600167813, 0.098224290372381999, 0.1178046387013342}},
    {4,
     {0.095205982471988723, 0.08058473254387512, 0.023250897045063047},
     {0.044972121740614783, 0.09557735769209857, 0.127439264989037}},
};

template <class Model>
void ExpectOrdinalErrors(int link, const double (&expected)[3])
{
    const ThreeLevels<Model> levels(link, -0.5, 1.0);
    const std::vector<double> errors = ErrorsOf(levels.model, std::move(Case().With("x", 0.75)));
    ASSERT_EQ(errors.size(), 3U) << link;
    for (size_t c = 0; c < 3; ++c) EXPECT_NEAR(errors[c], expected[c], 1e-15) << link << ", " << c;
}

TEST(ProbabilityErrors, OfOrdinalModelsCountThresholdsAndSlopes)
{
    for (const OrdinalRow& row : kOrdinalRows) {
        ExpectOrdinalErrors<ORModel>(row.link, row.raising);
        ExpectOrdinalErrors<OGZLRModel>(row.link, row.lowering);
    }
}

// A category in between whose probability counts as none has no derivative.
TEST(ProbabilityErrors, OfThresholdsThatFallOrOfAnUnknownLinkAreNone)
{
    const ThreeLevels<ORModel> falling(0, 1.0, -0.5);
    EXPECT_TRUE(ErrorsOf(falling.model, std::move(Case().With("x", 0.75))).empty());
    const ThreeLevels<ORModel> unknown(6, -0.5, 1.0);
    EXPECT_TRUE(ErrorsOf(unknown.model, std::move(Case().With("x", 0.75))).empty());
}

// eta = b0 + b1 x of an event's category: at x = 2 the linear predictor has the error
// sqrt(0.25 + 2 * 2 * 0.125 + 4 * 0.0625) = 1.
class EventModel : public Built<GZLRModel> {
public:
    EventModel(GZLRModel::LinkFunction link, double intercept, double slope) : Built(TextTarget())
    {
        model.SetLinkFunction(link);
        model.SetDistType(GZLRModel::DIST_BINOMIAL);
        Covariate("x");
        Parameters({"p0", "p1"});
        EXPECT_TRUE(SetUp());
        Cell("p1", "x", "1");
        for (const auto& [category, row] : model.GetCategoryVector()) {
            Beta(category, "p0", intercept);
            Beta(category, "p1", slope);
        }
        PCovMatrix& v = *model.CreatePCovMatrix();
        v.SetCell("p0", "p0", 0.25);
        v.SetCell("p0", "p1", 0.125);
        v.SetCell("p1", "p1", 0.0625);
        model.FinishSetup();
    }
};

TEST(ProbabilityErrors, OfGeneralizedLinearModelsAreDerivativesOfTheMean)
{
    // The derivatives of tests/data/links/links.csv at 1 and at -1, where the log-complement falls.
    const EventModel logit(GZLRModel::LINK_LOGIT, 2.0, -0.5);
    const EventModel falling(GZLRModel::LINK_LOGC, -2.0, 0.5);
    const std::pair<const EventModel*, double> rows[] = {{&logit, 0.19661193324148185},
                                                         {&falling, 0.36787944117144232}};
    for (const auto& [built, expected] : rows) {
        const std::vector<double> errors = ErrorsOf(built->model, std::move(Case().With("x", 2.0)));
        ASSERT_EQ(errors.size(), 2U);
        for (const double error : errors) EXPECT_NEAR(error, expected, 1e-15);
    }
    // Beyond its guards a log link has no mean, and so no error.
    const EventModel beyond(GZLRModel::LINK_LOG, 800.0, 1.0);
    const auto state = beyond.model.MakeState();
    state->wantsProbabilityErrors = true;
    Slot slot;
    Case c;
    c.With("x", 2.0);
    EXPECT_EQ(beyond.model.ScoreRow(*state, &c.Record(), slot.result, true).GetErrorCode(), 90028);
    EXPECT_TRUE(state->probabilityErrors.empty());
}

}  // namespace
}  // namespace MCVelscore_850
