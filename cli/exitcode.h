#ifndef VELSCORE_CLI_EXITCODE_H
#define VELSCORE_CLI_EXITCODE_H

namespace MCVelscore_850 {

/// What the command ends with. Most of them are the kinds of an engine's Failure.
enum ExitCode {
    kExitDone = 0,
    kExitUsage = 1,
    kExitDocument = 2,
    kExitCases = 3,
    kExitOutput = 4,
    kExitStrict = 5,
    kExitDifferences = 6,  ///< verify or diff found what differs
    kExitPlugin = 7,
    kExitInternal = 70,  ///< a defect of the program itself, or no memory left
    kExitSignal = 128    ///< plus the signal's number: 130 for an interrupt
};

}  // namespace MCVelscore_850

#endif
