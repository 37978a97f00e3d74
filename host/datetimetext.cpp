#include "host/datetimetext.h"

#include <algorithm>
#include <charconv>
#include <chrono>

#include "host/numbertext.h"

namespace MCVelscore_850 {

namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr double kSecondsPerDay = 86400.0;

enum class Shape { Date, Time, DateTime };

// What the text of a type looks like, and the days from the type's origin to 1970-01-01. Year 0
// counts from 0000-01-01 of the proleptic Gregorian calendar.
struct TypeRow {
    ScoreDictVar::DateTimeType type;
    Shape shape;
    bool countsFromOrigin;
    int originYear;
};

constexpr TypeRow kTypes[] = {
    {ScoreDictVar::DATE, Shape::Date, false, 1970},
    {ScoreDictVar::TIME, Shape::Time, false, 1970},
    {ScoreDictVar::DATE_TIME, Shape::DateTime, false, 1970},
    {ScoreDictVar::DATE_DAYS_SINCE_0, Shape::Date, true, 0},
    {ScoreDictVar::DATE_DAYS_SINCE_1960, Shape::Date, true, 1960},
    {ScoreDictVar::DATE_DAYS_SINCE_1970, Shape::Date, true, 1970},
    {ScoreDictVar::DATE_DAYS_SINCE_1980, Shape::Date, true, 1980},
    {ScoreDictVar::TIME_SECONDS, Shape::Time, true, 1970},
    {ScoreDictVar::DATE_TIME_SECONDS_SINCE_0, Shape::DateTime, true, 0},
    {ScoreDictVar::DATE_TIME_SECONDS_SINCE_1960, Shape::DateTime, true, 1960},
    {ScoreDictVar::DATE_TIME_SECONDS_SINCE_1970, Shape::DateTime, true, 1970},
    {ScoreDictVar::DATE_TIME_SECONDS_SINCE_1980, Shape::DateTime, true, 1980},
};

const TypeRow* FindType(ScoreDictVar::DateTimeType type)
{
    for (const TypeRow& row : kTypes) {
        if (row.type == type) return &row;
    }
    return nullptr;
}

// Takes exactly `digits` digits off the front of the text.
bool TakeDigits(std::string_view& text, size_t digits, int& number)
{
    if (text.size() < digits) return false;
    const auto read = std::from_chars(text.data(), text.data() + digits, number);
    if (read.ec != std::errc() || read.ptr != text.data() + digits || text.front() == '-') {
        return false;
    }
    text.remove_prefix(digits);
    return true;
}

bool TakeChar(std::string_view& text, char c)
{
    if (text.empty() || text.front() != c) return false;
    text.remove_prefix(1);
    return true;
}

bool TakeDate(std::string_view& text, double& dayNumber)
{
    int y = 0;
    int m = 0;
    int d = 0;
    if (!TakeDigits(text, 4, y) || !TakeChar(text, '-') || !TakeDigits(text, 2, m) ||
        !TakeChar(text, '-') || !TakeDigits(text, 2, d)) {
        return false;
    }
    const year_month_day date{year{y}, std::chrono::month{static_cast<unsigned>(m)},
                              std::chrono::day{static_cast<unsigned>(d)}};
    if (!date.ok()) return false;
    dayNumber = static_cast<double>(sys_days{date}.time_since_epoch().count());
    return true;
}

bool TakeTime(std::string_view& text, double& seconds)
{
    int h = 0;
    int m = 0;
    if (!TakeDigits(text, 2, h) || !TakeChar(text, ':') || !TakeDigits(text, 2, m)) return false;
    double s = 0.0;
    if (TakeChar(text, ':')) {
        int whole = 0;
        const std::string_view start = text;
        if (!TakeDigits(text, 2, whole)) return false;
        size_t length = 2;
        if (TakeChar(text, '.')) {
            const size_t fraction = std::min(text.find_first_not_of("0123456789"), text.size());
            text.remove_prefix(fraction);
            length += 1 + fraction;
        }
        if (ReadNumber(start.substr(0, length), s) != NumberText::Number) return false;
    }
    if (h > 23 || m > 59 || s >= 60.0) return false;
    seconds = h * 3600.0 + m * 60.0 + s;
    return true;
}

}  // namespace

double OriginShift(ScoreDictVar::DateTimeType type)
{
    const TypeRow* row = FindType(type);
    if (row == nullptr || row->shape == Shape::Time) return 0.0;
    const sys_days origin{year{row->originYear} / std::chrono::January / 1};
    const double shift = -static_cast<double>(origin.time_since_epoch().count());
    return row->shape == Shape::Date ? shift : shift * kSecondsPerDay;
}

bool ReadDateTime(std::string_view text, ScoreDictVar::DateTimeType type, double& plain)
{
    const TypeRow* row = FindType(type);
    if (row == nullptr) return false;
    text = TrimBlanks(text);
    double number = 0.0;
    if (row->countsFromOrigin && ReadNumber(text, number) == NumberText::Number) {
        plain = number - OriginShift(type);
        return true;
    }
    double date = 0.0;
    double time = 0.0;
    if (row->shape != Shape::Time && !TakeDate(text, date)) return false;
    if (row->shape == Shape::DateTime && !TakeChar(text, 'T') && !TakeChar(text, ' ')) return false;
    if (row->shape != Shape::Date && !TakeTime(text, time)) return false;
    if (!text.empty()) return false;
    plain = row->shape == Shape::Date ? date : date * kSecondsPerDay + time;
    return true;
}

}  // namespace MCVelscore_850
