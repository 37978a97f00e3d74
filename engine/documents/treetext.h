#ifndef VELSCORE_ENGINE_DOCUMENTS_TREETEXT_H
#define VELSCORE_ENGINE_DOCUMENTS_TREETEXT_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <xercesc/util/XercesDefs.hpp>

XERCES_CPP_NAMESPACE_BEGIN
class DOMElement;
XERCES_CPP_NAMESPACE_END

namespace MCVelscore_850 {

/// An attribute's text in UTF-8; empty when it is absent, which readers treat alike.
std::string AttributeText(const xercesc::DOMElement* element, const std::string& name);
void SetAttributeText(xercesc::DOMElement* element, const std::string& name,
                      const std::string& text);

/// The first child of that tag; null when there is none, or no element to ask.
xercesc::DOMElement* ChildElement(const xercesc::DOMElement* element, const std::string& tag);
/// All children of that tag, in document order; none when there is no element to ask.
std::vector<xercesc::DOMElement*> ChildElements(const xercesc::DOMElement* element,
                                                const std::string& tag);

/// The model that the reader reads; null when the document has none.
xercesc::DOMElement* ModelElement(const xercesc::DOMElement* root);
/// The name by which the reader chooses among families: algorithmName, else modelName.
std::string SelectorOf(const xercesc::DOMElement* model);
/// The document's version as a number; 0 when it is none.
double VersionOf(const xercesc::DOMElement* root);
/// True for the root of a PMML document, with or without a prefix.
bool IsPmmlRoot(const xercesc::DOMElement* root);

/// The part of a qualified name before the colon, empty without one, and the part after it.
std::string_view PrefixOf(std::string_view name);
std::string_view LocalNameOf(std::string_view name);

/// The namespace that a prefix stands for at the element; none where nothing declares it.
std::optional<std::string> NamespaceOf(const xercesc::DOMElement* element,
                                       const std::string& prefix);

/// Names for a message: "a", "b", "c" and 4 more.
std::string Listed(const std::vector<std::string>& names);

}  // namespace MCVelscore_850

#endif
