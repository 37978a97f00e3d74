#ifndef VELSCORE_TESTS_ENGINE_FAKEMODEL_H
#define VELSCORE_TESTS_ENGINE_FAKEMODEL_H

#include <memory>
#include <string>

#include "host/model/basemodel.h"
#include "host/model/modeldescription.h"
#include "host/values/stringvalue.h"
#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

inline DictVarType TypeOf(const std::string& name, ScoreDictVar::MeasureLevel level,
                          ScoreDictVar::ValueType valueType)
{
    DictVarType type;
    type.name = name;
    type.level = level;
    type.valueType = valueType;
    return type;
}
inline DictVarType NumberType(const std::string& name)
{
    return TypeOf(name, ScoreDictVar::CONTINUOUS, ScoreDictVar::NUMERIC);
}
inline DictVarType TextType(const std::string& name)
{
    return TypeOf(name, ScoreDictVar::CATEGORICAL, ScoreDictVar::STRING);
}

/// A model that has dictionaries and a policy and never scores.
class FakeModel : public BaseModel {
public:
    FakeModel() { SetScoreDictionary(new BaseDictionary); }

    /// Adds a variable that the model reads.
    DictVar& Add(DictVarType type)
    {
        description.variables.push_back(type.name);
        auto var = std::make_unique<DictVar>(std::move(type));
        DictVar& added = *var;
        dictionary->AddVar(added.GetName(), var.release());
        return added;
    }
    DictVar& AddNumber(const std::string& name) { return Add(NumberType(name)); }
    DictVar& AddText(const std::string& name, const std::vector<std::string>& categories)
    {
        DictVar& var = Add(TextType(name));
        for (const std::string& category : categories) {
            var.DeclareValue(std::make_unique<StringValue>(category), category,
                             DictVar::Property::Valid);
        }
        return var;
    }

    void SetPredictionOnly(bool) override {}
    BaseDictionary* GetVarsOfRole(VarRole) const override { return new BaseDictionary; }
    const ScoreDictVar* GetTargetVar() const override { return nullptr; }
    MCScore::MCStatus GetScore(const ScoreCaseRecord*, ScoreResult*&, bool) override { return {}; }
    MCScore::MCStatus ScoreRow(ScoringState&, const ScoreCaseRecord*, ScoreResult*&,
                               bool) const override
    {
        return {};
    }
    int GetModelType() const override { return TYPE_GLR; }
    bool GetPredictionOnly() const override { return false; }
    void Display(std::ostream&) const override {}
    bool Setup() override { return true; }
    void Describe(ModelDescription& out) const override { out = description; }

    ModelDescription description;
};

}  // namespace MCVelscore_850

#endif
