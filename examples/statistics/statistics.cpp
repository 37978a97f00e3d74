// Planning a study with the statistics library: critical values, the power of a test, the size of
// the effect that a study can see. It uses nothing of the library but its public headers.
//
//   build/release/bin/statistics_example

#include <cstdio>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"

using MCCommon_850::MCMV;
using MCMath_850::MCDistFun;

namespace {

// A missing value is no number: say so instead of printing it.
void Print(const char* what, double value)
{
    if (MCMV::IsMissing(value))
        std::printf("%-58s (none)\n", what);
    else
        std::printf("%-58s %.4f\n", what, value);
}

}  // namespace

int main()
{
    const double df = 18.0;  // two groups of ten
    const double critical = MCDistFun::IdfT(0.975, df);
    Print("t, two-sided 5 per cent, 18 df", critical);
    Print("F, 5 per cent, 3 and 10 df", MCDistFun::IdfF(0.95, 3.0, 10.0));
    Print("chi-square, 5 per cent, 3 df", MCDistFun::IdfChi(0.95, 3.0));

    // A difference of one standard deviation between the groups: delta = 1 / sqrt(2 / 10).
    const double delta = 2.2360679774997898;
    const double power = 1.0 - MCDistFun::NonCentralCdfT(critical, df, delta) +
                         MCDistFun::NonCentralCdfT(-critical, df, delta);
    Print("power for a difference of one standard deviation", power);
    // The delta that is found with 80 per cent: its distribution leaves 20 per cent below the
    // critical t.
    Print("delta for a power of 80 per cent", MCDistFun::FindNCParamT(critical, df, 0.2, 1e-9));

    Print("t with no degrees of freedom", MCDistFun::IdfT(0.975, 0.0));
    return 0;
}
