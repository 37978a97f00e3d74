#ifndef VELSCORE_MODELS_COXREGRMODEL_H
#define VELSCORE_MODELS_COXREGRMODEL_H

#include <unordered_map>

#include "kernels/baseline.h"
#include "models/regressionmodel.h"

namespace MCVelscore_850 {

class CaseWalk;

/// The Cox proportional-hazards model: survival and cumulative hazard at the case's own end time,
/// from a baseline for each stratum.
///
///     d[p] = product over its predictors k of
///              1 or 0                  factor: the case's category is the cell's, or not
///              M[k][case's, cell's]    factor in a model with contrasts M
///              x[k]^c[p,k]             covariate with exponent c; 0 where x[k] is 0, whatever c is
///     lp   = sum of (d[p] b[p] - r[p] b[p])     r is the base point, 0 without one
///     H0   = baseline of the case's stratum at its end time t: the hazard of the last table time
///            not after t; 0 before the stratum's first time, none past its last
///     H    = exp(lp) H0                         cum_hazard
///     S    = 1 / exp(H)                         prediction
///
/// Where they are asked for (SurvivalQuestions):
///
///     exp(lp)                                                          risk
///     S at a time T in the place of t                                  survivals
///     the smallest time of the stratum's table with S <= 0.5 there     median
///
/// A parameter whose beta or d is 0, the latter without a base point, adds nothing. Where H0
/// doesn't exist both results are system-missing and the status is OK.
///
/// Where it is asked for, the standard error of lp is sqrt((d - r)' V (d - r)) over the parameters
/// whose beta isn't 0.
///
/// Shapes  P parameters, one row of betas; V is P x P and may be absent; a table, a category and
/// two limits for
///         each stratum, by its index; one table without strata.
/// Units   times in the unit of the end-time variable; S in 0 to 1, H from 0 on.
/// Errors  GetScore answers 90029 for a null record, a bad predictor, a missing end time and a
///         stratum that has no table, 90017 for a factor outside its contrasts. An absent value of
///         a plain stratum variable takes the first stratum, on purpose; a missing one fails.
/// Order   SetContrastMatrix() after its predictor is added, names and tables before Setup(),
///         FinishSetup() before the first GetScore().
/// Owner   of the values that SetContrastMatrix() is given.
/// Threads one model serves one thread at a time: the first case computes the reference terms, and
///         every case's scratch lies in the model.
class CoxRegModel final : public RegressionModel {
public:
    /// From time to cumulative hazard.
    using HazardTable = std::map<double, double>;

    explicit CoxRegModel(ModelType type = TYPE_COXREG);
    ~CoxRegModel() override;

    int GetModelType() const override { return modelType; }
    void Display(std::ostream& out) const override;
    /// False when a predictor is in no dictionary, and when some factor has contrasts and another
    /// has none; the tables are made all the same. A stratum or end-time variable that is in no
    /// dictionary stays null and is no failure here.
    bool Setup() override;
    void Describe(ModelDescription& description) const override;
    void Tabulate(ModelTables& tables) const override;
    std::unique_ptr<BatchScorer> MakeBlockScorer(
        const kernels::BlockKernels& kernels) const override;
    /// Computes the reference terms once more when their table has come since.
    MCScore::MCStatus GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                               bool derivedInRecord) override;
    MCScore::MCStatus CurveRow(ScoringState& state, const ScoreCaseRecord* record,
                               bool derivedInRecord,
                               std::vector<SurvivalPoint>& curve) const override;

    /// The contrasts of a factor: row i and column i belong to categories[i]. Takes the values of
    /// `categories` over, whatever it answers; false for an unknown predictor.
    bool SetContrastMatrix(const std::string& predictorName, const Matrix& matrix,
                           const std::vector<ScoreValue*>& categories);
    /// Table i, category i, and minTimes[i] and maxTimes[i] of SetMinMaxTime() belong together.
    void SetCumHazardTable(const std::vector<HazardTable>& tables,
                           const std::vector<std::string>& stratumCategories,
                           const std::string& stratumName);
    /// A limit that falls short of the strata counts as not a number.
    void SetMinMaxTime(const std::vector<double>& min, const std::vector<double>& max);
    /// One value for each parameter; of any other length it centres nothing.
    void SetBasePointTable(const std::vector<double>& points) { basePointTable = points; }
    /// refValues[p] = basePointTable[p] b[p], and the betas into `parameterBetas`, when the base
    /// point has a value for each of the `parameterCount` parameters; refValuesComputed always.
    void computeRefValues(std::vector<double>& parameterBetas, int parameterCount);

    const std::string& GetDummyCategory() const { return dummyCategory; }
    const std::vector<Matrix>& GetContrastMatrices() const { return contrastMatrices; }
    const std::vector<HazardTable>& GetCumHazardTables() const { return cumHazardTables; }
    const std::vector<std::string>& GetStratumCategs() const { return stratumCategs; }
    const std::vector<double>& GetBasePointTable() const { return basePointTable; }
    const std::vector<double>& GetMaxTimes() const { return maxTimes; }
    const std::string& GetEndTimeVariableName() const { return endTimeVariableName; }
    const std::string& GetStartTimeVariableName() const { return startTimeVariableName; }
    const std::string& GetSubjectVariableName() const { return subjectVariableName; }
    const std::string& GetStratumVariableName() const { return stratumVariableName; }
    std::string GetStratumVarName() const { return stratumVarName; }
    std::map<std::string, double> GetStratumCatValMaxMap() const { return stratumCatValMaxMap; }
    /// Null until Setup() has found the variable.
    const ScoreDictVar* GetEndTimeVariable() const { return endTimeVariable; }
    void SetEndTimeVariableName(const std::string& name) { endTimeVariableName = name; }
    void SetStartTimeVariableName(const std::string& name) { startTimeVariableName = name; }
    void SetSubjectVariableName(const std::string& name) { subjectVariableName = name; }
    void SetStratumVarName(const std::string& name) { stratumVarName = name; }
    void SetStratumCatValMaxMap(const std::map<std::string, double>& map)
    {
        stratumCatValMaxMap = map;
    }
    /// The status values that mean the event happened, each followed by a comma.
    void SetTargetString(const std::string& text) { targetString = text; }
    void SetBaseLineStratumVariable(const ScoreDictVar* var) { stratumVariable = var; }
    void SetEndTimeVariable(const ScoreDictVar* var) { endTimeVariable = var; }

private:
    friend class CoxBlocks;
    MCScore::MCStatus ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                ScoreResult*& result, bool derivedInRecord) const override;
    using OwnedCategories = std::vector<std::unique_ptr<ScoreValue>>;
    /// One of cumHazardTables as plain arrays, for the look-up of a case.
    struct Baseline {
        std::vector<double> times;  ///< ascending
        std::vector<double> hazards;
        std::vector<double> counts;  ///< of the grid
        kernels::TimeGrid grid;
        // The times at which H0 is larger than at all before it, and it: where survival falls.
        std::vector<double> fallTimes;
        std::vector<double> fallHazards;
    };

    bool EveryFactorHasContrasts() const;
    /// The case's value of a stratum or end-time variable. False where there is no variable and
    /// where a derived one has no value; a plain one may yield null.
    bool FindOwnValue(CaseState& state, const ScoreCaseRecord& record, const ScoreDictVar* var,
                      const std::string& name, const ScoreValue*& value) const;
    TermPlan PlanTerms() const override;
    /// The contrasts of a cell's category by the code of the case's; kNoContrast for none.
    std::vector<double> ContrastColumn(const CategoryCodes& codes, size_t predictor,
                                       const ScoreValue& cell) const;
    /// What each parameter takes off at the base point; zeros where there is none.
    std::vector<double> ReferenceTerms() const;
    /// The base point of a parameter, 0 where there is none.
    double BasePoint(size_t parameter) const;
    /// Steps 5 to 9: the predictors' values, the reference terms, lp. False when the case fails.
    bool ComputeLinearPredictor(CaseWalk& walk, CaseState& state, double& lp) const;
    /// The index of the case's stratum, 0 for a null value; -1 for one that has no table.
    int StratumOf(const ScoreValue* value) const;
    /// The cumulative hazard of a stratum's baseline at t, system-missing where there is none.
    double BaselineAt(size_t stratum, double t) const;
    kernels::Baseline BaselineOf(size_t stratum) const;
    /// Of each baseline; what SetCumHazardTable() and SetMinMaxTime() give decides together.
    void FindFalls();
    /// The smallest time of a stratum's table at which a case of that risk has a survival of 0.5 or
    /// less; system-missing where there is none.
    double MedianOf(size_t stratum, double risk) const;
    void AnswerSurvival(CaseState& state, size_t stratum, double lp) const;
    static SurvivalPoint PointAt(double t, double baseline, double lp);
    static MCScore::MCStatus Fail(CaseWalk& walk, const ScoreDictVar* failed);

    std::string dummyCategory;  ///< the one row of the beta table
    // Contrasts by predictor; empty for one that has none.
    std::vector<Matrix> contrastMatrices;
    std::vector<OwnedCategories> contrastCategories;
    std::vector<double> basePointTable;
    std::vector<HazardTable> cumHazardTables;
    std::string stratumVariableName;  ///< empty when the model isn't stratified
    const ScoreDictVar* stratumVariable = nullptr;
    std::vector<std::string> stratumCategs;
    std::string endTimeVariableName;
    std::string startTimeVariableName;  ///< not read in scoring, as the next
    std::string subjectVariableName;
    const ScoreDictVar* endTimeVariable = nullptr;
    std::vector<double> minTimes;  ///< of each table's first cell in document order
    std::vector<double> maxTimes;
    std::string targetString;
    std::vector<double> refValues;  ///< of computeRefValues(), per parameter
    bool refValuesComputed = false;
    ModelType modelType;
    std::map<std::string, double> stratumCatValMaxMap;
    std::string stratumVarName;

    // What SetCumHazardTable() makes of its arguments for the look-ups of a case. Of strata of one
    // text or number the first counts.
    std::vector<Baseline> baselines;
    std::unordered_map<std::string, int> stratumByText;
    std::unordered_map<double, int> stratumByNumber;
};

}  // namespace MCVelscore_850

#endif
