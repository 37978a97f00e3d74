#include "engine/tables/recordcheck.h"

#include <algorithm>

#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

bool IsLineEnd(char c) { return c == '\n' || c == '\r'; }

// Where a field ends that begins at `place`: at its delimiter, its line end or the record's end.
// `size` becomes the bytes of the field itself; answers the code of what is wrong.
int PassField(std::string_view record, char delimiter, size_t& place, size_t& size)
{
    size = 0;
    if (place < record.size() && record[place] == '"') {
        for (++place;; ++place) {
            if (place == record.size()) return size > kMaxField ? kFieldTooLong : kUnclosedQuote;
            const char c = record[place];
            if (c == '\0') return kNulByte;
            if (c == '"') {
                if (place + 1 == record.size() || record[place + 1] != '"') break;
                ++place;
            }
            if (++size > kMaxField) return kFieldTooLong;
        }
        ++place;
        if (place == record.size() || record[place] == delimiter || IsLineEnd(record[place])) {
            return 0;
        }
        return record[place] == '\0' ? kNulByte : kStrayQuote;
    }
    for (; place < record.size(); ++place, ++size) {
        const char c = record[place];
        if (c == delimiter || IsLineEnd(c)) break;
        if (c == '\0') return kNulByte;
        if (c == '"') return kStrayQuote;
        if (size == kMaxField) return kFieldTooLong;
    }
    return 0;
}

}  // namespace

RecordFault CheckRecord(std::string_view record, char delimiter, size_t columns)
{
    const bool isHeader = columns == 0;
    RecordFault fault;
    size_t bytes = 0;
    const bool isBlank = record.empty() || IsLineEnd(record.front());
    for (size_t place = 0; !isBlank; ++place) {
        size_t size = 0;
        fault.code = PassField(record, delimiter, place, size);
        if (fault.code != 0) return fault;
        ++fault.found;
        // Fields too many don't count: the row is refused because of them.
        if (isHeader || fault.found <= columns) {
            bytes += size;
            if (bytes > kMaxRow) fault.code = kRowTooLong;
            if (fault.found > kMaxColumns) fault.code = kTooManyColumns;
            if (fault.code != 0) return fault;
        }
        if (place == record.size() || record[place] != delimiter) break;
    }
    const bool isEmptyField = fault.found == 0 && columns == 1;
    if (!isHeader && fault.found != columns && !isEmptyField) fault.code = kRowLength;
    return fault;
}

std::vector<std::string> FieldsOf(std::string_view record, char delimiter)
{
    std::vector<std::string> fields;
    if (record.empty() || IsLineEnd(record.front())) return fields;
    for (size_t place = 0;; ++place) {
        const size_t begin = place;
        size_t size = 0;
        PassField(record, delimiter, place, size);
        std::string_view text = record.substr(begin, place - begin);
        std::string& field = fields.emplace_back();
        if (text.starts_with('"')) {
            text = text.substr(1, text.size() - 2);
            for (size_t i = 0; i < text.size(); ++i) {
                field += text[i];
                if (text[i] == '"') ++i;  // it is written twice
            }
        } else {
            field = text;
        }
        if (place >= record.size() || record[place] != delimiter) return fields;
    }
}

Failure FailureOf(const RecordFault& fault, const std::string& table, int64_t row, size_t columns,
                  std::string hint)
{
    std::vector<std::string> details{table};
    if (fault.code != kTooManyColumns) details.push_back(std::to_string(row));
    switch (fault.code) {
        case kRowLength:
            details.push_back(std::to_string(fault.found));
            details.push_back(std::to_string(columns));
            break;
        case kFieldTooLong: details.push_back(std::to_string(kMaxField)); break;
        case kRowTooLong: details.push_back(std::to_string(kMaxRow)); break;
        case kTooManyColumns: details.push_back(std::to_string(kMaxColumns)); break;
        case kNoJsonObject:
        case kNestedValue:
        case kKeyTwice: details.emplace_back(fault.detail); break;
        default: break;
    }
    return {FailureKind::Cases, fault.code, details, std::move(hint)};
}

}  // namespace MCVelscore_850
