// Documents of the vocabulary: the mutator changes elements, attributes and words, not bytes.
#include "tests/fuzz/documentchecks.h"
#include "tests/fuzz/fuzztarget.h"
#include "tests/fuzz/slowinputs.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    using namespace MCVelscore_850::fuzz;
    const SlowInputs::Watch watch(TextOf(bytes, size));
    CheckDocument(TextOf(bytes, size));
    return 0;
}
