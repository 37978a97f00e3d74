#ifndef VELSCORE_ENGINE_TABLES_JSONOBJECT_H
#define VELSCORE_ENGINE_TABLES_JSONOBJECT_H

#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "engine/tables/recordcheck.h"

namespace MCVelscore_850 {

/// Bytes behind a line that a JsonObjectReader may read. The first of them is a line end or blank.
inline constexpr size_t kJsonRoom = 64;

/// A key of an object, and its value.
struct JsonMember {
    enum Kind { String, Number, Word, Null, Nested };

    std::string_view key;
    Kind kind = Null;
    std::string_view text;   ///< a string's own, else as `value`; empty for null and Nested
    std::string_view value;  ///< as it is written, a string in its quotes; empty for Nested
};

/// Takes the members of an object, one after the other.
class JsonMemberTaker {
public:
    virtual ~JsonMemberTaker();
    /// A fault, other than 0, ends the object.
    virtual RecordFault Take(const JsonMember& member) = 0;
};

class JsonParser;  // hides the library's types

/// Reads JSON objects of a line each (RFC 8259), strictly: whatever stands in the line is checked.
///
/// Numbers have to be written as JSON has them, and aren't read.
/// Texts   view the line, or the reader where a string has escapes, until Forget().
/// Errors  kNoJsonObject, kRowEncoding, and kNulByte for a NUL byte, written as an escape or not;
///         the taker's. Members before the fault were taken.
/// Memory  some 6 bytes for each of the longest line, kept.
/// Threads one at a time.
class JsonObjectReader {
public:
    JsonObjectReader();
    JsonObjectReader(const JsonObjectReader&) = delete;
    JsonObjectReader& operator=(const JsonObjectReader&) = delete;
    ~JsonObjectReader();

    /// Hands the members of the object in `line` to the taker, in their order. Behind the line are
    /// kJsonRoom bytes.
    RecordFault Read(std::string_view line, JsonMemberTaker& taker);
    /// Lets the texts go.
    void Forget() { unescapedCount_ = 0; }
    /// A copy of the text, kept until Forget().
    std::string& Keep(std::string_view text);

private:
    friend class JsonParser;

    std::unique_ptr<JsonParser> parser_;
    std::deque<std::string> unescaped_;
    size_t unescapedCount_ = 0;
};

/// True for a line of nothing but blanks.
bool IsBlankLine(std::string_view line);

}  // namespace MCVelscore_850

#endif
