#include "engine/scoring/explanationlines.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace MCVelscore_850 {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

// What is no number is larger than all that are.
bool IsLarger(double a, double b)
{
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && !std::isnan(b);
    return std::fabs(a) > std::fabs(b);
}

}  // namespace

void ExplanationBaseline::Add(const CaseExplanation& explanation)
{
    ++cases;
    for (const CaseExplanation::Sum& sum : explanation.Sums()) {
        if (sum.equation >= sums.size()) {
            sums.resize(sum.equation + 1);
            counts_.resize(sum.equation + 1);
        }
        CaseExplanation::Sum& total = sums[sum.equation];
        total.equation = sum.equation;
        if (counts_[sum.equation]++ == 0) {
            total = sum;
            continue;
        }
        total.linearPredictor += sum.linearPredictor;
        for (size_t i = 0; i < sum.addends.size(); ++i) {
            total.addends[i].value += sum.addends[i].value;
            total.addends[i].contribution += sum.addends[i].contribution;
        }
    }
}

void ExplanationBaseline::Finish()
{
    for (size_t i = 0; i < sums.size(); ++i) {
        if (counts_[i] < 2) continue;
        const auto count = static_cast<double>(counts_[i]);
        sums[i].linearPredictor /= count;
        for (CaseExplanation::Addend& addend : sums[i].addends) {
            addend.value /= count;
            addend.contribution /= count;
        }
    }
}

ExplanationLines::ExplanationLines(const ExplanationOutline& outline, ExplanationOptions options)
    : outline_(outline), options_(std::move(options))
{}

size_t ExplanationLines::MostLines(const ExplanationOutline& outline,
                                   const ExplanationOptions& options)
{
    size_t most = 0;
    for (const ExplanationOutline::Equation& equation : outline.equations) {
        const size_t terms = equation.terms.size();
        most += options.top ? std::min(terms, *options.top + 1) : terms;
    }
    return most;
}

const CaseExplanation::Sum* ExplanationLines::BaselineOf(const CaseExplanation::Sum& sum) const
{
    const auto& sums = options_.baseline->sums;
    const bool has =
        sum.equation < sums.size() && sums[sum.equation].addends.size() == sum.addends.size();
    return has ? &sums[sum.equation] : nullptr;
}

double ExplanationLines::LinearPredictor(const CaseExplanation::Sum& sum) const
{
    if (options_.baseline == nullptr) return sum.linearPredictor;
    const CaseExplanation::Sum* baseline = BaselineOf(sum);
    return baseline == nullptr ? kNone : sum.linearPredictor - baseline->linearPredictor;
}

std::span<const ExplanationLine> ExplanationLines::Of(const CaseExplanation::Sum& sum)
{
    const auto& terms = outline_.equations[sum.equation].terms;
    lines_.clear();
    for (size_t i = 0; i < terms.size(); ++i) {
        const auto& [value, contribution] = sum.addends[i];
        lines_.push_back({terms[i].name, &terms[i], value, contribution});
    }
    if (options_.baseline != nullptr) {
        const CaseExplanation::Sum* baseline = BaselineOf(sum);
        for (size_t i = 0; i < lines_.size(); ++i) {
            lines_[i].contribution =
                baseline == nullptr ? kNone
                                    : lines_[i].contribution - baseline->addends[i].contribution;
        }
    }
    if (options_.top && *options_.top < lines_.size()) KeepTop(LinearPredictor(sum));
    return lines_;
}

void ExplanationLines::KeepTop(double linearPredictor)
{
    std::stable_sort(lines_.begin(), lines_.end(), [](const auto& one, const auto& other) {
        return IsLarger(one.contribution, other.contribution);
    });
    lines_.resize(*options_.top);
    double sum = 0.0;
    for (const ExplanationLine& line : lines_) sum += line.contribution;
    lines_.push_back({kOtherTerms, nullptr, kNone, linearPredictor - sum});
}

}  // namespace MCVelscore_850
