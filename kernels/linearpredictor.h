#ifndef VELSCORE_KERNELS_LINEARPREDICTOR_H
#define VELSCORE_KERNELS_LINEARPREDICTOR_H

#include "kernels/designvalues.h"

namespace MCVelscore_850::kernels {
inline namespace VELSCORE_LANES {

/// Which terms a family adds to its linear predictor, beside those whose beta is 0, which none
/// adds.
enum class Adds {
    StandingTerms,  ///< every term that stands, one of 0 too
    NonzeroTerms    ///< every design value other than 0
};

/// constant + sum of betas[i] x[i], i ascending, over predictors and betas other than 0.
template <class Cells>
VELSCORE_LANE typename Cells::Lane SumOfSlopes(double constant, const double* betas, size_t count,
                                               const Cells& cells)
{
    using Lane = typename Cells::Lane;
    Lane lp = All<Lane>(constant);
    for (size_t i = 0; i < count; ++i) {
        if (betas[i] == 0.0) continue;
        const Lane x = Cells::Number(cells, static_cast<int32_t>(i));
        const Mask<Lane> met = x != 0.0;
        if (IsDone(met)) continue;
        lp = Select(met, lp + betas[i] * x, lp);
    }
    return lp;
}

/// lp + d beta of one term that has a beta other than 0. Its design value, 0 where the term has
/// ended, goes to keep(d).
template <Ends kEnds, Adds kAdds, class Cells, class Keep>
VELSCORE_LANE typename Cells::Lane AddTerm(typename Cells::Lane lp, const Terms& terms, size_t p,
                                           double beta, const Cells& cells, Keep keep)
{
    using Lane = typename Cells::Lane;
    const DesignValue<Lane> design = DesignValueOf<kEnds>(terms, p, cells);
    const Lane d = Select(design.stands, design.value, All<Lane>(0.0));
    keep(d);
    const Mask<Lane> adds = kAdds == Adds::StandingTerms ? design.stands : d != 0.0;
    return Select(adds, lp + d * beta, lp);
}

/// start + sum of d[p] betas[p], p ascending from `first`. Each design value, 0 where its term has
/// ended or its beta is 0, goes to keep(p, d).
template <Ends kEnds, Adds kAdds, class Cells, class Keep>
VELSCORE_LANE typename Cells::Lane SumOfTerms(typename Cells::Lane start, const Terms& terms,
                                              const double* betas, size_t first, const Cells& cells,
                                              Keep keep)
{
    using Lane = typename Cells::Lane;
    Lane lp = start;
    for (size_t p = first; p < terms.count; ++p) {
        if (betas[p] == 0.0) {
            keep(p, All<Lane>(0.0));
        } else {
            lp = AddTerm<kEnds, kAdds>(lp, terms, p, betas[p], cells, [&](Lane d) { keep(p, d); });
        }
    }
    return lp;
}

/// lp + (d beta - reference) of one term that has a beta other than 0, of a model that is centred:
/// a design value of 0 counts where its reference isn't 0.
template <Ends kEnds, class Cells, class Keep>
VELSCORE_LANE typename Cells::Lane AddCentredTerm(typename Cells::Lane lp, const Terms& terms,
                                                  size_t p, double beta, double reference,
                                                  const Cells& cells, Keep keep)
{
    using Lane = typename Cells::Lane;
    const DesignValue<Lane> design = DesignValueOf<kEnds>(terms, p, cells);
    const Lane d = Select(design.stands, design.value, All<Lane>(0.0));
    keep(d);
    const Lane sum = lp + (d * beta - reference);
    return reference != 0.0 ? sum : Select(d != 0.0, sum, lp);
}

/// The sum over p of d[p] betas[p] - references[p]. A parameter whose beta is 0 adds nothing, not
/// even its reference, which is 0 then. Each design value, 0 where its term has ended or its beta
/// is 0, goes to keep(p, d).
template <Ends kEnds, class Cells, class Keep>
VELSCORE_LANE typename Cells::Lane CentredSumOfTerms(const Terms& terms, const double* betas,
                                                     const double* references, const Cells& cells,
                                                     Keep keep)
{
    using Lane = typename Cells::Lane;
    Lane lp = All<Lane>(0.0);
    for (size_t p = 0; p < terms.count; ++p) {
        if (betas[p] == 0.0) {
            keep(p, All<Lane>(0.0));
        } else {
            lp = AddCentredTerm<kEnds>(lp, terms, p, betas[p], references[p], cells,
                                       [&](Lane d) { keep(p, d); });
        }
    }
    return lp;
}

/// start + sum of d[p] betas[p, c] for each equation c, p ascending, over betas and design values
/// other than 0: into lp + c * stride. The betas of parameter p lie at betas + p * equations.
template <Ends kEnds, class Cells>
VELSCORE_LANE void SumsOfTerms(typename Cells::Lane start, const Terms& terms, const double* betas,
                               size_t equations, const Cells& cells, double* lp, size_t stride)
{
    using Lane = typename Cells::Lane;
    for (size_t c = 0; c < equations; ++c) Store(lp + c * stride, start);
    for (size_t p = 0; p < terms.count; ++p) {
        const DesignValue<Lane> design = DesignValueOf<kEnds>(terms, p, cells);
        const Lane d = Select(design.stands, design.value, All<Lane>(0.0));
        const Mask<Lane> met = d != 0.0;
        if (IsDone(met)) continue;
        for (size_t c = 0; c < equations; ++c) {
            const double beta = betas[p * equations + c];
            if (beta == 0.0) continue;
            double* const sum = lp + c * stride;
            const Lane before = Load<Lane>(sum);
            Store(sum, Select(met, before + d * beta, before));
        }
    }
}

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif
