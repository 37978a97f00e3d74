#include "engine/scoring/outputshaper.h"

#include <string>
#include <unordered_map>
#include <unordered_set>

#include "engine/messages/failure.h"
#include "engine/messages/suggestions.h"
#include "engine/tables/csvwriter.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

void WriteValue(CsvWriter& writer, const ResultBlock::Column& column, size_t row,
                std::span<const ResultCategory> categories)
{
    if (!HasRow(column.present, row)) {
        writer.AddEmpty();
    } else if (column.codes.empty()) {
        writer.AddNumber(column.numbers[row]);
    } else {
        const ResultCategory& category = categories[static_cast<size_t>(column.codes[row])];
        if (category.number) {
            writer.AddNumber(*category.number);
        } else {
            writer.AddText(category.text);
        }
    }
}

void WriteStatus(CsvWriter& writer, const CaseStatus& status)
{
    if (status.IsOK()) {
        writer.AddText("0");
        writer.AddEmpty();
    } else {
        writer.AddText(std::to_string(status.code));
        writer.AddText(status.FieldName());
    }
    writer.EndRow();
}

void WriteCell(CsvWriter& writer, const OutputCell& cell)
{
    switch (cell.kind) {
        case OutputCell::Missing: writer.AddEmpty(); break;
        case OutputCell::Number: writer.AddNumber(cell.number); break;
        case OutputCell::Text: writer.AddText(cell.text); break;
    }
}

// What follows the kept columns.
std::vector<std::string> ResultNames(const ResultSchema& schema, const OutputSection* document)
{
    std::vector<std::string> names;
    if (document != nullptr) {
        for (const OutputField& field : document->fields) names.push_back(field.name);
    }
    const size_t first = document == nullptr ? 0 : schema.ValueCount();
    for (size_t i = first; i < schema.Columns().size(); ++i) {
        names.push_back(schema.Columns()[i].name);
    }
    return names;
}

}  // namespace

OutputShaper::OutputShaper(const ResultSchema& schema, std::span<const std::string> header,
                           const std::string& tableName, const OutputOptions& options,
                           const OutputSection* document)
{
    const std::vector<std::string> results = ResultNames(schema, document);
    std::vector<std::string> keep = options.keep;
    if (options.keepAll) keep.assign(header.begin(), header.end());
    std::unordered_map<std::string_view, size_t> positions;
    std::unordered_set<std::string_view> twice;
    for (size_t i = 0; i < header.size(); ++i) {
        if (!positions.emplace(header[i], i).second) twice.insert(header[i]);
    }
    const std::unordered_set<std::string_view> wanted(keep.begin(), keep.end());
    std::unordered_set<std::string> given(results.begin(), results.end());
    for (const std::string& name : keep) {
        const auto found = positions.find(name);
        if (found == positions.end()) {
            throw Failure(FailureKind::Usage, kUnknownKeptColumn, {name, tableName},
                          SuggestWord(name, header));
        }
        if (twice.contains(name)) {
            throw Failure(FailureKind::Cases, kDuplicateColumn, {tableName, name});
        }
        kept_.push_back(found->second);
        std::string column = name;
        while (given.contains(column) || (column != name && wanted.contains(column))) {
            column.insert(0, "input.");
        }
        given.insert(column);
        columns_.push_back(std::move(column));
    }
    columns_.insert(columns_.end(), results.begin(), results.end());
}

void OutputShaper::WriteHeader(CsvWriter& writer) const
{
    for (const std::string& column : columns_) writer.AddText(column);
    writer.EndRow();
}

void OutputShaper::WriteRow(CsvWriter& writer, std::span<const std::string_view> fields,
                            const ResultBlock& results, size_t row) const
{
    WriteKept(writer, fields);
    for (const ResultBlock::Column& column : results.columns) {
        WriteValue(writer, column, row, results.categories);
    }
    WriteStatus(writer, results.StatusOf(row));
}

void OutputShaper::WriteRow(CsvWriter& writer, std::span<const std::string_view> fields,
                            std::span<const OutputCell> cells, const CaseStatus& status) const
{
    WriteKept(writer, fields);
    for (const OutputCell& cell : cells) WriteCell(writer, cell);
    WriteStatus(writer, status);
}

void OutputShaper::WriteKept(CsvWriter& writer, std::span<const std::string_view> fields) const
{
    for (const size_t position : kept_) writer.AddText(fields[position]);
}

}  // namespace MCVelscore_850
