#ifndef VELSCORE_HOST_MESSAGES_VSEXCEPTION_H
#define VELSCORE_HOST_MESSAGES_VSEXCEPTION_H

#include <cstdarg>
#include <exception>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "host/export.h"

namespace MCVelscore_850 {

namespace ScoreContext {

/// Turns a code and its arguments into text.
class VELHOST_API IErrorFormater {
public:
    virtual ~IErrorFormater();
    /// `arguments` are C strings and numbers, as the code's message takes them; the texts of the
    /// arguments go to `texts`.
    virtual std::string Format(int code, va_list arguments, std::vector<std::string>& texts) = 0;
};

}  // namespace ScoreContext

/// The host's formatter: the message catalogue.
VELHOST_API extern ScoreContext::IErrorFormater* gErrorFormater;

/// Where in a document: line and column from 1, 0 when unknown, and the path of the element.
struct DocumentPlace {
    unsigned long line = 0;
    unsigned long column = 0;
    std::string path;
    bool IsKnown() const { return !path.empty(); }
};

/// A document that can't be used. Thrown by value.
class VELHOST_API VSException : public std::exception {
public:
    explicit VSException(ScoreContext::IErrorFormater* formater);
    VSException(const VSException&);
    VSException& operator=(const VSException&);
    ~VSException() override;

    /// Formats at the call. The further arguments are C strings or ints, as the message takes
    /// them.
    void PutErrorMessage(int code, ...);

    int GetErrorCode() const { return code_; }
    const std::vector<std::string>& GetArguments() const { return arguments_; }
    const std::string& GetText() const { return text_; }
    const char* what() const noexcept override { return text_.c_str(); }

    /// The reader's place when it refused.
    const DocumentPlace& GetPlace() const { return place_; }
    void SetPlace(DocumentPlace place) { place_ = std::move(place); }

private:
    ScoreContext::IErrorFormater* formater_;
    int code_ = 0;
    std::vector<std::string> arguments_;
    std::string text_;
    DocumentPlace place_;
};

/// The one way out for a document that is refused: code and arguments are the caller's, the text
/// is the catalogue's. Arguments are C strings and ints, since they travel through PutErrorMessage.
template <class... Args>
[[noreturn]] void Refuse(int code, Args... args)
{
    static_assert((std::is_scalar_v<Args> && ...), "text travels as a C string");
    VSException refusal(gErrorFormater);
    refusal.PutErrorMessage(code, args...);
    throw VSException(refusal);
}

}  // namespace MCVelscore_850

#endif
