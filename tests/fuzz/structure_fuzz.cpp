// Documents of the vocabulary: the mutator changes elements, attributes and words, not bytes.
#include "tests/fuzz/documentchecks.h"
#include "tests/fuzz/fuzztarget.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    MCVelscore_850::fuzz::CheckDocument(MCVelscore_850::fuzz::TextOf(bytes, size));
    return 0;
}
