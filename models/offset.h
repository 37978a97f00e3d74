#ifndef VELSCORE_MODELS_OFFSET_H
#define VELSCORE_MODELS_OFFSET_H

#include <ostream>
#include <string>

#include "host/model/caseexplanation.h"
#include "host/values/numericvalue.h"
#include "host/variables/scoredictvar.h"

namespace MCVelscore_850 {

/// What is added to every linear predictor of a model: nothing, a variable's value, or a constant.
/// The first setter that is called wins, without a word to a later one.
struct Offset {
    enum Kind { NONE = 0, VARIABLE = 1, VALUE = 2 } kind = NONE;
    const ScoreDictVar* variable = nullptr;
    double value = 0.0;

    void SetVariable(const ScoreDictVar* var)
    {
        if (kind != NONE) return;
        variable = var;
        kind = VARIABLE;
    }
    void SetValue(double constant)
    {
        if (kind != NONE) return;
        value = constant;
        kind = VALUE;
    }
    /// A null variable counts as an offset that adds nothing.
    bool HasVariable() const { return variable != nullptr; }
    /// The offset's line of a model's display, when there is one.
    void Display(std::ostream& out) const
    {
        if (kind == VARIABLE) out << "Offset variable: " << Describe() << std::endl;
        if (kind == VALUE) out << "Offset value: " << value << std::endl;
    }
    /// The term that it is; none without an offset.
    void Outline(ExplanationOutline::Equation& equation) const
    {
        if (kind == NONE) return;
        equation.terms.push_back(
            {.name = HasVariable() ? "offset(" + variable->GetName() + ")" : "offset",
             .kind = ExplanationOutline::Term::Kind::Offset});
    }
    /// The variable's name or the constant; empty without an offset.
    std::string Describe() const
    {
        switch (kind) {
            case VARIABLE: return variable == nullptr ? "" : variable->GetName();
            case VALUE: return NumericValue(value).GetString();
            case NONE: break;
        }
        return "";
    }
};

}  // namespace MCVelscore_850

#endif
