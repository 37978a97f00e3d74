#ifndef VELSCORE_TESTS_STATS_SUPPORT_PRECISE_FUNCTIONS_H
#define VELSCORE_TESTS_STATS_SUPPORT_PRECISE_FUNCTIONS_H

#include "tests/stats/support/functions.h"

namespace reference {

/// What Precise has for a function of the library, called with that function's reference arguments.
struct PreciseFunction {
    const char* name;  ///< in MCMath_850::Precise; null if it has none
    Call call;
    bool (*compared)(const Args&);  ///< the points that its own definition shares
};

/// The row for `function`; one without a name if Precise has nothing for it.
const PreciseFunction& PreciseFor(const std::string& function);

}  // namespace reference

#endif
