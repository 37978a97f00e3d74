#ifndef VELSCORE_CLI_MODELTEXT_H
#define VELSCORE_CLI_MODELTEXT_H

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace MCVelscore_850 {

class LoadedModel;

/// What a model is, for people: family, target, predictors, equation, what each result column
/// holds.
std::string ModelText(const LoadedModel& model);

/// The same for programs. Numbers that aren't finite are null.
nlohmann::ordered_json ModelJson(const LoadedModel& model);

}  // namespace MCVelscore_850

#endif
