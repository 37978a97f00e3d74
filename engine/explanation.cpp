#include "engine/explanation.h"

#include <string_view>

#include "host/messages.h"

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

std::string MessageText(int code, const std::vector<std::string>& arguments)
{
    return Messages::Format(code, arguments);
}

}  // namespace MCVelscore_850
