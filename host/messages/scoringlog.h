#ifndef VELSCORE_HOST_MESSAGES_SCORINGLOG_H
#define VELSCORE_HOST_MESSAGES_SCORINGLOG_H

#include <atomic>
#include <functional>
#include <string_view>

#include "host/export.h"

namespace MCVelscore_850 {

/// The trace of the host and its plug-ins. Silent until a level above 0 is set.
///
/// Levels  1 entry, exit and case codes; 2 facts of a document as well.
/// Threads the level may be read from any; SetLevel and SetSink come before any work starts.
class VELHOST_API ScoringLog {
public:
    using Sink = std::function<void(int level, std::string_view line)>;

    static ScoringLog* GetInstance();

    /// Formats as printf does and hands the line to the sink when `level` is on.
    void TraceText(int level, const char* format, ...) __attribute__((format(printf, 3, 4)));

    /// No level below 1 is ever on.
    bool IsOn(int level) const
    {
        return level > 0 && level <= level_.load(std::memory_order_relaxed);
    }
    void SetLevel(int level) { level_.store(level, std::memory_order_relaxed); }
    /// Without a sink the lines go to standard error.
    void SetSink(Sink sink);

private:
    ScoringLog() = default;
    std::atomic<int> level_{0};
    Sink sink_;
};

}  // namespace MCVelscore_850

#endif
