#ifndef VELSCORE_CLI_STOPSIGNALS_H
#define VELSCORE_CLI_STOPSIGNALS_H

#include "engine/tables/bytesource.h"

namespace MCVelscore_850 {

/// Makes the signals that end a program (interrupt, hang-up, terminate) raise a flag instead, so
/// that a run can end at a whole row. A second one ends the program at once.
void CatchStopSignals();

/// Lets writes to a pipe without a reader and to a file at its limit fail with an error instead of
/// ending the program.
void IgnoreWriteSignals();

/// Raised by a signal that was caught.
const StopFlag& StopRequested();

/// The signal that raised the flag, 0 before.
int StopSignal();

}  // namespace MCVelscore_850

#endif
