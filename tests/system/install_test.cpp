// An installed tree is whole and runs from wherever it lies.

#include <filesystem>
#include <regex>

#include <gtest/gtest.h>

#include "tests/system/installedtree.h"

namespace MCVelscore_850 {
namespace {

TEST(Install, TreeRunsAfterItWasMoved)
{
    const std::string moved = InstalledTree();
    const std::string model = DataFile("cases/lm-swiss/model.pmml");
    const std::string cases = DataFile("cases/lm-swiss/input.csv");
    const Finished run = RunProgram({moved + "/bin/velscore", "score", model, cases});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, RunVelscore({"score", model, cases}).out);
}

TEST(Install, TreeHasAManualPageForEachCommand)
{
    const std::filesystem::path pages = InstalledTree() + "/share/man/man1";
    for (const char* page : {"velscore.1", "velscore-score.1", "velscore-curve.1",
                             "velscore-check.1", "velscore-inspect.1", "velscore-verify.1",
                             "velscore-convert.1", "velscore-diff.1", "velscore-help.1"}) {
        EXPECT_TRUE(std::filesystem::exists(pages / page)) << page;
    }
    const std::string text =
        RunProgram({"/bin/sh", "-c", "cat " + (pages / "velscore-score.1").string()}).out;
    // an option by its help, and a sentence of docs/command.md
    EXPECT_NE(text.find("\\fB\\-\\-keep\\fR \\fIall|COLS\\fR"), std::string::npos);
    EXPECT_NE(text.find(".SH DESCRIPTION"), std::string::npos);
}

TEST(Install, BashCompletesCommandsOptionsAndTheirWords)
{
    const std::string script = InstalledTree() + "/share/bash-completion/completions/velscore";
    const auto complete = [&](const std::string& words, const std::string& at) {
        return RunProgram({"/bin/bash", "-c",
                           "source " + script + "; COMP_WORDS=(velscore " + words +
                               "); COMP_CWORD=" + at +
                               "; _velscore 2>/dev/null; echo ${COMPREPLY[@]}"})
            .out;
    };
    EXPECT_EQ(complete("ins", "1"), "inspect\n");
    EXPECT_EQ(complete("score --rej", "2"), "--rejects\n");
    EXPECT_EQ(complete("score --format js", "3"), "jsonl\n");
}

// A project of a stranger's, which knows nothing but the package's name.
TEST(Install, AStrangersProjectFindsTheStatistics)
{
    const ScratchFolder folder;
    folder.Write("CMakeLists.txt",
                 "cmake_minimum_required(VERSION 3.20)\n"
                 "project(stranger CXX)\n"
                 "find_package(velscore 0.1 REQUIRED)\n"
                 "add_executable(stranger stranger.cpp)\n"
                 "target_link_libraries(stranger velscore::stats)\n");
    folder.Write(
        "stranger.cpp",
        "#include <cstdio>\n"
        "#include <stats/mcdistfun.h>\n"
        "int main() { std::printf(\"%.4f\\n\", MCMath_850::MCDistFun::IdfT(0.975, 18)); }\n");
    const Finished run = FollowSteps(
        "{ cmake -S . -B build && cmake --build build; } >log || { cat log; exit 1; }\n"
        "build/stranger",
        folder.Path());
    EXPECT_EQ(run.exitCode, 0) << run.err;
    // Student's t, two-sided 5 per cent, 18 degrees of freedom, as tables have it
    EXPECT_EQ(run.out, "2.1009\n");
}

std::string Version()
{
    // its one place
    std::smatch found;
    const std::string text = ReadFile("CMakeLists.txt");
    EXPECT_TRUE(std::regex_search(text, found, std::regex(R"(VERSION (\d+\.\d+\.\d+) )")));
    return found.str(1);
}

TEST(Version, IsTheSameWhereverItIsSaid)
{
    const std::string version = Version();
    const std::string tree = InstalledTree();
    EXPECT_EQ(RunProgram({tree + "/bin/velscore", "--version"}).out, "velscore " + version + "\n");
    EXPECT_TRUE(std::filesystem::exists(tree + "/lib/libvelscore.so." + version));
    const ScratchFolder folder;
    folder.Write("version.c",
                 "#include <stdio.h>\n#include <velscore.h>\n"
                 "int main(void) { return puts(velscore_version()) < 0; }\n");
    folder.Write("CMakeLists.txt",
                 "cmake_minimum_required(VERSION 3.20)\nproject(stranger CXX)\n"
                 "find_package(velscore " +
                     version + " EXACT REQUIRED)\n");
    const Finished told = FollowSteps(
        "pkg-config --modversion velscore velscore-stats\n"
        "cc version.c -o version $(pkg-config --cflags --libs velscore)\n./version\n"
        "cmake -S . -B build >log",
        folder.Path());
    EXPECT_EQ(told.exitCode, 0) << told.err;
    EXPECT_EQ(told.out, version + "\n" + version + "\n" + version + "\n");
    const std::string changes = ReadFile(tree + "/share/doc/velscore/CHANGELOG.md");
    const size_t newest = changes.find("\n## ");
    EXPECT_EQ(changes.substr(newest, version.size() + 5), "\n## " + version + "\n");
}

}  // namespace
}  // namespace MCVelscore_850
