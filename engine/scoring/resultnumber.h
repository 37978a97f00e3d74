#ifndef VELSCORE_ENGINE_SCORING_RESULTNUMBER_H
#define VELSCORE_ENGINE_SCORING_RESULTNUMBER_H

#include <cmath>

#include "engine/tables/csvwriter.h"
#include "host/values/numericvalue.h"

namespace MCVelscore_850 {

/// A number of a result as a field: a missing one, or none at all, is empty.
inline void WriteResultNumber(CsvWriter& writer, double number)
{
    if (NumericValue::IsSystemMissingValue(number) || std::isnan(number)) {
        writer.AddEmpty();
    } else {
        writer.AddNumber(number);
    }
}

}  // namespace MCVelscore_850

#endif
