#include "cli/console.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "cli/findingtext.h"
#include "engine/documents/loadedmodel.h"
#include "engine/messages/visibletext.h"
#include "engine/tables/outputfile.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

constexpr std::string_view kRed = "\033[1;31m";
constexpr std::string_view kPlain = "\033[0m";

void Put(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stderr); }

}  // namespace

bool Console::IsColourful(int stream)
{
    const char* none = std::getenv("NO_COLOR");
    const char* terminal = std::getenv("TERM");
    return ::isatty(stream) == 1 && (none == nullptr || *none == '\0') &&
           (terminal == nullptr || std::string_view(terminal) != "dumb");
}

Console::Console() : terminal_(::isatty(STDERR_FILENO) == 1), colour_(IsColourful(STDERR_FILENO)) {}

Console::~Console() { ClearProgress(); }

void Console::Say(std::string_view text)
{
    ClearProgress();
    Put(fmt::format("velscore: {}\n", VisibleText(text, LineBreaks::Kept)));
}

void Console::SayError(std::string_view text, std::string_view remedy)
{
    ClearProgress();
    Put(fmt::format("velscore: {}error:{} {}\n", colour_ ? kRed : "", colour_ ? kPlain : "",
                    VisibleText(text, LineBreaks::Kept)));
    if (!remedy.empty()) {
        Put(fmt::format("  what to do: {}\n", VisibleText(remedy, LineBreaks::Kept)));
    }
}

void Console::SayFailure(const Failure& failure)
{
    SayError(FailureText(failure), failure.Remedy());
}

void Console::SayFindings(const LoadedModel& model)
{
    for (const std::string& line : FindingLines(model.DocumentFindings(), model.File())) Say(line);
}

void Console::ShowProgress(const Progress& progress, Clock::time_point now)
{
    using namespace std::chrono_literals;
    if (!terminal_ && !wanted_) return;
    if (terminal_ ? now - started_ < 1s || now - shown_ < 100ms
                  : now - std::max(started_, shown_) < 10s) {
        return;
    }
    shown_ = now;
    const double seconds = std::chrono::duration<double>(now - started_).count();
    const std::string text = ProgressText(progress, seconds);
    if (!terminal_) return Say(text);
    progressShown_ = true;
    std::string bar;
    if (progress.totalBytes > 0) {
        constexpr int kWidth = 30;
        const auto filled = static_cast<size_t>(ShareOf(progress) * kWidth);
        bar = fmt::format("[{:<{}}] ", std::string(filled, '#'), kWidth);
    }
    Put(fmt::format("\r{}{}\033[K", bar, text));
}

void Console::ClearProgress()
{
    if (progressShown_) Put("\r\033[K");
    progressShown_ = false;
}

// What is meant for a closed stream would land in the file that got its number. What takes its
// place is open in the other direction only.
void HoldStandardStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) < 0) {
            ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

void PrintOut(std::string_view text)
{
    static OutputFile out("-");
    if (const int error = out.Write(text); error != 0) RefuseOutput(out.Name(), error);
}

std::string FailureText(const Failure& failure)
{
    std::string text;
    if (const auto* refusal = dynamic_cast<const DocumentFailure*>(&failure)) {
        text = refusal->File();
        if (refusal->Line() > 0) text += fmt::format(":{}:{}", refusal->Line(), refusal->Column());
        text += ": ";
    }
    text += failure.what();
    // A fault tells its rule instead.
    if (failure.Code() != kDocumentFault) text += fmt::format(" [{}]", failure.Code());
    if (const auto* refusal = dynamic_cast<const DocumentFailure*>(&failure);
        refusal != nullptr && !refusal->ElementPath().empty()) {
        text += fmt::format("\n  at {}", refusal->ElementPath());
    }
    if (const auto* faults = dynamic_cast<const DocumentFaults*>(&failure)) {
        const size_t more = faults->Found().CountOf(Answer::Fault) - 1;
        if (more > 0)
            text += fmt::format("\n  and {} more {}", more, more == 1 ? "fault" : "faults");
    }
    return text;
}

}  // namespace MCVelscore_850
