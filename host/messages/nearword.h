#ifndef VELSCORE_HOST_MESSAGES_NEARWORD_H
#define VELSCORE_HOST_MESSAGES_NEARWORD_H

#include <span>
#include <string>
#include <string_view>

#include "host/export.h"

namespace MCVelscore_850 {

/// Letters to insert, drop, change or swap with their neighbour to make one word of the other, no
/// letter touched twice. Letters are characters of UTF-8; ASCII's upper and lower case are one.
VELHOST_API size_t WordDistance(std::string_view one, std::string_view other);

/// The candidate that a misspelt word most likely means: the nearest one, the first of equally near
/// ones. One letter may be wrong in a candidate of up to five letters, two in a longer one, and one
/// has to be right. Empty when none is near, and for a word that is a candidate itself.
VELHOST_API std::string NearWord(std::string_view word, std::span<const std::string> candidates);

}  // namespace MCVelscore_850

#endif
