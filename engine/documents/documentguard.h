#ifndef VELSCORE_ENGINE_DOCUMENTS_DOCUMENTGUARD_H
#define VELSCORE_ENGINE_DOCUMENTS_DOCUMENTGUARD_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace MCVelscore_850 {

/// What a document may cost. Each limit is the last value that passes.
struct DocumentLimits {
    /// Elements within each other; the root alone is 1. Walks over the tree recurse this far.
    size_t depth = 256;
    /// Attributes on one element: the tree's parser compares each with each.
    size_t attributes = 256;
    /// Bytes of one tag, comment or processing instruction: a parser holds it whole.
    size_t tokenBytes = size_t{1} << 20;
    /// Bytes from one tag to the next, comments among them: the tree's parser moves a text that
    /// grows.
    size_t textBytes = size_t{16} << 20;
    /// Elements, and what else becomes a node of its own: processing instructions and CDATA
    /// sections.
    size_t elements = 1'000'000;
    /// Different names of elements and attributes, together: the tree's parser looks each name up
    /// in lists that grow with them.
    size_t names = 10'000;
    size_t documentBytes = size_t{256} << 20;
};

/// Where an element's tag begins: line and column from 1, the column in characters.
struct ElementPlace {
    uint32_t line = 0;
    uint32_t column = 0;
};

/// Watches a document's bytes as they come in and refuses it before it can cost anything: what is
/// not well-formed, any DOCTYPE (and with it every entity and every file behind one), and what goes
/// beyond the limits. Of the text it keeps each name once, so a document of any size passes through
/// little memory.
///
/// Errors  Failure of kind Document: kDoctype, kTooDeep, kTooManyAttributes, kTokenTooLong,
///         kTextTooLong, kTooManyElements, kTooManyNames, kDocumentTooLarge, kNotWellFormed; each
///         but kDocumentTooLarge with line and column. After a refusal the guard must not be used
///         again.
/// Order   Feed() as often as there are bytes, then Finish().
/// Threads one thread at a time.
class DocumentGuard {
public:
    /// `file` is how refusals call the document.
    explicit DocumentGuard(std::string file, const DocumentLimits& limits = {});
    DocumentGuard(const DocumentGuard&) = delete;
    DocumentGuard& operator=(const DocumentGuard&) = delete;
    ~DocumentGuard();

    /// Takes the next bytes, however many.
    void Feed(std::string_view bytes);
    /// Says that there are no more bytes: a document that isn't complete is refused.
    void Finish();

    /// The place of every element seen so far, in document order.
    const std::vector<ElementPlace>& Places() const;

private:
    struct Watch;
    std::unique_ptr<Watch> watch_;
};

/// The refusal of a document that is over the limit of bytes.
[[noreturn]] void RefuseDocumentSize(const std::string& file, size_t limit);

}  // namespace MCVelscore_850

#endif
