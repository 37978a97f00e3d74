#include "models/studentquantile.h"

#include <cmath>

#include "host/values/numericvalue.h"

namespace MCVelscore_850 {

namespace {

// Quantiles for 1 to 10 degrees of freedom.
constexpr double kQuantiles[] = {
    12.7062047361747, 4.30265272974946, 3.18244630528356, 2.77644510519779, 2.570581835615,
    2.44691185114487, 2.36462425159278, 2.30600413519914, 2.26215716279821, 2.22813885198627,
};

}  // namespace

double StudentQuantile95(double df)
{
    if (df >= 1.0 && df <= 10.0 && df == std::floor(df)) {
        return kQuantiles[static_cast<int>(df) - 1];
    }
    if (df > 0.0) {  // fractions too, also below 1
        const double u = 1.0 / df;
        return 1.959964 +
               u * (2.3722712 +
                    u * (2.8224986 + u * (2.5558497 + u * (1.5895341 + u * 0.73289821))));
    }
    return NumericValue::GetSysmisValue();
}

}  // namespace MCVelscore_850
