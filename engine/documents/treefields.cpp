#include "engine/documents/treefields.h"

#include <bit>
#include <cstdint>

#include <xercesc/dom/DOM.hpp>

#include "engine/documents/treetext.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

using xercesc::DOMElement;
using Tags = PMMLModelTags;

namespace {}  // namespace

std::vector<DOMElement*> DataFields(const DOMElement* root)
{
    return ChildElements(ChildElement(root, Tags::XML_ELE_DATADICTIONARY), "DataField");
}

std::vector<DOMElement*> MiningFields(const DOMElement* root)
{
    return ChildElements(ChildElement(ModelElement(root), Tags::XML_ELE_MININGSCHEMA),
                         Tags::XML_ELE_MININGFIELD);
}

std::vector<DOMElement*> Predictors(const DOMElement* root, const std::string& list)
{
    return ChildElements(ChildElement(ModelElement(root), list), Tags::XML_ELE_PREDICTOR);
}

std::optional<FamilyCode> FamilyOfModel(const DOMElement* root, const DOMElement* model)
{
    return FindFamily(AttributeText(model, Tags::XML_ATT_RM_MODEL_TYPE), VersionOf(root),
                      SelectorOf(model));
}

bool TakesContrasts(const DOMElement* root)
{
    const DOMElement* model = ModelElement(root);
    if (model == nullptr) return false;
    const auto family = FamilyOfModel(root, model);
    return family && FamilyOf(*family).takesContrasts;
}

DOMElement* TargetDataField(const DOMElement* root)
{
    const DOMElement* model = ModelElement(root);
    if (model == nullptr) return nullptr;
    std::string target = AttributeText(model, Tags::XML_ATT_RM_TARGET_VAR);
    for (const DOMElement* field : MiningFields(root)) {
        const std::string usage = AttributeText(field, Tags::XML_ATT_MININGFIELD_USAGETYPE);
        if (usage != Tags::XML_ATT_MF_FUT_TARGET && usage != Tags::XML_ATT_MF_FUT_PREDICTED) {
            continue;
        }
        target = AttributeText(field, Tags::XML_ATT_MININGFIELD_NAME);
        break;
    }
    for (DOMElement* field : DataFields(root)) {
        if (AttributeText(field, Tags::XML_ATT_NAME) == target) return field;
    }
    return nullptr;
}

std::vector<DOMElement*> ValidValues(const DOMElement* field)
{
    std::vector<DOMElement*> valid;
    for (DOMElement* value : ChildElements(field, Tags::XML_ELE_VALUE)) {
        const std::string property = AttributeText(value, "property");
        if (property.empty() || property == "valid") valid.push_back(value);
    }
    return valid;
}

std::string CategoryKey(const DOMElement* field, const std::string& text)
{
    return CategoryKey(AttributeText(field, "dataType"), text);
}

std::string CategoryKey(const std::string& dataType, const std::string& text)
{
    double number = 0.0;
    if (!IsNumericType(dataType) || ReadNumber(text, number) != NumberText::Number) return text;
    // its bits, since no shorter text tells all numbers apart; adding 0 makes -0 the plain one
    return std::to_string(std::bit_cast<uint64_t>(number + 0.0));
}

bool IsNumericType(const std::string& dataType)
{
    return dataType == "integer" || dataType == "float" || dataType == "double";
}

}  // namespace MCVelscore_850
