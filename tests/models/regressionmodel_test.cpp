#include "models/regressionmodel.h"

#include <gtest/gtest.h>

#include "models/glrmodel.h"
#include "models/lrmodel.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

TEST(RegressionModel, ParameterIsRegisteredOnceWithItsFirstLabel)
{
    LRModel model;
    EXPECT_TRUE(model.AddParameter("b", "first"));
    EXPECT_TRUE(model.AddParameter("a", "second"));
    EXPECT_FALSE(model.AddParameter("b", "again"));
    EXPECT_EQ(model.GetParameterIndex("b"), 0);
    EXPECT_EQ(model.GetParameterIndex("a"), 1);
    EXPECT_EQ(model.GetParameterIndex("c"), -1);
    EXPECT_EQ(model.GetParamLabels(), (std::vector<std::string>{"first", "second"}));
    EXPECT_EQ(model.GetParameterVector(), (RegressionModel::NameVector{{"a", 1}, {"b", 0}}));
}

TEST(RegressionModel, PredictorIsRegisteredOnce)
{
    LRModel model;
    EXPECT_TRUE(model.AddPredictor("x"));
    EXPECT_FALSE(model.AddPredictor("x"));
    EXPECT_TRUE(model.AddPredictor("a"));
    EXPECT_EQ(model.GetPredictorVector(), (RegressionModel::NameVector{{"a", 1}, {"x", 0}}));
    EXPECT_EQ(model.GetPredictorIndex("nowhere"), -1);
}

TEST(RegressionModel, StartsWithItsDefaults)
{
    LRModel model;
    EXPECT_EQ(model.GetTargetVar(), nullptr);
    EXPECT_EQ(model.GetParamTable(), nullptr);
    EXPECT_EQ(model.GetPPCMatrix(), nullptr);
    EXPECT_EQ(model.GetPCovMatrix(), nullptr);
    EXPECT_EQ(model.GetDF(), 0.0);
    EXPECT_FALSE(model.GetPredictionOnly());
    EXPECT_TRUE(model.GetScoreCaseValidationCheck());
    EXPECT_FALSE(model.NeedDerivedPredictor());
    EXPECT_FALSE(model.GetAllowMissingFactors());
    EXPECT_EQ(model.GetMissingValuePolicy(), ScoreModel::MV_SUBSTITUTE);
}

TEST(RegressionModel, ReplacedTargetFallsBackToNoRole)
{
    Built<LRModel> built("y");
    const ScoreDictVar* old = built.model.GetTargetVar();
    built.Dictionary().AddVar("z", Continuous("z").release());
    EXPECT_TRUE(built.model.SetTargetVar("z"));
    EXPECT_EQ(built.model.GetVarRole(old), ScoreModel::ROLE_NONE);
    EXPECT_EQ(built.model.GetVarRole("z"), ScoreModel::ROLE_TARGET);
}

TEST(RegressionModel, UnknownTargetNameKeepsTheOldTargetAndItsRole)
{
    Built<LRModel> built("y");
    const ScoreDictVar* old = built.model.GetTargetVar();
    EXPECT_FALSE(built.model.SetTargetVar("nowhere"));
    EXPECT_EQ(built.model.GetTargetVar(), old);
    EXPECT_EQ(built.model.GetVarRole(old), ScoreModel::ROLE_TARGET);
}

TEST(RegressionModel, TargetIsNotLookedForAmongDerivedVariables)
{
    Built<LRModel> built("y");
    auto* derived = new TransformationDictionary;
    derived->AddVar("d", Derived("d").release());
    built.model.SetTransformationScoreDictionary(derived);
    EXPECT_FALSE(built.model.SetTargetVar("d"));
    EXPECT_EQ(built.model.GetTargetVar()->GetName(), "y");
}

TEST(RegressionModel, CovarianceMatrixIsMadeOnce)
{
    Built<GLRModel> built;
    built.Parameters({"p"});
    PCovMatrix* made = built.model.CreatePCovMatrix();
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(built.model.CreatePCovMatrix(), made);
}

std::vector<std::string> NamesOf(const LRModel& model, ScoreModel::VarRole role)
{
    const std::unique_ptr<BaseDictionary> vars(model.GetVarsOfRole(role));
    std::vector<std::string> names;
    for (const ScoreDictVar* var : vars->GetVars()) names.push_back(var->GetName());
    return names;
}

TEST(RegressionModel, PredictorsAsAQuestionMeanEveryPredictorLikeRole)
{
    Built<LRModel> built("y");
    const std::pair<const char*, int> roles[] = {{"r2", 2}, {"r3", 3}, {"r4", 4}, {"r5", 5},
                                                 {"r6", 6}, {"r7", 7}, {"r8", 8}, {"r9", 9}};
    for (const auto& [name, role] : roles) {
        auto var = Continuous(name);
        built.model.SetVarRole(var.get(), static_cast<ScoreModel::VarRole>(role));
        built.Dictionary().AddVar(name, var.release());
    }
    EXPECT_EQ(NamesOf(built.model, ScoreModel::ROLE_PREDICTOR),
              (std::vector<std::string>{"r2", "r3", "r4", "r5", "r6", "r7", "r9"}));
    EXPECT_EQ(NamesOf(built.model, ScoreModel::ROLE_TIME), std::vector<std::string>{"r5"});
    EXPECT_EQ(NamesOf(built.model, ScoreModel::ROLE_TARGET), std::vector<std::string>{"y"});
}

TEST(RegressionModel, OfDerivedVariablesOnlyFactorsAndCovariatesCountAsPredictors)
{
    Built<LRModel> built("y");
    auto* derived = new TransformationDictionary;
    const std::pair<const char*, int> roles[] = {{"d3", 3}, {"d4", 4}, {"d5", 5}, {"d9", 9}};
    for (const auto& [name, role] : roles) {
        auto var = Derived(name);
        built.model.SetVarRole(var.get(), static_cast<ScoreModel::VarRole>(role));
        derived->AddVar(name, var.release());
    }
    built.model.SetTransformationScoreDictionary(derived);
    EXPECT_EQ(NamesOf(built.model, ScoreModel::ROLE_PREDICTOR),
              (std::vector<std::string>{"d3", "d4"}));
    EXPECT_EQ(NamesOf(built.model, ScoreModel::ROLE_TIME), std::vector<std::string>{"d5"});
}

TEST(RegressionModel, VarsOfRoleAreCopies)
{
    Built<LRModel> built("y");
    const std::unique_ptr<BaseDictionary> vars(built.model.GetVarsOfRole(ScoreModel::ROLE_TARGET));
    EXPECT_NE(vars->GetVar("y"), built.model.GetTargetVar());
}

// Reaches what FinishSetup and SetUpDictVarIndex leave.
class Bare : public BareFamily {
public:
    TermPlan PlanTerms() const override { return PlanNumberTerms(NumberTerms::Powers); }
    bool Setup() override
    {
        categoryMap.emplace("only", 0);
        if (!ResolvePredictors()) return false;
        if (forgetRoles) predictorRoles.clear();
        paramTable = std::make_unique<ParamTable>(this);
        ppcMatrix = std::make_unique<PPCMatrix>(this);
        SizeNumericPPMatrix();
        return true;
    }
    bool forgetRoles = false;
    using RegressionModel::betas;
    using RegressionModel::categoryBetas;
    using RegressionModel::ownState;
    using RegressionModel::plan;
    using RegressionModel::predictorRoles;
    using RegressionModel::predictorSubstitutes;
};

TEST(FinishSetup, CopiesBetasOutOfTheTable)
{
    Built<Bare> built;
    built.Parameters({"b", "a"});
    ASSERT_TRUE(built.SetUp());
    built.Beta("a", 2.0);
    EXPECT_TRUE(built.model.FinishSetup());
    EXPECT_EQ(built.model.betas, (std::vector<double>{0.0, 2.0}));
    EXPECT_EQ(built.model.categoryBetas, (RegressionModel::Matrix{{0.0, 2.0}}));
}

TEST(FinishSetup, WithNothingToSubstituteThePolicyBecomesSysmisResult)
{
    Built<Bare> built;
    built.Covariate("x");
    built.Factor("f", {"a"});
    ASSERT_TRUE(built.SetUp());
    built.model.FinishSetup();
    EXPECT_EQ(built.model.GetMissingValuePolicy(), ScoreModel::MV_SYSMIS_RESULT);
    EXPECT_TRUE(built.model.predictorSubstitutes.empty());
}

TEST(FinishSetup, WithoutPredictorsThePolicyBecomesSysmisResultToo)
{
    Built<Bare> built;
    ASSERT_TRUE(built.SetUp());
    built.model.FinishSetup();
    EXPECT_EQ(built.model.GetMissingValuePolicy(), ScoreModel::MV_SYSMIS_RESULT);
}

TEST(FinishSetup, OneReplacementAmongThreeCovariatesKeepsSubstitution)
{
    Built<Bare> built;
    built.Covariate("x");
    Replace(built.Covariate("y1"), 2.5);
    built.Covariate("z");
    ASSERT_TRUE(built.SetUp());
    built.model.FinishSetup();
    EXPECT_EQ(built.model.GetMissingValuePolicy(), ScoreModel::MV_SUBSTITUTE);
    EXPECT_EQ(built.model.predictorSubstitutes, (std::vector<double>{kSysmis, 2.5, kSysmis}));
}

TEST(FinishSetup, AllowedMissingFactorIsSubstitutedByInfinity)
{
    Built<Bare> built;
    built.Factor("f", {"a"});
    built.model.SetAllowMissingFactors(true);
    ASSERT_TRUE(built.SetUp());
    built.model.FinishSetup();
    EXPECT_EQ(built.model.predictorSubstitutes, std::vector<double>{NumericValue::GetInfinity()});
}

TEST(FinishSetup, AllowedMissingFactorsLetNoCovariateBeMissing)
{
    Built<Bare> built;
    built.Covariate("x");
    built.Factor("f", {"a"});
    built.Add(Continuous("o"), RegressionModel::ROLE_OFFSET);
    built.model.SetAllowMissingFactors(true);
    ASSERT_TRUE(built.SetUp());
    built.model.FinishSetup();
    EXPECT_EQ(built.model.predictorSubstitutes,
              (std::vector<double>{kSysmis, NumericValue::GetInfinity(), kSysmis}));
}

TEST(FinishSetup, UnderTheOtherPoliciesNothingIsSubstituted)
{
    for (const auto policy : {ScoreModel::MV_SYSMIS_RESULT, ScoreModel::MV_STATUS_ONLY}) {
        Built<Bare> built;
        Replace(built.Covariate("x"), 2.5);
        built.model.SetMissingValuePolicy(policy);
        ASSERT_TRUE(built.SetUp());
        built.model.FinishSetup();
        EXPECT_TRUE(built.model.predictorSubstitutes.empty());
        EXPECT_EQ(built.model.GetMissingValuePolicy(), policy);
    }
}

TEST(FinishSetup, TakesRolesFromTheModelWhereSetupLeftNone)
{
    Built<Bare> built;
    built.Covariate("x");
    built.Factor("f", {"a"});
    built.model.forgetRoles = true;
    ASSERT_TRUE(built.SetUp());
    built.model.FinishSetup();
    EXPECT_EQ(built.model.predictorRoles, (std::vector<int>{4, 3}));
}

TEST(FinishSetup, KeepsTheRolesThatSetupTook)
{
    Built<Bare> built;
    DictVar& x = built.Covariate("x");
    DictVar& f = built.Factor("f", {"a"});
    ASSERT_TRUE(built.SetUp());
    built.model.SetVarRole(&x, ScoreModel::ROLE_FACTOR);
    built.model.SetVarRole(&f, ScoreModel::ROLE_COVARIATE);
    built.model.FinishSetup();
    EXPECT_EQ(built.model.predictorRoles, (std::vector<int>{4, 3}));
}

TEST(FinishSetup, ListsThePredictorsOfEachParameterInOrder)
{
    Built<Bare> built;
    built.Covariate("x");
    built.Factor("w", {"a"});
    built.Parameters({"p", "q"});
    ASSERT_TRUE(built.SetUp());
    built.Cell("q", "w", "a");
    built.Cell("q", "x", "0");
    built.model.FinishSetup();
    const TermPlan& plan = built.model.plan;
    EXPECT_EQ(plan.begin, (std::vector<uint32_t>{0, 0, 2}));
    ASSERT_EQ(plan.parts.size(), 2U);
    EXPECT_EQ(plan.parts[0].predictor, 0);
    EXPECT_EQ(plan.parts[0].kind, kernels::TermPart::Times);
    EXPECT_EQ(plan.parts[0].times, 0);  // of an exponent of 0
    EXPECT_EQ(plan.parts[1].predictor, 1);
    EXPECT_EQ(plan.parts[1].kind, kernels::TermPart::Category);
    EXPECT_EQ(plan.parts[1].code, 0);
}

class Binding : public ::testing::Test {
protected:
    Binding()
    {
        built.Covariate("x");
        auto* derived = new TransformationDictionary;
        auto var = Derived("d");
        built.model.SetVarRole(var.get(), ScoreModel::ROLE_COVARIATE);
        derived->AddVar("d", var.release());
        built.model.SetTransformationScoreDictionary(derived);
        built.model.AddPredictor("d");
        built.model.SetNeedDerivedPredictor(true);
        built.SetUp();
        built.model.FinishSetup();
    }
    Built<Bare> built;
    CaseRecord record{{"d", "other", "x"}};
};

TEST_F(Binding, WritesPositionsIntoTheSharedVariables)
{
    built.model.SetUpDictVarIndex(&record, false);
    EXPECT_TRUE(built.model.ownState.isBound);
    EXPECT_EQ(built.Dictionary().GetVar("x")->GetDictIndex(), 2);
    EXPECT_EQ(built.Dictionary().GetVar("y")->GetDictIndex(), -1);  // not in the record
    EXPECT_EQ(built.model.ownState.positions, (std::vector<int>{2, -1}));
}

TEST_F(Binding, FindsDerivedPositionsWhenTheRecordHoldsThem)
{
    built.model.SetUpDictVarIndex(&record, true);
    EXPECT_EQ(built.model.ownState.positions, (std::vector<int>{2, 0}));
}

}  // namespace
}  // namespace MCVelscore_850
