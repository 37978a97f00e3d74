#include "models/lrmodel.h"

#include <algorithm>
#include <ostream>

#include "host/model/modelfamilies.h"
#include "kernels/linearpredictor.h"
#include "kernels/standarderror.h"
#include "models/caseroad.h"
#include "models/limitquantile.h"
#include "models/lrresult.h"
#include "models/studentquantile.h"

namespace MCVelscore_850 {

namespace {

constexpr CaseRoad kRoad{
    .tracesNullRecord = false,
    .fetchesDerivedRecord = true,
    .failsUnderStatusOnly = true,
    .namesBadPredictor = false,
    .clearsNumbers = false,
    .missingPrediction = MissingPrediction::FreshNumber,
};

}  // namespace

LRModel::LRModel() : dummyCategory("LRdummy") {}
LRModel::~LRModel() = default;

double LRModel::t05(double df) { return StudentQuantile95(df); }
double LRModel::LimitQuantile() const { return StudentLimitQuantile(confidenceLevel, df); }

bool LRModel::Setup()
{
    categoryMap.emplace(dummyCategory, 0);
    const bool resolved = ResolvePredictors();
    paramTable = std::make_unique<ParamTable>(this);
    pcovMatrix = std::make_unique<PCovMatrix>(this);
    ppcMatrix = std::make_unique<PPCMatrix>(this);
    return resolved;
}

MCScore::MCStatus LRModel::ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                     ScoreResult*& result, bool derivedInRecord) const
{
    CaseWalk walk(*this, state, kRoad, record, derivedInRecord);
    if (!walk.Start()) return walk.Status();
    LRResult& answer = walk.PrepareResult<LRResult>(result, ScoreResult::LR_RESULT);
    walk.FetchDerived();
    const size_t n = predictorVars.size();
    walk.GatherValues(n);
    if (!walk.Status().IsOK() || !walk.HasEveryValue(n)) return walk.Status();

    ReadNumbers(state);
    const double constant = n < betas.size() ? betas[n] : 0.0;
    const kernels::CaseCells cells{state.numbers.data(), state.codes.data()};
    const double lp =
        kernels::SumOfSlopes(constant, betas.data(), std::min(n, betas.size()), cells);
    state.linearPredictor = lp;
    if (state.wantsLinearPredictorError && HasCovariances()) {
        state.linearPredictorError = StandardError(state);
    }
    walk.WritePrediction(lp);
    if (state.predictionOnly) return walk.Status();

    const double se = StandardError(state);
    answer.SetStdDev(se);
    const double t = state.limitQuantile;
    constexpr double kNone = NumericValue::GetSysmisValue();
    const bool limited = !NumericValue::IsSystemMissingValue(t);
    answer.SetCIBottom(limited ? lp - se * t : kNone);
    answer.SetCITop(limited ? lp + se * t : kNone);
    return walk.Status();
}

void LRModel::ReadNumbers(CaseState& state) const
{
    for (size_t i = 0; i < predictorVars.size(); ++i) {
        const ScoreValue& value = *state.valueRefs[i];
        state.numbers[i] = NumericReading(value, *predictorVars[i]);
        const bool isNumber = value.Kind() == ScoreValue::NUMERIC;
        state.plainNumbers[i] = isNumber ? state.numbers[i] : value.GetDouble();
    }
}

double LRModel::StandardError(const CaseState& state) const
{
    // Every predictor has its row, but a model set up without the constant lacks the last.
    const size_t rows = pcovMatrix->GetRows();
    const size_t n = std::min(predictorVars.size(), rows);
    const bool hasConstant = n == predictorVars.size() && n < rows;
    // On purpose: in the inner sum the plain number, not the reading of a date from its variable's
    // origin; scores depend on it.
    const double* const x = state.numbers.data();
    const double* const y = state.plainNumbers.data();
    return kernels::RootOfVariance(kernels::VarianceOfSlopes<double>(
        pcovMatrix->GetRow(0), rows, n, hasConstant, [x](size_t i) { return x[i]; },
        [y](size_t j) { return y[j]; }));
}

void LRModel::OutlineExplanations(ExplanationOutline& outline) const
{
    ExplanationOutline::Equation equation;
    OutlineParameters(betas, 0, equation);
    // The sum begins with the intercept, and takes no parameter behind it.
    auto& terms = equation.terms;
    const size_t n = predictorVars.size();
    if (terms.size() > n) {
        terms.resize(n + 1);
        std::rotate(terms.begin(), terms.end() - 1, terms.end());
    }
    outline.equations.assign(1, std::move(equation));
}

void LRModel::ExplainCase(const CaseState& state, CaseExplanation& explanation) const
{
    const size_t n = predictorVars.size();
    CaseExplanation::Sum& sum = explanation.Begin(0);
    sum.linearPredictor = state.linearPredictor;
    if (n < betas.size()) sum.Add(1.0, betas[n]);
    for (size_t i = 0; i < std::min(n, betas.size()); ++i) {
        const double x = state.numbers[i];
        sum.Add(x, betas[i] != 0.0 && x != 0.0 ? betas[i] * x : 0.0);
    }
}

void LRModel::Display(std::ostream& out) const
{
    out << "Begin display of LRModel" << std::endl;
    RegressionModel::Display(out);
    out << "End display of LRModel" << std::endl;
}

void LRModel::Describe(ModelDescription& description) const
{
    DescribeCommon(description);
    DescribeFamily(kLinear, description);
    description.hasStudentEstimates = true;
    // Slope i belongs to predictor i, whatever cells the document has.
    ModelDescription::Equation equation = DescribeEquation(0);
    for (size_t i = 0; i < equation.terms.size(); ++i) {
        auto& factors = equation.terms[i].factors;
        factors.clear();
        if (i < predictorVars.size() && predictorVars[i] != nullptr) {
            factors.push_back({predictorVars[i]->GetName(), "", false, 1.0});
        }
    }
    description.equations.push_back(std::move(equation));
    const bool lacks = !description.hasCovariances;
    description.hasConfidenceLevel = !lacks;
    description.quantities = {
        {"prediction", "mean of the target"},
        {"std_dev", "standard error of the mean", lacks},
        {"ci_lower", "lower " + LevelText() + " confidence limit of the mean (Student's t)", lacks},
        {"ci_upper", "upper " + LevelText() + " confidence limit of the mean (Student's t)", lacks},
    };
}

}  // namespace MCVelscore_850
