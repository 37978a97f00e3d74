#include "models/lrmodel.h"

#include <algorithm>
#include <cmath>
#include <ostream>

#include "models/caseroad.h"
#include "models/lrresult.h"
#include "models/studentquantile.h"

namespace MCVelscore_850 {

namespace {

constexpr CaseRoad kRoad{
    .family = "linear regression",
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

bool LRModel::Setup()
{
    categoryMap.emplace(dummyCategory, 0);
    const bool resolved = ResolvePredictors();
    paramTable = std::make_unique<ParamTable>(this);
    pcovMatrix = std::make_unique<PCovMatrix>(this);
    ppcMatrix = std::make_unique<PPCMatrix>(this);
    plainValues.resize(predictorVars.size());
    return resolved;
}

MCScore::MCStatus LRModel::GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                                    bool derivedInRecord)
{
    CaseWalk walk(*this, kRoad, record, derivedInRecord);
    if (!walk.Start()) return walk.Status();
    LRResult& answer = walk.PrepareResult<LRResult>(result, ScoreResult::LR_RESULT);
    walk.FetchDerived();
    const size_t n = predictorVars.size();
    walk.GatherValues(n);
    if (!walk.Status().IsOK() || !walk.HasEveryValue(n)) return walk.Status();

    for (size_t i = 0; i < n; ++i) {
        caseValues[i] = NumericReading(*caseValueRefs[i], *predictorVars[i]);
        const bool number = caseValueRefs[i]->Kind() == ScoreValue::NUMERIC;
        plainValues[i] = number ? caseValues[i] : caseValueRefs[i]->GetDouble();
    }
    double lp = n < betas.size() ? betas[n] : 0.0;
    for (size_t i = 0; i < n; ++i) {
        const double x = caseValues[i];
        const double b = i < betas.size() ? betas[i] : 0.0;
        if (x != 0.0 && b != 0.0) lp += b * x;
    }
    walk.WritePrediction(lp);
    if (predictionOnly) return walk.Status();

    double v = Variance();
    if (v < 0.0) v = 0.0;  // from rounding; a NaN stays
    const double se = std::sqrt(v);
    answer.SetStdDev(se);
    const double t = t05(df);
    constexpr double kNone = NumericValue::GetSysmisValue();
    const bool limited = !NumericValue::IsSystemMissingValue(t);
    answer.SetCIBottom(limited ? lp - se * t : kNone);
    answer.SetCITop(limited ? lp + se * t : kNone);
    return walk.Status();
}

double LRModel::Variance() const
{
    const Matrix& covariances = pcovMatrix->GetCells();
    // Every predictor has its row, but a model set up without the constant lacks the last.
    const size_t n = std::min(predictorVars.size(), covariances.size());
    const bool hasConstant = n == predictorVars.size() && n < covariances.size();
    const double* const x = caseValues.data();
    // On purpose: in the inner sum the plain number, not the reading of a date from its variable's
    // origin; scores depend on it.
    const double* const y = plainValues.data();
    double v = 0.0;
    if (hasConstant) {
        const double* const last = covariances[n].data();
        v = last[n];
        for (size_t j = 0; j < n; ++j) {
            if (last[j] != 0.0 && x[j] != 0.0) v += (2.0 * last[j]) * x[j];
        }
    }
    for (size_t i = 0; i < n; ++i) {
        if (x[i] == 0.0) continue;
        const double* const row = covariances[i].data();
        for (size_t j = 0; j < n; ++j) {
            if (row[j] != 0.0 && y[j] != 0.0) v += (x[i] * row[j]) * y[j];
        }
    }
    return v;
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
    description.family = kRoad.family;
    description.className = "LRModel";
    description.resultType = ScoreResult::LR_RESULT;
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
    description.quantities = {
        {"prediction", "mean of the target"},
        {"std_dev", "standard error of the mean", lacks},
        {"ci_lower", "lower 95% confidence limit of the mean (Student's t)", lacks},
        {"ci_upper", "upper 95% confidence limit of the mean (Student's t)", lacks},
    };
}

}  // namespace MCVelscore_850
