#ifndef VELSCORE_TESTS_HOST_DOM_H
#define VELSCORE_TESTS_HOST_DOM_H

#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "host/documents/veltranscoder.h"
#include "host/messages/vsexception.h"

namespace MCVelscore_850 {

/// Starts the XML parser's library, once a program.
inline void StartXml()
{
    struct Library {
        Library() { xercesc::XMLPlatformUtils::Initialize(); }
        ~Library() { xercesc::XMLPlatformUtils::Terminate(); }
    };
    static const Library library;
}

/// A small document, parsed from text.
class Dom {
public:
    explicit Dom(const std::string& xml)
    {
        StartXml();
        xercesc::XercesDOMParser parser;
        parser.setValidationScheme(xercesc::XercesDOMParser::Val_Never);
        const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(xml.data()),
                                                xml.size(), "test");
        parser.parse(source);
        if (parser.getErrorCount() > 0) throw std::logic_error("the test's XML is not well-formed");
        document_ = parser.adoptDocument();
    }
    Dom(const Dom&) = delete;
    Dom& operator=(const Dom&) = delete;
    ~Dom() { document_->release(); }

    xercesc::DOMDocument* Document() const { return document_; }
    xercesc::DOMElement* Root() const { return document_->getDocumentElement(); }
    /// The first element of that tag in the document.
    xercesc::DOMElement* First(const std::string& tag) const
    {
        return static_cast<xercesc::DOMElement*>(
            document_->getElementsByTagName(XmlFromUtf8(tag).c_str())->item(0));
    }

private:
    xercesc::DOMDocument* document_;
};

/// What a call was refused with; code 0 when it wasn't.
struct Refusal {
    int code = 0;
    std::vector<std::string> arguments;
    bool operator==(const Refusal&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Refusal& refusal)
{
    out << refusal.code << " (";
    for (const std::string& argument : refusal.arguments) out << argument << ", ";
    return out << ")";
}

template <class Call>
Refusal RefusalOf(Call&& call)
{
    try {
        call();
    } catch (const VSException& e) {
        return {e.GetErrorCode(), e.GetArguments()};
    }
    return {};
}

}  // namespace MCVelscore_850

#endif
