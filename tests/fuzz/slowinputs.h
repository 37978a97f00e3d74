#ifndef VELSCORE_TESTS_FUZZ_SLOWINPUTS_H
#define VELSCORE_TESTS_FUZZ_SLOWINPUTS_H

#include <chrono>
#include <string_view>
#include <unordered_set>

#include "tests/fuzz/fuzztarget.h"

namespace MCVelscore_850::fuzz {

/// Inputs that take many times what others take: one in a hundred of them would have most of a
/// run's time for its mutations.
class SlowInputs {
public:
    /// Notes an input whose run, the life of this object, took long.
    class Watch {
    public:
        explicit Watch(std::string_view input) : hash_(HashOf(input)) {}
        Watch(const Watch&) = delete;
        Watch& operator=(const Watch&) = delete;
        ~Watch()
        {
            constexpr std::chrono::milliseconds kLong(8);
            if (Clock::now() - begin_ > kLong) Hashes().insert(hash_);
        }

    private:
        using Clock = std::chrono::steady_clock;
        uint32_t hash_;
        Clock::time_point begin_ = Clock::now();
    };

    static bool Has(std::string_view input) { return Hashes().contains(HashOf(input)); }

private:
    static std::unordered_set<uint32_t>& Hashes()
    {
        static std::unordered_set<uint32_t> hashes;
        return hashes;
    }
};

}  // namespace MCVelscore_850::fuzz

#endif
