#include "engine/tables/outputfile.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/messages/failure.h"
#include "host/messages/messages.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

namespace fs = std::filesystem;

class OutputFileTest : public testing::Test {
protected:
    std::string Path(const std::string& name) const { return folder_.Path(name); }
    static std::string Content(const std::string& path)
    {
        std::stringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
    size_t Files() const
    {
        return static_cast<size_t>(
            std::distance(fs::directory_iterator(folder_.Path()), fs::directory_iterator()));
    }
    static int CodeOfWriting(const std::string& path, const std::string& text = "new")
    {
        try {
            WriteWholeFile(path, text);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Kind(), FailureKind::Output);
            EXPECT_NE(std::string(failure.what()).find(path), std::string::npos) << failure.what();
            return failure.Code();
        }
        return 0;
    }

    ScratchFolder folder_;
};

// To finish it once more does nothing.
TEST_F(OutputFileTest, IsFinishedOnce)
{
    const std::string path = Path("a");
    for (const char* text : {"first", "second"}) {
        OutputFile file(path);
        EXPECT_EQ(file.Write(text), 0);
        file.Finish();
        file.Finish();
        EXPECT_EQ(Content(path), text);
        EXPECT_EQ(Files(), 1U);
    }
}

TEST_F(OutputFileTest, IsMadeOrReplaced)
{
    const std::string path = Path("a");
    EXPECT_EQ(CodeOfWriting(path, "a longer text"), 0);
    EXPECT_EQ(Content(path), "a longer text");
    EXPECT_EQ(CodeOfWriting(path, "short"), 0);
    EXPECT_EQ(Content(path), "short");
    EXPECT_EQ(Files(), 1u);
}

TEST_F(OutputFileTest, KeepsTheModeOfTheFileThatItReplaces)
{
    const std::string path = Path("a");
    std::ofstream(path) << "old";
    ::chmod(path.c_str(), 0640);
    EXPECT_EQ(CodeOfWriting(path), 0);
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST_F(OutputFileTest, GoesWhereLinksLead)
{
    folder_.Write("old", "old");
    const struct {
        std::vector<std::pair<std::string, std::string>> links;  // and what each leads to
        const char* file;
    } kRows[] = {
        {{{"link", "old"}}, "old"},
        {{{"first", "second"}, {"second", Path("nothing yet")}}, "nothing yet"},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.file);
        for (const auto& [link, target] : row.links) fs::create_symlink(target, Path(link));
        EXPECT_EQ(CodeOfWriting(Path(row.links.front().first)), 0);
        for (const auto& [link, target] : row.links) EXPECT_TRUE(fs::is_symlink(Path(link)));
        EXPECT_EQ(Content(Path(row.file)), "new");
    }
}

TEST_F(OutputFileTest, LinksInACircleAreRefused)
{
    fs::create_symlink("a", Path("b"));
    fs::create_symlink("b", Path("a"));
    EXPECT_EQ(CodeOfWriting(Path("a")), kOutputNotWritten);
    EXPECT_EQ(Files(), 2u);
}

TEST_F(OutputFileTest, HasItsNameOnlyOnceItIsWhole)
{
    const std::string path = folder_.Write("a", "old");
    OutputFile file(path);
    EXPECT_EQ(file.Write("new"), 0);
    EXPECT_EQ(Content(path), "old");
    EXPECT_EQ(Files(), 2u);
    file.Finish();
    EXPECT_EQ(Content(path), "new");
    EXPECT_EQ(Files(), 1u);
}

TEST_F(OutputFileTest, LeavesNothingWhenItIsGivenUp)
{
    const std::string path = folder_.Write("a", "old");
    {
        OutputFile file(path);
        EXPECT_EQ(file.Write("new"), 0);
    }
    EXPECT_EQ(Content(path), "old");
    EXPECT_EQ(Files(), 1u);
}

TEST_F(OutputFileTest, CanBeLeftBesideTheOldOneAndIsNeverOverwritten)
{
    const std::string path = folder_.Write("a", "old");
    std::vector<std::string> left;
    for (const char* text : {"first", "second"}) {
        OutputFile file(path);
        EXPECT_EQ(file.Write(text), 0);
        left.push_back(file.Leave());
    }
    EXPECT_EQ(Content(path), "old");
    EXPECT_EQ(Content(left[0]), "first");
    EXPECT_EQ(Content(left[1]), "second");
}

TEST_F(OutputFileTest, NobodyReadsAPrivateFileWhileItIsWritten)
{
    const std::string path = folder_.Write("a", "old");
    ::chmod(path.c_str(), 0600);
    OutputFile file(path);
    const std::string part = file.Leave();
    EXPECT_EQ(fs::status(part).permissions() & fs::perms::all, fs::perms(0600));
}

TEST_F(OutputFileTest, AnOpenDescriptorIsWrittenOnWhereItStands)
{
    const std::string path = folder_.Write("a", "old\n");
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    ASSERT_GE(descriptor, 0);
    fs::create_symlink("/dev/fd/" + std::to_string(descriptor), Path("link"));
    for (const std::string& name : {"/dev/fd/" + std::to_string(descriptor),
                                    "/proc/self/fd/" + std::to_string(descriptor), Path("link")}) {
        EXPECT_EQ(CodeOfWriting(name, "new\n"), 0);
    }
    ::close(descriptor);
    EXPECT_EQ(Content(path), "old\nnew\nnew\nnew\n");
    EXPECT_EQ(Files(), 2u);
}

// What stood there before stays, whether the next byte went to the end or to where the file stood.
TEST_F(OutputFileTest, AnOpenDescriptorIsCutBackToItsOwnBytes)
{
    for (const bool appends : {true, false}) {
        const std::string path = folder_.Write("a", "old\n");
        const int descriptor =
            ::open(path.c_str(), O_WRONLY | O_CLOEXEC | (appends ? O_APPEND : 0));
        ASSERT_GE(descriptor, 0);
        if (!appends) {
            ASSERT_EQ(::lseek(descriptor, 2, SEEK_SET), 2);
        }
        OutputFile file("/dev/fd/" + std::to_string(descriptor));
        EXPECT_EQ(file.Write("whole\nhal"), 0);
        file.CutTo(6);
        file.Finish();
        ::close(descriptor);
        EXPECT_EQ(Content(path), appends ? "old\nwhole\n" : "olwhole\n");
    }
}

TEST_F(OutputFileTest, LackOfRoomAloneAsksForRoom)
{
    struct Sample {
        int error;
        bool room;
    };
    for (const Sample& sample :
         {Sample{ENOSPC, true}, Sample{EDQUOT, true}, Sample{EFBIG, true}, Sample{EISDIR, false},
          Sample{ENOENT, false}, Sample{EACCES, false}, Sample{EBADF, false}}) {
        try {
            RefuseOutput("a", sample.error);
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.Remedy().find("Make room") != std::string::npos, sample.room)
                << sample.error;
            EXPECT_EQ(std::string(failure.what()).find("rows"), std::string::npos);
        }
    }
}

TEST_F(OutputFileTest, WhatNamesNoFileIsRefused)
{
    for (const std::string& name : {std::string(), folder_.Path(), Path("none/a")}) {
        EXPECT_EQ(CodeOfWriting(name), kOutputNotWritten) << name;
    }
    EXPECT_EQ(Files(), 0u);
}

TEST_F(OutputFileTest, ADeviceIsWrittenAsItIs)
{
    EXPECT_EQ(CodeOfWriting("/dev/null"), 0);
    EXPECT_EQ(CodeOfWriting("/dev/full"), kOutputFull);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

}  // namespace
}  // namespace MCVelscore_850
