// The main of a fuzz target without libFuzzer, for any compiler: runs files, and all files of
// folders, through the target, in the order of their names, which it tells. What doesn't hold, or a
// sanitizer finds, ends it.
//
//   fuzz_TARGET [--mutations N] [--keep FILE] PATH...
//
// With N each input also goes N times through the target's own mutator, where it has one, always
// with the same draws. FILE holds the input that is running.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/fuzz/fuzztarget.h"

extern "C" __attribute__((weak)) size_t LLVMFuzzerCustomMutator(uint8_t* bytes, size_t size,
                                                                size_t most, unsigned seed);

namespace {

using Path = std::filesystem::path;

constexpr size_t kMostBytes = size_t{1} << 20;

struct Runner {
    unsigned mutations = 0;
    std::string keep;

    void Run(const std::string& input) const
    {
        if (!keep.empty()) std::ofstream(keep, std::ios::binary) << input;
        // In memory of its own size, so that a read beyond its end is seen.
        const std::vector<uint8_t> bytes(input.begin(), input.end());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }

    void RunMutations(const std::string& input) const
    {
        constexpr unsigned kInARow = 8;  // before the input itself is mutated again
        std::string mutated;
        for (unsigned seed = 0; seed < mutations; ++seed) {
            if (seed % kInARow == 0) mutated = input;
            const size_t size = mutated.size();
            mutated.resize(std::max(size, kMostBytes));
            mutated.resize(LLVMFuzzerCustomMutator(reinterpret_cast<uint8_t*>(mutated.data()), size,
                                                   mutated.size(), seed));
            Run(mutated);
        }
    }
};

std::vector<Path> FilesOf(const Path& path)
{
    if (!std::filesystem::is_directory(path)) return {path};
    std::vector<Path> files;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

int main(int count, char** arguments)
{
    Runner runner;
    size_t inputs = 0;
    for (int i = 1; i < count; ++i) {
        if (std::strcmp(arguments[i], "--mutations") == 0 && i + 1 < count) {
            runner.mutations = static_cast<unsigned>(std::strtoul(arguments[++i], nullptr, 10));
            continue;
        }
        if (std::strcmp(arguments[i], "--keep") == 0 && i + 1 < count) {
            runner.keep = arguments[++i];
            continue;
        }
        for (const Path& file : FilesOf(arguments[i])) {
            std::printf("%s\n", file.c_str());
            std::fflush(stdout);
            std::ifstream in(file, std::ios::binary);
            if (!in) {
                std::fprintf(stderr, "%s can't be read\n", file.c_str());
                return 1;
            }
            const std::string input{std::istreambuf_iterator<char>(in), {}};
            runner.Run(input);
            if (LLVMFuzzerCustomMutator != nullptr) runner.RunMutations(input);
            ++inputs;
        }
    }
    std::printf("%zu inputs\n", inputs);
    return inputs == 0 ? 1 : 0;
}
