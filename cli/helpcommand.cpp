#include <algorithm>
#include <charconv>

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "engine/documents/documentrules.h"
#include "engine/messages/explanation.h"

namespace MCVelscore_850 {

namespace {

// What a rule tells, with the names of what differs in capitals.
std::string Pattern(std::string_view text)
{
    if (text == "{what}") return "velscore check tells what was found, and where";
    return fmt::format(fmt::runtime(text), fmt::arg("element", "ELEMENT"),
                       fmt::arg("attribute", "ATTRIBUTE"), fmt::arg("found", "FOUND"),
                       fmt::arg("expected", "EXPECTED"), fmt::arg("near", "NEAR"),
                       fmt::arg("meant", ""), fmt::arg("what", "WHAT"));
}

// False where no rule has that name.
bool ExplainRule(const std::string& name)
{
    const std::vector<const Rule*> rules = AllRules();
    const auto found = std::find_if(rules.begin(), rules.end(),
                                    [&](const Rule* rule) { return rule->name == name; });
    if (found == rules.end()) return false;
    const Rule& rule = **found;
    PrintOut(fmt::format("{}  {}: {}\n", rule.name, WordOf(rule.answer), Pattern(rule.text)));
    if (!rule.remedy.empty()) PrintOut(fmt::format("what to do: {}\n", Pattern(rule.remedy)));
    return true;
}

}  // namespace

int RunHelp(const HelpArguments& arguments)
{
    if (arguments.code.empty()) {
        for (const Explanation& explanation : ExplainAll()) {
            PrintOut(fmt::format("{:>6}  {}\n", explanation.code, explanation.text));
        }
        return kExitDone;
    }
    if (ExplainRule(arguments.code)) return kExitDone;
    int code = 0;
    const char* end = arguments.code.data() + arguments.code.size();
    const auto read = std::from_chars(arguments.code.data(), end, code);
    if (read.ec != std::errc() || read.ptr != end) {
        throw UsageError(
            fmt::format("'{}' is neither a code, such as 260115, nor a rule, such as short-version",
                        arguments.code));
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
