#include "tests/cli/inprocess.h"

#include <array>
#include <cstdio>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include "cli/commandline.h"
#include "cli/console.h"

namespace MCVelscore_850 {

namespace {

// Stands for a standard stream as long as it lives.
class Stream {
public:
    Stream(int stream, const std::string& bytes)
        : stream_(stream), before_(::dup(stream)), file_(::memfd_create("stream", MFD_CLOEXEC))
    {
        EXPECT_EQ(::write(file_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
        ::lseek(file_, 0, SEEK_SET);
        ::dup2(file_, stream_);
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream()
    {
        ::dup2(before_, stream_);
        ::close(before_);
        ::close(file_);
    }
    std::string Text() const
    {
        std::string text(static_cast<size_t>(::lseek(file_, 0, SEEK_END)), '\0');
        EXPECT_EQ(::pread(file_, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
        return text;
    }

private:
    int stream_;
    int before_;
    int file_;
};

bool ReadsDocuments(const std::string& command)
{
    constexpr std::array kCommands{"score",  "curve",   "explain", "check",
                                   "verify", "inspect", "convert", "diff"};
    return std::find(kCommands.begin(), kCommands.end(), command) != kCommands.end();
}

}  // namespace

Answered WithStreams(const std::function<int()>& work, const std::string& input)
{
    // What the test itself has printed stays in front.
    std::fflush(stdout);
    const Stream in(STDIN_FILENO, input);
    const Stream out(STDOUT_FILENO, "");
    const Stream err(STDERR_FILENO, "");
    Answered answered;
    answered.exitCode = work();
    answered.out = out.Text();
    answered.err = err.Text();
    return answered;
}

Answered RunInProcess(std::vector<std::string> arguments, const std::string& input)
{
    if (!arguments.empty() && ReadsDocuments(arguments.front())) {
        arguments.insert(arguments.begin() + 1, {"--plugin", VELSCORE_TEST_PLUGIN});
    }
    std::vector<const char*> all{"velscore"};
    for (const std::string& each : arguments) all.push_back(each.c_str());
    return WithStreams(
        [&] {
            Console console;
            return RunProgram(static_cast<int>(all.size()), all.data(), console);
        },
        input);
}

int InChild(const std::function<int()>& work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        int code = 255;
        try {
            code = work();
        } catch (...) {
        }
        ::_exit(code);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1 - WTERMSIG(status);
}

std::string ReadFile(const std::string& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

}  // namespace MCVelscore_850
