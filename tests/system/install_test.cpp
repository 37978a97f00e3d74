// An installed tree is whole and runs from wherever it lies.

#include <filesystem>

#include <gtest/gtest.h>

#include "tests/system/runcommand.h"

namespace MCVelscore_850 {
namespace {

TEST(Install, TreeRunsAfterItWasMoved)
{
    const ScratchFolder folder;
    const std::string installed = folder.Path("installed");
    const Finished install =
        RunProgram({VELSCORE_CMAKE, "--install", VELSCORE_BUILD, "--prefix", installed});
    ASSERT_EQ(install.exitCode, 0) << install.err;
    const std::string moved = folder.Path("moved");
    std::filesystem::rename(installed, moved);
    const std::string model = DataFile("cases/lm-swiss/model.pmml");
    const std::string cases = DataFile("cases/lm-swiss/input.csv");
    const Finished run = RunProgram({moved + "/bin/velscore", "score", model, cases});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, RunVelscore({"score", model, cases}).out);
}

}  // namespace
}  // namespace MCVelscore_850
