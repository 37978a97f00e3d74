#ifndef VELSCORE_CLI_SCORINGARGUMENTS_H
#define VELSCORE_CLI_SCORINGARGUMENTS_H

#include <string>
#include <vector>

#include "cli/confinement.h"
#include "engine/scoring/scoringsession.h"

namespace MCVelscore_850 {

class LoadedModel;
struct ScoreArguments;
struct TableArguments;

// What was asked of `score`, `curve`, `explain` and `diff`, understood. All throw UsageError for
// what can't be, or doesn't go together.

/// The tables to score: standard input where none is named.
std::vector<std::string> TablesOf(const ScoreArguments& arguments);

/// The model and one of the tables can't both be standard input.
void RefuseModelBeside(const ScoreArguments& arguments, const std::vector<std::string>& tables);

/// What the run reads and writes.
NeededFiles FilesOf(const ScoreArguments& arguments);

/// The number that --level asks for, above 0 and below 1.
double LevelOf(const std::string& text);

/// How tables are read, and nothing else.
ScoringOptions OptionsOf(const TableArguments& arguments);

/// What doesn't depend on the model.
ScoringOptions OptionsOf(const ScoreArguments& arguments);

/// Sets the model's policy, level and the like, and completes the options by what it is.
void PrepareModel(const ScoreArguments& arguments, LoadedModel& model, ScoringOptions& options);

}  // namespace MCVelscore_850

#endif
