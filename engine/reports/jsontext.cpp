#include "engine/reports/jsontext.h"

#include <algorithm>
#include <utility>

#include <nlohmann/json.hpp>

#include "engine/messages/visibletext.h"

namespace MCVelscore_850 {

namespace {

using Json = nlohmann::json;

// Of scalars alone: those are destroyed without memory.
std::string Written(const Json& scalar)
{
    return scalar.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

JsonValue::JsonValue() = default;
JsonValue::JsonValue(bool truth) : text_(truth ? "true" : "false") {}
JsonValue::JsonValue(double number) : text_(Written(number)) {}
JsonValue::JsonValue(std::string_view text) : text_(Written(text)) {}
JsonValue::JsonValue(std::initializer_list<JsonMember> members)
    : kind_(Kind::Object), members_(members)
{}
JsonValue::JsonValue(const JsonValue& other) = default;
JsonValue::JsonValue(JsonValue&& other) noexcept = default;
JsonValue::~JsonValue() = default;

JsonValue& JsonValue::operator=(JsonValue other) noexcept
{
    kind_ = other.kind_;
    text_.swap(other.text_);
    members_.swap(other.members_);
    return *this;
}

JsonValue JsonValue::Array()
{
    JsonValue array;
    array.kind_ = Kind::Array;
    return array;
}

JsonValue JsonValue::Object()
{
    JsonValue object;
    object.kind_ = Kind::Object;
    return object;
}

void JsonValue::Add(JsonValue value) { members_.push_back({"", std::move(value)}); }

JsonValue& JsonValue::operator[](std::string_view name)
{
    const auto found = std::find_if(members_.begin(), members_.end(),
                                    [&](const JsonMember& member) { return member.name == name; });
    if (found != members_.end()) return found->value;
    return members_.emplace_back(JsonMember{std::string(name), {}}).value;
}

void JsonValue::AppendTo(std::string& text, size_t depth) const
{
    if (kind_ == Kind::Scalar) {
        text += text_;
        return;
    }
    const bool isObject = kind_ == Kind::Object;
    text += isObject ? '{' : '[';
    const char* separator = "\n";
    for (const JsonMember& member : members_) {
        text.append(separator).append(2 * (depth + 1), ' ');
        if (isObject) text.append(Written(member.name)).append(": ");
        member.value.AppendTo(text, depth + 1);
        separator = ",\n";
    }
    if (!members_.empty()) text.append("\n").append(2 * depth, ' ');
    text += isObject ? '}' : ']';
}

std::string JsonText(const JsonValue& json)
{
    std::string text;
    json.AppendTo(text);
    return EscapedJson(text) + "\n";
}

}  // namespace MCVelscore_850
