#include "host/model/modelfamilies.h"

#include <algorithm>
#include <stdexcept>

#include "host/documents/pmmlmodeltags.h"
#include "host/model/modeldescription.h"
#include "host/model/scoreresult.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;
using Result = ScoreResult;

// In the order of the members: name, class, code, results, results of a classified target, whether
// it takes contrasts, whether it takes MV_STATUS_ONLY.
constexpr ModelFamily kFamilies[] = {
    {"multinomial logistic regression", "MLRModel", kMultinomial, Result::MLR_RESULT,
     Result::MLR_RESULT, false, true},
    {"multinomial logistic regression", "MLRModel", kMultinomialGeneralized, Result::MLR_RESULT,
     Result::MLR_RESULT, false, true},
    {"normalized regression", "NormalizedModel", kNormalized, Result::MLR_RESULT,
     Result::MLR_RESULT, false, true},
    {"general linear model", "GLRModel", kGeneralLinear, Result::LR_RESULT, Result::LR_RESULT,
     false, true},
    {"linear regression", "LRModel", kLinear, Result::LR_RESULT, Result::LR_RESULT, false, true},
    {"conditional logistic regression", "CLRModel", kConditional, Result::CLR_RESULT,
     Result::CLR_RESULT, false, false},
    {"binary logistic regression", "BLRModel", kBinary, Result::MLR_RESULT, Result::MLR_RESULT,
     true, true},
    {"ordinal regression", "ORModel", kOrdinal, Result::MLR_RESULT, Result::MLR_RESULT, false,
     true},
    {"generalized linear model", "GZLRModel", kGeneralizedLinear, Result::LR_RESULT,
     Result::MLR_RESULT, false, true},
    {"ordinal regression (generalized)", "OGZLRModel", kOrdinalGeneralized, Result::MLR_RESULT,
     Result::MLR_RESULT, false, true},
    {"Cox regression", "CoxRegModel", kCox, Result::COXREG_RESULT, Result::COXREG_RESULT, true,
     true},
    {"Cox regression", "CoxRegModel", kCoxComplexSamples, Result::COXREG_RESULT,
     Result::COXREG_RESULT, true, true},
};

const std::vector<FamilySelection>& Selections()
{
    using Words = FamilySelection::Words;
    static const Words kMultinomialType{Tags::XML_VAL_MT_MLR};
    static const Words kRegressionType{Tags::XML_VAL_MT_REGRESS};
    static const Words kGeneralTypes{Tags::XML_VAL_MT_GLIN, Tags::XML_VAL_MT_GDLIN};
    static const Words kCoxType{Tags::XML_VAL_MT_COXRGN};
    static const Words kOrdinalType{Tags::XML_VAL_MT_ORDINAL};
    static const Words kGeneralized{Tags::XML_VAL_MN_GZLM, Tags::XML_VAL_MN_GEE,
                                    Tags::XML_VAL_MN_GLMM};
    static const Words kGeneralLinearModels{Tags::XML_VAL_MN_GLIN, Tags::XML_VAL_MN_MIXEDLIN,
                                            Tags::XML_VAL_MN_ALM};
    using Selection = FamilySelection;
    static const std::vector<FamilySelection> kSelections{
        {kMultinomialType, Selection::BelowSelectors, {}, kMultinomial},
        {kMultinomialType, Selection::FromSelectors, {Tags::XML_VAL_MT_XCONLOG}, kBinary},
        {kMultinomialType, Selection::FromSelectors, {Tags::XML_VAL_MT_COND}, kConditional},
        {kMultinomialType, Selection::FromSelectors, kGeneralized, kMultinomialGeneralized},
        {kMultinomialType, Selection::FromSelectors, {Tags::XML_VAL_MN_NORMALIZED}, kNormalized},
        {kMultinomialType, Selection::FromSelectors, {}, kMultinomial},
        {kRegressionType, Selection::AnyVersion, {}, kLinear},
        {kGeneralTypes, Selection::BelowSelectors, {}, kGeneralLinear},
        {kGeneralTypes, Selection::FromSelectors, kGeneralized, kGeneralizedLinear},
        {kGeneralTypes, Selection::FromSelectors, kGeneralLinearModels, kGeneralLinear},
        {kGeneralTypes, Selection::FromSelectors, {Tags::XML_VAL_MN_COXREG}, kCox},
        {kGeneralTypes, Selection::FromSelectors, {Tags::XML_VAL_MN_CSCOXREG}, kCoxComplexSamples},
        {kGeneralTypes, Selection::FromSelectors, {}, kGeneralLinear},
        {kCoxType, Selection::AnyVersion, {}, kCox},
        {kOrdinalType, Selection::AnyVersion, {Tags::XML_VAL_MN_ORDINAL}, kOrdinal},
        {kOrdinalType, Selection::AnyVersion, {Tags::XML_VAL_MN_GZLM}, kOrdinalGeneralized},
        {kOrdinalType, Selection::AnyVersion, {}, kOrdinal},
    };
    return kSelections;
}

bool Among(const FamilySelection::Words& words, const std::string& text)
{
    return std::any_of(words.begin(), words.end(),
                       [&](const std::string& word) { return word == text; });
}

bool IsOfVersion(const FamilySelection& selection, double version)
{
    switch (selection.versions) {
        case FamilySelection::BelowSelectors: return version < kSelectorVersion;
        case FamilySelection::FromSelectors: return version >= kSelectorVersion;
        case FamilySelection::AnyVersion: break;
    }
    return true;
}

}  // namespace

std::span<const ModelFamily> ModelFamilies() { return kFamilies; }

const ModelFamily& FamilyOf(FamilyCode code)
{
    for (const ModelFamily& family : kFamilies) {
        if (family.code == code) return family;
    }
    throw std::logic_error("a family without a row");
}

void DescribeFamily(FamilyCode code, ModelDescription& description)
{
    const ModelFamily& family = FamilyOf(code);
    description.family = family.name;
    description.className = family.className;
    description.resultType =
        description.targetCategories.empty() ? family.resultType : family.classifyingResultType;
    description.takesStatusOnly = family.takesStatusOnly;
}

std::span<const FamilySelection> FamilySelections() { return Selections(); }

std::optional<FamilyCode> FindFamily(const std::string& modelType, double version,
                                     const std::string& selector)
{
    for (const FamilySelection& selection : Selections()) {
        if (Among(selection.modelTypes, modelType) && IsOfVersion(selection, version) &&
            (selection.selectors.empty() || Among(selection.selectors, selector))) {
            return selection.code;
        }
    }
    return std::nullopt;
}

FamilyCode FamilyUnderLink(FamilyCode code, const std::string& distribution,
                           const std::string& link)
{
    const bool generalized = code == kMultinomialGeneralized &&
                             distribution == Tags::XML_VAL_RM_EXT_VALUE_DIST_BINOMIAL &&
                             link != Tags::XML_VAL_LINKFUNCTION_LOGIT;
    return generalized ? kGeneralizedLinear : code;
}

bool IsSelector(const std::string& modelType, const std::string& word)
{
    return std::any_of(Selections().begin(), Selections().end(), [&](const auto& selection) {
        return Among(selection.modelTypes, modelType) && Among(selection.selectors, word);
    });
}

}  // namespace MCVelscore_850
