// One call of files after another fails or comes short: outputs are whole or what they were, the
// exit code and the message tell the file, and nothing temporary is left that nobody tells of.
//
// Each command runs once as it is, under a library (faultyfiles.cpp) that notes its calls; then
// once for each of them and each way in which it can fail: by default the first and the last call
// of each file, with VELSCORE_TEST_FAULTS=all every one.

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

/// What a command has to make of a call that fails.
enum class Makes {
    Whole,    ///< nothing of it: the call is done again, or a short one gone on with
    Refusal,  ///< it ends with the code of the file and names it, unless all is whole all the same
    AnyEnd    ///< as Refusal, but what a file is goes unknown, so that any reason may be told
};

struct Fault {
    const char* call;
    const char* what;  ///< as VELSCORE_FAULT has it behind the number
    Makes makes;
};

const std::string kIo = ":" + std::to_string(EIO);
const std::string kFull = "+:" + std::to_string(ENOSPC);
const std::string kFillsUp = ":0," + std::to_string(ENOSPC);
const std::string kAgain = ":" + std::to_string(EINTR);
const std::string kDenied = ":" + std::to_string(EACCES);
const std::string kTooMany = "+:" + std::to_string(EMFILE);
const std::string kUnable = ":" + std::to_string(EINVAL);
const std::string kShort = ":0";

const Fault kFaults[] = {
    {"access", kIo.c_str(), Makes::Refusal},   {"chmod", kIo.c_str(), Makes::Refusal},
    {"chown", kDenied.c_str(), Makes::Whole},  {"close", kIo.c_str(), Makes::Refusal},
    {"close", kAgain.c_str(), Makes::Whole},   {"cut", kIo.c_str(), Makes::Refusal},
    {"flush", kIo.c_str(), Makes::Refusal},    {"flush", kAgain.c_str(), Makes::Whole},
    {"flush", kUnable.c_str(), Makes::Whole},  {"fopen", kIo.c_str(), Makes::Refusal},
    {"open", kDenied.c_str(), Makes::Refusal}, {"open", kTooMany.c_str(), Makes::Refusal},
    {"read", kIo.c_str(), Makes::Refusal},     {"read", kAgain.c_str(), Makes::Whole},
    {"read", kShort.c_str(), Makes::Whole},    {"readlink", kIo.c_str(), Makes::Refusal},
    {"rename", kIo.c_str(), Makes::Refusal},   {"seek", kIo.c_str(), Makes::Refusal},
    {"status", kIo.c_str(), Makes::AnyEnd},    {"write", kIo.c_str(), Makes::Refusal},
    {"write", kFull.c_str(), Makes::Refusal},  {"write", kFillsUp.c_str(), Makes::Refusal},
    {"write", kAgain.c_str(), Makes::Whole},   {"write", kShort.c_str(), Makes::Whole},
};

/// A command, in whose words DIR stands for the folder.
struct Command {
    const char* name;
    Arguments words;
    Arguments outputs;      ///< files
    bool replaces = false;  ///< they are there before
    Arguments before = {};  ///< a run that ends early and whose end this one is
    int exitCode = 0;
};

void PrintTo(const Command& command, std::ostream* out) { *out << command.name; }

const Command kCommands[] = {
    {"ScoresToStandardOutput", {"score", "DIR/model.pmml", "DIR/sound.csv"}, {}},
    {"ScoresWithRejectsAndSummary",
     {"score", "DIR/model.pmml", "DIR/cases.csv", "DIR/sound.csv", "-o", "DIR/out.csv", "--rejects",
      "DIR/rejects.csv", "--summary", "DIR/summary.json", "--map", "@DIR/map.txt"},
     {"out.csv", "rejects.csv", "summary.json"},
     true},
    {"ScoresGzip",
     {"score", "DIR/model.pmml", "DIR/cases.csv.gz", "-o", "DIR/out.csv.gz", "--rejects",
      "DIR/rejects.csv.gz"},
     {"out.csv.gz", "rejects.csv.gz"}},
    {"ScoresZstd",
     {"score", "DIR/model.pmml", "DIR/cases.csv.zst", "-o", "DIR/out.csv.zst", "--rejects",
      "DIR/rejects.csv.zst"},
     {"out.csv.zst", "rejects.csv.zst"},
     true},
    {"ScoresJsonLines",
     {"score", "DIR/model.pmml", "DIR/cases.jsonl", "-o", "DIR/out.jsonl.gz", "--rejects",
      "DIR/rejects.csv"},
     {"out.jsonl.gz", "rejects.csv"}},
    {"BeginsARunThatCanBeGoneOnWith",
     {"score", "DIR/model.pmml", "DIR/cases.csv", "-o", "DIR/out.csv", "--rejects",
      "DIR/rejects.csv", "--resume"},
     {"out.csv", "rejects.csv"}},
    {"GoesOnWithARun",
     {"score", "DIR/model.pmml", "DIR/cases.csv", "-o", "DIR/out.csv", "--rejects",
      "DIR/rejects.csv", "--resume"},
     {"out.csv", "rejects.csv"},
     true,
     {"--max-rejects", "3"}},
    {"GoesOnWithAPackedRun",
     {"score", "DIR/model.pmml", "DIR/cases.csv.gz", "-o", "DIR/out.csv.zst", "--rejects",
      "DIR/rejects.csv.gz", "--resume"},
     {"out.csv.zst", "rejects.csv.gz"},
     false,
     {"--max-rejects", "3"}},
    {"DrawsCurves",
     {"curve", "DIR/cox.pmml", "DIR/cox-cases.csv", "-o", "DIR/out.csv", "--rejects",
      "DIR/rejects.csv"},
     {"out.csv", "rejects.csv"}},
    {"ExplainsAsText",
     {"explain", "DIR/model.pmml", "DIR/cases.csv", "--baseline", "mean@DIR/few-cases.csv", "-o",
      "DIR/out.txt"},
     {"out.txt"},
     true},
    {"ExplainsAsATable",
     {"explain", "DIR/model.pmml", "DIR/few-cases.csv", "--long", "-o", "DIR/out.csv"},
     {"out.csv"}},
    {"Converts", {"convert", "DIR/older.xml", "-o", "DIR/out.pmml"}, {"out.pmml"}, true},
    {"ConvertsToStandardOutput", {"convert", "DIR/older.xml"}, {}},
    {"Fixes", {"check", "--fix", "DIR/model.pmml", "-o", "DIR/out.pmml"}, {"out.pmml"}},
    {"Checks", {"check", "DIR/model.pmml", "DIR/other.pmml"}, {}},
    {"Compares", {"diff", "DIR/model.pmml", "DIR/other.pmml", "DIR/sound.csv"}, {}, false, {}, 6},
    {"PutsRecordsIntoADocument",
     {"verify", "DIR/model.pmml", "--emit", "DIR/few-cases.csv", "-o", "DIR/out.pmml"},
     {"out.pmml"}},
    {"Inspects", {"inspect", "DIR/model.pmml"}, {}},
};

/// A line of the library's notes.
struct NotedCall {
    std::string call;
    std::string file;  ///< its name; of a temporary file the output's
    bool failed = false;
};

std::vector<NotedCall> CallsOf(const std::string& log)
{
    std::vector<NotedCall> calls;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        NotedCall& each = calls.emplace_back();
        constexpr std::string_view kFailed = " FAILED";
        each.failed = line.ends_with(kFailed);
        if (each.failed) line.resize(line.size() - kFailed.size());
        const size_t end = line.find(' ');
        each.call = line.substr(0, end);
        each.file = line.substr(line.find_last_of('/') + 1);
        if (line.find('/') == std::string::npos) each.file = line.substr(end + 1);
        each.file.resize(std::min(each.file.size(), each.file.find(".part")));
    }
    return calls;
}

/// The code that a command ends with when this file can't be read or written.
int CodeOf(const std::string& file)
{
    if (file.starts_with("out") || file.starts_with("rejects") || file.starts_with("summary") ||
        file == "standard output") {
        return file.ends_with(".resume") ? 3 : 4;
    }
    if (file.starts_with("map")) return 1;
    return file.ends_with(".pmml") || file.ends_with(".xml") ? 2 : 3;
}

std::string WithoutTail(const std::string& name) { return name.substr(0, name.find(".part")); }

class FileFaults : public testing::TestWithParam<Command> {
protected:
    FileFaults()
    {
        Write("model.pmml", TestModel().Text());
        TestModel other;
        other.xBeta = "3";
        Write("other.pmml", other.Text());
        Write("cases.csv", "x,sex,note\n" + Rows(900, true));
        Write("sound.csv", "x,sex,note\n" + Rows(900, false));
        Write("few-cases.csv", "x,sex\n1,m\n2.5,f\n4,m\n");
        Write("cases.jsonl", "{\"x\":1,\"sex\":\"m\"}\n{\"x\":2,\n{\"x\":3,\"sex\":\"f\"}\n");
        Write("map.txt", "sex=sex\n");
        Copy("cox.pmml", "cases/cox-veteran-strata/model.pmml");
        Copy("cox-cases.csv", "cases/cox-veteran-strata/input.csv");
        Copy("older.xml", "cases/legacy-lm-stackloss/model.pmml");
        Pack("gzip -n", "cases.csv.gz");
        Pack("zstd -q", "cases.csv.zst");
    }
    // More than a buffer holds. Of an odd table one row in 100 can't be read, and one has no score.
    static std::string Rows(int count, bool odd)
    {
        std::string text;
        for (int i = 0; i < count; ++i) {
            text += odd && i % 100 == 17   ? "1\n"
                    : odd && i % 100 == 50 ? "abc,m,\n"
                                           : "0.5,m," + std::string(100, 'n') + "\n";
        }
        return text;
    }
    void Write(const std::string& name, const std::string& bytes) { folder_.Write(name, bytes); }
    void Copy(const std::string& name, const std::string& from)
    {
        Write(name, ReadFile(DataFile(from)));
    }
    void Pack(const std::string& by, const std::string& name)
    {
        const Finished packed =
            RunProgram({"/bin/sh", "-c", by + " <\"$0\" >\"$1\"", Path("cases.csv"), Path(name)});
        ASSERT_EQ(packed.exitCode, 0) << packed.err;
    }
    std::string Path(const std::string& name) const { return folder_.Path(name); }

    Finished Run(const std::string& fault = "", const Arguments& more = {})
    {
        fs::remove(log_.Path("calls"));
        Arguments words = GetParam().words;
        words.insert(words.end(), more.begin(), more.end());
        for (std::string& word : words) {
            if (const size_t place = word.find("DIR"); place != std::string::npos) {
                word.replace(place, 3, folder_.Path());
            }
        }
        Finished finished =
            RunVelscore(words, "",
                        {"LD_PRELOAD=" VELSCORE_BUILD "/lib/libvelfaultyfiles.so",
                         "VELSCORE_FAULTS_FOLDER=" + folder_.Path(),
                         "VELSCORE_FAULTS_LOG=" + log_.Path("calls"), "VELSCORE_FAULT=" + fault});
        calls_ = CallsOf(ReadFile(log_.Path("calls")));
        return finished;
    }

    using Files = std::map<std::string, std::string>;
    Files FilesNow() const
    {
        Files files;
        for (const auto& file : fs::directory_iterator(folder_.Path())) {
            files[file.path().filename()] = ReadFile(file.path());
        }
        return files;
    }
    // Makes the folder what it was.
    void Restore(const Files& files)
    {
        for (const auto& [name, bytes] : FilesNow()) {
            if (!files.contains(name)) fs::remove(Path(name));
        }
        for (const auto& [name, bytes] : files) {
            if (!fs::exists(Path(name)) || ReadFile(Path(name)) != bytes) Write(name, bytes);
        }
    }

    // The files before a run: inputs, old outputs, and what an earlier run has left.
    Files Begin()
    {
        for (const std::string& output : GetParam().outputs) {
            if (GetParam().replaces) Write(output, "before\n");
        }
        if (!GetParam().before.empty()) {
            EXPECT_EQ(Run("", GetParam().before).exitCode, 3);
        }
        return FilesNow();
    }

    // The numbers of the calls of a kind that are to fail: the first and the last of each file, or
    // all.
    std::set<size_t> NumbersOf(const std::string& call, const std::vector<NotedCall>& calls) const
    {
        const char* const wanted = std::getenv("VELSCORE_TEST_FAULTS");
        const bool all = wanted != nullptr && std::string(wanted) == "all";
        std::map<std::string, std::set<size_t>> ofFile;
        size_t number = 0;
        for (const NotedCall& each : calls) {
            if (each.call == call) ofFile[each.file].insert(++number);
        }
        std::set<size_t> numbers;
        for (const auto& [file, own] : ofFile) {
            if (all) numbers.insert(own.begin(), own.end());
            numbers.insert(*own.begin());
            if (!kIsSanitized) numbers.insert(*own.rbegin());  // where a run takes its time
        }
        return numbers;
    }

    static bool IsSummary(const std::string& name) { return name.ends_with(".json"); }

    // What a run leaves, and tells, where a call failed.
    void ExpectWholeOrAbsent(const Finished& run, const Fault& fault)
    {
        ASSERT_EQ(run.signal, 0) << run.err;
        const Files now = FilesNow();
        bool isWhole = run.out == wholeRun_.out;
        for (const std::string& output : GetParam().outputs) {
            const bool isThere = now.contains(output);
            const std::string bytes = isThere ? now.at(output) : "";
            const bool isAsBefore =
                isThere == before_.contains(output) && (!isThere || bytes == before_.at(output));
            // Its times differ.
            const bool is = IsSummary(output) ? nlohmann::json::accept(bytes)
                                              : isThere && bytes == whole_.at(output);
            EXPECT_TRUE(is || isAsBefore) << output << " is neither whole nor as it was";
            isWhole = isWhole && is;
        }
        if (run.exitCode == GetParam().exitCode) {
            EXPECT_TRUE(isWhole) << "ended with " << run.exitCode << ", and not all is whole";
        } else {
            EXPECT_NE(fault.makes, Makes::Whole) << run.exitCode << ": " << run.err;
            if (fault.makes == Makes::Refusal) ExpectTold(run);
        }
        // But check tells there what it can't read.
        if (GetParam().words.front() != "check") {
            EXPECT_TRUE(wholeRun_.out.starts_with(run.out));
        }
        ExpectNothingLeft(run, now);
    }

    void ExpectTold(const Finished& run) const
    {
        std::set<std::string> files;
        std::set<int> codes;
        for (const NotedCall& each : calls_) {
            if (!each.failed) continue;
            files.insert(each.file);
            codes.insert(CodeOf(each.file));
        }
        EXPECT_TRUE(codes.contains(run.exitCode)) << run.exitCode << ": " << run.err;
        EXPECT_TRUE(std::any_of(files.begin(), files.end(), [&](const auto& file) {
            return (run.err + run.out).find(file) != std::string::npos;
        })) << run.err;
    }

    // Temporary files stay where the message tells them, with the begin of the whole.
    void ExpectNothingLeft(const Finished& run, const Files& now) const
    {
        for (const auto& [name, bytes] : now) {
            const auto& outputs = GetParam().outputs;
            if (before_.contains(name) ||
                std::find(outputs.begin(), outputs.end(), name) != outputs.end()) {
                continue;
            }
            if (name.ends_with(".resume")) {
                EXPECT_NE(run.err.find("--resume"), std::string::npos) << name << ": " << run.err;
                continue;
            }
            EXPECT_NE(run.err.find(name), std::string::npos) << name << " is left: " << run.err;
            EXPECT_TRUE(whole_.at(WithoutTail(name)).starts_with(bytes)) << name;
        }
    }

    // A run that was to be gone on with still can be.
    void ExpectGoesOn()
    {
        const Finished run = Run();
        ASSERT_EQ(run.exitCode, 0) << run.err;
        const Files now = FilesNow();
        for (const std::string& output : GetParam().outputs) {
            EXPECT_EQ(now.at(output), whole_.at(output)) << output;
        }
    }

    const ScratchFolder folder_;
    const ScratchFolder log_;
    std::vector<NotedCall> calls_;  ///< of the last run
    Files before_;
    Files whole_;  ///< after a run of which nothing fails
    Finished wholeRun_;
};

INSTANTIATE_TEST_SUITE_P(Commands, FileFaults, testing::ValuesIn(kCommands),
                         [](const auto& each) { return each.param.name; });

/// What was last done to a file before it took its name has to have put it on its disk.
void ExpectOnDiskBeforeNamed(const std::vector<NotedCall>& calls)
{
    std::map<std::string, std::string> last;
    for (const NotedCall& each : calls) {
        if (each.call == "write" || each.call == "cut" || each.call == "flush") {
            last[each.file] = each.call;
        } else if (each.call == "rename") {
            EXPECT_EQ(last[each.file], "flush") << each.file;
        }
    }
}

TEST_P(FileFaults, LeaveOutputsWholeOrAsTheyWere)
{
    before_ = Begin();
    wholeRun_ = Run();
    ASSERT_EQ(wholeRun_.exitCode, GetParam().exitCode) << wholeRun_.err;
    whole_ = FilesNow();
    const std::vector<NotedCall> calls = calls_;
    ExpectOnDiskBeforeNamed(calls);
    const auto& words = GetParam().words;
    const bool resumes = std::find(words.begin(), words.end(), "--resume") != words.end();
    int tried = 0;
    for (const Fault& fault : kFaults) {
        for (const size_t number : NumbersOf(fault.call, calls)) {
            Restore(before_);
            const std::string text = fault.call + (":" + std::to_string(number)) + fault.what;
            const Finished run = Run(text);
            const auto failed = std::find_if(calls_.begin(), calls_.end(),
                                             [](const NotedCall& each) { return each.failed; });
            ASSERT_NE(failed, calls_.end()) << text;
            SCOPED_TRACE(text + " of " + failed->file);
            ++tried;
            ExpectWholeOrAbsent(run, fault);
            if (resumes && run.exitCode != 0) ExpectGoesOn();
        }
    }
    EXPECT_GT(tried, 10);
    RecordProperty("faults", tried);
}

}  // namespace
}  // namespace MCVelscore_850
