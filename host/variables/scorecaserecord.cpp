#include "host/variables/scorecaserecord.h"

namespace MCVelscore_850 {

ScoreCaseRecord::~ScoreCaseRecord() = default;

}  // namespace MCVelscore_850
