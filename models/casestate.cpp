#include "models/casestate.h"

namespace MCVelscore_850 {

void CaseState::SettleAs(const ScoringState& other)
{
    const auto& settled = static_cast<const CaseState&>(other);
    betaRow = settled.betaRow;
    references = settled.references;
    hasReferences = settled.hasReferences;
}

void CaseState::Unsettle() { SettleAs(CaseState()); }

}  // namespace MCVelscore_850
