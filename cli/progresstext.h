#ifndef VELSCORE_CLI_PROGRESSTEXT_H
#define VELSCORE_CLI_PROGRESSTEXT_H

#include <cstdint>
#include <string>

namespace MCVelscore_850 {

/// How far a long work is.
struct Progress {
    uint64_t bytes;
    uint64_t totalBytes;  ///< 0 when it isn't known
    int64_t rows;
};

/// The part that is done, from 0 to 1. `totalBytes` must be known.
double ShareOf(const Progress& progress);

/// Share, rows a second and the time left, as far as they are known, after so many seconds.
std::string ProgressText(const Progress& progress, double seconds);

}  // namespace MCVelscore_850

#endif
