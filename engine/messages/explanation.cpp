#include "engine/messages/explanation.h"

#include <string_view>

#include <fmt/format.h>

#include "engine/messages/shorttext.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {

namespace {

Explanation Explained(const Message& message)
{
    const std::vector<std::string> places(std::string_view(message.arguments).size(), "...");
    return {message.code, Messages::Format(message.code, places), message.remedy};
}

}  // namespace

std::optional<Explanation> Explain(int code)
{
    const Message* message = Messages::Find(code);
    if (message == nullptr) return std::nullopt;
    return Explained(*message);
}

std::vector<Explanation> ExplainAll()
{
    std::vector<Explanation> all;
    for (const Message& message : Messages::All()) all.push_back(Explained(message));
    return all;
}

std::string FaultText(const std::string& field, const std::optional<std::string>& text)
{
    if (field.empty()) return {};
    if (!text) return fmt::format("field {}", field);
    if (text->empty()) return fmt::format("field {}: empty", field);
    return fmt::format("field {}: '{}'", field, ShortText(*text));
}

bool TellsTheCase(int code)
{
    const Message* message = Messages::Find(code);
    return message != nullptr && *message->arguments != '\0';
}

std::string MessageText(int code, const std::vector<std::string>& arguments)
{
    return Messages::Format(code, arguments);
}

}  // namespace MCVelscore_850
