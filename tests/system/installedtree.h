#ifndef VELSCORE_TESTS_SYSTEM_INSTALLEDTREE_H
#define VELSCORE_TESTS_SYSTEM_INSTALLEDTREE_H

#include <string>
#include <vector>

#include "tests/system/runcommand.h"

namespace MCVelscore_850 {

/// The build, installed and then moved: the folder that holds bin, lib and the rest. Made once a
/// process, and only read.
const std::string& InstalledTree();

/// The blocks of a page that are marked as of a language, in their order.
std::vector<std::string> BlocksOf(const std::string& page, const std::string& language);

/// Runs the lines of a shell in a folder, as somebody who has the installed tree does: its
/// libraries are where compiler, CMake, pkg-config and loader look, the project's sources aren't.
/// The first line that fails ends it.
Finished FollowSteps(const std::string& steps, const std::string& folder);

}  // namespace MCVelscore_850

#endif
