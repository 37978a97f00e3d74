#include "engine/wholefile.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "engine/failure.h"
#include "host/messages.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

namespace fs = std::filesystem;

class WholeFile : public testing::Test {
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

TEST_F(WholeFile, IsMadeOrReplaced)
{
    const std::string path = Path("a");
    EXPECT_EQ(CodeOfWriting(path, "a longer text"), 0);
    EXPECT_EQ(Content(path), "a longer text");
    EXPECT_EQ(CodeOfWriting(path, "short"), 0);
    EXPECT_EQ(Content(path), "short");
    EXPECT_EQ(Files(), 1u);
}

TEST_F(WholeFile, KeepsTheModeOfTheFileThatItReplaces)
{
    const std::string path = Path("a");
    std::ofstream(path) << "old";
    ::chmod(path.c_str(), 0640);
    EXPECT_EQ(CodeOfWriting(path), 0);
    struct stat status {};
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
}

TEST_F(WholeFile, GoesWhereALinkLeads)
{
    std::ofstream(Path("file")) << "old";
    fs::create_symlink("file", Path("link"));
    EXPECT_EQ(CodeOfWriting(Path("link")), 0);
    EXPECT_TRUE(fs::is_symlink(Path("link")));
    EXPECT_EQ(Content(Path("file")), "new");
}

TEST_F(WholeFile, FoldersAreRefused)
{
    EXPECT_EQ(CodeOfWriting(folder_.Path()), kOutputNotWritten);
    EXPECT_EQ(CodeOfWriting(Path("none/a")), kOutputNotWritten);
    EXPECT_EQ(Files(), 0u);
}

TEST_F(WholeFile, ADeviceIsWrittenAsItIs)
{
    EXPECT_EQ(CodeOfWriting("/dev/null"), 0);
    EXPECT_EQ(CodeOfWriting("/dev/full"), kOutputNotWritten);
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

}  // namespace
}  // namespace MCVelscore_850
