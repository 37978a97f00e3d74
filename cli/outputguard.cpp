#include "cli/outputguard.h"

#include <fmt/format.h>
#include <unistd.h>

#include "cli/commands.h"
#include "engine/tables/bytesource.h"

namespace MCVelscore_850 {

namespace {

// True when the output would go into the file of an open descriptor.
bool IsOutput(const std::string& output, int input)
{
    return output == "-" ? IsSameFile(STDOUT_FILENO, input) : IsSameFile(input, output);
}

[[noreturn]] void Refuse(const std::string& input)
{
    throw UsageError(
        fmt::format("the output is the input {} itself; write to another file", input));
}

}  // namespace

void RefuseOutputOntoDocument(const std::string& output, const std::string& document)
{
    if (document == "-") {
        if (IsOutput(output, STDIN_FILENO)) Refuse("standard input");
    } else if (output == "-" ? IsSameFile(STDOUT_FILENO, document) : IsSameFile(document, output)) {
        Refuse(document);
    }
}

void RefuseOutputOntoTable(const std::string& output, const ByteSource& cases)
{
    // What the shell has emptied for the output is an empty table, and told as one.
    if ((output != "-" || cases.Size() > 0) && IsOutput(output, cases.Descriptor())) {
        Refuse(cases.Name());
    }
}

}  // namespace MCVelscore_850
