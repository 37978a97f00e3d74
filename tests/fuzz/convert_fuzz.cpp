// Documents of the older form, and RegressionModels, through the converter. They are mutated as in
// structure.
#include "tests/fuzz/documentchecks.h"
#include "tests/fuzz/fuzztarget.h"
#include "tests/fuzz/slowinputs.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    using namespace MCVelscore_850::fuzz;
    const SlowInputs::Watch watch(TextOf(bytes, size));
    CheckConverted(TextOf(bytes, size));
    return 0;
}
