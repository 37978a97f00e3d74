// Every function with NaN, infinities and the ends of the doubles in one and in two of its
// arguments: it answers, within its bounds, with a documented code. AddressSanitizer and
// UndefinedBehaviorSanitizer run these tests too.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "stats/mcdistfun.h"
#include "tests/stats/support/expect.h"
#include "tests/stats/support/functions.h"
#include "tests/stats/support/precise_functions.h"

namespace {

using namespace reference;
using D = MCMath_850::MCDistFun;

const std::vector<std::string> kHostile = {"nan",
                                           "inf",
                                           "-inf",
                                           "missing",
                                           "0",
                                           "-0",
                                           "4.9406564584124654e-324",
                                           "-4.9406564584124654e-324",
                                           "1.7976931348623157e308",
                                           "1e-300",
                                           "-1",
                                           "1"};

// An ordinary point of each function, as text; the hostile values replace parts of it. Functions of
// whole counts and of vectors have their own tests below.
struct Plain {
    const char* function;
    std::vector<std::string> arguments;
};

const Plain kPlain[] = {
    {"IsMissing", {"1"}},
    {"Exponent", {"1"}},
    {"Power", {"2", "3"}},
    {"Multiply", {"2", "3"}},
    {"AlmostEqual", {"1", "1", "8"}},
    {"IsOneOverOddInteger", {"0.2", "32"}},
    {"IsOneOverEvenInteger", {"0.2", "32"}},
    {"probit", {"0.3"}},
    {"derf", {"0.3"}},
    {"derfc", {"0.3"}},
    {"prbnrm", {"0.3"}},
    {"CdfStdNorm", {"0.3"}},
    {"CdfNorm", {"1", "2", "3"}},
    {"IdfStdNorm", {"0.3"}},
    {"IdfNorm", {"0.3", "1", "2"}},
    {"PdfNormalStandard", {"0.3"}},
    {"PdfNormal", {"1", "2", "3"}},
    {"dnlgam", {"3.2"}},
    {"zeltdnlgam", {"3.2"}},
    {"gammad", {"1.5", "2.5", "1"}},
    {"gammad", {"3.5", "2.5", "0"}},
    {"cdfexp", {"1.5", "2"}},
    {"PdfGamma", {"1.5", "2.5", "2"}},
    {"CdfGam", {"1.5", "2.5", "2"}},
    {"IdfGam", {"0.3", "2.5", "2"}},
    {"CdfChi", {"1.5", "3"}},
    {"SigChi", {"1.5", "3"}},
    {"zeltidfchi", {"0.3", "3"}},
    {"idfchb", {"0.3", "3", "1.5"}},
    {"IdfChi", {"0.3", "3"}},
    {"cbtaux", {"0.3"}},
    {"cdfbet", {"0.3", "2.5", "3.5"}},
    {"CdfBeta", {"0.3", "0.5", "3.5"}},
    {"betinv", {"0.3", "2.5", "3.5"}},
    {"IdfBeta", {"0.7", "0.5", "3.5"}},
    {"PdfT", {"1.5", "5"}},
    {"zeltcdft", {"1.5", "5"}},
    {"CdfT", {"0.5", "5"}},
    {"SigT", {"1.5", "5"}},
    {"zeltidft", {"0.3", "5"}},
    {"IdfT", {"0.7", "5"}},
    {"zeltcdff", {"1.5", "4", "7"}},
    {"CdfF", {"0.5", "4", "7"}},
    {"SigF", {"1.5", "4", "7"}},
    {"zeltidff", {"0.3", "4", "7"}},
    {"IdfF", {"0.3", "4", "7"}},
    {"dnlbnc", {"12", "5"}},
    {"CdfBin", {"3", "12", "0.3"}},
    {"PdfBin", {"3", "12", "0.3"}},
    {"IdfBin", {"0.3", "12", "0.3"}},
    {"CDFHyper", {"2", "20", "7", "5"}},
    {"ncdbet", {"0.3", "2.5", "3.5", "2", "1e-8"}},
    {"NonCentralCdfF", {"1.5", "4", "7", "2", "1e-8"}},
    {"NonCentralCdfChi", {"1.5", "3", "2"}},
    {"NonCentralCdfT", {"1.5", "5", "1"}},
    {"NonCentralPdfT", {"1.5", "5", "1"}},
    {"FindNCParamChi", {"1.5", "3", "0.2", "1e-6"}},
    {"FindNCParamF", {"1.5", "4", "7", "0.2", "1e-6"}},
    {"FindNCParamT", {"1.5", "5", "0.2", "1e-6"}},
};

const std::set<long> kCodes = {0, 1, 2, 3, 4, 5, 6, 7};

// Two at once: fewer of them, as a search at the end of the doubles takes seconds.
const std::vector<std::string> kHostilePairs = {"nan", "inf", "-inf", "0", "-1"};

void ExpectAnAnswer(const Function& function, const std::vector<std::string>& arguments)
{
    const Args args(arguments);
    const Outcome outcome = function.call(args);
    EXPECT_TRUE(kCodes.count(outcome.code.value_or(0)))
        << function.name << "(" << args.Text() << ")";
    EXPECT_EQ(outcome.values.size(), 1u);
}

TEST(HostileArguments, PlainPointsNameEveryFunctionOfNumbers)
{
    std::set<std::string> named;
    for (const Plain& plain : kPlain) named.insert(plain.function);
    for (const Function& function : Functions())
        if (function.name != "PdfHyper" && function.name != "GPTile" && function.name != "Mednci") {
            EXPECT_TRUE(named.count(function.name)) << function.name;
        }
}

TEST(HostileArguments, OneOfThemIsAnsweredByEveryFunction)
{
    for (const Plain& plain : kPlain)
        for (std::size_t i = 0; i < plain.arguments.size(); ++i)
            for (const std::string& hostile : kHostile) {
                std::vector<std::string> arguments = plain.arguments;
                arguments[i] = hostile;
                ExpectAnAnswer(Find(plain.function), arguments);
            }
}

TEST(HostileArguments, TwoOfThemAreAnsweredByEveryFunction)
{
    for (const Plain& plain : kPlain)
        for (std::size_t i = 0; i < plain.arguments.size(); ++i)
            for (std::size_t k = i + 1; k < plain.arguments.size(); ++k)
                for (const std::string& one : kHostilePairs)
                    for (const std::string& other : kHostilePairs) {
                        std::vector<std::string> arguments = plain.arguments;
                        arguments[i] = one;
                        arguments[k] = other;
                        ExpectAnAnswer(Find(plain.function), arguments);
                    }
}

TEST(HostileArguments, OneOrTwoOfThemAreAnsweredByEveryPreciseFunction)
{
    std::vector<std::string> single = kHostile;
    single.insert(single.end(), {"1e5", "1e10", "1e20", "1e100"});
    std::vector<std::string> pairs = kHostilePairs;
    pairs.insert(pairs.end(), {"1e10", "1e20"});
    for (const Plain& plain : kPlain) {
        const PreciseFunction& function = PreciseFor(plain.function);
        if (function.name == nullptr) continue;
        const auto expectAnAnswer = [&](const std::vector<std::string>& arguments) {
            const Args args(arguments);
            EXPECT_NO_THROW(EXPECT_EQ(function.call(args).values.size(), 1u))
                << function.name << "(" << args.Text() << ")";
        };
        for (std::size_t i = 0; i < plain.arguments.size(); ++i) {
            std::vector<std::string> arguments = plain.arguments;
            for (const std::string& one : single) {
                arguments[i] = one;
                expectAnAnswer(arguments);
            }
            for (std::size_t k = i + 1; k < plain.arguments.size(); ++k) {
                arguments = plain.arguments;
                for (const std::string& one : pairs)
                    for (const std::string& other : pairs) {
                        arguments[i] = one;
                        arguments[k] = other;
                        expectAnAnswer(arguments);
                    }
            }
        }
    }
}

TEST(HostileArguments, NaNIsNeverAnsweredWithANumberThatIsNotTold)
{
    // The functions that answer a number for a NaN in the argument of that position, as their
    // comments say.
    const std::set<std::string> told = {
        "IsMissing 0",
        "AlmostEqual 0",
        "AlmostEqual 1",
        "AlmostEqual 2",
        "IsOneOverOddInteger 0",
        "IsOneOverOddInteger 1",
        "IsOneOverEvenInteger 0",
        "IsOneOverEvenInteger 1",
        "derf 0",    // 1.0: it counts as large
        "gammad 2",  // a truth value
        "idfchb 0",
        "idfchb 1",  // walks to an end of the bracket
        "betinv 0",
        "betinv 1",
        "betinv 2",
        "IdfBeta 0",
        "IdfBeta 1",
        "IdfBeta 2",  // -1.0, the failure
        "PdfBin 0",   // 0.0: not a whole number
        "ncdbet 4",
        "NonCentralCdfF 4",  // a tolerance that is not below 1: the first term alone
    };
    for (const Plain& plain : kPlain)
        for (std::size_t i = 0; i < plain.arguments.size(); ++i) {
            std::vector<std::string> arguments = plain.arguments;
            arguments[i] = "nan";
            const double value = Find(plain.function).call(Args(arguments)).values[0];
            const bool number = !std::isnan(value) && value != expect::Missing();
            const std::string place = std::string(plain.function) + " " + std::to_string(i);
            EXPECT_EQ(number, told.count(place) == 1) << place << ": " << value;
        }
}

TEST(HostileArguments, TablesOfThemAreAnswered)
{
    using expect::kInf;
    using expect::kNaN;
    for (const double v : {kNaN, kInf, -kInf, expect::Missing(), 0.0, expect::kMax}) {
        const std::vector<double> tables[] = {
            {v, 2.0, 3.0}, {1.0, v, 3.0}, {1.0, 2.0, v}, {v, v, v}};
        for (const auto& x : tables)
            for (const auto& freq : tables)
                for (const double n : {3.0, 1e6, v})
                    for (const long method : {-1L, 0L, 1L, 2L, 3L}) {
                        double result = 0.0, lower = 0.0, upper = 0.0, achieved = 0.0;
                        long status = 99;
                        D::GPTile(3, 50.0, x, freq, x, method, result, status);
                        EXPECT_GE(status, -1);
                        EXPECT_LE(status, 2);
                        D::GPTile(3, v, x, freq, x, method, result, status);
                        D::Mednci(3, x, freq, n, 95.0, true, lower, upper, achieved);
                        D::Mednci(3, x, freq, n, v, true, lower, upper, achieved);
                    }
    }
    double result = 0.0, lower = 0.0, upper = 0.0, achieved = 0.0;
    long status = 99;
    constexpr long least = std::numeric_limits<long>::min();
    constexpr long most = std::numeric_limits<long>::max();
    for (const long count : {least, -1L, most})
        for (const long method : {least, most}) {
            D::GPTile(count, 50.0, {1.0, 2.0}, {1.0, 2.0}, {1.0}, method, result, status);
            EXPECT_EQ(status, -1);
            D::Mednci(count, {1.0, 2.0}, {1.0, 2.0}, 3.0, 95.0, true, lower, upper, achieved);
            EXPECT_EQ(lower, expect::Missing());
        }
}

}  // namespace
