#ifndef VELSCORE_HOST_EXPRESSIONS_TRANSFORMVAR_H
#define VELSCORE_HOST_EXPRESSIONS_TRANSFORMVAR_H

#include <memory>
#include <string>
#include <vector>

#include "host/expressions/expression.h"
#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

class ScoreCaseRecord;
class ScoreDictionary;

/// A derived variable: its value is computed from a case by an expression.
class VELHOST_API TransformVar final : public DictVar {
public:
    TransformVar(DictVarType type, std::shared_ptr<const Expression> expression);
    TransformVar(const TransformVar& other);
    ~TransformVar() override;

    ScoreDictVar* Clone() const override;
    bool IsDerived() const override { return true; }

    /// The derived value for the case, cast to the variable's type: a missing value where the
    /// expression yields none, NaN (of a text a missing one) where it yields no valid one. It
    /// belongs to the variable and stands until the next call; null never. One thread at a time.
    ScoreValue* GetTransformedValue(const ScoreCaseRecord* record,
                                    const ScoreDictionary* dictionary,
                                    const ScoreDictionary* transformations) const;

    /// The same within an evaluation that is under way: computed once in it. The value belongs to
    /// the evaluation's scratch.
    ScoreValue* ValueIn(const ExpressionCase& c) const;

    /// The variables that the expression reads itself, derived ones among them, each once, in the
    /// order in which it names them.
    const std::vector<const ScoreDictVar*>& Inputs() const { return inputs_; }
    const Expression& GetExpression() const { return *expression_; }
    /// The levels of expressions below this variable, through other derived ones too.
    int Height() const { return height_; }

private:
    struct Value;

    std::shared_ptr<const Expression> expression_;
    const DataType& cast_;
    std::vector<const ScoreDictVar*> inputs_;
    int height_;
    std::unique_ptr<ExpressionScratch> scratch_;  // of GetTransformedValue()
};

}  // namespace MCVelscore_850

#endif
