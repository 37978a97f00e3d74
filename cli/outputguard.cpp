#include "cli/outputguard.h"

#include <fmt/format.h>
#include <unistd.h>

#include "cli/commands.h"
#include "engine/bytesource.h"

namespace MCVelscore_850 {

bool IsOutput(const std::string& output, int input)
{
    return output == "-" ? IsSameFile(STDOUT_FILENO, input) : IsSameFile(input, output);
}

void RefuseOutputOnto(const std::string& input)
{
    throw UsageError(
        fmt::format("the output is the input {} itself; write to another file", input));
}

void RefuseOutputOntoDocument(const std::string& output, const std::string& document)
{
    if (document == "-") {
        if (IsOutput(output, STDIN_FILENO)) RefuseOutputOnto("standard input");
    } else if (output == "-" ? IsSameFile(STDOUT_FILENO, document) : IsSameFile(document, output)) {
        RefuseOutputOnto(document);
    }
}

}  // namespace MCVelscore_850
