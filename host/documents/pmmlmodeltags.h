#ifndef VELSCORE_HOST_DOCUMENTS_PMMLMODELTAGS_H
#define VELSCORE_HOST_DOCUMENTS_PMMLMODELTAGS_H

#include "host/documents/tag.h"

namespace MCVelscore_850 {

/// The texts of a document: elements, attributes, names of extensions, values. Everything is
/// compared as it is written here. Own marks what the published schema doesn't have.
struct PMMLModelTags {
    // Elements
    VELSCORE_TAG(XML_ELE_PMML, "PMML");
    VELSCORE_TAG(XML_ELE_DATADICTIONARY, "DataDictionary");
    VELSCORE_TAG(XML_ELE_TRANSFORMATION, "TransformationDictionary");
    VELSCORE_TAG(XML_ELE_LOCALTRANSFORMATIONS, "LocalTransformations");
    VELSCORE_TAG(XML_ELE_REGRESSMODEL, "GeneralRegressionModel");
    VELSCORE_TAG(XML_ELE_EXTENSION, "Extension");
    VELSCORE_TAG(XML_ELE_MININGSCHEMA, "MiningSchema");
    VELSCORE_TAG(XML_ELE_MININGFIELD, "MiningField");
    VELSCORE_TAG(XML_ELE_TARGETS, "Targets");
    VELSCORE_TAG(XML_ELE_VALUE, "Value");
    VELSCORE_TAG(XML_ELE_PARAM_LIST, "ParameterList");
    VELSCORE_TAG(XML_ELE_PARAM, "Parameter");
    VELSCORE_TAG(XML_ELE_FAC_LIST, "FactorList");
    VELSCORE_TAG(XML_ELE_COV_LIST, "CovariateList");
    VELSCORE_TAG(XML_ELE_PREDICTOR, "Predictor");
    VELSCORE_TAG(XML_ELE_PP_MATRIX, "PPMatrix");
    VELSCORE_TAG(XML_ELE_PP_CELL, "PPCell");
    VELSCORE_TAG(XML_ELE_PARAM_MATRIX, "ParamMatrix");
    VELSCORE_TAG(XML_ELE_PCELL, "PCell");
    VELSCORE_TAG(XML_ELE_PCOV_MATRIX, "PCovMatrix");
    VELSCORE_TAG(XML_ELE_PCOV_CELL, "PCovCell");
    VELSCORE_TAG(XML_ELE_GRM_CATEGORIES, "Categories");
    VELSCORE_TAG(XML_ELE_GRM_CATEGORY, "Category");
    VELSCORE_TAG(XML_ELE_MATRIX, "Matrix");
    VELSCORE_TAG(XML_ELM_BASECUMHAZARDTABLES, "BaseCumHazardTables");
    VELSCORE_TAG(XML_ELM_BASELINESTRATUM, "BaselineStratum");
    VELSCORE_TAG(XML_ELM_BASELINECELL, "BaselineCell");
    VELSCORE_TAG(XML_ELE_XBASIS, "xBasis");                                 // own
    VELSCORE_TAG(XML_ELE_UPERXBASIS, "X-Basis");                            // own
    VELSCORE_TAG(XML_EXT_ELE_COXREG_BASEPOINT, "X-BasePoint");              // own
    VELSCORE_TAG(XML_EXT_ELE_COXREG_STRATUM, "X-Stratum");                  // own
    VELSCORE_TAG(XML_EXT_ELE_COXREG_HAZARD_TABLE, "X-BaseCumHazardTable");  // own
    VELSCORE_TAG(XML_EXT_ELE_COXREG_BASEMAXTIME, "X-BaseMaxTime");          // own
    VELSCORE_TAG(XML_EXT_ELE_COXREG_BASELINE, "X-Baseline");                // own

    // Attributes
    VELSCORE_TAG(XML_ATT_VERSION, "version");
    VELSCORE_TAG(XML_ATT_NAME, "name");
    VELSCORE_TAG(XML_ATT_EXT_NAME, "name");
    VELSCORE_TAG(XML_ATT_MININGFIELD_NAME, "name");
    VELSCORE_TAG(XML_ATT_PARAM_NAME, "name");
    VELSCORE_TAG(XML_ATT_PRED_NAME, "name");
    VELSCORE_TAG(XML_ATT_VALUE, "value");
    VELSCORE_TAG(XML_ATT_EXT_VALUE, "value");
    VELSCORE_TAG(XML_ATT_VALUE_VALUE, "value");
    VELSCORE_TAG(XML_ATT_PPC_VALUE, "value");
    VELSCORE_TAG(XML_ATT_PCC_VALUE, "value");
    VELSCORE_TAG(XML_ATT_EXTENSION_EXTENDER, "extender");
    VELSCORE_TAG(XML_ATT_FUNCTIONNAME, "functionName");
    VELSCORE_TAG(XML_ATT_RM_FUNC_NAME, "functionName");
    VELSCORE_TAG(XML_ATT_MODELALGO, "algorithmName");
    VELSCORE_TAG(XML_ATT_RM_ALGOR_NAME, "algorithmName");
    VELSCORE_TAG(XML_ATT_RM_MODEL_NAME, "modelName");
    VELSCORE_TAG(XML_ATT_RM_MODEL_TYPE, "modelType");
    VELSCORE_TAG(XML_ATT_RM_TARGET_VAR, "targetVariableName");
    VELSCORE_TAG(XML_ATT_RM_IS_SCORABLE, "isScorable");
    VELSCORE_TAG(XML_ATT_TARGETREFCATEGORY, "targetReferenceCategory");
    VELSCORE_TAG(XML_ATT_LINKFUNCTION, "linkFunction");
    VELSCORE_TAG(XML_ATT_RM_NAME_LINKFUNCTION, "linkFunction");
    VELSCORE_TAG(XML_ATT_RM_NAME_CUMULATIVELINK, "cumulativeLink");
    VELSCORE_TAG(XML_ATT_BASELINESTRATAVARIABLE, "baselineStrataVariable");
    VELSCORE_TAG(XML_ATT_MAXTIME, "maxTime");
    VELSCORE_TAG(XML_ATT_DATAFIELD_OPTYPE, "optype");
    VELSCORE_TAG(XML_ATT_MININGFIELD_USAGETYPE, "usageType");
    VELSCORE_TAG(XML_ATT_MININGFIELD_HIGHVALUE, "highValue");
    VELSCORE_TAG(XML_ATT_MININGFIELD_LOWVALUE, "lowValue");
    VELSCORE_TAG(XML_ATT_MININGFIELD_MISSREPLACE, "missingValueReplacement");
    VELSCORE_TAG(XML_ATT_MININGFIELD_OUTLIERS, "outliers");
    VELSCORE_TAG(XML_ATT_PARAM_LABEL, "label");
    VELSCORE_TAG(XML_ATT_PC_TARGET_CAT, "targetCategory");
    VELSCORE_TAG(XML_ATT_PCC_TARGET_CAT, "targetCategory");
    VELSCORE_TAG(XML_ATT_PC_PARAMNAME, "parameterName");
    VELSCORE_TAG(XML_ATT_PPC_PARAMNAME, "parameterName");
    VELSCORE_TAG(XML_ATT_PC_BETA, "beta");
    VELSCORE_TAG(XML_ATT_PC_DF, "df");
    VELSCORE_TAG(XML_ATT_PPC_PREDNAME, "predictorName");
    VELSCORE_TAG(XML_ATT_PCC_PROW, "pRow");
    VELSCORE_TAG(XML_ATT_PCC_PCOL, "pCol");
    VELSCORE_TAG(XML_ATT_PCC_TROW, "tRow");
    VELSCORE_TAG(XML_ATT_PCC_TCol, "tCol");
    VELSCORE_TAG(XML_ELE_GRM_CONTRASTMATRIXTYPE, "contrastMatrixType");
    VELSCORE_TAG(XML_ELE_MATRIX_NBROWS, "nbRows");
    VELSCORE_TAG(XML_ELE_MATRIX_NBCOLS, "nbCols");
    VELSCORE_TAG(XML_ATT_ARRAY_N, "n");
    VELSCORE_TAG(XML_ATT_INTERCEPT, "intercept");                               // own
    VELSCORE_TAG(XML_ATT_XBASIS_NROW, "nbRows");                                // own
    VELSCORE_TAG(XML_ATT_XBASIS_NCOL, "nbCols");                                // own
    VELSCORE_TAG(XML_EXT_ATT_COXREG_BASEPOINT_PARAMETERNAME, "parameterName");  // own
    VELSCORE_TAG(XML_EXT_ELE_ATT_COXREG_STRATUM_VARNAME, "varName");            // own
    VELSCORE_TAG(XML_EXT_ELE_ATT_COXREG_BASELINE_TIME, "time");
    VELSCORE_TAG(XML_EXT_ELE_ATT_COXREG_BASELINE_CUMHAZARD, "cumHazard");

    // Names that serve as attribute and as extension name
    VELSCORE_TAG(XML_VAL_NAME_MODELDF, "modelDF");
    VELSCORE_TAG(XML_VAL_RM_EXT_NAME_TRIALVAR, "trialsVariable");
    VELSCORE_TAG(XML_ATT_RM_EXT_NAME_TRIALS_VALUE, "trialsValue");
    VELSCORE_TAG(XML_VAL_RM_EXT_NAME_OFFSETVAR, "offsetVariable");
    VELSCORE_TAG(XML_ATT_RM_EXT_NAME_OFFSET_VALUE, "offsetValue");
    VELSCORE_TAG(XML_VAL_RM_EXT_NAME_LINK, "linkFunction");
    VELSCORE_TAG(XML_ATT_RM_EXT_NAME_LINK_PARAM, "linkParameter");
    VELSCORE_TAG(XML_VAL_RM_EXT_NAME_DISTRIBUTION, "distribution");
    VELSCORE_TAG(XML_ATT_RM_EXT_NAME_DIST_PARAM, "distParameter");
    VELSCORE_TAG(XML_EXT_NAME_COXREG_ENDTIMEVARIABLE, "endTimeVariable");
    VELSCORE_TAG(XML_EXT_NAME_COXREG_STARTTIMEVARIABLE, "startTimeVariable");
    VELSCORE_TAG(XML_EXT_NAME_COXREG_SUBJECT_VARIABLE, "subjectIDVariable");
    VELSCORE_TAG(XML_EXT_NAME_COXREG_REFERENCEPOINT, "referencePoint");
    VELSCORE_TAG(XML_EXT_NAME_COXREG_XBASE_CUMHAZARD_TABLES, "X-BaseCumHazardTables");  // own
    VELSCORE_TAG(XML_EXT_NAME_COXREG_CONTRASTMATRIX, "contrastMatrix");                 // own
    VELSCORE_TAG(XML_EXT_NAME_COXREG_STATUS, "status");                                 // own
    VELSCORE_TAG(XML_ATT_RM_EXT_NAME_ALLMISSINGFACTORS, "allowMissingFactors");         // own
    VELSCORE_TAG(XML_ATT_RM_EXT_NAME_CUTOFF, "cutoff");                                 // own
    VELSCORE_TAG(XML_ATT_RM_EXT_NAME_NORMALIZATION, "normalizationMethod");             // own
    VELSCORE_TAG(XML_ATT_RM_EXT_NAME_REMAINDER, "remainderCategory");                   // own
    VELSCORE_TAG(XML_ATT_RM_EXT_NAME_ORDERED, "orderedCategories");                     // own
    VELSCORE_TAG(XML_ATT_RM_EXT_NAME_SIGMA, "sigma");                                   // own
    VELSCORE_TAG(XML_ATT_RM_EXT_NAME_PERCENTILE, "percentile");                         // own
    VELSCORE_TAG(XML_ATT_TRAN_EXT_NAME_DERIVEDFIELD, "derivedField");                   // own

    // Values
    VELSCORE_TAG(XML_VAL_EXTENSION_EXTENDER, "velscore");  // own
    VELSCORE_TAG(XML_VAL_OT_CONTINUOUS, "continuous");
    VELSCORE_TAG(XML_ATT_MF_FUT_ACTIVE, "active");
    VELSCORE_TAG(XML_ATT_MF_FUT_PREDICTED, "predicted");
    VELSCORE_TAG(XML_ATT_MF_FUT_TARGET, "target");
    VELSCORE_TAG(XML_VAL_MININGFIELD_OUTLIERS_ASMISS, "asMissingValues");
    VELSCORE_TAG(XML_VAL_MININGFIELD_OUTLIERS_ASEXTREME, "asExtremeValues");
    VELSCORE_TAG(XML_VAL_RM_FUNC_NAME_C, "classification");
    VELSCORE_TAG(XML_VAL_MT_REGRESS, "regression");
    VELSCORE_TAG(XML_VAL_MT_GLIN, "generalLinear");
    VELSCORE_TAG(XML_VAL_MT_GDLIN, "generalizedLinear");
    VELSCORE_TAG(XML_VAL_MT_MLR, "multinomialLogistic");
    VELSCORE_TAG(XML_VAL_MT_ORDINAL, "ordinalMultinomial");
    VELSCORE_TAG(XML_VAL_MT_COXRGN, "CoxRegression");

    // Selectors, compared with the algorithm name, else the model name
    VELSCORE_TAG(XML_VAL_MT_XCONLOG, "contrastLogistic");
    VELSCORE_TAG(XML_VAL_MT_COND, "conditionalLogistic");         // own
    VELSCORE_TAG(XML_VAL_MN_NORMALIZED, "normalizedRegression");  // own
    VELSCORE_TAG(XML_VAL_MN_GZLM, "GZLM");
    VELSCORE_TAG(XML_VAL_MN_GEE, "GEE");                    // own
    VELSCORE_TAG(XML_VAL_MN_GLMM, "GLMM");                  // own
    VELSCORE_TAG(XML_VAL_MN_GLIN, "generalLinearModel");    // own
    VELSCORE_TAG(XML_VAL_MN_MIXEDLIN, "mixedLinearModel");  // own
    VELSCORE_TAG(XML_VAL_MN_ALM, "automaticLinearModel");   // own
    VELSCORE_TAG(XML_VAL_MN_COXREG, "Cox");                 // own
    VELSCORE_TAG(XML_VAL_MN_CSCOXREG, "CSCox");
    VELSCORE_TAG(XML_VAL_MN_ORDINAL, "ordinalRegression");  // own

    // Links and distributions. The loglog of the attribute form is the nloglog of the extension
    // form
    VELSCORE_TAG(XML_VAL_LINKFUNCTION_LOGIT, "logit");
    VELSCORE_TAG(XML_VAL_LINKFUNCTION_PROBIT, "probit");
    VELSCORE_TAG(XML_VAL_LINKFUNCTION_CLOGLOG, "cloglog");
    VELSCORE_TAG(XML_VAL_LINKFUNCTION_LOGLOG, "loglog");
    VELSCORE_TAG(XML_VAL_LINKFUNCTION_CAUCHIT, "cauchit");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_IDENTITY, "identity");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_PROBIT, "probit");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_LOGIT, "logit");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_CLOGLOG, "cloglog");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_LOG, "log");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_LOGC, "logc");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_NEGBIN, "negbin");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_ODDSPOWER, "oddspower");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_POWER, "power");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_NLOGLOG, "nloglog");  // own
    VELSCORE_TAG(XML_VAL_RM_VALUE_LINK_LOGLOG, "loglog");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_CUM_LOGIT, "cumlogit");      // own
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_CUM_PROBIT, "cumprobit");    // own
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_CUM_CLOGLOG, "cumcloglog");  // own
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_CUM_LOGLOG, "cumloglog");    // own
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_LINK_CUM_CAUCHIT, "cumcauchit");  // own
    VELSCORE_TAG(XML_VAL_RM_VALUE_LINK_LOGIT, "logit");
    VELSCORE_TAG(XML_VAL_RM_VALUE_LINK_PROBIT, "probit");
    VELSCORE_TAG(XML_VAL_RM_VALUE_LINK_CLOGLOG, "cloglog");
    VELSCORE_TAG(XML_VAL_RM_VALUE_LINK_CAUCHIT, "cauchit");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_DIST_NORMAL, "normal");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_DIST_BINOMIAL, "binomial");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_DIST_GAMMA, "gamma");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_DIST_IGAUSS, "igauss");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_DIST_NEGBIN, "negbin");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_DIST_POISSON, "poisson");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_DIST_TWEEDIE, "tweedie");
    VELSCORE_TAG(XML_VAL_RM_EXT_VALUE_DIST_MULTINOMIAL, "multinomial");
};

}  // namespace MCVelscore_850

#endif
