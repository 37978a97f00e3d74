#include "models/glrmodel.h"

#include <ostream>

#include "host/expressions/transformvar.h"
#include "host/model/modelfamilies.h"
#include "kernels/linearpredictor.h"
#include "models/caseroad.h"
#include "models/explainedterms.h"
#include "models/limitquantile.h"
#include "models/lrresult.h"
#include "models/studentquantile.h"

namespace MCVelscore_850 {

namespace {

constexpr CaseRoad kRoad{
    .tracesNullRecord = true,
    .fetchesDerivedRecord = false,  // derived predictors are asked for one at a time
    .failsUnderStatusOnly = true,
    .namesBadPredictor = false,
    .clearsNumbers = true,
    .missingPrediction = MissingPrediction::Number,
};

}  // namespace

GLRModel::GLRModel() : dummyCategory("GLRdummy") {}
GLRModel::~GLRModel() = default;

double GLRModel::t05(double df) { return StudentQuantile95(df); }
double GLRModel::LimitQuantile() const { return StudentLimitQuantile(confidenceLevel, df); }

bool GLRModel::IsLinearSVM() const { return algorithmName == "linearSVM"; }

bool GLRModel::Setup()
{
    categoryMap.emplace(dummyCategory, 0);
    if (!ResolvePredictors()) return false;
    paramTable = std::make_unique<ParamTable>(this);
    ppcMatrix = std::make_unique<PPCMatrix>(this);
    numParameters = static_cast<int>(parameterMap.size());
    numPredictors = static_cast<int>(predictorMap.size());
    SizeNumericPPMatrix();
    return true;
}

MCScore::MCStatus GLRModel::ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                      ScoreResult*& result, bool derivedInRecord) const
{
    CaseWalk walk(*this, state, kRoad, record, derivedInRecord);
    if (!walk.Start()) return walk.Status();
    LRResult& answer = walk.PrepareResult<LRResult>(result, ScoreResult::LR_RESULT);

    walk.GatherNumbers([&](size_t i, const ScoreDictVar* var) -> const ScoreValue* {
        const ScoreValue* value = nullptr;
        const bool derived = predictorIsDerived[i] != 0;
        if (derivedInRecord || !derived) {
            bool bound = false;
            value = walk.ValueAtPosition(i, bound);
            // No second try by name when a known position holds nothing, on purpose.
            if (!bound) value = record->GetValue(var->GetName());
        }
        if (value == nullptr && derived) {
            value = static_cast<const TransformVar*>(var)->ValueIn(
                {record, dictionary, transformationDictionary, state.derivation.scratch});
        }
        return value;
    });
    if (!walk.Status().IsOK()) return walk.Status();

    EncodeNumbers(state, true);
    const kernels::CaseCells cells{state.numbers.data(), state.codes.data()};
    // Terms of 0 are added too, and a product of 0 is multiplied on.
    const double lp = kernels::SumOfTerms<kernels::Ends::Alone, kernels::Adds::StandingTerms>(
        0.0, plan.View(), betas.data(), 0, cells, [&](size_t p, double d) { state.design[p] = d; });
    state.linearPredictor = lp;
    WriteLinearPredictorError(state);
    walk.WritePrediction(lp);
    if (state.predictionOnly) return walk.Status();

    const double se = StandardError(state);
    answer.SetStdDev(se);
    answer.SetCIBottom(NumericValue::GetSysmisValue());
    answer.SetCITop(NumericValue::GetSysmisValue());
    double halfWidth = 0.0;
    if (!NumericValue::IsSystemMissingValue(percentileValue) && IsLinearSVM()) {
        halfWidth = percentileValue;
    } else {
        const double t = state.limitQuantile;
        if (NumericValue::IsSystemMissingValue(t)) return walk.Status();
        halfWidth = se * t;
    }
    answer.SetCIBottom(lp - halfWidth);
    answer.SetCITop(lp + halfWidth);
    return walk.Status();
}

double GLRModel::StandardError(CaseState& state) const
{
    const bool fixed = !NumericValue::IsSystemMissingValue(sigmaValue);
    if (fixed && IsLinearSVM()) return sigmaValue;
    // A sigma of any other algorithm says nothing about the error.
    return pcovMatrix == nullptr ? 0.0 : DesignStandardError(state);
}

void GLRModel::OutlineExplanations(ExplanationOutline& outline) const
{
    outline.equations.assign(1, {});
    OutlineParameters(betas, 0, outline.equations.front());
}

void GLRModel::ExplainCase(const CaseState& state, CaseExplanation& explanation) const
{
    CaseExplanation::Sum& sum = explanation.Begin(0);
    sum.linearPredictor = state.linearPredictor;
    ExplainTerms<kernels::Ends::Alone, kernels::Adds::StandingTerms>(plan.View(), betas, 0,
                                                                     ExplainedCells(state), sum);
}

void GLRModel::Display(std::ostream& out) const
{
    out << "Begin display of GLRModel" << std::endl;
    RegressionModel::Display(out);
    out << "End display of GLRModel" << std::endl;
}

void GLRModel::Describe(ModelDescription& description) const
{
    DescribeCommon(description);
    DescribeFamily(kGeneralLinear, description);
    description.hasStudentEstimates = true;
    description.equations.push_back(DescribeEquation(0));
    const bool svm = IsLinearSVM();
    const bool fixedError = svm && !NumericValue::IsSystemMissingValue(sigmaValue);
    const bool fixedWidth = svm && !NumericValue::IsSystemMissingValue(percentileValue);
    const bool lacksError = !description.hasCovariances && !fixedError;
    const bool lacksLimits = lacksError && !fixedWidth;
    description.hasConfidenceLevel = !lacksLimits && !fixedWidth;
    description.quantities = {
        {"prediction", "mean of the target"},
        {"std_dev", fixedError ? "sigma of the document" : "standard error of the mean",
         lacksError},
        {"ci_lower",
         fixedWidth ? "prediction minus the percentile of the document"
                    : "lower " + LevelText() + " confidence limit of the mean (Student's t)",
         lacksLimits},
        {"ci_upper",
         fixedWidth ? "prediction plus the percentile of the document"
                    : "upper " + LevelText() + " confidence limit of the mean (Student's t)",
         lacksLimits},
    };
}

}  // namespace MCVelscore_850
