#include "engine/documents/documentguard.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <optional>
#include <utility>

#include <expat.h>

#include "engine/documents/plainelements.h"
#include "engine/failure.h"
#include "host/messages.h"

namespace MCVelscore_850 {

namespace {

// Small enough to stay in the cache between reading and parsing, large enough that the work a
// chunk costs beside its bytes doesn't show.
constexpr size_t kChunkBytes = size_t{16} << 10;

// A run of plain elements shorter than this saves less than looking for the next one costs.
constexpr size_t kWorthwhileRun = 512;
// A tag that isn't complete is kept for the next chunk up to this length.
constexpr size_t kTagHead = 1024;

// A document shorter than this says little about itself; a file's kind shows in its first bytes.
constexpr size_t kHeadBytes = 4;

struct FileKind {
    std::string_view head;
    const char* reason;
};

// Files that are taken for documents now and then. Their bytes are no XML, which alone would say
// "a character that can't stand here".
constexpr FileKind kFileKinds[] = {
    {"\x1f\x8b", "the file is packed with gzip; unpack it first"},
    {"PK\x03\x04", "the file is a zip archive; unpack it first"},
    {std::string_view("\xff\xfe\0\0", 4), "the encoding UTF-32 isn't read"},
    {std::string_view("\0\0\xfe\xff", 4), "the encoding UTF-32 isn't read"},
};

struct Fault {
    XML_Error error;
    const char* reason;
};

constexpr Fault kFaults[] = {
    {XML_ERROR_NO_ELEMENTS, "the document ends before its last element is closed"},
    {XML_ERROR_UNCLOSED_TOKEN, "the document ends within a tag, comment or instruction"},
    {XML_ERROR_UNCLOSED_CDATA_SECTION, "the document ends within a CDATA section"},
    {XML_ERROR_PARTIAL_CHAR, "the document ends within a character"},
    {XML_ERROR_INVALID_TOKEN, "a character that can't stand here"},
    {XML_ERROR_TAG_MISMATCH, "the end tag doesn't fit the element that is open"},
    {XML_ERROR_DUPLICATE_ATTRIBUTE, "an attribute stands twice on one element"},
    {XML_ERROR_JUNK_AFTER_DOC_ELEMENT, "something follows the root element"},
    {XML_ERROR_UNDEFINED_ENTITY, "an entity that isn't defined"},
    {XML_ERROR_BAD_CHAR_REF, "a character reference to no character"},
    {XML_ERROR_MISPLACED_XML_PI, "the XML declaration doesn't stand at the very beginning"},
    {XML_ERROR_UNKNOWN_ENCODING,
     "the encoding isn't read; write the document in UTF-8, UTF-16, ISO-8859-1 or US-ASCII"},
    {XML_ERROR_INCORRECT_ENCODING, "the bytes aren't in the encoding that the document declares"},
};

const char* ReasonOf(XML_Error error, std::string_view head)
{
    for (const FileKind& kind : kFileKinds) {
        if (head.starts_with(kind.head)) return kind.reason;
    }
    for (const Fault& fault : kFaults) {
        if (fault.error == error) return fault.reason;
    }
    return XML_ErrorString(error);
}

}  // namespace

// The parser with what is counted. The parser's callbacks can't throw through it: they note the
// first refusal and stop it, and Check() throws.
struct DocumentGuard::Watch {
    Watch(std::string name, const DocumentLimits& bounds)
        : file(std::move(name)), limits(bounds), parser(XML_ParserCreate(nullptr))
    {
        if (parser == nullptr) throw std::bad_alloc();
        XML_SetUserData(parser, this);
        XML_SetElementHandler(parser, OnStart, OnEnd);
        XML_SetCommentHandler(parser, OnComment);
        XML_SetProcessingInstructionHandler(parser, OnInstruction);
        // Before the root only: it is the one callback that sees "<!DOCTYPE" where it begins, and
        // it would cost time on every text of the content.
        XML_SetDefaultHandler(parser, OnProlog);
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch() { XML_ParserFree(parser); }

    // The next bytes, a chunk at most. Plain elements are read here; everything else, and with it
    // every doubt, is the parser's.
    void Take(std::string_view bytes)
    {
        taken += bytes.size();
        if (head.size() < kHeadBytes) head.append(bytes.substr(0, kHeadBytes - head.size()));
        window.append(bytes);
        std::string_view rest = window;
        bool tryPlain = true;
        while (!rest.empty()) {
            if (IsBetweenTags()) {
                const size_t run = PassPlainElements(rest);
                rest.remove_prefix(run);
                if (rest.empty() || IsHeadOfTag(rest)) break;  // its end comes with the next bytes
                if (run < kWorthwhileRun) tryPlain = false;
            }
            const size_t size = SizeForParser(rest, tryPlain);
            Parse(rest.data(), size);
            rest.remove_prefix(size);
            if (!IsBetweenTags()) tryPlain = false;
        }
        window.erase(0, window.size() - rest.size());
    }

    void Finish()
    {
        if (!window.empty()) Parse(window.data(), window.size());
        Check(XML_Parse(parser, "", 0, XML_TRUE));
    }

    // How much the parser gets before the next look for plain elements: up to the end of the first
    // empty element while they are likely, then up to the last end of any tag.
    static size_t SizeForParser(std::string_view bytes, bool tryPlain)
    {
        size_t end = std::string_view::npos;
        if (tryPlain) {
            end = bytes.find("/>");
            if (end != std::string_view::npos) ++end;
        }
        if (end == std::string_view::npos) end = bytes.rfind('>');
        return end == std::string_view::npos ? bytes.size() : end + 1;
    }

    // The parser has just read a tag, the last of the bytes it has, and is within the root.
    bool IsBetweenTags() const
    {
        return depth > 0 && lastTagEnd == fed && depth < limits.depth && !IsWide();
    }

    // In UTF-16 the bytes of a character may look like anything.
    bool IsWide() const
    {
        return head.size() < 2 || head[0] == '\0' || head[1] == '\0' || head[0] == '\xff' ||
               head[0] == '\xfe';
    }

    bool IsHeadOfTag(std::string_view bytes) const
    {
        return bytes.front() == '<' && bytes.size() <= std::min(kTagHead, limits.tokenBytes) &&
               bytes.find('>') == std::string_view::npos;
    }

    // The parser doesn't see these bytes; its lines and columns are shifted by them from here on.
    size_t PassPlainElements(std::string_view bytes)
    {
        const auto line = static_cast<int64_t>(XML_GetCurrentLineNumber(parser));
        const auto column = static_cast<int64_t>(XML_GetCurrentColumnNumber(parser)) + 1;
        const PlainRun run = ReadPlainElements(bytes, Place(), limits, places);
        shiftLines = run.end.line - line;
        shiftColumns = run.end.column - column;
        shiftedLine = line;
        return run.bytes;
    }

    // Where the parser is, in the document's own lines and columns.
    ElementPlace Place() const
    {
        const auto line = static_cast<int64_t>(XML_GetCurrentLineNumber(parser));
        auto column = static_cast<int64_t>(XML_GetCurrentColumnNumber(parser)) + 1;
        if (line == shiftedLine) column += shiftColumns;
        return {static_cast<uint32_t>(line + shiftLines), static_cast<uint32_t>(column)};
    }

    void Parse(const char* bytes, size_t size)
    {
        void* room = XML_GetBuffer(parser, static_cast<int>(size));
        if (room == nullptr) throw std::bad_alloc();
        std::memcpy(room, bytes, size);
        fed += size;
        Check(XML_ParseBuffer(parser, static_cast<int>(size), XML_FALSE));

        // What the parser holds back until it has the rest. It answers -1 when it dropped the
        // place; then the token's begin is where it was.
        const XML_Index begin = XML_GetCurrentByteIndex(parser);
        if (begin >= 0) tokenBegin = static_cast<size_t>(begin);
        // Newer parsers look at a token again only when it has doubled since they last did, so that
        // one within the limit may have its end, and more, lying unread up to twice the limit.
        if (fed - tokenBegin > 2 * limits.tokenBytes) {
            Note(kTokenTooLong, limits.tokenBytes);
            throw *refusal;
        }
    }

    void Check(XML_Status status)
    {
        if (refusal) throw *refusal;
        if (status != XML_STATUS_OK) {
            const XML_Error error = XML_GetErrorCode(parser);
            if (error == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
            const ElementPlace place = Place();
            throw Failure(FailureKind::Document, kNotWellFormed,
                          {file, std::to_string(place.line), std::to_string(place.column),
                           ReasonOf(error, head)});
        }
    }

    void Note(int code, std::optional<size_t> limit)
    {
        if (refusal) return;  // the parser may call once more after it was stopped
        const ElementPlace place = Place();
        std::vector<std::string> arguments{file, std::to_string(place.line),
                                           std::to_string(place.column)};
        if (limit) arguments.push_back(std::to_string(*limit));
        refusal.emplace(FailureKind::Document, code, std::move(arguments));
        XML_StopParser(parser, XML_FALSE);
    }

    void CheckToken()
    {
        if (TokenBytes() > limits.tokenBytes) Note(kTokenTooLong, limits.tokenBytes);
    }

    void CheckTag()
    {
        CheckToken();
        lastTagEnd = static_cast<size_t>(XML_GetCurrentByteIndex(parser)) + TokenBytes();
    }

    // 0 for an end that has no tag of its own.
    size_t TokenBytes() const { return static_cast<size_t>(XML_GetCurrentByteCount(parser)); }

    static void OnStart(void* self, const XML_Char*, const XML_Char**)
    {
        Watch& watch = *static_cast<Watch*>(self);
        const DocumentLimits& limits = watch.limits;
        if (watch.places.empty()) XML_SetDefaultHandler(watch.parser, nullptr);
        watch.CheckTag();
        if (++watch.depth > limits.depth) watch.Note(kTooDeep, limits.depth);
        // names and values are counted
        const auto attributes =
            static_cast<size_t>(XML_GetSpecifiedAttributeCount(watch.parser)) / 2;
        if (attributes > limits.attributes) watch.Note(kTooManyAttributes, limits.attributes);
        if (watch.places.size() == limits.elements) watch.Note(kTooManyElements, limits.elements);
        watch.places.push_back(watch.Place());
    }

    static void OnEnd(void* self, const XML_Char*)
    {
        Watch& watch = *static_cast<Watch*>(self);
        --watch.depth;
        watch.CheckTag();
    }

    static void OnComment(void* self, const XML_Char*) { static_cast<Watch*>(self)->CheckToken(); }

    static void OnInstruction(void* self, const XML_Char*, const XML_Char*)
    {
        static_cast<Watch*>(self)->CheckToken();
    }

    static void OnProlog(void* self, const XML_Char* text, int size)
    {
        Watch& watch = *static_cast<Watch*>(self);
        const std::string_view token(text, static_cast<size_t>(size));
        if (token.starts_with("<!")) watch.Note(kDoctype, std::nullopt);
        watch.CheckToken();
    }

    const std::string file;
    const DocumentLimits limits;
    const XML_Parser parser;
    std::optional<Failure> refusal;
    std::vector<ElementPlace> places;
    std::string head;
    std::string window;     // bytes taken that the parser doesn't have yet
    size_t taken = 0;       // bytes of the document
    size_t fed = 0;         // bytes that went to the parser; the next two count these
    size_t tokenBegin = 0;  // where the token begins that the parser holds
    size_t lastTagEnd = 0;
    size_t depth = 0;
    int64_t shiftedLine = 0;  // the parser's line of the last run of plain elements
    int64_t shiftLines = 0;
    int64_t shiftColumns = 0;
};

DocumentGuard::DocumentGuard(std::string file, const DocumentLimits& limits)
    : watch_(std::make_unique<Watch>(std::move(file), limits))
{}

DocumentGuard::~DocumentGuard() = default;

void DocumentGuard::Feed(std::string_view bytes)
{
    while (!bytes.empty()) {
        const size_t room = watch_->limits.documentBytes - watch_->taken;
        if (room == 0) RefuseDocumentSize(watch_->file, watch_->limits.documentBytes);
        const size_t size = std::min({bytes.size(), kChunkBytes, room});
        watch_->Take(bytes.substr(0, size));
        bytes.remove_prefix(size);
    }
}

void DocumentGuard::Finish() { watch_->Finish(); }

const std::vector<ElementPlace>& DocumentGuard::Places() const { return watch_->places; }

void RefuseDocumentSize(const std::string& file, size_t limit)
{
    throw Failure(FailureKind::Document, kDocumentTooLarge, {file, std::to_string(limit)});
}

}  // namespace MCVelscore_850
