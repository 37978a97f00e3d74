#ifndef VELSCORE_BENCH_TIMING_H
#define VELSCORE_BENCH_TIMING_H

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace MCVelscore_850::bench {

inline constexpr int kBatch = 100;

/// Nanoseconds a call over batches, ascending; the call gets the number of the case.
template <class Call>
std::vector<double> Batches(int batches, Call call)
{
    std::vector<double> times;
    times.reserve(static_cast<size_t>(batches));
    double sink = 0.0;
    for (int batch = 0; batch < batches; ++batch) {
        const auto begin = std::chrono::steady_clock::now();
        for (int i = 0; i < kBatch; ++i) sink += call(i);
        const std::chrono::duration<double, std::nano> time =
            std::chrono::steady_clock::now() - begin;
        times.push_back(time.count() / kBatch);
    }
    volatile double kept = sink;  // the work has to be done
    (void)kept;
    std::sort(times.begin(), times.end());
    return times;
}

inline double At(const std::vector<double>& sorted, double share)
{
    return sorted[static_cast<size_t>(share * static_cast<double>(sorted.size() - 1))];
}

inline std::string Cpu()
{
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
    }
    return "unknown processor";
}

inline void PrintHead(int batches)
{
    std::printf("%s, compiler %s\n", Cpu().c_str(), __VERSION__);
#ifndef __OPTIMIZE__
    std::printf("without optimisation: figures mean nothing\n");
#endif
    std::printf("%d batches of %d cases\n\n%-18s %10s %10s %10s %10s\n", batches, kBatch,
                "ns a case", "median", "p99", "plain", "ratio");
}

/// The number of batches from the command line, and the table's head; 0, with the usage told, for
/// what is none.
inline int Begin(int argc, char** argv)
{
    const int batches = argc > 1 ? std::atoi(argv[1]) : 20000;
    if (batches < 1) {
        std::fprintf(stderr, "usage: %s [BATCHES]\n", argv[0]);
        return 0;
    }
    PrintHead(batches);
    return batches;
}

/// One row: a call of ours beside the plain loop that computes the same.
inline void PrintRow(const char* name, const std::vector<double>& ours,
                     const std::vector<double>& plain)
{
    std::printf("%-18s %10.1f %10.1f %10.1f %10.1f\n", name, At(ours, 0.5), At(ours, 0.99),
                At(plain, 0.5), At(ours, 0.5) / At(plain, 0.5));
}

}  // namespace MCVelscore_850::bench

#endif
