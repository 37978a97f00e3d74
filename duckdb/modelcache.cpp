#include "duckdb/modelcache.h"

#include <algorithm>
#include <utility>

#include <nlohmann/json.hpp>

namespace velscore::sql {

namespace {

constexpr const char* kOnRequest = "linear_predictor";
// Of every model.
constexpr const char* kAlways[] = {"status", "status_field"};

std::vector<std::string> ResultsOf(const nlohmann::json& about)
{
    std::vector<std::string> results;
    for (const auto& column : about.at("columns")) {
        if (!column.at("empty").get<bool>()) results.push_back(column.at("column"));
    }
    for (const auto& column : about.at("columnsOnRequest")) {
        if (column.at("column") == kOnRequest) results.emplace_back(kOnRequest);
    }
    results.insert(results.end(), std::begin(kAlways), std::end(kAlways));
    return results;
}

}  // namespace

OpenModel::OpenModel(std::string pathOf, std::string bytesOf)
    : path(std::move(pathOf)),
      bytes(std::move(bytesOf)),
      model(velscore::Model::FromText(bytes, path)),
      description(model.Describe())
{
    const auto about = nlohmann::json::parse(description);
    reads = about.at("reads").get<std::vector<std::string>>();
    results = ResultsOf(about);
}

std::shared_ptr<const OpenModel> ModelCache::Of(const std::string& path, std::string bytes)
{
    {
        const std::lock_guard lock(guard_);
        if (auto found = Find(path, bytes)) return found;
    }
    // Without the lock, so that others don't wait for a long document.
    return Keep(std::make_shared<const OpenModel>(path, std::move(bytes)));
}

size_t ModelCache::Size() const
{
    const std::lock_guard lock(guard_);
    return models_.size();
}

std::shared_ptr<const OpenModel> ModelCache::Find(const std::string& path, const std::string& bytes)
{
    const auto found = std::find_if(models_.begin(), models_.end(), [&](const auto& model) {
        return model->path == path && model->bytes == bytes;
    });
    if (found == models_.end()) return nullptr;
    std::rotate(models_.begin(), found, found + 1);
    return models_.front();
}

std::shared_ptr<const OpenModel> ModelCache::Keep(std::shared_ptr<const OpenModel> model)
{
    std::vector<std::shared_ptr<const OpenModel>> dropped;  // ended after the lock
    const std::lock_guard lock(guard_);
    // Another thread may have read the same meanwhile.
    if (auto found = Find(model->path, model->bytes)) return found;
    models_.insert(models_.begin(), model);
    size_t bytes = 0;
    size_t kept = 1;
    while (kept < std::min(mostModels_, models_.size()) &&
           (bytes += models_[kept]->bytes.size()) <= mostBytes_) {
        ++kept;
    }
    dropped.assign(models_.begin() + static_cast<std::ptrdiff_t>(kept), models_.end());
    models_.resize(kept);
    return model;
}

}  // namespace velscore::sql
