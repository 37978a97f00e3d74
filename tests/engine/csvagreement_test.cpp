// Random texts read as tables by RowReader, and cut into blocks of many sizes, against libcsv,
// which shares no code with it.
#include <algorithm>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include <csv.h>
#include <fmt/format.h>
#include <gtest/gtest.h>

#include "engine/tables/fileform.h"
#include "engine/tables/recordreader.h"
#include "engine/tables/recordsplitter.h"
#include "engine/tables/rowreader.h"
#include "host/messages/messages.h"
#include "tests/engine/textsource.h"

namespace MCVelscore_850 {
namespace {

using Row = std::vector<std::string>;

// What a reading of a table tells: its header, its sound rows, and the row at fault that ends it.
struct Reading {
    Row header;
    std::vector<Row> rows;
    int code = 0;
    int64_t rowAtFault = 0;  // 0 for the header, and without a fault

    bool operator==(const Reading&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Reading& reading)
{
    const auto write = [&](const Row& row) {
        for (const std::string& field : row) out << " [" << testing::PrintToString(field) << "]";
        out << '\n';
    };
    out << "code " << reading.code << " in row " << reading.rowAtFault << '\n';
    write(reading.header);
    for (const Row& row : reading.rows) write(row);
    return out;
}

extern "C" int NoByteIsBlank(unsigned char) { return 0; }

// The lines of a text as libcsv splits it: blanks belong to their field.
class LinesOfLibcsv {
public:
    LinesOfLibcsv(std::string_view text, char delimiter)
    {
        // RFC 4180 has no NUL bytes, and libcsv no word on them: what is before one is read.
        const std::string_view clean = text.substr(0, text.find('\0'));
        csv_parser parser;
        csv_init(&parser, CSV_STRICT | CSV_STRICT_FINI | CSV_REPALL_NL);
        csv_set_delim(&parser, static_cast<unsigned char>(delimiter));
        csv_set_space_func(&parser, NoByteIsBlank);
        const size_t parsed =
            csv_parse(&parser, clean.data(), clean.size(), OnField, OnLineEnd, this);
        if (parsed < clean.size()) {
            code_ = kStrayQuote;
        } else if (clean.size() < text.size()) {
            code_ = kNulByte;
        } else if (csv_fini(&parser, OnField, OnLineEnd, this) != 0) {
            code_ = kUnclosedQuote;
        }
        csv_free(&parser);
    }

    const std::vector<Row>& Lines() const { return lines_; }
    // What is wrong with the line behind them; 0 where there is none.
    int Code() const { return code_; }

private:
    static void OnField(void* bytes, size_t size, void* lines)
    {
        static_cast<LinesOfLibcsv*>(lines)->open_.emplace_back(static_cast<const char*>(bytes),
                                                               size);
    }
    static void OnLineEnd(int terminator, void* lines)
    {
        static_cast<LinesOfLibcsv*>(lines)->EndLine(terminator);
    }
    // The LF of CR LF comes as a blank line of its own.
    void EndLine(int terminator)
    {
        const bool completesCrLf = terminator == '\n' && last_ == '\r' && open_.empty();
        last_ = completesCrLf ? 0 : terminator;
        if (!completesCrLf) lines_.push_back(std::exchange(open_, {}));
    }

    std::vector<Row> lines_;
    Row open_;
    int last_ = 0;
    int code_ = 0;
};

// The table of those lines: what RecordReader promises of blank lines and of rows of other lengths.
Reading ReadByLibcsv(std::string_view text, char delimiter)
{
    if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
    const LinesOfLibcsv table(text, delimiter);
    const std::vector<Row>& lines = table.Lines();
    Reading reading;
    if (lines.empty() || lines.front().empty()) {
        reading.code = lines.empty() && table.Code() != 0 ? table.Code() : kNoHeader;
        return reading;
    }
    reading.header = lines.front();
    const size_t columns = reading.header.size();
    size_t end = lines.size();
    if (table.Code() == 0 && columns > 1) {
        while (lines[end - 1].empty()) --end;
    }
    for (size_t i = 1; i < end; ++i) {
        Row row = lines[i];
        if (row.empty() && columns == 1) row.emplace_back();
        if (row.size() != columns) {
            reading.code = kRowLength;
            reading.rowAtFault = static_cast<int64_t>(i);
            return reading;
        }
        reading.rows.push_back(std::move(row));
    }
    reading.code = table.Code();
    if (reading.code != 0) reading.rowAtFault = static_cast<int64_t>(end);
    return reading;
}

Reading ReadByRowReader(const std::string& text, char delimiter, size_t piece)
{
    Reading reading;
    TextSource source(text, piece);
    std::optional<RowReader> reader;
    try {
        reader.emplace(source, delimiter);
        reading.header = reader->Header();
        std::span<const std::string_view> fields;
        while (reader->Next(fields)) reading.rows.emplace_back(fields.begin(), fields.end());
    } catch (const Failure& failure) {
        reading.code = failure.Code();
        if (reader) reading.rowAtFault = reader->RowNumber() + 1;
    }
    return reading;
}

// A table cut into blocks, which are split up to `most` rows at a time.
struct Blocks {
    size_t piece;
    RecordReader::BlockSize size;
    size_t most;
};

Reading ReadByBlocks(const std::string& text, char delimiter, const Blocks& how)
{
    Reading reading;
    TextSource source(text, how.piece);
    try {
        RecordReader reader(source, {.delimiter = delimiter}, how.size);
        reading.header = reader.Header();
        RecordSplitter splitter(reading.header.size(), delimiter);
        const size_t columns = reading.header.size();
        for (RecordBlock block; reading.code == 0 && reader.Next(block);) {
            splitter.Begin(block);
            std::span<const std::string_view> fields;
            while (const size_t rows = splitter.NextRows(how.most, fields)) {
                for (size_t row = 0; row < rows; ++row) {
                    const auto own = fields.subspan(row * columns, columns);
                    reading.rows.emplace_back(own.begin(), own.end());
                }
            }
            if (const TornRow* torn = splitter.Torn()) {
                reading.code = torn->fault.code;
                reading.rowAtFault = torn->raw.number;
            }
        }
    } catch (const Failure& failure) {
        reading.code = failure.Code();
    }
    return reading;
}

// Every row of a table that is read on behind its torn rows, as text: number, offset, code, fields
// found, the row as it stands, its fields.
std::vector<std::string> PassOverTorn(const std::string& text, char delimiter, const Blocks& how)
{
    std::vector<std::string> told;
    const auto tell = [&](const RawRow& raw, const RecordFault& fault) -> std::string& {
        return told.emplace_back(fmt::format("{} at {}: {} {} '{}'", raw.number, raw.offset,
                                             fault.code, fault.found, raw.text));
    };
    TextSource source(text, how.piece);
    try {
        RecordReader reader(source, {.delimiter = delimiter, .passesTorn = true}, how.size);
        const size_t columns = reader.Header().size();
        RecordSplitter splitter(columns, delimiter);
        for (RecordBlock block; reader.Next(block);) {
            splitter.Begin(block);
            splitter.CheckEncoding();
            for (;;) {
                std::span<const std::string_view> fields;
                const size_t rows = splitter.NextRows(how.most, fields);
                for (size_t row = 0; row < rows; ++row) {
                    std::string& line = tell(splitter.Raw(row), {});
                    for (const std::string_view field : fields.subspan(row * columns, columns)) {
                        line += fmt::format(" [{}]", field);
                    }
                }
                if (rows > 0) continue;
                const TornRow* torn = splitter.Torn();
                if (torn == nullptr) break;
                tell(torn->raw, torn->fault);
                splitter.PassTorn();
            }
        }
        told.push_back(fmt::format("{} rows", reader.Rows()));
    } catch (const Failure& failure) {
        told.emplace_back(failure.what());
    }
    return told;
}

class RandomTexts {
public:
    explicit RandomTexts(uint64_t seed) : random_(seed) {}

    size_t Below(size_t end) { return random_() % end; }
    char Delimiter() { return ",,,;\t"[Below(5)]; }

    // A table with something wrong in about half of all.
    std::string Table(char delimiter)
    {
        const size_t columns = 1 + Below(5);
        const size_t rows = Below(Below(20) == 0 ? 200 : 12);
        const std::string_view lineEnd = kLineEnds[Below(std::size(kLineEnds))];
        const size_t quotes = Below(3);  // in 10 fields
        std::string text = Below(8) == 0 ? std::string(kByteOrderMark) : std::string();
        for (size_t row = 0; row <= rows; ++row) {
            const size_t odd = row > 0 ? Below(60) : 9;
            const size_t fields = columns + (odd == 0 ? 1 : 0) - (odd == 1 ? 1 : 0);
            for (size_t i = 0; i < fields; ++i) {
                if (i > 0) text += delimiter;
                if (row == 0) {
                    text += fmt::format("h{}", i);
                } else {
                    AddField(text, delimiter, Below(10) < quotes);
                }
            }
            if (row < rows || Below(2) == 0) text += lineEnd;
            if (odd == 2) text += lineEnd;
        }
        while (Below(4) == 0) text += lineEnd;
        for (size_t i = Below(5); i < 2; ++i) Spoil(text, delimiter);
        return text;
    }

    // Any bytes, those that matter more often; the first ones tell no other form of a file.
    std::string Bytes(char delimiter)
    {
        std::string text = Below(2) == 0 ? std::string("a") + delimiter + "b" : std::string();
        while (text.size() < 4) text += "ab\n\r\""[Below(Below(3) == 0 ? 5 : 2)];
        const size_t size = Below(Below(20) == 0 ? 1000 : 60);
        const size_t rare = 1 + Below(40);
        for (size_t i = 0; i < size; ++i) {
            if (Below(rare) == 0) {
                text += Special(delimiter);
            } else {
                text += kPlain[Below(std::size(kPlain))];
            }
        }
        return text;
    }

private:
    static constexpr size_t kStart = 8;  // what may tell another form of a file, and a mark
    static constexpr std::string_view kLineEnds[] = {"\n", "\n", "\r\n", "\r\n", "\r"};
    // Letters, digits, UTF-8 of two to four bytes, and what isn't UTF-8.
    static constexpr std::string_view kPlain[] = {
        "a",    "Z",    "0",   "7", ".", " ", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80",
        "\xFF", "\xC3", "\x80"};

    std::string Special(char delimiter)
    {
        switch (Below(9)) {
            case 0: return {'\0'};
            case 1:
            case 2: return "\"";
            case 3: return "\"\"";
            case 4: return "\r";
            case 5: return "\n";
            case 6: return "\r\n";
            case 7: return std::string{delimiter, '"'};
            default: return {delimiter};
        }
    }

    void AddField(std::string& text, char delimiter, bool quoted)
    {
        const size_t size = Below(Below(30) == 0 ? 100 : 6);
        if (quoted) text += '"';
        for (size_t i = 0; i < size; ++i) {
            if (quoted && Below(4) == 0) {
                constexpr std::string_view kQuoted[] = {"\"\"", "\n", "\r", "\r\n"};
                const size_t which = Below(5);
                text += which < 4 ? kQuoted[which] : std::string_view(&delimiter, 1);
            } else {
                text += kPlain[Below(std::size(kPlain))];
            }
        }
        if (quoted) text += '"';
    }

    void Spoil(std::string& text, char delimiter)
    {
        if (text.size() <= kStart) return;
        const size_t place = kStart + Below(text.size() - kStart);
        if (Below(2) == 0) {
            text.insert(place, Special(delimiter));
        } else {
            text.erase(place, 1 + Below(2));
        }
    }

    std::mt19937_64 random_;
};

class CsvAgreement : public testing::TestWithParam<uint64_t> {
protected:
    static constexpr int kTexts = 4000;

    // Blocks of one byte and one row up to the whole text.
    static Blocks SomeBlocks(RandomTexts& texts)
    {
        constexpr size_t kBytes[] = {1, 2, 7, 31, 32, 33, 64, 500, 4096};
        constexpr int64_t kRows[] = {1, 2, 3, 1000};
        constexpr size_t kMost[] = {1, 2, 512};
        constexpr size_t kPieces[] = {1, 2, 3, 40, 5000};
        return {kPieces[texts.Below(std::size(kPieces))],
                {kBytes[texts.Below(std::size(kBytes))], kRows[texts.Below(std::size(kRows))]},
                kMost[texts.Below(std::size(kMost))]};
    }
    static std::string Told(const std::string& text, const Blocks& how)
    {
        return fmt::format("pieces of {}, blocks of {} bytes and {} rows, {} at once: {}",
                           how.piece, how.size.bytes, how.size.rows, how.most,
                           testing::PrintToString(text));
    }
};

INSTANTIATE_TEST_SUITE_P(Seeds, CsvAgreement, testing::Range<uint64_t>(1, 7));

TEST_P(CsvAgreement, RowsAndTheRowAtFaultAreThoseOfLibcsv)
{
    RandomTexts texts(GetParam());
    int sound = 0;
    for (int i = 0; i < kTexts; ++i) {
        const char delimiter = texts.Delimiter();
        const std::string text = i % 2 == 0 ? texts.Table(delimiter) : texts.Bytes(delimiter);
        const Reading expected = ReadByLibcsv(text, delimiter);
        if (expected.code == 0 && !expected.rows.empty()) ++sound;
        if (i % 8 == 0) {
            const size_t piece = 1 + texts.Below(64);
            ASSERT_EQ(ReadByRowReader(text, delimiter, piece), expected)
                << "pieces of " << piece << ": " << testing::PrintToString(text);
        }
        for (int times = 0; times < 4; ++times) {
            const Blocks how = SomeBlocks(texts);
            ASSERT_EQ(ReadByBlocks(text, delimiter, how), expected) << Told(text, how);
        }
    }
    // Neither kind is an exception.
    EXPECT_GT(sound, kTexts / 5);
    EXPECT_LT(sound, kTexts * 4 / 5);
}

TEST_P(CsvAgreement, TornRowsAreTheSameInBlocksOfAnySize)
{
    RandomTexts texts(GetParam() + 1000);
    for (int i = 0; i < kTexts; ++i) {
        const char delimiter = texts.Delimiter();
        const std::string text = i % 2 == 0 ? texts.Table(delimiter) : texts.Bytes(delimiter);
        const auto expected = PassOverTorn(text, delimiter, {5000, {4096, 1000}, 512});
        for (int times = 0; times < 3; ++times) {
            const Blocks how = SomeBlocks(texts);
            ASSERT_EQ(PassOverTorn(text, delimiter, how), expected) << Told(text, how);
        }
    }
}

}  // namespace
}  // namespace MCVelscore_850
