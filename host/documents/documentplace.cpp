#include "host/documents/documentplace.h"

#include <algorithm>
#include <vector>

#include <xercesc/dom/DOM.hpp>

#include "host/documents/veltranscoder.h"

namespace MCVelscore_850 {

namespace {

const XMLCh kPlaceKey[] = {'p', 'l', 'a', 'c', 'e', 0};

// Line and column travel in the pointer itself: 40 and 24 bits, the column cut at its limit.
constexpr unsigned kColumnBits = 24;
constexpr unsigned long kColumnLimit = (1UL << kColumnBits) - 1;

// The position among the siblings of the same tag, counted from 1; 0 when it is the only one.
unsigned SiblingPosition(const xercesc::DOMElement* element)
{
    const auto same = [element](const xercesc::DOMElement* other) {
        return xercesc::XMLString::equals(other->getTagName(), element->getTagName());
    };
    unsigned position = 1;
    for (auto* e = element->getPreviousElementSibling(); e; e = e->getPreviousElementSibling()) {
        if (same(e)) ++position;
    }
    if (position > 1) return position;
    for (auto* e = element->getNextElementSibling(); e; e = e->getNextElementSibling()) {
        if (same(e)) return 1;
    }
    return 0;
}

}  // namespace

void NotePlace(xercesc::DOMElement* element, unsigned long line, unsigned long column)
{
    const unsigned long packed = (line << kColumnBits) | std::min(column, kColumnLimit);
    // The tree keeps a pointer with an element; this one is never followed.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    element->setUserData(kPlaceKey, reinterpret_cast<void*>(packed), nullptr);
}

void CopyPlace(const xercesc::DOMElement* from, xercesc::DOMElement* to)
{
    to->setUserData(kPlaceKey, from->getUserData(kPlaceKey), nullptr);
}

DocumentPlace PlaceOf(const xercesc::DOMElement* element)
{
    DocumentPlace place;
    if (element == nullptr) return place;
    const auto packed = reinterpret_cast<unsigned long>(element->getUserData(kPlaceKey));
    place.line = packed >> kColumnBits;
    place.column = packed & kColumnLimit;
    std::vector<std::string> steps;
    for (const xercesc::DOMNode* node = element;
         node != nullptr && node->getNodeType() == xercesc::DOMNode::ELEMENT_NODE;
         node = node->getParentNode()) {
        const auto* e = static_cast<const xercesc::DOMElement*>(node);
        const unsigned position = SiblingPosition(e);
        std::string step = Utf8FromXml(e->getTagName());
        if (position > 0) step.append("[").append(std::to_string(position)).append("]");
        steps.push_back(std::move(step));
    }
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        if (!place.path.empty()) place.path += '/';
        place.path += *step;
    }
    return place;
}

}  // namespace MCVelscore_850
