// An installed tree is whole and runs from wherever it lies.

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/system/runcommand.h"

namespace MCVelscore_850 {
namespace {

// The build, installed and then moved.
std::string InstalledTree(const ScratchFolder& folder)
{
    const std::string installed = folder.Path("installed");
    const Finished install =
        RunProgram({VELSCORE_CMAKE, "--install", VELSCORE_BUILD, "--prefix", installed});
    EXPECT_EQ(install.exitCode, 0) << install.err;
    std::string moved = folder.Path("moved");
    std::filesystem::rename(installed, moved);
    return moved;
}

TEST(Install, TreeRunsAfterItWasMoved)
{
    const ScratchFolder folder;
    const std::string moved = InstalledTree(folder);
    const std::string model = DataFile("cases/lm-swiss/model.pmml");
    const std::string cases = DataFile("cases/lm-swiss/input.csv");
    const Finished run = RunProgram({moved + "/bin/velscore", "score", model, cases});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, RunVelscore({"score", model, cases}).out);
}

TEST(Install, TreeHasAManualPageForEachCommand)
{
    const ScratchFolder folder;
    const std::filesystem::path pages = InstalledTree(folder) + "/share/man/man1";
    for (const char* page :
         {"velscore.1", "velscore-score.1", "velscore-curve.1", "velscore-check.1",
          "velscore-inspect.1", "velscore-verify.1", "velscore-convert.1", "velscore-help.1"}) {
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
    const ScratchFolder folder;
    const std::string script =
        InstalledTree(folder) + "/share/bash-completion/completions/velscore";
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
    const std::string tree = InstalledTree(folder);
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
    const std::string build = folder.Path("build");
    const Finished configured =
        RunProgram({VELSCORE_CMAKE, "-S", folder.Path(), "-B", build, "-DCMAKE_PREFIX_PATH=" + tree,
                    "-DCMAKE_CXX_COMPILER=" VELSCORE_CXX, "-DCMAKE_CXX_FLAGS=" VELSCORE_CXX_FLAGS});
    ASSERT_EQ(configured.exitCode, 0) << configured.out << configured.err;
    const Finished built = RunProgram({VELSCORE_CMAKE, "--build", build});
    ASSERT_EQ(built.exitCode, 0) << built.out << built.err;
    // Student's t, two-sided 5 per cent, 18 degrees of freedom, as tables have it
    EXPECT_EQ(RunProgram({build + "/stranger"}).out, "2.1009\n");
}

}  // namespace
}  // namespace MCVelscore_850
