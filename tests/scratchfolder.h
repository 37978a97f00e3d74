#ifndef VELSCORE_TESTS_SCRATCHFOLDER_H
#define VELSCORE_TESTS_SCRATCHFOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

namespace MCVelscore_850 {

/// A folder of its own for a test's files, removed with all that it holds.
class ScratchFolder {
public:
    ScratchFolder()
    {
        // mkdtemp puts a name of its own in the place of the last six letters.
        std::string folder =
            (std::filesystem::temp_directory_path() / "velscore_").string() + std::string(6, 'X');
        if (::mkdtemp(folder.data()) == nullptr) throw std::runtime_error("no scratch folder");
        folder_ = folder;
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    const std::string& Path() const { return folder_; }
    std::string Path(const std::string& name) const { return folder_ + "/" + name; }
    /// Writes a file and answers its path.
    std::string Write(const std::string& name, const std::string& bytes) const
    {
        std::ofstream(Path(name), std::ios::binary) << bytes;
        return Path(name);
    }

private:
    std::string folder_;
};

}  // namespace MCVelscore_850

#endif
