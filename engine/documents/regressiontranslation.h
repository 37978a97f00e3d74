#ifndef VELSCORE_ENGINE_DOCUMENTS_REGRESSIONTRANSLATION_H
#define VELSCORE_ENGINE_DOCUMENTS_REGRESSIONTRANSLATION_H

#include <optional>

#include "engine/documents/adapterrules.h"

namespace MCVelscore_850 {

/// A RegressionModel becomes the GeneralRegressionModel that computes the same. Its tables, one a
/// category or one alone, give
///
///     y[j] = intercept[j] + sum of coefficient * product of powers and categories
///
/// and normalizationMethod makes the prediction or the probabilities of them. What the standard
/// says decides: of a missing category its indicators are 0, a missing number gives no score. What
/// is outside of the model's own element stays as it is, but that the target gets the categories
/// of the tables where it lists none, and fields with a list or with intervals refuse other values,
/// as the standard has it where nothing is said.
///
/// Errors  VSException with the place: kUnknownNormalization to kTargetFieldsDiffer, kAbsent.
std::optional<Change> TranslateRegressionModel(Element root);

}  // namespace MCVelscore_850

#endif
