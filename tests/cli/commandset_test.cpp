// The definition of the command line: where each option's text goes, and what none takes.

#include "cli/commandset.h"

#include <functional>
#include <optional>
#include <set>
#include <type_traits>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>
#include <CLI/CLI.hpp>

#include "tests/cli/inprocess.h"

namespace MCVelscore_850 {
namespace {

using Texts = std::vector<std::string>;

void Parse(CommandSet& set, const Texts& arguments)
{
    set.Program().parse(Texts(arguments.rbegin(), arguments.rend()));
}

std::string Shown(const std::string& text) { return text; }
std::string Shown(bool flag) { return flag ? "yes" : "no"; }
std::string Shown(const Texts& texts) { return fmt::format("{}", fmt::join(texts, " | ")); }
template <class Number>
requires std::is_arithmetic_v<Number> std::string Shown(Number number)
{
    return std::to_string(number);
}
template <class Value>
std::string Shown(const std::optional<Value>& value)
{
    return value ? Shown(*value) : "none";
}

// What a command holds under an option that is given so.
struct Row {
    const char* option;
    Texts given;
    std::function<std::string(const CommandSet&)> held;
    const char* expected;
    const char* without;
};

// `of` answers the arguments that `member` is of.
template <class Of, class Member>
Row RowOf(const char* option, Texts given, Of of, Member member, const char* expected,
          const char* without)
{
    return {option, std::move(given),
            [of, member](const CommandSet& set) {
                return Shown(std::invoke(member, std::invoke(of, set)));
            },
            expected, without};
}
template <class Of, class Member>
Row FlagOf(const char* option, Of of, Member member)
{
    return RowOf(option, {}, of, member, "yes", "no");
}

using Rows = std::vector<Row>;
Rows operator+(Rows all, const Rows& more)
{
    all.insert(all.end(), more.begin(), more.end());
    return all;
}
Texts operator+(Texts all, const Texts& more)
{
    all.insert(all.end(), more.begin(), more.end());
    return all;
}

template <class Of>
Rows DocumentRows(Of of)
{
    using Held = DocumentArguments;
    return {FlagOf("--as-is", of, &Held::asIs),
            RowOf("--allow", {"unknown-element"}, of, &Held::allowed, "unknown-element", ""),
            RowOf("--plugin", {"p.so"}, of, &Held::plugin, "p.so", "")};
}

template <class Of>
Rows TableRows(Of of)
{
    using Held = TableArguments;
    return {RowOf("--delimiter", {";"}, of, &Held::delimiter, ";", "none"),
            RowOf("--decimal", {","}, of, &Held::decimal, ",", "."),
            RowOf("--na", {"-9"}, of, &Held::missingTexts, "-9", ""),
            RowOf("--map", {"x=X"}, of, &Held::mappings, "x=X", ""),
            FlagOf("--no-header", of, &Held::noHeader)};
}

// What score, curve and explain have together.
template <class Of>
Rows RunRows(Of of)
{
    using Held = ScoreArguments;
    return TableRows(of) +
           DocumentRows([of](const CommandSet& set) { return std::invoke(of, set).document; }) +
           Rows{RowOf("--out", {"o.csv"}, of, &Held::output, "o.csv", "-"),
                FlagOf("--partial", of, &Held::partial),
                FlagOf("--resume", of, &Held::resume),
                RowOf("--format", {"jsonl"}, of, &Held::format, "jsonl", ""),
                RowOf("--compress", {"zstd"}, of, &Held::compress, "zstd", ""),
                RowOf("--out-delimiter", {"|"}, of, &Held::outDelimiter, "|", ""),
                RowOf("--digits", {"17"}, of, &Held::digits, "17", "0"),
                RowOf("--policy", {"status"}, of, &Held::policy, "status", ""),
                RowOf("--threads", {"1024"}, of, &Held::threads, "1024", "0"),
                RowOf("--rejects", {"r.csv"}, of, &Held::rejects, "r.csv", ""),
                RowOf("--max-rejects", {"0"}, of, &Held::mostRejects, "0", "none"),
                FlagOf("--strict", of, &Held::strict),
                RowOf("--summary", {"s.json"}, of, &Held::summary, "s.json", ""),
                FlagOf("--progress", of, &Held::progress),
                FlagOf("--quiet", of, &Held::quiet)};
}

template <class Of>
Rows KeptRows(Of of)
{
    return {RowOf("--keep", {"all"}, of, &ScoreArguments::keep, "all", ""),
            RowOf("--name-column", {"file"}, of, &ScoreArguments::nameColumn, "file", "")};
}

struct CommandRows {
    const char* command;
    Texts positionals;
    Rows rows;
};

std::vector<CommandRows> AllRows()
{
    constexpr auto kScore = &CommandSet::score;
    constexpr auto kCurve = &CommandSet::curve;
    constexpr auto kExplain = &CommandSet::explain;
    constexpr auto kCheck = &CommandSet::check;
    constexpr auto kInspect = &CommandSet::inspect;
    constexpr auto kVerify = &CommandSet::verify;
    constexpr auto kConvert = &CommandSet::convert;
    constexpr auto kDiff = &CommandSet::diff;
    // `of` of the arguments that hold those of documents under `document`.
    const auto documents = [](auto of) {
        return DocumentRows([of](const CommandSet& set) { return std::invoke(of, set).document; });
    };
    return {
        {"score",
         {"m.pmml", "a.csv"},
         RunRows(kScore) + KeptRows(kScore) +
             Rows{RowOf("--columns", {"a,b"}, kScore, &ScoreArguments::columns, "a,b", ""),
                  RowOf("--output", {"document"}, kScore, &ScoreArguments::outputColumns,
                        "document", "default"),
                  FlagOf("--prediction-only", kScore, &ScoreArguments::predictionOnly),
                  RowOf("--level", {"0.9"}, kScore, &ScoreArguments::level, "0.9", "none")}},
        {"curve",
         {"m.pmml", "a.csv"},
         RunRows(kCurve) + KeptRows(kCurve) +
             Rows{RowOf("--times", {"1,2"}, kCurve, &ScoreArguments::times, "1,2", "none"),
                  FlagOf("--wide", kCurve, &ScoreArguments::wide)}},
        {"explain",
         {"m.pmml", "a.csv"},
         RunRows([](const CommandSet& set) { return set.explain.table; }) +
             Rows{
                 FlagOf("--long", kExplain, &ExplainArguments::isLong),
                 FlagOf("--json", kExplain, &ExplainArguments::json),
                 RowOf("--limit", {"1"}, kExplain, &ExplainArguments::mostCases, "1", "none"),
                 RowOf("--top", {"0"}, kExplain, &ExplainArguments::top, "0", "none"),
                 RowOf("--baseline", {"mean"}, kExplain, &ExplainArguments::baseline, "mean", "")}},
        {"check",
         {"m.pmml"},
         documents(kCheck) +
             Rows{FlagOf("--json", kCheck, &CheckArguments::json),
                  FlagOf("--strict", kCheck, &CheckArguments::strict),
                  FlagOf("--fix", kCheck, &CheckArguments::fix),
                  RowOf("--out", {"f.pmml"}, kCheck, &CheckArguments::output, "f.pmml", "-")}},
        {"inspect",
         {"m.pmml"},
         documents(kInspect) +
             Rows{FlagOf("--dump", kInspect, &InspectArguments::dump),
                  FlagOf("--json", kInspect, &InspectArguments::json),
                  FlagOf("--coefficients", kInspect, &InspectArguments::coefficients),
                  FlagOf("--csv", kInspect, &InspectArguments::csv),
                  RowOf("--level", {"0.9"}, kInspect, &InspectArguments::level, "0.9", "none")}},
        {"verify",
         {"m.pmml"},
         documents(kVerify) +
             Rows{FlagOf("--json", kVerify, &VerifyArguments::json),
                  RowOf("--emit", {"a.csv"}, kVerify, &VerifyArguments::emit, "a.csv", ""),
                  RowOf("--out", {"v.pmml"}, kVerify, &VerifyArguments::output, "v.pmml", "-")}},
        {"convert",
         {"m.xml"},
         documents(kConvert) +
             Rows{RowOf("--out", {"n.pmml"}, kConvert, &ConvertArguments::output, "n.pmml", "-")}},
        {"diff", {"a.pmml", "b.pmml"}, documents(kDiff) + TableRows([](const CommandSet& set) {
                                           return set.diff.table;
                                       }) + Rows{FlagOf("--json", kDiff, &DiffArguments::json)}},
        {"help", {}, {}}};
}

TEST(CommandSet, EachOptionGoesToItsPlaceBeforeAndBehindTheOtherArguments)
{
    for (const CommandRows& command : AllRows()) {
        for (const Row& row : command.rows) {
            SCOPED_TRACE(fmt::format("{} {}", command.command, row.option));
            const Texts option = Texts{row.option} + row.given;
            CommandSet none;
            Parse(none, Texts{command.command} + command.positionals);
            EXPECT_EQ(row.held(none), row.without);
            CommandSet behind;
            Parse(behind, Texts{command.command} + command.positionals + option);
            EXPECT_EQ(row.held(behind), row.expected);
            CommandSet before;
            Parse(before, Texts{command.command} + option + command.positionals);
            EXPECT_EQ(row.held(before), row.expected);
            if (row.given.empty()) continue;
            CommandSet joined;
            Parse(joined, Texts{command.command} + command.positionals +
                              Texts{fmt::format("{}={}", row.option, row.given.front())});
            EXPECT_EQ(row.held(joined), row.expected);
        }
    }
}

// What the definition has: the options of a command by their long names, but for --help.
std::set<std::string> OptionsOf(const CLI::App& command)
{
    std::set<std::string> names;
    for (const CLI::Option* option : command.get_options()) {
        for (const std::string& name : option->get_lnames()) names.insert("--" + name);
    }
    names.erase("--help");
    return names;
}

TEST(CommandSet, HasNoOptionBesideThose)
{
    const CommandSet set;
    Texts commands;
    for (const CommandRows& command : AllRows()) {
        commands.emplace_back(command.command);
        std::set<std::string> listed;
        for (const Row& row : command.rows) listed.insert(row.option);
        EXPECT_EQ(OptionsOf(*set.Program().get_subcommand(command.command)), listed)
            << command.command;
    }
    Texts names = set.Names();
    std::sort(names.begin(), names.end());
    std::sort(commands.begin(), commands.end());
    EXPECT_EQ(names, commands);
}

TEST(CommandSet, PositionalArgumentsGoToTheirPlaces)
{
    CommandSet set;
    Parse(set, {"score", "m.pmml", "a.csv", "b.csv"});
    EXPECT_EQ(set.score.model, "m.pmml");
    EXPECT_EQ(set.score.cases, (Texts{"a.csv", "b.csv"}));
    Parse(set, {"check", "m.pmml", "n.pmml"});
    EXPECT_EQ(set.check.models, (Texts{"m.pmml", "n.pmml"}));
    Parse(set, {"diff", "a.pmml", "b.pmml", "c.csv"});
    EXPECT_EQ(Shown(Texts{set.diff.first, set.diff.second, set.diff.cases}),
              "a.pmml | b.pmml | c.csv");
    Parse(set, {"help", "90029"});
    EXPECT_EQ(set.help.code, "90029");
}

TEST(CommandSet, OptionsThatMayBeGivenAgainKeepAllInOrder)
{
    CommandSet set;
    Parse(set,
          {"score",     "m",          "--na",    "-9",  "--na",    "?",      "--keep",    "a,b",
           "--keep",    "c",          "--map",   "x=X", "--map",   "@m.txt", "--columns", "status",
           "--columns", "prediction", "--allow", "r",   "--allow", "s"});
    EXPECT_EQ(set.score.missingTexts, (Texts{"-9", "?"}));
    EXPECT_EQ(set.score.keep, (Texts{"a,b", "c"}));
    EXPECT_EQ(set.score.mappings, (Texts{"x=X", "@m.txt"}));
    EXPECT_EQ(set.score.columns, (Texts{"status", "prediction"}));
    EXPECT_EQ(set.score.document.allowed, (Texts{"r", "s"}));
}

bool IsRepeatable(const std::string& option)
{
    static const std::set<std::string> kRepeatable{"--na", "--map", "--keep", "--columns",
                                                   "--allow"};
    return kRepeatable.contains(option);
}

TEST(CommandSet, AnOptionWithoutItsTextIsRefusedByName)
{
    for (const CommandRows& command : AllRows()) {
        for (const Row& row : command.rows) {
            if (row.given.empty()) continue;
            SCOPED_TRACE(fmt::format("{} {}", command.command, row.option));
            const Answered run =
                RunInProcess(Texts{command.command} + command.positionals + Texts{row.option});
            EXPECT_EQ(run.exitCode, 1);
            EXPECT_EQ(run.out, "");
            EXPECT_NE(run.err.find(row.option), std::string::npos) << run.err;
        }
    }
}

TEST(CommandSet, AnOptionOfOneTextGivenTwiceIsRefusedByName)
{
    for (const CommandRows& command : AllRows()) {
        for (const Row& row : command.rows) {
            if (row.given.empty() || IsRepeatable(row.option)) continue;
            SCOPED_TRACE(fmt::format("{} {}", command.command, row.option));
            const Texts option = Texts{row.option} + row.given;
            const Answered run =
                RunInProcess(Texts{command.command} + command.positionals + option + option);
            EXPECT_EQ(run.exitCode, 1);
            EXPECT_EQ(run.out, "");
            EXPECT_NE(run.err.find(row.option), std::string::npos) << run.err;
        }
    }
}

struct Refused {
    Texts arguments;
    const char* told;
};

TEST(CommandSet, TextsOutOfRangeAreRefused)
{
    const Refused kRefused[] = {
        {{"score", "m", "--digits", "0"}, "--digits: '0' is no whole number from 1 to 17"},
        {{"score", "m", "--digits", "18"}, "'18' is no whole number from 1 to 17"},
        {{"score", "m", "--digits", "4.5"}, "'4.5' is no whole number from 1 to 17"},
        {{"score", "m", "--digits", ""}, "'' is no whole number from 1 to 17"},
        {{"score", "m", "--threads", "0"}, "--threads: '0' is no whole number from 1 to 1024"},
        {{"score", "m", "--threads", "1025"}, "'1025' is no whole number from 1 to 1024"},
        {{"score", "m", "--threads", "-1"}, "'-1' is no whole number from 1 to 1024"},
        {{"score", "m", "--threads", "many"}, "'many' is no whole number from 1 to 1024"},
        {{"score", "m", "--threads", "99999999999999999999"}, "is no whole number from 1 to 1024"},
        {{"score", "m", "--max-rejects", "-1"},
         "--max-rejects: '-1' is no whole number of 0 or more"},
        {{"score", "m", "--max-rejects", "9223372036854775808"},
         "'9223372036854775808' is no whole number of 0 or more"},
        {{"explain", "m", "c", "--limit", "0"}, "--limit: '0' is no whole number of 1 or more"},
        {{"explain", "m", "c", "--top", "-1"}, "--top: '-1' is no whole number of 0 or more"},
        {{"explain", "m", "c", "--top", "2x"}, "'2x' is no whole number of 0 or more"},
        {{"score", "m", "--format", "csvl"},
         "--format: 'csvl' is none of csv, jsonl. Did you mean 'csv'?"},
        {{"score", "m", "--compress", "gzp"},
         "--compress: 'gzp' is none of gzip, zstd, none. Did you mean 'gzip'?"},
        {{"score", "m", "--compress", "brotli"}, "'brotli' is none of gzip, zstd, none\n"},
        {{"score", "m", "--policy", ""}, "--policy: '' is none of substitute, sysmis, status"},
        {{"score", "m", "--output", "documents"},
         "--output: 'documents' is none of default, document. Did you mean 'document'?"},
        {{"score", "m", "-o", ""}, "--out: the text is empty"},
        {{"score", "m", "--out-delimiter", ""}, "--out-delimiter: the text is empty"},
        {{"score", "m", "--name-column", ""}, "--name-column: the text is empty"},
        {{"score", "m", "--rejects", ""}, "--rejects: the text is empty"},
        {{"score", "m", "--summary", ""}, "--summary: the text is empty"},
        {{"explain", "m", "c", "--baseline", ""}, "--baseline: the text is empty"},
        {{"check", "m", "--fix", "-o", ""}, "--out: the text is empty"},
        {{"verify", "m", "--emit", "c", "-o", ""}, "--out: the text is empty"},
        {{"verify", "m", "--emit", ""}, "--emit: the text is empty"},
        {{"convert", "m", "-o", ""}, "--out: the text is empty"},
        {{"diff", "m", "n", ""}, "CASES: the text is empty"},
    };
    for (const Refused& refused : kRefused) {
        SCOPED_TRACE(fmt::format("{}", fmt::join(refused.arguments, " ")));
        const Answered run = RunInProcess(refused.arguments);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find(refused.told), std::string::npos) << run.err;
    }
}

// A run in process names a plug-in itself.
TEST(CommandSet, APluginWithoutANameIsRefused)
{
    CommandSet set;
    EXPECT_THROW(Parse(set, {"score", "m", "--plugin", ""}), CLI::ValidationError);
}

TEST(CommandSet, HintsStandBehindTheSentenceTheyBelongTo)
{
    EXPECT_EQ(WithHint("there is no 'a'", "Did you mean 'b'?"),
              "there is no 'a'. Did you mean 'b'?");
    EXPECT_EQ(WithHint("there is no 'a'", ""), "there is no 'a'");
}

}  // namespace
}  // namespace MCVelscore_850
