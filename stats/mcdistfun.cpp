#include "stats/mcdistfun.h"

#include <limits>

namespace MCMath_850 {

constinit std::int32_t maxInt = std::numeric_limits<std::int32_t>::max();
constinit double mEpsilon = std::numeric_limits<double>::epsilon();

}  // namespace MCMath_850
