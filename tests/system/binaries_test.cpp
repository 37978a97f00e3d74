// How the command and the libraries are compiled and linked: what a defect of memory could make use
// of.

#include <sstream>

#include <gtest/gtest.h>

#include "tests/system/runcommand.h"

namespace MCVelscore_850 {
namespace {

class Binaries : public testing::TestWithParam<const char*> {
protected:
    // The lines of `readelf OPTION` that name something.
    static std::string Lines(const std::string& option, const std::string& naming)
    {
        const std::string binary = std::string(VELSCORE_BUILD "/") + GetParam();
        const Finished run = RunProgram({"/usr/bin/readelf", "-W", option, binary});
        EXPECT_EQ(run.exitCode, 0) << run.err;
        std::istringstream all(run.out);
        std::string lines;
        for (std::string line; std::getline(all, line);) {
            if (line.find(naming) != std::string::npos) lines += line + "\n";
        }
        return lines;
    }
};

TEST_P(Binaries, LieAtAnyAddress)
{
    EXPECT_NE(Lines("-h", "Type:").find("DYN"), std::string::npos);
    EXPECT_EQ(Lines("-d", "TEXTREL"), "");
}

TEST_P(Binaries, KeepNoTableOfFunctionsThatCanBeWrittenTo)
{
    EXPECT_NE(Lines("-l", "GNU_RELRO"), "");
    EXPECT_NE(Lines("-d", "(FLAGS_1)").find("NOW"), std::string::npos);
}

TEST_P(Binaries, HaveAStackThatIsNotRun)
{
    const std::string stack = Lines("-l", "GNU_STACK");
    EXPECT_NE(stack.find(" RW "), std::string::npos) << stack;
}

// An empty entry means the folder that a program is run in, where anybody may have put a library.
TEST_P(Binaries, LookForLibrariesBesideThemselvesAlone)
{
    const std::string line = Lines("-d", "(RUNPATH)") + Lines("-d", "(RPATH)");
    if (line.empty()) return;  // in the system's folders
    EXPECT_NE(line.find("[$ORIGIN/../lib]"), std::string::npos) << line;
}

// Sanitizers do this in their own way.
#ifdef VELSCORE_HARDENED
TEST_P(Binaries, EndWhereTheStackWasWrittenOver)
{
    EXPECT_NE(Lines("--dyn-syms", "__stack_chk_fail"), "");
}

// The plug-in's libraries have no call with a buffer to check.
class BinariesWithBuffers : public Binaries {};

TEST_P(BinariesWithBuffers, CallTheCheckedFunctionsOfTheCLibrary)
{
    EXPECT_NE(Lines("--dyn-syms", "_chk@GLIBC"), "");
}

INSTANTIATE_TEST_SUITE_P(Of, BinariesWithBuffers,
                         testing::Values("bin/velscore", "lib/libvelscore.so"),
                         [](const auto& each) { return "Number" + std::to_string(each.index); });

#ifdef __x86_64__
// The instruction that a jump has to land on.
TEST_P(Binaries, MarkWhereAJumpMayLand)
{
    const std::string binary = std::string(VELSCORE_BUILD "/") + GetParam();
    const Finished run = RunProgram({"/usr/bin/objdump", "-d", "--no-show-raw-insn", binary});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_NE(run.out.find("endbr64"), std::string::npos);
}
#endif
#endif

INSTANTIATE_TEST_SUITE_P(Of, Binaries,
                         testing::Values("bin/velscore", "lib/libvelregression850.so",
                                         "lib/libvelscore850r.so", "lib/libvelscore.so"),
                         [](const auto& each) { return "Number" + std::to_string(each.index); });

}  // namespace
}  // namespace MCVelscore_850
