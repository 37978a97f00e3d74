#include "engine/scoring/explainedtables.h"

#include <map>
#include <utility>

#include "engine/documents/loadedmodel.h"
#include "engine/scoring/scoringsession.h"
#include "engine/scoring/tablescorer.h"
#include "engine/scoring/texttables.h"

namespace MCVelscore_850 {

void ExplainTables(const LoadedModel& model, const std::vector<std::string>& tables,
                   const ScoringOptions& options,
                   const std::function<bool(const ExplainedCase&)>& visitor)
{
    TextTables rows(tables, options);
    std::map<std::string, std::string> columnOf = options.columnOf;
    if (!options.dialect.hasHeader && columnOf.empty()) {
        columnOf = ColumnsInOrder(rows.Reader(), model, true);
    }
    TableScorer scorer(model, rows.Reader().Header(), rows.Reader().NameOf(0),
                       rows.OptionsFor(std::move(columnOf)));
    ResultBlock results(scorer.Schema());
    const TableScorer* const scorers[] = {&scorer};
    rows.Visit(scorers, [&](const ColumnBlock& block, int64_t first) {
        bool goesOn = true;
        scorer.VisitExplanations(
            block, &results,
            [&](size_t row, const CaseStatus& status, const CaseExplanation& explanation) {
                goesOn = visitor({first + static_cast<int64_t>(row), status, explanation,
                                  scorer.Schema(), results, row});
                return goesOn;
            });
        return goesOn;
    });
}

std::string ResultText(const ExplainedCase& each, size_t column,
                       const std::function<std::string(double)>& number)
{
    const ResultBlock::Column& values = each.results.columns[column];
    if (!HasRow(values.present, each.place)) return {};
    if (values.codes.empty()) return number(values.numbers[each.place]);
    return each.results.categories[static_cast<size_t>(values.codes[each.place])].text;
}

}  // namespace MCVelscore_850
