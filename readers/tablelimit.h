#ifndef VELSCORE_READERS_TABLELIMIT_H
#define VELSCORE_READERS_TABLELIMIT_H

#include <string>

#include "host/messages/messages.h"
#include "host/messages/vsexception.h"

namespace MCVelscore_850 {

/// Betas, covariances once there is one, contrasts, and the predictor-to-parameter matrix where it
/// is kept as numbers hold every cell, so a small document could ask for more memory than any
/// machine has. At eight bytes a cell this is 1 GiB.
inline constexpr size_t kMostTableCells = size_t{1} << 27;

/// Refuses with kTableTooLarge a table that wouldn't fit; `section` is for the message.
inline void ExpectTableFits(const std::string& section, size_t rows, size_t columns)
{
    if (columns == 0 || rows <= kMostTableCells / columns) return;
    Refuse(kTableTooLarge, section.c_str(), static_cast<int>(rows), static_cast<int>(columns));
}

}  // namespace MCVelscore_850

#endif
