#ifndef VELSCORE_MODELS_EXPLAINEDTERMS_H
#define VELSCORE_MODELS_EXPLAINEDTERMS_H

#include <limits>
#include <vector>

#include "host/model/caseexplanation.h"
#include "kernels/linearpredictor.h"
#include "models/casestate.h"
#include "models/termplan.h"

namespace MCVelscore_850 {

/// The cells of a case that was scored, for explanations: a contrast that the case doesn't have is
/// NaN, which a term without a beta may meet, and no other.
struct ExplainedCells : kernels::CaseCells {
    explicit ExplainedCells(const CaseState& state)
        : kernels::CaseCells{state.numbers.data(), state.codes.data()}
    {}

    static double Contrast(const ExplainedCells& cells, int32_t predictor, const double* column)
    {
        const int32_t code = cells.codes[predictor];
        const bool has = code >= 0 && column[code] != kNoContrast;
        return has ? column[code] : std::numeric_limits<double>::quiet_NaN();
    }
};

/// The addends of kernels::SumOfTerms, and of SumsOfTerms as those of Adds::NonzeroTerms: the
/// parameters from `first` on, as a family adds them.
template <kernels::Ends kEnds, kernels::Adds kAdds>
void ExplainTerms(const kernels::Terms& terms, const std::vector<double>& betas, size_t first,
                  const ExplainedCells& cells, CaseExplanation::Sum& sum)
{
    for (size_t p = first; p < terms.count; ++p) {
        const auto design = kernels::DesignValueOf<kEnds>(terms, p, cells);
        const double d = design.stands ? design.value : 0.0;
        const bool stands = kAdds == kernels::Adds::StandingTerms ? design.stands : d != 0.0;
        sum.Add(d, betas[p] != 0.0 && stands ? d * betas[p] : 0.0);
    }
}

/// The addends of kernels::CentredSumOfTerms.
template <kernels::Ends kEnds>
void ExplainCentredTerms(const kernels::Terms& terms, const std::vector<double>& betas,
                         const std::vector<double>& references, const ExplainedCells& cells,
                         CaseExplanation::Sum& sum)
{
    for (size_t p = 0; p < terms.count; ++p) {
        const auto design = kernels::DesignValueOf<kEnds>(terms, p, cells);
        const double d = design.stands ? design.value : 0.0;
        const bool adds = betas[p] != 0.0 && (references[p] != 0.0 || d != 0.0);
        sum.Add(d, adds ? d * betas[p] - references[p] : 0.0);
    }
}

}  // namespace MCVelscore_850

#endif
