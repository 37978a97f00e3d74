#ifndef VELSCORE_MODELS_CLRMODEL_H
#define VELSCORE_MODELS_CLRMODEL_H

#include "models/regressionmodel.h"

namespace MCVelscore_850 {

/// Conditional logistic regression. A case is scored alone; its stratum has no part in it. The
/// beta table has two rows, the target's first category and a made-up one whose betas stay 0:
///
///     lp = sum of b[j] d[j]             d as CaseWalk::DesignValue
///     p  = exp(lp) / (exp(lp) + exp(0))
///
/// p, the prediction, is the probability of the first category. There is no predicted category.
/// Where it is asked for, the standard error of lp is sqrt(d' V d) over the parameters whose beta
/// isn't 0.
///
/// Errors  GetScore answers 90029 for a null record or a bad value.
/// Order   Setup() before the tables are filled, FinishSetup() before the first GetScore().
class CLRModel final : public RegressionModel {
public:
    CLRModel();
    ~CLRModel() override;

    /// The policy MV_STATUS_ONLY does nothing here: a bad value stands. Prediction-only makes no
    /// difference.
    int GetModelType() const override { return TYPE_CLR; }
    void Display(std::ostream& out) const override;
    /// False, without tables, for a target without categories or whose first one has the made-up
    /// name, for no parameters, no predictors, and a predictor that is in no dictionary.
    bool Setup() override;
    void Describe(ModelDescription& description) const override;
    void OutlineExplanations(ExplanationOutline& outline) const override;
    std::unique_ptr<BatchScorer> MakeBlockScorer(
        const kernels::BlockKernels& kernels) const override;

    const std::string& GetDummyCategory() const { return dummyCategory; }

private:
    friend class CLRBlocks;
    MCScore::MCStatus ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                ScoreResult*& result, bool derivedInRecord) const override;
    void ExplainCase(const CaseState& state, CaseExplanation& explanation) const override;
    std::string dummyCategory;
};

}  // namespace MCVelscore_850

#endif
