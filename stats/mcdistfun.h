#ifndef VELSCORE_STATS_MCDISTFUN_H
#define VELSCORE_STATS_MCDISTFUN_H

#include <cstdint>
#include <vector>

#include "stats/export.h"

namespace MCMath_850 {

extern VELSTATS_API std::int32_t maxInt;  ///< 2147483647, largest count of rounds or terms
extern VELSTATS_API double mEpsilon;      ///< 2^-52, unit of the closeness test of IdfBin

/// Distribution functions: normal, gamma, beta, binomial, hypergeometric and non-central families,
/// with percentiles of frequency tables. docs/statistics.md has the measured accuracy of each; the
/// source files tell the methods.
///
/// Two kinds of names. Lower-case names are the working routines: const references, and where they
/// can fail in more than one way a last `long& code`. Capitalised names are what others call.
///
/// Errors  With a code: 0 on entry, 1 an argument outside the domain, 2 the computation failed
///         (no convergence, or a quantity that cannot be represented); the binomial functions have
///         codes of their own, told at each. Without a code: the missing value
///         (MCCommon_850::MCMV::Missing()) stands for every failure, and so does it with a code
///         above 0; betinv and IdfBeta answer -1.0. "Outside" below is outside of the domain.
///         Nothing is thrown, nothing is logged, no function allocates.
/// NaN     A NaN argument gives NaN or a failure, except where a function says which number it
///         gives. No loop runs past its bound for it.
/// Threads All functions are reentrant and keep no state.
class VELSTATS_API MCDistFun {
public:
    // Normal family (mcdistfun_normal.cpp).

    /// Standard normal quantile: the x with Phi(x) = p.
    ///     Domain  0 < p < 1, outside (NaN too) missing; exactly 0.0 at 0.5.
    static double probit(const double& p);
    /// Error function, 2 / sqrt(pi) * integral of exp(-t^2) from 0 to x.
    ///     Domain  all x; exactly 1.0 from 6.9 on. On purpose a NaN counts as large: 1.0.
    static double derf(const double& x);
    /// Complementary error function, 1 - erf(x), relatively right in the upper tail.
    ///     Domain  all x; the tail is 0.0 below exp(-708). NaN gives NaN.
    static double derfc(const double& x);
    /// Standard normal distribution function, Phi(z) = erfc(-z / sqrt 2) / 2.
    ///     Domain  all z; exactly 0.5 at 0. NaN gives NaN.
    ///     Error   relative in the lower tail, absolute above 0.
    static double prbnrm(const double& z);
    /// prbnrm.
    static double CdfStdNorm(double z);
    /// Normal distribution function, Phi((x - mu) / sigma).
    ///     Domain  sigma > 0, outside missing; all x and mu. NaN x or mu gives NaN.
    static double CdfNorm(double x, double mu, double sigma);
    /// probit.
    static double IdfStdNorm(double p);
    /// Normal quantile, mu + sigma * probit(p).
    ///     Domain  0 < p < 1 and sigma > 0, outside missing; exactly mu at 0.5.
    static double IdfNorm(double p, double mu, double sigma);
    /// Standard normal density, exp(-z^2 / 2) / sqrt(2 pi). All z.
    static double PdfNormalStandard(double z);
    /// Normal density, PdfNormalStandard((x - mu) / sigma) / sigma.
    ///     Domain  sigma not 0, outside missing. On purpose negative for a negative sigma.
    static double PdfNormal(double x, double mu, double sigma);

    // Log gamma, gamma and exponential distributions (mcdistfun_loggamma.cpp, mcdistfun_gamma.cpp).

    /// Natural logarithm of the gamma function.
    ///     Domain  x > 0, outside missing; exactly 0.0 at 1 and 2. NaN and infinity give NaN.
    ///     Error   2e-15, relative or absolute, whichever is larger: absolute beside 1 and 2.
    static double dnlgam(const double& x);
    /// dnlgam.
    static double zeltdnlgam(const double& x);
    /// Regularised incomplete gamma function: with `lower` P(a, x), the integral of t^(a-1) exp(-t)
    /// from 0 to x divided by gamma(a), else Q(a, x) = 1 - P(a, x).
    ///     Domain  a > 0, all x; 0.0 (lower) and 1.0 (upper) for x <= 0. NaN gives NaN, and so does
    ///             an infinite x for the upper tail.
    ///     Codes   1 outside.
    ///     Error   1e-12 + 3e-14 max(a, x) relative in the tail that is computed (the upper one for
    ///             x above 1 and a), absolute in the other; with a above some 4e7 beside x a normal
    ///             approximation. About sqrt(a) rounds for x next to a: seconds at 1e24.
    static double gammad(const double& x, const double& a, const bool& lower, long& code);
    /// Exponential distribution function, 1 - exp(-rate x); 0.0 for x <= 0.
    ///     Domain  rate > 0 (a NaN rate passes and gives NaN), all x.
    ///     Codes   1 outside.
    ///     Error   absolute, 1e-16: a difference from 1.
    static double cdfexp(const double& x, const double& rate, long& code);
    /// Gamma density, rate^shape x^(shape-1) exp(-rate x) / gamma(shape); 0.0 for x < 0.
    ///     Domain  shape > 0 and rate > 0. Missing outside, at x = 0 with shape < 1, on overflow
    ///             and for a NaN x; `rate` at x = 0 with shape 1.
    static double PdfGamma(double x, double shape, double rate);
    /// Gamma distribution function P(shape, rate x), by gammad or, for shape 1, cdfexp.
    ///     Domain  shape > 0 and rate > 0, outside missing; 0.0 for x <= 0. NaN gives NaN.
    static double CdfGam(double x, double shape, double rate);
    /// Gamma quantile, zeltidfchi(p, 2 shape) / (2 rate).
    ///     Domain  0 <= p < 1, shape > 0, rate > 0, outside missing; 0.0 at p = 0, on purpose also
    ///             for a shape of 0.
    static double IdfGam(const double& p, const double& shape, const double& rate);

    // Chi-square (mcdistfun_gamma.cpp, mcdistfun_chisquare.cpp).

    /// Chi-square distribution function P(df / 2, x / 2), by gammad.
    ///     Domain  df > 0 (also its half), outside missing; 0.0 for x <= 0.
    static double CdfChi(double x, double df);
    /// Its upper tail, Q(df / 2, x / 2); 1.0 for x <= 0.
    static double SigChi(double x, double df);
    /// Chi-square quantile: the x with P(df / 2, x / 2) = p.
    ///     Domain  0 <= p < 1 and df > 0; exactly 0.0 at p = 0. A NaN df gives NaN.
    ///     Codes   1 outside; 2 a start value that overflows, or no bracket. A search that doesn't
    ///             settle ends with idfchb and leaves its code.
    ///     Error   1e-12 relative in the bulk; 3e-7 for quantiles below 5e-7 and after idfchb.
    ///             Above p = 0.5 the rounding of p comes on top.
    static double zeltidfchi(const double& p, const double& df, long& code);
    /// Chi-square quantile by bisection between a half and four times `start`.
    ///     Domain  start > 0. A NaN start gives NaN; any other NaN ends at an end of the bracket.
    ///     Codes   1 start <= 0; 2 the quantile isn't in the bracket, or gammad refuses df.
    ///     Error   1e-8 relative; running out of its 40 rounds is no failure.
    static double idfchb(const double& p, const double& df, const double& start, long& code);
    /// zeltidfchi, missing for a code.
    static double IdfChi(double p, double df);

    // Beta (mcdistfun_beta.cpp, mcdistfun_betainverse.cpp).

    /// Auxiliary function of the normal approximations, ((1 - x^2) + 2 x log x) / (1 - x)^2.
    ///     Domain  x >= 0, outside missing; 1.0 at 0, 0.0 at 1, -1.0 above 1.34e154. NaN gives NaN.
    ///     Error   beside 1 the quotient cancels: 1e-15 / (1 - x)^2, absolute.
    static double cbtaux(const double& x);
    /// Incomplete beta function ratio, integral of t^(a-1) (1-t)^(b-1) from 0 to x, over B(a, b).
    ///     Domain  a > 0 and b > 0; 0.0 for x <= 0, 1.0 for x >= 1. NaN gives NaN.
    ///     Codes   1 outside.
    ///     Error   about 1e-12 + 3e-14 (a + b) relative in the tail that is computed, absolute in
    ///             the other; with parameters of some 1e11 and more a normal approximation.
    static double cdfbet(const double& x, const double& a, const double& b, long& code);
    /// cdfbet, missing for a code.
    static double CdfBeta(double x, double a, double b);
    /// Beta quantile: the x with cdfbet(x, a, b) = p.
    ///     Domain  0 <= p <= 1, a > 0, b > 0, outside (NaN too) -1.0; but a p of 0 and 1 answers
    ///             0.0 and 1.0 whatever a and b are.
    ///     Failure -1.0, not the missing value.
    ///     Error   absolute, 2e-10, for p and 1 - p down to 1e-19; nothing below 1e-12 comes out.
    ///             On purpose the search ends after 50 rounds, settled or not: further out the
    ///             answer may lie anywhere between the quantile and an end. Precise::IdfBeta has
    ///             it.
    static double betinv(const double& p, const double& a, const double& b);
    /// betinv.
    static double IdfBeta(const double& p, const double& a, const double& b);

    // Student's t (mcdistfun_student.cpp).

    /// Density, gamma((df+1)/2) / (gamma(df/2) sqrt(pi df)) (1 + t^2/df)^(-(df+1)/2).
    ///     Domain  df > 0, all t. NaN gives NaN.
    ///     Codes   1 outside.
    ///     Error   1e-12 + 1e-14 df relative: the log gammas cancel as df grows.
    static double PdfT(double t, double df, long& code);
    /// Distribution function P(T <= t), by cdfbet; normal above 1e8 df.
    ///     Domain  df > 0, all t. NaN gives NaN.
    ///     Codes   1 outside, also for a df whose half is 0; 2 no normal value.
    ///     Error   1e-12 + 3e-14 df relative below 0, absolute above.
    static double zeltcdft(const double& t, const double& df, long& code);
    /// zeltcdft, missing for a code.
    static double CdfT(double t, double df);
    /// Upper tail P(T > t), the mirror of zeltcdft, but on purpose without its normal distribution
    /// above 1e8 df. Missing for df <= 0.
    static double SigT(double t, double df);
    /// Quantile: the t with P(T <= t) = p, as sqrt((1/b - 1) df) with b the betinv of both tails;
    /// normal from 1e8 df on.
    ///     Domain  0 < p < 1 and df > 0 (so no NaN); exactly 0.0 at 0.5. A tail so far out that b
    ///             is 0 gives infinity.
    ///     Codes   1 outside; 2 the beta quantile failed (a df whose half is 0).
    ///     Error   that of betinv, magnified near p = 0.5 and as df grows (at 1e5 df 4 digits are
    ///             left, at 1e7 none near the centre), and far out for small df, where b is small.
    ///             Precise::IdfT keeps them.
    static double zeltidft(const double& p, const double& df, long& code);
    /// zeltidft, missing for a code.
    static double IdfT(double p, double df);

    // Fisher's F (mcdistfun_fisher.cpp).

    /// Distribution function P(F <= f): cdfbet of df1 f / (df2 + df1 f), or of its complement for f
    /// from 1 on; with df1 = 1 by Student's t.
    ///     Domain  df1 > 0 and df2 > 0; 0.0 for f <= 0. NaN gives NaN.
    ///     Codes   1 outside; 2 no answer from below (a df whose half is 0).
    ///     Error   1e-12 + 3e-14 (df1 + df2), relative for f < 1, absolute above and for df1 = 1.
    static double zeltcdff(const double& f, const double& df1, const double& df2, long& code);
    /// zeltcdff, missing for a code.
    static double CdfF(double f, double df1, double df2);
    /// Upper tail P(F > f); 1.0 for f <= 0. Missing outside and without an answer from below.
    static double SigF(double f, double df1, double df2);
    /// Quantile: the f with P(F <= f) = p, as (df2 / df1) b / (1 - b) with b the betinv of p; with
    /// df1 = 1 the square of Student's quantile at (1 + p) / 2.
    ///     Domain  0 <= p < 1, df1 > 0, df2 > 0 (so no NaN); 0.0 at p = 0.
    ///     Codes   1 outside; 2 the quantile below failed, or b came out as 1.
    ///     Error   that of betinv times df2 / df1 / (1 - b)^2, absolute. Precise::IdfF keeps the
    ///             digits.
    static double zeltidff(const double& p, const double& df1, const double& df2, long& code);
    /// zeltidff, missing for a code.
    static double IdfF(double p, double df1, double df2);

    // Binomial and hypergeometric (mcdistfun_binomial.cpp, mcdistfun_hypergeometric.cpp).

    /// Log of the binomial coefficient n over k, for real n and k too; never below 0.0.
    ///     Domain  0 <= k <= n. NaN gives NaN.
    ///     Codes   1 outside.
    static double dnlbnc(const double& n, const double& k, long& code);
    /// Binomial distribution function P(X <= x) of n trials with success probability p.
    ///     Domain  all x (cut to a whole number), whole n >= 1, 0 <= p <= 1. A NaN x or p gives NaN
    ///             where no end of the range decides.
    ///     Codes   3 a fractional (or NaN) n; 1 n < 1 or p outside [0, 1]; missing with both.
    ///     Error   1e-12 + 2e-14 n relative; a normal approximation where the largest term of the
    ///             sum is below exp(-708). About sqrt(n) terms.
    static double CdfBin(double x, double n, double p, long& code);
    /// Binomial probability P(X = x). On purpose n need not be whole.
    ///     Domain  0 <= p <= 1 and n >= 1; 0.0 for an x that is negative, fractional, NaN or above
    ///             n. A NaN n gives NaN for an x in its range.
    ///     Codes   1 p outside [0, 1] or NaN, or n < 1; 2 a log probability above 709; missing with
    ///             both.
    static double PdfBin(double x, double n, double p, long& code);
    /// Binomial quantile: on purpose the largest k with P(X <= k) <= prob, one below the usual
    /// quantile (Precise::IdfBin). Where P(X <= 0) is above prob already it is -1.0 if the search
    /// starts at 0, but 0.0 if it comes down from further up.
    ///     Domain  0 <= prob <= 1, whole n >= 1, 0 <= p <= 1. Infinite n gives NaN.
    ///     Codes   1 a fractional (or NaN) n; 2 n < 1, or p or prob outside [0, 1] or NaN. On
    ///             purpose these two are exchanged against the library's sense of them. Missing
    ///             with both.
    static double IdfBin(double prob, double n, double p, long& code);
    /// Hypergeometric probability P(X = x): x successes among `draws` from `population`, which
    /// holds `successes`.
    ///     Domain  0 < successes <= population, 0 < draws <= population, and x in the support.
    ///             Outside, on purpose also outside of the support, missing and not 0.0.
    static double PdfHyper(long x, long population, long successes, long draws);
    /// Hypergeometric distribution function P(X <= x), for populations up to 1,000. On purpose a
    /// larger one answers a step at the mean (0.0 below, 1.0 above), but above 10,000 a normal
    /// distribution where both groups are large enough. Precise::CDFHyper has the smooth function.
    ///     Domain  whole population, successes and draws, at least 1 and at most the population,
    ///             itself at most 2^63; x is cut to a whole number. NaN x gives NaN.
    ///     Codes   1 outside.
    ///     Error   1e-12 relative up to 1,000. Beyond a population of some 1e15 even the log
    ///             probability is rounding, and the answer need not be a probability.
    static double CDFHyper(double x, double population, double successes, double draws, int& code);

    // Non-central distributions (mcdistfun_noncentral.cpp, mcdistfun_noncentral_t.cpp).

    /// Non-central beta distribution function: the sum over j of Poisson(lambda / 2) weights times
    /// cdfbet(x, a + j, b).
    ///     Domain  a > 0, b > 0, lambda >= 0 (so no NaN); 0.0 for x <= 0, 1.0 for x >= 1. A NaN x
    ///             gives NaN.
    ///     Codes   1 outside; 2 no beta ratio, or 60,000 terms don't reach `tolerance`. Where a
    ///             starting factor leaves the range of exp the answer is 0.0 with code 0.
    ///     Error   `tolerance`, absolute. From a tolerance of 1 on the first term is the answer.
    static double ncdbet(const double& x, const double& a, const double& b, const double& lambda,
                         long& code, double tolerance);
    /// Non-central F distribution function, ncdbet(df1 f / (df2 + df1 f), df1 / 2, df2 / 2,
    /// lambda).
    ///     Domain  df1 > 0, df2 > 0, lambda >= 0; missing outside and on a code of ncdbet; 0.0 for
    ///             f <= 0.
    static double NonCentralCdfF(double f, double df1, double df2, double lambda, double tolerance);
    /// Non-central chi-square distribution function: the sum over j of Poisson(lambda / 2) weights
    /// times P(df / 2 + j, x / 2).
    ///     Domain  df > 0 and lambda >= 0 (so no NaN); 0.0 for x <= 0. Missing outside, where
    ///             gammad has no answer, a factor overflows, or 60,000 terms don't do (so for a NaN
    ///             x).
    ///     Error   1e-12 absolute: a small lower tail keeps no relative accuracy.
    static double NonCentralCdfChi(double x, double df, double lambda);
    /// Non-central t distribution function, P((Z + delta) / sqrt(Chi2(df) / df) <= t).
    ///     Domain  df > 0, all t and delta; a NaN is missing, but at t = 0, where a NaN delta gives
    ///             NaN. Beyond |t| of 1.3e154 a step at delta; a t or a delta whose square vanishes
    ///             is missing. Missing outside, where cdfbet has no answer, a factor overflows, or
    ///             60,000 terms don't do.
    ///     Error   1e-12 absolute.
    static double NonCentralCdfT(double t, double df, double delta);
    /// Density of the non-central t distribution.
    ///     Domain  df > 0, all t and delta. A NaN gives code 2, but at t = 0 a NaN delta or df
    ///             counts as too small for exp and gives 0.0.
    ///     Codes   1 outside; 2 a term or an index out of range.
    ///     Error   1e-10 of the sum; terms of opposite sign cancel where t and delta differ in
    ///             sign.
    static double NonCentralPdfT(double t, double df, double delta, long& code);

    // The non-centrality v that gives a wanted probability p (mcdistfun_noncentrality.cpp). The
    // distribution function falls as v grows; where it is missing on the way, so is the answer.

    /// The v >= 0 with NonCentralCdfChi(x, df, v) = p; 0.0 if p isn't below the central one.
    ///     Domain  df > 0, 0 <= p <= 1, tolerance >= 0 (so no NaN), outside missing.
    ///     Error   ends when the probability is within `tolerance` of p and the bracket no wider,
    ///             or where the bracket's ends agree to 8 units in the last place.
    static double FindNCParamChi(double x, double df, double p, double tolerance);
    /// The v >= 0 with NonCentralCdfF(f, df1, df2, v, tolerance) = p; 0.0 if p isn't below the
    /// central one.
    ///     Domain  df1 > 0, df2 > 0, 0 <= p <= 1, tolerance >= 0 (so no NaN), outside missing.
    ///     Error   as FindNCParamChi, but the width counts relative to the ends where they exceed
    ///             1, and the probability itself is only computed to `tolerance`.
    static double FindNCParamF(double f, double df1, double df2, double p, double tolerance);
    /// The v, of either sign, with NonCentralCdfT(t, df, v) = p.
    ///     Domain  t >= 0, df > 0, 0 <= p <= 1, tolerance >= 0 (so no NaN), outside missing.
    ///             Missing too where v lies beyond 60,000 times the larger of t and 1, as it seems
    ///             to for a huge t: there the distribution function stays 1.
    ///     Error   as FindNCParamChi.
    static double FindNCParamT(double t, double df, double p, double tolerance);

    // Percentiles of a frequency table, limits of the median (mcdistfun_percentile.cpp).

    /// The percentile `percent` of a frequency table of `count` ascending values x with their
    /// frequencies: method <= 0 between the cumulative midpoints; 1 within classes of the width
    /// y[0] around each value; from 2 on within `method` classes that begin at the boundaries y.
    ///     Errors  `status` is -1 for fewer than 2 values, or a vector shorter than what is asked
    ///             of it; 1 where the percentile lies below the first midpoint, 2 above the last;
    ///             else 0. `result` is missing unless a value is found, also with status 0. A NaN
    ///             percentage finds none.
    static void GPTile(long count, double percent, const std::vector<double>& x,
                       const std::vector<double>& freq, const std::vector<double>& y, long method,
                       double& result, long& status);
    /// Confidence limits of the median from the order statistics of a frequency table with the
    /// total frequency n: the values of rank r + 1 and n - r, r the binomial quantile of half the
    /// error; `achieved` is the level in percent that they have, missing unless `wantLevel`.
    ///     Domain  whole n >= 1, level in percent; outside all three are missing. n = 2, and a
    ///             level that no rank reaches, give the extremes and 100.0. `lower` is the last
    ///             value when no cumulative frequency reaches its rank, `upper` the first one when
    ///             the rest never falls below its own.
    static void Mednci(long count, const std::vector<double>& x, const std::vector<double>& freq,
                       double n, double level, bool wantLevel, double& lower, double& upper,
                       double& achieved);
};

}  // namespace MCMath_850

#endif
