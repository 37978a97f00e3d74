#include "engine/documents/audit/finding.h"

#include <algorithm>
#include <tuple>

#include <fmt/format.h>

#include "engine/messages/shorttext.h"

namespace MCVelscore_850 {

namespace {

std::string Quoted(const std::string& text)
{
    return text.empty() ? "empty" : fmt::format("\"{}\"", ShortText(text));
}

std::string Meant(const std::string& nearWord)
{
    return nearWord.empty() ? std::string()
                            : fmt::format("; did you mean \"{}\"?", ShortText(nearWord));
}

std::string Filled(std::string_view pattern, const Finding& finding, const Detail& detail)
{
    return fmt::format(
        fmt::runtime(pattern), fmt::arg("element", finding.element),
        fmt::arg("attribute", ShortText(finding.attribute)),
        fmt::arg("found", Quoted(finding.found)), fmt::arg("expected", finding.expected),
        fmt::arg("near", ShortText(finding.nearWord)), fmt::arg("meant", Meant(finding.nearWord)),
        fmt::arg("what", detail.what), fmt::arg("note", detail.note));
}

}  // namespace

std::string_view WordOf(Answer answer)
{
    switch (answer) {
        case Answer::Fault: return "fault";
        case Answer::Notice: return "notice";
        case Answer::Adapted: return "adapted";
    }
    return {};
}

std::string Finding::ToString() const
{
    const std::string head = fmt::format("{} [{}]", text, rule->name);
    if (place.line == 0) return head;
    return fmt::format("line {}, column {}: {}", place.line, place.column, head);
}

void Findings::Add(const Rule& rule, Answer answer, const Detail& detail)
{
    if (mends_ != nullptr && detail.mend.action != Mend::Action::None) {
        mends_->push_back({&rule, detail.element, detail.attribute, detail.mend});
    }
    Count& count = counts_.emplace(rule.name, Count{&rule, answer}).first->second;
    if (++count.number > kKeptOfRule) return;
    Finding finding;
    finding.rule = &rule;
    finding.answer = answer;
    finding.place = detail.element.Place();
    finding.element = detail.element.Tag();
    finding.attribute = detail.attribute;
    finding.found = detail.found;
    finding.hasFound = !detail.found.empty() || detail.element.Has(detail.attribute);
    finding.expected = detail.expected;
    finding.nearWord = detail.nearWord;
    finding.text = Filled(rule.text, finding, detail);
    finding.remedy = Filled(rule.remedy, finding, detail);
    finding.canBeFixed = detail.mend.action != Mend::Action::None;
    kept_.push_back(std::move(finding));
}

void Findings::AddAdapted(const Rule& rule, const DocumentPlace& place, const std::string& change)
{
    Count& count = counts_.emplace(rule.name, Count{&rule, rule.answer}).first->second;
    if (++count.number > kKeptOfRule) return;
    Finding finding;
    finding.rule = &rule;
    finding.answer = rule.answer;
    finding.place = place;
    finding.text = change;
    finding.remedy = rule.remedy;
    finding.canBeFixed = rule.answer == Answer::Adapted;
    kept_.push_back(std::move(finding));
}

void Findings::Sort()
{
    std::stable_sort(kept_.begin(), kept_.end(), [](const Finding& one, const Finding& other) {
        return std::tie(one.place.line, one.place.column) <
               std::tie(other.place.line, other.place.column);
    });
}

size_t Findings::CountOf(std::string_view rule) const
{
    const auto found = counts_.find(rule);
    return found == counts_.end() ? 0 : found->second.number;
}

size_t Findings::CountOf(Answer answer) const
{
    size_t number = 0;
    for (const auto& [name, count] : counts_) {
        if (count.answer == answer) number += count.number;
    }
    return number;
}

size_t Findings::FixableCount() const
{
    return static_cast<size_t>(std::count_if(
        kept_.begin(), kept_.end(), [](const Finding& finding) { return finding.canBeFixed; }));
}

std::vector<Findings::Unkept> Findings::NotKept() const
{
    std::vector<Unkept> unkept;
    for (const auto& [name, count] : counts_) {
        if (count.number <= kKeptOfRule) continue;
        unkept.push_back({count.rule, count.answer, count.number - kKeptOfRule});
    }
    return unkept;
}

size_t Findings::StrictCount() const
{
    size_t number = 0;
    for (const auto& [name, count] : counts_) {
        if (count.answer != Answer::Fault && count.rule->strict) number += count.number;
    }
    return number;
}

}  // namespace MCVelscore_850
