#include "host/model/basemodel.h"

#include "host/model/batchscorer.h"
#include "host/model/modeltables.h"
#include "host/model/scoringstate.h"
#include "host/model/versioninfo.h"

namespace MCVelscore_850 {

ScoreModel::~ScoreModel() = default;

BaseModel::BaseModel() = default;
BaseModel::~BaseModel() = default;

void BaseModel::SetScoreDictionary(ScoreDictionary* given) { SetScoreDictionary(given, true); }

void BaseModel::SetScoreDictionary(ScoreDictionary* given, bool owned)
{
    if (dictionary != given) ForgetRoles(dictionary);
    if (ownedDictionary_.get() != given) {
        ownedDictionary_.reset(owned ? given : nullptr);
    } else if (!owned) {
        (void)ownedDictionary_.release();  // the caller takes its dictionary back
    }
    dictionary = given;
}

void BaseModel::SetTransformationScoreDictionary(TransformationDictionary* given)
{
    if (ownedTransformations_.get() != given) {
        ForgetRoles(transformationDictionary);
        ownedTransformations_.reset(given);
    }
    transformationDictionary = given;
}

void BaseModel::SetResultScoreDictionary(ScoreDictionary* given)
{
    if (resultDictionary_.get() != given) resultDictionary_.reset(given);
}

void BaseModel::ForgetRoles(const ScoreDictionary* leaving)
{
    if (leaving == nullptr || roles_.empty()) return;
    for (const ScoreDictVar* var : leaving->GetVars()) roles_.erase(var);
}

bool BaseModel::SetVarRole(const ScoreDictVar* var, VarRole role)
{
    if (var == nullptr) return false;
    roles_[var] = role;
    return true;
}

bool BaseModel::SetVarRole(const std::string& name, VarRole role)
{
    return SetVarRole(FindVar(name), role);
}

void BaseModel::SetVersionInfo(ScoreVersionInfo* info)
{
    if (versionInfo_.get() != info) versionInfo_.reset(info);
}

ScoreModel::VarRole BaseModel::GetVarRole(const ScoreDictVar* var) const
{
    const auto found = roles_.find(var);
    return found == roles_.end() ? ROLE_NONE : found->second;
}

ScoreModel::VarRole BaseModel::GetVarRole(const std::string& name) const
{
    return GetVarRole(FindVar(name));
}

const ScoreDictVar* BaseModel::FindVar(const std::string& name) const
{
    const ScoreDictVar* var = dictionary == nullptr ? nullptr : dictionary->GetVar(name);
    if (var == nullptr && transformationDictionary != nullptr) {
        var = transformationDictionary->GetVar(name);
    }
    return var;
}

std::unique_ptr<ScoringState> BaseModel::MakeState() const
{
    auto state = std::make_unique<ScoringState>();
    state->policy = missingValuePolicy;
    state->predictionOnly = GetPredictionOnly();
    return state;
}

std::unique_ptr<BatchScorer> BaseModel::MakeBatchScorer() const { return nullptr; }

MCScore::MCStatus BaseModel::CurveRow(ScoringState&, const ScoreCaseRecord*, bool,
                                      std::vector<SurvivalPoint>& curve) const
{
    curve.clear();
    return MCScore::MCStatus(MCScore::kCaseNotScorable, false);
}

void BaseModel::Tabulate(ModelTables& tables) const { tables = {}; }

BaseModel::FUNCNAME_TYPE BaseModel::MiningFunctionFromString(const std::string& text)
{
    static const std::pair<const char*, FUNCNAME_TYPE> kFunctions[] = {
        {"associationRules", FUNC_ASSOCIATION_RULES},
        {"sequences", FUNC_SEQUENCES},
        {"classification", FUNC_CLASSIFICATION},
        {"regression", FUNC_REGRESSION},
        {"clustering", FUNC_CLUSTERING},
        {"timeSeries", FUNC_TIME_SERIES},
        {"mixed", FUNC_MIXED},
    };
    for (const auto& [name, function] : kFunctions) {
        if (text == name) return function;
    }
    return FUNC_UNKNOWN;
}

}  // namespace MCVelscore_850
