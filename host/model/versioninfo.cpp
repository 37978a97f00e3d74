#include "host/model/versioninfo.h"

namespace MCVelscore_850 {

ScoreVersionInfo::~ScoreVersionInfo() = default;
VersionInfo::~VersionInfo() = default;

}  // namespace MCVelscore_850
