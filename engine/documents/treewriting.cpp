#include "engine/documents/treewriting.h"

#include <memory>

#include <xercesc/framework/MemBufFormatTarget.hpp>
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

std::string TreeText(const xercesc::DOMDocument& tree, TreeForm form)
{
    xercesc::DOMImplementation& implementation = Implementation();
    const std::unique_ptr<xercesc::DOMLSSerializer, Release> serializer(
        implementation.createLSSerializer());
    serializer->getDomConfig()->setParameter(xercesc::XMLUni::fgDOMWRTFormatPrettyPrint,
                                             form == TreeForm::Indented);
    const std::unique_ptr<xercesc::DOMLSOutput, Release> output(implementation.createLSOutput());
    xercesc::MemBufFormatTarget target;
    output->setByteStream(&target);
    output->setEncoding(xercesc::XMLUni::fgUTF8EncodingString);
    serializer->write(&tree, output.get());
    std::string text(reinterpret_cast<const char*>(target.getRawBuffer()), target.getLen());
    // The tree has no blanks outside of its root.
    if (form == TreeForm::AsItIs) text.insert(text.find("?>") + 2, "\n");
    return text;
}

}  // namespace MCVelscore_850
