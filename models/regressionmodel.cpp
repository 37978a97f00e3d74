#include "models/regressionmodel.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

#include "host/expressions/transformvar.h"
#include "host/model/modeltables.h"
#include "host/variables/scorecaserecord.h"
#include "host/variables/valueset.h"
#include "host/variables/varstats.h"
#include "kernels/standarderror.h"
#include "models/nameindex.h"

namespace MCVelscore_850 {

namespace {

bool Register(RegressionModel::NameMap& map, const std::string& name)
{
    return map.emplace(name, static_cast<int>(map.size())).second;
}

// As a question, ROLE_PREDICTOR means every predictor-like role; for a derived variable only the
// two of the factor and covariate lists, on purpose.
bool AnswersRole(ScoreModel::VarRole wanted, ScoreModel::VarRole role, bool derived)
{
    if (role == wanted) return true;
    if (wanted != ScoreModel::ROLE_PREDICTOR) return false;
    switch (role) {
        case ScoreModel::ROLE_FACTOR:
        case ScoreModel::ROLE_COVARIATE: return true;
        case ScoreModel::ROLE_TIME:
        case ScoreModel::ROLE_STRATUM:
        case ScoreModel::ROLE_SUBJECT:
        case ScoreModel::ROLE_OFFSET: return !derived;
        default: return false;
    }
}

// The older form gives every parameter a label of blanks.
bool IsBlank(const std::string& label) { return label.find_first_not_of(' ') == label.npos; }

// The code that a category's number is: a whole number its own, any other none.
int32_t CodeOf(double number, bool nearly)
{
    if (!(std::fabs(number) <= std::numeric_limits<int32_t>::max())) return CategoryCodes::kNone;
    const double whole = std::nearbyint(number);
    const bool is = number == whole || (nearly && NumericValue::IsEqual(number, whole));
    return is ? static_cast<int32_t>(whole) : CategoryCodes::kNone;
}

}  // namespace

RegressionModel::RegressionModel() = default;

RegressionModel::~RegressionModel()
{
    paramTable.reset();
    pcovMatrix.reset();
    ppcMatrix.reset();
}

bool RegressionModel::AddParameter(const std::string& name, const std::string& label)
{
    if (!Register(parameterMap, name)) return false;
    paramLabels.push_back(label);
    return true;
}

bool RegressionModel::AddPredictor(const std::string& name) { return Register(predictorMap, name); }

int RegressionModel::GetParameterIndex(const std::string& name) const
{
    return IndexOf(parameterMap, name);
}

int RegressionModel::GetPredictorIndex(const std::string& name) const
{
    return IndexOf(predictorMap, name);
}

RegressionModel::NameVector RegressionModel::GetParameterVector() const
{
    return {parameterMap.begin(), parameterMap.end()};
}

RegressionModel::NameVector RegressionModel::GetPredictorVector() const
{
    return {predictorMap.begin(), predictorMap.end()};
}

RegressionModel::NameVector RegressionModel::GetCategoryVector() const
{
    return {categoryMap.begin(), categoryMap.end()};
}

bool RegressionModel::SetTargetVar(const ScoreDictVar* var)
{
    if (targetVar != nullptr) SetVarRole(targetVar, ROLE_NONE);
    targetVar = var;
    SetVarRole(var, ROLE_TARGET);
    return true;
}

bool RegressionModel::SetTargetVar(const std::string& name)
{
    const ScoreDictVar* var = dictionary == nullptr ? nullptr : dictionary->GetVar(name);
    if (var == nullptr) return false;
    return SetTargetVar(var);
}

// GetScore() finds the quantile in its state: one that isn't of the default level takes longer than
// a case.
void RegressionModel::SetConfidenceLevel(double level)
{
    BaseModel::SetConfidenceLevel(level);
    ownState.limitQuantile = LimitQuantile();
}

void RegressionModel::SetDF(double degreesOfFreedom)
{
    df = degreesOfFreedom;
    ownState.limitQuantile = LimitQuantile();
}

std::string RegressionModel::LevelText() const
{
    return fmt::format("{:.15g}%", 100.0 * confidenceLevel);
}

PCovMatrix* RegressionModel::CreatePCovMatrix()
{
    if (!pcovMatrix) pcovMatrix = std::make_unique<PCovMatrix>(this);
    return pcovMatrix.get();
}

BaseDictionary* RegressionModel::GetVarsOfRole(VarRole role) const
{
    auto vars = std::make_unique<BaseDictionary>();
    const auto gather = [&](const ScoreDictionary* from, bool derived) {
        if (from == nullptr) return;
        for (const ScoreDictVar* var : from->GetVars()) {
            if (AnswersRole(role, GetVarRole(var), derived)) {
                vars->AddVar(var->GetName(), var->Clone());
            }
        }
    };
    gather(dictionary, false);
    gather(transformationDictionary, true);
    return vars.release();
}

bool RegressionModel::ResolvePredictors()
{
    predictorVars.assign(predictorMap.size(), nullptr);
    predictorRoles.assign(predictorMap.size(), -1);
    for (const auto& [name, index] : predictorMap) {
        const ScoreDictVar* var = FindVar(name);
        if (var == nullptr) return false;
        predictorVars[static_cast<size_t>(index)] = var;
        predictorRoles[static_cast<size_t>(index)] = GetVarRole(var);
    }
    return true;
}

void RegressionModel::RegisterCategory(const std::string& name) { Register(categoryMap, name); }

void RegressionModel::RegisterTargetCategories()
{
    const ValueSet* values = targetVar == nullptr ? nullptr : targetVar->GetValueSet();
    if (values == nullptr) return;
    for (const ValueSetEntry& entry : values->GetEntries()) {
        RegisterCategory(entry.GetEntryValue()->GetString());
    }
}

bool RegressionModel::IsEveryCategoryGiven() const
{
    return targetVar != nullptr &&
           std::all_of(categoryMap.begin(), categoryMap.end(), [&](const auto& category) {
               const std::unique_ptr<ScoreValue> value(targetVar->MakeValue(category.first));
               return targetVar->IsValid(value.get()) && !targetVar->IsMissing(value.get());
           });
}

void RegressionModel::SizeNumericPPMatrix()
{
    numericPPMatrix.assign(
        parameterMap.size(),
        std::vector<double>(predictorVars.size(), NumericValue::GetSysmisValue()));
}

double RegressionModel::BetaAt(int category, int parameter) const
{
    const ParamTableCell* cell = paramTable ? paramTable->GetCell(category, parameter) : nullptr;
    return cell == nullptr ? 0.0 : cell->GetBeta();
}

bool RegressionModel::HasBetas(size_t category) const
{
    const std::vector<double>& row = categoryBetas[category];
    return std::any_of(row.begin(), row.end(), [](double beta) { return beta != 0.0; });
}

bool RegressionModel::FinishSetup()
{
    numParameters = static_cast<int>(parameterMap.size());
    numPredictors = static_cast<int>(predictorVars.size());
    const size_t parameters = parameterMap.size();
    const size_t predictors = predictorVars.size();

    betas.resize(parameters);
    for (int i = 0; i < numParameters; ++i) betas[static_cast<size_t>(i)] = BetaAt(0, i);
    categoryBetas.assign(categoryMap.size(), std::vector<double>(parameters));
    for (size_t c = 0; c < categoryBetas.size(); ++c) {
        for (int i = 0; i < numParameters; ++i) {
            categoryBetas[c][static_cast<size_t>(i)] = BetaAt(static_cast<int>(c), i);
        }
    }

    betasByParameter.clear();
    for (size_t p = 0; p < parameters; ++p) {
        for (const std::vector<double>& row : categoryBetas) betasByParameter.push_back(row[p]);
    }

    predictorIsDerived.clear();
    for (const ScoreDictVar* var : predictorVars) {
        predictorIsDerived.push_back(var != nullptr && var->IsDerived() ? 1 : 0);
    }

    if (predictorRoles.empty()) {
        for (const ScoreDictVar* var : predictorVars) predictorRoles.push_back(GetVarRole(var));
    }

    if (missingValuePolicy == MV_SUBSTITUTE) {
        predictorSubstitutes.assign(predictors, NumericValue::GetSysmisValue());
        int count = 0;
        for (size_t i = 0; i < predictors; ++i) {
            const int role = i < predictorRoles.size() ? predictorRoles[i] : -1;
            const VarStats* stats =
                predictorVars[i] == nullptr ? nullptr : predictorVars[i]->GetVarStats();
            if (role == ROLE_COVARIATE && stats != nullptr &&
                stats->GetMissingReplacement() != nullptr) {
                predictorSubstitutes[i] = stats->GetMissingReplacement()->GetDouble();
                ++count;
            } else if (role == ROLE_FACTOR && allowMissingFactors) {
                predictorSubstitutes[i] = NumericValue::GetInfinity();  // equals no category
                ++count;
            }
        }
        if (count == 0) {
            // Nothing to substitute: the document scores as if it had asked for a missing result.
            missingValuePolicy = MV_SYSMIS_RESULT;
            predictorSubstitutes.clear();
        }
    }

    plan = PlanTerms();
    FinishPlan();
    SizeState(ownState);
    return true;
}

TermPlan RegressionModel::PlanTerms() const
{
    return ppcMatrix ? TermsOfCells(*ppcMatrix, parameterMap.size(), Planned())
                     : EmptyPlan(Planned());
}

TermPlan RegressionModel::PlanNumberTerms(NumberTerms terms) const
{
    const PlannedPredictors predictors = Planned();
    const bool repeats = terms == NumberTerms::RepeatedProducts;
    TermPlan made = EmptyPlan(predictors);
    for (const std::vector<double>& row : numericPPMatrix) {
        for (size_t k = 0; k < row.size(); ++k) {
            const double cell = row[k];
            if (NumericValue::IsSystemMissingValue(cell)) continue;
            const int32_t code = CodeOf(cell, false);
            if (!predictors.IsFactor(k)) {
                repeats ? made.AddRepeatedProduct(k, cell) : made.AddPower(k, cell);
            } else if (predictors.HasTexts(k) && code >= 0) {
                made.AddCategory(k, code);
            } else {
                made.AddNumber(k, repeats ? kernels::TermPart::Near : kernels::TermPart::Equal,
                               cell);
            }
        }
        made.EndParameter();
    }
    return made;
}

void RegressionModel::SizeState(CaseState& state) const
{
    const size_t predictors = predictorVars.size();
    const size_t parameters = parameterMap.size();
    state.valueRefs.resize(predictors);
    state.substitutes.assign(predictors, NumericValue(NumericValue::GetSysmisValue()));
    state.numbers.resize(predictors);
    state.codes.resize(predictors, CategoryCodes::kNone);
    state.plainNumbers.resize(predictors);
    state.design.resize(parameters);
    state.met.resize(parameters);
    state.linearPredictors.resize(categoryMap.size());
    state.probabilities.resize(categoryMap.size());
    state.limitQuantile = LimitQuantile();
}

std::unique_ptr<ScoringState> RegressionModel::MakeState() const
{
    auto state = std::make_unique<CaseState>();
    state->policy = missingValuePolicy;
    state->predictionOnly = predictionOnly;
    SizeState(*state);
    return state;
}

MCScore::MCStatus RegressionModel::GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                                            bool derivedInRecord)
{
    ownState.policy = missingValuePolicy;
    ownState.predictionOnly = predictionOnly;
    if (record != nullptr && record->HasIndexedAccess() && !ownState.isBound) {
        SetUpDictVarIndex(record, derivedInRecord);
    }
    return ScoreCase(ownState, record, result, derivedInRecord);
}

MCScore::MCStatus RegressionModel::ExplainRow(ScoringState& state, const ScoreCaseRecord* record,
                                              ScoreResult*& result, bool derivedInRecord,
                                              CaseExplanation& explanation) const
{
    explanation.Clear();
    auto& own = static_cast<CaseState&>(state);
    const MCScore::MCStatus status = ScoreCase(own, record, result, derivedInRecord);
    if (status.IsOK()) ExplainCase(own, explanation);
    return status;
}

// A term is called by its parameter's label, and by its name where that tells more.
void RegressionModel::OutlineParameters(const std::vector<double>& rowBetas, size_t first,
                                        ExplanationOutline::Equation& equation) const
{
    std::vector<std::string> names(parameterMap.size());
    for (const auto& [name, index] : parameterMap) names[static_cast<size_t>(index)] = name;
    std::map<std::string_view, int> labels;
    for (const std::string& label : paramLabels) ++labels[label];
    for (size_t p = first; p < names.size(); ++p) {
        const std::string& label = paramLabels[p];
        const bool tells = !IsBlank(label) && labels[label] == 1;
        equation.terms.push_back({.name = tells ? label : names[p], .beta = rowBetas[p]});
    }
}

void RegressionModel::EncodeNumbers(CaseState& state, bool nearly) const
{
    for (size_t k = 0; k < plan.readings.size(); ++k) {
        if (plan.readings[k] == TermPlan::Reading::Code) {
            state.codes[k] = CodeOf(state.numbers[k], nearly);
        }
    }
}

double RegressionModel::DesignStandardError(CaseState& state, size_t firstRow) const
{
    // Only parameters that the case meets count.
    const size_t rows = pcovMatrix->GetRows();
    const size_t n = std::min(state.design.size(), rows - std::min(firstRow, rows));
    size_t met = 0;
    for (size_t p = 0; p < n; ++p) {
        state.met[met] = static_cast<uint32_t>(p + firstRow);
        if (state.design[p] != 0.0) ++met;
    }
    const double* const design = state.design.data();
    return kernels::StandardErrorOfSum<double>(pcovMatrix->GetRow(0), rows, state.met.data(), met,
                                               [=](size_t row) { return design[row - firstRow]; });
}

void RegressionModel::WriteBinaryErrors(CaseState& state, double derivative,
                                        size_t categories) const
{
    state.probabilityErrors.assign(categories, std::fabs(derivative) * DesignStandardError(state));
}

void RegressionModel::SetUpDictVarIndex(const ScoreCaseRecord* record, bool derivedInRecord)
{
    const auto bind = [record](const ScoreDictionary* vars) {
        if (vars == nullptr) return;
        for (const ScoreDictVar* var : vars->GetVars()) {
            var->SetDictIndex(record->GetVarIndex(var->GetName()));
        }
    };
    bind(dictionary);
    if (derivedInRecord) bind(transformationDictionary);
    numPredictors = static_cast<int>(predictorVars.size());
    Bind(ownState, *record, derivedInRecord);
}

void RegressionModel::Bind(CaseState& state, const ScoreCaseRecord& record,
                           bool derivedInRecord) const
{
    const auto holds = [](const ScoreDictionary* vars, const ScoreDictVar* var) {
        return vars != nullptr && vars->GetVar(var->GetName()) == var;
    };
    state.isBound = true;
    state.positions.assign(predictorVars.size(), -1);
    for (size_t i = 0; i < predictorVars.size(); ++i) {
        const ScoreDictVar* var = predictorVars[i];
        if (var == nullptr || (!derivedInRecord && var->IsDerived())) continue;
        // A variable of no dictionary of the model keeps the position that somebody gave it.
        const bool own =
            holds(dictionary, var) || (derivedInRecord && holds(transformationDictionary, var));
        state.positions[i] = own ? record.GetVarIndex(var->GetName()) : var->GetDictIndex();
    }
}

void RegressionModel::DescribeCommon(ModelDescription& description) const
{
    if (targetVar != nullptr) description.target = targetVar->GetName();
    description.degreesOfFreedom = df;
    description.hasCovariances = HasCovariances();
    description.hasLinearPredictorError = HasCovariances();
    for (size_t i = 0; i < predictorVars.size(); ++i) {
        if (predictorVars[i] == nullptr) continue;
        const std::string& name = predictorVars[i]->GetName();
        const int role = i < predictorRoles.size() ? predictorRoles[i] : -1;
        if (role == ROLE_FACTOR) description.factors.push_back(name);
        if (role == ROLE_COVARIATE) description.covariates.push_back(name);
        description.variables.push_back(name);
    }
    DescribeCoefficients(description);
}

void RegressionModel::DescribeCoefficients(ModelDescription& description) const
{
    AddCoefficients("", 0, 0, parameterMap.size(), 0, description);
}

void RegressionModel::AddCoefficients(const std::string& category, int row, size_t first,
                                      size_t end, size_t firstRow,
                                      ModelDescription& description) const
{
    std::vector<const std::string*> names(parameterMap.size());
    for (const auto& [name, index] : parameterMap) names[static_cast<size_t>(index)] = &name;
    for (size_t p = first; p < std::min(end, names.size()); ++p) {
        const double estimate = BetaAt(row, static_cast<int>(p));
        const size_t covariance = firstRow + p;
        double variance = std::numeric_limits<double>::quiet_NaN();
        if (HasCovariances() && covariance < pcovMatrix->GetRows()) {
            variance = pcovMatrix->GetRow(covariance)[covariance];
        }
        // A parameter that depends on others is in the document with zeros.
        if (variance == 0.0 && estimate == 0.0) variance = std::numeric_limits<double>::quiet_NaN();
        description.coefficients.push_back({category, *names[p],
                                            IsBlank(paramLabels[p]) ? "" : paramLabels[p], estimate,
                                            std::sqrt(variance), IsConstant(p)});
    }
}

bool RegressionModel::IsConstant(size_t parameter) const
{
    return ppcMatrix && ppcMatrix->Row(static_cast<int>(parameter)).empty();
}

void RegressionModel::DescribeCategories(ModelDescription& description) const
{
    description.targetCategories.resize(categoryMap.size());
    for (const auto& [name, index] : categoryMap) {
        description.targetCategories[static_cast<size_t>(index)] = name;
    }
    description.quantities.push_back({"prediction", "most probable category"});
    for (const std::string& name : description.targetCategories) {
        description.quantities.push_back(
            {"probability(" + name + ")", "probability of the category"});
    }
}

ModelDescription::Equation RegressionModel::DescribeEquation(int category) const
{
    ModelDescription::Equation equation;
    equation.terms.resize(parameterMap.size());
    for (const auto& [name, index] : parameterMap) {
        ModelDescription::Term& term = equation.terms[static_cast<size_t>(index)];
        term.parameter = name;
        term.label = paramLabels[static_cast<size_t>(index)];
        term.beta = BetaAt(category, index);
        if (!ppcMatrix) continue;
        for (const auto& [predictor, value] : ppcMatrix->Row(index)) {
            const auto k = static_cast<size_t>(predictor);
            if (predictorVars[k] == nullptr) continue;
            const bool factor = predictorRoles[k] == ROLE_FACTOR;
            term.factors.push_back({predictorVars[k]->GetName(), factor ? value->GetString() : "",
                                    factor, factor ? 1.0 : value->GetDouble()});
        }
    }
    return equation;
}

void RegressionModel::Tabulate(ModelTables& tables) const
{
    tables = {};
    if (HasCovariances()) tables.covariances = pcovMatrix->GetCells();
}

}  // namespace MCVelscore_850
