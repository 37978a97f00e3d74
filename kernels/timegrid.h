#ifndef VELSCORE_KERNELS_TIMEGRID_H
#define VELSCORE_KERNELS_TIMEGRID_H

#include <vector>

#include "kernels/baseline.h"

namespace MCVelscore_850::kernels {

/// The grid of `count` ascending times, whose counts go to `counts`. One cell has all of them where
/// they are few, or not finite.
TimeGrid MakeTimeGrid(const double* times, size_t count, std::vector<double>& counts);

}  // namespace MCVelscore_850::kernels

#endif
