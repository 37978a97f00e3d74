// Runs that end early, and others that go on with them: the bytes are those of one run.
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <thread>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

Arguments operator+(Arguments all, const Arguments& more)
{
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

class Resume : public testing::Test {
protected:
    Resume() : model_(folder_.Write("model.pmml", TestModel().Text())) {}

    // Some rows that can't be read, or have no score, in each 1,000.
    std::string Table(const std::string& name, int rows)
    {
        std::string text = "id,x,sex\n";
        for (int i = 0; i < rows; ++i) {
            text += std::to_string(i);
            text += i % 1000 == 17 ? ",1\n" : i % 1000 == 500 ? ",abc,m\n" : ",0.5,m\n";
        }
        return folder_.Write(name, text);
    }
    std::string Path(const std::string& name) const { return folder_.Path() + "/" + name; }
    // Whatever stands beside the named files: temporary ones and notes.
    Arguments Leftovers() const
    {
        Arguments names;
        for (const auto& file : fs::directory_iterator(folder_.Path())) {
            const std::string name = file.path().filename();
            if (name.find(".part") != std::string::npos || name.ends_with(".resume")) {
                names.push_back(name);
            }
        }
        return names;
    }
    void RemoveLeftovers() const
    {
        for (const std::string& name : Leftovers()) fs::remove(Path(name));
    }

    // How often something is tried at random; a release check asks for more.
    static int Trials(int usual)
    {
        const char* wanted = std::getenv("VELSCORE_TEST_TRIALS");
        return wanted == nullptr ? usual : std::atoi(wanted);
    }

    ScratchFolder folder_;
    std::string model_;
};

struct Kept {
    const char* name;
    const char* suffix;
    Arguments options;
};

class ResumedRun : public Resume, public testing::WithParamInterface<Kept> {};
INSTANTIATE_TEST_SUITE_P(
    Outputs, ResumedRun,
    testing::Values(Kept{"Plain", "", {"--keep", "id"}}, Kept{"Gzip", ".gz", {}},
                    Kept{"Zstd", ".zst", {"--columns", "prediction,status"}},
                    Kept{"JsonLines", ".jsonl", {"--keep", "id"}},
                    Kept{"NamedTables", "", {"--name-column", "file", "--digits", "5"}}),
    [](const auto& each) { return each.param.name; });

// Ends with 3 before the reject that would be one too many; the next run may have more.
TEST_P(ResumedRun, GivesTheBytesOfOneRun)
{
    const std::string suffix = GetParam().suffix;
    const Arguments run = Arguments{"score",
                                    model_,
                                    Table("a.csv", 60000),
                                    Table("b.csv", 30000),
                                    "--summary",
                                    Path("summary.json"),
                                    "--quiet"} +
                          GetParam().options;
    const auto into = [&](const std::string& name) {
        return Arguments{"-o", Path(name + suffix), "--rejects", Path(name + ".rejects")};
    };
    ASSERT_EQ(RunVelscore(run + into("whole")).exitCode, 0);
    const auto whole = nlohmann::json::parse(ReadFile(Path("summary.json")));

    for (const char* most : {"5", "60", "125", "170"}) {
        const Finished early =
            RunVelscore(run + into("out") + Arguments{"--resume", "--max-rejects", most});
        ASSERT_EQ(early.exitCode, 3) << early.err;
        EXPECT_NE(early.err.find("--resume would go on"), std::string::npos) << early.err;
        EXPECT_FALSE(fs::exists(Path("out" + suffix)));
        EXPECT_EQ(Leftovers().size(), 3u);  // two outputs and the note
    }
    const Finished last = RunVelscore(run + into("out") + Arguments{"--resume"});
    ASSERT_EQ(last.exitCode, 0) << last.err;
    EXPECT_EQ(ReadFile(Path("out" + suffix)), ReadFile(Path("whole" + suffix)));
    EXPECT_EQ(ReadFile(Path("out.rejects")), ReadFile(Path("whole.rejects")));
    EXPECT_TRUE(Leftovers().empty());
    auto summary = nlohmann::json::parse(ReadFile(Path("summary.json")));
    for (const char* count : {"rows", "scored", "notScored", "rejected", "rowsWritten"}) {
        EXPECT_EQ(summary[count], whole[count]) << count;
    }
}

TEST_F(Resume, OfCurvesGivesTheBytesOfOneRun)
{
    const std::string model = DataFile("cases/cox-veteran-strata/model.pmml");
    std::string table = ReadFile(DataFile("cases/cox-veteran-strata/input.csv"));
    const size_t rows = table.find('\n') + 1;
    const std::string body = table.substr(rows);
    for (int i = 0; i < 400; ++i) table += i % 100 == 50 ? "torn\n" + body : body;
    const Arguments run{"curve", model, folder_.Write("cases.csv", table), "--quiet"};
    const auto into = [&](const std::string& name) {
        return Arguments{"-o", Path(name), "--rejects", Path(name + ".rejects")};
    };
    ASSERT_EQ(RunVelscore(run + into("whole.csv")).exitCode, 0);
    const Finished early = RunVelscore(run + into("out.csv") + Arguments{"--max-rejects", "2"});
    ASSERT_EQ(early.exitCode, 3) << early.err;
    ASSERT_EQ(RunVelscore(run + into("out.csv") + Arguments{"--resume"}).exitCode, 0);
    EXPECT_EQ(ReadFile(Path("out.csv")), ReadFile(Path("whole.csv")));
    EXPECT_EQ(ReadFile(Path("out.csv.rejects")), ReadFile(Path("whole.csv.rejects")));
}

TEST_F(Resume, OfJsonLinesGivesTheBytesOfOneRun)
{
    std::string text;
    for (int i = 0; i < 60000; ++i) {
        text += i % 1000 == 17 ? "{\"x\":1,\n" : "{\"x\":1.5,\"sex\":\"m\"}\n\n";
    }
    const Arguments run{"score", model_,
                        folder_.Write("cases.jsonl", "{\"x\":2,\"sex\":\"f\"}\n" + text),
                        "--quiet"};
    const auto into = [&](const std::string& name) {
        return Arguments{"-o", Path(name), "--rejects", Path(name + ".rejects")};
    };
    ASSERT_EQ(RunVelscore(run + into("whole.csv")).exitCode, 0);
    ASSERT_EQ(RunVelscore(run + into("out.csv") + Arguments{"--max-rejects", "41"}).exitCode, 3);
    ASSERT_EQ(RunVelscore(run + into("out.csv") + Arguments{"--resume"}).exitCode, 0);
    EXPECT_EQ(ReadFile(Path("out.csv")), ReadFile(Path("whole.csv")));
    EXPECT_EQ(ReadFile(Path("out.csv.rejects")), ReadFile(Path("whole.csv.rejects")));
}

TEST_F(Resume, WithoutARunToGoOnWithBeginsAnew)
{
    const std::string table = Table("a.csv", 10);
    const Arguments run{"score", model_, table, "-o", Path("out.csv"), "--rejects", Path("r.csv")};
    const Finished finished = RunVelscore(run + Arguments{"--resume"});
    EXPECT_EQ(finished.exitCode, 0);
    EXPECT_NE(finished.err.find("no run to go on with"), std::string::npos) << finished.err;
    EXPECT_EQ(ReadFile(Path("out.csv")).substr(0, 10), "prediction");
}

TEST_F(Resume, OfAnotherRunIsRefusedAndLeavesItAsItIs)
{
    const std::string table = Table("a.csv", 60000);
    TestModel otherModel;
    otherModel.xBeta = "3";
    const std::string other = folder_.Write("other.pmml", otherModel.Text());
    const Arguments outputs{"-o", Path("out.csv"), "--rejects", Path("r.csv")};
    ASSERT_EQ(
        RunVelscore(Arguments{"score", model_, table, "--max-rejects", "60"} + outputs).exitCode,
        3);
    const Arguments left = Leftovers();
    const auto differs = [&](const Arguments& run, const char* what) {
        const Finished refused = RunVelscore(run + outputs + Arguments{"--resume"});
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_NE(refused.err.find(std::string("its ") + what + " differ"), std::string::npos)
            << refused.err;
        EXPECT_EQ(Leftovers(), left);
    };
    differs({"score", other, table}, "document");
    differs({"score", model_, table, table}, "tables");
    differs({"score", model_, table, "--digits", "4"}, "options");
    differs({"score", model_, table, "--level", "0.9"}, "options");
    // One byte of the table, which keeps its size.
    std::string text = ReadFile(table);
    text[text.size() - 2] = 'f';
    folder_.Write("a.csv", text);
    differs({"score", model_, table}, "tables");
}

TEST_F(Resume, OfANoteThatIsNoneIsRefused)
{
    const std::string table = Table("a.csv", 10);
    folder_.Write("out.csv.resume", "{\"run\": 1}\n");
    const Finished refused =
        RunVelscore({"score", model_, table, "-o", Path("out.csv"), "--resume"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_NE(refused.err.find("out.csv.resume is of another run"), std::string::npos)
        << refused.err;
}

TEST_F(Resume, OfATableThatIsNotThereTellsThat)
{
    const Finished refused =
        RunVelscore({"score", model_, Path("none.csv"), "-o", Path("out.csv"), "--resume"});
    EXPECT_EQ(refused.exitCode, 3);
    EXPECT_NE(refused.err.find("none.csv can't be read"), std::string::npos) << refused.err;
}

TEST_F(Resume, OfStreamsIsWrongUsage)
{
    const std::string table = Table("a.csv", 10);
    const std::string out = Path("out.csv");
    for (const Arguments& run :
         {Arguments{"score", model_, table, "--resume"},
          Arguments{"score", model_, "-", "-o", out, "--resume"},
          Arguments{"score", model_, table, "-o", out, "--rejects", "-", "--resume"}}) {
        const Finished refused = RunVelscore(run);
        EXPECT_EQ(refused.exitCode, 1);
        EXPECT_NE(refused.err.find("--resume"), std::string::npos) << refused.err;
    }
}

TEST_F(Resume, WithTheRowsNamedAllTheSameLeavesNoNote)
{
    const Finished early =
        RunVelscore({"score", model_, Table("a.csv", 60000), "-o", Path("out.csv"), "--rejects",
                     Path("r.csv"), "--max-rejects", "60", "--partial"});
    EXPECT_EQ(early.exitCode, 3);
    EXPECT_TRUE(fs::exists(Path("out.csv")));
    EXPECT_TRUE(Leftovers().empty());
}

// The largest size of a file stands for a full disk: of output and rejects alike.
TEST_F(Resume, AfterFullDisksGivesTheBytesOfOneRun)
{
    const int disks = Trials(8);
    const Arguments run{"score",   model_,      Table("a.csv", 60000), Table("b.csv", 30000),
                        "--quiet", "--rejects", Path("r.csv")};
    ASSERT_EQ(RunVelscore(run + Arguments{"-o", Path("whole.csv")}).exitCode, 0);
    const std::string whole = ReadFile(Path("whole.csv"));
    const std::string rejects = ReadFile(Path("r.csv"));
    std::mt19937 random(20261123);
    for (int disk = 0; disk < disks; ++disk) {
        fs::remove(Path("out.csv"));
        RemoveLeftovers();
        const Arguments limited{"/bin/sh", "-c", "ulimit -f \"$0\" && exec \"$@\"",
                                std::to_string(1 + random() % (whole.size() / 1024)),
                                VELSCORE_COMMAND};
        const Finished full = RunProgram(limited + run + Arguments{"-o", Path("out.csv")});
        if (full.exitCode == 0) continue;  // what a size counts depends on the shell
        ASSERT_EQ(full.exitCode, 4) << full.err;
        EXPECT_FALSE(fs::exists(Path("out.csv")));
        for (const std::string& name : Leftovers()) {
            if (!name.starts_with("out.csv.part")) continue;
            const std::string part = ReadFile(Path(name));
            ASSERT_TRUE(whole.starts_with(part));
            ASSERT_TRUE(part.ends_with('\n'));
        }
        ASSERT_EQ(RunVelscore(run + Arguments{"-o", Path("out.csv"), "--resume"}).exitCode, 0);
        ASSERT_EQ(ReadFile(Path("out.csv")), whole);
        ASSERT_EQ(ReadFile(Path("r.csv")), rejects);
    }
}

// Whoever reads a pipe and goes away has read what a whole run writes, as far as it came.
TEST_F(Resume, APipeThatIsClosedHasTheBeginOfAWholeRun)
{
    const int pipes = Trials(8);
    const Arguments run{"score", model_, Table("a.csv", 60000), "--rejects", Path("r.csv")};
    ASSERT_EQ(RunVelscore(run + Arguments{"-o", Path("whole.csv")}).exitCode, 0);
    const std::string whole = ReadFile(Path("whole.csv"));
    std::mt19937 random(20261124);
    for (int pipe = 0; pipe < pipes; ++pipe) {
        RunningVelscore running(run + Arguments{"--threads", std::to_string(1 + random() % 4)});
        const std::string begin = running.ReadOutput(random() % whole.size());
        running.CloseOutput();
        ASSERT_EQ(running.Finish().exitCode, 0);
        ASSERT_TRUE(whole.starts_with(begin));
    }
}

// At random moments, by signals that let it end and one that doesn't.
TEST_F(Resume, AfterKillsGivesTheBytesOfOneRun)
{
    const int kills = Trials(12);
    const Arguments run{"score",   model_,      Table("a.csv", 400000), Table("b.csv", 200000),
                        "--quiet", "--rejects", Path("r.csv")};
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(RunVelscore(run + Arguments{"-o", Path("whole.csv")}).exitCode, 0);
    const auto duration = std::chrono::steady_clock::now() - begin;
    const std::string whole = ReadFile(Path("whole.csv"));
    const std::string rejects = ReadFile(Path("r.csv"));
    fs::remove(Path("r.csv"));

    std::mt19937 random(20261122);
    int resumed = 0;
    for (int kill = 0; kill < kills;) {
        fs::remove(Path("out.csv"));
        RemoveLeftovers();
        for (bool ended = false; !ended;) {
            const int threads = 1 + static_cast<int>(random() % 4);
            RunningVelscore running(run + Arguments{"-o", Path("out.csv"), "--resume", "--threads",
                                                    std::to_string(threads)});
            std::this_thread::sleep_for(duration * (random() % 90) / 100);
            running.Signal(std::array{SIGKILL, SIGINT, SIGTERM}[random() % 3]);
            const Finished finished = running.Finish();
            ended = finished.exitCode == 0;
            if (!ended) {
                ++kill;
                resumed += fs::exists(Path("out.csv.resume")) ? 1 : 0;
                ASSERT_NE(finished.exitCode, 3) << finished.err;
                // Whole, or not there at all.
                if (fs::exists(Path("out.csv"))) {
                    ASSERT_EQ(ReadFile(Path("out.csv")), whole);
                }
            }
            if (kill >= kills && !ended) {
                ASSERT_EQ(RunVelscore(run + Arguments{"-o", Path("out.csv"), "--resume"}).exitCode,
                          0);
                ended = true;
            }
        }
        ASSERT_EQ(ReadFile(Path("out.csv")), whole);
        ASSERT_EQ(ReadFile(Path("r.csv")), rejects);
        ++kill;
    }
    if (kills >= 100) {
        EXPECT_GT(resumed, kills / 10);
    }
}

}  // namespace
}  // namespace MCVelscore_850
