#ifndef VELSCORE_KERNELS_SURVIVAL_H
#define VELSCORE_KERNELS_SURVIVAL_H

#include "kernels/exp.h"

namespace MCVelscore_850::kernels {
inline namespace VELSCORE_LANES {

/// exp(lp) H0: the cumulative hazard. An infinite exp times a baseline of 0 is NaN, on purpose.
template <class Lane>
VELSCORE_LANE Lane CumulativeHazard(Lane lp, Lane baseline)
{
    return Exp(lp) * baseline;
}

/// 1 / exp(H): the probability to survive.
template <class Lane>
VELSCORE_LANE Lane Survival(Lane cumulativeHazard)
{
    return 1.0 / Exp(cumulativeHazard);
}

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif
