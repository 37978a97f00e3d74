#ifndef VELSCORE_MODELS_BLRMODEL_H
#define VELSCORE_MODELS_BLRMODEL_H

#include <memory>

#include "models/regressionmodel.h"

namespace MCVelscore_850 {

/// Binary logistic regression with contrasts: a target of two categories, one of which has the
/// betas; the linear predictor of the other is 0.
///
///     d[j]  = product over the parameter's predictors k of
///               K[k](row of the case's category, column of the cell's category)     factor
///               x[k]^e[j,k]         covariate; 0 where x[k] is 0, whatever e is; e <= 0 counts as
///               1
///     lp    = sum of b[j] d[j]
///     p     = exp(lp) / (exp(0) + exp(lp))       probability of the category with the betas
///
/// Where it is asked for, the standard error of lp is sqrt(d' V d) over the parameters whose beta
/// isn't 0. K[k] is the contrast matrix of a factor. The prediction is the more probable category,
/// a tie going to the first; with a cut-off above 0 and a category that it is for, that category
/// when its probability is above the cut-off, and the other one else.
///
/// Shapes  P parameters; K[k] has a row for each category of factor k; V is P x P, all zeros
/// without
///         covariances.
/// Errors  GetScore answers 90029 for a null record or a bad value, with the predictor's index;
///         90015 for a reference category that the target doesn't have; 90017 for a factor value
///         without a contrast.
/// Order   SetContrastMatrix() for every factor, Setup() before the tables are filled,
///         FinishSetup() before the first GetScore().
/// Threads one model serves one thread at a time: the case's scratch lies in the model, and what
///         it answers depends on which case is its first.
class BLRModel final : public RegressionModel {
public:
    BLRModel();
    ~BLRModel() override;

    int GetModelType() const override { return TYPE_BLR; }
    void Display(std::ostream& out) const override;
    /// False when a predictor is in no dictionary, a factor has no contrast matrix, or the target
    /// doesn't have two categories; the tables are made all the same.
    bool Setup() override;
    void Describe(ModelDescription& description) const override;
    void OutlineExplanations(ExplanationOutline& outline) const override;
    std::unique_ptr<BatchScorer> MakeBlockScorer(
        const kernels::BlockKernels& kernels) const override;

    /// The contrast matrix of a predictor and, by row, the number of the category that the row is
    /// for (a text's position in its variable's encoder). False for an unknown predictor.
    bool SetContrastMatrix(const std::string& predictorName, const Matrix& matrix,
                           const std::vector<double>& categories);
    const std::vector<Matrix>& GetContrastMatrices() const { return contrastMatrices; }
    /// The target category whose row of the beta table holds the betas. Takes the value over.
    void SetReferencedTargetCate(ScoreValue* category) { refTargetCategory.reset(category); }
    const ScoreValue* GetRefCategory() const { return refTargetCategory.get(); }
    /// The probability that the category of the cut-off has to exceed, and that category.
    void SetCutoff(double probability) { cutoff = probability; }
    double GetCutoff() const { return cutoff; }
    void SetTargetReferenceCategory(const std::string& name) { targetReferenceCategory = name; }
    std::string GetTargetReferenceCategory() const { return targetReferenceCategory; }

private:
    friend class BLRBlocks;
    MCScore::MCStatus ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                ScoreResult*& result, bool derivedInRecord) const override;
    void ExplainCase(const CaseState& state, CaseExplanation& explanation) const override;
    void DescribeCoefficients(ModelDescription& description) const override;
    TermPlan PlanTerms() const override;
    /// The contrasts of a parameter's category by the row of the case's; kNoContrast for none.
    std::vector<double> ContrastColumn(size_t predictor, double category) const;
    bool FindBetaRow(CaseState& state) const;
    void FinishPlan() override;
    /// The position of a text among its variable's categories; -1 for none.
    double NumberOfText(size_t predictor, const ScoreValue& text) const;
    /// The row of a category's number in the contrast matrix; -1 for none.
    int32_t ContrastRow(size_t predictor, double number) const;
    /// The rows of the contrast matrices that the case's factors take. True when each has one.
    bool FindContrastRows(CaseState& state) const;
    /// The first factor of the row's parameters that has no contrast for the case; null when all
    /// have one.
    const ScoreDictVar* FindFactorOutsideContrasts(const std::vector<double>& rowBetas,
                                                   const CaseState& state) const;
    bool UsesCutoff() const { return cutoff > 0.0 && !targetReferenceCategory.empty(); }

    std::vector<Matrix> contrastMatrices;  ///< by predictor; that of a covariate is empty
    Matrix contrastCategories;             ///< by predictor, the number that labels each row
    std::unique_ptr<ScoreValue> refTargetCategory;
    bool hasEveryContrast = false;  ///< no row of the plan's columns lacks one
    double cutoff = 0.0;
    std::string targetReferenceCategory;
};

}  // namespace MCVelscore_850

#endif
