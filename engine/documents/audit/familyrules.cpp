#include "engine/documents/audit/documentaudit.h"

namespace MCVelscore_850 {

std::span<const AuditRule> FamilyRules() { return {}; }

}  // namespace MCVelscore_850
