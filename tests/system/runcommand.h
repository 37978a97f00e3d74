#ifndef VELSCORE_TESTS_SYSTEM_RUNCOMMAND_H
#define VELSCORE_TESTS_SYSTEM_RUNCOMMAND_H

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "tests/scratchfolder.h"

namespace MCVelscore_850 {

/// How a child process ended and what it wrote.
struct Finished {
    int exitCode = -1;  ///< -1 when a signal ended it
    int signal = 0;
    std::string out;
    std::string err;
};

/// Runs a program with these arguments; `input` is its standard input. `environment` adds to ours.
Finished RunProgram(const std::vector<std::string>& arguments, const std::string& input = "",
                    const std::vector<std::string>& environment = {});

/// The built command velscore.
Finished RunVelscore(std::vector<std::string> arguments, const std::string& input = "",
                     const std::vector<std::string>& environment = {});

/// A child that still runs, with pipes to its standard input and from its outputs.
class RunningVelscore {
public:
    explicit RunningVelscore(std::vector<std::string> arguments);
    RunningVelscore(const RunningVelscore&) = delete;
    RunningVelscore& operator=(const RunningVelscore&) = delete;
    ~RunningVelscore();

    /// False when the child closed its standard input.
    bool Write(const std::string& text);
    void CloseInput();
    /// Waits until the child took everything that was written.
    void AwaitInputTaken() const;
    /// Reads at least `size` bytes of its standard output, fewer at the end.
    std::string ReadOutput(size_t size);
    void CloseOutput();
    void Signal(int signal) const;
    /// The most memory that the running child has held so far.
    long PeakKilobytes() const;
    /// Reads the rest of both outputs and waits for the end.
    Finished Finish();

private:
    friend Finished RunProgram(const std::vector<std::string>&, const std::string&,
                               const std::vector<std::string>&);
    RunningVelscore() = default;
    void Start(const std::vector<std::string>& arguments,
               const std::vector<std::string>& environment);

    pid_t child_ = -1;
    int in_ = -1;
    int out_ = -1;
    int err_ = -1;
    Finished finished_;
};

std::string ReadFile(const std::string& path);
/// The path of a file below tests/data.
std::string DataFile(const std::string& name);

/// True in a build whose memory figures and speed say nothing of the program's own.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kIsSanitized = true;
#elif defined(__has_feature)
inline constexpr bool kIsSanitized = __has_feature(address_sanitizer);
#else
inline constexpr bool kIsSanitized = false;
#endif

}  // namespace MCVelscore_850

#endif
