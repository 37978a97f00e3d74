#ifndef VELSCORE_KERNELS_STANDARDERROR_H
#define VELSCORE_KERNELS_STANDARDERROR_H

#include "kernels/lane.h"

namespace MCVelscore_850::kernels {
inline namespace VELSCORE_LANES {

/// sqrt(variance); 0 where rounding made it negative, a NaN stays.
template <class Lane>
VELSCORE_LANE Lane RootOfVariance(Lane variance)
{
    const Lane v = Select(variance < 0.0, All<Lane>(0.0), variance);
    return Each(v, [](double each) { return __builtin_sqrt(each); });
}

/// sqrt(d' V d) of a design row d: the sum of (V[i, j] d[i]) d[j] in ascending order, over design
/// values and covariances other than 0. Row i of V begins at covariances + i * stride; design(i)
/// answers d[i].
template <class Lane, class Design>
VELSCORE_LANE Lane StandardErrorOfSum(const double* covariances, size_t stride, size_t count,
                                      Design design)
{
    Lane s = All<Lane>(0.0);
    for (size_t i = 0; i < count; ++i) {
        const Lane di = design(i);
        const Mask<Lane> metI = di != 0.0;
        if (IsDone(metI)) continue;
        const double* const row = covariances + i * stride;
        for (size_t j = 0; j < count; ++j) {
            if (row[j] == 0.0) continue;
            const Lane dj = design(j);
            s = Select(Both(metI, dj != 0.0), s + (row[j] * di) * dj, s);
        }
    }
    return RootOfVariance(s);
}

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif
