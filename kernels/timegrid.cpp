#include "kernels/timegrid.h"

#include <algorithm>
#include <cmath>

namespace MCVelscore_850::kernels {

TimeGrid MakeTimeGrid(const double* times, size_t count, std::vector<double>& counts)
{
    constexpr size_t kFew = 16;  // which a bisection finds as fast
    constexpr size_t kTimesOfCell = 4;
    TimeGrid grid{nullptr, 0.0, 0.0, 0.0, count};
    size_t cells = 1;
    if (count > kFew && std::isfinite(times[0]) && std::isfinite(times[count - 1])) {
        cells = count / kTimesOfCell;
        const auto last = static_cast<double>(cells - 1);
        // A span too large or too small for it gives a scale of 0 or infinity: all in the first
        // cell, or all but one time in the last.
        grid = {nullptr, times[0], last / (times[count - 1] - times[0]), last, 0};
    }
    counts.assign(cells + 1, 0.0);
    for (size_t i = 0; i < count; ++i) {
        const auto cell = static_cast<size_t>(CellOf(times[i], grid.origin, grid.scale, grid.last));
        counts[cell + 1] += 1.0;
    }
    for (size_t cell = 1; cell <= cells; ++cell) {
        grid.most = std::max(grid.most, static_cast<size_t>(counts[cell]));
        counts[cell] += counts[cell - 1];
    }
    grid.counts = counts.data();
    return grid;
}

}  // namespace MCVelscore_850::kernels
