// velscore_inspect() and velscore_check(): what the library tells as JSON, as tables.

#include <utility>

#include <nlohmann/json.hpp>

#include "duckdb/document.h"
#include "duckdb/errors.h"
#include "duckdb/functions.h"
#include "duckdb/report.h"

namespace velscore::sql {

namespace {

using nlohmann::json;

ReportCell CellOf(const json& value)
{
    if (value.is_null()) return {};
    if (value.is_string()) return value.get<std::string>();
    if (value.is_boolean()) return value.get<bool>();
    if (value.is_number_integer()) return value.get<int64_t>();
    return value.is_number() ? ReportCell(value.get<double>()) : ReportCell(value.dump());
}

// Null, an empty list or an empty text.
bool IsNothing(const json& value)
{
    return value.empty() || (value.is_string() && value.get_ref<const std::string&>().empty());
}

// The same as a text.
ReportCell TextOf(const json& value)
{
    if (IsNothing(value)) return {};
    return value.is_string() ? value.get<std::string>() : value.dump();
}

// The parts of a description that are one value or a few.
constexpr const char* kProperties[] = {"document",
                                       "version",
                                       "family",
                                       "class",
                                       "target",
                                       "targetCategories",
                                       "referenceCategory",
                                       "factors",
                                       "covariates",
                                       "offset",
                                       "trials",
                                       "endTime",
                                       "eventValues",
                                       "strata",
                                       "distribution",
                                       "link",
                                       "linkParameter",
                                       "mean",
                                       "cutoff",
                                       "cutoffCategory",
                                       "df",
                                       "hasCovariances"};

Report Inspect(duckdb_bind_info, duckdb_client_context context, const std::string& path)
{
    Report report{{{"part", DUCKDB_TYPE_VARCHAR},
                   {"name", DUCKDB_TYPE_VARCHAR},
                   {"value", DUCKDB_TYPE_VARCHAR}},
                  {}};
    const json about = json::parse(ModelOf(context, path)->description);
    const auto add = [&](const char* part, ReportCell name, ReportCell value) {
        report.rows.push_back({part, std::move(name), std::move(value)});
    };
    for (const char* name : kProperties) {
        const json& value = about.at(name);
        if (!IsNothing(value)) add("model", name, TextOf(value));
    }
    for (const auto& column : about.at("reads")) add("reads", TextOf(column), {});
    for (const auto& column : about.at("columns")) {
        add("result", TextOf(column.at("column")), TextOf(column.at("meaning")));
    }
    for (const auto& column : about.at("columnsOnRequest")) {
        add("result", TextOf(column.at("column")), TextOf(column.at("meaning")));
    }
    for (const char* part : {"adapted", "notices"}) {
        for (const auto& note : about.at(part)) add(part, {}, TextOf(note));
    }
    add("json", {}, about.dump());
    return report;
}

struct CheckColumn {
    ReportColumn column;
    const char* key;  ///< of a finding
};

constexpr CheckColumn kCheckColumns[] = {
    {{"severity", DUCKDB_TYPE_VARCHAR}, "severity"}, {{"rule", DUCKDB_TYPE_VARCHAR}, "rule"},
    {{"code", DUCKDB_TYPE_BIGINT}, "code"},          {{"line", DUCKDB_TYPE_BIGINT}, "line"},
    {{"column", DUCKDB_TYPE_BIGINT}, "column"},      {{"element", DUCKDB_TYPE_VARCHAR}, "path"},
    {{"message", DUCKDB_TYPE_VARCHAR}, "message"},   {{"remedy", DUCKDB_TYPE_VARCHAR}, "remedy"},
};

// The library reads the file itself, after the database has allowed it.
json CheckJson(duckdb_client_context context, const std::string& path)
{
    ReadDocument(context, path);
    char* text = nullptr;
    velscore::detail::Call(
        [&](velscore_error* error) { return velscore_check(path.c_str(), nullptr, &text, error); });
    return json::parse(velscore::detail::Taken(text));
}

Report Check(duckdb_bind_info, duckdb_client_context context, const std::string& path)
{
    Report report;
    for (const CheckColumn& each : kCheckColumns) report.columns.push_back(each.column);
    const json document = CheckJson(context, path);
    for (const auto& finding : document.at("findings")) {
        std::vector<ReportCell>& cells = report.rows.emplace_back();
        for (const CheckColumn& each : kCheckColumns) {
            const json& value = finding.at(each.key);
            cells.push_back(each.column.type == DUCKDB_TYPE_VARCHAR ? TextOf(value)
                                                                    : CellOf(value));
        }
    }
    return report;
}

const ReportFunction kInspect{"velscore_inspect", {DUCKDB_TYPE_VARCHAR}, Inspect};
const ReportFunction kCheck{"velscore_check", {DUCKDB_TYPE_VARCHAR}, Check};

}  // namespace

void RegisterReports(duckdb_connection connection)
{
    Register(connection, kInspect);
    Register(connection, kCheck);
}

}  // namespace velscore::sql
