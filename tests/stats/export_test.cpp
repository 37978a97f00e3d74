// What a shared library built from the statistics objects shows: every function and global, under
// the names and argument types that other components link against, although the objects hide by
// default.

#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>

namespace {

// The demangled dynamic symbols that the library defines, as nm lists them.
std::set<std::string> Exported()
{
    std::set<std::string> names;
    FILE* nm = popen("nm -DC --defined-only " VELSTATS_SHARED_FILE, "r");
    char line[1024];
    while (nm && std::fgets(line, sizeof line, nm)) {
        const std::string text = line;
        if (text.size() > 20)
            names.insert(text.substr(19, text.size() - 20));  // after address and type
    }
    if (nm) pclose(nm);
    return names;
}

const char* const kWanted[] = {
    "MCCommon_850::MCMV::gMissingValue",
    "MCCommon_850::MCMV::Missing()",
    "MCCommon_850::MCMV::IsMissing(double)",
    "MCMath_850::maxInt",
    "MCMath_850::mEpsilon",
    "MCMath_850::MCPower::gMachineMaxInt",
    "MCMath_850::MCPower::gMachineEpsilon",
    "MCMath_850::MCPower::gMachineMaxExp",
    "MCMath_850::MCPower::gMachineMinExp",
    "MCMath_850::MCPower::Exponent(double, double&)",
    "MCMath_850::MCPower::Power(double, double, double&)",
    "MCMath_850::MCPower::Multiply(double, double)",
    "MCMath_850::MCPower::AlmostEqual(double, double, double)",
    "MCMath_850::MCPower::IsOneOverOddInteger(double, double)",
    "MCMath_850::MCPower::IsOneOverEvenInteger(double, double)",
    "MCMath_850::MCDistFun::probit(double const&)",
    "MCMath_850::MCDistFun::derf(double const&)",
    "MCMath_850::MCDistFun::derfc(double const&)",
    "MCMath_850::MCDistFun::prbnrm(double const&)",
    "MCMath_850::MCDistFun::CdfStdNorm(double)",
    "MCMath_850::MCDistFun::CdfNorm(double, double, double)",
    "MCMath_850::MCDistFun::IdfStdNorm(double)",
    "MCMath_850::MCDistFun::IdfNorm(double, double, double)",
    "MCMath_850::MCDistFun::PdfNormalStandard(double)",
    "MCMath_850::MCDistFun::PdfNormal(double, double, double)",
    "MCMath_850::MCDistFun::dnlgam(double const&)",
    "MCMath_850::MCDistFun::zeltdnlgam(double const&)",
    "MCMath_850::MCDistFun::gammad(double const&, double const&, bool const&, long&)",
    "MCMath_850::MCDistFun::cdfexp(double const&, double const&, long&)",
    "MCMath_850::MCDistFun::PdfGamma(double, double, double)",
    "MCMath_850::MCDistFun::CdfGam(double, double, double)",
    "MCMath_850::MCDistFun::IdfGam(double const&, double const&, double const&)",
    "MCMath_850::MCDistFun::CdfChi(double, double)",
    "MCMath_850::MCDistFun::SigChi(double, double)",
    "MCMath_850::MCDistFun::zeltidfchi(double const&, double const&, long&)",
    "MCMath_850::MCDistFun::idfchb(double const&, double const&, double const&, long&)",
    "MCMath_850::MCDistFun::IdfChi(double, double)",
    "MCMath_850::MCDistFun::cbtaux(double const&)",
    "MCMath_850::MCDistFun::cdfbet(double const&, double const&, double const&, long&)",
    "MCMath_850::MCDistFun::CdfBeta(double, double, double)",
    "MCMath_850::MCDistFun::betinv(double const&, double const&, double const&)",
    "MCMath_850::MCDistFun::IdfBeta(double const&, double const&, double const&)",
    "MCMath_850::MCDistFun::PdfT(double, double, long&)",
    "MCMath_850::MCDistFun::zeltcdft(double const&, double const&, long&)",
    "MCMath_850::MCDistFun::CdfT(double, double)",
    "MCMath_850::MCDistFun::SigT(double, double)",
    "MCMath_850::MCDistFun::zeltidft(double const&, double const&, long&)",
    "MCMath_850::MCDistFun::IdfT(double, double)",
    "MCMath_850::MCDistFun::zeltcdff(double const&, double const&, double const&, long&)",
    "MCMath_850::MCDistFun::CdfF(double, double, double)",
    "MCMath_850::MCDistFun::SigF(double, double, double)",
    "MCMath_850::MCDistFun::zeltidff(double const&, double const&, double const&, long&)",
    "MCMath_850::MCDistFun::IdfF(double, double, double)",
    "MCMath_850::MCDistFun::dnlbnc(double const&, double const&, long&)",
    "MCMath_850::MCDistFun::CdfBin(double, double, double, long&)",
    "MCMath_850::MCDistFun::PdfBin(double, double, double, long&)",
    "MCMath_850::MCDistFun::IdfBin(double, double, double, long&)",
    "MCMath_850::MCDistFun::PdfHyper(long, long, long, long)",
    "MCMath_850::MCDistFun::CDFHyper(double, double, double, double, int&)",
    "MCMath_850::MCDistFun::ncdbet(double const&, double const&, double const&, double const&, "
    "long&, double)",
    "MCMath_850::MCDistFun::NonCentralCdfF(double, double, double, double, double)",
    "MCMath_850::MCDistFun::NonCentralCdfChi(double, double, double)",
    "MCMath_850::MCDistFun::NonCentralCdfT(double, double, double)",
    "MCMath_850::MCDistFun::NonCentralPdfT(double, double, double, long&)",
    "MCMath_850::MCDistFun::FindNCParamChi(double, double, double, double)",
    "MCMath_850::MCDistFun::FindNCParamF(double, double, double, double, double)",
    "MCMath_850::MCDistFun::FindNCParamT(double, double, double, double)",
    ("MCMath_850::MCDistFun::GPTile(long, double, std::vector<double, std::allocator<double> > "
     "const&, "
     "std::vector<double, std::allocator<double> > const&, std::vector<double, "
     "std::allocator<double> > const&, "
     "long, double&, long&)"),
    ("MCMath_850::MCDistFun::Mednci(long, std::vector<double, std::allocator<double> > const&, "
     "std::vector<double, std::allocator<double> > const&, double, double, bool, double&, double&, "
     "double&)"),
};

TEST(Exports, EveryFunctionAndGlobalIsShownUnderItsSignature)
{
    const std::set<std::string> exported = Exported();
    ASSERT_FALSE(exported.empty()) << "nm shows nothing of " VELSTATS_SHARED_FILE;
    for (const char* wanted : kWanted) EXPECT_TRUE(exported.count(wanted)) << wanted;
}

TEST(Exports, NothingElseOfTheLibraryIsShown)
{
    const std::set<std::string> wanted(std::begin(kWanted), std::end(kWanted));
    for (const std::string& name : Exported())
        if (name.find("_850::") != std::string::npos) {
            EXPECT_TRUE(wanted.count(name)) << name;
        }
}

}  // namespace
