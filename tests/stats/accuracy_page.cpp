// Writes docs/statistics.md from the reference files, or checks that it still tells the truth.
//
//   stats_accuracy_page --write FILE
//   stats_accuracy_page --check FILE    0 if the page stands, 1 and the first difference if it's
//                                       stale
//
// The check wants every word as it is, and every measured error within a factor of 3: the last bits
// of exp and log differ between C libraries.

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

#include "tests/stats/support/page_entries.h"
#include "tests/stats/support/precise_functions.h"

namespace {

using namespace reference;

constexpr double kNoise = 3.0;

struct Worst {
    double error = 0.0;
    int points = 0;

    void Take(double got, double truth)
    {
        ++points;
        const double difference = std::fabs(got - truth);
        if (difference == 0.0) return;
        const double relative = truth == 0.0 ? INFINITY : difference / std::fabs(truth);
        if (!(relative <= error)) error = relative;
    }
    std::string Text() const
    {
        if (points == 0) return "";
        if (error == 0.0) return "0";
        char text[32];
        std::snprintf(text, sizeof text, "%.1e", error);
        return text;
    }
};

struct Measured {
    Worst bulk;
    Worst tails;
};

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

Measured Measure(const std::vector<Row>& rows, const Call& call, Tails tails,
                 bool (*compared)(const Args&))
{
    Measured m;
    for (const Row& row : rows) {
        if (row.truth.empty() || !compared(row.args)) continue;
        const Outcome outcome = call(row.args);
        for (std::size_t i = 0; i < row.truth.size(); ++i)
            (IsTail(tails, row.args, row.truth[i]) ? m.tails : m.bulk)
                .Take(outcome.values[i], row.truth[i]);
    }
    return m;
}

bool All(const Args&) { return true; }

void WriteTables(std::ostream& page)
{
    for (const PageFamily& family : PageFamilies()) {
        page << "\n## " << family.title << "\n\n"
             << "| Function | Domain | Source | Failure | Points | Bulk | Tails | `Precise` | Bulk "
                "| Tails |\n"
             << "| --- | --- | --- | --- | --- | --- | --- | --- | --- | --- |\n";
        for (const PageEntry& entry : family.entries) {
            const std::string names = entry.function;
            const std::string function = names.substr(0, names.find(','));
            const std::vector<Row> rows = Read(function);
            const Measured own = Measure(rows, Find(function).call, entry.tails, All);
            const PreciseFunction& precise = PreciseFor(function);
            page << "| `" << names << "` | " << entry.domain << " | " << entry.source << " | "
                 << entry.failure << " | " << own.bulk.points + own.tails.points << " | "
                 << own.bulk.Text() << " | " << own.tails.Text() << " | ";
            if (precise.name) {
                const Measured other = Measure(rows, precise.call, entry.tails, precise.compared);
                page << "`" << precise.name << "` | " << other.bulk.Text() << " | "
                     << other.tails.Text() << " |\n";
            } else {
                page << "| | |\n";
            }
        }
    }
}

// Hypergeometric populations above 1,000, where the library's own answer is a step on purpose.
void WriteSteps(std::ostream& page)
{
    const auto compared = [](bool (*part)(const Args&), const Call& call) {
        Worst worst;
        for (const Row& row : ReadFile(Folder() + "/precise/CDFHyper.csv"))
            if (part(row.args)) worst.Take(call(row.args).values[0], row.truth[0]);
        return worst;
    };
    const auto step = [](const Args& a) { return a[1] <= 10000.0; };
    const auto large = [](const Args& a) { return a[1] > 10000.0; };
    const Call& own = Find("CDFHyper").call;
    const Call& precise = PreciseFor("CDFHyper").call;
    page << "\n## Hypergeometric populations above 1,000\n\n"
         << "| Population | `CDFHyper` | `Precise::CDFHyper` |\n| --- | --- | --- |\n"
         << "| 1,001 to 10,000 | " << compared(step, own).Text() << " | "
         << compared(step, precise).Text() << " |\n"
         << "| 10,001 to 100,000 | " << compared(large, own).Text() << " | "
         << compared(large, precise).Text() << " |\n";
}

std::string Page()
{
    std::ostringstream page;
    page << R"(# Distribution functions and their accuracy

This page is made by `stats_accuracy_page` from the reference values in tests/data/stats; the test
`stats_accuracy_page_is_fresh` fails when it no longer agrees with them. Write it anew with

    build/release/bin/stats_accuracy_page --write docs/statistics.md

There are two sets of functions. Those of `MCDistFun` and `MCPower` (stats/mcdistfun.h, stats/mcpower.h) are
what the scoring models use: published algorithms whose answers, codes and quirks stay as they are, so that a
score never moves. Those of `Precise` (stats/precise.h) are the same distributions through Boost.Math, for
whoever needs a number for its own sake; no model uses them.

Each error is the largest relative one over the reference points that have an exact value (50 digits,
rounded). Tails are: for a probability or density, answers below 0.001; for a quantile, probabilities within
0.001 of 0 or 1 and quantiles below 0.001 in size; for the rest, answers below 0.01 in size, where the function itself passes through zero
and only its absolute error is small. A relative error of about 1 in a tail means that the absolute error,
not the relative one, is what the algorithm bounds: an answer formed as one minus the other tail, or a sum
that ends at its tolerance. "Failure" lists the codes, or what the answer is instead.

## Which to choose

- A number that must agree with the scores: `MCDistFun`, always.
- Quantiles of t with many degrees of freedom or close to the median, small quantiles of beta and F, tails
  of the non-central distributions: `Precise`.
- Hypergeometric probabilities for populations above 1,000: `Precise`; the library's own is a step at the
  mean up to 10,000 and, with a small group, beyond.
- The usual binomial quantile (the smallest count whose probability reaches the wanted one): `Precise`.
  The library's own is on purpose the largest count within it, one below.
- The density of the non-central t: `MCDistFun`; Boost's is a difference over t and loses its digits near 0
  and far out against delta.
- Elsewhere both are good to 12 digits for parameters up to some hundreds. The errors of `MCDistFun` grow
  with its parameters (up to 1e8 among the points here), those of `Precise` hardly; `MCDistFun` needs no
  Boost.
)";
    WriteTables(page);
    WriteSteps(page);
    page << R"(
A point is left out of the columns of `Precise` where it has no textbook meaning: a negative sigma, a
parameter that is not positive, a sum cut off after its first term, a fraction that the two cut in different
directions. `IdfBin` has no such column, being another definition; tests/data/stats/precise holds its own
exact values.
)";
    return page.str();
}

// A line with its measured errors ("1.2e-16") taken out, and these errors.
struct Line {
    std::string words;
    std::vector<double> errors;
};

Line Part(const std::string& text)
{
    Line line;
    for (std::size_t i = 0; i < text.size();) {
        char* end = nullptr;
        const double value = std::strtod(text.c_str() + i, &end);
        const std::string number = text.substr(i, static_cast<std::size_t>(end - text.c_str()) - i);
        if (number.size() >= 7 && std::isdigit(static_cast<unsigned char>(number[0])) &&
            number[1] == '.' && number[3] == 'e') {
            line.words += '#';
            line.errors.push_back(value);
            i += number.size();
        } else {
            line.words += text[i++];
        }
    }
    return line;
}

// Two lines agree if their words are the same and their errors close.
bool Agree(const std::string& one, const std::string& other)
{
    const Line a = Part(one);
    const Line b = Part(other);
    if (a.words != b.words) return false;
    for (std::size_t i = 0; i < a.errors.size(); ++i)
        if (a.errors[i] > kNoise * b.errors[i] || b.errors[i] > kNoise * a.errors[i]) return false;
    return true;
}

int Check(const char* path)
{
    std::ifstream file(path);
    if (!file) {
        std::cerr << path << ": can't be read\n";
        return 1;
    }
    std::istringstream fresh(Page());
    std::string wanted, found;
    for (int line = 1;; ++line) {
        const bool more = static_cast<bool>(std::getline(fresh, wanted));
        const bool there = static_cast<bool>(std::getline(file, found));
        if (!more && !there) return 0;
        if (more == there && Agree(wanted, found)) continue;
        std::cerr << path << ":" << line
                  << ": stale\n  page:     " << (there ? found : "(ends here)")
                  << "\n  measured: " << (more ? wanted : "(ends here)")
                  << "\nwrite it anew with stats_accuracy_page --write " << path << "\n";
        return 1;
    }
}

}  // namespace

int main(int argc, char** argv)
{
    const std::string mode = argc == 3 ? argv[1] : "";
    if (mode == "--check") return Check(argv[2]);
    if (mode == "--write") {
        std::ofstream file(argv[2]);
        file << Page();
        return file ? 0 : 1;
    }
    std::cerr << "usage: stats_accuracy_page --write FILE | --check FILE\n";
    return 2;
}
