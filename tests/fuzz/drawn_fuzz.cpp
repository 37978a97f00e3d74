// A whole document, drawn from an input's bytes.
#include "tests/fuzz/documentchecks.h"
#include "tests/fuzz/documentdrawing.h"
#include "tests/fuzz/fuzztarget.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    using namespace MCVelscore_850::fuzz;
    CheckDocument(DrawDocument(HashOf(TextOf(bytes, size))));
    return 0;
}
