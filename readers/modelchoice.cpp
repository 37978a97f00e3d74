#include "readers/modelchoice.h"

#include <algorithm>
#include <vector>

#include "host/documents/pmmlmodeltags.h"
#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "models/blrmodel.h"
#include "models/clrmodel.h"
#include "models/coxregrmodel.h"
#include "models/glrmodel.h"
#include "models/gzlrmodel.h"
#include "models/lrmodel.h"
#include "models/mlrmodel.h"
#include "models/ogzlrmodel.h"
#include "models/ormodel.h"
#include "readers/codes.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

constexpr double kSelectorVersion = 3.1;  // from here on the selector is looked at

// The algorithm name, else the model name, as written.
std::string SelectorName(const ModelHead& head)
{
    const std::string algorithm = head.attribute(Tags::XML_ATT_MODELALGO);
    return algorithm.empty() ? head.attribute(Tags::XML_ATT_RM_MODEL_NAME) : algorithm;
}

// A multinomial model with a generalized selector. A binomial logit model stays with the
// multinomial class, and only another link goes to the generalized one, on purpose.
ModelChoice GeneralizedMultinomial(const ModelHead& head)
{
    if (head.attribute(Tags::XML_VAL_RM_EXT_NAME_DISTRIBUTION) ==
            Tags::XML_VAL_RM_EXT_VALUE_DIST_BINOMIAL &&
        head.attribute(Tags::XML_ATT_LINKFUNCTION) != Tags::XML_VAL_LINKFUNCTION_LOGIT) {
        return {kGeneralizedLinear, false};
    }
    return {kMultinomialGeneralized, true};
}

ModelChoice GeneralizedLinear(const ModelHead& head)
{
    const bool classifies =
        head.attribute(Tags::XML_ATT_RM_FUNC_NAME) == Tags::XML_VAL_RM_FUNC_NAME_C;
    return {kGeneralizedLinear, !classifies};
}

template <FamilyCode code>
ModelChoice Always(const ModelHead&)
{
    return {code, true};
}

using Words = std::vector<std::reference_wrapper<const std::string>>;

// One rule of the choice. The first row whose model type, version and selector all match decides;
// a row without selectors takes any.
struct ChoiceRow {
    Words modelTypes;
    enum { AnyVersion, BelowSelectors, FromSelectors } version;
    Words selectors;
    ModelChoice (*choose)(const ModelHead&);
};

const std::vector<ChoiceRow>& ChoiceRows()
{
    static const Words kMultinomialType{Tags::XML_VAL_MT_MLR};
    static const Words kRegressionType{Tags::XML_VAL_MT_REGRESS};
    static const Words kGeneralTypes{Tags::XML_VAL_MT_GLIN, Tags::XML_VAL_MT_GDLIN};
    static const Words kCoxType{Tags::XML_VAL_MT_COXRGN};
    static const Words kOrdinalType{Tags::XML_VAL_MT_ORDINAL};
    static const Words kGeneralized{Tags::XML_VAL_MN_GZLM, Tags::XML_VAL_MN_GEE,
                                    Tags::XML_VAL_MN_GLMM};
    static const Words kGeneralLinearModels{Tags::XML_VAL_MN_GLIN, Tags::XML_VAL_MN_MIXEDLIN,
                                            Tags::XML_VAL_MN_ALM};
    static const std::vector<ChoiceRow> kRows{
        {kMultinomialType, ChoiceRow::BelowSelectors, {}, Always<kMultinomial>},
        {kMultinomialType, ChoiceRow::FromSelectors, {Tags::XML_VAL_MT_XCONLOG}, Always<kBinary>},
        {kMultinomialType, ChoiceRow::FromSelectors, {Tags::XML_VAL_MT_COND}, Always<kConditional>},
        {kMultinomialType, ChoiceRow::FromSelectors, kGeneralized, GeneralizedMultinomial},
        {kMultinomialType, ChoiceRow::FromSelectors, {}, Always<kMultinomial>},
        {kRegressionType, ChoiceRow::AnyVersion, {}, Always<kLinear>},
        {kGeneralTypes, ChoiceRow::BelowSelectors, {}, Always<kGeneralLinear>},
        {kGeneralTypes, ChoiceRow::FromSelectors, kGeneralized, GeneralizedLinear},
        {kGeneralTypes, ChoiceRow::FromSelectors, kGeneralLinearModels, Always<kGeneralLinear>},
        {kGeneralTypes, ChoiceRow::FromSelectors, {Tags::XML_VAL_MN_COXREG}, Always<kCox>},
        {kGeneralTypes,
         ChoiceRow::FromSelectors,
         {Tags::XML_VAL_MN_CSCOXREG},
         Always<kCoxComplexSamples>},
        {kGeneralTypes, ChoiceRow::FromSelectors, {}, Always<kGeneralLinear>},
        {kCoxType, ChoiceRow::AnyVersion, {}, Always<kCox>},
        {kOrdinalType, ChoiceRow::AnyVersion, {Tags::XML_VAL_MN_ORDINAL}, Always<kOrdinal>},
        {kOrdinalType, ChoiceRow::AnyVersion, {Tags::XML_VAL_MN_GZLM}, Always<kOrdinalGeneralized>},
        {kOrdinalType, ChoiceRow::AnyVersion, {}, Always<kOrdinal>},
    };
    return kRows;
}

bool Among(const Words& words, const std::string& text)
{
    return std::any_of(words.begin(), words.end(),
                       [&](const std::string& word) { return word == text; });
}

bool VersionMatches(const ChoiceRow& row, double version)
{
    switch (row.version) {
        case ChoiceRow::BelowSelectors: return version < kSelectorVersion;
        case ChoiceRow::FromSelectors: return version >= kSelectorVersion;
        case ChoiceRow::AnyVersion: break;
    }
    return true;
}

template <class Model>
std::unique_ptr<RegressionModel> Make()
{
    return std::make_unique<Model>();
}

template <ScoreModel::ModelType type>
std::unique_ptr<RegressionModel> MakeCox()
{
    return std::make_unique<CoxRegModel>(type);
}

// The class of each family.
struct ClassRow {
    FamilyCode code;
    std::unique_ptr<RegressionModel> (*make)();
};

constexpr ClassRow kClasses[] = {
    {kMultinomial, Make<MLRModel>},
    {kMultinomialGeneralized, Make<MLRModel>},
    {kGeneralLinear, Make<GLRModel>},
    {kLinear, Make<LRModel>},
    {kConditional, Make<CLRModel>},
    {kBinary, Make<BLRModel>},
    {kOrdinal, Make<ORModel>},
    {kGeneralizedLinear, Make<GZLRModel>},
    {kOrdinalGeneralized, Make<OGZLRModel>},
    {kCox, MakeCox<ScoreModel::TYPE_COXREG>},
    {kCoxComplexSamples, MakeCox<ScoreModel::TYPE_CSCOXREG>},
};

[[noreturn]] void RefuseModelType(const std::string& modelType)
{
    Refuse(kUnexpectedWord, modelType.c_str(), Tags::XML_ATT_RM_MODEL_TYPE.c_str(),
           Tags::XML_ELE_REGRESSMODEL.c_str());
}

}  // namespace

ModelChoice ChooseFamily(const ModelHead& head)
{
    const std::string selector = SelectorName(head);
    for (const ChoiceRow& row : ChoiceRows()) {
        if (Among(row.modelTypes, head.modelType) && VersionMatches(row, head.version) &&
            (row.selectors.empty() || Among(row.selectors, selector))) {
            return row.choose(head);
        }
    }
    RefuseModelType(head.modelType);
}

std::unique_ptr<RegressionModel> MakeModel(FamilyCode code, const std::string& modelType)
{
    for (const ClassRow& row : kClasses) {
        if (row.code == code) return row.make();
    }
    RefuseModelType(modelType);
}

}  // namespace MCVelscore_850
