#ifndef VELSCORE_TESTS_STATS_SUPPORT_PAGE_ENTRIES_H
#define VELSCORE_TESTS_STATS_SUPPORT_PAGE_ENTRIES_H

#include "tests/stats/support/functions.h"

// What docs/statistics.md says of each function beside its measured errors.
namespace reference {

/// Which points of a function count as its tails.
enum class Tails {
    None,         ///< no tails: all points are the bulk
    Probability,  ///< an answer below 0.001
    Quantile,     ///< a first argument within 0.001 of 0 or 1, or an answer below 0.001 in size
    NearZero,     ///< an answer below 0.01 in size, where the function itself vanishes
};

struct PageEntry {
    const char* function;
    const char* domain;
    const char* source;
    const char* failure;
    Tails tails;
};

struct PageFamily {
    const char* title;
    std::vector<PageEntry> entries;
};

inline const std::vector<PageFamily>& PageFamilies()
{
    using enum Tails;
    // A row a function.
    // clang-format off
    static const std::vector<PageFamily> families = {
        {"Guarded power",
         {{"Exponent", "all x", "exp, cut off at -708.39 and 709", "returns 1 underflow (0.0), 2 overflow (missing)", None},
          {"Power", "all; a negative base with a whole exponent or an odd root", "exp of a log", "returns 0 to 7, see the header", None},
          {"Multiply", "all", "exp of two logs", "missing on overflow", None}}},
        {"Normal",
         {{"probit", "0 < p < 1", "Wichura 1988, AS 241", "missing", Quantile},
          {"derf", "all x", "Ooura 1996", "none", None},
          {"derfc", "all x", "Ooura 1996, through a log", "none; 0.0 below exp(-708)", Probability},
          {"prbnrm", "all z", "derf above 0, derfc below", "none", Probability},
          {"CdfStdNorm", "all z", "prbnrm", "none", Probability},
          {"CdfNorm", "sigma > 0", "prbnrm", "missing", Probability},
          {"IdfStdNorm", "0 < p < 1", "probit", "missing", Quantile},
          {"IdfNorm", "0 < p < 1, sigma > 0", "probit", "missing", Quantile},
          {"PdfNormalStandard", "all z", "closed form", "none", Probability},
          {"PdfNormal", "sigma not 0; negative for a negative sigma", "closed form", "missing", Probability}}},
        {"Gamma and chi-square",
         {{"dnlgam, zeltdnlgam", "x > 0", "Ooura 1996", "missing", NearZero},
          {"gammad", "a > 0, all x", "Shea 1988, AS 239; Wilson and Hilferty 1931, Peizer and Pratt 1968 as fall-backs", "1 bad a", Probability},
          {"cdfexp", "rate > 0, all x", "closed form", "1 bad rate", Probability},
          {"PdfGamma", "shape > 0, rate > 0, all x", "exp of a log", "missing, also at x = 0 with shape < 1", Probability},
          {"CdfGam", "shape > 0, rate > 0, all x", "gammad", "missing", Probability},
          {"IdfGam", "0 <= p < 1, shape >= 0, rate > 0", "zeltidfchi", "missing", Quantile},
          {"CdfChi", "df > 0, all x", "gammad", "missing", Probability},
          {"SigChi", "df > 0, all x", "gammad", "missing", Probability},
          {"zeltidfchi", "0 <= p < 1, df > 0", "Best and Roberts 1975, AS 91", "1 bad argument, 2 overflow or no bracket", Quantile},
          {"idfchb", "df > 0, start > 0", "bisection", "1 bad start, 2 no bracket", Quantile},
          {"IdfChi", "0 <= p < 1, df > 0", "zeltidfchi", "missing", Quantile}}},
        {"Beta, t and F",
         {{"cbtaux", "x >= 0", "Peizer and Pratt 1968", "missing", NearZero},
          {"cdfbet", "a > 0, b > 0, all x", "Abramowitz and Stegun 1964, 26.5.4 and 26.5.8; Peizer and Pratt 1968 as fall-back", "1 bad parameter", Probability},
          {"CdfBeta", "a > 0, b > 0, all x", "cdfbet", "missing", Probability},
          {"betinv", "0 <= p <= 1, a > 0, b > 0", "Cran, Martin and Thomas 1977, AS 109; AS 64", "-1.0", Quantile},
          {"IdfBeta", "0 <= p <= 1, a > 0, b > 0", "betinv", "-1.0", Quantile},
          {"PdfT", "df > 0, all t", "exp of log gammas", "1 bad df", Probability},
          {"zeltcdft", "df > 0, all t", "cdfbet; normal above 1e8 df", "1 bad df, 2 no normal value", Probability},
          {"CdfT", "df > 0, all t", "zeltcdft", "missing", Probability},
          {"SigT", "df > 0, all t", "cdfbet", "missing", Probability},
          {"zeltidft", "0 < p < 1, df > 0", "betinv; normal from 1e8 df on", "1 bad argument, 2 no beta quantile", Quantile},
          {"IdfT", "0 < p < 1, df > 0", "zeltidft", "missing", Quantile},
          {"zeltcdff", "df1 > 0, df2 > 0, all f", "cdfbet; zeltcdft for df1 = 1", "1 bad df, 2 no answer from below", Probability},
          {"CdfF", "df1 > 0, df2 > 0, all f", "zeltcdff", "missing", Probability},
          {"SigF", "df1 > 0, df2 > 0, all f", "cdfbet", "missing", Probability},
          {"zeltidff", "0 <= p < 1, df1 > 0, df2 > 0", "betinv; zeltidft for df1 = 1", "1 bad argument, 2 no quantile from below", Quantile},
          {"IdfF", "0 <= p < 1, df1 > 0, df2 > 0", "zeltidff", "missing", Quantile}}},
        {"Binomial and hypergeometric",
         {{"dnlbnc", "0 <= k <= n, real", "product up to 33, then log gammas", "1 bad argument", NearZero},
          {"CdfBin", "whole n >= 1, 0 <= p <= 1, all x", "sum from the mode; Peizer and Pratt 1968 as fall-back", "3 fractional n, 1 bad argument", Probability},
          {"PdfBin", "n >= 1, 0 <= p <= 1, all x", "exp of dnlbnc", "1 bad argument, 2 overflow", Probability},
          {"IdfBin", "whole n >= 1, 0 <= p <= 1, 0 <= prob <= 1; one below the usual quantile", "steps from a normal start", "1 fractional n, 2 bad argument", Quantile},
          {"PdfHyper", "whole counts, x in the support", "exp of dnlbnc", "missing, also outside the support", Probability},
          {"CDFHyper", "whole counts up to 2^63, all x; smooth up to a population of 1,000", "Lund 1980, AS 152", "1 bad argument", Probability}}},
        {"Non-central",
         {{"ncdbet", "a > 0, b > 0, lambda >= 0, all x", "Lenth 1987, AS 226; Frick 1990, AS R84", "1 bad argument, 2 no convergence", Probability},
          {"NonCentralCdfF", "df1 > 0, df2 > 0, lambda >= 0, all f", "ncdbet", "missing", Probability},
          {"NonCentralCdfChi", "df > 0, lambda >= 0, all x", "AS 226 on gammad", "missing", Probability},
          {"NonCentralCdfT", "df > 0, all t and delta", "Lenth 1989, AS 243", "missing", Probability},
          {"NonCentralPdfT", "df > 0, all t and delta", "series from its largest term", "1 bad df, 2 overflow", Probability},
          {"FindNCParamChi", "df > 0, 0 <= p <= 1, tolerance >= 0", "bisection", "missing", NearZero},
          {"FindNCParamF", "df1 > 0, df2 > 0, 0 <= p <= 1, tolerance >= 0", "bisection", "missing", NearZero},
          {"FindNCParamT", "t >= 0, df > 0, 0 <= p <= 1, tolerance >= 0", "bisection", "missing", NearZero}}},
        {"Frequency tables",
         {{"GPTile", "2 values or more, frequencies >= 0", "linear interpolation", "-1 too few values, 1 below, 2 above the midpoints", None},
          {"Mednci", "whole n >= 1, level in percent", "IdfBin, cdfbet", "missing", None}}},
    };
    // clang-format on
    return families;
}

}  // namespace reference

#endif
