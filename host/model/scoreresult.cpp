#include "host/model/scoreresult.h"

namespace MCVelscore_850 {

ScoreResult::~ScoreResult() = default;
ScoreRegResult::~ScoreRegResult() = default;
ScoreClsResult::~ScoreClsResult() = default;

}  // namespace MCVelscore_850
