#ifndef VELSCORE_KERNELS_BASELINE_H
#define VELSCORE_KERNELS_BASELINE_H

#include "kernels/lane.h"

namespace MCVelscore_850::kernels {

/// Equal cells over the span of ascending times, so that few of them are left to look among. A time
/// lies in cell (t - origin) * scale, rounded, from 0 to `last`. Each of these steps keeps the
/// order of what it is given: no time of an earlier cell is later than t, and each of a later one
/// is. What it points to is borrowed.
struct TimeGrid {
    const double* counts;  ///< by cell, how many times lie in cells before it; one more at the end
    double origin;
    double scale;
    double last;  ///< 0: one cell for all
    size_t most;  ///< the times of one cell at most
};

/// The baseline of one stratum: cumulative hazards at ascending times, borrowed.
struct Baseline {
    const double* times;
    const double* hazards;
    size_t count;
    double minTime;  ///< before it the hazard is 0
    double maxTime;  ///< after it there is none; NaN: never
    TimeGrid grid;
};

/// A number below 2^52 added to it is rounded to a whole one, which the lowest bits then hold.
inline constexpr double kRounding = 0x1p52;

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

/// The whole number that was added to kRounding.
VELSCORE_LANE int64_t WholeOf(double sum)
{
    return __builtin_bit_cast(int64_t, sum) - __builtin_bit_cast(int64_t, kRounding);
}
VELSCORE_LANE VectorMask WholeOf(VectorLane sum)
{
    return __builtin_bit_cast(VectorMask, sum) - __builtin_bit_cast(int64_t, kRounding);
}

/// The cell of t in a grid; that of a t that is no number is the first.
template <class Lane>
VELSCORE_LANE auto CellOf(Lane t, Lane origin, Lane scale, Lane last)
{
    Lane place = (t - origin) * scale;
    place = Select(place > 0.0, place, All<Lane>(0.0));
    place = Select(place < last, place, last);
    return WholeOf(place + kRounding);
}

/// How many times of a baseline aren't later than t; of no meaning for a t that is no number.
VELSCORE_LANE size_t CountTimesUpTo(const Baseline& baseline, double t)
{
    if (baseline.count == 0) return 0;
    const TimeGrid& grid = baseline.grid;
    const double* from = baseline.times;
    size_t left = baseline.count;
    if (grid.last > 0.0) {
        const double* const counts = grid.counts + CellOf(t, grid.origin, grid.scale, grid.last);
        from += static_cast<size_t>(counts[0]);
        left = static_cast<size_t>(counts[1] - counts[0]);
    }
    while (left > 1) {
        const size_t half = left / 2;
        from += half & -static_cast<size_t>(from[half - 1] <= t);  // no branch to foresee
        left -= half;
    }
    // Of an empty cell that is a later one's first time: none that t may come to lies behind the
    // last time's.
    return static_cast<size_t>(from - baseline.times) + (from[0] <= t ? 1 : 0);
}

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif
