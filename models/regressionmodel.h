#ifndef VELSCORE_MODELS_REGRESSIONMODEL_H
#define VELSCORE_MODELS_REGRESSIONMODEL_H

#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/model/basemodel.h"
#include "host/model/batchscorer.h"
#include "host/model/caseexplanation.h"
#include "host/model/modeldescription.h"
#include "host/values/numericvalue.h"
#include "kernels/instructionset.h"
#include "models/casestate.h"
#include "models/offset.h"
#include "models/paramtable.h"
#include "models/pcovmatrix.h"
#include "models/ppcmatrix.h"
#include "models/termplan.h"

namespace MCVelscore_850 {

/// What every regression model has: the registries of parameters, predictors and target
/// categories, the target, the predictors with their roles, the three tables, the flags that
/// steer scoring, and the plan that scoring reads in place of maps. It scores nothing itself.
///
/// Indexes Parameters, predictors and categories are numbered from 0 in the order of their first
///         registration; every table is addressed by these numbers.
/// Order   SetScoreDictionary, SetTargetVar, AddParameter and AddPredictor for all names, with
///         roles; Setup(); the tables' cells; FinishSetup(); then GetScore() per case.
/// Owner   of its tables. Variables are borrowed from the dictionaries.
/// Threads GetScore() serves one thread at a time: it scores in a state of the model's own, and its
///         first case writes positions into the shared variables. ScoreRow() serves any number.
class RegressionModel : public BaseModel {
public:
    using NameMap = std::map<std::string, int>;
    using NameVector = std::vector<std::pair<std::string, int>>;
    using Matrix = std::vector<std::vector<double>>;

    RegressionModel();
    ~RegressionModel() override;

    void SetPredictionOnly(bool only) override { predictionOnly = only; }
    void SetConfidenceLevel(double level) override;
    BaseDictionary* GetVarsOfRole(VarRole role) const override;
    const ScoreDictVar* GetTargetVar() const override { return targetVar; }
    bool GetPredictionOnly() const override { return predictionOnly; }
    void Display(std::ostream& out) const override;
    /// ScoreRow() with the model's own state.
    MCScore::MCStatus GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                               bool derivedInRecord) override;
    std::unique_ptr<ScoringState> MakeState() const override;
    MCScore::MCStatus ScoreRow(ScoringState& state, const ScoreCaseRecord* record,
                               ScoreResult*& result, bool derivedInRecord) const final
    {
        return ScoreCase(static_cast<CaseState&>(state), record, result, derivedInRecord);
    }
    void Tabulate(ModelTables& tables) const override;
    /// The family's ExplainCase() of what ScoreRow() left in the state.
    MCScore::MCStatus ExplainRow(ScoringState& state, const ScoreCaseRecord* record,
                                 ScoreResult*& result, bool derivedInRecord,
                                 CaseExplanation& explanation) const final;
    std::unique_ptr<BatchScorer> MakeBatchScorer() const final
    {
        return MakeBlockScorer(kernels::ChosenKernels());
    }
    /// MakeBatchScorer() with kernels of the caller's choice.
    virtual std::unique_ptr<BatchScorer> MakeBlockScorer(const kernels::BlockKernels&) const = 0;
    /// ScoringState::failedVar of the last GetScore().
    const ScoreDictVar* GetFailedVar() const { return ownState.failedVar; }
    /// The pieces of Display(): a matrix row by row under its name and size, and a map's entries
    /// ascending by name.
    void DisplayMatrix(const std::string& name, const Matrix& matrix, std::ostream& out) const;
    void DisplayMap(const std::string& name, const NameMap& map, std::ostream& out) const;

    /// Registers a name once, with the next index. A name that is there keeps its index and label,
    /// and the answer is false.
    bool AddParameter(const std::string& name, const std::string& label);
    bool AddPredictor(const std::string& name);
    /// -1 for a name that is not registered.
    int GetParameterIndex(const std::string& name) const;
    int GetPredictorIndex(const std::string& name) const;
    const NameMap& GetParameterMap() const { return parameterMap; }
    const NameMap& GetPredictorMap() const { return predictorMap; }
    const NameMap& GetCategoryMap() const { return categoryMap; }
    const std::vector<std::string>& GetParamLabels() const { return paramLabels; }
    /// (name, index) pairs, ascending by name and not by index.
    NameVector GetParameterVector() const;
    NameVector GetPredictorVector() const;
    NameVector GetCategoryVector() const;

    /// Makes `var` the target; the old one, if any, falls back to no role. Always true.
    bool SetTargetVar(const ScoreDictVar* var);
    /// The same for a variable of the main dictionary; false, with no change, for an unknown name.
    bool SetTargetVar(const std::string& name);
    double GetDF() const { return df; }
    void SetDF(double degreesOfFreedom);

    ParamTable* GetParamTable() const { return paramTable.get(); }
    PPCMatrix* GetPPCMatrix() { return ppcMatrix.get(); }
    const PPCMatrix* GetPPCMatrix() const { return ppcMatrix.get(); }
    Matrix& GetNumericPPMatrix() { return numericPPMatrix; }
    const Matrix& GetNumericPPMatrix() const { return numericPPMatrix; }
    PCovMatrix* GetPCovMatrix() { return pcovMatrix.get(); }
    const PCovMatrix* GetPCovMatrix() const { return pcovMatrix.get(); }
    /// The covariance matrix, made on first need from the registries as they stand.
    PCovMatrix* CreatePCovMatrix();

    void SetScoreCaseValidationCheck(bool check) { scoreCaseValidationCheck = check; }
    bool GetScoreCaseValidationCheck() const { return scoreCaseValidationCheck; }
    void SetAllowMissingFactors(bool allow) { allowMissingFactors = allow; }
    bool GetAllowMissingFactors() const { return allowMissingFactors; }
    void SetNeedDerivedPredictor(bool need) { needDerivedPredictor = need; }
    bool NeedDerivedPredictor() const { return needDerivedPredictor; }

    /// Makes the plan of the tables; once, after every cell is written. Always true. What is
    /// written into the predictor-to-parameter matrix later changes no score. Under MV_SUBSTITUTE
    /// with nothing to substitute the policy becomes MV_SYSMIS_RESULT for good.
    bool FinishSetup();
    /// Binds the model to the layout of the first indexed record; all later records are taken to
    /// have it. Writes the positions into the shared variables.
    void SetUpDictVarIndex(const ScoreCaseRecord* record, bool derivedInRecord);

protected:
    /// Sizes predictorVars and predictorRoles and fills them from the main dictionary, then the
    /// derived variables, in the order of the names. Stops with false at a name that is in neither.
    bool ResolvePredictors();
    /// Registers a target category once, with the next row of the beta table.
    void RegisterCategory(const std::string& name);
    /// Registers the target's categories by name, in the order of its dictionary entry.
    void RegisterTargetCategories();
    /// numericPPMatrix by parameters and predictors, every cell system-missing: no dependence.
    void SizeNumericPPMatrix();
    /// False for a category all of whose betas are 0: a reference category's.
    bool HasBetas(size_t category) const;
    /// The beta of a cell, 0.0 for one that the table doesn't have.
    double BetaAt(int category, int parameter) const;
    /// The family's own steps of a case.
    virtual MCScore::MCStatus ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                        ScoreResult*& result, bool derivedInRecord) const = 0;
    /// The quantile of the family's confidence limits at the model's level; system-missing where
    /// there is none.
    virtual double LimitQuantile() const { return NumericValue::GetSysmisValue(); }
    /// The confidence level as a description tells it: "95%".
    std::string LevelText() const;
    /// The linear predictors of a case that was scored, from what scoring left in the state, with
    /// the terms of OutlineExplanations() and in the family's own order of operations.
    virtual void ExplainCase(const CaseState&, CaseExplanation&) const = 0;
    /// The parameters from `first` on, with a row of the beta table.
    void OutlineParameters(const std::vector<double>& rowBetas, size_t first,
                           ExplanationOutline::Equation& equation) const;
    /// The last step of FinishSetup(): what the family makes for its cases beside the terms.
    virtual void FinishPlan() {}
    /// The terms of the family's parameters, from the cells as they stand.
    virtual TermPlan PlanTerms() const;
    PlannedPredictors Planned() const { return {predictorVars, predictorRoles}; }
    /// The terms of numericPPMatrix. A factor's texts are compared by the numbers of their
    /// categories, which are their codes.
    enum class NumberTerms {
        Powers,           ///< factors' numbers exactly; covariates by pow
        RepeatedProducts  ///< factors' numbers nearly; covariates by multiplication
    };
    TermPlan PlanNumberTerms(NumberTerms terms) const;
    /// Whether a result gives the probability of every category. MLRResult refuses one whose value
    /// the target takes for missing or not valid, as that of a date, whose name in the map isn't
    /// its text; blocks give all.
    bool IsEveryCategoryGiven() const;
    /// Binds a run to the layout of its first indexed record.
    void Bind(CaseState& state, const ScoreCaseRecord& record, bool derivedInRecord) const;
    /// The codes of the case's numbers, for the factors that are read by code: a whole number is
    /// its own, any other none. With `nearly`, what is a whole number but for rounding counts too.
    void EncodeNumbers(CaseState& state, bool nearly) const;
    /// True when the document has covariances; some families make the matrix in any case.
    bool HasCovariances() const { return pcovMatrix != nullptr && pcovMatrix->IsWritten(); }
    /// kernels::StandardErrorOfSum for the case's design values and the covariances, whose matrix
    /// has to be there. `firstRow` is the row of parameter 0.
    double DesignStandardError(CaseState& state, size_t firstRow = 0) const;
    /// Both categories' probabilities have the same error: that of the linear predictor times the
    /// size of a probability's derivative by it.
    void WriteBinaryErrors(CaseState& state, double derivative, size_t categories) const;
    /// Writes the state's linearPredictorError from the case's design values, where it is asked for
    /// and there are covariances.
    void WriteLinearPredictorError(CaseState& state, size_t firstRow = 0) const
    {
        if (!state.wantsLinearPredictorError || !HasCovariances()) return;
        state.linearPredictorError = DesignStandardError(state, firstRow);
    }
    /// The document's estimates; those of row 0 of the beta table.
    virtual void DescribeCoefficients(ModelDescription& description) const;
    /// The parameters from `first` to before `end` in a row of the beta table, of which parameter 0
    /// has, as it were, `firstRow` of the covariances.
    void AddCoefficients(const std::string& category, int row, size_t first, size_t end,
                         size_t firstRow, ModelDescription& description) const;
    /// True for a parameter without predictors.
    virtual bool IsConstant(size_t parameter) const;
    /// What every family tells: target, predictors, degrees of freedom, variables to read.
    void DescribeCommon(ModelDescription& description) const;
    /// The target's categories in dictionary order, and the columns of a family that predicts one.
    void DescribeCategories(ModelDescription& description) const;
    /// The linear predictor of one row of the beta table, its factors from the
    /// predictor-to-parameter matrix.
    ModelDescription::Equation DescribeEquation(int category) const;

    const ScoreDictVar* targetVar = nullptr;
    NameMap parameterMap;
    int numParameters = 0;
    int numPredictors = 0;
    std::vector<std::string> paramLabels;  ///< by parameter index
    NameMap predictorMap;
    NameMap categoryMap;  ///< category to row of the beta table; written by Setup()
    std::vector<const ScoreDictVar*> predictorVars;  ///< null where a name was not resolved
    std::vector<int> predictorRoles;
    std::unique_ptr<ParamTable> paramTable;
    std::unique_ptr<PPCMatrix> ppcMatrix;
    /// The predictor-to-parameter matrix as numbers: parameters by predictors, system-missing
    /// where there is no dependence. Empty in the families that don't use it.
    Matrix numericPPMatrix;
    std::unique_ptr<PCovMatrix> pcovMatrix;
    double df = 0.0;
    bool predictionOnly = false;
    bool scoreCaseValidationCheck = true;
    bool needDerivedPredictor = false;

    // What FinishSetup() makes.
    std::vector<double> betas;             ///< row 0 of the beta table
    Matrix categoryBetas;                  ///< the whole beta table
    std::vector<double> betasByParameter;  ///< the same, the categories of a parameter together
    TermPlan plan;
    /// Per predictor the number that stands in for a missing value, system-missing for none;
    /// empty when no predictor has one.
    std::vector<double> predictorSubstitutes;
    std::vector<char> predictorIsDerived;  ///< per predictor what its variable answers

    CaseState ownState;  ///< of GetScore()
    bool allowMissingFactors = false;

private:
    void SizeState(CaseState& state) const;

    friend class CaseWalk;
};

}  // namespace MCVelscore_850

#endif
