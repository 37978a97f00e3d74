#ifndef VELSCORE_CLI_SCORINGSUMMARY_H
#define VELSCORE_CLI_SCORINGSUMMARY_H

#include <string>

#include <nlohmann/json_fwd.hpp>

namespace MCVelscore_850 {

class LoadedModel;
class ScoringSession;

/// One line: cases scored, cases not scored by code, values that the dictionary doesn't list.
std::string ClosingLine(const ScoringSession& session, const LoadedModel& model);

/// What became of a run, for programs: rows, scored, not scored by code and field with the first
/// rows, unlisted values, what was adapted in the document, times in seconds, rates, memory,
/// versions and the document's SHA-256.
nlohmann::ordered_json SummaryJson(const ScoringSession& session, const LoadedModel& model,
                                   double seconds);

}  // namespace MCVelscore_850

#endif
