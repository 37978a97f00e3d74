#include <algorithm>
#include <charconv>

#include <fmt/format.h>

#include "cli/commands.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "engine/documents/documentrules.h"
#include "engine/messages/explanation.h"
#include "engine/messages/suggestions.h"

namespace MCVelscore_850 {

namespace {

// A remedy as it goes for any finding of its rule.
std::string RemedyText(std::string_view remedy)
{
    return fmt::format(fmt::runtime(remedy), fmt::arg("element", "the element"),
                       fmt::arg("attribute", "the attribute"), fmt::arg("found", "what was found"),
                       fmt::arg("expected", "those that check tells"),
                       fmt::arg("near", "the name that check tells"), fmt::arg("meant", ""),
                       fmt::arg("note", ""), fmt::arg("what", "what check tells"));
}

// False where no rule has that name.
bool ExplainRule(const std::string& name)
{
    const std::vector<const Rule*> rules = AllRules();
    const auto found = std::find_if(rules.begin(), rules.end(),
                                    [&](const Rule* rule) { return rule->name == name; });
    if (found == rules.end()) return false;
    const Rule& rule = **found;
    PrintOut(fmt::format("{}  {}: {}\n", rule.name, WordOf(rule.answer), rule.about));
    if (!rule.remedy.empty()) PrintOut(fmt::format("what to do: {}\n", RemedyText(rule.remedy)));
    return true;
}

// ". Did you mean ...?"; empty where no rule's name is near.
std::string NearRule(const std::string& name)
{
    std::vector<std::string> names;
    for (const Rule* rule : AllRules()) names.emplace_back(rule->name);
    const std::string meant = SuggestWord(name, names);
    return meant.empty() ? meant : ". " + meant;
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
        throw UsageError(fmt::format(
            "'{}' is neither a code, such as 260115, nor a rule, such as short-version{}",
            arguments.code, NearRule(arguments.code)));
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
