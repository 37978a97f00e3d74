#ifndef VELSCORE_CLI_CONSOLE_H
#define VELSCORE_CLI_CONSOLE_H

#include <chrono>
#include <string>
#include <string_view>

#include "cli/progresstext.h"

namespace MCVelscore_850 {

class Failure;
class LoadedModel;

/// Everything that the command says beside its data: on standard error, in colour only on a
/// terminal and without NO_COLOR.
class Console {
public:
    using Clock = std::chrono::steady_clock;

    Console();
    ~Console();

    /// "velscore: ..." on a line of its own.
    void Say(std::string_view text);
    /// The same, as an error; `remedy` may be empty.
    void SayError(std::string_view text, std::string_view remedy = {});
    /// A failure with its place, code and remedy.
    void SayFailure(const Failure& failure);

    /// What was noticed and adapted in a model's document, in a few lines; nothing where there is
    /// nothing.
    void SayFindings(const LoadedModel& model);

    /// Whether what is written to this stream, a file descriptor, may have colours.
    static bool IsColourful(int stream);

    /// Shows how far a long work is: on a terminal a bar, after the first second; elsewhere, if
    /// that is wanted, a line each ten seconds.
    void ShowProgress(const Progress& progress, Clock::time_point now = Clock::now());
    /// Progress is shown where no terminal is, too.
    void WantProgress() { wanted_ = true; }
    void ClearProgress();

private:
    bool terminal_;
    bool colour_;
    bool wanted_ = false;
    bool progressShown_ = false;
    Clock::time_point started_ = Clock::now();
    Clock::time_point shown_{};
};

/// Opens what stands for a standard stream that is closed, whose number would go to the next file
/// opened. What takes its place fails as the closed one does.
void HoldStandardStreams();

/// Writes to standard output, where the data goes. Throws Failure (RefuseOutput) when it can't be
/// written; once the reader of a pipe went away, the rest is dropped quietly.
void PrintOut(std::string_view text);

/// "model.pmml:12:5: text" with the place in front where the failure knows it, and the code, or the
/// rule of a fault, behind; then the element's path, and how many more faults there are.
std::string FailureText(const Failure& failure);

}  // namespace MCVelscore_850

#endif
