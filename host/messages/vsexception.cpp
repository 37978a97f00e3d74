#include "host/messages/vsexception.h"

#include "host/messages/messages.h"

namespace MCVelscore_850 {

ScoreContext::IErrorFormater::~IErrorFormater() = default;

namespace {

class CatalogueFormater final : public ScoreContext::IErrorFormater {
public:
    std::string Format(int code, va_list arguments, std::vector<std::string>& texts) override
    {
        texts = Messages::ReadArguments(code, arguments);
        return Messages::Format(code, texts);
    }
};

CatalogueFormater gCatalogueFormater;

}  // namespace

ScoreContext::IErrorFormater* gErrorFormater = &gCatalogueFormater;

VSException::VSException(ScoreContext::IErrorFormater* formater) : formater_(formater) {}
VSException::VSException(const VSException&) = default;
VSException& VSException::operator=(const VSException&) = default;
VSException::~VSException() = default;

void VSException::PutErrorMessage(int code, ...)
{
    code_ = code;
    arguments_.clear();
    if (formater_ == nullptr) return;
    va_list arguments;
    va_start(arguments, code);
    text_ = formater_->Format(code, arguments, arguments_);
    va_end(arguments);
}

}  // namespace MCVelscore_850
