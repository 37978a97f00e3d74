#include "engine/documents/treetext.h"

#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/XMLString.hpp>

#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kListedNames = 3;

using XmlText = std::basic_string<XMLCh>;

xercesc::DOMElement* NextOfTag(xercesc::DOMElement* element, const XmlText& tag)
{
    while (element != nullptr && !xercesc::XMLString::equals(element->getTagName(), tag.c_str())) {
        element = element->getNextElementSibling();
    }
    return element;
}

}  // namespace

std::string AttributeText(const xercesc::DOMElement* element, const std::string& name)
{
    return Utf8FromXml(element->getAttribute(XmlFromUtf8(name).c_str()));
}

void SetAttributeText(xercesc::DOMElement* element, const std::string& name,
                      const std::string& text)
{
    element->setAttribute(XmlFromUtf8(name).c_str(), XmlFromUtf8(text).c_str());
}

xercesc::DOMElement* ChildElement(const xercesc::DOMElement* element, const std::string& tag)
{
    if (element == nullptr) return nullptr;
    return NextOfTag(element->getFirstElementChild(), XmlFromUtf8(tag));
}

std::vector<xercesc::DOMElement*> ChildElements(const xercesc::DOMElement* element,
                                                const std::string& tag)
{
    std::vector<xercesc::DOMElement*> found;
    if (element == nullptr) return found;
    const XmlText name = XmlFromUtf8(tag);
    for (auto* child = NextOfTag(element->getFirstElementChild(), name); child != nullptr;
         child = NextOfTag(child->getNextElementSibling(), name)) {
        found.push_back(child);
    }
    return found;
}

xercesc::DOMElement* ModelElement(const xercesc::DOMElement* root)
{
    return ChildElement(root, PMMLModelTags::XML_ELE_REGRESSMODEL);
}

std::string SelectorOf(const xercesc::DOMElement* model)
{
    std::string selector = AttributeText(model, PMMLModelTags::XML_ATT_MODELALGO);
    if (selector.empty()) selector = AttributeText(model, PMMLModelTags::XML_ATT_RM_MODEL_NAME);
    return selector;
}

double VersionOf(const xercesc::DOMElement* root)
{
    double version = 0.0;
    ReadNumber(AttributeText(root, PMMLModelTags::XML_ATT_VERSION), version);
    return version;
}

bool IsPmmlRoot(const xercesc::DOMElement* root)
{
    return LocalNameOf(Utf8FromXml(root->getTagName())) == PMMLModelTags::XML_ELE_PMML;
}

std::string_view PrefixOf(std::string_view name)
{
    const size_t colon = name.find(':');
    return colon == std::string_view::npos ? std::string_view() : name.substr(0, colon);
}

std::string_view LocalNameOf(std::string_view name)
{
    const size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

std::optional<std::string> NamespaceOf(const xercesc::DOMElement* element,
                                       const std::string& prefix)
{
    const XmlText declaration = XmlFromUtf8("xmlns:" + prefix);
    for (const xercesc::DOMNode* node = element;
         node != nullptr && node->getNodeType() == xercesc::DOMNode::ELEMENT_NODE;
         node = node->getParentNode()) {
        const auto* e = static_cast<const xercesc::DOMElement*>(node);
        if (e->hasAttribute(declaration.c_str())) {
            return Utf8FromXml(e->getAttribute(declaration.c_str()));
        }
    }
    return std::nullopt;
}

std::string Listed(const std::vector<std::string>& names)
{
    std::string text;
    for (size_t i = 0; i < names.size() && i < kListedNames; ++i) {
        if (i > 0) text += ", ";
        text.append("\"").append(names[i]).append("\"");
    }
    if (names.size() > kListedNames) {
        text += " and " + std::to_string(names.size() - kListedNames) + " more";
    }
    return text;
}

}  // namespace MCVelscore_850
