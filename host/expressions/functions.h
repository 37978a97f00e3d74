#ifndef VELSCORE_HOST_EXPRESSIONS_FUNCTIONS_H
#define VELSCORE_HOST_EXPRESSIONS_FUNCTIONS_H

#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "host/expressions/expressionvalue.h"

namespace MCVelscore_850 {

/// What a function keeps from case to case, such as a compiled pattern.
class FunctionState {
public:
    virtual ~FunctionState();
    /// Makes itself ready for that text; a second call with the same text does nothing. False when
    /// the text is no pattern; `reason` says why.
    virtual bool Prepare(const std::string& pattern, std::string& reason) = 0;
};

/// The arguments of one call. They are the caller's scratch: a function may turn them into texts.
struct FunctionArguments {
    std::span<ExpressionValue> values;
    FunctionState* state = nullptr;

    size_t Count() const { return values.size(); }
    ExpressionValue& operator[](size_t i) const { return values[i]; }
};

/// What missing arguments do.
enum class MissingRule {
    Propagate,  ///< one makes the outcome missing
    Ignore,     ///< they are left out; the outcome is missing when all are
    Own         ///< the function sees them, and values that aren't valid too
};

/// One built-in function: a row of the table of its topic.
struct Function {
    static constexpr int kAny = std::numeric_limits<int>::max();

    /// What the outcome is.
    enum Result { Number, Boolean, Text, ArgumentsOwn };

    const char* name;
    int least;  ///< arguments
    int most;
    MissingRule missing;
    Result result;
    /// One of these two: what it computes from numbers, where a result that isn't finite is no
    /// valid one, or from values; `out` is none of the arguments.
    /// `x` is scratch, and none of it is NaN.
    double (*number)(std::span<double> x);
    void (*value)(const FunctionArguments& a, ExpressionValue& out);
    /// The argument that is a pattern, and the state that it is prepared in; null for most.
    int patternArgument = -1;
    std::unique_ptr<FunctionState> (*makeState)() = nullptr;
};

/// The built-in function of that name, null when there is none.
const Function* FindFunction(std::string_view name);

/// All functions of a topic.
VELHOST_API std::span<const Function> ArithmeticFunctions();
VELHOST_API std::span<const Function> DistributionFunctions();
VELHOST_API std::span<const Function> LogicFunctions();
VELHOST_API std::span<const Function> TextFunctions();
VELHOST_API std::span<const Function> PatternFunctions();
VELHOST_API std::span<const Function> FormatFunctions();
VELHOST_API std::span<const Function> DateFunctions();

}  // namespace MCVelscore_850

#endif
