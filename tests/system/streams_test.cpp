// Output that can't be written, readers that go away, interrupts: whole rows, always.

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

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

    // The temporary files in the folder.
    long Parts() const
    {
        const std::filesystem::directory_iterator files(folder_.Path());
        return std::count_if(begin(files), end(files), [](const auto& file) {
            return file.path().string().find(".part") != std::string::npos;
        });
    }
    // That a run left whole rows, at least `fewest`, and told how many and where: in the output
    // file, or beside it where that still holds "precious".
    void ExpectEndedEarly(const Finished& run, const std::string& out, bool partial,
                          size_t fewest) const
    {
        const size_t begin = run.err.find(", in " + out);
        ASSERT_NE(begin, std::string::npos) << run.err;
        const std::string place =
            run.err.substr(begin + 5, run.err.find_first_of(";\n", begin) - begin - 5);
        EXPECT_EQ(place == out, partial) << run.err;
        if (!partial) {
            EXPECT_EQ(ReadFile(out), "precious\n");
        }
        const std::string written = ReadFile(place);
        ExpectWholeRows(written);
        const size_t rows = ParseCsv(written).rows.size();
        EXPECT_GE(rows, fewest);
        EXPECT_NE(run.err.find(": " + std::to_string(rows) + ", in"), std::string::npos) << run.err;
        EXPECT_EQ(Parts(), partial ? 0 : 1);
        if (!partial) std::filesystem::remove(place);
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
    EXPECT_NE(run.err.find("whole rows written before that: 0"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("Make room"), std::string::npos) << run.err;
    const Finished redirected =
        RunProgram({"/bin/sh", "-c", "\"$0\" score \"$1\" \"$2\" > /dev/full", VELSCORE_COMMAND,
                    model_, LongTable()});
    EXPECT_EQ(redirected.exitCode, 4);
}

TEST_F(Streams, FullDiskLeavesWholeRows)
{
    // The shell's limit on the size of files stands for a disk of 64 KiB and a bit.
    const std::string out = folder_.Write("scores.csv", "precious\n");
    const std::string table = LongTable();
    for (const char* option : {"--quiet", "--partial"}) {
        const Finished run = RunProgram(
            {"/bin/sh", "-c", "ulimit -f 129; exec \"$0\" score \"$1\" \"$2\" -o \"$3\" \"$4\"",
             VELSCORE_COMMAND, model_, table, out, option});
        EXPECT_EQ(run.exitCode, 4);
        ExpectEndedEarly(run, out, std::string(option) == "--partial", 100);
    }
}

// Whatever ends a run early, the whole rows stay beside the output file, which keeps what it had;
// with --partial they take its place.
TEST_F(Streams, RefusedRowLeavesTheRowsBeforeItBesideTheOutputFile)
{
    const std::string out = folder_.Write("scores.csv", "precious\n");
    const std::string table = folder_.Write("torn.csv", "x,sex\n" + Rows(7) + "1,f,2\n");
    EXPECT_EQ(RunVelscore({"score", model_, table, "-o", folder_.Path("new.csv")}).exitCode, 3);
    EXPECT_FALSE(std::filesystem::exists(folder_.Path("new.csv")));
    for (const auto& file : std::filesystem::directory_iterator(folder_.Path())) {
        if (file.path().string().find("new.csv.part") != std::string::npos) {
            std::filesystem::remove(file);
        }
    }
    for (const bool partial : {false, true}) {
        std::vector<std::string> arguments{"score", model_, table, "-o", out};
        if (partial) arguments.push_back("--partial");
        const Finished run = RunVelscore(arguments);
        EXPECT_EQ(run.exitCode, 3);
        ExpectEndedEarly(run, out, partial, 7);
    }
}

TEST_F(Streams, RefusedFirstRowLeavesNothingBesideTheOutputFile)
{
    const std::string out = folder_.Write("scores.csv", "precious\n");
    const std::string table = folder_.Write("torn.csv", "x,sex\n1\n");
    for (const char* option : {"--quiet", "--partial"}) {
        EXPECT_EQ(RunVelscore({"score", model_, table, "-o", out, option}).exitCode, 3);
        EXPECT_EQ(ReadFile(out), "precious\n");
        EXPECT_EQ(Parts(), 0);
    }
}

TEST_F(Streams, KillLeavesTheOutputFileAsItWas)
{
    const std::string out = folder_.Write("scores.csv", "precious\n");
    RunningVelscore running({"score", model_, "-", "-o", out});
    ASSERT_TRUE(running.Write("x,sex\n" + Rows(20000)));
    running.AwaitInputTaken();
    running.Signal(SIGKILL);
    EXPECT_EQ(running.Finish().signal, SIGKILL);
    EXPECT_EQ(ReadFile(out), "precious\n");
}

TEST_F(Streams, WholeTableTakesThePlaceOfTheFileAndItsMode)
{
    namespace fs = std::filesystem;
    const std::string out = folder_.Write("scores.csv", "precious\n");
    fs::permissions(out, fs::perms(0640));
    fs::create_symlink("scores.csv", folder_.Path("link"));
    const std::string table = folder_.Write("cases.csv", "x,sex\n" + Rows(3));
    EXPECT_EQ(RunVelscore({"score", model_, table, "-o", folder_.Path("link")}).exitCode, 0);
    EXPECT_TRUE(fs::is_symlink(folder_.Path("link")));
    EXPECT_EQ(ParseCsv(ReadFile(out)).rows.size(), 3u);
    EXPECT_EQ(fs::status(out).permissions(), fs::perms(0640));
    EXPECT_EQ(Parts(), 0);
}

TEST_F(Streams, WhatIsNoRegularFileIsWrittenAsItIs)
{
    const std::string table = folder_.Write("cases.csv", "x,sex\n" + Rows(3));
    const Finished fifo =
        RunProgram({"/bin/sh", "-c",
                    "mkfifo \"$3\" && { cat \"$3\" & \"$0\" score \"$1\" \"$2\" -o \"$3\"; wait; }",
                    VELSCORE_COMMAND, model_, table, folder_.Path("fifo")});
    EXPECT_EQ(fifo.exitCode, 0) << fifo.err;
    EXPECT_EQ(ParseCsv(fifo.out).rows.size(), 3u);
    EXPECT_TRUE(std::filesystem::is_fifo(folder_.Path("fifo")));

    const std::string log = folder_.Write("log", "precious\n");
    const Finished appended =
        RunProgram({"/bin/sh", "-c", "exec \"$0\" score \"$1\" \"$2\" -o /dev/stdout >> \"$3\"",
                    VELSCORE_COMMAND, model_, table, log});
    EXPECT_EQ(appended.exitCode, 0) << appended.err;
    EXPECT_TRUE(ReadFile(log).starts_with("precious\nprediction,")) << ReadFile(log);
    EXPECT_EQ(Parts(), 0);
}

TEST_F(Streams, FolderThatTakesNoTemporaryFileEndsWithFourBeforeScoring)
{
    // The longest name that a file can have leaves no letter for a temporary one. The table's fault
    // would end with 3.
    const std::string table = folder_.Write("torn.csv", "x,sex\n1\n");
    const Finished run =
        RunVelscore({"score", model_, table, "-o", folder_.Path(std::string(255, 'a'))});
    EXPECT_EQ(run.exitCode, 4);
    EXPECT_NE(run.err.find("a temporary one"), std::string::npos) << run.err;
}

TEST_F(Streams, TableThatIsCutWhileItIsReadIsRefused)
{
    const std::string table = LongTable();
    const std::string fifo = folder_.Path("fifo");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    RunningVelscore running({"score", model_, table, "-o", fifo});
    // The header was read when the pipe is opened, and few rows are before somebody reads it.
    std::ifstream scores(fifo);
    std::filesystem::resize_file(table, ReadFile(table).find("\n30000.5,m") + 5);
    std::stringstream written;
    written << scores.rdbuf();
    const Finished run = running.Finish();
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_NE(run.err.find("changed its size while it was read"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("row 30001"), std::string::npos) << run.err;
    EXPECT_EQ(ParseCsv(written.str()).rows.size(), 30000u);
}

TEST_F(Streams, AFullDiskHasNoRowsWhereNoneAreWritten)
{
    for (const char* arguments : {"check \"$1\"", "check --json \"$1\"", "help", "help 90029",
                                  "inspect \"$1\"", "--help", "--version"}) {
        const Finished run =
            RunProgram({"/bin/sh", "-c", "exec \"$0\" " + std::string(arguments) + " > /dev/full",
                        VELSCORE_COMMAND, model_});
        EXPECT_EQ(run.exitCode, 4) << arguments;
        EXPECT_NE(run.err.find("Make room"), std::string::npos) << run.err;
        EXPECT_EQ(run.err.find("rows"), std::string::npos) << run.err;
    }
}

TEST_F(Streams, OutputInAFolderThatIsNotThereOrOntoOneEndsWithFour)
{
    for (const std::string& out : {std::string("/nowhere/at/all.csv"), folder_.Path()}) {
        const Finished run = RunVelscore({"score", model_, LongTable(), "-o", out});
        EXPECT_EQ(run.exitCode, 4);
        EXPECT_NE(run.err.find(out), std::string::npos) << run.err;
        EXPECT_NE(run.err.find("what to do: Name a file"), std::string::npos) << run.err;
        EXPECT_EQ(run.err.find("room"), std::string::npos) << run.err;
    }
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
    const std::string out = folder_.Write("scores.csv", "precious\n");
    RunningVelscore running({"score", model_, "-", "-o", out});
    ASSERT_TRUE(running.Write("x,sex\n"));
    const std::string block = Rows(5000);
    for (int i = 0; i < 20; ++i) ASSERT_TRUE(running.Write(block));
    running.Signal(SIGINT);
    while (running.Write(block)) {
    }
    const Finished run = running.Finish();
    EXPECT_EQ(run.exitCode, 130);
    ExpectEndedEarly(run, out, false, 1);
}

TEST_F(Streams, MemoryStaysTheSameHoweverLongTheTable)
{
    for (const char* threads : {"1", "4"}) {
        RunningVelscore running({"score", model_, "-", "-o", "/dev/null", "--threads", threads});
        ASSERT_TRUE(running.Write("x,sex\n"));
        const std::string block = Rows(10000);
        // Until each block that may be under way has its memory.
        for (int i = 0; i < 30; ++i) ASSERT_TRUE(running.Write(block));
        running.AwaitInputTaken();
        const long early = running.PeakKilobytes();
        for (int i = 0; i < 60; ++i) ASSERT_TRUE(running.Write(block));
        running.AwaitInputTaken();
        const long late = running.PeakKilobytes();
        EXPECT_GT(early, 0);
        // Which of several threads takes the next block, and its memory, is chance.
        if (threads == std::string("1")) {
            EXPECT_LT(late - early, 1024);
        }
        // A sanitizer's own memory comes on top, or the counters of coverage.
        constexpr bool isCounted =
            std::string_view(VELSCORE_CXX_FLAGS).find("-fcoverage") != std::string_view::npos;
        EXPECT_LT(late, (kIsSanitized ? 512 : isCounted ? 64 : 32) * 1024);
        running.CloseInput();
        EXPECT_EQ(running.Finish().exitCode, 0);
    }
}

}  // namespace
}  // namespace MCVelscore_850
