#include <cmath>

#include "stats/mcdistfun.h"
#include "tests/stats/support/expect.h"

namespace {

using expect::kInf;
using expect::kNaN;
using expect::kTiniest;
using expect::Missing;
using D = MCMath_850::MCDistFun;

double Cdf(double f, double df1, double df2, long wantedCode = 0)
{
    return expect::Coded(D::zeltcdff, wantedCode, f, df1, df2);
}

double Idf(double p, double df1, double df2, long wantedCode = 0)
{
    return expect::Coded(D::zeltidff, wantedCode, p, df1, df2);
}

TEST(FisherCdf, IsZeroUpToZeroAndItsUpperTailOne)
{
    EXPECT_EQ(Cdf(-1.0, 2.0, 3.0), 0.0);
    EXPECT_EQ(Cdf(0.0, 2.0, 3.0), 0.0);
    EXPECT_EQ(D::SigF(-1.0, 2.0, 3.0), 1.0);
    EXPECT_EQ(D::SigF(0.0, 2.0, 3.0), 1.0);
}

TEST(FisherCdf, RefusesDfThatAreNotPositive)
{
    EXPECT_EQ(Cdf(1.0, 0.0, 3.0, 1), Missing());
    EXPECT_EQ(Cdf(1.0, 2.0, -3.0, 1), Missing());
    EXPECT_EQ(D::CdfF(1.0, 2.0, 0.0), Missing());
    EXPECT_EQ(D::SigF(1.0, 0.0, 3.0), Missing());
    EXPECT_EQ(D::SigF(1.0, 2.0, 0.0), Missing());
}

TEST(FisherCdf, DfThatVanishHalvedAreCodeTwo)
{
    EXPECT_EQ(Cdf(0.5, kTiniest, 3.0, 2), Missing());
    EXPECT_EQ(Cdf(1.5, 2.0, kTiniest, 2), Missing());
    EXPECT_EQ(Cdf(1.5, 1.0, kTiniest, 2), Missing());
    EXPECT_EQ(D::SigF(0.5, 2.0, kTiniest), Missing());
    EXPECT_EQ(D::SigF(1.5, 2.0, kTiniest), Missing());
}

TEST(FisherCdf, OfOneNumeratorDfIsStudentsT)
{
    EXPECT_EQ(Cdf(4.0, 1.0, 7.0), 2.0 * D::CdfT(2.0, 7.0) - 1.0);
}

// F(df1, df2) at f has the distribution of 1 / F(df2, df1).
TEST(FisherCdf, ReciprocalExchangesTheDf)
{
    for (const double f : {0.2, 0.9, 1.0, 3.0})
        EXPECT_NEAR(Cdf(f, 4.0, 9.0), D::SigF(1.0 / f, 9.0, 4.0), 1e-13);
}

TEST(FisherCdf, NaNAndInfinityEnd)
{
    EXPECT_TRUE(std::isnan(Cdf(kNaN, 2.0, 3.0)));
    EXPECT_TRUE(std::isnan(Cdf(kNaN, 1.0, 3.0)));
    EXPECT_TRUE(std::isnan(Cdf(0.5, kNaN, 3.0)));
    EXPECT_TRUE(std::isnan(D::SigF(kNaN, 2.0, 3.0)));
    EXPECT_EQ(Cdf(kInf, 2.0, 3.0), 1.0);
    EXPECT_EQ(D::SigF(kInf, 2.0, 3.0), 0.0);
}

TEST(FisherQuantile, TakesZeroWhereStudentsDoesNot)
{
    EXPECT_EQ(Idf(0.0, 2.0, 3.0), 0.0);
    for (const double p : {1.0, -0.1, kNaN}) EXPECT_EQ(Idf(p, 2.0, 3.0, 1), Missing());
    EXPECT_EQ(Idf(0.3, 0.0, 3.0, 1), Missing());
    EXPECT_EQ(Idf(0.3, 2.0, kNaN, 1), Missing());
    EXPECT_EQ(D::IdfF(1.0, 2.0, 3.0), Missing());
}

TEST(FisherQuantile, FailuresBelowAreCodeTwo)
{
    EXPECT_EQ(Idf(0.3, 1.0, kTiniest, 2), Missing());
    EXPECT_EQ(Idf(0.3, kTiniest, 3.0, 2), Missing());
    EXPECT_EQ(Idf(0.9, 1e20, 0.5, 2), Missing());  // the beta quantile is 1
    EXPECT_EQ(D::IdfF(0.9, 1e20, 0.5), Missing());
    // 1 - 1e-16 / 2 rounds to 1, which Student's quantile refuses.
    EXPECT_EQ(Idf(0.99999999999999989, 1.0, 3.0, 2), Missing());
}

TEST(FisherQuantile, OfOneNumeratorDfIsTheSquareOfStudents)
{
    long code = 0;
    const double t = D::zeltidft(0.95, 7.0, code);
    EXPECT_EQ(Idf(0.9, 1.0, 7.0), t * t);
}

}  // namespace
