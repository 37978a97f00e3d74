#ifndef VELSCORE_TESTS_HOST_VARS_H
#define VELSCORE_TESTS_HOST_VARS_H

#include <initializer_list>
#include <memory>
#include <string>

#include "host/values/scorevalue.h"
#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

inline DictVarType TypeOf(ScoreDictVar::MeasureLevel level, ScoreDictVar::ValueType valueType)
{
    DictVarType type;
    type.name = "v";
    type.level = level;
    type.valueType = valueType;
    return type;
}

inline DictVarType TextType() { return TypeOf(ScoreDictVar::CATEGORICAL, ScoreDictVar::STRING); }
inline DictVarType NumberType() { return TypeOf(ScoreDictVar::CONTINUOUS, ScoreDictVar::NUMERIC); }
inline DictVarType IntegerType()
{
    DictVarType type = NumberType();
    type.dataType = "integer";
    return type;
}
inline DictVarType CodeType() { return TypeOf(ScoreDictVar::CATEGORICAL, ScoreDictVar::NUMERIC); }
inline DictVarType BooleanType()
{
    DictVarType type = TextType();
    type.boolean = true;
    return type;
}
inline DictVarType DateType(ScoreDictVar::DateTimeType dateTimeType = ScoreDictVar::DATE)
{
    DictVarType type = TypeOf(ScoreDictVar::CONTINUOUS, ScoreDictVar::DATETIME);
    type.dateTimeType = dateTimeType;
    return type;
}

/// Declares each text as a value of the variable.
inline void Declare(DictVar& var, std::initializer_list<const char*> texts,
                    DictVar::Property property = DictVar::Property::Valid)
{
    for (const char* text : texts) {
        var.DeclareValue(std::unique_ptr<ScoreValue>(var.MakeValue(text)), text, property);
    }
}

}  // namespace MCVelscore_850

#endif
