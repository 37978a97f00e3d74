#include "host/variables/scoredictvar.h"

#include "host/variables/catencoder.h"

namespace MCVelscore_850 {

ScoreDictVar::~ScoreDictVar() = default;
CatEncoder::~CatEncoder() = default;

}  // namespace MCVelscore_850
