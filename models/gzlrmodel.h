#ifndef VELSCORE_MODELS_GZLRMODEL_H
#define VELSCORE_MODELS_GZLRMODEL_H

#include <string>
#include <utility>

#include "models/offset.h"
#include "models/regressionmodel.h"

namespace MCVelscore_850 {

class CaseWalk;
class LRResult;
struct GZLRLink;

/// The generalized linear model: a linear predictor and a link.
///
///     eta  = sum of b[p] d[p] + offset          d: see CaseWalk::DesignValue
///     mean = n g(eta)                           g the inverse link; n the trials of a binomial
///                                               distribution, else 1
///     se   = sqrt(d' V d)                       standard error of eta
///     n g(eta - z se), n g(eta + z se)          confidence limits of the mean, with z the
///                                               NormalLimitQuantile
///
/// A target with two categories is classified: the mean is the probability of the event, which is
/// predicted where the mean is 0.5 or more.
///
/// Shapes  P parameters; one row of betas for a numeric target, else one per category, of which
///         the event's is read; V is P x P and may be absent: se is then 0.
/// Units   prediction and limits in the unit of the target (with trials: events); the error in the
///         unit of eta.
/// Domain  an eta without a mean under the link gives the system-missing number. The exponentials
///         are guarded: eta below -708 or above 709 takes the limit or has no mean.
/// Errors  GetScore answers 90029 for a null record, a bad value, and trials that are not a number
///         or no int; 90028 for a two-category target without a mean (or without the category to
///         choose). A numeric target without a mean has a system-missing prediction, status OK.
/// Order   setters; Setup() before the tables are filled; UpdateResAndRefCat(); FinishSetup()
///         before the first GetScore(), which settles the row of betas for good.
class GZLRModel final : public RegressionModel {
public:
    enum LinkFunction {
        LINK_IDENTITY,
        LINK_CLOGLOG,
        LINK_LOG,
        LINK_LOGC,
        LINK_LOGIT,
        LINK_NEGBIN,
        LINK_NLOGLOG,
        LINK_ODDSPOWER,
        LINK_POWER,
        LINK_PROBIT
    };
    /// Only DIST_BINOMIAL changes a score; the others are for people.
    enum DistType {
        DIST_NORMAL,
        DIST_BINOMIAL,
        DIST_GAMMA,
        DIST_IGAUSS,
        DIST_NEGBIN,
        DIST_POISSON,
        DIST_TWEEDIE
    };

    GZLRModel();
    ~GZLRModel() override;

    int GetModelType() const override { return TYPE_GZLR; }
    void Display(std::ostream& out) const override;
    /// False when the target has more than two categories, and no table is made; false too when a
    /// predictor is in no dictionary, the tables being made all the same.
    bool Setup() override;
    void Describe(ModelDescription& description) const override;
    void OutlineExplanations(ExplanationOutline& outline) const override;
    std::unique_ptr<BatchScorer> MakeBlockScorer(
        const kernels::BlockKernels& kernels) const override;

    /// Of trials, and of offset, the first setter that is called wins. Trials of 0 or less are
    /// dropped.
    void SetTrialsVar(const ScoreDictVar* var);
    void SetTrialsValue(int value);
    const ScoreDictVar* GetTrialsVar() const { return trialsVar; }
    int GetTrialsValue() const { return trialsValue; }
    void SetOffsetVar(const ScoreDictVar* var) { offset.SetVariable(var); }
    void SetOffsetValue(double value) { offset.SetValue(value); }
    const ScoreDictVar* GetOffsetVar() const { return offset.variable; }
    double GetOffsetValue() const { return offset.value; }

    void SetLinkFunction(LinkFunction link) { linkFunction = link; }
    LinkFunction GetLinkFunction() const { return linkFunction; }
    /// k of the links negative binomial, odds power and power.
    void SetLinkParameter(double parameter) { linkParameter = parameter; }
    double GetLinkParameter() const { return linkParameter; }
    void SetDistType(DistType type) { distType = type; }
    DistType GetDistType() const { return distType; }

    /// The mean of one trial for a linear predictor; the system-missing number where there is none,
    /// and for a link that isn't one.
    double GetInverseValue(double eta) const;
    /// GetInverseValue, for a binomial distribution times the trials: `trials` with a trials
    /// variable, else the trials value.
    double GetMeanPred(double eta, int trials) const;
    /// The lower and upper confidence limits of the mean: g at eta -+ z se, times the trials.
    /// System-missing limits are multiplied too, and only the power link with a negative power
    /// swaps the two: under another link a falling mean leaves the lower above the upper. Both are
    /// system-missing when `se` or z is.
    std::pair<double, double> GetCIMeanPred(double eta, double se, int trials) const;
    /// Makes the category of that text the event and the other one the other. An empty text, or a
    /// target without categories, changes nothing.
    void UpdateResAndRefCat(std::string refCategory);  // by value: the interface's own form

    const std::string& GetDummyCategory() const { return dummyCategory; }

private:
    friend class GZLRBlocks;
    MCScore::MCStatus ScoreCase(CaseState& state, const ScoreCaseRecord* record,
                                ScoreResult*& result, bool derivedInRecord) const override;
    void ExplainCase(const CaseState& state, CaseExplanation& explanation) const override;
    void DescribeCoefficients(ModelDescription& description) const override;
    enum Kind { NONE, VARIABLE, VALUE };

    void NameCategories();
    /// The row of betas of the event.
    int RowOfEvent() const;
    /// A mean of it is the event still.
    static constexpr double kEventBoundary = 0.5;
    double LimitQuantile() const override;
    /// GetCIMeanPred with z of the caller's.
    std::pair<double, double> LimitsOfMean(double eta, double se, double z, int trials) const;
    static bool TrialsOf(double number, int& trials);
    /// The case's trials; false for a number that is none or beyond an int.
    bool ReadTrials(const CaseState& state, int& trials) const;
    /// `mean` times the trials of a binomial distribution.
    double TimesTrials(double mean, int trials) const;
    void WriteLimits(LRResult& answer, double eta, int trials, CaseState& state) const;
    void WriteCategory(CaseWalk& walk, double mean, bool categoryOnly) const;
    std::string DescribeTrials() const;
    std::string DescribeMean(const GZLRLink& link) const;
    void DescribeClasses(ModelDescription& description) const;

    std::string dummyCategory;  ///< the one row of the beta table of a numeric target
    size_t predictorCount = 0;  ///< predictors without the offset and trials variables
    Kind trialsKind = NONE;
    const ScoreDictVar* trialsVar = nullptr;  ///< the last of predictorVars, when there is one
    int trialsValue = -1;
    Offset offset;  ///< its variable stands at predictorCount in predictorVars
    LinkFunction linkFunction = LINK_IDENTITY;
    double linkParameter = 0.0;
    DistType distType = DIST_NORMAL;
    bool binaryTarget = false;
    const ScoreValue* eventCategory = nullptr;  ///< the target's
    const ScoreValue* otherCategory = nullptr;  ///< the target's
    std::string eventName;
    std::string otherName;
};

}  // namespace MCVelscore_850

#endif
