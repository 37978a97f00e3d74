#ifndef VELSCORE_HOST_EXPRESSIONS_EXPRESSION_H
#define VELSCORE_HOST_EXPRESSIONS_EXPRESSION_H

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/export.h"
#include "host/expressions/expressionscratch.h"
#include "host/expressions/expressionvalue.h"
#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

class ScoreCaseRecord;
class ScoreDictVar;
class ScoreDictionary;
struct Function;

/// The case that an expression is evaluated for. Within one evaluation a derived field is computed
/// once, however many expressions read it.
struct ExpressionCase {
    const ScoreCaseRecord* record;
    const ScoreDictionary* dictionary;
    const ScoreDictionary* transformations;
    ExpressionScratch& scratch;
    unsigned long evaluation = scratch.NextEvaluation();
    /// In the body of a defined function its arguments, else null.
    const ExpressionValue* parameters = nullptr;
};

/// Expressions nest, and derived fields refer to each other, at most so deep, both taken together:
/// reading and evaluation go down as deep, and the stack has to hold that.
inline constexpr int kGreatestHeight = 1000;

/// What an expression can yield, as far as it can be told. `left` is how many more outcomes the
/// whole document may ask for.
struct Outcomes {
    std::vector<ExpressionValue> values;
    size_t& left;
    /// Whether a case may have none of them, since its outcome is missing or not valid.
    bool mayLackValue = false;

    /// Appends it; false when the limit is reached.
    bool Add(const ExpressionValue& value);
};

/// The expression of a derived field, as the PMML standard defines it.
///
/// A field that is missing yields Missing, a value that isn't valid yields Invalid, and so does an
/// operation without a result (a division by 0); the rules of each expression (mapMissingTo,
/// defaultValue, invalidValueTreatment) then apply.
/// Threads  any number, each with a scratch of its own.
class VELHOST_API Expression {
public:
    virtual ~Expression();
    /// The outcome for the case. `value` keeps its buffer from case to case.
    virtual void Evaluate(const ExpressionCase& c, ExpressionValue& value) const = 0;
    /// Appends the variables that are read, derived ones among them.
    virtual void CollectInputs(std::vector<const ScoreDictVar*>& inputs) const = 0;
    /// The levels of expressions from here down, those of derived fields that are read included.
    virtual int Height() const = 0;
    /// The expressions that one evaluation computes, those of functions as often as they are
    /// called.
    virtual double Steps() const;
    /// Appends every outcome, and tells whether a case may lack one; false where they can't be
    /// told.
    virtual bool CollectOutcomes(Outcomes& outcomes) const;
};

/// A value that stands for a missing outcome: mapMissingTo and defaultValue.
struct Replacement {
    bool given = false;
    ExpressionValue value;
    /// In the place of a missing outcome.
    void Apply(ExpressionValue& to) const
    {
        if (given && to.kind == ExpressionValue::Missing) to = value;
    }
    /// In the place of a field's value that is missing or not valid.
    void ApplyToField(ExpressionValue& to) const
    {
        if (given && !to.HasValue()) to = value;
    }
};

/// What an expression reads by name: a field, or within a defined function one of its parameters.
class FieldSource {
public:
    explicit FieldSource(const ScoreDictVar* var);
    FieldSource(int parameter, const DataType* type) : parameter_(parameter), type_(type) {}

    void Read(const ExpressionCase& c, ExpressionValue& value) const;
    /// Its type; null for a parameter that declares none.
    const DataType* Type() const { return type_; }
    void CollectInputs(std::vector<const ScoreDictVar*>& inputs) const;
    bool CollectOutcomes(Outcomes& outcomes) const;
    /// The levels of expressions below.
    int Height() const;

private:
    void ReadVar(const ExpressionCase& c, ExpressionValue& value) const;
    void SetFrom(const ScoreValue& from, ExpressionValue& value) const;

    const ScoreDictVar* var_ = nullptr;
    int parameter_ = -1;
    const DataType* type_ = nullptr;
    const DictVar* order_ = nullptr;  // the variable, when it ranks texts
};

/// An expression on one field.
class FieldExpression : public Expression {
public:
    void CollectInputs(std::vector<const ScoreDictVar*>& inputs) const override
    {
        source_.CollectInputs(inputs);
    }
    int Height() const override { return 1 + source_.Height(); }

protected:
    explicit FieldExpression(FieldSource source, Replacement mapMissingTo)
        : source_(source), mapMissingTo_(std::move(mapMissingTo))
    {}
    /// Reads the field; false where it has no value, and `value` then is the outcome.
    bool ReadSource(const ExpressionCase& c, ExpressionValue& value) const
    {
        source_.Read(c, value);
        if (value.HasValue()) return true;
        mapMissingTo_.ApplyToField(value);
        return false;
    }

    FieldSource source_;
    Replacement mapMissingTo_;
};

/// FieldRef: the value of a field.
std::unique_ptr<Expression> MakeFieldRef(FieldSource source, Replacement mapMissingTo);

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
std::unique_ptr<Expression> MakeNormContinuous(FieldSource source, std::vector<NormPoint> points,
                                               int outliers, Replacement mapMissingTo);

/// NormDiscrete: 1 where the field has that value, else 0.
std::unique_ptr<Expression> MakeNormDiscrete(FieldSource source, ExpressionValue wanted,
                                             Replacement mapMissingTo);

/// One bin of Discretize.
struct Bin {
    DictVar::Interval interval;
    ExpressionValue value;
};

/// Discretize: the value of the first bin that holds the field's number, else the default.
std::unique_ptr<Expression> MakeDiscretize(FieldSource source, std::vector<Bin> bins,
                                           Replacement mapMissingTo, Replacement defaultValue);

/// MapValues: a table that is looked up by one field or by several together. Cells match as values
/// of their field's type: 1.0 is 1. Of rows with the same cells the first counts.
class MapTable {
public:
    explicit MapTable(std::vector<FieldSource> columns);
    MapTable(MapTable&&) noexcept;
    ~MapTable();

    /// Adds a row; false for a cell that is no value of its field's type, which no case matches.
    bool AddRow(const std::vector<std::string>& cells, ExpressionValue output);
    std::unique_ptr<Expression> MakeExpression(Replacement mapMissingTo,
                                               Replacement defaultValue) &&;

private:
    class MapValues;
    std::unique_ptr<MapValues> map_;
};

/// What becomes of an outcome that is not valid.
enum class InvalidTreatment { ReturnInvalid, AsIs, AsMissing };

/// The rules of Apply that stand beside the function.
struct ApplyRules {
    Replacement mapMissingTo;
    Replacement defaultValue;
    InvalidTreatment invalid = InvalidTreatment::ReturnInvalid;

    /// The outcome after the function.
    void Finish(ExpressionValue& value) const;
};

using Arguments = std::vector<std::unique_ptr<Expression>>;

/// Apply of a built-in function. `mapMissingTo` stands for the outcome where any argument is
/// missing; then an outcome that isn't valid is treated; then `defaultValue` stands for a missing
/// one.
std::unique_ptr<Expression> MakeApply(const Function& function, Arguments arguments,
                                      ApplyRules rules);

/// A defined function: an expression over parameters. Calls share it.
struct DefinedFunction {
    std::string name;
    std::unordered_map<std::string, size_t> parameters;  ///< name to position
    std::vector<const DataType*> parameterTypes;         ///< null where none is declared
    const DataType* type = nullptr;  ///< of the outcome, null where none is declared
    std::unique_ptr<Expression> body;
};

/// Apply of a defined function, by the same rules.
std::unique_ptr<Expression> MakeCall(std::shared_ptr<const DefinedFunction> function,
                                     Arguments arguments, ApplyRules rules);

}  // namespace MCVelscore_850

#endif
