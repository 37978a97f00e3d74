#include "engine/scoring/explainedtables.h"

#include <algorithm>
#include <memory>

#include "engine/documents/loadedmodel.h"
#include "engine/scoring/scoringsession.h"
#include "engine/scoring/tablescorer.h"
#include "engine/tables/blocksplitter.h"
#include "engine/tables/tablereader.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kMostFields = size_t{1} << 16;  // split at once, of wide tables

std::unique_ptr<BlockSplitter> SplitterOf(const TableReader& reader, const TableScorer& scorer,
                                          const TableDialect& dialect)
{
    SplitterPlan plan{.form = reader.Form(),
                      .header = reader.Header(),
                      .delimiter = dialect.delimiter,
                      .decimal = dialect.decimal,
                      .uses = std::vector<ColumnUse>(reader.Header().size())};
    for (const CaseField& field : scorer.Preparer().Fields()) {
        ColumnUse& use = plan.uses[field.Column()];
        use.isUsed = true;
        use.isNumber = use.isNumber || field.ValueKind() == CaseField::Kind::Number;
    }
    return MakeBlockSplitter(plan);
}

}  // namespace

void ExplainTables(const LoadedModel& model, const std::vector<std::string>& tables,
                   const ScoringOptions& options,
                   const std::function<bool(const ExplainedCase&)>& visitor)
{
    const TableDialect& dialect = options.dialect;
    TableReader reader(tables,
                       {.delimiter = dialect.delimiter,
                        .decimal = dialect.decimal,
                        .hasHeader = dialect.hasHeader,
                        .tellsDelimiter = dialect.tellsDelimiter},
                       {.bytes = options.blockBytes});
    TableOptions table;
    table.decimal = dialect.decimal;
    table.missingTexts = options.missingTexts;
    table.columnOf = options.columnOf;
    table.headerRemedy = reader.HeaderRemedy();
    if (!dialect.hasHeader && table.columnOf.empty()) {
        table.columnOf = ColumnsInOrder(reader, model, true);
    }
    TableScorer scorer(model, reader.Header(), reader.NameOf(0), table);
    const std::unique_ptr<BlockSplitter> splitter = SplitterOf(reader, scorer, dialect);
    const size_t columns = reader.Header().size();
    const size_t most = std::clamp(kMostFields / columns, size_t{1}, TableScorer::kRows);
    TextRows textRows(columns, true);
    ResultBlock results(scorer.Schema());
    RecordBlock records;
    std::span<const std::string_view> fields;
    while (reader.Next(records)) {
        splitter->Begin(records);
        while (splitter->NextRows(most, fields) > 0) {
            const int64_t first = records.rowsBefore + splitter->Raw(0).number;
            bool goesOn = true;
            scorer.VisitExplanations(
                textRows.Block(fields), &results,
                [&](size_t row, const CaseStatus& status, const CaseExplanation& explanation) {
                    goesOn = visitor({first + static_cast<int64_t>(row), status, explanation,
                                      scorer.Schema(), results, row});
                    return goesOn;
                });
            if (!goesOn) return;
        }
        if (const TornRow* torn = splitter->Torn()) {
            throw FailureOf(torn->fault, reader.NameOf(records.table), torn->raw.number, columns);
        }
    }
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
