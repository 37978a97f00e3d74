// Signals, each in a child process of its own: what one has raised stays raised.

#include "cli/stopsignals.h"

#include <csignal>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/cli/inprocess.h"

namespace MCVelscore_850 {
namespace {

TEST(StopSignals, RaiseAFlagOnceAndEndTheProgramThen)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        EXPECT_EQ(InChild([signal] {
                      CatchStopSignals();
                      if (StopRequested() || StopSignal() != 0) return 1;
                      std::raise(signal);
                      if (!StopRequested() || StopSignal() != signal) return 2;
                      return 0;
                  }),
                  0);
        EXPECT_EQ(InChild([signal] {
                      CatchStopSignals();
                      std::raise(signal);
                      std::raise(signal);
                      return 0;
                  }),
                  -1 - signal);
    }
}

// As nohup does it.
TEST(StopSignals, ThatWereIgnoredAtTheStartStayIgnored)
{
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_EQ(InChild([signal] {
                      std::signal(signal, SIG_IGN);
                      CatchStopSignals();
                      std::raise(signal);
                      std::raise(signal);
                      return StopRequested() || StopSignal() != 0 ? 1 : 0;
                  }),
                  0)
            << signal;
    }
}

TEST(StopSignals, OfWritesAreErrorsOfTheWrites)
{
    EXPECT_EQ(InChild([] {
                  IgnoreWriteSignals();
                  int ends[2];
                  if (::pipe(ends) != 0) return 1;
                  ::close(ends[0]);
                  return ::write(ends[1], "x", 1) < 0 && errno == EPIPE ? 0 : 2;
              }),
              0);
    EXPECT_EQ(InChild([] {
                  IgnoreWriteSignals();
                  std::raise(SIGXFSZ);
                  return 0;
              }),
              0);
}

}  // namespace
}  // namespace MCVelscore_850
