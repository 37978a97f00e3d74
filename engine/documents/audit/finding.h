#ifndef VELSCORE_ENGINE_DOCUMENTS_AUDIT_FINDING_H
#define VELSCORE_ENGINE_DOCUMENTS_AUDIT_FINDING_H

#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "engine/documents/element.h"

namespace MCVelscore_850 {

/// What a rule answers to what it finds.
enum class Answer {
    Fault,   ///< the numbers can't be what the document means, or nobody can tell: refused
    Notice,  ///< unused, odd, or outside what is read; the numbers stand
    Adapted  ///< read in another way than it is written; the numbers are what the document means
};

/// "fault", "notice" or "adapted", as it is told.
std::string_view WordOf(Answer answer);

/// What is known of a rule apart from how it looks: a row of the tables of rules.
struct Rule {
    std::string_view name;  ///< in lower case with hyphens, as in "unknown-parameter"
    Answer answer;
    /// Whether a notice or an adaptation of this rule counts where strictness is asked for.
    bool strict;
    /// What is told by it, for who asks for the rule itself.
    std::string_view about;
    /// The finding in one line without its place. {element}, {attribute}, {found} (quoted, or the
    /// word "empty"), {expected}, {near} and {what} stand for what the check tells; {meant} for
    /// '; did you mean "near"?', or nothing where no word is near; {note} for what is said of this
    /// finding alone, a reason or a part of the remedy.
    std::string_view text;
    /// What to do, in whole sentences, with the same words in braces.
    std::string_view remedy;
};

/// A change to the tree that puts a finding right without a guess: the name or the text was told by
/// the document itself, or can be but one.
struct Mend {
    enum class Action {
        None,             ///< nobody can tell what is meant
        RenameAttribute,  ///< the detail's attribute is called `text`
        RenameElement,    ///< the element is called `text`
        SetAttribute,     ///< the detail's attribute has the text `text`
        EraseElement      ///< the element goes, with all within
    };
    Action action = Action::None;
    std::string text{};
};

/// What a check tells of one place. All but the element may be empty.
struct Detail {
    Element element;
    std::string attribute{};
    std::string found{};
    std::string expected{};
    std::string nearWord{};
    std::string what{};
    std::string note{};
    Mend mend{};
};

/// A finding that can be put right, while its tree is there.
struct OpenMend {
    const Rule* rule = nullptr;
    Element element;
    std::string attribute;
    Mend mend;
};

struct Finding {
    const Rule* rule = nullptr;
    /// The rule's own, or Notice for a fault that was allowed.
    Answer answer = Answer::Notice;
    DocumentPlace place;
    std::string element;  ///< its tag
    std::string attribute;
    std::string found;
    bool hasFound = false;  ///< an attribute or a content is there, though it may be empty
    std::string expected;
    std::string nearWord;
    std::string text;
    std::string remedy;
    bool canBeFixed = false;  ///< check --fix writes the document put right

    bool CountsWhenStrict() const { return rule->strict; }
    /// 'line 2, column 1: version "4.4.1" is read as "4.4" [short-version]'
    std::string ToString() const;
};

/// What was found in one document. Keeps the first ones of each rule and counts the others, so that
/// a document of nothing but faults costs little.
class Findings {
public:
    /// How many of one rule are kept.
    static constexpr size_t kKeptOfRule = 100;

    void Add(const Rule& rule, Answer answer, const Detail& detail);
    /// What the adapter did at a place, of which the tree may no longer know.
    void AddAdapted(const Rule& rule, const DocumentPlace& place, const std::string& change);
    /// Orders by place; call it when all are there.
    void Sort();

    const std::vector<Finding>& Kept() const { return kept_; }
    /// Of a rule, those that weren't kept among them.
    size_t CountOf(std::string_view rule) const;
    /// Of an answer, those that weren't kept among them.
    size_t CountOf(Answer answer) const;
    /// Of those that are kept.
    size_t FixableCount() const;
    /// Notices and adaptations that count where strictness is asked for.
    size_t StrictCount() const;
    /// How many findings of a rule weren't kept, for each rule of which there are such.
    struct Unkept {
        const Rule* rule;
        Answer answer;
        size_t number;
    };
    std::vector<Unkept> NotKept() const;

    /// Has what can be put right written to `mends` from now on, all of it; null for no more.
    void CollectMends(std::vector<OpenMend>* mends) { mends_ = mends; }

private:
    struct Count {
        const Rule* rule;
        Answer answer;
        size_t number = 0;
    };
    std::vector<Finding> kept_;
    std::map<std::string_view, Count> counts_;
    std::vector<OpenMend>* mends_ = nullptr;
};

/// Where a check tells what it found: under its own rule's name.
class RuleReport {
public:
    RuleReport(const Rule& rule, Answer answer, Findings& findings)
        : rule_(rule), answer_(answer), findings_(findings)
    {}
    void operator()(const Detail& detail) { findings_.Add(rule_, answer_, detail); }

private:
    const Rule& rule_;
    Answer answer_;
    Findings& findings_;
};

}  // namespace MCVelscore_850

#endif
