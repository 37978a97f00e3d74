// The published form's words for a regression model and its sections.

#include "engine/documents/vocabularywords.h"

namespace MCVelscore_850 {

namespace {

using namespace vocabulary;
using enum Effect;
using enum ChildWord::Count;

constexpr std::string_view kModelTypes[] = {
    "regression",         "generalLinear",     "logLinear",    "multinomialLogistic",
    "ordinalMultinomial", "generalizedLinear", "CoxRegression"};
// Of the standard's functions those that a regression can have.
constexpr std::string_view kFunctions[] = {"regression", "classification"};
constexpr std::string_view kCumulativeLinks[] = {"logit", "probit", "cloglog", "loglog", "cauchit"};
// Of an ordinal model the reader takes its cumulative links here, so cauchit is among them.
constexpr std::string_view kLinks[] = {"cloglog", "identity", "log",    "logc",
                                       "logit",   "loglog",   "negbin", "oddspower",
                                       "power",   "probit",   "cauchit"};
constexpr std::string_view kDistributions[] = {"binomial", "gamma",  "igauss",  "multinomial",
                                               "negbin",   "normal", "poisson", "tweedie"};
constexpr std::string_view kUsages[] = {"active", "predicted", "target",          "supplementary",
                                        "group",  "order",     "frequencyWeight", "analysisWeight"};
constexpr std::string_view kMissingTreatments[] = {"asIs",     "asMean",  "asMode",
                                                   "asMedian", "asValue", "returnInvalid"};
constexpr std::string_view kCasts[] = {"round", "ceiling", "floor"};
constexpr std::string_view kFeatures[] = {"predictedValue",
                                          "predictedDisplayValue",
                                          "transformedValue",
                                          "decision",
                                          "probability",
                                          "affinity",
                                          "residual",
                                          "standardError",
                                          "standardDeviation",
                                          "clusterId",
                                          "clusterAffinity",
                                          "entityId",
                                          "entityAffinity",
                                          "warning",
                                          "ruleValue",
                                          "reasonCode",
                                          "antecedent",
                                          "consequent",
                                          "rule",
                                          "ruleId",
                                          "confidence",
                                          "support",
                                          "lift",
                                          "leverage",
                                          "confidenceIntervalLower",
                                          "confidenceIntervalUpper"};
constexpr std::string_view kCovarianceTypes[] = {"model", "robust"};
constexpr std::string_view kMatrixKinds[] = {"diagonal", "symmetric", "any"};
constexpr std::string_view kArrayTypes[] = {"int", "real", "string"};

constexpr AttributeWord kModel[] = {{"targetVariableName", Score},
                                    {"modelType", Score, kModelTypes},
                                    {"modelName", Score},
                                    {"functionName", Score, kFunctions},
                                    {"algorithmName", Score},
                                    {"targetReferenceCategory", Score, {}, 4.0},
                                    {"cumulativeLink", Score, kCumulativeLinks},
                                    {"linkFunction", Score, kLinks},
                                    {"linkParameter", Score},
                                    {"trialsVariable", Score},
                                    {"trialsValue", Score},
                                    {"distribution", Score, kDistributions},
                                    {"distParameter", Score},
                                    {"offsetVariable", Score},
                                    {"offsetValue", Score},
                                    {"modelDF", Score},
                                    {"endTimeVariable", Score, {}, 4.0},
                                    {"startTimeVariable", Score, {}, 4.0},
                                    {"subjectIDVariable", Score, {}, 4.0},
                                    {"statusVariable", None, {}, 4.0},
                                    {"baselineStrataVariable", Score, {}, 4.0},
                                    {"isScorable", Score, kTruths, 4.1}};
constexpr ChildWord kModelChildren[] = {{"MiningSchema"},     {"Output"},
                                        {"ModelStats"},       {"ModelExplanation"},
                                        {"Targets"},          {"LocalTransformations"},
                                        {"ParameterList"},    {"FactorList"},
                                        {"CovariateList"},    {"PPMatrix"},
                                        {"PCovMatrix"},       {"ParamMatrix"},
                                        {"EventValues"},      {"BaseCumHazardTables"},
                                        {"ModelVerification"}};

constexpr ChildWord kMiningSchemaChildren[] = {{"MiningField", Each, "name"}};
constexpr AttributeWord kMiningField[] = {
    {"name", Score},
    {"usageType", Score, kUsages},
    {"optype", None, kOptypes},
    {"importance"},
    {"outliers", Score, kOutliers},
    {"lowValue", Score},
    {"highValue", Score},
    {"missingValueReplacement", Score},
    {"missingValueTreatment", Score, kMissingTreatments},
    {"invalidValueTreatment", Score, kInvalidTreatments},
    {"invalidValueReplacement", Score, {}, 4.4},
};

constexpr ChildWord kOutputChildren[] = {{"OutputField", Many}};
constexpr AttributeWord kOutputField[] = {{"name", Output},
                                          {"displayName"},
                                          {"optype", Output, kOptypes},
                                          {"dataType", Output, kDataTypes},
                                          {"targetField", Output},
                                          {"feature", Output, kFeatures},
                                          {"value", Output},
                                          {"numTopReasonCodes"},
                                          {"ruleFeature"},
                                          {"algorithm"},
                                          {"rank"},
                                          {"rankBasis"},
                                          {"rankOrder"},
                                          {"isMultiValued"},
                                          {"segmentId"},
                                          {"isFinalResult"}};
constexpr ChildWord kOutputOthers[] = {{"Decisions"}, {"Value", Many}};
constexpr auto kOutputFieldChildren = OneExpressionAnd(kOutputOthers);

constexpr ChildWord kTargetsChildren[] = {{"Target", Each, "field"}};
constexpr AttributeWord kTarget[] = {
    {"field", Score}, {"optype", None, kOptypes}, {"castInteger", Score, kCasts}, {"min", Score},
    {"max", Score},   {"rescaleConstant", Score}, {"rescaleFactor", Score}};
constexpr ChildWord kTargetChildren[] = {{"TargetValue", Each, "value"}};
constexpr AttributeWord kTargetValue[] = {{"value", Score},
                                          {"displayValue", Output},
                                          {"priorProbability", Score},
                                          {"defaultValue", Score}};
constexpr ChildWord kTargetValueChildren[] = {{"Partition"}};

constexpr ChildWord kParameterListChildren[] = {{"Parameter", Many, "name"}};
constexpr AttributeWord kParameter[] = {{"name", Score}, {"label"}, {"referencePoint", Score}};
constexpr ChildWord kPredictors[] = {{"Predictor", Many, "name"}};
constexpr AttributeWord kPredictor[] = {{"name", Score}, {"contrastMatrixType", Score}};
constexpr ChildWord kPredictorChildren[] = {{"Categories"}, {"Matrix"}, {"xBasis"}};
constexpr ChildWord kCategoriesChildren[] = {{"Category", Many}};
constexpr AttributeWord kCategory[] = {{"value", Score}};
constexpr AttributeWord kMatrix[] = {{"kind", Score, kMatrixKinds},
                                     {"nbRows", Score},
                                     {"nbCols", Score},
                                     {"diagDefault", Score},
                                     {"offDiagDefault", Score}};
constexpr ChildWord kMatrixChildren[] = {{"Array", Many}, {"MatCell", Many}};
constexpr AttributeWord kArray[] = {{"n", Score}, {"type", None, kArrayTypes}};
constexpr AttributeWord kMatCell[] = {{"row", Score}, {"col", Score}};

constexpr ChildWord kPPMatrixChildren[] = {{"PPCell", Many}};
constexpr AttributeWord kPPCell[] = {{"value", Score},
                                     {"predictorName", Score},
                                     {"parameterName", Score},
                                     {"targetCategory", Score}};
constexpr AttributeWord kPCovMatrix[] = {{"type", None, kCovarianceTypes}};
constexpr ChildWord kPCovMatrixChildren[] = {{"PCovCell", Many}};
constexpr AttributeWord kPCovCell[] = {{"pRow", Score}, {"pCol", Score},  {"tRow", Score},
                                       {"tCol", Score}, {"value", Score}, {"targetCategory"}};
constexpr ChildWord kParamMatrixChildren[] = {{"PCell", Many}};
constexpr AttributeWord kPCell[] = {
    {"targetCategory", Score}, {"parameterName", Score}, {"beta", Score}, {"df"}};

constexpr ChildWord kEventValuesChildren[] = {{"Value", Many}, {"Interval", Many}};
constexpr AttributeWord kBaseCumHazardTables[] = {{"maxTime", Score}};
constexpr ChildWord kBaseCumHazardTablesChildren[] = {{"BaselineStratum", Many},
                                                      {"BaselineCell", Many}};
// The reader takes the name of the variable here too.
constexpr AttributeWord kBaselineStratum[] = {
    {"value", Score}, {"label"}, {"maxTime", Score}, {"varName", Score}};
constexpr ChildWord kBaselineStratumChildren[] = {{"BaselineCell", Many}};
constexpr AttributeWord kBaselineCell[] = {{"time", Score}, {"cumHazard", Score}};

constexpr AttributeWord kModelVerification[] = {{"recordCount"}, {"fieldCount"}};
constexpr ChildWord kModelVerificationChildren[] = {
    {"VerificationFields"}, {"InlineTable"}, {"TableLocator"}};
constexpr ChildWord kVerificationFieldsChildren[] = {{"VerificationField", Many}};
constexpr AttributeWord kVerificationField[] = {
    {"field"}, {"column"}, {"precision"}, {"zeroThreshold"}};

constexpr bool kOpen = true;

constexpr ElementWord kElements[] = {
    {"GeneralRegressionModel", Score, kModel, kModelChildren},
    {"MiningSchema", Score, {}, kMiningSchemaChildren},
    {"MiningField", Score, kMiningField},
    {"Output", Output, {}, kOutputChildren},
    {"OutputField", Output, kOutputField, kOutputFieldChildren},
    {"Decisions", None, {}, {}, kOpen},
    {"ModelStats", None, {}, {}, kOpen},
    {"ModelExplanation", None, {}, {}, kOpen, 4.0},
    {"Targets", Score, {}, kTargetsChildren},
    {"Target", Score, kTarget, kTargetChildren},
    {"TargetValue", Score, kTargetValue, kTargetValueChildren},
    {"Partition", None, {}, {}, kOpen},

    {"ParameterList", Score, {}, kParameterListChildren},
    {"Parameter", Score, kParameter},
    {"FactorList", Score, {}, kPredictors},
    {"CovariateList", Score, {}, kPredictors},
    {"Predictor", Score, kPredictor, kPredictorChildren},
    {"Categories", Score, {}, kCategoriesChildren},
    {"Category", Score, kCategory},
    {"Matrix", Score, kMatrix, kMatrixChildren},
    {"xBasis", Score, kMatrix, {}, kOpen},  // its rows may have any tag
    {"Array", Score, kArray},
    {"MatCell", Score, kMatCell},

    {"PPMatrix", Score, {}, kPPMatrixChildren},
    {"PPCell", Score, kPPCell},
    {"PCovMatrix", Score, kPCovMatrix, kPCovMatrixChildren},
    {"PCovCell", Score, kPCovCell},
    {"ParamMatrix", Score, {}, kParamMatrixChildren},
    {"PCell", Score, kPCell},

    {"EventValues", None, {}, kEventValuesChildren},
    {"BaseCumHazardTables", Score, kBaseCumHazardTables, kBaseCumHazardTablesChildren},
    {"BaselineStratum", Score, kBaselineStratum, kBaselineStratumChildren},
    {"BaselineCell", Score, kBaselineCell},

    {"ModelVerification", None, kModelVerification, kModelVerificationChildren},
    {"VerificationFields", None, {}, kVerificationFieldsChildren},
    {"VerificationField", None, kVerificationField},
};

}  // namespace

std::span<const ElementWord> ModelVocabulary() { return kElements; }

}  // namespace MCVelscore_850
