#ifndef VELSCORE_KERNELS_TERMS_H
#define VELSCORE_KERNELS_TERMS_H

#include <cstddef>
#include <cstdint>

namespace MCVelscore_850::kernels {

/// How one predictor enters a term of a linear predictor. With x the case's number and c its
/// category's code, a code below 0 being no category that a term knows:
///
///     Times      multiplies by x, `times` times, one after another
///     Power      multiplies by pow(x, number)
///     Category   lets the term stand where c is `code`, else ends it
///     Equal      the same where x is `number`
///     Near       the same where x is `number` or both are finite and no further apart than 1e-12
///                of the larger one
///     Contrast   multiplies by column[c]
///     Dummies    multiplies by column[c] where that isn't 0, else ends the term
///
/// A number of 0 ends a term in Times and Power, whatever its exponent is. A term that has ended
/// is 0.
struct TermPart {
    enum Kind : int32_t { Times, Power, Category, Equal, Near, Contrast, Dummies };
    int32_t predictor;
    Kind kind;
    int32_t times;
    int32_t code;
    double number;
    const double* column;  ///< by the case's code
};

/// The terms of a model, one a parameter: the parts of parameter p are
/// parts[begin[p]] .. parts[begin[p + 1] - 1], predictors ascending; none for a constant.
struct Terms {
    const TermPart* parts;
    const uint32_t* begin;
    size_t count;
};

}  // namespace MCVelscore_850::kernels

#endif
