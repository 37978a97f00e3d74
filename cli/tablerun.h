#ifndef VELSCORE_CLI_TABLERUN_H
#define VELSCORE_CLI_TABLERUN_H

#include <functional>

#include "engine/scoring/scoringsession.h"

namespace MCVelscore_850 {

class Console;
class LoadedModel;
struct ScoreArguments;

/// What a command makes of the options once the model is read and stands as it was asked for.
using CompleteOptions = std::function<void(const LoadedModel& model, ScoringOptions& options)>;

/// One run of `score`, `curve` or `explain --long`: tables in, rows of text out. Answers the exit
/// code; throws UsageError and, before there is an output, Failure.
int RunTable(const ScoreArguments& arguments, ScoringOptions options, Console& console,
             const CompleteOptions& complete = {});

}  // namespace MCVelscore_850

#endif
