#include "cli/commandset.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <CLI/CLI.hpp>

#include "engine/messages/suggestions.h"
#include "engine/tables/compression.h"

namespace MCVelscore_850 {

namespace {

constexpr const char* kScoreFooter =
    "Example:\n"
    "  velscore score model.pmml cases.csv --keep id -o scores.csv\n\n"
    "Exit codes: 0 done; 1 wrong usage; 2 document refused; 3 cases can't be read or lack a\n"
    "column; 4 output can't be written; 5 with --strict, a case wasn't scored or held an\n"
    "unlisted value, or the document leaves a doubt; 7 plug-in can't be loaded; 130 interrupted.";

// Each takes just one text: it must not swallow the positional arguments behind it.
template <class Target>
CLI::Option* AddText(CLI::App* command, const std::string& name, Target& target,
                     const std::string& help, const std::string& kind)
{
    return command->add_option(name, target, help)->type_name(kind)->expected(1);
}

void AddRepeatable(CLI::App* command, const std::string& name, std::vector<std::string>& target,
                   const std::string& help, const std::string& kind)
{
    command
        ->add_option_function<std::string>(
            name, [&target](const std::string& text) { target.push_back(text); }, help)
        ->type_name(kind)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
        ->trigger_on_parse();
}

CLI::Validator OneOf(std::vector<std::string> words)
{
    const auto check = [words = std::move(words)](const std::string& text) -> std::string {
        if (std::find(words.begin(), words.end(), text) != words.end()) return {};
        return WithHint(fmt::format("'{}' is none of {}", text, fmt::join(words, ", ")),
                        SuggestWord(text, words));
    };
    return {check, "", ""};
}

CLI::Validator NotEmpty()
{
    const auto check = [](const std::string& text) -> std::string {
        return text.empty() ? "the text is empty" : "";
    };
    return {check, "", ""};
}

constexpr int64_t kNoLimit = std::numeric_limits<int64_t>::max();

CLI::Validator WholeNumber(int64_t least, int64_t most = kNoLimit)
{
    const auto check = [least, most](const std::string& text) -> std::string {
        int64_t number = 0;
        const char* const end = text.data() + text.size();
        const auto read = std::from_chars(text.data(), end, number);
        if (read.ec == std::errc() && read.ptr == end && number >= least && number <= most) {
            return {};
        }
        return most == kNoLimit
                   ? fmt::format("'{}' is no whole number of {} or more", text, least)
                   : fmt::format("'{}' is no whole number from {} to {}", text, least, most);
    };
    return {check, "", ""};
}

void AddDocumentOptions(CLI::App* command, DocumentArguments& document)
{
    command->add_flag("--as-is", document.asIs,
                      "Take the document as it is: neither adapt it nor look for faults");
    AddRepeatable(command, "--allow", document.allowed,
                  "Take faults of this rule for notices; check tells the rule behind each; may be "
                  "given again",
                  "RULE");
    AddText(command, "--plugin", document.plugin,
            "The plug-in's library, instead of the one beside the program", "FILE")
        ->check(NotEmpty());
}

// The headings of the options of `score` and `curve`.
constexpr const char* kInputGroup = "Input";
constexpr const char* kOutputGroup = "Output";
constexpr const char* kScoringGroup = "Scoring";
constexpr const char* kBadRowsGroup = "Bad rows";
constexpr const char* kReportsGroup = "Reports";

// How tables are written; `where` tells what the marks are of.
void DefineTable(CLI::App* command, TableArguments& table, const std::string& where)
{
    AddText(command, "--delimiter", table.delimiter,
            fmt::format("The character between fields, {}; without it a comma; tab for a tabulator",
                        where),
            "C");
    AddText(command, "--decimal", table.decimal, fmt::format("The decimal mark, {}", where), "C");
    AddRepeatable(command, "--na", table.missingTexts,
                  "A text that means missing, beside the empty field and NA; may be given again",
                  "TEXT");
    AddRepeatable(command, "--map", table.mappings,
                  "The column of a field that the tables call otherwise: the model's name first; "
                  "may be given again, @FILE has one a line",
                  "NAME=COLUMN|@FILE");
    command->add_flag("--no-header", table.noHeader,
                      "The tables have no header: their columns are the model's in the order that "
                      "inspect lists, or told by number, from 1, with --map");
}

void DefineInput(CLI::App* command, ScoreArguments& score)
{
    command->option_defaults()->group(kInputGroup);
    command->add_option("MODEL", score.model, "The model document; - is standard input")
        ->required();
    command->add_option("CASES", score.cases,
                        "The tables of cases, of the same columns: comma-separated values with a "
                        "header, or JSON Lines; plain or compressed by gzip or zstd; - or nothing "
                        "is standard input");
    DefineTable(command, score, "in the cases and in the output");
}

void DefineOutput(CLI::App* command, ScoreArguments& score)
{
    command->option_defaults()->group(kOutputGroup);
    AddText(command, "-o,--out", score.output,
            "Where the output goes; - or nothing is standard output", "FILE")
        ->check(NotEmpty());
    command->add_flag("--partial", score.partial,
                      "When the run ends early, give the whole rows written so far the name of -o "
                      "all the same; else they stay in a temporary file beside it");
    command->add_flag(
        "--resume", score.resume,
        "Go on where a run of the same model, tables and options ended early, or begin "
        "when there was none");
    AddText(command, "--format", score.format,
            "How the output is written: comma-separated values, or JSON Lines, an object a row; "
            "without it as the suffix of -o says, .jsonl or .ndjson, else csv",
            "csv|jsonl")
        ->check(OneOf({"csv", "jsonl"}));
    AddText(command, "--compress", score.compress,
            "Compress the output; without it as the suffix of -o says, .gz or .zst",
            "gzip|zstd|none")
        ->check(OneOf(CompressionWords()));
    AddText(command, "--out-delimiter", score.outDelimiter,
            "The character between fields in the output; without it that of --delimiter", "C")
        ->check(NotEmpty());
    AddText(command, "--digits", score.digits,
            "The most significant digits of a computed number in the output; without it as many as "
            "it takes to read it back",
            "N")
        ->check(WholeNumber(1, 17));
}

// What of the input the output repeats.
void DefineKept(CLI::App* command, ScoreArguments& score)
{
    command->option_defaults()->group(kOutputGroup);
    AddRepeatable(
        command, "--keep", score.keep,
        "Columns of the input to repeat in the output, separated by commas, or all; may be "
        "given again",
        "all|COLS");
    AddText(command, "--name-column", score.nameColumn,
            "The name of a first column that tells each row's table", "NAME")
        ->check(NotEmpty());
}

// Which columns the scores have.
void DefineColumns(CLI::App* command, ScoreArguments& score)
{
    command->option_defaults()->group(kOutputGroup);
    AddRepeatable(command, "--columns", score.columns,
                  "The result columns to write, in this order, separated by commas; probabilities "
                  "stands for every category's; linear_predictor, std_err(linear_predictor), "
                  "std_err(probability(CATEGORY)) and, of a Cox model, risk, median_survival and "
                  "survival@TIME are more; may be given again",
                  "COLS");
    AddText(command, "--output", score.outputColumns,
            "The columns of the output: default, the same for each model of a family, or document, "
            "those of the document's own Output section",
            "default|document")
        ->check(OneOf({"default", "document"}));
    command->add_flag("--prediction-only", score.predictionOnly,
                      "Leave out standard errors, limits, probabilities and hazards");
}

void DefineScoring(CLI::App* command, ScoreArguments& score)
{
    command->option_defaults()->group(kScoringGroup);
    AddText(command, "--policy", score.policy,
            "What to do with a missing or invalid predictor: substitute its replacement, answer a "
            "missing prediction, or answer the status alone. Without it the model's own stands",
            "substitute|sysmis|status")
        ->check(OneOf({"substitute", "sysmis", "status"}));
    AddText(
        command, "--threads", score.threads,
        "How many threads score; without it as many as there are processors. The output doesn't "
        "depend on it",
        "N")
        ->check(WholeNumber(1, 1024));
    AddDocumentOptions(command, score.document);
}

void DefineBadRows(CLI::App* command, ScoreArguments& score)
{
    command->option_defaults()->group(kBadRowsGroup);
    AddText(command, "--rejects", score.rejects,
            "Where rows go, as a table, that can't be read or have no score; rows that can't be "
            "read don't end the run then",
            "FILE")
        ->check(NotEmpty());
    AddText(command, "--max-rejects", score.mostRejects,
            "End with 3 before the row that would be rejected beyond so many", "N")
        ->check(WholeNumber(0));
    command->add_flag("--strict", score.strict,
                      "End with 5 when a case wasn't scored or held an unlisted value, or for "
                      "notices and adaptations of the document that may leave a doubt");
}

void DefineReports(CLI::App* command, ScoreArguments& score)
{
    command->option_defaults()->group(kReportsGroup);
    AddText(command, "--summary", score.summary, "Where a report of the run goes, as JSON", "FILE")
        ->check(NotEmpty());
    command->add_flag("--progress", score.progress,
                      "Tell the progress each ten seconds where no terminal is");
    command->add_flag("--quiet", score.quiet, "No progress, no closing line and no notices");
}

void DefineScore(CLI::App* command, ScoreArguments& score)
{
    DefineInput(command, score);
    DefineOutput(command, score);
    DefineKept(command, score);
    DefineColumns(command, score);
    DefineScoring(command, score);
    AddText(command, "--level", score.level,
            "The confidence level of ci_lower and ci_upper, above 0 and below 1; 0.95 without it",
            "P");
    DefineBadRows(command, score);
    DefineReports(command, score);
    command->footer(kScoreFooter);
}

// At which times, and how, curves are written.
void DefineTimes(CLI::App* command, ScoreArguments& curve)
{
    AddText(
        command, "--times", curve.times,
        "The times of the curves, ascending, separated by commas; or 'every N' in quotes: 0, N, "
        "2N and so on up to the last time of the model's baselines. Without it those of each "
        "case's baseline",
        "LIST|'every N'");
    command->add_flag("--wide", curve.wide,
                      "A row a case, with the survival at each of --times in a column of its own");
}

void DefineCurve(CLI::App* command, ScoreArguments& curve)
{
    DefineInput(command, curve);
    DefineOutput(command, curve);
    DefineKept(command, curve);
    DefineTimes(command, curve);
    DefineScoring(command, curve);
    DefineBadRows(command, curve);
    DefineReports(command, curve);
    command->footer(
        "Example:\n"
        "  velscore curve model.pmml cases.csv -o curves.csv\n"
        "  velscore curve model.pmml cases.csv --times 30,90,365 --wide --keep id\n\n"
        "Writes row, time, survival and cum_hazard: a line for each time of the baseline of each\n"
        "case, or for each of --times. The cases need no end time. Exit codes as those of score.");
}

void DefineExplain(CLI::App* command, ExplainArguments& explain)
{
    DefineInput(command, explain.table);
    command->get_option("CASES")->description(
        "The tables of cases, of the same columns: comma-separated values with a header, or JSON "
        "Lines; plain or compressed by gzip or zstd; - is standard input");
    DefineOutput(command, explain.table);
    command->add_flag("--long", explain.isLong,
                      "Write all cases as a table of one line a term: row, equation, term, value "
                      "and contribution");
    command->add_flag("--json", explain.json, "Write all cases as JSON");
    AddText(command, "--limit", explain.mostCases,
            "How many cases are shown as text; 10 without it", "N")
        ->check(WholeNumber(1));
    AddText(command, "--top", explain.top,
            "Show so many terms of an equation, the largest contributions, and the others as one",
            "N")
        ->check(WholeNumber(0));
    AddText(command, "--baseline", explain.baseline,
            "Show how contributions differ from those of the mean case, or of a row: of the cases, "
            "or of another table",
            "mean|ROW[@TABLE]")
        ->check(NotEmpty());
    DefineScoring(command, explain.table);
    DefineBadRows(command, explain.table);
    DefineReports(command, explain.table);
    command->footer(
        "Examples:\n  velscore explain model.pmml cases.csv\n"
        "  velscore explain model.pmml cases.csv --long -o contributions.csv\n\n"
        "Shows how each case's linear predictors add up, term by term, and what the model makes\n"
        "of them. Exit codes as those of score.");
}

void DefineCheck(CLI::App* command, CheckArguments& check)
{
    command->add_option("MODEL", check.models, "Model documents; - is standard input")->required();
    command->add_flag("--json", check.json, "The report as JSON");
    command->add_flag("--strict", check.strict,
                      "End with 5 for notices and adaptations that may leave a doubt");
    command->add_flag("--fix", check.fix,
                      "Write the document as it is read, with what can be put right without a "
                      "guess; one document, to -o");
    AddText(command, "-o,--out", check.output,
            "Where that document goes; - or nothing is standard output", "FILE")
        ->check(NotEmpty());
    AddDocumentOptions(command, check.document);
    command->footer(
        "Example:\n  velscore check models/*.pmml\n"
        "  velscore check --fix model.pmml -o fixed.pmml\n\n"
        "Lists faults, notices and adaptations, each with its place, its rule and what to do.\n"
        "Ends with 2 when any document is refused.");
}

void DefineInspect(CLI::App* command, InspectArguments& inspect)
{
    command->add_option("MODEL", inspect.model, "The model document; - is standard input")
        ->required();
    command->add_flag("--dump", inspect.dump,
                      "Everything that the model holds, as the model shows it");
    command->add_flag("--json", inspect.json,
                      "The description as JSON, or with --coefficients these alone");
    command->add_flag("--coefficients", inspect.coefficients,
                      "The estimates alone: standard errors, t or z values, p values, limits, and "
                      "odds or hazard ratios");
    command->add_flag("--csv", inspect.csv, "The coefficients as comma-separated values");
    AddText(command, "--level", inspect.level,
            "The confidence level of the coefficients' limits, above 0 and below 1; 0.95 without "
            "it",
            "P");
    AddDocumentOptions(command, inspect.document);
    command->footer("Example:\n  velscore inspect model.pmml");
}

void DefineVerify(CLI::App* command, VerifyArguments& verify)
{
    command->add_option("MODEL", verify.model, "The model document; - is standard input")
        ->required();
    command->add_flag("--json", verify.json, "The report as JSON");
    AddText(command, "--emit", verify.emit,
            "Instead of verifying, write the document with these cases and their scores as its "
            "records",
            "CASES")
        ->check(NotEmpty());
    AddText(command, "-o,--out", verify.output,
            "Where that document goes; - or nothing is standard output", "FILE")
        ->check(NotEmpty());
    AddDocumentOptions(command, verify.document);
    command->footer(
        "Examples:\n  velscore verify model.pmml\n"
        "  velscore verify model.pmml --emit cases.csv -o verified.pmml\n\n"
        "Ends with 6 when a value differs from the document's own by more than it allows.");
}

void DefineConvert(CLI::App* command, ConvertArguments& convert)
{
    command
        ->add_option(
            "MODEL", convert.model,
            "The model document, in the older form or a RegressionModel; - is standard input")
        ->required();
    AddText(command, "-o,--out", convert.output,
            "Where the PMML document goes; - or nothing is standard output", "FILE")
        ->check(NotEmpty());
    AddDocumentOptions(command, convert.document);
    command->footer(
        "Example:\n  velscore convert old.xml -o new.pmml\n\n"
        "Ends with 2 when the document is refused, or says what PMML can't.");
}

void DefineDiff(CLI::App* command, DiffArguments& diff)
{
    command->add_option("A", diff.first, "A model document; - is standard input")->required();
    command->add_option("B", diff.second, "The model document to compare it with")->required();
    command
        ->add_option("CASES", diff.cases,
                     "A table of cases, whose scores by both models are compared too")
        ->check(NotEmpty());
    command->add_flag("--json", diff.json, "The report as JSON");
    DefineTable(command, diff.table, "in the cases");
    command->get_option("--no-header")
        ->description(
            "The table has no header: its columns are those of model A in the order that inspect "
            "lists, or told by number, from 1, with --map");
    AddDocumentOptions(command, diff.document);
    command->footer(
        "Example:\n  velscore diff old.pmml new.pmml cases.csv\n\n"
        "Compares the models, not the texts of their documents. Ends with 0 when they are the "
        "same,\n"
        "with 6 when something differs.");
}

void DefineHelp(CLI::App* command, HelpArguments& help)
{
    command->add_option(
        "CODE", help.code,
        "The code of an error or of a status, or the name of a rule; none lists all codes");
    command->footer("Example:\n  velscore help 90029");
}

}  // namespace

CommandSet::CommandSet()
    : program_(std::make_unique<CLI::App>(
          "velscore scores tables of cases with regression models from their documents.",
          "velscore"))
{
    program_->set_version_flag("--version", "velscore " VELSCORE_VERSION);
    program_->require_subcommand(1);
    program_->footer(
        "Example:\n  velscore score model.pmml cases.csv\n\n"
        "VELSCORE_TRACE=LEVEL or LEVEL:FILE in the environment traces the model's work.");
    const auto add = [this](const std::string& name, const std::string& description) {
        return program_->add_subcommand(name, description);
    };
    DefineScore(add("score", "Score a table of cases with a model"), score);
    DefineCurve(add("curve", "Write the survival curve of each case of a table"), curve);
    DefineExplain(add("explain", "Show how the score of each case of a table comes about"),
                  explain);
    DefineCheck(add("check", "Read documents and tell their faults, and what was adapted"), check);
    DefineInspect(add("inspect", "Show what a model is"), inspect);
    DefineVerify(add("verify", "Score the records that a document carries, and compare"), verify);
    DefineConvert(add("convert", "Write a document as a GeneralRegressionModel"), convert);
    DefineDiff(add("diff", "Tell what two models, and their scores, differ in"), diff);
    DefineHelp(add("help", "Explain a code or a rule"), help);
}

CommandSet::~CommandSet() = default;

std::vector<std::string> CommandSet::Names() const
{
    std::vector<std::string> names;
    for (const CLI::App* command :
         std::as_const(*program_).get_subcommands([](const CLI::App*) { return true; })) {
        names.push_back(command->get_name());
    }
    return names;
}

std::string WithHint(const std::string& text, const std::string& hint)
{
    return hint.empty() ? text : text + ". " + hint;
}

}  // namespace MCVelscore_850
