// Writes docs/statistics.md from the reference files, or checks that it still tells the truth.
//
//   stats_accuracy_page --write FILE
//   stats_accuracy_page --check FILE    0 if the page stands, 1 and the first difference if it's
//                                       stale; 77 if it was measured with another Boost
//
// The check wants every word as it is, and every measured error within a factor of 3: the last bits
// of exp and log differ between C libraries.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <optional>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <variant>

#include <boost/version.hpp>

#include "stats/mcmissingvalue.h"
#include "tests/stats/support/page_entries.h"
#include "tests/stats/support/precise_functions.h"

namespace {

using namespace reference;

constexpr double kNoise = 3.0;

constexpr int kNotComparable = 77;

// The errors of Precise are those of one version of Boost.Math.
const std::string kMeasuredWith = "Measured with Boost ";

std::string BoostVersion()
{
    return std::to_string(BOOST_VERSION / 100000) + "." +
           std::to_string(BOOST_VERSION / 100 % 1000);
}

// The errors at the points of one column, by their arguments.
struct Measured {
    std::map<std::string, double> errors;
    std::string worst;           // the arguments of the largest, the first of equals
    bool namesArguments = true;  // in its cell

    double Largest() const { return errors.empty() ? 0.0 : errors.at(worst); }

    void Take(const std::string& arguments, double got, double truth)
    {
        if (truth == got) return Note(arguments, 0.0);  // also where both are missing
        if (MCCommon_850::MCMV::IsMissing(got)) return Note(arguments, INFINITY);
        const double error = std::fabs(got - truth) / std::fabs(truth);
        Note(arguments, error <= std::numeric_limits<double>::max() ? error : INFINITY);
    }

private:
    void Note(const std::string& arguments, double error)
    {
        double& known = errors.try_emplace(arguments, 0.0).first->second;
        known = std::max(known, error);
        if (worst.empty() || known > Largest()) worst = arguments;
    }
};

// What stands in a cell for it: the largest error and where it is.
std::string Text(const Measured& m)
{
    if (m.errors.empty()) return "";
    const double error = m.Largest();
    if (error == 0.0) return "0";
    char text[32];
    std::snprintf(text, sizeof text, "%.1e", error);
    return m.namesArguments ? text + (" at " + m.worst) : text;
}

// The page as its words and its cells of measured errors, in order.
using Piece = std::variant<std::string, Measured>;

class Page {
public:
    Page& operator<<(const std::string& words)
    {
        pieces_.emplace_back(words);
        return *this;
    }
    Page& operator<<(const Measured& cell)
    {
        pieces_.emplace_back(cell);
        return *this;
    }
    const std::vector<Piece>& Pieces() const { return pieces_; }

private:
    std::vector<Piece> pieces_;
};

// The arguments as one would write them in a call.
std::string ArgumentText(const Args& args)
{
    return std::regex_replace(args.Text(), std::regex(R"(\.0(?=[,;]|$))"), "");
}

bool IsTail(Tails tails, const Args& args, double truth)
{
    switch (tails) {
        case Tails::None: return false;
        case Tails::Probability: return std::fabs(truth) < 1e-3;
        case Tails::Quantile:
            return args[0] < 1e-3 || args[0] > 1.0 - 1e-3 || std::fabs(truth) < 1e-3;
        case Tails::NearZero: return std::fabs(truth) < 0.01;
    }
    return false;
}

bool All(const Args&) { return true; }

struct Columns {
    Measured bulk;
    Measured tails;
};

Columns Measure(const std::vector<Row>& rows, const Call& call, Tails tails,
                bool (*compared)(const Args&) = All)
{
    Columns columns;
    for (const Row& row : rows) {
        if (!compared(row.args)) continue;
        const std::string arguments = ArgumentText(row.args);
        const Outcome outcome = call(row.args);
        for (std::size_t i = 0; i < row.truth.size(); ++i) {
            (IsTail(tails, row.args, row.truth[i]) ? columns.tails : columns.bulk)
                .Take(arguments, outcome.values[i], row.truth[i]);
        }
    }
    return columns;
}

// The points of a function that have an exact value: the reference's, and those of the folder
// exact.
std::vector<Row> ExactRows(const std::string& function)
{
    std::vector<Row> rows = Read(function);
    const std::string more = Folder() + "/exact/" + function + ".csv";
    if (std::filesystem::exists(more)) {
        for (Row& row : ReadFile(more)) rows.push_back(std::move(row));
    }
    std::erase_if(rows, [](const Row& row) { return row.truth.empty(); });
    return rows;
}

void WriteTables(Page& page)
{
    for (const PageFamily& family : PageFamilies()) {
        page << "\n## " + std::string(family.title) + "\n\n" +
                    "| Function | Domain | Source | Failure | Points | Bulk | Tails | `Precise` | "
                    "Bulk | Tails |\n"
                    "| --- | --- | --- | --- | --- | --- | --- | --- | --- | --- |\n";
        for (const PageEntry& entry : family.entries) {
            const std::string names = entry.function;
            const std::string function = names.substr(0, names.find(','));
            const std::vector<Row> rows = ExactRows(function);
            const Columns own = Measure(rows, Find(function).call, entry.tails);
            page << "| `" + names + "` | " + entry.domain + " | " + entry.source + " | " +
                        entry.failure + " | " + std::to_string(rows.size()) + " | "
                 << own.bulk << " | " << own.tails << " | ";
            const PreciseFunction& precise = PreciseFor(function);
            if (!precise.name) {
                page << "| | |\n";
                continue;
            }
            const Columns other = Measure(rows, precise.call, entry.tails, precise.compared);
            page << "`" + std::string(precise.name) + "` | " << other.bulk << " | " << other.tails
                 << " |\n";
        }
    }
}

// Single points that everybody meets, of the folder exact.
void WriteExamples(Page& page)
{
    const struct {
        const char* function;
        const char* arguments;
    } examples[] = {
        {"IdfT", "0.975, 10"},     {"IdfT", "0.975, 100"},     {"IdfT", "0.499, 300"},
        {"IdfT", "1e-12, 30"},     {"IdfT", "1e-40, 100"},     {"IdfF", "0.95, 3, 20"},
        {"IdfF", "0.95, 30, 200"}, {"IdfChi", "0.95, 3"},      {"CdfChi", "1e-12, 2"},
        {"CdfT", "-1000, 20"},     {"CdfT", "-1000000000, 2"}, {"SigT", "1000000000, 2"},
        {"CdfF", "20, 3, 20"},     {"CdfStdNorm", "-1.96"},    {"CdfBin", "1, 20, 0.5"},
    };
    page << "\n## Some single points\n\n| Call | `MCDistFun` | `Precise` |\n| --- | --- | --- |\n";
    for (const auto& example : examples) {
        std::vector<Row> rows = ExactRows(example.function);
        std::erase_if(rows,
                      [&](const Row& row) { return ArgumentText(row.args) != example.arguments; });
        if (rows.empty())
            throw std::runtime_error(std::string("no such point: ") + example.arguments);
        const auto error = [&](const Call& call) {
            Measured cell = Measure(rows, call, Tails::None).bulk;
            cell.namesArguments = false;
            return cell;
        };
        page << "| `" + std::string(example.function) + "(" + example.arguments + ")` | "
             << error(Find(example.function).call) << " | "
             << error(PreciseFor(example.function).call) << " |\n";
    }
}

// Hypergeometric populations above 1,000, where the library's own answer is a step on purpose.
void WriteSteps(Page& page)
{
    const struct {
        const char* name;
        bool (*holds)(const Args&);
    } parts[] = {
        {"1,001 to 10,000", [](const Args& a) { return a[1] <= 10000.0; }},
        {"10,001 to 100,000", [](const Args& a) { return a[1] > 10000.0; }},
    };
    const std::vector<Row> rows = ReadFile(Folder() + "/precise/CDFHyper.csv");
    page << "\n## Hypergeometric populations above 1,000\n\n"
            "| Population | `CDFHyper` | `Precise::CDFHyper` |\n| --- | --- | --- |\n";
    for (const auto& part : parts) {
        const Call& own = Find("CDFHyper").call;
        const Call& precise = PreciseFor("CDFHyper").call;
        page << "| " + std::string(part.name) + " | "
             << Measure(rows, own, Tails::None, part.holds).bulk << " | "
             << Measure(rows, precise, Tails::None, part.holds).bulk << " |\n";
    }
}

Page MakePage()
{
    Page page;
    page << R"(# Distribution functions and their accuracy

This page is made by `stats_accuracy_page` from the exact values in tests/data/stats; the test
`stats_accuracy_page_is_fresh` fails when it no longer agrees with them. Write it anew with

    build/release/bin/stats_accuracy_page --write docs/statistics.md

There are two sets of functions. Those of `MCDistFun` and `MCPower` (stats/mcdistfun.h,
stats/mcpower.h) are what the scoring models use: published algorithms whose answers, codes and
quirks stay as they are, so that a score never moves. Those of `Precise` (stats/precise.h) are the
same distributions through Boost.Math, for whoever needs a number for its own sake. Of them a model
uses the quantiles of t and of the normal distribution, for limits at another confidence level than
95%.

## Which to choose

- A number that must agree with the scores: `MCDistFun`, always.
- Quantiles of t, F and beta: `Precise`. Those of `MCDistFun` come from one search that ends at an
  absolute 2e-10 of the beta quantile: at everyday arguments 8 digits or more, few or none close to
  the median, with many degrees of freedom and where the beta quantile is small; for p or 1 - p below
  1e-19 the answer need not be a quantile at all.
- Small tails: `Precise`. Those of `MCDistFun` are often one minus the other tail (chi-square, t and
  F with 2 degrees of freedom, the exponential distribution), a sum that ends at an absolute
  tolerance (the non-central distributions), or cut off to 0 (below exp(-708)).
- Hypergeometric probabilities for populations above 1,000: `Precise`; the library's own is a step at
  the mean up to 10,000 and, with a small group, beyond.
- The usual binomial quantile (the smallest count whose probability reaches the wanted one):
  `Precise`. The library's own is on purpose the largest count within it, one below.
- The density of the non-central t: `MCDistFun`; Boost's is a difference over t and loses its digits
  near 0 and far out against delta. Its distribution function loses them against delta in both.
- For the rest the tables tell. The errors of `MCDistFun` grow with its parameters, those of
  `Precise` hardly; `MCDistFun` needs no Boost.

## In a program of your own

An installed tree has them as a static library with its headers. In CMake:

    find_package(velscore REQUIRED)
    target_link_libraries(program velscore::stats)

elsewhere `pkg-config --cflags --libs velscore-stats`. Then

    #include <stats/mcdistfun.h>    // MCDistFun
    #include <stats/precise.h>      // Precise; needs the headers of Boost

`doxygen build/release/packaging/Doxyfile` writes the reference of `precise.h`.

## What is measured

Each error is the largest relative one, |answer - exact value| / |exact value|, over the points that
have an exact value (computed with 50 digits): the points of the reference files, most of them random,
and, for most functions, those of tests/data/stats/exact: a grid of everyday arguments with the small
tails beside them, and the points at which an algorithm departs from its function by design, for
parameters up to 1e6 or, where that can be computed, 1e12. After the error stand the arguments at
which it was found, in the order of the function's parameters. `inf` is an answer that is infinite
where the exact value isn't, or no answer.

"Tails" are: for a probability or density, exact values below 0.001; for a quantile, probabilities
within 0.001 of 0 or 1 and quantiles below 0.001 in size; for the rest, values below 0.01 in size,
where the function itself passes through zero and only its absolute error is small. A relative error
of about 1 in a tail means that the absolute error, not the relative one, is what the algorithm
bounds, and that 0 or the like came out. "Failure" lists the codes, or what the answer is instead.

)" << kMeasuredWith + BoostVersion() + ". With another version the test leaves the page alone.\n";
    WriteExamples(page);
    WriteTables(page);
    WriteSteps(page);
    page << R"(
A point is left out of the columns of `Precise` where it has no textbook meaning: a negative sigma, a
parameter that is not positive, a sum cut off after its first term, a fraction that the two cut in
different directions. `IdfBin` has no such column, being another definition; tests/data/stats/precise
holds its own exact values.
)";
    return page;
}

std::string AsText(const Piece& piece)
{
    const Measured* cell = std::get_if<Measured>(&piece);
    return cell ? Text(*cell) : std::get<std::string>(piece);
}

// How much of `text` stands for the cell: an error close to the measured one, at arguments whose
// own error is close to that, which of several nearly equal ones being a matter of the last bits.
// None if it doesn't.
std::optional<std::size_t> MatchCell(const std::string& text, const Measured& cell)
{
    const double largest = cell.Largest();
    const auto close = [=](double error) {
        return error == largest || (error <= kNoise * largest && largest <= kNoise * error);
    };
    if (largest == 0.0) {
        const std::string fresh = Text(cell);
        if (text.starts_with(fresh)) return fresh.size();
        return std::nullopt;
    }
    static const std::regex form(R"(^(inf|\d\.\de[+-]\d+)(?: at ([^|]+))? \|)");
    std::smatch parts;
    if (!std::regex_search(text, parts, form)) return std::nullopt;
    if (parts[2].matched != cell.namesArguments) return std::nullopt;
    const auto found = cell.errors.find(cell.namesArguments ? parts.str(2) : cell.worst);
    if (!close(std::stod(parts.str(1))) || found == cell.errors.end() || !close(found->second))
        return std::nullopt;
    return static_cast<std::size_t>(parts.length(0)) - 2;
}

int Check(const char* path)
{
    std::ifstream file(path);
    if (!file) {
        std::cerr << path << ": can't be read\n";
        return 1;
    }
    std::stringstream content;
    content << file.rdbuf();
    std::string rest = content.str();
    std::size_t line = 1;
    const auto stale = [&](const std::string& wanted) {
        std::cerr << path << ":" << line << ": stale\n  page:     "
                  << (rest.empty() ? "(ends here)" : rest.substr(0, rest.find('\n')))
                  << "\n  measured: " << (wanted.empty() ? "(ends here)" : wanted)
                  << "\nwrite it anew with stats_accuracy_page --write " << path << "\n";
        return 1;
    };
    std::smatch version;
    if (std::regex_search(rest, version, std::regex(kMeasuredWith + R"((\d+\.\d+))")) &&
        version.str(1) != BoostVersion()) {
        std::cerr << path << ": not compared, this is Boost " << BoostVersion() << '\n';
        return kNotComparable;
    }
    const Page page = MakePage();
    for (const Piece& piece : page.Pieces()) {
        if (const Measured* cell = std::get_if<Measured>(&piece)) {
            const std::optional<std::size_t> length =
                MatchCell(rest.substr(0, rest.find('\n')), *cell);
            if (!length) return stale(Text(*cell));
            rest.erase(0, *length);
            continue;
        }
        std::istringstream words(std::get<std::string>(piece));
        for (std::string wanted; std::getline(words, wanted);) {
            if (!words.eof()) wanted += '\n';
            if (!rest.starts_with(wanted)) return stale(wanted);
            rest.erase(0, wanted.size());
            if (wanted.ends_with('\n')) ++line;
        }
    }
    return rest.empty() ? 0 : stale("");
}

}  // namespace

int main(int argc, char** argv)
{
    const std::string mode = argc == 3 ? argv[1] : "";
    if (mode == "--check") return Check(argv[2]);
    if (mode == "--write") {
        std::ofstream file(argv[2]);
        const Page page = MakePage();
        for (const Piece& piece : page.Pieces()) file << AsText(piece);
        return file ? 0 : 1;
    }
    std::cerr << "usage: stats_accuracy_page --write FILE | --check FILE\n";
    return 2;
}
