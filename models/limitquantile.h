#ifndef VELSCORE_MODELS_LIMITQUANTILE_H
#define VELSCORE_MODELS_LIMITQUANTILE_H

namespace MCVelscore_850 {

// The quantiles of two-sided confidence limits: the q with P(|X| <= q) = level. At the default
// level of 0.95 they are what such models come with, so that a score never moves; at any other they
// are right to the last digits for levels from 0.5 on, and below to an absolute 1e-16 or so.
//
// A level that isn't between 0 and 1, both excluded, NaN among them, answers the system-missing
// number.

/// Of Student's t; at the default level StudentQuantile95. For df <= 0 and NaN the system-missing
/// number.
double StudentLimitQuantile(double level, double df);

/// Of the standard normal distribution; at the default level that of MCDistFun.
double NormalLimitQuantile(double level);

}  // namespace MCVelscore_850

#endif
