// cdf(quantile(p)) = p over wide grids, within what the quantile's stopping rule and the rounding
// of p allow: the error of x times the density there, plus the distribution function's own.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "stats/mcdistfun.h"
#include "tests/stats/support/expect.h"

namespace {

using D = MCMath_850::MCDistFun;

const std::vector<double> kProbabilities = {
    1e-12, 1e-9, 1e-6,  1e-4, 1e-3, 0.01, 0.025, 0.05, 0.1,  0.2,   0.3,      0.4,     0.45,
    0.499, 0.5,  0.501, 0.6,  0.7,  0.8,  0.9,   0.95, 0.99, 0.999, 1 - 1e-6, 1 - 1e-9};
const std::vector<double> kSizes = {0.05, 0.3, 0.5, 1.0, 1.5, 2.0, 3.7, 10.0, 41.5, 200.0, 3000.0};

TEST(RoundTrip, NormalKeepsRelativeAccuracyInTheLowerTail)
{
    for (const double p : kProbabilities) {
        const double z = D::IdfStdNorm(p);
        // dp / p = z dz for the lower tail, and dz is 3e-15 |z|.
        EXPECT_NEAR(D::CdfStdNorm(z), p, p * (3e-14 + 3e-15 * z * z) + 1e-16) << p;
        EXPECT_NEAR(D::CdfNorm(D::IdfNorm(p, -3.0, 0.25), -3.0, 0.25), p, 1e-12 * p + 1e-15) << p;
    }
}

TEST(RoundTrip, ChiSquareEndsWithinItsStoppingRule)
{
    for (const double df : kSizes)
        for (const double p : kProbabilities) {
            const double x = D::IdfChi(p, df);
            if (x <= 0.0) continue;  // a quantile too small for exp
            const double density = D::PdfGamma(x, df / 2.0, 0.5) * x;
            const double error = x > 5e-7 ? 3e-8 : 3e-7;  // below, the start value is the answer
            EXPECT_NEAR(D::CdfChi(x, df), p, error * density + (1e-12 + 3e-14 * df) * p + 3e-15)
                << p << ", " << df;
        }
}

TEST(RoundTrip, GammaScalesWithItsRate)
{
    for (const double rate : {0.01, 1.0, 250.0})
        for (const double p : kProbabilities)
            EXPECT_NEAR(D::CdfGam(D::IdfGam(p, 2.3, rate), 2.3, rate), p, 1e-7 * p + 1e-15);
}

// x is exact to 2e-10, so p to that times the density; where the quantile lies closer to an end
// than that, the distribution function over the whole uncertainty is the bound.
TEST(RoundTrip, BetaEndsWithinItsStep)
{
    for (const double a : kSizes)
        for (const double b : kSizes)
            for (const double p : kProbabilities) {
                const double x = D::IdfBeta(p, a, b);
                const double low = D::CdfBeta(std::max(0.0, x - 2e-10), a, b);
                const double high = D::CdfBeta(std::min(1.0, x + 2e-10), a, b);
                const double rounding = 1e-12 + 6e-14 * (a + b);
                EXPECT_LE(low - rounding, p) << p << ", " << a << ", " << b;
                EXPECT_GE(high + rounding, p) << p << ", " << a << ", " << b;
            }
}

TEST(RoundTrip, StudentAndFisherFollowTheBetaQuantile)
{
    for (const double df : kSizes)
        for (const double p : kProbabilities) {
            // b = df / (df + t^2) is exact to 2e-10: the two-sided tail between the ends of that.
            const double t = D::IdfT(p, df);
            if (std::isinf(t)) continue;
            const double tail = 2.0 * std::min(p, 1.0 - p);
            const double b = df / (df + t * t);
            const double rounding = 1e-12 + 6e-14 * df;
            EXPECT_LE(D::CdfBeta(std::max(0.0, b - 2e-10), df / 2.0, 0.5) - rounding, tail)
                << p << ", " << df;
            EXPECT_GE(D::CdfBeta(std::min(1.0, b + 2e-10), df / 2.0, 0.5) + rounding, tail)
                << p << ", " << df;
        }
    for (const double df1 : {2.0, 3.7, 41.5})
        for (const double df2 : {2.0, 3.7, 41.5, 200.0})
            for (const double p : kProbabilities)
                EXPECT_NEAR(D::CdfF(D::IdfF(p, df1, df2), df1, df2), p, 1e-8)
                    << p << ", " << df1 << ", " << df2;
}

TEST(RoundTrip, BinomialQuantileIsTheLargestCountWithinTheProbability)
{
    long code = 0;
    for (const double n : {1.0, 5.0, 40.0, 1000.0})
        for (const double p : {0.01, 0.3, 0.5, 0.97})
            for (const double prob : kProbabilities) {
                const double k = D::IdfBin(prob, n, p, code);
                const double slack = 1e-10;
                // A walk down ends at 0, also where 0 is too much already.
                const double within = k == 0.0 ? 0.0 : D::CdfBin(k, n, p, code);
                EXPECT_LE(within, prob + slack) << prob << ", " << n << ", " << p;
                EXPECT_GE(D::CdfBin(k + 1.0, n, p, code), prob - slack)
                    << prob << ", " << n << ", " << p;
            }
}

TEST(RoundTrip, NonCentralitiesGiveBackTheirProbability)
{
    for (const double p : {0.01, 0.1, 0.3}) {
        EXPECT_NEAR(D::NonCentralCdfChi(9.0, 4.0, D::FindNCParamChi(9.0, 4.0, p, 1e-9)), p,
                    1e-9 + 1e-12);
        EXPECT_NEAR(D::NonCentralCdfF(3.0, 4.0, 9.0, D::FindNCParamF(3.0, 4.0, 9.0, p, 1e-9), 1e-9),
                    p, 1e-9 + 1e-9);
        EXPECT_NEAR(D::NonCentralCdfT(1.5, 7.0, D::FindNCParamT(1.5, 7.0, p, 1e-9)), p,
                    1e-9 + 1e-12);
    }
}

}  // namespace
