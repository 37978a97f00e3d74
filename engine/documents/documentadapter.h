#ifndef VELSCORE_ENGINE_DOCUMENTS_DOCUMENTADAPTER_H
#define VELSCORE_ENGINE_DOCUMENTS_DOCUMENTADAPTER_H

#include <string>
#include <vector>

#include "engine/documents/audit/finding.h"
#include "host/messages/vsexception.h"

namespace MCVelscore_850 {

class Document;

/// One thing that was changed in a document.
struct Adaptation {
    const Rule* rule = nullptr;
    /// What it changed and why, in one line.
    std::string change;
    /// The first element that it changed, as the file has it.
    DocumentPlace place;
    /// The target's first category was declared last; its columns are to stay where they were.
    bool rotatedTarget = false;
    /// Fields that got the categories of their cells as their list, which lacks the reference
    /// category therefore.
    std::vector<std::string> listedByCells{};
    /// The family of a RegressionModel, in the field's words.
    std::string family{};
};

/// Rewrites a document as other exporters publish it into the dialect that the reader takes. The
/// reader is strict, and in places would read such a document in another sense than its author
/// meant; what an author can't have meant otherwise is put right here. Everything else stays: a
/// document in the reader's dialect passes untouched, and one that nobody can repair goes to the
/// reader, whose refusal says more. The older form (root "zelt-ml") has no other dialect.
std::vector<Adaptation> AdaptDocument(Document& document);

/// The first part of it alone, after which the names that stand are the author's: prefixes, the
/// version and mining fields that stand twice alike. The rest may be done later.
std::vector<Adaptation> AdaptNames(Document& document);

/// The adapter's rules, in the order in which they are applied.
std::vector<const Rule*> AdapterRules();

}  // namespace MCVelscore_850

#endif
