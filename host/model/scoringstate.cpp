#include "host/model/scoringstate.h"

namespace MCVelscore_850 {

ScoringState::~ScoringState() = default;

void ScoringState::SettleAs(const ScoringState&) {}
void ScoringState::Unsettle() {}

}  // namespace MCVelscore_850
