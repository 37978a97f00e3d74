// Built-in functions of regular expressions. RE2 takes time in proportion to the text, whatever
// the pattern.

#include <re2/re2.h>

#include "host/expressions/functions.h"

namespace MCVelscore_850 {

namespace {

using Args = const FunctionArguments&;
using Value = ExpressionValue;

// The memory of one compiled pattern.
constexpr int64_t kPatternMemory = 1 << 20;

// Whether a \C stands in a pattern, which matches one byte: a text would be cut within a character.
// One between \Q and \E is taken for it too.
bool MatchesBytes(std::string_view pattern)
{
    for (size_t i = 0; i + 1 < pattern.size(); ++i) {
        if (pattern[i] != '\\') continue;
        ++i;
        if (pattern[i] == 'C') return true;
    }
    return false;
}

// The last pattern, compiled.
class CompiledPattern final : public FunctionState {
public:
    bool Prepare(const std::string& pattern, std::string& reason) override
    {
        if (compiled_ == nullptr || compiled_->pattern() != pattern) {
            RE2::Options options;
            options.set_log_errors(false);
            options.set_max_mem(kPatternMemory);
            compiled_ = std::make_unique<RE2>(pattern, options);
        }
        reason.clear();
        if (!compiled_->ok()) {
            reason = compiled_->error();
        } else if (MatchesBytes(pattern)) {
            reason = "\\C matches bytes, not characters";
        }
        return reason.empty();
    }
    const RE2& Get() const { return *compiled_; }

    // Replaces every match in `text`, into `out`. False when the outcome is longer than `longest`.
    bool Replace(const std::string& text, const std::string& replacement, size_t longest,
                 std::string& out);

private:
    // The replacement as pieces: a group of the match, or literal text for group -1.
    struct Piece {
        int group;
        std::string text;
    };
    void ReadReplacement(const std::string& replacement);

    std::unique_ptr<RE2> compiled_;
    std::string replacement_;
    std::vector<Piece> pieces_;
    std::vector<re2::StringPiece> groups_;
};

std::unique_ptr<FunctionState> MakePattern() { return std::make_unique<CompiledPattern>(); }

// $1 to $9 are the groups of the match and $0 the whole; a backslash takes the next character as
// it is. A group that the pattern doesn't have is empty.
void CompiledPattern::ReadReplacement(const std::string& replacement)
{
    replacement_ = replacement;
    pieces_.clear();
    for (size_t i = 0; i < replacement.size(); ++i) {
        const char c = replacement[i];
        const bool more = i + 1 < replacement.size();
        if (c == '$' && more && replacement[i + 1] >= '0' && replacement[i + 1] <= '9') {
            pieces_.push_back({replacement[++i] - '0', {}});
            continue;
        }
        if (c == '\\' && more) ++i;
        if (pieces_.empty() || pieces_.back().group >= 0) pieces_.push_back({-1, {}});
        pieces_.back().text += replacement[i];
    }
}

bool CompiledPattern::Replace(const std::string& text, const std::string& replacement,
                              size_t longest, std::string& out)
{
    if (replacement != replacement_) ReadReplacement(replacement);
    const int groups = 1 + std::min(compiled_->NumberOfCapturingGroups(), 9);
    groups_.resize(static_cast<size_t>(groups));
    const re2::StringPiece whole(text);
    out.clear();
    size_t from = 0;    // where the next match may begin
    size_t copied = 0;  // up to where the text is in `out`
    while (from <= text.size() &&
           compiled_->Match(whole, from, text.size(), RE2::UNANCHORED, groups_.data(),
                            static_cast<int>(groups_.size()))) {
        const auto begin = static_cast<size_t>(groups_[0].data() - text.data());
        const size_t end = begin + groups_[0].size();
        // As after "b" in "abc" for "b*": an empty match where the last one ended is none.
        const bool emptyAgain = begin == end && begin == copied && copied > 0;
        out.append(text, copied, begin - copied);
        copied = begin;
        if (!emptyAgain) {
            for (const Piece& piece : pieces_) {
                if (piece.group < 0) {
                    out += piece.text;
                } else if (static_cast<size_t>(piece.group) < groups_.size()) {
                    const re2::StringPiece& group = groups_[static_cast<size_t>(piece.group)];
                    out.append(group.data(), group.size());
                }
            }
            copied = end;
        }
        if (out.size() > longest) return false;
        from = end;
        if (begin == end) {  // an empty match: on to the next character
            do {
                ++from;
            } while (from < text.size() && (static_cast<unsigned char>(text[from]) & 0xC0) == 0x80);
        }
    }
    if (copied < text.size()) out.append(text, copied, text.size() - copied);
    return out.size() <= longest;
}

// Takes texts out of all arguments and makes the pattern ready.
CompiledPattern* TakePattern(Args a, Value& out)
{
    for (Value& argument : a.values) MakeText(argument);
    auto* pattern = static_cast<CompiledPattern*>(a.state);
    std::string reason;
    bool ok = true;
    for (const Value& argument : a.values) ok = ok && argument.HasValue();
    if (ok && a[1].text.size() <= kLongestText && pattern->Prepare(a[1].text, reason)) {
        return pattern;
    }
    out.SetInvalid();
    return nullptr;
}

// True when some part of the text matches.
void Matches(Args a, Value& out)
{
    if (const CompiledPattern* pattern = TakePattern(a, out)) {
        out.SetBoolean(RE2::PartialMatch(a[0].text, pattern->Get()));
    }
}

void Replace(Args a, Value& out)
{
    CompiledPattern* pattern = TakePattern(a, out);
    if (pattern == nullptr) return;
    if (!pattern->Replace(a[0].text, a[2].text, kLongestText, out.text)) return out.SetInvalid();
    out.MarkText();
}

constexpr Function kFunctions[] = {
    {"matches", 2, 2, MissingRule::Propagate, Function::Boolean, nullptr, Matches, 1, MakePattern},
    {"replace", 3, 3, MissingRule::Propagate, Function::Text, nullptr, Replace, 1, MakePattern},
};

}  // namespace

std::span<const Function> PatternFunctions() { return kFunctions; }

}  // namespace MCVelscore_850
