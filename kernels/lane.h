#ifndef VELSCORE_KERNELS_LANE_H
#define VELSCORE_KERNELS_LANE_H

#include <cstddef>
#include <cstdint>
#include <cstring>

/// A lane is what the arithmetic of a family runs over: one double, for one case, or a vector of
/// them that lie across the rows of a block. Each row takes the same operations in the same order
/// whatever the lane, so a row's bits don't depend on it.
///
/// Functions here and in the arithmetic's headers are static: a file compiled for one instruction
/// set never lends its code to another. For the same reason no template of the standard library is
/// used where lanes are.
#define VELSCORE_LANE static inline __attribute__((always_inline))

// The bytes of a vector lane, by the instruction set that the file is compiled for.
#if defined(__AVX512F__)
#define VELSCORE_LANE_BYTES 64
#define VELSCORE_LANES lanes64
#elif defined(__AVX2__)
#define VELSCORE_LANE_BYTES 32
#define VELSCORE_LANES lanes32
#else
#define VELSCORE_LANE_BYTES 16
#define VELSCORE_LANES lanes16
#endif

namespace MCVelscore_850::kernels {
// What depends on the width has a name of its own for each.
inline namespace VELSCORE_LANES {

using VectorLane = double __attribute__((vector_size(VELSCORE_LANE_BYTES)));
using VectorMask = int64_t __attribute__((vector_size(VELSCORE_LANE_BYTES)));
using VectorCodes = int32_t __attribute__((vector_size(VELSCORE_LANE_BYTES / 2)));

template <class Lane>
constexpr size_t kWidth = sizeof(Lane) / sizeof(double);

/// The mask of a lane: what its comparisons answer.
template <class Lane>
struct MaskOf {
    using Type = VectorMask;
};
template <>
struct MaskOf<double> {
    using Type = bool;
};
template <class Lane>
using Mask = typename MaskOf<Lane>::Type;

template <class Lane>
VELSCORE_LANE Lane Load(const double* numbers)
{
    Lane lane;
    memcpy(&lane, numbers, sizeof(Lane));
    return lane;
}

template <class Lane>
VELSCORE_LANE void Store(double* numbers, Lane lane)
{
    memcpy(numbers, &lane, sizeof(Lane));
}

/// The number in every place.
template <class Lane>
VELSCORE_LANE Lane All(double number)
{
    if constexpr (kWidth<Lane> == 1) {
        return number;
    } else {
        return number - Lane{};  // minus zero keeps its sign: -0 - 0 is -0
    }
}

template <class Lane>
VELSCORE_LANE Mask<Lane> Always()
{
    if constexpr (kWidth<Lane> == 1) {
        return true;
    } else {
        return ~VectorMask{};
    }
}

VELSCORE_LANE double Select(bool mask, double yes, double no) { return mask ? yes : no; }
VELSCORE_LANE VectorLane Select(VectorMask mask, VectorLane yes, VectorLane no)
{
    return mask ? yes : no;
}

/// True when no row is left: then a single case stops early. A vector never does; what it computes
/// for rows that are done is selected away.
VELSCORE_LANE bool IsDone(bool alive) { return !alive; }
VELSCORE_LANE bool IsDone(VectorMask) { return false; }

/// Both, without a branch.
VELSCORE_LANE bool Both(bool a, bool b) { return a && b; }
VELSCORE_LANE VectorMask Both(VectorMask a, VectorMask b) { return a & b; }
VELSCORE_LANE bool Either(bool a, bool b) { return a || b; }
VELSCORE_LANE VectorMask Either(VectorMask a, VectorMask b) { return a | b; }
VELSCORE_LANE bool Not(bool a) { return !a; }
VELSCORE_LANE VectorMask Not(VectorMask a) { return ~a; }

/// function(x) in every place, one after another: for what has no vector form with the same bits.
template <class Function>
VELSCORE_LANE double Each(double x, Function function)
{
    return function(x);
}
template <class Function>
VELSCORE_LANE VectorLane Each(VectorLane x, Function function)
{
    VectorLane y;
    for (size_t i = 0; i < kWidth<VectorLane>; ++i) y[i] = function(x[i]);
    return y;
}

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif
