#include "cli/resumenote.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include "cli/commands.h"
#include "engine/documents/loadedmodel.h"
#include "engine/messages/digest.h"
#include "engine/messages/failure.h"
#include "engine/tables/bytesource.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

using Json = nlohmann::ordered_json;

constexpr uint64_t kHashedBytes = uint64_t{1} << 16;

// The next bytes of a file, fewer at its end.
std::string NextBytes(InputFile& file, uint64_t size)
{
    std::string bytes(static_cast<size_t>(size), '\0');
    size_t filled = 0;
    for (size_t read = 1; read > 0 && filled < bytes.size(); filled += read) {
        read = file.Read(bytes.data() + filled, bytes.size() - filled);
    }
    bytes.resize(filled);
    return bytes;
}

// What tells a file from another one without reading it whole.
Json FileJson(const std::string& path)
{
    const uint64_t size = InputFile(path).Size();
    const uint64_t hashed = std::min(size, kHashedBytes);
    const auto sumFrom = [&](uint64_t place) {
        InputFile file(path);
        file.Skip(place);
        return Sha256Of(NextBytes(file, hashed));
    };
    std::string sums = sumFrom(0);
    if (size > hashed) sums += sumFrom(size - hashed);
    return {{"file", path}, {"bytes", size}, {"sha256", sums}};
}

// What the output depends on beside document and tables. A file of --map may have changed, so what
// was read from it counts.
Json OptionsJson(const ScoreArguments& of, const ScoringOptions& understood)
{
    Json options{{"curves", understood.curves},
                 {"explains", of.explains},
                 {"policy", of.policy},
                 {"keep", of.keep},
                 {"columns", of.columns},
                 {"output", of.outputColumns},
                 {"nameColumn", of.nameColumn},
                 {"delimiter", of.delimiter.value_or(",")},
                 {"outDelimiter", of.outDelimiter},
                 {"decimal", of.decimal},
                 {"format", of.format},
                 {"compress", of.compress},
                 {"map", Json::array()},
                 {"na", of.missingTexts},
                 {"rejects", of.rejects},
                 {"digits", of.digits},
                 {"noHeader", of.noHeader},
                 {"predictionOnly", of.predictionOnly},
                 {"asIs", of.document.asIs}};
    for (const auto& [name, column] : understood.columnOf) {
        options["map"].push_back({name, column});
    }
    options["level"] = of.level ? Json(*of.level) : Json();
    options["times"] = of.times ? Json(*of.times) : Json();
    options["wide"] = of.wide;
    return options;
}

Json WrittenJson(const RowWriter::Position& position)
{
    return {{"part", position.part}, {"bytes", position.bytes}, {"rows", position.rows}};
}

RowWriter::Position WrittenOf(const Json& json)
{
    return {json.at("part"), json.at("bytes"), json.at("rows")};
}

Json CaseJson(const NotScored::Case& each)
{
    Json json{{"table", each.table}, {"row", each.row}};
    if (each.text) json["text"] = *each.text;
    return json;
}

NotScored::Case CaseOf(const Json& json)
{
    NotScored::Case each{json.at("table"), json.at("row")};
    if (json.contains("text")) each.text = json.at("text").get<std::string>();
    return each;
}

Json ReportJson(const ScoringReport& report)
{
    Json notScored = Json::array();
    for (const auto& [reason, cases] : report.notScored) {
        Json first = Json::array();
        for (const NotScored::Case& each : cases.first) first.push_back(CaseJson(each));
        notScored.push_back({{"code", reason.code},
                             {"field", reason.field},
                             {"count", cases.count},
                             {"first", std::move(first)}});
    }
    return {{"scored", report.scored},
            {"rejected", report.rejected},
            {"notScored", std::move(notScored)}};
}

ScoringReport ReportOf(const Json& json)
{
    ScoringReport report;
    report.scored = json.at("scored");
    report.rejected = json.at("rejected");
    for (const Json& each : json.at("notScored")) {
        NotScored& cases = report.notScored[{each.at("code"), each.at("field")}];
        cases.count = each.at("count");
        for (const Json& first : each.at("first")) cases.first.push_back(CaseOf(first));
    }
    return report;
}

Json UnlistedJson(const std::vector<UnlistedValues>& columns)
{
    Json unlisted = Json::array();
    for (const UnlistedValues& values : columns) {
        unlisted.push_back({{"column", values.column},
                            {"count", values.count},
                            {"first", values.first},
                            {"oneMayBeReference", values.oneMayBeReference}});
    }
    return unlisted;
}

std::vector<UnlistedValues> UnlistedOf(const Json& json)
{
    std::vector<UnlistedValues> columns;
    for (const Json& each : json) {
        UnlistedValues& values = columns.emplace_back();
        values.column = each.at("column");
        values.count = each.at("count");
        values.oneMayBeReference = each.at("oneMayBeReference");
        values.first = each.at("first").get<std::vector<std::string>>();
    }
    return columns;
}

Json PositionJson(const RunPosition& position)
{
    return {{"table", position.tables.table},
            {"offset", position.tables.offset},
            {"row", position.tables.row},
            {"rowsBefore", position.tables.rowsBefore},
            {"output", WrittenJson(position.output)},
            {"rejects", WrittenJson(position.rejects)},
            {"report", ReportJson(position.report)},
            {"unlisted", UnlistedJson(position.unlisted)}};
}

RunPosition PositionOf(const Json& json)
{
    RunPosition position;
    position.tables = {json.at("table"), json.at("offset"), json.at("row"), json.at("rowsBefore")};
    position.output = WrittenOf(json.at("output"));
    position.rejects = WrittenOf(json.at("rejects"));
    position.report = ReportOf(json.at("report"));
    position.unlisted = UnlistedOf(json.at("unlisted"));
    return position;
}

// JSON is UTF-8, and names and texts may be in any encoding: each byte stands as a character, that
// of Latin-1.
std::string CharactersOf(std::string_view bytes)
{
    std::string text;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80U) {
            text += c;
        } else {
            text += static_cast<char>(0xC0U | (byte >> 6U));
            text += static_cast<char>(0x80U | (byte & 0x3FU));
        }
    }
    return text;
}

std::string BytesOf(std::string_view characters)
{
    std::string bytes;
    for (size_t i = 0; i < characters.size(); ++i) {
        const auto byte = static_cast<unsigned char>(characters[i]);
        if (byte < 0x80U || i + 1 == characters.size()) {
            bytes += characters[i];
        } else {
            const auto next = static_cast<unsigned char>(characters[++i]);
            bytes += static_cast<char>(((byte & 0x03U) << 6U) | (next & 0x3FU));
        }
    }
    return bytes;
}

// With every text in it as `recode` has it.
Json Recoded(Json json, std::string (*recode)(std::string_view))
{
    if (json.is_string()) return recode(json.get_ref<const std::string&>());
    if (json.is_structured()) {
        for (Json& each : json) each = Recoded(std::move(each), recode);
    }
    return json;
}

// A note as it stands in its file: a line that ends with its own digest.
std::string LineOf(const Json& note)
{
    const std::string text = Recoded(note, CharactersOf).dump();
    return text + " " + Sha256Of(text) + "\n";
}

// Throws Json::exception for what is no note. What was written over in part, by a machine that went
// down say, may well be JSON: its digest tells.
Json NoteOf(const std::string& line)
{
    const size_t end = line.rfind(' ');
    const std::string text = line.substr(0, end);
    const Json note = Json::parse(text);
    const bool isWhole = end != std::string::npos && line.substr(end + 1) == Sha256Of(text);
    return isWhole ? Recoded(note, BytesOf) : Json();
}

bool IsThere(const RowWriter::Position& position)
{
    return position.part.empty() || ::access(position.part.c_str(), F_OK) == 0;
}

// What of two runs differs, in words.
std::string DifferenceOf(const Json& noted, const Json& run)
{
    for (const auto& [what, value] : run.items()) {
        if (!noted.contains(what) || noted.at(what) != value) return what;
    }
    return {};
}

}  // namespace

ResumeNote::ResumeNote(const ScoreArguments& arguments, const std::vector<std::string>& tables,
                       const ScoringOptions& options, const LoadedModel& model)
    : path_(arguments.output + ".resume")
{
    Json all = Json::array();
    for (const std::string& table : tables) all.push_back(FileJson(table));
    if (!arguments.baselineTable.empty()) all.push_back(FileJson(arguments.baselineTable));
    run_ = {{"version", VELSCORE_VERSION},
            {"document", model.Sha256()},
            {"plug-in",
             arguments.document.plugin.empty() ? Json() : FileJson(arguments.document.plugin)},
            {"tables", std::move(all)},
            {"options", OptionsJson(arguments, options)}};
}

ResumeNote::~ResumeNote()
{
    if (descriptor_ >= 0) ::close(descriptor_);
}

bool ResumeNote::Load(RunPosition& position) const
{
    if (::access(path_.c_str(), F_OK) != 0 && errno == ENOENT) return false;
    // One that is there and can't be read is hours of work that would be done again.
    InputFile file(path_);
    const std::string text = NextBytes(file, file.Size());
    const size_t end = text.find('\n');
    if (end == std::string::npos) return false;
    try {
        const Json note = NoteOf(text.substr(0, end));
        const std::string difference = DifferenceOf(note.at("run"), run_);
        if (!difference.empty()) {
            throw Failure(FailureKind::Usage, kOtherRun, {path_, difference});
        }
        position = PositionOf(note.at("position"));
        // A run that ended before it could take its note away has named its files already.
        if (!IsThere(position.output) || !IsThere(position.rejects)) return false;
    } catch (const Json::exception&) {
        throw Failure(FailureKind::Usage, kOtherRun, {path_, "form"});
    }
    return true;
}

void ResumeNote::Save(const RunPosition& position)
{
    if (descriptor_ < 0) {
        descriptor_ = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666);
    }
    if (descriptor_ < 0) return;
    // A line in one call; what is behind it of a longer one before means nothing.
    const std::string line = LineOf({{"run", run_}, {"position", PositionJson(position)}});
    if (::pwrite(descriptor_, line.data(), line.size(), 0) != static_cast<ssize_t>(line.size())) {
        Remove();
    }
}

void ResumeNote::Remove()
{
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
    ::unlink(path_.c_str());
}

}  // namespace MCVelscore_850
