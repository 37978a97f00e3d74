#include "engine/tables/bytesource.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

constexpr int kStopPause = 100;  // milliseconds between two looks at the stop flag

constexpr uint64_t kSkipBytes = uint64_t{1} << 20;

using FileStatus = std::optional<struct stat>;

FileStatus StatusOf(int descriptor)
{
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 ? FileStatus(status) : std::nullopt;
}

FileStatus StatusOf(const std::string& path)
{
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? FileStatus(status) : std::nullopt;
}

bool AreSame(const FileStatus& one, const FileStatus& other)
{
    // A device can be read and written at once, /dev/null say.
    return one && other && S_ISREG(one->st_mode) && one->st_dev == other->st_dev &&
           one->st_ino == other->st_ino;
}

}  // namespace

ByteSource::~ByteSource() = default;

void ByteSource::Skip(uint64_t count)
{
    std::vector<char> passed(std::min<uint64_t>(count, kSkipBytes));
    while (count > 0) {
        const size_t read = Read(passed.data(), std::min<uint64_t>(count, passed.size()));
        if (read == 0) return;
        count -= read;
    }
}

InputFile::InputFile(const std::string& path, const StopFlag* stop, FailureKind content)
    : name_(NameOf(path)), stop_(stop), content_(content)
{
    descriptor_ = path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor_ < 0) Refuse(std::strerror(errno));
    const FileStatus status = StatusOf(descriptor_);
    if (status && S_ISREG(status->st_mode)) {
        regular_ = true;
        size_ = static_cast<uint64_t>(status->st_size);
    }
}

InputFile::~InputFile()
{
    if (descriptor_ > STDIN_FILENO) ::close(descriptor_);
}

size_t InputFile::Read(char* buffer, size_t size)
{
    for (;;) {
        if (IsStopped()) return 0;
        // The signal that sets the flag may reach another thread, and leave a read here waiting.
        if (!regular_ && stop_ != nullptr && !HasBytes(kStopPause)) continue;
        const ssize_t count = ::read(descriptor_, buffer, size);
        if (count >= 0) {
            consumed_.fetch_add(static_cast<uint64_t>(count), std::memory_order_relaxed);
            return static_cast<size_t>(count);
        }
        if (errno != EINTR) Refuse(std::strerror(errno));
    }
}

bool InputFile::IsStopped() const
{
    return stop_ != nullptr && stop_->load(std::memory_order_relaxed);
}

// True when a read answers at once: bytes, the end or an error.
bool InputFile::HasBytes(int milliseconds) const
{
    pollfd waiting{descriptor_, POLLIN, 0};
    const int ready = ::poll(&waiting, 1, milliseconds);
    return ready > 0 || (ready < 0 && errno != EINTR);
}

bool InputFile::HasChangedSize() const
{
    if (!regular_) return false;
    const FileStatus status = StatusOf(descriptor_);
    return status && static_cast<uint64_t>(status->st_size) != size_;
}

void InputFile::Skip(uint64_t count)
{
    if (!regular_) return ByteSource::Skip(count);
    if (::lseek(descriptor_, static_cast<off_t>(count), SEEK_CUR) < 0) {
        Refuse(std::strerror(errno));
    }
    consumed_.fetch_add(count, std::memory_order_relaxed);
}

void InputFile::Refuse(const std::string& reason) const
{
    const int code = content_ == FailureKind::Document ? kCannotRead : kCasesNotRead;
    throw Failure(content_, code, {name_, reason});
}

void RefuseUnreadable(const std::string& path)
{
    if (path == "-") return;
    int error = ::faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) == 0 ? 0 : errno;
    const FileStatus status = StatusOf(path);
    if (error == 0 && !status) error = errno;
    if (error == 0 && S_ISDIR(status->st_mode)) error = EISDIR;
    if (error == 0) return;
    throw Failure(FailureKind::Cases, kCasesNotRead,
                  {InputFile::NameOf(path), std::strerror(error)});
}

bool IsRegularFile(const std::string& path, uint64_t& size)
{
    const FileStatus status = path == "-" ? StatusOf(STDIN_FILENO) : StatusOf(path);
    if (!status || !S_ISREG(status->st_mode)) return false;
    size = static_cast<uint64_t>(status->st_size);
    return true;
}

bool IsSameFile(int descriptor, int other)
{
    return AreSame(StatusOf(descriptor), StatusOf(other));
}

bool IsSameFile(int descriptor, const std::string& path)
{
    return AreSame(StatusOf(descriptor), StatusOf(path));
}

bool IsSameFile(const std::string& path, const std::string& other)
{
    return AreSame(StatusOf(path), StatusOf(other));
}

}  // namespace MCVelscore_850
