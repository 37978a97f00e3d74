#include "engine/csvreader.h"

#include <random>

#include <gtest/gtest.h>

#include "host/messages.h"
#include "tests/engine/textsource.h"

namespace MCVelscore_850 {
namespace {

using Row = std::vector<std::string>;

struct Table {
    Row header;
    std::vector<Row> rows;
    int code = 0;         // of the failure that ended the reading
    std::string message;  // its text
};

Table Read(const std::string& text, size_t piece = 1 << 16, char delimiter = ',')
{
    Table table;
    TextSource source(text, piece);
    try {
        CsvReader reader(source, delimiter);
        table.header = reader.Header();
        std::span<const std::string_view> fields;
        while (reader.Next(fields)) table.rows.emplace_back(fields.begin(), fields.end());
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::Cases);
        table.code = failure.Code();
        table.message = failure.what();
    }
    return table;
}

TEST(CsvReader, ReadsHeaderAndRows)
{
    const Table table = Read("a,b\n1,2\n3,4\n");
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
        const Table table = Read(text, piece);
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
    const Table table = Read("a,b\n1,2\n\n3,4\n");
    EXPECT_EQ(table.rows.size(), 1u);
    EXPECT_EQ(table.code, kRowLength);
    EXPECT_NE(table.message.find("row 2 has 0 fields"), std::string::npos) << table.message;
}

TEST(CsvReader, RowsOfAnotherLengthAreRefusedAfterTheRowsBefore)
{
    const Table tooShort = Read("a,b\n1,2\n3\n5,6\n");
    EXPECT_EQ(tooShort.rows, (std::vector<Row>{{"1", "2"}}));
    EXPECT_EQ(tooShort.code, kRowLength);
    EXPECT_NE(tooShort.message.find("row 2 has 1 fields, the header 2"), std::string::npos)
        << tooShort.message;
    const Table tooLong = Read("a,b\n1,2,3\n");
    EXPECT_EQ(tooLong.code, kRowLength);
    EXPECT_NE(tooLong.message.find("row 1 has 3 fields"), std::string::npos) << tooLong.message;
}

TEST(CsvReader, UnclosedQuoteTellsTheRowWhereItOpened)
{
    const Table table = Read("a,b\n1,2\n3,\"4\n5,6\n7,8\n");
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
    const Table table = Read(std::string("a,b\n1,2\n3,4\0\n5,6\n", 18));
    EXPECT_EQ(table.rows, (std::vector<Row>{{"1", "2"}}));
    EXPECT_EQ(table.code, kNulByte);
    EXPECT_NE(table.message.find("row 2"), std::string::npos) << table.message;
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
    const Table largest = Read("a,b\n1," + std::string(CsvReader::kMaxField, 'x') + "\n");
    EXPECT_EQ(largest.code, 0);
    ASSERT_EQ(largest.rows.size(), 1u);
    EXPECT_EQ(largest.rows[0][1].size(), CsvReader::kMaxField);
    const Table table = Read("a,b\n1,2\n3,\"" + std::string(3 * CsvReader::kMaxField, '\n'));
    EXPECT_EQ(table.code, kFieldTooLong);
    EXPECT_EQ(table.rows.size(), 1u);
}

TEST(CsvReader, EndlessRowIsRefusedInBoundedMemory)
{
    EXPECT_EQ(Read("a,b\n" + std::string(1 << 20, ',') + "\n").code, kRowLength);
    EXPECT_EQ(Read(std::string(2 << 20, ',') + "\n").code, kFieldTooLong);  // a header without end
}

TEST(CsvReader, RowsAreCountedFromOneAfterTheHeader)
{
    TextSource source("a\n1\n\"2\n2\"\n3\n");
    CsvReader reader(source);
    EXPECT_EQ(reader.RowNumber(), 0);
    std::span<const std::string_view> fields;
    for (int row = 1; row <= 3; ++row) {
        ASSERT_TRUE(reader.Next(fields));
        EXPECT_EQ(reader.RowNumber(), row);
    }
    EXPECT_FALSE(reader.Next(fields));
    EXPECT_EQ(reader.BytesRead(), 12u);
}

TEST(CsvReader, ManyRowsPassThroughChunksWhole)
{
    std::string text = "number,text\n";
    constexpr int kRows = 20000;  // several chunks
    for (int i = 0; i < kRows; ++i) {
        text += std::to_string(i) + ",\"t" + std::to_string(i) + "\"\n";
    }
    TextSource source(text);
    CsvReader reader(source);
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
        const Table whole = Read(text);
        const Table parsed = Read(text, 1);
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

}  // namespace
}  // namespace MCVelscore_850
