#ifndef VELSCORE_KERNELS_BASELINE_H
#define VELSCORE_KERNELS_BASELINE_H

#include "kernels/lane.h"

namespace MCVelscore_850::kernels {

/// The baseline of one stratum: cumulative hazards at ascending times, borrowed.
struct Baseline {
    const double* times;
    const double* hazards;
    size_t count;
    double minTime;  ///< before it the hazard is 0
    double maxTime;  ///< after it there is none; NaN: never
};

inline namespace VELSCORE_LANES {

/// The hazard of a baseline at t of whose times `after` aren't later: kNone where there is none.
VELSCORE_LANE double HazardAfter(const Baseline& baseline, size_t after, double t, double none)
{
    if (baseline.minTime > t) return 0.0;
    // A maximum or a time that is no number gives no hazard either.
    if (!(baseline.maxTime >= t) || after == 0) return none;
    const double hazard = baseline.hazards[after - 1];
    // A cell of the very time that holds the missing number lets the one before it stand.
    const bool gives = hazard == none && baseline.times[after - 1] == t && after > 1;
    return gives ? baseline.hazards[after - 2] : hazard;
}

/// How many times of a baseline aren't later than t; of no meaning for a t that is no number.
VELSCORE_LANE size_t CountTimesUpTo(const Baseline& baseline, double t)
{
    if (baseline.count == 0) return 0;
    const double* from = baseline.times;
    for (size_t left = baseline.count; left > 1;) {
        const size_t half = left / 2;
        from += half & -static_cast<size_t>(from[half - 1] <= t);  // no branch to foresee
        left -= half;
    }
    return static_cast<size_t>(from - baseline.times) + (from[0] <= t ? 1 : 0);
}

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif
