#ifndef VELSCORE_HOST_VALUES_DATETIMETEXT_H
#define VELSCORE_HOST_VALUES_DATETIMETEXT_H

#include <string>
#include <string_view>

#include "host/variables/scoredictvar.h"

namespace MCVelscore_850 {

/// What a date or time consists of.
enum class DateTimeShape { Date, Time, DateTime };

/// Reads a date (2026-11-21), a time of day (23:59, 23:59:59.5) or both (joined by T or a blank)
/// as the plain number of a DateTimeValue. A time may end in Z; a time with a date also in an
/// offset from it (+01:00), which is taken off. Where the type counts from an origin of its own, a
/// plain number counts from there. False when the text is none of these.
VELHOST_API bool ReadDateTime(std::string_view text, ScoreDictVar::DateTimeType type,
                              double& plain);

/// Reads a date, a time or both, whichever it is, as the plain number of that shape.
bool ReadAnyDateTime(std::string_view text, DateTimeShape& shape, double& plain);

/// Appends the text that ReadDateTime() takes: 2026-11-21, 23:59:59.5, 2026-11-21T23:59:59.5; for a
/// type that counts from an origin of its own the number from there. Appends nothing for a number
/// beyond the years 0 to 9999.
VELHOST_API void AppendDateTime(double plain, ScoreDictVar::DateTimeType type, std::string& out);

/// The shape of a type, which must be a date or time.
VELHOST_API DateTimeShape ShapeOf(ScoreDictVar::DateTimeType type);

/// True for a type whose values are numbers from an origin of their own.
VELHOST_API bool CountsFromOrigin(ScoreDictVar::DateTimeType type);

/// The plain number of one shape as that of another: the day of a date with time, its time of day,
/// the midnight that a date begins with. False from a time to a date or back.
bool ChangeShape(DateTimeShape from, DateTimeShape to, double& plain);

/// The distance from the plain origin to the type's own, to be added to a plain number.
VELHOST_API double OriginShift(ScoreDictVar::DateTimeType type);

/// The days from 1970-01-01 to the first of January of a year from 0 to 9999.
double DaysToYear(int year);

inline constexpr double kSecondsPerDay = 86400.0;

}  // namespace MCVelscore_850

#endif
