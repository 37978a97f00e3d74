#ifndef VELSCORE_KERNELS_NORMALIZATION_H
#define VELSCORE_KERNELS_NORMALIZATION_H

#include <cmath>
#include <cstddef>
#include <optional>

#include "kernels/links.h"

namespace MCVelscore_850::kernels {

/// How linear predictors y of C categories become probabilities, other than by softmax.
///
///     Quotients  p[c] = y[c] / sum of y
///     Shares     p[c] = F(y[c]) but for one, the remainder, whose probability is 1 - sum of these
///     Steps      p[c] = F(y[c]) - F(y[c-1]); the last one's 1 - sum of these
///
/// F is the inverse of the link, or y itself without one. The formulas alone decide: probabilities
/// below 0 or above 1 are what they give.
struct Normalization {
    enum Method { Quotients, Shares, Steps };
    Method method = Quotients;
    std::optional<CumulativeLink> link{};
    size_t remainder = 0;  ///< of Shares; the last category in Steps

    double ShareOf(double y) const { return link ? ProbabilityOf(*link, y) : y; }
};

/// Puts the probabilities in the place of the linear predictors, which lie `stride` apart. Answers
/// the category of the largest one, of equal ones the first; -1 when one is no finite number.
inline int Normalize(const Normalization& how, double* y, size_t categories, size_t stride)
{
    double sum = 0.0;
    double before = 0.0;
    const bool quotients = how.method == Normalization::Quotients;
    for (size_t c = 0; c < categories; ++c) {
        double& p = y[c * stride];
        if (!quotients) {
            if (c == how.remainder) continue;
            const double share = how.ShareOf(p);
            p = how.method == Normalization::Steps ? share - before : share;
            before = share;
        }
        sum += p;
    }
    if (!quotients) y[how.remainder * stride] = 1.0 - sum;
    int best = 0;
    for (size_t c = 0; c < categories; ++c) {
        double& p = y[c * stride];
        if (quotients) p /= sum;
        if (!std::isfinite(p)) return -1;
        if (p > y[static_cast<size_t>(best) * stride]) best = static_cast<int>(c);
    }
    return best;
}

}  // namespace MCVelscore_850::kernels

#endif
