#ifndef VELSCORE_MODELS_LRMODEL_H
#define VELSCORE_MODELS_LRMODEL_H

#include "models/regressionmodel.h"

namespace MCVelscore_850 {

/// Linear regression: one equation in numeric covariates.
///
///     lp = b[N] + sum of b[i] x[i], i < N               prediction
///     se = sqrt(x' V x), x = (x[0], .., x[N-1], 1)      standard error of the mean prediction,
///     which
///                                                       is that of lp
///     lp - t se, lp + t se                              confidence limits of the mean, with t
///                                                       the StudentLimitQuantile of df
///
/// Parameter i is the slope of predictor i, parameter N the intercept: the reader registers them
/// in that order, and the predictor-to-parameter matrix takes no part.
///
/// Shapes  N predictors, N + 1 parameters, V is (N+1) x (N+1); all zeros without covariances.
/// Units   prediction, error and limits in the unit of the target.
/// Errors  GetScore answers 90029 for a null record or a bad value; df <= 0 gives system-missing
///         limits with status OK.
/// Order   Setup() before the tables are filled, FinishSetup() before the first GetScore().
class LRModel final : public RegressionModel {
public:
    LRModel();
    ~LRModel() override;

    int GetModelType() const override { return TYPE_LR; }
    void Display(std::ostream& out) const override;
    /// False when a predictor is in no dictionary; the tables are made all the same.
    bool Setup() override;
    void Describe(ModelDescription& description) const override;
    void OutlineExplanations(ExplanationOutline& outline) const override;
    std::unique_ptr<BatchScorer> MakeBlockScorer(
        const kernels::BlockKernels& kernels) const override;

    /// The two-sided 95% quantile of Student's t; see StudentQuantile95.
    static double t05(double df);
    const std::string& GetDummyCategory() const { return dummyCategory; }

private:
    friend class LRBlocks;
    MCScore::MCStatus ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                ScoreResult*& result, bool derivedInRecord) const override;
    void ExplainCase(const CaseState& state, CaseExplanation& explanation) const override;
    bool IsConstant(size_t parameter) const override { return parameter >= predictorVars.size(); }
    TermPlan PlanTerms() const override { return EmptyPlan(Planned()); }
    double LimitQuantile() const override;
    /// The values' numbers: from their variables' origins, and plain.
    void ReadNumbers(CaseState& state) const;
    /// The square root of x' V x.
    double StandardError(const CaseState& state) const;

    std::string dummyCategory;  ///< the one row of the beta table
};

}  // namespace MCVelscore_850

#endif
