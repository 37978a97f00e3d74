#ifndef VELSCORE_ENGINE_TABLES_EXACTNUMBER_H
#define VELSCORE_ENGINE_TABLES_EXACTNUMBER_H

#include <cstdint>

namespace MCVelscore_850 {

/// 2^53: up to here a double holds every whole number.
inline constexpr uint64_t kMostExactWhole = uint64_t{1} << 53;

}  // namespace MCVelscore_850

#endif
