#include "cli/outputguard.h"

#include <filesystem>
#include <system_error>

#include <fmt/format.h>
#include <unistd.h>

#include "cli/commands.h"
#include "engine/tables/bytesource.h"

namespace MCVelscore_850 {

namespace {

// True when the output would go into the file that the input is.
bool IsOutput(const std::string& output, const std::string& input)
{
    if (input == "-") {
        return output == "-" ? IsSameFile(STDOUT_FILENO, STDIN_FILENO)
                             : IsSameFile(STDIN_FILENO, output);
    }
    return output == "-" ? IsSameFile(STDOUT_FILENO, input) : IsSameFile(input, output);
}

// True for what is or will be a regular file: a device may be written to twice.
bool IsFileName(const std::string& path)
{
    std::error_code error;
    const auto type = std::filesystem::status(path, error).type();
    return type == std::filesystem::file_type::not_found ||
           type == std::filesystem::file_type::regular;
}

[[noreturn]] void Refuse(const std::string& input)
{
    throw UsageError(
        fmt::format("the output is the input {} itself; write to another file", input));
}

}  // namespace

void RefuseSameOutput(const std::string& output, const std::string& other)
{
    namespace fs = std::filesystem;
    bool same = output == other;
    if (!same && output != "-" && other != "-") {
        std::error_code error;
        const fs::path one = fs::weakly_canonical(output, error);
        same = IsSameFile(output, other) || (!error && one == fs::weakly_canonical(other, error) &&
                                             !error && IsFileName(output));
    }
    if (!same) return;
    throw UsageError(fmt::format("{} is to be two outputs at once; name two files",
                                 output == "-" ? "standard output" : output));
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
