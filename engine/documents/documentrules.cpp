#include "engine/documents/documentrules.h"

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/documentadapter.h"

namespace MCVelscore_850 {

std::vector<const Rule*> AllRules()
{
    std::vector<const Rule*> rules = AdapterRules();
    for (const AuditRule* rule : AllAuditRules()) rules.push_back(&rule->rule);
    return rules;
}

}  // namespace MCVelscore_850
