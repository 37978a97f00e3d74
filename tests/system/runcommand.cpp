#include "tests/system/runcommand.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace MCVelscore_850 {

namespace {

struct Pipe {
    int read = -1;
    int write = -1;
};

Pipe MakePipe()
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    return {ends[0], ends[1]};
}

void CloseEnd(int& descriptor)
{
    if (descriptor >= 0) ::close(descriptor);
    descriptor = -1;
}

std::vector<char*> Pointers(const std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

// Appends what can be read now; false at the end.
bool Drain(int descriptor, std::string& to)
{
    char buffer[1 << 16];
    const ssize_t count = ::read(descriptor, buffer, sizeof buffer);
    if (count > 0) to.append(buffer, static_cast<size_t>(count));
    return count > 0 || (count < 0 && errno == EINTR);
}

std::vector<std::string> WithCommand(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), VELSCORE_COMMAND);
    return arguments;
}

}  // namespace

RunningVelscore::RunningVelscore(std::vector<std::string> arguments)
{
    Start(WithCommand(std::move(arguments)), {});
}

RunningVelscore::~RunningVelscore()
{
    CloseEnd(in_);
    CloseEnd(out_);
    CloseEnd(err_);
    if (child_ > 0) {
        ::kill(child_, SIGKILL);
        ::waitpid(child_, nullptr, 0);
    }
}

void RunningVelscore::Start(const std::vector<std::string>& arguments,
                            const std::vector<std::string>& environment)
{
    std::signal(SIGPIPE, SIG_IGN);
    Pipe in = MakePipe();
    Pipe out = MakePipe();
    Pipe err = MakePipe();
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, in.read, STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, out.write, STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, err.write, STDERR_FILENO);
    // A child gets the usual handling of signals, whatever this process ignores.
    posix_spawnattr_t attributes;
    ::posix_spawnattr_init(&attributes);
    sigset_t usual;
    sigemptyset(&usual);
    sigaddset(&usual, SIGPIPE);
    sigaddset(&usual, SIGINT);
    ::posix_spawnattr_setsigdefault(&attributes, &usual);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);

    std::vector<std::string> variables(environment);
    for (char** variable = environ; *variable != nullptr; ++variable)
        variables.push_back(*variable);
    const int error = ::posix_spawn(&child_, arguments[0].c_str(), &actions, &attributes,
                                    Pointers(arguments).data(), Pointers(variables).data());
    ::posix_spawn_file_actions_destroy(&actions);
    ::posix_spawnattr_destroy(&attributes);
    CloseEnd(in.read);
    CloseEnd(out.write);
    CloseEnd(err.write);
    in_ = in.write;
    out_ = out.read;
    err_ = err.read;
    if (error != 0) throw std::runtime_error(arguments[0] + ": " + std::strerror(error));
}

bool RunningVelscore::Write(const std::string& text)
{
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(in_, text.data() + written, text.size() - written);
        if (count >= 0) {
            written += static_cast<size_t>(count);
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

void RunningVelscore::CloseInput() { CloseEnd(in_); }

void RunningVelscore::AwaitInputTaken() const
{
    for (int waiting = 1; waiting > 0; ::usleep(1000)) {
        if (::ioctl(in_, FIONREAD, &waiting) != 0) return;
    }
}

std::string RunningVelscore::ReadOutput(size_t size)
{
    std::string text;
    while (text.size() < size && Drain(out_, text)) {
    }
    return text;
}

void RunningVelscore::CloseOutput() { CloseEnd(out_); }

void RunningVelscore::Signal(int signal) const { ::kill(child_, signal); }

// From the child's own page: what wait4() tells of a spawned child includes the parent's memory.
long RunningVelscore::PeakKilobytes() const
{
    constexpr std::string_view kLabel = "VmHWM:";
    std::ifstream status("/proc/" + std::to_string(child_) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(kLabel)) return std::stol(line.substr(kLabel.size()));
    }
    return -1;
}

Finished RunningVelscore::Finish()
{
    while (out_ >= 0 || err_ >= 0) {
        pollfd waiting[] = {{out_, POLLIN, 0}, {err_, POLLIN, 0}};
        ::poll(waiting, 2, -1);
        if (waiting[0].revents != 0 && !Drain(out_, finished_.out)) CloseEnd(out_);
        if (waiting[1].revents != 0 && !Drain(err_, finished_.err)) CloseEnd(err_);
    }
    int status = 0;
    while (::waitpid(child_, &status, 0) < 0 && errno == EINTR) {
    }
    child_ = -1;
    if (WIFEXITED(status)) finished_.exitCode = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) finished_.signal = WTERMSIG(status);
    return finished_;
}

Finished RunProgram(const std::vector<std::string>& arguments, const std::string& input,
                    const std::vector<std::string>& environment)
{
    RunningVelscore running;
    running.Start(arguments, environment);
    // All three pipes at once: a child that writes while we write must not wait for us.
    size_t written = 0;
    ::fcntl(running.in_, F_SETFL, O_NONBLOCK);
    while (running.in_ >= 0) {
        if (written == input.size()) {
            running.CloseInput();
            break;
        }
        pollfd waiting[] = {
            {running.in_, POLLOUT, 0}, {running.out_, POLLIN, 0}, {running.err_, POLLIN, 0}};
        ::poll(waiting, 3, -1);
        if (waiting[1].revents != 0 && !Drain(running.out_, running.finished_.out))
            CloseEnd(running.out_);
        if (waiting[2].revents != 0 && !Drain(running.err_, running.finished_.err))
            CloseEnd(running.err_);
        if (waiting[0].revents == 0) continue;
        const ssize_t count = ::write(running.in_, input.data() + written, input.size() - written);
        if (count >= 0) {
            written += static_cast<size_t>(count);
        } else if (errno != EAGAIN && errno != EINTR) {
            running.CloseInput();  // the child needs no more
        }
    }
    return running.Finish();
}

Finished RunVelscore(std::vector<std::string> arguments, const std::string& input,
                     const std::vector<std::string>& environment)
{
    return RunProgram(WithCommand(std::move(arguments)), input, environment);
}

std::string ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string DataFile(const std::string& name)
{
    return std::string(VELSCORE_TEST_DATA) + "/" + name;
}

}  // namespace MCVelscore_850
