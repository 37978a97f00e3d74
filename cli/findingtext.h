#ifndef VELSCORE_CLI_FINDINGTEXT_H
#define VELSCORE_CLI_FINDINGTEXT_H

#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

namespace MCVelscore_850 {

class DocumentFailure;
class Failure;
class Findings;
class SourceLines;
struct Finding;

/// How a finding is written: for people, as compilers do it.
///
///     model.pmml:12:5: fault: text [rule]
///        12 |   <PPCell value="1"/>
///           |   ^       ~~~~~~~~~
///       at PMML/GeneralRegressionModel/PPMatrix/PPCell[3]
///       expected: one of "a", "b"
///       what to do: remedy
class FindingText {
public:
    /// `lines` are borrowed.
    FindingText(const SourceLines& lines, bool colour) : lines_(lines), colour_(colour) {}

    /// All of a document, and how many of each rule are left out.
    std::string TextOf(const Findings& findings, const std::string& file) const;
    /// What the reader refused, in the same form, with its code for a rule. Faults of the audit are
    /// told by TextOf().
    std::string TextOf(const DocumentFailure& refusal) const;

private:
    struct Told;
    std::string Written(const Told& told) const;

    const SourceLines& lines_;
    const bool colour_;
};

/// What was noticed and adapted in a document, in few lines: how many notices and the first of
/// them, and the rules that adapted. Empty where there is neither.
std::vector<std::string> FindingLines(const Findings& findings, const std::string& file);

/// "3 faults, 1 notice, 2 adaptations"; empty without any.
std::string CountsText(const Findings& findings);

/// For programs: an array with an object for each finding, by place.
nlohmann::ordered_json FindingsJson(const Findings& findings);
/// What the reader refused, as one of these objects.
nlohmann::ordered_json RefusalJson(const Failure& failure);
/// How many of each rule are left out, by the rule's name.
nlohmann::ordered_json LeftOutJson(const Findings& findings);

}  // namespace MCVelscore_850

#endif
