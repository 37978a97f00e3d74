#ifndef VELSCORE_TESTS_FUZZ_FUZZTARGET_H
#define VELSCORE_TESTS_FUZZ_FUZZTARGET_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

// What every fuzz target is: one function of an input's bytes, which comes back whatever they are.
// libFuzzer calls it, or the runner of runner.cpp.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size);

namespace MCVelscore_850::fuzz {

/// Ends the program where an input shows that something doesn't hold.
inline void Require(bool holds, const std::string& what)
{
    if (holds) return;
    std::fprintf(stderr, "doesn't hold: %s\n", what.c_str());
    std::abort();
}

/// An input's bytes as a text.
inline std::string_view TextOf(const uint8_t* bytes, size_t size)
{
    return {reinterpret_cast<const char*>(bytes), size};
}

/// A number that all bytes of an input decide, so that the mutations of an input don't have the
/// same one; `salt` tells several of one target apart.
inline uint32_t HashOf(std::string_view bytes, uint32_t salt = 0)
{
    uint32_t hash = 2166136261U ^ salt;  // FNV-1a
    for (const char byte : bytes) hash = (hash ^ static_cast<uint8_t>(byte)) * 16777619U;
    return hash >> 8;
}

/// Whether what is costly is done with this input: under libFuzzer with one in `count`, so that
/// there is time for more inputs; otherwise, where inputs are few, with each.
inline bool IsInShare([[maybe_unused]] std::string_view bytes, [[maybe_unused]] uint32_t count,
                      [[maybe_unused]] uint32_t salt = 0)
{
#ifdef VELSCORE_FUZZ_SHARES
    return count == 1 || HashOf(bytes, salt) % count == 0;
#else
    return true;
#endif
}

/// Decisions drawn from an input, byte by byte; zeros once it is used up, so that every input
/// comes to an end.
class Choices {
public:
    explicit Choices(std::string_view bytes) : bytes_(bytes) {}

    bool IsEmpty() const { return bytes_.empty(); }
    uint8_t Byte()
    {
        if (bytes_.empty()) return 0;
        const auto byte = static_cast<uint8_t>(bytes_.front());
        bytes_.remove_prefix(1);
        return byte;
    }
    /// Below `count`, which is from 1 to 65536.
    size_t Below(size_t count)
    {
        size_t drawn = Byte();
        if (count > 256) drawn = drawn << 8 | Byte();
        return drawn % count;
    }
    bool IsTrue() { return (Byte() & 1) != 0; }
    template <class T, size_t n>
    const T& OneOf(const T (&values)[n])
    {
        return values[Below(n)];
    }
    template <class Range>
    const auto& OneIn(const Range& values)
    {
        return values[Below(values.size())];
    }
    /// A value by its bit pattern.
    template <class T>
    T Raw()
    {
        char pattern[sizeof(T)] = {};
        const std::string_view taken = Text(sizeof(T));
        std::memcpy(pattern, taken.data(), taken.size());
        T value;
        std::memcpy(&value, pattern, sizeof value);
        return value;
    }
    /// The next bytes, fewer at the end.
    std::string_view Text(size_t size)
    {
        const std::string_view taken = bytes_.substr(0, size);
        bytes_.remove_prefix(taken.size());
        return taken;
    }
    std::string_view Rest() { return Text(bytes_.size()); }

private:
    std::string_view bytes_;
};

}  // namespace MCVelscore_850::fuzz

#endif
