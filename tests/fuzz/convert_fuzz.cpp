// Documents of the older form, and RegressionModels, through the converter. They are mutated as in
// structure.
#include "tests/fuzz/documentchecks.h"
#include "tests/fuzz/fuzztarget.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    MCVelscore_850::fuzz::CheckConverted(MCVelscore_850::fuzz::TextOf(bytes, size));
    return 0;
}
