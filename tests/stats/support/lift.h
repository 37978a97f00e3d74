#ifndef VELSCORE_TESTS_STATS_SUPPORT_LIFT_H
#define VELSCORE_TESTS_STATS_SUPPORT_LIFT_H

#include <cstddef>
#include <tuple>
#include <type_traits>
#include <utility>

#include "tests/stats/support/functions.h"

namespace reference {

// An argument that a function gives back.
template <class T>
constexpr bool kOutput =
    std::is_lvalue_reference_v<T> && !std::is_const_v<std::remove_reference_t<T>>;

// One argument of a row, as the type that a function takes.
template <class T>
void Fill(T& slot, const Args& args, std::size_t i)
{
    if constexpr (std::is_same_v<T, std::vector<double>>)
        slot = args.List(i);
    else if constexpr (std::is_same_v<T, bool>)
        slot = args[i] != 0.0;
    else
        slot = static_cast<T>(args[i]);
}

// Makes a Call of a plain function: inputs come from the arguments in order, references that are
// not const are outputs.
template <class R, class... P>
class Lift {
public:
    explicit Lift(R (*function)(P...)) : function_(function) {}

    Outcome operator()(const Args& args) const
    {
        return Run(args, std::index_sequence_for<P...>{});
    }

private:
    template <class T>
    static void Collect(const T& value, Outcome& outcome)
    {
        if constexpr (std::is_same_v<T, double>)
            outcome.values.push_back(value);
        else if constexpr (std::is_same_v<T, bool>)
            outcome.values.push_back(value ? 1.0 : 0.0);
        else
            outcome.code = static_cast<long>(value);
    }

    template <std::size_t... I>
    Outcome Run(const Args& args, std::index_sequence<I...>) const
    {
        std::tuple<std::remove_cvref_t<P>...> slots;
        std::size_t next = 0;
        ((kOutput<P> ? void() : Fill(std::get<I>(slots), args, next++)), ...);
        Outcome outcome;
        if constexpr (std::is_void_v<R>)
            function_(static_cast<P>(std::get<I>(slots))...);
        else
            Collect(function_(static_cast<P>(std::get<I>(slots))...), outcome);
        ((kOutput<P> ? CollectOutput<P>(std::get<I>(slots), outcome) : void()), ...);
        return outcome;
    }

    template <class T, class V>
    static void CollectOutput(const V& value, Outcome& outcome)
    {
        if constexpr (kOutput<T>) Collect(value, outcome);
    }

    R (*function_)(P...);
};

}  // namespace reference

#endif
