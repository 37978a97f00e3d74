#ifndef VELSCORE_ENGINE_DOCUMENTS_DOCUMENTFIX_H
#define VELSCORE_ENGINE_DOCUMENTS_DOCUMENTFIX_H

#include <string>
#include <string_view>
#include <vector>

namespace MCVelscore_850 {

class Document;

/// A document with what can be put right without a guess.
struct FixedDocument {
    /// In UTF-8. Blanks, comments and what else the tree holds stand where they stood; attributes
    /// come in the order of their names.
    std::string text;
    /// What was changed, a line each, with its place in the document as it was.
    std::vector<std::string> changes;
    /// The rules that changed it, each once.
    std::vector<std::string_view> rules;
};

/// Puts right in the tree what the audit tells how to mend and what the adapter rewrites, until
/// nothing of either is left. Faults that nobody can mend stay. For comments to stay, the document
/// was loaded with them.
///
/// Errors  DocumentFailure where the adapter refuses.
FixedDocument FixDocument(Document& document);

}  // namespace MCVelscore_850

#endif
