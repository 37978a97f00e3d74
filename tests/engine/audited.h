#ifndef VELSCORE_TESTS_ENGINE_AUDITED_H
#define VELSCORE_TESTS_ENGINE_AUDITED_H

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/documentadapter.h"
#include "engine/documents/documentloader.h"

namespace MCVelscore_850 {

// What is found in the tree of a document: by the adapter, then by the audit, as loading a model
// does it. What the reader would say is not part of it.
struct Audited {
    explicit Audited(const std::string& text, std::vector<std::string> allowed = {})
    {
        Document document = LoadDocumentText(text, "m.pmml");
        DocumentAudit audit(document, allowed, findings);
        Note(AdaptNames(document));
        audit.LookAtNames();
        const std::vector<Adaptation> adaptations = AdaptDocument(document);
        if (!adaptations.empty()) audit.TreeChanged();
        Note(adaptations);
        audit.LookAtTree();
        findings.Sort();
    }

    // The names of the rules that found something, in order of place, one for each finding.
    std::string Rules() const { return Joined(std::nullopt); }
    std::string Rules(Answer answer) const { return Joined(answer); }
    // The first finding of a rule; one without a rule where there is none.
    Finding Of(std::string_view rule) const
    {
        const auto found =
            std::find_if(findings.Kept().begin(), findings.Kept().end(),
                         [rule](const Finding& finding) { return finding.rule->name == rule; });
        return found == findings.Kept().end() ? Finding() : *found;
    }
    bool Has(std::string_view rule) const { return findings.CountOf(rule) > 0; }

    Findings findings;

private:
    void Note(const std::vector<Adaptation>& adaptations)
    {
        for (const Adaptation& adaptation : adaptations) {
            findings.AddAdapted(*adaptation.rule, adaptation.place, adaptation.change);
        }
    }
    std::string Joined(std::optional<Answer> answer) const
    {
        std::string names;
        for (const Finding& finding : findings.Kept()) {
            if (answer && finding.answer != *answer) continue;
            names += (names.empty() ? "" : " ") + std::string(finding.rule->name);
        }
        return names;
    }
};

}  // namespace MCVelscore_850

#endif
