#ifndef VELSCORE_STATS_MCPOWER_H
#define VELSCORE_STATS_MCPOWER_H

#include <cstdint>

#include "stats/export.h"

namespace MCMath_850 {

/// Power and exponent arithmetic that never raises a floating-point fault: what cannot be
/// represented becomes a code and the missing value (MCCommon_850::MCMV).
///
/// Threads  every function is reentrant; the globals are constant.
class VELSTATS_API MCPower {
public:
    /// exp(x), guarded.
    ///     x < -708.39   result 0.0, returns 1 (underflow)
    ///     x >  709.0    result missing, returns 2 (overflow)
    ///     otherwise     result exp(x), returns 0; a NaN is otherwise
    /// The two ends differ on purpose: an underflow is a usable zero, an overflow is no number.
    static int Exponent(double x, double& result);

    /// base ^ exponent, with odd roots and whole powers of negative bases.
    /// Returns  0 done, 1 underflow (result 0.0 or -0.0), 2 overflow, 3 overflow of an odd power of
    ///          a negative base, 4 negative base with an exponent that has no real power, 5 a
    ///          negative base to the power 0 (result 1.0), 6 zero to a negative or NaN power, 7
    ///          zero to the power 0 (result 1.0). Result missing with 2, 3, 4 and 6.
    static int Power(double base, double exponent, double& result);

    /// a * b through logarithms: missing on overflow, 0.0 with the product's sign on underflow.
    static double Multiply(double a, double b);

    /// Whether a and b differ by at most `ulps` units of 2^-52, relative to the larger of them.
    /// Zero is almost equal to zero alone; numbers of different sign never are; nor is a NaN.
    static bool AlmostEqual(double a, double b, double ulps);

    /// Whether 1/x is an odd integer, to within `ulps`. False for 0 and for 1/x above
    /// gMachineMaxInt.
    static bool IsOneOverOddInteger(double x, double ulps);

    /// Whether 1/x is an even integer, to within `ulps`. False for 0 and for 1/x above
    /// gMachineMaxInt; true for an infinite x, whose reciprocal is the even integer 0.
    static bool IsOneOverEvenInteger(double x, double ulps);

    static std::int32_t gMachineMaxInt;  ///< largest integer that the parity tests trust
    static double gMachineEpsilon;       ///< 2^-52, unit of the relative comparison
    static const double gMachineMaxExp;  ///< largest argument that may be given to exp
    static const double gMachineMinExp;  ///< smallest argument that may be given to exp
};

}  // namespace MCMath_850

#endif
