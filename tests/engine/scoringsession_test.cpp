// Whole runs: what is written, rejected, counted and refused is the same whatever the threads and
// the size of blocks.
#include "engine/scoring/scoringsession.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <thread>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include "host/messages/messages.h"
#include "tests/engine/packed.h"
#include "tests/scratchfolder.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

std::string ReadWhole(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// All that a run leaves behind.
struct Outcome {
    std::string rows;
    std::string rejects;
    std::string report;
    std::string failure;  ///< empty without one
    int code = 0;         ///< of the failure

    bool operator==(const Outcome&) const = default;
};

// Where two texts part; the whole of either would be some megabytes.
std::string Parting(std::string_view one, std::string_view other)
{
    const auto place = std::mismatch(one.begin(), one.end(), other.begin(), other.end());
    const auto at = static_cast<size_t>(place.first - one.begin());
    const auto around = [&](std::string_view text) {
        const size_t from = at > 100 ? at - 100 : 0;
        return testing::PrintToString(std::string(text.substr(std::min(from, text.size()), 200)));
    };
    return fmt::format("at {} of {} and {} bytes:\n{}\n{}", at, one.size(), other.size(),
                       around(one), around(other));
}

testing::AssertionResult Same(const Outcome& one, const Outcome& other)
{
    const std::pair<const char*, std::string Outcome::*> parts[] = {{"rows", &Outcome::rows},
                                                                    {"rejects", &Outcome::rejects},
                                                                    {"report", &Outcome::report},
                                                                    {"failure", &Outcome::failure}};
    for (const auto& [name, part] : parts) {
        if (one.*part == other.*part) continue;
        return testing::AssertionFailure()
               << "the " << name << " part " << Parting(one.*part, other.*part);
    }
    return testing::AssertionSuccess();
}

std::string Told(const ScoringReport& report)
{
    std::ostringstream told;
    told << report.scored << " scored, " << report.rowsWritten << " written"
         << (report.interrupted ? ", interrupted" : "") << (report.outputClosed ? ", closed" : "")
         << '\n';
    for (const auto& [reason, cases] : report.notScored) {
        told << cases.count << " by " << reason.code << " of '" << reason.field << "':";
        for (const NotScored::Case& first : cases.first) {
            told << ' ' << first.table << '/' << first.row << '='
                 << testing::PrintToString(first.text.value_or("(none)"));
        }
        told << '\n';
    }
    for (const UnlistedValues& unlisted : report.unlisted) {
        told << unlisted.count << " unlisted in " << unlisted.column
             << (unlisted.oneMayBeReference ? " or the reference" : "") << ':';
        for (const std::string& text : unlisted.first) told << ' ' << text;
        told << '\n';
    }
    return told.str();
}

class SessionTest : public testing::Test {
protected:
    LoadedModel& ModelOf(const std::string& path, const LoadOptions& options = {})
    {
        return models_.emplace_back(path, std::make_shared<Plugin>(VELSCORE_PLUGIN), options);
    }
    // y = 1 + 2 x + 10 [sex = m], with limits.
    LoadedModel& Linear() { return ModelOf(folder_.Write("linear.pmml", TestModel().Text())); }

    Outcome Run(const LoadedModel& model, const Texts& tables, const ScoringOptions& options,
                const StopFlag* stop = nullptr)
    {
        Outcome outcome;
        const std::string rows = folder_.Path("rows.csv");
        const std::string rejected = folder_.Path("rejects.csv");
        std::filesystem::remove(rows);
        std::filesystem::remove(rejected);
        std::optional<ScoringSession> session;
        try {
            session.emplace(model, tables, options, stop);
            RowWriter writer(rows, options.compression);
            std::optional<RowWriter> rejects;
            if (options.rejects) rejects.emplace(rejected);
            RowWriter* const second = rejects ? &*rejects : nullptr;
            try {
                // Blocks so small are done before further threads wake, unless the writing waits:
                // longer on a busy machine, until there was a second thread.
                const auto wait = [&](uint64_t, int64_t) {
                    writers_.insert(std::this_thread::get_id());
                    std::this_thread::sleep_for(
                        std::chrono::microseconds(writers_.size() > 1 ? 100 : 20000));
                };
                if (options.threads > 1) session->OnProgress(wait);
                session->Run(writer, second);
                writer.Close();
                if (second != nullptr) second->Close();
            } catch (...) {
                writer.EndEarly(true);
                if (second != nullptr) second->EndEarly(true);
                throw;
            }
        } catch (const Failure& failure) {
            outcome.failure =
                fmt::format("{} [{}] {}", failure.what(), failure.Code(), failure.Remedy());
            outcome.code = failure.Code();
        }
        outcome.rows = ReadWhole(rows);
        outcome.rejects = ReadWhole(rejected);
        if (session) outcome.report = Told(session->Report());
        return outcome;
    }

    // What a run leaves that goes on where one with rejects ended.
    Outcome GoOn(const LoadedModel& model, const Texts& tables, const ScoringOptions& options,
                 const RunPosition& position)
    {
        const std::string rows = folder_.Path("rows.csv");
        const std::string rejected = folder_.Path("rejects.csv");
        ScoringSession session(model, tables, options);
        RowWriter writer(rows, Compression::None, position.output);
        RowWriter rejects(rejected, Compression::None, position.rejects);
        session.StartAt(position);
        session.Run(writer, &rejects);
        writer.Close();
        rejects.Close();
        return {ReadWhole(rows), ReadWhole(rejected), Told(session.Report()), "", 0};
    }

    // What every number of threads and size of blocks tells, being the same.
    Outcome RunEachWay(const LoadedModel& model, const Texts& tables, ScoringOptions options)
    {
        options.threads = 1;
        options.blockBytes = size_t{4} << 20;
        const Outcome expected = Run(model, tables, options);
        for (const size_t threads : {1u, 2u, 3u, 8u}) {
            for (const size_t kibibytes : {4u, 64u, 256u, 4096u}) {
                options.threads = threads;
                options.blockBytes = kibibytes << 10;
                EXPECT_TRUE(Same(Run(model, tables, options), expected))
                    << threads << " threads, blocks of " << kibibytes << " KiB"
                    << (options.rejects ? ", rejects" : "");
                if (testing::Test::HasFailure()) return expected;
            }
        }
        return expected;
    }

    std::string Table(const std::string& text, const std::string& name = "cases.csv") const
    {
        return folder_.Write(name, text);
    }

    const ScratchFolder folder_;
    std::deque<LoadedModel> models_;
    std::set<std::thread::id> writers_;  ///< the threads that wrote blocks
};

// A row of the linear model's table, with a note that makes it longer.
std::string PlainRow(size_t row)
{
    return fmt::format("{}.{},{},note {:0160}", row % 1000, row % 10, row % 3 == 0 ? "f" : "m",
                       row);
}

constexpr size_t kRows = 3200;  // some 580 KB: more than two blocks of 256 KiB

// A table of `rows` rows, of which those of `odd` (every 37th) stand there as they are.
std::string LinearTable(const std::string& lineEnd, const std::function<std::string(size_t)>& odd,
                        size_t rows = kRows)
{
    std::string text = "x,sex,note" + lineEnd;
    for (size_t row = 0; row < rows; ++row) {
        text += odd != nullptr && row % 37 == 20 ? odd(row) : PlainRow(row);
        text += lineEnd;
    }
    return text;
}

struct Kind {
    const char* name;
    std::string (*table)();
    int code;              ///< what ends it without rejects; 0 for nothing
    int64_t rejectedRows;  ///< lines of the table of rejects
};
void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

constexpr int64_t kOddRows = (kRows - 21) / 37 + 1;

const Kind kKinds[] = {
    {"Quotes",
     [] {
         return LinearTable("\n", [](size_t row) {
             return fmt::format("\"{}\",\"m\",\"a \"\"note\"\", of\nseveral\r\nlines\"", row);
         });
     },
     0, 0},
    {"CrLf", [] { return LinearTable("\r\n", nullptr); }, 0, 0},
    {"Cr", [] { return LinearTable("\r", nullptr); }, 0, 0},
    {"CrLfAndQuotes",
     [] {
         return LinearTable("\r\n", [](size_t) -> std::string { return "1,f,\"x\r\n\"\"\r\n\""; });
     },
     0, 0},
    {"NoLastLineEnd", [] { return LinearTable("\n", nullptr) + "1,m,last"; }, 0, 0},
    {"ByteOrderMark", [] { return "\xEF\xBB\xBF" + LinearTable("\n", nullptr); }, 0, 0},
    {"BlankLinesAtTheEnd",
     [] { return LinearTable("\n", nullptr, 1500) + std::string(400000, '\n'); }, 0, 0},
    {"BlankLinesInTheMiddle",
     [] {
         return LinearTable("\n", nullptr, 1500) + std::string(20000, '\n') + PlainRow(1) + "\n";
     },
     kRowLength, 20000},
    {"BlankRows", [] { return LinearTable("\r\n", [](size_t) -> std::string { return ""; }); },
     kRowLength, kOddRows},
    {"RaggedRows",
     [] {
         return LinearTable(
             "\n", [](size_t row) -> std::string { return row % 2 == 0 ? "1,m" : "1,m,a,b,c"; });
     },
     kRowLength, kOddRows},
    {"NulBytes",
     [] { return LinearTable("\n", [](size_t) { return std::string("1,m,a\0b", 7); }); }, kNulByte,
     kOddRows},
    {"StrayQuotes",
     [] { return LinearTable("\n", [](size_t) -> std::string { return "1,m,5\" long"; }); },
     kStrayQuote, kOddRows},
    {"BrokenUtf8",
     [] { return LinearTable("\n", [](size_t) -> std::string { return "1,m,\xC3("; }); }, 0,
     kOddRows},
    {"RaggedRowsBehindMissingValues",
     [] { return LinearTable("\n", [](size_t) -> std::string { return ",m,\n1,m"; }); }, kRowLength,
     2 * kOddRows},
    {"MissingAndUnreadable",
     [] {
         return LinearTable("\n", [](size_t row) -> std::string {
             const char* const kinds[] = {",m,", "one,m,", "1,q,", "NA,f,"};
             return kinds[row % 4];
         });
     },
     0, kOddRows},
    {"NothingScoredForLong",
     [] {
         std::string text = "x,sex,note\n";
         for (size_t row = 0; row < 3000; ++row) text += fmt::format("one,m,{:0160}\n", row);
         for (size_t row = 0; row < 1000; ++row) text += PlainRow(row) + "\n";
         return text;
     },
     0, 3000},
    {"NothingScored",
     [] {
         std::string text = "x,sex,note\n";
         for (size_t row = 0; row < 3200; ++row) text += fmt::format(",m,{:0160}\n", row);
         return text;
     },
     0, 3200},
    {"HeaderOnly", [] { return std::string("x,sex,note\n"); }, 0, 0},
    {"HeaderWithoutLineEnd", [] { return std::string("x,sex,note"); }, 0, 0},
    {"NoHeader", [] { return std::string("\n1,m,\n"); }, kNoHeader, 0},
    {"WideRows",
     [] {
         std::string header = "x,sex";
         std::string row = "2.5,m";
         for (int i = 2; i < 10000; ++i) {
             header += fmt::format(",c{}", i);
             row += ",7";
         }
         std::string text = header + "\n";
         for (int i = 0; i < 40; ++i) text += row + (i % 10 == 9 ? ",8\n" : "\n");
         return text;
     },
     kRowLength, 4},
    {"LongFields",
     [] {
         std::string text = "x,sex,note\n";
         for (size_t row = 0; row < 6; ++row) {
             // A field of the largest size, as it is and in quotes, and one that is larger.
             const std::string field(kMaxField + (row == 5 ? 1 : 0), 'x');
             text += row % 2 == 0 ? "1,m," + field + "\n" : "1,m,\"" + field + "\"\n";
             for (size_t i = 0; i < 100; ++i) text += PlainRow(i) + "\n";
         }
         return text;
     },
     kFieldTooLong, 1},
};

class EachKindOfTable : public SessionTest, public testing::WithParamInterface<Kind> {};
INSTANTIATE_TEST_SUITE_P(Kinds, EachKindOfTable, testing::ValuesIn(kKinds),
                         [](const auto& kind) { return kind.param.name; });

TEST_P(EachKindOfTable, IsScoredTheSameByAnyThreadsAndBlocks)
{
    const LoadedModel& model = Linear();
    const Texts tables{Table(GetParam().table())};
    ScoringOptions options;
    options.output.keep = {"x"};
    EXPECT_EQ(RunEachWay(model, tables, options).code, GetParam().code);
    options.rejects = true;
    const Outcome outcome = RunEachWay(model, tables, options);
    EXPECT_EQ(outcome.code, GetParam().code == kNoHeader ? kNoHeader : 0);
    EXPECT_EQ(std::count(outcome.rejects.begin(), outcome.rejects.end(), '\n') -
                  (outcome.rejects.empty() ? 0 : 1),
              GetParam().rejectedRows);
}

// A quote that is never closed takes in what is behind it.
TEST_F(SessionTest, OpenQuotesAreToldTheSame)
{
    const LoadedModel& model = Linear();
    // The quote that opens the next such field closes the one before, as it seems.
    const std::pair<size_t, int> codes[] = {{37, kStrayQuote}, {kRows - 1000, kUnclosedQuote}};
    for (const auto& [every, code] : codes) {
        std::string text = "x,sex,note\n";
        for (size_t row = 1; row <= kRows; ++row) {
            text += row % every == 0 ? "1,m,\"open" : PlainRow(row);
            text += '\n';
        }
        const Texts tables{Table(text)};
        ScoringOptions options;
        EXPECT_EQ(RunEachWay(model, tables, options).code, code);
        options.rejects = true;
        const Outcome rejecting = RunEachWay(model, tables, options);
        EXPECT_EQ(rejecting.failure, "");
        EXPECT_NE(rejecting.rejects.find("open quote"), std::string::npos);
    }
}

// So many bytes that the largest blocks go through several threads too.
TEST_F(SessionTest, LargeTableIsScoredTheSame)
{
    const LoadedModel& model = Linear();
    const Texts tables{Table(LinearTable(
        "\n", [](size_t row) -> std::string { return row % 2 == 0 ? "1,m,\"a\nb\"" : ",m,"; },
        60000))};
    ScoringOptions options;
    options.rejects = true;
    options.blockBytes = size_t{4} << 20;
    const Outcome expected = Run(model, tables, options);
    options.blockBytes = size_t{1} << 14;
    for (const size_t threads : {1u, 8u}) {
        for (const size_t kibibytes : {64u, 4096u}) {
            options.threads = threads;
            options.blockBytes = kibibytes << 10;
            EXPECT_TRUE(Same(Run(model, tables, options), expected)) << threads << " " << kibibytes;
        }
    }
    EXPECT_GT(writers_.size(), 1u);
}

// The first value that isn't listed may be the reference category: which one is the first, and the
// first three that differ, are the table's and not a block's.
TEST_F(SessionTest, UnlistedValuesAreCountedTheSame)
{
    TestModel text;
    for (const char* field : {R"(<DataField name="sex" optype="categorical" dataType="string"/>)",
                              R"(<DataField name="sex" optype="categorical" dataType="string">
      <Extension extender="velscore" name="unlistedCategories" value="accept"/>
      <Value value="f"/><Value value="m"/></DataField>)"}) {
        text.sexField = field;
        const LoadedModel& model = ModelOf(folder_.Write("accepting.pmml", text.Text()));
        int64_t unlisted = 0;
        const std::string table = LinearTable("\n", [&](size_t row) {
            ++unlisted;
            return fmt::format("1,{},", row < 1000 ? "f2" : row % 2 == 0 ? "M" : "mm");
        });
        const Outcome outcome = RunEachWay(model, {Table(table)}, {});
        EXPECT_EQ(outcome.failure, "");
        const bool lacksReference = text.sexField.ends_with("/>");
        // Without a list the first value, f, isn't counted.
        EXPECT_NE(outcome.report.find(fmt::format("{} unlisted in sex{}: {}\n", unlisted,
                                                  lacksReference ? " or the reference" : "",
                                                  lacksReference ? "f f2 mm" : "f2 mm M")),
                  std::string::npos)
            << outcome.report;
    }
}

TEST_F(SessionTest, MostRejectsEndsTheTableAtTheSameRow)
{
    const LoadedModel& model = Linear();
    const std::string mixed = LinearTable("\n", [](size_t row) -> std::string {
        const char* const kinds[] = {"1,m", ",m,", "1,m,\"x\"y", "one,f,"};
        return kinds[row % 4];
    });
    const Texts tables{Table(mixed)};
    ScoringOptions options;
    options.rejects = true;
    for (const int64_t most :
         {int64_t{0}, int64_t{1}, int64_t{100}, kOddRows - 1, kOddRows, kOddRows + 1}) {
        options.mostRejects = most;
        const Outcome outcome = RunEachWay(model, tables, options);
        EXPECT_EQ(outcome.code, most < kOddRows ? kTooManyRejects : 0) << most;
        // The rows before the one that is one too many: the 37 * n + 20th is number n.
        const int64_t rows = most < kOddRows ? 37 * most + 20 : static_cast<int64_t>(kRows);
        EXPECT_NE(outcome.report.find(fmt::format("{} written", rows)), std::string::npos)
            << most << ": " << outcome.report;
        // A header alone isn't left behind.
        EXPECT_EQ(std::count(outcome.rejects.begin(), outcome.rejects.end(), '\n'),
                  most == 0 ? 0 : 1 + std::min(most, kOddRows));
    }
}

TEST_F(SessionTest, SeveralTablesAreScoredTheSame)
{
    const LoadedModel& model = Linear();
    const auto odd = [](size_t row) -> std::string { return row % 2 == 0 ? "1,m" : ",f,"; };
    const Texts tables{Table("x,sex,note\n", "empty.csv"),
                       Table(LinearTable("\n", nullptr, 3000) + "1,m,no line end", "one.csv"),
                       Table("x,sex,note", "header.csv"),
                       Table(LinearTable("\r\n", odd, 3000), "two.csv"),
                       Table(LinearTable("\n", nullptr, 10), "three.csv")};
    ScoringOptions options;
    options.output.tableColumn = "file";
    EXPECT_EQ(RunEachWay(model, tables, options).code, kRowLength);
    options.rejects = true;
    EXPECT_EQ(RunEachWay(model, tables, options).failure, "");
    Texts others = tables;
    others.push_back(Table("x,sex\n1,m\n", "other.csv"));
    const Outcome outcome = RunEachWay(model, others, options);
    EXPECT_EQ(outcome.code, kOtherHeader);
    EXPECT_NE(outcome.report.find("6011 written"), std::string::npos) << outcome.report;
}

// A table of the test data, so often that it goes through several blocks.
std::string ManyTimes(const std::string& path, size_t bytes)
{
    const std::string text = ReadWhole(path);
    const size_t body = text.find('\n') + 1;
    std::string many = text;
    while (many.size() < bytes) {
        if (!many.ends_with('\n')) many += '\n';
        many.append(text, body);
    }
    return many;
}

std::string JsonRow(size_t row)
{
    return fmt::format(R"({{"x":{}.{},"sex":"{}","note":"{:0160}"}})", row % 1000, row % 10,
                       row % 3 == 0 ? "f" : "m", row);
}

TEST_F(SessionTest, JsonLinesAreScoredTheSame)
{
    std::string text;
    for (size_t row = 0; row < kRows; ++row) {
        text += (row % 37 == 20 ? R"({"x":1,)" : JsonRow(row)) + "\n";
    }
    ScoringOptions options;
    options.rejects = true;
    const Outcome outcome = RunEachWay(Linear(), {Table(text, "cases.jsonl")}, options);
    EXPECT_EQ(outcome.failure, "");
    EXPECT_EQ(std::count(outcome.rejects.begin(), outcome.rejects.end(), '\n') - 1, kOddRows);
}

TEST_F(SessionTest, PackedTablesAreScoredTheSame)
{
    const std::string text = LinearTable("\n", [](size_t) -> std::string { return "1,m"; });
    const Texts tables{Table(PackedByGzip(text), "cases.csv.gz"),
                       Table(PackedByZstd(text), "cases.csv.zst")};
    ScoringOptions options;
    options.rejects = true;
    const Outcome outcome = RunEachWay(Linear(), tables, options);
    EXPECT_EQ(outcome.failure, "");
    EXPECT_EQ(std::count(outcome.rejects.begin(), outcome.rejects.end(), '\n') - 1, 2 * kOddRows);
}

TEST_F(SessionTest, PackedOutputIsTheSameByAnyThreads)
{
    const LoadedModel& model = Linear();
    const Texts tables{Table(LinearTable("\n", nullptr))};
    for (const Compression compression : {Compression::Gzip, Compression::Zstd}) {
        ScoringOptions options;
        options.compression = compression;
        options.blockBytes = size_t{16} << 10;
        const Outcome expected = Run(model, tables, options);
        ASSERT_FALSE(expected.rows.empty());
        for (const size_t threads : {2u, 3u, 8u}) {
            options.threads = threads;
            EXPECT_TRUE(Same(Run(model, tables, options), expected)) << threads << " threads";
        }
    }
}

TEST_F(SessionTest, ARunThatIsGoneOnWithEndsTheSame)
{
    const LoadedModel& model = Linear();
    const Texts tables{Table(LinearTable("\n", [](size_t) -> std::string { return "1,m"; }))};
    ScoringOptions options;
    options.rejects = true;
    const Outcome expected = Run(model, tables, options);
    const std::string rows = folder_.Path("rows.csv");
    const std::string rejected = folder_.Path("rejects.csv");
    for (const size_t threads : {1u, 3u, 8u}) {
        options.threads = threads;
        options.blockBytes = size_t{16} << 10;
        options.mostRejects = 40;
        RunPosition position;
        {
            ScoringSession session(model, tables, options);
            session.OnCheckpoint([&](const RunPosition& reached) { position = reached; });
            RowWriter writer(rows);
            RowWriter rejects(rejected);
            EXPECT_THROW(session.Run(writer, &rejects), Failure);
            EXPECT_EQ(writer.EndEarly(false), position.output.part);
            EXPECT_EQ(rejects.EndEarly(false), position.rejects.part);
        }
        EXPECT_GT(position.report.rejected, 0);
        options.mostRejects = std::numeric_limits<int64_t>::max();
        EXPECT_TRUE(Same(GoOn(model, tables, options, position), expected))
            << threads << " threads";
    }
}

// Blocks that a stop met in their middle are scored again.
TEST_F(SessionTest, ARunThatWasStoppedGoesOnWithItsFirstRowThatIsNotWritten)
{
    const LoadedModel& model = Linear();
    const Texts tables{Table(LinearTable("\n", [](size_t) -> std::string { return "1,m"; }))};
    ScoringOptions options;
    options.rejects = true;
    const Outcome expected = Run(model, tables, options);
    options.threads = 8;
    options.blockBytes = 4096;
    for (int blocks = 1; blocks < 60; ++blocks) {
        RunPosition position;
        StopFlag stop{false};
        {
            ScoringSession session(model, tables, options, &stop);
            session.OnCheckpoint([&](const RunPosition& reached) { position = reached; });
            int written = 0;
            session.OnProgress([&](uint64_t, int64_t) { stop = stop || ++written == blocks; });
            RowWriter writer(folder_.Path("rows.csv"));
            RowWriter rejects(folder_.Path("rejects.csv"));
            session.Run(writer, &rejects);
            EXPECT_TRUE(session.Report().interrupted);
            writer.EndEarly(false);
            rejects.EndEarly(false);
        }
        ASSERT_TRUE(Same(GoOn(model, tables, options, position), expected)) << blocks << " blocks";
    }
}

TEST_F(SessionTest, CurvesAreDrawnTheSame)
{
    const std::string folder = "tests/data/cases/cox-veteran-strata/";
    const LoadedModel& model = ModelOf(folder + "model.pmml");
    ScoringOptions options;
    options.curves = true;
    std::string table = ManyTimes(folder + "input.csv", 9000);
    EXPECT_EQ(RunEachWay(model, {Table(table)}, options).failure, "");
    table += "1,2\n,,,,\n" + table.substr(table.find('\n') + 1);
    options.rejects = true;
    const Outcome outcome = RunEachWay(model, {Table(table)}, options);
    EXPECT_EQ(outcome.failure, "");
    EXPECT_EQ(std::count(outcome.rejects.begin(), outcome.rejects.end(), '\n'), 3);
}

TEST_F(SessionTest, ColumnsOfTheDocumentAreWrittenTheSame)
{
    const std::string folder = "tests/data/cases/glz-logit-birthwt/";
    const LoadedModel& model = ModelOf(folder + "model.pmml", {.output = OutputColumns::Document});
    ASSERT_NE(model.Output(), nullptr);
    ScoringOptions options;
    options.rejects = true;
    options.output.keepAll = true;
    std::string table = ManyTimes(folder + "input.csv", 60000);
    table += "1\n" + table.substr(table.find('\n') + 1);
    const Outcome outcome = RunEachWay(model, {Table(table)}, options);
    EXPECT_EQ(outcome.failure, "");
    EXPECT_NE(outcome.rejects.find("too few fields"), std::string::npos);
}

TEST_F(SessionTest, TablesOfTheTestDataAreScoredTheSame)
{
    size_t folders = 0;
    for (const auto& entry : std::filesystem::directory_iterator("tests/data/cases")) {
        const std::string input = entry.path() / "input.csv";
        if (!std::filesystem::exists(input)) continue;
        SCOPED_TRACE(input);
        ++folders;
        const LoadedModel& model = ModelOf(entry.path() / "model.pmml");
        const Texts tables{Table(ManyTimes(input, 15000))};
        ScoringOptions options;
        options.results = {.linearPredictor = true, .linearPredictorError = true};
        options.blockBytes = size_t{4} << 20;
        const Outcome expected = Run(model, tables, options);
        EXPECT_EQ(expected.failure, "");
        for (const size_t threads : {1u, 8u}) {
            options.threads = threads;
            options.blockBytes = 1000;
            EXPECT_TRUE(Same(Run(model, tables, options), expected)) << threads;
        }
        models_.clear();
    }
    EXPECT_GT(folders, 50u);
}

// What a run that was stopped, or refused by its output, leaves is the beginning of the whole one,
// cut behind a row.
void ExpectWholeRowsOf(const std::string& whole, const std::string& part)
{
    EXPECT_TRUE(whole.starts_with(part)) << Parting(whole, part);
    EXPECT_TRUE(part.empty() || part.ends_with('\n'));
}

TEST_F(SessionTest, StopAtAnyMomentLeavesWholeRows)
{
    const LoadedModel& model = Linear();
    const auto odd = [](size_t row) -> std::string { return row % 2 == 0 ? "1,m" : ",f,"; };
    const Texts tables{Table(LinearTable("\n", odd, 2000))};
    ScoringOptions options;
    options.rejects = true;
    options.threads = 8;
    options.blockBytes = 4096;
    const Outcome whole = Run(model, tables, options);
    int interrupted = 0;
    for (int i = 0; i < 150; ++i) {
        StopFlag stop{false};
        std::thread stopping([&] {
            std::this_thread::sleep_for(std::chrono::microseconds(i * 60));
            stop = true;
        });
        const Outcome part = Run(model, tables, options, &stop);
        stopping.join();
        // The flag may stop the reading of the header, which is then none.
        EXPECT_TRUE(part.code == 0 || part.code == kNoHeader) << part.failure;
        ExpectWholeRowsOf(whole.rows, part.rows);
        ExpectWholeRowsOf(whole.rejects, part.rejects);
        const bool isInterrupted = part.report.find("interrupted") != std::string::npos;
        if (!isInterrupted && part.code == 0) {
            EXPECT_TRUE(Same(part, whole));
        }
        if (isInterrupted) ++interrupted;
    }
    EXPECT_GT(interrupted, 5);
}

// Reading fails somewhere: what could be read until then is scored, whatever the threads.
TEST_F(SessionTest, DamagedTableIsScoredUpToItsDamage)
{
    const LoadedModel& model = Linear();
    const auto odd = [](size_t row) -> std::string { return row % 2 == 0 ? "1,m" : ",f,"; };
    const std::string text = LinearTable("\n", odd, 2000);
    const std::string packed = PackedByGzip(text, 1);
    ScoringOptions options;
    options.rejects = true;
    const Outcome whole = Run(model, {Table(text)}, options);
    for (size_t part = 1; part < 8; ++part) {
        const size_t size = packed.size() * part / 8;
        for (const bool isCut : {true, false}) {
            std::string damaged = packed;
            if (isCut) {
                damaged.resize(size);
            } else {
                std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(size), 100, '\xFF');
            }
            const Texts tables{Table(damaged)};
            options.threads = 1;
            options.blockBytes = size_t{4} << 20;
            const Outcome expected = Run(model, tables, options);
            if (isCut) {
                EXPECT_EQ(expected.code, kPackedCut);
                ExpectWholeRowsOf(whole.rows, expected.rows);
                ExpectWholeRowsOf(whole.rejects, expected.rejects);
                EXPECT_GT(expected.rows.size(), whole.rows.size() * (part - 1) / 8);
            } else {
                EXPECT_NE(expected.code, 0);
            }
            for (const size_t threads : {1u, 2u, 8u}) {
                for (const size_t bytes : {1000u, 4096u, 65536u}) {
                    options.threads = threads;
                    options.blockBytes = bytes;
                    EXPECT_TRUE(Same(Run(model, tables, options), expected))
                        << part << (isCut ? " cut, " : ", ") << threads << " threads, " << bytes;
                }
            }
        }
    }
}

TEST_F(SessionTest, FullOutputEndsTheRunWithWholeRows)
{
    const LoadedModel& model = Linear();
    const Texts tables{Table(LinearTable("\n", nullptr, 2000))};
    ScoringOptions options;
    options.blockBytes = 4096;
    const Outcome whole = Run(model, tables, options);
    for (const size_t threads : {1u, 8u}) {
        options.threads = threads;
        for (int i = 0; i < 30; ++i) {
            ScoringSession session(model, tables, options);
            RowWriter full("/dev/full");
            try {
                session.Run(full);
                FAIL() << "written to a full device";
            } catch (const Failure& failure) {
                EXPECT_EQ(failure.Kind(), FailureKind::Output);
                EXPECT_EQ(failure.Code(), kOutputFull);
            }
            EXPECT_EQ(session.Report().rowsWritten, 0);
        }
    }
}

// The largest size of a file stands for a disk that fills up in the middle.
TEST_F(SessionTest, OutputThatFillsUpHoldsWholeRows)
{
    const LoadedModel& model = Linear();
    const Texts tables{Table(LinearTable("\n", nullptr, 2000))};
    ScoringOptions options;
    options.blockBytes = 4096;
    const Outcome whole = Run(model, tables, options);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    for (const size_t threads : {1u, 8u}) {
        options.threads = threads;
        for (rlim_t size = 1000; size < whole.rows.size(); size += 20011) {
            const rlimit small{size, before.rlim_max};
            ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
            const Outcome part = Run(model, tables, options);
            ::setrlimit(RLIMIT_FSIZE, &before);
            EXPECT_EQ(part.code, kOutputFull) << part.failure;
            ExpectWholeRowsOf(whole.rows, part.rows);
            const auto lines = std::count(part.rows.begin(), part.rows.end(), '\n');
            const std::string written = fmt::format(" {} written", lines - 1);
            EXPECT_NE(part.report.find(written), std::string::npos) << part.report << written;
            EXPECT_GT(part.rows.size() + 200, size);
        }
    }
    std::signal(SIGXFSZ, oldHandler);
}

}  // namespace
}  // namespace MCVelscore_850
