// What isn't the vocabulary of the document's form. One walk over the tree looks every name up in
// the tables of vocabulary.h; a document has few names and may have a million elements, so each is
// looked up once and known by its place in the tree's pool of names from then on.

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <xercesc/dom/DOM.hpp>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/modelelement.h"
#include "engine/documents/names.h"
#include "engine/documents/vocabulary.h"
#include "engine/messages/shorttext.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/documents/veltranscoder.h"
#include "host/documents/zeltmodeltags.h"
#include "host/messages/nearword.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

// Whether a notice counts where strictness is asked for.
constexpr bool kStrict = true;
constexpr bool kLenient = false;

constexpr Rule kForeignNamespace = {
    "foreign-namespace",
    Answer::Fault,
    kStrict,
    "the root stands in a namespace that isn't PMML's",
    "the root stands in the namespace {found}, which isn't PMML's",
    "Declare the namespace of PMML on the root, such as \"http://www.dmg.org/PMML-4_4\", if the "
    "document is PMML."};
constexpr Rule kUnknownVersion = {"unknown-version",
                                  Answer::Fault,
                                  kStrict,
                                  "a version that isn't one of the standard's",
                                  "version {found} of {element} is none that is read: {expected}",
                                  "Write the version that the document follows."};
constexpr Rule kOtherNamespaceVersion = {
    "version-against-namespace",
    Answer::Notice,
    kStrict,
    "a version that isn't that of the root's namespace",
    "version {found} of {element} isn't that of its namespace, {expected}, and the version counts",
    "Write the version that the document follows in both places."};
constexpr Rule kMisspeltAttribute = {"misspelt-attribute",
                                     Answer::Fault,
                                     kStrict,
                                     "an attribute that comes near to one on which scores depend",
                                     "{element} has no attribute \"{attribute}\"{meant}",
                                     "Write \"{near}\", or take the attribute out."};
constexpr Rule kMisspeltElement = {"misspelt-element",
                                   Answer::Fault,
                                   kStrict,
                                   "an element that comes near to one on which scores depend",
                                   "{what} has no element \"{element}\"{meant}",
                                   "Write \"{near}\", or take the element out."};
constexpr Rule kUnknownAttribute = {
    "unknown-attribute",
    Answer::Notice,
    kStrict,
    "any other attribute that its element doesn't have; it is passed over",
    "{element} has no attribute \"{attribute}\", which is passed over{meant}",
    "Take it out{note}."};
constexpr Rule kUnknownElement = {
    "unknown-element",
    Answer::Notice,
    kStrict,
    "any other element that its parent doesn't have; it is passed over",
    "{what} has no element \"{element}\", which is passed over{meant}",
    "Take it out{note}."};
constexpr Rule kMisplacedElement = {"misplaced-element",
                                    Answer::Fault,
                                    kStrict,
                                    "an element where it isn't read",
                                    "{element} isn't read in {what}: it belongs in {expected}",
                                    "Move the element to where it belongs, or take it out."};
constexpr Rule kUnknownWord = {
    "unknown-word",
    Answer::Fault,
    kStrict,
    "a word that isn't in its attribute's list, upper and lower case apart",
    "{attribute} of {element} is {found}, which is none of its words{meant}",
    "Write one of {expected}."};
constexpr Rule kOddWord = {"odd-word",
                           Answer::Notice,
                           kLenient,
                           "the same in an attribute on which nothing depends",
                           "{attribute} of {element} is {found}, which is none of its words{meant}",
                           "Write one of {expected}, or take the attribute out."};
constexpr Rule kEmptyWord = {"empty-word",
                             Answer::Notice,
                             kStrict,
                             "an empty word where a list has others; it counts as absent",
                             "{attribute} of {element} is empty, which counts as absent",
                             "Write one of {expected}, or take the attribute out."};
constexpr Rule kFractionOfInteger = {
    "fraction-of-integer",
    Answer::Fault,
    kStrict,
    "a Constant of the dataType integer that is no whole number",
    "{element} has the dataType \"integer\" and is {found}, which is no whole number",
    "Write a whole number, or the dataType \"double\"."};
constexpr Rule kRepeatedElement = {"repeated-element",
                                   Answer::Fault,
                                   kStrict,
                                   "an element that stands a second time where one is read",
                                   "{element} stands a second time in {what}",
                                   "Leave the one that is meant."};
constexpr Rule kRepeatedName = {"repeated-name",
                                Answer::Notice,
                                kStrict,
                                "a second element of that kind of which the first counts",
                                "{element} stands a second time in {what}, and the first counts",
                                "Leave the one that is meant."};
constexpr Rule kSecondModel = {"second-model",
                               Answer::Fault,
                               kStrict,
                               "a second model beside the first",
                               "{element} is a second model beside {what}",
                               "Leave the model that is to be scored."};
constexpr Rule kNotScorable = {"not-scorable",
                               Answer::Fault,
                               kStrict,
                               "isScorable says no as 0",
                               "{attribute} of {element} is {found}: the model isn't meant to be "
                               "scored",
                               "Ask for a document whose model is."};
constexpr Rule kLaterVersion = {
    "later-version",
    Answer::Notice,
    kLenient,
    "an element or attribute of a later version than the document's",
    "{what} came with version {expected} of the standard, and the document is of version {found}",
    "Write the version that the document follows."};

// "0" is a false too; the reader refuses the word alone.
void CheckScorable(const DocumentFacts& facts, RuleReport& report)
{
    const std::string& name = Tags::XML_ATT_RM_IS_SCORABLE;
    const std::string text = facts.model.Text(name);
    if (text == "0") report({.element = facts.model, .attribute = name, .found = text});
}

constexpr AuditRule kRules[] = {
    {kForeignNamespace},
    {kUnknownVersion},
    {kOtherNamespaceVersion},
    {kMisspeltAttribute},
    {kMisspeltElement},
    {kUnknownAttribute},
    {kUnknownElement},
    {kMisplacedElement},
    {kUnknownWord},
    {kOddWord},
    {kEmptyWord},
    {kFractionOfInteger},
    {kRepeatedElement},
    {kRepeatedName},
    {kSecondModel},
    {kNotScorable, CheckScorable},
    {kLaterVersion},
};

// An attribute of a name that isn't the vocabulary's but may stand anywhere.
bool IsOwnName(std::string_view name)
{
    return name.starts_with("x-") || name.starts_with("X-") || name.starts_with("xmlns") ||
           name == "schemaLocation" || name.find(':') != std::string_view::npos;
}

// A word that the standard leaves to whoever extends it.
bool IsOwnWord(std::string_view word) { return word.starts_with("x-"); }

template <class Words, class Name>
std::vector<std::string> NamesOf(const Words& words, Name name)
{
    std::vector<std::string> names;
    for (const auto& word : words) names.emplace_back(std::invoke(name, word));
    return names;
}

// The row of the table whose name is that one, or the nearest where `near`.
template <class Row>
const Row* FindRow(std::span<const Row> rows, std::string_view Row::*name, std::string_view wanted)
{
    const auto found =
        std::find_if(rows.begin(), rows.end(), [&](const Row& row) { return row.*name == wanted; });
    return found == rows.end() ? nullptr : &*found;
}

template <class Row>
const Row* FindNear(std::span<const Row> rows, std::string_view Row::*name, std::string_view word)
{
    const std::string near = NearWord(word, NamesOf(rows, name));
    return near.empty() ? nullptr : FindRow(rows, name, near);
}

// The name that is meant beyond doubt: no other one comes near.
template <class Row>
Mend MendOf(Mend::Action action, std::span<const Row> rows, std::string_view Row::*name,
            const Row* near, std::string_view word)
{
    if (near == nullptr) return {};
    std::vector<std::string> others = NamesOf(rows, name);
    std::erase(others, near->*name);
    if (!NearWord(word, others).empty()) return {};
    return {action, std::string(near->*name)};
}

// All of them: who has to choose one needs the whole list.
std::string OneOf(std::span<const std::string_view> words)
{
    return fmt::format("\"{}\"", fmt::join(words, "\", \""));
}

class VocabularyWalk {
public:
    using Tell = std::function<void(const Rule& rule, const Detail& detail)>;

    VocabularyWalk(Element root, bool older, const Tell& tell, CovarianceCells* cells)
        : root_(root),
          version_(root.Number(Tags::XML_ATT_VERSION).value_or(0.0)),
          isOlder_(older),
          hasVersion_(!older && IsKnownVersion(version_)),
          words_(Vocabulary(older)),
          tell_(tell),
          cells_(cells)
    {
        if (cells_ == nullptr) return;
        cells_->Watch(root);
        watched_ = cells_->List();
    }

    void LookAtRoot()
    {
        isOlder_ ? LookAtOlderVersion() : LookAtVersion();
        LookAt(root_, KnownOf(*WordOf(root_.Tag())));
    }

private:
    struct Known;

    // What is known of an attribute's name on one element: its row, or else the row that it comes
    // near to; neither where the name may stand anywhere.
    struct AttributeName {
        const AttributeWord* row = nullptr;
        const AttributeWord* near = nullptr;
        Mend mend{};
        bool isOwn = false;
    };
    // Likewise of a tag in one element.
    struct ChildName {
        const ChildWord* row = nullptr;
        const ChildWord* near = nullptr;
        Mend mend{};
        Known* known = nullptr;  // null for a tag that the vocabulary doesn't have
        bool isOwn = false;
    };
    // An element's row with the names that were met on it and in it.
    struct Known {
        const ElementWord* word;
        // The names on the last element on which there was nothing to look at but them.
        std::vector<const XMLCh*> plainNames;
        std::unordered_map<const XMLCh*, AttributeName> attributes;
        std::unordered_map<const XMLCh*, ChildName> children;
    };
    // What is known of the children of one element so far: those that may not come again, and the
    // last one's name, which many have.
    struct Seen {
        const XMLCh* lastTag = nullptr;
        const ChildName* lastChild = nullptr;
        std::vector<const ChildWord*> single;
        std::string model;
        bool hasExpression = false;
        std::set<std::pair<const ChildWord*, std::string>> keys;
    };

    const ElementWord* WordOf(std::string_view tag) const
    {
        const auto found = std::find_if(words_.begin(), words_.end(),
                                        [&](const auto* word) { return word->tag == tag; });
        return found == words_.end() ? nullptr : *found;
    }

    Known& KnownOf(const ElementWord& word)
    {
        return known_.try_emplace(&word, Known{&word, {}, {}, {}}).first->second;
    }

    void LookAtVersion()
    {
        const std::string text = root_.Text(Tags::XML_ATT_VERSION);
        double version = 0.0;
        // The reader refuses what is no number.
        if (ReadNumber(text, version) != NumberText::Number) return;
        if (IsKnownVersion(version)) return LookAtNamespaceVersion(version, text);
        tell_(kUnknownVersion,
              {.element = root_,
               .attribute = Tags::XML_ATT_VERSION,
               .found = text,
               .expected = fmt::format("{:.1f} to {:.1f}", kFirstVersion, kLastVersion)});
    }

    void LookAtNamespaceVersion(double version, const std::string& text)
    {
        const std::string named = VersionInNamespace(root_.Text("xmlns"));
        double number = 0.0;
        // Exact: both are the nearest double of the same decimals.
        if (ReadNumber(named, number) != NumberText::Number || number == version) return;
        tell_(kOtherNamespaceVersion, {.element = root_,
                                       .attribute = Tags::XML_ATT_VERSION,
                                       .found = text,
                                       .expected = named});
    }

    // It may be left out.
    void LookAtOlderVersion()
    {
        const std::string text = root_.Text(Tags::XML_ATT_VERSION);
        if (text.empty() || text.substr(0, text.find('.')) == kOlderVersion) return;
        tell_(kUnknownVersion, {.element = root_,
                                .attribute = Tags::XML_ATT_VERSION,
                                .found = text,
                                .expected = fmt::format("{0}.0, or another {0}.x", kOlderVersion)});
    }

    // The guard bounds the depth, and with it this recursion.
    void LookAt(Element element, Known& known)
    {
        const ElementWord& word = *known.word;
        if (!word.isOpen || !word.attributes.empty()) LookAtAttributes(element, known);
        if (word.isOpen) return;
        if (word.tag == kConstant) LookAtConstant(element);
        const ElementRange children = element.Children();
        if (children.Empty()) return;
        Seen seen;
        for (const Element child : children) LookAtChild(element, child, known, seen);
    }

    void LookAtAttributes(Element element, Known& known)
    {
        const xercesc::DOMNamedNodeMap& attributes = *element.Dom()->getAttributes();
        if (HasNames(attributes, known.plainNames)) return;
        std::vector<const XMLCh*> names;
        bool isPlain = true;
        for (XMLSize_t i = 0; i < attributes.getLength(); ++i) {
            const xercesc::DOMNode* attribute = attributes.item(i);
            names.push_back(attribute->getNodeName());
            isPlain = !LookAtAttribute(element, *attribute, known) && isPlain;
        }
        if (isPlain) known.plainNames = std::move(names);
    }

    // Cells have the same names, one after another.
    static bool HasNames(const xercesc::DOMNamedNodeMap& attributes,
                         const std::vector<const XMLCh*>& names)
    {
        const XMLSize_t count = attributes.getLength();
        if (count != names.size()) return false;
        for (XMLSize_t i = 0; i < count; ++i) {
            if (attributes.item(i)->getNodeName() != names[i]) return false;
        }
        return true;
    }

    // False where the name says all and there is nothing to tell.
    bool LookAtAttribute(Element element, const xercesc::DOMNode& attribute, Known& known)
    {
        const XMLCh* name = attribute.getNodeName();
        auto met = known.attributes.find(name);
        if (met == known.attributes.end()) {
            met = known.attributes.emplace(name, MeetAttribute(name, *known.word)).first;
        }
        const AttributeName& meaning = met->second;
        if (meaning.isOwn) return false;
        if (meaning.row == nullptr) {
            TellUnknownAttribute(element, Utf8FromXml(name), meaning);
            return true;
        }
        const AttributeWord& row = *meaning.row;
        if (!row.words.empty()) LookAtWord(element, row, Utf8FromXml(attribute.getNodeValue()));
        if (IsLater(row.since)) {
            TellLater(element, std::string(row.name),
                      fmt::format("{} of {}", row.name, element.Tag()), row.since);
        }
        return !row.words.empty() || IsLater(row.since);
    }

    static AttributeName MeetAttribute(const XMLCh* xmlName, const ElementWord& word)
    {
        const std::string name = Utf8FromXml(xmlName);
        AttributeName meaning;
        meaning.row = FindRow(word.attributes, &AttributeWord::name, name);
        meaning.isOwn = IsOwnName(name);
        if (meaning.row == nullptr && !meaning.isOwn) {
            meaning.near = FindNear(word.attributes, &AttributeWord::name, name);
            meaning.mend = MendOf(Mend::Action::RenameAttribute, word.attributes,
                                  &AttributeWord::name, meaning.near, name);
        }
        return meaning;
    }

    // Also beside the attribute that is meant.
    void TellUnknownAttribute(Element element, std::string name, const AttributeName& meaning)
    {
        std::string text = element.Text(name);
        const AttributeWord* near = meaning.near;
        const bool matters = near != nullptr && near->effect != Effect::None;
        tell_(matters ? kMisspeltAttribute : kUnknownAttribute,
              {.element = element,
               .attribute = std::move(name),
               .found = std::move(text),
               .nearWord = near == nullptr ? std::string() : std::string(near->name),
               .note = OwnWords(),
               .mend = near == nullptr ? Mend() : meaning.mend});
    }

    void LookAtWord(Element element, const AttributeWord& row, const std::string& text)
    {
        if (FindWord(row.words, text)) return;
        const auto list = [](const auto& words) { return std::string(words); };
        const Rule* rule = &kUnknownWord;
        if (text.empty()) {
            rule = &kEmptyWord;
        } else if (row.effect == Effect::None ||
                   (row.effect == Effect::Output && IsOwnWord(text))) {
            rule = &kOddWord;
        }
        const std::string near = NearWord(text, NamesOf(row.words, list));
        // Upper and lower case are the same letters.
        const bool isSame = !near.empty() && WordDistance(text, near) == 0;
        tell_(*rule, {.element = element,
                      .attribute = std::string(row.name),
                      .found = text,
                      .expected = OneOf(row.words),
                      .nearWord = near,
                      .mend = isSame ? Mend{Mend::Action::SetAttribute, near} : Mend()});
    }

    static bool FindWord(std::span<const std::string_view> words, std::string_view text)
    {
        return std::find(words.begin(), words.end(), text) != words.end();
    }

    bool IsLater(double since) const { return hasVersion_ && version_ < since; }

    void TellLater(Element element, std::string attribute, std::string what, double since)
    {
        tell_(kLaterVersion, {.element = element,
                              .attribute = std::move(attribute),
                              .found = root_.Text(Tags::XML_ATT_VERSION),
                              .expected = fmt::format("{:.1f}", since),
                              .what = std::move(what)});
    }

    void LookAtConstant(Element element)
    {
        if (element.Text("dataType") != "integer") return;
        const std::string text = element.Content();
        double number = 0.0;
        if (ReadNumber(text, number) != NumberText::Number || std::trunc(number) == number) return;
        tell_(kFractionOfInteger, {.element = element, .found = text});
    }

    void LookAtChild(Element parent, Element child, Known& known, Seen& seen)
    {
        const XMLCh* tag = child.Dom()->getTagName();
        if (tag != seen.lastTag) {
            seen.lastTag = tag;
            auto met = known.children.find(tag);
            if (met == known.children.end()) {
                met = known.children.emplace(tag, MeetChild(tag, *known.word)).first;
            }
            seen.lastChild = &met->second;
        }
        const ChildName& meaning = *seen.lastChild;
        if (meaning.isOwn) return;
        if (meaning.row == nullptr && !IsExtension(meaning)) {
            return TellUnknownChild(parent, child, meaning);
        }
        if (meaning.row != nullptr) Count(parent, child, *meaning.row, meaning, seen);
        if (IsLater(meaning.known->word->since)) {
            TellLater(child, {}, child.Tag(), meaning.known->word->since);
        }
        LookAt(child, *meaning.known);
        if (parent == watched_) cells_->Read(child);
    }

    bool IsExtension(const ChildName& meaning) const
    {
        return meaning.known != nullptr && meaning.known->word->tag == Tags::XML_ELE_EXTENSION;
    }

    ChildName MeetChild(const XMLCh* xmlTag, const ElementWord& parent)
    {
        const std::string tag = Utf8FromXml(xmlTag);
        ChildName meaning;
        meaning.row = FindRow(parent.children, &ChildWord::tag, tag);
        if (const ElementWord* word = WordOf(tag)) meaning.known = &KnownOf(*word);
        meaning.isOwn = meaning.known == nullptr && IsOwnName(tag);
        if (meaning.known == nullptr && !meaning.isOwn) {
            meaning.near = FindNear(parent.children, &ChildWord::tag, tag);
            meaning.mend = MendOf(Mend::Action::RenameElement, parent.children, &ChildWord::tag,
                                  meaning.near, tag);
        }
        return meaning;
    }

    void TellUnknownChild(Element parent, Element child, const ChildName& meaning)
    {
        if (meaning.known != nullptr) return TellMisplaced(parent, child, *meaning.known->word);
        if (!IsInVocabularysNamespace(child)) return;
        const ChildWord* near = meaning.near;
        const ElementWord* word = near == nullptr ? nullptr : WordOf(near->tag);
        const bool matters = word != nullptr && word->effect != Effect::None;
        tell_(matters ? kMisspeltElement : kUnknownElement,
              {.element = child,
               .nearWord = near == nullptr ? std::string() : std::string(near->tag),
               .what = parent.Tag(),
               .note = OwnWords(),
               .mend = near == nullptr ? Mend() : meaning.mend});
    }

    // An element may declare that it is another vocabulary's.
    static bool IsInVocabularysNamespace(Element element)
    {
        const std::string uri = element.Text("xmlns");
        return uri.empty() || IsPmmlNamespace(uri);
    }

    void TellMisplaced(Element parent, Element child, const ElementWord& word)
    {
        std::vector<std::string> homes;
        for (const ElementWord* home : words_) {
            if (FindRow(home->children, &ChildWord::tag, word.tag) != nullptr) {
                homes.emplace_back(home->tag);
            }
        }
        tell_(word.effect == Effect::None ? kUnknownElement : kMisplacedElement,
              {.element = child,
               .expected = Listed(homes),
               .what = parent.Tag(),
               .note = OwnWords()});
    }

    // Where an exporter may write what is its own: the older form has no such place.
    std::string OwnWords() const
    {
        return isOlder_ ? "" : ", or write what is the exporter's own in an Extension";
    }

    void Count(Element parent, Element child, const ChildWord& row, const ChildName& meaning,
               Seen& seen)
    {
        switch (row.count) {
            case ChildWord::One: {
                const bool isNew =
                    std::find(seen.single.begin(), seen.single.end(), &row) == seen.single.end();
                if (isNew) return seen.single.push_back(&row);
                // The reader takes the first; where nothing depends on it that is sound.
                if (meaning.known->word->effect != Effect::None) TellRepeated(child, parent.Tag());
                return;
            }
            case ChildWord::Expression:
                if (std::exchange(seen.hasExpression, true)) TellRepeated(child, parent.Tag());
                return;
            case ChildWord::Model:
                if (seen.model.empty()) {
                    seen.model = row.tag;
                } else {
                    tell_(kSecondModel, {.element = child, .what = seen.model});
                }
                return;
            case ChildWord::Each: return CountKey(parent, child, row, kRepeatedElement, seen);
            case ChildWord::Many: return CountKey(parent, child, row, kRepeatedName, seen);
        }
    }

    void CountKey(Element parent, Element child, const ChildWord& row, const Rule& rule, Seen& seen)
    {
        if (row.key.empty()) return;
        std::string text = child.Text(row.key);
        if (seen.keys.emplace(&row, text).second) return;
        std::string what =
            fmt::format("{} with {} {}", parent.Tag(), row.key,
                        text.empty() ? "empty" : fmt::format("\"{}\"", ShortText(text)));
        tell_(rule, {.element = child,
                     .attribute = std::string(row.key),
                     .found = std::move(text),
                     .what = std::move(what)});
    }

    void TellRepeated(Element child, std::string what)
    {
        tell_(kRepeatedElement, {.element = child, .what = std::move(what)});
    }

    static constexpr std::string_view kConstant = "Constant";

    const Element root_;
    const double version_;
    const bool isOlder_;
    const bool hasVersion_;
    const std::vector<const ElementWord*> words_;
    const Tell& tell_;
    CovarianceCells* const cells_;
    Element watched_;  // whose children are read on the way
    std::unordered_map<const ElementWord*, Known> known_;
};

// The root's namespace where it isn't PMML's: the default one, or that of its prefix, which the
// adapter leaves to such a root alone.
std::optional<std::string> ForeignNamespace(Element root)
{
    const std::string tag = root.Tag();
    const std::string_view prefix = PrefixOf(tag);
    const std::string uri = root.Text(prefix.empty() ? "xmlns" : fmt::format("xmlns:{}", prefix));
    if (uri.empty() || IsPmmlNamespace(uri)) return std::nullopt;
    return uri;
}

}  // namespace

std::span<const AuditRule> VocabularyRules() { return kRules; }

bool IsMisspeltName(const Rule& rule)
{
    return rule.name == kMisspeltElement.name || rule.name == kMisspeltAttribute.name;
}

void LookAtVocabulary(Element root,
                      const std::function<void(const Rule& rule, const Detail& detail)>& tell,
                      CovarianceCells* cells)
{
    const bool older = root.Is(ZELTModelTags::XML_ELE_ZELTML);
    if (!older && IsPmmlRoot(root)) {
        if (const auto uri = ForeignNamespace(root)) {
            tell(kForeignNamespace, {.element = root, .attribute = "xmlns", .found = *uri});
        }
    }
    if (older || root.Is(Tags::XML_ELE_PMML)) {
        VocabularyWalk(root, older, tell, cells).LookAtRoot();
    }
}

}  // namespace MCVelscore_850
