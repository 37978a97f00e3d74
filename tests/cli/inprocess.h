#ifndef VELSCORE_TESTS_CLI_INPROCESS_H
#define VELSCORE_TESTS_CLI_INPROCESS_H

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace MCVelscore_850 {

/// What the command answered and wrote, in this process.
struct Answered {
    int exitCode = -1;
    std::string out;
    std::string err;
};
inline void PrintTo(const Answered& run, std::ostream* out)
{
    *out << "exit code " << run.exitCode << "\nout: " << run.out << "\nerr: " << run.err;
}

/// Runs `work` with standard streams of its own: `input` is what it reads.
Answered WithStreams(const std::function<int()>& work, const std::string& input = "");

/// The whole program but for its main(). To a command that reads documents the plug-in of the build
/// is named, since a run without a name confines the process for good.
Answered RunInProcess(std::vector<std::string> arguments, const std::string& input = "");

/// The exit code of a child process that runs this, or -1 less the signal that ended it.
int InChild(const std::function<int()>& work);

std::string ReadFile(const std::string& path);

/// With the first `from` in it replaced; fails the test where there is none.
std::string Replaced(std::string text, const std::string& from, const std::string& to);

}  // namespace MCVelscore_850

#endif
