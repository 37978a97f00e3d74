#ifndef VELSCORE_STATS_MCMISSINGVALUE_H
#define VELSCORE_STATS_MCMISSINGVALUE_H

#include "stats/export.h"

namespace MCCommon_850 {

/// The missing value of the statistics library: one double that stands for "no answer".
///
/// It is the most negative finite double, -1.7976931348623157e+308. A result is compared with it
/// by IsMissing, never by arithmetic: an ordinary computation does not arrive at it.
///
/// Threads  the value is constant from before the first initialiser runs.
class VELSTATS_API MCMV {
public:
    /// The missing value.
    static double Missing();

    /// True for the missing value alone. A NaN is not missing: it passes for a number.
    static bool IsMissing(double x);

    static double gMissingValue;
};

}  // namespace MCCommon_850

#endif
