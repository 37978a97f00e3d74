#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <xercesc/dom/DOM.hpp>

#include "engine/documents/adapterrules.h"
#include "engine/documents/treefields.h"
#include "engine/documents/treetext.h"
#include "host/documents/documentplace.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/model/modelfamilies.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

// The model element of a multinomial model with selectors; null for any other.
xercesc::DOMElement* MultinomialModel(xercesc::DOMElement* root)
{
    xercesc::DOMElement* model = ModelElement(root);
    if (model == nullptr || VersionOf(root) < kSelectorVersion) return nullptr;
    const bool multinomial =
        AttributeText(model, Tags::XML_ATT_RM_MODEL_TYPE) == Tags::XML_VAL_MT_MLR;
    return multinomial ? model : nullptr;
}

// A predictor with a matrix in one of the forms that the reader of a binary model takes.
bool HasContrasts(const xercesc::DOMElement* predictor)
{
    const auto* child = predictor->getFirstElementChild();
    if (child == nullptr) return false;
    if (!AttributeText(predictor, Tags::XML_ELE_GRM_CONTRASTMATRIXTYPE).empty()) return true;
    if (ChildElement(predictor, Tags::XML_ELE_XBASIS) == child) return true;
    return ChildElement(predictor, Tags::XML_ELE_EXTENSION) == child &&
           AttributeText(child, Tags::XML_ATT_EXT_NAME) == Tags::XML_EXT_NAME_COXREG_CONTRASTMATRIX;
}

// The binary model wants contrasts of every factor. Where some have them alone, all in the
// published form, the document is left to the rule that makes covariates of them.
bool AreOfSome(const std::vector<xercesc::DOMElement*>& factors)
{
    return !std::all_of(factors.begin(), factors.end(), HasContrasts) &&
           std::none_of(factors.begin(), factors.end(), [](const auto* factor) {
               return HasContrasts(factor) && ChildElement(factor, Tags::XML_ELE_MATRIX) == nullptr;
           });
}

}  // namespace

std::optional<Change> SelectGeneralizedLinear(xercesc::DOMElement* root)
{
    xercesc::DOMElement* model = ModelElement(root);
    if (model == nullptr ||
        AttributeText(model, Tags::XML_ATT_RM_MODEL_TYPE) != Tags::XML_VAL_MT_GDLIN) {
        return std::nullopt;
    }
    const std::string selector = SelectorOf(model);
    if (IsSelector(Tags::XML_VAL_MT_GDLIN, selector)) return std::nullopt;
    const std::string before = AttributeText(model, Tags::XML_ATT_MODELALGO);
    SetAttributeText(model, Tags::XML_ATT_MODELALGO, Tags::XML_VAL_MN_GZLM);
    return Change{PlaceOf(model), "generalizedLinear with algorithmName \"" + before +
                                      "\" is read as algorithmName \"" + Tags::XML_VAL_MN_GZLM +
                                      "\""};
}

std::optional<Change> TakeLinkFromCumulativeLink(xercesc::DOMElement* root)
{
    xercesc::DOMElement* model = ModelElement(root);
    if (model == nullptr ||
        AttributeText(model, Tags::XML_ATT_RM_MODEL_TYPE) != Tags::XML_VAL_MT_ORDINAL ||
        SelectorOf(model) == Tags::XML_VAL_MN_GZLM) {  // that family reads cumulativeLink
        return std::nullopt;
    }
    const std::string link = AttributeText(model, Tags::XML_ATT_RM_NAME_CUMULATIVELINK);
    if (link.empty() || !AttributeText(model, Tags::XML_ATT_LINKFUNCTION).empty()) {
        return std::nullopt;
    }
    SetAttributeText(model, Tags::XML_ATT_LINKFUNCTION, link);
    return Change{PlaceOf(model), "cumulativeLink \"" + link + "\" is read as linkFunction"};
}

std::optional<Change> ClassifyCategoricalTarget(xercesc::DOMElement* root)
{
    xercesc::DOMElement* model = ModelElement(root);
    if (model == nullptr ||
        AttributeText(model, Tags::XML_ATT_RM_MODEL_TYPE) != Tags::XML_VAL_MT_GDLIN ||
        FindFamily(Tags::XML_VAL_MT_GDLIN, kSelectorVersion, SelectorOf(model)) !=
            kGeneralizedLinear ||
        AttributeText(model, Tags::XML_VAL_RM_EXT_NAME_DISTRIBUTION) !=
            Tags::XML_VAL_RM_EXT_VALUE_DIST_BINOMIAL) {
        return std::nullopt;
    }
    const std::string function = AttributeText(model, Tags::XML_ATT_RM_FUNC_NAME);
    const xercesc::DOMElement* target = TargetDataField(root);
    if (function == Tags::XML_VAL_RM_FUNC_NAME_C || ValidValues(target).size() != 2 ||
        AttributeText(target, Tags::XML_ATT_DATAFIELD_OPTYPE) == Tags::XML_VAL_OT_CONTINUOUS) {
        return std::nullopt;
    }
    SetAttributeText(model, Tags::XML_ATT_RM_FUNC_NAME, Tags::XML_VAL_RM_FUNC_NAME_C);
    return Change{PlaceOf(model), "functionName \"" + function +
                                      "\" of a binomial model with a target of two categories is "
                                      "read as \"" +
                                      Tags::XML_VAL_RM_FUNC_NAME_C + "\""};
}

std::optional<Change> NameCategoryOfBetas(xercesc::DOMElement* root)
{
    const xercesc::DOMElement* model = ModelElement(root);
    if (model == nullptr) return std::nullopt;
    const std::string type = AttributeText(model, Tags::XML_ATT_RM_MODEL_TYPE);
    const bool classifies =
        AttributeText(model, Tags::XML_ATT_RM_FUNC_NAME) == Tags::XML_VAL_RM_FUNC_NAME_C;
    if (type != Tags::XML_VAL_MT_MLR && (type != Tags::XML_VAL_MT_GDLIN || !classifies)) {
        return std::nullopt;
    }
    const xercesc::DOMElement* target = TargetDataField(root);
    const auto values = ValidValues(target);
    const auto cells =
        ChildElements(ChildElement(model, Tags::XML_ELE_PARAM_MATRIX), Tags::XML_ELE_PCELL);
    const auto namesNone = [](const xercesc::DOMElement* cell) {
        return AttributeText(cell, Tags::XML_ATT_PC_TARGET_CAT).empty();
    };
    if (values.size() != 2 || cells.empty() ||
        !std::all_of(cells.begin(), cells.end(), namesNone)) {
        return std::nullopt;
    }
    const std::string reference = AttributeText(model, Tags::XML_ATT_TARGETREFCATEGORY);
    for (size_t i = 0; i < 2; ++i) {
        if (CategoryKey(target, AttributeText(values[i], Tags::XML_ATT_VALUE)) !=
            CategoryKey(target, reference)) {
            continue;
        }
        const std::string other = AttributeText(values[1 - i], Tags::XML_ATT_VALUE);
        for (auto* cell : cells) SetAttributeText(cell, Tags::XML_ATT_PC_TARGET_CAT, other);
        return Change{PlaceOf(cells.front()),
                      fmt::format("the cells name no category: the betas are those of \"{}\", the "
                                  "reference being \"{}\"",
                                  other, reference)};
    }
    return std::nullopt;
}

std::optional<Change> SelectContrastLogistic(xercesc::DOMElement* root)
{
    xercesc::DOMElement* model = MultinomialModel(root);
    if (model == nullptr || IsSelector(Tags::XML_VAL_MT_MLR, SelectorOf(model)))
        return std::nullopt;
    const auto factors = Predictors(root, Tags::XML_ELE_FAC_LIST);
    if (std::none_of(factors.begin(), factors.end(), HasContrasts) || AreOfSome(factors) ||
        ValidValues(TargetDataField(root)).size() != 2) {
        return std::nullopt;
    }
    SetAttributeText(model, Tags::XML_ATT_MODELALGO, Tags::XML_VAL_MT_XCONLOG);
    return Change{PlaceOf(model),
                  "multinomialLogistic of two categories with contrast matrices is "
                  "read as algorithmName \"" +
                      Tags::XML_VAL_MT_XCONLOG + "\""};
}

std::optional<Change> DeclareBetaCategoryLast(xercesc::DOMElement* root)
{
    const xercesc::DOMElement* model = MultinomialModel(root);
    if (model == nullptr || SelectorOf(model) != Tags::XML_VAL_MT_XCONLOG) return std::nullopt;
    const auto cells =
        ChildElements(ChildElement(model, Tags::XML_ELE_PARAM_MATRIX), Tags::XML_ELE_PCELL);
    xercesc::DOMElement* field = TargetDataField(root);
    const auto values = ValidValues(field);
    if (cells.empty() || values.size() != 2) return std::nullopt;
    const std::string category = AttributeText(cells.front(), Tags::XML_ATT_PC_TARGET_CAT);
    if (CategoryKey(field, AttributeText(values.front(), Tags::XML_ATT_VALUE)) !=
        CategoryKey(field, category)) {
        return std::nullopt;
    }
    const DocumentPlace place = PlaceOf(field);
    field->insertBefore(values.front(), values.back()->getNextSibling());
    return Change{place,
                  "the target's category \"" + category +
                      "\", which has the betas, is declared last; of two equal probabilities the "
                      "other category's is now predicted",
                  true};
}

std::optional<Change> DropCovariancesWithoutCategories(xercesc::DOMElement* root)
{
    const xercesc::DOMElement* model = ModelElement(root);
    if (model == nullptr ||
        AttributeText(model, Tags::XML_ATT_RM_MODEL_TYPE) != Tags::XML_VAL_MT_MLR) {
        return std::nullopt;
    }
    // With a selector it is another family, which takes such covariances.
    if (VersionOf(root) >= kSelectorVersion &&
        IsSelector(Tags::XML_VAL_MT_MLR, SelectorOf(model))) {
        return std::nullopt;
    }
    xercesc::DOMElement* matrix = ChildElement(model, Tags::XML_ELE_PCOV_MATRIX);
    const auto cells = ChildElements(matrix, Tags::XML_ELE_PCOV_CELL);
    const auto namesNone = [](const xercesc::DOMElement* cell) {
        return AttributeText(cell, Tags::XML_ATT_PCC_TROW).empty() &&
               AttributeText(cell, Tags::XML_ATT_PCC_TCol).empty();
    };
    if (cells.empty() || !std::all_of(cells.begin(), cells.end(), namesNone)) return std::nullopt;
    const DocumentPlace place = PlaceOf(matrix);
    matrix->getParentNode()->removeChild(matrix)->release();
    return Change{place, "the covariances name no target categories and are dropped"};
}

}  // namespace MCVelscore_850
