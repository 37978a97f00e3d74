// Models that lack something: a target, a variable for a predictor, the setup, categories. No
// document makes them, but a program may: each still tells what it has, and none is scored by
// block.

#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include "host/model/batchscorer.h"
#include "host/model/caseexplanation.h"
#include "host/model/modeldescription.h"
#include "host/model/modeltables.h"
#include "models/blrmodel.h"
#include "models/clrmodel.h"
#include "models/coxregrmodel.h"
#include "models/glrmodel.h"
#include "models/gzlrmodel.h"
#include "models/lrmodel.h"
#include "models/mlrmodel.h"
#include "models/normalizedmodel.h"
#include "models/ogzlrmodel.h"
#include "models/ormodel.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

std::unique_ptr<DictVar> NoYes() { return Categorical("y", {"no", "yes"}); }

ModelDescription Described(const ScoreModel& model)
{
    ModelDescription about;
    model.Describe(about);
    return about;
}

std::string Displayed(const ScoreModel& model)
{
    std::ostringstream out;
    model.Display(out);
    return out.str();
}

bool Holds(const std::string& text, const std::string& piece)
{
    return text.find(piece) != std::string::npos;
}

template <class Model>
class Incomplete : public ::testing::Test {};
using Families = ::testing::Types<LRModel, GLRModel, GZLRModel, MLRModel, NormalizedModel, BLRModel,
                                  CLRModel, ORModel, OGZLRModel, CoxRegModel>;
TYPED_TEST_SUITE(Incomplete, Families);

TYPED_TEST(Incomplete, APredictorWithoutAVariableIsToldByNobody)
{
    Built<TypeParam> built(NoYes());
    built.Covariate("x");
    built.model.AddPredictor("zero");  // behind x by name, so that x is found
    built.Parameters({"p", "q"});
    EXPECT_FALSE(built.SetUp());
    EXPECT_TRUE(built.model.FinishSetup());
    EXPECT_EQ(built.model.MakeBatchScorer(), nullptr);
    if (PPCMatrix* cells = built.model.GetPPCMatrix()) {
        cells->SetCell("p", "zero", new NumericValue(1.0));
        cells->SetCell("q", "x", new NumericValue(2.0));
    }
    const ModelDescription about = Described(built.model);
    EXPECT_EQ(about.variables, std::vector<std::string>{"x"});
    EXPECT_EQ(about.covariates, std::vector<std::string>{"x"});
    for (const auto& equation : about.equations) {
        for (const auto& term : equation.terms) {
            for (const auto& factor : term.factors) EXPECT_EQ(factor.predictor, "x");
        }
    }
    EXPECT_TRUE(Holds(Displayed(built.model), "\tzero\t1\n"));
    // A record binds what there is.
    Case c;
    c.With("x", 1.0);
    built.model.SetUpDictVarIndex(&c.Record(), false);
    EXPECT_EQ(built.Dictionary().GetVar("x")->GetDictIndex(), 0);
}

TYPED_TEST(Incomplete, AModelThatIsNotSetUpTellsItsTargetAndItsNames)
{
    Built<TypeParam> built(NoYes());
    built.Covariate("x");
    built.Parameters({"p"});
    const ModelDescription about = Described(built.model);
    EXPECT_EQ(about.target, "y");
    EXPECT_TRUE(about.variables.empty());
    EXPECT_FALSE(about.hasCovariances);
    for (const auto& coefficient : about.coefficients) {
        EXPECT_EQ(coefficient.estimate, 0.0);
        EXPECT_TRUE(std::isnan(coefficient.standardError));
    }
    const std::string shown = Displayed(built.model);
    EXPECT_TRUE(Holds(shown, "Parameters :  size = 1\n\tp\t0\n"));
    EXPECT_TRUE(Holds(shown, "ParamTable not present\n"));
    EXPECT_TRUE(Holds(shown, "PPCMatrix not present\n"));
    ModelTables tables;
    tables.covariances = {{1.0}};
    built.model.Tabulate(tables);
    EXPECT_TRUE(tables.covariances.empty());
}

TYPED_TEST(Incomplete, AModelWithoutATargetHasNoName)
{
    TypeParam model;
    EXPECT_FALSE(model.SetTargetVar("y"));
    model.Setup();
    EXPECT_TRUE(model.FinishSetup());
    EXPECT_EQ(Described(model).target, "");
    EXPECT_TRUE(Described(model).targetCategories.empty());
    EXPECT_TRUE(Holds(Displayed(model), "The target: \n"));
    const std::unique_ptr<BaseDictionary> vars(model.GetVarsOfRole(ScoreModel::ROLE_TARGET));
    EXPECT_TRUE(vars->GetVars().empty());
}

// Each of these has all that its family needs for blocks but one thing.
struct WithoutBlocks {
    const char* lacks;
    std::function<std::unique_ptr<BatchScorer>(bool whole)> make;
};

template <class Model>
std::unique_ptr<BatchScorer> OfTarget(bool categories, const std::vector<std::string>& names)
{
    Built<Model> built(categories ? Categorical("y", names) : Continuous("y"));
    built.Covariate("x");
    built.Parameters({"p"});
    built.SetUp();
    built.model.FinishSetup();
    return built.model.MakeBatchScorer();
}

// Binary: with a factor and what else is done to the model.
std::unique_ptr<BatchScorer> OfBinary(bool contrasts, const std::function<void(BLRModel&)>& change)
{
    Built<BLRModel> built(NoYes());
    built.Factor("f", {"u", "v"});
    built.Parameters({"p"});
    if (contrasts) built.model.SetContrastMatrix("f", {{1.0}, {-1.0}}, {0.0, 1.0});
    built.SetUp();
    built.model.GetNumericPPMatrix()[0][0] = 0.0;
    change(built.model);
    built.model.FinishSetup();
    return built.model.MakeBatchScorer();
}

template <class Model>
std::unique_ptr<BatchScorer> OfLink(int link)
{
    using Links = decltype(Model().GetLinkFunction());
    Built<Model> built(NoYes());
    built.model.SetLinkFunction(static_cast<Links>(link));
    built.Covariate("x");
    built.Parameters({"threshold", "p"});
    built.SetUp();
    built.model.FinishSetup();
    return built.model.MakeBatchScorer();
}

std::unique_ptr<BatchScorer> OfCox(const std::string& time, const std::string& stratum)
{
    Built<CoxRegModel> built("status");
    built.Covariate("x");
    built.Parameters({"p"});
    built.model.SetEndTimeVariableName(time);
    built.model.SetCumHazardTable({{{1.0, 0.5}}}, {"1"}, stratum);
    built.SetUp();
    built.model.FinishSetup();
    return built.model.MakeBatchScorer();
}

// A factor f beside x; `categories` are those of f's contrasts.
std::unique_ptr<BatchScorer> OfCoxContrasts(size_t categories, bool resolved)
{
    Built<CoxRegModel> built("status");
    built.Covariate("x");
    built.Factor("f", {"u", "v"});
    if (!resolved) built.model.AddPredictor("g");
    built.Parameters({"p"});
    built.model.SetEndTimeVariableName("x");
    built.model.SetCumHazardTable({{{1.0, 0.5}}}, {}, "");
    std::vector<ScoreValue*> values;
    for (size_t i = 0; i < categories; ++i) values.push_back(new StringValue(i == 0 ? "u" : "v"));
    built.model.SetContrastMatrix("f", {{1.0}, {-1.0}}, values);
    built.SetUp();
    built.Cell("p", "f", "u");
    built.Beta("p", 1.0);
    built.model.FinishSetup();
    return built.model.MakeBatchScorer();
}

// Cells of a factor that are numbers: values of another kind equal none.
std::unique_ptr<BatchScorer> OfNumberCells(bool isNumber)
{
    Built<GZLRModel> built;
    built.Factor("f", {"1", "2"}, isNumber ? ScoreDictVar::NUMERIC : ScoreDictVar::STRING);
    built.Parameters({"p"});
    built.SetUp();
    built.model.GetPPCMatrix()->SetCell("p", "f", new NumericValue(1.0));
    built.model.FinishSetup();
    return built.model.MakeBatchScorer();
}

TEST(Blocks, AreThereForModelsThatLackNothing)
{
    const WithoutBlocks rows[] = {
        {"categories of a multinomial target",
         [](bool whole) {
             return OfTarget<MLRModel>(whole, {"a", "b", "c"});
         }},
        {"categories of a normalized target",
         [](bool whole) {
             return OfTarget<NormalizedModel>(whole, {"a", "b", "c"});
         }},
        {"categories of an ordinal target",
         [](bool whole) {
             return OfTarget<ORModel>(whole, {"a", "b", "c"});
         }},
        {"categories of a conditional target",
         [](bool whole) {
             return OfTarget<CLRModel>(whole, {"a", "b"});
         }},
        {"the second category of a binary target",
         [](bool whole) {
             using Names = std::vector<std::string>;
             return OfTarget<BLRModel>(true, whole ? Names{"a", "b"} : Names{"a"});
         }},
        {"no more than two categories of a binary target",
         [](bool whole) {
             using Names = std::vector<std::string>;
             return OfTarget<BLRModel>(true, whole ? Names{"a", "b"} : Names{"a", "b", "c"});
         }},
        {"contrasts of a factor", [](bool whole) { return OfBinary(whole, [](BLRModel&) {}); }},
        {"the reference category among the target's",
         [](bool whole) {
             return OfBinary(true, [whole](BLRModel& model) {
                 model.SetReferencedTargetCate(new StringValue(whole ? "yes" : "perhaps"));
             });
         }},
        {"the probabilities that a cut-off looks at",
         [](bool whole) {
             return OfBinary(true, [whole](BLRModel& model) {
                 model.SetPredictionOnly(true);
                 model.SetTargetReferenceCategory("yes");
                 model.SetCutoff(whole ? 0.0 : 0.5);
             });
         }},
        {"a link of a generalized linear model",
         [](bool whole) { return OfLink<GZLRModel>(whole ? 9 : 10); }},
        {"a link of an ordinal model", [](bool whole) { return OfLink<ORModel>(whole ? 4 : 5); }},
        {"the end time", [](bool whole) { return OfCox(whole ? "x" : "t", ""); }},
        {"the stratum variable", [](bool whole) { return OfCox("x", whole ? "x" : "s"); }},
        {"categories of contrasts", [](bool whole) { return OfCoxContrasts(whole ? 2 : 0, true); }},
        {"the variable of a predictor beside contrasts",
         [](bool whole) { return OfCoxContrasts(2, whole); }},
        {"numbers in a factor that is compared with numbers", OfNumberCells},
    };
    for (const WithoutBlocks& row : rows) {
        EXPECT_NE(row.make(true), nullptr) << row.lacks;
        EXPECT_EQ(row.make(false), nullptr) << row.lacks;
    }
}

// Scores of models whose setup failed: nothing is read beyond what there is.

TEST(BLRModelOfOneCategory, HasNoLinearPredictor)
{
    Built<BLRModel> built(Categorical("y", {"only"}));
    built.Covariate("x");
    built.Parameters({"p"});
    EXPECT_FALSE(built.SetUp());
    built.Cell("p", "x", "1");
    built.Beta("only", "p", 2.0);
    built.model.GetPCovMatrix()->SetCell("p", "p", 1.0);
    built.model.FinishSetup();
    const auto state = built.model.MakeState();
    state->wantsProbabilityErrors = true;
    Slot slot;
    Case c;
    c.With("x", 3.0);
    CaseExplanation explanation;
    ASSERT_TRUE(built.model.ExplainRow(*state, &c.Record(), slot.result, true, explanation).IsOK());
    EXPECT_EQ(state->linearPredictor, kSysmis);
    EXPECT_TRUE(state->probabilityErrors.empty());
    EXPECT_TRUE(explanation.Sums().empty());
    EXPECT_EQ(slot.Percent("only"), 0.5);  // exp(0) of two
    const ModelDescription about = Described(built.model);
    EXPECT_TRUE(about.equations.empty());
    EXPECT_TRUE(about.coefficients.empty());
}

// The third has a row of betas, and no share in the two probabilities.
TEST(BLRModelOfThreeCategories, ComparesTheFirstTwo)
{
    Built<BLRModel> built(Categorical("y", {"a", "b", "c"}));
    built.Covariate("x");
    built.Parameters({"p"});
    EXPECT_FALSE(built.SetUp());
    built.Cell("p", "x", "1");
    built.Beta("c", "p", 2.0);
    built.model.SetReferencedTargetCate(new StringValue("c"));
    built.model.FinishSetup();
    const auto state = built.model.MakeState();
    Slot slot;
    Case c;
    c.With("x", 3.0);
    ASSERT_TRUE(built.model.ScoreRow(*state, &c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(state->linearPredictor, 6.0);
    EXPECT_EQ(slot.Percent("a"), 0.5);
    EXPECT_EQ(slot.Percent("b"), 0.5);
    EXPECT_EQ(slot.Percent("c"), 0.0);
}

TEST(BLRModelWithoutContrasts, FailsACaseByItsFactor)
{
    Built<BLRModel> built(NoYes());
    DictVar& factor = built.Factor("f", {"u", "v"});
    built.Parameters({"p"});
    EXPECT_FALSE(built.SetUp());
    built.Cell("p", "f", "u");
    built.Beta("yes", "p", 1.0);
    built.model.FinishSetup();
    Slot slot;
    Case c;
    c.With("f", "u");
    EXPECT_EQ(built.model.GetScore(&c.Record(), slot.result, true).GetErrorCode(), 90017);
    EXPECT_EQ(built.model.GetFailedVar(), &factor);
}

// Labels of contrasts as a description tells them: a number itself, a text by its position.
TEST(BLRModelOfAnyLabels, TellsTheCategoriesThatItKnows)
{
    Built<BLRModel> built(NoYes());
    built.Covariate("x");
    built.Factor("g", {"1", "2.5"}, ScoreDictVar::NUMERIC);
    built.Factor("h", {"u", "v"});
    built.Parameters({"p"});
    ASSERT_TRUE(built.model.SetContrastMatrix("g", {{1}, {2}}, {2.5, 1}));
    ASSERT_TRUE(built.model.SetContrastMatrix("h", {{1}, {2}, {3}, {4}}, {1, 0, 2, -1}));
    ASSERT_TRUE(built.SetUp());
    built.model.FinishSetup();
    const ModelDescription about = Described(built.model);
    ASSERT_EQ(about.contrasts.size(), 2U);
    EXPECT_EQ(about.contrasts[0].predictor, "g");
    EXPECT_EQ(about.contrasts[0].categories, (std::vector<std::string>{"2.5", "1"}));
    EXPECT_EQ(about.contrasts[1].categories, (std::vector<std::string>{"v", "u", "", ""}));
}

TEST(CoxRegModelThatLacksPieces, TellsTheOthers)
{
    Built<CoxRegModel> built("status");
    built.Factor("f", {"u", "v"});
    built.Covariate("x");
    built.model.AddPredictor("zero");
    built.Parameters({"p"});
    ASSERT_TRUE(
        built.model.SetContrastMatrix("f", {{1.0}, {-1.0}}, {new StringValue("u"), nullptr}));
    ASSERT_TRUE(built.model.SetContrastMatrix("zero", {{2.0}}, {nullptr}));
    built.model.SetCumHazardTable({}, {"north", "south"}, "s");
    EXPECT_TRUE(Described(built.model).contrasts.empty());  // not set up
    EXPECT_FALSE(Holds(Displayed(built.model), "For factor"));
    EXPECT_FALSE(built.SetUp());
    const ModelDescription about = Described(built.model);
    ASSERT_EQ(about.contrasts.size(), 1U);
    EXPECT_EQ(about.contrasts[0].categories, (std::vector<std::string>{"u", ""}));
    ASSERT_EQ(about.strata.size(), 2U);
    EXPECT_EQ(about.strata[1].cells, 0U);
    const std::string shown = Displayed(built.model);
    EXPECT_TRUE(Holds(shown, "For factor f :"));
    EXPECT_TRUE(Holds(shown, "For factor  :  size = 1 by 1\n\t2\n"));
    EXPECT_FALSE(Holds(shown, "X-Stratum"));
}

TEST(OrdinalModelThatLacksPieces, TellsTheOthers)
{
    Built<OGZLRModel> built(Categorical("y", {"only"}));
    built.Parameters({"threshold"});
    built.model.SetLinkFunction(static_cast<OGZLRModel::CumulLinkFunction>(5));
    built.model.SetOffsetVar(nullptr);
    EXPECT_TRUE(built.SetUp());
    built.model.CreatePCovMatrix()->SetCell("threshold", "threshold", 1.0);
    built.model.FinishSetup();
    const ModelDescription about = Described(built.model);
    EXPECT_EQ(about.link, "");
    EXPECT_EQ(about.offset, "");
    EXPECT_FALSE(about.hasProbabilityErrors);
    EXPECT_TRUE(about.equations.empty());
    ExplanationOutline outline;
    built.model.OutlineExplanations(outline);
    EXPECT_EQ(outline.equations.size(), 1U);
    EXPECT_TRUE(about.coefficients.empty());
    EXPECT_TRUE(Holds(Displayed(built.model),
                      "Link function: \nDistribution: Multinomial\n"
                      "Offset variable: \nEnd"));
}

// Thresholds alone: the linear predictor that the boundaries share is the offset.
TEST(OrdinalModelOfThresholds, ExplainsItsBoundaries)
{
    Built<ORModel> built(Categorical("y", {"lo", "mid", "hi"}));
    built.Parameters({"threshold"});
    built.model.SetOffsetValue(0.25);
    ASSERT_TRUE(built.SetUp());
    built.Beta("lo", "threshold", -1.0);
    built.Beta("mid", "threshold", 2.0);
    built.model.FinishSetup();
    ExplanationOutline outline;
    built.model.OutlineExplanations(outline);
    ASSERT_EQ(outline.equations.size(), 3U);
    ASSERT_EQ(outline.equations[0].terms.size(), 1U);
    EXPECT_EQ(outline.equations[0].terms[0].name, "offset");
    const auto state = built.model.MakeState();
    state->wantsProbabilityErrors = true;
    Slot slot;
    CaseExplanation explanation;
    ASSERT_TRUE(
        built.model.ExplainRow(*state, &Case().Record(), slot.result, true, explanation).IsOK());
    EXPECT_TRUE(state->probabilityErrors.empty());  // without covariances
    const auto sums = explanation.Sums();
    ASSERT_EQ(sums.size(), 3U);
    EXPECT_EQ(sums[0].linearPredictor, 0.25);
    EXPECT_EQ(sums[1].linearPredictor, -0.75);
    EXPECT_EQ(sums[2].linearPredictor, 2.25);
    EXPECT_EQ(sums[2].addends[0].contribution, 0.25);
    EXPECT_EQ(sums[2].addends[1].contribution, 2.0);
}

TEST(OrdinalModelWithoutParameters, HasNoEstimates)
{
    Built<ORModel> built(Categorical("y", {"lo", "hi"}));
    ASSERT_TRUE(built.SetUp());
    built.model.FinishSetup();
    EXPECT_TRUE(Described(built.model).coefficients.empty());
}

TEST(GZLRModelThatLacksPieces, TellsTheOthers)
{
    Built<GZLRModel> built;
    built.Parameters({"p"});
    built.model.SetLinkFunction(static_cast<GZLRModel::LinkFunction>(10));
    built.model.SetDistType(static_cast<GZLRModel::DistType>(7));
    built.model.SetOffsetVar(nullptr);
    built.model.SetTrialsVar(nullptr);
    ASSERT_TRUE(built.SetUp());
    built.Beta("p", 0.5);
    built.model.FinishSetup();
    const ModelDescription about = Described(built.model);
    EXPECT_EQ(about.link, "");
    EXPECT_EQ(about.mean, "");
    EXPECT_EQ(about.distribution, "");
    EXPECT_EQ(about.trials, "");
    EXPECT_EQ(about.offset, "");
    EXPECT_TRUE(
        Holds(Displayed(built.model), "Link function: \nDistribution: \nOffset variable: \nEnd"));
    built.model.SetLinkFunction(GZLRModel::LINK_IDENTITY);
    // Of variables that are null the one adds nothing, and the other multiplies by -1.
    for (const auto& [distribution, mean] :
         {std::pair{GZLRModel::DIST_GAMMA, 0.5}, {GZLRModel::DIST_BINOMIAL, -0.5}}) {
        built.model.SetDistType(distribution);
        Slot slot;
        ASSERT_TRUE(built.model.GetScore(&Case().Record(), slot.result, true).IsOK());
        EXPECT_EQ(slot.Number(), mean);
    }
}

TEST(GZLRModelWithoutATarget, HasNoCategoryToName)
{
    GZLRModel model;
    model.UpdateResAndRefCat("yes");
    EXPECT_TRUE(model.Setup());
    EXPECT_TRUE(Described(model).targetCategories.empty());
}

TEST(NormalizedModelOfOneCategory, HasItsLinearPredictor)
{
    Built<NormalizedModel> built(Categorical("y", {"only"}));
    built.Covariate("x");
    built.Parameters({"p"});
    ASSERT_TRUE(built.model.SetNormalization("simplemax"));
    ASSERT_TRUE(built.SetUp());
    built.Cell("p", "x", "1");
    built.Beta("p", 2.0);
    built.model.FinishSetup();
    const auto state = built.model.MakeState();
    Slot slot;
    Case c;
    c.With("x", 3.0);
    ASSERT_TRUE(built.model.ScoreRow(*state, &c.Record(), slot.result, true).IsOK());
    EXPECT_EQ(state->linearPredictor, 6.0);
    EXPECT_EQ(slot.Percent("only"), 1.0);
    EXPECT_EQ(built.model.ScoreRow(*state, nullptr, slot.result, true).GetErrorCode(), 90029);
}

// What is registered after a table was made has no cell in it.
TEST(ParametersAfterTheCovariances, HaveNoPartInErrors)
{
    Built<GLRModel> built;
    built.Covariate("x");
    built.Parameters({"p"});
    built.model.CreatePCovMatrix()->SetCell("p", "p", 4.0);
    built.Parameters({"late"});
    ASSERT_TRUE(built.SetUp());
    built.Cell("p", "x", "1");
    built.Cell("late", "x", "2");
    built.Beta("p", 1.0);
    built.Beta("late", 1.0);
    built.model.FinishSetup();
    Case c;
    c.With("x", 3.0);
    EXPECT_EQ(LinearPredictorError(built.model, std::move(c)), 6.0);  // sqrt(3 * 4 * 3)
    const ModelDescription about = Described(built.model);
    EXPECT_EQ(about.coefficients.at(0).standardError, 2.0);
    EXPECT_TRUE(std::isnan(about.coefficients.at(1).standardError));

    const auto scorer = built.model.MakeBatchScorer();
    ASSERT_NE(scorer, nullptr);
    const auto scratch = scorer->MakeScratch();
    alignas(64) const double x[BatchScorer::kRowMultiple] = {3.0, 0.0, -1.0};
    alignas(64) double errors[BatchScorer::kRowMultiple];
    const BatchColumn columns[] = {{.numbers = x}};
    BatchResults results;
    results.linearPredictorError = errors;
    uint64_t unsure[BatchScorer::kRows / 64];
    scorer->Score(columns, 3, results, unsure, *scratch);
    EXPECT_EQ(unsure[0], 0U);
    EXPECT_EQ(errors[0], 6.0);
    EXPECT_EQ(errors[1], 0.0);
    EXPECT_EQ(errors[2], 2.0);
}

TEST(ParametersAfterTheCovariances, HaveNoPartInErrorsOfProbabilities)
{
    Built<ORModel> built(Categorical("y", {"lo", "mid", "hi"}));
    built.Covariate("x");
    built.Parameters({"threshold", "p"});
    ASSERT_TRUE(built.SetUp());
    built.model.CreatePCovMatrix()->SetCell("p", "p", 4.0);  // 3 x 3
    built.Parameters({"late"});
    ASSERT_TRUE(built.model.Setup());
    built.Cell("p", "x", "1");
    built.Cell("late", "x", "1");
    built.Beta("lo", "threshold", -1.0);
    built.Beta("mid", "threshold", 1.0);
    built.Beta("mid", "p", 1.0);
    built.Beta("mid", "late", 1.0);
    built.model.FinishSetup();
    const auto state = built.model.MakeState();
    state->wantsProbabilityErrors = true;
    Slot slot;
    Case c;
    c.With("x", 0.5);
    ASSERT_TRUE(built.model.ScoreRow(*state, &c.Record(), slot.result, true).IsOK());
    // Of p alone: |x| sqrt(4) times the logistic density at each boundary, -1 and 1 beside 2 x.
    const auto density = [](double at) {
        const double e = std::exp(-std::fabs(at));
        return e / ((1.0 + e) * (1.0 + e));
    };
    ASSERT_EQ(state->probabilityErrors.size(), 3U);
    EXPECT_NEAR(state->probabilityErrors[0], density(0.0), 1e-15);
    EXPECT_NEAR(state->probabilityErrors[1], std::fabs(density(2.0) - density(0.0)), 1e-15);
    EXPECT_NEAR(state->probabilityErrors[2], density(2.0), 1e-15);
}

// Contrasts of a predictor that came after the setup have no part either.
TEST(ContrastsAfterTheSetup, HaveNoPartInATerm)
{
    Built<CoxRegModel> built("status");
    built.Parameters({"p"});
    ASSERT_TRUE(built.SetUp());
    built.model.AddPredictor("late");
    ASSERT_TRUE(built.model.SetContrastMatrix("late", {{1.0}}, {new StringValue("u")}));
    EXPECT_TRUE(built.model.FinishSetup());
    EXPECT_TRUE(Described(built.model).contrasts.empty());
}

}  // namespace
}  // namespace MCVelscore_850
