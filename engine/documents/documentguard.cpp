#include "engine/documents/documentguard.h"

#include <algorithm>
#include <functional>
#include <new>
#include <optional>
#include <unordered_set>
#include <utility>

#include <expat.h>

#include "engine/messages/failure.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

// Small enough to stay in the cache between reading and parsing, large enough that the work a
// chunk costs beside its bytes doesn't show.
constexpr size_t kChunkBytes = size_t{16} << 10;

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

// Looks a name up without making a string of it.
struct NameHash {
    using is_transparent = void;
    size_t operator()(std::string_view name) const { return std::hash<std::string_view>()(name); }
};
using Names = std::unordered_set<std::string, NameHash, std::equal_to<>>;

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
        XML_SetStartCdataSectionHandler(parser, OnCdata);
        // Before the root only: it is the one callback that sees "<!DOCTYPE" where it begins, and
        // it would cost time on every text of the content.
        XML_SetDefaultHandler(parser, OnProlog);
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    ~Watch() { XML_ParserFree(parser); }

    // What the parser holds of a token it reads again from its begin: each time as much more.
    size_t ChunkBytes() const { return std::max(kChunkBytes, taken - tokenBegin); }

    // The next bytes, a chunk at most.
    void Take(std::string_view bytes)
    {
        if (head.size() < kHeadBytes) head.append(bytes.substr(0, kHeadBytes - head.size()));
        taken += bytes.size();
        Check(XML_Parse(parser, bytes.data(), static_cast<int>(bytes.size()), XML_FALSE));

        // What the parser holds back until it has the rest. It answers -1 when it dropped the
        // place; then the token's begin is where it was.
        const XML_Index begin = XML_GetCurrentByteIndex(parser);
        if (begin >= 0) tokenBegin = static_cast<size_t>(begin);
        // Newer parsers look at a token again only when it has doubled since they last did, so that
        // one within the limit may have its end, and more, lying unread up to twice the limit.
        if (taken - tokenBegin > 2 * limits.tokenBytes) Note(kTokenTooLong, limits.tokenBytes);
        CheckText(tokenBegin);  // a text that goes on
        if (refusal) throw *refusal;
    }

    void Finish() { Check(XML_Parse(parser, "", 0, XML_TRUE)); }

    ElementPlace Place() const
    {
        const XML_Size line = XML_GetCurrentLineNumber(parser);
        const XML_Size column = XML_GetCurrentColumnNumber(parser);
        return {static_cast<uint32_t>(line),
                static_cast<uint32_t>(line == 1 && BeginsWithMark() ? column : column + 1)};
    }

    // A byte-order mark, which the parser counts as a character of the first line.
    bool BeginsWithMark() const
    {
        return head.starts_with("\xEF\xBB\xBF") || head.starts_with("\xFF\xFE") ||
               head.starts_with("\xFE\xFF");
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

    void Note(int code, std::optional<size_t> limit) { NoteAt(Place(), code, limit); }

    void NoteAt(ElementPlace place, int code, std::optional<size_t> limit)
    {
        if (refusal) return;  // the parser may call once more after it was stopped
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

    // Of what stands between the last tag and `end`. Comments count: the tree doesn't keep them,
    // and the texts on both sides of one are one text.
    void CheckText(size_t end)
    {
        if (depth == 0 || end <= lastTagEnd || end - lastTagEnd <= limits.textBytes) return;
        NoteAt(places.back(), kTextTooLong, limits.textBytes);
    }

    void CheckTag()
    {
        CheckToken();
        const auto begin = static_cast<size_t>(XML_GetCurrentByteIndex(parser));
        CheckText(begin);
        lastTagEnd = begin + TokenBytes();
    }

    // What becomes a node of the tree.
    void CountNode()
    {
        if (nodes == limits.elements) Note(kTooManyElements, limits.elements);
        ++nodes;
    }

    void CountName(const XML_Char* name)
    {
        const std::string_view text(name);
        if (names.contains(text)) return;
        if (names.size() == limits.names) Note(kTooManyNames, limits.names);
        names.emplace(text);
    }

    // 0 for an end that has no tag of its own.
    size_t TokenBytes() const { return static_cast<size_t>(XML_GetCurrentByteCount(parser)); }

    static void OnStart(void* self, const XML_Char* name, const XML_Char** attributes)
    {
        Watch& watch = *static_cast<Watch*>(self);
        const DocumentLimits& limits = watch.limits;
        if (watch.places.empty()) XML_SetDefaultHandler(watch.parser, nullptr);
        watch.CheckTag();
        if (++watch.depth > limits.depth) watch.Note(kTooDeep, limits.depth);
        // names and values are counted
        const auto count = static_cast<size_t>(XML_GetSpecifiedAttributeCount(watch.parser)) / 2;
        if (count > limits.attributes) watch.Note(kTooManyAttributes, limits.attributes);
        watch.CountNode();
        watch.CountName(name);
        for (; *attributes != nullptr; attributes += 2) watch.CountName(*attributes);
        watch.places.push_back(watch.Place());
    }

    static void OnEnd(void* self, const XML_Char*)
    {
        Watch& watch = *static_cast<Watch*>(self);
        watch.CheckTag();
        --watch.depth;
    }

    static void OnComment(void* self, const XML_Char*) { static_cast<Watch*>(self)->CheckToken(); }

    static void OnInstruction(void* self, const XML_Char*, const XML_Char*)
    {
        static_cast<Watch*>(self)->CheckToken();
        static_cast<Watch*>(self)->CountNode();
    }

    static void OnCdata(void* self) { static_cast<Watch*>(self)->CountNode(); }

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
    Names names;  // of elements and attributes, each once
    std::string head;
    size_t taken = 0;       // bytes of the document; the next two count these
    size_t tokenBegin = 0;  // where the token begins that the parser holds
    size_t lastTagEnd = 0;
    size_t depth = 0;
    size_t nodes = 0;
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
        const size_t size = std::min({bytes.size(), watch_->ChunkBytes(), room});
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
