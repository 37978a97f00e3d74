#include "engine/failure.h"

#include <utility>

#include "host/messages.h"

namespace MCVelscore_850 {

Failure::Failure(FailureKind kind, int code, std::vector<std::string> arguments)
    : kind_(kind), code_(code), text_(Messages::Format(code, arguments))
{}

Failure::~Failure() = default;

std::string Failure::Remedy() const
{
    const Message* row = Messages::Find(code_);
    return row == nullptr ? std::string() : row->remedy;
}

}  // namespace MCVelscore_850
