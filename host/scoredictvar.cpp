#include "host/scoredictvar.h"

#include "host/catencoder.h"

namespace MCVelscore_850 {

ScoreDictVar::~ScoreDictVar() = default;
CatEncoder::~CatEncoder() = default;

}  // namespace MCVelscore_850
