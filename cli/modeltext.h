#ifndef VELSCORE_CLI_MODELTEXT_H
#define VELSCORE_CLI_MODELTEXT_H

#include <string>

namespace MCVelscore_850 {

class LoadedModel;
struct CoefficientTable;

/// What a model is, for people: family, target, predictors, equation, what each result column
/// holds.
std::string ModelText(const LoadedModel& model);

/// The estimates of a model as an aligned table; numbers have six significant digits.
std::string CoefficientsText(const CoefficientTable& table);

}  // namespace MCVelscore_850

#endif
