// A library to be loaded before a program (LD_PRELOAD), under whose calls of files one fails:
//
//   VELSCORE_FAULTS_FOLDER  regarded are calls about files in this folder and the standard streams
//                           0 and 1; all others go through
//   VELSCORE_FAULT          CALL:N:ERROR or CALL:N+:ERROR: the Nth such call (from 1), or each from
//                           the Nth on, fails with that errno value. Of a read or a write 0 is no
//                           error but a short count: it moves a byte. With "CALL:N:0,ERROR" that
//                           happens, and all behind it fail, as on a disk that fills up
//   VELSCORE_FAULTS_LOG     has a line for each regarded call, "CALL PATH", and " FAILED" behind
//                           those that failed
//
// A close that fails has closed all the same, as the system's does.

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

enum Call {
    kAccess,
    kChmod,
    kChown,
    kClose,
    kCut,
    kFlush,
    kFopen,
    kOpen,
    kRead,
    kReadLink,
    kRename,
    kSeek,
    kStatus,
    kUnlink,
    kWrite,
    kCalls
};
constexpr const char* kNames[] = {"access", "chmod", "chown",  "close",  "cut",
                                  "flush",  "fopen", "open",   "read",   "readlink",
                                  "rename", "seek",  "status", "unlink", "write"};
static_assert(std::size(kNames) == kCalls);

std::atomic<long> counts[kCalls];

struct Wanted {
    int call = -1;
    long number = 0;
    bool lasts = false;
    int error = 0;
    int errorBehind = 0;  // of the calls after the Nth, which then fail too
};

Wanted ReadWanted()
{
    Wanted wanted;
    const char* text = std::getenv("VELSCORE_FAULT");
    if (text == nullptr) return wanted;
    for (int call = 0; call < kCalls; ++call) {
        const size_t length = std::strlen(kNames[call]);
        if (std::strncmp(text, kNames[call], length) != 0 || text[length] != ':') continue;
        char* end = nullptr;
        wanted.call = call;
        wanted.number = std::strtol(text + length + 1, &end, 10);
        wanted.lasts = *end == '+';
        wanted.error = static_cast<int>(std::strtol(end + (wanted.lasts ? 2 : 1), &end, 10));
        if (*end == ',') wanted.errorBehind = std::atoi(end + 1);
    }
    return wanted;
}

const Wanted& TheFault()
{
    static const Wanted wanted = ReadWanted();
    return wanted;
}

// The system's own function behind ours.
template <class Function>
Function* Next(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

bool IsRegarded(const char* path)
{
    const char* folder = std::getenv("VELSCORE_FAULTS_FOLDER");
    const size_t length = folder == nullptr ? 0 : std::strlen(folder);
    return length > 0 && std::strncmp(path, folder, length) == 0 && path[length] == '/';
}

// The log, or a negative number. By the kernel alone, since open() and write() are ours here; and
// as the program begins, since it soon opens its own files alone.
long OpenLog()
{
    const char* log = std::getenv("VELSCORE_FAULTS_LOG");
    if (log == nullptr) return -1;
    return ::syscall(SYS_openat, AT_FDCWD, log, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
}
const long logFile = OpenLog();

void Log(Call call, const char* path, bool fails)
{
    if (logFile < 0) return;
    char line[PATH_MAX + 64];
    const int size =
        std::snprintf(line, sizeof line, "%s %s%s\n", kNames[call], path, fails ? " FAILED" : "");
    ::syscall(SYS_write, logFile, line, size);
}

// What the call that fails answers; 0 for a short count.
thread_local int failure = 0;

// Counts a call; true when it is to fail.
bool Fails(Call call, const char* path)
{
    const Wanted& fault = TheFault();
    const long number = counts[call].fetch_add(1) + 1;
    const bool goesOn = fault.lasts || fault.errorBehind != 0;
    const bool fails =
        fault.call == call && (goesOn ? number >= fault.number : number == fault.number);
    const bool isBehind = number > fault.number && fault.errorBehind != 0;
    if (fails) failure = isBehind ? fault.errorBehind : fault.error;
    Log(call, path, fails);
    return fails;
}

bool PathFails(Call call, const char* path)
{
    return path != nullptr && IsRegarded(path) && Fails(call, path);
}

bool FileFails(Call call, int descriptor)
{
    char own[64];
    char path[PATH_MAX];
    std::snprintf(own, sizeof own, "/proc/self/fd/%d", descriptor);
    const long size = ::syscall(SYS_readlinkat, AT_FDCWD, own, path, sizeof path - 1);
    path[size > 0 ? size : 0] = '\0';
    if (!IsRegarded(path)) {
        if (descriptor != STDIN_FILENO && descriptor != STDOUT_FILENO) return false;
        std::snprintf(path, sizeof path, "standard %s", descriptor == 0 ? "input" : "output");
    }
    return Fails(call, path);
}

template <class Answer>
Answer Failed(Answer answer)
{
    errno = failure;
    return answer;
}

int FailedCall() { return Failed(-1); }

// What a call that moves bytes does when it fails: an error, or a byte.
template <class Move>
ssize_t MoveShort(size_t size, Move move)
{
    return failure != 0 ? Failed(ssize_t{-1}) : move(size == 0 ? size : 1);
}

}  // namespace

// A function of the system under its name: what it does where the fault says so, and else.
#define WRAPPED(name, answer, parameters, fails, failed, ...)     \
    extern "C" answer name parameters                             \
    {                                                             \
        static auto* const next = Next<answer parameters>(#name); \
        if (fails) return failed;                                 \
        return next(__VA_ARGS__);                                 \
    }

#define OF_A_PATH(name, call, parameters, ...) \
    WRAPPED(name, int, parameters, PathFails(call, path), FailedCall(), __VA_ARGS__)
#define OF_A_FILE(name, call, parameters, ...) \
    WRAPPED(name, int, parameters, FileFails(call, file), FailedCall(), __VA_ARGS__)

OF_A_PATH(access, kAccess, (const char* path, int mode), path, mode)
OF_A_PATH(faccessat, kAccess, (int at, const char* path, int mode, int flags), at, path, mode,
          flags)
OF_A_PATH(stat, kStatus, (const char* path, struct stat* status), path, status)
OF_A_PATH(stat64, kStatus, (const char* path, struct stat64* status), path, status)
OF_A_PATH(lstat, kStatus, (const char* path, struct stat* status), path, status)
OF_A_PATH(lstat64, kStatus, (const char* path, struct stat64* status), path, status)
OF_A_PATH(rename, kRename, (const char* path, const char* name), path, name)
OF_A_PATH(unlink, kUnlink, (const char* path), path)
OF_A_FILE(fchmod, kChmod, (int file, mode_t mode), file, mode)
OF_A_FILE(fchown, kChown, (int file, uid_t user, gid_t group), file, user, group)
OF_A_FILE(fdatasync, kFlush, (int file), file)
OF_A_FILE(fstat, kStatus, (int file, struct stat* status), file, status)
OF_A_FILE(fstat64, kStatus, (int file, struct stat64* status), file, status)
OF_A_FILE(fsync, kFlush, (int file), file)
OF_A_FILE(ftruncate, kCut, (int file, off_t size), file, size)
OF_A_FILE(ftruncate64, kCut, (int file, off64_t size), file, size)

WRAPPED(close, int, (int file), FileFails(kClose, file), (next(file), FailedCall()), file)
WRAPPED(fopen, FILE*, (const char* path, const char* mode), PathFails(kFopen, path),
        Failed<FILE*>(nullptr), path, mode)
WRAPPED(fopen64, FILE*, (const char* path, const char* mode), PathFails(kFopen, path),
        Failed<FILE*>(nullptr), path, mode)
WRAPPED(lseek, off_t, (int file, off_t offset, int from), FileFails(kSeek, file), Failed<off_t>(-1),
        file, offset, from)
WRAPPED(lseek64, off64_t, (int file, off64_t offset, int from), FileFails(kSeek, file),
        Failed<off64_t>(-1), file, offset, from)
WRAPPED(readlink, ssize_t, (const char* path, char* buffer, size_t size),
        PathFails(kReadLink, path), Failed<ssize_t>(-1), path, buffer, size)

#define MOVING(name, call, parameters, ...)                                                        \
    WRAPPED(                                                                                       \
        name, ssize_t, parameters, FileFails(call, file),                                          \
        MoveShort(size,                                                                            \
                  [&](size_t few) { return next(file, buffer, few __VA_OPT__(, ) __VA_ARGS__); }), \
        file, buffer, size __VA_OPT__(, ) __VA_ARGS__)

MOVING(read, kRead, (int file, void* buffer, size_t size))
MOVING(write, kWrite, (int file, const void* buffer, size_t size))
MOVING(pwrite, kWrite, (int file, const void* buffer, size_t size, off_t place), place)
MOVING(pwrite64, kWrite, (int file, const void* buffer, size_t size, off64_t place), place)

// The mode stands there only where a file may be made; nobody else looks at it.
#define OPENING(name)                                                             \
    extern "C" int name(const char* path, int flags, ...)                         \
    {                                                                             \
        static auto* const next = Next<OpenFunction>(#name);                      \
        va_list rest;                                                             \
        va_start(rest, flags);                                                    \
        const auto mode = va_arg(rest, mode_t);                                   \
        va_end(rest);                                                             \
        /* What only names a file asks nothing of it. */                          \
        if ((flags & O_PATH) == 0 && PathFails(kOpen, path)) return FailedCall(); \
        return next(path, flags, mode);                                           \
    }
using OpenFunction = int(const char*, int, ...);
OPENING(open)
OPENING(open64)
