#ifndef VELSCORE_ENGINE_COMPARISON_COMPARISONJSON_H
#define VELSCORE_ENGINE_COMPARISON_COMPARISONJSON_H

#include <optional>
#include <string>
#include <vector>

#include "engine/comparison/modelcomparison.h"
#include "engine/comparison/scorecomparison.h"

namespace MCVelscore_850 {

/// A comparison for programs. Numbers that aren't finite are null.
std::string ComparisonJson(const LoadedModel& first, const LoadedModel& second,
                           const std::vector<ModelDifference>& differences,
                           const std::optional<ScoreComparison>& scores);

}  // namespace MCVelscore_850

#endif
