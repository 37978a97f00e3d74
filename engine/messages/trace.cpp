#include "engine/messages/trace.h"

#include <cstdio>
#include <memory>
#include <string_view>

#include "host/messages/scoringlog.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

bool SetUpTrace(const std::string& setting)
{
    constexpr int kHighestLevel = 9;
    const size_t colon = setting.find(':');
    int level = 0;
    if (ReadInteger(std::string_view(setting).substr(0, colon), level) != NumberText::Number ||
        level < 0 || level > kHighestLevel) {
        return false;
    }
    ScoringLog* log = ScoringLog::GetInstance();
    if (colon != std::string::npos) {
        std::FILE* file = std::fopen(setting.c_str() + colon + 1, "a");
        if (file == nullptr) return false;
        const std::shared_ptr<std::FILE> owned(file, std::fclose);
        log->SetSink([owned](int, std::string_view line) {
            std::fwrite(line.data(), 1, line.size(), owned.get());
            std::fputc('\n', owned.get());
            std::fflush(owned.get());
        });
    }
    log->SetLevel(level);
    return true;
}

}  // namespace MCVelscore_850
