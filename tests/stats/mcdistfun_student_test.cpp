#include <cmath>

#include "stats/mcdistfun.h"
#include "stats/precise.h"
#include "tests/stats/support/expect.h"

namespace {

using expect::kInf;
using expect::kNaN;
using expect::kTiniest;
using expect::Missing;
using D = MCMath_850::MCDistFun;

double Cdf(double t, double df, long wantedCode = 0)
{
    return expect::Coded(D::zeltcdft, wantedCode, t, df);
}

double Idf(double p, double df, long wantedCode = 0)
{
    return expect::Coded(D::zeltidft, wantedCode, p, df);
}

TEST(StudentDensity, RefusesADfThatIsNotPositive)
{
    long code = 99;
    EXPECT_EQ(D::PdfT(1.0, 0.0, code), Missing());
    EXPECT_EQ(code, 1);
    EXPECT_TRUE(expect::Near(D::PdfT(0.3, 7.0, code), 0.36581230078018734, 1e-12));  // branches.py
    EXPECT_EQ(code, 0);
    EXPECT_EQ(D::PdfT(kInf, 5.0, code), 0.0);
    EXPECT_TRUE(std::isnan(D::PdfT(kNaN, 5.0, code)));
}

TEST(StudentCdf, HasItsExactPoints)
{
    EXPECT_EQ(Cdf(0.0, 5.0), 0.5);
    EXPECT_EQ(Cdf(1.0, 1.0), 0.75);
    EXPECT_EQ(D::SigT(0.0, 5.0), 0.5);
    EXPECT_EQ(D::SigT(1.0, 1.0), 0.25);
    EXPECT_EQ(Cdf(kInf, 5.0), 1.0);
    EXPECT_EQ(Cdf(-kInf, 5.0), 0.0);
    EXPECT_EQ(D::SigT(kInf, 5.0), 0.0);
    EXPECT_EQ(D::SigT(-kInf, 5.0), 1.0);
}

TEST(StudentCdf, RefusesADfThatIsNotPositiveOrVanishesHalved)
{
    EXPECT_EQ(Cdf(1.0, 0.0, 1), Missing());
    EXPECT_EQ(Cdf(1.0, -1.0, 1), Missing());
    EXPECT_EQ(Cdf(0.5, kTiniest, 1), Missing());
    EXPECT_EQ(Cdf(2.0, kTiniest, 1), Missing());
    EXPECT_EQ(D::CdfT(2.0, kTiniest), Missing());
    EXPECT_EQ(D::SigT(0.5, kTiniest), Missing());
    EXPECT_EQ(D::SigT(2.0, kTiniest), Missing());
    EXPECT_EQ(D::SigT(2.0, 0.0), Missing());
}

TEST(StudentCdf, IsNormalAboveAHundredMillionDfAndItsUpperTailIsNot)
{
    const double above = 100000001.0;
    EXPECT_EQ(Cdf(1.5, above), D::prbnrm(1.5));
    EXPECT_NE(Cdf(1.5, 100000000.0), D::prbnrm(1.5));
    EXPECT_NE(D::SigT(1.5, above), D::prbnrm(-1.5));
    EXPECT_NEAR(D::SigT(1.5, above), D::prbnrm(-1.5), 1e-6);
}

TEST(StudentCdf, TwoTailsMakeOne)
{
    for (const double df : {0.7, 1.0, 2.5, 40.0})
        for (const double t : {-30.0, -1.0, -0.4, 0.4, 1.0, 30.0})
            EXPECT_NEAR(Cdf(t, df) + D::SigT(t, df), 1.0, 1e-13);
}

TEST(StudentCdf, NaNGivesNaN)
{
    EXPECT_TRUE(std::isnan(Cdf(kNaN, 5.0)));
    EXPECT_TRUE(std::isnan(Cdf(kNaN, 1.0)));
    EXPECT_TRUE(std::isnan(Cdf(kNaN, 1e9)));
    EXPECT_TRUE(std::isnan(Cdf(0.5, kNaN)));
    EXPECT_TRUE(std::isnan(D::SigT(kNaN, 5.0)));
}

TEST(StudentQuantile, RefusesTheEndsAndIsExactInTheMiddle)
{
    EXPECT_EQ(Idf(0.5, 3.0), 0.0);
    for (const double p : {0.0, 1.0, -0.1, kNaN}) EXPECT_EQ(Idf(p, 3.0, 1), Missing());
    for (const double df : {0.0, -1.0, kNaN}) EXPECT_EQ(Idf(0.3, df, 1), Missing());
    EXPECT_EQ(D::IdfT(0.0, 3.0), Missing());
}

TEST(StudentQuantile, IsNormalFromAHundredMillionDfOn)
{
    EXPECT_EQ(Idf(0.3, 1e8), D::probit(0.3));
    EXPECT_EQ(Idf(0.3, kInf), D::probit(0.3));
}

TEST(StudentQuantile, FailedBetaQuantileIsCodeTwo)
{
    // Half of this df is 0, which the beta quantile refuses.
    EXPECT_EQ(Idf(0.3, kTiniest, 2), Missing());
    EXPECT_EQ(D::IdfT(0.3, kTiniest), Missing());
}

// -10.665135764107603 by tests/data/stats/branches.py. Behind it stands the beta quantile b =
// 0.2087, right to 2e-10: 30 * 2e-10 / (2 b^2 |t|) = 6.5e-9.
TEST(StudentQuantile, IsFoundFarOut) { EXPECT_NEAR(Idf(5e-12, 30.0), -10.665135764107603, 6.5e-9); }

// Every df and every decade of p has its answer, and down to 1e-19 it is the quantile: the beta
// quantile df / (df + t^2) behind it is right to 2e-10.
TEST(StudentQuantile, IsRightAndNeverFailsOverAWideGrid)
{
    for (int df = 1; df <= 400; ++df) {
        for (int decade = 2; decade <= 40; ++decade) {
            const double p = std::pow(10.0, -decade);
            const double t = Idf(p, df);
            EXPECT_LT(t, 0.0) << p << ", " << df;
            EXPECT_NE(t, Missing()) << p << ", " << df;
            if (decade > 19) continue;
            const double exact = MCMath_850::Precise::IdfT(p, df);
            EXPECT_NEAR(df / (df + t * t), df / (df + exact * exact), 2e-10) << p << ", " << df;
        }
    }
}

TEST(StudentQuantile, TailBeyondTheBetaQuantilesReachIsInfinite)
{
    EXPECT_EQ(Idf(1e-300, 1.0), -kInf);
    EXPECT_EQ(Idf(1e-300, 2.0), -kInf);
}

}  // namespace
