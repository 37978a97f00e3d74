#ifndef VELSCORE_MODELS_MLRMODEL_H
#define VELSCORE_MODELS_MLRMODEL_H

#include "models/offset.h"
#include "models/regressionmodel.h"

namespace MCVelscore_850 {

/// Multinomial logistic regression. Each category c of the target has a row of betas; that of the
/// reference category is all 0.
///
///     d[j]  = product over the parameter's predictors k of
///               1 or 0        factor: the case's number is the cell's, exactly, or not
///               x[k]^e[j,k]   covariate; 0 where x[k] is 0, whatever e is; e <= 0 counts as 1
///     lp[c] = offset + sum of b[c,j] d[j]
///     p[c]  = exp(lp[c]) / sum of exp(lp)         probability of category c
///
/// The prediction is the category with the largest lp; of equal ones the first in the target's
/// dictionary entry.
///
/// Shapes  C categories, P parameters: betas C x P.
/// Errors  GetScore answers 90029 for a null record or a bad value, with the predictor's index.
/// Order   Setup() before the tables are filled, FinishSetup() before the first GetScore().
class MLRModel final : public RegressionModel {
public:
    MLRModel();
    ~MLRModel() override;

    int GetModelType() const override { return TYPE_MLR; }
    void Display(std::ostream& out) const override;
    /// False when a predictor is in no dictionary; the tables are made all the same.
    bool Setup() override;
    void Describe(ModelDescription& description) const override;
    void OutlineExplanations(ExplanationOutline& outline) const override;
    std::unique_ptr<BatchScorer> MakeBlockScorer(
        const kernels::BlockKernels& kernels) const override;

    /// The offset as a variable or as a constant. The first of the two setters wins; a later call
    /// does nothing.
    void SetOffsetVar(const ScoreDictVar* var) { offset.SetVariable(var); }
    void SetOffsetValue(double value) { offset.SetValue(value); }
    const ScoreDictVar* GetOffsetVar() const { return offset.variable; }
    /// The constant, or with an offset variable the last case's offset.
    double GetOffsetValue() const { return offset.value; }

    /// Keeps the case's offset for GetOffsetValue().
    MCScore::MCStatus GetScore(const ScoreCaseRecord* record, ScoreResult*& result,
                               bool derivedInRecord) override;

private:
    friend class MLRBlocks;
    MCScore::MCStatus ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                ScoreResult*& result, bool derivedInRecord) const override;
    void ExplainCase(const CaseState& state, CaseExplanation& explanation) const override;
    void DescribeCoefficients(ModelDescription& description) const override;
    /// The errors of the probabilities p, whose sum is 1.
    void WriteProbabilityErrors(CaseState& state) const;
    TermPlan PlanTerms() const override { return PlanNumberTerms(NumberTerms::Powers); }

    Offset offset;
    size_t predictorCount = 0;  ///< without the offset variable
};

}  // namespace MCVelscore_850

#endif
