#ifndef VELSCORE_MODELS_NORMALIZEDMODEL_H
#define VELSCORE_MODELS_NORMALIZEDMODEL_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "kernels/normalization.h"
#include "models/regressionmodel.h"

namespace MCVelscore_850 {

/// A classification with an equation for each category of the target, whose values a normalization
/// other than softmax makes probabilities.
///
///     y[c] = sum of b[c,j] d[j]           d as in MLRModel
///     p    = kernels::Normalize(y)
///
/// The prediction is the most probable category; of equal ones the first in the target's dictionary
/// entry.
///
/// Shapes  C categories, P parameters: betas C x P. Those of the remainder, and of the last
/// category
///         of an ordered target, have no part in any score.
/// Errors  GetScore answers 90029 for a null record or a bad value, with the predictor's index;
///         90028 where a probability is no finite number, as where all y of simplemax add up to 0.
/// Order   SetNormalization(), for shares SetRemainder(), and Setup() before the tables are filled;
///         FinishSetup() before the first GetScore().
class NormalizedModel final : public RegressionModel {
public:
    NormalizedModel();
    ~NormalizedModel() override;

    int GetModelType() const override { return TYPE_MLR; }
    /// False when a predictor is in no dictionary; the tables are made all the same.
    bool Setup() override;
    void Describe(ModelDescription& description) const override;
    void OutlineExplanations(ExplanationOutline& outline) const override;
    std::unique_ptr<BatchScorer> MakeBlockScorer(
        const kernels::BlockKernels& kernels) const override;

    /// By the standard's words: simplemax, and for shares or steps none, logit, probit, cloglog,
    /// loglog, cauchit. False, with no change, for any other.
    bool SetNormalization(std::string_view word);
    const std::string& GetNormalization() const { return word; }
    /// The equations are of an ordered target's cumulative probabilities: shares become steps.
    void SetOrdered() { ordered = true; }
    /// The category whose probability is what the shares of the others leave; the last one unless
    /// it is set.
    void SetRemainder(const std::string& category) { remainder = category; }

private:
    friend class NormalizedBlocks;
    MCScore::MCStatus ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                ScoreResult*& result, bool derivedInRecord) const override;
    void ExplainCase(const CaseState& state, CaseExplanation& explanation) const override;
    void DescribeCoefficients(ModelDescription& description) const override;
    TermPlan PlanTerms() const override { return PlanNumberTerms(NumberTerms::Powers); }
    void FinishPlan() override;

    /// True for the category whose linear predictor isn't looked at.
    bool IsRemainder(size_t category) const
    {
        return normalization.method != kernels::Normalization::Quotients &&
               category == normalization.remainder;
    }

    std::string word;
    bool ordered = false;
    std::string remainder;
    kernels::Normalization normalization;
    /// The category of the equation, where there is just one: its y is the linear predictor.
    std::optional<size_t> soleEquation;
};

}  // namespace MCVelscore_850

#endif
