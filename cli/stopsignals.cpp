#include "cli/stopsignals.h"

#include <csignal>

#include <signal.h>

namespace MCVelscore_850 {

namespace {

StopFlag stopRequested{false};
std::atomic<int> stopSignal{0};

extern "C" void RaiseStopFlag(int signal)
{
    stopSignal.store(signal, std::memory_order_relaxed);
    stopRequested.store(true, std::memory_order_relaxed);
}

}  // namespace

void CatchStopSignals()
{
    struct sigaction action {};
    action.sa_handler = RaiseStopFlag;
    sigemptyset(&action.sa_mask);
    // Without SA_RESTART a read that waits is interrupted, and the run ends at once.
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction previous {};
        // A program started with a signal ignored, by nohup say, leaves it so.
        if (::sigaction(signal, nullptr, &previous) == 0 && previous.sa_handler == SIG_IGN)
            continue;
        ::sigaction(signal, &action, nullptr);
    }
}

void IgnoreWriteSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

const StopFlag& StopRequested() { return stopRequested; }

int StopSignal() { return stopSignal.load(std::memory_order_relaxed); }

}  // namespace MCVelscore_850
