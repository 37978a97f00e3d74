#ifndef VELSCORE_ENGINE_DOCUMENTS_PLUGIN_H
#define VELSCORE_ENGINE_DOCUMENTS_PLUGIN_H

#include <memory>
#include <string>

namespace MCVelscore_850 {

class BaseTranslator;

/// The plug-in's shared library, opened.
///
/// Errors  Failure of kind Plugin: kPluginNotLoaded, kPluginNoEntry.
/// Order   outlives every reader, model and result made with it: their code lies in it.
class Plugin {
public:
    /// The name of the plug-in's file and of its entry.
    static constexpr const char* kFileName = "libvelregression850.so";
    static constexpr const char* kEntry = "GiveMyTranslator";

    /// Opens `file`; empty is the default: lib/ beside the folder of the running program.
    explicit Plugin(const std::string& file = "");
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;
    ~Plugin();

    /// A new reader.
    std::unique_ptr<BaseTranslator> MakeReader() const;
    const std::string& File() const { return file_; }

    /// Where the plug-in lies by default.
    static std::string DefaultFile();

private:
    std::string file_;
    void* library_ = nullptr;
    BaseTranslator* (*entry_)() = nullptr;
};

}  // namespace MCVelscore_850

#endif
