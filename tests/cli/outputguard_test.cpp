// Outputs that would go into an input or into each other, however both are named.

#include "cli/outputguard.h"

#include <filesystem>
#include <fstream>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/commands.h"
#include "tests/cli/inprocess.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

namespace fs = std::filesystem;

// What is refused; empty where nothing is.
template <class Guard>
std::string RefusalOf(Guard guard, const std::string& output, const std::string& other)
{
    try {
        guard(output, other);
    } catch (const UsageError& refusal) {
        return refusal.what();
    }
    return {};
}

class OutputGuard : public testing::Test {
protected:
    OutputGuard()
    {
        folder_.Write("a.csv", "x\n");
        folder_.Write("b.csv", "x\n");
        fs::create_directory(Path("sub"));
        fs::create_symlink("a.csv", Path("link.csv"));
        fs::create_symlink("new.csv", Path("dangling.csv"));
        fs::create_symlink("round.csv", Path("round.csv"));
        fs::create_hard_link(Path("a.csv"), Path("hard.csv"));
    }
    std::string Path(const std::string& name) const
    {
        return name == "-" || name.starts_with('/') ? name : folder_.Path(name);
    }

    const ScratchFolder folder_;
};

struct Pair {
    const char* one;
    const char* two;
    bool isRefused;
};

TEST_F(OutputGuard, TwoOutputsAreTwoFiles)
{
    const Pair kPairs[] = {
        {"a.csv", "b.csv", false},
        {"a.csv", "a.csv", true},
        {"a.csv", "sub/../a.csv", true},
        {"a.csv", "link.csv", true},
        {"a.csv", "hard.csv", true},
        {"link.csv", "hard.csv", true},
        // files that aren't there yet
        {"new.csv", "new.csv", true},
        {"new.csv", "sub/../new.csv", true},
        {"new.csv", "dangling.csv", true},
        {"new.csv", "newer.csv", false},
        {"none/new.csv", "none/new.csv", true},
        {"round.csv", "a.csv", false},
        // a device may be written to twice
        {"/dev/null", "/dev/null", false},
        {"-", "-", true},
        {"-", "/dev/stdout", true},
        {"/dev/stdout", "/dev/stdout", true},
        {"-", "a.csv", false},
        {"a.csv", "-", false},
    };
    for (const Pair& pair : kPairs) {
        SCOPED_TRACE(std::string(pair.one) + " " + pair.two);
        const std::string one = Path(pair.one);
        const std::string told = RefusalOf(RefuseSameOutput, one, Path(pair.two));
        const std::string name = one == "-" || one == "/dev/stdout" ? "standard output" : one;
        EXPECT_EQ(told,
                  pair.isRefused ? name + " is to be two outputs at once; name two files" : "");
    }
}

TEST_F(OutputGuard, AnInputIsNoOutput)
{
    const Pair kPairs[] = {
        {"a.csv", "b.csv", false},   {"a.csv", "a.csv", true},    {"sub/../a.csv", "a.csv", true},
        {"link.csv", "a.csv", true}, {"a.csv", "link.csv", true}, {"hard.csv", "a.csv", true},
        {"new.csv", "a.csv", false}, {"a.csv", "new.csv", false}, {"-", "a.csv", false},
        {"a.csv", "-", false},       {"-", "-", false},
    };
    for (const Pair& pair : kPairs) {
        SCOPED_TRACE(std::string(pair.one) + " " + pair.two);
        const std::string expected = pair.isRefused ? "the output is the input " + Path(pair.two) +
                                                          " itself; write to another file"
                                                    : "";
        EXPECT_EQ(RefusalOf(RefuseOutputOntoDocument, Path(pair.one), Path(pair.two)), expected);
        EXPECT_EQ(RefusalOf(RefuseOutputOntoTable, Path(pair.one), Path(pair.two)), expected);
    }
}

// Standard streams that are the file: what the shell's < and >> make.
TEST_F(OutputGuard, StandardStreamsAreTheFilesThatTheyLeadTo)
{
    const auto refusal = [&](auto guard, const char* output, const char* input, int redirected,
                             const std::string& file) {
        std::string told;
        WithStreams([&] {
            const int descriptor = ::open(file.c_str(), O_RDWR);
            ::dup2(descriptor, redirected);
            ::close(descriptor);
            told = RefusalOf(guard, Path(output), Path(input));
            return 0;
        });
        return told;
    };
    const std::string file = Path("a.csv");
    const auto itself = [](const std::string& name) {
        return "the output is the input " + name + " itself; write to another file";
    };
    for (const auto guard : {RefuseOutputOntoDocument, RefuseOutputOntoTable}) {
        EXPECT_EQ(refusal(guard, "-", "a.csv", STDOUT_FILENO, file), itself(file));
        EXPECT_EQ(refusal(guard, "-", "b.csv", STDOUT_FILENO, file), "");
        EXPECT_EQ(refusal(guard, "a.csv", "-", STDIN_FILENO, file), itself("standard input"));
        EXPECT_EQ(refusal(guard, "b.csv", "-", STDIN_FILENO, file), "");
    }
    // An output that the shell has emptied is an empty table, and is told as that.
    const std::string empty = folder_.Write("empty.csv", "");
    EXPECT_EQ(refusal(RefuseOutputOntoTable, "-", "empty.csv", STDOUT_FILENO, empty), "");
    EXPECT_EQ(refusal(RefuseOutputOntoDocument, "-", "empty.csv", STDOUT_FILENO, empty),
              itself(empty));
}

}  // namespace
}  // namespace MCVelscore_850
