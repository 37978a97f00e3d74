// Writes what an installation tells of the command line into a folder: manual pages and
// completions.
//
//   velscore_pages FOLDER DETAILS
//
// DETAILS is a folder that may hold a file NAME.roff with the prose of the command NAME.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include <CLI/CLI.hpp>

#include "cli/commandpages.h"
#include "cli/commandset.h"

namespace {

using namespace MCVelscore_850;

std::string TextOf(const std::filesystem::path& path)
{
    std::ifstream file(path);
    std::ostringstream text;
    if (file) text << file.rdbuf();
    return text.str();
}

void Write(const std::filesystem::path& path, const std::string& text)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path);
    file << text;
    if (!file.flush()) throw std::runtime_error("can't write " + path.string());
}

}  // namespace

int main(int count, char** arguments)
{
    if (count != 3) {
        std::cerr << "velscore_pages FOLDER DETAILS\n";
        return 1;
    }
    const std::filesystem::path folder = arguments[1];
    const std::filesystem::path details = arguments[2];
    const CommandSet commands;
    const CLI::App& program = commands.Program();
    try {
        Write(folder / "man1/velscore.1", ProgramManPage(program, VELSCORE_VERSION));
        for (const std::string& name : commands.Names()) {
            Write(folder / "man1" / ("velscore-" + name + ".1"),
                  CommandManPage(*program.get_subcommand(name), VELSCORE_VERSION,
                                 TextOf(details / (name + ".roff"))));
        }
        Write(folder / "velscore.bash", BashCompletion(program));
        Write(folder / "_velscore", ZshCompletion(program));
        Write(folder / "velscore.fish", FishCompletion(program));
    } catch (const std::exception& failure) {
        std::cerr << "velscore_pages: " << failure.what() << '\n';
        return 1;
    }
    return 0;
}
