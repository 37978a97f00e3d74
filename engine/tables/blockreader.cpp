#include "engine/tables/blockreader.h"

#include <algorithm>
#include <string_view>

#include "engine/messages/failure.h"
#include "engine/tables/fileform.h"
#include "engine/tables/jsonlinesreader.h"
#include "engine/tables/recordcheck.h"
#include "engine/tables/recordreader.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

// So many blanks at the start tell no form: a table of comma-separated values has a header before.
constexpr size_t kMostBlanks = size_t{1} << 16;
constexpr std::string_view kBlanks = " \t\r\n";

// Read at once to tell the form, where blocks aren't wanted larger.
constexpr size_t kStart = size_t{1} << 12;

std::string_view WithoutMark(std::string_view text)
{
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    return text;
}

// The first bytes of the table, as many as tell its form.
std::string ReadStart(ByteSource& source, size_t wanted)
{
    std::string start;
    const auto isTold = [&] {
        if (NeedsMoreToTellForm(start)) return false;
        const std::string_view text = WithoutMark(start);
        return start.size() >= kMostBlanks ||
               text.find_first_not_of(kBlanks) != std::string_view::npos;
    };
    while (!isTold()) {
        const size_t before = start.size();
        start.resize(std::max(before + kStart, wanted));
        const size_t count = source.Read(start.data() + before, start.size() - before);
        start.resize(before + count);
        if (count == 0) break;
    }
    return start;
}

TableForm FormOf(std::string_view start)
{
    const std::string_view text = WithoutMark(start);
    const size_t first = text.find_first_not_of(kBlanks);
    return first != std::string_view::npos && text[first] == '{' ? TableForm::JsonLines
                                                                 : TableForm::Csv;
}

}  // namespace

BlockReader::~BlockReader() = default;

std::string FormName(TableForm form)
{
    return form == TableForm::Csv ? "comma-separated values" : "JSON Lines";
}

std::unique_ptr<BlockReader> MakeBlockReader(ByteSource& source, const RecordForm& form,
                                             const BlockReader::BlockSize& blockSize)
{
    const std::string start = ReadStart(source, std::min(blockSize.bytes, kMaxRow));
    if (FormOf(start) == TableForm::Csv) {
        if (form.delimiter == form.decimal) {
            throw Failure(FailureKind::Usage, kDelimiterIsDecimal,
                          {source.Name(), std::string(1, form.decimal)});
        }
        return std::make_unique<RecordReader>(source, form, blockSize, start);
    }
    const auto refuse = [&](const char* option) {
        throw Failure(FailureKind::Usage, kOptionOfCsv, {option, source.Name()});
    };
    if (form.tellsDelimiter) refuse("--delimiter");
    if (!form.hasHeader) refuse("--no-header");
    return std::make_unique<JsonLinesReader>(source, form, blockSize, start);
}

}  // namespace MCVelscore_850
