#include "engine/scoring/rejects.h"

#include <string>

#include <fmt/format.h>

#include "engine/tables/rowtext.h"
#include "engine/tables/utf8.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

struct FaultClass {
    long code;
    std::string_view name;
};

constexpr FaultClass kClasses[] = {{kUnclosedQuote, "open quote"},
                                   {kStrayQuote, "stray quote"},
                                   {kNulByte, "encoding"},
                                   {kRowEncoding, "encoding"},
                                   {kFieldTooLong, "too long"},
                                   {kRowTooLong, "too long"},
                                   {kNoJsonObject, "not JSON"},
                                   {kNestedValue, "nested value"},
                                   {kKeyTwice, "key twice"},
                                   {kCaseTextNotANumber, "not a number"},
                                   {kCaseTextNotADateTime, "not a date"},
                                   {kCaseInvalidValue, "invalid"}};

// Empty for a code that has no class of its own.
std::string_view ClassOf(long code)
{
    for (const FaultClass& each : kClasses) {
        if (each.code == code) return each.name;
    }
    return {};
}

void WriteRow(RowText& rows, std::string_view file, const RawRow& row)
{
    rows.AddText(AsUtf8(file));
    rows.AddWhole(row.number);
    rows.AddWhole(static_cast<int64_t>(row.offset));
}

}  // namespace

void RejectTable::WriteHeader(RowText& rows)
{
    for (const char* column :
         {"file", "row", "byte_offset", "column", "code", "class", "text", "record"}) {
        rows.AddText(column);
    }
    rows.EndRow();
}

void RejectTable::WriteTorn(RowText& rows, std::string_view file, const TornRow& torn,
                            size_t columns)
{
    WriteRow(rows, file, torn.raw);
    const bool isOfColumn = torn.fault.code == kNestedValue || torn.fault.code == kKeyTwice;
    rows.AddText(isOfColumn ? torn.fault.detail : std::string_view());
    rows.AddWhole(torn.fault.code);
    if (torn.fault.code == kRowLength) {
        rows.AddText(torn.fault.found < columns ? "too few fields" : "too many fields");
    } else {
        rows.AddText(ClassOf(torn.fault.code));
    }
    rows.AddEmpty();
    rows.AddText(AsUtf8(torn.raw.text));
    rows.EndRow();
}

void RejectTable::WriteNotScored(RowText& rows, std::string_view file, const RawRow& row,
                                 const CaseStatus& status, bool isMissing)
{
    WriteRow(rows, file, row);
    rows.AddText(status.FieldName());
    rows.AddWhole(status.code);
    const std::string_view own = ClassOf(status.code);
    if (!own.empty()) {
        rows.AddText(own);
    } else if (!status.text) {
        rows.AddText("refused by the model");
    } else {
        rows.AddText(isMissing ? "missing" : "invalid");
    }
    rows.AddText(status.text.value_or(std::string_view()));
    rows.AddText(row.text);
    rows.EndRow();
}

}  // namespace MCVelscore_850
