#include "cli/progresstext.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

namespace MCVelscore_850 {

namespace {

// A time as people say it: 3 s, 4 min 5 s, 2 h 10 min.
std::string DurationText(double seconds)
{
    const int64_t whole = std::llround(seconds);
    if (whole < 60) return fmt::format("{} s", whole);
    if (whole < 3600) return fmt::format("{} min {} s", whole / 60, whole % 60);
    return fmt::format("{} h {} min", whole / 3600, whole % 3600 / 60);
}

}  // namespace

double ShareOf(const Progress& progress)
{
    return std::min(1.0,
                    static_cast<double>(progress.bytes) / static_cast<double>(progress.totalBytes));
}

std::string ProgressText(const Progress& progress, double seconds)
{
    const double rate = static_cast<double>(progress.rows) / seconds;
    const std::string rows = fmt::format("{} rows, {:.0f} rows/s", progress.rows, rate);
    if (progress.totalBytes == 0) {
        constexpr double kMebibyte = 1024.0 * 1024.0;
        return fmt::format("{:.0f} MiB read, {}", static_cast<double>(progress.bytes) / kMebibyte,
                           rows);
    }
    const double share = ShareOf(progress);
    std::string text = fmt::format("{:3.0f} %, {}", share * 100.0, rows);
    if (share > 0.0) text += fmt::format(", {} left", DurationText(seconds / share - seconds));
    return text;
}

}  // namespace MCVelscore_850
