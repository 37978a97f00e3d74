#include "cli/confinement.h"

#include <cstdint>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <linux/landlock.h>
#include <seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "cli/documentarguments.h"
#include "engine/documents/plugin.h"

namespace MCVelscore_850 {

namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;  // as the system allows

// Calls that a run has no use for.
constexpr int kRefusedCalls[] = {
    // the network
    SCMP_SYS(socket), SCMP_SYS(socketpair), SCMP_SYS(connect), SCMP_SYS(bind), SCMP_SYS(listen),
    SCMP_SYS(accept), SCMP_SYS(accept4),
    // other programs and processes
    SCMP_SYS(execve), SCMP_SYS(execveat), SCMP_SYS(fork), SCMP_SYS(vfork), SCMP_SYS(ptrace),
    SCMP_SYS(process_vm_readv), SCMP_SYS(process_vm_writev), SCMP_SYS(kcmp), SCMP_SYS(kill),
    SCMP_SYS(pidfd_open), SCMP_SYS(pidfd_getfd), SCMP_SYS(pidfd_send_signal),
    // who the process is, and what it sees
    SCMP_SYS(setuid), SCMP_SYS(setgid), SCMP_SYS(setreuid), SCMP_SYS(setregid), SCMP_SYS(setresuid),
    SCMP_SYS(setresgid), SCMP_SYS(setgroups), SCMP_SYS(capset), SCMP_SYS(chroot),
    SCMP_SYS(pivot_root), SCMP_SYS(mount), SCMP_SYS(umount2), SCMP_SYS(open_tree),
    SCMP_SYS(move_mount), SCMP_SYS(fsopen), SCMP_SYS(unshare), SCMP_SYS(setns),
    SCMP_SYS(open_by_handle_at),
    // the kernel's less travelled roads
    SCMP_SYS(bpf), SCMP_SYS(perf_event_open), SCMP_SYS(userfaultfd), SCMP_SYS(io_uring_setup),
    SCMP_SYS(init_module), SCMP_SYS(finit_module), SCMP_SYS(delete_module), SCMP_SYS(kexec_load),
    SCMP_SYS(kexec_file_load), SCMP_SYS(add_key), SCMP_SYS(request_key), SCMP_SYS(keyctl),
    SCMP_SYS(reboot), SCMP_SYS(swapon), SCMP_SYS(swapoff), SCMP_SYS(acct), SCMP_SYS(quotactl)};

// What the C library and TBB open after the start: encodings, the number of processors.
constexpr const char* kSystemFiles[] = {
    "/usr",       "/lib",          "/lib64",     "/etc/ld.so.cache",    "/etc/localtime",
    "/proc/self", "/proc/cpuinfo", "/proc/stat", "/sys/devices/system", "/sys/fs/cgroup",
    "/dev/null",  "/dev/urandom"};

constexpr uint64_t kRead = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr uint64_t kWrite = LANDLOCK_ACCESS_FS_WRITE_FILE;
// An output stands in a temporary file first, which an earlier run may have left.
constexpr uint64_t kReplace = LANDLOCK_ACCESS_FS_READ_FILE | kWrite | LANDLOCK_ACCESS_FS_MAKE_REG |
                              LANDLOCK_ACCESS_FS_REMOVE_FILE;
constexpr uint64_t kOfFiles = LANDLOCK_ACCESS_FS_READ_FILE | kWrite;  // of what is no folder
constexpr uint64_t kHandled =
    kRead | kReplace | LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
    LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_SOCK |
    LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK | LANDLOCK_ACCESS_FS_MAKE_SYM;

// A descriptor for the time of a scope.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (number_ >= 0) ::close(number_);
    }
    int Number() const { return number_; }

private:
    int number_;
};

// Files that a process may still open: Landlock's rules, which only ever get stricter.
class FileRules {
public:
    FileRules() : rules_(Made()) {}

    // False where the kernel has no Landlock.
    bool Exist() const { return rules_.Number() >= 0; }
    // What isn't there gets no rule: to open it fails as it would have.
    void Allow(const fs::path& path, uint64_t access) const
    {
        const Descriptor there(::open(path.c_str(), O_PATH | O_CLOEXEC));
        struct stat status {};
        if (there.Number() < 0 || ::fstat(there.Number(), &status) != 0) return;
        landlock_path_beneath_attr beneath{};
        beneath.allowed_access = S_ISDIR(status.st_mode) ? access : access & kOfFiles;
        beneath.parent_fd = there.Number();
        // Refused for a pipe, which needs no rule.
        ::syscall(SYS_landlock_add_rule, rules_.Number(), LANDLOCK_RULE_PATH_BENEATH, &beneath, 0);
    }
    void Apply() const { ::syscall(SYS_landlock_restrict_self, rules_.Number(), 0); }

private:
    static int Made()
    {
        landlock_ruleset_attr handled{};
        handled.handled_access_fs = kHandled;
        return static_cast<int>(
            ::syscall(SYS_landlock_create_ruleset, &handled, sizeof(handled), 0));
    }

    Descriptor rules_;
};

// The file that an output replaces is the one at the end of all links.
void AllowOutput(const FileRules& rules, fs::path path)
{
    std::error_code error;
    for (int link = 0; link < kMostLinks; ++link) {
        const fs::path folder = path.parent_path();
        rules.Allow(folder.empty() ? "." : folder, kReplace);
        const fs::path next = fs::read_symlink(path, error);
        if (error) break;  // no link
        path = folder / next;
    }
    rules.Allow(path, kWrite);  // a device
}

void ConfineFiles(const NeededFiles& files)
{
    const FileRules rules;
    if (!rules.Exist()) return;
    for (const char* path : kSystemFiles) rules.Allow(path, kRead);
    for (const std::string& path : files.read) {
        if (!path.empty()) rules.Allow(path, kRead);
    }
    for (const std::string& path : files.written) {
        if (path != "-") AllowOutput(rules, path);
    }
    rules.Apply();
}

void ConfineCalls()
{
    const std::unique_ptr<void, decltype(&seccomp_release)> filter(seccomp_init(SCMP_ACT_ALLOW),
                                                                   &seccomp_release);
    if (!filter) return;
    for (const int call : kRefusedCalls) {
        // Refused for a call that the machine hasn't.
        seccomp_rule_add(filter.get(), SCMP_ACT_ERRNO(EPERM), call, 0);
    }
    seccomp_load(filter.get());
}

}  // namespace

std::shared_ptr<const Plugin> ConfinedPlugin(const DocumentArguments& arguments,
                                             const NeededFiles& files)
{
    auto plugin = std::make_shared<const Plugin>(arguments.plugin);
    if (VELSCORE_CONFINED && arguments.plugin.empty() &&
        ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0) {
        ConfineFiles(files);
        ConfineCalls();
    }
    return plugin;
}

}  // namespace MCVelscore_850
