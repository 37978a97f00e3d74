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

template <class Lane>
VELSCORE_LANE Largest<Lane> LargestOf(const Lane* lp, size_t categories)
{
    Largest<Lane> largest{categories > 0 ? lp[0] : All<Lane>(0.0), All<Lane>(0.0)};
    for (size_t c = 1; c < categories; ++c) {
        const Mask<Lane> larger = lp[c] > largest.value;
        largest.value = Select(larger, lp[c], largest.value);
        largest.index = Select(larger, All<Lane>(static_cast<double>(c)), largest.index);
    }
    return largest;
}

/// The numerators of
///
///     p[c] = exp(lp[c]) / (exp(lp[0]) + ... + exp(lp[C-1]))
///
/// into `exponentials`, and their sum as the answer. A `largest` linear predictor above
/// kLargestExponent is subtracted from all first; below -kLargestExponent the numerator is 0.
template <class Lane>
VELSCORE_LANE Lane Exponentials(const Lane* lp, size_t categories, Lane largest,
                                Lane* exponentials)
{
    const Mask<Lane> shifts = largest > kLargestExponent;  // strictly: the limit itself stays
    Lane sum = All<Lane>(0.0);
    for (size_t c = 0; c < categories; ++c) {
        const Lane shifted = Select(shifts, lp[c] - largest, lp[c]);
        exponentials[c] = Select(shifted < -kLargestExponent, All<Lane>(0.0), Exp(shifted));
        sum += exponentials[c];
    }
    return sum;
}

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif
