#ifndef VELSCORE_KERNELS_INSTRUCTIONSET_H
#define VELSCORE_KERNELS_INSTRUCTIONSET_H

#include "kernels/blocks.h"

namespace MCVelscore_850::kernels {

/// The names of the instruction sets, the plainest first.
inline constexpr const char* kInstructionSets[] = {"portable", "v2", "v3", "v4"};

/// The kernels of an instruction set by its name; null where this build hasn't it, where the
/// processor lacks it, and for other names.
const BlockKernels* KernelsOf(const char* name);

/// True when the kernels' exp has the bits of the C library's at 4,096 fixed points.
bool AgreesWithLibrary(const BlockKernels& kernels);

/// The kernels that blocks are scored with, chosen once a process: the widest that the processor
/// has and whose exp agrees with the C library; none wider than the one that the environment
/// variable VELSCORE_INSTRUCTION_SET names, where it names one. Threads any may ask.
const BlockKernels& ChosenKernels();

}  // namespace MCVelscore_850::kernels

#endif
