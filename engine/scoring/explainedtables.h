#ifndef VELSCORE_ENGINE_SCORING_EXPLAINEDTABLES_H
#define VELSCORE_ENGINE_SCORING_EXPLAINEDTABLES_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "engine/scoring/resultblock.h"
#include "engine/scoring/resultschema.h"
#include "host/model/caseexplanation.h"

namespace MCVelscore_850 {

class LoadedModel;
struct ScoringOptions;

/// One case of a table, explained.
struct ExplainedCase {
    int64_t row;  ///< of all tables, from 1
    const CaseStatus& status;
    const CaseExplanation& explanation;  ///< empty where the status isn't OK
    const ResultSchema& schema;
    const ResultBlock& results;
    size_t place;  ///< of the case in `results`
};

/// Explains the cases of tables one after the other, on one thread, until the visitor answers
/// false; what it is given stands until it returns. Of the options those that say how tables are
/// read count.
///
/// Errors  Failure: what TableReader and TableScorer refuse, and a torn row.
void ExplainTables(const LoadedModel& model, const std::vector<std::string>& tables,
                   const ScoringOptions& options,
                   const std::function<bool(const ExplainedCase&)>& visitor);

/// A value of a case's results as text, numbers by `number`; empty where there is none.
std::string ResultText(const ExplainedCase& each, size_t column,
                       const std::function<std::string(double)>& number);

}  // namespace MCVelscore_850

#endif
