#ifndef VELSCORE_CLI_COMMANDSET_H
#define VELSCORE_CLI_COMMANDSET_H

#include <memory>
#include <string>
#include <vector>

#include "cli/commands.h"

namespace CLI {
class App;
}

namespace MCVelscore_850 {

/// The command line's definition: the commands, their options and what they say of themselves.
/// Where parsed arguments go is part of it.
class CommandSet {
public:
    CommandSet();
    CommandSet(const CommandSet&) = delete;
    CommandSet& operator=(const CommandSet&) = delete;
    ~CommandSet();

    CLI::App& Program() { return *program_; }
    const CLI::App& Program() const { return *program_; }
    /// Of the commands, in the order in which help lists them.
    std::vector<std::string> Names() const;

    ScoreArguments score;
    ScoreArguments curve;
    CheckArguments check;
    InspectArguments inspect;
    VerifyArguments verify;
    ConvertArguments convert;
    DiffArguments diff;
    HelpArguments help;

private:
    std::unique_ptr<CLI::App> program_;
};

/// A sentence and what is suggested behind it, which may be empty.
std::string WithHint(const std::string& text, const std::string& hint);

}  // namespace MCVelscore_850

#endif
