#include "tests/callstack.h"

#include <cstdio>
#include <cstring>

#include <dlfcn.h>
#include <execinfo.h>

namespace MCVelscore_850 {

void CallStack::Take()
{
    count_ = static_cast<size_t>(::backtrace(frames_.data(), static_cast<int>(frames_.size())));
}

bool CallStack::Has(const char* function) const
{
    for (size_t frame = 0; frame < count_; ++frame) {
        Dl_info place{};
        if (::dladdr(frames_[frame], &place) != 0 && place.dli_sname != nullptr &&
            std::strstr(place.dli_sname, function) != nullptr) {
            return true;
        }
    }
    return false;
}

void CallStack::Print() const
{
    for (size_t frame = 0; frame < count_; ++frame) {
        Dl_info place{};
        if (::dladdr(frames_[frame], &place) == 0 || place.dli_fname == nullptr) continue;
        const auto offset =
            static_cast<const char*>(frames_[frame]) - static_cast<const char*>(place.dli_fbase);
        std::fprintf(stderr, " %s:%#tx", place.dli_fname, offset);
    }
    std::fputc('\n', stderr);
}

}  // namespace MCVelscore_850
