#ifndef VELSCORE_ENGINE_DOCUMENTS_DOCUMENTRULES_H
#define VELSCORE_ENGINE_DOCUMENTS_DOCUMENTRULES_H

#include <vector>

#include "engine/documents/audit/finding.h"

namespace MCVelscore_850 {

/// Every rule by which a document is judged: the adapter's, then the audit's.
std::vector<const Rule*> AllRules();

}  // namespace MCVelscore_850

#endif
