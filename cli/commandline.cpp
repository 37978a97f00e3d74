#include "cli/commandline.h"

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <map>
#include <new>
#include <span>
#include <sstream>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <CLI/CLI.hpp>

#include "cli/commands.h"
#include "cli/commandset.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "engine/messages/failure.h"
#include "engine/messages/suggestions.h"
#include "engine/messages/trace.h"

namespace MCVelscore_850 {

namespace {

// What is no command here, though elsewhere: the words, and where what they ask for is.
constexpr std::pair<const char*, const char*> kElsewhere[] = {
    {"report",
     "reports are made by the package for Python. In a clone of velscore: pip install "
     "'.[report]', then python -m velscore report MODEL [CASES] -o report.html"},
};

// Throws when the first argument that should name a command doesn't.
void RefuseUnknownCommand(const CLI::App& app, const std::string& given)
{
    for (const auto& [word, where] : kElsewhere) {
        if (given == word) throw UsageError(where);
    }
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands(nullptr)) {
        if (command->get_name() == given) return;
        names.push_back(command->get_name());
    }
    throw UsageError(
        WithHint(fmt::format("'{}' is no command; the commands are {} and {}", given,
                             fmt::join(names.begin(), names.end() - 1, ", "), names.back()),
                 SuggestWord(given, names)));
}

// Throws for the first option that the command doesn't have. The parser would blame the words
// behind it, which it takes for arguments too many.
void RefuseUnknownOption(const CLI::App& command, std::span<const std::string> arguments)
{
    for (size_t i = 0; i < arguments.size() && arguments[i] != "--"; ++i) {
        const std::string& argument = arguments[i];
        if (argument.size() < 2 || argument[0] != '-') continue;
        const bool isLong = argument[1] == '-';
        const std::string name =
            isLong ? argument.substr(0, argument.find('=')) : argument.substr(0, 2);
        const CLI::Option* option = command.get_option_no_throw(name);
        if (option != nullptr) {
            // A text of its own may begin with a dash too.
            if (argument == name && option->get_items_expected_max() > 0) ++i;
            continue;
        }
        std::vector<std::string> names;
        for (const CLI::Option* each : command.get_options()) {
            const std::vector<std::string>& known = each->get_lnames();
            names.insert(names.end(), known.begin(), known.end());
        }
        const std::string whole = argument.substr(0, argument.find('='));
        const std::string word = isLong ? whole.substr(2) : whole;
        throw UsageError(WithHint(fmt::format("{} has no option {}", command.get_name(), whole),
                                  SuggestWord(word, names, "--")));
    }
}

// Says what is wrong with arguments that the parser refused.
[[noreturn]] void RefuseArguments(CLI::App& app, std::span<const std::string> arguments,
                                  const CLI::ParseError& wrong)
{
    const auto isWord = [](const std::string& argument) { return !argument.starts_with('-'); };
    const auto command = std::find_if(arguments.begin(), arguments.end(), isWord);
    RefuseUnknownOption(app, {arguments.begin(), command});
    if (command != arguments.end()) {
        RefuseUnknownCommand(app, *command);
        RefuseUnknownOption(*app.get_subcommand(*command), {command + 1, arguments.end()});
    }
    throw UsageError(wrong.what());
}

}  // namespace

int RunCommandLine(const std::vector<std::string>& arguments, Console& console)
{
    // What each command runs, by its name.
    using Run = int (*)(const CommandSet&, Console&);
    static const std::map<std::string, Run> kRuns{
        {"score", [](const CommandSet& set, Console& out) { return RunScore(set.score, out); }},
        {"curve", [](const CommandSet& set, Console& out) { return RunCurve(set.curve, out); }},
        {"explain",
         [](const CommandSet& set, Console& out) { return RunExplain(set.explain, out); }},
        {"check", [](const CommandSet& set, Console& out) { return RunCheck(set.check, out); }},
        {"inspect", [](const CommandSet& set, Console&) { return RunInspect(set.inspect); }},
        {"verify", [](const CommandSet& set, Console& out) { return RunVerify(set.verify, out); }},
        {"convert",
         [](const CommandSet& set, Console& out) { return RunConvert(set.convert, out); }},
        {"diff", [](const CommandSet& set, Console& out) { return RunDiff(set.diff, out); }},
        {"help", [](const CommandSet& set, Console&) { return RunHelp(set.help); }},
    };

    CommandSet commands;
    CLI::App& program = commands.Program();
    try {
        // The parser takes them from the end.
        program.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::Success& asked) {  // --help and --version
        std::ostringstream out;
        program.exit(asked, out, out);
        PrintOut(out.str());
        return kExitDone;
    } catch (const CLI::ParseError& wrong) {
        RefuseArguments(program, arguments, wrong);
    }
    return kRuns.at(program.get_subcommands().front()->get_name())(commands, console);
}

int ExitCodeOf(const std::function<int()>& run, Console& console)
{
    try {
        return run();
    } catch (const UsageError& wrong) {
        console.SayError(wrong.what(),
                         "velscore --help and velscore COMMAND --help tell the usage.");
        return kExitUsage;
    } catch (const Failure& failure) {
        console.SayFailure(failure);
        return static_cast<int>(failure.Kind());
    } catch (const std::bad_alloc&) {
        console.SayError("there is no memory left");
    } catch (const std::exception& defect) {
        console.SayError(
            std::string("internal error: ") + defect.what(),
            "This is a defect of velscore; please report it with the model and the row.");
    }
    return kExitInternal;
}

int RunProgram(int argumentCount, const char* const* arguments, Console& console)
{
    const auto run = [&] {
        if (const char* trace = std::getenv("VELSCORE_TRACE");
            trace != nullptr && *trace != '\0' && !SetUpTrace(trace)) {
            throw UsageError("VELSCORE_TRACE is '" + std::string(trace) +
                             "', not a level from 0 to 9 or LEVEL:FILE with a file that can be "
                             "written");
        }
        // The first is the program's name, if anybody gave one.
        return RunCommandLine({arguments + std::min(argumentCount, 1), arguments + argumentCount},
                              console);
    };
    return ExitCodeOf(run, console);
}

}  // namespace MCVelscore_850
