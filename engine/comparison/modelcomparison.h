#ifndef VELSCORE_ENGINE_COMPARISON_MODELCOMPARISON_H
#define VELSCORE_ENGINE_COMPARISON_MODELCOMPARISON_H

#include <optional>
#include <string>
#include <vector>

namespace MCVelscore_850 {

class LoadedModel;

/// One thing in which two models differ.
struct ModelDifference {
    std::string subject;  ///< "model", "field", "term", "base point", "contrast", "baseline" ..
    std::string name;     ///< which of them
    std::optional<std::string> first;  ///< as the first model has it; nothing where it has none
    std::optional<std::string> second;
    /// How far the numbers are apart, where both are numbers.
    std::optional<double> size{};
};

/// What two models differ in, the first one's things in its order, then what the second has more.
///
/// Compared  models as they are read, not the texts of their documents: family, target, link and
///           what else decides scores; the fields that are read, with what the mining schema says
///           of them; terms by what they are made of, whatever their parameters are called;
///           contrasts, baselines, covariances. Numbers are the same where they are equal doubles.
/// Memory    the covariances and baselines of both.
std::vector<ModelDifference> CompareModels(const LoadedModel& first, const LoadedModel& second);

}  // namespace MCVelscore_850

#endif
