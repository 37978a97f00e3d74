#ifndef VELSCORE_TESTS_ENGINE_TEXTSOURCE_H
#define VELSCORE_TESTS_ENGINE_TEXTSOURCE_H

#include <algorithm>
#include <cstring>
#include <string>

#include "engine/tables/bytesource.h"

namespace MCVelscore_850 {

/// A text as a source, handed out in pieces of at most `piece` bytes.
class TextSource final : public ByteSource {
public:
    explicit TextSource(std::string text, size_t piece = 1 << 16)
        : text_(std::move(text)), piece_(piece)
    {}
    size_t Read(char* buffer, size_t size) override
    {
        const size_t count = std::min({size, piece_, text_.size() - place_});
        std::memcpy(buffer, text_.data() + place_, count);
        place_ += count;
        return count;
    }
    const std::string& Name() const override { return name_; }

private:
    std::string text_;
    size_t piece_;
    size_t place_ = 0;
    std::string name_ = "cases.csv";
};

}  // namespace MCVelscore_850

#endif
