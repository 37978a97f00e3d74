#ifndef VELSCORE_HOST_MODEL_SCOREMODEL_H
#define VELSCORE_HOST_MODEL_SCOREMODEL_H

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "host/export.h"
#include "host/model/mcstatus.h"
#include "host/model/survivalpoint.h"

namespace MCVelscore_850 {

class BaseDictionary;
class BatchScorer;
class ScoreCaseRecord;
class ScoreDictVar;
class ScoreDictionary;
class ScoreResult;
class ScoreVersionInfo;
class ScoringState;
class TransformationDictionary;
struct ModelDescription;
struct ModelTables;

/// A fitted model that scores one case at a time.
///
/// Slots   the order of the virtual operations is part of the plug-in's interface.
/// Threads GetScore serves one thread at a time, since it writes to the model. ScoreRow and
/// CurveRow
///         serve any number, each thread with a state of its own.
class VELHOST_API ScoreModel {
public:
    /// What GetModelType() answers.
    enum ModelType {
        TYPE_MLR = 1,
        TYPE_CLR = 2,
        TYPE_LR = 3,
        TYPE_BLR = 4,
        TYPE_GLR = 5,
        TYPE_GZLR = 6,
        TYPE_ORDINAL = 7,
        TYPE_COXREG = 26,
        TYPE_CSCOXREG = 27
    };

    enum VarRole : int {
        ROLE_NONE = 0,
        ROLE_TARGET = 1,
        /// As a question to GetVarsOfRole: every predictor-like role.
        ROLE_PREDICTOR = 2,
        ROLE_FACTOR = 3,
        ROLE_COVARIATE = 4,
        ROLE_TIME = 5,
        ROLE_STRATUM = 6,
        ROLE_SUBJECT = 7,
        ROLE_OFFSET = 9
    };

    /// What a model does with a predictor value that is missing or not valid.
    enum MVPolicy : int {
        MV_SUBSTITUTE = 0,     ///< take the replacement where one is known, else as the next
        MV_SYSMIS_RESULT = 1,  ///< write a missing prediction and fail the case
        MV_STATUS_ONLY = 2     ///< fail the case and write nothing
    };

    /// The level of confidence limits that nobody set another one for.
    static constexpr double kDefaultConfidenceLevel = 0.95;

    virtual ~ScoreModel();

    /// The dictionaries belong to the model from the call on; a second call replaces the first.
    virtual void SetScoreDictionary(ScoreDictionary* dictionary) = 0;
    virtual void SetTransformationScoreDictionary(TransformationDictionary* dictionary) = 0;
    virtual void SetResultScoreDictionary(ScoreDictionary* dictionary) = 0;
    /// False for a null variable, and for a name that no dictionary holds.
    virtual bool SetVarRole(const ScoreDictVar* var, VarRole role) = 0;
    virtual bool SetVarRole(const std::string& name, VarRole role) = 0;
    virtual void SetMissingValuePolicy(MVPolicy policy) = 0;
    virtual void SetVersionInfo(ScoreVersionInfo* info) = 0;
    virtual void SetPredictionOnly(bool predictionOnly) = 0;
    /// ROLE_NONE for a variable that was given none.
    virtual VarRole GetVarRole(const ScoreDictVar* var) const = 0;
    virtual VarRole GetVarRole(const std::string& name) const = 0;
    virtual const ScoreVersionInfo* GetVersionInfo() const = 0;
    /// A new dictionary of copies, owned by the caller.
    virtual BaseDictionary* GetVarsOfRole(VarRole role) const = 0;
    virtual const ScoreDictVar* GetTargetVar() const = 0;
    virtual ScoreDictionary* GetDictionary() const = 0;
    virtual TransformationDictionary* GetTransformationDictionary() const = 0;
    virtual ScoreDictionary* GetResultDictionary() const = 0;
    /// Scores one case. `result` is made when null or of another type than the model's, and
    /// belongs to the caller; `derivedInRecord` says that the record holds the derived values.
    virtual MCScore::MCStatus GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                                       bool derivedInRecord) = 0;
    virtual MVPolicy GetMissingValuePolicy() const = 0;
    virtual int GetModelType() const = 0;
    virtual bool GetPredictionOnly() const = 0;
    /// A plain text of all that the model holds.
    virtual void Display(std::ostream& out) const = 0;
    /// As the first form; without `owned` the dictionary stays the caller's and outlives the model.
    virtual void SetScoreDictionary(ScoreDictionary* dictionary, bool owned) = 0;
    /// Resolves the predictors and makes the tables. False when the model can't be set up.
    virtual bool Setup() = 0;

    // Beyond the slots that a plug-in of the first version knows.

    /// What the model is, in plain data.
    virtual void Describe(ModelDescription& description) const = 0;
    /// The covariances and baselines that the description leaves out.
    virtual void Tabulate(ModelTables& tables) const = 0;
    /// What one run of cases changes, with the policy, the prediction-only mark and the confidence
    /// level of the model.
    virtual std::unique_ptr<ScoringState> MakeState() const = 0;
    /// GetScore of the next case of a run, which writes to nothing but the run's state, the result
    /// and, where a policy substitutes, the record.
    virtual MCScore::MCStatus ScoreRow(ScoringState& state, const ScoreCaseRecord* record,
                                       ScoreResult*& result, bool derivedInRecord) const = 0;
    /// The case's survival at every time of its baseline, ascending, or at the times that the state
    /// asks for, into `curve`, which keeps its memory from case to case. The case's own time isn't
    /// read. Only a model whose description has strata answers OK; any other fails every case with
    /// 90029.
    virtual MCScore::MCStatus CurveRow(ScoringState& state, const ScoreCaseRecord* record,
                                       bool derivedInRecord,
                                       std::vector<SurvivalPoint>& curve) const = 0;
    /// What scores blocks of cases; null where the model, as it stands, has nothing of the kind.
    virtual std::unique_ptr<BatchScorer> MakeBatchScorer() const = 0;
    /// The probability that two-sided confidence limits enclose, between 0 and 1; outside of that
    /// there are no limits. Holds for GetScore and for the states and block scorers that are made
    /// afterwards, of models whose description has ModelDescription::hasConfidenceLevel.
    virtual void SetConfidenceLevel(double level) = 0;
    virtual double GetConfidenceLevel() const = 0;
};

}  // namespace MCVelscore_850

#endif
