// NormContinuous: a piecewise linear function of a field.

#include <gtest/gtest.h>

#include "derivation.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {
namespace {

// Through (0, 0), (10, 1) and (20, 5): a tenth a unit, then four tenths a unit.
std::string Norm(const std::string& attributes)
{
    return DerivedField("d", "<NormContinuous field='x' " + attributes +
                                 "><LinearNorm orig='0' norm='0'/><LinearNorm orig='10' norm='1'/>"
                                 "<LinearNorm orig='20' norm='5'/></NormContinuous>");
}

TEST(NormContinuous, IsLinearBetweenThePointsAndExactAtThem)
{
    for (const char* outliers :
         {"", "outliers='asIs'", "outliers='asMissingValues'", "outliers='asExtremeValues'"}) {
        Derivation d(Norm(outliers));
        EXPECT_EQ(d.With("x", 0.0).Number("d"), 0.0) << outliers;
        EXPECT_EQ(d.With("x", 5.0).Number("d"), 0.5) << outliers;
        EXPECT_EQ(d.With("x", 10.0).Number("d"), 1.0) << outliers;
        EXPECT_EQ(d.With("x", 15.0).Number("d"), 3.0) << outliers;
        EXPECT_EQ(d.With("x", 20.0).Number("d"), 5.0) << outliers;
    }
}

TEST(NormContinuous, OuterLinesGoOnBeyondThePoints)
{
    for (const char* outliers : {"", "outliers='asIs'"}) {
        Derivation d(Norm(outliers));
        EXPECT_EQ(d.With("x", -5.0).Number("d"), -0.5) << outliers;
        EXPECT_EQ(d.With("x", 25.0).Number("d"), 7.0) << outliers;
    }
}

TEST(NormContinuous, BeyondThePointsIsMissingWhereAskedSo)
{
    Derivation d(Norm("outliers='asMissingValues'"));
    EXPECT_TRUE(d.With("x", -0.001).Missing("d"));
    EXPECT_TRUE(d.With("x", 20.001).Missing("d"));
}

TEST(NormContinuous, BeyondThePointsIsTheOuterNormWhereAskedSo)
{
    Derivation d(Norm("outliers='asExtremeValues'"));
    EXPECT_EQ(d.With("x", -5.0).Number("d"), 0.0);
    EXPECT_EQ(d.With("x", 25.0).Number("d"), 5.0);
}

TEST(NormContinuous, MissingFieldIsMissingOrItsReplacement)
{
    EXPECT_TRUE(Derivation(Norm("")).Missing("d"));
    EXPECT_EQ(Derivation(Norm("mapMissingTo='0.25'")).Number("d"), 0.25);
}

TEST(NormContinuous, TwoPointsAreEnough)
{
    Derivation d(DerivedField("d",
                              "<NormContinuous field='x'><LinearNorm orig='1' norm='10'/>"
                              "<LinearNorm orig='3' norm='0'/></NormContinuous>"));
    EXPECT_EQ(d.With("x", 2.0).Number("d"), 5.0);
    EXPECT_EQ(d.With("x", 0.0).Number("d"), 15.0);
    EXPECT_EQ(d.With("x", 4.0).Number("d"), -5.0);
}

TEST(NormContinuous, ReadsATextThatSpellsANumber)
{
    Derivation d(DerivedField("d",
                              "<NormContinuous field='t'><LinearNorm orig='0' norm='0'/>"
                              "<LinearNorm orig='4' norm='1'/></NormContinuous>"));
    EXPECT_EQ(d.With("t", "2").Number("d"), 0.5);
    EXPECT_TRUE(d.With("t", "two").Invalid("d"));
}

TEST(NormContinuous, PointsThatDoNotAscendOrAreTooFewAreRefused)
{
    for (const char* points : {"", "<LinearNorm orig='0' norm='0'/>",
                               "<LinearNorm orig='0' norm='0'/><LinearNorm orig='0' norm='1'/>",
                               "<LinearNorm orig='1' norm='0'/><LinearNorm orig='0' norm='1'/>",
                               "<LinearNorm orig='0' norm='0'/><LinearNorm orig='2' norm='1'/>"
                               "<LinearNorm orig='1' norm='2'/>"}) {
        EXPECT_EQ(RefusedFor(DerivedField("d", std::string("<NormContinuous field='x'>") + points +
                                                   "</NormContinuous>")),
                  (Refusal{kNormPoints, {"d"}}))
            << points;
    }
}

TEST(NormContinuous, PointsThatAreNoNumbersAreRefused)
{
    const auto refused = [](const std::string& point) {
        return RefusedFor(
            DerivedField("d", "<NormContinuous field='x'><LinearNorm orig='0' norm='0'/>" + point +
                                  "</NormContinuous>"));
    };
    EXPECT_EQ(refused("<LinearNorm orig='x' norm='1'/>"), (Refusal{kNotANumber, {"x", "orig"}}));
    EXPECT_EQ(refused("<LinearNorm orig='1' norm=''/>"), (Refusal{kNotANumber, {"", "norm"}}));
    EXPECT_EQ(refused("<LinearNorm norm='1'/>"), (Refusal{260115, {"orig", "LinearNorm"}}));
    EXPECT_EQ(refused("<LinearNorm orig='1'/>"), (Refusal{260115, {"norm", "LinearNorm"}}));
}

}  // namespace
}  // namespace MCVelscore_850
