#ifndef VELSCORE_HOST_DATETIMETEXT_H
#define VELSCORE_HOST_DATETIMETEXT_H

#include <string_view>

#include "host/scoredictvar.h"

namespace MCVelscore_850 {

/// Reads a date (2026-11-21), a time of day (23:59, 23:59:59.5) or both (joined by T or a blank)
/// as the plain number of a DateTimeValue. Where the type counts from an origin of its own, a
/// plain number counts from there. False when the text is none of these.
VELHOST_API bool ReadDateTime(std::string_view text, ScoreDictVar::DateTimeType type,
                              double& plain);

/// The distance from the plain origin to the type's own, to be added to a plain number.
double OriginShift(ScoreDictVar::DateTimeType type);

}  // namespace MCVelscore_850

#endif
