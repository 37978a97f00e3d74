#include "engine/documents/treewriting.h"

#include <algorithm>
#include <memory>
#include <utility>

#include <xercesc/framework/MemBufFormatTarget.hpp>
#include <xercesc/util/XMLString.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "host/documents/veltranscoder.h"

namespace MCVelscore_850 {

namespace {

constexpr XMLSize_t kBufferBytes = 1023;  // the library's usual one, which grows

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

// Asked by its features instead, the library would lose memory where there is little.
xercesc::DOMImplementation& Implementation()
{
    return *xercesc::DOMImplementation::getImplementation();
}

}  // namespace

OwnedTree NewTree(const std::string& nameSpace, const std::string& root)
{
    auto memory = std::make_shared<TreeMemory>();
    xercesc::DOMDocument* const tree = Implementation().createDocument(
        XmlFromUtf8(nameSpace).c_str(), XmlFromUtf8(root).c_str(), nullptr, memory.get());
    return OwnedTree(tree, {std::move(memory)});
}

void DropIndentation(Element element)
{
    if (element.Children().Empty()) return;  // its text is content
    // The guard bounds the depth, and with it this recursion.
    for (const Element child : element.Children()) DropIndentation(child);
    for (xercesc::DOMNode* node = element.Dom()->getFirstChild(); node != nullptr;) {
        xercesc::DOMNode* next = node->getNextSibling();
        if (node->getNodeType() == xercesc::DOMNode::TEXT_NODE && IsBlank(node->getNodeValue())) {
            element.Dom()->removeChild(node)->release();
        }
        node = next;
    }
}

std::string TreeText(const xercesc::DOMDocument& tree, TreeForm form)
{
    xercesc::DOMImplementation& implementation = Implementation();
    TreeMemory memory;
    const std::unique_ptr<xercesc::DOMLSSerializer, Release> serializer(
        implementation.createLSSerializer(&memory));
    serializer->getDomConfig()->setParameter(xercesc::XMLUni::fgDOMWRTFormatPrettyPrint,
                                             form == TreeForm::Indented);
    const std::unique_ptr<xercesc::DOMLSOutput, Release> output(
        implementation.createLSOutput(&memory));
    xercesc::MemBufFormatTarget target(kBufferBytes, &memory);
    output->setByteStream(&target);
    output->setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
    serializer->write(&tree, output.get());
    std::string text(reinterpret_cast<const char*>(target.getRawBuffer()), target.getLen());
    // The tree has no blanks outside of its root.
    const size_t declared = form == TreeForm::AsItIs ? text.find("?>") : std::string::npos;
    if (declared != std::string::npos) text.insert(declared + 2, 1, '\n');
    return text;
}

}  // namespace MCVelscore_850
