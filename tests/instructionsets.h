#ifndef VELSCORE_TESTS_INSTRUCTIONSETS_H
#define VELSCORE_TESTS_INSTRUCTIONSETS_H

#include <vector>

#include "kernels/instructionset.h"

namespace MCVelscore_850::kernels {

/// The instruction sets that this processor has; the portable one is always among them.
inline std::vector<const char*> SetsOfThisProcessor()
{
    std::vector<const char*> sets;
    for (const char* name : kInstructionSets) {
        if (KernelsOf(name) != nullptr) sets.push_back(name);
    }
    return sets;
}

}  // namespace MCVelscore_850::kernels

#endif
