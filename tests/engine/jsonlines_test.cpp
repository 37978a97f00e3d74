// Tables of JSON Lines: what their rows hold, which of them are torn, and that neither blocks nor
// threads change a byte.

#include <array>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "engine/documents/loadedmodel.h"
#include "engine/documents/plugin.h"
#include "engine/messages/failure.h"
#include "engine/scoring/scoringsession.h"
#include "engine/tables/blockreader.h"
#include "engine/tables/blocksplitter.h"
#include "engine/tables/rowreader.h"
#include "host/messages/messages.h"
#include "tests/engine/tableread.h"
#include "tests/engine/textsource.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

TEST(JsonLines, FirstObjectNamesTheColumnsAndIsARow)
{
    const TableRead table = Read("{\"b\":1,\"a\":\"x\"}\n{\"a\":\"y\",\"b\":2}\n");
    EXPECT_EQ(table.header, (Row{"b", "a"}));
    EXPECT_EQ(table.rows, (std::vector<Row>{{"1", "x"}, {"2", "y"}}));
    EXPECT_EQ(table.code, 0);
}

TEST(JsonLines, ValuesAreTextsAndNumbersAsTheyAreWritten)
{
    // The escapes of RFC 8259, a pair of surrogates among them.
    const TableRead table =
        Read(R"({"a":"q\"b\\s\/n\n\u00e9\ud834\udd1e","b":-0.50E+01,"c":true,"d":null,"e":""})"
             "\n"
             R"({"a":1e999,"b":12345678901234567890123,"c":false,"d":0,"e":" "})");
    ASSERT_EQ(table.message, "");
    EXPECT_EQ(table.rows, (std::vector<Row>{
                              {"q\"b\\s/n\n\xC3\xA9\xF0\x9D\x84\x9E", "-0.50E+01", "true", "", ""},
                              {"1e999", "12345678901234567890123", "false", "0", " "}}));
}

TEST(JsonLines, KeysMayLackAndOthersArePassedOver)
{
    const TableRead table = Read(
        "{\"a\":1,\"b\":2}\n{}\n{\"b\":3}\n{\"z\":{\"a\":[9]},\"b\":5,\"y\":1,\"y\":2,\"a\":4}\n");
    ASSERT_EQ(table.message, "");
    EXPECT_EQ(table.rows, (std::vector<Row>{{"1", "2"}, {"", ""}, {"", "3"}, {"4", "5"}}));
    EXPECT_EQ(Read("{\"\\u0061\":1}\n{\"a\":2}\n{\"\\u0061\":3}").rows,
              (std::vector<Row>{{"1"}, {"2"}, {"3"}}));
}

TEST(JsonLines, BlankLinesAreNoRowsAndPiecesOfAnySizeReadAlike)
{
    const std::string text =
        "\xEF\xBB\xBF \r\n\n  {\"a\" : \"x\\n\" , \"b\" : 1 } \r\n\n\t\n{\"b\":2}\r\n \n[]\n{}\n";
    for (size_t piece = 1; piece <= text.size(); ++piece) {
        const TableRead table = Read(text, piece);
        EXPECT_EQ(table.header, (Row{"a", "b"})) << piece;
        EXPECT_EQ(table.rows, (std::vector<Row>{{"x\n", "1"}, {"", "2"}})) << piece;
        EXPECT_EQ(table.code, kNoJsonObject) << piece;
        EXPECT_NE(table.message.find("row 3 "), std::string::npos) << table.message;
    }
}

struct Torn {
    std::string line;
    int code;
};

TEST(JsonLines, RowsThatCantBeReadAreToldAfterThoseBefore)
{
    const std::string nul("{\"a\":\"\0\"}", 9);
    const std::string deep = "{\"z\":" + std::string(2000, '[') + std::string(2000, ']') + "}";
    const Torn kTorn[] = {
        // no object
        {"[]", kNoJsonObject},
        {"1", kNoJsonObject},
        {"{", kNoJsonObject},
        {"{\"a\":1", kNoJsonObject},
        {"{\"a\":1}}", kNoJsonObject},
        {"{\"a\":1} {\"a\":2}", kNoJsonObject},
        {"{\"a\":1}\r{\"a\":2}", kNoJsonObject},
        {"{\"a\":1},", kNoJsonObject},
        {"{\"a\":1,}", kNoJsonObject},
        {"{,}", kNoJsonObject},
        {"{\"a\"}", kNoJsonObject},
        {"{\"a\":}", kNoJsonObject},
        {"{\"a\":\"b\":1}", kNoJsonObject},
        {"{\"a\":\"b\":1},\"c\":2}", kNoJsonObject},
        {"{\"a\":1 2}", kNoJsonObject},
        {"{a:1}", kNoJsonObject},
        {"{'a':1}", kNoJsonObject},
        {"{\"z\":[1,]}", kNoJsonObject},
        {"{\"z\":{\"y\":1}", kNoJsonObject},
        {"{\"z\":[1}]}", kNoJsonObject},
        {deep, kNoJsonObject},
        // values that are none
        {"{\"a\":01}", kNoJsonObject},
        {"{\"a\":+1}", kNoJsonObject},
        {"{\"a\":.5}", kNoJsonObject},
        {"{\"a\":1.}", kNoJsonObject},
        {"{\"a\":1e}", kNoJsonObject},
        {"{\"a\":NaN}", kNoJsonObject},
        {"{\"a\":True}", kNoJsonObject},
        {"{\"z\":nul}", kNoJsonObject},
        {"{\"a\":\"\\x\"}", kNoJsonObject},
        {"{\"a\":\"\\ud834\"}", kNoJsonObject},
        {"{\"z\":\"\\ud834\"}", kNoJsonObject},
        {"{\"a\":\"\t\"}", kNoJsonObject},
        {"{\"a\":\"x}", kNoJsonObject},
        // codes of their own
        {nul, kNulByte},
        {"{\"a\":\"\\u0000\"}", kNulByte},
        {"{\"a\":\"\xFF\"}", kRowEncoding},
        {"{\"z\":\"\xC3\"}", kRowEncoding},
        {"{\"a\":[]}", kNestedValue},
        {"{\"a\":{\"b\":1}}", kNestedValue},
        {"{\"a\":1,\"a\":1}", kKeyTwice},
        {"{\"a\":1,\"\\u0061\":2}", kKeyTwice},
    };
    for (const Torn& torn : kTorn) {
        const TableRead table = Read("{\"a\":1}\n" + torn.line + "\n{\"a\":3}\n");
        EXPECT_EQ(table.rows, (std::vector<Row>{{"1"}})) << torn.line;
        EXPECT_EQ(table.code, torn.code) << torn.line << ": " << table.message;
        EXPECT_NE(table.message.find("row 2 "), std::string::npos) << table.message;
        // As the last line, whatever follows in memory.
        EXPECT_EQ(Read("{\"a\":1}\n" + torn.line).code, torn.code) << torn.line;
        // As the header.
        if (torn.code == kNestedValue || torn.line.find("{\"a\"") != 0) continue;
        EXPECT_EQ(Read(torn.line + "\n").code, torn.code) << torn.line;
    }
}

TEST(JsonLines, FirstRowHasToGiveAHeader)
{
    EXPECT_EQ(Read("{}\n{\"a\":1}\n").code, kNoHeader);
    EXPECT_EQ(Read("{\n\"a\":1}\n").code, kNoJsonObject);
    EXPECT_EQ(Read("{\"a\":1,\"b\":2,\"a\":3}\n").code, kKeyTwice);
    EXPECT_EQ(Read("{\"a\":[1]}\n").code, kNestedValue);
}

TEST(JsonLines, LimitOfALineIsExact)
{
    constexpr size_t kLimit = size_t{1} << 24;
    const auto line = [](size_t size) {
        const std::string begin = "{\"a\":\"";
        return begin + std::string(size - begin.size() - 2, 'x') + "\"}";
    };
    const TableRead whole = Read("{\"a\":1}\n" + line(kLimit) + "\n{\"a\":3}\n");
    EXPECT_EQ(whole.code, 0) << whole.message;
    EXPECT_EQ(whole.rows.size(), 3u);
    EXPECT_EQ(Read(line(kLimit) + "\n").code, 0);
    for (const char* end : {"\n{\"a\":3}\n", ""}) {
        const TableRead tooLong = Read("{\"a\":1}\n" + line(kLimit + 1) + end);
        EXPECT_EQ(tooLong.code, kRowTooLong);
        EXPECT_EQ(tooLong.rows.size(), 1u);
        EXPECT_NE(tooLong.message.find("row 2 has more than 16777216 bytes"), std::string::npos);
        EXPECT_EQ(Read(line(kLimit + 1) + end).code, kRowTooLong);
    }
}

// What a table comes to in blocks of some size: a line for each row, torn ones too.
Row Blocks(const std::string& text, size_t bytes, int64_t rows)
{
    TextSource source(text, bytes);
    const std::unique_ptr<BlockReader> reader =
        MakeBlockReader(source, {.passesTorn = true}, {bytes, rows});
    const std::unique_ptr<BlockSplitter> splitter =
        MakeBlockSplitter({.form = reader->Form(), .header = reader->Header()});
    Row found;
    RecordBlock block;
    std::span<const std::string_view> fields;
    const auto tell = [&](const RawRow& raw, const std::string& what) {
        found.push_back(std::to_string(raw.number) + "@" + std::to_string(raw.offset) + " " +
                        std::string(raw.text.substr(0, 40)) + " " + what);
    };
    while (reader->Next(block)) {
        splitter->Begin(block);
        for (;;) {
            const size_t count = splitter->NextRows(3, fields);
            for (size_t i = 0; i < count; ++i) {
                tell(splitter->Raw(i), std::string(fields[i * reader->Header().size()]) + " " +
                                           std::string(splitter->JsonValues()[i]));
            }
            if (count > 0) continue;
            const TornRow* torn = splitter->Torn();
            if (torn == nullptr) break;
            tell(torn->raw,
                 std::to_string(torn->fault.code) + " " + std::to_string(torn->raw.text.size()));
            splitter->PassTorn();
        }
    }
    EXPECT_EQ(reader->Rows(), static_cast<int64_t>(found.size()));
    return found;
}

TEST(JsonLines, RowsDontDependOnTheSizeOfBlocks)
{
    const std::string overlong(20000000, 'x');
    const std::string text = "\xEF\xBB\xBF\n{\"a\":\"\\t\"}\n\n \n[]\n{\"a\":2}\r\n{\"a\":{}}\n" +
                             overlong + "\n{\"a\":5}\n\n{\"a\":6}";
    const Row expected = Blocks(text, 1 << 18, 1000);
    ASSERT_EQ(expected.size(), 7u);
    EXPECT_EQ(expected[0], "1@4 {\"a\":\"\\t\"} \t \"\\t\"");
    EXPECT_EQ(expected[1], "2@18 [] 269340 2");
    EXPECT_EQ(expected[2], "3@21 {\"a\":2} 2 2");
    EXPECT_EQ(expected[4], "5@39 " + std::string(40, 'x') + " 269314 16777217");
    EXPECT_EQ(expected[6], "7@20000049 {\"a\":6} 6 6");
    for (const size_t bytes : {100u, 4096u, 1u << 22}) {
        for (const int64_t rows : {1, 2, 1000}) EXPECT_EQ(Blocks(text, bytes, rows), expected);
    }
}

TEST(JsonLines, UnusedColumnsMayHoldAnythingAndNumbersGetTheDecimalMark)
{
    TextSource source("{\"a\":1.5,\"b\":1.5,\"c\":1.5}\n{\"a\":\"1.5\",\"b\":\"2,5\",\"c\":{}}\n");
    const std::unique_ptr<BlockReader> reader = MakeBlockReader(source, {}, {});
    const std::unique_ptr<BlockSplitter> splitter =
        MakeBlockSplitter({.form = reader->Form(),
                           .header = reader->Header(),
                           .decimal = ',',
                           .uses = {{.isUsed = true}, {.isUsed = true, .isNumber = true}, {}}});
    RecordBlock block;
    std::span<const std::string_view> fields;
    ASSERT_TRUE(reader->Next(block));
    splitter->Begin(block);
    ASSERT_EQ(splitter->NextRows(10, fields), 2u);
    EXPECT_EQ(Row(fields.begin(), fields.end()), (Row{"1.5", "1,5", "1.5", "1.5", "2,5", ""}));
    const auto values = splitter->JsonValues();
    EXPECT_EQ(Row(values.begin(), values.end()),
              (Row{"1.5", "1.5", "1.5", "\"1.5\"", "\"2,5\"", ""}));
}

std::string Bytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Scores and rejects of a run.
std::array<std::string, 2> Scored(const LoadedModel& model, const std::string& table,
                                  size_t threads, size_t blockBytes)
{
    const ScratchFolder folder;
    ScoringOptions options;
    options.form.table = TableForm::JsonLines;
    options.output.keepAll = true;
    options.rejects = true;
    options.threads = threads;
    options.blockBytes = blockBytes;
    ScoringSession session(model, {table}, options);
    RowWriter scores(folder.Path("scores"));
    RowWriter rejects(folder.Path("rejects"));
    session.Run(scores, &rejects);
    scores.Close();
    rejects.Close();
    EXPECT_EQ(scores.RowsWritten(), session.Report().scored + session.Report().NotScoredCount());
    return {Bytes(folder.Path("scores")), Bytes(folder.Path("rejects"))};
}

TEST(JsonLines, ThreadsAndBlocksDontChangeAByte)
{
    const ScratchFolder folder;
    const LoadedModel model("examples/motor-cars/model.pmml",
                            std::make_shared<Plugin>(VELSCORE_PLUGIN));
    std::string text;
    for (int i = 0; i < 3000; ++i) {
        const std::string wt = std::to_string(i % 7) + "." + std::to_string(i);
        switch (i % 10) {
            case 3:
                text += "\n{\"wt\":" + wt + ",\"cyl\":4,\"am\":\"automatic\",\"hp\":93}\n";
                break;
            case 5:
                text += "{\"cyl\":\"4\",\"hp\":null,\"am\":\"manual\",\"wt\":" + wt + "}\n";
                break;
            case 7: text += "{\"cyl\":4,\"wt\":[" + wt + "]}\n"; break;
            case 8: text += "{\"cyl\":4,\"wt\":" + wt + ",}\n"; break;
            default:
                text += "{\"cyl\":6,\"am\":\"m\\u0061nual\",\"wt\":" + wt + ",\"hp\":\"110\"}\n";
        }
    }
    const std::string table = folder.Write("cases.jsonl", text);
    const auto expected = Scored(model, table, 1, 1 << 18);
    EXPECT_EQ(std::count(expected[0].begin(), expected[0].end(), '\n'), 3000);
    EXPECT_EQ(std::count(expected[1].begin(), expected[1].end(), '\n'), 901);
    for (const size_t threads : {1u, 3u}) {
        for (const size_t bytes : {1u, 500u, 1u << 14}) {
            EXPECT_TRUE(Scored(model, table, threads, bytes) == expected)
                << threads << " " << bytes;
        }
    }
}

}  // namespace
}  // namespace MCVelscore_850
