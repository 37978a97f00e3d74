#include "host/messages/scoringlog.h"

#include <cstdarg>
#include <cstdio>
#include <string>

namespace MCVelscore_850 {

ScoringLog* ScoringLog::GetInstance()
{
    static ScoringLog log;
    return &log;
}

void ScoringLog::SetSink(Sink sink) { sink_ = std::move(sink); }

void ScoringLog::TraceText(int level, const char* format, ...)
{
    if (!IsOn(level)) return;
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string line(length > 0 ? static_cast<size_t>(length) : 0, '\0');
    if (length > 0) std::vsnprintf(line.data(), line.size() + 1, format, again);
    va_end(again);
    if (sink_) {
        sink_(level, line);
    } else {
        std::fprintf(stderr, "%s\n", line.c_str());
    }
}

}  // namespace MCVelscore_850
