#include "engine/documents/audit/documentaudit.h"

namespace MCVelscore_850 {

std::span<const AuditRule> TransformationRules() { return {}; }

}  // namespace MCVelscore_850
