#include "cli/outputguard.h"

#include <filesystem>
#include <system_error>

#include <fmt/format.h>
#include <unistd.h>

#include "cli/commands.h"
#include "engine/tables/bytesource.h"

namespace MCVelscore_850 {

namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;  // as the system allows

std::string PlainName(const std::string& output) { return output == "/dev/stdout" ? "-" : output; }

// The file that a name stands for, which need not be there yet; empty where none can be told.
fs::path EndOfLinks(fs::path path)
{
    std::error_code error;
    for (int link = 0; link < kMostLinks; ++link) {
        const fs::path next = fs::read_symlink(path, error);
        if (error) break;  // no link
        path = path.parent_path() / next;
    }
    path = fs::weakly_canonical(path, error);
    return error ? fs::path() : path;
}

// True when the output would go into the file that the input is.
bool IsOutput(const std::string& output, const std::string& input)
{
    if (input == "-") {
        return output == "-" ? IsSameFile(STDOUT_FILENO, STDIN_FILENO)
                             : IsSameFile(STDIN_FILENO, output);
    }
    return output == "-" ? IsSameFile(STDOUT_FILENO, input) : IsSameFile(input, output);
}

// A device may be written to twice, /dev/null say.
bool IsDevice(const fs::path& path)
{
    std::error_code error;
    return fs::status(path, error).type() == fs::file_type::character;
}

[[noreturn]] void Refuse(const std::string& input)
{
    throw UsageError(
        fmt::format("the output is the input {} itself; write to another file", input));
}

}  // namespace

void RefuseSameOutput(const std::string& output, const std::string& other)
{
    const std::string one = PlainName(output);
    const std::string two = PlainName(other);
    if (one == "-" || two == "-") {
        if (one != two) return;
    } else if (!IsSameFile(one, two)) {
        const fs::path file = EndOfLinks(one);
        if (file.empty() || file != EndOfLinks(two) || IsDevice(file)) return;
    }
    throw UsageError(fmt::format("{} is to be two outputs at once; name two files",
                                 one == "-" ? "standard output" : output));
}

void RefuseOutputOntoDocument(const std::string& output, const std::string& document)
{
    if (IsOutput(output, document)) Refuse(InputFile::NameOf(document));
}

void RefuseOutputOntoTable(const std::string& output, const std::string& cases)
{
    // What the shell has emptied for the output is an empty table, and told as one.
    uint64_t size = 0;
    const bool isEmpty = IsRegularFile(cases, size) && size == 0;
    if ((output != "-" || !isEmpty) && IsOutput(output, cases)) Refuse(InputFile::NameOf(cases));
}

}  // namespace MCVelscore_850
