#ifndef VELSCORE_HOST_MODEL_MODELDESCRIPTION_H
#define VELSCORE_HOST_MODEL_MODELDESCRIPTION_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace MCVelscore_850 {

/// What a loaded model tells of itself beyond its scores: plain data, filled by
/// ScoreModel::Describe.
struct ModelDescription {
    /// One predictor in one term of an equation.
    struct Factor {
        std::string predictor;
        /// A factor's category; empty for a covariate.
        std::string category;
        bool isCategory = false;
        /// A covariate's exponent, as the document gives it.
        double exponent = 1.0;
    };
    /// One parameter: beta times the product of its factors; an intercept has none.
    struct Term {
        std::string parameter;
        std::string label;
        double beta = 0.0;
        std::vector<Factor> factors;
        /// What is taken off the product of the factors before beta multiplies it: the base point
        /// of a model that is centred.
        std::optional<double> referencePoint{};
    };
    /// One linear predictor: the sum of its terms. Models with one equation name no category.
    struct Equation {
        std::string category;
        /// It gives the probability of the category and of all before it.
        bool isCumulative = false;
        std::vector<Term> terms;
    };
    /// One estimate of the document, as it gives it.
    struct Coefficient {
        std::string category;  ///< of the equation; empty where the model has one alone
        std::string parameter;
        std::string label;
        double estimate = 0.0;
        /// From the covariances; NaN where the document has none, and of a parameter that it has
        /// without an estimate.
        double standardError = 0.0;
        bool isConstant = false;  ///< an intercept or a threshold
    };
    struct Contrast {
        std::string predictor;
        std::vector<std::string> categories;
        std::vector<std::vector<double>> rows;
    };
    /// The baseline of one stratum. A time that the document doesn't have is NaN.
    struct Stratum {
        std::string value;
        size_t cells = 0;
        double minTime = 0.0;
        double maxTime = 0.0;
    };
    /// What a result column holds, in words: "prediction" - "mean of the target".
    struct Quantity {
        std::string column;
        std::string meaning;
        /// The document has no covariances to compute it from. Results hold a number all the same,
        /// and it means nothing.
        bool lacksCovariances = false;
    };

    std::string family;     ///< in the field's words: "linear regression"
    std::string className;  ///< "LRModel"
    int resultType = 0;     ///< what its results answer to ScoreResult::GetScoreResultType()
    /// False for a model that ignores ScoreModel::MV_STATUS_ONLY.
    bool takesStatusOnly = true;
    std::string target;  ///< empty for a model without one
    std::vector<std::string> targetCategories;
    std::string referenceCategory;
    bool hasCutoff = false;
    double cutoff = 0.0;
    std::string cutoffCategory;  ///< that the cut-off is for
    std::string link;
    bool hasLinkParameter = false;
    double linkParameter = 0.0;
    std::string distribution;
    std::string mean;    ///< the mean's equation in the linear predictor, where a link is between
    std::string offset;  ///< the variable's name or the number
    std::string trials;  ///< the variable's name or the number
    double degreesOfFreedom = 0.0;
    bool hasCovariances = false;
    /// ScoringState::linearPredictorError can be asked for, where there is one equation.
    bool hasLinearPredictorError = false;
    /// ScoringState::probabilityErrors can be asked for.
    bool hasProbabilityErrors = false;
    /// ci_lower and ci_upper are limits of ScoreModel::GetConfidenceLevel().
    bool hasConfidenceLevel = false;
    std::vector<std::string> factors;     ///< names, in the order of the predictors
    std::vector<std::string> covariates;  ///< names, in the order of the predictors
    std::vector<Equation> equations;
    std::vector<Coefficient> coefficients;
    /// Estimates are judged by Student's t with the degrees of freedom, else by the normal
    /// distribution.
    bool hasStudentEstimates = false;
    std::vector<Contrast> contrasts;
    std::string stratumVariable;
    std::string endTimeVariable;
    std::vector<Stratum> strata;           ///< one without value where the model isn't stratified
    std::vector<std::string> eventValues;  ///< of the status variable, where the document has them
    std::vector<Quantity> quantities;
    /// The offset variable where GetScore takes whatever it holds: it is for the host to refuse a
    /// case whose offset is missing or not valid. Empty where the model looks itself.
    std::string uncheckedOffset;

    /// True for a column whose number the document can't give.
    bool Lacks(std::string_view column) const
    {
        for (const Quantity& quantity : quantities) {
            if (quantity.column == column) return quantity.lacksCovariances;
        }
        return false;
    }

    /// Every variable that a case is read for, derived ones among them: predictors in their order,
    /// then offset, trials, times and strata. A status names a predictor by its position here, so
    /// one that is the offset too stands twice.
    std::vector<std::string> variables;
};

}  // namespace MCVelscore_850

#endif
