#include "kernels/instructionset.h"

#include <bit>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace MCVelscore_850::kernels {

extern const BlockKernels kPortableKernels;
#if defined(__x86_64__)
extern const BlockKernels kV2Kernels;
extern const BlockKernels kV3Kernels;
extern const BlockKernels kV4Kernels;
#endif

namespace {

bool HasEverywhere() { return true; }

#if defined(__x86_64__)
bool HasV2() { return __builtin_cpu_supports("sse4.2") && __builtin_cpu_supports("popcnt"); }

bool HasV3()
{
    return HasV2() && __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
           __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
}

bool HasV4()
{
    return HasV3() && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
           __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq") &&
           __builtin_cpu_supports("avx512vl");
}
#endif

// In the order of kInstructionSets.
constexpr struct {
    const BlockKernels* kernels;
    bool (*isThere)();
} kLevels[] = {
    {&kPortableKernels, HasEverywhere},
#if defined(__x86_64__)
    {&kV2Kernels, HasV2},
    {&kV3Kernels, HasV3},
    {&kV4Kernels, HasV4},
#endif
};

const BlockKernels& Choose()
{
    const char* const widest = std::getenv("VELSCORE_INSTRUCTION_SET");
    const BlockKernels* chosen = &kPortableKernels;
    for (const auto& level : kLevels) {
        if (level.isThere() && AgreesWithLibrary(*level.kernels)) chosen = level.kernels;
        if (widest != nullptr && std::strcmp(widest, level.kernels->name) == 0) break;
    }
    return *chosen;
}

}  // namespace

const BlockKernels* KernelsOf(const char* name)
{
    for (const auto& level : kLevels) {
        if (std::strcmp(level.kernels->name, name) == 0) {
            return level.isThere() ? level.kernels : nullptr;
        }
    }
    return nullptr;
}

bool AgreesWithLibrary(const BlockKernels& kernels)
{
    constexpr size_t kPoints = 4096;
    double x[kBlockRows];
    double y[kBlockRows];
    for (size_t i = 0; i < kPoints; i += kBlockRows) {
        // From one end of what exp can do to the other, in steps that hit no entry of its table.
        for (size_t j = 0; j < kBlockRows; ++j) {
            x[j] = -746.0 + 0.3561523 * static_cast<double>(i + j);
        }
        kernels.exp(x, y, kBlockRows);
        for (size_t j = 0; j < kBlockRows; ++j) {
            if (std::bit_cast<uint64_t>(y[j]) != std::bit_cast<uint64_t>(std::exp(x[j]))) {
                return false;
            }
        }
    }
    return true;
}

const BlockKernels& ChosenKernels()
{
    static const BlockKernels& kChosen = Choose();
    return kChosen;
}

}  // namespace MCVelscore_850::kernels
