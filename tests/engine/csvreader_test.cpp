#include "engine/tables/rowreader.h"

#include <filesystem>
#include <fstream>
#include <random>

#include <gtest/gtest.h>

#include "engine/tables/blockreader.h"
#include "host/messages/messages.h"
#include "tests/engine/tableread.h"
#include "tests/engine/textsource.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

TEST(CsvReader, ReadsHeaderAndRows)
{
    const TableRead table = Read("a,b\n1,2\n3,4\n");
    EXPECT_EQ(table.header, (Row{"a", "b"}));
    EXPECT_EQ(table.rows, (std::vector<Row>{{"1", "2"}, {"3", "4"}}));
    EXPECT_EQ(table.code, 0);
}

TEST(CsvReader, LastLineNeedsNoLineEnd)
{
    EXPECT_EQ(Read("a,b\n1,").rows, (std::vector<Row>{{"1", ""}}));
    EXPECT_EQ(Read("a,b\n1,\"x\"").rows, (std::vector<Row>{{"1", "x"}}));
}

TEST(CsvReader, QuotesHoldDelimitersQuotesAndLineEnds)
{
    EXPECT_EQ(Read("a,b\n\"x, \"\"y\"\"\",\"1\r\n2\"\n").rows,
              (std::vector<Row>{{"x, \"y\"", "1\r\n2"}}));
}

TEST(CsvReader, BlanksBelongToTheirField)
{
    EXPECT_EQ(Read("a,b\n  x ,\ty\n").rows, (std::vector<Row>{{"  x ", "\ty"}}));
}

TEST(CsvReader, WindowsAndOldLineEndsReadAlike)
{
    const std::vector<Row> expected{{"1", "2"}, {"3", "4"}};
    EXPECT_EQ(Read("a,b\r\n1,2\r\n3,4\r\n").rows, expected);
    EXPECT_EQ(Read("a,b\r1,2\r3,4\r").rows, expected);
}

TEST(CsvReader, PiecesOfAnySizeReadAlike)
{
    const std::string text = "\xEF\xBB\xBF\"a\",b\r\n\"x\"\"y\",2\r\n\r\n";
    for (size_t piece = 1; piece <= text.size(); ++piece) {
        const TableRead table = Read(text, piece);
        EXPECT_EQ(table.header, (Row{"a", "b"})) << piece;
        EXPECT_EQ(table.rows, (std::vector<Row>{{"x\"y", "2"}})) << piece;
        EXPECT_EQ(table.code, 0) << piece;
    }
}

TEST(CsvReader, DropsAByteOrderMark)
{
    EXPECT_EQ(Read("\xEF\xBB\xBF"
                   "a\n1\n")
                  .header,
              (Row{"a"}));
}

TEST(CsvReader, OtherDelimitersLeaveCommasAlone)
{
    EXPECT_EQ(Read("a;b\n1,5;2\n", 1 << 16, ';').rows, (std::vector<Row>{{"1,5", "2"}}));
    EXPECT_EQ(Read("a\tb\n\t2\n", 1 << 16, '\t').rows, (std::vector<Row>{{"", "2"}}));
}

TEST(CsvReader, BlankLineInATableOfOneColumnIsAnEmptyField)
{
    EXPECT_EQ(Read("a\n1\n\n2\n").rows, (std::vector<Row>{{"1"}, {""}, {"2"}}));
    EXPECT_EQ(Read("a\r\n1\r\n\r\n2\r\n").rows, (std::vector<Row>{{"1"}, {""}, {"2"}}));
}

TEST(CsvReader, BlankLinesAtTheEndOfAWideTableArePassedOver)
{
    EXPECT_EQ(Read("a,b\n1,2\n\n\n").rows, (std::vector<Row>{{"1", "2"}}));
    EXPECT_EQ(Read("a,b\n1,2\n\n\n").code, 0);
}

TEST(CsvReader, BlankLineBeforeAFurtherRowIsARowTooShort)
{
    const TableRead table = Read("a,b\n1,2\n\n3,4\n");
    EXPECT_EQ(table.rows.size(), 1u);
    EXPECT_EQ(table.code, kRowLength);
    EXPECT_NE(table.message.find("row 2 has 0 fields"), std::string::npos) << table.message;
}

TEST(CsvReader, RowsOfAnotherLengthAreRefusedAfterTheRowsBefore)
{
    const TableRead tooShort = Read("a,b\n1,2\n3\n5,6\n");
    EXPECT_EQ(tooShort.rows, (std::vector<Row>{{"1", "2"}}));
    EXPECT_EQ(tooShort.code, kRowLength);
    EXPECT_NE(tooShort.message.find("row 2 has 1 fields, the header 2"), std::string::npos)
        << tooShort.message;
    const TableRead tooLong = Read("a,b\n1,2,3\n");
    EXPECT_EQ(tooLong.code, kRowLength);
    EXPECT_NE(tooLong.message.find("row 1 has 3 fields"), std::string::npos) << tooLong.message;
}

TEST(CsvReader, UnclosedQuoteTellsTheRowWhereItOpened)
{
    const TableRead table = Read("a,b\n1,2\n3,\"4\n5,6\n7,8\n");
    EXPECT_EQ(table.rows, (std::vector<Row>{{"1", "2"}}));
    EXPECT_EQ(table.code, kUnclosedQuote);
    EXPECT_NE(table.message.find("row 2 "), std::string::npos) << table.message;
}

TEST(CsvReader, QuoteInsideAFieldIsRefused)
{
    EXPECT_EQ(Read("a,b\n1,2\n3,4\"5\n").code, kStrayQuote);
    EXPECT_EQ(Read("a,b\n1,2\n3,\"4\"5\n").code, kStrayQuote);
    EXPECT_EQ(Read("a,b\n1,2\n3,\"4\" \n").code, kStrayQuote);
    EXPECT_EQ(Read("a,b\n1,2\n3,4\"5\n").rows.size(), 1u);
}

TEST(CsvReader, NulByteIsRefusedAfterTheRowsBefore)
{
    const TableRead table = Read(std::string("a,b\n1,2\n3,4\0\n5,6\n", 18));
    EXPECT_EQ(table.rows, (std::vector<Row>{{"1", "2"}}));
    EXPECT_EQ(table.code, kNulByte);
    EXPECT_NE(table.message.find("row 2"), std::string::npos) << table.message;
}

// A text of which somebody else writes more meanwhile.
class GrowingSource final : public ByteSource {
public:
    explicit GrowingSource(std::string text) : text_(std::move(text)) {}
    size_t Read(char* buffer, size_t size) override { return text_.Read(buffer, size); }
    const std::string& Name() const override { return text_.Name(); }
    bool HasChangedSize() const override { return true; }

private:
    TextSource text_;
};

TEST(CsvReader, HalfAHeaderIsToldAsSuch)
{
    const auto code = [](const std::string& text) {
        GrowingSource source(text);
        try {
            const RowReader reader(source, ',');
        } catch (const Failure& failure) {
            return failure.Code();
        }
        return 0;
    };
    EXPECT_EQ(code("a,b"), kTableCut);
    EXPECT_EQ(code("a,b\n"), 0);
}

TEST(CsvReader, TableWithoutHeaderIsRefused)
{
    EXPECT_EQ(Read("").code, kNoHeader);
    EXPECT_EQ(Read("\n1\n").code, kNoHeader);
    EXPECT_EQ(Read("\xEF\xBB\xBF").code, kNoHeader);
}

TEST(CsvReader, HeaderAloneIsATableWithoutRows)
{
    EXPECT_EQ(Read("a,b\n").rows.size(), 0u);
    EXPECT_EQ(Read("a,b").code, 0);
}

// A field of the largest size passes; a quote that swallows the table is stopped soon after it.
TEST(CsvReader, FieldOverTheLimitIsRefused)
{
    const TableRead largest = Read("a,b\n1," + std::string(kMaxField, 'x') + "\n");
    EXPECT_EQ(largest.code, 0);
    ASSERT_EQ(largest.rows.size(), 1u);
    EXPECT_EQ(largest.rows[0][1].size(), kMaxField);
    const TableRead table = Read("a,b\n1,2\n3,\"" + std::string(3 * kMaxField, '\n'));
    EXPECT_EQ(table.code, kFieldTooLong);
    EXPECT_EQ(table.rows.size(), 1u);
}

TEST(CsvReader, EndlessRowIsRefusedInBoundedMemory)
{
    EXPECT_EQ(Read("a,b\n" + std::string(1 << 20, ',') + "\n").code, kRowLength);
    // a header without end
    EXPECT_EQ(Read(std::string(2 << 20, ',') + "\n").code, kTooManyColumns);
}

// However the source cuts the bytes, and with quotes too, which count no byte.
TEST(CsvReader, LimitOfAFieldIsExact)
{
    for (const bool quoted : {false, true}) {
        for (const size_t piece : {size_t{1} << 16, size_t{1} << 12, size_t{60001}}) {
            for (const size_t size : {kMaxField, kMaxField + 1}) {
                std::string field(size, 'x');
                if (quoted) field = "\"" + field + "\"";
                for (const std::string end : {"\n", "", ",3\n4,5\n"}) {
                    const bool first = end.starts_with(',');
                    const TableRead table =
                        Read("a,b\n1,2\n" + std::string(first ? "" : "1,") + field + end, piece);
                    const bool taken = size <= kMaxField;
                    ASSERT_EQ(table.code, taken ? 0 : kFieldTooLong) << size << " " << piece;
                    ASSERT_EQ(table.rows.size(), taken ? (first ? 3u : 2u) : 1u);
                    if (taken) {
                        ASSERT_EQ(table.rows[1][first ? 0 : 1].size(), size);
                    }
                }
            }
        }
    }
}

TEST(CsvReader, LimitOfARowIsExactAndToldAsSuch)
{
    std::string header = "a0";
    for (int i = 1; i <= 16; ++i) header += ",a" + std::to_string(i);
    const std::string largest(kMaxField, 'x');
    std::string row = largest;
    for (int i = 1; i < 16; ++i) row += "," + largest;
    EXPECT_EQ(Read(header + "\n" + row + ",\n").code, 0);  // 16 MiB and an empty field
    const TableRead table = Read(header + "\n" + row + ",x\n");
    EXPECT_EQ(table.code, kRowTooLong);
    EXPECT_NE(table.message.find("row 1 has more than 16777216 bytes"), std::string::npos)
        << table.message;
}

struct OtherFile {
    const char* name;
    std::string bytes;
    const char* told;
    const char* remedy;
};

class TableOfAnotherForm : public testing::TestWithParam<OtherFile> {};

TEST_P(TableOfAnotherForm, IsToldByNameWithWhatToDo)
{
    const OtherFile& file = GetParam();
    for (const size_t piece : {size_t{1}, size_t{1} << 16}) {
        TextSource source(file.bytes, piece);
        try {
            RowReader reader(source);
            FAIL() << "taken as a table";
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Code(), kNoTextTable);
            EXPECT_NE(std::string(failure.what()).find(file.told), std::string::npos)
                << failure.what();
            EXPECT_NE(failure.Remedy().find(file.remedy), std::string::npos) << failure.Remedy();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Files, TableOfAnotherForm,
    testing::Values(
        OtherFile{"Gzip", "\x1F\x8B\x08 and so on", "gzip", "leave out the gzip inside"},
        OtherFile{"Zstd", "\x28\xB5\x2F\xFD and so on", "zstd", "leave out the zstd inside"},
        OtherFile{"Xz",
                  std::string("\xFD"
                              "7zXZ\0 and so on",
                              16),
                  "xz", "xz -dc"},
        OtherFile{"Bzip2", "BZh91AY&SY", "bzip2", "bzip2 -dc"},
        OtherFile{"Zip", "PK\x03\x04 and so on", "ZIP", "CSV"},
        OtherFile{"Parquet", "PAR1\x15\x04", "Parquet", "read_parquet"},
        OtherFile{"ArrowFile", "ARROW1 and so on", "Arrow file", "read_feather"},
        OtherFile{"ArrowStream", "\xFF\xFF\xFF\xFF\x10\x01", "Arrow stream", "open_stream"},
        OtherFile{"Utf16LittleEndian", std::string("\xFF\xFEx\0,\0", 6), "UTF-16", "-f UTF-16 "},
        OtherFile{"Utf16BigEndian", std::string("\xFE\xFF\0x\0,", 6), "UTF-16", "-f UTF-16 "},
        OtherFile{"Utf16LittleEndianUnmarked", std::string("x\0,\0", 4), "UTF-16", "UTF-16LE"},
        OtherFile{"Utf16BigEndianUnmarked", std::string("\0x\0,", 4), "UTF-16", "UTF-16BE"},
        OtherFile{"JsonArray", "[{\"a\":1}]", "a JSON array", "jq -c '.[]'"},
        OtherFile{"JsonArrayOfLines", "[\n{\"a\":1}]", "a JSON array", "jq -c '.[]'"},
        OtherFile{"Model", "<PMML version=\"4.4\">", "model document", "behind the model"},
        OtherFile{"OlderModel", "<zelt-ml version=\"1.0\">", "model document", "behind the model"},
        OtherFile{"Xml", "\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<table/>", "an XML document",
                  "behind the model"}),
    [](const auto& each) { return each.param.name; });

TEST(CsvReader, AModelDocumentWithItsDeclarationIsToldAsOne)
{
    const TableRead table = Read("<?xml version=\"1.0\"?>\n<PMML version=\"4.4\"/>");
    EXPECT_EQ(table.code, kNoTextTable);
    EXPECT_NE(table.message.find("a model document"), std::string::npos) << table.message;
}

TEST(CsvReader, TextThatBeginsLikeAnotherFormIsATable)
{
    for (const std::string header : {"PAR", "PK", "BZh", "ARROW", "<PM", "a", "<b>"}) {
        EXPECT_EQ(Read(header + ",b\n1,2\n", 1).rows.size(), 1u) << header;
        EXPECT_EQ(Read(header).header, Row{header});
    }
}

TEST(CsvReader, QuotedHeaderBetweenOtherDelimitersTellsTheDelimiter)
{
    const auto remedy = [](const std::string& text, char delimiter) -> std::string {
        TextSource source(text);
        try {
            RowReader reader(source, delimiter);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Code(), kStrayQuote);
            return failure.Remedy();
        }
        return {};
    };
    EXPECT_NE(remedy("\"x\";\"sex\"\n1;f\n", ',').find("--delimiter ';'"), std::string::npos);
    EXPECT_NE(remedy("\"x\"\t\"sex\"\n1\tf\n", ',').find("--delimiter tab"), std::string::npos);
    EXPECT_NE(remedy("\"x\",\"sex\"\n1,f\n", ';').find("--delimiter ','"), std::string::npos);
    EXPECT_EQ(remedy("\"x\"y,\"sex\"\n1,f\n", ',').find("--delimiter"), std::string::npos);
}

// A table that somebody else cuts or prolongs while it is read.
class TableThatChanges : public testing::Test {
protected:
    // The code that ends the reading of `before`, which becomes `after` when its first block was
    // read.
    int CodeOfReading(const std::string& before, const std::string& after)
    {
        const std::string path = folder_.Write("cases.csv", before);
        InputFile file(path);
        rows_ = 0;
        try {
            RowReader reader(file);
            std::ofstream(path, std::ios::binary | std::ios::in) << after;
            std::filesystem::resize_file(path, after.size());
            std::span<const std::string_view> fields;
            while (reader.Next(fields)) ++rows_;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Kind(), FailureKind::Cases);
            return failure.Code();
        }
        return 0;
    }
    static std::string Rows(int count)
    {
        std::string text = "a,b\n";
        for (int i = 0; i < count; ++i) text += "12,34\n";
        return text;
    }

    ScratchFolder folder_;
    int rows_ = 0;
};

TEST_F(TableThatChanges, IsRefusedWhereItsLastRowMayBeHalfOne)
{
    const std::string table = Rows(180000);  // 720 kB: several blocks
    EXPECT_EQ(CodeOfReading(table, Rows(80000) + "12,3"), kTableCut);
    EXPECT_EQ(rows_, 80000);
    EXPECT_EQ(CodeOfReading(table, table + "12,3"), kTableCut);
    EXPECT_EQ(rows_, 180000);
    EXPECT_EQ(CodeOfReading(table, Rows(80000) + "12,\"3\n4"), kTableCut);
    EXPECT_EQ(CodeOfReading("a,b\n1,2", "a,b\n1,23"), kTableCut);
    EXPECT_EQ(rows_, 0);
}

TEST_F(TableThatChanges, IsTakenWhereItEndsWithARow)
{
    EXPECT_EQ(CodeOfReading(Rows(180000), Rows(80000)), 0);
    EXPECT_EQ(rows_, 80000);
    EXPECT_EQ(CodeOfReading(Rows(80000), Rows(180000)), 0);
    EXPECT_EQ(rows_, 180000);
    const std::string withoutLineEnd = Rows(80000) + "12,3";
    EXPECT_EQ(CodeOfReading(withoutLineEnd, withoutLineEnd), 0);
    EXPECT_EQ(rows_, 80001);
}

TEST(CsvReader, RowsAreCountedFromOneAfterTheHeader)
{
    TextSource source("a\n1\n\"2\n2\"\n3\n");
    RowReader reader(source);
    EXPECT_EQ(reader.RowNumber(), 0);
    std::span<const std::string_view> fields;
    for (int row = 1; row <= 3; ++row) {
        ASSERT_TRUE(reader.Next(fields));
        EXPECT_EQ(reader.RowNumber(), row);
    }
    EXPECT_FALSE(reader.Next(fields));
}

TEST(CsvReader, ManyRowsPassThroughChunksWhole)
{
    std::string text = "number,text\n";
    constexpr int kRows = 20000;  // several chunks
    for (int i = 0; i < kRows; ++i) {
        text += std::to_string(i) + ",\"t" + std::to_string(i) + "\"\n";
    }
    TextSource source(text);
    RowReader reader(source);
    std::span<const std::string_view> fields;
    for (int i = 0; i < kRows; ++i) {
        ASSERT_TRUE(reader.Next(fields));
        ASSERT_EQ(fields[0], std::to_string(i));
        ASSERT_EQ(fields[1], "t" + std::to_string(i));
    }
    EXPECT_FALSE(reader.Next(fields));
}

// Whole lines without quotes are split where they stand; fed byte by byte, every line goes through
// the parser. Both must see the same table, whatever the lines hold.
TEST(CsvReader, PlainLinesReadAsTheParserReadsThem)
{
    std::mt19937 random(20261121);
    constexpr std::string_view kBytes = "ab,,,\n\n\r;\t \xC3\xA9";
    int refused = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string text = round % 2 == 0 ? "a,b\n" : "a\r\n";
        const size_t size = random() % 40;
        for (size_t i = 0; i < size; ++i) text += kBytes[random() % kBytes.size()];
        if (round % 5 == 0) text += "\"q\"\n";
        const TableRead whole = Read(text);
        const TableRead parsed = Read(text, 1);
        ASSERT_EQ(whole.header, parsed.header) << text;
        ASSERT_EQ(whole.rows, parsed.rows) << text;
        ASSERT_EQ(whole.message, parsed.message) << text;
        if (whole.code != 0) ++refused;
    }
    EXPECT_GT(refused, 100);
    EXPECT_LT(refused, 2900);
}

TEST(InputFile, DirectoryAndMissingFileAreRefused)
{
    char byte = 0;
    EXPECT_THROW(InputFile("/nowhere/at/all.csv"), Failure);
    InputFile directory("/");
    EXPECT_THROW(directory.Read(&byte, 1), Failure);
}

// Blocks of rows, each as "row|row", and the code of the failure after them.
std::pair<Row, int> ReadBlocks(const std::string& text, size_t most, size_t piece = 1 << 16)
{
    std::pair<Row, int> read;
    TextSource source(text, piece);
    RowReader reader(source);
    std::span<const std::string_view> fields;
    try {
        int64_t rows = 0;
        while (const size_t count = reader.NextRows(most, fields)) {
            rows += static_cast<int64_t>(count);
            EXPECT_EQ(reader.RowNumber(), rows);
            EXPECT_EQ(fields.size(), count * reader.Header().size());
            std::string block;
            for (size_t i = 0; i < fields.size(); ++i) {
                if (i > 0) block += i % reader.Header().size() == 0 ? '|' : ',';
                block += fields[i];
            }
            read.first.push_back(std::move(block));
        }
    } catch (const Failure& failure) {
        read.second = failure.Code();
    }
    return read;
}

TEST(CsvReaderRows, ComeAsManyAsAreWanted)
{
    const std::string text = "a,b\n1,2\n3,4\n5,\n7,8\n,\n";
    EXPECT_EQ(ReadBlocks(text, 2).first, (Row{"1,2|3,4", "5,|7,8", ","}));
    EXPECT_EQ(ReadBlocks(text, 100).first, (Row{"1,2|3,4|5,|7,8|,"}));
    EXPECT_EQ(ReadBlocks("a\n1\n\n3\n", 100).first, (Row{"1||3"}));
}

TEST(CsvReaderRows, WaitForNoFurtherBytesOnceThereIsOne)
{
    // Pieces of 8 bytes: the header and a half, then two rows and a half, and so on.
    EXPECT_EQ(ReadBlocks("a,b\n1,2\n3,4\n5,6\n7,8\n", 100, 8).first,
              (Row{"1,2", "3,4|5,6", "7,8"}));
}

TEST(CsvReaderRows, BeforeAFaultAreDeliveredFirst)
{
    EXPECT_EQ(ReadBlocks("a,b\n1,2\n3,4\n5\n7,8\n", 100),
              (std::pair<Row, int>{{"1,2|3,4"}, kRowLength}));
    EXPECT_EQ(ReadBlocks("a,b\n1,2\n\n3,4\n", 100), (std::pair<Row, int>{{"1,2"}, kRowLength}));
    EXPECT_EQ(ReadBlocks("a,b\n1,2\n\n\n", 100), (std::pair<Row, int>{{"1,2"}, 0}));
    EXPECT_EQ(ReadBlocks("a,b\n1,2\n3,\"4", 100), (std::pair<Row, int>{{"1,2"}, kUnclosedQuote}));
}

TEST(CsvReader, BlocksHaveAsManyRowsAsTheyMay)
{
    for (const std::string& row : std::vector<std::string>{"x,1\n", "\"x\",1\n"}) {
        std::string text = "a,b\n";
        for (int i = 0; i < 250; ++i) text += row;
        TextSource source(text);
        const auto reader = MakeBlockReader(source, {}, {size_t{1} << 16, 100});
        std::vector<int64_t> rows;
        RecordBlock block;
        while (reader->Next(block)) rows.push_back(block.nextRow - block.firstRow);
        EXPECT_EQ(rows, (std::vector<int64_t>{100, 100, 50})) << row;
    }
}

}  // namespace
}  // namespace MCVelscore_850
