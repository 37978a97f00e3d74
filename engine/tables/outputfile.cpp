#include "engine/tables/outputfile.h"

#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/messages/failure.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;  // as the system allows
constexpr int kMostParts = 1000;

// The descriptor of ours that a path such as /proc/self/fd/3 names; -1 for any other path. It is
// written as it is: opened anew by its path, a file would begin at its first byte again.
int DescriptorNamedBy(const fs::path& path)
{
    std::error_code error;
    const fs::path folder = fs::canonical(path.parent_path(), error);
    if (error || folder != "/proc/" + std::to_string(::getpid()) + "/fd") return -1;
    const std::string name = path.filename();
    int descriptor = -1;
    const auto read = std::from_chars(name.data(), name.data() + name.size(), descriptor);
    return read.ec == std::errc() && read.ptr == name.data() + name.size() ? descriptor : -1;
}

// Where the next byte goes: at the end for a file opened for appending, else at its offset.
uint64_t WritePosition(int descriptor, const struct stat& status)
{
    const int flags = ::fcntl(descriptor, F_GETFL);
    if (flags >= 0 && (flags & O_APPEND) != 0) return static_cast<uint64_t>(status.st_size);
    const off_t offset = ::lseek(descriptor, 0, SEEK_CUR);
    return offset < 0 ? 0 : static_cast<uint64_t>(offset);
}

// Puts a file on its disk, so that a loss of power can't leave an empty file where a whole one was.
// Zero, or the errno value; file systems that can't do it are left to themselves.
int Flush(int descriptor)
{
    while (::fsync(descriptor) != 0) {
        if (errno == EINVAL || errno == ENOTSUP || errno == EROFS) return 0;
        if (errno != EINTR) return errno;
    }
    return 0;
}

}  // namespace

OutputFile::OutputFile(const std::string& path) : name_(path == "-" ? "standard output" : path)
{
    if (path == "-") {
        descriptor_ = STDOUT_FILENO;
        owned_ = false;
    } else {
        Open(path, {});
    }
    FindBegin();
}

OutputFile::OutputFile(const std::string& path, const std::string& part, uint64_t size)
    : name_(path)
{
    Open(path, part);
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode) ||
        static_cast<uint64_t>(status.st_size) < size) {
        RefuseOutput(part, EINVAL);
    }
    if (::ftruncate(descriptor_, static_cast<off_t>(size)) != 0 ||
        ::lseek(descriptor_, 0, SEEK_END) < 0) {
        RefuseOutput(part, errno);
    }
    FindBegin();
}

// Where the first byte goes in a regular file.
void OutputFile::FindBegin()
{
    struct stat status {};
    if (::fstat(descriptor_, &status) == 0 && S_ISREG(status.st_mode)) {
        regular_ = true;
        begin_ = WritePosition(descriptor_, status);
    }
}

OutputFile::~OutputFile()
{
    Close();
    if (!part_.empty()) ::unlink(part_.c_str());
}

void OutputFile::Open(const std::string& path, const std::string& part)
{
    if (path.empty()) RefuseOutput(name_, ENOENT);
    fs::path target = path;
    std::error_code error{};
    for (int link = 0; link < kMostLinks; ++link) {
        if (const int named = DescriptorNamedBy(target); named >= 0) {
            descriptor_ = ::fcntl(named, F_DUPFD_CLOEXEC, 0);
            if (descriptor_ < 0) RefuseOutput(name_, errno);
            return;
        }
        const fs::path next = fs::read_symlink(target, error);
        if (error) break;  // no link
        target = target.parent_path() / next;
    }
    struct stat status {};
    const bool exists = ::stat(target.c_str(), &status) == 0;
    if (!exists && errno != ENOENT) RefuseOutput(name_, errno);
    if (exists && !S_ISREG(status.st_mode)) {
        descriptor_ = ::open(target.c_str(), O_WRONLY | O_CLOEXEC);
        if (descriptor_ < 0) RefuseOutput(name_, errno);
        return;
    }
    // A file that must not be written must not be replaced either.
    if (exists && ::access(target.c_str(), W_OK) != 0) RefuseOutput(name_, errno);
    if (exists) mode_ = status.st_mode & 07777;
    target_ = target;
    if (part.empty()) {
        MakePart();
    } else {
        OpenPart(part);
    }
    if (exists) {  // but only root can give a file away
        [[maybe_unused]] const int given = ::fchown(descriptor_, status.st_uid, status.st_gid);
    }
}

// A temporary file beside the target, of a name that nobody has: not even an earlier run's, whose
// rows may still be wanted.
void OutputFile::MakePart()
{
    const mode_t mode = mode_ ? *mode_ & 0777 : 0666;
    const std::string stem = target_ + ".part" + std::to_string(::getpid());
    for (int i = 0; i < kMostParts; ++i) {
        // Before there is a file: a name for which there is no memory would leave it behind.
        part_ = i == 0 ? stem : stem + "-" + std::to_string(i);
        descriptor_ = ::open(part_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
        if (descriptor_ >= 0) return;
        if (errno != EEXIST) break;
    }
    RefuseOutput(name_, errno);
}

void OutputFile::OpenPart(const std::string& part)
{
    part_ = part;
    descriptor_ = ::open(part.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC);
    if (descriptor_ < 0) RefuseOutput(part, errno);
}

int OutputFile::Write(std::string_view bytes)
{
    while (!bytes.empty() && !closed_) {
        const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
        if (count >= 0) {
            written_ += static_cast<uint64_t>(count);
            bytes.remove_prefix(static_cast<size_t>(count));
        } else if (errno == EPIPE) {
            closed_ = true;
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

void OutputFile::CutTo(uint64_t size)
{
    // A file that can't be cut back keeps a torn end.
    if (regular_ && descriptor_ >= 0 &&
        ::ftruncate(descriptor_, static_cast<off_t>(begin_ + size)) == 0) {
        written_ = size;
    }
}

// Zero, or what failed: some file systems report a full disk only here.
int OutputFile::Close()
{
    if (descriptor_ < 0 || !owned_) return 0;
    const int descriptor = descriptor_;
    descriptor_ = -1;
    return ::close(descriptor) != 0 && errno != EINTR ? errno : 0;
}

void OutputFile::Finish()
{
    if (mode_ && descriptor_ >= 0 && ::fchmod(descriptor_, *mode_) != 0) {
        RefuseOutput(name_, errno);
    }
    if (!part_.empty()) {
        if (const int error = Flush(descriptor_); error != 0) RefuseOutput(name_, error);
    }
    if (const int error = Close(); error != 0) RefuseOutput(name_, error);
    if (part_.empty()) return;
    if (::rename(part_.c_str(), target_.c_str()) != 0) RefuseOutput(name_, errno);
    part_.clear();
}

std::string OutputFile::Leave()
{
    Close();
    return std::exchange(part_, {});
}

void WriteWholeFile(const std::string& path, std::string_view text)
{
    OutputFile file(path);
    if (const int error = file.Write(text); error != 0) {
        file.CutTo(0);
        RefuseOutput(file.Name(), error);
    }
    file.Finish();
}

void RefuseOutput(const std::string& name, int error)
{
    const bool full = error == ENOSPC || error == EDQUOT || error == EFBIG;
    throw Failure(FailureKind::Output, full ? kOutputFull : kOutputNotWritten,
                  {name, std::strerror(error)});
}

}  // namespace MCVelscore_850
