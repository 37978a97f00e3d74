#ifndef VELSCORE_MODELS_GZLRLINKS_H
#define VELSCORE_MODELS_GZLRLINKS_H

namespace MCVelscore_850 {

/// A link of the generalized linear model: its words, and how a linear predictor eta becomes a
/// mean. With k the link's parameter, the mean is
///
///     below             where eta < low
///     above             where eta > high
///     inverse(eta, k)   else, a NaN among them
///
/// and what then lies outside least .. most is no mean: the system-missing number. A NaN is not
/// outside. The guards hold exp off overflow.
struct GZLRLink {
    const char* name;
    bool takesParameter;
    const char* mean;        ///< in words of eta and k
    const char* meanAtZero;  ///< the same for k = 0, where that is another formula; else null
    double low;
    double below;
    double high;
    double above;
    double (*inverse)(double eta, double k);
    double least;
    double most;

    /// The mean of eta, the system-missing number where there is none.
    double Mean(double eta, double k) const;

    /// The row of a GZLRModel::LinkFunction; null for a number that is no link.
    static const GZLRLink* Find(int link);
};

}  // namespace MCVelscore_850

#endif
