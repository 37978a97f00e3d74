// Output that can't be written, readers that go away, interrupts: whole rows, always.

#include <csignal>

#include <gtest/gtest.h>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

class Streams : public testing::Test {
protected:
    Streams() : model_(folder_.Write("model.pmml", TestModel().Text())) {}
    static std::string Rows(int count)
    {
        std::string text;
        for (int i = 0; i < count; ++i) text += std::to_string(i) + ".5,m\n";
        return text;
    }
    // More than pipes and buffers hold: scores of over 1 MiB.
    std::string LongTable() { return folder_.Write("long.csv", "x,sex\n" + Rows(50000)); }

    static void ExpectWholeRows(const std::string& out)
    {
        ASSERT_FALSE(out.empty());
        EXPECT_EQ(out.back(), '\n');
        for (const auto& row : ParseCsv(out).rows) ASSERT_EQ(row.size(), 6u);
    }

    ScratchFolder folder_;
    std::string model_;
};

TEST_F(Streams, ReaderOfThePipeMayGoAway)
{
    RunningVelscore running({"score", model_, LongTable()});
    EXPECT_TRUE(running.ReadOutput(10).starts_with("prediction"));
    running.CloseOutput();
    const Finished run = running.Finish();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.signal, 0);
    EXPECT_EQ(run.err, "");
}

TEST_F(Streams, HeadEndsQuietly)
{
    const Finished run = RunProgram({"/bin/sh", "-c", "\"$0\" score \"$1\" \"$2\" | head -n 2",
                                     VELSCORE_COMMAND, model_, LongTable()});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(ParseCsv(run.out).Texts("prediction"), std::vector<std::string>{"12"});
    EXPECT_EQ(run.err, "");
    const Finished help =
        RunProgram({"/bin/sh", "-c", "\"$0\" help | head -n 1", VELSCORE_COMMAND});
    EXPECT_EQ(help.err, "");
}

TEST_F(Streams, FullDeviceEndsWithFour)
{
    const Finished run = RunVelscore({"score", model_, LongTable(), "-o", "/dev/full"});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_NE(run.err.find("/dev/full"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("whole rows written: 0"), std::string::npos) << run.err;
    const Finished redirected =
        RunProgram({"/bin/sh", "-c", "\"$0\" score \"$1\" \"$2\" > /dev/full", VELSCORE_COMMAND,
                    model_, LongTable()});
    EXPECT_EQ(redirected.exitCode, 4);
}

TEST_F(Streams, FullDiskLeavesWholeRows)
{
    // The shell's limit on the size of files stands for a disk of 64 KiB and a bit.
    const std::string out = folder_.Path("scores.csv");
    const Finished run =
        RunProgram({"/bin/sh", "-c", "ulimit -f 129; exec \"$0\" score \"$1\" \"$2\" -o \"$3\"",
                    VELSCORE_COMMAND, model_, LongTable(), out});
    EXPECT_EQ(run.exitCode, 4);
    const std::string written = ReadFile(out);
    ExpectWholeRows(written);
    const size_t rows = ParseCsv(written).rows.size();
    EXPECT_GT(rows, 100u);
    EXPECT_NE(run.err.find("whole rows written: " + std::to_string(rows)), std::string::npos)
        << run.err;
}

TEST_F(Streams, OutputInAFolderThatIsNotThereEndsWithFour)
{
    const Finished run = RunVelscore({"score", model_, LongTable(), "-o", "/nowhere/at/all.csv"});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_NE(run.err.find("/nowhere/at/all.csv"), std::string::npos) << run.err;
}

TEST_F(Streams, ClosedStandardOutputEndsWithFour)
{
    const Finished run = RunProgram({"/bin/sh", "-c", "exec \"$0\" score \"$1\" \"$2\" >&-",
                                     VELSCORE_COMMAND, model_, LongTable()});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_NE(run.err.find("standard output can't be written"), std::string::npos) << run.err;
}

TEST_F(Streams, ClosedStandardInputIsNoEmptyTable)
{
    const Finished run =
        RunProgram({"/bin/sh", "-c", "exec \"$0\" score \"$1\" <&-", VELSCORE_COMMAND, model_});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_NE(run.err.find("standard input can't be read"), std::string::npos) << run.err;
}

TEST_F(Streams, InterruptLeavesWholeRowsAndTellsHowMany)
{
    RunningVelscore running({"score", model_, "-"});
    ASSERT_TRUE(running.Write("x,sex\n" + Rows(1000) + "12"));  // and half a row
    running.AwaitInputTaken();
    running.Signal(SIGINT);
    const Finished run = running.Finish();
    EXPECT_EQ(run.exitCode, 130);
    ExpectWholeRows(run.out);
    const size_t rows = ParseCsv(run.out).rows.size();
    EXPECT_LE(rows, 1000u);
    EXPECT_NE(run.err.find("interrupted; whole rows written: " + std::to_string(rows)),
              std::string::npos)
        << run.err;
}

TEST_F(Streams, InterruptInsideAnOpenQuoteIsNoFaultOfTheTable)
{
    RunningVelscore running({"score", model_, "-"});
    ASSERT_TRUE(running.Write("x,sex\n" + Rows(10) + "12,\"m"));
    running.AwaitInputTaken();
    running.Signal(SIGINT);
    const Finished run = running.Finish();
    EXPECT_EQ(run.exitCode, 130);
    EXPECT_EQ(run.err.find("never closed"), std::string::npos) << run.err;
}

TEST_F(Streams, InterruptWhileScoringALongTable)
{
    const std::string out = folder_.Path("scores.csv");
    RunningVelscore running({"score", model_, "-", "-o", out});
    ASSERT_TRUE(running.Write("x,sex\n"));
    const std::string block = Rows(5000);
    for (int i = 0; i < 20; ++i) ASSERT_TRUE(running.Write(block));
    running.Signal(SIGINT);
    while (running.Write(block)) {
    }
    const Finished run = running.Finish();
    EXPECT_EQ(run.exitCode, 130);
    ExpectWholeRows(ReadFile(out));
}

TEST_F(Streams, MemoryStaysTheSameHoweverLongTheTable)
{
    RunningVelscore running({"score", model_, "-", "-o", "/dev/null"});
    ASSERT_TRUE(running.Write("x,sex\n"));
    const std::string block = Rows(10000);
    for (int i = 0; i < 5; ++i) ASSERT_TRUE(running.Write(block));
    running.AwaitInputTaken();
    const long early = running.PeakKilobytes();
    for (int i = 0; i < 25; ++i) ASSERT_TRUE(running.Write(block));
    running.AwaitInputTaken();
    const long late = running.PeakKilobytes();
    EXPECT_GT(early, 0);
    EXPECT_LT(late - early, 1024);
    // A sanitizer's own memory comes on top.
    EXPECT_LT(late, (kIsSanitized ? 512 : 64) * 1024);
    running.CloseInput();
    EXPECT_EQ(running.Finish().exitCode, 0);
}

}  // namespace
}  // namespace MCVelscore_850
