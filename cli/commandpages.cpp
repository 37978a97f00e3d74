#include "cli/commandpages.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <CLI/CLI.hpp>

#include "cli/commandset.h"

namespace MCVelscore_850 {

namespace {

namespace fs = std::filesystem;

std::vector<const CLI::App*> CommandsOf(const CLI::App& program)
{
    return program.get_subcommands([](const CLI::App*) { return true; });
}

// What an option takes, in the words of its help: "FILE", "csv|jsonl", nothing for a flag.
std::string KindOf(const CLI::Option& option)
{
    return option.get_items_expected_max() == 0 ? std::string() : option.get_type_name();
}

// The words of "csv|jsonl"; none for a kind such as "FILE" or "all|COLS", whose words aren't all.
std::vector<std::string> WordsOf(const CLI::Option& option)
{
    const std::string kind = KindOf(option);
    const bool isWords = kind.find('|') != std::string::npos &&
                         std::none_of(kind.begin(), kind.end(),
                                      [](unsigned char c) { return std::isupper(c) != 0; });
    std::vector<std::string> words;
    if (!isWords) return words;
    for (size_t at = 0; at <= kind.size();) {
        const size_t end = std::min(kind.find('|', at), kind.size());
        words.push_back(kind.substr(at, end - at));
        at = end + 1;
    }
    return words;
}

bool TakesFile(const CLI::Option& option)
{
    return KindOf(option).find("FILE") != std::string::npos || KindOf(option) == "CASES";
}

// "-o", "--out": the spellings of an option.
std::vector<std::string> Spellings(const CLI::Option& option)
{
    std::vector<std::string> spellings;
    for (const std::string& name : option.get_snames()) spellings.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) spellings.push_back("--" + name);
    return spellings;
}

std::vector<const CLI::Option*> NamedOptions(const CLI::App& command)
{
    return command.get_options([](const CLI::Option* option) {
        return !option->get_positional() || option->nonpositional();
    });
}

std::vector<const CLI::Option*> Positionals(const CLI::App& command)
{
    return command.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

// Plain text as roff takes it: no backslash of its own, no line that begins a request.
std::string Roff(std::string_view text)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool begins = i == 0 || text[i - 1] == '\n';
        if (begins && (c == '.' || c == '\'')) out += "\\&";
        if (c == '\\') {
            out += "\\e";
        } else if (c == '-') {
            out += "\\-";
        } else {
            out += c;
        }
    }
    return out;
}

std::string PageHead(const std::string& title, const std::string& version)
{
    return fmt::format(".TH {} 1 \"\" \"velscore {}\" \"User Commands\"\n", Roff(title), version);
}

// The end of --help: an example, as it stands, and sentences.
std::string Footer(const CLI::App& command)
{
    return fmt::format(".SH NOTES\n.nf\n{}\n.fi\n", Roff(command.get_footer()));
}

std::string OptionEntry(const CLI::Option& option)
{
    std::string names;
    for (const std::string& spelling : Spellings(option)) {
        if (!names.empty()) names += ", ";
        names += "\\fB" + Roff(spelling) + "\\fR";
    }
    if (const std::string kind = KindOf(option); !kind.empty()) {
        names += " \\fI" + Roff(kind) + "\\fR";
    }
    return fmt::format(".TP\n{}\n{}\n", names, Roff(option.get_description()));
}

std::string OptionSections(const CLI::App& command)
{
    std::vector<std::string> groups;
    for (const CLI::Option* option : NamedOptions(command)) {
        if (std::find(groups.begin(), groups.end(), option->get_group()) == groups.end()) {
            groups.push_back(option->get_group());
        }
    }
    std::string out = ".SH OPTIONS\n";
    for (const std::string& group : groups) {
        out += fmt::format(".SS {}\n", Roff(group));
        for (const CLI::Option* option : NamedOptions(command)) {
            if (option->get_group() == group) out += OptionEntry(*option);
        }
    }
    return out;
}

// A text within '...' of a shell.
std::string Quoted(std::string_view text)
{
    std::string out = "'";
    for (const char c : text) {
        if (c == '\'') {
            out += "'\\''";
        } else {
            out += c;
        }
    }
    return out + "'";
}

// The same within [...] of zsh's option specifications.
std::string ZshText(std::string_view text)
{
    std::string out;
    for (const char c : text) {
        if (c == '[' || c == ']' || c == ':' || c == '\\') out += '\\';
        out += c;
    }
    return out;
}

std::string ZshAction(const CLI::Option& option)
{
    const std::string kind = KindOf(option);
    if (kind.empty()) return {};
    const auto words = WordsOf(option);
    if (!words.empty()) return fmt::format(":{}:({})", ZshText(kind), fmt::join(words, " "));
    return fmt::format(":{}:{}", ZshText(kind), TakesFile(option) ? "_files" : " ");
}

// Empty where there is no such file.
std::string TextOf(const fs::path& path)
{
    std::ifstream file(path);
    std::ostringstream text;
    if (file) text << file.rdbuf();
    return text.str();
}

void WriteText(const fs::path& path, const std::string& text)
{
    fs::create_directories(path.parent_path());
    std::ofstream file(path);
    file << text;
    if (!file.flush()) throw std::runtime_error("can't write " + path.string());
}

}  // namespace

std::string CommandManPage(const CLI::App& command, const std::string& version,
                           const std::string& details)
{
    const std::string name = "velscore-" + command.get_name();
    std::string out = PageHead(name, version);
    out += fmt::format(".SH NAME\n{} \\- {}\n", Roff(name), Roff(command.get_description()));
    out += fmt::format(".SH SYNOPSIS\n\\fBvelscore {}\\fR [\\fIOPTIONS\\fR]", command.get_name());
    for (const CLI::Option* each : Positionals(command)) {
        const char* many = each->get_items_expected_max() > 1 ? "..." : "";
        const std::string argument = each->get_single_name();
        out += each->get_required() ? fmt::format(" \\fI{}\\fR{}", argument, many)
                                    : fmt::format(" [\\fI{}\\fR{}]", argument, many);
    }
    out += "\n.SH ARGUMENTS\n";
    for (const CLI::Option* each : Positionals(command)) {
        out += fmt::format(".TP\n\\fI{}\\fR\n{}\n", each->get_single_name(),
                           Roff(each->get_description()));
    }
    out += OptionSections(command);
    if (!details.empty()) out += ".SH DESCRIPTION\n" + details;
    out += Footer(command);
    return out + ".SH SEE ALSO\n\\fBvelscore\\fR(1)\n";
}

std::string ProgramManPage(const CLI::App& program, const std::string& version)
{
    std::string out = PageHead("velscore", version);
    out += fmt::format(".SH NAME\nvelscore \\- {}\n", "score tables with regression models");
    out += ".SH SYNOPSIS\n\\fBvelscore\\fR \\fICOMMAND\\fR [\\fIARGUMENTS\\fR]\n";
    out += fmt::format(".SH DESCRIPTION\n{}\n.SH COMMANDS\n", Roff(program.get_description()));
    for (const CLI::App* command : CommandsOf(program)) {
        out +=
            fmt::format(".TP\n\\fB{}\\fR\n{}; see \\fBvelscore\\-{}\\fR(1)\n", command->get_name(),
                        Roff(command->get_description()), command->get_name());
    }
    out += OptionSections(program);
    out += Footer(program);
    out += ".SH SEE ALSO\n";
    std::vector<std::string> pages;
    for (const CLI::App* command : CommandsOf(program)) {
        pages.push_back(fmt::format("\\fBvelscore\\-{}\\fR(1)", command->get_name()));
    }
    return out + fmt::format("{}\n", fmt::join(pages, ", "));
}

std::string BashCompletion(const CLI::App& program)
{
    std::vector<std::string> names;
    std::string options;
    std::string words;
    for (const CLI::App* command : CommandsOf(program)) {
        names.push_back(command->get_name());
        std::vector<std::string> spellings;
        for (const CLI::Option* option : NamedOptions(*command)) {
            const auto own = Spellings(*option);
            spellings.insert(spellings.end(), own.begin(), own.end());
            if (KindOf(*option).empty()) continue;
            const auto known = WordsOf(*option);
            const std::string answer =
                !known.empty()       ? fmt::format("COMPREPLY=($(compgen -W {} -- \"$word\"))",
                                                   Quoted(fmt::format("{}", fmt::join(known, " "))))
                : TakesFile(*option) ? "COMPREPLY=($(compgen -f -- \"$word\"))"
                                     : "COMPREPLY=()";
            for (const std::string& spelling : own) {
                words += fmt::format("        '{} {}') {}; return ;;\n", command->get_name(),
                                     spelling, answer);
            }
        }
        options += fmt::format("        {}) options={} ;;\n", command->get_name(),
                               Quoted(fmt::format("{}", fmt::join(spellings, " "))));
    }
    return fmt::format(
        "# bash completion of velscore\n"
        "_velscore() {{\n"
        "    local word=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD-1]}}\n"
        "    local command=${{COMP_WORDS[1]}} options=\n"
        "    compopt -o filenames 2>/dev/null\n"
        "    if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
        "        COMPREPLY=($(compgen -W {} -- \"$word\"))\n"
        "        return\n"
        "    fi\n"
        "    case \"$command $before\" in\n{}"
        "    esac\n"
        "    case \"$command\" in\n{}"
        "    esac\n"
        "    if [[ $word == -* ]]; then\n"
        "        COMPREPLY=($(compgen -W \"$options\" -- \"$word\"))\n"
        "    else\n"
        "        COMPREPLY=($(compgen -f -- \"$word\"))\n"
        "    fi\n"
        "}}\n"
        "complete -F _velscore velscore\n",
        Quoted(fmt::format("{} --help --version", fmt::join(names, " "))), words, options);
}

std::string ZshCompletion(const CLI::App& program)
{
    std::string commands;
    std::string cases;
    for (const CLI::App* command : CommandsOf(program)) {
        commands += fmt::format(
            "        {}\n",
            Quoted(fmt::format("{}:{}", command->get_name(), ZshText(command->get_description()))));
        cases += fmt::format("        {})\n            _arguments -s \\\n", command->get_name());
        for (const CLI::Option* option : NamedOptions(*command)) {
            for (const std::string& spelling : Spellings(*option)) {
                // May be given again.
                cases += fmt::format(
                    "                {} \\\n",
                    Quoted(fmt::format("*{}[{}]{}", spelling, ZshText(option->get_description()),
                                       ZshAction(*option))));
            }
        }
        cases += "                '*:file:_files'\n            ;;\n";
    }
    return fmt::format(
        "#compdef velscore\n"
        "_velscore() {{\n"
        "    local -a commands\n"
        "    commands=(\n{}"
        "    )\n"
        "    if (( CURRENT == 2 )); then\n"
        "        _describe command commands\n"
        "        return\n"
        "    fi\n"
        "    local command=$words[2]\n"
        "    shift words\n"
        "    (( CURRENT-- ))\n"
        "    case $command in\n{}"
        "    esac\n"
        "}}\n"
        "_velscore \"$@\"\n",
        commands, cases);
}

std::string FishCompletion(const CLI::App& program)
{
    std::string out = "# fish completion of velscore\n";
    for (const CLI::App* command : CommandsOf(program)) {
        out += fmt::format("complete -c velscore -n __fish_use_subcommand -a {} -d {}\n",
                           command->get_name(), Quoted(command->get_description()));
        for (const CLI::Option* option : NamedOptions(*command)) {
            out += fmt::format("complete -c velscore -n '__fish_seen_subcommand_from {}'",
                               command->get_name());
            for (const std::string& name : option->get_snames()) out += " -s " + name;
            for (const std::string& name : option->get_lnames()) out += " -l " + name;
            if (!KindOf(*option).empty()) out += " -r";
            const auto words = WordsOf(*option);
            if (!words.empty()) {
                out += " -f -a " + Quoted(fmt::format("{}", fmt::join(words, " ")));
            } else if (!KindOf(*option).empty() && !TakesFile(*option)) {
                out += " -f";
            }
            out += " -d " + Quoted(option->get_description()) + "\n";
        }
    }
    return out;
}

void WritePages(const fs::path& folder, const fs::path& details)
{
    const CommandSet commands;
    const CLI::App& program = commands.Program();
    WriteText(folder / "man1/velscore.1", ProgramManPage(program, VELSCORE_VERSION));
    for (const std::string& name : commands.Names()) {
        WriteText(folder / "man1" / ("velscore-" + name + ".1"),
                  CommandManPage(*program.get_subcommand(name), VELSCORE_VERSION,
                                 TextOf(details / (name + ".roff"))));
    }
    WriteText(folder / "velscore.bash", BashCompletion(program));
    WriteText(folder / "_velscore", ZshCompletion(program));
    WriteText(folder / "velscore.fish", FishCompletion(program));
}

}  // namespace MCVelscore_850
