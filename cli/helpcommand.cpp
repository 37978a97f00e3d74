#include <charconv>

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "engine/messages/explanation.h"

namespace MCVelscore_850 {

int RunHelp(const HelpArguments& arguments)
{
    if (arguments.code.empty()) {
        for (const Explanation& explanation : ExplainAll()) {
            PrintOut(fmt::format("{:>6}  {}\n", explanation.code, explanation.text));
        }
        return kExitDone;
    }
    int code = 0;
    const char* end = arguments.code.data() + arguments.code.size();
    const auto read = std::from_chars(arguments.code.data(), end, code);
    if (read.ec != std::errc() || read.ptr != end) {
        throw UsageError(
            fmt::format("'{}' is no code; codes are whole numbers such as 260115", arguments.code));
    }
    const auto explanation = Explain(code);
    if (!explanation) {
        throw UsageError(
            fmt::format("no message has the code {}; 'velscore help' lists them all", code));
    }
    PrintOut(fmt::format("{}  {}\n", explanation->code, explanation->text));
    if (!explanation->remedy.empty())
        PrintOut(fmt::format("what to do: {}\n", explanation->remedy));
    return kExitDone;
}

}  // namespace MCVelscore_850
