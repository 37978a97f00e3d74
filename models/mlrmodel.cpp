#include "models/mlrmodel.h"

#include "host/model/modelfamilies.h"
#include "kernels/linearpredictor.h"
#include "kernels/softmax.h"
#include "kernels/standarderror.h"
#include "models/caseroad.h"
#include "models/explainedterms.h"

namespace MCVelscore_850 {

namespace {

constexpr CaseRoad kRoad{
    .tracesNullRecord = true,
    .fetchesDerivedRecord = true,
    .failsUnderStatusOnly = true,
    .namesBadPredictor = true,
    .clearsNumbers = false,
    .missingPrediction = MissingPrediction::TargetTyped,
};

}  // namespace

MLRModel::MLRModel() = default;
MLRModel::~MLRModel() = default;

bool MLRModel::Setup()
{
    RegisterTargetCategories();
    const bool resolved = ResolvePredictors();
    predictorCount = predictorVars.size();
    if (offset.variable != nullptr) {
        predictorVars.push_back(offset.variable);
        predictorRoles.push_back(GetVarRole(offset.variable));
    }
    paramTable = std::make_unique<ParamTable>(this);
    ppcMatrix = std::make_unique<PPCMatrix>(this);
    SizeNumericPPMatrix();
    return resolved;
}

MCScore::MCStatus MLRModel::ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                      ScoreResult*& result, bool derivedInRecord) const
{
    CaseWalk walk(*this, state, kRoad, record, derivedInRecord);
    if (!walk.Start()) return walk.Status();
    walk.PrepareResult<MLRResult>(result, ScoreResult::MLR_RESULT);
    walk.FetchDerived();
    walk.GatherNumbers([&](size_t i, const ScoreDictVar* var) { return walk.FindValue(i, var); });
    if (!walk.Status().IsOK()) return walk.Status();

    EncodeNumbers(state, false);
    state.offset = offset.HasVariable() ? state.numbers[predictorCount] : offset.value;
    const size_t categories = state.linearPredictors.size();
    double* const lp = state.linearPredictors.data();
    const kernels::CaseCells cells{state.numbers.data(), state.codes.data()};
    // The offset goes to every category, the reference category too. It cancels out of the
    // probabilities and only shifts what the guards against overflow look at, on purpose.
    kernels::SumsOfTerms<kernels::Ends::Alone>(state.offset, plan.View(), betasByParameter.data(),
                                               categories, cells, lp, 1);
    if (categories == 1) state.linearPredictor = lp[0];
    const auto largest = kernels::LargestOf(lp, categories);
    double sum = 0.0;
    if (!state.predictionOnly) {
        sum = kernels::Exponentials(lp, categories, largest.value, state.probabilities.data());
    }
    walk.WriteCategories(static_cast<int>(largest.index),
                         [&](size_t c) { return state.probabilities[c] / sum; });
    if (state.wantsProbabilityErrors && HasCovariances() && !state.predictionOnly) {
        for (double& p : state.probabilities) p /= sum;
        WriteProbabilityErrors(state);
    }
    return walk.Status();
}

// Row c P + j of the covariances is parameter j of category c, by which
//
//     dp[k] / db[c, j] = p[k] ((k = c) - p[c]) x[j]
void MLRModel::WriteProbabilityErrors(CaseState& state) const
{
    const std::vector<double>& p = state.probabilities;
    const size_t parameters = parameterMap.size();
    const size_t rows = pcovMatrix->GetRows();
    const kernels::CaseCells cells{state.numbers.data(), state.codes.data()};
    const kernels::Terms terms = plan.View();
    for (size_t j = 0; j < parameters; ++j) {
        const auto design = kernels::DesignValueOf<kernels::Ends::Alone>(terms, j, cells);
        state.design[j] = design.stands ? design.value : 0.0;
    }
    std::vector<double> gradient(rows);
    std::vector<uint32_t> met(rows);
    state.probabilityErrors.assign(p.size(), NumericValue::GetSysmisValue());
    for (size_t k = 0; k < p.size(); ++k) {
        size_t count = 0;
        for (size_t row = 0; row < rows; ++row) {
            const size_t c = row / parameters;
            gradient[row] = p[k] * ((k == c ? 1.0 : 0.0) - p[c]) * state.design[row % parameters];
            if (gradient[row] != 0.0) met[count++] = static_cast<uint32_t>(row);
        }
        state.probabilityErrors[k] =
            kernels::StandardErrorOfSum<double>(pcovMatrix->GetRow(0), rows, met.data(), count,
                                                [&](size_t row) { return gradient[row]; });
    }
}

MCScore::MCStatus MLRModel::GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                                     bool derivedInRecord)
{
    const auto status = RegressionModel::GetScore(record, result, derivedInRecord);
    if (offset.HasVariable()) offset.value = ownState.offset;
    return status;
}

// Those of a reference category are no estimates.
void MLRModel::DescribeCoefficients(ModelDescription& description) const
{
    std::vector<const std::string*> names(categoryMap.size());
    for (const auto& [name, row] : categoryMap) names[static_cast<size_t>(row)] = &name;
    const size_t parameters = parameterMap.size();
    for (size_t c = 0; c < categoryBetas.size(); ++c) {
        if (!HasBetas(c)) continue;
        AddCoefficients(*names[c], static_cast<int>(c), 0, parameters, c * parameters, description);
    }
}

void MLRModel::OutlineExplanations(ExplanationOutline& outline) const
{
    outline.equations.assign(categoryMap.size(), {});
    for (const auto& [name, row] : categoryMap) {
        const auto c = static_cast<size_t>(row);
        ExplanationOutline::Equation& equation = outline.equations[c];
        equation.category = name;
        offset.Outline(equation);
        if (HasBetas(c)) OutlineParameters(categoryBetas[c], 0, equation);
    }
}

void MLRModel::ExplainCase(const CaseState& state, CaseExplanation& explanation) const
{
    const ExplainedCells cells(state);
    for (size_t c = 0; c < categoryBetas.size(); ++c) {
        CaseExplanation::Sum& sum = explanation.Begin(c);
        sum.linearPredictor = state.linearPredictors[c];
        if (offset.kind != Offset::NONE) sum.Add(state.offset, state.offset);
        if (!HasBetas(c)) continue;
        ExplainTerms<kernels::Ends::Alone, kernels::Adds::NonzeroTerms>(
            plan.View(), categoryBetas[c], 0, cells, sum);
    }
}

void MLRModel::Display(std::ostream& out) const { RegressionModel::Display(out); }

void MLRModel::Describe(ModelDescription& description) const
{
    DescribeCommon(description);
    DescribeFamily(kMultinomial, description);
    description.link = "generalized logit";
    description.offset = offset.Describe();
    DescribeCategories(description);
    description.hasLinearPredictorError = false;  // its errors are those of probabilities
    description.hasProbabilityErrors = HasCovariances();
    for (const std::string& category : description.targetCategories) {
        const int c = categoryMap.at(category);
        ModelDescription::Equation equation;
        if (HasBetas(static_cast<size_t>(c))) {
            equation = DescribeEquation(c);
        } else if (description.referenceCategory.empty()) {
            description.referenceCategory = category;
        }
        equation.category = category;
        description.equations.push_back(std::move(equation));
    }
}

}  // namespace MCVelscore_850
