#ifndef VELSCORE_CLI_MODELTEXT_H
#define VELSCORE_CLI_MODELTEXT_H

#include <string>

namespace MCVelscore_850 {

class LoadedModel;

/// What a model is, for people: family, target, predictors, equation, what each result column
/// holds.
std::string ModelText(const LoadedModel& model);

}  // namespace MCVelscore_850

#endif
