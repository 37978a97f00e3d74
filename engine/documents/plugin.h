#ifndef VELSCORE_ENGINE_DOCUMENTS_PLUGIN_H
#define VELSCORE_ENGINE_DOCUMENTS_PLUGIN_H

#include <memory>
#include <string>

namespace MCVelscore_850 {

class BaseTranslator;

/// The plug-in: its shared library, opened, or one that the program was linked with.
///
/// Errors  Failure of kind Plugin: kPluginNotLoaded, kPluginNoEntry.
/// Order   outlives every reader, model and result made with it: their code lies in its library.
class Plugin {
public:
    /// The name of the plug-in's file and of its entry.
    static constexpr const char* kFileName = "libvelregression850.so";
    static constexpr const char* kEntry = "GiveMyTranslator";
    using Entry = BaseTranslator* (*)();

    /// Opens `file`; empty is the default: lib/ beside the folder of the running program.
    explicit Plugin(const std::string& file = "");
    /// The built-in one: the program itself has the entry, and no file is looked for.
    explicit Plugin(Entry entry) : entry_(entry) {}
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;
    ~Plugin();

    /// A new reader.
    std::unique_ptr<BaseTranslator> MakeReader() const;
    /// Empty of a built-in one.
    const std::string& File() const { return file_; }

    /// Where the plug-in lies by default.
    static std::string DefaultFile();

private:
    std::string file_;
    void* library_ = nullptr;
    Entry entry_ = nullptr;
};

}  // namespace MCVelscore_850

#endif
