#include "models/mlrmodel.h"

#include <algorithm>

#include "host/model/modelfamilies.h"
#include "kernels/linearpredictor.h"
#include "kernels/softmax.h"
#include "models/caseroad.h"

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
    return walk.Status();
}

MCScore::MCStatus MLRModel::GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                                     bool derivedInRecord)
{
    const auto status = RegressionModel::GetScore(record, result, derivedInRecord);
    if (offset.HasVariable()) offset.value = ownState.offset;
    return status;
}

void MLRModel::Display(std::ostream& out) const { RegressionModel::Display(out); }

void MLRModel::Describe(ModelDescription& description) const
{
    DescribeCommon(description);
    DescribeFamily(kMultinomial, description);
    description.link = "generalized logit";
    description.offset = offset.Describe();
    DescribeCategories(description);
    for (const std::string& category : description.targetCategories) {
        const int c = categoryMap.at(category);
        const std::vector<double>& row = categoryBetas[static_cast<size_t>(c)];
        ModelDescription::Equation equation;
        if (std::any_of(row.begin(), row.end(), [](double beta) { return beta != 0.0; })) {
            equation = DescribeEquation(c);
        } else if (description.referenceCategory.empty()) {
            description.referenceCategory = category;
        }
        equation.category = category;
        description.equations.push_back(std::move(equation));
    }
}

}  // namespace MCVelscore_850
