#include "engine/documents/documentfix.h"

#include <algorithm>
#include <utility>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/audit/mending.h"
#include "engine/documents/documentadapter.h"
#include "engine/documents/documenttree.h"
#include "engine/documents/loadedmodel.h"
#include "engine/documents/treewriting.h"
#include "host/documents/veltranscoder.h"
#include "host/messages/vsexception.h"

namespace MCVelscore_850 {

namespace {

// A mended name may show what else is to be mended; no document needs as many rounds as this.
constexpr int kMostRounds = 8;

const std::string kXmlns = "xmlns";
constexpr std::string_view kPmmlNamespace = "http://www.dmg.org/PMML";

class Fixing {
public:
    explicit Fixing(Document& document) : document_(document) {}

    FixedDocument Run()
    {
        // Names first: by them the adapter decides what it reads.
        Take(AdaptNames(document_));
        MendFindings(&DocumentAudit::LookAtNames);
        for (int round = 0; round < kMostRounds; ++round) {
            const size_t before = fixed_.changes.size();
            Take(AdaptDocument(document_));
            MendFindings(&DocumentAudit::LookAtTree);
            if (fixed_.changes.size() == before) break;
        }
        DeclareNamespace();
        fixed_.text = TreeText(*document_.GetTree().dom, TreeForm::AsItIs);
        return std::move(fixed_);
    }

private:
    void Told(const Rule& rule, const DocumentPlace& place, const std::string& done)
    {
        Finding finding;
        finding.rule = &rule;
        finding.place = place;
        finding.text = done;
        fixed_.changes.push_back(finding.ToString());
        auto& rules = fixed_.rules;
        if (std::find(rules.begin(), rules.end(), rule.name) == rules.end()) {
            rules.push_back(rule.name);
        }
    }

    void Take(const std::vector<Adaptation>& adaptations)
    {
        for (const Adaptation& adaptation : adaptations) {
            if (adaptation.rule->answer != Answer::Adapted) continue;
            std::string done = adaptation.change;
            // What the reading of the document as it was takes care of.
            if (adaptation.rotatedTarget) done += "; results now come in this order";
            if (!adaptation.listedByCells.empty()) done += "; add the reference category";
            Told(*adaptation.rule, adaptation.place, done);
        }
    }

    void MendFindings(void (DocumentAudit::*look)())
    {
        std::vector<OpenMend> mends;
        Findings findings;
        findings.CollectMends(&mends);
        DocumentAudit audit(document_, {}, findings);
        (audit.*look)();
        for (const Mended& mended : ApplyMends(std::move(mends))) {
            Told(*mended.rule, mended.place, mended.what);
        }
    }

    // Elements that lost their prefix are in the default namespace now.
    void DeclareNamespace()
    {
        const Element root = document_.Root();
        if (root.Has(kXmlns)) return;
        std::string uri;
        root.ForEachAttribute([&uri](Element::RawText name, Element::RawText text) {
            const std::string declared = Utf8FromXml(text.data());
            if (Utf8FromXml(name.data()).starts_with(kXmlns + ":") &&
                declared.starts_with(kPmmlNamespace)) {
                uri = declared;
            }
        });
        if (!uri.empty()) root.SetText(kXmlns, uri);
    }

    Document& document_;
    FixedDocument fixed_;
};

}  // namespace

FixedDocument FixDocument(Document& document)
{
    try {
        return WithinMemory([&] { return Fixing(document).Run(); });
    } catch (const VSException& refusal) {
        throw DocumentFailure(refusal, document.File());
    }
}

}  // namespace MCVelscore_850
