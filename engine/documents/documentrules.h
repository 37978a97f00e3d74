#ifndef VELSCORE_ENGINE_DOCUMENTS_DOCUMENTRULES_H
#define VELSCORE_ENGINE_DOCUMENTS_DOCUMENTRULES_H

#include <string>
#include <vector>

#include "engine/documents/audit/finding.h"

namespace MCVelscore_850 {

/// Every rule by which a document is judged: the adapter's, then the audit's.
std::vector<const Rule*> AllRules();

/// Why the faults of a rule of that name can't be let pass: none is called so, or it refuses
/// nothing. Empty where they can.
std::string WhyNotAllowed(const std::string& name);

}  // namespace MCVelscore_850

#endif
