#include "cli/scoringsummary.h"

#include <chrono>
#include <map>
#include <utility>

#include <fmt/format.h>
#include <sys/resource.h>
#include <nlohmann/json.hpp>

#include "engine/documents/loadedmodel.h"
#include "engine/messages/explanation.h"
#include "engine/messages/failure.h"
#include "engine/messages/shorttext.h"
#include "engine/messages/suggestions.h"
#include "engine/scoring/scoringsession.h"

namespace MCVelscore_850 {

namespace {

using Json = nlohmann::ordered_json;

std::string FirstCaseText(const NotScoredReason& reason, const NotScored::Case& first,
                          const ScoringSession& session, const ScoreModel& model)
{
    const TableReader& tables = session.Tables();
    std::string row = std::to_string(first.row);
    if (tables.TableCount() > 1) row += fmt::format(" of {}", tables.NameOf(first.table));
    std::string text;
    if (first.text && TellsTheCase(static_cast<int>(reason.code))) {
        text =
            MessageText(static_cast<int>(reason.code), {ShortText(*first.text), reason.field, row});
    } else {
        const std::string fault = FaultText(reason.field, first.text);
        text = fmt::format("row {}{}{}", row, fault.empty() ? "" : ", ", fault);
    }
    const std::string meant =
        first.text ? SuggestCategory(model, reason.field, *first.text) : std::string();
    return meant.empty() ? text : text + "; " + meant;
}

// The cases of one code: how many, and the first of them with its field.
struct CasesOfCode {
    int64_t count = 0;
    const NotScoredReason* reason = nullptr;
    const NotScored::Case* first = nullptr;
};

std::map<long, CasesOfCode> ByCode(const ScoringReport& report)
{
    std::map<long, CasesOfCode> byCode;
    for (const auto& [reason, cases] : report.notScored) {
        CasesOfCode& all = byCode[reason.code];
        all.count += cases.count;
        const NotScored::Case& first = cases.first.front();
        if (all.first == nullptr ||
            std::pair(first.table, first.row) < std::pair(all.first->table, all.first->row)) {
            all.reason = &reason;
            all.first = &first;
        }
    }
    return byCode;
}

std::string UnlistedText(const UnlistedValues& unlisted, const ScoreModel& model)
{
    std::string line =
        fmt::format("column {} has {} {} that the model's dictionary doesn't list (",
                    unlisted.column, unlisted.count, unlisted.count == 1 ? "value" : "values");
    std::string meant;
    for (size_t i = 0; i < unlisted.first.size(); ++i) {
        line += fmt::format("{}'{}'", i == 0 ? "" : ", ", ShortText(unlisted.first[i]));
        if (meant.empty()) meant = SuggestCategory(model, unlisted.column, unlisted.first[i]);
    }
    line += unlisted.oneMayBeReference ? "; one of these may be the reference)" : ")";
    return meant.empty() ? line : line + ". " + meant;
}

double SecondsOf(std::chrono::nanoseconds time)
{
    return std::chrono::duration<double>(time).count();
}

// Bytes.
int64_t PeakMemory()
{
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return int64_t{usage.ru_maxrss} * 1024;
}

Json NotScoredJson(const ScoringSession& session)
{
    Json notScored = Json::array();
    for (const auto& [reason, cases] : session.Report().notScored) {
        Json first = Json::array();
        for (const NotScored::Case& each : cases.first) {
            first.push_back({{"table", session.Tables().NameOf(each.table)},
                             {"row", each.row},
                             {"text", each.text ? Json(*each.text) : Json()}});
        }
        notScored.push_back({{"status", reason.code},
                             {"field", reason.field.empty() ? Json() : Json(reason.field)},
                             {"count", cases.count},
                             {"first", std::move(first)}});
    }
    return notScored;
}

Json UnlistedJson(const ScoringReport& report)
{
    Json unlisted = Json::array();
    for (const UnlistedValues& values : report.unlisted) {
        unlisted.push_back({{"column", values.column},
                            {"count", values.count},
                            {"first", values.first},
                            {"oneMayBeReference", values.oneMayBeReference}});
    }
    return unlisted;
}

Json ErrorJson(const Failure* failure)
{
    if (failure == nullptr) return nullptr;
    return {{"code", failure->Code()}, {"message", failure->what()}, {"remedy", failure->Remedy()}};
}

}  // namespace

std::string ClosingLine(const ScoringSession& session, const LoadedModel& model)
{
    const ScoringReport& report = session.Report();
    const int64_t notScored = report.NotScoredCount();
    std::string line =
        fmt::format("{} of {} cases scored", report.scored, report.scored + notScored);
    if (notScored > 0) line += fmt::format("; {} not scored:", notScored);
    const char* between = " ";
    for (const auto& [code, cases] : ByCode(report)) {
        line += fmt::format("{}{} with status {} (first: {})", between, cases.count, code,
                            FirstCaseText(*cases.reason, *cases.first, session, model.Model()));
        between = ", ";
    }
    for (const UnlistedValues& unlisted : report.unlisted) {
        line += "; " + UnlistedText(unlisted, model.Model());
    }
    return line;
}

Json SummaryJson(const ScoringSession& session, const LoadedModel& model, const RunEnd& end)
{
    const ScoringReport& report = session.Report();
    const ScoringTimes& times = session.Times();
    const int64_t rows = report.scored + report.NotScoredCount();
    Json tables = Json::array();
    for (size_t i = 0; i < session.Tables().TableCount(); ++i) {
        tables.push_back(session.Tables().NameOf(i));
    }
    Json summary{{"velscore", VELSCORE_VERSION},
                 {"document", model.File()},
                 {"documentVersion", model.Version()},
                 {"documentSha256", model.Sha256()},
                 {"family", model.Description().family},
                 {"adapted", model.Adaptations()},
                 {"notices", model.Notices()},
                 {"tables", std::move(tables)},
                 {"rows", rows},
                 {"scored", report.scored},
                 {"notScored", NotScoredJson(session)},
                 {"rejected", report.rejected},
                 {"unlisted", UnlistedJson(report)},
                 {"rowsWritten", report.rowsWritten},
                 {"exitCode", end.exitCode},
                 {"error", ErrorJson(end.failure)},
                 {"interrupted", report.interrupted},
                 {"threads", session.ThreadCount()}};
    summary["seconds"] = {{"total", end.seconds},
                          {"reading", SecondsOf(times.reading)},
                          {"scoring", SecondsOf(times.scoring)},
                          {"writing", SecondsOf(times.writing)}};
    summary["rowsPerSecond"] = end.seconds > 0.0 ? static_cast<double>(rows) / end.seconds : 0.0;
    summary["peakMemoryBytes"] = PeakMemory();
    return summary;
}

}  // namespace MCVelscore_850
