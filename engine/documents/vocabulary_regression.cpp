// The published form's words for a RegressionModel.

#include "engine/documents/vocabularywords.h"

namespace MCVelscore_850 {

namespace {

using namespace vocabulary;
using enum Effect;
using enum ChildWord::Count;

constexpr std::string_view kFunctions[] = {"regression", "classification"};
// Before version 4.0 the type was told beside the method.
constexpr std::string_view kModelTypes[] = {"linearRegression", "stepwisePolynomialRegression",
                                            "logisticRegression"};
constexpr std::string_view kNormalizations[] = {
    "none", "simplemax", "softmax", "logit", "probit", "cloglog", "exp", "loglog", "cauchit"};

constexpr AttributeWord kModel[] = {{"modelName"},
                                    {"functionName", Score, kFunctions},
                                    {"algorithmName"},
                                    {"modelType", None, kModelTypes},
                                    {"targetFieldName", Score},
                                    {"normalizationMethod", Score, kNormalizations},
                                    {"isScorable", Score, kTruths, 4.1}};
constexpr ChildWord kModelChildren[] = {
    {"MiningSchema"},          {"Output"},           {"ModelStats"},
    {"ModelExplanation"},      {"Targets"},          {"LocalTransformations"},
    {"RegressionTable", Many}, {"ModelVerification"}};
constexpr AttributeWord kTable[] = {{"intercept", Score}, {"targetCategory", Score}};
constexpr ChildWord kTableChildren[] = {
    {"NumericPredictor", Many}, {"CategoricalPredictor", Many}, {"PredictorTerm", Many}};
constexpr AttributeWord kNumeric[] = {{"name", Score}, {"exponent", Score}, {"coefficient", Score}};
constexpr AttributeWord kCategorical[] = {
    {"name", Score}, {"value", Score}, {"coefficient", Score}};
constexpr AttributeWord kTerm[] = {{"name"}, {"coefficient", Score}};
constexpr ChildWord kTermChildren[] = {{"FieldRef", Many}};

constexpr ElementWord kElements[] = {
    {"RegressionModel", Score, kModel, kModelChildren},
    {"RegressionTable", Score, kTable, kTableChildren},
    {"NumericPredictor", Score, kNumeric},
    {"CategoricalPredictor", Score, kCategorical},
    {"PredictorTerm", Score, kTerm, kTermChildren},
};

}  // namespace

std::span<const ElementWord> RegressionVocabulary() { return kElements; }

}  // namespace MCVelscore_850
