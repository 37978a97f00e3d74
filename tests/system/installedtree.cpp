#include "tests/system/installedtree.h"

#include <filesystem>

#include <gtest/gtest.h>

namespace MCVelscore_850 {

namespace {

// A folder for the whole process, which holds the tree.
struct Installation {
    Installation()
    {
        const std::string installed = folder.Path("installed");
        const Finished install =
            RunProgram({VELSCORE_CMAKE, "--install", VELSCORE_BUILD, "--prefix", installed});
        EXPECT_EQ(install.exitCode, 0) << install.err;
        std::filesystem::rename(installed, tree);
    }

    ScratchFolder folder;
    std::string tree = folder.Path("moved");
};

}  // namespace

const std::string& InstalledTree()
{
    static const Installation installation;
    return installation.tree;
}

std::vector<std::string> BlocksOf(const std::string& page, const std::string& language)
{
    const std::string fence = "\n```";
    const std::string begin = fence + language + "\n";
    std::vector<std::string> blocks;
    for (size_t at = page.find(begin); at != std::string::npos; at = page.find(begin, at)) {
        at += begin.size();
        const size_t end = page.find(fence, at - 1);
        blocks.push_back(page.substr(at, end + 1 - at));
        at = end + fence.size();
    }
    return blocks;
}

Finished FollowSteps(const std::string& steps, const std::string& folder)
{
    // The compilers of the build, with its flags: a library that was built with a sanitizer needs
    // them, and in a program in C that sanitizer's part for C++ too. Their short names are
    // functions, which bash takes for any name.
    const std::string flags = VELSCORE_CXX_FLAGS;
    const bool isSanitized = flags.find("-fsanitize") != std::string::npos;
    const std::string flagsOfC =
        flags + (isSanitized ? " -fsanitize-link-c++-runtime -lstdc++" : "");
    const std::string preamble =
        "set -eu; cd '" + folder +
        "'\n"
        "export CC='" VELSCORE_CC "' CXX='" VELSCORE_CXX "' CFLAGS='" +
        flagsOfC + "' CXXFLAGS='" + flags +
        "'\n"
        "cc() { \"$CC\" $CFLAGS \"$@\"; }; c++() { \"$CXX\" $CXXFLAGS \"$@\"; }\n";
    const std::string tree = InstalledTree();
    return RunProgram({"/bin/bash", "-c", preamble + steps}, "",
                      {"CMAKE_PREFIX_PATH=" + tree, "PKG_CONFIG_PATH=" + tree + "/lib/pkgconfig",
                       "LD_LIBRARY_PATH=" + tree + "/lib"});
}

}  // namespace MCVelscore_850
