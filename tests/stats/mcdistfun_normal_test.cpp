#include <cmath>

#include "stats/mcdistfun.h"
#include "tests/stats/support/expect.h"

namespace {

using expect::kInf;
using expect::kNaN;
using expect::Missing;
using D = MCMath_850::MCDistFun;

TEST(Probit, HasNoQuantileOutsideTheOpenInterval)
{
    for (const double p : {0.0, 1.0, -0.1, 1.1, kNaN, kInf, -kInf}) {
        EXPECT_EQ(D::probit(p), Missing()) << p;
        EXPECT_EQ(D::IdfStdNorm(p), Missing()) << p;
        EXPECT_EQ(D::IdfNorm(p, 0.0, 1.0), Missing()) << p;
    }
}

TEST(Probit, IsExactlyZeroAtOneHalf)
{
    EXPECT_EQ(D::probit(0.5), 0.0);
    EXPECT_EQ(D::IdfStdNorm(0.5), 0.0);
}

TEST(Probit, IsAntisymmetric)
{
    for (const double p : {0.4, 0.0625, 0.01, 1e-9})
        EXPECT_TRUE(expect::Near(D::probit(1.0 - p), -D::probit(p), 1e-7));
    EXPECT_EQ(D::probit(0.25), -D::probit(0.75));  // both are exact doubles
}

TEST(Erf, IsExactlyOneFromSixPointNineOn)
{
    EXPECT_EQ(D::derf(6.9), 1.0);
    EXPECT_EQ(D::derf(-6.9), -1.0);
    EXPECT_EQ(D::derf(-kInf), -1.0);
    EXPECT_EQ(D::derf(0.0), 0.0);
}

TEST(Erf, NaNCountsAsLarge) { EXPECT_EQ(D::derf(kNaN), 1.0); }

TEST(Erfc, TailVanishesThroughItsGuard)
{
    EXPECT_EQ(D::derfc(27.0), 0.0);
    EXPECT_EQ(D::derfc(-30.0), 2.0);
    EXPECT_EQ(D::derfc(kInf), 0.0);  // the polynomial's factor t is 0 there
    EXPECT_EQ(D::derfc(-kInf), 2.0);
    EXPECT_EQ(D::derfc(0.0), 1.0);
    EXPECT_TRUE(std::isnan(D::derfc(kNaN)));
}

TEST(Phi, IsExactInTheMiddleAndNeverNegative)
{
    EXPECT_EQ(D::prbnrm(0.0), 0.5);
    EXPECT_EQ(D::prbnrm(-0.0), 0.5);
    EXPECT_GE(D::prbnrm(-38.0), 0.0);
    EXPECT_EQ(D::prbnrm(-kInf), 0.0);
    EXPECT_EQ(D::prbnrm(kInf), 1.0);
    EXPECT_TRUE(std::isnan(D::prbnrm(kNaN)));
}

// Phi(-8) by mpmath at 50 digits: only right if the lower tail goes through derfc.
TEST(Phi, LowerTailKeepsItsRelativeAccuracy)
{
    EXPECT_TRUE(expect::Near(D::CdfStdNorm(-8.0), 6.2209605742717841e-16, 3e-14));
}

TEST(CdfNorm, NeedsAPositiveSigma)
{
    for (const double sigma : {0.0, -1.0, kNaN}) EXPECT_EQ(D::CdfNorm(1.0, 0.0, sigma), Missing());
    EXPECT_EQ(D::CdfNorm(3.0, 3.0, 2.0), 0.5);
}

TEST(IdfNorm, ChecksSigmaBeforeItAnswersTheMean)
{
    EXPECT_EQ(D::IdfNorm(0.5, 3.0, 2.0), 3.0);
    for (const double sigma : {0.0, -1.0, kNaN}) EXPECT_EQ(D::IdfNorm(0.5, 3.0, sigma), Missing());
}

TEST(PdfNormal, IsNegativeForANegativeSigmaAndMissingForZeroAlone)
{
    EXPECT_EQ(D::PdfNormal(0.0, 0.0, -1.0), -0.3989422804014327);
    EXPECT_EQ(D::PdfNormal(1.0, 2.0, 0.0), Missing());
    EXPECT_EQ(D::PdfNormal(1.0, 2.0, -0.0), Missing());
    EXPECT_TRUE(std::isnan(D::PdfNormal(1.0, 2.0, kNaN)));
    EXPECT_EQ(D::PdfNormalStandard(kInf), 0.0);
}

}  // namespace
