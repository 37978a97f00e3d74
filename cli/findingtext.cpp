#include "cli/findingtext.h"

#include <algorithm>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "cli/sourcelines.h"
#include "engine/documents/loadedmodel.h"
#include "engine/messages/visibletext.h"

namespace MCVelscore_850 {

namespace {

constexpr std::string_view kBold = "\033[1m";
constexpr std::string_view kMark = "\033[1;32m";
constexpr std::string_view kPlain = "\033[0m";

std::string_view ColourOf(Answer answer)
{
    switch (answer) {
        case Answer::Fault: return "\033[1;31m";
        case Answer::Notice: return "\033[1;33m";
        case Answer::Adapted: return "\033[1;36m";
    }
    return {};
}

std::string PlaceText(const std::string& file, unsigned long line, unsigned long column)
{
    return line == 0 ? file : fmt::format("{}:{}:{}", file, line, column);
}

std::string Counted(size_t number, std::string_view one, std::string_view many)
{
    return number == 0 ? "" : fmt::format("{} {}", number, number == 1 ? one : many);
}

}  // namespace

// What there is to tell, whoever found it.
struct FindingText::Told {
    Answer answer;
    const std::string& file;
    unsigned long line;
    unsigned long column;
    std::string_view text;
    std::string_view path;
    std::string_view name;  // the rule's, or a code
    std::string_view attribute{};
    std::string_view expected{};
    std::string_view remedy{};
};

// What the document says may hold what a terminal would obey.
std::string FindingText::Written(const Told& told) const
{
    const auto painted = [this](std::string_view colour, std::string_view text) {
        return colour_ ? fmt::format("{}{}{}", colour, text, kPlain) : std::string(text);
    };
    std::string out = fmt::format(
        "{}: {} {} [{}]\n", painted(kBold, PlaceText(told.file, told.line, told.column)),
        painted(ColourOf(told.answer), fmt::format("{}:", WordOf(told.answer))),
        VisibleText(told.text), told.name);
    const SourceLines::Excerpt excerpt = lines_.At(told.line, told.column, told.attribute);
    if (!excerpt.line.empty()) {
        out += fmt::format("{:>6} | {}\n{:>6} | {}\n", told.line, excerpt.line, "",
                           painted(kMark, excerpt.marks));
    }
    if (!told.path.empty()) out += fmt::format("  at {}\n", VisibleText(told.path));
    // Many a text or remedy says it already.
    const auto says = [&](std::string_view text) {
        return text.find(told.expected) != std::string_view::npos;
    };
    if (!says(told.text) && !says(told.remedy)) {
        out += fmt::format("  expected: {}\n", VisibleText(told.expected));
    }
    if (!told.remedy.empty()) out += fmt::format("  what to do: {}\n", VisibleText(told.remedy));
    return out;
}

std::string FindingText::TextOf(const Findings& findings, const std::string& file) const
{
    std::string out;
    for (const Finding& finding : findings.Kept()) {
        out += Written({.answer = finding.answer,
                        .file = file,
                        .line = finding.place.line,
                        .column = finding.place.column,
                        .text = finding.text,
                        .path = finding.place.path,
                        .name = finding.rule->name,
                        .attribute = finding.attribute,
                        .expected = finding.expected,
                        .remedy = finding.remedy});
    }
    for (const Findings::Unkept& more : findings.NotKept()) {
        out += fmt::format("{}: and {} more [{}]\n", file, more.number, more.rule->name);
    }
    return out;
}

std::string FindingText::TextOf(const DocumentFailure& refusal) const
{
    return Written({.answer = Answer::Fault,
                    .file = refusal.File(),
                    .line = refusal.Line(),
                    .column = refusal.Column(),
                    .text = refusal.what(),
                    .path = refusal.ElementPath(),
                    .name = std::to_string(refusal.Code()),
                    .remedy = refusal.Remedy()});
}

std::vector<std::string> FindingLines(const Findings& findings, const std::string& file)
{
    constexpr size_t kShown = 3;
    std::vector<std::string> lines;
    std::vector<std::string_view> adapted;
    for (const Finding& finding : findings.Kept()) {
        const std::string_view name = finding.rule->name;
        if (finding.answer == Answer::Adapted) {
            if (std::find(adapted.begin(), adapted.end(), name) == adapted.end()) {
                adapted.push_back(name);
            }
        } else if (lines.size() < kShown) {
            lines.push_back(fmt::format("notice: {}: {} [{}]",
                                        PlaceText(file, finding.place.line, finding.place.column),
                                        finding.text, name));
        }
    }
    if (const size_t more = findings.CountOf(Answer::Notice) - lines.size(); more > 0) {
        lines.push_back(fmt::format("{} more {}; velscore check shows them", more,
                                    more == 1 ? "notice" : "notices"));
    }
    if (!adapted.empty()) {
        lines.push_back(fmt::format("{} was adapted ({}); velscore check tells how", file,
                                    fmt::join(adapted, ", ")));
    }
    return lines;
}

std::string CountsText(const Findings& findings)
{
    std::string text;
    for (const std::string& part :
         {Counted(findings.CountOf(Answer::Fault), "fault", "faults"),
          Counted(findings.CountOf(Answer::Notice), "notice", "notices"),
          Counted(findings.CountOf(Answer::Adapted), "adaptation", "adaptations")}) {
        if (!part.empty()) text += (text.empty() ? "" : ", ") + part;
    }
    return text;
}

}  // namespace MCVelscore_850
