#include "capi/options.h"

#include <algorithm>
#include <string_view>

#include <fmt/format.h>

#include "capi/calls.h"
#include "engine/scoring/curveshaper.h"
#include "engine/scoring/resultschema.h"
#include "engine/scoring/scoringsession.h"
#include "host/messages/messages.h"

namespace MCVelscore_850::capi {

namespace {

constexpr size_t kScoreSize = VELSCORE_SIZE_TO(velscore_score_options, map_count);
constexpr size_t kCsvSize = VELSCORE_SIZE_TO(velscore_csv_options, threads);

[[noreturn]] void RefuseValue(const char* option, const std::string& value,
                              const std::string& expected)
{
    throw Failure(FailureKind::Usage, kOptionValue, {option, value, expected});
}

std::map<std::string, std::string> MappingOf(const velscore_score_options& options)
{
    const auto fields = TextsOf(options.map_fields, options.map_count, "map_fields");
    const auto columns = TextsOf(options.map_columns, options.map_count, "map_columns");
    std::map<std::string, std::string> columnOf;
    for (size_t i = 0; i < fields.size(); ++i) {
        if (columnOf.emplace(fields[i], columns[i]).second) continue;
        RefuseValue("map_fields", fields[i], "each field once");
    }
    return columnOf;
}

bool NanIsMissing(const char* nan)
{
    const std::string_view word = nan == nullptr ? "missing" : nan;
    if (word != "missing" && word != "invalid") {
        RefuseValue("nan", std::string(word), "missing or invalid");
    }
    return word == "missing";
}

std::optional<MissingPolicy> PolicyOf(const char* policy, const ModelDescription& about)
{
    if (policy == nullptr) return std::nullopt;
    const std::string_view word = policy;
    if (word == "substitute") return MissingPolicy::Substitute;
    if (word == "sysmis") return MissingPolicy::SysmisResult;
    if (word != "status") {
        RefuseValue("policy", std::string(word), "substitute, sysmis or status");
    }
    if (!about.takesStatusOnly) {
        throw Failure(FailureKind::Usage, kPolicyIgnored, {policy, about.family});
    }
    return MissingPolicy::StatusOnly;
}

std::optional<double> LevelOf(const velscore_score_options& options, const LoadedModel& model)
{
    const double level = options.level;
    if (level == 0.0) return std::nullopt;  // exact: nobody set it
    if (!(level > 0.0 && level < 1.0)) {
        RefuseValue("level", fmt::format("{}", level), "a number above 0 and below 1");
    }
    const auto refuse = [&](const std::string& why) {
        throw Failure(FailureKind::Usage, kNoLevel, {model.File(), why});
    };
    if (options.prediction_only != 0) refuse("gives its prediction alone");
    if (!model.Description().hasConfidenceLevel) refuse(WhyNoLevel(model.Description()));
    return level;
}

// What curves and explanations heed too.
ArrowOptions TableOf(const velscore_score_options& options)
{
    ArrowOptions scoring;
    scoring.table.missingTexts = TextsOf(options.missing, options.missing_count, "missing");
    scoring.table.columnOf = MappingOf(options);
    scoring.nanIsMissing = NanIsMissing(options.nan);
    scoring.strict = options.strict != 0;
    return scoring;
}

velscore_score_options KnownOf(const velscore_score_options* options)
{
    return Known(options, VELSCORE_SCORE_OPTIONS_INIT, "velscore_score_options", kScoreSize);
}

// A mark of one byte; `fallback` without one.
char MarkOf(const char* mark, char fallback, const char* option, std::string_view never)
{
    if (mark == nullptr) return fallback;
    const std::string_view text = mark;
    if (text.size() != 1 || never.find(text.front()) != std::string_view::npos) {
        RefuseValue(option, std::string(text),
                    "one character of one byte that is no part of a field");
    }
    return text.front();
}

}  // namespace

Request RequestOf(const velscore_model& model, const velscore_score_options* options)
{
    const velscore_score_options known = KnownOf(options);
    Request request;
    request.scoring = TableOf(known);
    OutputOptions& output = request.scoring.output;
    output.keep = TextsOf(known.keep, known.keep_count, "keep");
    output.keepAll = known.keep_all != 0;
    output.columns = TextsOf(known.columns, known.columns_count, "columns");
    if (known.prediction_only != 0 && !output.columns.empty()) {
        RefuseValue("prediction_only", std::to_string(known.prediction_only),
                    "0 beside a choice of columns");
    }
    request.settings.predictionOnly = known.prediction_only != 0;
    ResultOptions& results = request.scoring.table.results;
    results.predictionOnly = request.settings.predictionOnly;
    model.With({}, [&](const LoadedModel& loaded) {
        const ModelDescription& about = loaded.Description();
        request.settings.policy = PolicyOf(known.policy, about);
        request.settings.level = LevelOf(known, loaded);
        if (!output.columns.empty()) results = OptionsFor(about, output.columns);
    });
    return request;
}

Request CurveRequestOf(const velscore_model& model, const velscore_score_options* options)
{
    const velscore_score_options known = KnownOf(options);
    Request request;
    request.scoring = TableOf(known);
    TableOptions& table = request.scoring.table;
    table.curves = true;
    model.With({}, [&](const LoadedModel& loaded) {
        const ModelDescription& about = loaded.Description();
        if (!CurveShaper::Suits(about)) {
            throw Failure(FailureKind::Usage, kNoCurves, {loaded.File(), about.family});
        }
        request.settings.policy = PolicyOf(known.policy, about);
        // What is told of the end time isn't heeded: a table for scores serves curves too.
        const auto read = loaded.ColumnsOf(CurveShaper::Needs(about));
        for (const std::string& name : loaded.Columns()) {
            if (std::find(read.begin(), read.end(), name) == read.end()) table.columnOf.erase(name);
        }
    });
    return request;
}

Request ExplainRequestOf(const velscore_model& model, const velscore_score_options* options)
{
    const velscore_score_options known = KnownOf(options);
    Request request;
    request.scoring = TableOf(known);
    if (known.top != nullptr) request.explanations.top = *known.top;
    model.With({}, [&](const LoadedModel& loaded) {
        request.settings.policy = PolicyOf(known.policy, loaded.Description());
    });
    return request;
}

ScanRequest ScanRequestOf(const velscore_model& model, const velscore_csv_options* options)
{
    constexpr std::string_view kNoDelimiters("\"\r\n", 3);
    constexpr std::string_view kNoDecimals("\"\r\n\t +-0123456789eE", 19);
    const auto known = Known(options, VELSCORE_CSV_OPTIONS_INIT, "velscore_csv_options", kCsvSize);
    Request request = RequestOf(model, known.score);
    ScanRequest scan{request.settings, {.scoring = std::move(request.scoring)}};
    TableDialect& dialect = scan.scan.dialect;
    dialect.tellsDelimiter = known.delimiter != nullptr;
    dialect.delimiter = MarkOf(known.delimiter, ',', "delimiter", kNoDelimiters);
    dialect.decimal = MarkOf(known.decimal, '.', "decimal", kNoDecimals);
    dialect.hasHeader = known.no_header == 0;
    // Others of the process share the threads: none are asked for that it hasn't.
    const size_t most = ProcessorCount();
    scan.scan.threads = known.threads == 0 ? most : std::min(known.threads, most);
    return scan;
}

}  // namespace MCVelscore_850::capi
