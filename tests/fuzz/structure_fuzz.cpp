// Documents of the vocabulary: the mutator changes elements and attributes, not bytes.
#include <algorithm>

#include "tests/fuzz/documentchecks.h"
#include "tests/fuzz/fuzztarget.h"
#include "tests/fuzz/structuremutator.h"

using namespace MCVelscore_850::fuzz;

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* bytes, size_t size, size_t most, unsigned seed)
{
    const std::string mutated = MutateStructure(TextOf(bytes, size), seed);
    // One that is too long is cut, which makes it no document: the input stays as it is.
    if (mutated.size() > most) return size;
    std::copy(mutated.begin(), mutated.end(), bytes);
    return mutated.size();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    CheckDocument(TextOf(bytes, size));
    return 0;
}
