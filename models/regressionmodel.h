#ifndef VELSCORE_MODELS_REGRESSIONMODEL_H
#define VELSCORE_MODELS_REGRESSIONMODEL_H

#include <iosfwd>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "host/model/basemodel.h"
#include "host/model/modeldescription.h"
#include "host/values/numericvalue.h"
#include "models/paramtable.h"
#include "models/pcovmatrix.h"
#include "models/ppcmatrix.h"

namespace MCVelscore_850 {

/// What every regression model has: the registries of parameters, predictors and target
/// categories, the target, the predictors with their roles, the three tables, the flags that
/// steer scoring, and the plain arrays that scoring reads in place of maps. It scores nothing
/// itself.
///
/// Indexes Parameters, predictors and categories are numbered from 0 in the order of their first
///         registration; every table is addressed by these numbers.
/// Order   SetScoreDictionary, SetTargetVar, AddParameter and AddPredictor for all names, with
///         roles; Setup(); the tables' cells; FinishSetup(); then GetScore() per case.
/// Owner   of its tables. Variables are borrowed from the dictionaries.
/// Threads one model serves one thread at a time: the case's scratch lies in the model.
class RegressionModel : public BaseModel {
public:
    using NameMap = std::map<std::string, int>;
    using NameVector = std::vector<std::pair<std::string, int>>;
    using Matrix = std::vector<std::vector<double>>;

    RegressionModel();
    ~RegressionModel() override;

    void SetPredictionOnly(bool only) override { predictionOnly = only; }
    BaseDictionary* GetVarsOfRole(VarRole role) const override;
    const ScoreDictVar* GetTargetVar() const override { return targetVar; }
    bool GetPredictionOnly() const override { return predictionOnly; }
    void Display(std::ostream& out) const override;
    /// ScoringState::failedVar of the last GetScore.
    const ScoreDictVar* GetFailedVar() const { return failedVar; }
    MCScore::MCStatus ScoreRow(ScoringState& state, const ScoreCaseRecord* record,
                               ScoreResult*& result, bool derivedInRecord) const override;
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
    void SetDF(double degreesOfFreedom) { df = degreesOfFreedom; }

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

    /// Copies the tables into plain arrays; once, after every cell is written. Always true. From
    /// then on the predictor-to-parameter matrix takes no further cell. Under MV_SUBSTITUTE with
    /// nothing to substitute the policy becomes MV_SYSMIS_RESULT for good.
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
    /// The beta of a cell, 0.0 for one that the table doesn't have.
    double BetaAt(int category, int parameter) const;
    /// sqrt(d' V d) for the case's designRow d and the covariances V, which have to be there; 0.0
    /// where rounding makes the sum negative. The sum takes (V[i,j] d[i]) d[j] in ascending order.
    double DesignStandardError();
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
    bool dictVarIndexSet = false;
    bool scoreCaseValidationCheck = true;
    bool needDerivedPredictor = false;

    // Plain arrays of FinishSetup().
    std::vector<double> betas;  ///< row 0 of the beta table
    Matrix categoryBetas;       ///< the whole beta table
    /// Per predictor the number that stands in for a missing value, system-missing for none;
    /// empty when no predictor has one.
    std::vector<double> predictorSubstitutes;
    /// One predictor that a parameter depends on, with its cell of numericPPMatrix.
    struct ParameterPredictor {
        int predictor;
        bool isFactor;
        double cell;
        bool operator==(const ParameterPredictor&) const = default;
    };
    /// numericPPMatrix without its empty cells, parameter after parameter, predictors ascending.
    std::vector<ParameterPredictor> parameterPredictors;
    /// Where each parameter's predictors begin, and after the last their end.
    std::vector<size_t> parameterPredictorsBegin;
    std::span<const ParameterPredictor> PredictorsOf(size_t parameter) const
    {
        return {parameterPredictors.data() + parameterPredictorsBegin[parameter],
                parameterPredictors.data() + parameterPredictorsBegin[parameter + 1]};
    }

    /// One predictor that a parameter depends on, with a copy of its cell of ppcMatrix: what is
    /// written there after FinishSetup() changes nothing here.
    struct ParameterCell {
        int predictor;
        bool isFactor;
        std::unique_ptr<const ScoreValue> cell;
        double exponent;  ///< a covariate's; the cell as a number
    };
    /// ppcMatrix without its empty cells, for the families that have no numericPPMatrix: parameter
    /// after parameter, predictors ascending.
    std::vector<ParameterCell> parameterCells;
    std::vector<size_t> parameterCellsBegin;  ///< as parameterPredictorsBegin
    std::span<const ParameterCell> CellsOf(size_t parameter) const
    {
        return {parameterCells.data() + parameterCellsBegin[parameter],
                parameterCells.data() + parameterCellsBegin[parameter + 1]};
    }

    std::vector<char> predictorIsDerived;  ///< per predictor what its variable answers

    /// Per predictor its position in the record, by SetUpDictVarIndex(); -1 when unknown.
    std::vector<int> predictorDictIndex;

    // Scratch of the case.
    const ScoreDictVar* failedVar = nullptr;  ///< as GetFailedVar() tells it
    std::vector<double> designRow;
    std::vector<size_t> metParameters;  ///< parameters whose design value isn't 0
    std::vector<double> caseValues;
    std::vector<const ScoreValue*> caseValueRefs;
    /// The numbers that the value family puts in place of absent values.
    std::vector<NumericValue> caseSubstitutes;

    bool allowMissingFactors = false;

private:
    void ListParameterPredictors();
    void ListParameterCells();

    friend class CaseWalk;
};

}  // namespace MCVelscore_850

#endif
