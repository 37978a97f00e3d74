// The published form's words for the document itself, its fields and its transformations.

#include "engine/documents/vocabularywords.h"

namespace MCVelscore_850 {

namespace {

using namespace vocabulary;
using enum Effect;
using enum ChildWord::Count;

constexpr std::string_view kProperties[] = {"valid", "invalid", "missing"};
constexpr std::string_view kClosures[] = {"openOpen", "openClosed", "closedOpen", "closedClosed"};
constexpr std::string_view kNormMethods[] = {"indicator", "thermometer"};
constexpr std::string_view kBits[] = {"0", "1"};

// The document.
constexpr AttributeWord kPmml[] = {{"version", Score}};
constexpr ChildWord kPmmlChildren[] = {{"Header"},
                                       {"MiningBuildTask"},
                                       {"DataDictionary"},
                                       {"TransformationDictionary"},
                                       {"GeneralRegressionModel", Model},
                                       {"AnomalyDetectionModel", Model},
                                       {"AssociationModel", Model},
                                       {"BaselineModel", Model},
                                       {"BayesianNetworkModel", Model},
                                       {"ClusteringModel", Model},
                                       {"GaussianProcessModel", Model},
                                       {"MiningModel", Model},
                                       {"NaiveBayesModel", Model},
                                       {"NearestNeighborModel", Model},
                                       {"NeuralNetwork", Model},
                                       {"RegressionModel", Model},
                                       {"RuleSetModel", Model},
                                       {"Scorecard", Model},
                                       {"SequenceModel", Model},
                                       {"SupportVectorMachineModel", Model},
                                       {"TextModel", Model},
                                       {"TimeSeriesModel", Model},
                                       {"TreeModel", Model}};
constexpr AttributeWord kHeader[] = {{"copyright"}, {"description"}, {"modelVersion"}};
constexpr ChildWord kHeaderChildren[] = {{"Application"}, {"Annotation", Many}, {"Timestamp"}};
constexpr AttributeWord kApplication[] = {{"name"}, {"version"}};
// By its name and value an extension is obeyed.
constexpr AttributeWord kExtension[] = {{"extender", Score}, {"name", Score}, {"value", Score}};

// The dictionary.
constexpr AttributeWord kDataDictionary[] = {{"numberOfFields"}};
constexpr ChildWord kDataDictionaryChildren[] = {{"DataField", Many}, {"Taxonomy", Many}};
constexpr AttributeWord kDataField[] = {{"name", Score},
                                        {"displayName"},
                                        {"optype", Score, kOptypes},
                                        {"dataType", Score, kDataTypes},
                                        {"taxonomy"},
                                        {"isCyclic", None, kBits}};
constexpr ChildWord kDeclaredValues[] = {{"Value", Many}, {"Interval", Many}};
constexpr AttributeWord kValue[] = {
    {"value", Score}, {"displayValue", Output}, {"property", Score, kProperties}};
constexpr AttributeWord kInterval[] = {
    {"closure", Score, kClosures}, {"leftMargin", Score}, {"rightMargin", Score}};

// Transformations. A field has one expression, a function any number of arguments.
constexpr ChildWord kTransformationsChildren[] = {{"DerivedField", Many}, {"DefineFunction", Many}};
constexpr AttributeWord kDerivedField[] = {
    {"name", Score}, {"displayName"}, {"optype", Score, kOptypes}, {"dataType", Score, kDataTypes}};
constexpr auto kDerivedFieldChildren = OneExpressionAnd(kDeclaredValues);
constexpr AttributeWord kDefineFunction[] = {
    {"name", Score}, {"optype", Score, kOptypes}, {"dataType", Score, kDataTypes}};
constexpr ChildWord kParameters[] = {{"ParameterField", Many}};
constexpr auto kDefineFunctionChildren = OneExpressionAnd(kParameters);
constexpr AttributeWord kParameterField[] = {
    {"name", Score}, {"displayName"}, {"optype", Score, kOptypes}, {"dataType", Score, kDataTypes}};
constexpr AttributeWord kConstant[] = {{"dataType", Score, kDataTypes},
                                       {"missing", Score, kTruths, 4.4}};
constexpr AttributeWord kFieldRef[] = {{"field", Score}, {"mapMissingTo", Score}};
constexpr AttributeWord kNormContinuous[] = {
    {"field", Score}, {"mapMissingTo", Score}, {"outliers", Score, kOutliers}};
constexpr ChildWord kNormContinuousChildren[] = {{"LinearNorm", Many}};
constexpr AttributeWord kLinearNorm[] = {{"orig", Score}, {"norm", Score}};
constexpr AttributeWord kNormDiscrete[] = {
    {"field", Score}, {"value", Score}, {"mapMissingTo", Score}, {"method", Score, kNormMethods}};
constexpr AttributeWord kDiscretize[] = {{"field", Score},
                                         {"mapMissingTo", Score},
                                         {"defaultValue", Score},
                                         {"dataType", Score, kDataTypes}};
constexpr ChildWord kDiscretizeChildren[] = {{"DiscretizeBin", Many}};
constexpr AttributeWord kDiscretizeBin[] = {{"binValue", Score}};
constexpr ChildWord kDiscretizeBinChildren[] = {{"Interval"}};
constexpr AttributeWord kMapValues[] = {{"outputColumn", Score},
                                        {"mapMissingTo", Score},
                                        {"defaultValue", Score},
                                        {"dataType", Score, kDataTypes}};
constexpr ChildWord kMapValuesChildren[] = {
    {"FieldColumnPair", Many}, {"InlineTable"}, {"TableLocator"}};
constexpr AttributeWord kFieldColumnPair[] = {{"field", Score}, {"column", Score}};
constexpr ChildWord kInlineTableChildren[] = {{"row", Many}};
constexpr AttributeWord kApply[] = {{"function", Score},
                                    {"mapMissingTo", Score},
                                    {"defaultValue", Score},
                                    {"invalidValueTreatment", Score, kInvalidTreatments}};
constexpr auto kArguments = [] {
    auto arguments = std::to_array(kOneExpression);
    for (ChildWord& argument : arguments) argument.count = Many;
    return arguments;
}();

constexpr bool kOpen = true;

constexpr ElementWord kElements[] = {
    {"PMML", Score, kPmml, kPmmlChildren},
    {"Header", None, kHeader, kHeaderChildren},
    {"Application", None, kApplication},
    {"Annotation", None, {}, {}, kOpen},
    {"Timestamp", None, {}, {}, kOpen},
    {"MiningBuildTask", None, {}, {}, kOpen},
    {"Extension", Score, kExtension, {}, kOpen},
    {"AnomalyDetectionModel", Score, {}, {}, kOpen, 4.4},
    {"AssociationModel", Score, {}, {}, kOpen},
    {"BaselineModel", Score, {}, {}, kOpen, 4.1},
    {"BayesianNetworkModel", Score, {}, {}, kOpen, 4.3},
    {"ClusteringModel", Score, {}, {}, kOpen},
    {"GaussianProcessModel", Score, {}, {}, kOpen, 4.3},
    {"MiningModel", Score, {}, {}, kOpen},
    {"NaiveBayesModel", Score, {}, {}, kOpen},
    {"NearestNeighborModel", Score, {}, {}, kOpen, 4.1},
    {"NeuralNetwork", Score, {}, {}, kOpen},
    {"RuleSetModel", Score, {}, {}, kOpen},
    {"Scorecard", Score, {}, {}, kOpen, 4.1},
    {"SequenceModel", Score, {}, {}, kOpen},
    {"SupportVectorMachineModel", Score, {}, {}, kOpen},
    {"TextModel", Score, {}, {}, kOpen},
    {"TimeSeriesModel", Score, {}, {}, kOpen, 4.0},
    {"TreeModel", Score, {}, {}, kOpen},

    {"DataDictionary", Score, kDataDictionary, kDataDictionaryChildren},
    {"DataField", Score, kDataField, kDeclaredValues},
    {"Value", Score, kValue},
    {"Interval", Score, kInterval},
    {"Taxonomy", None, {}, {}, kOpen},

    {"TransformationDictionary", Score, {}, kTransformationsChildren},
    {"LocalTransformations", Score, {}, kTransformationsChildren},
    {"DerivedField", Score, kDerivedField, kDerivedFieldChildren},
    {"DefineFunction", Score, kDefineFunction, kDefineFunctionChildren},
    {"ParameterField", Score, kParameterField},
    {"Constant", Score, kConstant},
    {"FieldRef", Score, kFieldRef},
    {"NormContinuous", Score, kNormContinuous, kNormContinuousChildren},
    {"LinearNorm", Score, kLinearNorm},
    {"NormDiscrete", Score, kNormDiscrete},
    {"Discretize", Score, kDiscretize, kDiscretizeChildren},
    {"DiscretizeBin", Score, kDiscretizeBin, kDiscretizeBinChildren},
    {"MapValues", Score, kMapValues, kMapValuesChildren},
    {"FieldColumnPair", Score, kFieldColumnPair},
    {"InlineTable", Score, {}, kInlineTableChildren},
    {"row", Score, {}, {}, kOpen},
    {"Apply", Score, kApply, kArguments},
    // Refused, with all that stands within.
    {"TableLocator", Score, {}, {}, kOpen},
    {"TextIndex", Score, {}, {}, kOpen, 4.2},
    {"Aggregate", Score, {}, {}, kOpen},
    {"Lag", Score, {}, {}, kOpen, 4.3},
};

}  // namespace

std::span<const ElementWord> FieldVocabulary() { return kElements; }

}  // namespace MCVelscore_850
