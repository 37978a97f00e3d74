// Compressed tables, made by the commands gzip and zstd.

#include <csignal>

#include <gtest/gtest.h>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

class PackedTables : public testing::Test {
protected:
    PackedTables()
        : model_(folder_.Write("model.pmml", TestModel().Text())),
          table_(folder_.Write("cases.csv", "x,sex\n" + Rows(0, 30000)))
    {}
    static std::string Rows(int first, int count)
    {
        std::string text;
        for (int i = first; i < first + count; ++i) text += std::to_string(i) + ".5,m\n";
        return text;
    }
    // What a shell's line prints; $0 is the command, $1 the model, $2 the table.
    Finished Shell(const std::string& line) const
    {
        return RunProgram({"/bin/sh", "-c", line, VELSCORE_COMMAND, model_, table_});
    }
    // The table as one of these commands packs it.
    std::string Packed(const std::string& command) const
    {
        const Finished run = Shell(command + " <\"$2\"");
        EXPECT_EQ(run.exitCode, 0) << command << ": " << run.err;
        EXPECT_LT(run.out.size(), ReadFile(table_).size() + 100) << command;
        return run.out;
    }

    ScratchFolder folder_;
    std::string model_;
    std::string table_;
};

TEST_F(PackedTables, GiveTheScoresOfThePlainTable)
{
    const Finished plain = RunVelscore({"score", model_, table_});
    ASSERT_EQ(plain.exitCode, 0) << plain.err;
    ASSERT_EQ(ParseCsv(plain.out).rows.size(), 30000u);
    const char* const kCommands[] = {
        "gzip",
        "gzip -1",
        "gzip -9",
        "zstd -q",
        "zstd -q -19",
        "zstd -q -1 -T2 -B50000",
        "zstd -q --long=27",
        "zstd -q --no-check",
        "split -b 100000 --filter='gzip'",
        "split -b 100000 --filter='zstd -q'",
    };
    for (const char* command : kCommands) {
        // Whatever it is called.
        const std::string file = folder_.Write("packed.csv", Packed(command));
        const Finished run = RunVelscore({"score", model_, file});
        EXPECT_EQ(run.exitCode, 0) << command << ": " << run.err;
        EXPECT_TRUE(run.out == plain.out) << command;
        EXPECT_EQ(run.err, plain.err) << command;
        const Finished piped = Shell(std::string(command) + " <\"$2\" | \"$0\" score \"$1\" -");
        EXPECT_EQ(piped.exitCode, 0) << command << ": " << piped.err;
        EXPECT_TRUE(piped.out == plain.out) << command;
    }
}

TEST_F(PackedTables, CutOnesGiveTheRowsBeforeTheCut)
{
    const std::string whole = RunVelscore({"score", model_, table_}).out;
    for (const char* command : {"gzip", "zstd -q -B100000"}) {
        const std::string packed = Packed(command);
        const std::string file = folder_.Write("cut.csv.gz", packed.substr(0, packed.size() - 3));
        const Finished run = RunVelscore({"score", model_, file});
        EXPECT_EQ(run.exitCode, 3) << command;
        EXPECT_NE(run.err.find("cut.csv.gz is compressed by "), std::string::npos) << run.err;
        EXPECT_NE(run.err.find("ends too early"), std::string::npos) << run.err;
        EXPECT_NE(run.err.find("whole rows written before that: 30000\n"), std::string::npos)
            << run.err;
        EXPECT_TRUE(run.out == whole) << command;
    }
}

TEST_F(PackedTables, InterruptIsNoCut)
{
    const std::string packed = Packed("gzip");
    RunningVelscore running({"score", model_, "-"});
    ASSERT_TRUE(running.Write(packed.substr(0, packed.size() / 2)));
    running.AwaitInputTaken();
    running.Signal(SIGINT);
    const Finished run = running.Finish();
    EXPECT_EQ(run.exitCode, 130);
    EXPECT_NE(run.err.find("interrupted; whole rows written: "), std::string::npos) << run.err;
    EXPECT_EQ(run.err.find("too early"), std::string::npos) << run.err;
}

TEST_F(PackedTables, MayBeRecords)
{
    const std::string few =
        folder_.Write("few.csv", "y,x,sex\n" + std::string("1,1.5,m\n2,2.5,f\n"));
    const std::string packed = folder_.Path("few.csv.gz");
    ASSERT_EQ(RunProgram({"/bin/sh", "-c", "gzip -c \"$0\" >\"$1\"", few, packed}).exitCode, 0);
    const Finished plain = RunVelscore({"verify", model_, "--emit", few});
    const Finished run = RunVelscore({"verify", model_, "--emit", packed});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, plain.out);
    EXPECT_EQ(RunVelscore({"verify", model_, "--emit", packed, "-o", packed}).exitCode, 1);
}

}  // namespace
}  // namespace MCVelscore_850
