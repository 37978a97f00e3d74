#include "cli/scoringarguments.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <map>
#include <optional>
#include <string_view>

#include <fmt/format.h>

#include "cli/commands.h"
#include "engine/scoring/curveshaper.h"
#include "engine/tables/fileform.h"
#include "host/messages/messages.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

// A delimiter: of one byte, and none that would tear the rows.
char DelimiterOf(std::string_view option, const std::string& text)
{
    if (text == "\\t" || text == "tab") return '\t';
    constexpr std::string_view kNoDelimiters("\"\r\n\0", 4);
    if (text.size() != 1) {
        throw UsageError(
            fmt::format("{} is '{}'; expected is one character of one byte, or tab", option, text));
    }
    if (kNoDelimiters.find(text.front()) != std::string_view::npos) {
        throw UsageError(fmt::format("{} can't be a quote or a line end", option));
    }
    return text.front();
}

char DecimalOf(const std::string& text)
{
    constexpr std::string_view kNoDecimals("\"\r\n\t +-0123456789eE", 19);
    if (text.size() != 1) {
        throw UsageError(
            fmt::format("--decimal is '{}'; expected is one character of one byte", text));
    }
    if (kNoDecimals.find(text.front()) != std::string_view::npos) {
        throw UsageError(fmt::format("--decimal can't be '{}'", text));
    }
    return text.front();
}

void RefuseDelimiterAsDecimal(std::string_view option, char delimiter, char decimal)
{
    if (delimiter != decimal) return;
    throw UsageError(
        fmt::format("{} and --decimal are both '{}'; give the fields another delimiter: {} {}",
                    option, decimal, option, decimal == ',' ? "';'" : ","));
}

// What the name of the output asks for by its suffix, that of its compression left out.
TableForm FormOf(std::string_view path)
{
    for (const std::string_view packed : {".gz", ".zst"}) {
        if (path.ends_with(packed)) path.remove_suffix(packed.size());
    }
    const bool isJson = path.ends_with(".jsonl") || path.ends_with(".ndjson");
    return isJson ? TableForm::JsonLines : TableForm::Csv;
}

void SetDialect(const TableArguments& arguments, TableDialect& dialect)
{
    if (arguments.delimiter) {
        dialect.tellsDelimiter = true;
        dialect.delimiter = DelimiterOf("--delimiter", *arguments.delimiter);
    }
    dialect.decimal = DecimalOf(arguments.decimal);
    dialect.hasHeader = !arguments.noHeader;
    // Tables of JSON Lines have no delimiter that could be the decimal mark.
    if (arguments.delimiter) {
        RefuseDelimiterAsDecimal("--delimiter", dialect.delimiter, dialect.decimal);
    }
}

void SetForm(const ScoreArguments& arguments, ScoringOptions& options)
{
    const TableDialect& dialect = options.dialect;
    const TableForm format = arguments.format.empty()      ? FormOf(arguments.output)
                             : arguments.format == "jsonl" ? TableForm::JsonLines
                                                           : TableForm::Csv;
    options.form = {dialect.delimiter, dialect.decimal, arguments.digits, format};
    if (arguments.outDelimiter.empty()) return;
    if (format == TableForm::JsonLines) {
        throw UsageError(
            "--out-delimiter has no meaning for an output of JSON Lines, which has no delimiter; "
            "leave it out, or give --format csv");
    }
    options.form.delimiter = DelimiterOf("--out-delimiter", arguments.outDelimiter);
    RefuseDelimiterAsDecimal("--out-delimiter", options.form.delimiter, dialect.decimal);
}

void AddMapping(const std::string& text, std::string_view where,
                std::map<std::string, std::string>& columnOf)
{
    const size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0 || equals + 1 == text.size()) {
        throw UsageError(fmt::format("{} has '{}'; expected is NAME=COLUMN", where, text));
    }
    const std::string name = text.substr(0, equals);
    if (!columnOf.emplace(name, text.substr(equals + 1)).second) {
        throw UsageError(fmt::format("{} tells the column of '{}' twice", where, name));
    }
}

[[noreturn]] void RefuseMappings(const std::string& text)
{
    throw UsageError(fmt::format("--map {}: the file can't be read", text));
}

// What --map tells: a pair, or @FILE with a pair a line.
std::map<std::string, std::string> MappingOf(const std::vector<std::string>& texts)
{
    std::map<std::string, std::string> columnOf;
    for (const std::string& text : texts) {
        if (!text.starts_with('@')) {
            AddMapping(text, "--map", columnOf);
            continue;
        }
        const std::string path = text.substr(1);
        std::ifstream file(path);
        if (!file) RefuseMappings(text);
        std::string line;
        for (int number = 1; std::getline(file, line); ++number) {
            if (line.ends_with('\r')) line.pop_back();
            if (number == 1 && line.starts_with(kByteOrderMark)) {
                line.erase(0, kByteOrderMark.size());
            }
            if (line.empty()) continue;
            AddMapping(line, fmt::format("line {} of {}", number, path), columnOf);
        }
        // A directory opens, and can't be read.
        if (file.bad()) RefuseMappings(text);
    }
    return columnOf;
}

// The names of a list such as  a,"b, c",d : quotes as in a table.
std::vector<std::string> SplitNames(const std::string& option, const std::string& list)
{
    std::vector<std::string> names(1);
    bool quoted = false;
    for (size_t i = 0; i < list.size(); ++i) {
        const char c = list[i];
        if (quoted && c == '"' && i + 1 < list.size() && list[i + 1] == '"') {
            names.back() += '"';
            ++i;
        } else if (c == '"' && (quoted || names.back().empty())) {
            quoted = !quoted;
        } else if (c == ',' && !quoted) {
            names.emplace_back();
        } else {
            names.back() += c;
        }
    }
    if (quoted)
        throw UsageError(fmt::format("{} {} has a quote that is never closed", option, list));
    return names;
}

OutputOptions OutputOf(const ScoreArguments& arguments)
{
    OutputOptions output;
    for (const std::string& list : arguments.keep) {
        if (list == "all") {
            output.keepAll = true;
            continue;
        }
        for (std::string& name : SplitNames("--keep", list)) output.keep.push_back(std::move(name));
    }
    for (const std::string& list : arguments.columns) {
        for (std::string& name : SplitNames("--columns", list)) {
            output.columns.push_back(std::move(name));
        }
    }
    output.tableColumn = arguments.nameColumn;
    return output;
}

// The level that --level asks for; nothing without it.
std::optional<double> AskedLevel(const ScoreArguments& arguments)
{
    if (!arguments.level) return std::nullopt;
    if (arguments.predictionOnly) {
        throw UsageError("--level has no meaning with --prediction-only, which leaves out limits");
    }
    return LevelOf(*arguments.level);
}

void SetLevel(LoadedModel& model, const std::optional<double>& level)
{
    if (!level) return;
    const ModelDescription& about = model.Description();
    if (!about.hasConfidenceLevel) {
        throw UsageError(
            fmt::format("--level has no meaning: {} {}", model.File(), WhyNoLevel(about)));
    }
    model.SetConfidenceLevel(*level);
}

void SetPolicy(LoadedModel& model, const std::string& policy)
{
    if (policy.empty()) return;
    if (policy == "substitute") {
        model.SetPolicy(MissingPolicy::Substitute);
    } else if (policy == "sysmis") {
        model.SetPolicy(MissingPolicy::SysmisResult);
    } else {
        if (!model.Description().takesStatusOnly) {
            throw UsageError(fmt::format(
                "--policy status has no meaning for {}: that model ignores it; use sysmis",
                model.Description().family));
        }
        model.SetPolicy(MissingPolicy::StatusOnly);
    }
}

// 0, step, 2 step and so on, up to `last`. A step with few decimals gives times with as few: 0.3
// behind 0.2, and no 0.30000000000000004.
std::vector<double> TimesEvery(double step, double last)
{
    double scale = 1.0;
    while (scale < 1e15 && std::round(step * scale) / scale != step) scale *= 10.0;  // exact
    const double whole = std::round(step * scale);
    const bool isDecimal = whole / scale == step && whole < 1e15;
    // Written so that a NaN, of a model without times, leaves 0 alone.
    const double steps = last >= step ? std::floor(last / step) : 0.0;
    if (steps >= static_cast<double>(kMostCurveTimes)) {
        throw Failure(
            FailureKind::Usage, kTooManySurvivalTimes,
            {"--times", fmt::format("{:.0f}", steps + 1.0), std::to_string(kMostCurveTimes)});
    }
    std::vector<double> times;
    for (double i = 0.0; i <= steps + 1.0; ++i) {
        const double time = isDecimal ? i * whole / scale : i * step;
        if (i > 0.0 && !(time <= last)) break;  // the quotient may be off by one
        times.push_back(time);
    }
    return times;
}

double LastTimeOf(const ModelDescription& about)
{
    double last = std::numeric_limits<double>::quiet_NaN();
    for (const ModelDescription::Stratum& stratum : about.strata) {
        last = std::fmax(last, stratum.maxTime);  // of a NaN and a number the number
    }
    return last;
}

// What --times asks for: 'every N', or a list.
std::vector<double> TimesOf(const std::string& text, const ModelDescription& about)
{
    constexpr std::string_view kEvery = "every";
    if (text.starts_with(kEvery)) {
        const std::string step = text.substr(kEvery.size());
        double number = 0.0;
        if (ReadNumber(step, number) == NumberText::Number && number > 0.0) {
            return TimesEvery(number, LastTimeOf(about));
        }
        throw UsageError(fmt::format(
            "--times is '{}'; expected is 'every N' in quotes, N being a number above 0", text));
    }
    std::vector<double> times;
    for (const std::string& each : SplitNames("--times", text)) {
        const double time = SurvivalTimeOf("--times", each);
        if (!times.empty() && !(time > times.back())) {
            throw UsageError(fmt::format(
                "--times has {} behind {}; give the times in ascending order, each once", time,
                times.back()));
        }
        times.push_back(time);
    }
    if (times.size() > kMostCurveTimes) {
        throw Failure(FailureKind::Usage, kTooManySurvivalTimes,
                      {"--times", std::to_string(times.size()), std::to_string(kMostCurveTimes)});
    }
    return times;
}

void RefuseColumnChoice(const ScoreArguments& arguments)
{
    const bool document = arguments.outputColumns == "document";
    if (document && arguments.predictionOnly) {
        throw UsageError("--prediction-only has no meaning with --output document");
    }
    if (!arguments.columns.empty() && (document || arguments.predictionOnly)) {
        throw UsageError(fmt::format("--columns has no meaning with {}",
                                     document ? "--output document" : "--prediction-only"));
    }
}

}  // namespace

double LevelOf(const std::string& text)
{
    double level = 0.0;
    if (ReadNumber(text, level) == NumberText::Number && level > 0.0 && level < 1.0) return level;
    std::string wrong =
        fmt::format("--level is '{}'; expected is a number above 0 and below 1", text);
    std::string_view number = text;
    if (number.ends_with('%')) number.remove_suffix(1);
    if (ReadNumber(number, level) == NumberText::Number && level > 1.0 && level < 100.0) {
        wrong += fmt::format(". Did you mean {:.12g}?", level / 100.0);
    }
    throw UsageError(wrong);
}

std::vector<std::string> TablesOf(const ScoreArguments& arguments)
{
    if (arguments.cases.empty()) return {"-"};
    if (std::count(arguments.cases.begin(), arguments.cases.end(), "-") > 1) {
        throw UsageError("standard input can be one of the tables once only");
    }
    return arguments.cases;
}

NeededFiles FilesOf(const ScoreArguments& arguments)
{
    NeededFiles files{{arguments.model, arguments.baselineTable}, {arguments.output}};
    files.read.insert(files.read.end(), arguments.cases.begin(), arguments.cases.end());
    for (const std::string& file : {arguments.rejects, arguments.summary}) {
        if (!file.empty()) files.written.push_back(file);
    }
    return files;
}

void RefuseModelBeside(const ScoreArguments& arguments, const std::vector<std::string>& tables)
{
    if (arguments.model != "-" || std::find(tables.begin(), tables.end(), "-") == tables.end()) {
        return;
    }
    throw UsageError(
        "the model and the cases can't both come from standard input; name a file for one of them");
}

ScoringOptions OptionsOf(const TableArguments& arguments)
{
    ScoringOptions options;
    SetDialect(arguments, options.dialect);
    options.missingTexts = arguments.missingTexts;
    options.columnOf = MappingOf(arguments.mappings);
    return options;
}

ScoringOptions OptionsOf(const ScoreArguments& arguments)
{
    RefuseColumnChoice(arguments);
    ScoringOptions options = OptionsOf(static_cast<const TableArguments&>(arguments));
    SetForm(arguments, options);
    options.compression = arguments.compress.empty() ? CompressionOf(arguments.output)
                                                     : *CompressionNamed(arguments.compress);
    options.output = OutputOf(arguments);
    options.results.predictionOnly = arguments.predictionOnly;
    options.rejects = !arguments.rejects.empty();
    if (arguments.mostRejects) {
        if (!options.rejects) throw UsageError("--max-rejects has a meaning with --rejects alone");
        options.mostRejects = *arguments.mostRejects;
    }
    options.threads = arguments.threads == 0 ? ProcessorCount() : arguments.threads;
    return options;
}

void PrepareModel(const ScoreArguments& arguments, LoadedModel& model, ScoringOptions& options)
{
    if (options.curves && !CurveShaper::Suits(model.Description())) {
        throw UsageError(fmt::format(
            "{} has no survival curves: its family is {}, and Cox models alone have them",
            model.File(), model.Description().family));
    }
    if (arguments.wide && !arguments.times) {
        throw UsageError(
            "--wide needs --times: the baselines of a model's strata have times of their own");
    }
    if (arguments.times) {
        options.results.survival.times = TimesOf(*arguments.times, model.Description());
    }
    SetPolicy(model, arguments.policy);
    SetLevel(model, AskedLevel(arguments));
    if (!options.output.columns.empty()) {
        options.results = OptionsFor(model.Description(), options.output.columns);
    }
    if (arguments.predictionOnly) model.WantPredictionOnly();
}

}  // namespace MCVelscore_850
