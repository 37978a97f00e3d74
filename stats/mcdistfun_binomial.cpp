#include <algorithm>
#include <cmath>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "stats/numerics.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

namespace {

// The codes of this family differ from the library's and from one another, on purpose.
constexpr long kCdfBinNotWhole = 3;
constexpr long kCdfBinBadArgument = 1;
constexpr long kIdfBinNotWhole = 1;
constexpr long kIdfBinBadArgument = 2;

constexpr double kProductLimit = 33.0;  // n up to which the binomial coefficient is multiplied out
constexpr double kCloseUlps = 128.0;    // of IdfBin's start, in units of mEpsilon
constexpr double kLastWhole = 9007199254740992.0;  // 2^53; beyond, x - 1 may be x

struct Binomial {
    double n;
    double p;
    double q;
    double n1;  // n + 1
};

// Log of P(X = d), or what stands for it at the two ends.
double LogProbability(const Binomial& w, double d)
{
    if (d == 0.0) return std::log(w.q) * w.n;
    if (d == w.n) return std::log(w.p) * w.n;
    const double c =
        MCDistFun::dnlgam(w.n1) - MCDistFun::dnlgam(d + 1.0) - MCDistFun::dnlgam(w.n1 - d);
    if (w.p == 0.5) return w.n * -kLn2 + c;
    return std::log(w.p) * d + c + (w.n - d) * std::log(w.q);
}

// P(X <= k) from f = P(X = d), d the smaller of k and the mode m: down to 0, then up from m to k,
// each way for as long as the sum still changes.
double SumFrom(const Binomial& w, double k, double m, double d, double f)
{
    double sum = f;
    double term = f;
    for (double i = d - 1.0; i >= 0.0; i -= 1.0) {
        term = term * ((i + 1.0) / (w.n - i)) * (w.q / w.p);
        const double next = sum + term;
        if (next == sum) break;
        sum = next;
    }
    double up = f;  // m < k below, so d is m
    for (double i = m + 1.0; i <= k; i += 1.0) {
        up = up * ((w.n1 - i) / i) * (w.p / w.q);
        const double next = sum + up;
        if (next == sum) break;
        sum = next;
    }
    return std::min(sum, 1.0);
}

// Peizer and Pratt (1968), for a start too small for exp or too large to step from.
double NormalApproximation(const Binomial& w, double k)
{
    const double e = k / w.n - w.p;
    const double d2 = (0.5 / w.n + e + 1.0) - 1.0;
    if (d2 == 0.0) return 0.5;
    const double u = d2 + w.p;
    const double v = std::log((1.0 - u) / w.q) * (1.0 - u) + std::log(u / w.p) * u;
    if (v <= 0.0) return 0.5;
    const double correction =
        ((w.q / (k + 1.0) - w.p / (w.n - k)) + (0.5 - w.p) / w.n1) / (50.0 * w.n);
    const double z = std::sqrt(2.0 * v) *
                     ((e + (2.0 - w.p) / (3.0 * w.n) + correction) / std::fabs(d2)) *
                     (w.n / std::sqrt(w.n + 0.16666666666666666));
    return MCDistFun::prbnrm(z);
}

}  // namespace

// Method  the product for whole n up to 33, else log gammas; never below 0.0.
double MCDistFun::dnlbnc(const double& n, const double& k, long& code)
{
    code = kOk;
    if (n < 0.0 || k < 0.0 || n < k) {
        code = kBadArgument;
        return MCMV::Missing();
    }
    if (k == 0.0 || k == n) return 0.0;
    if (n <= kProductLimit && IsWhole(n) && IsWhole(k)) {
        const double m = n < 2.0 * k ? n - k : k;
        double c = 1.0;
        for (double i = 0.0; i < m; i += 1.0) c = c * ((n - i) / (m - i));
        return std::log(c);
    }
    const double L = dnlgam(n + 1.0) - (dnlgam(k + 1.0) + dnlgam(n - k + 1.0));
    return L < 0.0 ? 0.0 : L;
}

// Method  the sum outwards from the smaller of x and the mode; where its first term is below
//         exp(-708), or stands beyond 2^53 so that steps of one don't move, a normal approximation.
double MCDistFun::CdfBin(double x, double n, double p, long& code)
{
    code = kOk;
    if (!IsWhole(n)) {
        code = kCdfBinNotWhole;
        return MCMV::Missing();
    }
    if (n < 1.0 || p < 0.0 || p > 1.0) {
        code = kCdfBinBadArgument;
        return MCMV::Missing();
    }
    const Binomial w{n, p, 1.0 - p, n + 1.0};
    const double k = std::floor(x);
    if (p == 0.0) return k >= 0.0 ? 1.0 : 0.0;
    if (p == 1.0) return k >= n ? 1.0 : 0.0;
    if (k < 0.0) return 0.0;
    if (k == 0.0) return ExpOrZero(std::log(w.q) * n);
    if (k >= n) return 1.0;
    const double m = std::trunc(p * w.n1);
    const double d = std::min(k, m);
    const double L = LogProbability(w, d);
    const bool canStep = L >= kLogFloor && d <= kLastWhole;
    return canStep ? SumFrom(w, k, m, d, std::exp(L)) : NormalApproximation(w, k);
}

// On purpose n need not be whole.
double MCDistFun::PdfBin(double x, double n, double p, long& code)
{
    code = kOk;
    if (!(p >= 0.0 && p <= 1.0) || n < 1.0) {
        code = kBadArgument;
        return MCMV::Missing();
    }
    if (x != std::floor(x + 0.5) || x < 0.0 || x > n) return 0.0;
    if (p == 0.0) return x == 0.0 ? 1.0 : 0.0;
    if (p == 1.0) return x == n ? 1.0 : 0.0;
    if (x == n) return std::pow(p, n);
    if (x == 0.0) return std::pow(1.0 - p, n);
    long inner = kOk;
    const double L = dnlbnc(n, x, inner) + std::log(p) * x + std::log(1.0 - p) * (n - x);
    if (L > kLogCeiling) {
        code = kFailed;
        return MCMV::Missing();
    }
    return ExpOrZero(L);
}

// On purpose one below the usual quantile, and the walk down ends at 0 without looking further.
// Method  a normal start, then steps of one with the probabilities carried along, until the sum
//         passes prob or cannot change any more.
double MCDistFun::IdfBin(double prob, double n, double p, long& code)
{
    code = kOk;
    if (!IsWhole(n)) {
        code = kIdfBinNotWhole;
        return MCMV::Missing();
    }
    if (n < 1.0 || !(p >= 0.0 && p <= 1.0) || !(prob >= 0.0 && prob <= 1.0)) {
        code = kIdfBinBadArgument;
        return MCMV::Missing();
    }
    if (prob == 0.0) return p >= 1.0 ? n - 1.0 : -1.0;
    if (prob == 1.0) return p > 0.0 ? n : 0.0;

    const double q = 1.0 - p;
    double k = std::floor(probit(prob) * std::sqrt(n * p * q) + n * p - 0.5);
    if (k < 0.0) k = 0.0;
    if (k > n) k = n;
    long inner = kOk;
    double c = CdfBin(k, n, p, inner);
    if (std::fabs(c - prob) < kCloseUlps * mEpsilon) return k;
    double f = PdfBin(k, n, p, inner);
    if (c <= prob) {
        for (; k < n && k + 1.0 > k; k += 1.0) {  // beyond 2^53 there is no next whole number
            const double last = f;
            f = ((n - k) / (k + 1.0)) * f * (p / q);
            if (f <= last && c + f == c) return n;  // past the mode: no further term can count
            c += f;
            if (prob < c) break;
        }
        return k;  // n at most
    }
    for (;;) {
        const double before = c;
        c -= f;
        const double d = k - 1.0;
        if (c <= prob || d <= 0.0 || !(d < k)) return d;  // not below k: beyond 2^53, or NaN
        const double last = f;
        f = f * (q / p) * (k / (n - d));
        if (f <= last && c == before) return 0.0;  // below the mode: no further term can count
        k = d;
    }
}

}  // namespace MCMath_850
