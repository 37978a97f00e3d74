#include "engine/documents/audit/documentaudit.h"

namespace MCVelscore_850 {

std::span<const AuditRule> ContrastRules() { return {}; }

}  // namespace MCVelscore_850
