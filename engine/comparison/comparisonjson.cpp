#include "engine/comparison/comparisonjson.h"

#include "engine/documents/loadedmodel.h"
#include "engine/reports/jsontext.h"

namespace MCVelscore_850 {

namespace {

using Json = JsonValue;

template <class T>
Json OrNull(const std::optional<T>& value)
{
    return value ? Json(*value) : Json();
}

Json ScoresJson(const ScoreComparison& scores)
{
    Json columns = Json::Array();
    for (const ScoreComparison::Column& column : scores.columns) {
        Json json{{"column", column.name},
                  {"compared", column.compared},
                  {"different", column.different},
                  {"oneAlone", column.oneAlone}};
        json["largest"] = column.isCategory ? Json() : Json(column.largest);
        json["mean"] = column.isCategory ? Json() : Json(column.Mean());
        json["row"] = column.worstRow == 0 ? Json() : Json(column.worstRow);
        json["first"] = column.worstRow == 0 ? Json() : Json(column.first);
        json["second"] = column.worstRow == 0 ? Json() : Json(column.second);
        columns.Add(std::move(json));
    }
    return {{"rows", scores.rows},
            {"both", scores.both},
            {"firstAlone", scores.firstAlone},
            {"secondAlone", scores.secondAlone},
            {"columns", std::move(columns)},
            {"columnsOfFirst", scores.ofFirst},
            {"columnsOfSecond", scores.ofSecond}};
}

}  // namespace

std::string ComparisonJson(const LoadedModel& first, const LoadedModel& second,
                           const std::vector<ModelDifference>& differences,
                           const std::optional<ScoreComparison>& scores)
{
    Json list = Json::Array();
    for (const ModelDifference& each : differences) {
        list.Add({{"subject", each.subject},
                  {"name", each.name},
                  {"first", OrNull(each.first)},
                  {"second", OrNull(each.second)},
                  {"size", OrNull(each.size)}});
    }
    return JsonText({{"first", first.File()},
                     {"second", second.File()},
                     {"same", differences.empty() && !(scores && scores->Differ())},
                     {"differences", std::move(list)},
                     {"scores", scores ? ScoresJson(*scores) : Json()}});
}

}  // namespace MCVelscore_850
