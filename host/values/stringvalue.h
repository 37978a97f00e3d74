#ifndef VELSCORE_HOST_VALUES_STRINGVALUE_H
#define VELSCORE_HOST_VALUES_STRINGVALUE_H

#include <string>
#include <string_view>

#include "host/values/scorevalue.h"

namespace MCVelscore_850 {

/// A text. It can also stand for a missing text, which an empty field of a table becomes: the
/// variable then answers IsMissing, while the value's own IsMissingValue() stays false.
class VELHOST_API StringValue final : public ScoreValue {
public:
    explicit StringValue(const char* text) : ScoreValue(STRING), text_(text) {}
    explicit StringValue(const std::string& text) : ScoreValue(STRING), text_(text) {}
    ~StringValue() override;

    ScoreValue* Clone() const override;
    bool Equals(const ScoreValue* other) const override;
    /// The number that the text spells, else the system-missing number.
    double GetDouble() const override;
    std::string GetString() const override { return text_; }
    bool IsMissingValue() const override { return false; }
    int GetValueType() const override { return STRING; }

    void SetString(const std::string& text) { Assign(text); }
    /// SetString without a temporary; keeps the buffer.
    void Assign(std::string_view text)
    {
        text_.assign(text);
        missing_ = false;
    }
    /// Makes room for a text of that many bytes, so that it can be set without allocating.
    void Reserve(size_t bytes) { text_.reserve(bytes); }
    /// Makes this the missing text, whose bytes are empty.
    void SetMissing()
    {
        text_.clear();
        missing_ = true;
    }
    bool IsMissingText() const { return missing_; }
    const std::string& Text() const { return text_; }

private:
    std::string text_;
    bool missing_ = false;
};

}  // namespace MCVelscore_850

#endif
