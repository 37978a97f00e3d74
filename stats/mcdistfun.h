#ifndef VELSCORE_STATS_MCDISTFUN_H
#define VELSCORE_STATS_MCDISTFUN_H

#include <cstdint>
#include <vector>

#include "stats/export.h"

namespace MCMath_850 {

extern VELSTATS_API std::int32_t maxInt;   ///< 2147483647, largest count of rounds or terms
extern VELSTATS_API double mEpsilon;       ///< 2^-52, unit of the closeness test of IdfBin

/// Distribution functions: normal, gamma, beta, binomial, hypergeometric and non-central families,
/// with percentiles of frequency tables. docs/statistics.md has the measured accuracy of each.
///
/// Two kinds of names. Lower-case names are the working routines: const references, and where they
/// can fail in more than one way a last `long& code`. Capitalised names are what others call.
///
/// Errors  With a code: 0 on entry, 1 an argument outside the domain, 2 the computation failed
///         (no convergence, or a quantity that cannot be represented); the binomial functions and
///         CDFHyper have codes of their own, told at each. Without a code: the missing value
///         (MCCommon_850::MCMV::Missing()) stands for every failure; betinv and IdfBeta answer -1.0.
///         Nothing is thrown, nothing is logged, no function allocates.
/// NaN     A NaN argument gives NaN or a failure, except where a function's comment in its source
///         file says which number it gives. No loop runs past its bound for it.
/// Threads All functions are reentrant and keep no state.
class VELSTATS_API MCDistFun {
public:
    // Normal family (mcdistfun_normal.cpp).
    static double probit(const double& p);   ///< x with Phi(x) = p; missing unless 0 < p < 1
    static double derf(const double& x);     ///< error function
    static double derfc(const double& x);    ///< its complement
    static double prbnrm(const double& z);   ///< Phi(z)
    static double CdfStdNorm(double z);
    static double CdfNorm(double x, double mu, double sigma);   ///< missing unless sigma > 0
    static double IdfStdNorm(double p);                         ///< missing unless 0 < p < 1
    static double IdfNorm(double p, double mu, double sigma);   ///< missing unless also sigma > 0
    static double PdfNormalStandard(double z);
    static double PdfNormal(double x, double mu, double sigma); ///< missing if sigma is 0

    // Log gamma, gamma and exponential distributions (mcdistfun_loggamma.cpp, mcdistfun_gamma.cpp).
    static double dnlgam(const double& x);      ///< log of the gamma function; missing if x <= 0
    static double zeltdnlgam(const double& x);  ///< the same
    static double gammad(const double& x, const double& a, const bool& lower, long& code);
    static double cdfexp(const double& x, const double& rate, long& code);
    static double PdfGamma(double x, double shape, double rate);
    static double CdfGam(double x, double shape, double rate);
    static double IdfGam(const double& p, const double& shape, const double& rate);

    // Chi-square (mcdistfun_gamma.cpp, mcdistfun_chisquare.cpp).
    static double CdfChi(double x, double df);
    static double SigChi(double x, double df);  ///< upper tail
    static double zeltidfchi(const double& p, const double& df, long& code);
    static double idfchb(const double& p, const double& df, const double& start, long& code);
    static double IdfChi(double p, double df);

    // Beta (mcdistfun_beta.cpp, mcdistfun_betainverse.cpp).
    static double cbtaux(const double& x);
    static double cdfbet(const double& x, const double& a, const double& b, long& code);
    static double CdfBeta(double x, double a, double b);
    static double betinv(const double& p, const double& a, const double& b);   ///< -1.0 on failure
    static double IdfBeta(const double& p, const double& a, const double& b);  ///< -1.0 on failure

    // Student's t (mcdistfun_student.cpp).
    static double PdfT(double t, double df, long& code);
    static double zeltcdft(const double& t, const double& df, long& code);
    static double CdfT(double t, double df);
    static double SigT(double t, double df);  ///< upper tail
    static double zeltidft(const double& p, const double& df, long& code);
    static double IdfT(double p, double df);

    // Fisher's F (mcdistfun_fisher.cpp).
    static double zeltcdff(const double& f, const double& df1, const double& df2, long& code);
    static double CdfF(double f, double df1, double df2);
    static double SigF(double f, double df1, double df2);  ///< upper tail
    static double zeltidff(const double& p, const double& df1, const double& df2, long& code);
    static double IdfF(double p, double df1, double df2);

    // Binomial and hypergeometric (mcdistfun_binomial.cpp, mcdistfun_hypergeometric.cpp).
    static double dnlbnc(const double& n, const double& k, long& code);  ///< log of n over k
    static double CdfBin(double x, double n, double p, long& code);
    static double PdfBin(double x, double n, double p, long& code);
    static double IdfBin(double prob, double n, double p, long& code);
    static double PdfHyper(long x, long population, long successes, long draws);
    static double CDFHyper(double x, double population, double successes, double draws, int& code);

    // Non-central distributions (mcdistfun_noncentral.cpp, mcdistfun_noncentral_t.cpp).
    static double ncdbet(const double& x, const double& a, const double& b, const double& lambda,
                         long& code, double tolerance);
    static double NonCentralCdfF(double f, double df1, double df2, double lambda, double tolerance);
    static double NonCentralCdfChi(double x, double df, double lambda);
    static double NonCentralCdfT(double t, double df, double delta);
    static double NonCentralPdfT(double t, double df, double delta, long& code);

    // The non-centrality that gives a wanted probability (mcdistfun_noncentrality.cpp).
    static double FindNCParamChi(double x, double df, double p, double tolerance);
    static double FindNCParamF(double f, double df1, double df2, double p, double tolerance);
    static double FindNCParamT(double t, double df, double p, double tolerance);

    // Percentiles of a frequency table, limits of the median (mcdistfun_percentile.cpp).
    static void GPTile(long count, double percent, const std::vector<double>& x,
                       const std::vector<double>& freq, const std::vector<double>& y, long method,
                       double& result, long& status);
    static void Mednci(long count, const std::vector<double>& x, const std::vector<double>& freq,
                       double n, double level, bool wantLevel, double& lower, double& upper,
                       double& achieved);
};

}  // namespace MCMath_850

#endif
