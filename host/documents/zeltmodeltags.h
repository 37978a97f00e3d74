#ifndef VELSCORE_HOST_DOCUMENTS_ZELTMODELTAGS_H
#define VELSCORE_HOST_DOCUMENTS_ZELTMODELTAGS_H

#include "host/documents/tag.h"

#include "host/documents/zeltdictionarytags.h"

namespace MCVelscore_850 {

/// The vocabulary of documents in the older form (root "zelt-ml"). Rows that the reader of
/// regression models doesn't use belong to other forms that share it.
struct ZELTModelTags {
    // Elements
    VELSCORE_TAG(XML_ELE_DICTIONARY, "dictionary");
    VELSCORE_TAG(XML_ELE_MODEL, "model");
    VELSCORE_TAG(XML_ELE_REGRESS_MODEL, "regression-model");
    VELSCORE_TAG(XML_ELE_PARAM_LIST, "parameter-list");
    VELSCORE_TAG(XML_ELE_PARAM, "parameter");
    VELSCORE_TAG(XML_ELE_FAC_LIST, "factor-list");
    VELSCORE_TAG(XML_ELE_COV_LIST, "covariate-list");
    VELSCORE_TAG(XML_ELE_PREDICTOR, "predictor");
    VELSCORE_TAG(XML_ELE_P_TABLE, "p-table");
    VELSCORE_TAG(XML_ELE_P_CELL, "p-cell");
    VELSCORE_TAG(XML_ELE_PP_MATRIX, "pp-matrix");
    VELSCORE_TAG(XML_ELE_PP_CELL, "pp-cell");
    VELSCORE_TAG(XML_ELE_PCOV_MATRIX, "pcov-matrix");
    VELSCORE_TAG(XML_ELE_PCOV_CELL, "pcov-cell");
    VELSCORE_TAG(XML_ELE_BOX_TEST, "box-test");
    static inline const std::string& XML_ELE_CATEGORIES = ZELTDictionaryTags::kCategories;
    static inline const std::string& XML_ELE_CATEGORY = ZELTDictionaryTags::kCategory;
    VELSCORE_TAG(XML_ELE_CELL, "cell");
    VELSCORE_TAG(XML_ELE_DISCRIM_MODEL, "discriminant-model");
    VELSCORE_TAG(XML_ELE_FGC_MATRIX, "fgc-matrix");
    VELSCORE_TAG(XML_ELE_FN_COEFS, "function-coefficients");
    static inline const std::string& XML_ELE_FORMAT_SPEC = ZELTDictionaryTags::kFormatSpec;
    VELSCORE_TAG(XML_ELE_INV_COV_MATRICES, "inv-gcov-matrices");
    VELSCORE_TAG(XML_ELE_INV_COV_MATRIX, "inv-gcov-matrix");
    static inline const std::string& XML_ELE_MISSING_VALUES = ZELTDictionaryTags::kMissingValues;
    VELSCORE_TAG(XML_ELE_PRIOR_VECTOR, "prior-vector");
    VELSCORE_TAG(XML_ELE_PRIOR_VALUE, "prior-value");
    static inline const std::string& XML_ELE_RANGE = ZELTDictionaryTags::kRange;
    VELSCORE_TAG(XML_ELE_ZELTML, "zelt-ml");
    static inline const std::string& XML_ELE_VAR_STATS = ZELTDictionaryTags::kVarStats;
    static inline const std::string& XML_ELE_VARIABLE = ZELTDictionaryTags::kVariable;

    // Attributes
    VELSCORE_TAG(XML_ATT_VERSION, "version");
    static inline const std::string& XML_ATT_NAME = ZELTDictionaryTags::kName;
    static inline const std::string& XML_ATT_VALUE = ZELTDictionaryTags::kValue;
    VELSCORE_TAG(XML_ATT_PARAMETER_NAME, "parameter-name");
    VELSCORE_TAG(XML_ATT_RM_TARGET_VAR, "target-variable-name");
    VELSCORE_TAG(XML_ATT_RM_MODEL_TYPE, "model-type");
    VELSCORE_TAG(XML_ATT_RM_MODEL_DF, "model-df");
    VELSCORE_TAG(XML_ATT_PC_TARGET_CAT, "target-category");
    VELSCORE_TAG(XML_ATT_PC_BETA, "beta");
    VELSCORE_TAG(XML_ATT_PC_DF, "df");
    VELSCORE_TAG(XML_ATT_PP_PREDICTOR, "predictor-name");
    VELSCORE_TAG(XML_ATT_PCOV_P_COL, "p-col");
    VELSCORE_TAG(XML_ATT_PCOV_P_ROW, "p-row");
    VELSCORE_TAG(XML_ATT_LABEL, "label");
    VELSCORE_TAG(XML_ATT_UNIQUE_ID, "unique-id");
    VELSCORE_TAG(XML_ATT_VERBOSE_MODEL_SPEC, "verbose-model-specification");
    VELSCORE_TAG(XML_ATT_ROW, "row");
    VELSCORE_TAG(XML_ATT_COLUMN, "column");
    VELSCORE_TAG(XML_ATT_SIGNIFICANCE, "significance");
    VELSCORE_TAG(XML_ATT_TARGET_CAT, "target-category");
    static inline const std::string& XML_ATT_VR_MEASUREMENT_LEVEL =
        ZELTDictionaryTags::kMeasurementLevel;
    static inline const std::string& XML_ATT_VR_STORAGE_TYPE = ZELTDictionaryTags::kStorageType;
    VELSCORE_TAG(XML_ATT_FS_DECIMALS, "decimals");
    VELSCORE_TAG(XML_ATT_FS_FORMAT, "format");
    VELSCORE_TAG(XML_ATT_FS_WIDTH, "width");
    static inline const std::string& XML_ATT_VS_MAX = ZELTDictionaryTags::kMaximum;
    static inline const std::string& XML_ATT_VS_MEAN = ZELTDictionaryTags::kMean;
    VELSCORE_TAG(XML_ATT_VS_MEDIAN, "median");
    static inline const std::string& XML_ATT_VS_MIN = ZELTDictionaryTags::kMinimum;
    VELSCORE_TAG(XML_ATT_VS_IQR, "inter-quartile-range");
    VELSCORE_TAG(XML_ATT_VS_SD, "standard-deviation");
    VELSCORE_TAG(XML_ATT_CA_DISPLAY_VALUE, "display-value");
    VELSCORE_TAG(XML_ATT_CA_PROP, "proportion");
    VELSCORE_TAG(XML_ATT_CA_RANK, "rank");
    VELSCORE_TAG(XML_ATT_RM_N_PARAM, "number-parameters");
    VELSCORE_TAG(XML_ATT_DM_TARGET_VAR, "target-variable-name");
    VELSCORE_TAG(XML_ATT_DM_N_FNS, "number-functions");
    VELSCORE_TAG(XML_ATT_PCOV_T_COL, "t-col");
    VELSCORE_TAG(XML_ATT_PCOV_T_ROW, "t-row");

    // Values
    VELSCORE_TAG(XML_VAL_MT_MLR, "multinomial-logistic");
    VELSCORE_TAG(XML_VAL_MT_CLR, "conditional-logistic");
    VELSCORE_TAG(XML_VAL_MT_REGRESS, "regression");
    VELSCORE_TAG(XML_VAL_MT_GLM, "general-linear");
    VELSCORE_TAG(XML_VAL_MT_LOGLIN, "log-linear");
    static inline const std::string& XML_VAL_ML_CONTINUOUS = ZELTDictionaryTags::kContinuous;
    static inline const std::string& XML_VAL_ML_NOMINAL = ZELTDictionaryTags::kNominal;
    static inline const std::string& XML_VAL_ML_ORDINAL = ZELTDictionaryTags::kOrdinal;
    static inline const std::string& XML_VAL_ML_UNKNOWN = ZELTDictionaryTags::kUnknown;
    static inline const std::string& XML_VAL_ST_NUMERIC = ZELTDictionaryTags::kNumeric;
    static inline const std::string& XML_VAL_ST_STRING = ZELTDictionaryTags::kString;
    static inline const std::string& XML_VAL_VA_LOWEST = ZELTDictionaryTags::kLowest;
    static inline const std::string& XML_VAL_VA_HIGHEST = ZELTDictionaryTags::kHighest;
    static inline const std::string& XML_INF = ZELTDictionaryTags::kInfinity;
    static inline const std::string& XML_NEG_INF = ZELTDictionaryTags::kNegativeInfinity;
    static inline const std::string& XML_NAN = ZELTDictionaryTags::kNotANumber;
};

}  // namespace MCVelscore_850

#endif
