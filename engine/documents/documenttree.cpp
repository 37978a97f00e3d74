#include "engine/documents/documenttree.h"

#include <mutex>
#include <new>
#include <utility>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLUni.hpp>

#include "engine/messages/failure.h"
#include "host/documents/documentplace.h"
#include "host/documents/veltranscoder.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

// Of the spare piece: the library lists the data of one node in it, of which there are three at
// most.
constexpr size_t kSpareBytes = 256;

// The library counts its users without a lock.
std::mutex& SessionLock()
{
    static std::mutex lock;
    return lock;
}

// Turns what the parser says into the one refusal. The guard refuses first what both know; the
// rest are differences in taste, such as a version of XML that only one of them takes.
class Complaints final : public xercesc::ErrorHandler {
public:
    explicit Complaints(const std::string& file) : file_(file) {}

    void warning(const xercesc::SAXParseException&) override {}
    void error(const xercesc::SAXParseException& e) override { Refuse(e); }
    void fatalError(const xercesc::SAXParseException& e) override { Refuse(e); }
    void resetErrors() override {}

private:
    [[noreturn]] void Refuse(const xercesc::SAXParseException& e) const
    {
        throw Failure(FailureKind::Document, kNotWellFormed,
                      {file_, std::to_string(e.getLineNumber()),
                       std::to_string(e.getColumnNumber()), Utf8FromXml(e.getMessage())});
    }

    const std::string& file_;
};

// The parser doesn't say where: it is the declaration in the first line, or as good as that.
[[noreturn]] void RefuseFirstLine(const std::string& file, const XMLCh* reason)
{
    throw Failure(FailureKind::Document, kNotWellFormed, {file, "1", "1", Utf8FromXml(reason)});
}

// Builds the tree and gives each element the place that the guard saw it at: both meet the
// elements in the same order. The parser's own place is where a tag ends, and asking it costs more.
class PlacingParser final : public xercesc::XercesDOMParser {
public:
    PlacingParser(const std::vector<ElementPlace>& places, bool comments, TreeMemory& memory)
        : XercesDOMParser(nullptr, &memory), places_(places)
    {
        // Well-formedness alone, and the fastest. This scanner has no DTD, no schema and no entity
        // of a document's own to begin with: should the guard and it ever read the same bytes in
        // two ways, there is still nothing that it could expand or fetch.
        useScanner(xercesc::XMLUni::fgWFXMLScanner);
        setValidationScheme(Val_Never);
        setDoNamespaces(false);
        setDoSchema(false);
        setLoadExternalDTD(false);
        setLoadSchema(false);
        setDisableDefaultEntityResolution(true);
        setCreateCommentNodes(comments);
    }

protected:
    xercesc::DOMElement* createElement(const XMLCh* name) override
    {
        xercesc::DOMElement* element = XercesDOMParser::createElement(name);
        if (next_ < places_.size()) {
            const ElementPlace& place = places_[next_++];
            NotePlace(element, place.line, place.column);
        }
        return element;
    }

private:
    const std::vector<ElementPlace>& places_;
    size_t next_ = 0;
};

}  // namespace

XercesSession::XercesSession()
{
    const std::lock_guard<std::mutex> guard(SessionLock());
    // The first stays for the process: the library can't be set up again where memory ran out at
    // that, so it isn't set up for each document.
    static bool stays = false;
    if (!stays) {
        xercesc::XMLPlatformUtils::Initialize();
        stays = true;
    }
    xercesc::XMLPlatformUtils::Initialize();
}

XercesSession::~XercesSession()
{
    const std::lock_guard<std::mutex> guard(SessionLock());
    xercesc::XMLPlatformUtils::Terminate();
}

TreeMemory::TreeMemory() : spare_(static_cast<Piece*>(::operator new(sizeof(Piece) + kSpareBytes)))
{}

TreeMemory::~TreeMemory()
{
    ::operator delete(spare_);
    for (Piece* piece = pieces_.after; piece != &pieces_;) {
        ::operator delete(std::exchange(piece, piece->after));
    }
}

void* TreeMemory::allocate(XMLSize_t size)
{
    auto* piece = static_cast<Piece*>(::operator new(sizeof(Piece) + size, std::nothrow));
    if (piece == nullptr && lendsSpare_ && !isSpareLent_ && size <= kSpareBytes) {
        isSpareLent_ = true;
        return spare_ + 1;
    }
    if (piece == nullptr) throw xercesc::OutOfMemoryException();
    *piece = {&pieces_, pieces_.after};
    pieces_.after->before = piece;
    pieces_.after = piece;
    return piece + 1;
}

void TreeMemory::deallocate(void* memory)
{
    if (memory == nullptr) return;
    Piece* piece = static_cast<Piece*>(memory) - 1;
    if (piece == spare_) {
        isSpareLent_ = false;
        return;
    }
    piece->before->after = piece->after;
    piece->after->before = piece->before;
    ::operator delete(piece);
}

OwnedTree BuildTree(std::string_view bytes, const std::string& file,
                    const std::vector<ElementPlace>& places, bool comments)
{
    Complaints complaints(file);
    auto memory = std::make_shared<TreeMemory>();
    PlacingParser parser(places, comments, *memory);
    parser.setErrorHandler(&complaints);
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(bytes.data()),
                                            bytes.size(), "document", false, memory.get());
    // Caught here and not above: these objects live off the session.
    try {
        parser.parse(source);
        // What is written of the tree is XML 1.0: under 1.1 some characters, as U+0085, would have
        // to be references, which the library doesn't write.
        parser.getDocument()->setXmlVersion(xercesc::XMLUni::fgVersion1_0);
    } catch (const xercesc::XMLException& e) {  // bytes that can't be decoded
        RefuseFirstLine(file, e.getMessage());
    } catch (const xercesc::DOMException& e) {  // a version of XML other than 1.0 and 1.1
        RefuseFirstLine(file, e.getMessage());
    } catch (const xercesc::OutOfMemoryException&) {
        // Else the parser releases what there is of it, which takes memory too.
        static_cast<void>(parser.adoptDocument());
        throw std::bad_alloc();
    }
    return OwnedTree(parser.adoptDocument(), {std::move(memory)});
}

}  // namespace MCVelscore_850
