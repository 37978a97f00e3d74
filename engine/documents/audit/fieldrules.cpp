#include "engine/documents/audit/documentaudit.h"

namespace MCVelscore_850 {

std::span<const AuditRule> FieldRules() { return {}; }

}  // namespace MCVelscore_850
