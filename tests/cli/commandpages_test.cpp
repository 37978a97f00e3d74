// Manual pages and completions, of a small command line that has one option of each kind, and of
// the program's own.

#include "cli/commandpages.h"

#include <filesystem>

#include <gtest/gtest.h>
#include <CLI/CLI.hpp>

#include "cli/commandset.h"
#include "tests/cli/inprocess.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

namespace fs = std::filesystem;

class Pages : public testing::Test {
protected:
    Pages()
    {
        program_.set_version_flag("--version", "velscore 1.2");
        program_.footer("Example:\n  velscore weigh a");
        weigh_->add_option("THING", thing_, "What is weighed")->required();
        weigh_->add_option("MORE", more_, "What else is weighed");
        weigh_->add_option("-o,--out", out_, "Where it goes")->type_name("FILE");
        weigh_->add_option("--unit", unit_, "The unit: [g] or 'kg'")->type_name("g|kg");
        weigh_->add_option("--keep", keep_, "What is kept")->type_name("all|COLS");
        weigh_->add_flag("--quiet", quiet_, "No \\ word")->group("Reports");
        weigh_->footer(".nf is no request\n'quoted, nor this\nSee a-b");
    }

    CLI::App program_{"velscore weighs things.", "velscore"};
    CLI::App* weigh_ = program_.add_subcommand("weigh", "Weigh things");
    std::string thing_;
    std::vector<std::string> more_;
    std::string out_;
    std::string unit_;
    std::string keep_;
    bool quiet_ = false;
};

void ExpectParts(const std::string& text, std::initializer_list<const char*> parts)
{
    size_t at = 0;
    for (const char* part : parts) {
        const size_t found = text.find(part, at);
        EXPECT_NE(found, std::string::npos) << part << "\nin order in\n" << text;
        if (found != std::string::npos) at = found;
    }
}

TEST_F(Pages, OfACommandHaveItsArgumentsOptionsAndNotesInOrder)
{
    const std::string page = CommandManPage(*weigh_, "1.2", "");
    ExpectParts(page, {".TH velscore\\-weigh 1 \"\" \"velscore 1.2\" \"User Commands\"\n",
                       ".SH NAME\nvelscore\\-weigh \\- Weigh things\n",
                       ".SH SYNOPSIS\n\\fBvelscore weigh\\fR [\\fIOPTIONS\\fR] \\fITHING\\fR "
                       "[\\fIMORE\\fR...]\n",
                       ".SH ARGUMENTS\n.TP\n\\fITHING\\fR\nWhat is weighed\n", ".SH OPTIONS\n",
                       "\\fB\\-o\\fR, \\fB\\-\\-out\\fR \\fIFILE\\fR\nWhere it goes\n",
                       "\\fB\\-\\-unit\\fR \\fIg|kg\\fR\n",
                       ".SS Reports\n.TP\n\\fB\\-\\-quiet\\fR\nNo \\e word\n", ".SH NOTES\n.nf\n",
                       ".SH SEE ALSO\n\\fBvelscore\\fR(1)\n"});
    EXPECT_EQ(page.find(".SH DESCRIPTION"), std::string::npos) << page;
    // Lines of the text that begin as a request of roff would are none.
    EXPECT_EQ(page.find("\n.nf is no request"), std::string::npos) << page;
    EXPECT_EQ(page.find("\n'quoted"), std::string::npos) << page;
    ExpectParts(CommandManPage(*weigh_, "1.2", "The prose.\n"),
                {".SS Reports", ".SH DESCRIPTION\nThe prose.\n", ".SH NOTES"});
}

TEST_F(Pages, OfTheProgramListItsCommands)
{
    ExpectParts(
        ProgramManPage(program_, "1.2"),
        {".TH velscore 1 \"\" \"velscore 1.2\"", ".SH DESCRIPTION\nvelscore weighs things.\n",
         ".SH COMMANDS\n.TP\n\\fBweigh\\fR\nWeigh things; see \\fBvelscore\\-weigh\\fR(1)\n",
         "\\fB\\-\\-version\\fR",
         ".SH NOTES\n.nf\nExample:", ".SH SEE ALSO\n\\fBvelscore\\-weigh\\fR(1)\n"});
}

TEST_F(Pages, BashCompletesCommandsOptionsWordsAndFiles)
{
    ExpectParts(BashCompletion(program_),
                {"compgen -W 'weigh --help --version' -- \"$word\"",
                 "'weigh -o') COMPREPLY=($(compgen -f -- \"$word\")); return ;;",
                 "'weigh --out') COMPREPLY=($(compgen -f -- \"$word\")); return ;;",
                 "'weigh --unit') COMPREPLY=($(compgen -W 'g kg' -- \"$word\")); return ;;",
                 // any name may be given: there are no words to list
                 "'weigh --keep') COMPREPLY=(); return ;;",
                 "weigh) options='-h --help -o --out --unit --keep --quiet' ;;"});
    EXPECT_EQ(BashCompletion(program_).find("'weigh --quiet')"), std::string::npos);
}

TEST_F(Pages, ZshCompletesTheSame)
{
    ExpectParts(ZshCompletion(program_),
                {"        'weigh:Weigh things'\n", "        weigh)\n",
                 "'*-o[Where it goes]:FILE:_files'", "'*--out[Where it goes]:FILE:_files'",
                 "'*--unit[The unit\\: \\[g\\] or '\\''kg'\\'']:g|kg:(g kg)'",
                 "'*--keep[What is kept]:all|COLS: '", "'*--quiet[No \\\\ word]'"});
}

TEST_F(Pages, FishCompletesTheSame)
{
    const std::string of = "complete -c velscore -n '__fish_seen_subcommand_from weigh'";
    ExpectParts(FishCompletion(program_),
                {"complete -c velscore -n __fish_use_subcommand -a weigh -d 'Weigh things'\n",
                 (of + " -s o -l out -r -d 'Where it goes'\n").c_str(),
                 (of + " -l unit -r -f -a 'g kg' -d 'The unit: [g] or '\\''kg'\\'''\n").c_str(),
                 (of + " -l keep -r -f -d 'What is kept'\n").c_str(),
                 (of + " -l quiet -d 'No \\ word'\n").c_str()});
}

TEST(WritePages, WritesAPageForEachCommandAndThreeCompletions)
{
    const ScratchFolder folder;
    fs::create_directory(folder.Path("details"));
    folder.Write("details/score.roff", "The prose of score.\n");
    const fs::path pages = folder.Path("pages");
    WritePages(pages, folder.Path("details"));
    const CommandSet set;
    EXPECT_EQ(ReadFile(pages / "man1/velscore.1"), ProgramManPage(set.Program(), VELSCORE_VERSION));
    for (const std::string& name : set.Names()) {
        const std::string details = name == "score" ? "The prose of score.\n" : "";
        EXPECT_EQ(ReadFile(pages / "man1" / ("velscore-" + name + ".1")),
                  CommandManPage(*set.Program().get_subcommand(name), VELSCORE_VERSION, details))
            << name;
    }
    EXPECT_EQ(ReadFile(pages / "velscore.bash"), BashCompletion(set.Program()));
    EXPECT_EQ(ReadFile(pages / "_velscore"), ZshCompletion(set.Program()));
    EXPECT_EQ(ReadFile(pages / "velscore.fish"), FishCompletion(set.Program()));
}

TEST(WritePages, ThrowsForWhatCannotBeWritten)
{
    const ScratchFolder folder;
    folder.Write("file", "");
    EXPECT_THROW(WritePages(folder.Path("file"), folder.Path()), fs::filesystem_error);
    fs::create_directories(folder.Path("pages/velscore.bash"));
    EXPECT_THROW(WritePages(folder.Path("pages"), folder.Path()), std::runtime_error);
}

}  // namespace
}  // namespace MCVelscore_850
