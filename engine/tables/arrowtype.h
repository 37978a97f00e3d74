#ifndef VELSCORE_ENGINE_TABLES_ARROWTYPE_H
#define VELSCORE_ENGINE_TABLES_ARROWTYPE_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace MCVelscore_850 {

/// What the values of an Arrow column are, of those that are taken.
enum class ArrowKind {
    Null,
    Truth,
    Signed,
    Unsigned,
    Float,
    Decimal,
    Text,       ///< offsets of 32 bits
    LargeText,  ///< offsets of 64 bits
    TextView,
    Date,
    TimeOfDay,
    Timestamp
};

struct ArrowType {
    ArrowKind kind = ArrowKind::Null;
    size_t bytes = 0;          ///< of a value in its buffer; 0 for truths, texts and nulls
    int64_t perSecond = 0;     ///< of times; of a date 0 where it counts days
    int scale = 0;             ///< of a decimal: the digits behind the point
    bool hasTimeZone = false;  ///< a timestamp that counts from 1970 in UTC, wherever it is shown

    bool IsText() const
    {
        return kind == ArrowKind::Text || kind == ArrowKind::LargeText ||
               kind == ArrowKind::TextView;
    }
    bool IsWhole() const { return kind == ArrowKind::Signed || kind == ArrowKind::Unsigned; }
    bool IsTime() const
    {
        return kind == ArrowKind::Date || kind == ArrowKind::TimeOfDay ||
               kind == ArrowKind::Timestamp;
    }
    /// How many buffers an array of it has; a view of texts has so many or more.
    int64_t BufferCount() const;
};

/// The type that a format string of the C data interface means; nothing for one that isn't taken.
std::optional<ArrowType> ArrowTypeOf(std::string_view format);

/// How messages call the type of a format string: "list (+l)"; the string alone where it is none.
std::string ArrowTypeName(std::string_view format);

}  // namespace MCVelscore_850

#endif
