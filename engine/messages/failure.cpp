#include "engine/messages/failure.h"

#include <utility>

#include "host/messages/messages.h"

namespace MCVelscore_850 {

Failure::Failure(FailureKind kind, int code, std::vector<std::string> arguments, std::string hint)
    : kind_(kind),
      code_(code),
      arguments_(std::move(arguments)),
      text_(Messages::Format(code, arguments_)),
      hint_(std::move(hint))
{}

Failure::~Failure() = default;

std::string Failure::Remedy() const
{
    const Message* row = Messages::Find(code_);
    const std::string remedy = row == nullptr ? "" : row->remedy;
    return hint_.empty() || remedy.empty() ? hint_ + remedy : hint_ + " " + remedy;
}

}  // namespace MCVelscore_850
