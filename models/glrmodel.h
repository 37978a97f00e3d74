#ifndef VELSCORE_MODELS_GLRMODEL_H
#define VELSCORE_MODELS_GLRMODEL_H

#include "models/regressionmodel.h"

namespace MCVelscore_850 {

/// The general linear model: one equation whose parameters are products of factor levels and
/// covariate powers.
///
///     d[p] = product over its predictors k of
///              1 or 0             factor: the case's category is the cell's, or not
///              x[k]^ceil(c[p,k])  covariate with exponent c; 0 where x[k] is 0, whatever c is
///     lp   = sum of b[p] d[p]                     prediction
///     se   = sqrt(d' V d)                         standard error of the mean prediction, which is
///                                                 that of lp
///     lp - t se, lp + t se                        confidence limits of the mean, with t the
///                                                 StudentLimitQuantile of df
///
/// A fractional exponent counts as the next whole number at or above it, and one of 0 or below
/// leaves d as it is. A document whose algorithm is "linearSVM" may fix the error (sigma) and the
/// half-width of the limits (percentile, in units of the prediction) instead; the error of lp stays
/// that of the covariances.
///
/// Shapes  P parameters, V is P x P and may be absent; the error is then 0.
/// Units   prediction, error and limits in the unit of the target.
/// Errors  GetScore answers 90029 for a null record or a bad value; a df without a quantile gives
///         system-missing limits with status OK.
/// Order   Setup() before the tables are filled, FinishSetup() before the first GetScore().
class GLRModel final : public RegressionModel {
public:
    GLRModel();
    ~GLRModel() override;

    int GetModelType() const override { return TYPE_GLR; }
    void Display(std::ostream& out) const override;
    /// False when a predictor is in no dictionary; no table is made then.
    bool Setup() override;
    void Describe(ModelDescription& description) const override;
    void OutlineExplanations(ExplanationOutline& outline) const override;
    std::unique_ptr<BatchScorer> MakeBlockScorer(
        const kernels::BlockKernels& kernels) const override;

    /// The algorithm that decides about sigma and percentile; hides the base's, which keeps what
    /// the document's head says.
    void SetAlgorithmName(const std::string& name) { algorithmName = name; }
    const std::string& GetAlgorithmName() const { return algorithmName; }
    void SetSigmaValue(double sigma) { sigmaValue = sigma; }
    double GetSigmaValue() const { return sigmaValue; }
    void SetPercentileValue(double percentile) { percentileValue = percentile; }
    double GetPercentileValue() const { return percentileValue; }

    /// The two-sided 95% quantile of Student's t; see StudentQuantile95.
    static double t05(double df);
    const std::string& GetDummyCategory() const { return dummyCategory; }

private:
    friend class GLRBlocks;
    MCScore::MCStatus ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                ScoreResult*& result, bool derivedInRecord) const override;
    void ExplainCase(const CaseState& state, CaseExplanation& explanation) const override;
    bool IsLinearSVM() const;
    TermPlan PlanTerms() const override { return PlanNumberTerms(NumberTerms::RepeatedProducts); }
    double LimitQuantile() const override;
    double StandardError(CaseState& state) const;

    std::string dummyCategory;  ///< the one row of the beta table
    std::string algorithmName;
    double sigmaValue = NumericValue::GetSysmisValue();
    double percentileValue = NumericValue::GetSysmisValue();
};

}  // namespace MCVelscore_850

#endif
