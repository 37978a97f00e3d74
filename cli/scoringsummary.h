#ifndef VELSCORE_CLI_SCORINGSUMMARY_H
#define VELSCORE_CLI_SCORINGSUMMARY_H

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace MCVelscore_850 {

class Failure;
class LoadedModel;
class ScoringSession;

/// One line: cases scored, cases not scored by code, values that the dictionary doesn't list.
std::string ClosingLine(const ScoringSession& session, const LoadedModel& model);

/// How a run ended.
struct RunEnd {
    int exitCode = 0;
    const Failure* failure = nullptr;  ///< what ended it; null where nothing did
    double seconds = 0.0;              ///< since it began
};

/// What became of a run, for programs: its end, rows, scored, not scored by code and field with the
/// first rows, unlisted values, what was adapted and
/// noticed in the document, times in seconds, rates, memory,
/// versions and the document's SHA-256.
nlohmann::ordered_json SummaryJson(const ScoringSession& session, const LoadedModel& model,
                                   const RunEnd& end);

}  // namespace MCVelscore_850

#endif
