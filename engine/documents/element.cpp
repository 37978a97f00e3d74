#include "engine/documents/element.h"

#include <algorithm>
#include <array>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/util/XMLString.hpp>

#include "host/documents/veltranscoder.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using XmlText = std::basic_string<XMLCh>;

// A name as the tree's library wants it. Those of the vocabulary are short ASCII, which costs no
// allocation.
class XmlName {
public:
    explicit XmlName(std::string_view name)
    {
        const bool isPlain =
            name.size() < room_.size() && std::all_of(name.begin(), name.end(), [](char c) {
                return static_cast<unsigned char>(c) < 0x80;
            });
        if (isPlain) {
            *std::copy(name.begin(), name.end(), room_.begin()) = 0;
        } else {
            text_ = XmlFromUtf8(name);
            isLong_ = true;
        }
    }
    const XMLCh* Get() const { return isLong_ ? text_.c_str() : room_.data(); }

private:
    std::array<XMLCh, 48> room_{};
    XmlText text_;
    bool isLong_ = false;
};

Element::RawText RawTextOf(const XMLCh* text)
{
    return text == nullptr ? Element::RawText() : Element::RawText(text);
}

// Asking the text itself takes half of the time: the attribute goes through dynamic casts.
const XMLCh* ValueOf(const xercesc::DOMNode* attribute)
{
    const xercesc::DOMNode* text = attribute->getFirstChild();
    const bool isWhole = text != nullptr && text->getNextSibling() == nullptr &&
                         text->getNodeType() == xercesc::DOMNode::TEXT_NODE;
    return isWhole ? text->getNodeValue() : attribute->getNodeValue();
}

// A tag is compared where it lies: names of the vocabulary are ASCII.
bool Equals(const XMLCh* text, std::string_view name)
{
    for (const char c : name) {
        if (static_cast<unsigned char>(c) >= 0x80) return XmlFromUtf8(name) == text;
    }
    for (const char c : name) {
        if (*text != static_cast<XMLCh>(c)) return false;
        ++text;
    }
    return *text == 0;
}

xercesc::DOMNode* NextNode(const xercesc::DOMNode& node) { return node.getNextSibling(); }
xercesc::DOMNode* PreviousNode(const xercesc::DOMNode& node) { return node.getPreviousSibling(); }

// The node, or the first element from there on. The library's own walks over elements ask each node
// by several dynamic casts what it is.
template <class Step>
xercesc::DOMElement* FirstElement(xercesc::DOMNode* node, Step step)
{
    while (node != nullptr && node->getNodeType() != xercesc::DOMNode::ELEMENT_NODE) {
        node = step(*node);
    }
    return static_cast<xercesc::DOMElement*>(node);
}

}  // namespace

std::string Element::Tag() const
{
    return dom_ == nullptr ? std::string() : Utf8FromXml(dom_->getTagName());
}

bool Element::Is(std::string_view tag) const
{
    return dom_ != nullptr && Equals(dom_->getTagName(), tag);
}

bool Element::HasPrefix() const
{
    return dom_ != nullptr && xercesc::XMLString::indexOf(dom_->getTagName(), u':') > 0;
}

bool Element::Has(std::string_view attribute) const
{
    return dom_ != nullptr && dom_->hasAttribute(XmlName(attribute).Get());
}

std::string Element::Text(std::string_view attribute) const
{
    return dom_ == nullptr ? std::string()
                           : Utf8FromXml(dom_->getAttribute(XmlName(attribute).Get()));
}

Element::RawText Element::Raw(std::string_view attribute) const
{
    return dom_ == nullptr ? RawText() : RawTextOf(dom_->getAttribute(XmlName(attribute).Get()));
}

std::optional<double> Element::Number(std::string_view attribute) const
{
    double number = 0.0;
    if (ReadNumber(Text(attribute), number) != NumberText::Number) return std::nullopt;
    return number;
}

std::string Element::Content() const
{
    return dom_ == nullptr ? std::string() : Utf8FromXml(dom_->getTextContent());
}

size_t Element::AttributeCount() const
{
    return dom_ == nullptr ? 0 : dom_->getAttributes()->getLength();
}

std::pair<Element::RawText, Element::RawText> Element::AttributeAt(size_t index) const
{
    const xercesc::DOMNode* attribute = dom_->getAttributes()->item(index);
    return {RawTextOf(attribute->getNodeName()), RawTextOf(ValueOf(attribute))};
}

Element Element::Parent() const
{
    if (dom_ == nullptr) return {};
    xercesc::DOMNode* parent = dom_->getParentNode();
    const bool isElement =
        parent != nullptr && parent->getNodeType() == xercesc::DOMNode::ELEMENT_NODE;
    return isElement ? Element(static_cast<xercesc::DOMElement*>(parent)) : Element();
}

Element Element::NextSibling() const
{
    return dom_ == nullptr ? Element() : Element(FirstElement(dom_->getNextSibling(), &NextNode));
}

Element Element::PreviousSibling() const
{
    return dom_ == nullptr ? Element()
                           : Element(FirstElement(dom_->getPreviousSibling(), &PreviousNode));
}

Element Element::Child(std::string_view tag) const { return Children(tag).First(); }

ElementRange Element::Children() const { return Children({}); }

ElementRange Element::Children(std::string_view tag) const
{
    if (dom_ == nullptr) return {Element(), tag};
    return {Element(FirstElement(dom_->getFirstChild(), &NextNode)), tag};
}

DocumentPlace Element::Place() const { return PlaceOf(dom_); }

void Element::SetText(std::string_view attribute, std::string_view text) const
{
    dom_->setAttribute(XmlName(attribute).Get(), XmlFromUtf8(text).c_str());
}

void Element::RemoveAttribute(std::string_view attribute) const
{
    dom_->removeAttribute(XmlName(attribute).Get());
}

Element Element::Append(std::string_view tag) const
{
    xercesc::DOMElement* child =
        dom_->getOwnerDocument()->createElementNS(dom_->getNamespaceURI(), XmlName(tag).Get());
    dom_->appendChild(child);
    return Element(child);
}

void Element::Insert(Element child, Element before) const
{
    dom_->insertBefore(child.dom_, before.dom_);
}

void Element::SetContent(std::string_view text) const
{
    dom_->setTextContent(XmlFromUtf8(text).c_str());
}

void Element::Rename(std::string_view tag) const
{
    dom_->getOwnerDocument()->renameNode(dom_, nullptr, XmlName(tag).Get());
}

void Element::Erase()
{
    dom_->getParentNode()->removeChild(dom_)->release();
    dom_ = nullptr;
}

}  // namespace MCVelscore_850
