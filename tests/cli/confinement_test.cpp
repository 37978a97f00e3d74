// What a process may still do once it has opened its plug-in. Each attempt is made in a child,
// since there is no way back.

#include "cli/confinement.h"

#include <cerrno>
#include <functional>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/landlock.h>
#include <seccomp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "cli/documentarguments.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

// The exit code of a child that runs this.
int InChild(const std::function<int()>& run)
{
    const pid_t child = ::fork();
    if (child == 0) {
        int code = 255;
        try {
            code = run();
        } catch (...) {
        }
        ::_exit(code);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// 0, or errno of what an attempt answered.
int ErrorOf(long answer) { return answer < 0 ? errno : 0; }
int OpenError(const std::string& path, int flags)
{
    return ErrorOf(::open(path.c_str(), flags | O_CLOEXEC, 0600));
}

bool HasLandlock()
{
    return ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) > 0;
}

class ConfinementTest : public testing::Test {
protected:
    ConfinementTest()
    {
        for (const char* folder : {"in", "out", "linked", "secret"}) {
            ::mkdir(folder_.Path(folder).c_str(), 0700);
        }
        folder_.Write("in/model.pmml", "model");
        folder_.Write("in/cases.csv", "cases");
        folder_.Write("secret/key", "secret");
        folder_.Write("out/old.csv", "old");
        EXPECT_EQ(::symlink(Path("linked/scores.csv").c_str(), Path("out/link.csv").c_str()), 0);
    }

    std::string Path(const std::string& name) const { return folder_.Path(name); }
    NeededFiles Files() const
    {
        return {{Path("in/model.pmml"), Path("in/cases.csv"), Path("in/none.csv"), "-"},
                {Path("out/scores.csv"), Path("out/link.csv"), "/dev/null", "-"}};
    }
    // What an attempt answers in a confined process.
    int Confined(const std::function<int()>& attempt) const
    {
        return InChild([&] {
            ConfinedPlugin({}, Files());
            return attempt();
        });
    }

    const ScratchFolder folder_;
};

TEST_F(ConfinementTest, LeavesWhatARunNeeds)
{
    EXPECT_EQ(Confined([&] { return OpenError(Path("in/model.pmml"), O_RDONLY); }), 0);
    EXPECT_EQ(Confined([&] { return OpenError(Path("in/cases.csv"), O_RDONLY); }), 0);
    EXPECT_EQ(Confined([&] { return OpenError("/dev/null", O_WRONLY); }), 0);
    EXPECT_EQ(Confined([&] { return OpenError("/proc/self/status", O_RDONLY); }), 0);
    EXPECT_EQ(Confined([&] {
                  // An output gets its name when it is whole.
                  const int error =
                      OpenError(Path("out/scores.csv.part"), O_WRONLY | O_CREAT | O_EXCL);
                  return error != 0 ? error
                                    : ErrorOf(::rename(Path("out/scores.csv.part").c_str(),
                                                       Path("out/old.csv").c_str()));
              }),
              0);
    EXPECT_EQ(
        Confined([&] { return OpenError(Path("linked/scores.csv.part"), O_WRONLY | O_CREAT); }), 0);
    EXPECT_EQ(Confined([&] { return ErrorOf(::unlink(Path("out/old.csv").c_str())); }), 0);
}

TEST_F(ConfinementTest, LeavesNoOtherFile)
{
    ASSERT_TRUE(HasLandlock())
        << "the kernel has no Landlock, which this test needs: Linux 5.13 or "
           "newer, with landlock among the security modules (lsm=)";
    EXPECT_EQ(Confined([&] { return OpenError(Path("secret/key"), O_RDONLY); }), EACCES);
    EXPECT_EQ(Confined([&] { return OpenError(Path("secret"), O_RDONLY | O_DIRECTORY); }), EACCES);
    EXPECT_EQ(Confined([&] { return OpenError("/etc/passwd", O_RDONLY); }), EACCES);
    EXPECT_EQ(Confined([&] { return OpenError(Path("in/model.pmml"), O_WRONLY); }), EACCES);
    EXPECT_EQ(Confined([&] { return OpenError(Path("in/new"), O_WRONLY | O_CREAT); }), EACCES);
    EXPECT_EQ(Confined([&] { return ErrorOf(::unlink(Path("in/model.pmml").c_str())); }), EACCES);
    EXPECT_EQ(Confined([&] { return ErrorOf(::mkdir(Path("out/new").c_str(), 0700)); }), EACCES);
    EXPECT_EQ(Confined([&] {
                  return ErrorOf(::symlink(Path("secret").c_str(), Path("out/new").c_str()));
              }),
              EACCES);
    EXPECT_NE(
        Confined([&] {
            return ErrorOf(::rename(Path("secret/key").c_str(), Path("out/scores.csv").c_str()));
        }),
        0);
}

TEST_F(ConfinementTest, LeavesNoNetworkNoProgramsNoOtherProcess)
{
    EXPECT_EQ(Confined([] { return ErrorOf(::socket(AF_INET, SOCK_STREAM, 0)); }), EPERM);
    EXPECT_EQ(Confined([] { return ErrorOf(::socket(AF_UNIX, SOCK_DGRAM, 0)); }), EPERM);
    EXPECT_EQ(Confined([] {
                  char program[] = "/bin/true";
                  char* const arguments[] = {program, nullptr};
                  return ErrorOf(::execv(program, arguments));
              }),
              EPERM);
    EXPECT_EQ(Confined([] { return ErrorOf(::kill(::getppid(), 0)); }), EPERM);
    EXPECT_EQ(Confined([] { return ErrorOf(::syscall(SYS_io_uring_setup, 1, nullptr)); }), EPERM);
}

TEST_F(ConfinementTest, HoldsForNoPluginOfTheUser)
{
    DocumentArguments arguments;
    arguments.plugin = VELSCORE_TEST_PLUGIN;
    EXPECT_EQ(InChild([&] {
                  ConfinedPlugin(arguments, Files());
                  return OpenError(Path("secret/key"), O_RDONLY) +
                         ErrorOf(::socket(AF_UNIX, SOCK_DGRAM, 0));
              }),
              0);
}

// A kernel that knows neither, or a container that refuses both.
TEST_F(ConfinementTest, IsDoneWithoutWhereTheKernelRefuses)
{
    for (const int error : {ENOSYS, EPERM}) {
        EXPECT_EQ(InChild([&] {
                      scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
                      const auto answer = SCMP_ACT_ERRNO(static_cast<uint32_t>(error));
                      for (const int call :
                           {SCMP_SYS(landlock_create_ruleset), SCMP_SYS(landlock_add_rule),
                            SCMP_SYS(landlock_restrict_self), SCMP_SYS(seccomp)}) {
                          if (seccomp_rule_add(filter, answer, call, 0) != 0) return 254;
                      }
                      if (seccomp_load(filter) != 0) return 253;
                      seccomp_release(filter);
                      ConfinedPlugin({}, Files());
                      return OpenError(Path("secret/key"), O_RDONLY);
                  }),
                  0)
            << error;
    }
}

}  // namespace
}  // namespace MCVelscore_850
