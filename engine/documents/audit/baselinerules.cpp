#include "engine/documents/audit/documentaudit.h"

namespace MCVelscore_850 {

std::span<const AuditRule> BaselineRules() { return {}; }

}  // namespace MCVelscore_850
