// Several tables in one run, compressed output, and what batches use together.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

// The model is 1 + 2 x + 10 for m.
class Batch : public testing::Test {
protected:
    Batch()
        : model_(folder_.Write("model.pmml", TestModel().Text())),
          one_(folder_.Write("one.csv", "x,sex\n1,f\n2,m\n")),
          two_(folder_.Write("two.csv", "x,sex\n3,f\n"))
    {}
    Finished Score(const Texts& arguments, const std::string& input = "") const
    {
        Texts all{"score", model_, "--prediction-only"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        return RunVelscore(all, input);
    }
    // What a shell's line prints; $0 is the file.
    static std::string Shell(const std::string& line, const std::string& file)
    {
        const Finished run = RunProgram({"/bin/sh", "-c", line, file});
        EXPECT_EQ(run.exitCode, 0) << line << ": " << run.err;
        return run.out;
    }

    ScratchFolder folder_;
    std::string model_;
    std::string one_;
    std::string two_;
};

const std::string kScores = "prediction,status,status_field\n";

TEST_F(Batch, TablesGoOneAfterTheOtherIntoOneOutput)
{
    const std::string bare = folder_.Write("bare.csv", "x,sex\n");
    const Finished run = Score({one_, bare, two_, one_});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, kScores + "3,0,\n15,0,\n7,0,\n3,0,\n15,0,\n");
    EXPECT_EQ(run.err, "velscore: 5 of 5 cases scored\n");
}

TEST_F(Batch, StandardInputIsOneOfTheTables)
{
    const Finished run = Score({one_, "-", "--name-column", "from"}, "x,sex\n4,f\n");
    EXPECT_EQ(run.out, "from,prediction,status,status_field\n" + one_ + ",3,0,\n" + one_ +
                           ",15,0,\nstandard input,9,0,\n")
        << run.err;
    const Finished twice = Score({"-", one_, "-"}, "x,sex\n4,f\n");
    EXPECT_EQ(twice.exitCode, 1);
    EXPECT_NE(twice.err.find("standard input can be one of the tables once only"),
              std::string::npos)
        << twice.err;
}

TEST_F(Batch, TablesWithoutAHeaderAreAllOfThem)
{
    const std::string first = folder_.Write("first.csv", "f,1\n");
    const std::string second = folder_.Write("second.csv", "m,2");
    const Finished run = Score({first, second, "--no-header"});
    EXPECT_EQ(run.out, kScores + "3,0,\n15,0,\n") << run.err;
    const std::string wide = folder_.Write("wide.csv", "m,2,3\n");
    const Finished other = Score({first, wide, "--no-header"});
    EXPECT_EQ(other.exitCode, 3);
    EXPECT_NE(other.err.find("[269324]"), std::string::npos) << other.err;
}

TEST_F(Batch, NameColumnIsNoColumnOfTheResults)
{
    for (const char* taken : {"prediction", "status_field"}) {
        const Finished run = Score({one_, "--name-column", taken});
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_NE(run.err.find("which is a column of the results [269329]"), std::string::npos)
            << run.err;
    }
    // A kept column makes room.
    EXPECT_EQ(Score({two_, "--name-column", "x", "--keep", "x"}).out,
              "x,input.x,prediction,status,status_field\n" + two_ + ",3,7,0,\n");
    EXPECT_EQ(Score({two_, "--name-column", ""}).exitCode, 1);
}

struct OtherHeader {
    const char* header;
    const char* told;
};

TEST_F(Batch, TableOfOtherColumnsEndsTheRun)
{
    constexpr OtherHeader kRows[] = {
        {"sex,x", "has 'sex' where @ has 'x': column 1 of the tables differs [269324]"},
        {"x,Sex", "has 'Sex' where @ has 'sex': column 2 of the tables differs"},
        {"x", "has no column where @ has 'sex': column 2 of the tables differs"},
        {"x,sex,id", "has 'id' where @ has no column: column 3 of the tables differs"}};
    for (const OtherHeader& row : kRows) {
        const std::string other = folder_.Write("other.csv", std::string(row.header) + "\n");
        const Finished run = Score({one_, other, two_});
        EXPECT_EQ(run.exitCode, 3) << row.header;
        EXPECT_EQ(run.out, kScores + "3,0,\n15,0,\n") << row.header;
        std::string told = other + " " + row.told;
        told.replace(told.find('@'), 1, one_);
        EXPECT_NE(run.err.find(told), std::string::npos) << run.err;
        EXPECT_NE(run.err.find("whole rows written before that: 2\n"), std::string::npos);
    }
}

TEST_F(Batch, EmptyTableEndsTheRun)
{
    const std::string empty = folder_.Write("empty.csv", "");
    const Finished run = Score({one_, empty, two_});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_NE(run.err.find("empty.csv has no header: it is empty"), std::string::npos) << run.err;
    EXPECT_EQ(run.out, kScores + "3,0,\n15,0,\n");
}

TEST_F(Batch, TableThatCannotBeReadIsToldBeforeAnythingIsWritten)
{
    const std::string out = folder_.Write("scores.csv", "precious\n");
    constexpr struct {
        const char* table;
        const char* why;
    } kRows[] = {{"none.csv", "none.csv can't be read: No such file or directory [269301]"},
                 {".", "can't be read: Is a directory [269301]"}};
    for (const auto& [table, why] : kRows) {
        const Finished run = Score({one_, two_, folder_.Path(table), "-o", out});
        EXPECT_EQ(run.exitCode, 3);
        EXPECT_NE(run.err.find(why), std::string::npos) << run.err;
        EXPECT_EQ(run.err.find("whole rows"), std::string::npos) << run.err;
        EXPECT_EQ(ReadFile(out), "precious\n");
    }
}

TEST_F(Batch, PipeMayBeOneOfTheTables)
{
    const std::string pipe = folder_.Path("pipe");
    const std::string line =
        "mkfifo \"$0\" && (cat \"$1\" >\"$0\" & exec \"$2\" score \"$3\" "
        "\"$4\" \"$0\" --prediction-only)";
    const Finished run =
        RunProgram({"/bin/sh", "-c", line, pipe, one_, VELSCORE_COMMAND, model_, two_});
    EXPECT_EQ(run.out, kScores + "7,0,\n3,0,\n15,0,\n") << run.err;
}

TEST_F(Batch, OutputIsCompressedAsItsNameOrTheOptionSays)
{
    const std::string kGzip = "gzip -dc <\"$0\"";
    const std::string kZstd = "zstd -dcq <\"$0\"";
    const std::string kPlain = "cat \"$0\"";
    const std::vector<std::tuple<const char*, Texts, std::string>> kRows = {
        {"scores.csv.gz", {}, kGzip},
        {"scores.csv.zst", {}, kZstd},
        {"scores.csv", {}, kPlain},
        {"scores.csv", {"--compress", "gzip"}, kGzip},
        {"scores.gz", {"--compress", "zstd"}, kZstd},
        {"scores.gz", {"--compress", "none"}, kPlain}};
    for (const auto& [name, options, unpack] : kRows) {
        Texts arguments{one_, "-o", folder_.Path(name)};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Finished run = Score(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.err;
        EXPECT_EQ(Shell(unpack, folder_.Path(name)), kScores + "3,0,\n15,0,\n") << name;
    }
    const std::string packed = folder_.Write("stream", Score({one_, "--compress", "gzip"}).out);
    EXPECT_EQ(Shell(kGzip, packed), kScores + "3,0,\n15,0,\n");
    const Finished unknown = Score({one_, "--compress", "zip"});
    EXPECT_EQ(unknown.exitCode, 1);
    EXPECT_NE(unknown.err.find("'zip' is none of gzip, zstd, none. Did you mean 'gzip'?"),
              std::string::npos)
        << unknown.err;
}

// What a night's run may look like, every byte of it.
TEST_F(Batch, OptionsWorkTogether)
{
    const std::string monday = folder_.Write("monday.csv", "id,Sex,age\n1,f,1.25\n2,f\n3,m,\n");
    const std::string tuesday = folder_.Write("tuesday.csv", "id,Sex,age\n4,m,2\n5,q,2\n6,f,-9\n");
    Shell("gzip -n \"$0\"", monday);
    Shell("zstd -q --rm \"$0\"", tuesday);
    const std::string map = folder_.Write("names.txt", "x=age\nsex=Sex\n");
    const std::string out = folder_.Path("scores.csv.zst");
    const std::string rejects = folder_.Path("rejects.csv");
    const std::string summary = folder_.Path("summary.json");
    const Finished run = Score({monday + ".gz",
                                tuesday + ".zst",
                                "--name-column",
                                "day",
                                "--keep",
                                "all",
                                "--map",
                                "@" + map,
                                "--na",
                                "-9",
                                "--rejects",
                                rejects,
                                "--max-rejects",
                                "4",
                                "-o",
                                out,
                                "--summary",
                                summary,
                                "--out-delimiter",
                                "tab",
                                "--threads",
                                "3",
                                "--strict"});
    EXPECT_EQ(run.exitCode, 5);
    EXPECT_EQ(run.err,
              "velscore: 2 of 6 cases scored; 4 not scored: 3 with status 90029 (first: row 3 of " +
                  monday + ".gz, field x: empty), 1 with status 269053 (first: row 2 of " + monday +
                  ".gz)\n");
    const std::string first = monday + ".gz\t";
    const std::string second = tuesday + ".zst\t";
    EXPECT_EQ(Shell("zstd -dcq <\"$0\"", out),
              "day\tid\tSex\tage\tprediction\tstatus\tstatus_field\n" +  //
                  first + "1\tf\t1.25\t3.5\t0\t\n" +                     //
                  first + "\t\t\t\t269053\t\n" +                         //
                  first + "3\tm\t\t\t90029\tx\n" +                       //
                  second + "4\tm\t2\t15\t0\t\n" +                        //
                  second + "5\tq\t2\t\t90029\tsex\n" +                   //
                  second + "6\tf\t-9\t\t90029\tx\n");
    EXPECT_EQ(ReadFile(rejects),
              "file,row,byte_offset,column,code,class,text,record\n" +     //
                  monday + ".gz,2,20,,269304,too few fields,,\"2,f\"\n" +  //
                  monday + ".gz,3,24,x,90029,missing,,\"3,m,\"\n" +        //
                  tuesday + ".zst,2,17,sex,90029,invalid,q,\"5,q,2\"\n" +  //
                  tuesday + ".zst,3,23,x,90029,missing,-9,\"6,f,-9\"\n");
    const auto report = nlohmann::json::parse(ReadFile(summary));
    EXPECT_EQ(report["rows"], 6);
    EXPECT_EQ(report["rowsWritten"], 6);
    EXPECT_EQ(report["rejected"], 4);
    EXPECT_EQ(report["exitCode"], 5);
}

}  // namespace
}  // namespace MCVelscore_850
