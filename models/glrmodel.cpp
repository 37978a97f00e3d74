#include "models/glrmodel.h"

#include <cmath>
#include <ostream>

#include "host/expressions/transformvar.h"
#include "models/caseroad.h"
#include "models/lrresult.h"
#include "models/studentquantile.h"

namespace MCVelscore_850 {

namespace {

constexpr CaseRoad kRoad{
    .family = "general linear model",
    .tracesNullRecord = true,
    .fetchesDerivedRecord = false,  // derived predictors are asked for one at a time
    .failsUnderStatusOnly = true,
    .namesBadPredictor = false,
    .clearsNumbers = true,
    .missingPrediction = MissingPrediction::Number,
};

// d times x to the power of the next whole number at or above the exponent, by multiplication: 2
// gives x x, 2.5 gives x x x, 0.5 gives x. This family has no pow, on purpose. An exponent that
// no model has takes pow all the same, so that the loop ends.
double MultiplyByPower(double d, double x, double exponent)
{
    if (exponent <= 1.0) return d * x;
    constexpr double kMostMultiplications = 100000.0;
    if (exponent > kMostMultiplications) return d * std::pow(x, std::ceil(exponent));
    double count = 0.0;
    do {
        d *= x;
        count += 1.0;
    } while (exponent > count);
    return d;
}

}  // namespace

GLRModel::GLRModel() : dummyCategory("GLRdummy") {}
GLRModel::~GLRModel() = default;

double GLRModel::t05(double df) { return StudentQuantile95(df); }

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

MCScore::MCStatus GLRModel::GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                                     bool derivedInRecord)
{
    CaseWalk walk(*this, kRoad, record, derivedInRecord);
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
            value = static_cast<const TransformVar*>(var)->GetTransformedValue(
                record, dictionary, transformationDictionary);
        }
        return value;
    });
    if (!walk.Status().IsOK()) return walk.Status();

    const double lp = LinearPredictor();
    walk.WritePrediction(lp);
    if (predictionOnly) return walk.Status();

    const double se = StandardError();
    answer.SetStdDev(se);
    answer.SetCIBottom(NumericValue::GetSysmisValue());
    answer.SetCITop(NumericValue::GetSysmisValue());
    double halfWidth = 0.0;
    if (!NumericValue::IsSystemMissingValue(percentileValue) && IsLinearSVM()) {
        halfWidth = percentileValue;
    } else {
        const double t = NumericValue::IsSystemMissingValue(df) ? df : t05(df);
        if (NumericValue::IsSystemMissingValue(t)) return walk.Status();
        halfWidth = se * t;
    }
    answer.SetCIBottom(lp - halfWidth);
    answer.SetCITop(lp + halfWidth);
    return walk.Status();
}

double GLRModel::LinearPredictor()
{
    const double* const x = caseValues.data();
    const ParameterPredictor* term = parameterPredictors.data();
    double lp = 0.0;
    for (size_t p = 0; p < betas.size(); ++p) {
        const ParameterPredictor* const end =
            parameterPredictors.data() + parameterPredictorsBegin[p + 1];
        bool active = betas[p] != 0.0;
        double d = 1.0;
        for (; term != end; ++term) {
            const double value = x[term->predictor];
            if (term->isFactor) {
                if (!NumericValue::IsEqual(term->cell, value)) active = false;
            } else if (value == 0.0) {  // exact: the tolerant comparison has no absolute part
                active = false;
            } else if (term->cell > 0.0 && value != 1.0) {
                d = MultiplyByPower(d, value, term->cell);
            }
        }
        designRow[p] = active ? d : 0.0;
        if (active) lp += d * betas[p];
    }
    return lp;
}

double GLRModel::StandardError()
{
    const bool fixed = !NumericValue::IsSystemMissingValue(sigmaValue);
    if (fixed && IsLinearSVM()) return sigmaValue;
    // A sigma of any other algorithm says nothing about the error.
    return pcovMatrix == nullptr ? 0.0 : DesignStandardError();
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
    description.family = kRoad.family;
    description.className = "GLRModel";
    description.resultType = ScoreResult::LR_RESULT;
    description.equations.push_back(DescribeEquation(0));
    const bool svm = IsLinearSVM();
    const bool fixedError = svm && !NumericValue::IsSystemMissingValue(sigmaValue);
    const bool fixedWidth = svm && !NumericValue::IsSystemMissingValue(percentileValue);
    const bool lacksError = !description.hasCovariances && !fixedError;
    const bool lacksLimits = lacksError && !fixedWidth;
    description.quantities = {
        {"prediction", "mean of the target"},
        {"std_dev", fixedError ? "sigma of the document" : "standard error of the mean",
         lacksError},
        {"ci_lower",
         fixedWidth ? "prediction minus the percentile of the document"
                    : "lower 95% confidence limit of the mean (Student's t)",
         lacksLimits},
        {"ci_upper",
         fixedWidth ? "prediction plus the percentile of the document"
                    : "upper 95% confidence limit of the mean (Student's t)",
         lacksLimits},
    };
}

}  // namespace MCVelscore_850
