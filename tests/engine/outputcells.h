#ifndef VELSCORE_TESTS_ENGINE_OUTPUTCELLS_H
#define VELSCORE_TESTS_ENGINE_OUTPUTCELLS_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/documents/loadedmodel.h"
#include "engine/scoring/outputevaluator.h"
#include "engine/scoring/tablescorer.h"

namespace MCVelscore_850 {

// The values of a document's output fields by row and field, of a row without a score its defaults.
// `texts` has one for each column of the header and each row.
inline std::vector<std::vector<OutputCell>> OutputCellsOf(const LoadedModel& model,
                                                          const std::vector<std::string>& header,
                                                          std::span<const std::string_view> texts)
{
    TableScorer scorer(model, header, "cases.csv");
    TextRows rows(header.size());
    OutputEvaluator evaluator(*model.Output(), model.Model(), model.Description());
    std::vector<std::vector<OutputCell>> cells;
    scorer.VisitCases(rows.Block(texts), [&](size_t, const CaseStatus&, const CaseRecord& record,
                                             const ScoreResult* result) {
        const auto row =
            result == nullptr ? evaluator.EvaluateDefaults() : evaluator.Evaluate(record, *result);
        cells.emplace_back(row.begin(), row.end());
        return true;
    });
    return cells;
}

}  // namespace MCVelscore_850

#endif
