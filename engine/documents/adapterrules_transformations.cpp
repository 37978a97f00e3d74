#include <set>
#include <string>
#include <utility>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "engine/documents/adapterrules.h"
#include "engine/documents/treetext.h"
#include "host/documents/documentplace.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;
using xercesc::DOMElement;

// A field or function by its kind and name: the two kinds don't get in each other's way.
using Definition = std::pair<std::string, std::string>;

Definition DefinitionOf(const DOMElement* element)
{
    return {Utf8FromXml(element->getTagName()), AttributeText(element, Tags::XML_ATT_NAME)};
}

bool IsDefinition(const DOMElement* element)
{
    const std::string tag = Utf8FromXml(element->getTagName());
    return tag == "DerivedField" || tag == "DefineFunction";
}

}  // namespace

std::optional<Change> MergeTransformations(DOMElement* root)
{
    DOMElement* global = ChildElement(root, Tags::XML_ELE_TRANSFORMATION);
    DOMElement* local = ChildElement(ModelElement(root), Tags::XML_ELE_LOCALTRANSFORMATIONS);
    if (global == nullptr || local == nullptr) return std::nullopt;
    std::set<Definition> known;
    for (const auto* child = local->getFirstElementChild(); child != nullptr;
         child = child->getNextElementSibling()) {
        known.insert(DefinitionOf(child));
    }
    std::vector<DOMElement*> moved;
    for (auto* child = global->getFirstElementChild(); child != nullptr;
         child = child->getNextElementSibling()) {
        if (IsDefinition(child) && !known.contains(DefinitionOf(child))) moved.push_back(child);
    }
    if (moved.empty()) return std::nullopt;
    const DocumentPlace place = PlaceOf(local);
    xercesc::DOMNode* first = local->getFirstChild();
    for (DOMElement* child : moved) local->insertBefore(child, first);
    global->getParentNode()->removeChild(global)->release();
    std::vector<std::string> names;
    names.reserve(moved.size());
    for (const DOMElement* child : moved) names.push_back(DefinitionOf(child).second);
    return Change{place,
                  "TransformationDictionary is merged into LocalTransformations: " + Listed(names)};
}

}  // namespace MCVelscore_850
