// No function of the library allocates: every reference point is computed while the global operator
// new counts.

#include <gtest/gtest.h>

#include "stats/mcdistfun.h"
#include "stats/mcpower.h"
#include "tests/allocations.h"
#include "tests/stats/support/functions.h"

namespace {

using D = MCMath_850::MCDistFun;
using MCMath_850::MCPower;
using MCVelscore_850::AllocationCount;
using reference::Read;
using reference::Row;

// A function of numbers alone, called with the numbers of its reference rows. The numbers are
// parsed before the counting starts.
template <class F>
void ExpectNoAllocation(const char* name, F call)
{
    for (const Row& row : Read(name)) {
        double a[5] = {};
        for (std::size_t i = 0; i < row.args.Count(); ++i) a[i] = row.args[i];
        const long before = AllocationCount();
        call(a);
        EXPECT_EQ(AllocationCount(), before) << name << "(" << row.args.Text() << ")";
    }
}

TEST(Allocation, CounterCounts)
{
    const long before = AllocationCount();
    ::operator delete(::operator new(100));  // called by name: a new expression may be left out
    EXPECT_EQ(AllocationCount(), before + 1);
}

TEST(Allocation, NoFunctionOfNumbersAllocates)
{
    static long code = 0;
    static int icode = 0;
    static double result = 0.0;
    ExpectNoAllocation("Exponent", [](double* a) { MCPower::Exponent(a[0], result); });
    ExpectNoAllocation("Power", [](double* a) { MCPower::Power(a[0], a[1], result); });
    ExpectNoAllocation("Multiply", [](double* a) { MCPower::Multiply(a[0], a[1]); });
    ExpectNoAllocation("IdfNorm", [](double* a) { D::IdfNorm(a[0], a[1], a[2]); });
    ExpectNoAllocation("CdfNorm", [](double* a) { D::CdfNorm(a[0], a[1], a[2]); });
    ExpectNoAllocation("PdfNormal", [](double* a) { D::PdfNormal(a[0], a[1], a[2]); });
    ExpectNoAllocation("derf", [](double* a) { D::derf(a[0]); });
    ExpectNoAllocation("dnlgam", [](double* a) { D::dnlgam(a[0]); });
    ExpectNoAllocation("gammad", [](double* a) { D::gammad(a[0], a[1], a[2] != 0.0, code); });
    ExpectNoAllocation("cdfexp", [](double* a) { D::cdfexp(a[0], a[1], code); });
    ExpectNoAllocation("PdfGamma", [](double* a) { D::PdfGamma(a[0], a[1], a[2]); });
    ExpectNoAllocation("CdfGam", [](double* a) { D::CdfGam(a[0], a[1], a[2]); });
    ExpectNoAllocation("IdfGam", [](double* a) { D::IdfGam(a[0], a[1], a[2]); });
    ExpectNoAllocation("CdfChi", [](double* a) { D::CdfChi(a[0], a[1]); });
    ExpectNoAllocation("SigChi", [](double* a) { D::SigChi(a[0], a[1]); });
    ExpectNoAllocation("IdfChi", [](double* a) { D::IdfChi(a[0], a[1]); });
    ExpectNoAllocation("idfchb", [](double* a) { D::idfchb(a[0], a[1], a[2], code); });
    ExpectNoAllocation("cbtaux", [](double* a) { D::cbtaux(a[0]); });
    ExpectNoAllocation("CdfBeta", [](double* a) { D::CdfBeta(a[0], a[1], a[2]); });
    ExpectNoAllocation("IdfBeta", [](double* a) { D::IdfBeta(a[0], a[1], a[2]); });
    ExpectNoAllocation("PdfT", [](double* a) { D::PdfT(a[0], a[1], code); });
    ExpectNoAllocation("CdfT", [](double* a) { D::CdfT(a[0], a[1]); });
    ExpectNoAllocation("SigT", [](double* a) { D::SigT(a[0], a[1]); });
    ExpectNoAllocation("IdfT", [](double* a) { D::IdfT(a[0], a[1]); });
    ExpectNoAllocation("CdfF", [](double* a) { D::CdfF(a[0], a[1], a[2]); });
    ExpectNoAllocation("SigF", [](double* a) { D::SigF(a[0], a[1], a[2]); });
    ExpectNoAllocation("IdfF", [](double* a) { D::IdfF(a[0], a[1], a[2]); });
    ExpectNoAllocation("dnlbnc", [](double* a) { D::dnlbnc(a[0], a[1], code); });
    ExpectNoAllocation("CdfBin", [](double* a) { D::CdfBin(a[0], a[1], a[2], code); });
    ExpectNoAllocation("PdfBin", [](double* a) { D::PdfBin(a[0], a[1], a[2], code); });
    ExpectNoAllocation("IdfBin", [](double* a) { D::IdfBin(a[0], a[1], a[2], code); });
    ExpectNoAllocation("PdfHyper", [](double* a) {
        D::PdfHyper(static_cast<long>(a[0]), static_cast<long>(a[1]), static_cast<long>(a[2]),
                    static_cast<long>(a[3]));
    });
    ExpectNoAllocation("CDFHyper", [](double* a) { D::CDFHyper(a[0], a[1], a[2], a[3], icode); });
    ExpectNoAllocation("ncdbet", [](double* a) { D::ncdbet(a[0], a[1], a[2], a[3], code, a[4]); });
    ExpectNoAllocation("NonCentralCdfF",
                       [](double* a) { D::NonCentralCdfF(a[0], a[1], a[2], a[3], a[4]); });
    ExpectNoAllocation("NonCentralCdfChi",
                       [](double* a) { D::NonCentralCdfChi(a[0], a[1], a[2]); });
    ExpectNoAllocation("NonCentralCdfT", [](double* a) { D::NonCentralCdfT(a[0], a[1], a[2]); });
    ExpectNoAllocation("NonCentralPdfT",
                       [](double* a) { D::NonCentralPdfT(a[0], a[1], a[2], code); });
    ExpectNoAllocation("FindNCParamChi",
                       [](double* a) { D::FindNCParamChi(a[0], a[1], a[2], a[3]); });
    ExpectNoAllocation("FindNCParamF",
                       [](double* a) { D::FindNCParamF(a[0], a[1], a[2], a[3], a[4]); });
    ExpectNoAllocation("FindNCParamT", [](double* a) { D::FindNCParamT(a[0], a[1], a[2], a[3]); });
}

TEST(Allocation, NeitherDoTheTwoOnTables)
{
    const std::vector<double> x{1.0, 2.0, 4.0};
    const std::vector<double> freq{2.0, 3.0, 5.0};
    const std::vector<double> y{0.5, 1.5, 3.0};
    double lower = 0.0, upper = 0.0, achieved = 0.0;
    long status = 0;
    const long before = AllocationCount();
    for (const long method : {0L, 1L, 3L}) D::GPTile(3, 40.0, x, freq, y, method, lower, status);
    D::Mednci(3, x, freq, 10.0, 95.0, true, lower, upper, achieved);
    EXPECT_EQ(AllocationCount(), before);
}

}  // namespace
