#ifndef VELSCORE_MODELS_GZLRLINKS_H
#define VELSCORE_MODELS_GZLRLINKS_H

#include "kernels/links.h"

namespace MCVelscore_850 {

/// A link of the generalized linear model in words. How a linear predictor eta becomes a mean, with
/// k the link's parameter, stands in kernels/links.h.
struct GZLRLink {
    const char* name;
    bool takesParameter;
    const char* mean;        ///< in words of eta and k
    const char* meanAtZero;  ///< the same for k = 0, where that is another formula; else null

    /// The mean of eta, the system-missing number where there is none.
    double Mean(double eta, double k) const;

    /// The row of a GZLRModel::LinkFunction; null for a number that is no link.
    static const GZLRLink* Find(int link);
};

}  // namespace MCVelscore_850

#endif
