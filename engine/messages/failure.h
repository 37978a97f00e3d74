#ifndef VELSCORE_ENGINE_MESSAGES_FAILURE_H
#define VELSCORE_ENGINE_MESSAGES_FAILURE_H

#include <exception>
#include <string>
#include <vector>

namespace MCVelscore_850 {

/// What a run fails on; the number is the command's exit code.
enum class FailureKind { Usage = 1, Document = 2, Cases = 3, Output = 4, Plugin = 7 };

/// A run that can't go on: a code of the message catalogue with its arguments. what() is the
/// catalogue's text; Remedy() what the user can do: what fits this very failure, when the caller
/// knows it, before what the catalogue says of all such.
class Failure : public std::exception {
public:
    /// `hint` is whole sentences, or empty.
    Failure(FailureKind kind, int code, std::vector<std::string> arguments, std::string hint = {});
    ~Failure() override;

    FailureKind Kind() const { return kind_; }
    int Code() const { return code_; }
    const char* what() const noexcept override { return text_.c_str(); }
    std::string Remedy() const;
    /// As the code's constant tells them.
    const std::vector<std::string>& Arguments() const { return arguments_; }

private:
    FailureKind kind_;
    int code_;
    std::vector<std::string> arguments_;
    std::string text_;
    std::string hint_;
};

}  // namespace MCVelscore_850

#endif
