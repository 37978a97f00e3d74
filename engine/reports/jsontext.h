#ifndef VELSCORE_ENGINE_REPORTS_JSONTEXT_H
#define VELSCORE_ENGINE_REPORTS_JSONTEXT_H

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace MCVelscore_850 {

struct JsonMember;

/// A value of a report: null, a truth, a number, a text, an array, or an object whose members keep
/// their order. Bytes of texts that aren't UTF-8 are replaced; a number that isn't finite is null.
///
/// Memory  what runs out is told by std::bad_alloc and nothing else: a value is destroyed without
///         any, which the JSON library's own can't be.
class JsonValue {
public:
    JsonValue();
    JsonValue(std::nullptr_t) : JsonValue() {}
    JsonValue(double number);
    JsonValue(bool truth);
    template <std::integral T>
    JsonValue(T number) : JsonValue()
    {
        text_ = std::to_string(number);
    }
    JsonValue(std::string_view text);
    JsonValue(const std::string& text) : JsonValue(std::string_view(text)) {}
    JsonValue(const char* text) : JsonValue(std::string_view(text)) {}
    template <class T>
    JsonValue(const std::vector<T>& values) : JsonValue(Array())
    {
        for (const T& value : values) Add(value);
    }
    JsonValue(std::initializer_list<JsonMember> members);
    JsonValue(const JsonValue& other);
    JsonValue(JsonValue&& other) noexcept;
    JsonValue& operator=(JsonValue other) noexcept;
    ~JsonValue();

    /// Empty ones, to be filled.
    static JsonValue Array();
    static JsonValue Object();

    /// Appends to an array.
    void Add(JsonValue value);
    /// The member of an object; a new one, null, behind the others where it has none of that name.
    JsonValue& operator[](std::string_view name);

    /// Appends the value as it is written: indented by two.
    void AppendTo(std::string& text, size_t depth = 0) const;

private:
    enum class Kind { Scalar, Array, Object };
    Kind kind_ = Kind::Scalar;
    std::string text_{"null"};         // of a scalar, as it is written
    std::vector<JsonMember> members_;  // without names, of an array
};

struct JsonMember {
    std::string name;
    JsonValue value;
};

/// A report as it is written, with a line end. Characters that a terminal would obey or hide are
/// escaped.
std::string JsonText(const JsonValue& json);

}  // namespace MCVelscore_850

#endif
