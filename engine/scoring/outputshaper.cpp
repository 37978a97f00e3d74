#include "engine/scoring/outputshaper.h"

#include <algorithm>
#include <string>

#include "engine/messages/failure.h"
#include "engine/messages/shorttext.h"
#include "engine/messages/suggestions.h"
#include "engine/tables/rowtext.h"
#include "host/messages/messages.h"
#include "host/model/scoreresult.h"

namespace MCVelscore_850 {

namespace {

void WriteValue(RowText& rows, const ResultBlock::Column& column, size_t row,
                std::span<const ResultCategory> categories)
{
    if (!HasRow(column.present, row)) {
        rows.AddEmpty();
    } else if (column.codes.empty()) {
        rows.AddNumber(column.numbers[row]);
    } else {
        const ResultCategory& category = categories[static_cast<size_t>(column.codes[row])];
        if (category.number) {
            rows.AddLabel(*category.number);
        } else {
            rows.AddText(category.text);
        }
    }
}

void WriteStatus(RowText& rows, const CaseStatus& status) { rows.AddWhole(status.code); }

void WriteStatusField(RowText& rows, const CaseStatus& status)
{
    if (status.FieldName().empty()) {
        rows.AddEmpty();
    } else {
        rows.AddText(status.FieldName());
    }
}

void WriteCell(RowText& rows, const OutputCell& cell)
{
    switch (cell.kind) {
        case OutputCell::Missing: rows.AddEmpty(); break;
        case OutputCell::Number:
            if (cell.isLabel) {
                rows.AddLabel(cell.number);
            } else {
                rows.AddNumber(cell.number);
            }
            break;
        case OutputCell::Text: rows.AddText(cell.text); break;
    }
}

[[noreturn]] void RefuseColumn(const std::string& name, const ResultSchema& schema)
{
    std::vector<std::string> known;
    for (const ResultColumn& column : schema.ValueColumns()) {
        if (column.quantity != ResultQuantity::SurvivalAt) known.push_back(column.name);
    }
    if (schema.ResultType() == ScoreResult::COXREG_RESULT) known.push_back(SurvivalPlaceholder());
    for (const ResultColumn& column : std::span(schema.Columns()).last(2))
        known.push_back(column.name);
    throw Failure(FailureKind::Usage, kUnknownResultColumn, {name, JoinNames(known, ", ")},
                  SuggestWord(name, known));
}

// The positions in the schema of the columns that are wanted.
std::vector<size_t> PositionsOf(const std::vector<std::string>& names, const ResultSchema& schema)
{
    std::vector<size_t> positions;
    const auto add = [&](size_t position) {
        if (std::find(positions.begin(), positions.end(), position) != positions.end()) {
            throw Failure(FailureKind::Usage, kResultColumnTwice,
                          {schema.Columns()[position].name});
        }
        positions.push_back(position);
    };
    for (const std::string& name : names) {
        const size_t before = positions.size();
        for (size_t i = 0; i < schema.Columns().size(); ++i) {
            const ResultColumn& column = schema.Columns()[i];
            const bool ofAll =
                name == "probabilities" && column.quantity == ResultQuantity::Probability;
            if (ofAll || column.name == name) add(i);
        }
        if (positions.size() == before) RefuseColumn(name, schema);
    }
    return positions;
}

}  // namespace

OutputShaper::OutputShaper(const ResultSchema& schema, std::span<const std::string> header,
                           const std::string& tableName, const OutputOptions& options,
                           const OutputSection* document)
{
    if (document != nullptr) {  // its fields stand in place of the schema's values
        results_ = {schema.ValueCount(), schema.ValueCount() + 1};
    } else if (!options.columns.empty()) {
        results_ = PositionsOf(options.columns, schema);
    } else {
        for (size_t i = 0; i < schema.Columns().size(); ++i) results_.push_back(i);
    }
    std::vector<std::string> results;
    if (document != nullptr) {
        for (const OutputField& field : document->fields) results.push_back(field.name);
    }
    for (const size_t position : results_) {
        kinds_.push_back(schema.Columns()[position].kind);
        results.push_back(schema.Columns()[position].name);
    }
    kept_.emplace(options, header, tableName, results);
    columns_ = kept_->Names();
    columns_.insert(columns_.end(), results.begin(), results.end());
}

void OutputShaper::WriteRow(RowText& rows, const InputRow& input, const ResultBlock& results,
                            size_t row) const
{
    kept_->Write(rows, input);
    for (size_t i = 0; i < results_.size(); ++i) {
        switch (kinds_[i]) {
            case ResultKind::Status: rows.AddWhole(results.status[row]); break;
            case ResultKind::FieldName: WriteStatusField(rows, results.StatusOf(row)); break;
            case ResultKind::Number:
            case ResultKind::Category:
                WriteValue(rows, results.columns[results_[i]], row, results.categories);
                break;
        }
    }
    rows.EndRow();
}

void OutputShaper::WriteRow(RowText& rows, const InputRow& input, std::span<const OutputCell> cells,
                            const CaseStatus& status) const
{
    kept_->Write(rows, input);
    for (const OutputCell& cell : cells) WriteCell(rows, cell);
    WriteStatus(rows, status);
    WriteStatusField(rows, status);
    rows.EndRow();
}

void OutputShaper::WriteTorn(RowText& rows, std::string_view table, long code) const
{
    const CaseStatus status{code};
    kept_->WriteTorn(rows, table);
    for (size_t i = kept_->Names().size(); i + results_.size() < columns_.size(); ++i) {
        rows.AddEmpty();
    }
    for (const ResultKind kind : kinds_) {
        if (kind == ResultKind::Status) {
            WriteStatus(rows, status);
        } else {
            rows.AddEmpty();
        }
    }
    rows.EndRow();
}

}  // namespace MCVelscore_850
