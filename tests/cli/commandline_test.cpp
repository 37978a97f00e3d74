// The command line as a whole: words that it doesn't know, help, the version, and what ends a run
// with which code.

#include "cli/commandline.h"

#include <cstdlib>
#include <new>
#include <stdexcept>

#include <gtest/gtest.h>

#include "cli/commands.h"
#include "cli/commandset.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "engine/messages/failure.h"
#include "host/messages/messages.h"
#include "tests/cli/inprocess.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

constexpr const char* kUsage =
    "  what to do: velscore --help and velscore COMMAND --help tell the usage.\n";

struct Refused {
    Texts arguments;
    std::string told;  // the whole sentence
};

TEST(CommandLine, TellsWhatIsWrongInASentence)
{
    const std::string commands =
        "; the commands are score, curve, explain, check, inspect, verify, convert, diff and help";
    const Refused kRefused[] = {
        {{}, "A subcommand is required"},
        {{"judge"}, "'judge' is no command" + commands},
        {{"scor", "m", "c"}, "'scor' is no command" + commands + ". Did you mean 'score'?"},
        {{"insepct", "m"}, "'insepct' is no command" + commands + ". Did you mean 'inspect'?"},
        {{"report", "m", "-o", "r.html"},
         "reports are made by the package for Python. In a clone of velscore: pip install "
         "'.[report]', then python -m velscore report MODEL [CASES] -o report.html"},
        {{"--versoin"}, "velscore has no option --versoin. Did you mean '--version'?"},
        {{"--fast", "score", "m"}, "velscore has no option --fast"},
        {{"score", "m", "--fast"}, "score has no option --fast"},
        {{"score", "m", "-x"}, "score has no option -x"},
        {{"score", "--keeep", "id", "m", "c"},
         "score has no option --keeep. Did you mean '--keep'?"},
        {{"score", "m", "c", "--keeep=id"}, "score has no option --keeep. Did you mean '--keep'?"},
        {{"score", "m", "-keep", "id"}, "score has no option -keep. Did you mean '--keep'?"},
        // the first --quite is what stands for missing, and no option
        {{"score", "m", "--na", "--quite", "--quite"},
         "score has no option --quite. Did you mean '--quiet'?"},
        {{"score", "m", "-o", "o.csv", "--quite"},
         "score has no option --quite. Did you mean '--quiet'?"},
        {{"check", "m", "--jsno"}, "check has no option --jsno. Did you mean '--json'?"},
        {{"help", "--quiet"}, "help has no option --quiet"},
        {{"score"}, "MODEL is required"},
        {{"explain"}, "MODEL is required"},
        {{"diff", "a"}, "B is required"},
        {{"inspect", "a", "b"}, "The following argument was not expected: b"},
        {{"help", "1", "2"}, "The following argument was not expected: 2"},
    };
    for (const Refused& refused : kRefused) {
        const Answered run = RunInProcess(refused.arguments);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, "velscore: error: " + refused.told + "\n" + kUsage);
    }
}

// Behind -- there are no options.
TEST(CommandLine, BlamesNoOptionBehindTwoDashes)
{
    const Answered run = RunInProcess({"inspect", "a", "--", "--jsno"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.err.find("no option"), std::string::npos) << run.err;
    EXPECT_NE(run.err.find("--jsno"), std::string::npos) << run.err;
}

TEST(CommandLine, NoArgumentAtAllIsAskedForACommandAsWell)
{
    const Answered run = WithStreams([] {
        Console console;
        return RunProgram(0, nullptr, console);
    });
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.err.find("A subcommand is required"), std::string::npos) << run.err;
}

TEST(CommandLine, HelpGoesToStandardOutput)
{
    const Answered program = RunInProcess({"--help"});
    EXPECT_EQ(program.exitCode, 0);
    EXPECT_EQ(program.err, "");
    for (const std::string& name : CommandSet().Names()) {
        EXPECT_NE(program.out.find("\n  " + name + " "), std::string::npos) << program.out;
        for (const char* option : {"--help", "-h"}) {
            const Answered run = RunInProcess({name, option});
            EXPECT_EQ(run.exitCode, 0) << name;
            EXPECT_EQ(run.err, "") << name;
            EXPECT_NE(run.out.find("Example"), std::string::npos) << run.out;
            EXPECT_NE(run.out.find("\n  velscore " + name + " "), std::string::npos) << run.out;
        }
    }
}

TEST(CommandLine, HelpShowsEachOptionWithWhatItTakes)
{
    const std::string text = RunInProcess({"score", "--help"}).out;
    for (const char* part :
         {"-o,--out FILE", "--format csv|jsonl", "--map NAME=COLUMN|@FILE", "--keep all|COLS",
          "--level P", "--rejects FILE", "MODEL", "CASES", "130 interrupted"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
    }
}

TEST(CommandLine, TheVersionGoesToStandardOutput)
{
    const Answered run = RunInProcess({"--version"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "velscore " VELSCORE_VERSION "\n");
    EXPECT_EQ(run.err, "");
}

struct Ended {
    const char* about;
    std::function<int()> run;
    int exitCode;
    std::string told;
};

TEST(CommandLine, EachEndHasItsCode)
{
    const auto failing = [](FailureKind kind) {
        return [kind]() -> int { throw Failure(kind, kOtherRun, {"a", "b"}); };
    };
    const std::string otherRun =
        "velscore: error: a is of another run: its b differs [" + std::to_string(kOtherRun) +
        "]\n  what to do: Give the run's own model, tables and options, or leave --resume out to "
        "begin anew.\n";
    const Ended kEnds[] = {
        {"done", [] { return 0; }, 0, ""},
        {"what a command answers", [] { return int{kExitStrict}; }, 5, ""},
        {"usage", []() -> int { throw UsageError("no such thing"); }, 1,
         std::string("velscore: error: no such thing\n") + kUsage},
        {"usage of the engine", failing(FailureKind::Usage), 1, otherRun},
        {"document", failing(FailureKind::Document), 2, otherRun},
        {"cases", failing(FailureKind::Cases), 3, otherRun},
        {"output", failing(FailureKind::Output), 4, otherRun},
        {"plug-in", failing(FailureKind::Plugin), 7, otherRun},
        {"memory", []() -> int { throw std::bad_alloc(); }, 70,
         "velscore: error: there is no memory left\n"},
        {"defect", []() -> int { throw std::logic_error("a\x1B[0m"); }, 70,
         "velscore: error: internal error: a\\u001B[0m\n  what to do: This is a defect of "
         "velscore; please report it with the model and the row.\n"},
    };
    for (const Ended& end : kEnds) {
        SCOPED_TRACE(end.about);
        const Answered run = WithStreams([&] {
            Console console;
            return ExitCodeOf(end.run, console);
        });
        EXPECT_EQ(run.exitCode, end.exitCode);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, end.told);
    }
}

class Trace : public testing::Test {
protected:
    ~Trace() override { ::unsetenv("VELSCORE_TRACE"); }
    static Answered Version(const std::string& trace)
    {
        ::setenv("VELSCORE_TRACE", trace.c_str(), 1);
        return RunInProcess({"--version"});
    }
    const ScratchFolder folder_;
};

TEST_F(Trace, IsAskedForByTheEnvironment)
{
    const std::string file = folder_.Path("trace.txt");
    EXPECT_EQ(Version("0:" + file).exitCode, 0);
    EXPECT_TRUE(std::filesystem::exists(file));
    EXPECT_EQ(Version("").exitCode, 0);
    for (const std::string& wrong :
         {std::string("loud"), std::string("10"), "1:" + folder_.Path("no/such.txt")}) {
        const Answered run = Version(wrong);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, "velscore: error: VELSCORE_TRACE is '" + wrong +
                               "', not a level from 0 to 9 or LEVEL:FILE with a file that can be "
                               "written\n" +
                               kUsage);
    }
}

}  // namespace
}  // namespace MCVelscore_850
