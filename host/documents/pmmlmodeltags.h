#ifndef VELSCORE_HOST_DOCUMENTS_PMMLMODELTAGS_H
#define VELSCORE_HOST_DOCUMENTS_PMMLMODELTAGS_H

#include <string>

namespace MCVelscore_850 {

/// The texts of a document: elements, attributes, names of extensions, values. Everything is
/// compared as it is written here. Own marks what the published schema doesn't have.
struct PMMLModelTags {
    // Elements
    static inline const std::string XML_ELE_PMML = "PMML";
    static inline const std::string XML_ELE_DATADICTIONARY = "DataDictionary";
    static inline const std::string XML_ELE_TRANSFORMATION = "TransformationDictionary";
    static inline const std::string XML_ELE_LOCALTRANSFORMATIONS = "LocalTransformations";
    static inline const std::string XML_ELE_REGRESSMODEL = "GeneralRegressionModel";
    static inline const std::string XML_ELE_EXTENSION = "Extension";
    static inline const std::string XML_ELE_MININGSCHEMA = "MiningSchema";
    static inline const std::string XML_ELE_MININGFIELD = "MiningField";
    static inline const std::string XML_ELE_TARGETS = "Targets";
    static inline const std::string XML_ELE_VALUE = "Value";
    static inline const std::string XML_ELE_PARAM_LIST = "ParameterList";
    static inline const std::string XML_ELE_PARAM = "Parameter";
    static inline const std::string XML_ELE_FAC_LIST = "FactorList";
    static inline const std::string XML_ELE_COV_LIST = "CovariateList";
    static inline const std::string XML_ELE_PREDICTOR = "Predictor";
    static inline const std::string XML_ELE_PP_MATRIX = "PPMatrix";
    static inline const std::string XML_ELE_PP_CELL = "PPCell";
    static inline const std::string XML_ELE_PARAM_MATRIX = "ParamMatrix";
    static inline const std::string XML_ELE_PCELL = "PCell";
    static inline const std::string XML_ELE_PCOV_MATRIX = "PCovMatrix";
    static inline const std::string XML_ELE_PCOV_CELL = "PCovCell";
    static inline const std::string XML_ELE_GRM_CATEGORIES = "Categories";
    static inline const std::string XML_ELE_GRM_CATEGORY = "Category";
    static inline const std::string XML_ELE_MATRIX = "Matrix";
    static inline const std::string XML_ELM_BASECUMHAZARDTABLES = "BaseCumHazardTables";
    static inline const std::string XML_ELM_BASELINESTRATUM = "BaselineStratum";
    static inline const std::string XML_ELM_BASELINECELL = "BaselineCell";
    static inline const std::string XML_ELE_XBASIS = "xBasis";                     // own
    static inline const std::string XML_ELE_UPERXBASIS = "X-Basis";                // own
    static inline const std::string XML_EXT_ELE_COXREG_BASEPOINT = "X-BasePoint";  // own
    static inline const std::string XML_EXT_ELE_COXREG_STRATUM = "X-Stratum";      // own
    static inline const std::string XML_EXT_ELE_COXREG_HAZARD_TABLE =
        "X-BaseCumHazardTable";                                                        // own
    static inline const std::string XML_EXT_ELE_COXREG_BASEMAXTIME = "X-BaseMaxTime";  // own
    static inline const std::string XML_EXT_ELE_COXREG_BASELINE = "X-Baseline";        // own

    // Attributes
    static inline const std::string XML_ATT_VERSION = "version";
    static inline const std::string XML_ATT_NAME = "name";
    static inline const std::string XML_ATT_EXT_NAME = "name";
    static inline const std::string XML_ATT_MININGFIELD_NAME = "name";
    static inline const std::string XML_ATT_PARAM_NAME = "name";
    static inline const std::string XML_ATT_PRED_NAME = "name";
    static inline const std::string XML_ATT_VALUE = "value";
    static inline const std::string XML_ATT_EXT_VALUE = "value";
    static inline const std::string XML_ATT_VALUE_VALUE = "value";
    static inline const std::string XML_ATT_PPC_VALUE = "value";
    static inline const std::string XML_ATT_PCC_VALUE = "value";
    static inline const std::string XML_ATT_EXTENSION_EXTENDER = "extender";
    static inline const std::string XML_ATT_FUNCTIONNAME = "functionName";
    static inline const std::string XML_ATT_RM_FUNC_NAME = "functionName";
    static inline const std::string XML_ATT_MODELALGO = "algorithmName";
    static inline const std::string XML_ATT_RM_ALGOR_NAME = "algorithmName";
    static inline const std::string XML_ATT_RM_MODEL_NAME = "modelName";
    static inline const std::string XML_ATT_RM_MODEL_TYPE = "modelType";
    static inline const std::string XML_ATT_RM_TARGET_VAR = "targetVariableName";
    static inline const std::string XML_ATT_RM_IS_SCORABLE = "isScorable";
    static inline const std::string XML_ATT_TARGETREFCATEGORY = "targetReferenceCategory";
    static inline const std::string XML_ATT_LINKFUNCTION = "linkFunction";
    static inline const std::string XML_ATT_RM_NAME_LINKFUNCTION = "linkFunction";
    static inline const std::string XML_ATT_RM_NAME_CUMULATIVELINK = "cumulativeLink";
    static inline const std::string XML_ATT_BASELINESTRATAVARIABLE = "baselineStrataVariable";
    static inline const std::string XML_ATT_MAXTIME = "maxTime";
    static inline const std::string XML_ATT_DATAFIELD_OPTYPE = "optype";
    static inline const std::string XML_ATT_MININGFIELD_USAGETYPE = "usageType";
    static inline const std::string XML_ATT_MININGFIELD_HIGHVALUE = "highValue";
    static inline const std::string XML_ATT_MININGFIELD_LOWVALUE = "lowValue";
    static inline const std::string XML_ATT_MININGFIELD_MISSREPLACE = "missingValueReplacement";
    static inline const std::string XML_ATT_MININGFIELD_OUTLIERS = "outliers";
    static inline const std::string XML_ATT_PARAM_LABEL = "label";
    static inline const std::string XML_ATT_PC_TARGET_CAT = "targetCategory";
    static inline const std::string XML_ATT_PCC_TARGET_CAT = "targetCategory";
    static inline const std::string XML_ATT_PC_PARAMNAME = "parameterName";
    static inline const std::string XML_ATT_PPC_PARAMNAME = "parameterName";
    static inline const std::string XML_ATT_PC_BETA = "beta";
    static inline const std::string XML_ATT_PC_DF = "df";
    static inline const std::string XML_ATT_PPC_PREDNAME = "predictorName";
    static inline const std::string XML_ATT_PCC_PROW = "pRow";
    static inline const std::string XML_ATT_PCC_PCOL = "pCol";
    static inline const std::string XML_ATT_PCC_TROW = "tRow";
    static inline const std::string XML_ATT_PCC_TCol = "tCol";
    static inline const std::string XML_ELE_GRM_CONTRASTMATRIXTYPE = "contrastMatrixType";
    static inline const std::string XML_ELE_MATRIX_NBROWS = "nbRows";
    static inline const std::string XML_ELE_MATRIX_NBCOLS = "nbCols";
    static inline const std::string XML_ATT_ARRAY_N = "n";
    static inline const std::string XML_ATT_INTERCEPT = "intercept";  // own
    static inline const std::string XML_ATT_XBASIS_NROW = "nbRows";   // own
    static inline const std::string XML_ATT_XBASIS_NCOL = "nbCols";   // own
    static inline const std::string XML_EXT_ATT_COXREG_BASEPOINT_PARAMETERNAME =
        "parameterName";                                                                 // own
    static inline const std::string XML_EXT_ELE_ATT_COXREG_STRATUM_VARNAME = "varName";  // own
    static inline const std::string XML_EXT_ELE_ATT_COXREG_BASELINE_TIME = "time";
    static inline const std::string XML_EXT_ELE_ATT_COXREG_BASELINE_CUMHAZARD = "cumHazard";

    // Names that serve as attribute and as extension name
    static inline const std::string XML_VAL_NAME_MODELDF = "modelDF";
    static inline const std::string XML_VAL_RM_EXT_NAME_TRIALVAR = "trialsVariable";
    static inline const std::string XML_ATT_RM_EXT_NAME_TRIALS_VALUE = "trialsValue";
    static inline const std::string XML_VAL_RM_EXT_NAME_OFFSETVAR = "offsetVariable";
    static inline const std::string XML_ATT_RM_EXT_NAME_OFFSET_VALUE = "offsetValue";
    static inline const std::string XML_VAL_RM_EXT_NAME_LINK = "linkFunction";
    static inline const std::string XML_ATT_RM_EXT_NAME_LINK_PARAM = "linkParameter";
    static inline const std::string XML_VAL_RM_EXT_NAME_DISTRIBUTION = "distribution";
    static inline const std::string XML_ATT_RM_EXT_NAME_DIST_PARAM = "distParameter";
    static inline const std::string XML_EXT_NAME_COXREG_ENDTIMEVARIABLE = "endTimeVariable";
    static inline const std::string XML_EXT_NAME_COXREG_STARTTIMEVARIABLE = "startTimeVariable";
    static inline const std::string XML_EXT_NAME_COXREG_SUBJECT_VARIABLE = "subjectIDVariable";
    static inline const std::string XML_EXT_NAME_COXREG_REFERENCEPOINT = "referencePoint";
    static inline const std::string XML_EXT_NAME_COXREG_XBASE_CUMHAZARD_TABLES =
        "X-BaseCumHazardTables";                                                            // own
    static inline const std::string XML_EXT_NAME_COXREG_CONTRASTMATRIX = "contrastMatrix";  // own
    static inline const std::string XML_EXT_NAME_COXREG_STATUS = "status";                  // own
    static inline const std::string XML_ATT_RM_EXT_NAME_ALLMISSINGFACTORS =
        "allowMissingFactors";                                              // own
    static inline const std::string XML_ATT_RM_EXT_NAME_CUTOFF = "cutoff";  // own
    static inline const std::string XML_ATT_RM_EXT_NAME_NORMALIZATION =
        "normalizationMethod";                                                            // own
    static inline const std::string XML_ATT_RM_EXT_NAME_REMAINDER = "remainderCategory";  // own
    static inline const std::string XML_ATT_RM_EXT_NAME_ORDERED = "orderedCategories";    // own
    static inline const std::string XML_ATT_RM_EXT_NAME_SIGMA = "sigma";                  // own
    static inline const std::string XML_ATT_RM_EXT_NAME_PERCENTILE = "percentile";        // own
    static inline const std::string XML_ATT_TRAN_EXT_NAME_DERIVEDFIELD = "derivedField";  // own

    // Values
    static inline const std::string XML_VAL_EXTENSION_EXTENDER = "velscore";  // own
    static inline const std::string XML_VAL_OT_CONTINUOUS = "continuous";
    static inline const std::string XML_ATT_MF_FUT_ACTIVE = "active";
    static inline const std::string XML_ATT_MF_FUT_PREDICTED = "predicted";
    static inline const std::string XML_ATT_MF_FUT_TARGET = "target";
    static inline const std::string XML_VAL_MININGFIELD_OUTLIERS_ASMISS = "asMissingValues";
    static inline const std::string XML_VAL_MININGFIELD_OUTLIERS_ASEXTREME = "asExtremeValues";
    static inline const std::string XML_VAL_RM_FUNC_NAME_C = "classification";
    static inline const std::string XML_VAL_MT_REGRESS = "regression";
    static inline const std::string XML_VAL_MT_GLIN = "generalLinear";
    static inline const std::string XML_VAL_MT_GDLIN = "generalizedLinear";
    static inline const std::string XML_VAL_MT_MLR = "multinomialLogistic";
    static inline const std::string XML_VAL_MT_ORDINAL = "ordinalMultinomial";
    static inline const std::string XML_VAL_MT_COXRGN = "CoxRegression";

    // Selectors, compared with the algorithm name, else the model name
    static inline const std::string XML_VAL_MT_XCONLOG = "contrastLogistic";
    static inline const std::string XML_VAL_MT_COND = "conditionalLogistic";         // own
    static inline const std::string XML_VAL_MN_NORMALIZED = "normalizedRegression";  // own
    static inline const std::string XML_VAL_MN_GZLM = "GZLM";
    static inline const std::string XML_VAL_MN_GEE = "GEE";                    // own
    static inline const std::string XML_VAL_MN_GLMM = "GLMM";                  // own
    static inline const std::string XML_VAL_MN_GLIN = "generalLinearModel";    // own
    static inline const std::string XML_VAL_MN_MIXEDLIN = "mixedLinearModel";  // own
    static inline const std::string XML_VAL_MN_ALM = "automaticLinearModel";   // own
    static inline const std::string XML_VAL_MN_COXREG = "Cox";                 // own
    static inline const std::string XML_VAL_MN_CSCOXREG = "CSCox";
    static inline const std::string XML_VAL_MN_ORDINAL = "ordinalRegression";  // own

    // Links and distributions. The loglog of the attribute form is the nloglog of the extension
    // form
    static inline const std::string XML_VAL_LINKFUNCTION_LOGIT = "logit";
    static inline const std::string XML_VAL_LINKFUNCTION_PROBIT = "probit";
    static inline const std::string XML_VAL_LINKFUNCTION_CLOGLOG = "cloglog";
    static inline const std::string XML_VAL_LINKFUNCTION_LOGLOG = "loglog";
    static inline const std::string XML_VAL_LINKFUNCTION_CAUCHIT = "cauchit";
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_IDENTITY = "identity";
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_PROBIT = "probit";
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_LOGIT = "logit";
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_CLOGLOG = "cloglog";
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_LOG = "log";
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_LOGC = "logc";
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_NEGBIN = "negbin";
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_ODDSPOWER = "oddspower";
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_POWER = "power";
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_NLOGLOG = "nloglog";  // own
    static inline const std::string XML_VAL_RM_VALUE_LINK_LOGLOG = "loglog";
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_CUM_LOGIT = "cumlogit";      // own
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_CUM_PROBIT = "cumprobit";    // own
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_CUM_CLOGLOG = "cumcloglog";  // own
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_CUM_LOGLOG = "cumloglog";    // own
    static inline const std::string XML_VAL_RM_EXT_VALUE_LINK_CUM_CAUCHIT = "cumcauchit";  // own
    static inline const std::string XML_VAL_RM_VALUE_LINK_LOGIT = "logit";
    static inline const std::string XML_VAL_RM_VALUE_LINK_PROBIT = "probit";
    static inline const std::string XML_VAL_RM_VALUE_LINK_CLOGLOG = "cloglog";
    static inline const std::string XML_VAL_RM_VALUE_LINK_CAUCHIT = "cauchit";
    static inline const std::string XML_VAL_RM_EXT_VALUE_DIST_NORMAL = "normal";
    static inline const std::string XML_VAL_RM_EXT_VALUE_DIST_BINOMIAL = "binomial";
    static inline const std::string XML_VAL_RM_EXT_VALUE_DIST_GAMMA = "gamma";
    static inline const std::string XML_VAL_RM_EXT_VALUE_DIST_IGAUSS = "igauss";
    static inline const std::string XML_VAL_RM_EXT_VALUE_DIST_NEGBIN = "negbin";
    static inline const std::string XML_VAL_RM_EXT_VALUE_DIST_POISSON = "poisson";
    static inline const std::string XML_VAL_RM_EXT_VALUE_DIST_TWEEDIE = "tweedie";
    static inline const std::string XML_VAL_RM_EXT_VALUE_DIST_MULTINOMIAL = "multinomial";
};

}  // namespace MCVelscore_850

#endif
