#ifndef VELSCORE_KERNELS_SOFTMAX_H
#define VELSCORE_KERNELS_SOFTMAX_H

#include "kernels/exp.h"

namespace MCVelscore_850::kernels {

/// The natural logarithm of the largest double: exp overflows above it.
inline constexpr double kLargestExponent = 709.782712893384;

inline namespace VELSCORE_LANES {

/// The largest of the linear predictors and its index, a whole number; of equal ones the lowest. A
/// NaN is larger than nothing.
template <class Lane>
struct Largest {
    Lane value;
    Lane index;
};

/// The larger of the two, the later linear predictor c being `lp`.
template <class Lane>
VELSCORE_LANE Largest<Lane> LargerOf(Largest<Lane> largest, Lane lp, size_t c)
{
    const Mask<Lane> larger = lp > largest.value;
    return {Select(larger, lp, largest.value),
            Select(larger, All<Lane>(static_cast<double>(c)), largest.index)};
}

/// Of the linear predictors of one case.
VELSCORE_LANE Largest<double> LargestOf(const double* lp, size_t categories)
{
    Largest<double> largest{categories > 0 ? lp[0] : 0.0, 0.0};
    for (size_t c = 1; c < categories; ++c) largest = LargerOf(largest, lp[c], c);
    return largest;
}

/// The numerator of
///
///     p[c] = exp(lp[c]) / (exp(lp[0]) + ... + exp(lp[C-1]))
///
/// A `largest` linear predictor above kLargestExponent is subtracted from all first; below
/// -kLargestExponent the numerator is 0.
template <class Lane>
VELSCORE_LANE Lane ExponentialOf(Lane lp, Lane largest)
{
    // Strictly: the limit itself stays.
    const Lane shifted = Select(largest > kLargestExponent, lp - largest, lp);
    return Select(shifted < -kLargestExponent, All<Lane>(0.0), Exp(shifted));
}

/// The numerators of one case into `exponentials`, and their sum as the answer.
VELSCORE_LANE double Exponentials(const double* lp, size_t categories, double largest,
                                  double* exponentials)
{
    double sum = 0.0;
    for (size_t c = 0; c < categories; ++c) {
        exponentials[c] = ExponentialOf(lp[c], largest);
        sum += exponentials[c];
    }
    return sum;
}

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif
