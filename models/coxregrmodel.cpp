#include "models/coxregrmodel.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <ostream>

#include "host/expressions/transformvar.h"
#include "host/model/modelfamilies.h"
#include "host/model/modeltables.h"
#include "host/values/stringvalue.h"
#include "kernels/baseline.h"
#include "kernels/linearpredictor.h"
#include "kernels/survival.h"
#include "kernels/timegrid.h"
#include "models/caseroad.h"
#include "models/coxregresult.h"
#include "models/explainedterms.h"

namespace MCVelscore_850 {

using MCScore::MCStatus;

namespace {

constexpr CaseRoad kRoad{
    .tracesNullRecord = true,
    .fetchesDerivedRecord = true,
    .failsUnderStatusOnly = true,
    .namesBadPredictor = true,
    .clearsNumbers = false,
    .missingPrediction = MissingPrediction::Number,
    .substitute = Substitute::KnownReplacement,
    .nullRecordLine = "MCStatus error code is : %ld",  // with a blank here and nowhere else
};

constexpr double kNone = NumericValue::GetSysmisValue();
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

double LimitOf(const std::vector<double>& limits, size_t stratum)
{
    return stratum < limits.size() ? limits[stratum] : kNotANumber;
}

// The case's cells where factors have contrasts: notes the first factor without a place in its
// matrix, and answers 0, which ends the parameter.
struct ContrastCells : kernels::CaseCells {
    mutable int32_t outside = -1;  ///< that factor

    static double Contrast(const ContrastCells& cells, int32_t predictor, const double* column)
    {
        const int32_t code = cells.codes[predictor];
        if (code >= 0 && column[code] != kNoContrast) return column[code];
        if (cells.outside < 0) cells.outside = predictor;
        return 0.0;
    }
};

}  // namespace

CoxRegModel::CoxRegModel(ModelType type) : dummyCategory("CoxRegDummy"), modelType(type) {}
CoxRegModel::~CoxRegModel() = default;

bool CoxRegModel::SetContrastMatrix(const std::string& predictorName, const Matrix& matrix,
                                    const std::vector<ScoreValue*>& categories)
{
    OwnedCategories owned(categories.size());
    for (size_t i = 0; i < owned.size(); ++i) owned[i].reset(categories[i]);
    const int index = GetPredictorIndex(predictorName);
    if (index < 0) return false;
    const auto predictor = static_cast<size_t>(index);
    if (predictor >= contrastMatrices.size()) {
        contrastMatrices.resize(predictor + 1);
        contrastCategories.resize(predictor + 1);
    }
    contrastMatrices[predictor] = matrix;
    contrastCategories[predictor] = std::move(owned);
    return true;
}

void CoxRegModel::SetCumHazardTable(const std::vector<HazardTable>& tables,
                                    const std::vector<std::string>& stratumCategories,
                                    const std::string& stratumName)
{
    cumHazardTables = tables;
    stratumCategs = stratumCategories;
    stratumVariableName = stratumName;

    baselines.clear();
    for (const HazardTable& table : cumHazardTables) {
        Baseline& baseline = baselines.emplace_back();
        baseline.times.reserve(table.size());
        baseline.hazards.reserve(table.size());
        for (const auto& [time, hazard] : table) {
            baseline.times.push_back(time);
            baseline.hazards.push_back(hazard);
        }
        baseline.grid = kernels::MakeTimeGrid(baseline.times.data(), table.size(), baseline.counts);
    }
    FindFalls();
    stratumByText.clear();
    stratumByNumber.clear();
    for (size_t i = 0; i < stratumCategs.size(); ++i) {
        stratumByText.emplace(stratumCategs[i], static_cast<int>(i));
        const NumericValue number(stratumCategs[i]);
        // A category that is no number isn't the stratum of a case whose number is missing.
        if (number.IsMissingValue()) continue;
        stratumByNumber.emplace(number.GetDouble(), static_cast<int>(i));
    }
}

void CoxRegModel::SetMinMaxTime(const std::vector<double>& min, const std::vector<double>& max)
{
    minTimes = min;
    maxTimes = max;
    FindFalls();
}

void CoxRegModel::FindFalls()
{
    for (size_t i = 0; i < baselines.size(); ++i) {
        Baseline& baseline = baselines[i];
        baseline.fallTimes.clear();
        baseline.fallHazards.clear();
        double highest = 0.0;
        for (const double t : baseline.times) {
            const double hazard = BaselineAt(i, t);
            if (!(hazard > highest)) continue;  // a missing one is below all
            highest = hazard;
            baseline.fallTimes.push_back(t);
            baseline.fallHazards.push_back(hazard);
        }
    }
}

bool CoxRegModel::Setup()
{
    if (categoryMap.empty()) categoryMap.emplace(dummyCategory, 0);
    const bool resolved = ResolvePredictors() && EveryFactorHasContrasts();
    paramTable = std::make_unique<ParamTable>(this);
    ppcMatrix = std::make_unique<PPCMatrix>(this);
    pcovMatrix.reset();  // the reader's to make, where the document has covariances
    if (!stratumVariableName.empty()) SetBaseLineStratumVariable(FindVar(stratumVariableName));
    if (!endTimeVariableName.empty()) SetEndTimeVariable(FindVar(endTimeVariableName));
    return resolved;
}

// A model that gives contrasts gives them for every factor.
bool CoxRegModel::EveryFactorHasContrasts() const
{
    if (contrastMatrices.empty()) return true;
    for (size_t k = 0; k < predictorRoles.size(); ++k) {
        if (predictorRoles[k] != ROLE_FACTOR) continue;
        if (k >= contrastMatrices.size() || contrastMatrices[k].empty()) return false;
    }
    return true;
}

void CoxRegModel::computeRefValues(std::vector<double>& parameterBetas, int parameterCount)
{
    refValuesComputed = true;
    const auto count = static_cast<size_t>(std::max(parameterCount, 0));
    if (count == 0 || basePointTable.size() != count) return;
    refValues.resize(std::max(refValues.size(), count));
    parameterBetas.resize(std::max(parameterBetas.size(), count));
    for (size_t p = 0; p < count; ++p) {
        parameterBetas[p] = BetaAt(0, static_cast<int>(p));
        refValues[p] = basePointTable[p] * parameterBetas[p];
    }
}

MCStatus CoxRegModel::ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                ScoreResult*& result, bool derivedInRecord) const
{
    CaseWalk walk(*this, state, kRoad, record, derivedInRecord);
    if (!walk.Start()) return walk.Status();
    CoxRegResult& answer = walk.PrepareResult<CoxRegResult>(result, ScoreResult::COXREG_RESULT);
    if (walk.IsFresh()) answer.SetDeadString(targetString);
    walk.FetchDerived();

    const ScoreValue* stratumValue = nullptr;
    const ScoreValue* endTimeValue = nullptr;
    if (!stratumVariableName.empty() &&
        !FindOwnValue(state, *record, stratumVariable, stratumVariableName, stratumValue)) {
        return Fail(walk, stratumVariable);
    }
    const bool needsEndTime = state.survivalAsked.endTime;
    if (needsEndTime &&
        (!FindOwnValue(state, *record, endTimeVariable, endTimeVariableName, endTimeValue) ||
         endTimeVariable->IsMissing(endTimeValue))) {
        return Fail(walk, endTimeVariable);
    }
    double lp = 0.0;
    if (!ComputeLinearPredictor(walk, state, lp)) return walk.Status();
    const int stratum = StratumOf(stratumValue);
    if (stratum < 0) return Fail(walk, stratumVariable);

    const auto index = static_cast<size_t>(stratum);
    AnswerSurvival(state, index, lp);
    const double t = needsEndTime ? NumericReading(*endTimeValue, *endTimeVariable) : kNone;
    const SurvivalPoint point = PointAt(t, needsEndTime ? BaselineAt(index, t) : kNone, lp);
    answer.SetCumHazardValue(point.cumHazard);
    walk.WritePrediction(point.survival);
    return walk.Status();
}

MCStatus CoxRegModel::GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                               bool derivedInRecord)
{
    if (!refValuesComputed && basePointTable.size() == betas.size()) {
        computeRefValues(betas, static_cast<int>(betas.size()));
    }
    return RegressionModel::GetScore(record, result, derivedInRecord);
}

MCStatus CoxRegModel::CurveRow(ScoringState& run, const ScoreCaseRecord* record,
                               bool derivedInRecord, std::vector<SurvivalPoint>& curve) const
{
    auto& state = static_cast<CaseState&>(run);
    curve.clear();
    CaseWalk walk(*this, state, kRoad, record, derivedInRecord);
    if (!walk.Start()) return walk.Status();
    CoxRegResult unused(targetVar);  // where a policy writes its missing prediction
    ScoreResult* result = &unused;
    walk.PrepareResult<CoxRegResult>(result, ScoreResult::COXREG_RESULT);
    walk.FetchDerived();
    const ScoreValue* stratumValue = nullptr;
    if (!stratumVariableName.empty() &&
        !FindOwnValue(state, *record, stratumVariable, stratumVariableName, stratumValue)) {
        return Fail(walk, stratumVariable);
    }
    double lp = 0.0;
    if (!ComputeLinearPredictor(walk, state, lp)) return walk.Status();
    const int stratum = StratumOf(stratumValue);
    if (stratum < 0) return Fail(walk, stratumVariable);

    const auto index = static_cast<size_t>(stratum);
    if (index >= baselines.size()) return walk.Status();
    const std::vector<double>& asked = state.survivalAsked.times;
    for (const double t : asked.empty() ? baselines[index].times : asked) {
        curve.push_back(PointAt(t, BaselineAt(index, t), lp));
    }
    return walk.Status();
}

bool CoxRegModel::FindOwnValue(CaseState& state, const ScoreCaseRecord& record,
                               const ScoreDictVar* var, const std::string& name,
                               const ScoreValue*& value) const
{
    if (var == nullptr) return false;
    if (!var->IsDerived()) {
        value = record.GetValue(name);  // by name alone, on purpose, and null is no failure
        return true;
    }
    value = static_cast<const TransformVar*>(var)->ValueIn(
        {&record, dictionary, transformationDictionary, state.derivation.scratch});
    return value != nullptr;
}

bool CoxRegModel::ComputeLinearPredictor(CaseWalk& walk, CaseState& state, double& lp) const
{
    const size_t n = predictorVars.size();
    walk.GatherValues(n);
    if (!walk.Status().IsOK() || !walk.HasEveryValue(n)) {
        walk.TraceStatus();
        return false;
    }
    if (!state.hasReferences) {
        state.references = ReferenceTerms();
        // A base point of another length centres nothing, and the next case looks again.
        state.hasReferences = refValuesComputed || basePointTable.size() == betas.size();
    }
    walk.ReadValues(n);
    const ContrastCells cells{{state.numbers.data(), state.codes.data()}};
    lp = kernels::CentredSumOfTerms<kernels::Ends::AtZeroContrast>(
        plan.View(), betas.data(), state.references.data(), cells,
        [&](size_t p, double d) { state.design[p] = d; });
    if (cells.outside >= 0) {
        walk.SetStatus(MCScore::kFactorOutsideContrasts,
                       predictorVars[static_cast<size_t>(cells.outside)]);
        walk.TraceStatus();
        return false;
    }
    state.linearPredictor = lp;
    if (state.wantsLinearPredictorError) {
        for (size_t p = 0; p < betas.size(); ++p) {
            if (betas[p] != 0.0) state.design[p] -= BasePoint(p);
        }
        WriteLinearPredictorError(state);
    }
    return true;
}

double CoxRegModel::BasePoint(size_t parameter) const
{
    return basePointTable.size() == betas.size() ? basePointTable[parameter] : 0.0;
}

std::vector<double> CoxRegModel::ReferenceTerms() const
{
    std::vector<double> references = refValues;
    references.resize(betas.size(), 0.0);
    if (!refValuesComputed && basePointTable.size() == betas.size()) {
        for (size_t p = 0; p < betas.size(); ++p) references[p] = basePointTable[p] * betas[p];
    }
    return references;
}

TermPlan CoxRegModel::PlanTerms() const
{
    if (contrastMatrices.empty()) return RegressionModel::PlanTerms();
    const PlannedPredictors predictors = Planned();
    TermPlan made = EmptyPlan(predictors);
    for (size_t k = 0; k < contrastCategories.size() && k < made.codes.size(); ++k) {
        for (const auto& category : contrastCategories[k]) made.codes[k].Append(category.get());
    }
    for (int p = 0; p < numParameters; ++p) {
        for (const auto& [predictor, cell] : ppcMatrix->Row(p)) {
            const auto k = static_cast<size_t>(predictor);
            if (predictors.IsFactor(k)) {
                made.AddContrast(k, ContrastColumn(made.codes[k], k, *cell));
            } else {
                made.AddPower(k, cell->GetDouble());
            }
        }
        made.EndParameter();
    }
    return made;
}

std::vector<double> CoxRegModel::ContrastColumn(const CategoryCodes& codes, size_t predictor,
                                                const ScoreValue& cell) const
{
    std::vector<double> contrasts(codes.Size(), kNoContrast);
    const int32_t column = codes.Find(&cell);
    if (column < 0) return contrasts;
    const Matrix& matrix = contrastMatrices[predictor];
    for (size_t row = 0; row < contrasts.size() && row < matrix.size(); ++row) {
        const auto c = static_cast<size_t>(column);
        if (c < matrix[row].size()) contrasts[row] = matrix[row][c];
    }
    return contrasts;
}

int CoxRegModel::StratumOf(const ScoreValue* value) const
{
    if (value == nullptr) return 0;
    const auto find = [](const auto& strata, const auto& key) {
        const auto found = strata.find(key);
        return found == strata.end() ? -1 : found->second;
    };
    switch (value->Kind()) {
        case ScoreValue::NUMERIC: return find(stratumByNumber, value->GetDouble());
        case ScoreValue::STRING: {
            const auto& text = static_cast<const StringValue&>(*value);
            return text.IsMissingText() ? -1 : find(stratumByText, text.Text());
        }
        case ScoreValue::DATETIME: break;
    }
    return find(stratumByText, value->GetString());
}

double CoxRegModel::BaselineAt(size_t stratum, double t) const
{
    const kernels::Baseline baseline = BaselineOf(stratum);
    return kernels::HazardAfter(baseline, kernels::CountTimesUpTo(baseline, t), t, kNone);
}

// One without a table has limits all the same.
kernels::Baseline CoxRegModel::BaselineOf(size_t stratum) const
{
    static constexpr double kNoCells[1] = {kNone};
    static constexpr double kNoCounts[2] = {0.0, 0.0};
    kernels::Baseline baseline{kNoCells,
                               kNoCells,
                               0,
                               LimitOf(minTimes, stratum),
                               LimitOf(maxTimes, stratum),
                               {kNoCounts, 0.0, 0.0, 0.0, 0}};
    if (stratum < baselines.size()) {
        baseline.times = baselines[stratum].times.data();
        baseline.hazards = baselines[stratum].hazards.data();
        baseline.count = baselines[stratum].times.size();
        baseline.grid = baselines[stratum].grid;
    }
    return baseline;
}

double CoxRegModel::MedianOf(size_t stratum, double risk) const
{
    if (stratum >= baselines.size()) return kNone;
    const Baseline& baseline = baselines[stratum];
    const auto survives = [risk](double hazard) {
        return !(kernels::Survival(risk * hazard) <= 0.5);
    };
    const auto fall =
        std::partition_point(baseline.fallHazards.begin(), baseline.fallHazards.end(), survives);
    if (fall == baseline.fallHazards.end()) return kNone;
    return baseline.fallTimes[static_cast<size_t>(fall - baseline.fallHazards.begin())];
}

void CoxRegModel::AnswerSurvival(CaseState& state, size_t stratum, double lp) const
{
    const SurvivalQuestions& asked = state.survivalAsked;
    if (asked.risk || asked.median) {
        state.survival.risk = kernels::CumulativeHazard(lp, 1.0);
        if (asked.median) state.survival.median = MedianOf(stratum, state.survival.risk);
    }
    state.survival.survivals.resize(asked.times.size());
    for (size_t i = 0; i < asked.times.size(); ++i) {
        const double t = asked.times[i];
        state.survival.survivals[i] = PointAt(t, BaselineAt(stratum, t), lp).survival;
    }
}

SurvivalPoint CoxRegModel::PointAt(double t, double baseline, double lp)
{
    const auto [hazard, survival] = kernels::SurvivalOf(lp, baseline);
    return {t, survival, hazard};
}

MCStatus CoxRegModel::Fail(CaseWalk& walk, const ScoreDictVar* failed)
{
    walk.SetStatus(MCScore::kCaseNotScorable, failed);
    walk.TraceStatus();
    return walk.Status();
}

void CoxRegModel::OutlineExplanations(ExplanationOutline& outline) const
{
    outline.equations.assign(1, {});
    ExplanationOutline::Equation& equation = outline.equations.front();
    OutlineParameters(betas, 0, equation);
    if (basePointTable.size() != betas.size()) return;
    for (size_t p = 0; p < betas.size(); ++p) equation.terms[p].referencePoint = basePointTable[p];
}

void CoxRegModel::ExplainCase(const CaseState& state, CaseExplanation& explanation) const
{
    CaseExplanation::Sum& sum = explanation.Begin(0);
    sum.linearPredictor = state.linearPredictor;
    ExplainCentredTerms<kernels::Ends::AtZeroContrast>(plan.View(), betas, state.references,
                                                       ExplainedCells(state), sum);
}

void CoxRegModel::Display(std::ostream& out) const
{
    using std::endl;
    out << "Begin display of CoxRegModel" << endl;
    RegressionModel::Display(out);
    out << "Contrast matrices:" << endl;
    for (size_t k = 0; k < contrastMatrices.size(); ++k) {
        if (contrastMatrices[k].empty() || k >= predictorVars.size()) continue;
        const ScoreDictVar* var = predictorVars[k];
        out << "For factor ";
        DisplayMatrix(var == nullptr ? "" : var->GetName(), contrastMatrices[k], out);
    }
    out << "endTimeVariable: " << endTimeVariableName << endl;
    if (!basePointTable.empty()) {
        out << "X-BasePoint: " << endl;
        for (const double point : basePointTable) out << point << endl;
    }
    if (!cumHazardTables.empty() && !stratumVariableName.empty()) {
        out << "X-Stratum varName=" << stratumVariableName << endl;
    }
    for (size_t i = 0; i < cumHazardTables.size(); ++i) {
        if (i < stratumCategs.size()) out << "value=" << stratumCategs[i] << endl;
        out << "  X-BaseCumHazardTable: " << endl;
        for (const auto& [time, hazard] : cumHazardTables[i]) {
            out << "     time=" << time << "; cumHazard= " << hazard << endl;
        }
    }
    out << "End display of CoxRegModel" << endl;
}

void CoxRegModel::Tabulate(ModelTables& tables) const
{
    RegressionModel::Tabulate(tables);
    for (const Baseline& baseline : baselines) {
        tables.baselines.push_back({baseline.times, baseline.hazards});
    }
}

void CoxRegModel::Describe(ModelDescription& description) const
{
    DescribeCommon(description);
    DescribeFamily(kCox, description);
    const auto reads = [&](const std::string& name) {
        std::vector<std::string>& all = description.variables;
        const bool known = std::find(all.begin(), all.end(), name) != all.end();
        if (!name.empty() && !known) all.push_back(name);
    };
    reads(endTimeVariableName);
    reads(stratumVariableName);
    description.endTimeVariable = endTimeVariableName;
    description.stratumVariable = stratumVariableName;

    ModelDescription::Equation equation = DescribeEquation(0);
    for (size_t p = 0; p < equation.terms.size(); ++p) {
        if (basePointTable.size() != equation.terms.size()) break;
        equation.terms[p].referencePoint = basePointTable[p];
    }
    description.equations.push_back(std::move(equation));

    for (size_t k = 0; k < contrastMatrices.size() && k < predictorVars.size(); ++k) {
        if (contrastMatrices[k].empty() || predictorVars[k] == nullptr) continue;
        ModelDescription::Contrast contrast;
        contrast.predictor = predictorVars[k]->GetName();
        contrast.rows = contrastMatrices[k];
        for (const auto& category : contrastCategories[k]) {
            contrast.categories.push_back(category ? category->GetString() : "");
        }
        description.contrasts.push_back(std::move(contrast));
    }

    // What a table without cells has for a first time is no time.
    const auto time = [](double limit) {
        return std::fabs(limit) == std::fabs(kNone) ? kNotANumber : limit;
    };
    for (size_t i = 0; i < std::max(cumHazardTables.size(), stratumCategs.size()); ++i) {
        ModelDescription::Stratum stratum;
        if (i < stratumCategs.size()) stratum.value = stratumCategs[i];
        if (i < cumHazardTables.size()) stratum.cells = cumHazardTables[i].size();
        stratum.minTime = time(LimitOf(minTimes, i));
        stratum.maxTime = time(LimitOf(maxTimes, i));
        description.strata.push_back(std::move(stratum));
    }

    for (size_t begin = 0; begin < targetString.size();) {
        const size_t comma = std::min(targetString.find(',', begin), targetString.size());
        description.eventValues.push_back(targetString.substr(begin, comma - begin));
        begin = comma + 1;
    }
    description.quantities = {
        {"prediction", "probability to survive the case's end time"},
        {"cum_hazard", "cumulative hazard up to the case's end time"},
    };
}

}  // namespace MCVelscore_850
