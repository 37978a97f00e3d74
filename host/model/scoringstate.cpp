#include "host/model/scoringstate.h"

namespace MCVelscore_850 {

ScoringState::~ScoringState() = default;

void ScoringState::SettleAs(const ScoringState&) {}

}  // namespace MCVelscore_850
