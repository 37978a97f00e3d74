#include "engine/scoring/texttables.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>

#include "engine/scoring/scoringsession.h"
#include "engine/tables/blocksplitter.h"

namespace MCVelscore_850 {

namespace {

constexpr size_t kMostFields = size_t{1} << 16;  // split at once, of wide tables

std::unique_ptr<BlockSplitter> SplitterOf(const TableReader& reader,
                                          std::span<const TableScorer* const> scorers,
                                          const TableDialect& dialect)
{
    SplitterPlan plan{.form = reader.Form(),
                      .header = reader.Header(),
                      .delimiter = dialect.delimiter,
                      .decimal = dialect.decimal,
                      .uses = std::vector<ColumnUse>(reader.Header().size())};
    for (const TableScorer* scorer : scorers) {
        for (const CaseField& field : scorer->Preparer().Fields()) {
            ColumnUse& use = plan.uses[field.Column()];
            use.isUsed = true;
            use.isNumber = use.isNumber || field.ValueKind() == CaseField::Kind::Number;
        }
    }
    return MakeBlockSplitter(plan);
}

}  // namespace

TextTables::TextTables(const std::vector<std::string>& paths, const ScoringOptions& options)
    : options_(options),
      reader_(paths,
              {.delimiter = options.dialect.delimiter,
               .decimal = options.dialect.decimal,
               .hasHeader = options.dialect.hasHeader,
               .tellsDelimiter = options.dialect.tellsDelimiter},
              {.bytes = options.blockBytes})
{}

TableOptions TextTables::OptionsFor(std::map<std::string, std::string> columnOf) const
{
    TableOptions table;
    table.decimal = options_.dialect.decimal;
    table.missingTexts = options_.missingTexts;
    table.columnOf = std::move(columnOf);
    table.headerRemedy = reader_.HeaderRemedy();
    return table;
}

void TextTables::Visit(std::span<const TableScorer* const> scorers, const Visitor& visitor)
{
    const std::unique_ptr<BlockSplitter> splitter = SplitterOf(reader_, scorers, options_.dialect);
    const size_t columns = reader_.Header().size();
    const size_t most = std::clamp(kMostFields / columns, size_t{1}, TableScorer::kRows);
    TextRows textRows(columns, true);
    RecordBlock records;
    std::span<const std::string_view> fields;
    while (reader_.Next(records)) {
        splitter->Begin(records);
        while (splitter->NextRows(most, fields) > 0) {
            const int64_t first = records.rowsBefore + splitter->Raw(0).number;
            if (!visitor(textRows.Block(fields), first)) return;
        }
        if (const TornRow* torn = splitter->Torn()) {
            throw FailureOf(torn->fault, reader_.NameOf(records.table), torn->raw.number, columns);
        }
    }
}

}  // namespace MCVelscore_850
