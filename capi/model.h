#ifndef VELSCORE_CAPI_MODEL_H
#define VELSCORE_CAPI_MODEL_H

#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/documents/loadedmodel.h"

namespace MCVelscore_850::capi {

/// What of a model is asked for one run of tables.
struct Settings {
    std::optional<MissingPolicy> policy{};
    std::optional<double> level{};
    bool predictionOnly = false;
};

/// How a document is read.
struct Source {
    std::string path{};  ///< or else the text
    std::string text{};
    bool isText = false;
    std::string name{};  ///< that messages call it by
    bool asIs = false;
    std::vector<std::string> allowed{};  ///< names of rules

    std::unique_ptr<LoadedModel> Load(LoadOptions options) const;
};

}  // namespace MCVelscore_850::capi

/// A model that is open. A scorer takes over what is set on its model when it is made, and reads
/// nothing of that afterwards; so one at a time has its settings put on the model, is made, and has
/// them taken off again. Between, the model stands as it was read.
struct velscore_model {
public:
    explicit velscore_model(MCVelscore_850::capi::Source source);

    const std::string& Name() const { return source_.name; }
    std::unique_ptr<MCVelscore_850::LoadedModel> ReadAgain(
        MCVelscore_850::LoadOptions options) const
    {
        return source_.Load(options);
    }

    /// Answers what `make` makes of the model while it has the settings.
    template <class Make>
    auto With(const MCVelscore_850::capi::Settings& settings, Make make) const
    {
        const std::lock_guard guard(making_);
        const Set set(*loaded_, settings);
        return make(std::as_const(*loaded_));
    }

private:
    class Set {
    public:
        Set(MCVelscore_850::LoadedModel& model, const MCVelscore_850::capi::Settings& settings);
        Set(const Set&) = delete;
        Set& operator=(const Set&) = delete;
        ~Set();

    private:
        MCVelscore_850::LoadedModel& model_;
        int policy_;
        double level_;
        bool predictionOnly_;
        const MCVelscore_850::capi::Settings& settings_;
    };

    MCVelscore_850::capi::Source source_;
    std::unique_ptr<MCVelscore_850::LoadedModel> loaded_;
    mutable std::mutex making_;
};

#endif
