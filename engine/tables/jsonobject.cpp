#include "engine/tables/jsonobject.h"

#include <algorithm>
#include <cstring>
#include <new>

#include <simdjson.h>

#include "engine/tables/plainnumber.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

namespace ondemand = simdjson::ondemand;

static_assert(kJsonRoom >= simdjson::SIMDJSON_PADDING);

constexpr std::string_view kBlanks = " \t\r";
constexpr size_t kMostDepth = 500;  // each level costs the stack a frame

constexpr std::string_view kNoObject = "it doesn't begin with '{'";
constexpr std::string_view kNoEnd = "it doesn't end with '}'";
constexpr std::string_view kNoString = "a string is never closed, or has an escape that is none";
constexpr std::string_view kControl = "a string has a control character that isn't escaped";
constexpr std::string_view kNoValue = "a value is no string, number, true, false or null";
constexpr std::string_view kTooNested = "it is nested too deep";
constexpr std::string_view kNoStructure = "a comma, a colon, a brace or a bracket is out of place";

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

size_t PassDigits(std::string_view text, size_t at)
{
    while (at < text.size() && IsDigit(text[at])) ++at;
    return at;
}

// The grammar of RFC 8259: no plus sign, no zeros in front, digits around a point.
bool IsNumber(std::string_view text)
{
    size_t at = text.starts_with('-') ? 1 : 0;
    const size_t whole = at;
    at = PassDigits(text, at);
    if (at == whole || (at - whole > 1 && text[whole] == '0')) return false;
    if (at < text.size() && text[at] == '.') {
        const size_t begin = at + 1;
        at = PassDigits(text, begin);
        if (at == begin) return false;
    }
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        ++at;
        if (at < text.size() && (text[at] == '+' || text[at] == '-')) ++at;
        const size_t begin = at;
        at = PassDigits(text, at);
        if (at == begin) return false;
    }
    return at == text.size();
}

std::string_view WithoutBlanksBehind(std::string_view text)
{
    const size_t last = text.find_last_not_of(" \t\r\n");
    return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

RecordFault NoObject(std::string_view why)
{
    RecordFault fault;
    fault.code = kNoJsonObject;
    fault.detail = why;
    return fault;
}

RecordFault FaultOf(int code)
{
    RecordFault fault;
    fault.code = code;
    return fault;
}

RecordFault FaultOf(simdjson::error_code error)
{
    switch (error) {
        case simdjson::SUCCESS: return {};
        case simdjson::MEMALLOC: throw std::bad_alloc();
        case simdjson::UTF8_ERROR: return FaultOf(kRowEncoding);
        case simdjson::UNESCAPED_CHARS: return NoObject(kControl);
        case simdjson::UNCLOSED_STRING:
        case simdjson::STRING_ERROR: return NoObject(kNoString);
        case simdjson::INCOMPLETE_ARRAY_OR_OBJECT: return NoObject(kNoEnd);
        default: return NoObject(kNoStructure);
    }
}

}  // namespace

bool IsBlankLine(std::string_view line)
{
    return line.find_first_not_of(kBlanks) == std::string_view::npos;
}

// Goes through a line's object with the library, which finds what the line is made of and checks
// its encoding; what it would leave unchecked is checked here.
class JsonParser {
public:
    explicit JsonParser(JsonObjectReader& reader) : reader_(reader) {}

    RecordFault Read(std::string_view line, JsonMemberTaker& taker);

private:
    RecordFault ReadMembers(ondemand::object& object, std::string_view line,
                            JsonMemberTaker& taker);
    RecordFault ReadKey(ondemand::field& field, std::string_view line, std::string_view& key);
    RecordFault ReadValue(ondemand::value& value, JsonMember& member);
    RecordFault ReadString(ondemand::value& value, JsonMember& member);
    RecordFault Check(ondemand::value& value, size_t depth);
    RecordFault CheckArray(ondemand::value& value, size_t depth);
    RecordFault CheckObject(ondemand::value& value, size_t depth);

    JsonObjectReader& reader_;
    ondemand::parser parser_;
};

RecordFault JsonParser::Read(std::string_view line, JsonMemberTaker& taker)
{
    const size_t first = line.find_first_not_of(kBlanks);
    if (first == std::string_view::npos || line[first] != '{') return NoObject(kNoObject);
    // Lines get longer little by little; the parser's memory shall not.
    if (line.size() > parser_.capacity()) {
        constexpr size_t kLeast = size_t{1} << 12;
        const size_t capacity = std::max(kLeast, std::min(2 * line.size(), kMaxRow));
        if (const auto error = parser_.allocate(capacity)) return FaultOf(error);
    }
    ondemand::document document;
    const simdjson::padded_string_view padded(line.data(), line.size(), line.size() + kJsonRoom);
    if (const auto error = parser_.iterate(padded).get(document)) return FaultOf(error);
    ondemand::object object;
    if (const auto error = document.get_object().get(object)) return FaultOf(error);
    const RecordFault fault = ReadMembers(object, line, taker);
    if (fault.code != 0) return fault;
    // What stands behind the object has a place.
    const bool isAll = document.current_location().error() == simdjson::OUT_OF_BOUNDS;
    return isAll ? RecordFault{} : NoObject(kNoStructure);
}

RecordFault JsonParser::ReadMembers(ondemand::object& object, std::string_view line,
                                    JsonMemberTaker& taker)
{
    for (auto each : object) {
        ondemand::field field;
        if (const auto error = std::move(each).get(field)) return FaultOf(error);
        JsonMember member;
        RecordFault fault = ReadKey(field, line, member.key);
        if (fault.code == 0) fault = ReadValue(field.value(), member);
        if (fault.code == 0) fault = taker.Take(member);
        if (fault.code != 0) return fault;
    }
    return {};
}

RecordFault JsonParser::ReadKey(ondemand::field& field, std::string_view line,
                                std::string_view& key)
{
    const char* const begin = field.key().raw();
    const char* const end = line.data() + line.size();
    const void* const quote = std::memchr(begin, '"', static_cast<size_t>(end - begin));
    if (quote == nullptr) return NoObject(kNoString);
    key = {begin, static_cast<size_t>(static_cast<const char*>(quote) - begin)};
    if (key.find('\\') == std::string_view::npos) return {};
    std::string_view unescaped;
    if (const auto error = field.unescaped_key().get(unescaped)) return FaultOf(error);
    key = reader_.Keep(unescaped);
    return key.find('\0') == std::string_view::npos ? RecordFault{} : FaultOf(kNulByte);
}

RecordFault JsonParser::ReadValue(ondemand::value& value, JsonMember& member)
{
    const std::string_view token = WithoutBlanksBehind(value.raw_json_token());
    const char first = token.empty() ? '\0' : token.front();
    if (first == '{' || first == '[') {
        member.kind = JsonMember::Nested;
        return Check(value, 1);
    }
    member.value = token;
    if (first == '"') {
        member.kind = JsonMember::String;
        return ReadString(value, member);
    }
    // Whoever goes on to the next member passes the token.
    if (token == "null") return {};
    member.text = token;
    member.kind = token == "true" || token == "false" ? JsonMember::Word : JsonMember::Number;
    return member.kind == JsonMember::Word || IsNumber(token) ? RecordFault{} : NoObject(kNoValue);
}

RecordFault JsonParser::ReadString(ondemand::value& value, JsonMember& member)
{
    const std::string_view token = member.value;
    if (token.size() < 2 || token.back() != '"') return NoObject(kNoString);
    if (token.find('\\') == std::string_view::npos) {
        member.text = token.substr(1, token.size() - 2);
        return FaultOf(value.get_raw_json_string().error());
    }
    std::string_view unescaped;
    if (const auto error = value.get_string().get(unescaped)) return FaultOf(error);
    member.text = reader_.Keep(unescaped);
    return member.text.find('\0') == std::string_view::npos ? RecordFault{} : FaultOf(kNulByte);
}

RecordFault JsonParser::Check(ondemand::value& value, size_t depth)
{
    if (depth > kMostDepth) return NoObject(kTooNested);
    const std::string_view token = value.raw_json_token();
    if (token.starts_with('[')) return CheckArray(value, depth);
    if (token.starts_with('{')) return CheckObject(value, depth);
    JsonMember member;
    return ReadValue(value, member);
}

RecordFault JsonParser::CheckArray(ondemand::value& value, size_t depth)
{
    ondemand::array array;
    if (const auto error = value.get_array().get(array)) return FaultOf(error);
    for (auto each : array) {
        if (const auto error = each.error()) return FaultOf(error);
        ondemand::value element = each.value_unsafe();
        const RecordFault fault = Check(element, depth + 1);
        if (fault.code != 0) return fault;
    }
    return {};
}

RecordFault JsonParser::CheckObject(ondemand::value& value, size_t depth)
{
    ondemand::object object;
    if (const auto error = value.get_object().get(object)) return FaultOf(error);
    for (auto each : object) {
        ondemand::field field;
        if (const auto error = std::move(each).get(field)) return FaultOf(error);
        std::string_view key;
        if (const auto error = field.unescaped_key().get(key)) return FaultOf(error);
        if (key.find('\0') != std::string_view::npos) return FaultOf(kNulByte);
        const RecordFault fault = Check(field.value(), depth + 1);
        if (fault.code != 0) return fault;
    }
    return {};
}

JsonMemberTaker::~JsonMemberTaker() = default;

JsonObjectReader::JsonObjectReader() : parser_(std::make_unique<JsonParser>(*this)) {}

JsonObjectReader::~JsonObjectReader() = default;

RecordFault JsonObjectReader::Read(std::string_view line, JsonMemberTaker& taker)
{
    if (line.find('\0') != std::string_view::npos) return FaultOf(kNulByte);
    return parser_->Read(line, taker);
}

std::string& JsonObjectReader::Keep(std::string_view text)
{
    if (unescapedCount_ == unescaped_.size()) unescaped_.emplace_back().reserve(kPlainNumberRoom);
    return unescaped_[unescapedCount_++].assign(text);
}

}  // namespace MCVelscore_850
