#include "tests/fuzz/structuremutator.h"

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "engine/documents/vocabulary.h"

namespace MCVelscore_850::fuzz {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kNameEnds = " \t\r\n/>=";

// Values that readers of numbers, names and words may stumble over.
constexpr std::string_view kOddValues[] = {"",
                                           "0",
                                           "1",
                                           "-1",
                                           "2",
                                           "0.5",
                                           "1e308",
                                           "-1e308",
                                           "1e-320",
                                           "NaN",
                                           "INF",
                                           "-INF",
                                           "1e999",
                                           " 1 ",
                                           "1,5",
                                           "0x10",
                                           "007",
                                           "2147483648",
                                           "-2147483648",
                                           "true",
                                           "\xC3\xA9",
                                           "&lt;",
                                           "&#10;",
                                           "x y",
                                           "N/A",
                                           ".",
                                           "+1",
                                           "1.0",
                                           "9007199254740993"};

struct Attribute {
    size_t name;  ///< where its name begins, and where that ends
    size_t nameEnd;
    size_t value;  ///< between the quotes
    size_t valueEnd;
};

// An element as it lies in the text.
struct Span {
    std::string_view tag;
    size_t begin;
    size_t headEnd;  ///< behind the '>' of its first tag
    size_t end;      ///< behind its last one
    std::vector<Attribute> attributes;
};

// What of a text looks like elements with their attributes. A text that is no document has few.
class Outline {
public:
    explicit Outline(std::string_view text) : text_(text)
    {
        std::vector<size_t> open;
        for (size_t at = text.find('<'); at != std::string_view::npos; at = text.find('<', at)) {
            if (text.compare(at, 4, "<!--") == 0) {
                at = text.find("-->", at);
            } else if (text.compare(at, 2, "</") == 0) {
                const size_t end = text.find('>', at);
                if (end == std::string_view::npos) break;
                if (!open.empty()) {
                    elements_[open.back()].end = end + 1;
                    open.pop_back();
                }
                at = end;
            } else if (text.compare(at, 2, "<?") == 0 || text.compare(at, 2, "<!") == 0) {
                ++at;
            } else {
                Span element = ReadHead(at);
                if (element.headEnd == 0) break;
                at = element.headEnd;
                elements_.push_back(std::move(element));
                if (text[at - 2] != '/') open.push_back(elements_.size() - 1);
            }
        }
    }

    const std::vector<Span>& Elements() const { return elements_; }

private:
    size_t PassBlanks(size_t at) const { return Bounded(text_.find_first_not_of(kBlanks, at)); }
    size_t Bounded(size_t at) const { return std::min(at, text_.size()); }

    // With headEnd 0 where the text ends before the tag does.
    Span ReadHead(size_t begin) const
    {
        size_t at = Bounded(text_.find_first_of(kNameEnds, begin + 1));
        Span element{text_.substr(begin + 1, at - begin - 1), begin, 0, 0, {}};
        while (true) {
            at = PassBlanks(at);
            if (at >= text_.size()) return element;
            if (text_[at] == '>') break;
            if (text_[at] == '/' || text_[at] == '=') {
                ++at;
                continue;
            }
            Attribute attribute{at, Bounded(text_.find_first_of(kNameEnds, at)), 0, 0};
            const size_t quote = PassBlanks(Bounded(text_.find('=', attribute.nameEnd)) + 1);
            if (quote >= text_.size()) return element;
            attribute.value = quote + 1;
            attribute.valueEnd = text_.find(text_[quote], attribute.value);
            if (attribute.valueEnd == std::string_view::npos) return element;
            element.attributes.push_back(attribute);
            at = attribute.valueEnd + 1;
        }
        element.headEnd = element.end = at + 1;
        return element;
    }

    std::string_view text_;
    std::vector<Span> elements_;
};

const ElementWord* WordOf(bool older, std::string_view tag)
{
    for (const ElementWord* word : Vocabulary(older)) {
        if (word->tag == tag) return word;
    }
    return nullptr;
}

class Mutation {
    using Step = void (Mutation::*)(const Span&);

    size_t Below(size_t count) { return draws_() % count; }
    template <class Range>
    const auto& OneIn(const Range& range)
    {
        return range[Below(std::size(range))];
    }

public:
    Mutation(std::string text, std::mt19937& draws) : text_(std::move(text)), draws_(draws) {}

    // The text with one change, or as it is where there is nothing to change.
    std::string Make()
    {
        const Outline outline(text_);
        elements_ = &outline.Elements();
        if (elements_->empty()) return std::move(text_);
        older_ = text_.find("zelt-ml") != std::string::npos;
        const std::vector<Step> kSteps{
            &Mutation::ChangeValue,   &Mutation::ChangeValue,     &Mutation::ChangeValue,
            &Mutation::TakeValue,     &Mutation::TakeValue,       &Mutation::RenameAttribute,
            &Mutation::AddAttribute,  &Mutation::RemoveAttribute, &Mutation::RemoveElement,
            &Mutation::DoubleElement, &Mutation::MoveElement,     &Mutation::AddChild,
            &Mutation::ChangeDigit,   &Mutation::ChangeWord,
        };
        (this->*OneIn(kSteps))(OneIn(*elements_));
        return std::move(text_);
    }

    // The text with an element of another one: in the place of one of the same tag, or in front of
    // an element.
    std::string Cross(std::string_view other)
    {
        const Outline outline(text_);
        const Outline others(other);
        if (outline.Elements().empty() || others.Elements().empty()) return std::move(text_);
        const Span* to = nullptr;
        const Span* from = nullptr;
        constexpr int kTries = 16;
        for (int tries = 0; tries < kTries; ++tries) {
            to = &OneIn(outline.Elements());
            from = &OneIn(others.Elements());
            if (to->tag == from->tag) break;
        }
        const bool replaces = to->tag == from->tag && Below(4) != 0;
        text_.replace(to->begin, replaces ? to->end - to->begin : 0,
                      other.substr(from->begin, from->end - from->begin));
        return std::move(text_);
    }

private:
    std::string_view Text(size_t begin, size_t end) const
    {
        return std::string_view(text_).substr(begin, end - begin);
    }
    // Of the range of words that an attribute may have, or of odd ones.
    std::string Value(const Span& element, std::string_view name)
    {
        const auto words = WordsOf(element.tag, name);
        if (!words.empty() && Below(4) != 0) return std::string(OneIn(words));
        return std::string(OneIn(kOddValues));
    }

    void ChangeValue(const Span& element)
    {
        if (element.attributes.empty()) return;
        const Attribute& attribute = OneIn(element.attributes);
        const std::string value = Value(element, Text(attribute.name, attribute.nameEnd));
        text_.replace(attribute.value, attribute.valueEnd - attribute.value, value);
    }
    // The value of another attribute, of the same name in half of the cases.
    void TakeValue(const Span& element)
    {
        if (element.attributes.empty()) return;
        const Attribute& attribute = OneIn(element.attributes);
        const bool sameName = Below(2) == 0;
        for (int tries = 0; tries < 16; ++tries) {
            const Span& other = OneIn(*elements_);
            if (other.attributes.empty()) continue;
            const Attribute& from = OneIn(other.attributes);
            if (sameName &&
                Text(from.name, from.nameEnd) != Text(attribute.name, attribute.nameEnd)) {
                continue;
            }
            const std::string value(Text(from.value, from.valueEnd));
            text_.replace(attribute.value, attribute.valueEnd - attribute.value, value);
            return;
        }
    }
    void RenameAttribute(const Span& element)
    {
        const ElementWord* word = WordOf(older_, element.tag);
        if (element.attributes.empty() || word == nullptr || word->attributes.empty()) return;
        const Attribute& attribute = OneIn(element.attributes);
        text_.replace(attribute.name, attribute.nameEnd - attribute.name,
                      OneIn(word->attributes).name);
    }
    void AddAttribute(const Span& element)
    {
        const ElementWord* word = WordOf(older_, element.tag);
        if (word == nullptr || word->attributes.empty()) return;
        const std::string_view name = OneIn(word->attributes).name;
        text_.insert(element.begin + 1 + element.tag.size(),
                     " " + std::string(name) + "=\"" + Value(element, name) + "\"");
    }
    void RemoveAttribute(const Span& element)
    {
        if (element.attributes.empty()) return;
        const Attribute& attribute = OneIn(element.attributes);
        text_.erase(attribute.name, attribute.valueEnd + 1 - attribute.name);
    }
    void RemoveElement(const Span& element)
    {
        text_.erase(element.begin, element.end - element.begin);
    }
    void DoubleElement(const Span& element)
    {
        text_.insert(element.end, std::string(Text(element.begin, element.end)));
    }
    // A copy of it in front of another element.
    void MoveElement(const Span& element)
    {
        const std::string copy(Text(element.begin, element.end));
        text_.insert(OneIn(*elements_).begin, copy);
    }
    void AddChild(const Span& element)
    {
        const ElementWord* word = WordOf(older_, element.tag);
        if (word == nullptr || word->children.empty() ||
            Text(element.headEnd - 2, element.headEnd) == "/>") {
            return;
        }
        const ElementWord* child = WordOf(older_, OneIn(word->children).tag);
        if (child == nullptr) return;
        std::string added = "<" + std::string(child->tag);
        const Span its{child->tag, 0, 0, 0, {}};
        for (const AttributeWord& attribute : child->attributes) {
            if (Below(2) == 0) continue;
            added += " " + std::string(attribute.name) + "=\"" + Value(its, attribute.name) + "\"";
        }
        text_.insert(element.headEnd, added + "/>");
    }
    // A digit of an attribute: a number close by, or a name of another parameter.
    void ChangeDigit(const Span& element)
    {
        if (element.attributes.empty()) return;
        const Attribute& attribute = OneIn(element.attributes);
        const size_t digit = text_.find_first_of("0123456789", attribute.value);
        if (digit < attribute.valueEnd) text_[digit] = static_cast<char>('0' + Below(10));
    }
    // A word of the element's own text, as in arrays and the cells of tables.
    void ChangeWord(const Span& element)
    {
        const size_t end = std::min(text_.find('<', element.headEnd), text_.size());
        std::vector<std::pair<size_t, size_t>> words;
        for (size_t at = element.headEnd; at < end;) {
            const size_t begin = std::min(text_.find_first_not_of(kBlanks, at), end);
            at = std::min(text_.find_first_of(kBlanks, begin), end);
            if (begin < at) words.emplace_back(begin, at);
        }
        if (words.empty()) return;
        const auto [begin, wordEnd] = OneIn(words);
        const auto [other, otherEnd] = OneIn(words);
        const std::string_view word = Below(2) == 0 ? OneIn(kOddValues) : Text(other, otherEnd);
        text_.replace(begin, wordEnd - begin, std::string(word));
    }

    std::string text_;
    std::mt19937& draws_;
    const std::vector<Span>* elements_ = nullptr;
    bool older_ = false;
};

}  // namespace

std::string_view OddValue(unsigned draw) { return kOddValues[draw % std::size(kOddValues)]; }

std::string MutateStructure(std::string_view document, unsigned seed)
{
    std::mt19937 draws(seed);
    std::string text(document);
    for (int changes = 0; changes == 0 || (changes < 4 && draws() % 2 == 0); ++changes) {
        text = Mutation(std::move(text), draws).Make();
    }
    return text;
}

std::string CrossStructures(std::string_view document, std::string_view other, unsigned seed)
{
    std::mt19937 draws(seed);
    return Mutation(std::string(document), draws).Cross(other);
}

}  // namespace MCVelscore_850::fuzz
