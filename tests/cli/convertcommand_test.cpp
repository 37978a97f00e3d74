#include <filesystem>

#include <gtest/gtest.h>

#include "tests/cli/inprocess.h"
#include "tests/readers/legacyparts.h"
#include "tests/scratchfolder.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

// y = 1 + 2 x + 3 w
class Convert : public testing::Test {
protected:
    const ScratchFolder folder_;
    const std::string old_ = folder_.Write("old.xml", LegacyParts().Text());
    const std::string new_ = folder_.Path("new.pmml");
};

TEST_F(Convert, WritesADocumentThatScoresTheSame)
{
    const Answered run = RunInProcess({"convert", old_, "-o", new_});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "");
    const std::string cases = "x,w\n1,1\n2,0.5\n";
    EXPECT_EQ(RunInProcess({"score", new_, "--prediction-only"}, cases).out,
              "prediction,status,status_field\n6,0,\n6.5,0,\n");
    EXPECT_EQ(RunInProcess({"convert", "-"}, LegacyParts().Text()).out, ReadFile(new_));
}

TEST_F(Convert, TellsWhatIsOther)
{
    LegacyParts parts;
    parts.cells = "<pp-cell parameter-name='bx' predictor-name='w' value='3'/>";
    folder_.Write("old.xml", parts.Text());
    const Answered run = RunInProcess({"convert", old_, "-o", new_});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(
        run.err.find("velscore: " + old_ + ": the pp-matrix doesn't say what the model computes"),
        0u)
        << run.err;
}

TEST_F(Convert, RefusesWithTheKindOfTheFailure)
{
    EXPECT_EQ(RunInProcess({"convert", old_, "-o", old_}).exitCode, 1);
    EXPECT_EQ(RunInProcess({"convert", folder_.Path("none.xml"), "-o", new_}).exitCode, 2);
    // what is published already has nothing to convert
    const std::string published = folder_.Write("m.pmml", TestModel().Text());
    EXPECT_EQ(RunInProcess({"convert", published, "-o", new_}).exitCode, 2);
    EXPECT_EQ(RunInProcess({"convert", old_, "-o", folder_.Path("no/new.pmml")}).exitCode, 4);
    EXPECT_FALSE(std::filesystem::exists(new_));
}

}  // namespace
}  // namespace MCVelscore_850
