// Built-in functions of the normal distribution, by the textbook's definition and to almost full
// precision: what a derived field holds is no statistic of a model.

#include "host/expressions/functions.h"
#include "stats/precise.h"

namespace MCVelscore_850 {

namespace {

namespace Precise = MCMath_850::Precise;
using Numbers = std::span<double>;

constexpr Function Of(const char* name, int arguments, double (*compute)(Numbers))
{
    return {name, arguments, arguments, MissingRule::Propagate, Function::Number, compute, nullptr};
}

constexpr Function kFunctions[] = {
    // x, mean, standard deviation
    Of("normalCDF", 3, [](Numbers x) { return Precise::CdfNorm(x[0], x[1], x[2]); }),
    Of("normalPDF", 3, [](Numbers x) { return Precise::PdfNormal(x[0], x[1], x[2]); }),
    // probability, mean, standard deviation
    Of("normalIDF", 3, [](Numbers x) { return Precise::IdfNorm(x[0], x[1], x[2]); }),
    Of("stdNormalCDF", 1, [](Numbers x) { return Precise::CdfStdNorm(x[0]); }),
    Of("stdNormalPDF", 1, [](Numbers x) { return Precise::PdfNormalStandard(x[0]); }),
    Of("stdNormalIDF", 1, [](Numbers x) { return Precise::IdfStdNorm(x[0]); }),
    Of("erf", 1, [](Numbers x) { return Precise::Erf(x[0]); }),
};

}  // namespace

std::span<const Function> DistributionFunctions() { return kFunctions; }

}  // namespace MCVelscore_850
