#ifndef VELSCORE_CLI_COMMANDLINE_H
#define VELSCORE_CLI_COMMANDLINE_H

#include <functional>
#include <string>
#include <vector>

namespace MCVelscore_850 {

class Console;

/// Understands the arguments, without the program's name, runs the command that they name and
/// answers the exit code. Throws UsageError and the engine's Failure.
int RunCommandLine(const std::vector<std::string>& arguments, Console& console);

/// Answers what `run` answers; or says what it throws, and answers the exit code of that.
int ExitCodeOf(const std::function<int()>& run, Console& console);

/// The whole program: RunCommandLine() with the trace that the environment asks for
/// (VELSCORE_TRACE), of main()'s arguments. Answers the exit code and throws nothing.
int RunProgram(int argumentCount, const char* const* arguments, Console& console);

}  // namespace MCVelscore_850

#endif
