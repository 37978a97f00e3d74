#include "host/model/basemodel.h"

#include <memory>

#include <gtest/gtest.h>

#include "host/model/versioninfo.h"
#include "vars.h"

namespace MCVelscore_850 {
namespace {

// What a family adds, left empty.
class TinyModel final : public BaseModel {
public:
    void SetPredictionOnly(bool predictionOnly) override { predictionOnly_ = predictionOnly; }
    BaseDictionary* GetVarsOfRole(VarRole) const override { return new BaseDictionary; }
    const ScoreDictVar* GetTargetVar() const override { return nullptr; }
    MCScore::MCStatus GetScore(const ScoreCaseRecord*, ScoreResult*&, bool) override { return {}; }
    MCScore::MCStatus ScoreRow(ScoringState&, const ScoreCaseRecord*, ScoreResult*&,
                               bool) const override
    {
        return {};
    }
    int GetModelType() const override { return TYPE_LR; }
    bool GetPredictionOnly() const override { return predictionOnly_; }
    void Display(std::ostream&) const override {}
    bool Setup() override { return true; }
    void Describe(ModelDescription&) const override {}

private:
    bool predictionOnly_ = false;
};

// A dictionary that counts itself and holds the named variables.
class CountedDictionary final : public BaseDictionary {
public:
    CountedDictionary(int& alive, std::initializer_list<const char*> names) : alive_(alive)
    {
        ++alive_;
        for (const char* name : names) {
            DictVarType type = NumberType();
            type.name = name;
            AddVar(name, new DictVar(type));
        }
    }
    ~CountedDictionary() override { --alive_; }

private:
    int& alive_;
};

TEST(BaseModel, DictionaryBelongsToTheModel)
{
    int alive = 0;
    {
        TinyModel model;
        auto* dictionary = new CountedDictionary(alive, {"x"});
        model.SetScoreDictionary(dictionary);
        EXPECT_EQ(model.GetDictionary(), dictionary);
        EXPECT_EQ(alive, 1);
    }
    EXPECT_EQ(alive, 0);
}

TEST(BaseModel, SecondDictionaryReplacesTheFirst)
{
    int alive = 0;
    TinyModel model;
    model.SetScoreDictionary(new CountedDictionary(alive, {}));
    auto* second = new CountedDictionary(alive, {});
    model.SetScoreDictionary(second);
    EXPECT_EQ(alive, 1);
    model.SetScoreDictionary(second);
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(model.GetDictionary(), second);
    model.SetScoreDictionary(nullptr);
    EXPECT_EQ(alive, 0);
    EXPECT_EQ(model.GetDictionary(), nullptr);
}

TEST(BaseModel, DictionaryThatIsNotGivenAwayStaysTheCallers)
{
    int alive = 0;
    CountedDictionary lent(alive, {});
    {
        TinyModel model;
        model.SetScoreDictionary(&lent, false);
        EXPECT_EQ(model.GetDictionary(), &lent);
    }
    EXPECT_EQ(alive, 1);
}

TEST(BaseModel, CallerTakesADictionaryBackByGivingItUnowned)
{
    int alive = 0;
    {
        const auto back =
            std::make_unique<CountedDictionary>(alive, std::initializer_list<const char*>{});
        TinyModel model;
        model.SetScoreDictionary(back.get(), true);
        model.SetScoreDictionary(back.get(), false);
        EXPECT_EQ(model.GetDictionary(), back.get());
    }
    EXPECT_EQ(alive, 0);
}

TEST(BaseModel, ResultDictionaryAndTransformationsBelongToTheModel)
{
    int alive = 0;
    TinyModel model;
    model.SetResultScoreDictionary(new CountedDictionary(alive, {}));
    model.SetResultScoreDictionary(new CountedDictionary(alive, {}));
    EXPECT_EQ(alive, 1);
    auto* first = new TransformationDictionary;
    auto* second = new TransformationDictionary;
    model.SetTransformationScoreDictionary(first);
    model.SetTransformationScoreDictionary(second);
    EXPECT_EQ(model.GetTransformationDictionary(), second);
}

TEST(BaseModel, RoleIsSetAndAskedByVariableAndByName)
{
    int alive = 0;
    TinyModel model;
    auto* dictionary = new CountedDictionary(alive, {"x", "y"});
    model.SetScoreDictionary(dictionary);
    const ScoreDictVar* x = dictionary->GetVar("x");
    EXPECT_EQ(model.GetVarRole(x), ScoreModel::ROLE_NONE);
    EXPECT_TRUE(model.SetVarRole(x, ScoreModel::ROLE_PREDICTOR));
    EXPECT_EQ(model.GetVarRole("x"), ScoreModel::ROLE_PREDICTOR);
    EXPECT_TRUE(model.SetVarRole("y", ScoreModel::ROLE_TARGET));
    EXPECT_EQ(model.GetVarRole(dictionary->GetVar("y")), ScoreModel::ROLE_TARGET);
    EXPECT_TRUE(model.SetVarRole("x", ScoreModel::ROLE_FACTOR));
    EXPECT_EQ(model.GetVarRole(x), ScoreModel::ROLE_FACTOR);
}

TEST(BaseModel, NullVariableAndUnknownNameTakeNoRole)
{
    TinyModel model;
    EXPECT_FALSE(
        model.SetVarRole(static_cast<const ScoreDictVar*>(nullptr), ScoreModel::ROLE_TARGET));
    EXPECT_FALSE(model.SetVarRole(std::string("x"), ScoreModel::ROLE_TARGET));
    EXPECT_EQ(model.GetVarRole(static_cast<const ScoreDictVar*>(nullptr)), ScoreModel::ROLE_NONE);
    EXPECT_EQ(model.GetVarRole(std::string("x")), ScoreModel::ROLE_NONE);
}

TEST(BaseModel, NameIsLookedUpInTheMainDictionaryFirst)
{
    int alive = 0;
    TinyModel model;
    auto* dictionary = new CountedDictionary(alive, {"x"});
    auto* derived = new TransformationDictionary;
    derived->AddVar("x", new DictVar(NumberType()));
    derived->AddVar("d", new DictVar(NumberType()));
    model.SetScoreDictionary(dictionary);
    model.SetTransformationScoreDictionary(derived);
    EXPECT_TRUE(model.SetVarRole("x", ScoreModel::ROLE_COVARIATE));
    EXPECT_TRUE(model.SetVarRole("d", ScoreModel::ROLE_COVARIATE));
    EXPECT_EQ(model.GetVarRole(dictionary->GetVar("x")), ScoreModel::ROLE_COVARIATE);
    EXPECT_EQ(model.GetVarRole(derived->GetVar("x")), ScoreModel::ROLE_NONE);
    EXPECT_EQ(model.GetVarRole(derived->GetVar("d")), ScoreModel::ROLE_COVARIATE);
}

// A new variable may come to lie where a released one lay.
TEST(BaseModel, ReplacedDictionaryTakesItsRolesWithIt)
{
    int alive = 0;
    CountedDictionary lent(alive, {"x"});
    TinyModel model;
    model.SetScoreDictionary(&lent, false);
    EXPECT_TRUE(model.SetVarRole("x", ScoreModel::ROLE_TARGET));
    model.SetScoreDictionary(new CountedDictionary(alive, {"x"}));
    EXPECT_EQ(model.GetVarRole("x"), ScoreModel::ROLE_NONE);
    EXPECT_EQ(model.GetVarRole(lent.GetVar("x")), ScoreModel::ROLE_NONE);
}

TEST(BaseModel, MiningFunctionsCountFromZeroInPublishedOrder)
{
    const char* const kNames[] = {"associationRules", "sequences",  "classification",
                                  "regression",       "clustering", "timeSeries"};
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(BaseModel::MiningFunctionFromString(kNames[i]), i) << kNames[i];
    }
    for (const char* name : {"", "Regression", "regression ", "other"}) {
        EXPECT_EQ(BaseModel::MiningFunctionFromString(name), BaseModel::FUNC_UNKNOWN) << name;
    }
}

TEST(BaseModel, SettingsAreAnsweredAsGiven)
{
    TinyModel model;
    EXPECT_EQ(model.GetMissingValuePolicy(), ScoreModel::MV_SUBSTITUTE);
    model.SetMissingValuePolicy(ScoreModel::MV_STATUS_ONLY);
    EXPECT_EQ(model.GetMissingValuePolicy(), ScoreModel::MV_STATUS_ONLY);
    model.SetAlgorithmName("LinearRegression");
    EXPECT_EQ(model.GetAlgorithmName(), "LinearRegression");
    model.SetMiningFunction(BaseModel::FUNC_REGRESSION);
    EXPECT_EQ(model.GetMiningFunction(), BaseModel::FUNC_REGRESSION);
    EXPECT_EQ(model.GetVersionInfo(), nullptr);
    model.SetVersionInfo(new VersionInfo("4.3"));
    model.SetVersionInfo(new VersionInfo("4.4"));
    EXPECT_EQ(model.GetVersionInfo()->GetVersion(), "4.4");
}

}  // namespace
}  // namespace MCVelscore_850
