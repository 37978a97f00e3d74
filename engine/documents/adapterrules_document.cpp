#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "engine/documents/adapterrules.h"
#include "engine/documents/treetext.h"
#include "engine/documents/vocabulary.h"
#include "host/documents/documentplace.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"

namespace MCVelscore_850 {

namespace {

const std::string kPmmlNamespace = "http://www.dmg.org/PMML";
const std::string kXmlns = "xmlns";

// Which prefixes stand for PMML, asked for each element that has one.
class Prefixes {
public:
    explicit Prefixes(const xercesc::DOMElement* root)
        : rootPrefix_(PrefixOf(Utf8FromXml(root->getTagName()))),
          // The root's name alone says what it is, unless its namespace says otherwise.
          rootIsPmml_(IsPmmlNamespace(NamespaceOf(root, rootPrefix_).value_or(kPmmlNamespace)))
    {}

    bool ArePmml(const xercesc::DOMElement* element, const std::string& prefix) const
    {
        if (prefix == rootPrefix_) return rootIsPmml_;
        return IsPmmlNamespace(NamespaceOf(element, prefix).value_or(""));
    }

private:
    const std::string rootPrefix_;
    const bool rootIsPmml_;
};

struct Dropped {
    size_t count = 0;
    bool undeclared = false;
    const xercesc::DOMElement* first = nullptr;
    std::vector<std::string> prefixes;
};

// The guard bounds the depth, and with it this recursion.
void DropPrefixes(xercesc::DOMElement* element, const Prefixes& prefixes, Dropped& dropped)
{
    if (xercesc::XMLString::indexOf(element->getTagName(), u':') > 0) {
        const std::string name = Utf8FromXml(element->getTagName());
        const std::string prefix(PrefixOf(name));
        if (prefixes.ArePmml(element, prefix)) {
            const auto local = XmlFromUtf8(LocalNameOf(name));
            element->getOwnerDocument()->renameNode(element, nullptr, local.c_str());
            if (dropped.count++ == 0) {
                dropped.first = element;
                dropped.undeclared = !NamespaceOf(element, prefix);
            }
            auto& known = dropped.prefixes;
            if (std::find(known.begin(), known.end(), prefix) == known.end()) {
                known.push_back(prefix);
            }
        }
    }
    for (auto* child = element->getFirstElementChild(); child != nullptr;
         child = child->getNextElementSibling()) {
        DropPrefixes(child, prefixes, dropped);
    }
}

bool IsNumeral(std::string_view text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// "4.4" of ".../PMML-4_4"; empty for anything else.
std::string VersionInNamespace(std::string_view uri)
{
    if (!uri.starts_with(kPmmlNamespace)) return {};
    uri.remove_prefix(kPmmlNamespace.size());
    if (!uri.starts_with('-')) return {};
    uri.remove_prefix(1);
    const size_t bar = uri.find('_');
    if (bar == std::string_view::npos) return {};
    const std::string_view major = uri.substr(0, bar);
    const std::string_view minor = uri.substr(bar + 1);
    if (!IsNumeral(major) || !IsNumeral(minor)) return {};
    return std::string(major) + "." + std::string(minor);
}

}  // namespace

std::optional<Change> DropNamespacePrefix(xercesc::DOMElement* root)
{
    Dropped dropped;
    DropPrefixes(root, Prefixes(root), dropped);
    if (dropped.count == 0) return std::nullopt;
    return Change{PlaceOf(dropped.first), "prefix " + Listed(dropped.prefixes) + " dropped from " +
                                              std::to_string(dropped.count) +
                                              (dropped.count == 1 ? " element" : " elements") +
                                              (dropped.undeclared ? "; nothing declares it" : "")};
}

std::optional<Change> TakeVersionFromNamespace(xercesc::DOMElement* root)
{
    if (!AttributeText(root, PMMLModelTags::XML_ATT_VERSION).empty()) return std::nullopt;
    const xercesc::DOMNamedNodeMap* attributes = root->getAttributes();
    for (XMLSize_t i = 0; i < attributes->getLength(); ++i) {
        const xercesc::DOMNode* attribute = attributes->item(i);
        const std::string name = Utf8FromXml(attribute->getNodeName());
        if (name != kXmlns && PrefixOf(name) != kXmlns) continue;
        const std::string version = VersionInNamespace(Utf8FromXml(attribute->getNodeValue()));
        if (version.empty()) continue;
        SetAttributeText(root, PMMLModelTags::XML_ATT_VERSION, version);
        return Change{PlaceOf(root), "no version: \"" + version + "\" is taken from the namespace"};
    }
    return std::nullopt;
}

std::optional<Change> ShortenVersion(xercesc::DOMElement* root)
{
    const std::string text = AttributeText(root, PMMLModelTags::XML_ATT_VERSION);
    std::string_view rest = text;
    size_t parts = 0;
    size_t shortLength = 0;
    for (;;) {
        const size_t dot = rest.find('.');
        if (!IsNumeral(rest.substr(0, dot))) return std::nullopt;
        if (++parts == 2 && dot != std::string_view::npos) {
            shortLength = text.size() - rest.size() + dot;
        }
        if (dot == std::string_view::npos) break;
        rest.remove_prefix(dot + 1);
    }
    if (parts < 3) return std::nullopt;
    const std::string version = text.substr(0, shortLength);
    SetAttributeText(root, PMMLModelTags::XML_ATT_VERSION, version);
    return Change{PlaceOf(root), "version \"" + text + "\" is read as \"" + version + "\""};
}

}  // namespace MCVelscore_850
