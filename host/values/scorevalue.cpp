#include "host/values/scorevalue.h"

namespace MCVelscore_850 {

ScoreValue::~ScoreValue() = default;

}  // namespace MCVelscore_850
