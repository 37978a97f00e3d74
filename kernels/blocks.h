#ifndef VELSCORE_KERNELS_BLOCKS_H
#define VELSCORE_KERNELS_BLOCKS_H

#include <cstddef>
#include <cstdint>

#include "kernels/baseline.h"
#include "kernels/links.h"
#include "kernels/terms.h"

namespace MCVelscore_850::kernels {

/// The rows of a full block. Columns that kernels read or write have room for so many, and a kernel
/// takes whole vectors: of `rows` that are no multiple of kLargestWidth the rest is computed and
/// means nothing.
inline constexpr size_t kBlockRows = 512;
/// Numbers in the widest vector of any instruction set.
inline constexpr size_t kLargestWidth = 8;

/// The predictors of a block: of each its numbers, or the codes of its categories, or null.
struct BlockColumns {
    const double* const* numbers;
    const int32_t* const* codes;
    size_t rows;
};

/// How the sum of terms goes in the families that take it over one row of betas.
enum class SumRule {
    GeneralLinear,  ///< terms of 0 are added too, a product of 0 is multiplied on
    Logistic,       ///< the same without terms of 0
    Generalized     ///< a product of 0 ends its term
};
inline constexpr int kSumRules = 3;

/// The arithmetic of the families over the rows of a block, compiled for one instruction set. Every
/// row's result has the bits that the arithmetic over one case gives; what each computes stands
/// with the function of the same name.
struct BlockKernels {
    /// "portable", "v2", "v3" or "v4", the last three being levels of x86-64.
    const char* name;

    void (*exp)(const double* x, double* y, size_t rows);
    /// SumOfSlopes over the first `count` columns.
    void (*slopes)(const BlockColumns& columns, double constant, const double* betas, size_t count,
                   double* lp);
    /// SumOfTerms by SumRule, from 0 on. Design value p goes to design + p * kBlockRows unless
    /// `design` is null.
    void (*sums[kSumRules])(const BlockColumns& columns, const Terms& terms, const double* betas,
                            size_t first, double* lp, double* design);
    /// CentredSumOfTerms, with contrasts or without; `design` as above.
    void (*centred)(const BlockColumns& columns, const Terms& terms, const double* betas,
                    const double* references, double* lp, double* design);
    /// SumsOfTerms of the multinomial family: equation c goes to lp + c * kBlockRows.
    void (*equations)(const BlockColumns& columns, const double* start, const Terms& terms,
                      const double* betas, size_t equations, double* lp);
    /// StandardErrorOfSum over design values as `sums` leaves them, that of a row of the
    /// covariances at design + row * kBlockRows.
    void (*standardErrors)(const double* design, const double* covariances, size_t stride,
                           const uint32_t* met, size_t count, double* errors, size_t rows);
    /// RootOfVariance(VarianceOfSlopes) over the first `count` columns, none of which has dates.
    void (*slopeErrors)(const BlockColumns& columns, const double* covariances, size_t stride,
                        size_t count, bool hasConstant, double* errors);
    /// MeanOf by Link.
    void (*means[kLinks])(const double* eta, double k, double* mean, size_t rows);
    /// CumulativeProbability by CumulativeLink.
    void (*cumulative[kCumulativeLinks])(const double* x, double* probability, size_t rows);
    /// NextCategory over `boundaries` cumulative probabilities kBlockRows apart and a last one of
    /// 1: probabilities in their place, and in the column behind them; the index of the largest.
    void (*scale)(double* cumulative, size_t boundaries, double margin, double* predicted,
                  size_t rows);
    /// boundary + sign * lp
    void (*boundary)(const double* lp, double boundary, double sign, double* x, size_t rows);
    /// LargestOf over `categories` linear predictors kBlockRows apart: its index.
    void (*largest)(const double* lp, size_t categories, double* largest, size_t rows);
    /// LargestOf and Exponentials over `categories` linear predictors kBlockRows apart: the index
    /// of the largest, and probabilities in their place.
    void (*softmax)(double* lp, size_t categories, double* largest, size_t rows);
    /// HazardAfter by each row's stratum and time.
    void (*baselines)(const Baseline* strata, const int32_t* stratum, const double* t,
                      double* baseline, size_t rows);
    /// SurvivalOf.
    void (*survival)(const double* lp, const double* baseline, double* hazard, double* survival,
                     size_t rows);
    /// lp - width * e and lp + width * e, e being 1 without `errors`.
    void (*limits)(const double* lp, const double* errors, double width, double* lower,
                   double* upper, size_t rows);
    /// lp + column, or lp + value without one, in its place.
    void (*shift)(double* lp, const double* column, double value, size_t rows);

    /// True when each of the `rows` numbers, and no more, lies in low .. high, and with `whole` is
    /// a whole number no larger than 2^51.
    bool (*within)(const double* x, double low, double high, bool whole, size_t rows);
    /// table[code] for each row, `other` for a code that is no index; true when none is below 0.
    bool (*mapCodes)(const int32_t* codes, const int32_t* table, size_t size, int32_t other,
                     int32_t* mapped, size_t rows);
};

}  // namespace MCVelscore_850::kernels

#endif
