#ifndef VELSCORE_DUCKDB_MODELCACHE_H
#define VELSCORE_DUCKDB_MODELCACHE_H

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "capi/include/velscore.hpp"

namespace velscore::sql {

/// A model, and what of its description the functions need. Any number of threads.
struct OpenModel {
    /// Throws velscore::Error.
    OpenModel(std::string path, std::string bytes);

    std::string path;   ///< that messages call it by
    std::string bytes;  ///< of its document
    velscore::Model model;
    std::string description;           ///< as velscore_describe tells it
    std::vector<std::string> reads;    ///< the columns of a table
    std::vector<std::string> results;  ///< columns of results that it has
};

/// The models that statements used last. A document that is bound again is read, but not parsed:
/// what stands in it tells whether it is the same, so a file that changed is never taken for what
/// it was.
///
/// Threads  any number. A model that is dropped here stands until the last statement that uses it
/// ends.
class ModelCache {
public:
    /// Keeps at most so many models, and so many bytes of documents beside that of the last one.
    ModelCache(size_t mostModels, size_t mostBytes) : mostModels_(mostModels), mostBytes_(mostBytes)
    {}

    /// The model of a document that was read from `path`. Throws velscore::Error, and keeps
    /// nothing.
    std::shared_ptr<const OpenModel> Of(const std::string& path, std::string bytes);

    size_t Size() const;

private:
    /// Whoever calls this one holds the lock.
    std::shared_ptr<const OpenModel> Find(const std::string& path, const std::string& bytes);
    std::shared_ptr<const OpenModel> Keep(std::shared_ptr<const OpenModel> model);

    size_t mostModels_;
    size_t mostBytes_;
    mutable std::mutex guard_;
    std::vector<std::shared_ptr<const OpenModel>> models_;  ///< the last used first
};

}  // namespace velscore::sql

#endif
