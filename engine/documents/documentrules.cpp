#include "engine/documents/documentrules.h"

#include <fmt/format.h>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/documentadapter.h"
#include "engine/messages/suggestions.h"

namespace MCVelscore_850 {

std::vector<const Rule*> AllRules()
{
    std::vector<const Rule*> rules = AdapterRules();
    for (const AuditRule* rule : AllAuditRules()) rules.push_back(&rule->rule);
    return rules;
}

std::string WhyNotAllowed(const std::string& name)
{
    std::vector<std::string> faults;
    for (const Rule* rule : AllRules()) {
        const bool refuses = rule->answer == Answer::Fault;
        if (refuses) faults.emplace_back(rule->name);
        if (rule->name != name) continue;
        return refuses ? "" : "that rule refuses no document, so there is nothing to allow";
    }
    const std::string meant = SuggestWord(name, faults);
    return fmt::format("no rule has that name; velscore check tells it behind each fault{}{}",
                       meant.empty() ? "" : ". ", meant);
}

}  // namespace MCVelscore_850
