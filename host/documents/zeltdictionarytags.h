#ifndef VELSCORE_HOST_DOCUMENTS_ZELTDICTIONARYTAGS_H
#define VELSCORE_HOST_DOCUMENTS_ZELTDICTIONARYTAGS_H

#include "host/documents/tag.h"

namespace MCVelscore_850 {

/// The words of the dictionary of a document in the older form (root "zelt-ml"); see
/// docs/documents.md for its grammar.
struct ZELTDictionaryTags {
    VELSCORE_TAG(kVariable, "variable");
    VELSCORE_TAG(kCategories, "categories");
    VELSCORE_TAG(kCategory, "category");
    VELSCORE_TAG(kMissingValues, "missing-values");
    VELSCORE_TAG(kRange, "range");
    VELSCORE_TAG(kVarStats, "var-stats");
    VELSCORE_TAG(kFormatSpec, "format-spec");
    VELSCORE_TAG(kName, "name");
    VELSCORE_TAG(kValue, "value");
    VELSCORE_TAG(kStorageType, "storage-type");
    VELSCORE_TAG(kMeasurementLevel, "measurement-level");
    VELSCORE_TAG(kMinimum, "minimum");
    VELSCORE_TAG(kMaximum, "maximum");
    VELSCORE_TAG(kMean, "mean");
    VELSCORE_TAG(kContinuous, "CONTINUOUS");
    VELSCORE_TAG(kNominal, "NOMINAL");
    VELSCORE_TAG(kOrdinal, "ORDINAL");
    VELSCORE_TAG(kUnknown, "UNKNOWN");
    VELSCORE_TAG(kNumeric, "NUMERIC");
    VELSCORE_TAG(kString, "STRING");
    VELSCORE_TAG(kLowest, "LOWEST");
    VELSCORE_TAG(kHighest, "HIGHEST");
    VELSCORE_TAG(kInfinity, "INF");
    VELSCORE_TAG(kNegativeInfinity, "-INF");
    VELSCORE_TAG(kNotANumber, "NaN");
};

}  // namespace MCVelscore_850

#endif
