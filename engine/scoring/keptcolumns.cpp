#include "engine/scoring/keptcolumns.h"

#include <unordered_map>
#include <unordered_set>

#include "engine/messages/failure.h"
#include "engine/messages/suggestions.h"
#include "engine/tables/rowtext.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

// A kept value that was JSON; `field` is its text, but for the decimal mark of a number.
void WriteJson(RowText& rows, std::string_view value, std::string_view field)
{
    if (value.empty()) {
        rows.AddEmpty();
    } else if (rows.Form() == TableForm::JsonLines) {
        rows.AddJson(value);
    } else {
        rows.AddText(field.empty() || value.front() == '"' ? field : value);
    }
}

}  // namespace

KeptColumns::KeptColumns(const OutputOptions& options, std::span<const std::string> header,
                         const std::string& tableName, std::span<const std::string> results)
    : tellsTable_(!options.tableColumn.empty())
{
    std::vector<std::string> keep = options.keep;
    if (options.keepAll) keep.assign(header.begin(), header.end());
    std::unordered_map<std::string_view, size_t> positionOf;
    std::unordered_set<std::string_view> twice;
    for (size_t i = 0; i < header.size(); ++i) {
        if (!positionOf.emplace(header[i], i).second) twice.insert(header[i]);
    }
    const std::unordered_set<std::string_view> wanted(keep.begin(), keep.end());
    std::unordered_set<std::string> given(results.begin(), results.end());
    if (tellsTable_) {
        if (!given.insert(options.tableColumn).second) {
            throw Failure(FailureKind::Usage, kTableColumnTaken, {options.tableColumn});
        }
        names_.push_back(options.tableColumn);
    }
    for (const std::string& name : keep) {
        const auto found = positionOf.find(name);
        if (found == positionOf.end()) {
            throw Failure(FailureKind::Usage, kUnknownKeptColumn, {name, tableName},
                          SuggestWord(name, header));
        }
        if (twice.contains(name)) {
            throw Failure(FailureKind::Cases, kDuplicateColumn, {tableName, name});
        }
        positions_.push_back(found->second);
        std::string column = name;
        while (given.contains(column) || (column != name && wanted.contains(column))) {
            column.insert(0, "input.");
        }
        given.insert(column);
        names_.push_back(std::move(column));
    }
}

void KeptColumns::Write(RowText& rows, const InputRow& input) const
{
    if (tellsTable_) rows.AddText(input.table);
    for (const size_t position : positions_) {
        if (input.jsonValues.empty()) {
            rows.AddText(input.fields[position]);
        } else {
            WriteJson(rows, input.jsonValues[position], input.fields[position]);
        }
    }
}

void KeptColumns::WriteTorn(RowText& rows, std::string_view table) const
{
    if (tellsTable_) rows.AddText(table);
    for (size_t i = 0; i < positions_.size(); ++i) rows.AddEmpty();
}

}  // namespace MCVelscore_850
