#include "engine/documents/treewriting.h"

#include <algorithm>
#include <memory>

#include <xercesc/framework/MemBufFormatTarget.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "host/documents/veltranscoder.h"

namespace MCVelscore_850 {

namespace {

struct Release {
    template <class Object>
    void operator()(Object* object) const
    {
        object->release();
    }
};

bool IsBlank(const XMLCh* text)
{
    return std::all_of(text, text + xercesc::XMLString::stringLen(text),
                       [](XMLCh c) { return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r'; });
}

xercesc::DOMImplementation& Implementation()
{
    return *xercesc::DOMImplementationRegistry::getDOMImplementation(XmlFromUtf8("LS").c_str());
}

}  // namespace

OwnedTree NewTree(const std::string& nameSpace, const std::string& root)
{
    return OwnedTree(Implementation().createDocument(XmlFromUtf8(nameSpace).c_str(),
                                                     XmlFromUtf8(root).c_str(), nullptr));
}

xercesc::DOMElement* AddElement(xercesc::DOMElement* parent, const std::string& tag)
{
    xercesc::DOMElement* element = parent->getOwnerDocument()->createElementNS(
        parent->getNamespaceURI(), XmlFromUtf8(tag).c_str());
    parent->appendChild(element);
    return element;
}

void DropIndentation(xercesc::DOMElement* element)
{
    if (element->getFirstElementChild() == nullptr) return;  // its text is content
    for (xercesc::DOMNode* node = element->getFirstChild(); node != nullptr;) {
        xercesc::DOMNode* next = node->getNextSibling();
        if (node->getNodeType() == xercesc::DOMNode::TEXT_NODE && IsBlank(node->getNodeValue())) {
            element->removeChild(node)->release();
        } else if (node->getNodeType() == xercesc::DOMNode::ELEMENT_NODE) {
            // The guard bounds the depth, and with it this recursion.
            DropIndentation(static_cast<xercesc::DOMElement*>(node));
        }
        node = next;
    }
}

std::string TreeText(const xercesc::DOMDocument& tree)
{
    xercesc::DOMImplementation& implementation = Implementation();
    const std::unique_ptr<xercesc::DOMLSSerializer, Release> serializer(
        implementation.createLSSerializer());
    serializer->getDomConfig()->setParameter(xercesc::XMLUni::fgDOMWRTFormatPrettyPrint, true);
    const std::unique_ptr<xercesc::DOMLSOutput, Release> output(implementation.createLSOutput());
    xercesc::MemBufFormatTarget target;
    output->setByteStream(&target);
    output->setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
    serializer->write(&tree, output.get());
    return {reinterpret_cast<const char*>(target.getRawBuffer()), target.getLen()};
}

}  // namespace MCVelscore_850
