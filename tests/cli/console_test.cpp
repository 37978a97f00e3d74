// What the command says beside its data, on a terminal and elsewhere.

#include "cli/console.h"

#include <array>
#include <cstdlib>
#include <optional>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include "cli/stopsignals.h"
#include "engine/messages/failure.h"
#include "host/messages/messages.h"
#include "tests/cli/inprocess.h"
#include "tests/scratchfolder.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using namespace std::chrono_literals;

// Sets a variable of the environment, or takes it away, for the time of a scope.
class Variable {
public:
    Variable(const char* name, const char* text) : name_(name)
    {
        if (const char* before = std::getenv(name)) before_ = before;
        Set(text);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { Set(before_ ? before_->c_str() : nullptr); }

private:
    void Set(const char* text)
    {
        if (text == nullptr) {
            ::unsetenv(name_);
        } else {
            ::setenv(name_, text, 1);
        }
    }
    const char* name_;
    std::optional<std::string> before_;
};

// What `work` writes to standard error where that is a terminal.
std::string OnTerminal(const std::function<void()>& work)
{
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    EXPECT_EQ(::grantpt(master), 0);
    EXPECT_EQ(::unlockpt(master), 0);
    const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY);
    termios settings{};
    EXPECT_EQ(::tcgetattr(terminal, &settings), 0);
    ::cfmakeraw(&settings);  // line ends stay as they are written
    EXPECT_EQ(::tcsetattr(terminal, TCSANOW, &settings), 0);
    WithStreams([&] {
        ::dup2(terminal, STDERR_FILENO);
        work();
        return 0;
    });
    ::close(terminal);
    std::string text;
    char piece[1 << 12];
    // The system hands over what was written piece by piece, and an error behind the last one.
    for (ssize_t size = 0; (size = ::read(master, piece, sizeof piece)) > 0;) {
        text.append(piece, static_cast<size_t>(size));
    }
    ::close(master);
    return text;
}

std::string Elsewhere(const std::function<void()>& work)
{
    return WithStreams([&] {
               work();
               return 0;
           })
        .err;
}

TEST(Console, SaysLinesWithTheProgramsName)
{
    EXPECT_EQ(Elsewhere([] {
                  Console console;
                  console.Say("3 of 3 cases scored");
                  console.SayError("no such file");
                  console.SayError("no such file", "Name another.");
                  console.Say("what a \x1B[31mterminal\nwould obey");
              }),
              "velscore: 3 of 3 cases scored\n"
              "velscore: error: no such file\n"
              "velscore: error: no such file\n"
              "  what to do: Name another.\n"
              "velscore: what a \\u001B[31mterminal\nwould obey\n");
}

struct Coloured {
    const char* noColour;
    const char* term;
    bool isColourful;
};

TEST(Console, HasColoursOnATerminalThatTakesThem)
{
    for (const Coloured& row : {Coloured{nullptr, "xterm", true}, Coloured{"", "xterm", true},
                                Coloured{nullptr, nullptr, true}, Coloured{"1", "xterm", false},
                                Coloured{nullptr, "dumb", false}}) {
        const Variable noColour("NO_COLOR", row.noColour);
        const Variable term("TERM", row.term);
        const auto say = [] { Console().SayError("wrong"); };
        EXPECT_EQ(OnTerminal(say), row.isColourful ? "velscore: \033[1;31merror:\033[0m wrong\n"
                                                   : "velscore: error: wrong\n");
        EXPECT_EQ(Elsewhere(say), "velscore: error: wrong\n");
    }
}

TEST(Console, FailuresTellPlaceCodeAndRemedy)
{
    const Failure failure(FailureKind::Usage, kOtherRun, {"a.resume", "document"});
    EXPECT_EQ(FailureText(failure), "a.resume is of another run: its document differs [" +
                                        std::to_string(kOtherRun) + "]");
    EXPECT_EQ(Elsewhere([&] { Console().SayFailure(failure); }),
              "velscore: error: " + FailureText(failure) +
                  "\n  what to do: Give the run's own model, tables and options, or leave "
                  "--resume out to begin anew.\n");
}

struct Refused {
    const char* about;
    std::string from;
    std::string to;
    const char* place;
    std::string told;
};

TEST(Console, RefusedDocumentsTellLineColumnAndPath)
{
    const std::string two = "beta=\"2\" df=\"1\"/>\n      <PCell parameterName=\"p2\" beta";
    const std::string twoWrong = "Beta=\"2\" df=\"1\"/>\n      <PCell parameterName=\"p2\" Beta";
    const std::string one = "beta=\"1\" df=\"1\"/>\n      <PCell parameterName=\"p1\" ";
    const std::string oneWrong = "Beta=\"1\" df=\"1\"/>\n      <PCell parameterName=\"p1\" ";
    const std::string cell = "\n  at PMML/GeneralRegressionModel/ParamMatrix/PCell";
    const Refused kRefused[] = {
        {"by the reader: its code", "beta=\"2\"", "beta=\"two\"",
         ":34:7: ", "the beta 'two' is not a number [269001]" + cell + "[2]\n"},
        {"one fault: its rule", "beta=\"2\"", "Beta=\"2\"", ":34:7: ",
         "PCell has no attribute \"Beta\"; did you mean \"beta\"? [misspelt-attribute]" + cell +
             "[2]\n  what to do: "},
        {"two faults: the first", two, twoWrong, ":34:7: ", cell + "[2]\n  and 1 more fault\n"},
        {"three", one + two, oneWrong + twoWrong, ":33:7: ", cell + "[1]\n  and 2 more faults\n"},
    };
    const ScratchFolder folder;
    for (const Refused& refused : kRefused) {
        SCOPED_TRACE(refused.about);
        const std::string file =
            folder.Write("m.pmml", Replaced(TestModel().Text(), refused.from, refused.to));
        const Answered run = RunInProcess({"inspect", file});
        EXPECT_EQ(run.exitCode, 2);
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(run.err.starts_with("velscore: error: " + file + refused.place)) << run.err;
        EXPECT_NE(run.err.find(refused.told), std::string::npos) << run.err;
    }
}

// A document that isn't there has no place in it: its text tells the file.
TEST(Console, DocumentsThatAreNotThereHaveNoPlace)
{
    const Answered run = RunInProcess({"inspect", "/nowhere/at/all.pmml"});
    EXPECT_EQ(run.exitCode, 2);
    EXPECT_TRUE(run.err.starts_with("velscore: error: /nowhere/at/all.pmml can't be read"))
        << run.err;
    EXPECT_NE(run.err.find("[269101]"), std::string::npos) << run.err;
}

// The bar after a second, and again after a tenth; a line said takes it away.
TEST(Console, ShowsABarOnATerminal)
{
    EXPECT_EQ(OnTerminal([] {
                  Console console;
                  const Console::Clock::time_point begin = Console::Clock::now() + 10min;
                  const Progress half{1, 2, 0};
                  console.ShowProgress(half, begin);
                  console.ShowProgress({2, 2, 0}, begin + 50ms);
                  console.ShowProgress({2, 2, 0}, begin + 100ms);
                  console.Say("done");
                  console.ShowProgress({3 << 20, 0, 0}, begin + 1s);
              }),
              "\r[" + std::string(15, '#') + std::string(15, ' ') +
                  "]  50 %, 0 rows, 0 rows/s, 10 min 0 s left\033[K"
                  "\r[" +
                  std::string(30, '#') +
                  "] 100 %, 0 rows, 0 rows/s, 0 s left\033[K"
                  "\r\033[Kvelscore: done\n"
                  "\r3 MiB read, 0 rows, 0 rows/s\033[K"
                  "\r\033[K");
    EXPECT_EQ(OnTerminal([] {
                  Console console;
                  console.ShowProgress({1, 2, 0}, Console::Clock::now());
              }),
              "");
}

TEST(Console, TellsProgressElsewhereWhereItIsWanted)
{
    const auto work = [](bool isWanted) {
        return [isWanted] {
            Console console;
            if (isWanted) console.WantProgress();
            const Console::Clock::time_point begin = Console::Clock::now();
            console.ShowProgress({0, 2, 0}, begin + 9s);
            console.ShowProgress({1, 2, 0}, begin + 20s);
            console.ShowProgress({1, 2, 0}, begin + 29s);
            console.ShowProgress({2, 2, 0}, begin + 30s);
        };
    };
    EXPECT_EQ(Elsewhere(work(false)), "");
    EXPECT_EQ(Elsewhere(work(true)),
              "velscore:  50 %, 0 rows, 0 rows/s, 20 s left\n"
              "velscore: 100 %, 0 rows, 0 rows/s, 0 s left\n");
}

// What stands for a closed stream is open in the other direction only.
TEST(Console, ClosedStandardStreamsAreHeld)
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        EXPECT_EQ(InChild([stream] {
                      ::close(stream);
                      HoldStandardStreams();
                      const int flags = ::fcntl(stream, F_GETFL);
                      if (flags < 0) return 1;
                      const int expected = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
                      return (flags & O_ACCMODE) == expected ? 0 : 2;
                  }),
                  0)
            << stream;
    }
    EXPECT_EQ(InChild([] {
                  const int before = ::fcntl(STDOUT_FILENO, F_GETFL);
                  HoldStandardStreams();
                  return ::fcntl(STDOUT_FILENO, F_GETFL) == before ? 0 : 1;
              }),
              0);
}

TEST(PrintOut, IsAFailureWhereItCannotBeWritten)
{
    const auto kindWith = [](const char* device, int flags) {
        return InChild([device, flags] {
            const int descriptor = ::open(device, flags);
            ::dup2(descriptor, STDOUT_FILENO);
            try {
                PrintOut("text");
            } catch (const Failure& failure) {
                return failure.Kind() == FailureKind::Output &&
                               failure.Arguments().front() == "standard output"
                           ? failure.Code() - kOutputNotWritten
                           : 254;
            }
            return 253;
        });
    };
    EXPECT_EQ(kindWith("/dev/null", O_RDONLY), 0);
    EXPECT_EQ(kindWith("/dev/full", O_WRONLY), kOutputFull - kOutputNotWritten);
    EXPECT_EQ(kindWith("/dev/null", O_WRONLY), 253);
}

TEST(PrintOut, DropsWhatAPipeNoLongerTakes)
{
    EXPECT_EQ(InChild([] {
                  IgnoreWriteSignals();
                  int ends[2];
                  if (::pipe(ends) != 0) return 1;
                  ::dup2(ends[1], STDOUT_FILENO);
                  ::close(ends[0]);
                  PrintOut("text");
                  PrintOut("more");
                  return 0;
              }),
              0);
}

}  // namespace
}  // namespace MCVelscore_850
