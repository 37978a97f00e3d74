#include "stats/mcmissingvalue.h"

#include <limits>

namespace MCCommon_850 {

// constinit: set before any initialiser of another file can ask for it.
constinit double MCMV::gMissingValue = std::numeric_limits<double>::lowest();

double MCMV::Missing() { return gMissingValue; }

bool MCMV::IsMissing(double x) { return x == gMissingValue; }  // exact: one marked double

}  // namespace MCCommon_850
