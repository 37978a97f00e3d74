#ifndef VELSCORE_MODELS_STUDENTQUANTILE_H
#define VELSCORE_MODELS_STUDENTQUANTILE_H

namespace MCVelscore_850 {

/// The two-sided 95% quantile of Student's t, the t with P(|T| <= t) = 0.95.
///
/// Domain  df a whole number from 1 to 10: from a table, right to 11 digits. Any other df > 0: a
///         polynomial in 1 / df, right to about seven digits for df above 10. df <= 0 and NaN:
///         the system-missing number.
double StudentQuantile95(double df);

}  // namespace MCVelscore_850

#endif
