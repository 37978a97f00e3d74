#ifndef VELSCORE_HOST_DOCUMENTS_ZELTDICTIONARYTAGS_H
#define VELSCORE_HOST_DOCUMENTS_ZELTDICTIONARYTAGS_H

#include <string>

namespace MCVelscore_850 {

/// The words of the dictionary of a document in the older form (root "zelt-ml"); see
/// docs/documents.md for its grammar.
struct ZELTDictionaryTags {
    static inline const std::string kVariable = "variable";
    static inline const std::string kCategories = "categories";
    static inline const std::string kCategory = "category";
    static inline const std::string kMissingValues = "missing-values";
    static inline const std::string kRange = "range";
    static inline const std::string kVarStats = "var-stats";
    static inline const std::string kFormatSpec = "format-spec";
    static inline const std::string kName = "name";
    static inline const std::string kValue = "value";
    static inline const std::string kStorageType = "storage-type";
    static inline const std::string kMeasurementLevel = "measurement-level";
    static inline const std::string kMinimum = "minimum";
    static inline const std::string kMaximum = "maximum";
    static inline const std::string kMean = "mean";
    static inline const std::string kContinuous = "CONTINUOUS";
    static inline const std::string kNominal = "NOMINAL";
    static inline const std::string kOrdinal = "ORDINAL";
    static inline const std::string kUnknown = "UNKNOWN";
    static inline const std::string kNumeric = "NUMERIC";
    static inline const std::string kString = "STRING";
    static inline const std::string kLowest = "LOWEST";
    static inline const std::string kHighest = "HIGHEST";
    static inline const std::string kInfinity = "INF";
    static inline const std::string kNegativeInfinity = "-INF";
    static inline const std::string kNotANumber = "NaN";
};

}  // namespace MCVelscore_850

#endif
