#ifndef VELSCORE_KERNELS_EXP_H
#define VELSCORE_KERNELS_EXP_H

#include "kernels/exptable.h"
#include "kernels/lane.h"

#if defined(__FMA__)
#include <immintrin.h>
#endif

namespace MCVelscore_850::kernels {
inline namespace VELSCORE_LANES {

VELSCORE_LANE double Exp(double x) { return __builtin_exp(x); }

// The C library's own exp, redone for a vector to the last bit: the table-driven method of Tang
// (1989), "Table-driven implementation of the exponential function in IEEE floating-point
// arithmetic", ACM TOMS 15, 144-157, with 128 entries and a polynomial of degree 5,
//
//     x = k ln2 / 128 + r,  exp(x) = 2^(k/128) + 2^(k/128) (exp(r) - 1)
//
// in the library's order of operations, fused where its build for processors with FMA fuses them.
// The polynomial is the one published with Arm Optimized Routines (exp_data.c, N = 128), on which
// the library rests. Numbers from 512 on in absolute value and NaN go to the library. Whether both
// agree on this machine is looked at once (InstructionSet); without FMA the library does it all.
#if defined(__FMA__)

namespace expsteps {

#if VELSCORE_LANE_BYTES == 64
VELSCORE_LANE VectorLane FusedMultiplyAdd(VectorLane a, VectorLane b, VectorLane c)
{
    return reinterpret_cast<VectorLane>(_mm512_fmadd_pd(
        reinterpret_cast<__m512d>(a), reinterpret_cast<__m512d>(b), reinterpret_cast<__m512d>(c)));
}
VELSCORE_LANE VectorMask Gather(const uint64_t* table, VectorMask index)
{
    return reinterpret_cast<VectorMask>(_mm512_mask_i64gather_epi64(
        _mm512_setzero_si512(), 0xff, reinterpret_cast<__m512i>(index), table, 8));
}
VELSCORE_LANE bool Any(VectorMask mask)
{
    return _mm512_movepi64_mask(reinterpret_cast<__m512i>(mask)) != 0;
}
#else
VELSCORE_LANE VectorLane FusedMultiplyAdd(VectorLane a, VectorLane b, VectorLane c)
{
    return reinterpret_cast<VectorLane>(_mm256_fmadd_pd(
        reinterpret_cast<__m256d>(a), reinterpret_cast<__m256d>(b), reinterpret_cast<__m256d>(c)));
}
VELSCORE_LANE VectorMask Gather(const uint64_t* table, VectorMask index)
{
    return reinterpret_cast<VectorMask>(_mm256_i64gather_epi64(
        reinterpret_cast<const long long*>(table), reinterpret_cast<__m256i>(index), 8));
}
VELSCORE_LANE bool Any(VectorMask mask)
{
    return _mm256_movemask_pd(reinterpret_cast<__m256d>(mask)) != 0;
}
#endif

}  // namespace expsteps

VELSCORE_LANE VectorLane Exp(VectorLane x)
{
    using expsteps::FusedMultiplyAdd;
    const VectorLane kPerStep = All<VectorLane>(0x1.71547652b82fep0 * 128);  // 128 / ln2
    const VectorLane kRound = All<VectorLane>(0x1.8p52);  // its sum's low bits are a whole number
    const VectorLane kStepHigh = All<VectorLane>(-0x1.62e42fefa0000p-8);  // -ln2 / 128 in two parts
    const VectorLane kStepLow = All<VectorLane>(-0x1.cf79abc9e3b39p-47);
    const VectorLane kC2 = All<VectorLane>(0x1.ffffffffffdbdp-2);
    const VectorLane kC3 = All<VectorLane>(0x1.555555555543cp-3);
    const VectorLane kC4 = All<VectorLane>(0x1.55555cf172b91p-5);
    const VectorLane kC5 = All<VectorLane>(0x1.1111167a4d017p-7);

    const VectorLane rounded = FusedMultiplyAdd(kPerStep, x, kRound);
    const auto steps = reinterpret_cast<VectorMask>(rounded);
    const VectorLane k = rounded - kRound;
    const VectorLane r = FusedMultiplyAdd(k, kStepLow, FusedMultiplyAdd(k, kStepHigh, x));
    const VectorMask entry = steps & 127;
    const auto tail = reinterpret_cast<VectorLane>(expsteps::Gather(kExpTail, entry));
    const auto scale =
        reinterpret_cast<VectorLane>(expsteps::Gather(kExpScale, entry) + (steps << 45));
    const VectorLane r2 = r * r;
    const VectorLane low = FusedMultiplyAdd(r2, FusedMultiplyAdd(r, kC3, kC2), tail + r);
    const VectorLane rest = FusedMultiplyAdd(r2 * r2, FusedMultiplyAdd(r, kC5, kC4), low);
    VectorLane y = FusedMultiplyAdd(scale, rest, scale);

    const VectorMask far = ~((x > -512.0) & (x < 512.0));  // a NaN too
    if (__builtin_expect(expsteps::Any(far), 0)) {
        for (size_t i = 0; i < kWidth<VectorLane>; ++i) {
            if (far[i]) y[i] = __builtin_exp(x[i]);
        }
    }
    return y;
}

#else

VELSCORE_LANE VectorLane Exp(VectorLane x)
{
    return Each(x, [](double each) { return __builtin_exp(each); });
}

#endif

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif
