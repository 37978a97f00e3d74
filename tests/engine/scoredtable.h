#ifndef VELSCORE_TESTS_ENGINE_SCOREDTABLE_H
#define VELSCORE_TESTS_ENGINE_SCOREDTABLE_H

#include <algorithm>
#include <bit>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/documents/loadedmodel.h"
#include "engine/scoring/tablescorer.h"
#include "engine/tables/bytesource.h"
#include "engine/tables/rowreader.h"

namespace MCVelscore_850 {

// A table of cases, whole in memory: of a file, of another source, or made.
struct CaseTable {
    explicit CaseTable(const std::string& path) : CaseTable(InputFile(path)) {}
    explicit CaseTable(ByteSource&& source)
    {
        RowReader reader(source);
        header = reader.Header();
        std::span<const std::string_view> fields;
        while (reader.Next(fields)) texts.insert(texts.end(), fields.begin(), fields.end());
        views.assign(texts.begin(), texts.end());
    }
    // `cells` has a text for each column of each row.
    CaseTable(std::vector<std::string> columns, std::vector<std::string> cells)
        : header(std::move(columns)), texts(std::move(cells)), views(texts.begin(), texts.end())
    {}
    CaseTable(const CaseTable&) = delete;  // the views are of its own texts
    CaseTable& operator=(const CaseTable&) = delete;

    std::vector<std::string> header;
    std::vector<std::string> texts;
    std::vector<std::string_view> views;
};

// All that a table's results tell, each number by its bits, a line a row; the table `times` over.
inline std::vector<std::string> ScoreTable(const LoadedModel& model, const CaseTable& table,
                                           size_t times)
{
    ResultOptions options{.linearPredictor = true, .linearPredictorError = true};
    options.survival = {.risk = true, .median = true, .times = {0.0, 5.0, 100.5, 400.0, 1e6}};
    options.survivalColumns = {"at 0", "at 5", "at 100.5", "at 400", "at 1e6"};
    TableScorer scorer(model, table.header, "input.csv", {.results = options});
    ResultBlock results(scorer.Schema());
    const size_t columns = table.header.size();
    TextRows rows(columns);
    std::vector<std::string> lines;
    std::vector<std::string_view> all;
    for (size_t i = 0; i < times; ++i) {
        all.insert(all.end(), table.views.begin(), table.views.end());
    }
    for (size_t from = 0; from < all.size(); from += TableScorer::kRows * columns) {
        const size_t count = std::min(TableScorer::kRows * columns, all.size() - from);
        scorer.Score(rows.Block(std::span(all).subspan(from, count)), results);
        for (size_t row = 0; row < results.rows; ++row) {
            const CaseStatus& status = results.StatusOf(row);
            std::string line = std::to_string(status.code);
            line.append(" ").append(status.FieldName()).append(" ");
            line.append(status.text.value_or("(none)"));
            for (size_t c = 0; c < results.columns.size(); ++c) {
                const ResultBlock::Column& column = results.columns[c];
                line += ' ';
                if (!HasRow(column.present, row)) continue;
                line += column.codes.empty()
                            ? std::to_string(std::bit_cast<uint64_t>(column.numbers[row]))
                            : std::to_string(column.codes[row]);
            }
            lines.push_back(std::move(line));
        }
    }
    return lines;
}

}  // namespace MCVelscore_850

#endif
