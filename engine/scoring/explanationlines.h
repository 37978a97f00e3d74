#ifndef VELSCORE_ENGINE_SCORING_EXPLANATIONLINES_H
#define VELSCORE_ENGINE_SCORING_EXPLANATIONLINES_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "host/model/caseexplanation.h"

namespace MCVelscore_850 {

/// What cases are compared with: a case, or the mean of several.
struct ExplanationBaseline {
    /// By equation of the outline; without addends where no case has that equation.
    std::vector<CaseExplanation::Sum> sums;
    int64_t cases = 0;  ///< that it is the mean of

    /// Adds a case up; Finish() makes means of the sums.
    void Add(const CaseExplanation& explanation);
    void Finish();

private:
    std::vector<int64_t> counts_;  ///< by equation
};

/// What is listed of an explanation.
struct ExplanationOptions {
    /// So many of an equation's terms, those of the largest contributions; the others are one line.
    std::optional<size_t> top{};
    /// Contributions and linear predictors are differences from it; null for none.
    std::shared_ptr<const ExplanationBaseline> baseline{};
};

/// One line of an equation.
struct ExplanationLine {
    std::string_view term;
    const ExplanationOutline::Term* outlined;  ///< null for the line of the other terms
    double value;                              ///< NaN where there is none
    double contribution;
};

/// The lines of one linear predictor.
///
/// All      the terms in the order in which they are added. Their contributions, added up in that
///          order, are the linear predictor to the last bit, the sign of a zero apart.
/// Top      the largest contributions first, by size; of equal ones those that are added first.
///          Then one line for the others, which holds what the linear predictor is beyond those:
///          the lines add up to it but for one rounding.
/// Baseline each contribution less the baseline's, NaN for an equation that it doesn't have.
/// Threads  one; the outline outlives it.
class ExplanationLines {
public:
    static constexpr std::string_view kOtherTerms = "other terms";

    ExplanationLines(const ExplanationOutline& outline, ExplanationOptions options);

    /// They stand until the next call.
    std::span<const ExplanationLine> Of(const CaseExplanation::Sum& sum);
    /// The linear predictor that the lines add up to.
    double LinearPredictor(const CaseExplanation::Sum& sum) const;
    const ExplanationOutline& Outline() const { return outline_; }
    /// The most lines that a case may have.
    static size_t MostLines(const ExplanationOutline& outline, const ExplanationOptions& options);

private:
    const CaseExplanation::Sum* BaselineOf(const CaseExplanation::Sum& sum) const;
    void KeepTop(double linearPredictor);

    const ExplanationOutline& outline_;
    ExplanationOptions options_;
    std::vector<ExplanationLine> lines_;
};

}  // namespace MCVelscore_850

#endif
