#ifndef VELSCORE_HOST_MODEL_BASEMODEL_H
#define VELSCORE_HOST_MODEL_BASEMODEL_H

#include <memory>
#include <string>
#include <unordered_map>

#include "host/model/scoremodel.h"
#include "host/variables/scoredictionary.h"
#include "host/variables/transformationdictionary.h"

namespace MCVelscore_850 {

/// What every model of any plug-in has: its dictionaries, the roles of its variables, its
/// missing-value policy, its version record and what the document says of itself.
class VELHOST_API BaseModel : public ScoreModel {
public:
    /// Mining functions in the order of the published list, counted from 0.
    enum FUNCNAME_TYPE {
        FUNC_ASSOCIATION_RULES = 0,
        FUNC_SEQUENCES = 1,
        FUNC_CLASSIFICATION = 2,
        FUNC_REGRESSION = 3,
        FUNC_CLUSTERING = 4,
        FUNC_TIME_SERIES = 5,
        FUNC_MIXED = 6,
        FUNC_UNKNOWN = 7
    };

    BaseModel();
    BaseModel(const BaseModel&) = delete;
    BaseModel& operator=(const BaseModel&) = delete;
    ~BaseModel() override;

    void SetScoreDictionary(ScoreDictionary* dictionary) override;
    void SetTransformationScoreDictionary(TransformationDictionary* dictionary) override;
    void SetResultScoreDictionary(ScoreDictionary* dictionary) override;
    bool SetVarRole(const ScoreDictVar* var, VarRole role) override;
    bool SetVarRole(const std::string& name, VarRole role) override;
    void SetMissingValuePolicy(MVPolicy policy) override { missingValuePolicy = policy; }
    void SetVersionInfo(ScoreVersionInfo* info) override;
    VarRole GetVarRole(const ScoreDictVar* var) const override;
    VarRole GetVarRole(const std::string& name) const override;
    const ScoreVersionInfo* GetVersionInfo() const override { return versionInfo_.get(); }
    ScoreDictionary* GetDictionary() const override { return dictionary; }
    TransformationDictionary* GetTransformationDictionary() const override
    {
        return transformationDictionary;
    }
    ScoreDictionary* GetResultDictionary() const override { return resultDictionary_.get(); }
    MVPolicy GetMissingValuePolicy() const override { return missingValuePolicy; }
    void SetScoreDictionary(ScoreDictionary* dictionary, bool owned) override;
    std::unique_ptr<ScoringState> MakeState() const override;
    MCScore::MCStatus CurveRow(ScoringState& state, const ScoreCaseRecord* record,
                               bool derivedInRecord,
                               std::vector<SurvivalPoint>& curve) const override;
    void Tabulate(ModelTables& tables) const override;
    std::unique_ptr<BatchScorer> MakeBatchScorer() const override;
    void SetConfidenceLevel(double level) override { confidenceLevel = level; }
    double GetConfidenceLevel() const override { return confidenceLevel; }

    void SetAlgorithmName(const std::string& name) { algorithmName_ = name; }
    const std::string& GetAlgorithmName() const { return algorithmName_; }
    /// FUNC_UNKNOWN for any other text.
    static FUNCNAME_TYPE MiningFunctionFromString(const std::string& text);
    void SetMiningFunction(FUNCNAME_TYPE function) { miningFunction_ = function; }
    FUNCNAME_TYPE GetMiningFunction() const { return miningFunction_; }

protected:
    /// Takes the roles of a dictionary's variables back, before it goes.
    void ForgetRoles(const ScoreDictionary* dictionary);
    /// The variable of that name in the main dictionary, else in the derived ones, else null.
    const ScoreDictVar* FindVar(const std::string& name) const;

    ScoreDictionary* dictionary = nullptr;
    TransformationDictionary* transformationDictionary = nullptr;
    MVPolicy missingValuePolicy = MV_SUBSTITUTE;
    double confidenceLevel = kDefaultConfidenceLevel;

private:
    std::unique_ptr<ScoreDictionary> ownedDictionary_;
    std::unique_ptr<TransformationDictionary> ownedTransformations_;
    std::unique_ptr<ScoreDictionary> resultDictionary_;
    std::unique_ptr<ScoreVersionInfo> versionInfo_;
    std::unordered_map<const ScoreDictVar*, VarRole> roles_;
    std::string algorithmName_;
    FUNCNAME_TYPE miningFunction_ = FUNC_UNKNOWN;
};

}  // namespace MCVelscore_850

#endif
