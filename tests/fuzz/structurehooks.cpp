// What libFuzzer calls to mutate inputs of targets whose input is a document.
#include <algorithm>

#include "tests/fuzz/documentdrawing.h"
#include "tests/fuzz/fuzztarget.h"
#include "tests/fuzz/slowinputs.h"
#include "tests/fuzz/structuremutator.h"

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* bytes, size_t size, size_t most, unsigned seed)
{
    using namespace MCVelscore_850::fuzz;
    // One in so many outcomes is a document drawn anew, which no mutation leads to. Of slow inputs
    // as few are mutated; else a drawn one is, in their place.
    constexpr unsigned kSeldom = 16;
    const std::string_view input = TextOf(bytes, size);
    const bool isDrawn = seed % kSeldom == kSeldom - 1;
    const bool isLeft = seed % kSeldom != 0 && SlowInputs::Has(input);
    std::string mutated = isDrawn || isLeft ? DrawDocument(seed / kSeldom) : std::string(input);
    if (!isDrawn) mutated = MutateStructure(mutated, seed);
    // One that is too long is cut, which makes it no document: the input stays as it is.
    if (mutated.size() > most) return size;
    std::copy(mutated.begin(), mutated.end(), bytes);
    return mutated.size();
}

extern "C" size_t LLVMFuzzerCustomCrossOver(const uint8_t* bytes, size_t size,
                                            const uint8_t* others, size_t othersSize, uint8_t* out,
                                            size_t most, unsigned seed)
{
    using namespace MCVelscore_850::fuzz;
    const std::string crossed =
        CrossStructures(TextOf(bytes, size), TextOf(others, othersSize), seed);
    if (crossed.size() > most) return 0;  // no input
    std::copy(crossed.begin(), crossed.end(), out);
    return crossed.size();
}
