#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "engine/documents/adapterrules.h"
#include "engine/documents/treetext.h"
#include "host/documentplace.h"
#include "host/pmmlmodeltags.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

// The selectors by which the reader tells the families of a general or generalized linear model.
const std::vector<std::reference_wrapper<const std::string>> kLinearSelectors{
    Tags::XML_VAL_MN_GZLM,   Tags::XML_VAL_MN_GEE,      Tags::XML_VAL_MN_GLMM,
    Tags::XML_VAL_MN_GLIN,   Tags::XML_VAL_MN_MIXEDLIN, Tags::XML_VAL_MN_ALM,
    Tags::XML_VAL_MN_COXREG, Tags::XML_VAL_MN_CSCOXREG};

}  // namespace

std::optional<Change> SelectGeneralizedLinear(xercesc::DOMElement* root)
{
    xercesc::DOMElement* model = ModelElement(root);
    if (model == nullptr ||
        AttributeText(model, Tags::XML_ATT_RM_MODEL_TYPE) != Tags::XML_VAL_MT_GDLIN) {
        return std::nullopt;
    }
    const std::string selector = SelectorOf(model);
    if (std::any_of(kLinearSelectors.begin(), kLinearSelectors.end(),
                    [&](const std::string& known) { return known == selector; })) {
        return std::nullopt;
    }
    const std::string before = AttributeText(model, Tags::XML_ATT_MODELALGO);
    SetAttributeText(model, Tags::XML_ATT_MODELALGO, Tags::XML_VAL_MN_GZLM);
    return Change{PlaceOf(model), "generalizedLinear with algorithmName \"" + before +
                                      "\" is read as algorithmName \"" + Tags::XML_VAL_MN_GZLM +
                                      "\""};
}

}  // namespace MCVelscore_850
