#include "models/mlrmodel.h"

#include <algorithm>

#include "host/model/scoreresult.h"
#include "kernels/softmax.h"
#include "models/caseroad.h"

namespace MCVelscore_850 {

namespace {

constexpr CaseRoad kRoad{
    .family = "multinomial logistic regression",
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
    linearPredictors.assign(categoryMap.size(), 0.0);
    exponentials.assign(categoryMap.size(), 0.0);
    return resolved;
}

MCScore::MCStatus MLRModel::GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                                     bool derivedInRecord)
{
    CaseWalk walk(*this, kRoad, record, derivedInRecord);
    if (!walk.Start()) return walk.Status();
    walk.PrepareResult<MLRResult>(result, ScoreResult::MLR_RESULT);
    walk.FetchDerived();
    walk.GatherNumbers([&](size_t i, const ScoreDictVar* var) { return walk.FindValue(i, var); });
    if (!walk.Status().IsOK()) return walk.Status();

    if (offset.HasVariable()) offset.value = caseValues[predictorCount];
    // Design values don't depend on the category: each is computed once for all rows of betas.
    for (size_t p = 0; p < designRow.size(); ++p) designRow[p] = DesignValue(p);
    for (size_t c = 0; c < linearPredictors.size(); ++c) {
        // The offset goes to every category, the reference category too. It cancels out of the
        // probabilities and only shifts what the guards against overflow look at, on purpose.
        double lp = offset.value;
        const std::vector<double>& betasOfCategory = categoryBetas[c];
        for (size_t p = 0; p < designRow.size(); ++p) {
            if (betasOfCategory[p] != 0.0 && designRow[p] != 0.0) {
                lp += designRow[p] * betasOfCategory[p];
            }
        }
        linearPredictors[c] = lp;
    }

    const size_t categories = linearPredictors.size();
    const auto largest = kernels::LargestOf(linearPredictors.data(), categories);
    double sum = 0.0;
    if (!predictionOnly) {
        sum = kernels::Exponentials(linearPredictors.data(), categories, largest.value,
                                    exponentials.data());
    }
    walk.WriteCategories(static_cast<int>(largest.index),
                         [&](size_t c) { return exponentials[c] / sum; });
    return walk.Status();
}

double MLRModel::DesignValue(size_t parameter) const
{
    double d = 1.0;
    for (const ParameterPredictor& term : PredictorsOf(parameter)) {
        const double x = caseValues[static_cast<size_t>(term.predictor)];
        if (term.isFactor) {
            if (term.cell != x) return 0.0;  // exact: both are the same category's number
            continue;
        }
        if (x == 0.0) return 0.0;
        d *= CovariatePower(x, term.cell);
    }
    return d;
}

void MLRModel::Display(std::ostream& out) const { RegressionModel::Display(out); }

void MLRModel::Describe(ModelDescription& description) const
{
    DescribeCommon(description);
    description.family = kRoad.family;
    description.className = "MLRModel";
    description.resultType = ScoreResult::MLR_RESULT;
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
