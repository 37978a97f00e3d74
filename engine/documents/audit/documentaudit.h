#ifndef VELSCORE_ENGINE_DOCUMENTS_AUDIT_DOCUMENTAUDIT_H
#define VELSCORE_ENGINE_DOCUMENTS_AUDIT_DOCUMENTAUDIT_H

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/documents/audit/covariancecells.h"
#include "engine/documents/audit/documentfacts.h"
#include "engine/documents/audit/finding.h"

namespace MCVelscore_850 {

struct ModelDescription;

/// What a check of the tree looks at, and one of the finished model.
using TreeCheck = void (*)(const DocumentFacts& facts, RuleReport& report);
using ModelCheck = void (*)(const DocumentFacts& facts, const ModelDescription& model,
                            RuleReport& report);

/// A rule with its check; rules of the vocabulary have neither, since one walk serves them all.
struct AuditRule {
    Rule rule;
    TreeCheck tree = nullptr;
    ModelCheck model = nullptr;
    /// A fault of this rule is a notice in the older form, whose reader passes over it on purpose.
    bool noticeInOlderForm = false;
};

// The tables of rules by subject, in the order in which they are told.
std::span<const AuditRule> VocabularyRules();
std::span<const AuditRule> CellRules();
std::span<const AuditRule> FamilyRules();
std::span<const AuditRule> BaselineRules();
std::span<const AuditRule> ContrastRules();
std::span<const AuditRule> FieldRules();
std::span<const AuditRule> TransformationRules();
std::span<const AuditRule> ExtensionRules();

/// Walks over a document of either form and tells what isn't its vocabulary, under the rules of
/// VocabularyRules() that have no check of their own. `cells`, if any, are read on the way.
void LookAtVocabulary(Element root,
                      const std::function<void(const Rule& rule, const Detail& detail)>& tell,
                      CovarianceCells* cells = nullptr);

/// True for the rules of names that are another one's misspelling.
bool IsMisspeltName(const Rule& rule);

/// Every rule of the audit.
std::vector<const AuditRule*> AllAuditRules();
/// The rule of that name; null when there is none.
const Rule* FindAuditRule(std::string_view name);

/// Looks for what a document may not pass over in silence: in its tree, and in the finished model.
/// Takes time and memory that grow with the document's size alone.
///
/// Order   LookAtNames(), which may be left out, LookAtTree(), LookAtModel(). TreeChanged() between
///         the first two where anything but what elements and attributes are called was rewritten.
/// Threads one thread at a time.
class DocumentAudit {
public:
    /// Faults of the allowed rules become notices. `document` outlives the audit.
    DocumentAudit(const Document& document, std::span<const std::string> allowed,
                  Findings& findings);

    /// The names of the tree, before the adapter adds what a misspelt one seems to leave out;
    /// prefixes and version are put right by then.
    void LookAtNames();
    void TreeChanged() { cells_.Forget(); }
    /// All the rest of the tree once the adapter is done, and the names unless that was before.
    void LookAtTree();
    void LookAtModel(const ModelDescription& model);

private:
    Answer AnswerOf(const Rule& rule, bool isNoticeInOlderForm = false) const;

    const Document& document_;
    std::vector<std::string> allowed_;
    Findings& findings_;
    DocumentFacts facts_;
    CovarianceCells cells_;
    /// Elements with a misspelt attribute, and the name that is meant.
    std::vector<std::pair<Element, std::string>> misspelt_;
    bool sawNames_ = false;
};

}  // namespace MCVelscore_850

#endif
