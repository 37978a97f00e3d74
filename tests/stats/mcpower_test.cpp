#include "stats/mcpower.h"

#include <cmath>
#include <type_traits>

#include "tests/stats/support/expect.h"

namespace {

using expect::kInf;
using expect::kNaN;
using expect::Missing;
using MCMath_850::MCPower;

struct Answer {
    double result;
    int code;
};

Answer Exponent(double x)
{
    Answer a{};
    a.code = MCPower::Exponent(x, a.result);
    return a;
}

Answer Power(double base, double exponent)
{
    Answer a{};
    a.code = MCPower::Power(base, exponent, a.result);
    return a;
}

#define EXPECT_ANSWER(call, wantedResult, wantedCode) \
    do {                                              \
        const Answer answer = call;                   \
        EXPECT_EQ(answer.result, wantedResult);       \
        EXPECT_EQ(answer.code, wantedCode);           \
    } while (false)

TEST(PowerGlobals, HaveTheirValuesAndTypes)
{
    EXPECT_EQ(MCPower::gMachineMaxInt, 2147483647);
    EXPECT_EQ(MCPower::gMachineEpsilon, 2.220446049250313e-16);
    EXPECT_EQ(MCPower::gMachineMaxExp, 709.0);
    EXPECT_EQ(MCPower::gMachineMinExp, -708.39);
    static_assert(std::is_same_v<decltype(MCPower::gMachineMaxInt), std::int32_t>);
    static_assert(std::is_same_v<decltype(MCPower::gMachineMaxExp), const double>);
}

TEST(Exponent, UnderflowIsAUsableZeroAndOverflowIsMissing)
{
    EXPECT_ANSWER(Exponent(-708.3900001), 0.0, 1);
    EXPECT_ANSWER(Exponent(709.0000001), Missing(), 2);
    EXPECT_ANSWER(Exponent(-kInf), 0.0, 1);
    EXPECT_ANSWER(Exponent(kInf), Missing(), 2);
}

TEST(Exponent, BothLimitsThemselvesAreComputed)
{
    EXPECT_ANSWER(Exponent(709.0), std::exp(709.0), 0);
    EXPECT_ANSWER(Exponent(-708.39), std::exp(-708.39), 0);
    EXPECT_GT(Exponent(-708.39).result, 0.0);
}

TEST(Exponent, NaNFallsThroughToExp)
{
    EXPECT_TRUE(std::isnan(Exponent(kNaN).result));
    EXPECT_EQ(Exponent(kNaN).code, 0);
}

TEST(Power, ZeroBaseHasItsOwnCodes)
{
    EXPECT_ANSWER(Power(0.0, 0.0), 1.0, 7);
    EXPECT_ANSWER(Power(-0.0, 0.0), 1.0, 7);
    EXPECT_ANSWER(Power(0.0, -1.0), Missing(), 6);
    EXPECT_ANSWER(Power(0.0, kNaN), Missing(), 6);
    EXPECT_ANSWER(Power(0.0, 0.25), 0.0, 0);
}

TEST(Power, PositiveBaseGoesThroughTheLogarithm)
{
    EXPECT_ANSWER(Power(3.0, 0.0), 1.0, 0);
    EXPECT_TRUE(expect::Near(Power(2.0, 10.0).result, 1024.0, 5e-13));
    EXPECT_ANSWER(Power(10.0, 400.0), Missing(), 2);
    EXPECT_ANSWER(Power(10.0, -400.0), 0.0, 1);
}

TEST(Power, NegativeBaseToTheZeroIsOneWithACode) { EXPECT_ANSWER(Power(-2.0, 0.0), 1.0, 5); }

TEST(Power, NaNBaseGoesTheWayOfTheNegativeOnes)
{
    EXPECT_ANSWER(Power(kNaN, 0.0), 1.0, 5);
    EXPECT_TRUE(std::isnan(Power(kNaN, 2.0).result));
    EXPECT_ANSWER(Power(kNaN, 0.5), Missing(), 4);
}

TEST(Power, WholeExponentsOfNegativeBasesKeepTheirParity)
{
    EXPECT_TRUE(expect::Near(Power(-2.0, 2.0).result, 4.0, 5e-13));
    EXPECT_TRUE(expect::Near(Power(-2.0, 3.0).result, -8.0, 5e-13));
    EXPECT_TRUE(expect::Near(Power(-2.0, -3.0).result, -0.125, 5e-13));
    EXPECT_EQ(Power(-2.0, 3.0).code, 0);
}

TEST(Power, OddRootsOfNegativeBasesExistAndEvenOnesDoNot)
{
    EXPECT_TRUE(expect::Near(Power(-8.0, 1.0 / 3.0).result, -2.0, 5e-13));
    EXPECT_EQ(Power(-8.0, 1.0 / 3.0).code, 0);
    EXPECT_ANSWER(Power(-8.0, 0.5), Missing(), 4);
    EXPECT_ANSWER(Power(-8.0, 0.4), Missing(), 4);
}

TEST(Power, ExponentsAboveTheLargestIntegerAreNotTestedForParity)
{
    EXPECT_ANSWER(Power(-2.0, 4000000000.0), Missing(), 4);
    EXPECT_ANSWER(Power(-1.0, 2147483648.0), Missing(), 4);
    EXPECT_TRUE(expect::Near(Power(-1.0, 2147483647.0).result, -1.0, 5e-13));
}

TEST(Power, OddOverflowHasCodeThreeOnlyForPositiveExponents)
{
    EXPECT_ANSWER(Power(-10.0, 401.0), Missing(), 3);
    EXPECT_ANSWER(Power(-10.0, 400.0), Missing(), 2);
    EXPECT_ANSWER(Power(-0.1, -401.0), Missing(), 2);
}

TEST(Power, OddUnderflowIsMinusZero)
{
    const Answer answer = Power(-10.0, -401.0);
    EXPECT_EQ(answer.result, 0.0);
    EXPECT_TRUE(std::signbit(answer.result));
    EXPECT_EQ(answer.code, 1);
}

TEST(Multiply, GoesThroughLogarithmsAndKeepsTheSign)
{
    EXPECT_TRUE(expect::Near(MCPower::Multiply(-3.0, 4.0), -12.0, 5e-13));
    EXPECT_TRUE(expect::Near(MCPower::Multiply(-3.0, -4.0), 12.0, 5e-13));
    EXPECT_EQ(MCPower::Multiply(0.0, kInf), 0.0);
    EXPECT_EQ(MCPower::Multiply(kNaN, 0.0), 0.0);
    EXPECT_EQ(MCPower::Multiply(-1e200, 1e200), Missing());
    const double underflow = MCPower::Multiply(-1e-200, 1e-200);
    EXPECT_EQ(underflow, 0.0);
    EXPECT_TRUE(std::signbit(underflow));
}

TEST(AlmostEqual, ZeroEqualsZeroAlone)
{
    EXPECT_TRUE(MCPower::AlmostEqual(0.0, -0.0, 0.0));
    EXPECT_FALSE(MCPower::AlmostEqual(1e-300, 0.0, 1e300));
    EXPECT_FALSE(MCPower::AlmostEqual(0.0, 1e-300, 1e300));
    EXPECT_FALSE(MCPower::AlmostEqual(1.0, -1.0, 1e300));
}

TEST(AlmostEqual, CountsUnitsOfTheLargerNumber)
{
    const double oneUp = 1.0 + MCPower::gMachineEpsilon;
    EXPECT_TRUE(MCPower::AlmostEqual(1.0, oneUp, 1.0));
    EXPECT_TRUE(MCPower::AlmostEqual(oneUp, 1.0, 1.0));
    EXPECT_FALSE(MCPower::AlmostEqual(1.0, oneUp, 0.5));
    EXPECT_FALSE(MCPower::AlmostEqual(kNaN, kNaN, 1e300));
    EXPECT_FALSE(MCPower::AlmostEqual(kInf, kInf, 1e300));
}

TEST(OneOverInteger, TellsOddFromEven)
{
    EXPECT_TRUE(MCPower::IsOneOverOddInteger(1.0 / 3.0, 32.0));
    EXPECT_FALSE(MCPower::IsOneOverEvenInteger(1.0 / 3.0, 32.0));
    EXPECT_TRUE(MCPower::IsOneOverEvenInteger(-0.25, 32.0));
    EXPECT_FALSE(MCPower::IsOneOverOddInteger(0.25, 32.0));
    EXPECT_FALSE(MCPower::IsOneOverOddInteger(0.4, 32.0));
    EXPECT_FALSE(MCPower::IsOneOverEvenInteger(0.4, 32.0));
}

TEST(OneOverInteger, RefusesZeroAndReciprocalsBeyondTheLargestInteger)
{
    for (const double x : {0.0, -0.0, 1e-10}) {
        EXPECT_FALSE(MCPower::IsOneOverOddInteger(x, 32.0)) << x;
        EXPECT_FALSE(MCPower::IsOneOverEvenInteger(x, 32.0)) << x;
    }
}

}  // namespace
