#ifndef VELSCORE_CLI_COMMANDPAGES_H
#define VELSCORE_CLI_COMMANDPAGES_H

#include <filesystem>
#include <string>

namespace CLI {
class App;
}

namespace MCVelscore_850 {

// What an installation tells of the command line, made of the definition that reads it: so neither
// can know an option that the other doesn't.

/// The manual page of one command in roff, velscore-score(1): name, synopsis, options by group, and
/// what --help says at its end. `details`, roff too, stands behind the options; may be empty.
std::string CommandManPage(const CLI::App& command, const std::string& version,
                           const std::string& details);
/// The manual page velscore(1), of the program with its commands.
std::string ProgramManPage(const CLI::App& program, const std::string& version);

// Completions of commands, options, their words and files.
std::string BashCompletion(const CLI::App& program);
std::string ZshCompletion(const CLI::App& program);
std::string FishCompletion(const CLI::App& program);

/// Writes the manual pages and completions of the whole command line into `folder`, which is made:
/// man1/velscore.1 and man1/velscore-NAME.1, velscore.bash, _velscore and velscore.fish. `details`
/// is a folder that may hold NAME.roff for the command NAME. Throws std::runtime_error or
/// std::filesystem::filesystem_error for what can't be written.
void WritePages(const std::filesystem::path& folder, const std::filesystem::path& details);

}  // namespace MCVelscore_850

#endif
