#ifndef VELSCORE_KERNELS_ORDINAL_H
#define VELSCORE_KERNELS_ORDINAL_H

#include "kernels/links.h"

namespace MCVelscore_850::kernels {
inline namespace VELSCORE_LANES {

/// What the categories of an ordinal scale, lowest first, leave to the next one.
template <class Lane>
struct OrdinalScale {
    Lane cumulative;  ///< up to the category before
    Lane best;        ///< the largest probability so far
    Lane predicted;   ///< its category, a whole number
};

/// The probability of category c from the cumulative one up to it,
///
///     p[c] = F[c] - F[c-1]
///
/// A boundary without an F, or whose F falls short of the one before, counts as none: its category
/// has probability 0. A category is taken when its probability exceeds the best so far by more than
/// `margin`.
template <class Lane>
VELSCORE_LANE Lane NextCategory(OrdinalScale<Lane>& scale, size_t c, Lane cumulative, double margin)
{
    const Mask<Lane> counts = Both(cumulative != kNone, Not(scale.cumulative > cumulative));
    const Lane p = Select(counts, cumulative - scale.cumulative, All<Lane>(0.0));
    scale.cumulative = Select(counts, cumulative, scale.cumulative);
    const Mask<Lane> taken = c == 0 ? Always<Lane>() : (p - scale.best > margin);
    scale.best = Select(taken, p, scale.best);
    scale.predicted = Select(taken, All<Lane>(static_cast<double>(c)), scale.predicted);
    return p;
}

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif
