#ifndef VELSCORE_STATS_PRECISE_H
#define VELSCORE_STATS_PRECISE_H

// The distributions of MCDistFun once more, through Boost.Math: the usual definitions, to almost
// full double precision, but for the tails of the non-central t. Of the scores only limits at
// another confidence level than 95% come from here, by the quantiles of t and of the normal
// distribution: all else keeps the algorithms of MCDistFun. docs/statistics.md shows both columns
// of errors and says which to choose.
//
// Everything here is inline; nothing is exported. Headers of Boost are enough to use it.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <exception>
#include <limits>

#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/binomial.hpp>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/complement.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/gamma.hpp>
#include <boost/math/distributions/hypergeometric.hpp>
#include <boost/math/distributions/non_central_beta.hpp>
#include <boost/math/distributions/non_central_chi_squared.hpp>
#include <boost/math/distributions/non_central_f.hpp>
#include <boost/math/distributions/non_central_t.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/tools/toms748_solve.hpp>

/// Precise distribution functions, named as those of MCDistFun and with its parameters, without its
/// codes and tolerances.
///
/// Domain  as the textbook has it. Whatever lies outside, NaN too, answers NaN; a true infinity
///         answers infinity. Nothing throws. What Boost can't compute is NaN as well: a
///         non-centrality above kLargestNonCentrality, a quantile of a beta or F distribution with
///         a parameter above kLargestShape or one that its search doesn't find (probabilities of
///         some 1e-300), a quantile of more than 2^53 trials.
/// Differs from MCDistFun where that keeps a definition of its own: IdfBin is the smallest k with
///         P(X <= k) >= prob, PdfHyper is 0.0 outside the support, CDFHyper is smooth for any
///         population (up to 2^32 - 1), IdfBeta answers NaN on failure.
/// Threads all functions are reentrant.
namespace MCMath_850::Precise {

namespace policies = boost::math::policies;

/// No exceptions: a domain error is NaN. Discrete quantiles round up, which is the usual
/// definition.
using Policy = policies::policy<policies::domain_error<policies::ignore_error>,
                                policies::pole_error<policies::ignore_error>,
                                policies::overflow_error<policies::ignore_error>,
                                policies::underflow_error<policies::ignore_error>,
                                policies::denorm_error<policies::ignore_error>,
                                policies::rounding_error<policies::ignore_error>,
                                policies::evaluation_error<policies::ignore_error>,
                                policies::indeterminate_result_error<policies::ignore_error>,
                                policies::discrete_quantile<policies::integer_round_up>>;

/// Boost's normal distribution.
using Normal = boost::math::normal_distribution<double, Policy>;
/// Boost's gamma distribution.
using GammaDistribution = boost::math::gamma_distribution<double, Policy>;
/// Boost's chi-squared distribution.
using ChiSquared = boost::math::chi_squared_distribution<double, Policy>;
/// Boost's beta distribution.
using BetaDistribution = boost::math::beta_distribution<double, Policy>;
/// Boost's Student's t distribution.
using StudentsT = boost::math::students_t_distribution<double, Policy>;
/// Boost's F distribution.
using FisherF = boost::math::fisher_f_distribution<double, Policy>;
/// Boost's binomial distribution.
using BinomialDistribution = boost::math::binomial_distribution<double, Policy>;
/// Boost's hypergeometric distribution.
using HypergeometricDistribution = boost::math::hypergeometric_distribution<double, Policy>;
/// Boost's non-central beta distribution.
using NonCentralBeta = boost::math::non_central_beta_distribution<double, Policy>;
/// Boost's non-central F distribution.
using NonCentralF = boost::math::non_central_f_distribution<double, Policy>;
/// Boost's non-central chi-squared distribution.
using NonCentralChiSquared = boost::math::non_central_chi_squared_distribution<double, Policy>;
/// Boost's non-central t distribution.
using NonCentralT = boost::math::non_central_t_distribution<double, Policy>;

/// What is answered outside of a domain.
inline double NaN() { return std::numeric_limits<double>::quiet_NaN(); }

/// Whether all of them are numbers. Boost asserts nothing about NaN in some places.
template <class... T>
bool AreNumbers(T... x)
{
    return !(std::isnan(x) || ...);
}

/// P(X <= x).
template <class Distribution>
double Lower(const Distribution& d, double x)
{
    return std::isnan(x) ? x : boost::math::cdf(d, x);
}
/// P(X > x), without a difference from 1.
template <class Distribution>
double Upper(const Distribution& d, double x)
{
    return std::isnan(x) ? x : boost::math::cdf(boost::math::complement(d, x));
}
/// The density at x.
template <class Distribution>
double Density(const Distribution& d, double x)
{
    return std::isnan(x) ? x : boost::math::pdf(d, x);
}
/// The x with P(X <= x) = p; NaN where Boost's search fails, which it tells by an exception
/// whatever the policy.
template <class Distribution>
double Quantile(const Distribution& d, double p)
{
    if (!(p >= 0.0 && p <= 1.0)) return NaN();
    try {
        return boost::math::quantile(d, p);
    } catch (const std::exception&) {
        return NaN();
    }
}

// Normal family.
/// The error function.
inline double Erf(double x) { return boost::math::erf(x, Policy()); }
/// 1 - Erf(x), without the difference.
inline double Erfc(double x) { return boost::math::erfc(x, Policy()); }
/// P(X <= x) of the normal distribution of mean mu and standard deviation sigma.
inline double CdfNorm(double x, double mu, double sigma) { return Lower(Normal(mu, sigma), x); }
/// The same of the standard normal distribution.
inline double CdfStdNorm(double z) { return CdfNorm(z, 0.0, 1.0); }
/// The quantile of the normal distribution of mean mu and standard deviation sigma.
inline double IdfNorm(double p, double mu, double sigma) { return Quantile(Normal(mu, sigma), p); }
/// The same of the standard normal distribution.
inline double IdfStdNorm(double p) { return IdfNorm(p, 0.0, 1.0); }
/// The density of the standard normal distribution.
inline double PdfNormalStandard(double z) { return Density(Normal(0.0, 1.0), z); }
/// The density of the normal distribution of mean mu and standard deviation sigma.
inline double PdfNormal(double x, double mu, double sigma)
{
    return sigma > 0.0 ? PdfNormalStandard((x - mu) / sigma) / sigma : NaN();
}

// Gamma family. `rate` is the reciprocal of Boost's scale.
/// The logarithm of the gamma function, of x > 0.
inline double LogGamma(double x) { return x > 0.0 ? boost::math::lgamma(x, Policy()) : NaN(); }
/// The incomplete gamma function of shape a over the complete one: from 0 to x, or from x on.
inline double GammaRatio(double x, double a, bool lower)
{
    if (!(a > 0.0) || std::isnan(x)) return NaN();
    if (x <= 0.0) return lower ? 0.0 : 1.0;
    return lower ? boost::math::gamma_p(a, x, Policy()) : boost::math::gamma_q(a, x, Policy());
}
/// P(X <= x) of the exponential distribution.
inline double CdfExp(double x, double rate)
{
    if (!(rate > 0.0) || std::isnan(x)) return NaN();
    return x <= 0.0 ? 0.0 : -std::expm1(-rate * x);
}
/// P(X <= x) of the gamma distribution.
inline double CdfGam(double x, double shape, double rate)
{
    return rate > 0.0 ? GammaRatio(x * rate, shape, true) : NaN();
}
/// The density of the gamma distribution.
inline double PdfGamma(double x, double shape, double rate)
{
    if (!(shape > 0.0) || !(rate > 0.0) || std::isnan(x)) return NaN();
    if (x < 0.0) return 0.0;
    if (x > 0.0) return boost::math::pdf(GammaDistribution(shape), x * rate) * rate;
    if (shape == 1.0) return rate;  // at 0 the limit from above
    return shape > 1.0 ? 0.0 : std::numeric_limits<double>::infinity();
}
/// The quantile of the gamma distribution.
inline double IdfGam(double p, double shape, double rate)
{
    return rate > 0.0 ? Quantile(GammaDistribution(shape), p) / rate : NaN();
}
/// P(X <= x) of the chi-squared distribution.
inline double CdfChi(double x, double df) { return GammaRatio(x / 2.0, df / 2.0, true); }
/// P(X > x) of the chi-squared distribution.
inline double SigChi(double x, double df) { return GammaRatio(x / 2.0, df / 2.0, false); }
/// The quantile of the chi-squared distribution.
inline double IdfChi(double p, double df) { return Quantile(ChiSquared(df), p); }

// Beta family.
/// P(X <= x) of the beta distribution.
inline double CdfBeta(double x, double a, double b)
{
    if (!(a > 0.0) || !(b > 0.0) || std::isnan(x)) return NaN();
    if (x <= 0.0) return 0.0;
    return x >= 1.0 ? 1.0 : boost::math::ibeta(a, b, x, Policy());
}
/// Beyond it the search for a quantile of the beta or F distribution loses its way.
inline constexpr double kLargestShape = 1e15;
/// The quantile of the beta distribution.
inline double IdfBeta(double p, double a, double b)
{
    return std::max(a, b) <= kLargestShape ? Quantile(BetaDistribution(a, b), p) : NaN();
}
/// The density of Student's t distribution.
inline double PdfT(double t, double df) { return Density(StudentsT(df), t); }
/// P(T <= t) of Student's t distribution.
inline double CdfT(double t, double df) { return Lower(StudentsT(df), t); }
/// P(T > t) of Student's t distribution.
inline double SigT(double t, double df) { return Upper(StudentsT(df), t); }
/// The quantile of Student's t distribution.
inline double IdfT(double p, double df) { return Quantile(StudentsT(df), p); }
/// f, not beyond what Boost takes: it refuses a negative or an infinite one. A NaN passes.
inline double ClampF(double f) { return std::clamp(f, 0.0, 1e300); }
/// P(F <= f) of the F distribution.
inline double CdfF(double f, double df1, double df2) { return Lower(FisherF(df1, df2), ClampF(f)); }
/// P(F > f) of the F distribution.
inline double SigF(double f, double df1, double df2) { return Upper(FisherF(df1, df2), ClampF(f)); }
/// The quantile of the F distribution.
inline double IdfF(double p, double df1, double df2)
{
    return std::max(df1, df2) <= kLargestShape ? Quantile(FisherF(df1, df2), p) : NaN();
}

// Discrete distributions.
/// Beyond it steps of one don't move.
inline constexpr double kMostTrials = 9007199254740992.0;  // 2^53
/// Whether n is a whole number from 1 on.
inline bool IsCount(double n) { return n >= 1.0 && n == std::floor(n) && std::isfinite(n); }

/// The logarithm of n over k.
inline double LogBinomial(double n, double k)
{
    if (!(k >= 0.0 && k <= n)) return NaN();
    if (k == 0.0 || k == n) return 0.0;
    // n over k = 1 / ((n + 1) B(k + 1, n - k + 1)); the beta function does not cancel.
    const double beta = boost::math::beta(k + 1.0, n - k + 1.0, Policy());
    if (beta > 0.0) return -std::log(beta) - std::log1p(n);
    return LogGamma(n + 1.0) - (LogGamma(k + 1.0) + LogGamma(n - k + 1.0));
}
/// P(X <= x) of n trials of probability p.
inline double CdfBin(double x, double n, double p)
{
    if (!IsCount(n) || !(p >= 0.0 && p <= 1.0) || std::isnan(x)) return NaN();
    const double k = std::floor(x);
    if (k < 0.0) return 0.0;
    return k >= n ? 1.0 : boost::math::cdf(BinomialDistribution(n, p), k);
}
/// P(X = x) of n trials of probability p; 0.0 outside the support.
inline double PdfBin(double x, double n, double p)
{
    if (!(n >= 1.0) || !(p >= 0.0 && p <= 1.0) || std::isnan(x)) return NaN();
    if (x < 0.0 || x > n || x != std::floor(x)) return 0.0;
    return boost::math::pdf(BinomialDistribution(n, p), x);
}
/// The smallest k with P(X <= k) >= prob.
inline double IdfBin(double prob, double n, double p)
{
    if (!IsCount(n) || n > kMostTrials || !(p >= 0.0 && p <= 1.0)) return NaN();
    if (!(prob >= 0.0 && prob <= 1.0)) return NaN();
    if (p == 0.0 || prob == 0.0) return 0.0;
    if (p == 1.0 || prob == 1.0) return n;
    double k = boost::math::quantile(BinomialDistribution(n, p), prob);
    // Boost may round a probability that is met exactly to the neighbour; step to the definition.
    while (k > 0.0 && CdfBin(k - 1.0, n, p) >= prob) k -= 1.0;
    while (k < n && CdfBin(k, n, p) < prob) k += 1.0;
    return k;
}

/// Whether there is such a hypergeometric distribution, and Boost can take it.
inline bool IsHypergeometric(double population, double successes, double draws)
{
    return IsCount(population) && IsCount(successes) && IsCount(draws) && successes <= population &&
           draws <= population && population <= std::numeric_limits<std::uint32_t>::max();
}
/// Boost's distribution of what IsHypergeometric() says yes to.
inline HypergeometricDistribution MakeHypergeometric(double population, double successes,
                                                     double draws)
{
    return {static_cast<unsigned>(successes), static_cast<unsigned>(draws),
            static_cast<unsigned>(population)};
}
/// 0.0 outside the support.
inline double PdfHyper(double x, double population, double successes, double draws)
{
    if (!IsHypergeometric(population, successes, draws) || std::isnan(x)) return NaN();
    const double least = std::max(0.0, successes + draws - population);
    if (x < least || x > std::min(successes, draws) || x != std::floor(x)) return 0.0;
    return boost::math::pdf(MakeHypergeometric(population, successes, draws),
                            static_cast<unsigned>(x));
}
/// P(X <= x) of the hypergeometric distribution.
inline double CDFHyper(double x, double population, double successes, double draws)
{
    if (!IsHypergeometric(population, successes, draws) || std::isnan(x)) return NaN();
    const double k = std::floor(x);
    if (k < std::max(0.0, successes + draws - population)) return 0.0;
    if (k >= std::min(successes, draws)) return 1.0;
    return boost::math::cdf(MakeHypergeometric(population, successes, draws),
                            static_cast<unsigned>(k));
}

// Non-central distributions. Boost's central ones serve at a non-centrality of 0.
/// Of the non-central t it is delta squared. Beyond twice that, Boost counts the terms of its sums
/// wrongly, in an int.
inline constexpr double kLargestNonCentrality = 1e9;
/// Whether Boost can take a non-centrality.
inline bool IsNonCentrality(double lambda)
{
    return lambda >= 0.0 && lambda <= kLargestNonCentrality;
}
/// P(X <= x) of the non-central beta distribution.
inline double NonCentralCdfBeta(double x, double a, double b, double lambda)
{
    if (!(a > 0.0) || !(b > 0.0) || !IsNonCentrality(lambda) || std::isnan(x)) return NaN();
    if (x <= 0.0 || x >= 1.0 || lambda == 0.0) return CdfBeta(x, a, b);
    return boost::math::cdf(NonCentralBeta(a, b, lambda), x);
}
/// P(F <= f) of the non-central F distribution.
inline double NonCentralCdfF(double f, double df1, double df2, double lambda)
{
    if (!IsNonCentrality(lambda)) return NaN();
    if (lambda == 0.0 || f <= 0.0) return CdfF(f, df1, df2);
    return Lower(NonCentralF(df1, df2, lambda), f);
}
/// P(X <= x) of the non-central chi-squared distribution.
inline double NonCentralCdfChi(double x, double df, double lambda)
{
    if (!IsNonCentrality(lambda)) return NaN();
    if (lambda == 0.0 || x <= 0.0) return CdfChi(x, df);
    return Lower(NonCentralChiSquared(df, lambda), x);
}
/// P(T <= t) of the non-central t distribution.
inline double NonCentralCdfT(double t, double df, double delta)
{
    if (!AreNumbers(t, df) || !IsNonCentrality(delta * delta)) return NaN();
    return delta == 0.0 ? CdfT(t, df) : Lower(NonCentralT(df, delta), t);
}
/// A difference of two distribution functions over t: near t = 0, and far out against delta, it
/// loses its digits, and MCDistFun::NonCentralPdfT keeps them.
inline double NonCentralPdfT(double t, double df, double delta)
{
    if (!AreNumbers(t, df) || !IsNonCentrality(delta * delta)) return NaN();
    return delta == 0.0 ? PdfT(t, df) : Density(NonCentralT(df, delta), t);
}

/// The v with distribution(v) = p for one that falls in v, between two ends that enclose it; by
/// Alefeld, Potra and Shi (1995), Algorithm 748.
template <class F>
double SolveFalling(const F& distribution, double p, double lo, double hi)
{
    const auto difference = [&](double v) { return distribution(v) - p; };
    std::uintmax_t rounds = 200;
    const double atLo = difference(lo);
    const double atHi = difference(hi);
    if (!(atLo >= 0.0 && atHi <= 0.0)) return NaN();
    if (atLo == 0.0) return lo;
    if (atHi == 0.0) return hi;
    const auto ends = boost::math::tools::toms748_solve(
        difference, lo, hi, atLo, atHi, boost::math::tools::eps_tolerance<double>(50), rounds,
        Policy());
    return ends.first + (ends.second - ends.first) / 2.0;
}
/// The same over v >= 0; 0.0 where p is not below distribution(0).
template <class F>
double SolveFallingFromZero(const F& distribution, double p, double start)
{
    if (!(p > 0.0 && p <= 1.0) || std::isnan(distribution(0.0))) return NaN();
    if (distribution(0.0) <= p) return 0.0;
    double hi = std::clamp(start, 1.0, kLargestNonCentrality);
    while (distribution(hi) > p) {
        hi *= 2.0;
        if (hi > kLargestNonCentrality) return NaN();
    }
    return SolveFalling(distribution, p, 0.0, hi);
}
/// The non-centrality with which a chi-squared distribution has P(X <= x) = p.
inline double FindNCParamChi(double x, double df, double p)
{
    return SolveFallingFromZero([=](double v) { return NonCentralCdfChi(x, df, v); }, p, x);
}
/// The non-centrality with which an F distribution has P(F <= f) = p.
inline double FindNCParamF(double f, double df1, double df2, double p)
{
    return SolveFallingFromZero([=](double v) { return NonCentralCdfF(f, df1, df2, v); }, p,
                                f * df1);
}
/// The non-centrality with which a t distribution has P(T <= t) = p.
inline double FindNCParamT(double t, double df, double p)
{
    if (!(t >= 0.0) || !(df > 0.0) || !(p > 0.0 && p < 1.0) || !std::isfinite(t)) return NaN();
    const auto distribution = [=](double v) { return NonCentralCdfT(t, df, v); };
    const double widest = std::sqrt(kLargestNonCentrality);
    double width = std::clamp(t, 1.0, widest);
    while (distribution(width) > p || distribution(-width) < p) {
        width *= 2.0;
        if (width > widest) return NaN();
    }
    return SolveFalling(distribution, p, -width, width);
}

}  // namespace MCMath_850::Precise

#endif
