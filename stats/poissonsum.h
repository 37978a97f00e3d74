#ifndef VELSCORE_STATS_POISSONSUM_H
#define VELSCORE_STATS_POISSONSUM_H

// What the Poisson mixtures of the non-central distributions share. Nothing here is exported.

#include <algorithm>
#include <cmath>

namespace MCMath_850 {

inline constexpr int kMostRounds = 60000;       // of every sum over the mixture and every search
inline constexpr double kSumTolerance = 1e-12;  // of the sums without a tolerance of their own

// Where a sum over Poisson weights of mean c starts: far enough below the mean that what is left
// out does not count (Frick 1990, Algorithm AS R84, Applied Statistics 39, 311-315). NaN gives 0.
inline double FirstTerm(double c)
{
    return std::floor(std::max(0.0, c - 7.0344838253011 * std::sqrt(c)));
}

// A probability that rounding has pushed out of its range. A NaN stays one.
inline double ClampProbability(double p)
{
    if (p < 0.0) return 0.0;
    return p > 1.0 ? 1.0 : p;
}

}  // namespace MCMath_850

#endif
