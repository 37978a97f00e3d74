// Questions, one row each: how many nanoseconds a call of each statistics function takes, and how
// many its counterpart in Boost.Math on the same arguments in the same run. The arguments are the
// function's reference points that have an exact value (bulk, tails, small and large parameters
// alike), so a row is a mean over a wide spread: a few slow points far out weigh as much as many
// quick ones.
//
//   build/bench/bin/statistics_bench                            prints the table of
//   docs/performance.md build/bench/bin/statistics_bench --benchmark_filter=betinv  one function
//
// Each run first prints compiler and optimisation, and checks one value.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <map>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "stats/mcdistfun.h"
#include "stats/mcpower.h"
#include "stats/precise.h"
#include "tests/stats/support/lift.h"
#include "tests/stats/support/reference.h"

namespace {

using D = MCMath_850::MCDistFun;
using MCMath_850::MCPower;
namespace P = MCMath_850::Precise;
using reference::Args;
using reference::Row;

using reference::Fill;
using reference::kOutput;

// One benchmark: all points of `file` through `function`; the arguments are ready before the clock
// runs.
template <class R, class... A>
void Register(const std::string& label, const char* file, R (*function)(A...))
{
    std::vector<std::tuple<std::remove_cvref_t<A>...>> points;
    for (const Row& row : reference::Read(file)) {
        if (row.truth.empty()) continue;
        auto& point = points.emplace_back();
        std::size_t next = 0;
        [&]<std::size_t... I>(std::index_sequence<I...>)
        {
            ((kOutput<A> ? void() : Fill(std::get<I>(point), row.args, next++)), ...);
        }
        (std::index_sequence_for<A...>{});
    }
    benchmark::RegisterBenchmark(label.c_str(), [points,
                                                 function](benchmark::State& state) mutable {
        for (auto _ : state)
            for (auto& point : points) {
                [&]<std::size_t... I>(std::index_sequence<I...>)
                {
                    if constexpr (std::is_void_v<R>)
                        function(static_cast<A>(std::get<I>(point))...);
                    else
                        benchmark::DoNotOptimize(function(static_cast<A>(std::get<I>(point))...));
                }
                (std::index_sequence_for<A...>{});
                benchmark::ClobberMemory();
            }
        state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(points.size()));
    });
}

template <class Own>
void Alone(const char* name, Own own)
{
    Register(std::string(name) + "/own", name, own);
}

template <class Own, class Boost>
void Beside(const char* name, Own own, Boost boost)
{
    Register(std::string(name) + "/own", name, own);
    Register(std::string(name) + "/Boost.Math", name, boost);
}

// Wrappers are left out: they cost what the routine below them costs.
void RegisterAll()
{
    Alone("Exponent", &MCPower::Exponent);
    Alone("Power", &MCPower::Power);
    Alone("Multiply", &MCPower::Multiply);
    Beside("probit", &D::probit, &P::IdfStdNorm);
    Beside("derf", &D::derf, &P::Erf);
    Beside("derfc", &D::derfc, &P::Erfc);
    Beside("prbnrm", &D::prbnrm, &P::CdfStdNorm);
    Beside("CdfNorm", &D::CdfNorm, &P::CdfNorm);
    Beside("IdfNorm", &D::IdfNorm, &P::IdfNorm);
    Beside("PdfNormal", &D::PdfNormal, &P::PdfNormal);
    Beside("dnlgam", &D::dnlgam, &P::LogGamma);
    Beside("gammad", &D::gammad, &P::GammaRatio);
    Beside("cdfexp", &D::cdfexp, &P::CdfExp);
    Beside("PdfGamma", &D::PdfGamma, &P::PdfGamma);
    Beside("IdfGam", &D::IdfGam, &P::IdfGam);
    Beside("CdfChi", &D::CdfChi, &P::CdfChi);
    Beside("SigChi", &D::SigChi, &P::SigChi);
    Beside("zeltidfchi", &D::zeltidfchi, &P::IdfChi);
    Alone("idfchb", &D::idfchb);
    Alone("cbtaux", &D::cbtaux);
    Beside("cdfbet", &D::cdfbet, &P::CdfBeta);
    Beside("betinv", &D::betinv, &P::IdfBeta);
    Beside("PdfT", &D::PdfT, &P::PdfT);
    Beside("zeltcdft", &D::zeltcdft, &P::CdfT);
    Beside("SigT", &D::SigT, &P::SigT);
    Beside("zeltidft", &D::zeltidft, &P::IdfT);
    Beside("zeltcdff", &D::zeltcdff, &P::CdfF);
    Beside("SigF", &D::SigF, &P::SigF);
    Beside("zeltidff", &D::zeltidff, &P::IdfF);
    Beside("dnlbnc", &D::dnlbnc, &P::LogBinomial);
    Beside("CdfBin", &D::CdfBin, &P::CdfBin);
    Beside("PdfBin", &D::PdfBin, &P::PdfBin);
    Beside("IdfBin", &D::IdfBin, &P::IdfBin);
    Beside("PdfHyper", &D::PdfHyper, &P::PdfHyper);
    Beside("CDFHyper", &D::CDFHyper, &P::CDFHyper);
    Beside("ncdbet", &D::ncdbet, &P::NonCentralCdfBeta);
    Beside("NonCentralCdfF", &D::NonCentralCdfF, &P::NonCentralCdfF);
    Beside("NonCentralCdfChi", &D::NonCentralCdfChi, &P::NonCentralCdfChi);
    Beside("NonCentralCdfT", &D::NonCentralCdfT, &P::NonCentralCdfT);
    Beside("NonCentralPdfT", &D::NonCentralPdfT, &P::NonCentralPdfT);
    Beside("FindNCParamChi", &D::FindNCParamChi, &P::FindNCParamChi);
    Beside("FindNCParamF", &D::FindNCParamF, &P::FindNCParamF);
    Beside("FindNCParamT", &D::FindNCParamT, &P::FindNCParamT);
    Alone("GPTile", &D::GPTile);
    Alone("Mednci", &D::Mednci);
}

// Gathers the runs and prints one row a function.
class Table : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            const std::string name = run.benchmark_name();
            const std::size_t slash = name.find('/');
            const std::string function = name.substr(0, slash);
            if (!rows_.count(function)) order_.push_back(function);
            const double nanoseconds = 1e9 / run.counters.at("items_per_second");
            double& cell =
                name.substr(slash + 1) == "own" ? rows_[function].first : rows_[function].second;
            cell = cell == 0.0 ? nanoseconds : std::min(cell, nanoseconds);
        }
    }

    void Finalize() override
    {
        std::cout << "| Function | ns a call | Boost.Math | ratio |\n| --- | --- | --- | --- |\n";
        for (const std::string& function : order_) {
            const auto& [own, boost] = rows_[function];
            char line[160];
            if (boost > 0.0)
                std::snprintf(line, sizeof line, "| `%s` | %.0f | %.0f | %.2f |", function.c_str(),
                              own, boost, own / boost);
            else
                std::snprintf(line, sizeof line, "| `%s` | %.0f | | |", function.c_str(), own);
            std::cout << line << "\n";
        }
    }

private:
    std::map<std::string, std::pair<double, double>> rows_;
    std::vector<std::string> order_;
};

}  // namespace

int main(int argc, char** argv)
{
    std::cout << "compiler " << __VERSION__
#ifdef __OPTIMIZE__
              << ", optimised";
#else
              << ", WITHOUT OPTIMISATION: the figures mean nothing";
#endif
    std::cout << "\n\n";
    // Phi(-1.5) by mpmath at 50 digits.
    if (std::fabs(D::prbnrm(-1.5) / 0.06680720126885807 - 1.0) > 1e-14) {
        std::cerr << "prbnrm(-1.5) is wrong; no figures\n";
        return 1;
    }
    RegisterAll();
    benchmark::Initialize(&argc, argv);
    Table table;
    benchmark::RunSpecifiedBenchmarks(&table);
    return 0;
}
