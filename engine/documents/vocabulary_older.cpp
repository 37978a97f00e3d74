// The words of the older form.

#include "engine/documents/vocabulary.h"

namespace MCVelscore_850 {

namespace {

using enum Effect;
using enum ChildWord::Count;

constexpr std::string_view kStorageTypes[] = {"NUMERIC", "STRING"};
constexpr std::string_view kLevels[] = {"CONTINUOUS", "NOMINAL", "ORDINAL", "UNKNOWN"};
constexpr std::string_view kModelTypes[] = {"regression", "multinomial-logistic",
                                            "conditional-logistic"};

constexpr AttributeWord kRoot[] = {{"version"}};
constexpr ChildWord kRootChildren[] = {{"dictionary"}, {"model"}};

constexpr ChildWord kDictionaryChildren[] = {{"variable", Many}};
constexpr AttributeWord kVariable[] = {{"name", Score},
                                       {"storage-type", Score, kStorageTypes},
                                       {"measurement-level", Score, kLevels},
                                       {"label"}};
// Those that come again add to the first.
constexpr ChildWord kVariableChildren[] = {
    {"categories", Many}, {"missing-values", Many}, {"var-stats"}, {"format-spec", Many}};
constexpr ChildWord kCategoriesChildren[] = {{"category", Many}};
constexpr AttributeWord kCategory[] = {
    {"value", Score}, {"display-value"}, {"proportion"}, {"rank"}};
constexpr ChildWord kMissingValuesChildren[] = {{"value", Many}, {"range", Many}};
constexpr AttributeWord kValue[] = {{"value", Score}};
constexpr AttributeWord kRange[] = {{"minimum", Score}, {"maximum", Score}};
constexpr AttributeWord kVarStats[] = {
    {"minimum"},           {"maximum"}, {"mean", Score}, {"median"}, {"inter-quartile-range"},
    {"standard-deviation"}};

constexpr ChildWord kModelChildren[] = {{"regression-model", Model}, {"discriminant-model", Model}};
constexpr AttributeWord kRegressionModel[] = {{"target-variable-name", Score},
                                              {"model-type", Score, kModelTypes},
                                              {"model-df", Score},
                                              {"number-parameters"},
                                              {"label"},
                                              {"unique-id"},
                                              {"verbose-model-specification"}};
constexpr ChildWord kRegressionModelChildren[] = {
    {"parameter-list"}, {"factor-list"}, {"covariate-list"}, {"p-table"},
    {"pp-matrix"},      {"pcov-matrix"}, {"box-test"}};
constexpr ChildWord kParameterListChildren[] = {{"parameter", Many, "name"}};
constexpr AttributeWord kParameter[] = {{"name", Score}, {"label"}};
constexpr ChildWord kPredictors[] = {{"predictor", Many, "name"}};
constexpr AttributeWord kPredictor[] = {{"name", Score}};
constexpr ChildWord kPTableChildren[] = {{"p-cell", Many}};
constexpr AttributeWord kPCell[] = {{"target-category", Score},
                                    {"parameter-name", Score},
                                    {"beta", Score},
                                    {"df"},
                                    {"significance"}};
constexpr ChildWord kPPMatrixChildren[] = {{"pp-cell", Many}};
constexpr AttributeWord kPPCell[] = {
    {"parameter-name", Score}, {"predictor-name", Score}, {"value", Score}};
constexpr ChildWord kPCovMatrixChildren[] = {{"pcov-cell", Many}};
constexpr AttributeWord kPCovCell[] = {
    {"p-row", Score}, {"p-col", Score}, {"t-row"}, {"t-col"}, {"value", Score}};

constexpr bool kOpen = true;

constexpr ElementWord kElements[] = {
    {"zelt-ml", Score, kRoot, kRootChildren},
    {"dictionary", Score, {}, kDictionaryChildren},
    {"variable", Score, kVariable, kVariableChildren},
    {"categories", Score, {}, kCategoriesChildren},
    {"category", Score, kCategory},
    {"missing-values", Score, {}, kMissingValuesChildren},
    {"value", Score, kValue},
    {"range", Score, kRange},
    {"var-stats", Score, kVarStats},
    {"format-spec", None, {}, {}, kOpen},

    {"model", Score, {}, kModelChildren},
    {"discriminant-model", Score, {}, {}, kOpen},
    {"regression-model", Score, kRegressionModel, kRegressionModelChildren},
    {"parameter-list", Score, {}, kParameterListChildren},
    {"parameter", Score, kParameter},
    {"factor-list", Score, {}, kPredictors},
    {"covariate-list", Score, {}, kPredictors},
    {"predictor", Score, kPredictor},
    {"p-table", Score, {}, kPTableChildren},
    {"p-cell", Score, kPCell},
    {"pp-matrix", Score, {}, kPPMatrixChildren},
    {"pp-cell", Score, kPPCell},
    {"pcov-matrix", Score, {}, kPCovMatrixChildren},
    {"pcov-cell", Score, kPCovCell},
    {"box-test", None, {}, {}, kOpen},
};

}  // namespace

std::span<const ElementWord> OlderVocabulary() { return kElements; }

}  // namespace MCVelscore_850
