#include "models/normalizedmodel.h"

#include <gtest/gtest.h>

#include <cmath>

#include "host/values/numericvalue.h"
#include "models/mlrresult.h"
#include "tests/models/classifierfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

// Three categories; the equation of each is a covariate of its own name.
class Equations : public Built<NormalizedModel> {
public:
    explicit Equations(const char* normalization)
        : Built<NormalizedModel>(Categorical("y", {"mid", "low", "top"}))
    {
        EXPECT_TRUE(model.SetNormalization(normalization));
        for (const char* name : kNames) {
            Covariate(name);
            Parameters({std::string("p") + name});
        }
    }
    NormalizedModel& Ready()
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
        c.With("mid", mid).With("low", low).With("top", top);
        return model.GetScore(&c.Record(), slot.result, true);
    }
    void Expect(double mid, double low, double top)
    {
        EXPECT_NEAR(slot.Percent("mid"), mid, kRounding);
        EXPECT_NEAR(slot.Percent("low"), low, kRounding);
        EXPECT_NEAR(slot.Percent("top"), top, kRounding);
    }

    static constexpr const char* kNames[] = {"mid", "low", "top"};
    Slot slot;
};

TEST(NormalizedModel, SimplemaxIsEachValuesShareOfTheirSum)
{
    Equations model("simplemax");
    model.Ready();
    ASSERT_TRUE(model.Score(2, 3, 5).IsOK());
    model.Expect(0.2, 0.3, 0.5);
    EXPECT_EQ(model.slot.Text(), "top");
}

TEST(NormalizedModel, OfValuesThatAddUpToZeroThereAreNoProbabilities)
{
    Equations model("simplemax");
    model.Ready();
    EXPECT_EQ(model.Score(1, -1, 0).GetErrorCode(), MCScore::kNoMean);
    EXPECT_TRUE(model.Score(1, 1, 2).IsOK());
    model.Expect(0.25, 0.25, 0.5);
}

TEST(NormalizedModel, TheRemainderHasWhatTheSharesOfTheOthersLeave)
{
    Equations last("none");
    last.Ready();
    ASSERT_TRUE(last.Score(0.2, 0.5, 99).IsOK());
    last.Expect(0.2, 0.5, 0.3);
    EXPECT_EQ(last.slot.Text(), "low");

    Equations named("none");
    named.model.SetRemainder("mid");
    named.Ready();
    ASSERT_TRUE(named.Score(99, 0.1, 0.2).IsOK());
    named.Expect(0.7, 0.1, 0.2);
    EXPECT_EQ(named.slot.Text(), "mid");
}

TEST(NormalizedModel, SharesMayLeaveLessThanNothing)
{
    Equations model("none");
    model.Ready();
    ASSERT_TRUE(model.Score(0.75, 0.5, 0).IsOK());
    model.Expect(0.75, 0.5, -0.25);
}

TEST(NormalizedModel, AnOrderedTargetsSharesAreCumulative)
{
    Equations model("none");
    model.model.SetOrdered();
    model.Ready();
    ASSERT_TRUE(model.Score(0.2, 0.5, 99).IsOK());
    model.Expect(0.2, 0.3, 0.5);
    EXPECT_EQ(model.slot.Text(), "top");
}

TEST(NormalizedModel, OfEqualCategoriesTheFirstInTheTargetsOrderIsPredicted)
{
    Equations model("simplemax");
    model.Ready();
    ASSERT_TRUE(model.Score(1, 1, 1).IsOK());
    EXPECT_EQ(model.slot.Text(), "mid");  // and not "low", the first by name
}

// Each link at -1, by its formula; the normal distribution function at -1 is Abramowitz and
// Stegun's table 26.1.
TEST(NormalizedModel, EveryWordHasItsInverseLink)
{
    struct Row {
        const char* word;
        double share;
    };
    const Row rows[] = {
        {"none", -1.0},
        {"logit", 1.0 / (1.0 + std::exp(1.0))},
        {"probit", 0.158655253931457},
        {"cloglog", 1.0 - std::exp(-std::exp(-1.0))},
        {"loglog", std::exp(-std::exp(1.0))},
        {"cauchit", 0.25},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.word);
        Equations model(row.word);
        model.Ready();
        ASSERT_TRUE(model.Score(-1, -1, 0).IsOK());
        EXPECT_NEAR(model.slot.Percent("mid"), row.share, 1e-14);
    }
    NormalizedModel model;
    EXPECT_FALSE(model.SetNormalization("softmax"));
    EXPECT_EQ(model.GetNormalization(), "");
}

TEST(NormalizedModel, DerivedPredictorComesFromTheTransformationsUnlessTheRecordHoldsIt)
{
    Built<NormalizedModel> own(Categorical("y", {"a", "b"}));
    ASSERT_TRUE(own.model.SetNormalization("simplemax"));
    own.DerivedCovariate("d", 3.0);
    own.Covariate("x");
    own.Parameters({"pd", "px"});
    ASSERT_TRUE(own.SetUp());
    own.model.GetPPCMatrix()->SetCell("pd", "d", new NumericValue(1.0));
    own.model.GetNumericPPMatrix().at(0).at(0) = 1.0;
    own.Cell("px", "x", "1");
    own.Beta("a", "pd", 1.0);
    own.Beta("b", "px", 1.0);
    own.model.FinishSetup();
    Slot slot;
    Case without;
    without.With("x", 1);
    ASSERT_TRUE(own.model.GetScore(&without.Record(), slot.result, false).IsOK());
    EXPECT_NEAR(slot.Percent("a"), 0.75, kRounding);
    Case within(false);
    within.With("x", 1).With("d", 1);
    ASSERT_TRUE(own.model.GetScore(&within.Record(), slot.result, true).IsOK());
    EXPECT_NEAR(slot.Percent("a"), 0.5, kRounding);
}

TEST(NormalizedModel, TellsTheEquationsThatCountAndTheRemainder)
{
    Equations model("logit");
    model.model.SetRemainder("low");
    ModelDescription description;
    model.Ready().Describe(description);
    EXPECT_EQ(description.className, "NormalizedModel");
    EXPECT_EQ(description.link, "logit");
    EXPECT_EQ(description.referenceCategory, "low");
    ASSERT_EQ(description.equations.size(), 2U);
    EXPECT_EQ(description.equations[0].category, "mid");
    EXPECT_EQ(description.equations[1].category, "top");
}

}  // namespace
}  // namespace MCVelscore_850
