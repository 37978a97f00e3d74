#include <cmath>

#include "stats/mcdistfun.h"
#include "tests/stats/support/expect.h"

namespace {

using expect::kInf;
using expect::kNaN;
using expect::Missing;
using D = MCMath_850::MCDistFun;

double Call(double (*function)(double, double, double, long&), long wantedCode, double a, double b,
            double c)
{
    long code = 99;
    const double result = function(a, b, c, code);
    EXPECT_EQ(code, wantedCode) << a << ", " << b << ", " << c;
    return result;
}

double Cdf(double x, double n, double p, long wantedCode = 0)
{
    return Call(&D::CdfBin, wantedCode, x, n, p);
}
double Pdf(double x, double n, double p, long wantedCode = 0)
{
    return Call(&D::PdfBin, wantedCode, x, n, p);
}
double Idf(double prob, double n, double p, long wantedCode = 0)
{
    return Call(&D::IdfBin, wantedCode, prob, n, p);
}
double LogCoefficient(double n, double k, long wantedCode = 0)
{
    return expect::Coded(D::dnlbnc, wantedCode, n, k);
}

TEST(LogBinomial, EndsAreExactlyZero)
{
    EXPECT_EQ(LogCoefficient(5.0, 0.0), 0.0);
    EXPECT_EQ(LogCoefficient(5.0, 5.0), 0.0);
    EXPECT_EQ(LogCoefficient(kInf, kInf), 0.0);
}

TEST(LogBinomial, RefusesWhatIsOutOfOrder)
{
    EXPECT_EQ(LogCoefficient(3.0, 5.0, 1), Missing());
    EXPECT_EQ(LogCoefficient(-1.0, 0.0, 1), Missing());
    EXPECT_EQ(LogCoefficient(3.0, -1.0, 1), Missing());
    EXPECT_TRUE(std::isnan(LogCoefficient(kNaN, 1.0)));
    EXPECT_TRUE(std::isnan(LogCoefficient(3.0, kNaN)));
}

// 33 over 16 is 1166803110, 34 over 16 is 2203961430 (Pascal's triangle).
TEST(LogBinomial, ChangesFromTheProductToLogGammasAboveThirtyThree)
{
    EXPECT_TRUE(expect::Near(LogCoefficient(33.0, 16.0), std::log(1166803110.0), 2e-16));
    EXPECT_TRUE(expect::Near(LogCoefficient(34.0, 16.0), std::log(2203961430.0), 1e-13));
    EXPECT_EQ(LogCoefficient(33.0, 17.0), LogCoefficient(33.0, 16.0));  // the smaller side
}

// The log gammas of these differ by less than their rounding, to the wrong side.
TEST(LogBinomial, IsNeverNegative)
{
    EXPECT_EQ(LogCoefficient(240.2116037355762, 240.21160373557618), 0.0);
}

TEST(BinomialCdf, CutsXToAWholeNumber)
{
    EXPECT_EQ(Cdf(2.7, 5.0, 0.5), Cdf(2.0, 5.0, 0.5));
    EXPECT_EQ(Cdf(-1.0, 5.0, 0.5), 0.0);
    EXPECT_EQ(Cdf(-0.5, 5.0, 0.5), 0.0);
    EXPECT_EQ(Cdf(5.0, 5.0, 0.5), 1.0);
    EXPECT_EQ(Cdf(kInf, 5.0, 0.5), 1.0);
    EXPECT_EQ(Cdf(-kInf, 5.0, 0.5), 0.0);
}

TEST(BinomialCdf, FractionalTrialsAreCodeThree)
{
    EXPECT_EQ(Cdf(1.0, 5.5, 0.5, 3), Missing());
    EXPECT_EQ(Cdf(1.0, kNaN, 0.5, 3), Missing());
    EXPECT_EQ(Cdf(1.0, 0.5, 2.0, 3), Missing());  // before the other tests
    EXPECT_EQ(Cdf(1.0, 0.0, 0.5, 1), Missing());
    EXPECT_EQ(Cdf(1.0, 5.0, -0.1, 1), Missing());
    EXPECT_EQ(Cdf(1.0, 5.0, 1.1, 1), Missing());
}

TEST(BinomialCdf, CertainTrialsAreAStep)
{
    EXPECT_EQ(Cdf(0.0, 5.0, 0.0), 1.0);
    EXPECT_EQ(Cdf(-1.0, 5.0, 0.0), 0.0);
    EXPECT_EQ(Cdf(4.0, 5.0, 1.0), 0.0);
    EXPECT_EQ(Cdf(5.0, 5.0, 1.0), 1.0);
}

TEST(BinomialCdf, NoSuccessIsAPowerWithItsGuard)
{
    EXPECT_TRUE(expect::Near(Cdf(0.0, 3.0, 0.25), 27.0 / 64.0, 1e-14));
    EXPECT_EQ(Cdf(0.0, 2000.0, 0.5), 0.0);
}

// With exp out of reach the start is a normal approximation; far out it is 0 or 1 all the same.
TEST(BinomialCdf, StartOutOfReachTakesTheNormalApproximation)
{
    EXPECT_EQ(Cdf(1.0, 10000.0, 0.5), 0.0);
    EXPECT_TRUE(std::isnan(Cdf(1.0, kInf, 0.5)));
    EXPECT_TRUE(std::isnan(Cdf(kNaN, 5.0, 0.5)));
    EXPECT_TRUE(std::isnan(Cdf(1.0, 5.0, kNaN)));
    EXPECT_EQ(Cdf(7.0, 5.0, kNaN), 1.0);  // the end of the range decides
}

// Trials beyond any accuracy, x within rounding of the mean: the deviance comes out as 0.
TEST(BinomialCdf, NormalApproximationAtTheMeanIsOneHalf)
{
    EXPECT_EQ(Cdf(3.0065979906556486e+17, 6.0131959813112986e+17, 0.5), 0.5);
    EXPECT_EQ(Cdf(5e299, 1e300, 0.5), 0.5);
}

// Steps of one don't move there, and a walk by them would never end. So many fair trials are
// normal: Phi(-1), Phi(0) and Phi(1), and nothing or all where x is a quarter of them away.
TEST(BinomialCdf, TrialsBeyondTheWholeNumbersEnd)
{
    constexpr double kNear = 1e-6;
    for (const double n : {4e16, 1e20}) {
        const double deviation = std::sqrt(n) / 2.0;
        EXPECT_NEAR(Cdf(n / 2.0 - deviation, n, 0.5), 0.15865525393145705, kNear) << n;
        EXPECT_NEAR(Cdf(n / 2.0 + deviation, n, 0.5), 0.8413447460685429, kNear) << n;
    }
    constexpr double kHuge = 6e199;
    EXPECT_EQ(Cdf(kHuge / 4.0, kHuge, 0.5), 0.0);
    EXPECT_NEAR(Cdf(kHuge / 2.0, kHuge, 0.5), 0.5, kNear);
    EXPECT_EQ(Cdf(kHuge * 0.75, kHuge, 0.5), 1.0);
}

TEST(BinomialPdf, IsZeroForWhatCannotHappen)
{
    for (const double x : {1.5, -1.0, 6.0, kNaN, kInf, -kInf})
        EXPECT_EQ(Pdf(x, 5.0, 0.5), 0.0) << x;
    EXPECT_EQ(Pdf(1.0, 5.0, 0.0), 0.0);
    EXPECT_EQ(Pdf(0.0, 5.0, 0.0), 1.0);
    EXPECT_EQ(Pdf(5.0, 5.0, 1.0), 1.0);
    EXPECT_EQ(Pdf(4.0, 5.0, 1.0), 0.0);
}

TEST(BinomialPdf, TakesAFractionalNumberOfTrials)
{
    EXPECT_GT(Pdf(2.0, 5.5, 0.5), 0.0);
    EXPECT_EQ(Pdf(1.0, 0.5, 0.5, 1), Missing());
    EXPECT_EQ(Pdf(1.0, 5.0, 1.5, 1), Missing());
    EXPECT_EQ(Pdf(1.0, 5.0, -0.5, 1), Missing());
    EXPECT_EQ(Pdf(1.0, 5.0, kNaN, 1), Missing());
    EXPECT_TRUE(std::isnan(Pdf(1.0, kNaN, 0.5)));
}

// Trials beyond any accuracy: the log gammas leave a log probability far above 0.
TEST(BinomialPdf, LogProbabilityAboveTheLimitIsCodeTwo)
{
    EXPECT_EQ(Pdf(1.8108655874334915e+87, 7.039698123950137e+87, 0.25723617331831428, 2),
              Missing());
}

TEST(BinomialPdf, EndsArePowers)
{
    EXPECT_EQ(Pdf(3.0, 3.0, 0.25), 1.0 / 64.0);
    EXPECT_EQ(Pdf(0.0, 3.0, 0.25), 27.0 / 64.0);
}

TEST(BinomialQuantile, FractionalTrialsAreCodeOneAndBadArgumentsCodeTwo)
{
    EXPECT_EQ(Idf(0.5, 5.5, 0.5, 1), Missing());
    EXPECT_EQ(Idf(0.5, kNaN, 0.5, 1), Missing());
    EXPECT_EQ(Idf(0.5, 0.0, 0.5, 2), Missing());
    for (const double bad : {-0.1, 1.1, kNaN}) {
        EXPECT_EQ(Idf(0.5, 5.0, bad, 2), Missing());
        EXPECT_EQ(Idf(bad, 5.0, 0.5, 2), Missing());
    }
}

TEST(BinomialQuantile, EndsHaveTheirOwnAnswers)
{
    EXPECT_EQ(Idf(0.0, 5.0, 1.0), 4.0);
    EXPECT_EQ(Idf(0.0, 5.0, 0.5), -1.0);
    EXPECT_EQ(Idf(1.0, 5.0, 0.0), 0.0);
    EXPECT_EQ(Idf(1.0, 5.0, 0.5), 5.0);
}

TEST(BinomialQuantile, OfCertainTrialsIsAnEnd)
{
    EXPECT_EQ(Idf(0.5, 5.0, 0.0), -1.0);
    EXPECT_EQ(Idf(0.5, 5.0, 1.0), 5.0);  // walks up and ends at n
}

// On purpose one below the usual quantile: P(X <= 1) = 3/16 and P(X <= 2) = 1/2 for 5 trials of
// 1/2.
TEST(BinomialQuantile, IsTheLargestCountWithinTheProbability)
{
    EXPECT_EQ(Idf(0.3, 5.0, 0.5), 1.0);
    EXPECT_EQ(Idf(0.5, 5.0, 0.5), 2.0);
    EXPECT_EQ(Idf(0.02, 5.0, 0.5), -1.0);  // P(X <= 0) = 1/32
}

// P(X <= 0) = 0.03^5 = 2.4e-8 is above 1e-12. The start for 5 trials of 0.97 is 2, and the walk
// down ends at 0; for 5 trials of 0.5 it is 0, and the walk steps below it.
TEST(BinomialQuantile, WalkDownEndsAtZero)
{
    EXPECT_EQ(Idf(1e-12, 5.0, 0.97), 0.0);
    EXPECT_EQ(Idf(1e-12, 5.0, 0.5), -1.0);
}

// The sum of the probabilities stays a few units below 1 - 1e-16, so no count passes it: the walk
// ends at n.
TEST(BinomialQuantile, ProbabilityWithinRoundingOfOneIsAllTrials)
{
    EXPECT_EQ(Idf(0.99999999999999989, 1000.0, 0.3), 1000.0);
}

TEST(BinomialQuantile, InfiniteTrialsEnd)
{
    EXPECT_TRUE(std::isnan(Idf(0.3, kInf, 0.5)));
    EXPECT_FALSE(Idf(0.3, 1e300, 0.5) < 0.0);
    EXPECT_FALSE(Idf(0.7, 1e300, 0.5) < 0.0);
}

}  // namespace
