#include "host/expressions/expressionvalue.h"

#include <cmath>
#include <limits>
#include <optional>

#include "host/values/numbertext.h"
#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

namespace {

bool IsDateTime(const ExpressionValue& value)
{
    return value.kind == ExpressionValue::Number && value.dateTime != ScoreDictVar::NOT_DATETIME;
}

double PlainOf(const ExpressionValue& value) { return value.number - OriginShift(value.dateTime); }

// A value as a number that counts from the type's origin: another date or time through the moment,
// a plain number as it stands.
bool CountFrom(ScoreDictVar::DateTimeType type, const ExpressionValue& value, double& number)
{
    double plain = 0.0;
    if (IsDateTime(value)) {
        plain = PlainOf(value);
        if (!ChangeShape(ShapeOf(value.dateTime), ShapeOf(type), plain)) return false;
    } else if (value.kind == ExpressionValue::Text) {
        if (!ReadDateTime(value.text, type, plain)) return false;
    } else {
        number = value.number;
        return value.kind == ExpressionValue::Number;
    }
    number = plain + OriginShift(type);
    return true;
}

Ordering CompareNumbers(double a, double b)
{
    if (a < b) return Ordering::Less;
    if (a > b) return Ordering::Greater;
    return a == b ? Ordering::Equal : Ordering::None;
}

Ordering CompareTexts(const ExpressionValue& a, const ExpressionValue& b)
{
    if (const DictVar* order = a.order != nullptr ? a.order : b.order) {
        const int first = order->FindCategoryText(a.text);
        const int second = order->FindCategoryText(b.text);
        if (first >= 0 && second >= 0) return CompareNumbers(first, second);
    }
    const int order = a.text.compare(b.text);
    return order < 0 ? Ordering::Less : order > 0 ? Ordering::Greater : Ordering::Equal;
}

// At least one of them is a date or time.
Ordering CompareDateTimes(const ExpressionValue& a, const ExpressionValue& b)
{
    const bool first = IsDateTime(a);
    const ExpressionValue& known = first ? a : b;
    const ExpressionValue& other = first ? b : a;
    double x = known.number;
    double y = 0.0;
    const ScoreDictVar::DateTimeType type = known.dateTime;
    // A date that meets a moment of a day is that day's midnight.
    if (IsDateTime(other) && ShapeOf(type) == DateTimeShape::Date &&
        ShapeOf(other.dateTime) == DateTimeShape::DateTime) {
        x = PlainOf(known) * kSecondsPerDay;
        y = PlainOf(other);
    } else {
        const bool plainNumber = !IsDateTime(other) && other.kind == ExpressionValue::Number;
        if (plainNumber && !CountsFromOrigin(type)) return Ordering::None;
        if (!CountFrom(type, other, y)) return Ordering::None;
    }
    return first ? CompareNumbers(x, y) : CompareNumbers(y, x);
}

}  // namespace

bool AsNumber(const ExpressionValue& value, double& number)
{
    switch (value.kind) {
        case ExpressionValue::Number:
        case ExpressionValue::Boolean: number = value.number; return true;
        case ExpressionValue::Text: return ReadNumber(value.text, number) == NumberText::Number;
        case ExpressionValue::Missing:
        case ExpressionValue::Invalid: break;
    }
    return false;
}

bool AsTruth(const ExpressionValue& value, bool& truth)
{
    if (value.kind == ExpressionValue::Text) {
        const std::optional<bool> word = TruthOf(value.text);
        truth = word.value_or(false);
        return word.has_value();
    }
    truth = value.number == 1.0;
    return value.kind == ExpressionValue::Boolean ||
           (value.kind == ExpressionValue::Number && (value.number == 0.0 || value.number == 1.0));
}

void MakeText(ExpressionValue& value)
{
    if (value.kind == ExpressionValue::Number) {
        value.text.clear();
        if (value.dateTime != ScoreDictVar::NOT_DATETIME) {
            AppendDateTime(PlainOf(value), value.dateTime, value.text);
        } else if (std::isfinite(value.number)) {
            AppendNumber(value.number, value.text);
        }
        if (value.text.empty()) return value.SetInvalid();
        value.MarkText();
    } else if (value.kind == ExpressionValue::Boolean) {
        if (value.text.empty()) value.text = value.number == 1.0 ? "true" : "false";
        value.MarkText();
    }
}

void CastTo(const DataType& type, ExpressionValue& value)
{
    if (!value.HasValue()) return;
    if (type.boolean) {
        bool truth = false;
        if (!AsTruth(value, truth)) return value.SetInvalid();
        return value.SetBoolean(truth);
    }
    double number = 0.0;
    switch (type.valueType) {
        case ScoreDictVar::STRING:
            MakeText(value);
            if (value.text.size() > kLongestText) value.SetInvalid();
            return;
        case ScoreDictVar::DATETIME:
            if (!CountFrom(type.dateTimeType, value, number)) return value.SetInvalid();
            return value.SetNumber(number, type.dateTimeType);
        case ScoreDictVar::NUMERIC: break;
    }
    if (!AsNumber(value, number)) return value.SetInvalid();
    value.SetNumber(type.whole ? std::trunc(number) : number);
}

bool ReadValue(std::string_view text, const DataType& type, ExpressionValue& value)
{
    struct Word {
        std::string_view text;
        double number;
    };
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    static constexpr Word kWords[] = {{"INF", kInfinity},
                                      {"-INF", -kInfinity},
                                      {"NaN", std::numeric_limits<double>::quiet_NaN()}};
    if (type.valueType == ScoreDictVar::NUMERIC && !type.whole) {
        for (const Word& word : kWords) {
            if (TrimBlanks(text) != word.text) continue;
            value.SetNumber(word.number);
            return true;
        }
    }
    const bool isText = type.valueType == ScoreDictVar::STRING && !type.boolean;
    value.SetText(isText ? text : TrimBlanks(text));
    if (type.valueType == ScoreDictVar::NUMERIC) {
        // A number as it stands: only outcomes are cut to whole ones.
        double number = 0.0;
        if (!AsNumber(value, number)) return false;
        value.SetNumber(number);
        return true;
    }
    CastTo(type, value);
    return value.HasValue();
}

bool AsDateTime(const ExpressionValue& value, DateTimeShape& shape, double& plain)
{
    if (value.kind == ExpressionValue::Text) return ReadAnyDateTime(value.text, shape, plain);
    if (!IsDateTime(value)) return false;
    shape = ShapeOf(value.dateTime);
    plain = PlainOf(value);
    return true;
}

Ordering Compare(const ExpressionValue& a, const ExpressionValue& b)
{
    if (!a.HasValue() || !b.HasValue()) return Ordering::None;
    if (a.kind == ExpressionValue::Text && b.kind == ExpressionValue::Text) {
        return CompareTexts(a, b);
    }
    if (a.kind == ExpressionValue::Boolean || b.kind == ExpressionValue::Boolean) {
        bool first = false;
        bool second = false;
        if (!AsTruth(a, first) || !AsTruth(b, second)) return Ordering::None;
        return CompareNumbers(first, second);
    }
    if (IsDateTime(a) || IsDateTime(b)) return CompareDateTimes(a, b);
    double first = 0.0;
    double second = 0.0;
    if (!AsNumber(a, first) || !AsNumber(b, second)) return Ordering::None;
    return CompareNumbers(first, second);
}

}  // namespace MCVelscore_850
