#include "engine/documents/plugin.h"

#include <filesystem>
#include <system_error>

#include <dlfcn.h>

#include "engine/messages/failure.h"
#include "host/documents/basetranslator.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

std::string LastLoaderError()
{
    const char* text = ::dlerror();
    return text == nullptr ? "unknown reason" : text;
}

}  // namespace

Plugin::Plugin(const std::string& file) : file_(file.empty() ? DefaultFile() : file)
{
    // A name without a slash would be searched for in the system's library folders.
    const std::string path = file_.find('/') == std::string::npos ? "./" + file_ : file_;
    library_ = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library_ == nullptr) {
        throw Failure(FailureKind::Plugin, kPluginNotLoaded, {file_, LastLoaderError()});
    }
    entry_ = reinterpret_cast<Entry>(::dlsym(library_, kEntry));
    if (entry_ == nullptr) {
        ::dlclose(library_);
        throw Failure(FailureKind::Plugin, kPluginNoEntry, {file_, kEntry});
    }
}

Plugin::~Plugin()
{
    if (library_ != nullptr) ::dlclose(library_);
}

std::unique_ptr<BaseTranslator> Plugin::MakeReader() const
{
    return std::unique_ptr<BaseTranslator>(entry_());
}

std::string Plugin::DefaultFile()
{
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return kFileName;
    return (program.parent_path().parent_path() / "lib" / kFileName).string();
}

}  // namespace MCVelscore_850
