#ifndef VELSCORE_HOST_EXPRESSIONS_EXPRESSIONVALUE_H
#define VELSCORE_HOST_EXPRESSIONS_EXPRESSIONVALUE_H

#include <cstddef>
#include <string>
#include <string_view>

#include "host/export.h"
#include "host/values/datetimetext.h"
#include "host/variables/datatypes.h"
#include "host/variables/scoredictvar.h"

namespace MCVelscore_850 {

class DictVar;

/// What an expression yields: nothing, no valid value, a number, a truth value or a text.
///
/// A date or time is a number that knows its type: it counts from the type's own origin, and from
/// 1970 (a time of day from midnight) where the type has none.
struct ExpressionValue {
    enum Kind { Missing, Invalid, Number, Boolean, Text } kind = Missing;
    double number = 0.0;                                               ///< of a Boolean 1 or 0
    ScoreDictVar::DateTimeType dateTime = ScoreDictVar::NOT_DATETIME;  ///< of a Number
    const DictVar* order = nullptr;  ///< of a Text: the ordinal variable that ranks it
    std::string text;                ///< of a Boolean its declared spelling, where it has one

    bool HasValue() const { return kind >= Number; }

    void SetMissing() { kind = Missing; }
    void SetInvalid() { kind = Invalid; }
    void SetNumber(double value, ScoreDictVar::DateTimeType type = ScoreDictVar::NOT_DATETIME)
    {
        kind = Number;
        number = value;
        dateTime = type;
    }
    void SetBoolean(bool value)
    {
        kind = Boolean;
        number = value ? 1.0 : 0.0;
        text.clear();
    }
    void SetText(std::string_view value)
    {
        text.assign(value);
        MarkText();
    }
    /// The text that was built in `text` is the value.
    void MarkText()
    {
        kind = Text;
        order = nullptr;
    }
};

/// Texts that expressions build are at most so long; a longer one is no valid value. Derived
/// fields that double each other's texts would ask for any memory.
inline constexpr size_t kLongestText = 16384;

/// The value as a number: a truth value is 1 or 0, a text counts that spells one. False else.
bool AsNumber(const ExpressionValue& value, double& number);

/// The value as a truth: the words of TruthOf() count, and the numbers 1 and 0. False else.
bool AsTruth(const ExpressionValue& value, bool& truth);

/// Makes a text of the value, in its own buffer: a number in its shortest spelling, a truth value
/// as it is declared or as true and false, a date or time as AppendDateTime() has it. A value
/// without one becomes Invalid.
void MakeText(ExpressionValue& value);

/// Turns a value into one of that type: a number loses its fraction where the type is whole, a
/// number without a date's type counts from the type's origin. What can't be turned becomes
/// Invalid; Missing stays.
void CastTo(const DataType& type, ExpressionValue& value);

/// Reads a text of the document as a value of that type; false when it is none. INF, -INF and NaN
/// are numbers of the types float and double.
bool ReadValue(std::string_view text, const DataType& type, ExpressionValue& value);

/// The plain number of a date or time (see DateTimeValue) and its shape; a text that spells one
/// counts. False for any other value.
bool AsDateTime(const ExpressionValue& value, DateTimeShape& shape, double& plain);

/// How two values stand to each other. Texts compare by their bytes, those of an ordinal variable
/// by its order; truth values as 0 and 1; dates and times by the moment, whatever they count from;
/// everything else as numbers. Values of different kinds, and NaN, are not ordered.
enum class Ordering { Less, Equal, Greater, None };
Ordering Compare(const ExpressionValue& a, const ExpressionValue& b);

}  // namespace MCVelscore_850

#endif
