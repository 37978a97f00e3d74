#ifndef VELSCORE_CAPI_CALLS_H
#define VELSCORE_CAPI_CALLS_H

#include <cstddef>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "capi/include/velscore.h"
#include "engine/messages/failure.h"

namespace MCVelscore_850::capi {

/// The size of a structure up to a member: of its first version, which nothing may be smaller than.
#define VELSCORE_SIZE_TO(type, member) (offsetof(type, member) + sizeof(type::member))

/// Where a call works: what a failure is told of that doesn't name it.
struct Place {
    const char* document = nullptr;
    const char* table = nullptr;
};

/// Throws Failure (kNullArgument).
[[noreturn]] void RefuseNull(const char* argument);
template <class T>
T& Given(T* argument, const char* name)
{
    if (argument == nullptr) RefuseNull(name);
    return *argument;
}

/// The texts of a list, which may be null where it is empty; `name` is the argument's or option's.
/// Throws Failure (kNullArgument).
std::vector<std::string> TextsOf(const char* const* texts, size_t count, const char* name);

/// No structure comes near that size.
inline constexpr size_t kMostStructSize = 4096;

/// What a structure that begins with its size holds, as this library knows it: the defaults where
/// it is null, and for what an older one lacks. Throws Failure (kStructSize) for a size below that
/// of the first version, and for members that only a newer library knows.
void CopyKnown(const void* given, size_t size, const char* name, size_t first, size_t known,
               void* copy);
template <class T>
T Known(const T* given, const T& defaults, const char* name, size_t first)
{
    T known = defaults;
    if (given == nullptr) return known;
    CopyKnown(given, given->size, name, first, sizeof(T), &known);
    return known;
}

/// Tells the exception at hand in `error`, which may be null, and answers its code. To be called in
/// a catch block.
int Tell(velscore_error* error, const Place& place) noexcept;

/// Answers the code of an error structure that can't be filled; 0 where it can, and empties it.
int Begin(velscore_error* error) noexcept;

/// Runs a function of the interface: no exception passes it.
template <class Function>
int Call(velscore_error* error, const Place& place, Function function) noexcept
{
    if (const int code = Begin(error); code != 0) return code;
    try {
        function();
        return 0;
    } catch (...) {
        return Tell(error, place);
    }
}
template <class Function>
int Call(velscore_error* error, Function function) noexcept
{
    return Call(error, Place{}, function);
}

/// A text of its own for the caller, who frees it. Throws std::bad_alloc.
char* NewText(const std::string& text);

/// The code and the text of a failure with its remedy, on one line.
struct Told {
    int code;
    std::string text;
};
Told TextOf(std::exception_ptr failure);

}  // namespace MCVelscore_850::capi

#endif
