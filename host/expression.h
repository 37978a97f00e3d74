#ifndef VELSCORE_HOST_EXPRESSION_H
#define VELSCORE_HOST_EXPRESSION_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/export.h"

namespace MCVelscore_850 {

class ScoreCaseRecord;
class ScoreDictVar;
class ScoreDictionary;

/// What an expression yields: nothing, a number or a text. A date or time is its plain number.
struct ExpressionValue {
    enum Kind { Missing, Number, Text } kind = Missing;
    double number = 0.0;
    std::string text;

    void SetMissing() { kind = Missing; }
    void SetNumber(double value)
    {
        kind = Number;
        number = value;
    }
    void SetText(std::string_view value)
    {
        kind = Text;
        text.assign(value);
    }
};

/// The case that an expression is evaluated for. Within one evaluation a derived field is computed
/// once, however many expressions read it.
struct ExpressionCase {
    const ScoreCaseRecord* record;
    const ScoreDictionary* dictionary;
    const ScoreDictionary* transformations;
    unsigned long evaluation = NextEvaluation();

    /// A number that no evaluation in this process had before; never 0.
    static unsigned long NextEvaluation();
};

/// Expressions nest, and derived fields refer to each other, at most so deep, both taken together:
/// reading and evaluation go down as deep, and the stack has to hold that.
inline constexpr int kGreatestHeight = 1000;

/// The expression of a derived field, as the PMML standard defines it.
///
/// A field that is missing or not valid yields Missing, and so does an operation without a result
/// (a division by 0); the rules of each expression (mapMissingTo, defaultValue) then apply.
/// Threads  evaluation changes nothing in the expression.
class VELHOST_API Expression {
public:
    virtual ~Expression();
    virtual void Evaluate(const ExpressionCase& c, ExpressionValue& value) const = 0;
    /// Appends the variables that are read, derived ones among them.
    virtual void CollectInputs(std::vector<const ScoreDictVar*>& inputs) const = 0;
    /// The levels of expressions from here down, those of derived fields that are read included.
    virtual int Height() const = 0;
    /// Appends every outcome as text, where they can be told; false where they can't.
    virtual bool CollectTexts(std::vector<std::string>& texts) const;
};

/// A value that stands for a missing outcome: mapMissingTo and defaultValue.
struct Replacement {
    bool given = false;
    ExpressionValue value;
    void Apply(ExpressionValue& to) const
    {
        if (given && to.kind == ExpressionValue::Missing) to = value;
    }
};

/// FieldRef: the value of a field.
std::unique_ptr<Expression> MakeFieldRef(const ScoreDictVar* var, Replacement mapMissingTo);

/// Constant: always the same.
std::unique_ptr<Expression> MakeConstant(ExpressionValue value);

/// One node of NormContinuous.
struct NormPoint {
    double orig;
    double norm;
};

/// NormContinuous: piecewise linear through the points, whose orig values ascend,
///
///     norm[i] + (x - orig[i]) / (orig[i+1] - orig[i]) * (norm[i+1] - norm[i])
///
/// Beyond both ends by ScoreDictVar::OutlierTreatment: the outer lines go on, or the outcome is
/// missing, or it is the outer norm.
std::unique_ptr<Expression> MakeNormContinuous(const ScoreDictVar* var,
                                               std::vector<NormPoint> points, int outliers,
                                               Replacement mapMissingTo);

/// One built-in function of Apply: its name, how many arguments it takes, what it computes from
/// numbers. A missing argument makes the outcome missing.
struct ArithmeticFunction {
    const char* name;
    int arguments;
    double (*compute)(const double* arguments);
};

/// The function of that name, null when there is none.
const ArithmeticFunction* FindArithmeticFunction(const std::string& name);

/// Apply of a built-in function. `mapMissingTo` stands for the outcome where an argument is
/// missing; `defaultValue` for whatever is missing after that.
std::unique_ptr<Expression> MakeApply(const ArithmeticFunction& function,
                                      std::vector<std::unique_ptr<Expression>> arguments,
                                      Replacement mapMissingTo, Replacement defaultValue);

}  // namespace MCVelscore_850

#endif
