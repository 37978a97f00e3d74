#include "engine/tables/arrowtype.h"

#include <charconv>

#include <fmt/format.h>

#include "engine/messages/shorttext.h"

namespace MCVelscore_850 {

namespace {

struct Plain {
    std::string_view format;
    ArrowType type;
};

// The types whose format has no parameters.
constexpr Plain kPlain[] = {
    {"n", {.kind = ArrowKind::Null}},
    {"b", {.kind = ArrowKind::Truth}},
    {"c", {.kind = ArrowKind::Signed, .bytes = 1}},
    {"C", {.kind = ArrowKind::Unsigned, .bytes = 1}},
    {"s", {.kind = ArrowKind::Signed, .bytes = 2}},
    {"S", {.kind = ArrowKind::Unsigned, .bytes = 2}},
    {"i", {.kind = ArrowKind::Signed, .bytes = 4}},
    {"I", {.kind = ArrowKind::Unsigned, .bytes = 4}},
    {"l", {.kind = ArrowKind::Signed, .bytes = 8}},
    {"L", {.kind = ArrowKind::Unsigned, .bytes = 8}},
    {"f", {.kind = ArrowKind::Float, .bytes = 4}},
    {"g", {.kind = ArrowKind::Float, .bytes = 8}},
    {"u", {.kind = ArrowKind::Text}},
    {"U", {.kind = ArrowKind::LargeText}},
    {"vu", {.kind = ArrowKind::TextView}},
    {"tdD", {.kind = ArrowKind::Date, .bytes = 4}},
    {"tdm", {.kind = ArrowKind::Date, .bytes = 8, .perSecond = 1000}},
    {"tts", {.kind = ArrowKind::TimeOfDay, .bytes = 4, .perSecond = 1}},
    {"ttm", {.kind = ArrowKind::TimeOfDay, .bytes = 4, .perSecond = 1000}},
    {"ttu", {.kind = ArrowKind::TimeOfDay, .bytes = 8, .perSecond = 1000000}},
    {"ttn", {.kind = ArrowKind::TimeOfDay, .bytes = 8, .perSecond = 1000000000}},
};

struct Unit {
    std::string_view format;
    int64_t perSecond;
};

constexpr Unit kTimestamps[] = {
    {"tss:", 1}, {"tsm:", 1000}, {"tsu:", 1000000}, {"tsn:", 1000000000}};

// The numbers of "19,10,256"; false for anything else.
bool ReadNumbers(std::string_view text, int (&numbers)[3], int& count)
{
    for (count = 0; count < 3; ++count) {
        const auto [end, error] =
            std::from_chars(text.data(), text.data() + text.size(), numbers[count]);
        if (error != std::errc()) return false;
        text.remove_prefix(static_cast<size_t>(end - text.data()));
        if (text.empty()) return ++count > 1;
        if (text.front() != ',') return false;
        text.remove_prefix(1);
    }
    return false;
}

std::optional<ArrowType> DecimalOf(std::string_view parameters)
{
    int numbers[3] = {0, 0, 128};  // precision, scale, bits
    int count = 0;
    if (!ReadNumbers(parameters, numbers, count)) return std::nullopt;
    const int bits = numbers[2];
    const int most = bits == 128 ? 38 : bits == 256 ? 76 : 0;
    const bool sound =
        numbers[0] > 0 && numbers[0] <= most && numbers[1] >= -most && numbers[1] <= most;
    if (!sound) return std::nullopt;
    return ArrowType{
        .kind = ArrowKind::Decimal, .bytes = static_cast<size_t>(bits) / 8, .scale = numbers[1]};
}

struct Name {
    std::string_view start;
    std::string_view name;
};

// Of what isn't taken; the first that fits.
constexpr Name kOthers[] = {
    {"e", "float16"},
    {"d:", "decimal of another width"},
    {"z", "binary"},
    {"Z", "large_binary"},
    {"vz", "binary_view"},
    {"w:", "fixed_size_binary"},
    {"tD", "duration"},
    {"ti", "interval"},
    {"+l", "list"},
    {"+L", "large_list"},
    {"+vl", "list_view"},
    {"+vL", "large_list_view"},
    {"+w:", "fixed_size_list"},
    {"+s", "struct"},
    {"+m", "map"},
    {"+u", "union"},
    {"+r", "run_end_encoded"},
};

}  // namespace

int64_t ArrowType::BufferCount() const
{
    if (kind == ArrowKind::Null) return 0;
    return IsText() ? 3 : 2;
}

std::optional<ArrowType> ArrowTypeOf(std::string_view format)
{
    for (const Plain& each : kPlain) {
        if (each.format == format) return each.type;
    }
    for (const Unit& unit : kTimestamps) {
        if (!format.starts_with(unit.format)) continue;
        return ArrowType{.kind = ArrowKind::Timestamp,
                         .bytes = 8,
                         .perSecond = unit.perSecond,
                         .hasTimeZone = format.size() > unit.format.size()};
    }
    if (format.starts_with("d:")) return DecimalOf(format.substr(2));
    return std::nullopt;
}

std::string ArrowTypeName(std::string_view format)
{
    for (const Name& each : kOthers) {
        if (format.starts_with(each.start)) {
            return fmt::format("{} ({})", each.name, ShortText(format));
        }
    }
    return fmt::format("'{}'", ShortText(format));
}

}  // namespace MCVelscore_850
