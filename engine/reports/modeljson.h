#ifndef VELSCORE_ENGINE_REPORTS_MODELJSON_H
#define VELSCORE_ENGINE_REPORTS_MODELJSON_H

#include <string>

namespace MCVelscore_850 {

class LoadedModel;

/// What a model is, for programs: family, target, predictors, equations, what each result column
/// holds, what was adapted and noticed in its document. Numbers that aren't finite are null.
std::string ModelJson(const LoadedModel& model);

}  // namespace MCVelscore_850

#endif
