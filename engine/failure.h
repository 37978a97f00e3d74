#ifndef VELSCORE_ENGINE_FAILURE_H
#define VELSCORE_ENGINE_FAILURE_H

#include <exception>
#include <string>
#include <vector>

namespace MCVelscore_850 {

/// What a run fails on; the number is the command's exit code.
enum class FailureKind { Usage = 1, Document = 2, Cases = 3, Output = 4, Plugin = 7 };

/// A run that can't go on: a code of the message catalogue with its arguments. what() is the
/// catalogue's text; Remedy() what the user can do.
class Failure : public std::exception {
public:
    Failure(FailureKind kind, int code, std::vector<std::string> arguments);
    ~Failure() override;

    FailureKind Kind() const { return kind_; }
    int Code() const { return code_; }
    const char* what() const noexcept override { return text_.c_str(); }
    std::string Remedy() const;

private:
    FailureKind kind_;
    int code_;
    std::string text_;
};

}  // namespace MCVelscore_850

#endif
