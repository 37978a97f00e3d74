// The precise distributions against the exact values, and where they differ from MCDistFun on
// purpose.

#include <cmath>

#include "stats/precise.h"
#include "tests/stats/support/expect.h"
#include "tests/stats/support/precise_functions.h"

namespace {

using expect::kInf;
using expect::kNaN;
using namespace reference;
namespace P = MCMath_850::Precise;

// What each keeps relatively over its reference points. Where that is above 1e-13 the arguments
// themselves are the reason: the rounding of z / sqrt 2 and (x - mu) / sigma far out, of 1 - p
// raised to n, and for dnlbnc a logarithm of 1 + tiny.
double Allowed(const std::string& function)
{
    if (function == "CdfNorm" || function == "CdfStdNorm" || function == "prbnrm") return 1e-12;
    if (function == "PdfNormal" || function == "PdfNormalStandard") return 1e-12;
    if (function == "cdfbet" || function == "CdfBeta")
        return 1e-11;  // x in double, parameters of 1e7
    if (function == "PdfBin" || function == "CdfBin") return 5e-12;
    if (function == "PdfHyper" || function == "CdfF" || function == "zeltcdff" ||
        function == "SigF")
        return 1e-12;
    if (function == "dnlbnc") return 1e-6;
    return 1e-13;
}

class PreciseReference : public testing::TestWithParam<std::string> {};

TEST_P(PreciseReference, KeepsItsAccuracyOverEveryExactPoint)
{
    const std::string& name = GetParam();
    const PreciseFunction& precise = PreciseFor(name);
    // Boost's non-central t sums from the centre: in the tail against delta only the absolute error
    // is small. Its density is a difference of two of these over t.
    const double absolute = name == "NonCentralCdfT"   ? 1e-14
                            : name == "NonCentralPdfT" ? 2e-6
                            : name == "FindNCParamT"   ? 1e-12
                                                     : 1e-317;  // the rounding of subnormal numbers
    for (const Row& row : Read(name)) {
        if (row.truth.empty() || !precise.compared(row.args)) continue;
        const double x = precise.call(row.args).values[0];
        const double wanted = row.truth[0];
        EXPECT_NEAR(x, wanted, Allowed(name) * std::fabs(wanted) + absolute)
            << "line " << row.line << " (" << row.args.Text() << ")";
    }
}

std::vector<std::string> Names()
{
    std::vector<std::string> names;
    for (const Function& function : Functions())
        if (PreciseFor(function.name).name && function.name != "IdfBin")
            names.push_back(function.name);
    return names;
}

INSTANTIATE_TEST_SUITE_P(Stats, PreciseReference, testing::ValuesIn(Names()),
                         [](const auto& test) { return test.param; });

// Exact quotients of whole numbers, by tests/data/stats/precise.py.
TEST(Precise, HypergeometricIsSmoothForLargePopulations)
{
    for (const Row& row : ReadFile(Folder() + "/precise/CDFHyper.csv"))
        EXPECT_TRUE(expect::Near(P::CDFHyper(row.args[0], row.args[1], row.args[2], row.args[3]),
                                 row.truth[0], 1e-11))
            << row.args.Text();
}

TEST(Precise, BinomialQuantileIsTheUsualOne)
{
    for (const Row& row : ReadFile(Folder() + "/precise/IdfBin.csv"))
        EXPECT_EQ(P::IdfBin(row.args[0], row.args[1], row.args[2]), row.truth[0])
            << row.args.Text();
    EXPECT_EQ(P::IdfBin(0.5, 5.0, 0.5), 2.0);  // P(X <= 2) is exactly one half
    EXPECT_EQ(P::IdfBin(0.0, 5.0, 0.5), 0.0);
    EXPECT_EQ(P::IdfBin(1.0, 5.0, 0.5), 5.0);
    EXPECT_EQ(P::IdfBin(0.5, 5.0, 0.0), 0.0);
    EXPECT_EQ(P::IdfBin(0.5, 5.0, 1.0), 5.0);
}

TEST(Precise, ProbabilitiesOutsideTheSupportAreZero)
{
    EXPECT_EQ(P::PdfHyper(-1.0, 20.0, 7.0, 3.0), 0.0);
    EXPECT_EQ(P::PdfHyper(4.0, 20.0, 7.0, 3.0), 0.0);
    EXPECT_EQ(P::PdfHyper(1.5, 20.0, 7.0, 3.0), 0.0);
    EXPECT_EQ(P::PdfHyper(4.0, 20.0, 17.0, 8.0), 0.0);  // 3 of 20 fail, so 5 succeed at least
    EXPECT_EQ(P::PdfBin(6.0, 5.0, 0.5), 0.0);
    EXPECT_EQ(P::CDFHyper(-0.5, 20.0, 7.0, 3.0), 0.0);
    EXPECT_EQ(P::CDFHyper(3.0, 20.0, 7.0, 3.0), 1.0);
}

TEST(Precise, DensityAtTheEdgeIsItsLimit)
{
    EXPECT_EQ(P::PdfGamma(0.0, 0.5, 1.0), kInf);
    EXPECT_EQ(P::PdfGamma(0.0, 1.0, 3.0), 3.0);
    EXPECT_EQ(P::PdfGamma(0.0, 2.0, 3.0), 0.0);
}

// Each function, each argument: NaN comes out, nothing is thrown. The points are those of the
// reference.
TEST(Precise, NaNInAnyArgumentGivesNaN)
{
    for (const std::string& name : Names()) {
        const PreciseFunction& precise = PreciseFor(name);
        const Row row = Read(name).back();
        std::vector<std::string> fields;
        const std::string text = row.args.Text();
        for (std::size_t from = 0; from <= text.size();) {
            const std::size_t to = std::min(text.find(", ", from), text.size());
            fields.push_back(text.substr(from, to - from));
            from = to + 2;
        }
        const bool ignoresLast = name == "idfchb" || name == "gammad" || name == "ncdbet" ||
                                 name == "NonCentralCdfF" || name.starts_with("FindNCParam");
        for (std::size_t i = 0; i + (ignoresLast ? 1 : 0) < fields.size(); ++i) {
            std::vector<std::string> hostile = fields;
            hostile[i] = "nan";
            double value = 0.0;
            EXPECT_NO_THROW(value = precise.call(Args(hostile)).values[0]) << name << " " << i;
            EXPECT_TRUE(std::isnan(value)) << name << " " << i << ": " << value;
        }
    }
}

TEST(Precise, ArgumentsOutsideTheDomainGiveNaNAndDoNotThrow)
{
    EXPECT_TRUE(std::isnan(P::CdfNorm(1.0, 0.0, 0.0)));
    EXPECT_TRUE(std::isnan(P::IdfNorm(1.5, 0.0, 1.0)));
    EXPECT_TRUE(std::isnan(P::LogGamma(0.0)));
    EXPECT_TRUE(std::isnan(P::GammaRatio(1.0, 0.0, true)));
    EXPECT_TRUE(std::isnan(P::CdfExp(1.0, 0.0)));
    EXPECT_TRUE(std::isnan(P::IdfGam(0.5, 2.0, 0.0)));
    EXPECT_TRUE(std::isnan(P::CdfBeta(0.5, 0.0, 1.0)));
    EXPECT_TRUE(std::isnan(P::IdfBeta(0.5, -1.0, 1.0)));
    EXPECT_TRUE(std::isnan(P::CdfT(0.5, 0.0)));
    EXPECT_TRUE(std::isnan(P::IdfT(1.1, 3.0)));
    EXPECT_TRUE(std::isnan(P::CdfF(0.5, 0.0, 1.0)));
    EXPECT_TRUE(std::isnan(P::LogBinomial(3.0, 5.0)));
    EXPECT_TRUE(std::isnan(P::CdfBin(1.0, 5.5, 0.5)));
    EXPECT_TRUE(std::isnan(P::PdfBin(1.0, 5.0, 1.5)));
    EXPECT_TRUE(std::isnan(P::CdfBin(1.0, kInf, 0.5)));
    EXPECT_TRUE(std::isnan(P::CdfBin(1.0, 5.0, 1.5)));
    EXPECT_TRUE(std::isnan(P::IdfBin(0.5, 5.5, 0.5)));
    EXPECT_TRUE(std::isnan(P::IdfBin(0.5, 5.0, -0.5)));
    EXPECT_TRUE(std::isnan(P::IdfBin(0.5, 5.0, 1.5)));
    EXPECT_TRUE(std::isnan(P::IdfBin(-0.5, 5.0, 0.5)));
    EXPECT_TRUE(std::isnan(P::IdfBin(1.5, 5.0, 0.5)));
    EXPECT_TRUE(std::isnan(P::CDFHyper(1.0, 20.0, 7.5, 3.0)));
    EXPECT_TRUE(std::isnan(P::CDFHyper(1.0, 20.0, 21.0, 3.0)));
    EXPECT_TRUE(std::isnan(P::CDFHyper(1.0, 20.0, 7.0, 21.0)));
    EXPECT_TRUE(std::isnan(P::CDFHyper(1.0, 20.0, 7.0, 0.0)));
    EXPECT_TRUE(std::isnan(P::CDFHyper(1.0, 1e10, 7.0, 3.0)));  // Boost counts in 32 bits
    EXPECT_TRUE(std::isnan(P::NonCentralCdfBeta(0.5, 2.0, 3.0, -1.0)));
    EXPECT_TRUE(std::isnan(P::NonCentralCdfF(0.5, 2.0, 3.0, -1.0)));
    EXPECT_TRUE(std::isnan(P::NonCentralCdfChi(0.5, 2.0, -1.0)));
    EXPECT_TRUE(std::isnan(P::NonCentralCdfT(0.5, -2.0, 1.0)));
    EXPECT_TRUE(std::isnan(P::FindNCParamChi(4.0, 3.0, 1.5)));
    EXPECT_TRUE(std::isnan(P::FindNCParamT(-1.0, 5.0, 0.5)));
    EXPECT_TRUE(std::isnan(P::FindNCParamT(kInf, 5.0, 0.5)));
    EXPECT_TRUE(std::isnan(P::FindNCParamT(1.0, 0.0, 0.5)));
    EXPECT_TRUE(std::isnan(P::FindNCParamT(1.0, 5.0, 0.0)));
    EXPECT_TRUE(std::isnan(P::FindNCParamT(1.0, 5.0, 1.0)));
}

TEST(Precise, WhatBoostCannotComputeIsNaN)
{
    EXPECT_TRUE(std::isnan(P::NonCentralCdfBeta(0.3, 2.5, 3.5, 1e10)));
    EXPECT_TRUE(std::isnan(P::NonCentralCdfF(1.5, 4.0, 7.0, 1e10)));
    EXPECT_TRUE(std::isnan(P::NonCentralCdfChi(1.5, 3.0, 1e10)));
    EXPECT_TRUE(std::isnan(P::NonCentralCdfT(1.5, 5.0, 1e5)));
    EXPECT_TRUE(std::isnan(P::NonCentralCdfT(1.5, 5.0, -1e5)));
    EXPECT_TRUE(std::isnan(P::NonCentralPdfT(1.5, 5.0, 1e5)));
    EXPECT_TRUE(std::isnan(P::FindNCParamChi(1e10, 3.0, 0.1)));
    EXPECT_TRUE(std::isnan(P::FindNCParamF(1e10, 3.0, 5.0, 0.1)));
    EXPECT_TRUE(std::isnan(P::FindNCParamT(1e10, 3.0, 0.1)));
    EXPECT_TRUE(std::isnan(P::IdfBeta(0.5, 1e20, 3.5)));
    EXPECT_TRUE(std::isnan(P::IdfBeta(0.5, 2.5, 1e20)));
    EXPECT_TRUE(std::isnan(P::IdfF(0.5, 4.0, 1e20)));
    EXPECT_TRUE(std::isnan(P::IdfF(1e-300, 8.77634, 4.85321)));
    EXPECT_TRUE(std::isnan(P::IdfBin(0.3, 1e20, 0.5)));
}

TEST(Precise, ALargeNonCentralityIsFound)
{
    // Near a normal distribution of mean df + lambda and variance 2 (df + 2 lambda).
    const double lambda = P::FindNCParamChi(1e8, 3.0, 0.1);
    const double z = (1e8 - (3.0 + lambda)) / std::sqrt(2.0 * (3.0 + 2.0 * lambda));
    EXPECT_NEAR(z, -1.2815515655446004, 1e-4);
}

TEST(Precise, InfinitiesAreTakenWhereTheyHaveALimit)
{
    EXPECT_EQ(P::CdfStdNorm(kInf), 1.0);
    EXPECT_EQ(P::IdfStdNorm(1.0), kInf);
    EXPECT_EQ(P::CdfT(-kInf, 5.0), 0.0);
    EXPECT_EQ(P::CdfF(kInf, 2.0, 3.0), 1.0);
    EXPECT_EQ(P::CdfChi(kInf, 3.0), 1.0);
    EXPECT_EQ(P::SigChi(kInf, 3.0), 0.0);
}

}  // namespace
