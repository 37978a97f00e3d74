// What the README shows is what the command does: every "$ ./velscore" line in it is run from the
// root of the repository and compared with the lines that follow.

#include <fstream>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>

#include "tests/system/runcommand.h"

namespace MCVelscore_850 {
namespace {

struct Shown {
    std::vector<std::string> arguments;
    std::string output;
};

std::vector<Shown> ShownCommands()
{
    const std::string prompt = "$ ./velscore ";
    std::ifstream readme("README.md");
    std::vector<Shown> shown;
    bool open = false;
    for (std::string line; std::getline(readme, line);) {
        if (line.rfind(prompt, 0) == 0) {
            std::istringstream words(line.substr(prompt.size()));
            Shown next;
            for (std::string word; words >> word;) next.arguments.push_back(word);
            shown.push_back(next);
            open = true;
        } else if (line == "```") {
            open = false;
        } else if (open) {
            shown.back().output += line + "\n";
        }
    }
    return shown;
}

TEST(Readme, ShowsWhatTheCommandAnswers)
{
    const std::vector<Shown> commands = ShownCommands();
    ASSERT_EQ(commands.size(), 4u);
    for (const Shown& shown : commands) {
        const Finished result = RunVelscore(shown.arguments);
        EXPECT_EQ(result.exitCode, 0);
        // A terminal shows both streams, the closing line last.
        EXPECT_EQ(result.out + result.err, shown.output);
    }
}

// Every option that --help lists has its place in a table of docs/command.md.
TEST(Documentation, HasARowForEachOption)
{
    const std::string page = ReadFile("docs/command.md");
    const std::regex option(R"(\n +(?:-\w,)?(--[\w-]+))");
    for (const char* command : {"score", "curve", "explain"}) {
        const std::string help = RunVelscore({command, "--help"}).out;
        int count = 0;
        for (std::sregex_iterator each(help.begin(), help.end(), option), end; each != end;
             ++each, ++count) {
            const std::string name = (*each)[1];
            const std::regex row(R"(\n\| [^|\n]*`)" + name + "[ `]");
            EXPECT_TRUE(name == "--help" || std::regex_search(page, row)) << name;
        }
        EXPECT_GT(count, 15) << help;
    }
}

}  // namespace
}  // namespace MCVelscore_850
