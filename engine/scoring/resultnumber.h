#ifndef VELSCORE_ENGINE_SCORING_RESULTNUMBER_H
#define VELSCORE_ENGINE_SCORING_RESULTNUMBER_H

#include <cmath>

#include "engine/tables/rowtext.h"
#include "host/values/numericvalue.h"

namespace MCVelscore_850 {

/// A number of a result as a field: a missing one, or none at all, is empty.
inline void WriteResultNumber(RowText& rows, double number)
{
    if (NumericValue::IsSystemMissingValue(number) || std::isnan(number)) {
        rows.AddEmpty();
    } else {
        rows.AddNumber(number);
    }
}

}  // namespace MCVelscore_850

#endif
