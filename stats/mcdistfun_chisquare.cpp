#include <cmath>

#include "stats/mcdistfun.h"
#include "stats/mcmissingvalue.h"
#include "stats/numerics.h"

namespace MCMath_850 {

using MCCommon_850::MCMV;

namespace {

// The constants of AS 91 as single-precision numbers widened to double. On purpose: the start
// values and what they lead to depend on them.
constexpr double kSmallChi = 1.24f;        // 1.2400000095367432
constexpr double kSmallDf = 0.32f;         // 0.3199999928474426
constexpr double k467 = 4.67f;             // 4.670000076293945
constexpr double k666 = 6.66f;             // 6.659999847412109
constexpr double k673 = 6.73f;             // 6.730000019073486
constexpr double k1332 = 13.32f;           // 13.319999694824219
constexpr double kTwoNinths = 0.222222f;   // 0.2222220003604889
constexpr double kLargeChi = 2.2f;         // 2.200000047683716
constexpr double kStartTolerance = 0.01f;  // 0.009999999776482582
constexpr double kNewtonStart = 0.4f;      // 0.4000000059604645
static_assert(kSmallChi == 1.2400000095367432 && kSmallDf == 0.3199999928474426 &&
              k467 == 4.670000076293945 && k666 == 6.659999847412109 && k673 == 6.730000019073486 &&
              k1332 == 13.319999694824219 && kTwoNinths == 0.2222220003604889 &&
              kLargeChi == 2.200000047683716 && kStartTolerance == 0.009999999776482582 &&
              kNewtonStart == 0.4000000059604645);

constexpr double kTolerance = 5e-07;  // relative, of the refinement; also the least start refined
constexpr double kExponentLimit = 141.8;  // logarithms above this fail with code 2
constexpr int kRefinements = 20;
constexpr int kNewtonRounds = 200;  // a NaN in between would never meet the end test
constexpr int kBisections = 40;

// What every start value and every refinement of one quantile shares.
struct ChiProblem {
    double p;
    double df;
    double xx;  // df / 2
    double g;   // log gamma of xx
    double c;   // xx - 1
};

// A start value, or no start (`failed`), or the final answer already (`done`).
struct Start {
    double ch = 0.0;
    bool failed = false;
    bool done = false;
};

Start Failed() { return {0.0, true, false}; }

// Start for small chi-square: the first term of the series of the distribution function.
Start SmallChiStart(const ChiProblem& q)
{
    const double L = (std::log(q.xx) + std::log(q.p) + q.g + q.xx * kLn2) / q.xx;
    if (L > kExponentLimit) return Failed();
    const double ch = ExpOrZero(L);
    return {ch, false, ch < kTolerance};
}

// Start for df up to 0.32: Newton's iteration on a rational approximation.
Start SmallDfStart(const ChiProblem& q)
{
    double ch = kNewtonStart;
    for (int round = 0; round < kNewtonRounds; ++round) {
        const double last = ch;
        const double p1 = 1.0 + ch * (k467 + ch);
        const double p2 = ch * (k673 + ch * (k666 + ch));
        const double t = -0.5 + (k467 + 2.0 * ch) / p1 - (k673 + ch * (k1332 + 3.0 * ch)) / p2;
        const double L =
            q.g + std::log(1.0 - q.p) + 0.5 * ch + q.c * kLn2 + std::log(p2) - std::log(p1);
        if (L > kExponentLimit) return Failed();
        ch -= (1.0 - ExpOrZero(L)) / t;
        if (std::fabs(last / ch - 1.0) <= kStartTolerance) return {ch};
    }
    return Failed();
}

// Start from the cube root approximation of Wilson and Hilferty, with AS 91's own for p close to 1.
Start CubeRootStart(const ChiProblem& q)
{
    const double x = MCDistFun::probit(q.p);
    if (MCMV::IsMissing(x)) return Failed();
    const double r = kTwoNinths / q.df;
    const double y = x * std::sqrt(r) + 1.0 - r;
    double ch = 0.0;
    if (y != 0.0) {
        const double L = 3.0 * std::log(std::fabs(y)) + std::log(q.df);
        if (L > kExponentLimit) return Failed();
        ch = std::copysign(ExpOrZero(L), y);
    }
    if (ch > kLargeChi * q.df + 6.0)
        ch = -2.0 * (std::log(1.0 - q.p) - q.c * std::log(0.5 * ch) + q.g);
    return {ch};
}

// The seven-term Taylor step of AS 91 from `ch`; t is the residual over the density.
double TaylorStep(double ch, double t, double c)
{
    const double b = t / ch;
    const double a = 0.5 * t - b * c;
    const double s1 =
        (210.0 + a * (140.0 + a * (105.0 + a * (84.0 + a * (70.0 + 60.0 * a))))) / 420.0;
    const double s2 = (420.0 + a * (735.0 + a * (966.0 + a * (1141.0 + 1278.0 * a)))) / 2520.0;
    const double s3 = (210.0 + a * (462.0 + a * (707.0 + 932.0 * a))) / 2520.0;
    const double s4 =
        (252.0 + a * (672.0 + 1182.0 * a) + c * (294.0 + a * (889.0 + 1740.0 * a))) / 5040.0;
    const double s5 = (84.0 + 264.0 * a + c * (175.0 + 606.0 * a)) / 2520.0;
    const double s6 = (120.0 + c * (346.0 + 127.0 * c)) / 5040.0;
    return t *
           (1.0 + 0.5 * t * s1 - b * c * (s1 - b * (s2 - b * (s3 - b * (s4 - b * (s5 - b * s6))))));
}

// Refines `start` into `ch`. False if the steps leave the positive numbers, a quantity overflows or
// twenty rounds do not settle it.
bool Refine(const ChiProblem& q, double start, double& ch)
{
    ch = start;
    for (int round = 0; round < kRefinements && ch > 0.0; ++round) {
        const double last = ch;
        const double half = 0.5 * ch;
        long inner = kOk;
        const double v = MCDistFun::gammad(half, q.xx, true, inner);
        if (inner != kOk) return false;
        const double L = q.xx * kLn2 + q.g + half - std::log(ch) * q.c;
        if (L > kExponentLimit) return false;
        const double t = ExpOrZero(L) * (q.p - v);
        ch += TaylorStep(ch, t, q.c);
        if (std::fabs(last - ch) <= ch * kTolerance) return true;
    }
    return false;
}

}  // namespace

// Method  Best and Roberts (1975), Algorithm AS 91, Applied Statistics 24, 385-388: one of three
//         start values, then a seven-term Taylor series; where that fails, bisection (idfchb).
// Departs from the paper by its constants, which are single-precision numbers on purpose, by the
//         guards on the logarithms and by the bisection.
double MCDistFun::zeltidfchi(const double& p, const double& df, long& code)
{
    code = kOk;
    if (!(p >= 0.0 && p < 1.0) || df <= 0.0) {
        code = kBadArgument;
        return MCMV::Missing();
    }
    if (p == 0.0) return 0.0;

    const double xx = df / 2.0;
    const ChiProblem problem{p, df, xx, dnlgam(xx), xx - 1.0};
    const Start start = df < -kSmallChi * std::log(p) ? SmallChiStart(problem)
                        : df <= kSmallDf              ? SmallDfStart(problem)
                                                      : CubeRootStart(problem);
    if (start.failed) {
        code = kFailed;
        return MCMV::Missing();
    }
    if (start.done) return start.ch;
    double ch = 0.0;
    if (Refine(problem, start.ch, ch)) return ch;
    return idfchb(p, df, start.ch, code);
}

double MCDistFun::idfchb(const double& p, const double& df, const double& start, long& code)
{
    code = kOk;
    const double a = df / 2.0;
    if (start <= 0.0) {
        code = kBadArgument;
        return MCMV::Missing();
    }
    long inner = kOk;
    const auto failed = [&code] {
        code = kFailed;
        return MCMV::Missing();
    };
    double lo = start / 4.0;
    double hi = start;
    const double atLo = gammad(lo, a, true, inner);
    if (inner != kOk || atLo > p) return failed();
    // From here on the gamma function accepts a, so its code stays 0.
    if (gammad(hi, a, true, inner) < p) {
        hi *= 2.0;
        if (gammad(hi, a, true, inner) < p) return failed();
    }
    double mid = (lo + hi) / 2.0;
    double width = hi - lo;
    for (int round = 0; round < kBisections && !(width <= mid * 1e-08); ++round) {
        if (gammad(mid, a, true, inner) <= p)
            lo = mid;
        else
            hi = mid;
        mid = (lo + hi) / 2.0;
        width = hi - lo;
    }
    return 2.0 * mid;
}

double MCDistFun::IdfChi(double p, double df)
{
    long code = kOk;
    const double result = zeltidfchi(p, df, code);
    return MissingOnCode(result, code);
}

// On purpose a shape of 0 passes the test: with p = 0 the answer is 0.0, else zeltidfchi refuses
// it.
double MCDistFun::IdfGam(const double& p, const double& shape, const double& rate)
{
    if (!(p >= 0.0 && p < 1.0) || !(shape >= 0.0) || !(rate > 0.0)) return MCMV::Missing();
    if (p == 0.0) return 0.0;
    long code = kOk;
    const double result = zeltidfchi(p, 2.0 * shape, code) * 0.5 / rate;
    return MissingOnCode(result, code);
}

}  // namespace MCMath_850
