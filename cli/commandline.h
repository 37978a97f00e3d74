#ifndef VELSCORE_CLI_COMMANDLINE_H
#define VELSCORE_CLI_COMMANDLINE_H

namespace MCVelscore_850 {

class Console;

/// Understands the arguments, runs the command that they name and answers the exit code. Throws
/// UsageError and the engine's Failure.
int RunCommandLine(int argumentCount, char** arguments, Console& console);

}  // namespace MCVelscore_850

#endif
