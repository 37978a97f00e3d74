#include "host/model/scoringstate.h"

namespace MCVelscore_850 {

ScoringState::~ScoringState() = default;

}  // namespace MCVelscore_850
