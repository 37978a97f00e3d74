#ifndef VELSCORE_TESTS_CALLSTACK_H
#define VELSCORE_TESTS_CALLSTACK_H

#include <array>
#include <cstddef>

namespace MCVelscore_850 {

/// The calls that led to a place, kept without taking memory.
class CallStack {
public:
    /// Keeps the calls that led here, the innermost ones.
    void Take();
    /// Whether a function of a shared library is among them whose linked name holds this one.
    bool Has(const char* function) const;
    /// Prints them to standard error: library and offset, as addr2line takes them.
    void Print() const;

private:
    std::array<void*, 32> frames_{};
    size_t count_ = 0;
};

}  // namespace MCVelscore_850

#endif
