#ifndef VELSCORE_MODELS_CUMULATIVELINKMODEL_H
#define VELSCORE_MODELS_CUMULATIVELINKMODEL_H

#include "models/offset.h"
#include "models/regressionmodel.h"

namespace MCVelscore_850 {

class CaseWalk;
struct CaseRoad;

/// Ordinal regression with a cumulative link. The C categories of the target, in the order of its
/// dictionary entry, are the ordinal scale; they share one linear predictor, and each boundary
/// between two has a threshold:
///
///     eta  = sum of b[j] d[j] for j from 1 on, plus the offset     d as CaseWalk::DesignValue
///     F[i] = inverse link(threshold[i] + eta, or - eta)            i from 0 to C-2; F[C-1] = 1
///     p[i] = F[i] - F[i-1]                                         probability of category i
///
/// A boundary whose F falls short of the one before counts as none: its category has probability 0.
/// The prediction is the most probable category; of equal ones the lowest. Where it is asked for,
/// the standard error of eta is sqrt(d' V d) over the parameters from 1 on whose beta isn't 0: the
/// thresholds have no part.
///
/// Shapes  Parameter 0 is the thresholds' column of the beta table: row i holds the threshold of
///         category i. The betas of the other parameters lie in the last row but one, where the
///         reader's count of cells puts them.
/// Errors  GetScore answers 90029 for a null record or a bad value, with the predictor's index. A
///         bad value doesn't end the case: the thresholds alone make its prediction.
/// Order   Setup() before the tables are filled, FinishSetup() before the first GetScore().
class CumulativeLinkModel : public RegressionModel {
public:
    enum CumulLinkFunction {
        CUM_LOGIT = 0,
        CUM_CAUCHIT = 1,
        CUM_CLOGLOG = 2,
        CUM_LOGLOG = 3,
        CUM_PROBIT = 4
    };

    ~CumulativeLinkModel() override;

    int GetModelType() const override { return TYPE_ORDINAL; }
    /// False when a predictor is in no dictionary; the tables are made all the same.
    bool Setup() override;
    void Describe(ModelDescription& description) const override;
    void OutlineExplanations(ExplanationOutline& outline) const override;
    std::unique_ptr<BatchScorer> MakeBlockScorer(
        const kernels::BlockKernels& kernels) const override;

    void SetLinkFunction(CumulLinkFunction link) { linkFunction = link; }
    CumulLinkFunction GetLinkFunction() const { return linkFunction; }
    /// The offset as a variable or as a constant. The first of the two setters wins; a later call
    /// does nothing.
    void SetOffsetVar(const ScoreDictVar* var) { offset.SetVariable(var); }
    void SetOffsetValue(double value) { offset.SetValue(value); }
    const ScoreDictVar* GetOffsetVar() const { return offset.variable; }
    double GetOffsetValue() const { return offset.value; }

    /// The cumulative probability for x under a link; system-missing for a system-missing x and for
    /// an unknown link.
    ///
    ///     logit     1 / (1 + exp(-x))         cauchit   atan(x) / pi + 1/2
    ///     cloglog   1 - exp(-exp(x))          loglog    exp(-exp(-x))
    ///     probit    the standard normal distribution function
    ///
    /// Above 709 and at or below -708 the exponentials are taken as their limits.
    static double CInvLinkFunction(CumulLinkFunction link, double x);
    /// The cumulative probability up to category `index`: 0 for -1, 1 for the last of `categories`,
    /// system-missing beyond both.
    double ComputeCumProb(CumulLinkFunction link, int categories, int index, double linearPredictor,
                          const std::vector<double>& boundaries) const;

protected:
    MCScore::MCStatus ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                ScoreResult*& result, bool derivedInRecord) const override;
    void ExplainCase(const CaseState& state, CaseExplanation& explanation) const override;
    void DescribeCoefficients(ModelDescription& description) const override;
    /// What the two families of this model do each its own way; OffsetOfCase is the rest.
    struct Ways {
        const CaseRoad& road;
        /// The linear predictor's sign beside a threshold.
        double sign;
        /// The offset variable is gathered and validated as a predictor is, and has a role.
        bool offsetIsPredictor;
        /// A category is taken when its probability exceeds the best so far by more than this.
        double margin;
    };
    explicit CumulativeLinkModel(const Ways& ways) : ways_(ways) {}

    /// The link's name, as the display writes it.
    const char* LinkName() const;

    /// What the offset variable adds to the linear predictor of a case, whose design values lie in
    /// the state.
    virtual double OffsetOfCase(const CaseWalk& walk, const CaseState& state) const = 0;

    Offset offset;
    size_t offsetIndex = 0;     ///< of the offset variable in predictorVars
    size_t predictorCount = 0;  ///< without the offset variable

private:
    friend class CumulativeLinkBlocks;
    void FinishPlan() override;
    /// Where the covariances have parameter 0, as it were: the location parameters follow the
    /// thresholds, of which there is one less than categories.
    size_t FirstCovarianceRow() const
    {
        return categoryMap.size() < 2 ? 0 : categoryMap.size() - 2;
    }
    /// There are betas that all boundaries share: the row of SharedBetas().
    bool HasLocation() const { return betas.size() > 1 && categoryBetas.size() > 1; }
    const std::vector<double>& SharedBetas() const
    {
        return categoryBetas[categoryBetas.size() - 2];
    }
    void WriteProbabilityErrors(CaseState& state) const;
    double LinearPredictor(CaseWalk& walk, CaseState& state) const;
    /// Fills the case's probabilities and answers the most probable category.
    size_t ComputeCategoryProbs(double linearPredictor, CaseState& state) const;

    const Ways ways_;
    CumulLinkFunction linkFunction = CUM_LOGIT;
    std::vector<double> thresholds;  ///< by category; made by FinishSetup()
};

}  // namespace MCVelscore_850

#endif
