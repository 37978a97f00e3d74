#ifndef VELSCORE_ENGINE_MESSAGES_EXPLANATION_H
#define VELSCORE_ENGINE_MESSAGES_EXPLANATION_H

#include <optional>
#include <string>
#include <vector>

namespace MCVelscore_850 {

/// What a code means and what the user can do; "..." stands for what differs from case to case.
struct Explanation {
    int code;
    std::string text;
    std::string remedy;
};

/// Nothing for a code that the catalogue doesn't have.
std::optional<Explanation> Explain(int code);
/// Every code, in ascending order.
std::vector<Explanation> ExplainAll();
/// A field and what stood in it, in few words: "field sex: 'x'", "field sex: empty"; the field
/// alone where no text of the table is to blame, nothing without a field.
std::string FaultText(const std::string& field, const std::optional<std::string>& text);
/// True for the code of a case whose text tells its row, field and what stood there.
bool TellsTheCase(int code);
/// The text of a code with its arguments in place.
std::string MessageText(int code, const std::vector<std::string>& arguments);

}  // namespace MCVelscore_850

#endif
