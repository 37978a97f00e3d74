#ifndef VELSCORE_MODELS_SOFTMAX_H
#define VELSCORE_MODELS_SOFTMAX_H

#include <span>

namespace MCVelscore_850 {

/// The natural logarithm of the largest double: exp overflows above it.
inline constexpr double kLargestExponent = 709.782712893384;

/// The index of the largest entry; of equal ones the lowest. A NaN is larger than nothing.
size_t IndexOfLargest(std::span<const double> linearPredictors);

/// The numerators of
///
///     p[c] = exp(lp[c]) / (exp(lp[0]) + ... + exp(lp[C-1]))
///
/// into `exponentials`, and their sum as the answer. A `largest` linear predictor above
/// kLargestExponent is subtracted from all first; below -kLargestExponent the numerator is 0.
/// `exponentials` has as many entries as `linearPredictors`, which may change.
double Exponentials(std::span<double> linearPredictors, double largest,
                    std::span<double> exponentials);

}  // namespace MCVelscore_850

#endif
