#ifndef VELSCORE_TESTS_MUTANTS_MUTANTS_H
#define VELSCORE_TESTS_MUTANTS_MUTANTS_H

#include <cstdlib>
#include <type_traits>

// What scripts/mutate.py writes into the sources that it mutates, as their first header. Each
// function stands for an expression of the source; under the number of one of its mutants it
// answers what that mutant would. The number is that of VELSCORE_MUTANT, of which a process has
// one.
//
// All are inlined: the kernels are compiled for several instruction sets, and none may borrow
// another's code.

namespace velmutants {

inline int gActive = [] {
    const char* text = std::getenv("VELSCORE_MUTANT");
    return text == nullptr ? 0 : std::atoi(text);
}();

// A byte for each number, set when its place was reached; null but for the run that records them.
inline unsigned char* gReached = nullptr;

namespace {

#define VELMUTANTS_INLINE [[maybe_unused]] __attribute__((always_inline)) inline

// Which mutant of the place that begins at a number is active: 0, 1, ..; anything else is none of
// them.
VELMUTANTS_INLINE int Variant(int first)
{
    if (gReached != nullptr) gReached[first] = 1;
    return gActive - first;
}

VELMUTANTS_INLINE bool On(int id) { return Variant(id) == 0; }

// Of conditions, which may be pointers.
template <class T>
VELMUTANTS_INLINE bool Not(int id, const T& truth)
{
    return static_cast<bool>(truth) != On(id);
}
// Operands of && and ||, as if the other stood alone.
template <class T>
VELMUTANTS_INLINE bool OrTrue(int id, const T& truth)
{
    const bool on = On(id);
    return static_cast<bool>(truth) || on;
}
template <class T>
VELMUTANTS_INLINE bool AndFalse(int id, const T& truth)
{
    const bool on = On(id);
    return static_cast<bool>(truth) && !on;
}

#define VELMUTANTS_BINARY(NAME, KEPT, FIRST, SECOND)                            \
    template <class A, class B>                                                 \
    VELMUTANTS_INLINE auto NAME(int id, A a, B b)                               \
    {                                                                           \
        const int variant = Variant(id);                                        \
        return variant == 0 ? a FIRST b : variant == 1 ? a SECOND b : a KEPT b; \
    }
VELMUTANTS_BINARY(Less, <, <=, >=)
VELMUTANTS_BINARY(LessEqual, <=, <, >)
VELMUTANTS_BINARY(Greater, >, >=, <=)
VELMUTANTS_BINARY(GreaterEqual, >=, >, <)
#undef VELMUTANTS_BINARY

#define VELMUTANTS_BINARY(NAME, KEPT, CHANGED)    \
    template <class A, class B>                   \
    VELMUTANTS_INLINE auto NAME(int id, A a, B b) \
    {                                             \
        return On(id) ? a CHANGED b : a KEPT b;   \
    }
VELMUTANTS_BINARY(Equal, ==, !=)
VELMUTANTS_BINARY(Unequal, !=, ==)
VELMUTANTS_BINARY(Plus, +, -)
VELMUTANTS_BINARY(Minus, -, +)
VELMUTANTS_BINARY(Times, *, /)
VELMUTANTS_BINARY(Over, /, *)
VELMUTANTS_BINARY(Modulo, %, *)
#undef VELMUTANTS_BINARY

template <class T>
VELMUTANTS_INLINE T Negated(int id, T value)
{
    return On(id) ? static_cast<T>(-value) : value;
}

template <class T>
VELMUTANTS_INLINE T Constant(int id, T value)
{
    return On(id) ? static_cast<T>(value + 1) : value;
}

// A returned number: 0, and 1 instead of 0.
template <class T>
VELMUTANTS_INLINE T Returned(int id, T value)
{
    return !On(id) ? value : value == T(0) ? T(1) : T(0);
}

#undef VELMUTANTS_INLINE

}  // namespace

}  // namespace velmutants

#endif
