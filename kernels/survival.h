#ifndef VELSCORE_KERNELS_SURVIVAL_H
#define VELSCORE_KERNELS_SURVIVAL_H

#include "kernels/links.h"

namespace MCVelscore_850::kernels {
inline namespace VELSCORE_LANES {

/// exp(lp) H0: the cumulative hazard. An infinite exp times a baseline of 0 is NaN, on purpose.
template <class Lane>
VELSCORE_LANE Lane CumulativeHazard(Lane lp, Lane baseline)
{
    return Exp(lp) * baseline;
}

/// The survival and the cumulative hazard of a case; both are kNone where its baseline is.
template <class Lane>
struct SurvivalAt {
    Lane hazard;
    Lane survival;
};

/// 1 / exp(H): the probability to survive.
template <class Lane>
VELSCORE_LANE Lane Survival(Lane cumulativeHazard)
{
    return 1.0 / Exp(cumulativeHazard);
}

template <class Lane>
VELSCORE_LANE SurvivalAt<Lane> SurvivalOf(Lane lp, Lane baseline)
{
    const Lane hazard = CumulativeHazard(lp, baseline);
    const Mask<Lane> none = baseline == kNone;
    const Lane missing = All<Lane>(kNone);
    return {Select(none, missing, hazard), Select(none, missing, Survival(hazard))};
}

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif
