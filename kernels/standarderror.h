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
/// answers d[i]; `met` holds in ascending order the parameters whose design value may differ from
/// 0, and of a single case only those where it does.
template <class Lane, class Design>
VELSCORE_LANE Lane StandardErrorOfSum(const double* covariances, size_t stride, const uint32_t* met,
                                      size_t count, Design design)
{
    Lane s = All<Lane>(0.0);
    for (size_t i = 0; i < count; ++i) {
        const Lane di = design(met[i]);
        const Mask<Lane> metI = di != 0.0;
        const double* const row = covariances + met[i] * stride;
        for (size_t j = 0; j < count; ++j) {
            const double covariance = row[met[j]];
            if (covariance == 0.0) continue;
            const Lane dj = design(met[j]);
            const Lane sum = s + (covariance * di) * dj;
            s = kWidth<Lane> == 1 ? sum : Select(Both(metI, dj != 0.0), sum, s);
        }
    }
    return RootOfVariance(s);
}

/// x' V x over the numbers x of a case and a constant of 1, in the order of its terms' additions:
///
///     V[n, n] + sum of (2 V[n, j]) x[j]          where the constant has its row, n
///     + sum over i, then j, of (x[i] V[i, j]) y[j]
///
/// over numbers and covariances other than 0; y[j] is the plain number of x[j], another one of
/// dates alone. x(i) and y(j) answer them.
template <class Lane, class Number, class Plain>
VELSCORE_LANE Lane VarianceOfSlopes(const double* covariances, size_t stride, size_t count,
                                    bool hasConstant, Number x, Plain y)
{
    Lane v = All<Lane>(0.0);
    if (hasConstant) {
        const double* const last = covariances + count * stride;
        v = All<Lane>(last[count]);
        for (size_t j = 0; j < count; ++j) {
            if (last[j] == 0.0) continue;
            const Lane xj = x(j);
            const Mask<Lane> met = xj != 0.0;
            if (IsDone(met)) continue;
            v = Select(met, v + (2.0 * last[j]) * xj, v);
        }
    }
    for (size_t i = 0; i < count; ++i) {
        const Lane xi = x(i);
        const Mask<Lane> metI = xi != 0.0;
        if (IsDone(metI)) continue;
        const double* const row = covariances + i * stride;
        for (size_t j = 0; j < count; ++j) {
            if (row[j] == 0.0) continue;
            const Lane yj = y(j);
            const Mask<Lane> met = Both(metI, yj != 0.0);
            if (IsDone(met)) continue;
            v = Select(met, v + (xi * row[j]) * yj, v);
        }
    }
    return v;
}

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif
