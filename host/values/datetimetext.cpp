#include "host/values/datetimetext.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>

#include <fmt/format.h>

#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

using Shape = DateTimeShape;

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

// An offset from Greenwich behind a time, in seconds; 0 where there is none.
bool TakeOffset(std::string_view& text, double& seconds)
{
    seconds = 0.0;
    if (text.empty() || TakeChar(text, 'Z')) return true;
    const bool east = text.front() == '+';
    if (!TakeChar(text, '+') && !TakeChar(text, '-')) return false;
    int h = 0;
    int m = 0;
    if (!TakeDigits(text, 2, h) || !TakeChar(text, ':') || !TakeDigits(text, 2, m)) return false;
    if (h > 14 || m > 59) return false;
    seconds = (east ? 1.0 : -1.0) * (h * 3600.0 + m * 60.0);
    return true;
}

bool ReadShape(std::string_view text, Shape shape, double& plain)
{
    double date = 0.0;
    double time = 0.0;
    double offset = 0.0;
    if (shape != Shape::Time && !TakeDate(text, date)) return false;
    if (shape == Shape::DateTime && !TakeChar(text, 'T') && !TakeChar(text, ' ')) return false;
    if (shape != Shape::Date && !TakeTime(text, time)) return false;
    if (shape == Shape::DateTime && !TakeOffset(text, offset)) return false;
    if (shape == Shape::Time) TakeChar(text, 'Z');
    if (!text.empty()) return false;
    plain = shape == Shape::Date ? date : date * kSecondsPerDay + time - offset;
    return true;
}

void AppendTime(double seconds, std::string& out)
{
    const int whole = static_cast<int>(seconds);
    const int minutes = whole / 60;
    fmt::format_to(std::back_inserter(out), "{:02}:{:02}:", minutes / 60, minutes % 60);
    const double rest = seconds - minutes * 60.0;
    if (rest < 10.0) out += '0';
    AppendNumber(rest, out);
}

}  // namespace

double OriginShift(ScoreDictVar::DateTimeType type)
{
    const TypeRow* row = FindType(type);
    if (row == nullptr || row->shape == Shape::Time) return 0.0;
    const double shift = -DaysToYear(row->originYear);
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
    return ReadShape(text, row->shape, plain);
}

bool ReadAnyDateTime(std::string_view text, DateTimeShape& shape, double& plain)
{
    text = TrimBlanks(text);
    for (const Shape candidate : {Shape::Date, Shape::Time, Shape::DateTime}) {
        shape = candidate;
        if (ReadShape(text, candidate, plain)) return true;
    }
    return false;
}

void AppendDateTime(double plain, ScoreDictVar::DateTimeType type, std::string& out)
{
    const TypeRow* row = FindType(type);
    if (row == nullptr || !std::isfinite(plain)) return;
    if (row->countsFromOrigin) return AppendNumber(plain + OriginShift(type), out);
    if (row->shape == Shape::Time) {
        if (plain >= 0.0 && plain < kSecondsPerDay) AppendTime(plain, out);
        return;
    }
    const double day =
        row->shape == Shape::Date ? std::floor(plain) : std::floor(plain / kSecondsPerDay);
    if (day < DaysToYear(0) || day >= DaysToYear(9999) + 365.0) return;
    const year_month_day date{sys_days{days{static_cast<int>(day)}}};
    fmt::format_to(std::back_inserter(out), "{:04}-{:02}-{:02}", static_cast<int>(date.year()),
                   static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
    if (row->shape == Shape::Date) return;
    out += 'T';
    AppendTime(plain - day * kSecondsPerDay, out);
}

DateTimeShape ShapeOf(ScoreDictVar::DateTimeType type)
{
    const TypeRow* row = FindType(type);
    return row == nullptr ? Shape::DateTime : row->shape;
}

bool CountsFromOrigin(ScoreDictVar::DateTimeType type)
{
    const TypeRow* row = FindType(type);
    return row != nullptr && row->countsFromOrigin;
}

bool ChangeShape(DateTimeShape from, DateTimeShape to, double& plain)
{
    if (from == to) return true;
    if (from == Shape::Date && to == Shape::DateTime) {
        plain *= kSecondsPerDay;
        return true;
    }
    if (from != Shape::DateTime) return false;
    const double day = std::floor(plain / kSecondsPerDay);
    plain = to == Shape::Date ? day : plain - day * kSecondsPerDay;
    return true;
}

double DaysToYear(int y)
{
    const sys_days first{year{y} / std::chrono::January / 1};
    return static_cast<double>(first.time_since_epoch().count());
}

}  // namespace MCVelscore_850
