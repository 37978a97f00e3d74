#include "host/variables/datatypes.h"

#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

namespace {

using Var = ScoreDictVar;

constexpr DataType kDataTypes[] = {
    {"string", Var::STRING, Var::NOT_DATETIME, false, false},
    {"boolean", Var::STRING, Var::NOT_DATETIME, true, false},
    {"integer", Var::NUMERIC, Var::NOT_DATETIME, false, true},
    {"float", Var::NUMERIC, Var::NOT_DATETIME, false, false},
    {"double", Var::NUMERIC, Var::NOT_DATETIME, false, false},
    {"date", Var::DATETIME, Var::DATE, false, false},
    {"time", Var::DATETIME, Var::TIME, false, false},
    {"dateTime", Var::DATETIME, Var::DATE_TIME, false, false},
    {"dateDaysSince[0]", Var::DATETIME, Var::DATE_DAYS_SINCE_0, false, false},
    {"dateDaysSince[1960]", Var::DATETIME, Var::DATE_DAYS_SINCE_1960, false, false},
    {"dateDaysSince[1970]", Var::DATETIME, Var::DATE_DAYS_SINCE_1970, false, false},
    {"dateDaysSince[1980]", Var::DATETIME, Var::DATE_DAYS_SINCE_1980, false, false},
    {"timeSeconds", Var::DATETIME, Var::TIME_SECONDS, false, false},
    {"dateTimeSecondsSince[0]", Var::DATETIME, Var::DATE_TIME_SECONDS_SINCE_0, false, false},
    {"dateTimeSecondsSince[1960]", Var::DATETIME, Var::DATE_TIME_SECONDS_SINCE_1960, false, false},
    {"dateTimeSecondsSince[1970]", Var::DATETIME, Var::DATE_TIME_SECONDS_SINCE_1970, false, false},
    {"dateTimeSecondsSince[1980]", Var::DATETIME, Var::DATE_TIME_SECONDS_SINCE_1980, false, false},
};

}  // namespace

const DataType* FindDataType(std::string_view name)
{
    for (const DataType& type : kDataTypes) {
        if (name == type.name) return &type;
    }
    return nullptr;
}

const DataType& DataTypeOf(const DictVarType& type)
{
    if (const DataType* named = FindDataType(type.dataType)) return *named;
    // A variable that no document declares has only its value type.
    if (type.valueType == Var::NUMERIC) return *FindDataType("double");
    for (const DataType& row : kDataTypes) {
        if (row.valueType == type.valueType && row.dateTimeType == type.dateTimeType &&
            row.boolean == type.boolean) {
            return row;
        }
    }
    return *FindDataType("dateTime");
}

}  // namespace MCVelscore_850
