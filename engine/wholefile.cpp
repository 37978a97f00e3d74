#include "engine/wholefile.h"

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <optional>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/csvwriter.h"

namespace MCVelscore_850 {

namespace {

// Zero, or what writing failed with.
int WriteAll(int descriptor, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = ::write(descriptor, text.data(), text.size());
        if (count >= 0) {
            text.remove_prefix(static_cast<size_t>(count));
        } else if (errno == EPIPE) {
            return 0;
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

int CloseFile(int descriptor)
{
    // Some file systems report a full disk only here.
    return ::close(descriptor) != 0 && errno != EINTR ? errno : 0;
}

void WriteStandardOutput(std::string_view text)
{
    struct stat status {};
    const bool regular = ::fstat(STDOUT_FILENO, &status) == 0 && S_ISREG(status.st_mode);
    const int error = WriteAll(STDOUT_FILENO, text);
    if (error == 0) return;
    // What was there before us ends where the file did; one that can't be cut back stays torn.
    if (regular && ::ftruncate(STDOUT_FILENO, status.st_size) != 0) errno = error;
    RefuseOutput("standard output", error, 0);
}

void WriteDevice(const std::string& path, std::string_view text)
{
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) RefuseOutput(path, errno, 0);
    int error = WriteAll(descriptor, text);
    if (const int closed = CloseFile(descriptor); error == 0) error = closed;
    if (error != 0) RefuseOutput(path, error, 0);
}

// Where a link leads, so that the file is replaced and not the link.
std::string Resolved(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? real.get() : path;
}

}  // namespace

void WriteWholeFile(const std::string& path, std::string_view text)
{
    if (path == "-") {
        WriteStandardOutput(text);
        return;
    }
    struct stat status {};
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (exists && !S_ISREG(status.st_mode)) {
        WriteDevice(path, text);
        return;
    }
    // A file that must not be written must not be replaced either.
    if (exists && ::access(path.c_str(), W_OK) != 0) RefuseOutput(path, errno, 0);

    const std::string name = exists ? Resolved(path) : path;
    const std::string part = name + ".part" + std::to_string(::getpid());
    const int descriptor = ::open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) RefuseOutput(path, errno, 0);
    int error = WriteAll(descriptor, text);
    if (error == 0 && exists && ::fchmod(descriptor, status.st_mode & 07777) != 0) error = errno;
    if (const int closed = CloseFile(descriptor); error == 0) error = closed;
    if (error == 0 && ::rename(part.c_str(), name.c_str()) != 0) error = errno;
    if (error == 0) return;
    ::unlink(part.c_str());
    RefuseOutput(path, error, 0);
}

}  // namespace MCVelscore_850
